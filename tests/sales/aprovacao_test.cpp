// Approval and delivery over a real database: the checks in their order, the cash session's rule
// only when the accounts are generated at approval, the stock rows of the billing company and the
// principal company's on cancellation, paid instalments holding every cancellation back.

#include "Aprovacao.h"
#include "Contas.h"
#include "Entregas.h"
#include "Status.h"
#include "apoio/Direitos.h"

#include <functional>
#include <gtest/gtest.h>

using db::Decimal;
using namespace orb;
using teste::kDia;

namespace {

using teste::recusa;

struct AprovacaoTest : ::testing::Test {
    teste::BancoTemporario bt;
    db::Transacao t{bt.banco()};
    teste::VendaPronta v{t};

    int contar(const QString &sql, int id) { return db::escalar(t, sql, {{"ID", id}}).toInt(); }
    void pagarPrimeira(int idCom)
    {
        db::executar(t, "Insert Into TbContasPagtos (Data, Valor, Fk) Select First 1 :D, 33.33, Id From TbContas Where Fks = 1 and Fk = :F "
                        "Order By Prazo", {{"D", kDia.date()}, {"F", v.fat(idCom)}});
    }
};

TEST_F(AprovacaoTest, ApprovalChecksInOrderAndWritesNothingOnARefusal)
{
    const int id = v.salvar();
    const int linhasSt = contar("Select Count(*) From TbComSt Where Fk = :ID", id);
    EXPECT_EQ(recusa(t, [&] { aprovarOperacao(t, id, {}, "A", v.adm); }), "Digite a data/hora primeiro!");
    db::executar(t, "Update TbCad Set Fu = 'N' Where Id = :ID", {{"ID", v.adm.idUsuario}});
    EXPECT_EQ(recusa(t, [&] { aprovarOperacao(t, id, kDia, "A", v.adm); }),
              "O funcionário associado ao usuário atual ainda não foi definido para que seja responsável pela aprovação!");
    db::executar(t, "Update TbCad Set Fu = 'S' Where Id = :ID", {{"ID", v.adm.idUsuario}});
    db::executar(t, "Insert Into TbCadSit (Situacao, Data, Motivo, Fk) Values ('E', '2026-03-01', 'SEM REFERÊNCIAS', :C)", {{"C", v.c.cliente}});
    EXPECT_EQ(recusa(t, [&] { aprovarOperacao(t, id, kDia, "A", v.adm); }), "Esse cadastro está em análise! Motivo: SEM REFERÊNCIAS");
    db::executar(t, "Insert Into TbCadSit (Situacao, Data, Motivo, Fk) Values ('A', '2026-03-02', '', :C)", {{"C", v.c.cliente}});
    EXPECT_EQ(recusa(t, [&] { aprovarOperacao(t, id, kDia, "A", v.adm); }),
              "Não é possível aprovar essa operação pois ainda não foi efetuada a abertura do movimento nesta data!");
    v.abrirCaixa(true);
    EXPECT_EQ(recusa(t, [&] { aprovarOperacao(t, id, kDia, "A", v.adm); }),
              "Não é possível aprovar essa operação pois já foi efetuado o encerramento do movimento nesta data!");
    EXPECT_EQ(contar("Select Count(*) From TbComSt Where Fk = :ID", id), linhasSt);
    EXPECT_TRUE(db::escalar(t, "Select DataAprovacao From TbComFat Where Fk = :ID", {{"ID", id}}).isNull());
}

TEST_F(AprovacaoTest, AClosedDayBlocksApprovalOnlyWhenAccountsAreGeneratedThen)
{
    v.abrirCaixa(true);
    const int porEntrega = v.salvar("2.0000", "03", "E");
    aprovarOperacao(t, porEntrega, kDia, "E", v.adm);
    EXPECT_EQ(db::escalar(t, "Select Status || '|' || Observacoes From TbComSt Where Id = (Select Max(Id) From TbComSt Where Fk = :ID)",
                          {{"ID", porEntrega}}).toString(), "AP|" + kAguardandoEntrega);
    EXPECT_EQ(db::escalar(t, "Select DataAprovacao From TbComFat Where Fk = :ID", {{"ID", porEntrega}}).toDateTime(), kDia);
}

TEST_F(AprovacaoTest, ApprovalMakesTheInstalmentsEffectiveAndItsCancellationRemovesThem)
{
    v.abrirCaixa();
    const int id = v.salvar();
    aprovarOperacao(t, id, kDia, "A", v.adm);
    EXPECT_EQ(contar("Select Count(*) From TbContas Where Fks = 1 and Fk = :ID and Situacao = 'NÃO QUITADO'", v.fat(id)), 3);
    // The second approval finds it approved already.
    EXPECT_EQ(recusa(t, [&] { aprovarOperacao(t, id, kDia, "A", v.adm); }), "Esta operação não pode ser alterada pois está APROVADA!");
    pagarPrimeira(id);
    EXPECT_EQ(recusa(t, [&] { cancelarAprovacao(t, id, v.adm, kDia); }),
              "A aprovação desta operação não pode ser cancelada pois a mesma já possui parcela(s) Quitada(s)!");
    db::executar(t, "Delete From TbContasPagtos");
    cancelarAprovacao(t, id, v.adm, kDia);
    EXPECT_EQ(statusAtual(t, id), "AA");
    EXPECT_EQ(contar("Select Count(*) From TbContas Where Fks = 1 and Fk = :ID", v.fat(id)), 0);
    EXPECT_TRUE(db::escalar(t, "Select DataAprovacao From TbComFat Where Fk = :ID", {{"ID", id}}).isNull());
}

TEST_F(AprovacaoTest, DeliveryMovesTheBillingCompanysStockAndCreatesAMissingRowNegative)
{
    v.abrirCaixa();
    const int id = v.salvar();
    ASSERT_FALSE(v.temEstoque(v.c.empresa));
    aprovarOperacao(t, id, kDia, "A", v.adm);
    EXPECT_EQ(recusa(t, [&] { entregarOperacao(t, id, kDia, "12a", v.adm); }), "Nota Fiscal inválida!");
    entregarOperacao(t, id, kDia.addSecs(3600), "123", v.adm);
    EXPECT_EQ(statusAtual(t, id), "EN");
    EXPECT_EQ(v.estoque(v.c.empresa), Decimal("-2.0000"));
    EXPECT_EQ(db::escalar(t, "Select NumeroNf || ' ' || DataEntrega From TbComFat Where Fk = :ID", {{"ID", id}}).toString(),
              "123 2026-03-10 10:00:00.0000");

    // A second sale subtracts from the row now there; a purchase adds to it.
    for (const auto &[qtd, op, estoque] : {std::tuple{"1.0000", 1, "-3.0000"}, {"5.0000", 4, "2.0000"}}) {
        const int outra = v.salvar(qtd, "01", "E", 0, op);
        aprovarOperacao(t, outra, kDia, "E", v.adm);
        entregarOperacao(t, outra, kDia, "", v.adm);
        EXPECT_EQ(v.estoque(v.c.empresa), Decimal(estoque));
    }
    // The accounts at delivery: generated with the delivery.
    EXPECT_EQ(db::escalar(t, "Select Count(*) From TbContas Where Fks = 4 and Situacao Is Not Null").toInt(), 1);
}

TEST_F(AprovacaoTest, CancellingADeliveryPutsTheStockBackOnThePrincipalCompanyUnlessAnInstalmentIsPaid)
{
    v.abrirCaixa();
    const int id = v.salvar();
    aprovarOperacao(t, id, kDia, "A", v.adm);
    entregarOperacao(t, id, kDia, "", v.adm);
    pagarPrimeira(id);
    EXPECT_EQ(recusa(t, [&] { cancelarEntrega(t, id, v.adm, kDia); }),
              "A entrega desta operação não pode ser cancelada pois a mesma já possui parcela(s) Quitada(s)!");
    EXPECT_EQ(statusAtual(t, id), "EN");
    db::executar(t, "Delete From TbContasPagtos");
    cancelarEntrega(t, id, v.adm, kDia);
    EXPECT_EQ(statusAtual(t, id), "AP");
    // The billing company keeps its exit and the principal company gets it back.
    EXPECT_EQ(v.estoque(v.c.empresa).texto() + " " + v.estoque(v.principal).texto(), "-2.0000 2.0000");
    EXPECT_TRUE(db::escalar(t, "Select DataEntrega From TbComFat Where Fk = :ID", {{"ID", id}}).isNull());
}

TEST_F(AprovacaoTest, SerialsOfAnItemControlledOnEntryAndExitMustHaveComeInByAPurchase)
{
    v.abrirCaixa();
    db::executar(t, "Update TbItens Set ContrSerial = 'SIM' Where Id = :ID", {{"ID", v.item}});
    auto seriais = [&](int idCom, const QStringList &s) {
        const int linhaFat = db::escalar(t, "Select First 1 Fi.Id From TbComFatItens Fi Join TbComFat F On (F.Id = Fi.Fk) Where F.Fk = :ID",
                                         {{"ID", idCom}}).toInt();
        db::executar(t, "Delete From TbComFatItensSeriais Where Fk = :F", {{"F", linhaFat}});
        for (const QString &x : s)
            db::executar(t, "Insert Into TbComFatItensSeriais (Serial, Fk) Values (:S, :F)", {{"S", x}, {"F", linhaFat}});
    };
    const int venda = v.salvar("2.0000", "01", "E");
    aprovarOperacao(t, venda, kDia, "E", v.adm);
    EXPECT_EQ(recusa(t, [&] { entregarOperacao(t, venda, kDia, "", v.adm); }), "Insira os seriais primeiro!");
    seriais(venda, {"S1"});
    EXPECT_EQ(recusa(t, [&] { entregarOperacao(t, venda, kDia, "", v.adm); }), "Insira todos os seriais do item primeiro!");
    seriais(venda, {"S1", "S2"});
    EXPECT_EQ(recusa(t, [&] { entregarOperacao(t, venda, kDia, "", v.adm); }),
              "Serial não cadastrado! (Esse item controla serial na entrada e na saída!)");
    const int compra = v.salvar("2.0000", "01", "E", 0, 4);
    seriais(compra, {"S1", "S2"});
    aprovarOperacao(t, compra, kDia, "E", v.adm);
    entregarOperacao(t, compra, kDia, "", v.adm);
    EXPECT_EQ(recusa(t, [&] { entregarOperacao(t, venda, kDia, "", v.adm); }), "");
    // Sold once, they are no longer in stock.
    const int outra = v.salvar("1.0000", "01", "E");
    seriais(outra, {"S2"});
    aprovarOperacao(t, outra, kDia, "E", v.adm);
    EXPECT_EQ(recusa(t, [&] { entregarOperacao(t, outra, kDia, "", v.adm); }),
              "Serial não cadastrado! (Esse item controla serial na entrada e na saída!)");
}

// Each step asks for its own right, a purchase for the purchases' one; delivering without the right
// to deliver says whether approving is allowed either.
TEST_F(AprovacaoTest, EachStepAsksForItsOwnRight)
{
    v.abrirCaixa();
    const int venda = v.salvar("1.0000", "01", "E"), outra = v.salvar("1.0000", "01", "E"), compra = v.salvar("1.0000", "01", "E", 0, 4);
    aprovarOperacao(t, venda, kDia, "E", v.adm);
    const QStringList todas = {"Aprovar", "Aprovar Compras", "Entregar", "Receber Compras"};
    const Sessao nada = teste::usuarioCom(t, "Comercial", "TVendas", todas, {}, "nada");
    const Sessao aprova = teste::usuarioCom(t, "Comercial", "TVendas", todas, {"Aprovar"}, "aprova");
    EXPECT_EQ(recusa(t, [&] { entregarOperacao(t, venda, kDia, "", nada); }), "Você não tem permissão para aprovar ou entregar operações!");
    EXPECT_EQ(recusa(t, [&] { entregarOperacao(t, venda, kDia, "", aprova); }), kSemPermissao);
    EXPECT_EQ(recusa(t, [&] { aprovarOperacao(t, compra, kDia, "E", aprova); }), kSemPermissao);
    EXPECT_EQ(recusa(t, [&] { aprovarOperacao(t, outra, kDia, "E", aprova); }), "");
}

TEST_F(AprovacaoTest, ACancelledOperationIsReactivated)
{
    const int id = v.salvar();
    mudarStatus(t, id, "Cancelar", {{}, {}, kDia, {}});
    reativarOperacao(t, id, v.adm, kDia);
    EXPECT_EQ(statusAtual(t, id), "AA");
    EXPECT_EQ(recusa(t, [&] { reativarOperacao(t, id, v.adm, kDia); }), "Esta operação não pode ser alterada pois está AGUARDANDO APROVAÇÃO!");
}

} // namespace
