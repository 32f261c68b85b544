// Saving a sale of 50 lines with 12 instalments (recalculation, checks, header, lines, billing,
// billing lines, status, instalments with their apportionment) against the bare inserts of the
// same rows, and GeraContas "I" of 60 instalments against the bare inserts of its rows; each
// iteration rolls back, so the database stays the same size. And the sales browse over 100,000
// documents, first page, against the bare select of that page.

#include "GeraContas.h"
#include "Vendas.h"

#include "Bancos.h"
#include "Coletor.h"
#include "Gerador.h"
#include "ui/ModeloConsulta.h"

#include <benchmark/benchmark.h>

#include <QCoreApplication>

using db::Decimal;
using namespace orb;

namespace {

const QDateTime kAgora(QDate(2026, 3, 10), QTime(14, 30));
std::unique_ptr<db::Banco> banco;
int cliente = 0, atendente = 0, empresa = 0;
QList<int> itens;

db::Banco &preparado()
{
    if (banco)
        return *banco;
    banco = bench::bancoNovo("vendas");
    db::Transacao t(*banco);
    auto cad = [&](const char *nome, const char *flag) {
        return db::escalar(t, QString("Insert Into TbCad (Nome, Apelido, Pessoa, %1) Values (:N, :N, 'J', 'S') Returning Id").arg(flag),
                           {{"N", nome}}).toInt();
    };
    cliente = cad("CLIENTE", "Cl");
    atendente = cad("ATENDENTE", "Fu");
    empresa = cad("LOJA", "Em");
    const char *csts[] = {"000", "010", "020", "070", "040"};
    for (int i = 0; i < 50; ++i)
        itens << db::escalar(t, "Insert Into TbItens (Codigo, Descricao, Tipo, Un, PrVendaVar, Origem, Cst, PercIcms, PercRedBcIcms, "
                                "PercMvaIcmsSt, PercIpi, IdGrupo) Values (:C, :D, 'M', 'UN', :P, '0', :CST, 18, 41.67, 33.33, 5, :G) Returning Id",
                             {{"C", QString("B%1").arg(i)}, {"D", QString("ITEM %1").arg(i)},
                              {"P", QVariant::fromValue(Decimal::bruto(1234 + 97 * i, 2))}, {"CST", QString(csts[i % 5]).mid(1)},
                              {"G", i % 3}}).toInt();
    t.commit();
    return *banco;
}

using bench::administrador;

Documento venda(db::Transacao &t, const Sessao &s)
{
    Documento d = incluirDocumento(t, modoOperacao("Ven"), s, kAgora);
    d.cabecalho["IDCAD"] = cliente;
    d.cabecalho["IDATENDENTE"] = atendente;
    d.cabecalho["IDEMPRESA"] = empresa;
    for (int i = 0; i < itens.size(); ++i) {
        Valores l = linhaDoItem(t, itens[i], "V");
        l["QTD"] = QVariant::fromValue(Decimal::bruto(10000 + 3333 * i, 4));
        l["PERCDESCONTO"] = QVariant::fromValue(Decimal::bruto(i % 7, 0));
        d.linhas << l;
    }
    d.faturamento["CONDPAGTO"] = "P";
    d.faturamento["PARCELAS"] = "12";
    d.faturamento["PRIMVENC"] = 30;
    d.faturamento["INTVENC"] = 30;
    return d;
}

void VendaSalvar(benchmark::State &st)
{
    db::Banco &b = preparado();
    for (auto _ : st) {
        db::Transacao t(b);
        const Sessao s = administrador(t);
        Documento d = venda(t, s);
        benchmark::DoNotOptimize(salvarDocumento(t, d, s, kAgora));
        st.PauseTiming();
        t.rollback();
        st.ResumeTiming();
    }
}

// The rows a saved sale consists of, read once: (table, values).
QList<QPair<QString, Valores>> linhasDeUmaVenda()
{
    db::Transacao t(*banco);
    const Sessao s = administrador(t);
    Documento d = venda(t, s);
    const int id = salvarDocumento(t, d, s, kAgora);
    QList<QPair<QString, Valores>> r;
    auto ler = [&](const QString &tabela, const QString &onde) {
        db::Consulta q(t, "Select * From " + tabela + " Where " + onde);
        q.bind("ID", id);
        q.executar();
        while (q.proxima()) {
            Valores v;
            for (int i = 0; i < q.colunas(); ++i)
                if (q.nomeColuna(i) != "ID") v[q.nomeColuna(i)] = q[i];
            r.append({tabela, v});
        }
    };
    ler("TbCom", "Id = :ID");
    ler("TbComItens", "Fk = :ID");
    ler("TbComFat", "Fk = :ID");
    ler("TbComFatItens", "Fk In (Select Id From TbComFat Where Fk = :ID)");
    ler("TbComSt", "Fk = :ID");
    ler("TbContas", "Fks = 1 and Fk In (Select Id From TbComFat Where Fk = :ID)");
    ler("TbContasRat", "Fk In (Select C.Id From TbContas C Join TbComFat F On (F.Id = C.Fk) Where C.Fks = 1 and F.Fk = :ID)");
    t.rollback();
    return r;
}

void inserir(db::Transacao &t, const QList<QPair<QString, Valores>> &linhas)
{
    for (const auto &[tabela, v] : linhas) {
        QStringList nomes, params;
        std::map<QString, QVariant> p;
        for (const auto &[c, x] : v) {
            nomes << c;
            params << ":" + c;
            p[c] = x;
        }
        db::executar(t, QString("Insert Into %1 (%2) Values (%3)").arg(tabela, nomes.join(", "), params.join(", ")), p);
    }
}

void PisoInsercoesVenda(benchmark::State &st)
{
    preparado();
    const auto linhas = linhasDeUmaVenda();
    st.counters["linhas"] = double(linhas.size());
    for (auto _ : st) {
        db::Transacao t(*banco);
        inserir(t, linhas);
        st.PauseTiming();
        t.rollback();
        st.ResumeTiming();
    }
}

int faturamento60(db::Transacao &t)
{
    const int doc = db::escalar(t, "Insert Into TbCom (Op, Data, IdCad, SubtotalM, Total) Values (1, :D, :C, 6000, 6000) Returning Id",
                                {{"D", kAgora}, {"C", cliente}}).toInt();
    for (int g = 0; g < 3; ++g)
        db::executar(t, "Insert Into TbComItens (Tipo, Subtotal, IdCategoria, IdSubcategoria, Fk) Values ('M', 2000, :G, :G, :FK)",
                     {{"G", g + 1}, {"FK", doc}});
    return db::escalar(t, "Insert Into TbComFat (Fk, Data, ValorBr, Valor, CondPagto, Parcelas, Entrada, PrimVenc, IntVenc, GeraFin) "
                          "Values (:FK, :D, 6000, 6000, 'P', '60', 'S', 30, 30, 'A') Returning Id",
                       {{"FK", doc}, {"D", kAgora.date()}}).toInt();
}

void GeraContas60(benchmark::State &st)
{
    db::Banco &b = preparado();
    for (auto _ : st) {
        db::Transacao t(b);
        st.PauseTiming();
        const int fat = faturamento60(t);
        st.ResumeTiming();
        GeraContas(t, "1", QString::number(fat), "I", {}, kAgora);
        st.PauseTiming();
        t.rollback();
        st.ResumeTiming();
    }
}

void PisoInsercoesContas60(benchmark::State &st)
{
    db::Banco &b = preparado();
    QList<QPair<QString, Valores>> linhas;
    {
        db::Transacao t(b);
        const int fat = faturamento60(t);
        GeraContas(t, "1", QString::number(fat), "I", {}, kAgora);
        for (const char *sql : {"Select * From TbContas Where Fks = 1 and Fk = :F",
                                "Select R.* From TbContasRat R Join TbContas C On (C.Id = R.Fk) Where C.Fks = 1 and C.Fk = :F"}) {
            db::Consulta q(t, sql);
            q.bind("F", fat);
            q.executar();
            const QString tabela = QString(sql).contains("TbContasRat") ? "TbContasRat" : "TbContas";
            while (q.proxima()) {
                Valores v;
                for (int i = 0; i < q.colunas(); ++i)
                    if (q.nomeColuna(i) != "ID") v[q.nomeColuna(i)] = q[i];
                linhas.append({tabela, v});
            }
        }
        t.rollback();
    }
    st.counters["linhas"] = double(linhas.size());
    for (auto _ : st) {
        db::Transacao t(b);
        inserir(t, linhas);
        st.PauseTiming();
        t.rollback();
        st.ResumeTiming();
    }
}

// 100,000 sales of 2,000 customers, each with its billing and a status row, as the browse joins them.
db::Banco &documentos()
{
    static std::unique_ptr<db::Banco> b;
    if (b) return *b;
    b = bench::bancoNovo("documentos");
    bench::gerarCadastros(*b, 2000);
    bench::gerarItens(*b, 200, 1);
    bench::gerarDocumentos(*b, 100000);
    db::Transacao t(*b);
    db::executar(t, "Insert Into TbComFat (Fk, Emissao, Data, ValorBr, Valor, CondPagto, Parcelas) "
                    "Select Id, Emissao, Cast(Data As Date), Total, Total, 'V', '01' From TbCom");
    db::executar(t, "Insert Into TbComSt (Fk, Data, Status) Select Id, Emissao, 'AA' From TbCom");
    t.commit();
    return *b;
}

// The bare floor: the headers of the same first page, every value read through the data layer.
void PisoPaginaVendas(benchmark::State &st)
{
    db::Banco &b = documentos();
    for (auto _ : st) {
        db::Transacao t(b, db::Modo::Leitura);
        db::Consulta q(t, "Select C.* From TbCom C Where C.Op = 1 Order By C.Id Desc");
        q.executar();
        int n = 0;
        for (; n < ModeloConsulta::kPagina && q.proxima(); ++n)
            for (int i = 0; i < q.colunas(); ++i) benchmark::DoNotOptimize(q.valor(i));
        benchmark::DoNotOptimize(n);
    }
}

// What the sales screen does: its browse, with the joins and per-row figures, on the lazily fetching model.
void VendasPrimeiraPagina(benchmark::State &st)
{
    db::Banco &b = documentos();
    const QString sql = sqlConsultaOperacoes(modoOperacao("Ven"), "CÓDIGO");
    for (auto _ : st) {
        ModeloConsulta m(b);
        m.consultar(sql, {});
        benchmark::DoNotOptimize(m.rowCount());
    }
}

} // namespace

BENCHMARK(PisoPaginaVendas)->Unit(benchmark::kMillisecond);
BENCHMARK(VendasPrimeiraPagina)->Unit(benchmark::kMillisecond);
BENCHMARK(PisoInsercoesVenda)->Unit(benchmark::kMillisecond);
BENCHMARK(VendaSalvar)->Unit(benchmark::kMillisecond);
BENCHMARK(PisoInsercoesContas60)->Unit(benchmark::kMillisecond);
BENCHMARK(GeraContas60)->Unit(benchmark::kMillisecond);

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    bench::Coletor c;
    benchmark::RunSpecifiedBenchmarks(&c);
    std::printf("\nRazões (alvo da venda e da lista de vendas: até 2):\n");
    c.razao("VendasPrimeiraPagina", "PisoPaginaVendas");
    c.razao("VendaSalvar", "PisoInsercoesVenda");
    c.razao("GeraContas60", "PisoInsercoesContas60");
    benchmark::Shutdown();
    return 0;
}
