// The printout of a commercial document: the title and template by kind and print type, the
// datasets of a document saved through the sales rules in Brazilian formats, the quotation
// title, the closing messages, the right to print, every template rendered and a PDF's text.

#include "Cenario.h"
#include "ImpVenda.h"
#include "Vendas.h"
#include "apoio/Direitos.h"
#include "relatorios/Relatorio.h"
#include "relatorios/Relatorios.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using db::Decimal;
using namespace orb;

namespace {

const QDateTime kAgora(QDate(2026, 3, 10), QTime(14, 30));

TEST(ImpVendaModelo, TitleAndTemplateByKindAndPrintType)
{
    const struct { int op; const char *tipo, *titulo, *modelo; } casos[] = {
        {1, "F", "VENDA", "RelImpVenda"},       {1, "C", "VENDA", "RelImpVendaTk"},       {1, "", "VENDA", "RelImpVendaCp"},
        {1, "X", "VENDA", "RelImpVendaCp"},     {5, "F", "LOCAÇÃO", "RelImpVenda"},       {5, "C", "LOCAÇÃO", "RelImpVendaRed"},
        {5, "R", "LOCAÇÃO", "RelImpVendaExp"},  {4, "F", "COMPRA", "RelImpVenda"},        {4, "C", "COMPRA", "RelImpVendaRed"},
        {4, "", "COMPRA", "RelImpVendaExp"},    {3, "F", "CONTRATO", "RelImpContrato"},   {3, "C", "CONTRATO", "RelImpContratoTk"},
        {3, "P", "CONTRATO", "RelImpContratoCp"}, {2, "F", "ORDEM DE SERVIÇO", "RelImpOServico"},
        {2, "C", "ORDEM DE SERVIÇO", "RelImpOServicoTk"}, {2, "T", "ORDEM DE SERVIÇO", "RelImpOServicoCp"},
    };
    for (const auto &c : casos) {
        const ModeloImpressao m = modeloImpressao(c.op, c.tipo);
        EXPECT_EQ(m.titulo + "/" + m.modelo, QString(c.titulo) + "/" + c.modelo) << c.op << c.tipo;
    }
    EXPECT_THROW(modeloImpressao(8, "F"), Recusa);
}

TEST(ImpVendaModelo, BrazilianMasks)
{
    EXPECT_EQ(QStringList({mascararDocumento("12345678909"), mascararDocumento("11222333000181"), mascararDocumento("123"),
                           mascararCep("01001000"), textoQuantidade(Decimal("2.0000")), textoQuantidade(Decimal("1234.1250"))}),
              QStringList({"123.456.789-09", "11.222.333/0001-81", "123", "01001-000", "2", "1.234,125"}));
}

// The documents' templates are made of parts: {{> nome}} includes reports/nome.html, parts include
// parts, a part inside a list sees the item; an empty text is false; a missing part is refused.
TEST(RelatorioPartes, PartsAreIncludedFromTheReportsFolder)
{
    QTemporaryDir dir;
    auto escrever = [&](const QString &nome, const QByteArray &texto) {
        QFile f(dir.filePath(nome + ".html"));
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write(texto);
    };
    escrever("Doc", "<{{> Topo}}|{{#itens}}{{> Item}}{{/itens}}|{{#VAZIO}}nunca{{/VAZIO}}{{^VAZIO}}vazio{{/VAZIO}}>");
    escrever("Topo", "T:{{TITULO}}{{> Item}}");
    escrever("Item", "[{{NOME}}]");
    escrever("Falta", "{{> Inexistente}}");
    definirPastaRelatorios(dir.path());
    const QVariantMap dados{{"TITULO", "VENDA"}, {"NOME", "raiz"}, {"VAZIO", ""},
                            {"itens", QVariantList{QVariantMap{{"NOME", "a"}}, QVariantMap{{"NOME", "b & c"}}}}};
    EXPECT_EQ(renderizarRelatorio("Doc", dados), "<T:VENDA[raiz]|[a][b &amp; c]|vazio>");
    try {
        renderizarRelatorio("Falta", dados);
        ADD_FAILURE();
    } catch (const Recusa &r) {
        EXPECT_TRUE(r.texto.startsWith("Modelo de relatório não encontrado")) << r.texto.toStdString();
        EXPECT_TRUE(r.texto.contains("Inexistente.html"));
    }
    definirPastaRelatorios({});
}

struct ImpVendaTest : ::testing::Test {
    teste::BancoTemporario bt;
    db::Transacao t{bt.banco()};
    teste::CenarioVendas c{t};
    Sessao adm = teste::administrador(t, "&Comercial", "TVendas");

    // A sale saved through the sales rules: a customer with a CPF, two lines (one with serials) and
    // three instalments.
    int salvar(const QString &modo = "Ven")
    {
        db::executar(t, "Update TbCad Set Pessoa = 'F', Cpf = '12345678909', Telefone1 = '11987654321', Email = 'cliente@exemplo.com.br' "
                        "Where Id = :ID", {{"ID", c.cliente}});
        db::executar(t, "Update TbCad Set RazaoSocial = 'LOJA BOA LTDA', Cnpj = '11222333000181', Foto = :F Where Id = :ID",
                     {{"ID", c.empresa}, {"F", QByteArray("\x89PNG\r\n\x1a\n", 8)}});
        Documento d = c.documento(t, modo, adm, kAgora, {{"040", "3.0000"}, {"000", "2.0000"}});
        d.cabecalho["DATAPREVENTREGA"] = kAgora;
        d.cabecalho["OBSERVACOES"] = "Entregar pela manhã <portaria>.";
        d.cabecalho["IDACOND"] = db::escalar(t, "Insert Into TbAcond (Nome) Values ('CAIXA 1') Returning Id");
        d.cabecalho["ACOND"] = "CAIXA 1";
        d.linhas[1]["Z_SERIAIS"] = QStringList{"SN001", "SN002"};
        d.faturamento["CONDPAGTO"] = "P";
        d.faturamento["PARCELAS"] = "03";
        d.faturamento["PRIMVENC"] = 30;
        d.faturamento["INTVENC"] = 30;
        return salvarDocumento(t, d, adm, kAgora);
    }
    void status(int id, const char *s)
    {
        db::executar(t, "Insert Into TbComSt (Status, Data, Fk) Values (:S, :D, :ID)", {{"S", s}, {"D", kAgora}, {"ID", id}});
    }
};

TEST_F(ImpVendaTest, DatasetsOfASavedSaleInBrazilianFormats)
{
    const int id = salvar();
    const Impressao i = prepararImpressao(t, 1, id, {}, {}, adm);
    EXPECT_EQ(i.modelo, "RelImpVendaCp");  // no parameters: neither 'F' nor 'C'
    EXPECT_EQ(i.numero, QString("%1").arg(id, 6, 10, QChar('0')));
    // The company's picture goes inline.
    const QVariantMap cab = i.dados["cabecalho"].toMap();
    QStringList campos;
    for (const char *c : {"CLIENTE", "Z_CPFCNPJ", "Z_ROTULOCPFCNPJ", "CNPJEMPRESA", "CEP", "TELEFONE1", "Z_UF", "DATA", "OBSERVACOES", "LOGOMARCA", "TOTAL"})
        campos << cab[c].toString();
    EXPECT_EQ(campos, QStringList({"CLIENTE BOM", "123.456.789-09", "CPF", "11.222.333/0001-81", "01001-000", "(11)98765-4321", "SP",
                                   "10/03/2026", "Entregar pela manhã <portaria>.", "data:image/png;base64,iVBORw0KGgo=",
                                   db::escalar(t, "Select Total From TbCom Where Id = :ID", {{"ID", id}}).value<Decimal>().textoBR(2)}));
    // Lines by the item's code, quantities without needless decimals, serials on their line.
    QStringList linhas;
    for (const QVariant &l : i.dados["mercadorias"].toList())
        linhas << QStringList({l.toMap()["CODIGO"].toString(), l.toMap()["QTD"].toString(), l.toMap()["PRUNITARIO"].toString(),
                               l.toMap()["SERIAIS"].toString()}).join(" ");
    EXPECT_EQ(linhas, QStringList({"M000 2 12,3457 SN001, SN002", "M040 3 12,3457 "}));
    EXPECT_EQ(i.dados["seriais"].toList().size(), 2);
    EXPECT_TRUE(i.dados["servicos"].toList().isEmpty());
    const QVariantList p = i.dados["parcelas"].toList();
    ASSERT_EQ(p.size(), 3);
    EXPECT_EQ(p[0].toMap()["VENCIMENTO"], "09/04/2026");
    EXPECT_EQ(i.dados["faturamentos"].toList().first().toMap()["Z_CONDPAGTO"], "A PRAZO");
}

TEST_F(ImpVendaTest, QuotationUntilApprovedAndClosingMessagesByStep)
{
    const int id = salvar("Ser");
    db::executar(t, "Insert Into TbParServicos (Data, TipoImpressao, ImpContrInterno, Garantia, MensGarantia, MensAprovacao, MensEntrega) "
                    "Values ('2026-01-01', 'C', 'S', '90 DIAS', 'Garantia de peças e mão de obra.', 'Serviço aprovado.', 'Equipamento entregue.')");
    const struct { const char *status; QDateTime apr, ent; const char *titulo, *mensagem; } casos[] = {
        {nullptr, {}, {}, "ORÇAMENTO", ""},
        {"AP", kAgora, {}, "ORDEM DE SERVIÇO", "Serviço aprovado."},
        {"EN", kAgora, kAgora, "ORDEM DE SERVIÇO", "Equipamento entregue."},
        {"CA", {}, {}, "ORDEM DE SERVIÇO", ""},
    };
    for (const auto &k : casos) {
        if (k.status) status(id, k.status);
        // Two copies: the internal control one.
        const Impressao i = prepararImpressao(t, 2, id, k.apr, k.ent, adm);
        EXPECT_EQ(QStringList({i.titulo, i.dados["MENSFINAL"].toString(), i.modelo, i.dados["GARANTIA"].toString(),
                               QString::number(i.dados["vias"].toList().size())}),
                  QStringList({k.titulo, k.mensagem, "RelImpOServicoTk", "90 DIAS", "2"})) << k.status;
    }
}

TEST_F(ImpVendaTest, TheExpressSaleHasPrintSettingsOfItsOwn)
{
    const int id = salvar();
    db::executar(t, "Insert Into TbParVendas (Data, TipoImpressao, TipoImpressaoVE, Mensagem, MensagemVE) "
                    "Values ('2026-01-01', 'F', 'C', 'Volte sempre!', 'Obrigado, volte sempre!')");
    const struct { const char *sufixo, *modelo, *mensagem; } casos[] = {
        {"", "RelImpVenda", "Volte sempre!"}, {"VE", "RelImpVendaTk", "Obrigado, volte sempre!"}};
    for (const auto &k : casos) {
        const Impressao i = prepararImpressao(t, 1, id, {}, {}, adm, k.sufixo);
        EXPECT_EQ(i.modelo + "|" + i.dados["MENSAGEM"].toString(), QString(k.modelo) + "|" + k.mensagem);
    }
}

TEST_F(ImpVendaTest, MailBodyAndSubject)
{
    const int id = salvar();
    const Impressao i = prepararImpressao(t, 1, id, {}, {}, adm);
    EXPECT_EQ(corpoImpressao(i), "Ola, \r\rSegue em anexo: ORÇAMENTO Nº " + i.numero + "\r\rObrigado pela preferência!");
    EXPECT_EQ(assuntoImpressao(i), "ORÇAMENTO Nº " + i.numero + " - LOJA");
    EXPECT_EQ(nomeArquivoImpressao(i), "ORÇAMENTO " + i.numero);
    EXPECT_EQ(emailDoDocumento(t, id), "cliente@exemplo.com.br");
}

TEST_F(ImpVendaTest, PrintingNeedsTheRightAndAnExistingDocument)
{
    const int id = salvar();
    const Sessao sem = teste::usuarioCom(t, "&Comercial", "TVendas", modoOperacao("Ven").operacoes, {"Incluir"});
    EXPECT_EQ(teste::recusa(t, [&] { prepararImpressao(t, 1, id, {}, {}, sem); }), "Você não tem permissão para efetuar esta operação!");
    EXPECT_EQ(teste::recusa(t, [&] { prepararImpressao(t, 1, id + 100, {}, {}, adm); }), "Esta operação não existe mais!");
    EXPECT_EQ(teste::recusa(t, [&] { prepararImpressao(t, 2, id, {}, {}, adm); }), "Esta operação não existe mais!");
    EXPECT_EQ(teste::recusa(t, [&] { prepararImpressao(t, 8, id, {}, {}, adm); }), "Esta operação não pode ser impressa!");
}

TEST_F(ImpVendaTest, EveryTemplateRendersTheDocumentAndItsPdfHoldsNumberCustomerAndTotal)
{
    const int id = salvar("Ser");
    Impressao i = prepararImpressao(t, 2, id, {}, {}, adm);
    const QString total = i.dados["cabecalho"].toMap()["TOTAL"].toString();
    for (const char *modelo : {"RelImpVenda", "RelImpVendaTk", "RelImpVendaCp", "RelImpVendaRed", "RelImpVendaExp", "RelImpContrato",
                               "RelImpContratoTk", "RelImpContratoCp", "RelImpOServico", "RelImpOServicoTk", "RelImpOServicoCp"}) {
        i.modelo = modelo;
        const QString html = htmlImpressao(i);
        for (const QString &s : {i.numero, QString("CLIENTE BOM"), total, QString("SN001")})
            EXPECT_TRUE(html.contains(s)) << modelo << " " << s.toStdString();
    }
    i.modelo = "RelImpOServico";
    EXPECT_TRUE(htmlImpressao(i).contains("Entregar pela manhã &lt;portaria&gt;."));  // texts escaped, never markup
    QTemporaryDir dir;
    const QString pdf = dir.filePath("os.pdf");
    ASSERT_TRUE(salvarRelatorioPdf(htmlImpressao(i), pdf));
    QProcess p;
    p.start("/usr/bin/pdftotext", {"-layout", pdf, "-"});
    ASSERT_TRUE(p.waitForFinished(30000));
    const QString texto = QString::fromUtf8(p.readAllStandardOutput());
    for (const QString &s : {i.numero, QString("CLIENTE BOM"), total, QString("ORÇAMENTO"), QString("123.456.789-09"),
                             QString("Entregar pela manhã <portaria>.")})
        EXPECT_TRUE(texto.contains(s)) << s.toStdString() << "\n" << texto.toStdString();
}

} // namespace
