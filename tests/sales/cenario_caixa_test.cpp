// The road of a sale through the screens, as a cashier goes: open the day, sell on credit in three,
// approve, deliver (the stock goes down), receive the first instalment, close the day and print its
// summary.

#include "Entregas.h"
#include "TAbEncMovimento.h"
#include "TContas.h"
#include "TDataAprovacaoVendas.h"
#include "Telas.h"
#include "apoio/TabsTeste.h"
#include "ui/Campos.h"
#include "ui/ComboConsulta.h"
#include "ui/Impressao.h"

#include <QComboBox>
#include <optional>
#include <QPushButton>
#include <QTableView>
#include <QTableWidget>
#include <QLineEdit>
#include <gtest/gtest.h>

using namespace orb;
using db::Decimal;

namespace {

struct CenarioCaixa : teste::ComTabs {};

using teste::escolher;

TEST_F(CenarioCaixa, OpenSellApproveDeliverReceiveCloseAndPrint)
{
    std::optional<teste::CenarioVendas> c;
    int item, admin;
    {
        db::Transacao t(tabs.DbORB());
        teste::VendaPronta v(t);
        c = v.c;
        item = v.item;
        admin = v.adm.idUsuario;
        // Term sales: the first due date a month after billing, monthly after that.
        db::executar(t, "Insert Into TbParVendas (Data, Parcelas, FormaPagto, PrimVenc, IntVenc, Entrada, GeraFin) "
                        "Values ('2020-01-01', '03', 'DINHEIRO', 30, 30, 'N', 'A')");
        t.commit();
    }
    sessao().idUsuario = admin;
    QStringList impressos;
    definirImpressora([&](const QString &, const QString &html) { impressos << html; });

    // Morning: the day's movement.
    TAbEncMovimento caixa;
    caixa.definirMenu("Financeiro", "TAbEncMovimento");
    caixa.BtIncluirClick();
    ASSERT_EQ(caixa.estado(), FormCadastro::Estado::Incluindo) << msg.avisos.join(" | ").toStdString();
    escolher(caixa.findChild<QComboBox *>("CbRespAb"), admin);
    caixa.BtSalvarClick();
    ASSERT_EQ(caixa.estado(), FormCadastro::Estado::Navegando) << msg.avisos.join(" | ").toStdString();

    // A sale of 100.00 on credit in three.
    TVendas venda("Ven");
    venda.definirMenu("&Comercial", "TVendas");
    venda.BtIncluirClick();
    ASSERT_EQ(venda.estado(), FormCadastro::Estado::Incluindo) << msg.avisos.join(" | ").toStdString();
    teste::partes(venda, *c);
    escolher(venda.comboItem(), item);
    venda.campoQtd()->setText("1");
    venda.BtIncluirLinhaClick();
    auto *cond = venda.findChild<QComboBox *>("CbCondPagto");
    cond->setCurrentIndex(cond->findData("P"));
    auto *parcelas = venda.findChild<QComboBox *>("CbParcelas");
    parcelas->setCurrentIndex(parcelas->findData("03"));
    venda.BtSalvarClick();
    ASSERT_EQ(venda.estado(), FormCadastro::Estado::Navegando) << msg.avisos.join(" | ").toStdString();
    int id = 0;
    {
        db::Transacao t(tabs.DbORB(), db::Modo::Leitura);
        id = db::escalar(t, "Select Max(Id) From TbCom").toInt();
    }
    venda.grade()->selectRow(venda.modelo()->linhaDoId(id));

    // Approve with the accounts generated now, then deliver.
    definirRespostaDialogo([](QDialog &d) {
        if (auto *a = qobject_cast<TDataAprovacaoVendas *>(&d)) {
            a->cbGeraFin->setCurrentIndex(a->cbGeraFin->findData("A"));
            a->BtOkClick();
        } else if (auto *e = qobject_cast<TDataEntregaVenda *>(&d)) {
            EXPECT_EQ(e->itens->rowCount(), 1);
            e->edNota->setText("1001");
            e->BtOkClick();
        }
    });
    venda.BtAprovarClick();
    venda.grade()->selectRow(venda.modelo()->linhaDoId(id));
    venda.BtEntregarClick();
    ASSERT_TRUE(msg.avisos.isEmpty()) << msg.avisos.join(" | ").toStdString();
    {
        db::Transacao t(tabs.DbORB(), db::Modo::Leitura);
        EXPECT_EQ(db::escalar(t, "Select First 1 Status From TbComSt Where Fk = :ID Order By Id Desc", {{"ID", id}}).toString(), "EN");
        EXPECT_EQ(db::escalar(t, "Select EstAtual From TbItensEst Where Fk = :I and IdEmpresa = :E", {{"I", item}, {"E", c->empresa}})
                      .value<Decimal>(), Decimal("-1.0000"));
    }

    // The first instalment received at the counter.
    TContas contas("Rec");
    contas.definirMenu("Financeiro", "TContas");
    ASSERT_EQ(contas.modelo()->rowCount(), 3);
    contas.grade()->selectRow(0);
    TContas::definirRespostaDialogo([](TDataRectoContasReceber &d) { d.BtOkClick(); });
    contas.BtQuitarClick();
    TContas::definirRespostaDialogo({});
    ASSERT_TRUE(msg.avisos.isEmpty()) << msg.avisos.join(" | ").toStdString();
    {
        db::Transacao t(tabs.DbORB(), db::Modo::Leitura);
        EXPECT_EQ(db::escalar(t, "Select Sum(Valor) From TbContasPagtos").value<Decimal>(), Decimal("33.33"));
    }

    definirRespostaDialogo({});

    // Night: the day closed (Encerrar, the responsible, Salvar; Cancelar leaves it open) and its summary printed.
    const auto fechado = [&] {
        db::Transacao t(tabs.DbORB(), db::Modo::Leitura);
        return !db::escalar(t, "Select DataEnc From TbAbEncMov").isNull();
    };
    caixa.grade()->selectRow(0);
    caixa.BtQuitarClick();
    caixa.BtCancelarClick();
    EXPECT_FALSE(fechado());
    caixa.grade()->selectRow(0);
    caixa.BtQuitarClick();
    caixa.BtSalvarClick();
    ASSERT_TRUE(fechado()) << msg.avisos.join(" | ").toStdString();
    caixa.grade()->selectRow(0);
    caixa.botao("Imprimir")->click();
    ASSERT_EQ(impressos.size(), 1) << msg.avisos.join(" | ").toStdString();
    EXPECT_TRUE(impressos[0].contains("FECHAMENTO DE CAIXA - " + QDate::currentDate().toString("dd/MM/yyyy")));
    EXPECT_TRUE(impressos[0].contains("33,33"));
    definirImpressora({});
}

} // namespace
