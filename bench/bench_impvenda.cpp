// The printout of a sale of 50 lines with three instalments, serials and the company's logo, to a
// PDF as it is mailed: the datasets read, the template filled in and the pages laid out. The floor
// is the same HTML, already filled in, laid out to PDF alone.

#include "ImpVenda.h"
#include "Vendas.h"
#include "relatorios/Relatorios.h"

#include "Bancos.h"
#include "Coletor.h"

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QBuffer>
#include <QImage>

using db::Decimal;
using namespace orb;

namespace {

std::unique_ptr<db::Banco> banco;
int venda = 0;
Sessao adm;

db::Banco &preparado()
{
    if (banco) return *banco;
    banco = bench::bancoNovo("impvenda");
    db::Transacao t(*banco);
    adm = bench::administrador(t);
    db::executar(t, "Update TbCad Set Fu = 'S' Where Id = :ID", {{"ID", adm.idUsuario}});
    QImage logo(300, 200, QImage::Format_RGB32);
    logo.fill(QColor("#1d5fa8"));
    QByteArray png;
    QBuffer b(&png);
    b.open(QIODevice::WriteOnly);
    logo.save(&b, "PNG");
    const int cidade = db::escalar(t, "Select First 1 Id From TbCidades Where Uf = 'SP' Order By Id").toInt();
    const int empresa = db::escalar(t, "Insert Into TbCad (Nome, Apelido, RazaoSocial, Pessoa, Em, Cnpj, IdCidade, Foto) Values "
                                       "('LOJA', 'LOJA', 'LOJA BOA LTDA', 'J', 'S', '11222333000181', :C, :F) Returning Id",
                                    {{"C", cidade}, {"F", png}}).toInt();
    const int cliente = db::escalar(t, "Insert Into TbCad (Nome, Apelido, Pessoa, Cl, Cpf, IdCidade, Endereco, Cep) Values "
                                       "('CLIENTE', 'CLIENTE', 'F', 'S', '12345678909', :C, 'RUA A', '01001000') Returning Id",
                                    {{"C", cidade}}).toInt();
    Documento d = incluirDocumento(t, modoOperacao("Ven"), adm, QDateTime::currentDateTime());
    d.cabecalho["IDCAD"] = cliente;
    d.cabecalho["IDATENDENTE"] = adm.idUsuario;
    d.cabecalho["IDEMPRESA"] = empresa;
    for (int i = 0; i < 50; ++i) {
        const int item = db::escalar(t, "Insert Into TbItens (Codigo, Descricao, Tipo, Un, PrVendaAt, PrVendaVar, Origem, Cst, ContrSerial) "
                                        "Values (:C, :D, 'M', 'UN', 10, 12.5, '0', '40', 'SAÍ') Returning Id",
                                     {{"C", QString("M%1").arg(i, 4, 10, QChar('0'))}, {"D", QString("MERCADORIA NÚMERO %1").arg(i)}}).toInt();
        Valores l = linhaDoItem(t, item, "V");
        l["QTD"] = QVariant::fromValue(Decimal::bruto(1 + i % 5, 0));
        if (i % 10 == 0) l["Z_SERIAIS"] = QStringList{QString("SN%1").arg(i)};
        d.linhas.append(l);
    }
    d.faturamento["CONDPAGTO"] = "P";
    d.faturamento["PARCELAS"] = "03";
    d.faturamento["PRIMVENC"] = 30;
    d.faturamento["INTVENC"] = 30;
    venda = salvarDocumento(t, d, adm, QDateTime::currentDateTime());
    db::executar(t, "Insert Into TbParVendas (Data, TipoImpressao) Values (Current_Date, 'F')");
    t.commit();
    return *banco;
}

QString html()
{
    db::Transacao t(preparado(), db::Modo::Leitura);
    return htmlImpressao(prepararImpressao(t, 1, venda, {}, {}, adm));
}

void ImpVendaPdf50(benchmark::State &st)
{
    for (auto _ : st) {
        db::Transacao t(preparado(), db::Modo::Leitura);
        const Impressao i = prepararImpressao(t, 1, venda, {}, {}, adm);
        benchmark::DoNotOptimize(exportarRelatorio(htmlImpressao(i), FormatoRelatorio::Pdf, nomeArquivoImpressao(i)));
    }
}

void PisoPdf50(benchmark::State &st)
{
    const QString h = html();
    for (auto _ : st) benchmark::DoNotOptimize(exportarRelatorio(h, FormatoRelatorio::Pdf, "piso"));
}

} // namespace

BENCHMARK(PisoPdf50)->Unit(benchmark::kMillisecond);
BENCHMARK(ImpVendaPdf50)->Unit(benchmark::kMillisecond);

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);  // the PDF is laid out with fonts
    benchmark::Initialize(&argc, argv);
    bench::Coletor c;
    benchmark::RunSpecifiedBenchmarks(&c);
    std::printf("\nImpressão de uma venda de 50 linhas em PDF (alvo: menos de 300 ms): %.0f ms\n", c.tempos["ImpVendaPdf50"]);
    std::printf("Razão (os dados e o modelo sobre o PDF do mesmo HTML):\n");
    c.razao("ImpVendaPdf50", "PisoPdf50");
    benchmark::Shutdown();
    return 0;
}
