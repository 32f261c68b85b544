// The application-wide error handler: short messages by kind, the long one with its screenshot and
// support report, errors escaping event handlers or raised in other threads.

#include "acesso/Sessao.h"
#include "apoio/MonitorTeste.h"
#include "dados/Monitor.h"
#include "dados/Tabs.h"
#include "db/Erros.h"
#include "ui/Mensagens.h"
#include "ui/TratadorErros.h"

#include <QDateTime>
#include <QDir>
#include <QJsonObject>
#include <QSignalSpy>
#include <QLineEdit>
#include <QRegularExpression>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>
#include <QTimer>
#include <QVBoxLayout>
#include <gtest/gtest.h>

using namespace orb;

namespace {

struct TratadorErros : ::testing::Test {
    MensageiroTeste msg;
    QTemporaryDir dir;
    TTabs tabs;
    void SetUp() override
    {
        definirPastaErros(dir.path());
        Tabs = &tabs;
        for (int i = 0; i < 10; ++i) tabs.Deb(QString("procedure T.Rotina%1").arg(i));  // Rotina9 newest
    }
    void TearDown() override
    {
        Tabs = nullptr;
        definirPastaErros({});
        sessao() = Sessao{};
    }
    QStringList arquivos() const { return QDir(dir.filePath("Erros")).entryList(QDir::Files, QDir::Name); }
    QString relatorio() const
    {
        QFile f(dir.filePath("Erros/" + arquivos().filter(".html").value(0)));
        return f.open(QIODevice::ReadOnly) ? QString::fromUtf8(f.readAll()) : QString();
    }
};

TEST_F(TratadorErros, KnownDataErrorsGetTheirShortMessageAndNoFiles)
{
    // English wording of another kind must not sway the decision.
    for (const auto tipo : {db::TipoErro::DataInvalida, db::TipoErro::NumeroInvalido, db::TipoErro::Dependentes,
                            db::TipoErro::Conexao})
        Ae1Exception(std::make_exception_ptr(db::ErroBanco(tipo, "conversion error from string", "tecnico")));
    try {
        throw db::ErroBanco(db::TipoErro::DataInvalida, "m", "t");
    } catch (...) {
        Ae1Exception();  // a catch-all in plain code reports the error being handled
    }
    // Arithmetic past what any column holds comes from a number typed wrong.
    Ae1Exception(std::make_exception_ptr(std::overflow_error("Valor fora do intervalo permitido")));
    EXPECT_EQ(msg.avisos, QStringList({"Data inválida!", "Valor inválido!",
                                       "Não foi possível excluir este registro pois existem registros dependentes do mesmo!",
                                       db::mensagemPara(db::TipoErro::Conexao, {}), "Data inválida!", "Valor inválido!"}));
    EXPECT_TRUE(arquivos().isEmpty());
}

TEST_F(TratadorErros, AnythingElseGetsTheLongMessageTheScreenshotAndTheReport)
{
    const struct { std::exception_ptr erro; QString mensagem, classe, erroNoRelatorio; } casos[] = {
        {std::make_exception_ptr(db::ErroBanco(db::TipoErro::Outro, "Erro no banco de dados.", "Table unknown TBX")),
         "Erro no banco de dados.", "ErroBanco", "Erro no banco de dados. - Table unknown TBX"},
        {std::make_exception_ptr(std::out_of_range("a < b & c")), "a < b & c", "std::out_of_range", "a &lt; b &amp; c"},
        {std::make_exception_ptr(42), "Erro desconhecido", "int", "Erro desconhecido"},
    };
    sessao().usuario = "MARIA";
    QCoreApplication::setApplicationVersion("3.2.1");
    // The report names where the user was: the focused control, the window's current tab, the sender.
    QWidget janela;
    auto *abas = new QTabWidget(&janela);
    abas->addTab(new QWidget, "Geral");
    auto *edt = new QLineEdit;
    edt->setObjectName("edtLimite");
    abas->addTab(edt, "Financeiro");
    (new QVBoxLayout(&janela))->addWidget(abas);
    abas->setCurrentIndex(1);
    janela.show();
    QApplication::setActiveWindow(&janela);
    edt->setFocus();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&janela));
    QObject botao;
    botao.setObjectName("btnGravar");

    for (const auto &c : casos) {
        SCOPED_TRACE(c.classe.toStdString());
        QDir(dir.filePath("Erros")).removeRecursively();
        msg.avisos.clear();
        const QDateTime antes = QDateTime::currentDateTime().addSecs(-1);
        Ae1Exception(c.erro, &botao);
        // Screenshot and report side by side, named by the moment: A_ErroddMMyyhhmmsszzz.
        const QStringList a = arquivos();
        ASSERT_EQ(a.size(), 2) << a.join(' ').toStdString();
        // With no monitor to send it to, the message says where the report waits.
        EXPECT_EQ(msg.avisos, QStringList{"Este módulo está apresentando o seguinte erro: " + c.mensagem + "\n\nClassName: " + c.classe
                                          + "\nHandler 0: procedure T.Rotina9\nHandler 1: procedure T.Rotina8\nHandler 2:procedure T.Rotina7"
                                            "\n\nPara evitar problemas consequentes desse erro é aconselhável reiniciar o aplicativo.\n"
                                            "O relatório do erro foi salvo em " + QDir::toNativeSeparators(dir.filePath("Erros/" + a[0]))
                                          + " para o suporte técnico."});

        const auto m = QRegularExpression("^A_Erro(\\d{15})\\.html$").match(a[0]);
        ASSERT_TRUE(m.hasMatch()) << a[0].toStdString();
        EXPECT_EQ(a[1], "A_Erro" + m.captured(1) + ".jpg");
        EXPECT_FALSE(QImage(dir.filePath("Erros/" + a[1])).isNull());
        const QDateTime quando = QDateTime::fromString(m.captured(1), "ddMMyyhhmmsszzz").addYears(100);
        EXPECT_TRUE(quando >= antes && quando <= QDateTime::currentDateTime()) << m.captured(1).toStdString();

        QStringList linhas = {"***************************", "<b>Versão:</b> 3.2.1", "<b>Atualizador:</b> ", "<b>Usuário:</b> MARIA",
                              "<b>Nome do Computador:</b> " + QSysInfo::machineHostName(), "<b>Erro:</b> " + c.erroNoRelatorio,
                              "<b>ClassName(Erro):</b> " + c.classe};
        for (int i = 0; i < 10; ++i) linhas << QString("<b>Handler %1:</b> procedure T.Rotina%2").arg(i).arg(9 - i);
        linhas << "<b>ActiveControl:</b> edtLimite" << "<b>ActivePage:</b> Financeiro" << "<b>Sender:</b> btnGravar"
               << "***************************" << "";
        EXPECT_EQ(relatorio().split("<br>"), linhas);
    }
    QCoreApplication::setApplicationVersion({});
}

// With an activity monitor configured the report goes to it, and only then is it said to be sent.
TEST_F(TratadorErros, TheReportGoesToTheMonitorWhenOneIsConfigured)
{
    teste::MonitorTeste http;
    ASSERT_TRUE(http.escutando());
    QSignalSpy enviado(&monitor(), &Monitor::enviado);
    Ae1Exception(std::make_exception_ptr(std::runtime_error("falhou")));
    ASSERT_EQ(msg.avisos.size(), 1);
    EXPECT_TRUE(msg.avisos[0].endsWith("\nO erro foi enviado para o suporte técnico. ")) << msg.avisos[0].toStdString();
    ASSERT_TRUE(enviado.wait(5000));
    const QJsonObject o = http.recebido();
    EXPECT_EQ(o["tabela"].toString(), "ERRO");
    EXPECT_EQ(o["registros"].toArray().at(0).toObject()["RELATORIO"].toString(), relatorio());
}

// Errors escaping event handlers, of any kind, end in the handler and the program goes on.
TEST_F(TratadorErros, EscapingEventHandlersTheProgramGoesOn)
{
    ASSERT_TRUE(qobject_cast<Aplicacao *>(qApp)) << "the tests' entry point must create the program's application";
    int depois = 0;
    QTimer::singleShot(0, [] { throw db::ErroBanco(db::TipoErro::DataInvalida, "m", "t"); });
    QTimer::singleShot(0, [] { throw 7; });
    QTimer::singleShot(5, [&] { ++depois; });
    QTRY_COMPARE_WITH_TIMEOUT(depois, 1, 2000);
    ASSERT_EQ(msg.avisos.size(), 2);
    EXPECT_TRUE(msg.avisos[0] == "Data inválida!" && msg.avisos[1].contains("\nClassName: int\n")) << msg.avisos.join(" | ").toStdString();
    EXPECT_EQ(arquivos().size(), 2);
}

// Boxes and screenshots belong to the GUI thread: a worker's error is shown from there.
TEST_F(TratadorErros, FromAnotherThreadIsShownInTheGuiThread)
{
    std::unique_ptr<QThread> t(QThread::create([] { Ae1Exception(std::make_exception_ptr(std::runtime_error("no trabalhador"))); }));
    t->start();
    ASSERT_TRUE(t->wait(5000));
    EXPECT_TRUE(msg.avisos.isEmpty());
    QTRY_COMPARE_WITH_TIMEOUT(msg.avisos.size(), 1, 2000);
    EXPECT_TRUE(msg.avisos[0].contains("no trabalhador"));
}

} // namespace
