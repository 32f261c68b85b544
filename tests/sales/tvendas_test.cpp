// The operation form driven like a user: each kind's mode, a term sale typed, saved and opened again,
// a service order's packaging, serials on a line.

#include "FormsVendas.h"
#include "Telas.h"
#include "principal/Menus.h"
#include "apoio/TabsTeste.h"
#include "ui/ComboConsulta.h"
#include "ui/Campos.h"

#include <QComboBox>
#include <QLabel>
#include <QTabWidget>
#include <QCoreApplication>
#include <QScrollArea>
#include <QScrollBar>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QStandardItemModel>
#include <QTableView>
#include <gtest/gtest.h>
#include <memory>

using namespace orb;

namespace {

// A workstation on the sales scenario, committed; `extra` adds to it in the same transaction.
struct TVendasTest : teste::ComTabs {
    teste::CenarioVendas cenario(const std::function<void(db::Transacao &, teste::CenarioVendas &)> &extra = {})
    {
        db::Transacao t(tabs.DbORB());
        teste::CenarioVendas c(t);
        if (extra) extra(t, c);
        t.commit();
        return c;
    }
};

using teste::escolher;
using teste::partes;

// Each menu kind opens the one form in its own mode: only a service order has technician and packaging.
TEST_F(TVendasTest, OnlyTheServiceModeHasTechnicianAndPackaging)
{
    registrarVendas();
    for (const auto &[classe, servico] : {std::pair{"TVendas", false}, {"TServicos", true}, {"TCompras", false}}) {
        std::unique_ptr<QWidget> w(criarFormulario(classe, nullptr));
        ASSERT_NE(qobject_cast<TVendas *>(w.get()), nullptr) << classe;
        EXPECT_EQ(w->findChild<ComboConsulta *>("CbTecnico") != nullptr, servico) << classe;
        EXPECT_EQ(w->findChild<ComboConsulta *>("CbAcond") != nullptr, servico) << classe;
    }
}

// A service order through its fields: technician, packaging, forecast and the equipment saved (the
// packaging a second order may not take: documento_test).
TEST_F(TVendasTest, AServiceOrderSavesItsFields)
{
    int pasta = 0;
    const teste::CenarioVendas c = cenario([&](db::Transacao &t, teste::CenarioVendas &) {
        pasta = db::escalar(t, "Insert Into TbAcond (Codigo, Nome) Values (1, 'PASTA 01') Returning Id").toInt();
    });
    TVendas f("Ser");
    f.definirMenu("&Comercial", "TServicos");
    f.show();
    f.BtIncluirClick();
    ASSERT_EQ(f.estado(), FormCadastro::Estado::Incluindo) << msg.avisos.join(" | ").toStdString();
    partes(f, c);
    escolher(f.findChild<ComboConsulta *>("CbTecnico"), c.atendente);
    escolher(f.comboItem(), c.itens["SERV"]);
    f.campoQtd()->setText("1");
    f.BtIncluirLinhaClick();
    for (auto *e : f.findChildren<QLineEdit *>())
        if (e->maxLength() == 7) e->setText("abc1d23");  // the plate, upper-cased
    f.findChild<QPlainTextEdit *>("SOLICITACOES")->setPlainText("Não liga.\nTrocar a tela.");
    f.findChild<QPlainTextEdit *>("LAUDOTECNICO")->setPlainText("Fonte queimada.");
    f.findChild<CampoData *>("EdPrevEntrega")->setText("20/12/2026");
    escolher(f.findChild<ComboConsulta *>("CbAcond"), pasta);
    f.BtSalvarClick();
    ASSERT_EQ(f.estado(), FormCadastro::Estado::Navegando) << msg.avisos.join(" | ").toStdString();
    db::Transacao t(tabs.DbORB(), db::Modo::Leitura);
    EXPECT_EQ(db::escalar(t, "Select Op || '|' || IdTecnico || '|' || Acond || '|' || Placa || '|' || Cast(DataPrevEntrega As Date) || '|' || "
                             "Solicitacoes || '|' || LaudoTecnico From TbCom").toString(),
              QString("2|%1|PASTA 01|ABC1D23|2026-12-20|Não liga.\nTrocar a tela.|Fonte queimada.").arg(c.atendente));
}

QStringList textos(const QAbstractItemModel *m)
{
    QStringList r;
    for (int i = 0; i < m->rowCount(); ++i)
        for (int j = 0; j < m->columnCount(); ++j) r << m->index(i, j).data().toString();
    return r;
}

// Through the widgets: a line without quantity refused, three lines and a free-text service, a discount
// on the subtotal, "A PRAZO" in three, a billing date before the operation's refused, saved; the
// instalments add up to the billing, and the sale opened again shows the same lines, total and instalments.
TEST_F(TVendasTest, ATermSaleInThreeShowsTheSameFiguresWhenOpenedAgain)
{
    int transportadora = 0;
    const teste::CenarioVendas c = cenario([&](db::Transacao &t, teste::CenarioVendas &) {
        db::executar(t, "Insert Into TbParVendas (Data, IntVenc, PrimVenc) Values ('2020-01-01', 30, 30)");
        transportadora = db::escalar(t, "Insert Into TbCad (Nome, Tr) Values ('TRANSPORTES LIGEIRO', 'S') Returning Id").toInt();
    });
    const QList<int> itens = {c.itens["000"], c.itens["010"], c.itens["SERV"]};
    TVendas f("Ven");
    f.definirMenu("&Comercial", "TVendas");
    f.resize(1342, 680);
    f.show();
    f.BtIncluirClick();
    ASSERT_EQ(f.estado(), FormCadastro::Estado::Incluindo) << msg.avisos.join(" | ").toStdString();
    partes(f, c);
    const char *qtds[] = {"3", "2,5", "1"};
    for (int i = 0; i < 3; ++i) {
        escolher(f.comboItem(), itens[i]);
        f.campoQtd()->setText(qtds[i]);
        f.BtIncluirLinhaClick();
    }
    f.comboItem()->setEditText("SERVIÇO AVULSO");
    f.campoQtd()->setText("1");
    f.findChild<CampoNumero *>("FRETE")->setText("10,00");
    f.findChild<CampoNumero *>("OUTROS")->setText("2,50");
    f.BtIncluirLinhaClick();
    EXPECT_EQ(f.gradeLinhas()->model()->rowCount(), 4);
    auto *tipo = f.findChild<QComboBox *>("TIPODESCONTO");
    tipo->setCurrentIndex(tipo->findData("S"));
    f.findChild<CampoNumero *>("DESCONTOM")->setText("10,01");
    f.findChild<CampoNumero *>("DESCONTOS")->setText("5");
    f.findChild<CampoNumero *>("SEGURO")->setText("3,50");
    auto *cond = f.findChild<QComboBox *>("CbCondPagto");
    cond->setCurrentIndex(cond->findData("P"));
    auto *parcelas = f.findChild<QComboBox *>("CbParcelas");
    parcelas->setCurrentIndex(parcelas->findData("03"));
    // A billing date before the operation's is refused as it is left, and the date typed goes back.
    auto *dataFat = f.findChild<CampoData *>("EdDataFat");
    const QString antes = dataFat->text();
    dataFat->setText("01/01/2020");
    emit dataFat->editingFinished();
    EXPECT_EQ(msg.avisos.last(), "A Data do Faturamento deve ser maior ou igual a Data da Operação!");
    EXPECT_EQ(dataFat->text(), antes);
    escolher(f.findChild<QComboBox *>("TBCOMFAT.IDTRANSPORTADORA"), transportadora);
    f.BtSalvarClick();
    ASSERT_EQ(f.estado(), FormCadastro::Estado::Navegando) << msg.avisos.join(" | ").toStdString();

    db::Transacao t(tabs.DbORB(), db::Modo::Leitura);
    const int id = db::escalar(t, "Select Max(Id) From TbCom").toInt();
    EXPECT_EQ(db::escalar(t, "Select Total From TbCom Where Id = :ID", {{"ID", id}}).value<db::Decimal>(),
              f.documento().cabecalho.at("TOTAL").value<db::Decimal>());
    const auto fat = db::escalar(t, "Select Valor From TbComFat Where Fk = :ID", {{"ID", id}}).value<db::Decimal>();
    EXPECT_EQ(db::escalar(t, "Select Sum(C.Valor) From TbContas C Join TbComFat F On (F.Id = C.Fk) Where C.Fks = 1 and F.Fk = :ID",
                          {{"ID", id}}).value<db::Decimal>(), fat);
    EXPECT_EQ(db::escalar(t, "Select C.DescontoM || '|' || C.DescontoS || '|' || C.Seguro || '|' || C.TotalFrete || '|' || C.OutrosM || '|' || "
                             "Iif(C.TotalM = C.SubtotalM + C.Ipi + C.Seguro + C.TotalFreteM + C.OutrosM, 'S', 'N') || '|' || F.IdTransportadora "
                             "From TbCom C Join TbComFat F On (F.Fk = C.Id) Where C.Id = :ID", {{"ID", id}}).toString(),
              QString("10.01|5.00|3.50|10.00|2.50|S|%1").arg(transportadora));
    EXPECT_EQ(f.gradeLinhas()->model()->index(3, 4).data().toString(), "5,00");  // INSTALAÇÃO takes the services' discount
    // The instalments on the screen are the saved ones, and they add up to the billing too.
    ASSERT_EQ(f.gradeParcelas()->model()->rowCount(), 3);
    db::Decimal soma("0");
    for (int i = 0; i < 3; ++i) soma += *db::Decimal::ler(f.gradeParcelas()->model()->index(i, 2).data().toString(), true);
    EXPECT_EQ(soma, fat);

    const QStringList linhas = textos(f.gradeLinhas()->model()), contas = textos(f.gradeParcelas()->model());
    const QString total = f.findChild<QLabel *>("LbTotal")->text();
    TVendas g("Ven");
    g.definirMenu("&Comercial", "TVendas");
    g.resize(1342, 680);  // the main window's tab area on a 1366×768 screen
    g.show();
    ASSERT_EQ(g.idAtual(), id);
    EXPECT_EQ(textos(g.gradeLinhas()->model()), linhas);
    EXPECT_EQ(textos(g.gradeParcelas()->model()), contas);
    EXPECT_EQ(g.findChild<QLabel *>("LbTotal")->text(), total);
    EXPECT_EQ(g.findChild<QComboBox *>("CbCondPagto")->currentData(), "P");
    EXPECT_EQ(g.findChild<CampoNumero *>("DESCONTOM")->text(), f.findChild<CampoNumero *>("DESCONTOM")->text());
    // The header and the billing page are seen whole on that screen, without scrolling.
    QCoreApplication::processEvents();
    auto *pagina = g.findChild<QTabWidget *>("PcEdicao");
    for (auto *r : g.findChildren<QScrollArea *>())
        if (r->widget() && r->widget()->isAncestorOf(pagina)) {
            EXPECT_EQ(r->verticalScrollBar()->maximum(), 0);
            EXPECT_FALSE(r->horizontalScrollBar()->isVisible());
        }
}

// Serials typed on the line marked (their refusals: documento_test): one too many is refused and stays
// typed to be corrected; those kept go with the sale and show again when it is reopened.
TEST_F(TVendasTest, SerialsOnTheMarkedLine)
{
    const teste::CenarioVendas c = cenario();
    TVendas f("Ven");
    f.show();
    f.BtIncluirClick();
    partes(f, c);
    escolher(f.comboItem(), c.itens["000"]);  // controls serials on exit
    f.campoQtd()->setText("2");
    f.BtIncluirLinhaClick();
    auto *serial = f.findChild<QLineEdit *>("SERIAL");
    for (const char *s : {"SN-1", "SN-2", "SN-3"}) {
        f.gradeLinhas()->selectRow(0);
        serial->setText(s);
        f.BtIncluirSerialClick();
    }
    EXPECT_EQ(msg.avisos, QStringList{"A quantidade de seriais já atingiu a quantidade da mercadoria!"});
    EXPECT_EQ(serial->text(), "SN-3");
    f.BtSalvarClick();
    ASSERT_EQ(f.estado(), FormCadastro::Estado::Navegando) << msg.avisos.join(" | ").toStdString();
    TVendas g("Ven");
    g.show();
    EXPECT_EQ(g.gradeLinhas()->model()->index(0, 7).data().toString(), "SN-1, SN-2");
    EXPECT_EQ(g.documento().linhas.value(0).count("Z_SERIAIS"), 1u);
}

} // namespace
