// A shop owner's first item at the keyboard only: F2, Enter from field to field, the manufacturer
// the new installation lacks registered with F4 from inside the item, prices typed (the margin
// proposed), Ctrl+Enter to save, and the item found again by part of its bar code.

#include "FormsCadastros.h"
#include "TEstoque.h"
#include "principal/Menus.h"
#include "apoio/TabsTeste.h"
#include "ui/ComboConsulta.h"

#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QTableView>
#include <QTest>
#include <QTimer>

using namespace orb;
using D = db::Decimal;

namespace {

struct PrimeiraHora : teste::ComTabs {};

QWidget *foco() { return QApplication::focusWidget(); }
void digitar(const QString &texto)
{
    QTest::keyClicks(foco(), texto);
    QTest::keyClick(foco(), Qt::Key_Return);
}

TEST_F(PrimeiraHora, FirstItemWithoutTheMouse)
{
    registrarAuxiliares();  // F4 opens the manufacturers' registry
    TEstoque f;
    f.resize(1342, 700);
    f.show();
    QApplication::setActiveWindow(&f);
    f.grade()->setFocus();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&f));

    QTest::keyClick(foco(), Qt::Key_F2);
    ASSERT_EQ(f.estado(), FormCadastro::Estado::Incluindo);
    ASSERT_EQ(foco()->objectName(), "CODIGO");
    digitar("CAN-01");
    digitar("7890000000012");
    digitar("Caneta azul");
    QTest::keyClick(foco(), Qt::Key_Return);  // no group yet
    QTest::keyClick(foco(), Qt::Key_Return);  // nor subgroup
    ASSERT_EQ(foco()->objectName(), "IDFABRICANTE");

    // None registered yet: F4 opens the registry already including, F10 brings the new one back chosen.
    QTimer::singleShot(0, [] {
        QWidget *janela = QApplication::activeModalWidget();
        ASSERT_NE(janela, nullptr);
        QApplication::setActiveWindow(janela);
        ASSERT_NE(foco(), nullptr);
        QTest::keyClicks(foco(), "ACME");
        QTest::keyClick(foco(), Qt::Key_F10);
    });
    QTest::keyClick(foco(), Qt::Key_F4);
    auto *fabricante = f.findChild<ComboConsulta *>("IDFABRICANTE");
    EXPECT_EQ(fabricante->currentText(), "ACME");
    QApplication::setActiveWindow(&f);
    ASSERT_EQ(foco(), fabricante);
    QTest::keyClick(foco(), Qt::Key_Return);
    QTest::keyClick(foco(), Qt::Key_Return);  // no size grid
    ASSERT_EQ(foco()->objectName(), "UN");
    digitar("UN");
    digitar("1,20");
    digitar("2,00");
    digitar("2,50");
    EXPECT_EQ(f.valorDoCampo("PERCMCVAR").value<D>(), D("108.33"));  // the margin follows the price as it is left
    QTest::keyClick(foco(), Qt::Key_Return, Qt::ControlModifier);
    ASSERT_EQ(f.estado(), FormCadastro::Estado::Navegando) << msg.avisos.join(" | ").toStdString();
    EXPECT_EQ(foco(), f.grade());

    f.findChild<QComboBox *>("CbOrdem")->setCurrentText("CÓDIGO BARRAS");
    auto *busca = f.findChild<QLineEdit *>("EdBusca");
    busca->setFocus();
    QTest::keyClicks(busca, "0000000012");  // part of the bar code
    f.pesquisar();
    ASSERT_EQ(f.modelo()->rowCount(), 1);
    EXPECT_EQ(f.modelo()->valor(0, "DESCRICAO").toString(), "Caneta azul");
    EXPECT_EQ(f.modelo()->valor(0, "PRVENDAVAR").value<D>(), D("2.5"));
}

// A customer with a birth date typed as people type it, the way to it walked with Enter alone.
TEST_F(PrimeiraHora, CustomerWithBirthDateTyped)
{
    registrarComercial();
    std::unique_ptr<QWidget> w(criarFormulario("TClientes", nullptr));
    auto *f = qobject_cast<FormCadastro *>(w.get());
    ASSERT_NE(f, nullptr);
    f->resize(1342, 700);
    f->show();
    QApplication::setActiveWindow(f);
    f->grade()->setFocus();
    ASSERT_TRUE(QTest::qWaitForWindowActive(f));

    QTest::keyClick(foco(), Qt::Key_F2);
    ASSERT_EQ(foco()->objectName(), "NOME");  // the code is offered; the name is the first empty field
    digitar("MARIA DA SILVA");
    digitar("MARIA");
    for (int i = 0; i < 60 && foco()->objectName() != "DATANASC"; ++i) QTest::keyClick(foco(), Qt::Key_Return);
    ASSERT_EQ(foco()->objectName(), "DATANASC");  // on another page, brought to the front
    digitar("15031985");
    QTest::keyClick(foco(), Qt::Key_F10);
    ASSERT_EQ(f->estado(), FormCadastro::Estado::Navegando) << msg.avisos.join(" | ").toStdString();
    EXPECT_EQ(foco(), f->grade());
    db::Transacao t(tabs.DbORB(), db::Modo::Leitura);
    EXPECT_EQ(db::escalar(t, "Select DataNasc From TbCad Where Nome = 'MARIA DA SILVA'").toDate(), QDate(1985, 3, 15));
}

} // namespace
