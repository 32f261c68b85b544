// Browsing the registries at volume: the first page of the commercial registry over 100,000
// people and of the stock screen over 50,000 items with three companies' stock, each against the
// bare select of that same page measured in the same run.

#include "Comercial.h"
#include "Estoque.h"
#include "Gerador.h"
#include "ui/ModeloConsulta.h"

#include "Bancos.h"
#include "Coletor.h"

#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <cstdio>
#include <map>

namespace {

std::map<QString, std::unique_ptr<db::Banco>> bancos;

db::Banco &banco(const QString &nome, const std::function<void(db::Banco &)> &preencher)
{
    auto &b = bancos[nome];
    if (!b) {
        b = bench::bancoNovo(nome);
        preencher(*b);
    }
    return *b;
}

db::Banco &cadastros() { return banco("cadastros", [](db::Banco &b) { bench::gerarCadastros(b, 100000); }); }
db::Banco &itens(int n)
{
    return banco(QString("itens%1").arg(n), [n](db::Banco &b) { bench::gerarItens(b, n, 3); });
}

// The bare floor: the table's own rows of the same first page, every value read through the data
// layer, without the screen's joins and per-row figures.
void pagina(db::Banco &b, const QString &sql, benchmark::State &st)
{
    for (auto _ : st) {
        db::Transacao t(b, db::Modo::Leitura);
        db::Consulta q(t, sql);
        q.executar();
        int n = 0;
        for (; n < orb::ModeloConsulta::kPagina && q.proxima(); ++n)
            for (int i = 0; i < q.colunas(); ++i) benchmark::DoNotOptimize(q.valor(i));
        benchmark::DoNotOptimize(n);
    }
}

// What the screen does: its browse query on the lazily fetching model, first page ready.
void grade(db::Banco &b, const QString &sql, const std::map<QString, QVariant> &p, benchmark::State &st)
{
    for (auto _ : st) {
        orb::ModeloConsulta m(b);
        m.consultar(sql, p);
        benchmark::DoNotOptimize(m.rowCount());
    }
}

void PisoPaginaCadastro(benchmark::State &st)
{
    pagina(cadastros(), "Select C.* From TbCad C Where C.Cl = 'S' Order By C.Nome", st);
}

void CadastroPrimeiraPagina(benchmark::State &st)
{
    db::Banco &b = cadastros();
    const orb::BuscaCadastro q = orb::sqlBusca(orb::modoCadastro("Cl"), "NOME", {}, {}, QDate(2026, 11, 22));
    grade(b, q.sql, q.parametros, st);
}

void PisoBuscaNome(benchmark::State &st)
{
    pagina(cadastros(), "Select C.* From TbCad C Where (C.Cl = 'S') and ((C.Nome Containing 'Sofia Lima') or "
                        "(C.RazaoSocial Containing 'Sofia Lima') or (C.Apelido Containing 'Sofia Lima')) Order By C.Nome", st);
}

void CadastroBuscaNome(benchmark::State &st)
{
    db::Banco &b = cadastros();
    const orb::BuscaCadastro q = orb::sqlBusca(orb::modoCadastro("Cl"), "NOME", "Sofia Lima", {}, QDate(2026, 11, 22));
    grade(b, q.sql, q.parametros, st);
}

// Typing a name: each keystroke's first page, by the names' start, against the bare indexed select
// of that page. "sofia l" is one person in a few hundred.
void PisoBuscaInicioNome(benchmark::State &st)
{
    pagina(cadastros(), "Select C.* From TbCad C Where (C.Cl = 'S') and (Upper(C.Nome) Starting With 'SOFIA L') "
                        "Order By C.Nome", st);
}

void CadastroBuscaInicioNome(benchmark::State &st)
{
    db::Banco &b = cadastros();
    const orb::BuscaCadastro q =
        orb::sqlBusca(orb::modoCadastro("Cl"), "NOME", "sofia l", {}, QDate(2026, 11, 22), orb::Busca::Inicio);
    grade(b, q.sql, q.parametros, st);
}

void PisoBuscaInicioDescricao(benchmark::State &st)
{
    pagina(itens(int(st.range(0))), "Select I.Id, I.Codigo, I.CodigoBarras, I.Descricao, I.Un, I.Custo, I.PrVendaAt, "
                                    "I.PrVendaVar, I.DispVenda, I.DispWeb, I.Versao, I.Aplicacao, I.IdGrupo, I.IdSubgrupo "
                                    "From TbItens I Where (I.Tipo = 'M') and (Upper(I.Descricao) Starting With 'TORNEIRA B') "
                                    "Order By I.Descricao", st);
}

void EstoqueBuscaInicioDescricao(benchmark::State &st)
{
    db::Banco &b = itens(int(st.range(0)));
    std::map<QString, QVariant> p;
    const QString sql = orb::sqlEstoque("DESCRIÇÃO", "torneira b", {}, p, orb::Busca::Inicio);
    grade(b, sql, p, st);
}

void PisoPaginaEstoque(benchmark::State &st)
{
    pagina(itens(int(st.range(0))), "Select I.Id, I.Codigo, I.CodigoBarras, I.Descricao, I.Un, I.Custo, I.PrVendaAt, "
                                    "I.PrVendaVar, I.DispVenda, I.DispWeb, I.Versao, I.Aplicacao, I.IdGrupo, I.IdSubgrupo "
                                    "From TbItens I Where I.Tipo = 'M' Order By I.Descricao", st);
}

void EstoquePrimeiraPagina(benchmark::State &st)
{
    db::Banco &b = itens(int(st.range(0)));
    std::map<QString, QVariant> p;
    const QString sql = orb::sqlEstoque("TODOS", {}, {}, p);
    grade(b, sql, p, st);
}

void EstoqueSituacaoMinimo(benchmark::State &st)
{
    db::Banco &b = itens(int(st.range(0)));
    orb::FiltroEstoque f;
    f.minimo = true;
    std::map<QString, QVariant> p;
    const QString sql = orb::sqlEstoque("TODOS", {}, f, p);
    grade(b, sql, p, st);
}

} // namespace

BENCHMARK(PisoPaginaCadastro)->Unit(benchmark::kMillisecond);
BENCHMARK(CadastroPrimeiraPagina)->Unit(benchmark::kMillisecond);
BENCHMARK(PisoBuscaNome)->Unit(benchmark::kMillisecond);
BENCHMARK(CadastroBuscaNome)->Unit(benchmark::kMillisecond);
BENCHMARK(PisoBuscaInicioNome)->Unit(benchmark::kMillisecond);
BENCHMARK(CadastroBuscaInicioNome)->Unit(benchmark::kMillisecond);
BENCHMARK(PisoBuscaInicioDescricao)->Arg(50000)->Unit(benchmark::kMillisecond);
BENCHMARK(EstoqueBuscaInicioDescricao)->Arg(50000)->Unit(benchmark::kMillisecond);
BENCHMARK(PisoPaginaEstoque)->Arg(5000)->Arg(50000)->Unit(benchmark::kMillisecond);
BENCHMARK(EstoquePrimeiraPagina)->Arg(5000)->Arg(50000)->Unit(benchmark::kMillisecond);
BENCHMARK(EstoqueSituacaoMinimo)->Arg(5000)->Arg(50000)->Unit(benchmark::kMillisecond);

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    bench::Coletor c;
    benchmark::RunSpecifiedBenchmarks(&c);
    std::printf("\nRazões (tempo / piso medido nesta execução):\n");
    c.razao("CadastroPrimeiraPagina", "PisoPaginaCadastro");
    c.razao("CadastroBuscaNome", "PisoBuscaNome");
    c.razao("CadastroBuscaInicioNome", "PisoBuscaInicioNome");
    c.razao("EstoqueBuscaInicioDescricao/50000", "PisoBuscaInicioDescricao/50000");
    c.razao("EstoquePrimeiraPagina/50000", "PisoPaginaEstoque/50000");
    c.razao("EstoqueSituacaoMinimo/50000", "PisoPaginaEstoque/50000");
    // The totals over companies are per item on the page: ten times the items, the same page cost.
    c.razao("EstoquePrimeiraPagina/50000", "EstoquePrimeiraPagina/5000");
    std::printf("Primeira página do cadastro: %.1f ms; do estoque (50.000 itens): %.1f ms\n",
                c.tempos["CadastroPrimeiraPagina"], c.tempos["EstoquePrimeiraPagina/50000"]);
    bancos.clear();
    return 0;
}
