// The express sale's Enter at 50,000 items: a bar code looked up (the code first, then the bar
// code), the line made at the customer's price, the document of twenty lines recalculated and the
// item's photo read, against the bare indexed select of the item by its bar code. Target: under
// 5 ms a line, so that a scanner's Enter shows no wait.

#include "VendaExpressa.h"
#include "schema/Atualizacao.h"

#include "Coletor.h"
#include "Gerador.h"

#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <QTemporaryDir>

using db::Decimal;
using namespace orb;

namespace {

const int kItens = 50000;
QTemporaryDir pasta;
std::unique_ptr<db::Banco> banco;
Documento base;  // a counter sale of twenty lines, ready for the next scan

QString barras(int i) { return QString("789%1").arg(i, 10, 10, QChar('0')); }

db::Banco &preparado()
{
    if (banco) return *banco;
    db::Conexao c;
    c.banco = pasta.filePath("vendaexp.fdb");
    banco = esquema::criarBanco(c);
    const QList<int> empresas = bench::gerarItens(*banco, kItens, 1);
    db::Transacao t(*banco);
    const int cliente = db::escalar(t, "Insert Into TbCad (Nome, Apelido, Pessoa, Cl, TipoCliente) Values ('CLIENTE', 'CLIENTE', 'F', "
                                       "'S', 'V') Returning Id").toInt();
    db::Consulta q(t, "Select U.Id, U.IdNivel, N.Nivel From TbCad U Join TbNiveis N On N.Id = U.IdNivel Where U.Usuario = 'ADMIN'");
    q.executar();
    q.proxima();
    Sessao s;
    s.idUsuario = q[0].toInt();
    s.idNivel = q[1].toInt();
    s.nivel = q[2].toInt();
    q.fechar();
    db::executar(t, "Insert Into TbParVendas (Data, IdClienteVE, IdEmpresaVE) Values ('2020-01-01', :C, :E)",
                 {{"C", cliente}, {"E", empresas.value(0)}});
    base = incluirVendaExpressa(t, s, QDateTime(QDate(2026, 3, 10), QTime(10, 0)));
    for (int i = 0; i < 20; ++i) adicionarPorCodigo(t, base, barras(i * 2477 % kItens), Decimal("1"));
    t.commit();
    return *banco;
}

// The floor: the item read by its bar code, every column through the data layer.
void PisoItemPorCodigoBarras(benchmark::State &st)
{
    db::Banco &b = preparado();
    db::Transacao t(b, db::Modo::Leitura);
    db::Consulta q(t, "Select * From TbItens Where CodigoBarras = :C");
    int i = 0;
    for (auto _ : st) {
        q.bind("C", barras(i++ * 7919 % kItens));
        q.executar();
        while (q.proxima())
            for (int c = 0; c < q.colunas(); ++c) benchmark::DoNotOptimize(q.valor(c));
        q.fechar();
    }
}

// What Enter in the code field does: the line added to the sale and the item's photo read.
void VendaExpLinhaPorCodigoBarras(benchmark::State &st)
{
    db::Banco &b = preparado();
    db::Transacao t(b, db::Modo::Leitura);
    Documento d = base;
    int i = 0;
    for (auto _ : st) {
        const int item = adicionarPorCodigo(t, d, barras(i++ * 7919 % kItens), Decimal("1"));
        benchmark::DoNotOptimize(fotoDoItem(t, item));
        d.linhas.removeLast();  // the next scan meets the same twenty lines
    }
}

} // namespace

BENCHMARK(PisoItemPorCodigoBarras)->Unit(benchmark::kMillisecond);
BENCHMARK(VendaExpLinhaPorCodigoBarras)->Unit(benchmark::kMillisecond);

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    bench::Coletor c;
    benchmark::RunSpecifiedBenchmarks(&c);
    std::printf("\nRazão (a linha por código de barras; alvo: abaixo de 5 ms por linha):\n");
    c.razao("VendaExpLinhaPorCodigoBarras", "PisoItemPorCodigoBarras");
    if (c.tempos.count("VendaExpLinhaPorCodigoBarras"))
        std::printf("%-70s %8.3f ms\n", "VendaExpLinhaPorCodigoBarras", c.tempos["VendaExpLinhaPorCodigoBarras"]);
    benchmark::Shutdown();
    return 0;
}
