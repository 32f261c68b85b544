// Saving a record with its details through the record mechanism (checks, one attempt under a
// savepoint, every row written and logged) against the bare inserts of the same rows in one
// transaction, measured in the same run.

#include "Estoque.h"
#include "dados/Tabs.h"

#include "Bancos.h"
#include "Coletor.h"

#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <cstdio>

namespace {

constexpr int kLinhas = 10;  // detail rows: one stock row and nine suppliers

struct Base {
    std::unique_ptr<orb::TTabs> tabs;
    int fabricante = 0, fornecedor = 0;
    Base()
    {
        tabs = std::make_unique<orb::TTabs>();
        tabs->conectar(bench::bancoNovo("edicao"));
        orb::Tabs = tabs.get();
        tabs->definirUsuario(2);
        db::Transacao t(tabs->DbORB());
        fabricante = db::escalar(t, "insert into TbFabricantes (Fabricante) values ('ACME') returning Id").toInt();
        fornecedor = db::escalar(t, "insert into TbCad (Codigo, Nome, Apelido, Fo, Pessoa) values (9, 'Fornecedor', 'F', 'S', 'J') "
                                    "returning Id").toInt();
        t.commit();
    }
};

Base &base()
{
    static Base b;
    return b;
}

orb::Valores item(const Base &b)
{
    return {{"CODIGO", "B-1"}, {"DESCRICAO", "Item de medida"}, {"UN", "UN"}, {"IDFABRICANTE", b.fabricante},
            {"CUSTO", QVariant::fromValue(db::Decimal("10"))}, {"TIPO", "M"}};
}

// Each iteration is rolled back, so every one saves the same new item into the same database.
void PisoInsercoes(benchmark::State &st)
{
    Base &b = base();
    const orb::LinhaEstoque principal = [&] {
        db::Transacao t(b.tabs->DbORB());
        return orb::linhaPrincipal(t);
    }();
    for (auto _ : st) {
        db::Transacao t(b.tabs->DbORB());
        const orb::Valores v = item(b);
        QStringList cols, params;
        for (const auto &[k, x] : v) {
            cols << k;
            params << ":" + k;
        }
        db::Consulta qi(t, "Insert Into TbItens (" + cols.join(", ") + ") Values (" + params.join(", ") + ") Returning Id");
        for (const auto &[k, x] : v) qi.bind(k, x);
        const int id = qi.escalar().toInt();
        db::executar(t, "Insert Into TbItensEst (Fk, IdEmpresa, EstAtual) Values (:F, :E, 0)", {{"F", id}, {"E", principal.idEmpresa}});
        db::Consulta qf(t, "Insert Into TbItensForn (Fk, IdFornecedor, CodForn) Values (:F, :FO, :C)");
        for (int i = 1; i < kLinhas; ++i) qf.bind("F", id).bind("FO", b.fornecedor).bind("C", QString("C%1").arg(i)).executar();
        t.rollback();
    }
}

void SalvarItemComDetalhes(benchmark::State &st)
{
    Base &b = base();
    const orb::DeclaracaoRegistro &d = orb::declaracaoEstoque();
    orb::EdicaoDetalhes e(d.detalhes.size());
    for (int i = 0; i < d.detalhes.size(); ++i)
        if (d.detalhes[i].tabela == "TBITENSFORN")
            for (int k = 1; k < kLinhas; ++k) e[i].incluir({{"IDFORNECEDOR", b.fornecedor}, {"CODFORN", QString("C%1").arg(k)}});
    const orb::LinhaEstoque principal = [&] {
        db::Transacao t(b.tabs->DbORB());
        return orb::linhaPrincipal(t);
    }();
    // The installation's administrator saves, as at the counter: the rights are read on every save.
    orb::Sessao adm;
    {
        db::Transacao t(b.tabs->DbORB());
        adm.idUsuario = db::escalar(t, "Select Id From TbCad Where Usuario = 'ADMIN'").toInt();
    }
    for (auto _ : st) {
        db::Transacao t(b.tabs->DbORB());
        db::tentativa(t, [&] {
            const int id = orb::salvarItem(t, 0, item(b), {principal}, "CO", adm);
            orb::conferirDetalhes(t, d, e);
            orb::gravarDetalhes(t, d, id, e, adm);
        });
        t.rollback();
    }
}

// The price composition typed on the item screen (both levels, taxes, IPI) at a cost of billions,
// where every intermediate goes past 64 bits; the floor copies the same values and writes the
// ten results, which the composition cannot avoid.
orb::Valores composicao()
{
    auto d = [](const char *s) { return QVariant::fromValue(db::Decimal(s)); };
    return {{"CUSTO", d("9300000000.1234")}, {"PERCLUCROMINAT", d("30")}, {"PERCLUCROMINVAR", d("50")},
            {"PERCCOMAT", d("5")},           {"PERCFRETEAT", d("3")},     {"PERCDESPFINAT", d("2")},
            {"PERCCOMVAR", d("5")},          {"PERCFRETEVAR", d("3")},    {"PERCDESPFINVAR", d("2")},
            {"PERCICMS", d("18")},           {"PERCPIS", d("1.65")},      {"PERCCOFINS", d("7.6")},
            {"PERCIRPJ", d("1.2")},          {"PERCCSLL", d("1.08")},     {"PERCIPI", d("10")},
            {"PRVENDAAT", d("15000000000")}, {"PRVENDAVAR", d("20000000000")}};
}

void PisoCopiaValores(benchmark::State &st)
{
    const orb::Valores base = composicao();
    for (auto _ : st) {
        orb::Valores v = base;
        for (const char *c : {"CUSTOOUTROSAT", "CUSTOTRIBAT", "PRVENDAMINAT", "MARKUPAT", "PERCMCAT", "CUSTOOUTROSVAR",
                              "CUSTOTRIBVAR", "PRVENDAMINVAR", "MARKUPVAR", "PERCMCVAR"})
            v[c] = v.at("CUSTO");
        benchmark::DoNotOptimize(v);
    }
}

void ComporPreco(benchmark::State &st)
{
    const orb::Valores base = composicao();
    for (auto _ : st) {
        orb::Valores v = base;
        orb::comporPreco(v);
        benchmark::DoNotOptimize(v);
    }
}

} // namespace

BENCHMARK(PisoCopiaValores)->Unit(benchmark::kMicrosecond);
BENCHMARK(ComporPreco)->Unit(benchmark::kMicrosecond);
BENCHMARK(PisoInsercoes)->Unit(benchmark::kMillisecond);
BENCHMARK(SalvarItemComDetalhes)->Unit(benchmark::kMillisecond);

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    bench::Coletor c;
    benchmark::RunSpecifiedBenchmarks(&c);
    std::printf("\nRazões (tempo / piso medido nesta execução):\n");
    c.razao("SalvarItemComDetalhes", "PisoInsercoes");
    c.razao("ComporPreco", "PisoCopiaValores");
    base().tabs->desconectar();
    orb::Tabs = nullptr;
    return 0;
}
