// The commercial document over a real database: Incluir's defaults, the save's checks in their
// order with nothing written on a refusal, the status by price completeness, billing lines and
// instalments following the lines, the deletion, and a kill before the commit.

#include "Cenario.h"
#include "GeraContas.h"
#include "Status.h"
#include "Vendas.h"
#include "dados/Tabs.h"

#include <csignal>
#include <gtest/gtest.h>

using db::Decimal;
using namespace orb;

namespace {

using teste::recusa;

QVariant dv(const char *s) { return QVariant::fromValue(Decimal(s)); }
const QDateTime kAgora(QDate(2026, 3, 10), QTime(14, 30));

int contar(db::Transacao &t, const QString &sql, const std::map<QString, QVariant> &p = {}) { return db::escalar(t, sql, p).toInt(); }

struct DocumentoTest : ::testing::Test {
    teste::BancoTemporario bt;
    db::Transacao t{bt.banco()};
    teste::CenarioVendas c{t};
    Sessao adm = teste::administrador(t, "&Comercial", "TVendas");

    Documento venda(const QList<QPair<const char *, const char *>> &linhas = {{"000", "2.0000"}, {"010", "1.5000"}})
    {
        return c.documento(t, "Ven", adm, kAgora, linhas);
    }
};

TEST_F(DocumentoTest, IncluirTakesTheNewestParametersAndTheCustomersAddress)
{
    for (const auto &[data, cliente, nivel, desconto, geraFin] : {std::tuple{"2025-01-01", c.atendente, "V", "I", "A"},
                                                                  {"2026-01-01", c.cliente, "A", "S", "E"}})
        db::executar(t, "Insert Into TbParVendas (Data, IdCliente, IdAtendente, IdEmpresa, DefPreco, TipoDesconto, GeraFin) "
                        "Values (:D, :C, :A, :E, :P, :TD, :G)",
                     {{"D", data}, {"C", cliente}, {"A", c.atendente}, {"E", c.empresa}, {"P", nivel}, {"TD", desconto}, {"G", geraFin}});
    const Documento d = incluirDocumento(t, modoOperacao("Ven"), adm, kAgora);
    EXPECT_EQ(QStringList({d.cabecalho.at("IDCAD").toString(), d.cabecalho.at("TIPO").toString(), d.cabecalho.at("TIPODESCONTO").toString(),
                           d.faturamento.at("GERAFIN").toString(), d.faturamento.at("PARCELAS").toString(),
                           d.faturamento.at("CONDPAGTO").toString(), d.faturamento.at("ENDCOBRANCA").toString().left(29)}),
              QStringList({QString::number(c.cliente), "A", "S", "E", "01", "V", "RUA DAS FLORES, 10, CENTRO - "}));
    // Wholesale level: the line takes PRVENDAAT.
    EXPECT_EQ(decimal(linhaDoItem(t, c.itens["000"], "A"), "PRUNITARIO"), Decimal("9.8765"));
    EXPECT_EQ(decimal(linhaDoItem(t, c.itens["000"], "V"), "PRUNITARIO"), Decimal("12.3457"));
    EXPECT_EQ(legendaDocumento(modoOperacao("Ser"), 12), "Novo Serviço (000012)");
}

TEST_F(DocumentoTest, SaveChecksInTheirOrderAndWritesNothingOnARefusal)
{
    db::executar(t, "Insert Into TbCadSit (Situacao, Data, Motivo, Fk) Values ('B', '2026-01-01', 'CHEQUE DEVOLVIDO', :C)", {{"C", c.cliente}});
    Documento d = venda();
    // Every check broken at once; each repair uncovers the next, in order.
    d.cabecalho["DATA"] = QVariant();
    d.faturamento["DATA"] = QVariant();
    d.cabecalho["IDCAD"] = QVariant();
    d.cabecalho["IDATENDENTE"] = QVariant();
    d.cabecalho["IDEMPRESA"] = QVariant();
    d.linhas.first()["FRETE"] = dv("5.00");
    struct Passo {
        QString mensagem;
        std::function<void(Documento &)> corrigir;
    };
    const QList<Passo> passos = {
        {"Digite a data primeiro!", [](Documento &d) { d.cabecalho["DATA"] = QDateTime(QDate(2026, 3, 10), QTime(0, 0)); }},
        {"Digite a data do faturamento primeiro!", [](Documento &d) { d.faturamento["DATA"] = QDate(2026, 3, 9); }},
        {"A data do faturamento deve ser maior ou igual a data da operação!", [](Documento &d) { d.faturamento["DATA"] = QDate(2026, 3, 10); }},
        {"Escolha o cliente primeiro!", [&](Documento &d) { d.cabecalho["IDCAD"] = c.cliente; }},
        {"Esse cliente está bloqueado! Motivo: CHEQUE DEVOLVIDO",
         [&](Documento &) { db::executar(t, "Insert Into TbCadSit (Situacao, Data, Motivo, Fk) Values ('E', '2026-02-01', 'SERASA', :C)", {{"C", c.cliente}}); }},
        {"Esse cliente está em análise! Motivo: SERASA",
         [&](Documento &) { db::executar(t, "Insert Into TbCadSit (Situacao, Data, Fk) Values ('A', '2026-03-01', :C)", {{"C", c.cliente}}); }},
        {"Escolha o(a) atendente primeiro!", [&](Documento &d) { d.cabecalho["IDATENDENTE"] = c.atendente; }},
        {"Escolha a Empresa primeiro!", [&](Documento &d) { d.cabecalho["IDEMPRESA"] = c.empresa; }},
        {"Escolha a Transportadora primeiro!", [&](Documento &d) { d.faturamento["IDTRANSPORTADORA"] = c.transportadora; }},
    };
    const auto linhas = [&] {
        return contar(t, "Select (Select Count(*) From TbCom) + (Select Count(*) From TbComItens) + (Select Count(*) From TbComFat) + "
                         "(Select Count(*) From TbComSt) + (Select Count(*) From TbContas) From Rdb$Database");
    };
    const int antes = linhas();
    for (const Passo &p : passos) {
        Documento copia = d;
        EXPECT_EQ(recusa([&] { salvarDocumento(t, copia, adm, kAgora); }), p.mensagem);
        EXPECT_EQ(linhas(), antes);
        p.corrigir(d);
    }
    EXPECT_GT(salvarDocumento(t, d, adm, kAgora), 0);

    // A sale needs merchandise; a rental any line; a service order its forecast and packaging.
    Documento semLinhas = venda({});
    EXPECT_THROW(salvarDocumento(t, semLinhas, adm, kAgora), Recusa);
    Documento os = venda();
    os.op = 2;
    EXPECT_EQ(recusa([&] { salvarDocumento(t, os, adm, kAgora); }), "Digite a data de Previsão de Entrega primeiro!");
    os.cabecalho["DATAPREVENTREGA"] = kAgora;
    EXPECT_EQ(recusa([&] { salvarDocumento(t, os, adm, kAgora); }), "Defina o Acondicionamento (Pasta, Mochila, Caixa) primeiro!");
    os.cabecalho["ACOND"] = "MOCHILA AZUL";
    Documento outra = os;  // another order wanting the same packaging
    const int primeira = salvarDocumento(t, os, adm, kAgora);
    EXPECT_EQ(recusa([&] { salvarDocumento(t, outra, adm, kAgora); }),
              "Esse Acondicionamento está sendo utilizado na Ordem de Serviço " + QString::asprintf("%06d", primeira));
}

TEST_F(DocumentoTest, StatusFollowsPriceCompleteness)
{
    // The history only grows; the newest row's note says why a price is missing.
    auto historico = [&](int id) {
        return db::escalar(t, "Select List(Status, '>') From (Select Status From TbComSt Where Fk = :ID Order By Id)", {{"ID", id}}).toString() +
               " " + db::escalar(t, "Select First 1 Observacoes From TbComSt Where Fk = :ID Order By Id Desc", {{"ID", id}}).toString();
    };
    Documento d = venda();
    const int id = salvarDocumento(t, d, adm, kAgora);
    EXPECT_EQ(statusAtual(t, id), "AA");
    d.linhas.first()["PRUNITARIO"] = dv("0");
    salvarDocumento(t, d, adm, kAgora);
    EXPECT_EQ(historico(id), "AO>AA>AO " + kAlertaSemPreco);
    Documento sem = venda();
    sem.linhas.first()["PRUNITARIO"] = dv("0");
    EXPECT_EQ(historico(salvarDocumento(t, sem, adm, kAgora)), "AO " + kSemPreco);
}

TEST_F(DocumentoTest, BillingAndInstalmentsFollowTheLines)
{
    Documento d = venda({{"000", "2.0000"}, {"010", "1.5000"}, {"040", "3.0000"}});
    d.faturamento["CONDPAGTO"] = "P";
    d.faturamento["PARCELAS"] = "03";
    d.faturamento["PRIMVENC"] = 30;
    d.faturamento["INTVENC"] = 30;
    const int id = salvarDocumento(t, d, adm, kAgora);
    const int fat = d.faturamento["ID"].toInt();
    auto verificar = [&] {
        // Billing lines mirror the operation lines; instalments add up to the billing; apportionments to each instalment.
        EXPECT_EQ(contar(t, "Select Count(*) From TbComFatItens Where Fk = :F", {{"F", fat}}), d.linhas.size());
        EXPECT_EQ(contar(t, "Select Count(*) From TbComFatItens Fi Join TbComItens I On (I.Id = Fi.IdItem) Where Fi.Fk = :F and "
                            "Fi.Qtd = I.Qtd and Fi.Subtotal = I.Subtotal and Fi.Total = I.Total", {{"F", fat}}), d.linhas.size());
        const Decimal valor = db::escalar(t, "Select Valor From TbComFat Where Id = :F", {{"F", fat}}).value<Decimal>();
        EXPECT_EQ(valor, db::escalar(t, "Select Sum(Subtotal) From TbComItens Where Fk = :ID", {{"ID", id}}).value<Decimal>());
        EXPECT_EQ(db::escalar(t, "Select Sum(Valor) From TbContas Where Fks = 1 and Fk = :F", {{"F", fat}}).value<Decimal>(), valor);
        EXPECT_EQ(contar(t, "Select Count(*) From TbContas C Where C.Fks = 1 and C.Fk = :F and C.Valor <> "
                            "(Select Sum(R.Valor) From TbContasRat R Where R.Fk = C.Id)", {{"F", fat}}), 0);
    };
    verificar();
    EXPECT_EQ(contar(t, "Select Count(*) From TbContas Where Fks = 1 and Fk = :F", {{"F", fat}}), 3);

    // A quantity changed follows into the billing; a deleted line takes its billing line along.
    d.linhas[0]["QTD"] = dv("7.0000");
    const int removida = d.linhas[1]["ID"].toInt();
    d.linhasExcluidas << removida;
    d.linhas.removeAt(1);
    salvarDocumento(t, d, adm, kAgora);
    EXPECT_EQ(contar(t, "Select Count(*) From TbComFatItens Where IdItem = :I", {{"I", removida}}), 0);
    verificar();
}

TEST_F(DocumentoTest, PaidAndChangeFollowThePaymentsOfTheInstalments)
{
    Documento d = venda({{"010", "1.0000"}});
    const int id = salvarDocumento(t, d, adm, kAgora);
    const Decimal total = decimal(d.cabecalho, "TOTAL");
    // Approved: the payments recorded stay through the next save.
    db::executar(t, "Update TbComFat Set DataAprovacao = :D Where Fk = :ID", {{"D", kAgora}, {"ID", id}});
    d.faturamento["DATAAPROVACAO"] = kAgora;
    db::executar(t, "Insert Into TbContasPagtos (Data, Valor, Fk) Select '2026-03-10', :V, Id From TbContas Where Fks = 1 and Fk = :F",
                 {{"V", QVariant::fromValue(total + Decimal("7.50"))}, {"F", d.faturamento["ID"]}});
    salvarDocumento(t, d, adm, kAgora);
    EXPECT_EQ(db::escalar(t, "Select TotalPago || '|' || Troco From TbCom Where Id = :ID", {{"ID", id}}).toString(),
              (total + Decimal("7.50")).texto() + "|7.50");
}

TEST_F(DocumentoTest, APurchaseEffectsItsSupplyOrderOutsideEngineering)
{
    for (const char *ramo : {"CO", "EN"}) {
        db::executar(t, "Update TbParGlobais Set Ramo = :R", {{"R", ramo}});
        const int pedido = db::escalar(t, "Insert Into TbPedForn (Data) Values ('2026-03-01') Returning Id").toInt();
        Documento d = venda();
        d.op = 4;
        d.cabecalho["PEDFORN"] = pedido;
        salvarDocumento(t, d, adm, kAgora);
        EXPECT_EQ(db::escalar(t, "Select List(Status) From TbPedFornSt Where Fk = :P", {{"P", pedido}}).toString(),
                  QString(ramo) == "EN" ? "" : "EFETUADA") << ramo;
    }
}

TEST_F(DocumentoTest, DeletionIsRefusedOnceApprovedDeliveredOrCancelled)
{
    struct { const char *modo, *status, *mensagem; } casos[] = {
        {"Ven", "AP", "Esta venda não pode ser alterada por já ter sido Aprovada!"},
        {"Ser", "EN", "Este serviço não pode ser alterada por já ter sido Entregue!"},
        {"Com", "CA", "Esta compra não pode ser alterada por já ter sido Cancelada!"},
    };
    for (const auto &k : casos) {
        Documento d = venda();
        d.op = modoOperacao(k.modo).op;
        d.cabecalho["DATAPREVENTREGA"] = kAgora;
        d.cabecalho["ACOND"] = QString("CAIXA ") + k.modo;
        const int id = salvarDocumento(t, d, adm, kAgora);
        acrescentarStatus(t, id, d.op, {k.status, {}, kAgora, {}});
        EXPECT_EQ(recusa([&] { excluirDocumento(t, id, adm); }), k.mensagem);
    }
    Documento d = venda();
    d.faturamento["CONDPAGTO"] = "P";
    d.faturamento["PARCELAS"] = "02";
    const int id = salvarDocumento(t, d, adm, kAgora);
    ASSERT_EQ(contar(t, "Select Count(*) From TbContas Where Fks = 1 and Fk = :F", {{"F", d.faturamento["ID"]}}), 2);
    excluirDocumento(t, id, adm);
    for (const char *tabela : {"TbCom Where Id = :ID", "TbComItens Where Fk = :ID", "TbComFat Where Fk = :ID", "TbComSt Where Fk = :ID"})
        EXPECT_EQ(contar(t, QString("Select Count(*) From ") + tabela, {{"ID", id}}), 0) << tabela;
    EXPECT_EQ(contar(t, "Select Count(*) From TbContas Where Fks = 1 and Fk = :F", {{"F", d.faturamento["ID"]}}), 0);
}

TEST_F(DocumentoTest, LineEntryRefusals)
{
    struct { Valores linha; const char *mensagem; } casos[] = {
        {{{"QTD", dv("1")}}, "Escolha a mercadoria primeiro!"},
        {{{"DESCRICAO", "LIVRE"}}, "Digite a quantidade primeiro!"},
        {{{"DESCRICAO", "LIVRE"}, {"QTD", dv("1")}, {"PRUNITARIO", dv("-0.01")}}, "Preço Unitário inválido!"},
        {{{"DESCRICAO", "LIVRE"}, {"QTD", dv("1")}, {"PERCDESCONTO", dv("-1")}}, "O desconto deve ser maior ou igual a 0%!"},
        {{{"DESCRICAO", "LIVRE"}, {"QTD", dv("1")}, {"PERCDESCONTO", dv("100.0001")}}, "O desconto deve ser menor ou igual a 100%!"},
    };
    for (const auto &k : casos) EXPECT_EQ(recusa([&] { conferirLinha(k.linha); }), k.mensagem);
    EXPECT_NO_THROW(conferirLinha({{"DESCRICAO", "LIVRE"}, {"QTD", dv("1")}, {"PERCDESCONTO", dv("100")}}));
    EXPECT_EQ(linhaServico(t, "7890001", "V")["IDITEM"].toInt(), c.itens["SERV"]);
    EXPECT_EQ(linhaServico(t, "S1", "A")["IDITEM"].toInt(), c.itens["SERV"]);
    EXPECT_EQ(recusa([&] { linhaServico(t, "NADA", "V"); }), "Serviço não encontrada!");
    EXPECT_EQ(buscarMercadorias(t, "cadoria 07").size(), 1);

    // Serials: the item's control against the kind, and no more than the quantity.
    Valores l = linhaDoItem(t, c.itens["000"], "V");  // controls serials on exit only
    l["QTD"] = dv("2");
    EXPECT_NO_THROW(conferirSerial(t, l, 1));
    EXPECT_EQ(recusa([&] { conferirSerial(t, l, 4); }), "Essa mercadoria não controla seriais na entrada!");
    l["Z_SERIAIS"] = QStringList{"A1", "A2"};
    EXPECT_EQ(recusa([&] { conferirSerial(t, l, 1); }), "A quantidade de seriais já atingiu a quantidade da mercadoria!");
    EXPECT_EQ(recusa([&] { conferirSerial(t, {{"DESCRICAO", "LIVRE"}, {"QTD", dv("1")}}, 1); }),
              "Essa mercadoria não controla seriais na saída!");
}

// The child half of the next test: it saves a whole sale and dies before the commit.
TEST(VendaInterrompida, Filho)
{
    const QString banco = teste::bancoDoFilho();
    if (banco.isEmpty()) GTEST_SKIP() << "só como processo filho";
    auto b = db::Banco::abrir({banco});
    db::Transacao t(*b);
    const Sessao adm = teste::administrador(t, "&Comercial", "TVendas");
    Documento d = incluirDocumento(t, modoOperacao("Ven"), adm, kAgora);
    for (const auto &[coluna, nome] : {std::pair{"IDCAD", "CLIENTE BOM"}, {"IDATENDENTE", "ATENDENTE"}, {"IDEMPRESA", "LOJA"}})
        d.cabecalho[coluna] = db::escalar(t, "Select Id From TbCad Where Nome = :N", {{"N", nome}});
    for (const QString &cst : {"000", "010", "020", "070", "030", "040", "260"}) {
        Valores l = linhaDoItem(t, db::escalar(t, "Select Id From TbItens Where Codigo = :C", {{"C", "M" + cst}}).toInt(), "V");
        l["QTD"] = dv("1");
        d.linhas.append(l);
    }
    d.faturamento["CONDPAGTO"] = "P";
    d.faturamento["PARCELAS"] = "06";
    salvarDocumento(t, d, adm, kAgora);
    std::raise(SIGKILL);
}

TEST(VendaInterrompida, ASaleKilledBeforeItsCommitIsAbsentWhenReopened)
{
    teste::BancoTemporario bt;
    {
        db::Transacao t(bt.banco());
        teste::CenarioVendas c(t);
        t.commit();
    }
    ASSERT_EQ(teste::filhoInterrompido(bt, "VendaInterrompida.Filho"), "");
    db::Transacao t(bt.banco(), db::Modo::Leitura);
    for (const char *tabela : {"TbCom", "TbComItens", "TbComFat", "TbComFatItens", "TbComSt", "TbContas", "TbContasRat"})
        EXPECT_EQ(contar(t, QString("Select Count(*) From ") + tabela), 0) << tabela;
}

} // namespace
