// Start-up pieces: login, global parameters, clinic defaults, the error handler, one copy per user.

#include "acesso/TLogin.h"
#include "apoio/BancoTeste.h"
#include "dados/Tabs.h"
#include "principal/InstanciaUnica.h"
#include "ui/Mensagens.h"
#include "ui/TratadorErros.h"

#include <QDir>
#include <QLineEdit>
#include <QProcess>
#include <QPushButton>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>

using namespace orb;

namespace {

struct InicioTest : ::testing::Test {
    teste::BancoTemporario bt;
    MensageiroTeste msg;
    void TearDown() override { sessao() = Sessao{}; }
};

TEST_F(InicioTest, LoginRefusalsAndTheUsersValues)
{
    db::Transacao t(bt.banco());
    db::executar(t, "insert into TbCad (Usuario, Us, Senha, Apelido) values ('SEMNIVEL', 'S', :S, 'Sem')", {{"S", MD5("x")}});
    db::executar(t, "insert into TbCad (Usuario, Us, Senha) values ('ANTIGO', 'N', :S)", {{"S", MD5("x")}});
    struct { const char *usuario, *senha; QString recusa; } casos[] = {
        {"FULANO", "x", kUsuarioNaoCadastrado},
        {"ANTIGO", "x", kUsuarioNaoCadastrado},  // no longer a user
        {"admin", "errada", kSenhaInvalida},
        {"semnivel", "x", kSemAcesso},
    };
    for (auto c : casos) {
        try {
            autenticar(t, c.usuario, c.senha);
            ADD_FAILURE() << c.usuario;
        } catch (const Recusa &r) {
            EXPECT_EQ(r.texto, c.recusa) << c.usuario;
        }
    }
    const ResultadoLogin r = autenticar(t, " admin ", "admin");
    EXPECT_EQ(r.sessao.usuario, "ADMIN");
    EXPECT_EQ(r.sessao.nivel, 999);
    EXPECT_EQ(r.sessao.tipoUsuario, "D");
    EXPECT_TRUE(r.precisaTrocarSenha);

    struct { const char *nova, *conf; const char *recusa; } trocas[] = {
        {"", "", "Digite a nova senha!"},
        {"abc", "abd", "A confirmação não confere com a nova senha!"},
        {"12345678901", "12345678901", "A senha deve ter no máximo 10 caracteres!"},
        {"admin", "admin", "Escolha uma senha diferente da senha inicial!"},
    };
    for (auto c : trocas) EXPECT_THROW(trocarSenha(t, r.sessao.idUsuario, c.nova, c.conf), Recusa) << c.recusa;
    trocarSenha(t, r.sessao.idUsuario, "1234567890", "1234567890");
    EXPECT_FALSE(autenticar(t, "ADMIN", "1234567890").precisaTrocarSenha);
}

TEST(Tentativas, FailuresSlowTheNextAttemptDown)
{
    Tentativas t;
    const QDateTime t0(QDate(2026, 11, 23), QTime(10, 0));
    const int esperado[] = {0, 0, 2, 4, 8, 16, 30, 30};
    for (int i = 0; i < 8; ++i) {
        t.falhou(t0);
        EXPECT_EQ(t.espera(t0), esperado[i]) << "falha " << i + 1;
    }
    EXPECT_EQ(t.espera(t0.addSecs(29)), 1);
    EXPECT_EQ(t.espera(t0.addSecs(30)), 0);
    t.acertou();
    EXPECT_EQ(t.espera(t0), 0);
}

// As the receptionist would: a wrong password, then the first one, then the new password chosen.
TEST_F(InicioTest, LoginDialogByKeys)
{
    TLogin dlg(bt.banco());
    dlg.show();
    dlg.executarTroca = [](TTrocaSenha &troca) {
        troca.nova()->setText("balcao1");
        troca.confirmacao()->setText("balcao1");
        troca.BtSalvarClick();
        return troca.result() == QDialog::Accepted;
    };
    QTest::keyClicks(dlg.usuario(), "admin");
    QTest::keyClick(dlg.usuario(), Qt::Key_Return);
    QTest::keyClicks(dlg.senha(), "errada");
    QTest::keyClick(dlg.senha(), Qt::Key_Return);
    EXPECT_EQ(msg.avisos, QStringList{kSenhaInvalida});
    EXPECT_TRUE(dlg.senha()->text().isEmpty());
    QTest::keyClicks(dlg.senha(), "admin");
    QTest::keyClick(dlg.senha(), Qt::Key_Return);
    EXPECT_EQ(dlg.result(), QDialog::Accepted);
    EXPECT_EQ(sessao().usuario, "ADMIN");
    EXPECT_EQ(sessao().nivel, 999);
    db::Transacao t(bt.banco());
    EXPECT_FALSE(autenticar(t, "admin", "balcao1").precisaTrocarSenha);
}

TEST(Ae1Exception, ShortMessagesByKindLongOneWithItsFiles)
{
    MensageiroTeste msg;
    QTemporaryDir dir;
    definirPastaErros(dir.path());
    TTabs tabs;
    Tabs = &tabs;
    for (int i = 0; i < 10; ++i) tabs.Deb(QString("procedure T.Rotina%1").arg(i));
    struct { db::TipoErro tipo; QString texto; } curtos[] = {
        {db::TipoErro::DataInvalida, kDataInvalida}, {db::TipoErro::NumeroInvalido, kValorInvalido}, {db::TipoErro::Dependentes, kDependentes}};
    for (auto c : curtos) {
        msg.avisos.clear();
        Ae1Exception(std::make_exception_ptr(db::ErroBanco(c.tipo, "x", "y")));
        EXPECT_EQ(msg.avisos, QStringList{c.texto});
    }
    EXPECT_FALSE(QDir(dir.path() + "/Erros").exists());

    msg.avisos.clear();
    Ae1Exception(std::make_exception_ptr(std::runtime_error("disco cheio")));
    ASSERT_EQ(msg.avisos.size(), 1);
    const QString longo = msg.avisos[0];
    EXPECT_TRUE(longo.startsWith("Este módulo está apresentando o seguinte erro: disco cheio"));
    for (const char *parte : {"ClassName: std::runtime_error", "Handler 0: procedure T.Rotina9", "Handler 2:procedure T.Rotina7",
                              "aconselhável reiniciar o aplicativo."})
        EXPECT_TRUE(longo.contains(parte)) << parte;
    const QStringList jpg = QDir(dir.path() + "/Erros").entryList({"A_Erro*.jpg"});
    const QStringList html = QDir(dir.path() + "/Erros").entryList({"A_Erro*.html"});
    ASSERT_EQ(jpg.size(), 1);
    ASSERT_EQ(html.size(), 1);
    QFile f(dir.path() + "/Erros/" + html[0]);
    ASSERT_TRUE(f.open(QIODevice::ReadOnly));
    const QString rel = QString::fromUtf8(f.readAll());
    int pos = 0;
    QStringList rotulos = {"***************************<br>", "<b>Versão:</b> ", "<b>Atualizador:</b> ", "<b>Usuário:</b> ",
                           "<b>Nome do Computador:</b> ", "<b>Erro:</b> disco cheio", "<b>ClassName(Erro):</b> "};
    for (int i = 0; i < 10; ++i) rotulos << QString("<b>Handler %1:</b> procedure T.Rotina%2").arg(i).arg(9 - i);
    rotulos << "<b>ActiveControl:</b> " << "<b>ActivePage:</b> " << "<b>Sender:</b> " << "***************************<br>";
    for (const QString &r : rotulos) {
        const int p = int(rel.indexOf(r, pos));
        EXPECT_GE(p, pos) << r.toStdString();
        pos = std::max(pos, p);
    }
    Tabs = nullptr;
    definirPastaErros({});
}

// An exception escaping an event handler ends in the handler, and the program goes on.
TEST(Ae1Exception, FromAnEventHandler)
{
    MensageiroTeste msg;
    QTemporaryDir dir;
    definirPastaErros(dir.path());
    QPushButton b;
    QObject::connect(&b, &QPushButton::clicked, [] { throw db::ErroBanco(db::TipoErro::Dependentes, "x", "y"); });
    b.resize(20, 20);
    b.show();
    QTest::mouseClick(&b, Qt::LeftButton);  // delivered through the application object, as every event
    EXPECT_EQ(msg.avisos, QStringList{kDependentes});
    definirPastaErros({});
}

// A second start of the program brings the first to the front and opens nothing.
TEST(InstanciaUnica, SecondStartBringsTheFirstToTheFront)
{
    const QString nome = QString("orb-teste-%1").arg(QCoreApplication::applicationPid());
    InstanciaUnica primeira(nome);
    ASSERT_TRUE(primeira.primeira());
    QSignalSpy ativou(&primeira, &InstanciaUnica::ativar);
    QTemporaryDir dir;
    QProcess segunda;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert("ORB_INSTANCIA", nome);
    env.insert("QT_QPA_PLATFORM", "offscreen");
    segunda.setProcessEnvironment(env);
    segunda.start(ORB_PROGRAMA, {"--database", dir.filePath("ORBManager.fdb")});
    ASSERT_TRUE(segunda.waitForStarted(5000));
    for (int i = 0; i < 100 && segunda.state() != QProcess::NotRunning; ++i) QTest::qWait(50);
    ASSERT_EQ(segunda.state(), QProcess::NotRunning);
    EXPECT_EQ(segunda.exitCode(), 0);
    EXPECT_TRUE(ativou.count() > 0 || ativou.wait(2000));
    EXPECT_FALSE(QFile::exists(dir.filePath("ORBManager.fdb")));  // it opened nothing
}

} // namespace
