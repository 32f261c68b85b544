// The route operator's day through the widgets: area, route, operator, point and machine
// registered on their screens, the machine read twice on the readings screen, and the readings
// screen driven by a finger: a swipe moves between readings, a tap on a counter opens the pad.

#include "FormsLeituras.h"
#include "Leituras.h"
#include "Maquinas.h"
#include "TLeituras86.h"
#include "TecladoNumerico.h"
#include "apoio/TabsTeste.h"
#include "principal/Menus.h"
#include "ui/Campos.h"
#include "ui/FormRegistro.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPointingDevice>
#include <QPushButton>
#include <QTableView>
#include <QTest>
#include <gtest/gtest.h>

using namespace orb;

namespace {

struct TLeituras86Test : teste::ComTabs {
    std::unique_ptr<QPointingDevice> dedo{QTest::createTouchDevice()};

    void SetUp() override
    {
        ComTabs::SetUp();
        registrarLeituras();
    }
    std::unique_ptr<FormRegistro> abrir(const QString &classe)
    {
        auto *f = qobject_cast<FormRegistro *>(criarFormulario(classe, nullptr));
        f->definirMenu("&Máquinas", classe);
        f->show();
        return std::unique_ptr<FormRegistro>(f);
    }
    // Incluir, the values typed, Salvar: the new record's ID (0 when refused).
    int incluir(const QString &classe, const Valores &v)
    {
        auto f = abrir(classe);
        f->BtIncluirClick();
        for (const auto &[k, x] : v) f->definirValor(k, x);
        f->BtSalvarClick();
        return f->estado() == FormCadastro::Estado::Navegando ? f->idAtual() : 0;
    }
    int contador(TLeituras86 &t, const QString &c) { return t.contador(c)->text().toInt(); }
    // Types a counter and leaves it, as the keyboard does.
    void digitar(TLeituras86 &t, const QString &c, const QString &texto)
    {
        t.contador(c)->setFocus();
        t.contador(c)->selectAll();
        QTest::keyClicks(t.contador(c), texto);
        emit t.contador(c)->editingFinished();
    }
    int maquinaCadastrada()
    {
        const int area = incluir("TAreas", {{"AREA", "Centro"}});
        const int rota = incluir("TRotas", {{"ROTA", "Rota 1"}, {"IDAREA", area}});
        const int oper = incluir("TOperadores", {{"NOME", "Paulo"}, {"PERCCOM", "10"}, {"IDROTA", rota}});
        const int ponto = incluir("TPontos", {{"NOME", "Bar do Zé"}, {"RESPONSAVEL", "José"}, {"ENDERECO", "Rua A, 10"},
                                              {"PERCCOM", "30"}, {"IDROTA", rota}, {"IDOPER", oper}});
        return incluir("TMaquinas", {{"SELO", "S-001"}, {"TIPO", "Música"}, {"MOEDA", "0"}, {"ENTRADA", "1000"},
                                     {"SAIDA", "500"}, {"IDPONTO", ponto}, {"PERCCOMPONTO", "30"}, {"PERCCOMOPER", "10"}});
    }
    void ler(TLeituras86 &t, const QDate &data, const QString &difEntrada, const QString &finalSaida)
    {
        t.BtIncluirClick();
        ASSERT_EQ(t.estado(), FormCadastro::Estado::Incluindo);
        t.selo()->setEditText("S-001");
        t.EdSeloExit();
        t.data()->definir(data);
        digitar(t, "DIFEE", difEntrada);
        digitar(t, "LESF", finalSaida);
        t.BtSalvarClick();
        ASSERT_EQ(t.estado(), FormCadastro::Estado::Navegando) << msg.avisos.join(" | ").toStdString();
    }
    void arrastar(QWidget *w, QPoint de, QPoint ate)
    {
        QTest::touchEvent(w, dedo.get()).press(0, de, w);
        QTest::touchEvent(w, dedo.get()).move(0, (de + ate) / 2, w);
        QTest::touchEvent(w, dedo.get()).release(0, ate, w);
    }
};

TEST_F(TLeituras86Test, RegistriesThenTwoReadingsTheSecondFromTheFirstsFinals)
{
    ASSERT_NE(maquinaCadastrada(), 0) << msg.avisos.join(" | ").toStdString();
    TLeituras86 t;
    t.show();
    t.BtIncluirClick();
    t.selo()->setEditText("S-001");
    t.EdSeloExit();
    // The first reading starts from the machine's own counters, with its point's and route's data.
    EXPECT_EQ(contador(t, "LEEI"), 1000);
    EXPECT_EQ(contador(t, "LESI"), 500);
    EXPECT_EQ(t.findChild<QLabel *>("LbZ_ROTA")->text(), "Rota 1");
    EXPECT_EQ(t.findChild<QLabel *>("LbZ_AREA")->text(), "Centro");
    t.data()->definir(QDate(2026, 3, 2));
    digitar(t, "DIFEE", "1000");
    EXPECT_EQ(contador(t, "LEEF"), 2000);
    digitar(t, "LESF", "700");
    EXPECT_EQ(contador(t, "DIFES"), 200);
    QStringList valores;
    for (const char *c : {"HPTOTAL", "COMPONTO", "ARECEBER", "COMOPER", "LIQUIDO"}) valores << t.valor(c)->text();
    EXPECT_EQ(valores, QStringList({"8,00", "2,40", "5,60", "0,56", "5,04"}));
    t.BtSalvarClick();
    ASSERT_EQ(t.estado(), FormCadastro::Estado::Navegando) << msg.avisos.join(" | ").toStdString();
    EXPECT_TRUE(msg.avisos.isEmpty()) << msg.avisos.join(" | ").toStdString();

    t.BtIncluirClick();
    t.selo()->setEditText("S-001");
    t.EdSeloExit();
    EXPECT_EQ(contador(t, "LEEI"), 2000);
    EXPECT_EQ(contador(t, "LESI"), 700);
    t.data()->definir(QDate(2026, 3, 9));
    digitar(t, "LEEF", "2150");
    EXPECT_EQ(contador(t, "DIFEE"), 150);
    t.BtSalvarClick();
    ASSERT_EQ(t.estado(), FormCadastro::Estado::Navegando) << msg.avisos.join(" | ").toStdString();
    EXPECT_EQ(t.modelo()->rowCount(), 2);
    EXPECT_EQ(t.valor("HPTOTAL")->text(), "1,50");  // the newest reading comes first
}

TEST_F(TLeituras86Test, TracesNameTheQuickFormForAreasAndTellNewAndDeletedReadings)
{
    maquinaCadastrada();
    auto areas = abrir("TAreas");
    areas->BtIncluirClick();
    EXPECT_TRUE(tabs.trilha().contains("procedure TMiniCad.BtIncluirClick(Sender: TObject)"));
    areas->BtCancelarClick();
    TLeituras86 t;
    t.show();
    ler(t, QDate(2026, 3, 2), "100", "510");
    const QString id = QString::number(t.idAtual());
    EXPECT_TRUE(tabs.trilha().contains("Nova Leitura (" + id + ")")) << tabs.trilha().join(" | ").toStdString();
    msg.respostas = {QMessageBox::Yes};
    t.BtExcluirClick();
    EXPECT_EQ(msg.perguntas, QStringList{"Deseja realmente excluir a Leitura?"});
    EXPECT_TRUE(tabs.trilha().contains("Leitura Excluída (" + id + ")"));
    EXPECT_EQ(t.modelo()->rowCount(), 0);
}

TEST_F(TLeituras86Test, EveryItemOfTheMachinesMenuOpensItsForm)
{
    int n = 0;
    for (const GrupoCatalogo &g : menuDoRamo("CO"))
        for (const ModuloMenu &m : g.modulos) {
            if (g.caption != "&Máquinas") continue;
            SCOPED_TRACE(m.classe.toStdString());
            ASSERT_TRUE(formularioExiste(m.classe));
            std::unique_ptr<QWidget> w(criarFormulario(m.classe, nullptr));
            w->show();
            EXPECT_LE(w->minimumSizeHint().width(), 1280 - 24);
            ++n;
        }
    EXPECT_EQ(n, 6);
    EXPECT_TRUE(msg.avisos.isEmpty()) << msg.avisos.join(" | ").toStdString();
}

TEST_F(TLeituras86Test, SwipeMovesBetweenReadingsAndATapOpensTheNumericPad)
{
    maquinaCadastrada();
    TLeituras86 t;
    t.resize(1280, 800);
    t.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&t));
    ler(t, QDate(2026, 3, 2), "100", "510");
    ler(t, QDate(2026, 3, 9), "100", "520");
    ler(t, QDate(2026, 3, 16), "100", "530");
    t.navegar(-2);
    ASSERT_EQ(t.grade()->currentIndex().row(), 0);
    QWidget *p = t.painel();
    const QPoint meio(p->width() / 2, 12);
    arrastar(p, meio + QPoint(150, 0), meio - QPoint(150, 0));  // leftwards: the next one
    EXPECT_EQ(t.grade()->currentIndex().row(), 1);
    arrastar(p, meio - QPoint(150, 0), meio + QPoint(150, 0));  // rightwards: back
    EXPECT_EQ(t.grade()->currentIndex().row(), 0);
    arrastar(p, meio, meio + QPoint(20, 120));  // mostly down: no swipe
    EXPECT_EQ(t.grade()->currentIndex().row(), 0);

    t.BtIncluirClick();
    t.selo()->setEditText("S-001");
    t.EdSeloExit();
    QLineEdit *fim = t.contador("LEEF");
    const QPoint centro = fim->rect().center();
    QTest::touchEvent(fim, dedo.get()).press(0, centro, fim);
    QTest::touchEvent(fim, dedo.get()).release(0, centro, fim);
    ASSERT_NE(t.teclado(), nullptr);
    EXPECT_TRUE(t.teclado()->isVisible());
    for (const char *k : {"1", "5", "0", "0"}) QTest::mouseClick(t.teclado()->findChild<QPushButton *>(QString("Bt") + k), Qt::LeftButton);
    QTest::mouseClick(t.teclado()->findChild<QPushButton *>("BtOk"), Qt::LeftButton);
    EXPECT_EQ(contador(t, "LEEF"), 1500);
    EXPECT_EQ(contador(t, "DIFEE"), 1500 - contador(t, "LEEI"));
    t.BtCancelarClick();
}

TEST_F(TLeituras86Test, FitsATabletAndFoldsItsBar)
{
    maquinaCadastrada();
    TLeituras86 t;
    t.resize(1280, 800);
    t.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&t));
    ler(t, QDate(2026, 3, 2), "1000", "700");
    EXPECT_LE(t.minimumSizeHint().width(), 1280);
    // Inside the main window: its menu, tab bar and status line take about a hundred pixels.
    EXPECT_LE(t.minimumSizeHint().height(), 800 - 100) << t.minimumSizeHint().height();
    // Targets a finger hits: the buttons and the counters are tall.
    EXPECT_GE(t.botao("Incluir")->height(), 44);
    EXPECT_GE(t.contador("LEEF")->height(), 56);
    // What is visible: filters, Incluir, Salvar, Cancelar, Excluir and the bar's own button.
    auto visiveis = [&] {
        QString r;
        for (QWidget *w : std::initializer_list<QWidget *>{t.filtros(), t.botao("Incluir"), t.botao("Salvar"), t.botao("Cancelar"), t.botao("Excluir"),
                           t.findChild<QPushButton *>("BtBarra")})
            r += w->isVisible() ? 'S' : 'N';
        return r;
    };
    t.BtBarraClick();
    EXPECT_EQ(visiveis().left(2), "NN");
    EXPECT_EQ(visiveis().back(), 'S');
    t.BtIncluirClick();  // folded while a reading is typed, the bar keeps Salvar and Cancelar
    EXPECT_EQ(visiveis().mid(1, 4), "NSSN");
    t.BtCancelarClick();
    EXPECT_EQ(visiveis()[2], 'N');
    t.BtBarraClick();
    EXPECT_EQ(visiveis().left(2), "SS");
}

} // namespace
