// Backup copies at volume: 100,000 people, 50,000 items and 100,000 sale documents. The engine's
// backup, the verified copy (backup, restore into a temporary file, rows compared) and the proof of
// a copy, each against copying the database file itself (with the copy flushed to disk) in the
// same run.

#include "Gerador.h"
#include "copias/Copias.h"
#include "copias/Servico.h"

#include "Bancos.h"
#include "Coletor.h"

#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <cstdio>
#include <unistd.h>

namespace {

db::Conexao conexao;
qint64 bytesBanco = 0;

const db::Conexao &banco()
{
    if (conexao.banco.isEmpty()) {
        QElapsedTimer r;
        r.start();
        {
            auto b = bench::bancoNovo("volume");
            bench::gerarCadastros(*b, 100000);
            bench::gerarItens(*b, 50000, 3);
            bench::gerarDocumentos(*b, 100000);
            conexao = b->conexao();
        }
        const db::Conexao &c = conexao;
        bytesBanco = QFileInfo(c.banco).size();
        std::printf("banco gerado em %.1f s: %.1f MB\n", double(r.elapsed()) / 1000.0, double(bytesBanco) / 1048576.0);
    }
    return conexao;
}

void gravarNoDisco(const QString &arquivo)
{
    QFile f(arquivo);
    if (f.open(QIODevice::ReadWrite)) ::fsync(f.handle());
}

void registrarVelocidade(benchmark::State &st)
{
    st.SetBytesProcessed(int64_t(st.iterations()) * bytesBanco);
}

// The floor: the database file copied byte for byte and flushed to disk.
void PisoCopiaArquivo(benchmark::State &st)
{
    const db::Conexao &c = banco();
    const QString destino = bench::arquivoDaExecucao("piso.fdb");
    for (auto _ : st) {
        QFile::remove(destino);
        QFile::copy(c.banco, destino);
        gravarNoDisco(destino);
    }
    registrarVelocidade(st);
}

// Firebird's own backup through the services manager, the copy flushed to disk.
void Backup(benchmark::State &st)
{
    const db::Conexao &c = banco();
    const QString destino = bench::arquivoDaExecucao("copia.fbk");
    for (auto _ : st) {
        QFile::remove(destino);
        copias::gerarBackup(c, destino);
        gravarNoDisco(destino);
    }
    registrarVelocidade(st);
}

// What the screen and the scheduler do: backup, restore into a temporary file, rows compared.
void CopiaVerificada(benchmark::State &st)
{
    const db::Conexao &c = banco();
    const QString dir = bench::arquivoDaExecucao("copias");
    for (auto _ : st) {
        QDir(dir).removeRecursively();
        const copias::Copia k = copias::fazerCopia(c, dir, QDateTime::currentDateTime(), true);
        if (k.verificacao != copias::Verificacao::Verificada) st.SkipWithError(k.motivo.toStdString().c_str());
    }
    registrarVelocidade(st);
}

// The proof alone: the copy restored into a temporary file and its rows compared.
void RestauracaoVerificada(benchmark::State &st)
{
    const db::Conexao &c = banco();
    const QString dir = bench::arquivoDaExecucao("prova");
    QDir(dir).removeRecursively();
    const copias::Copia k = copias::fazerCopia(c, dir, QDateTime::currentDateTime(), true);
    for (auto _ : st) {
        copias::restaurarConferido(c, k, bench::arquivoDaExecucao("restaurado.fdb"));
        QFile::remove(bench::arquivoDaExecucao("restaurado.fdb"));
    }
    registrarVelocidade(st);
}

// For comparison only: the same backup by the gbak program (embedded), with and without the
// per-table output the verification reads.
void Gbak(benchmark::State &st, bool detalhado)
{
    const db::Conexao &c = banco();
    const QString destino = bench::arquivoDaExecucao("gbak.fbk");
    if (!QFileInfo::exists("/usr/bin/gbak")) {
        st.SkipWithError("gbak não instalado");
        return;
    }
    for (auto _ : st) {
        QFile::remove(destino);
        QProcess p;
        p.setStandardOutputFile(QProcess::nullDevice());
        p.setStandardErrorFile(QProcess::nullDevice());
        QStringList args{"-b", "-user", c.usuario, c.banco, destino};
        if (detalhado) args.prepend("-v");
        p.start("/usr/bin/gbak", args);
        p.waitForFinished(-1);
        gravarNoDisco(destino);
    }
    registrarVelocidade(st);
}
void GbakDetalhado(benchmark::State &st) { Gbak(st, true); }
void GbakSimples(benchmark::State &st) { Gbak(st, false); }

} // namespace

BENCHMARK(PisoCopiaArquivo)->Unit(benchmark::kSecond)->Iterations(3);
BENCHMARK(Backup)->Unit(benchmark::kSecond)->Iterations(2);
BENCHMARK(GbakDetalhado)->Unit(benchmark::kSecond)->Iterations(1);
BENCHMARK(GbakSimples)->Unit(benchmark::kSecond)->Iterations(1);
BENCHMARK(CopiaVerificada)->Unit(benchmark::kSecond)->Iterations(1);
BENCHMARK(RestauracaoVerificada)->Unit(benchmark::kSecond)->Iterations(1);

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    bench::Coletor c;
    benchmark::RunSpecifiedBenchmarks(&c);
    std::printf("\nrazões (tempo / piso medido nesta execução; meta do backup: até 2,00)\n");
    const double mb = double(bytesBanco) / 1048576.0;
    for (const auto &[nome, segundos] : c.tempos)
        if (segundos > 0) std::printf("%-40s %8.2f s %10.1f MB/s\n", nome.c_str(), segundos, mb / segundos);
    c.razao("Backup/iterations:2", "PisoCopiaArquivo/iterations:3");
    c.razao("GbakDetalhado/iterations:1", "PisoCopiaArquivo/iterations:3");
    c.razao("GbakSimples/iterations:1", "PisoCopiaArquivo/iterations:3");
    c.razao("CopiaVerificada/iterations:1", "PisoCopiaArquivo/iterations:3");
    c.razao("RestauracaoVerificada/iterations:1", "PisoCopiaArquivo/iterations:3");
    return 0;
}
