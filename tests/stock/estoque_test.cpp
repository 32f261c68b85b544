// Stock items: the price composition, code uniqueness, the save and delete rules, the browse
// filters on a small fixture, and the stock sheet at the keyboard (the first item typed whole:
// primeira_hora_test).

#include "Estoque.h"
#include "TEstoque.h"
#include "apoio/TabsTeste.h"
#include "schema/Atualizacao.h"
#include "ui/FormRegistro.h"
#include "Recusa.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QTest>
#include <QTableView>
#include <QTableWidget>
#include <gtest/gtest.h>

using namespace orb;
using D = db::Decimal;

namespace {

using teste::recusa;

QVariant dec(const char *s) { return QVariant::fromValue(D(s)); }
D lido(const Valores &v, const QString &c) { return v.at(c).value<D>(); }

// Cost 100, commission 5 + freight 3 + expenses 2 on top of the desired profit; ICMS 18 and the
// federal taxes (PIS 1,65, COFINS 7,6, IRPJ 1,2, CSLL 1,08) unless the regime is Simples (6).
TEST(ComposicaoPreco, BothLevelsRegimesAndIpi)
{
    const Valores base = {{"CUSTO", dec("100")},          {"PERCLUCROMINAT", dec("30")}, {"PERCLUCROMINVAR", dec("50")},
                          {"PERCCOMAT", dec("5")},        {"PERCFRETEAT", dec("3")},     {"PERCDESPFINAT", dec("2")},
                          {"PERCCOMVAR", dec("5")},       {"PERCFRETEVAR", dec("3")},    {"PERCDESPFINVAR", dec("2")},
                          {"PERCICMS", dec("18")},        {"PERCPIS", dec("1.65")},      {"PERCCOFINS", dec("7.6")},
                          {"PERCIRPJ", dec("1.2")},       {"PERCCSLL", dec("1.08")},     {"PERCSIMPLES", dec("6")},
                          {"PRVENDAAT", dec("150")},      {"PRVENDAVAR", dec("200")}};
    struct Caso {
        const char *nome;
        Valores mudancas;
        const char *minAt, *custoTribAt, *markupAt, *mcAt, *minVar, *mcVar;
    };
    const Caso casos[] = {
        // IPI goes on top of the grossed-up price, computed on P: 144,4444 / 0,7047 + 14,4444.
        {"normal com IPI", {{"REGTRIBFEDERAL", "P"}, {"PERCIPI", dec("10")}}, "219.4174", "57.0989", "2.19417", "50.0000", "253.1739", "100.00"},
        {"simples", {{"REGTRIBFEDERAL", "S"}}, "190.0585", "34.6667", "1.90059", "50.0000", nullptr, "100.00"},
        // Under Simples the federal rates play no part, whatever they hold.
        {"simples sem federais", {{"REGTRIBFEDERAL", "S"}, {"PERCPIS", dec("99")}, {"PERCCOFINS", {}}, {"PERCIRPJ", dec("50")}, {"PERCCSLL", {}}},
         "190.0585", "34.6667", "1.90059", "50.0000", nullptr, "100.00"},
        // No cost: nothing to mark up, and the margin is exactly 100.
        {"custo zero", {{"REGTRIBFEDERAL", "S"}, {"CUSTO", dec("0")}}, "0", "0", "0", "100", nullptr, "100"},
    };
    for (const Caso &c : casos) {
        SCOPED_TRACE(c.nome);
        Valores v = base;
        for (const auto &[k, x] : c.mudancas) v[k] = x;
        comporPreco(v);
        for (const auto &[coluna, esperado] : {std::pair{"PRVENDAMINAT", c.minAt}, {"CUSTOTRIBAT", c.custoTribAt}, {"MARKUPAT", c.markupAt},
                                                {"PERCMCAT", c.mcAt}, {"PRVENDAMINVAR", c.minVar}, {"PERCMCVAR", c.mcVar}})
            if (esperado) EXPECT_EQ(lido(v, coluna), D(esperado)) << coluna;
    }
}

// Percentages that reach or pass 100: each figure still follows its formula, negative or not; only a
// division by exactly zero leaves its field empty ("-" here).
TEST(ComposicaoPreco, PercentagesOfAHundredOrMore)
{
    struct Caso {
        const char *nome, *custo, *outros, *icms, *custoOutros, *custoTrib, *minimo, *markup;
    };
    const Caso casos[] = {
        // Cost 100, profit 0, IPI 10; commission alone stands for the other costs, ICMS for the taxes.
        {"impostos em 100", "100", "0", "100", "0", "110", "-", "-"},
        {"outros em 100", "100", "100", "18", "-", "-", "-", "-"},
        {"outros acima de 100", "100", "150", "18", "-300", "-56", "-263.9024", "-2.63902"},
        {"impostos acima de 100", "100", "0", "120", "0", "130", "-490", "-4.9"},
        {"custo zero e impostos em 100", "0", "0", "100", "0", "0", "-", "0"},
    };
    for (const Caso &c : casos) {
        SCOPED_TRACE(c.nome);
        Valores v = {{"CUSTO", dec(c.custo)},   {"PERCCOMAT", dec(c.outros)}, {"PERCICMS", dec(c.icms)},
                     {"PERCIPI", dec("10")},    {"REGTRIBFEDERAL", "S"}};
        comporPreco(v);
        for (const auto &[coluna, esperado] : {std::pair{"CUSTOOUTROSAT", c.custoOutros}, {"CUSTOTRIBAT", c.custoTrib},
                                                {"PRVENDAMINAT", c.minimo}, {"MARKUPAT", c.markup}}) {
            if (QByteArray(esperado) == "-") EXPECT_FALSE(preenchido(v.at(coluna))) << coluna;
            else EXPECT_EQ(lido(v, coluna), D(esperado)) << coluna;
        }
    }
}

// Costs far past 9.2 billion, as NUMERIC(18,4) holds them: the products on the way pass 64 bits,
// and the price still comes out, the same multiple of the cost as for a cost of 100.
TEST(ComposicaoPreco, CostsOfBillions)
{
    for (const char *custo : {"9300000000.0000", "900000000000.0000", "92233720368547.0000"}) {
        SCOPED_TRACE(custo);
        Valores v = {{"CUSTO", dec(custo)}, {"PERCLUCROMINAT", dec("30")}, {"PERCCOMAT", dec("5")}, {"PERCICMS", dec("18")},
                     {"REGTRIBFEDERAL", "S"}, {"PERCSIMPLES", dec("6")}};
        EXPECT_NO_THROW(comporPreco(v));
        ASSERT_TRUE(preenchido(v.at("PRVENDAMINAT")));
        EXPECT_GT(lido(v, "PRVENDAMINAT"), D(custo));
        EXPECT_EQ(lido(v, "MARKUPAT").comEscala(2), lido(v, "PRVENDAMINAT").dividir(D(custo), 2, db::Arredonda::MeioLonge));
    }
}

TEST(ComposicaoPreco, CommissionTotalsLeaveTheTechnicianOut)
{
    Valores v = {{"PERCCOMATVAT", dec("1")},  {"PERCCOMREPVAT", dec("2")},  {"PERCCOMEMPVAT", dec("0.5")}, {"PERCCOMOUTVAT", {}},
                 {"PERCCOMATSAT", dec("1")},  {"PERCCOMTECSAT", dec("10")}, {"PERCCOMOUTSAT", dec("0.25")},
                 {"PERCCOMREPVVAR", dec("3")}, {"PERCCOMTECSVAR", dec("4")}};
    somarComissoes(v);
    for (const auto &[coluna, esperado] : {std::pair{"PERCCOMVAT", "3.5"}, {"PERCCOMSAT", "1.25"}, {"PERCCOMVVAR", "3"}, {"PERCCOMSVAR", "0"}})
        EXPECT_EQ(lido(v, coluna), D(esperado)) << coluna;
}

struct EstoqueTest : teste::ComTabs {
    int fabricante = 0;
    void SetUp() override
    {
        teste::ComTabs::SetUp();
        db::Transacao t(tabs.DbORB());
        fabricante = db::escalar(t, "insert into TbFabricantes (Fabricante) values ('ACME') returning Id").toInt();
        t.commit();
    }
    Valores item(const QString &codigo, const QString &descricao)
    {
        return {{"CODIGO", codigo}, {"DESCRICAO", descricao}, {"UN", "UN"}, {"IDFABRICANTE", fabricante},
                {"CUSTO", dec("10")}, {"TIPO", "M"}};
    }
    int salvar(db::Transacao &t, const QString &codigo, const QString &descricao, const Valores &extra = {},
               const char *atual = "0", const char *minimo = "0", const char *maximo = "0")
    {
        Valores v = item(codigo, descricao);
        for (const auto &[k, x] : extra) v[k] = x;
        LinhaEstoque l = linhaPrincipal(t);
        l.atual = D(atual);
        l.minimo = D(minimo);
        l.maximo = D(maximo);
        return salvarItem(t, 0, v, {l}, "CO", teste::administrador(t));
    }
};

// A code or bar code held by another row is refused with the kind of that row; the item's own is not.
TEST_F(EstoqueTest, CodesAreUniqueAcrossMerchandiseAndServiceTypes)
{
    db::Transacao t(tabs.DbORB());
    const int parafuso = salvar(t, "P001", "Parafuso 3mm", {{"CODIGOBARRAS", "7891000000017"}});
    db::executar(t, "insert into TbItens (Codigo, CodigoBarras, Descricao, Tipo) values ('S01', '2000000000015', 'Instalação', 'S')");
    const struct { int id; const char *codigo, *esperado; } casos[] = {
        {0, "P001", "Item já cadastrado! Parafuso 3mm"},
        {0, "7891000000017", "Item já cadastrado! Parafuso 3mm"},
        {0, "2000000000015", "Este código já foi utilizado para cadastrar o Tipo de Serviço Instalação!"},
        {parafuso, "P001", ""},
        {0, "", ""},
        {0, "P002", ""},
    };
    for (const auto &c : casos) {
        SCOPED_TRACE(c.codigo);
        EXPECT_EQ(recusa([&] { conferirCodigoItem(t, c.id, c.codigo, "CODIGOBARRAS"); }), c.esperado);
    }
    // Again at Salvar, for the bar code.
    EXPECT_EQ(recusa([&] { salvar(t, "P003", "Arruela", {{"CODIGOBARRAS", "2000000000015"}}); }),
              "Este código já foi utilizado para cadastrar o Tipo de Serviço Instalação!");
}

// Each check stops the save in its order; fixing them one at a time reaches the next.
TEST_F(EstoqueTest, SaveChecksInOrder)
{
    db::Transacao t(tabs.DbORB());
    salvar(t, "USADO", "Outro item");
    Valores v = {{"CODIGO", ""},          {"DESCRICAO", ""},         {"UN", ""},     {"CUSTO", dec("-1")},
                 {"PRVENDAAT", dec("-1")}, {"PRVENDAVAR", dec("-1")}, {"TIPO", "M"}, {"MARKUPAT", dec("-2")}};
    QList<LinhaEstoque> estoques;
    const std::pair<const char *, std::function<void()>> passos[] = {
        {"Defina o código primeiro!", [&] { v["CODIGO"] = "USADO"; }},
        {"Item já cadastrado! Outro item", [&] { v["CODIGO"] = "NOVO"; }},
        {"Escolha o Fabricante primeiro!", [&] { v["IDFABRICANTE"] = fabricante; }},
        {"Defina a descrição primeiro!", [&] { v["DESCRICAO"] = "Porca"; }},
        {"Preço de Custo inválido!", [&] { v["CUSTO"] = dec("0"); }},
        {"Preço de venda no Atacado inválido!", [&] { v["PRVENDAAT"] = dec("0"); }},
        {"Preço de Venda no Varejo inválido!", [&] { v["PRVENDAVAR"] = dec("2.5"); }},
        {"Defina a unidade primeiro!", [&] { v["UN"] = "UN"; }},
        {"Defina o(s) estoque(s) primeiro!", [&] { estoques << linhaPrincipal(t); }},
    };
    for (const auto &[mensagem, corrigir] : passos) {
        EXPECT_EQ(recusa([&] { salvarItem(t, 0, v, estoques, "CO", teste::administrador(t)); }), mensagem);
        corrigir();
    }
    const int id = salvarItem(t, 0, v, estoques, "CO", teste::administrador(t));
    EXPECT_TRUE(db::escalar(t, "select MarkupAt from TbItens where Id = :ID", {{"ID", id}}).isNull());  // negative cleared
    EXPECT_EQ(db::escalar(t, "select count(*) from TbItensEst where Fk = :ID", {{"ID", id}}).toInt(), 1);
    // Engineering firms keep items without a manufacturer.
    Valores semFabricante = item("ENG1", "Projeto padrão");
    semFabricante.erase("IDFABRICANTE");
    EXPECT_GT(salvarItem(t, 0, semFabricante, estoques, "EN", teste::administrador(t)), 0);
}

// Figures a user may get wrong: a negative stock typed is refused naming its kind, a cost of
// billions is stored exactly, and a negative stock left by sales does not block the item.
TEST_F(EstoqueTest, StockFiguresAndCostsOfBillions)
{
    db::Transacao t(tabs.DbORB());
    const struct { const char *atual, *minimo, *maximo, *recusa; } casos[] = {
        {"-1", "0", "0", "Estoque atual inválido!"},
        {"0", "-0.5", "0", "Estoque mínimo inválido!"},
        {"0", "0", "-3", "Estoque máximo inválido!"},
    };
    for (const auto &c : casos) {
        EXPECT_EQ(recusa([&] { salvar(t, "NEG", "Negativo", {}, c.atual, c.minimo, c.maximo); }), c.recusa);
        EXPECT_EQ(db::escalar(t, "select count(*) from TbItens where Codigo = 'NEG'").toInt(), 0);
    }
    // Typed in a stock row, the same figures are refused as they are typed.
    for (const auto &[minimo, atual, esperado] : {std::tuple{"0", "-2", "Estoque atual inválido!"}, {"abc", "0", "Valor inválido!"},
                                                  {"12345678901234567", "0", "Valor inválido!"}})
        EXPECT_EQ(recusa([&] { conferirLinhaEstoque(t, linhaPrincipal(t).empresa, "", minimo, "0", atual); }), esperado);

    Valores v = {{"CUSTO", dec("9300000000")}, {"PERCLUCROMINAT", dec("30")}, {"REGTRIBFEDERAL", "S"}};
    comporPreco(v);
    const int id = salvar(t, "BILHAO", "Turbina", v);
    EXPECT_EQ(db::escalar(t, "select PrVendaMinAt from TbItens where Id = :ID", {{"ID", id}}).value<D>(), D("12090000000"));

    // Sales took it below zero: the item is saved again with that figure untouched.
    db::executar(t, "update TbItensEst set EstAtual = -4 where Fk = :ID", {{"ID", id}});
    Valores outra = lerRegistro(t, declaracaoEstoque(), id);
    outra["DESCRICAO"] = "Turbina grande";
    EXPECT_EQ(recusa([&] { salvarItem(t, id, outra, lerEstoques(t, id), "CO", teste::administrador(t)); }), "");
}

// A new item takes the principal company's tax regime from its latest situation, and its stock row.
TEST_F(EstoqueTest, NewItemDefaultsFromThePrincipalCompany)
{
    db::Transacao t(tabs.DbORB());
    const int empresa = empresaPrincipal(t);
    ASSERT_GT(empresa, 0);
    db::executar(t, "insert into TbCadEmpSit (Data, RegTribFed, PercIrpjMd, PercCsllMd, PercSimples, Fk) "
                    "values ('2025-01-01', 'S', 0, 0, 4, :E)", {{"E", empresa}});
    db::executar(t, "insert into TbCadEmpSit (Data, RegTribFed, PercIrpjMd, PercCsllMd, PercSimples, Fk) "
                    "values ('2026-01-01', 'P', 1.2, 1.08, 0, :E)", {{"E", empresa}});
    const Valores v = novoItem(t);
    EXPECT_EQ(QStringList({v.at("CST").toString(), v.at("CONTRSERIAL").toString(), v.at("REGTRIBFEDERAL").toString(),
                           lido(v, "PERCIRPJ").texto(), lido(v, "PERCCSLL").texto(), QString::number(v.count("PERCSIMPLES"))}),
              QStringList({"90", "NÃO", "P", "1.20", "1.08", "0"}));
    EXPECT_EQ(linhaPrincipal(t).idEmpresa, empresa);
}

// An item used in any commercial operation, of any kind or state, stays.
TEST_F(EstoqueTest, DeleteRefusedOnceUsedInAnyOperation)
{
    db::Transacao t(tabs.DbORB());
    const int usado = salvar(t, "A1", "Usado numa compra");
    const int livre = salvar(t, "A2", "Nunca usado");
    db::executar(t, "insert into TbItensFotos (Descricao, Fk) values ('frente', :I)", {{"I", livre}});
    const int compra = db::escalar(t, "insert into TbCom (Op) values (4) returning Id").toInt();
    db::executar(t, "insert into TbComItens (Tipo, IdItem, Qtd, Fk) values ('M', :I, 1, :C)", {{"I", usado}, {"C", compra}});
    EXPECT_EQ(recusa([&] { excluirItem(t, usado, teste::administrador(t)); }),
              "Este item não pode ser excluído por já estar sendo utilizada em uma operação comercial!");
    excluirItem(t, livre, teste::administrador(t));
    EXPECT_EQ(db::escalar(t, "select count(*) from TbItensEst where Fk = :I", {{"I", livre}}).toInt(), 0);
    EXPECT_EQ(db::escalar(t, "select count(*) from TbItensFotos where Fk = :I", {{"I", livre}}).toInt(), 0);
}

// Reserved: what approved sales (their latest status) hold of the item; available: current minus that.
TEST_F(EstoqueTest, ReservationsFromApprovedSales)
{
    db::Transacao t(tabs.DbORB());
    const int item = salvar(t, "R1", "Reservado", {}, "10");
    auto venda = [&](int op, QStringList status, const char *qtd) {
        const int v = db::escalar(t, "insert into TbCom (Op) values (:OP) returning Id", {{"OP", op}}).toInt();
        db::executar(t, "insert into TbComItens (Tipo, IdItem, Qtd, Fk) values ('M', :I, :Q, :V)", {{"I", item}, {"Q", dec(qtd)}, {"V", v}});
        for (const QString &st : status) db::executar(t, "insert into TbComSt (Status, Fk) values (:S, :V)", {{"S", st}, {"V", v}});
    };
    venda(1, {"AO", "AP"}, "3");        // approved: reserved
    venda(1, {"AP", "EN"}, "2");        // delivered since: no longer reserved
    venda(2, {"AP"}, "4");              // a service order, not a sale
    venda(1, {"AA"}, "1");              // awaiting approval
    const QList<LinhaEstoque> e = lerEstoques(t, item);
    ASSERT_EQ(e.size(), 1);
    EXPECT_EQ(e[0].reservado, D("3"));
    EXPECT_EQ(e[0].disponivel, D("7"));
}

// A kit's component keeps the chosen item's code and description, as kits are printed from them.
TEST_F(EstoqueTest, KitComponentCopiesTheItem)
{
    db::Transacao t(tabs.DbORB());
    const int item = salvar(t, "K-PARAF-0001", "Parafuso sextavado zincado 1/4 x 2 polegadas com porca");
    const DeclaracaoRegistro *kits = nullptr;
    for (const DeclaracaoRegistro &d : registrosEstoque())
        if (d.classe == "TKits") kits = &d;
    ASSERT_NE(kits, nullptr);
    const int kit = gravarRegistro(t, *kits, 0, {{"CODIGO", 1}, {"DESCRICAO", "Kit fixação"}, {"OBSERVACOES", QVariant()}});
    EXPECT_EQ(recusa([&] { conferirLinhaDetalhe(t, kits->detalhes[0], {{"IDCOMP", item}, {"QTD", QVariant()}}, {}); }),
              "Digite a quantidade primeiro!");
    EdicaoDetalhes e(kits->detalhes.size());
    e[0].incluir({{"IDCOMP", item}, {"QTD", 4}});
    gravarDetalhes(t, *kits, kit, e, teste::administrador(t));
    EXPECT_EQ(db::escalar(t, "select Tipo || '/' || CodComp || '/' || Descricao from TbCompKits where Kit = :K", {{"K", kit}}).toString(),
              "ITEM/K-PARAF-00/Parafuso sextavado zincado 1/4 x 2 polegadas com p");
}

// The browse filters on a small fixture: which items each combination lists.
TEST_F(EstoqueTest, FiltersSelectTheExpectedItems)
{
    {
        db::Transacao t(tabs.DbORB());
        salvar(t, "F1", "Furadeira d'água", {{"DISPVENDA", "S"}, {"DISPWEB", "N"}, {"VERSAO", "N"}, {"APLICACAO", "obra"}}, "2", "5", "10");
        salvar(t, "F2", "Lixa", {{"DISPVENDA", "N"}, {"DISPWEB", "N"}, {"VERSAO", "C"}}, "0", "0", "0");
        salvar(t, "F3", "Martelo", {{"DISPVENDA", "S"}, {"DISPWEB", "S"}, {"VERSAO", "C"}}, "12", "1", "12");
        salvar(t, "F4", "Serrote", {{"DISPVENDA", "N"}, {"DISPWEB", "S"}, {"VERSAO", "C"}}, "6", "2", "10");
        t.commit();
    }
    auto codigos = [&](const QString &ordem, const QString &texto, const FiltroEstoque &f, Busca b = Busca::Trecho) {
        std::map<QString, QVariant> p;
        db::Transacao t(tabs.DbORB(), db::Modo::Leitura);
        db::Consulta q(t, sqlEstoque(ordem, texto, f, p, b));
        for (const auto &[k, x] : p) q.bind(k, x);
        q.executar();
        QStringList r;
        while (q.proxima()) r << q["CODIGO"].toString();
        return r.join(",");
    };
    auto filtro = [](std::initializer_list<bool FiltroEstoque::*> marcados) {
        FiltroEstoque f;
        for (auto m : marcados) f.*m = true;
        return f;
    };
    using F = FiltroEstoque;
    const struct { const char *nome; QString ordem, texto; FiltroEstoque f; const char *esperado; } casos[] = {
        {"todos", "TODOS", "", {}, "F1,F2,F3,F4"},
        {"disponíveis", "TODOS", "", filtro({&F::disponiveis}), "F1"},
        {"indisponíveis", "TODOS", "", filtro({&F::indisponiveis}), "F2"},
        {"web", "TODOS", "", filtro({&F::web}), "F3,F4"},
        {"disp + web", "TODOS", "", filtro({&F::disponiveis, &F::web}), "F1,F3,F4"},
        {"novidade", "TODOS", "", filtro({&F::novidade}), "F1"},
        {"comum", "TODOS", "", filtro({&F::comum}), "F2,F3,F4"},
        {"mínimo", "TODOS", "", filtro({&F::minimo}), "F1"},
        {"máximo", "TODOS", "", filtro({&F::maximo}), "F3"},
        {"normal, limites incluídos", "TODOS", "", filtro({&F::normal}), "F2,F3,F4"},
        {"zerado", "TODOS", "", filtro({&F::zerado}), "F2"},
        {"mínimo ou zerado", "TODOS", "", filtro({&F::minimo, &F::zerado}), "F1,F2"},
        {"apóstrofo", "DESCRIÇÃO", "d'água", {}, "F1"},
        {"substring sem caixa", "DESCRIÇÃO", "ARTE", {}, "F3"},
        {"aplicação", "APLICAÇÃO", "obr", {}, "F1"},
        {"código", "CÓDIGO", "4", {}, "F4"},
        {"todos por texto", "TODOS", "obra", {}, "F1"},
    };
    for (const auto &c : casos) EXPECT_EQ(codigos(c.ordem, c.texto, c.f), c.esperado) << c.nome;

    // While typing: the description's start, or a whole code.
    const struct { QString ordem, texto; const char *esperado; } inicio[] = {
        {"DESCRIÇÃO", "mar", "F3"}, {"DESCRIÇÃO", "arte", ""}, {"TODOS", "F2", "F2"}, {"TODOS", "s", "F4"}, {"TODOS", "obra", ""},
    };
    for (const auto &c : inicio) EXPECT_EQ(codigos(c.ordem, c.texto, {}, Busca::Inicio), c.esperado) << c.ordem.toStdString() << "/" << c.texto.toStdString();
}

// The totals per item follow every change of a stock row, whatever writes it, and an existing
// database gets them added up once by the upgrade.
TEST_F(EstoqueTest, TotalsFollowEveryStockRowChange)
{
    auto totais = [&](db::Banco &b, int item) {
        db::Transacao t(b, db::Modo::Leitura);
        db::Consulta q(t, "select EstAtual, EstMinimo, EstMaximo from TbItensTotais where Fk = :F");
        q.bind("F", item).executar();
        if (!q.proxima()) return QString("-");
        return QString("%1/%2/%3").arg(q.valor(0).value<D>().textoBR(1), q.valor(1).value<D>().textoBR(1), q.valor(2).value<D>().textoBR(1));
    };
    int item = 0;
    {
        db::Transacao t(tabs.DbORB());
        item = salvar(t, "T1", "Torneira", {}, "10", "2", "20");
        t.commit();
    }
    // (statement, expected current/minimum/maximum after it), each in its own transaction.
    const struct { const char *sql; const char *esperado; } passos[] = {
        {"insert into TbItensEst (Fk, IdEmpresa, EstAtual, EstMinimo, EstMaximo) values (:F, 99, 5.5, 1, null)", "15,5/3,0/20,0"},
        {"update TbItensEst set EstAtual = EstAtual - 3 where Fk = :F and IdEmpresa = 99", "12,5/3,0/20,0"},
        {"update TbItensEst set EstMaximo = 4 where Fk = :F and IdEmpresa = 99", "12,5/3,0/24,0"},
        {"delete from TbItensEst where Fk = :F and IdEmpresa <> 99", "2,5/1,0/4,0"},
        {"delete from TbItensEst where Fk = :F", "0,0/0,0/0,0"},
    };
    for (const auto &p : passos) {
        SCOPED_TRACE(p.sql);
        db::Transacao t(tabs.DbORB());
        db::executar(t, p.sql, {{"F", item}});
        t.commit();
        EXPECT_EQ(totais(tabs.DbORB(), item), p.esperado);
    }

    teste::BancoTemporario antigo(teste::Forma::Antiga);
    {
        db::Transacao t(antigo.banco());
        const int i = db::escalar(t, "insert into TbItens (Codigo, Descricao, Tipo) values ('A', 'Antigo', 'M') returning Id").toInt();
        db::executar(t, "insert into TbItensEst (Fk, IdEmpresa, EstAtual, EstMinimo, EstMaximo) values (:F, 1, 7, 1, 9)", {{"F", i}});
        db::executar(t, "insert into TbItensEst (Fk, IdEmpresa, EstAtual, EstMinimo, EstMaximo) values (:F, 2, 3, null, 1)", {{"F", i}});
        t.commit();
        esquema::atualizar(antigo.banco());
        EXPECT_EQ(totais(antigo.banco(), i), "10,0/1,0/10,0");
    }
}

// Serials that entered through a delivered billing of any operation, with the sale that carried
// them out (painted apart) and the label prefix of the item's subgroup.
TEST_F(EstoqueTest, SerialsOfAnyDeliveredOperationWithTheirSale)
{
    db::Transacao t(tabs.DbORB());
    const int sub = db::escalar(t, "insert into TbGruposSub (Subgrupo, PrefixoEtiq) values ('Furadeiras', 'FU') returning Id").toInt();
    const int item = salvar(t, "S1", "Furadeira", {{"IDSUBGRUPO", sub}});
    auto operacao = [&](int op, const char *serial, const QVariant &entrega) {
        const int c = db::escalar(t, "insert into TbCom (Op, Data) values (:OP, current_date) returning Id", {{"OP", op}}).toInt();
        const int ci = db::escalar(t, "insert into TbComItens (Fk, IdItem, Qtd) values (:C, :I, 1) returning Id", {{"C", c}, {"I", item}}).toInt();
        const int f = db::escalar(t, "insert into TbComFat (Fk, DataEntrega) values (:C, :E) returning Id", {{"C", c}, {"E", entrega}}).toInt();
        const int fi = db::escalar(t, "insert into TbComFatItens (Fk, IdItem) values (:F, :CI) returning Id", {{"F", f}, {"CI", ci}}).toInt();
        db::executar(t, "insert into TbComFatItensSeriais (Fk, Serial) values (:FI, :S)", {{"FI", fi}, {"S", serial}});
        return c;
    };
    operacao(5, "A-1", QDateTime(QDate(2026, 1, 10), QTime(9, 0)));   // a rental brought it in
    operacao(4, "B-2", QDateTime(QDate(2026, 2, 1), QTime(9, 0)));    // a purchase
    operacao(4, "C-3", QVariant());           // not delivered: not in stock
    const int venda = operacao(1, "B-2", QDateTime(QDate(2026, 3, 5), QTime(9, 0)));
    const DeclaracaoRegistro &d = declaracaoEstoque();
    const DetalheRegistro *seriais = nullptr;
    for (const DetalheRegistro &x : d.detalhes)
        if (x.titulo == "Seriais") seriais = &x;
    ASSERT_NE(seriais, nullptr);
    db::Consulta q(t, seriais->sqlGrade);
    q.bind("MESTRE", item).executar();
    QStringList linhas;
    while (q.proxima())
        linhas << QString("%1 %2 %3 %4 %5").arg(q["SERIAL"].toString(), q["PREFIXOETIQ"].toString(), q["Z_IDVENDA"].toString(),
                                               q["Z_DATAVENDA"].toDate().toString("dd/MM"), q["Z_DESTAQUE"].toString());
    const QString v = QString::number(venda);
    EXPECT_EQ(linhas, QStringList({"A-1 FU   N", "B-2 FU " + v + " 05/03 S", "B-2 FU " + v + " 05/03 S"}));
}

// On the stock sheet: the company is checked as it is typed, figures wait for it, the rows are
// added up as they are posted; Excluir without an item, a warranty typed as a number, and a
// supplier typed by a name nobody has.
TEST_F(EstoqueTest, StockSheetAndItemFieldsAtTheKeyboard)
{
    TEstoque f;
    f.show();
    QApplication::setActiveWindow(&f);
    f.BtIncluirClick();
    ASSERT_EQ(f.estado(), FormCadastro::Estado::Incluindo);
    auto *empresa = f.findChild<QComboBox *>("EMPRESA");
    empresa->setFocus();
    empresa->setCurrentText("NINGUEM");
    QTest::keyClick(empresa, Qt::Key_Return);
    EXPECT_EQ(msg.avisos.value(0), "Empresa não cadastrada!");
    empresa->setCurrentText(QString());
    f.findChild<QLineEdit *>("ESTMINIMO")->setFocus();
    QTRY_COMPARE(msg.avisos.size(), 2);
    EXPECT_EQ(msg.avisos.value(1), "Escolha a empresa primeiro!");
    EXPECT_TRUE(empresa->hasFocus());

    auto *garantia = f.findChild<QLineEdit *>("GARANTIA");
    for (const auto &[digitado, mostrado] : {std::pair{"12", "12"}, {"1,50", "1,5"}, {"2,0", "2"}, {"1 ano", "1 ano"}}) {
        garantia->setFocus();
        garantia->setText(QString::fromUtf8(digitado));
        garantia->clearFocus();
        EXPECT_EQ(garantia->text(), QString::fromUtf8(mostrado));
    }
    f.BtCancelarClick();

    // No item at all: Excluir says what it needs.
    db::Transacao t(tabs.DbORB(), db::Modo::Leitura);
    ASSERT_EQ(db::escalar(t, "select count(*) from TbItens").toInt(), 0);
    msg.avisos.clear();
    f.BtExcluirClick();
    EXPECT_EQ(msg.avisos, QStringList{"Selecione um produto primeiro!"});

    const DeclaracaoRegistro &d = declaracaoEstoque();
    for (const DetalheRegistro &x : d.detalhes)
        for (const CampoForm &c : x.campos)
            if (c.coluna == "IDFORNECEDOR") {
                std::unique_ptr<QWidget> w(criarWidgetCampo(c));
                auto *cb = qobject_cast<QComboBox *>(w.get());
                ASSERT_TRUE(cb && cb->isEditable());
                cb->setCurrentText("Fornecedor Fantasma");
                EXPECT_EQ(recusa([&] { lerWidgetCampo(c, cb); }), "Fornecedor não cadastrado!");
            }
}

} // namespace
