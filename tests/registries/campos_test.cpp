// Dates, numbers and phones typed into real registry forms, key by key, and saved.

#include "Auxiliares.h"
#include "TCadComerciais.h"
#include "apoio/TabsTeste.h"
#include "ui/Campos.h"
#include "ui/FormRegistro.h"
#include "ui/Mensagens.h"

#include <QApplication>
#include <QCalendarWidget>
#include <QComboBox>
#include <QTabWidget>
#include <QTableView>
#include <QTest>
#include <gtest/gtest.h>

using namespace orb;

namespace {

const QColor kPessego(0xFF, 0xDD, 0xCC);

struct CamposTest : teste::ComTabs {
    // Types into the field as a user does: focus, keys, then Enter to leave it.
    static void digitar(QWidget *w, const QString &teclas, Qt::Key tecla = Qt::Key_Return)
    {
        w->setFocus();
        if (auto *e = qobject_cast<QLineEdit *>(w)) e->selectAll();
        QTest::keyClicks(w, teclas);
        QTest::keyClick(w, tecla);
        QApplication::processEvents();  // the check made once the focus has moved
    }
    QVariant feriado(const QString &descricao)
    {
        db::Transacao t(tabs.DbORB(), db::Modo::Leitura);
        return db::escalar(t, "Select Data From TbFeriados Where Descricao = :D", {{"D", descricao}});
    }
};

TEST_F(CamposTest, HolidayDatesAsTyped)
{
    const QDate hoje = QDate::currentDate();
    // Each way of typing is read by lerData (Datas.TypedDates); here, what the field does with it:
    // the date saved (invalid: refused) and what the field shows after leaving it.
    const struct { const char *teclas; QDate data; const char *mostra; } casos[] = {
        {"25122026", {2026, 12, 25}, "25/12/2026"},
        {"0208", {hoje.year(), 8, 2}, nullptr},
        {"H", hoje, nullptr},
        {"31022024", {}, "31022024"},
    };
    FormRegistro f(*registroAuxiliar("TFeriados"));
    f.show();
    QApplication::setActiveWindow(&f);
    auto *data = f.findChild<CampoData *>("DATA");
    auto *descricao = f.findChild<QLineEdit *>("DESCRICAO");
    for (const auto &c : casos) {
        SCOPED_TRACE(c.teclas);
        msg.avisos.clear();
        QTest::keyClick(f.grade(), Qt::Key_F2);
        ASSERT_EQ(f.estado(), FormCadastro::Estado::Incluindo);
        digitar(data, c.teclas);
        const QString mostra = c.mostra ? c.mostra : c.data.toString("dd/MM/yyyy");
        EXPECT_EQ(data->text(), mostra);
        if (!c.data.isValid()) {
            // Told on leaving, the field keeps what was typed, painted and focused again.
            EXPECT_EQ(msg.avisos, QStringList{"Data inválida!"});
            EXPECT_EQ(QApplication::focusWidget(), data);
            EXPECT_EQ(data->palette().color(QPalette::Base), kPessego);
            QTest::keyClicks(descricao, "Dia");
            QTest::keyClick(descricao, Qt::Key_F10);
            EXPECT_EQ(msg.avisos.value(1), "Data inválida!");
            EXPECT_EQ(f.estado(), FormCadastro::Estado::Incluindo);
            QTest::keyClick(data, Qt::Key_Escape);
            continue;
        }
        EXPECT_TRUE(msg.avisos.isEmpty()) << msg.avisos.join(" | ").toStdString();
        EXPECT_EQ(QApplication::focusWidget(), descricao);
        QTest::keyClicks(descricao, c.teclas);
        QTest::keyClick(descricao, Qt::Key_F10);
        ASSERT_EQ(f.estado(), FormCadastro::Estado::Navegando) << msg.avisos.join(" | ").toStdString();
        EXPECT_EQ(feriado(c.teclas).toDate(), c.data);
    }
}

// F4 opens the calendar at the date held, or at today; Enter there takes the date.
TEST_F(CamposTest, CalendarOpensAtTheDateHeld)
{
    CampoData d;
    d.show();
    QApplication::setActiveWindow(&d);
    d.setFocus();
    QTest::keyClick(&d, Qt::Key_F4);
    ASSERT_NE(d.calendario(), nullptr);
    EXPECT_TRUE(d.calendario()->isVisible());
    EXPECT_EQ(d.calendario()->selectedDate(), QDate::currentDate());
    d.calendario()->hide();
    d.setText("2512");
    QTest::keyClick(&d, Qt::Key_Down, Qt::AltModifier);
    EXPECT_EQ(d.calendario()->selectedDate(), QDate(QDate::currentDate().year(), 12, 25));
    d.calendario()->setSelectedDate(QDate(2026, 12, 24));
    QTest::keyClick(d.calendario()->findChild<QTableView *>(), Qt::Key_Return);
    EXPECT_FALSE(d.calendario()->isVisible());
    EXPECT_EQ(d.text(), "24/12/2026");
}

// Numbers shown as the grid shows them; letters refused on leaving; codes with six digits;
// coded kinds by their captions in the grid.
TEST_F(CamposTest, NumbersAndKinds)
{
    FormRegistro icms(*registroAuxiliar("TIcms"));
    icms.show();
    QApplication::setActiveWindow(&icms);
    QTest::keyClick(icms.grade(), Qt::Key_F2);
    icms.findChild<QComboBox *>("UF")->setCurrentText("MG");
    auto *origem = icms.findChild<QLineEdit *>("PERCICMSO");
    auto *destino = icms.findChild<QLineEdit *>("PERCICMSD");
    digitar(origem, "12,5");
    EXPECT_EQ(origem->text(), "12,50%");
    digitar(destino, "7x");
    EXPECT_EQ(msg.avisos, QStringList{"Valor inválido!"});
    EXPECT_EQ(QApplication::focusWidget(), destino);
    EXPECT_EQ(destino->text(), "7x");
    digitar(destino, "18%");
    EXPECT_EQ(destino->text(), "18,00%");
    QTest::keyClick(destino, Qt::Key_F10);
    ASSERT_EQ(icms.estado(), FormCadastro::Estado::Navegando) << msg.avisos.join(" | ").toStdString();
    EXPECT_EQ(icms.modelo()->data(icms.modelo()->index(0, 1), Qt::DisplayRole).toString(), "12,50%");

    FormRegistro grupos(*registroAuxiliar("TGrupos"));
    grupos.show();
    QApplication::setActiveWindow(&grupos);
    QTest::keyClick(grupos.grade(), Qt::Key_F2);
    auto *codigo = grupos.findChild<QLineEdit *>("CODIGO");
    digitar(codigo, "3");
    EXPECT_EQ(codigo->text(), "000003");
    QTest::keyClicks(grupos.findChild<QLineEdit *>("GRUPO"), "Limpeza");
    grupos.findChild<QComboBox *>("TIPO")->setCurrentIndex(4);
    QTest::keyClick(codigo, Qt::Key_F10);
    ASSERT_EQ(grupos.estado(), FormCadastro::Estado::Navegando) << msg.avisos.join(" | ").toStdString();
    EXPECT_EQ(grupos.modelo()->data(grupos.modelo()->index(0, 0), Qt::DisplayRole).toString(), "000003");
    EXPECT_EQ(grupos.modelo()->data(grupos.modelo()->index(0, 2), Qt::DisplayRole).toString(), "Consumo");
}

// A phone laid out landline or mobile by its digits, kept as digits; a wrong date on another tab
// page refused at the save with its page in front.
TEST_F(CamposTest, PhonesAndDatesOnTabPages)
{
    TCadComerciais f("Cl");
    f.show();
    QApplication::setActiveWindow(&f);
    f.BtIncluirClick();
    auto *abas = f.findChild<QTabWidget *>("PcEdicao");
    auto *telefone = f.findChild<QLineEdit *>("TELEFONE1");
    auto *celular = f.findChild<QLineEdit *>("TELEFONE2");
    abas->setCurrentWidget(abas->widget(abas->indexOf(telefone->parentWidget())));
    digitar(telefone, "3132221111");
    EXPECT_EQ(telefone->text(), "(31)3222-1111");
    digitar(celular, "31987654321");
    EXPECT_EQ(celular->text(), "(31)98765-4321");
    EXPECT_EQ(f.valorDoCampo("TELEFONE1").toString(), "3132221111");

    auto *nascimento = f.findChild<CampoData *>("DATANASC");
    nascimento->setText("31/04/1980");
    QTest::keyClick(telefone, Qt::Key_F10);
    EXPECT_TRUE(msg.avisos.contains("Data inválida!")) << msg.avisos.join(" | ").toStdString();
    EXPECT_TRUE(abas->currentWidget()->isAncestorOf(nascimento));
    EXPECT_EQ(QApplication::focusWidget(), nascimento);
}

} // namespace
