// The printout from the operation form: Imprimir (F6) previews the document under the cursor, and
// "Enviar por E-mail" mails it to a real local SMTP server, where it arrives with the exact body
// and a PDF whose text holds the document's number, customer and total.

#include "Cenario.h"
#include "TDataAprovacaoVendas.h"
#include "TOpEmailVendas.h"
#include "TVendas.h"
#include "Vendas.h"
#include "apoio/ServidorSmtp.h"
#include "apoio/TabsTeste.h"
#include "ui/Impressao.h"

#include <QApplication>
#include <QComboBox>
#include <QJsonArray>
#include <QLineEdit>
#include <QProcess>
#include <QTableView>
#include <QTest>
#include <gtest/gtest.h>

using namespace orb;

namespace {

struct ImpVendaTelaTest : teste::ComTabs {
    int id = 0;
    QString numero, total;

    void SetUp() override
    {
        ComTabs::SetUp();
        db::Transacao t(tabs.DbORB());
        teste::CenarioVendas c(t);
        db::executar(t, "Update TbCad Set Email = 'cliente@exemplo.com.br' Where Id = :ID", {{"ID", c.cliente}});
        const Sessao adm = teste::administrador(t, "&Comercial", "TVendas");
        Documento d = c.documento(t, "Ven", adm, QDateTime::currentDateTime(), {{"000", "3"}});
        id = salvarDocumento(t, d, adm, QDateTime::currentDateTime());
        numero = QString("%1").arg(id, 6, 10, QChar('0'));
        total = db::escalar(t, "Select Total From TbCom Where Id = :ID", {{"ID", id}}).value<db::Decimal>().textoBR(2);
        t.commit();
    }
    void TearDown() override
    {
        definirImpressora(nullptr);
        definirRespostaDialogo(nullptr);
        ComTabs::TearDown();
    }
};

TEST_F(ImpVendaTelaTest, F6PreviewsTheDocumentUnderTheCursor)
{
    QString titulo, html;
    definirImpressora([&](const QString &t, const QString &h) { titulo = t, html = h; });
    TVendas f("Ven");
    f.definirMenu("&Comercial", "TVendas");
    f.show();
    f.grade()->selectRow(0);
    ASSERT_EQ(f.idAtual(), id);
    QApplication::setActiveWindow(&f);
    QTest::keyClick(f.grade(), Qt::Key_F6);
    EXPECT_EQ(titulo, "ORÇAMENTO " + numero);
    EXPECT_TRUE(html.contains("CLIENTE BOM") && html.contains(total) && html.contains("M000")) << html.toStdString();
    EXPECT_TRUE(msg.avisos.isEmpty()) << msg.avisos.join(" | ").toStdString();
}

TEST_F(ImpVendaTelaTest, EnviarPorEmailArrivesWithTheBodyAndAPdfOfTheDocument)
{
    if (!teste::ServidorSmtp::disponivel()) GTEST_SKIP() << "python3-aiosmtpd ausente";
    teste::ServidorSmtp smtp;
    TVendas f("Ven");
    f.definirMenu("&Comercial", "TVendas");
    f.show();
    f.grade()->selectRow(0);

    // No mail server yet: told, the dialog stays open with the address typed.
    QString digitado;
    int resultado = -1;
    definirRespostaDialogo([&](QDialog &d) {
        auto &e = static_cast<TOpEmailVendas &>(d);
        EXPECT_EQ(e.edEmail->text(), "cliente@exemplo.com.br");
        e.edEmail->setText("outro@exemplo.com.br");
        e.BtOkClick();
        digitado = e.edEmail->text();
        resultado = e.result();
    });
    f.BtEmailClick();
    EXPECT_EQ(msg.avisos.value(0), "O servidor de e-mail não está configurado!");
    EXPECT_EQ(digitado, "outro@exemplo.com.br");
    EXPECT_NE(resultado, QDialog::Accepted);

    {
        db::Transacao t(tabs.DbORB());
        db::executar(t, "Update TbParGlobais Set Smtp = '127.0.0.1', PortaSmtp = :P, SslSmtp = 'N', AutSmtp = 'N'", {{"P", smtp.porta()}});
        db::executar(t, "Update TbCad Set Email = 'loja@exemplo.com.br' Where Id = (Select First 1 IdEmpresa From TbParGlobais)");
        t.commit();
    }
    definirRespostaDialogo([&](QDialog &d) {
        auto &e = static_cast<TOpEmailVendas &>(d);
        EXPECT_EQ(e.cbFormato->currentData().toString(), "E");  // PDF unless another is chosen
        e.BtOkClick();
        resultado = e.result();
    });
    f.BtEmailClick();
    EXPECT_EQ(resultado, QDialog::Accepted);
    const QList<QJsonObject> m = smtp.mensagens();
    ASSERT_EQ(m.size(), 1);
    EXPECT_EQ(m[0]["para"].toArray().at(0).toString(), "cliente@exemplo.com.br");
    EXPECT_EQ(m[0]["corpo"].toString(), "Ola, \r\rSegue em anexo: ORÇAMENTO Nº " + numero + "\r\rObrigado pela preferência!");
    const QJsonArray anexos = m[0]["anexos"].toArray();
    ASSERT_EQ(anexos.size(), 1);
    EXPECT_EQ(anexos[0]["nome"].toString(), "ORÇAMENTO " + numero + ".pdf");
    QProcess p;
    p.start("/usr/bin/pdftotext", {"-layout", anexos[0]["arquivo"].toString(), "-"});
    ASSERT_TRUE(p.waitForFinished(30000));
    const QString texto = QString::fromUtf8(p.readAllStandardOutput());
    for (const QString &s : {numero, QString("CLIENTE BOM"), total})
        EXPECT_TRUE(texto.contains(s)) << s.toStdString() << "\n" << texto.toStdString();
}

} // namespace
