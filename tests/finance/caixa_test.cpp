// The cash session over a real database: the save's checks, closing and reopening with their
// rights, the deletion refused by payments of the day, the summary per payment form.

#include "Caixa.h"
#include "GeraContas.h"
#include "apoio/Direitos.h"
#include "relatorios/Relatorio.h"
#include "relatorios/Relatorios.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

using db::Decimal;
using namespace orb;

namespace {

using teste::recusa;

const QDateTime kAgora(QDate(2026, 3, 10), QTime(8, 15));
const QStringList kOperacoes = {"Abrir", "Alterar", "Encerrar", "Reabrir", "Reabrir c/ Lanç. Posteriores", "Excluir", "Imprimir"};

struct CaixaTest : ::testing::Test {
    teste::BancoTemporario bt;
    db::Transacao t{bt.banco()};
    Sessao adm = teste::administrador(t, "Financeiro", kModuloCaixa);

    int abrir(const QDate &dia = kAgora.date())
    {
        Valores v = abrirMovimento(t, adm, kAgora);
        v["DATA"] = dia;
        v["IDRESPAB"] = adm.idUsuario;
        return salvarMovimento(t, 0, v, adm, kAgora.date());
    }
    // A receivable dated `dia` paid into the cash account.
    int pagamento(const QDate &dia, const char *forma, const char *valor)
    {
        const int caixa = contaCaixa(t);
        const int c = db::escalar(t, "Insert Into TbContas (Tipo, Data, Valor, NaoQuitado, IdCCor) Values ('C', :D, :V, 0, :CX) Returning Id",
                                  {{"D", dia}, {"V", QVariant::fromValue(Decimal(valor))}, {"CX", caixa}}).toInt();
        db::executar(t, "Insert Into TbContasPagtos (Data, IdCCor, FormaPagto, Valor, Fk) Values (:D, :CX, :F, :V, :C)",
                     {{"D", dia}, {"CX", caixa}, {"F", forma}, {"V", QVariant::fromValue(Decimal(valor))}, {"C", c}});
        return c;
    }
};

TEST_F(CaixaTest, OpeningTakesTheDefaultResponsiblesOfTheParametersValidToday)
{
    const int a = db::escalar(t, "Insert Into TbCad (Nome, Fu) Values ('ANA', 'S') Returning Id").toInt();
    const int b = db::escalar(t, "Insert Into TbCad (Nome, Fu) Values ('BETO', 'S') Returning Id").toInt();
    db::executar(t, "Insert Into TbParContas (Data, IdRespAberturaAE, IdRespEncerramentoAE) Values ('2026-01-01', :A, :B)", {{"A", a}, {"B", b}});
    db::executar(t, "Insert Into TbParContas (Data, IdRespAberturaAE, IdRespEncerramentoAE) Values ('2026-12-01', :B, :A)", {{"A", a}, {"B", b}});
    const Valores v = abrirMovimento(t, adm, kAgora);
    EXPECT_EQ(QString("%1 %2 %3").arg(v.at("IDRESPAB").toInt()).arg(v.at("IDRESPENC").toInt()).arg(v.at("DATA").toDate().toString("dd/MM")),
              QString("%1 %2 10/03").arg(a).arg(b));
}

TEST_F(CaixaTest, SaveChecksInOrderAndRefusesTomorrow)
{
    const QDate hoje = kAgora.date();
    struct Caso {
        Valores v;
        QString mensagem;
    } casos[] = {
        {{{"IDRESPAB", adm.idUsuario}}, "Digite a data do movimento primeiro!"},
        {{{"DATA", hoje.addDays(1)}, {"IDRESPAB", adm.idUsuario}}, "A data não pode ser maior que a data atual!"},
        {{{"DATA", hoje}}, "Escolha o responsável pela abertura do movimento primeiro!"},
        {{{"DATA", hoje}, {"IDRESPAB", adm.idUsuario}, {"DATAENC", kAgora}}, "Escolha o responsável pelo encerramento do movimento primeiro!"},
        {{{"DATA", hoje}, {"IDRESPAB", adm.idUsuario}, {"DATAENC", kAgora.addDays(1)}, {"IDRESPENC", adm.idUsuario}},
         "A data não pode ser maior que a data atual!"},
        // Closing today at any hour is the same day.
        {{{"DATA", hoje}, {"IDRESPAB", adm.idUsuario}, {"DATAENC", QDateTime(hoje, QTime(23, 59))}, {"IDRESPENC", adm.idUsuario}}, ""},
    };
    for (const Caso &c : casos)
        EXPECT_EQ(recusa(t, [&] { salvarMovimento(t, 0, c.v, adm, hoje); }), c.mensagem);
    EXPECT_EQ(db::escalar(t, "Select Count(*) From TbAbEncMov").toInt(), 1);
}

TEST_F(CaixaTest, SameDayAndResponsibleTwiceIsRefusedByTheDatabase)
{
    abrir();
    EXPECT_THROW(abrir(), db::ErroBanco);
}

TEST_F(CaixaTest, StateOfTheDayFollowsOpeningAndClosing)
{
    EXPECT_EQ(estadoCaixa(t, kAgora.date()), EstadoCaixa::SemAbertura);
    const int id = abrir();
    EXPECT_EQ(estadoCaixa(t, kAgora.date()), EstadoCaixa::Aberto);
    encerrarMovimento(t, id, adm.idUsuario, adm, kAgora.addSecs(36000));
    EXPECT_EQ(estadoCaixa(t, kAgora.date()), EstadoCaixa::Encerrado);
    EXPECT_EQ(recusa(t, [&] { encerrarMovimento(t, id, adm.idUsuario, adm, kAgora); }), "Este movimento já foi encerrado em outra estação!");
    reabrirMovimento(t, id, adm);
    EXPECT_EQ(estadoCaixa(t, kAgora.date()), EstadoCaixa::Aberto);
    EXPECT_TRUE(db::escalar(t, "Select IdRespEnc From TbAbEncMov Where Id = :ID", {{"ID", id}}).isNull());
}

TEST_F(CaixaTest, ReopeningADayWithLaterEntriesNeedsItsRight)
{
    const Sessao sem = teste::usuarioCom(t, "Financeiro", kModuloCaixa, kOperacoes, {"Abrir", "Encerrar", "Reabrir"}, "sem");
    const Sessao com = teste::usuarioCom(t, "Financeiro", kModuloCaixa, kOperacoes, {"Reabrir", "Reabrir c/ Lanç. Posteriores"}, "com");
    const int id = abrir(kAgora.date().addDays(-1));
    encerrarMovimento(t, id, adm.idUsuario, adm, kAgora);
    EXPECT_EQ(recusa(t, [&] { reabrirMovimento(t, id, sem); }), "");  // nothing later yet
    encerrarMovimento(t, id, adm.idUsuario, adm, kAgora);
    pagamento(kAgora.date(), "DINHEIRO", "10.00");
    EXPECT_EQ(recusa(t, [&] { reabrirMovimento(t, id, sem); }), "Esse movimento não pode ser reaberto pois já existem lançamentos posteriores ao mesmo!");
    EXPECT_EQ(estadoCaixa(t, kAgora.date().addDays(-1)), EstadoCaixa::Encerrado);
    EXPECT_EQ(recusa(t, [&] { reabrirMovimento(t, id, com); }), "");
    EXPECT_EQ(recusa(t, [&] { encerrarMovimento(t, id, adm.idUsuario, com, kAgora); }), kSemPermissao);
}

TEST_F(CaixaTest, PaymentsOfTheDayKeepItsDateAndForbidItsDeletion)
{
    const int id = abrir();
    pagamento(kAgora.date(), "DINHEIRO", "10.00");
    Valores v = alterarMovimento(t, id, adm);
    v["DATA"] = kAgora.date().addDays(-1);
    EXPECT_EQ(recusa(t, [&] { salvarMovimento(t, id, v, adm, kAgora.date()); }),
              "A data desse movimento não pode ser alterada pois já existem lançamentos na mesma!");
    EXPECT_EQ(recusa(t, [&] { excluirMovimento(t, id, adm); }),
              "Esse movimento não pode ser excluído pois já existem lançamentos iguais e/ou posteriores ao mesmo!");
    const int outro = abrir(kAgora.date().addDays(-3));
    excluirMovimento(t, outro, adm);
    EXPECT_EQ(db::escalar(t, "Select Count(*) From TbAbEncMov").toInt(), 1);
}

TEST_F(CaixaTest, SummaryTotalsTheCashPaymentsOfTheDayPerForm)
{
    const int id = abrir();
    pagamento(kAgora.date(), "DINHEIRO", "10.10");
    pagamento(kAgora.date(), "DINHEIRO", "0.20");
    pagamento(kAgora.date(), "CARTÃO", "33.33");
    pagamento(kAgora.date().addDays(-1), "DINHEIRO", "99.00");  // another day
    ResumoCaixa r = resumoCaixa(t, id, adm);
    QStringList formas{r.titulo};
    for (const auto &[forma, valor] : r.formas) formas << forma + " " + valor.texto();
    EXPECT_EQ(formas, QStringList({"RESUMO DE CAIXA - 10/03/2026", "CARTÃO 33.33", "DINHEIRO 10.30"}));
    EXPECT_EQ(r.total, Decimal("43.63"));
    encerrarMovimento(t, id, adm.idUsuario, adm, kAgora);
    EXPECT_EQ(resumoCaixa(t, id, adm).titulo, "FECHAMENTO DE CAIXA - 10/03/2026");
    db::executar(t, "Update TbCCor Set Conta = 'OUTRA' Where Conta = 'CAIXA'");
    EXPECT_EQ(recusa(t, [&] { resumoCaixa(t, id, adm); }).left(28), "Conta CAIXA não encontrada! ");
}

TEST_F(CaixaTest, TheSummaryIsRenderedFromItsTemplateAndWrittenAsPdf)
{
    const int id = abrir();
    db::executar(t, "Update TbAbEncMov Set SaldoInic = 50 Where Id = :ID", {{"ID", id}});
    pagamento(kAgora.date(), "DINHEIRO", "1234.50");
    const QString html = htmlResumoCaixa(t, id, adm, kAgora);
    EXPECT_TRUE(html.contains("<h1>RESUMO DE CAIXA - 10/03/2026</h1>")) << html.toStdString();
    EXPECT_TRUE(html.contains("1.234,50"));
    EXPECT_TRUE(html.contains("1.284,50"));  // the opening balance and the receipts
    QTemporaryDir dir;
    EXPECT_TRUE(salvarRelatorioPdf(html, dir.filePath("caixa.pdf")));
    definirPastaRelatorios(dir.path());
    EXPECT_TRUE(recusa(t, [&] { htmlResumoCaixa(t, id, adm, kAgora); }).startsWith("Modelo de relatório não encontrado"));
    definirPastaRelatorios({});
}

} // namespace
