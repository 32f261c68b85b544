// Mail through a real local SMTP server: the account read from the global parameters, the body
// and attachments as a mail client decodes them, and each failure as a Portuguese refusal that
// keeps the password to itself.

#include "apoio/BancoTeste.h"
#include "apoio/ServidorSmtp.h"
#include "Recusa.h"
#include "relatorios/Relatorios.h"

#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QJsonArray>
#include <QTcpServer>

#include <gtest/gtest.h>

using namespace orb;

namespace {

const QString kSenha = QStringLiteral("s3nh@-Secreta");
const QString kCorpo = QStringLiteral("Ola, \r\rSegue em anexo: VENDA Nº 000012\r\rObrigado pela preferência!");
const QString kHtml = QStringLiteral("<html><body><h1>VENDA Nº 000012</h1><p>Cliente: JOSÉ DA SILVA</p></body></html>");

struct EmailTest : ::testing::Test {
    void SetUp() override
    {
        if (!teste::ServidorSmtp::disponivel()) GTEST_SKIP() << "python3-aiosmtpd ausente";
    }
    // The account of the global parameters pointing at `porta`.
    ContaEmail conta(int porta, const QString &usuario = {}, const QString &tls = {})
    {
        db::Transacao t(bt.banco());
        db::executar(t, "Update TbParGlobais Set Smtp = '127.0.0.1', PortaSmtp = :P, TlsSmtp = :T, SslSmtp = 'N', "
                        "AutSmtp = :A, UsuarioSmtp = :U, SenhaSmtp = :S",
                     {{"P", porta}, {"T", tls}, {"A", usuario.isEmpty() ? "N" : "S"}, {"U", usuario}, {"S", kSenha}});
        db::executar(t, "Update TbCad Set Email = 'loja@exemplo.com.br' Where Id = (Select First 1 IdEmpresa From TbParGlobais)");
        ContaEmail c = contaEmail(t);
        t.commit();
        return c;
    }
    teste::BancoTemporario bt;
};

TEST_F(EmailTest, ReportsArriveAsTheClientReadsThemInEveryFormat)
{
    teste::ServidorSmtp smtp;
    const ContaEmail c = conta(smtp.porta());
    EXPECT_EQ(c.remetente, "loja@exemplo.com.br");  // the user is no address: the company's

    const struct { QString codigo, nome, tipo; QByteArray inicio; } casos[] = {
        {"E", "Venda 000012.pdf", "application/pdf", "%PDF"}, {"P", "Venda 000012.pdf", "application/pdf", "%PDF"},
        {"J", "Venda 000012.jpg", "image/jpeg", "\xFF\xD8\xFF"}, {"H", "Venda 000012.html", "text/html", "<html>"},
    };
    for (const auto &k : casos) {
        db::Transacao t(bt.banco());
        enviarRelatorio(t, kHtml, formatoRelatorio(k.codigo), "Venda 000012",
                        {"cliente@exemplo.com.br", "VENDA Nº 000012", kCorpo, {}});
    }
    const QList<QJsonObject> m = smtp.mensagens();
    ASSERT_EQ(m.size(), 4);
    for (int i = 0; i < 4; ++i) {
        SCOPED_TRACE(casos[i].codigo.toStdString());
        EXPECT_EQ(QStringList({m[i]["de"].toString(), m[i]["para"].toArray().at(0).toString(), m[i]["assunto"].toString(),
                               m[i]["corpo"].toString()}),
                  QStringList({"loja@exemplo.com.br", "cliente@exemplo.com.br", "VENDA Nº 000012", kCorpo}));
        const QJsonArray anexos = m[i]["anexos"].toArray();
        ASSERT_EQ(anexos.size(), 1);
        EXPECT_EQ(anexos[0]["nome"].toString() + " " + anexos[0]["tipo"].toString(), casos[i].nome + " " + casos[i].tipo);
        QFile f(anexos[0]["arquivo"].toString());
        ASSERT_TRUE(f.open(QIODevice::ReadOnly));
        EXPECT_TRUE(f.readAll().startsWith(casos[i].inicio));
    }
}

TEST_F(EmailTest, FailuresAreRefusedInPortugueseWithoutThePassword)
{
    teste::ServidorSmtp exigente({"loja", kSenha, "inexistente"});
    int fechada;
    {
        QTcpServer s;  // a port nobody listens on any more: the server is down
        s.listen(QHostAddress::LocalHost, 0);
        fechada = s.serverPort();
    }
    const struct { const char *caso; int porta; QString usuario, senha, para, mensagem; } casos[] = {
        {"servidor fora do ar", fechada, "loja", kSenha, "a@exemplo.com.br",
         QString("Não foi possível conectar ao servidor de e-mail 127.0.0.1:%1. Verifique a conexão e as configurações de e-mail.").arg(fechada)},
        {"senha errada", exigente.porta(), "loja", "errada", "a@exemplo.com.br",
         "O servidor de e-mail recusou o usuário ou a senha. Verifique as configurações de e-mail."},
        {"endereço inválido", exigente.porta(), "loja", kSenha, "cliente@", "E-mail inválido: cliente@"},
        {"sem destinatário", exigente.porta(), "loja", kSenha, " ; ", "Digite o e-mail do destinatário primeiro!"},
        {"destinatário recusado", exigente.porta(), "loja", kSenha, "inexistente@exemplo.com.br",
         "O servidor de e-mail recusou a mensagem (código 550): RCPT failed: 550."},
    };
    for (const auto &k : casos) {
        SCOPED_TRACE(k.caso);
        ContaEmail c = conta(k.porta, k.usuario);
        c.senha = k.senha;
        try {
            enviarEmail(c, {k.para, "Teste", "corpo", {}});
            ADD_FAILURE() << "enviado";
        } catch (const Recusa &r) {
            EXPECT_EQ(r.texto, k.mensagem);
            EXPECT_FALSE(r.texto.contains(kSenha));
        }
    }
    EXPECT_TRUE(exigente.mensagens().isEmpty());

    // With the right login the same server takes it.
    enviarEmail(conta(exigente.porta(), "loja"), {"b@exemplo.com.br", "Teste", "corpo", {}});
    EXPECT_EQ(exigente.mensagens().size(), 1);
}

TEST_F(EmailTest, AnAccountWithoutServerIsRefusedBeforeAnyExport)
{
    db::Transacao t(bt.banco());
    db::executar(t, "Update TbParGlobais Set Smtp = Null");
    try {
        enviarRelatorio(t, kHtml, FormatoRelatorio::Pdf, "x", {"a@exemplo.com.br", "x", "x", {}});
        ADD_FAILURE() << "enviado";
    } catch (const Recusa &r) {
        EXPECT_EQ(r.texto, "O servidor de e-mail não está configurado!");
    }
}

} // namespace

namespace {

// A 12 pt text is 12 pt on the PDF's page, whatever the resolution the fonts were measured at.
TEST(RelatorioExportado, PdfKeepsTheFontSizeInPoints)
{
    if (!QFile::exists("/usr/bin/pdftotext")) GTEST_SKIP() << "poppler-utils ausente";
    QTemporaryDir dir;
    QFile f(dir.filePath("r.pdf"));
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    f.write(exportarRelatorio("<html><body><p style='font-family:DejaVu Sans; font-size:12pt'>MEDIDA</p></body></html>",
                              FormatoRelatorio::Pdf, "r").conteudo);
    f.close();
    QProcess p;
    p.start("/usr/bin/pdftotext", {"-bbox", f.fileName(), "-"});
    ASSERT_TRUE(p.waitForFinished(30000));
    const auto m = QRegularExpression(R"re(yMin="([0-9.]+)" xMax="[0-9.]+" yMax="([0-9.]+)">MEDIDA<)re").match(QString::fromUtf8(p.readAllStandardOutput()));
    ASSERT_TRUE(m.hasMatch());
    const double altura = m.captured(2).toDouble() - m.captured(1).toDouble();
    EXPECT_GT(altura, 10.0);  // the line of a 12 pt font, in points
    EXPECT_LT(altura, 16.0);
}

} // namespace
