// Logging in: refusals and the session's values, the first password's change, the slower pace
// after failures, the login dialog driven by keys, and the database settings dialog.

#include "Configuracao.h"
#include "acesso/TLogin.h"
#include "apoio/BancoTeste.h"
#include "principal/TConfig.h"
#include "schema/Atualizacao.h"
#include "ui/Mensagens.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>

using namespace orb;

namespace {

const QString kHashInicial = QStringLiteral("21232F297A57A5A743894A0E4A801FC3");  // MD5("admin")

// ---------------------------------------------------------------- MD5

TEST(LoginMD5, UpperHexOverTheSingleByteText)
{
    struct { QString texto, hash; } casos[] = {
        {"admin", kHashInicial},
        {"", "D41D8CD98F00B204E9800998ECF8427E"},
        {"ação", "AE4A7803202641A834921DAD2D15BB2C"},   // 4 bytes, not the 6 of UTF-8
        {"Ação€", "8257A661AD5F942EB272EEEED6EDFD26"},  // € is 0x80 in WIN1252, not Latin-1's '?'
    };
    for (const auto &c : casos) EXPECT_EQ(MD5(c.texto), c.hash) << c.texto.toStdString();
}

// ---------------------------------------------------------------- autenticar / trocarSenha

struct Login : ::testing::Test {
    teste::BancoTemporario bt;
    MensageiroTeste msg;
    db::Transacao t{bt.banco()};

    int idDe(const QString &usuario)
    {
        return db::escalar(t, "select Id from TbCad where Usuario = :U", {{"U", usuario}}).toInt();
    }
    QString senhaDe(int id) { return db::escalar(t, "select Senha from TbCad where Id = :ID", {{"ID", id}}).toString(); }
    int novoNivel(int nivel)
    {
        return db::escalar(t, "insert into TbNiveis (Nivel, Descricao) values (:N, 'BALCÃO') returning Id", {{"N", nivel}}).toInt();
    }
    void novoUsuario(const QString &usuario, const QString &us, const QString &senhaGuardada, const QVariant &idNivel,
                     const QString &apelido = {}, const QString &tipo = "U")
    {
        db::executar(t, "insert into TbCad (Usuario, Us, Senha, IdNivel, Apelido, TipoUsuario) values (:U, :US, :S, :NIVEL, :A, :TIPO)",
                     {{"U", usuario}, {"US", us}, {"S", senhaGuardada}, {"NIVEL", idNivel}, {"A", apelido}, {"TIPO", tipo}});
    }
};

TEST_F(Login, RefusalsNameTheMessageAndTheField)
{
    novoUsuario("SEMNIVEL", "S", MD5("x"), QVariant());
    novoUsuario("NIVELSUMIU", "S", MD5("x"), 987654);  // its level was deleted
    novoUsuario("ANTIGO", "N", MD5("x"), novoNivel(10));  // no longer a user of the system
    struct { const char *usuario, *senha; QString texto, campo; } casos[] = {
        {"FULANO", "x", kUsuarioNaoCadastrado, "usuario"},
        {"ANTIGO", "x", kUsuarioNaoCadastrado, "usuario"},
        {"", "admin", kUsuarioNaoCadastrado, "usuario"},
        {"   ", "admin", kUsuarioNaoCadastrado, "usuario"},
        {"ADMINX", "admin", kUsuarioNaoCadastrado, "usuario"},
        {"admin", "errada", kSenhaInvalida, "senha"},
        {"admin", "", kSenhaInvalida, "senha"},
        {"admin", "ADMIN", kSenhaInvalida, "senha"},     // passwords keep their case
        {"admin", "admin ", kSenhaInvalida, "senha"},    // and their spaces
        {"semnivel", "errada", kSenhaInvalida, "senha"}, // the level is not told to a wrong password
        {"semnivel", "x", kSemAcesso, "usuario"},
        {"NivelSumiu", "x", kSemAcesso, "usuario"},
    };
    for (const auto &c : casos) {
        SCOPED_TRACE(std::string(c.usuario) + " / " + c.senha);
        try {
            autenticar(t, c.usuario, c.senha);
            ADD_FAILURE() << "entrou";
        } catch (const Recusa &r) {
            EXPECT_EQ(r.texto, c.texto);
            EXPECT_EQ(r.campo, c.campo);
        }
    }
}

TEST_F(Login, SuccessGivesTheUsersValues)
{
    const int balcao = novoNivel(100);
    // A row of an older installation: hash in lower case, name typed in mixed case.
    novoUsuario("Maria", "S", MD5("ação").toLower(), balcao, "Mariazinha", "U");
    novoUsuario("CAIXA", "S", kHashInicial.toLower(), balcao, "Caixa", "S");  // also still on the first password
    const int idNivelAdmin = db::escalar(t, "select Id from TbNiveis where Nivel = 999").toInt();

    struct { const char *usuario, *senha; int id; QString nome, apelido, tipo; int idNivel, nivel; bool trocar; } casos[] = {
        {"ADMIN", "admin", idDe("ADMIN"), "ADMIN", "ADMIN", "D", idNivelAdmin, 999, true},
        {" admin ", "admin", idDe("ADMIN"), "ADMIN", "ADMIN", "D", idNivelAdmin, 999, true},
        {"MARIA", "ação", idDe("Maria"), "Maria", "Mariazinha", "U", balcao, 100, false},
        {"maria", "ação", idDe("Maria"), "Maria", "Mariazinha", "U", balcao, 100, false},
        {"caixa", "admin", idDe("CAIXA"), "CAIXA", "Caixa", "S", balcao, 100, true},
    };
    for (const auto &c : casos) {
        SCOPED_TRACE(c.usuario);
        const ResultadoLogin r = autenticar(t, c.usuario, c.senha);
        EXPECT_NE(r.sessao.idUsuario, 0);
        EXPECT_EQ(r.sessao.idUsuario, c.id);
        EXPECT_EQ(r.sessao.usuario, c.nome);
        EXPECT_EQ(r.sessao.apelido, c.apelido);
        EXPECT_EQ(r.sessao.tipoUsuario, c.tipo);
        EXPECT_EQ(r.sessao.idNivel, c.idNivel);
        EXPECT_EQ(r.sessao.nivel, c.nivel);
        EXPECT_EQ(r.precisaTrocarSenha, c.trocar);
    }
}

TEST_F(Login, TrocaSenhaRefusalsLeaveThePasswordAlone)
{
    const int admin = idDe("ADMIN");
    struct { QString nova, confirmacao, texto, campo; } casos[] = {
        {"", "", kDigiteNovaSenha, "nova"},
        {"", "abc", kDigiteNovaSenha, "nova"},
        {"abc", "abd", kConfirmacaoNaoConfere, "confirmacao"},
        {"abc", "", kConfirmacaoNaoConfere, "confirmacao"},
        {"abc", "ABC", kConfirmacaoNaoConfere, "confirmacao"},
        {"12345678901", "12345678901", kSenhaLonga, "nova"},
        {"admin", "admin", kSenhaIgualInicial, "nova"},
    };
    for (const auto &c : casos) {
        SCOPED_TRACE(c.nova.toStdString() + " / " + c.confirmacao.toStdString());
        try {
            trocarSenha(t, admin, c.nova, c.confirmacao);
            ADD_FAILURE() << "trocou";
        } catch (const Recusa &r) {
            EXPECT_EQ(r.texto, c.texto);
            EXPECT_EQ(r.campo, c.campo);
        }
        EXPECT_EQ(senhaDe(admin), kHashInicial);
    }
    EXPECT_THROW(trocarSenha(t, 999999, "nova1", "nova1"), Recusa);  // no such user
}

TEST_F(Login, TrocaSenhaThenTheNewPasswordLogsIn)
{
    const int admin = idDe("ADMIN");
    struct { QString nova; } casos[] = {{"1234567890"}, {"Admin"}, {"ação"}, {"x"}};
    for (const auto &c : casos) {
        SCOPED_TRACE(c.nova.toStdString());
        trocarSenha(t, admin, c.nova, c.nova);
        EXPECT_EQ(senhaDe(admin), MD5(c.nova));
        const ResultadoLogin r = autenticar(t, "admin", c.nova);
        EXPECT_EQ(r.sessao.idUsuario, admin);
        EXPECT_FALSE(r.precisaTrocarSenha);
        EXPECT_THROW(autenticar(t, "admin", "admin"), Recusa);
    }
}

// ---------------------------------------------------------------- Tentativas

TEST(Tentativas, DelayByFailuresInARow)
{
    const int esperado[] = {0, 0, 0, 0, 2, 4, 8, 16, 30, 30, 30};  // index = failures so far
    for (int n = 0; n < int(std::size(esperado)); ++n) EXPECT_EQ(Tentativas::atraso(n), esperado[n]) << n << " falhas";

    Tentativas t;
    const QDateTime t0(QDate(2026, 11, 23), QTime(10, 0), Qt::UTC);
    for (int n = 1; n < int(std::size(esperado)); ++n) {
        t.falhou(t0);
        EXPECT_EQ(t.falhas(), n);
        EXPECT_EQ(t.espera(t0), esperado[n]) << n << " falhas";
    }
}

TEST(Tentativas, CountsDownFromTheLastFailureAndSuccessResets)
{
    Tentativas t;
    const QDateTime t0(QDate(2026, 11, 23), QTime(10, 0), Qt::UTC);
    for (int i = 0; i < 4; ++i) t.falhou(t0.addSecs(-60 + i));  // the wait counts from the last failure only
    t.falhou(t0);  // the fifth: 4 seconds
    struct { qint64 ms; int espera; } casos[] = {{0, 4}, {1, 4}, {500, 4}, {1000, 3}, {3001, 1}, {3999, 1}, {4000, 0}, {60000, 0}};
    for (const auto &c : casos) EXPECT_EQ(t.espera(t0.addMSecs(c.ms)), c.espera) << c.ms << " ms";

    t.acertou();
    EXPECT_EQ(t.falhas(), 0);
    EXPECT_EQ(t.espera(t0), 0);
    t.falhou(t0);
    EXPECT_EQ(t.espera(t0), 0);  // a fresh count after a success
}

// ---------------------------------------------------------------- TLogin

struct TLoginTest : ::testing::Test {
    teste::BancoTemporario bt;
    MensageiroTeste msg;
    void TearDown() override { sessao() = Sessao{}; }
};

// Runs `dirigir` on the password-change dialog once it is on the screen (modal, as in the program).
void quandoAbrirTroca(std::function<void(TTrocaSenha &)> dirigir)
{
    auto tentativas = std::make_shared<int>(0);
    auto procurar = std::make_shared<std::function<void()>>();
    *procurar = [=] {
        if (auto *d = qobject_cast<TTrocaSenha *>(QApplication::activeModalWidget())) return dirigir(*d);
        if (++*tentativas < 200) return QTimer::singleShot(10, *procurar);
        ADD_FAILURE() << "a troca de senha não abriu";
    };
    QTimer::singleShot(0, *procurar);
}

// As the receptionist would, on a new installation: wrong passwords until slowed down, then the
// first password, which asks for a new one: cancelled once, then chosen.
TEST_F(TLoginTest, ByKeysWithTheFirstPasswordChange)
{
    QDateTime relogio(QDate(2026, 11, 23), QTime(8, 0), Qt::UTC);
    TLogin dlg(bt.banco());
    dlg.agora = [&] { return relogio; };
    dlg.show();
    EXPECT_EQ(dlg.windowTitle(), "ORB Manager - Autenticação");

    QTest::keyClicks(dlg.usuario(), "admin");
    QTest::keyClick(dlg.usuario(), Qt::Key_Return);
    EXPECT_EQ(dlg.focusWidget(), dlg.senha());
    EXPECT_TRUE(msg.avisos.isEmpty());  // Enter on the name only moves on
    QTest::keyClicks(dlg.senha(), "errada");
    QTest::keyClick(dlg.senha(), Qt::Key_Return);
    EXPECT_EQ(msg.avisos, QStringList{kSenhaInvalida});
    EXPECT_TRUE(dlg.senha()->text().isEmpty());
    EXPECT_EQ(dlg.focusWidget(), dlg.senha());
    EXPECT_TRUE(dlg.entrar()->isEnabled());

    // Three more: the fourth failure makes the next attempt wait.
    for (int i = 0; i < 3; ++i) {
        QTest::keyClicks(dlg.senha(), "errada");
        QTest::keyClick(dlg.senha(), Qt::Key_Return);
    }
    EXPECT_EQ(msg.avisos.size(), 4);
    EXPECT_FALSE(dlg.entrar()->isEnabled());
    EXPECT_EQ(dlg.aviso()->text(), "Aguarde 2 segundos para tentar novamente.");
    QTest::keyClicks(dlg.senha(), "admin");
    QTest::keyClick(dlg.senha(), Qt::Key_Return);
    EXPECT_EQ(msg.avisos.size(), 4);  // not even tried
    EXPECT_NE(dlg.result(), QDialog::Accepted);
    relogio = relogio.addSecs(2);
    for (int i = 0; i < 100 && !dlg.entrar()->isEnabled(); ++i) QTest::qWait(20);
    EXPECT_TRUE(dlg.entrar()->isEnabled());
    EXPECT_TRUE(dlg.aviso()->text().isEmpty());

    // The first password opens the change; Esc there leaves the login unfinished.
    quandoAbrirTroca([](TTrocaSenha &troca) { QTest::keyClick(troca.nova(), Qt::Key_Escape); });
    QTest::keyClick(dlg.senha(), Qt::Key_Return);
    EXPECT_NE(dlg.result(), QDialog::Accepted);
    EXPECT_FALSE(sessao().logado());
    EXPECT_TRUE(dlg.senha()->text().isEmpty());

    // Again, now choosing a new one: a mistyped confirmation first.
    QStringList avisosNaTroca;
    quandoAbrirTroca([&](TTrocaSenha &troca) {
        EXPECT_EQ(troca.nova()->maxLength(), 10);
        EXPECT_EQ(troca.confirmacao()->maxLength(), 10);
        QTest::keyClicks(troca.nova(), "balcao1");
        QTest::keyClick(troca.nova(), Qt::Key_Return);
        EXPECT_EQ(troca.focusWidget(), troca.confirmacao());
        QTest::keyClicks(troca.confirmacao(), "balcao2");
        QTest::keyClick(troca.confirmacao(), Qt::Key_Return);
        avisosNaTroca = msg.avisos.mid(4);
        EXPECT_TRUE(troca.isVisible());
        EXPECT_TRUE(troca.confirmacao()->text().isEmpty());
        QTest::keyClicks(troca.confirmacao(), "balcao1");
        QTest::keyClick(troca.confirmacao(), Qt::Key_Return);
    });
    QTest::keyClicks(dlg.senha(), "admin");
    QTest::keyClick(dlg.senha(), Qt::Key_Return);
    EXPECT_EQ(avisosNaTroca, QStringList{kConfirmacaoNaoConfere});
    EXPECT_EQ(dlg.result(), QDialog::Accepted);
    EXPECT_EQ(sessao().usuario, "ADMIN");
    EXPECT_EQ(sessao().nivel, 999);
    EXPECT_EQ(sessao().tipoUsuario, "D");

    db::Transacao t(bt.banco());
    EXPECT_EQ(db::escalar(t, "select Senha from TbCad where Usuario = 'ADMIN'").toString(), MD5("balcao1"));
}

// ---------------------------------------------------------------- TConfig

TEST(TConfig, SaveWritesTheFileAndKeepsThePreviousOne)
{
    MensageiroTeste msg;
    QTemporaryDir dir;
    const QString ini = dir.filePath("ORBManager.ini");
    const QByteArray antes = "[Server]\nName=velho\nPort=3050\nPath=/dados\nUser=ORB\nPassword=segredo\n";
    {
        QFile f(ini);
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write(antes);
    }
    TConfig dlg(dir.path());
    EXPECT_EQ(dlg.windowTitle(), "ORB Manager - Configuração do Banco de Dados");
    EXPECT_EQ(dlg.servidor()->text(), "velho");
    EXPECT_EQ(dlg.porta()->text(), "3050");
    EXPECT_EQ(dlg.pasta()->text(), "/dados");

    dlg.show();
    for (QLineEdit *e : {dlg.servidor(), dlg.porta(), dlg.pasta(), dlg.compartilhamento()}) e->clear();
    QTest::keyClicks(dlg.servidor(), "servidor01");
    QTest::keyClick(dlg.servidor(), Qt::Key_Return);
    EXPECT_EQ(dlg.focusWidget(), dlg.porta());
    QTest::keyClicks(dlg.porta(), "3051");
    QTest::keyClicks(dlg.pasta(), "/srv/orb");
    QTest::keyClicks(dlg.compartilhamento(), "ORB");
    dlg.findChild<QPushButton *>("BtSalvar")->click();
    EXPECT_EQ(dlg.result(), QDialog::Accepted);
    EXPECT_TRUE(msg.avisos.isEmpty()) << msg.avisos.join(" | ").toStdString();

    const Configuracao c = lerConfiguracao(dir.path());
    EXPECT_EQ(c.nome, "servidor01");
    EXPECT_EQ(c.porta, "3051");
    EXPECT_EQ(c.pasta, "/srv/orb");
    EXPECT_EQ(c.compartilhamento, "ORB");
    EXPECT_EQ(c.usuario, "ORB");  // not on the form: kept from the file
    EXPECT_EQ(c.senha, "segredo");
    QFile anterior(dir.filePath("ORBManager_Anterior.ini"));
    ASSERT_TRUE(anterior.open(QIODevice::ReadOnly));
    EXPECT_EQ(anterior.readAll(), antes);
}

TEST(TConfig, TestarConexaoTellsTheOutcome)
{
    teste::BancoTemporario bt;  // its file is ORBManager.fdb, as the settings expect
    QTemporaryDir programa, vazia;
    const QString pastaBanco = QFileInfo(bt.caminho()).absolutePath();
    QString erroEsperado;
    try {
        db::Banco::abrir({QDir(vazia.path()).filePath("ORBManager.fdb")});
    } catch (const db::ErroBanco &e) {
        erroEsperado = e.mensagem();
    }
    ASSERT_FALSE(erroEsperado.isEmpty());

    struct { QString pasta, aviso; } casos[] = {
        {pastaBanco, "Conexão efetuada com sucesso!"},
        {vazia.path(), erroEsperado},
    };
    for (const auto &c : casos) {
        MensageiroTeste msg;
        TConfig dlg(programa.path());
        dlg.pasta()->setText(c.pasta);
        dlg.findChild<QPushButton *>("BtTestar")->click();
        EXPECT_EQ(msg.avisos, QStringList{c.aviso}) << c.pasta.toStdString();
        EXPECT_FALSE(QFile::exists(QDir(programa.path()).filePath("ORBManager.ini")));  // testing saves nothing
    }
}

} // namespace
