// Payables and receivables over a real database: the save's checks with the apportionment to the
// cent, settlements to the cent of what is open, the cash session's rule and its right, cheque
// fates, the reversal, and deletions refused for a document's account or a paid one.

#include "Caixa.h"
#include "Contas.h"
#include "GeraContas.h"
#include "apoio/Direitos.h"

#include <functional>
#include <gtest/gtest.h>

using db::Decimal;
using namespace orb;

namespace {

using teste::recusa;

const QDate kHoje(2026, 3, 10);
const QStringList kOperacoes = {"Incluir", "Alterar", "Excluir", "Quitar", "Estornar", "Quitar Contas a Receber Após Enc.", "Estornar Após Enc."};
QVariant dv(const char *s) { return QVariant::fromValue(Decimal(s)); }

struct ContasTest : ::testing::Test {
    teste::BancoTemporario bt;
    db::Transacao t{bt.banco()};
    Sessao adm = teste::administrador(t, "Financeiro", kModuloContas);
    int caixa = contaCaixa(t);
    int titular = db::escalar(t, "Insert Into TbCad (Nome, Cl) Values ('CLIENTE CONTA', 'S') Returning Id").toInt();

    Valores conta(const char *bruto = "100.00")
    {
        return {{"TIPO", "C"}, {"IDCAD", titular}, {"HISTORICO", "ALUGUEL"}, {"VENCIMENTO", kHoje}, {"TIPODOC", "DINHEIRO"},
                {"VALORBRUTO", dv(bruto)}, {"IDCCOR", caixa}, {"NUMERO", "77"}};
    }
    int nova(const char *bruto = "100.00", const QString &doc = "DINHEIRO")
    {
        Valores v = conta(bruto);
        v["TIPODOC"] = doc;
        if (doc == "CHEQUE")
            v.insert({{"IDBANCO", 1}, {"AGENCIACH", "1"}, {"CCORRENTECH", "2"}, {"CORRENTISTACH", "X"}, {"CPFCNPJCH", "1"}, {"RGIECH", "1"}});
        return salvarConta(t, 0, v, {{{"VALOR", dv(bruto)}}}, adm);
    }
    void abrirCaixa(bool fechado = false) { teste::abrirCaixa(t, kHoje, adm.idUsuario, fechado); }
    Pagamento pagamento(const char *valor)
    {
        Pagamento p;
        p.idCCor = caixa;
        p.data = kHoje;
        p.valor = dv(valor);
        p.formaPagto = "DINHEIRO";
        return p;
    }
    // Paid, open and the situation.
    QString situacao(int id) { return db::escalar(t, "Select Situacao From TbContas Where Id = :ID", {{"ID", id}}).toString(); }
    QString ler(int id)
    {
        return db::escalar(t, "Select Coalesce(Quitado, 0) || '|' || NaoQuitado From TbContas Where Id = :ID", {{"ID", id}}).toString() + "|" +
               situacao(id);
    }
};

TEST_F(ContasTest, SaveChecksInOrderAndTheApportionmentAddsUpToTheCent)
{
    const QList<Valores> rat = {{{"VALOR", dv("60.00")}}, {{"VALOR", dv("40.00")}}};
    struct Passo {
        QString coluna;
        QVariant valor;
        QString mensagem;
    } passos[] = {
        {"IDCAD", {}, "Escolha o Titular primeiro!"},
        {"HISTORICO", "", "Digite o Histórico primeiro!"},
        {"VENCIMENTO", {}, "Digite o Vencimento primeiro!"},
        {"VALORBRUTO", {}, "Digite o Valor Bruto primeiro!"},
        {"IDCCOR", {}, "Escolha a Conta Corrente primeiro!"},
    };
    for (const Passo &p : passos) {
        Valores v = conta();
        v[p.coluna] = p.valor;
        EXPECT_EQ(recusa(t, [&] { salvarConta(t, 0, v, rat, adm); }), p.mensagem) << p.coluna.toStdString();
    }
    Valores cheque = conta();
    for (const auto &[doc, mensagem] : {std::pair{"CARTÃO", "Escolha a Bandeira primeiro!"}, {"CHEQUE", "Escolha o banco primeiro!"}}) {
        cheque["TIPODOC"] = doc;
        EXPECT_EQ(recusa(t, [&] { salvarConta(t, 0, cheque, rat, adm); }), mensagem);
    }
    cheque.insert({{"IDBANCO", 1}, {"AGENCIACH", "1"}, {"CCORRENTECH", "2"}, {"CORRENTISTACH", "X"}, {"CPFCNPJCH", "1"}});
    EXPECT_EQ(recusa(t, [&] { salvarConta(t, 0, cheque, rat, adm); }), "Digite o RG/IE primeiro!");
    EXPECT_EQ(recusa(t, [&] { salvarConta(t, 0, conta(), {}, adm); }), "Inclua os rateios primeiro!");
    EXPECT_EQ(recusa(t, [&] { salvarConta(t, 0, conta(), {{{"VALOR", dv("60.00")}}, {{"VALOR", dv("39.99")}}}, adm); }),
              "A soma dos rateios deve ser igual ao valor da conta!");
    EXPECT_EQ(db::escalar(t, "Select Count(*) From TbContas").toInt(), 0);
    const int id = salvarConta(t, 0, conta(), rat, adm);
    EXPECT_EQ(db::escalar(t, "Select Sum(Valor) From TbContasRat Where Fk = :ID", {{"ID", id}}).value<Decimal>(), Decimal("100.00"));
    EXPECT_EQ(ler(id).section(QChar(0x7C), 1), QString("100.00|NÃO QUITADO"));
}

TEST_F(ContasTest, APaymentEqualToWhatIsOpenIsAcceptedAndOneCentMoreRefused)
{
    abrirCaixa();
    const int id = nova("100.00");
    EXPECT_EQ(recusa(t, [&] { quitarConta(t, id, pagamento("100.01"), adm); }),
              "O valor pago não pode ser maior que o restante a ser recebido da conta!");
    // Partly: the situation waits for the rest.
    EXPECT_EQ(recusa(t, [&] { quitarConta(t, id, pagamento("40.00"), adm); }), "");
    EXPECT_EQ(situacao(id), "NÃO QUITADO");
    EXPECT_EQ(recusa(t, [&] { quitarConta(t, id, pagamento("60.01"), adm); }),
              "O valor pago não pode ser maior que o restante a ser recebido da conta!");
    const QString historico = quitarConta(t, id, pagamento("60.00"), adm);
    EXPECT_EQ(historico, "Recebimento de Conta (77 - CLIENTE CONTA)");
    EXPECT_EQ(ler(id), "100.00|0.00|QUITADO");
    EXPECT_EQ(recusa(t, [&] { conferirQuitacao(t, id, adm); }), "Essa conta já foi totalmente quitada!");
}

TEST_F(ContasTest, TheDialogsEntriesAndTheCashSessionOfThePaymentDate)
{
    const int id = nova();
    struct Caso {
        std::function<void(Pagamento &)> mudar;
        QString mensagem;
    } casos[] = {
        {[](Pagamento &p) { p.idCCor = {}; }, "Escolha a Conta Corrente primeiro!"},
        {[](Pagamento &p) { p.data = {}; }, "Digite a data primeiro!"},
        {[](Pagamento &p) { p.valor = {}; }, "Digite o valor primeiro!"},
        {[](Pagamento &) {}, "Não é possível quitar essa conta pois ainda não foi efetuada a abertura do movimento nesta data!"},
    };
    for (const Caso &c : casos) {
        Pagamento p = pagamento("10.00");
        c.mudar(p);
        EXPECT_EQ(recusa(t, [&] { quitarConta(t, id, p, adm); }), c.mensagem);
    }
}

TEST_F(ContasTest, AReceiptOnAClosedDayNeedsTheRightAfterClosing)
{
    abrirCaixa(true);
    const int id = nova();
    const Sessao sem = teste::usuarioCom(t, "Financeiro", kModuloContas, kOperacoes, {"Quitar", "Estornar"}, "sem");
    const Sessao com = teste::usuarioCom(t, "Financeiro", kModuloContas, kOperacoes,
                                         {"Quitar", "Estornar", "Quitar Contas a Receber Após Enc."}, "com");
    EXPECT_EQ(recusa(t, [&] { quitarConta(t, id, pagamento("10.00"), sem); }),
              "Não é possível quitar essa conta pois já foi efetuado o encerramento do movimento nesta data!");
    EXPECT_EQ(recusa(t, [&] { quitarConta(t, id, pagamento("10.00"), com); }), "");
    // Reversing it needs its own right after closing.
    EXPECT_EQ(recusa(t, [&] { estornarConta(t, id, com); }),
              "Não é possível estornar esse lançamento pois já foi efetuado o encerramento do movimento nesta data!");
    EXPECT_EQ(recusa(t, [&] { quitarConta(t, id, pagamento("10.00"), teste::usuarioCom(t, "Financeiro", kModuloContas, kOperacoes, {}, "nada")); }),
              kSemPermissao);
}

TEST_F(ContasTest, ReversalGivesTheLatestPaymentBack)
{
    abrirCaixa();
    const int id = nova();
    EXPECT_EQ(recusa(t, [&] { estornarConta(t, id, adm); }), "Não existe pagamento a ser estornado!");
    quitarConta(t, id, pagamento("30.00"), adm);
    quitarConta(t, id, pagamento("70.00"), adm);
    estornarConta(t, id, adm);
    EXPECT_EQ(ler(id), QString("30.00|70.00|NÃO QUITADO"));
    EXPECT_EQ(db::escalar(t, "Select Count(*) From TbContasPagtos Where Fk = :ID", {{"ID", id}}).toInt(), 1);
}

TEST_F(ContasTest, ChequeFatesNeedTheirDatesAndReasons)
{
    abrirCaixa();
    const int id = nova("50.00", "CHEQUE");
    EXPECT_EQ(situacao(id), "NÃO COMPENSADO");
    struct Caso {
        QString destino;
        QDate d1, d2;
        QString m1, m2, mensagem;
    } casos[] = {
        {"DEVOLVIDO", {}, {}, "", "", "Digite a data da primeira devolução primeiro!"},
        {"DEVOLVIDO", kHoje, {}, "", "", "Digite o motivo da primeira devolução primeiro!"},
        {"DEVOLVIDO", kHoje, kHoje, "SEM FUNDOS", "", "Digite o motivo da segunda devolução primeiro!"},
        {"REPASSADO", kHoje, {}, "", "", "Digite o receptor primeiro!"},
        {"REPASSADO", {}, {}, "FORNECEDOR", "", "Digite a data do repasse primeiro!"},
        {"CANCELADO/EST.", {}, {}, "", "", "Digite a data do cancelamento primeiro!"},
        {"CANCELADO/EST.", kHoje, {}, "", "", "Digite o motivo do cancelamento/estorno primeiro!"},
    };
    for (const Caso &c : casos) {
        Pagamento p = pagamento("50.00");
        p.destino = c.destino;
        p.dataSituacao1 = c.d1;
        p.dataSituacao2 = c.d2;
        p.motSituacao1 = c.m1;
        p.motSituacao2 = c.m2;
        EXPECT_EQ(recusa(t, [&] { quitarConta(t, id, p, adm); }), c.mensagem) << c.destino.toStdString();
    }
    quitarConta(t, id, pagamento("50.00"), adm);
    EXPECT_EQ(situacao(id), "COMPENSADO");
    estornarConta(t, id, adm);
    EXPECT_EQ(situacao(id), "NÃO COMPENSADO");
    Pagamento p = pagamento("50.00");
    p.destino = "DEVOLVIDO";
    p.dataSituacao1 = kHoje;
    p.motSituacao1 = "SEM FUNDOS";
    quitarConta(t, id, p, adm);
    EXPECT_EQ(situacao(id), "DEVOLVIDO");
}

TEST_F(ContasTest, ADocumentsAccountOrAPaidOneIsNotDeleted)
{
    abrirCaixa();
    const int doc = db::escalar(t, "Insert Into TbCom (Op) Values (1) Returning Id").toInt();
    const int fat = db::escalar(t, "Insert Into TbComFat (Fk, Data) Values (:F, :D) Returning Id", {{"F", doc}, {"D", kHoje}}).toInt();
    const int daVenda = db::escalar(t, "Insert Into TbContas (Tipo, Valor, NaoQuitado, Fks, Fk) Values ('C', 10, 10, 1, :F) Returning Id",
                                    {{"F", fat}}).toInt();
    EXPECT_EQ(recusa(t, [&] { excluirConta(t, daVenda, adm); }),
              QString("Esta Conta não pode ser excluída pois está vinculada a venda %1!").arg(doc, 6, 10, QChar('0')));
    const int paga = nova();
    quitarConta(t, paga, pagamento("1.00"), adm);
    EXPECT_EQ(recusa(t, [&] { excluirConta(t, paga, adm); }), "Esta conta não pode ser excluída por já possuir algum pagamento!");
    const int livre = nova();
    excluirConta(t, livre, adm);
    EXPECT_EQ(db::escalar(t, "Select Count(*) From TbContas Where Id = :ID", {{"ID", livre}}).toInt(), 0);
    EXPECT_EQ(db::escalar(t, "Select Count(*) From TbContasRat Where Fk = :ID", {{"ID", livre}}).toInt(), 0);
}

TEST_F(ContasTest, ListFiltersAndTheNextDaysTotals)
{
    const int a = nova("10.00");
    nova("20.00");
    db::executar(t, "Update TbContas Set Vencimento = :D Where Id = :ID", {{"D", kHoje.addDays(2)}, {"ID", a}});
    db::executar(t, "Insert Into TbContas (Tipo, Vencimento, Valor, NaoQuitado) Values ('D', :D, 5, 5)", {{"D", kHoje.addDays(2)}});
    FiltroContas f;
    f.vencimentoDe = kHoje.addDays(1);
    std::map<QString, QVariant> p;
    db::Consulta q(t, sqlContas(f, p, 50));
    for (const auto &[k, x] : p) q.bind(k, x);
    q.executar();
    ASSERT_TRUE(q.proxima());
    EXPECT_FALSE(q.proxima());
    const QList<TotalDia> d = totaisPorDia(t, kHoje, 30);
    ASSERT_EQ(d.size(), 30);
    EXPECT_EQ(d[0].receber.texto() + " " + d[2].receber.texto() + " " + d[2].pagar.texto(), "20.00 10.00 5.00");
}

} // namespace
