// Data layer and upgrade costs, printed as ratios against a floor measured in the same run.

#include "acesso/Acesso.h"
#include "dados/Tabs.h"
#include "db/Banco.h"
#include "schema/Atualizacao.h"

#include "Bancos.h"
#include "Coletor.h"

#include <benchmark/benchmark.h>
#include <firebird/Interface.h>
#include <cstring>

#include <QDir>
#include <QProcess>
#include <cstdio>
#include <map>

using namespace Firebird;

namespace {

std::unique_ptr<db::Banco> banco;

db::Banco &base()
{
    if (!banco) {
        banco = bench::bancoNovo("bench");
        // 100,000 colours with codes, for the numbering benchmark.
        db::Transacao t(*banco);
        db::executar(t, "execute block as declare i integer = 0; begin "
                        "while (i < 100000) do begin insert into TBCORES (CODIGO, COR) values (:i, 'cor'); i = i + 1; end end");
        t.commit();
    }
    return *banco;
}

constexpr int kLinhas = 10000;
constexpr int kPrimeiroCodigo = 100000;  // past the prepared colours: the code is unique

void PisoMetadados(benchmark::State &st)
{
    db::Banco &b = base();
    for (auto _ : st) {
        db::Transacao t(b, db::Modo::Leitura);
        db::Consulta q(t, "select trim(rdb$relation_name), trim(rdb$field_name), trim(rdb$field_source) "
                          "from rdb$relation_fields where coalesce(rdb$system_flag, 0) = 0");
        q.executar();
        int n = 0;
        while (q.proxima()) ++n;
        benchmark::DoNotOptimize(n);
    }
}

void AtualizacaoEmDia(benchmark::State &st)
{
    db::Banco &b = base();
    for (auto _ : st) benchmark::DoNotOptimize(esquema::atualizar(b));
}

void PisoInsercoesApi(benchmark::State &st)
{
    db::Banco &b = base();
    IMaster *m = db::mestre();
    for (auto _ : st) {
        ThrowStatusWrapper s(m->getStatus());
        ITransaction *tr = b.api()->startTransaction(&s, 0, nullptr);
        IStatement *stmt = b.api()->prepare(&s, tr, 0, "insert into TBCORES (CODIGO, COR) values (?, ?)", 3, 0);
        IMessageMetadata *meta = stmt->getInputMetadata(&s);
        std::vector<unsigned char> buf(meta->getMessageLength(&s));
        const unsigned oCod = meta->getOffset(&s, 0), nCod = meta->getNullOffset(&s, 0);
        const unsigned oCor = meta->getOffset(&s, 1), nCor = meta->getNullOffset(&s, 1);
        static const char cor[] = "Azul celeste";
        for (int i = 0; i < kLinhas; ++i) {
            const int codigo = kPrimeiroCodigo + i;
            *reinterpret_cast<short *>(&buf[nCod]) = 0;
            std::memcpy(&buf[oCod], &codigo, sizeof codigo);
            *reinterpret_cast<short *>(&buf[nCor]) = 0;
            const unsigned short len = sizeof cor - 1;
            std::memcpy(&buf[oCor], &len, sizeof len);
            std::memcpy(&buf[oCor + 2], cor, len);
            stmt->execute(&s, tr, meta, buf.data(), nullptr, nullptr);
        }
        meta->release();
        stmt->free(&s);
        tr->rollback(&s);
        s.dispose();
    }
}

void InsercoesCamada(benchmark::State &st)
{
    db::Banco &b = base();
    for (auto _ : st) {
        db::Transacao t(b);
        db::Consulta q(t, "insert into TBCORES (CODIGO, COR) values (:CODIGO, :COR)");
        for (int i = 0; i < kLinhas; ++i) {
            q.bind("CODIGO", kPrimeiroCodigo + i).bind("COR", QStringLiteral("Azul celeste"));
            q.executar();
        }
        t.rollback();
    }
}

void PisoIdaEVolta(benchmark::State &st)
{
    db::Banco &b = base();
    db::Transacao t(b);
    for (auto _ : st) benchmark::DoNotOptimize(db::escalar(t, "select 1 from rdb$database"));
}

void NovoCodigo100Mil(benchmark::State &st)
{
    db::Banco &b = base();
    orb::TTabs tabs;
    tabs.conectar(db::Banco::abrir(b.conexao()));
    for (auto _ : st) benchmark::DoNotOptimize(tabs.NovoCodigo("TBCORES", "CODIGO", ""));
}

// A user of a restricted level: the check reads the user's row and the level's tree.
void AcessoModulosUmaVez(benchmark::State &st)
{
    db::Banco &b = base();
    orb::TTabs tabs;
    orb::Tabs = &tabs;
    tabs.conectar(db::Banco::abrir(b.conexao()));
    orb::Sessao &s = orb::sessao();
    {
        db::Transacao t(tabs.DbORB());
        orb::sincronizarCatalogo(t, {{"Sistema1", "&Sistema", {{"Usuarios1", "&Usuários...", "TUsuarios"}}}});
        const int nivel = db::escalar(t, "insert into TbNiveis (Nivel, Descricao) values (10, 'X') returning Id").toInt();
        orb::completarArvoreNivel(t, nivel);
        db::executar(t, "update TbNiveisMenusModOp set Permitido = 'S'");
        s.idUsuario = db::escalar(t, "insert into TbCad (Usuario, Us, IdNivel) values ('B', 'S', :N) returning Id",
                                  {{"N", nivel}}).toInt();
        s.idNivel = nivel;
        s.nivel = 10;
        t.commit();
    }
    s.menuAtual = "Sistema";
    s.moduloAtual = "TUsuarios";
    for (auto _ : st) benchmark::DoNotOptimize(orb::AcessoModulos("Incluir"));
    tabs.desconectar();
    orb::Tabs = nullptr;
}

// The program from its start to the login window on an up-to-date local database.
QString bancoInicio()
{
    static QString arq;
    if (arq.isEmpty()) {
        arq = bench::arquivoDaExecucao("inicio/ORBManager.fdb");
        QDir().mkpath(bench::arquivoDaExecucao("inicio"));
        db::Conexao c;
        c.banco = arq;
        esquema::criarBanco(c);  // closed again: the program opens it alone
    }
    return arq;
}

void rodar(const QStringList &args, bool medir)
{
    QProcess p;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert("QT_QPA_PLATFORM", "offscreen");
    env.insert("ORB_INSTANCIA", "orb-bench-inicio");
    if (medir) env.insert("ORB_MEDIR_INICIO", "1");
    p.setProcessEnvironment(env);
    p.start(ORB_PROGRAMA, args);
    p.waitForFinished(60000);
}

void PisoProcesso(benchmark::State &st)
{
    for (auto _ : st) rodar({"--help"}, false);
}

void InicioAteLogin(benchmark::State &st)
{
    const QString arq = bancoInicio();
    for (auto _ : st) rodar({"--database", arq}, true);
}

} // namespace

BENCHMARK(PisoMetadados)->Unit(benchmark::kMillisecond);
BENCHMARK(AtualizacaoEmDia)->Unit(benchmark::kMillisecond);
BENCHMARK(PisoInsercoesApi)->Unit(benchmark::kMillisecond);
BENCHMARK(InsercoesCamada)->Unit(benchmark::kMillisecond);
BENCHMARK(PisoIdaEVolta)->Unit(benchmark::kMicrosecond);
BENCHMARK(NovoCodigo100Mil)->Unit(benchmark::kMillisecond);
BENCHMARK(AcessoModulosUmaVez)->Unit(benchmark::kMicrosecond);
BENCHMARK(PisoProcesso)->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK(InicioAteLogin)->Unit(benchmark::kMillisecond)->Iterations(5);

int main(int argc, char **argv)
{
    benchmark::Initialize(&argc, argv);
    bench::Coletor c;
    benchmark::RunSpecifiedBenchmarks(&c);
    std::printf("\nRazões (tempo / piso medido nesta execução):\n");
    c.razao("AtualizacaoEmDia", "PisoMetadados");
    c.razao("InsercoesCamada", "PisoInsercoesApi");
    c.razao("NovoCodigo100Mil", "PisoIdaEVolta");
    c.razao("AcessoModulosUmaVez", "PisoIdaEVolta");
    c.razao("InicioAteLogin/iterations:5", "PisoProcesso/iterations:5");
    banco.reset();
    return 0;
}
