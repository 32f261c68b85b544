// The cash session and the accounts at volume: closing a day of 500 sales with their receipts
// and printing its summary (HTML and PDF); delivering a sale of 50 lines against the bare updates
// of its stock rows; the accounts list over 200,000 instalments (first page, a due-date filter)
// against the bare select of the same rows. Writes roll back, so each iteration sees the same data.

#include "Aprovacao.h"
#include "Caixa.h"
#include "Contas.h"
#include "GeraContas.h"
#include "Vendas.h"
#include "relatorios/Relatorio.h"
#include "relatorios/Relatorios.h"
#include "ui/ModeloConsulta.h"

#include "Bancos.h"
#include "Coletor.h"

#include <benchmark/benchmark.h>

#include <QApplication>

using db::Decimal;
using namespace orb;

namespace {

const QDate kDia(2026, 3, 10);
const QDateTime kAgora(kDia, QTime(18, 0));
std::unique_ptr<db::Banco> banco;
int empresa = 0, cliente = 0, sessaoDia = 0, venda50 = 0;
QList<int> itens;

using bench::administrador;

db::Banco &preparado()
{
    if (banco) return *banco;
    banco = bench::bancoNovo("caixa");
    db::Transacao t(*banco);
    const Sessao adm = administrador(t, "&Comercial", "TVendas");
    db::executar(t, "Update TbCad Set Fu = 'S' Where Id = :ID", {{"ID", adm.idUsuario}});
    empresa = db::escalar(t, "Insert Into TbCad (Nome, Apelido, Pessoa, Em) Values ('LOJA', 'LOJA', 'J', 'S') Returning Id").toInt();
    cliente = db::escalar(t, "Insert Into TbCad (Nome, Apelido, Pessoa, Cl) Values ('CLIENTE', 'CLIENTE', 'J', 'S') Returning Id").toInt();
    const int caixa = contaCaixa(t);
    sessaoDia = db::escalar(t, "Insert Into TbAbEncMov (Data, DataAb, IdRespAb, SaldoInic) Values (:D, :A, :R, 100) Returning Id",
                            {{"D", kDia}, {"A", QDateTime(kDia, QTime(7, 0))}, {"R", adm.idUsuario}}).toInt();
    // A day of 500 sales, each with its instalment received into the cash account.
    const char *formas[] = {"DINHEIRO", "CARTÃO", "CHEQUE", "TRANSFERÊNCIA"};
    for (int i = 0; i < 500; ++i) {
        const int doc = db::escalar(t, "Insert Into TbCom (Op, Data, IdCad, Total) Values (1, :D, :C, :V) Returning Id",
                                    {{"D", kAgora}, {"C", cliente}, {"V", QVariant::fromValue(Decimal::bruto(1000 + i, 2))}}).toInt();
        const int fat = db::escalar(t, "Insert Into TbComFat (Fk, Data, ValorBr, Valor) Values (:F, :D, :V, :V) Returning Id",
                                    {{"F", doc}, {"D", kDia}, {"V", QVariant::fromValue(Decimal::bruto(1000 + i, 2))}}).toInt();
        const int conta = db::escalar(t, "Insert Into TbContas (Tipo, Data, Vencimento, Valor, Quitado, NaoQuitado, IdCCor, Fks, Fk) "
                                         "Values ('C', :D, :D, :V, :V, 0, :CX, 1, :F) Returning Id",
                                      {{"D", kDia}, {"V", QVariant::fromValue(Decimal::bruto(1000 + i, 2))}, {"CX", caixa}, {"F", fat}}).toInt();
        db::executar(t, "Insert Into TbContasPagtos (Data, IdCCor, FormaPagto, Valor, Fk) Values (:D, :CX, :FP, :V, :C)",
                     {{"D", kDia}, {"CX", caixa}, {"FP", formas[i % 4]}, {"V", QVariant::fromValue(Decimal::bruto(1000 + i, 2))}, {"C", conta}});
    }
    // 200,000 instalments over two years, a tenth of them payables.
    db::executar(t, "Execute Block As Declare I Integer = 0; Begin While (I < 200000) Do Begin "
                    "Insert Into TbContas (Tipo, Data, Vencimento, Historico, TipoDoc, Valor, Quitado, NaoQuitado, IdCad, Situacao) Values "
                    "(Iif(Mod(:I, 10) = 0, 'D', 'C'), '2025-01-01', Dateadd(Mod(:I, 730) Day To Date '2025-01-01'), 'CONTA ' || :I, 'BOLETO', "
                    "100 + Mod(:I, 97), 0, 100 + Mod(:I, 97), " + QString::number(cliente) + ", 'NÃO QUITADO'); I = I + 1; End End");
    // A sale of 50 lines, approved with its accounts, its items with stock rows in the company.
    Documento d = incluirDocumento(t, modoOperacao("Ven"), adm, kAgora);
    d.cabecalho["IDCAD"] = cliente;
    d.cabecalho["IDATENDENTE"] = adm.idUsuario;
    d.cabecalho["IDEMPRESA"] = empresa;
    d.faturamento["IDEMPRESA"] = empresa;
    for (int i = 0; i < 50; ++i) {
        const int item = db::escalar(t, "Insert Into TbItens (Codigo, Descricao, Tipo, Un, PrVendaVar, Origem, Cst, PercIcms, PercIpi, ContrSerial) "
                                        "Values (:C, :D, 'M', 'UN', 10, '0', '40', 0, 0, 'NÃO') Returning Id",
                                     {{"C", QString("E%1").arg(i)}, {"D", QString("ITEM %1").arg(i)}}).toInt();
        db::executar(t, "Insert Into TbItensEst (IdEmpresa, EstAtual, Fk) Values (:E, 1000, :I)", {{"E", empresa}, {"I", item}});
        itens << item;
        Valores l = linhaDoItem(t, item, "V");
        l["QTD"] = QVariant::fromValue(Decimal::bruto(20000 + 100 * i, 4));
        d.linhas << l;
    }
    d.faturamento["CONDPAGTO"] = "P";
    d.faturamento["PARCELAS"] = "12";
    d.faturamento["PRIMVENC"] = 30;
    d.faturamento["INTVENC"] = 30;
    d.faturamento["GERAFIN"] = "A";
    venda50 = salvarDocumento(t, d, adm, kAgora);
    aprovarOperacao(t, venda50, kAgora, "A", adm);
    t.commit();
    return *banco;
}

void FechamentoEResumo500(benchmark::State &st)
{
    db::Banco &b = preparado();
    for (auto _ : st) {
        db::Transacao t(b);
        const Sessao s = administrador(t, "Financeiro", kModuloCaixa);
        encerrarMovimento(t, sessaoDia, s.idUsuario, s, kAgora);
        const QString html = renderizarRelatorio("RelEncMovim", dadosResumo(resumoCaixa(t, sessaoDia, s), kAgora));
        benchmark::DoNotOptimize(salvarRelatorioPdf(html, bench::arquivoDaExecucao("resumo.pdf")));
        st.PauseTiming();
        t.rollback();
        st.ResumeTiming();
    }
}

void Entrega50(benchmark::State &st)
{
    db::Banco &b = preparado();
    for (auto _ : st) {
        db::Transacao t(b);
        entregarOperacao(t, venda50, kAgora, "", administrador(t, "&Comercial", "TVendas"));
        st.PauseTiming();
        t.rollback();
        st.ResumeTiming();
    }
}

void PisoEstoque50(benchmark::State &st)
{
    db::Banco &b = preparado();
    for (auto _ : st) {
        db::Transacao t(b);
        db::Consulta q(t, "Update TbItensEst Set EstAtual = EstAtual - :Q Where Fk = :I and IdEmpresa = :E");
        for (int i = 0; i < itens.size(); ++i) {
            q.bind("Q", QVariant::fromValue(Decimal::bruto(20000 + 100 * i, 4))).bind("I", itens[i]).bind("E", empresa);
            q.executar();
        }
        st.PauseTiming();
        t.rollback();
        st.ResumeTiming();
    }
}

void pagina(const QString &sql, const std::map<QString, QVariant> &p, benchmark::State &st)
{
    db::Banco &b = preparado();
    for (auto _ : st) {
        db::Transacao t(b, db::Modo::Leitura);
        db::Consulta q(t, sql);
        for (const auto &[k, v] : p) q.bind(k, v);
        q.executar();
        int n = 0;
        for (; n < ModeloConsulta::kPagina && q.proxima(); ++n)
            for (int i = 0; i < q.colunas(); ++i) benchmark::DoNotOptimize(q.valor(i));
        benchmark::DoNotOptimize(n);
    }
}

void grade(const FiltroContas &f, benchmark::State &st)
{
    db::Banco &b = preparado();
    std::map<QString, QVariant> p;
    const QString sql = sqlContas(f, p);
    for (auto _ : st) {
        ModeloConsulta m(b);
        m.consultar(sql, p);
        benchmark::DoNotOptimize(m.rowCount());
    }
}

FiltroContas filtroVencimento()
{
    FiltroContas f;
    f.vencimentoDe = QDate(2026, 2, 1);
    f.vencimentoAte = QDate(2026, 2, 28);
    return f;
}

void PisoContasPagina(benchmark::State &st) { pagina("Select C.* From TbContas C Where C.Tipo = 'C' Order By C.Vencimento, C.Id", {}, st); }
void ContasPrimeiraPagina(benchmark::State &st) { grade(FiltroContas{}, st); }
void PisoContasVencimento(benchmark::State &st)
{
    pagina("Select C.* From TbContas C Where C.Tipo = 'C' and C.Vencimento >= :DE and C.Vencimento <= :ATE Order By C.Vencimento, C.Id",
           {{"DE", QDate(2026, 2, 1)}, {"ATE", QDate(2026, 2, 28)}}, st);
}
void ContasFiltroVencimento(benchmark::State &st) { grade(filtroVencimento(), st); }

} // namespace

BENCHMARK(FechamentoEResumo500)->Unit(benchmark::kMillisecond);
BENCHMARK(PisoEstoque50)->Unit(benchmark::kMillisecond);
BENCHMARK(Entrega50)->Unit(benchmark::kMillisecond);
BENCHMARK(PisoContasPagina)->Unit(benchmark::kMillisecond);
BENCHMARK(ContasPrimeiraPagina)->Unit(benchmark::kMillisecond);
BENCHMARK(PisoContasVencimento)->Unit(benchmark::kMillisecond);
BENCHMARK(ContasFiltroVencimento)->Unit(benchmark::kMillisecond);

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);  // the PDF is laid out with fonts
    benchmark::Initialize(&argc, argv);
    bench::Coletor c;
    benchmark::RunSpecifiedBenchmarks(&c);
    std::printf("\nFechamento e resumo de um dia de 500 vendas (alvo: menos de 2 s): %.0f ms\n", c.tempos["FechamentoEResumo500"]);
    std::printf("Razões (alvo: até 2):\n");
    c.razao("Entrega50", "PisoEstoque50");
    c.razao("ContasPrimeiraPagina", "PisoContasPagina");
    c.razao("ContasFiltroVencimento", "PisoContasVencimento");
    benchmark::Shutdown();
    return 0;
}
