// The readings list at volume: two years of weekly readings of 300 machines on ten routes
// (31,200 rows), a route's first page and a quarter of it, each against the bare select of the
// same rows without the screen's joins, measured in the same run.

#include "Bancos.h"
#include "Coletor.h"
#include "Leituras.h"
#include "ui/ModeloConsulta.h"

#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <cstdio>

namespace {

constexpr int kRotas = 10, kMaquinas = 300, kSemanas = 104;
const QDate kInicio(2024, 11, 4);

std::unique_ptr<db::Banco> banco_;
int rota_ = 0;  // the route measured

db::Banco &banco()
{
    if (banco_) return *banco_;
    banco_ = bench::bancoNovo("leituras");
    db::Transacao t(*banco_);
    const int area = db::escalar(t, "Insert Into TBFL_AREAS (Area) Values ('Centro') Returning Id").toInt();
    QList<int> rotas, pontos, maquinas;
    for (int r = 0; r < kRotas; ++r)
        rotas << db::escalar(t, "Insert Into TBFL_ROTAS (Rota, IdArea) Values (:R, :A) Returning Id",
                             {{"R", QString("Rota %1").arg(r + 1)}, {"A", area}}).toInt();
    const int oper = db::escalar(t, "Insert Into TBFL_OPER (Nome, PercCom, IdRota) Values ('Paulo', 10, :R) Returning Id",
                                 {{"R", rotas[0]}}).toInt();
    for (int m = 0; m < kMaquinas; ++m) {
        const int rota = rotas[m % kRotas];
        const int ponto = db::escalar(t, "Insert Into TBFL_PONTOS (Nome, Responsavel, PercCom, IdRota, IdOper) "
                                         "Values (:N, 'Dono', 30, :R, :O) Returning Id",
                                      {{"N", QString("Ponto %1").arg(m + 1)}, {"R", rota}, {"O", oper}}).toInt();
        maquinas << db::escalar(t, "Insert Into TBFL_MAQ (Selo, Tipo, Moeda, Entrada, Saida, IdPonto, IdOper) "
                                   "Values (:S, 'Música', 0.25, 1000, 500, :P, :O) Returning Id",
                                {{"S", QString("S-%1").arg(m + 1, 4, 10, QChar('0'))}, {"P", ponto}, {"O", oper}}).toInt();
        pontos << ponto;
    }
    db::Consulta ins(t, "Insert Into TBFL_LEITURAS (Emissao, Data, IdMaq, IdPonto, IdOperL, IdOper, IdRota, IdArea, Leei, "
                        "Leef, Difee, Lesi, Lesf, Difes, HpMoedas, HpTotal, PercComPonto, ComPonto, Areceber, PercComOper, "
                        "ComOper, Liquido) Values (:EM, :D, :M, :P, :O, :O, :R, :A, :LEEI, :LEEF, :DIFEE, :LESI, :LESF, "
                        ":DIFES, :HPM, :HPT, 30, :CP, :AR, 10, :CO, :LI)");
    for (int s = 0; s < kSemanas; ++s)
        for (int m = 0; m < kMaquinas; ++m) {
            const qint64 difee = 100 + (m * 7 + s * 13) % 400, difes = (m + s) % 50;
            const orb::Rateio r = orb::ratear(difee, difes, db::Decimal("0.25"), db::Decimal("30"), db::Decimal("10"));
            const QDate d = kInicio.addDays(7 * s);
            ins.bind("EM", QDateTime(d, QTime(9, 0))).bind("D", d).bind("M", maquinas[m]).bind("P", pontos[m]).bind("O", oper);
            ins.bind("R", rotas[m % kRotas]).bind("A", area);
            ins.bind("LEEI", 1000 + s * 500).bind("LEEF", 1000 + s * 500 + difee).bind("DIFEE", difee);
            ins.bind("LESI", 500 + s * 50).bind("LESF", 500 + s * 50 + difes).bind("DIFES", difes);
            ins.bind("HPM", r.moedas).bind("HPT", QVariant::fromValue(r.total)).bind("CP", QVariant::fromValue(r.comPonto));
            ins.bind("AR", QVariant::fromValue(r.aReceber)).bind("CO", QVariant::fromValue(r.comOper));
            ins.bind("LI", QVariant::fromValue(r.liquido));
            ins.executar();
        }
    t.commit();
    rota_ = rotas[3];
    return *banco_;
}

// The bare floor: the readings' own rows of the same first page, every value read, no joins.
void pagina(const QString &sql, const std::map<QString, QVariant> &p, benchmark::State &st)
{
    db::Banco &b = banco();
    for (auto _ : st) {
        db::Transacao t(b, db::Modo::Leitura);
        db::Consulta q(t, sql);
        for (const auto &[k, v] : p) q.bind(k, v);
        q.executar();
        int n = 0;
        for (; n < orb::ModeloConsulta::kPagina && q.proxima(); ++n)
            for (int i = 0; i < q.colunas(); ++i) benchmark::DoNotOptimize(q.valor(i));
        benchmark::DoNotOptimize(n);
    }
}

// What the screen does: its browse query with the filter on the lazily fetching model.
void grade(const orb::FiltroLeituras &f, benchmark::State &st)
{
    db::Banco &b = banco();
    std::map<QString, QVariant> p;
    const QString sql = orb::sqlLeituras(f, p);
    for (auto _ : st) {
        orb::ModeloConsulta m(b);
        m.consultar(sql, p);
        benchmark::DoNotOptimize(m.rowCount());
    }
}

orb::FiltroLeituras daRota(const QDate &de = {}, const QDate &ate = {})
{
    banco();
    orb::FiltroLeituras f;
    f.idRota = rota_;
    f.de = de;
    f.ate = ate;
    return f;
}

const QDate kTrimestre = kInicio.addDays(7 * 60), kFimTrimestre = kInicio.addDays(7 * 73);

void PisoRota(benchmark::State &st)
{
    banco();
    pagina("Select L.* From TBFL_LEITURAS L Where L.IdRota = :R Order By L.Data Desc, L.Id Desc", {{"R", rota_}}, st);
}

void LeiturasRota(benchmark::State &st) { grade(daRota(), st); }

void PisoRotaPeriodo(benchmark::State &st)
{
    banco();
    pagina("Select L.* From TBFL_LEITURAS L Where L.IdRota = :R and L.Data >= :DE and L.Data <= :ATE "
           "Order By L.Data Desc, L.Id Desc",
           {{"R", rota_}, {"DE", kTrimestre}, {"ATE", kFimTrimestre}}, st);
}

void LeiturasRotaPeriodo(benchmark::State &st) { grade(daRota(kTrimestre, kFimTrimestre), st); }

} // namespace

BENCHMARK(PisoRota)->Unit(benchmark::kMillisecond);
BENCHMARK(LeiturasRota)->Unit(benchmark::kMillisecond);
BENCHMARK(PisoRotaPeriodo)->Unit(benchmark::kMillisecond);
BENCHMARK(LeiturasRotaPeriodo)->Unit(benchmark::kMillisecond);

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    bench::Coletor c;
    benchmark::RunSpecifiedBenchmarks(&c);
    std::printf("\nRazões (tempo / piso medido nesta execução; meta <= 2):\n");
    c.razao("LeiturasRota", "PisoRota");
    c.razao("LeiturasRotaPeriodo", "PisoRotaPeriodo");
    std::printf("Leituras de uma rota (%d leituras no banco): primeira página %.1f ms; um trimestre %.1f ms\n",
                kMaquinas * kSemanas, c.tempos["LeiturasRota"], c.tempos["LeiturasRotaPeriodo"]);
    banco_.reset();
    return 0;
}
