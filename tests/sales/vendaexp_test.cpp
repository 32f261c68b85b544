// The express sale over a real database: merchandise found by code before bar code, the customer's
// price level, the express defaults, the save's checks in their order (each writing nothing), and
// the finishing of the counter: approved, paid what is due now and delivered, or refused whole.

#include "Entregas.h"
#include "Status.h"
#include "VendaExpressa.h"

#include <gtest/gtest.h>

using db::Decimal;
using namespace orb;
using teste::kDia;
using teste::recusa;

namespace {

struct VendaExpTest : ::testing::Test {
    teste::BancoTemporario bt;
    db::Transacao t{bt.banco()};
    teste::VendaPronta v{t};
    Sessao quem = teste::administrador(t, "Comercial", kClasseVendaExpressa);

    int item(const QString &codigo, const QString &barras, const char *tipo = "M")
    {
        return db::escalar(t, "Insert Into TbItens (Codigo, CodigoBarras, Descricao, Tipo, Un, PrVendaAt, PrVendaVar) "
                              "Values (:C, :B, :C, :T, 'UN', 8, 10) Returning Id",
                           {{"C", codigo}, {"B", barras.isEmpty() ? QVariant() : QVariant(barras)}, {"T", tipo}}).toInt();
    }
    // The express columns of a parameters row dated in the past.
    void parametros(const QString &geraFin, const QString &cond, const QString &parcelas, const QString &entrada, int primVenc)
    {
        db::executar(t, "Insert Into TbParVendas (Data, IdClienteVE, IdAtendenteVE, IdEmpresaVE, GeraFinVE, CondPagtoVE, ParcelasVE, "
                        "EntradaVE, PrimVencVE, IntVencVE, ConsultaVE) Values ('2020-01-01', :CL, :AT, :EM, :G, :C, :P, :E, :PV, 30, 'CLIENTE')",
                     {{"CL", v.c.cliente}, {"AT", v.c.atendente}, {"EM", v.c.empresa}, {"G", geraFin}, {"C", cond}, {"P", parcelas},
                      {"E", entrada}, {"PV", primVenc}});
    }
    int vender(const char *qtd = "2")
    {
        Documento d = incluirVendaExpressa(t, quem, kDia);
        adicionarPorCodigo(t, d, "M100", Decimal(qtd));
        return salvarVendaExpressa(t, d, quem, kDia);
    }
    QVariant escalar(const QString &sql, int id) { return db::escalar(t, sql, {{"ID", id}}); }
};

TEST_F(VendaExpTest, TheCodeIsLookedUpBeforeTheBarCodeAndOnlyAmongMerchandise)
{
    const int x = item("100", "7890000000017");
    const int z = item("555", "");
    item("OUTRO", "555");  // its bar code is another item's code: the code wins
    item("SV1", "7891", "S");
    const struct { const char *digitado; int esperado; } casos[] = {
        {"100", x}, {"7890000000017", x}, {" 100 ", x}, {"555", z}, {"999", 0}, {"7891", 0}, {"SV1", 0}, {"", 0},
    };
    for (const auto &c : casos) {
        Valores l;
        const QString r = recusa(t, [&] { l = linhaPorCodigo(t, c.digitado, {}, Decimal("1")); });
        if (c.esperado) {
            EXPECT_EQ(r, "") << c.digitado;
            EXPECT_EQ(valor(l, "IDITEM").toInt(), c.esperado) << c.digitado;
        } else {
            EXPECT_EQ(r, "Mercadoria não encontrada!") << c.digitado;
        }
    }
}

TEST_F(VendaExpTest, AWholesaleCustomerGetsTheWholesalePriceAnyOtherTheRetail)
{
    const int x = item("100", "789");
    const struct { QVariant tipoCliente; bool semCliente; const char *preco; } casos[] = {
        {"A", false, "8.0000"}, {"V", false, "10.0000"}, {QVariant(), false, "10.0000"}, {"A", true, "10.0000"},
    };
    for (const auto &c : casos) {
        db::executar(t, "Update TbCad Set TipoCliente = :T Where Id = :ID", {{"T", c.tipoCliente}, {"ID", v.c.cliente}});
        const Valores l = linhaPorCodigo(t, "789", c.semCliente ? QVariant() : QVariant(v.c.cliente), Decimal("3"));
        EXPECT_EQ(QString("%1 %2 %3").arg(valor(l, "IDITEM").toInt()).arg(decimal(l, "QTD").texto(), decimal(l, "PRUNITARIO").texto()),
                  QString("%1 3 %2").arg(x).arg(c.preco)) << c.tipoCliente.toString().toStdString() << c.semCliente;
    }
}

TEST_F(VendaExpTest, IncluirTakesTheExpressColumnsOfTheNewestParametersRow)
{
    parametros("A", "V", "01", "N", 0);
    db::executar(t, "Insert Into TbParVendas (Data, IdClienteVE, IdAtendenteVE, IdEmpresaVE, DefPrecoVE, TipoDescontoVE, GeraFinVE, "
                    "CondPagtoVE, ParcelasVE, EntradaVE, PrimVencVE, IntVencVE, ConsultaVE, IdCliente) Values ('2021-01-01', :CL, :AT, "
                    ":EM, 'A', 'S', 'E', 'P', '3', 'S', 15, 30, 'DATA EMISSÃO', :OUTRO)",
                 {{"CL", v.c.cliente}, {"AT", v.c.atendente}, {"EM", v.c.empresa}, {"OUTRO", v.c.transportadora}});
    const Documento d = incluirVendaExpressa(t, quem, kDia);
    QStringList r;
    for (const char *c : {"OP", "IDCAD", "IDATENDENTE", "IDEMPRESA", "TIPO", "TIPODESCONTO"}) r << valor(d.cabecalho, c).toString();
    for (const char *c : {"GERAFIN", "CONDPAGTO", "PARCELAS", "ENTRADA", "PRIMVENC", "DATAPRIMVENC"}) r << valor(d.faturamento, c).toString();
    r << valor(d.faturamento, "ENDENTREGA").toString().left(18);
    EXPECT_EQ(r, QStringList({"1", QString::number(v.c.cliente), QString::number(v.c.atendente), QString::number(v.c.empresa), "A", "S",
                              "E", "P", "03", "S", "15", "2026-03-25", "RUA DAS FLORES, 10"}));
    EXPECT_EQ(consultaVendaExpressa(t, kDia.date()), "DATA EMISSÃO");
    EXPECT_EQ(legendaVendaExpressa(12), "Nova Venda Expressa (000012)");
}

TEST_F(VendaExpTest, TheSaveChecksRunInOrderEachStoppingTheSaveAndWritingNothing)
{
    Documento d = incluirVendaExpressa(t, quem, kDia);  // no parameters row: no customer, no attendant
    d.cabecalho["IDEMPRESA"] = v.c.empresa;
    d.faturamento["FRETE"] = "1";
    auto situacao = [&](const char *s, const char *motivo) {
        db::executar(t, "Insert Into TbCadSit (Data, Situacao, Motivo, Fk) Values (:D, :S, :M, :FK)",
                     {{"D", kDia.date()}, {"S", s}, {"M", motivo}, {"FK", v.c.cliente}});
    };
    situacao("B", "DÍVIDA");
    // Everything wrong at once; each fix brings the next message, the last one the save.
    const std::pair<QString, std::function<void()>> passos[] = {
        {"Escolha o cliente primeiro!", [&] { d.cabecalho["IDCAD"] = v.c.cliente; }},
        {"Esse cliente está bloqueado! Motivo: DÍVIDA", [&] { situacao("E", "CONFERIR RENDA"); }},
        {"Esse cliente está em análise! Motivo: CONFERIR RENDA", [&] { situacao("A", ""); }},
        {"Escolha o(a) atendente primeiro!", [&] { d.cabecalho["IDATENDENTE"] = v.c.atendente; }},
        {"Escolha a Transportadora primeiro!", [&] { d.faturamento["IDTRANSPORTADORA"] = v.c.transportadora; }},
        {"Digite o valor do Frete primeiro!", [&] { d.faturamento["TOTALFRETE"] = QVariant::fromValue(Decimal("15.00")); }},
        {"Inclua a(s) mercadoria(s) primeiro!", [&] { adicionarPorCodigo(t, d, "M100", Decimal("1")); }},
    };
    for (const auto &[mensagem, corrigir] : passos) {
        Documento tentativa = d;
        EXPECT_EQ(recusa(t, [&] { salvarVendaExpressa(t, tentativa, quem, kDia); }), mensagem);
        EXPECT_EQ(db::escalar(t, "Select Count(*) From TbCom").toInt(), 0) << mensagem.toStdString();
        EXPECT_EQ(db::escalar(t, "Select Count(*) From TbContas").toInt(), 0) << mensagem.toStdString();
        corrigir();
    }
    const int id = salvarVendaExpressa(t, d, quem, kDia);
    EXPECT_EQ(escalar("Select First 1 Status || '|' || Observacoes From TbComSt Where Fk = :ID Order By Id Desc", id).toString(),
              "AA|Pronto ser aprovação.");
}

TEST_F(VendaExpTest, AnyOtherFreightModeNeedsNoCarrier)
{
    parametros("A", "V", "01", "N", 0);
    Documento d = incluirVendaExpressa(t, quem, kDia);
    d.faturamento["FRETE"] = "0";
    adicionarPorCodigo(t, d, "M100", Decimal("1"));
    EXPECT_EQ(recusa(t, [&] { salvarVendaExpressa(t, d, quem, kDia); }), "");
}

TEST_F(VendaExpTest, WhatIsDueNowIsWhatTheTermsLayOutOnTheBillingDate)
{
    const struct { const char *cond, *parcelas, *entrada; int primVenc; const char *devido; } casos[] = {
        {"V", "01", "N", 0, "100.00"}, {"P", "03", "S", 30, "33.33"}, {"P", "03", "N", 30, "0.00"},
        {"P", "03", "N", 0, "33.33"},  {"P", "01", "S", 30, "100.00"},
    };
    for (const auto &c : casos) {
        Documento d;
        d.linhas = {{{"SUBTOTAL", QVariant::fromValue(Decimal("60.00"))}}, {{"SUBTOTAL", QVariant::fromValue(Decimal("40.00"))}}};
        d.faturamento = {{"DATA", kDia.date()}, {"CONDPAGTO", c.cond}, {"PARCELAS", c.parcelas}, {"ENTRADA", c.entrada},
                         {"PRIMVENC", c.primVenc}, {"INTVENC", 30}};
        EXPECT_EQ(devidoAgora(d), Decimal(c.devido)) << c.cond << c.parcelas << c.entrada << c.primVenc;
    }
}

// The finishing of the counter, per payment terms and cash session.
TEST_F(VendaExpTest, FinishingApprovesReceivesWhatIsDueNowAndDelivers)
{
    enum Caixa { Aberto, Fechado, Nenhum };
    const struct {
        const char *nome, *geraFin, *cond, *parcelas, *entrada;
        int primVenc;
        Caixa caixa;
        const char *recebido;  // nullptr: exactly what is due
        QString recusa;
        const char *pago, *troco;
        QList<Decimal> parcelasEsperadas;
    } casos[] = {
        {"cash with change", "A", "V", "01", "N", 0, Aberto, "250.00", "", "200.00", "50.00", {Decimal("200.00")}},
        {"term in three", "A", "P", "03", "N", 30, Aberto, nullptr, "", "0.00", "0.00",
         {Decimal("66.67"), Decimal("66.67"), Decimal("66.66")}},
        {"down payment of three", "A", "P", "03", "S", 30, Aberto, nullptr, "", "66.67", "0.00",
         {Decimal("66.67"), Decimal("66.67"), Decimal("66.66")}},
        {"accounts at delivery", "E", "V", "01", "N", 0, Aberto, nullptr, "", "200.00", "0.00", {Decimal("200.00")}},
        {"day closed", "A", "V", "01", "N", 0, Fechado, nullptr,
         "Não é possível aprovar essa operação pois já foi efetuado o encerramento do movimento nesta data!", "", "", {}},
        {"day not opened, accounts at delivery", "E", "V", "01", "N", 0, Nenhum, nullptr,
         "Não é possível quitar essa conta pois ainda não foi efetuada a abertura do movimento nesta data!", "", "", {}},
        {"less than due", "A", "V", "01", "N", 0, Aberto, "150.00", "O valor recebido é menor que o valor a receber agora (R$ 200,00)!",
         "", "", {}},
    };
    for (const auto &c : casos) {
        SCOPED_TRACE(c.nome);
        db::executar(t, "Delete From TbParVendas");
        db::executar(t, "Delete From TbAbEncMov");
        parametros(c.geraFin, c.cond, c.parcelas, c.entrada, c.primVenc);
        if (c.caixa != Nenhum) v.abrirCaixa(c.caixa == Fechado);
        const Decimal antes = v.temEstoque(v.c.empresa) ? v.estoque(v.c.empresa) : Decimal("0");
        const int id = vender();
        const QVariant recebido = c.recebido ? QVariant::fromValue(Decimal(c.recebido)) : QVariant();
        EXPECT_EQ(recusa(t, [&] { finalizarVendaExpressa(t, id, quem, kDia, recebido); }), c.recusa);
        if (!c.recusa.isEmpty()) {
            // The sale stays saved as it was: nothing of the finishing is left.
            EXPECT_EQ(statusAtual(t, id), "AA");
            EXPECT_EQ(v.temEstoque(v.c.empresa) ? v.estoque(v.c.empresa) : Decimal("0"), antes);
            EXPECT_EQ(escalar("Select Count(*) From TbContasPagtos P Join TbContas C On (C.Id = P.Fk) Join TbComFat F On (F.Id = C.Fk) "
                              "Where F.Fk = :ID", id).toInt(), 0);
            continue;
        }
        EXPECT_EQ(statusAtual(t, id), "EN");
        EXPECT_EQ(escalar("Select Count(*) From TbComSt Where Fk = :ID and Status = 'AP'", id).toInt(), 1);
        EXPECT_EQ(v.estoque(v.c.empresa), antes - Decimal("2.0000"));
        db::Consulta q(t, "Select Valor From TbContas Where Fks = 1 and Fk = :F Order By Vencimento, Parcela");
        q.bind("F", v.fat(id));
        q.executar();
        QList<Decimal> parcelas;
        while (q.proxima()) parcelas << q[0].value<Decimal>();
        EXPECT_EQ(parcelas, c.parcelasEsperadas);
        EXPECT_EQ(escalar("Select TotalPago || '|' || Troco From TbCom Where Id = :ID", id).toString(), QString(c.pago) + "|" + c.troco);
    }
}

TEST_F(VendaExpTest, ASaleWithAMissingPriceIsNotFinished)
{
    parametros("A", "V", "01", "N", 0);
    v.abrirCaixa();
    db::executar(t, "Update TbItens Set PrVendaVar = 0 Where Id = :ID", {{"ID", v.item}});
    const int id = vender();
    EXPECT_EQ(statusAtual(t, id), "AO");
    EXPECT_EQ(recusa(t, [&] { finalizarVendaExpressa(t, id, quem, kDia); }), kSemPreco);
    EXPECT_EQ(statusAtual(t, id), "AO");
}

} // namespace
