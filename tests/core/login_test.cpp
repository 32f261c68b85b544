// Logging in: refusals and the session's values, the first password's change, the slower pace
// after failures, the login dialog driven by keys, and the database settings dialog.

#include "Configuracao.h"
#include "acesso/TLogin.h"
#include "apoio/BancoTeste.h"
#include "principal/TConfig.h"
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

void digitar(QWidget *campo, const QString &texto)
{
    QTest::keyClicks(campo, texto);
    QTest::keyClick(campo, Qt::Key_Return);
}

// "field: text" of the refusal `f` raises; empty when it goes through.
QString recusa(const std::function<void()> &f)
{
    try {
        f();
    } catch (const Recusa &r) {
        return r.campo + ": " + r.texto;
    }
    return {};
}

TEST(LoginMD5, UpperHexOverTheSingleByteText)
{
    // One byte per letter, not UTF-8's two; € is 0x80 in WIN1252, not Latin-1's '?'.
    EXPECT_EQ(MD5("Ação€"), "8257A661AD5F942EB272EEEED6EDFD26");
}

struct Login : ::testing::Test {
    teste::BancoTemporario bt;
    MensageiroTeste msg;
    db::Transacao t{bt.banco()};

    QVariant sql(const QString &s, const std::map<QString, QVariant> &p = {}) { return db::escalar(t, s, p); }
    int idAdmin() { return sql("select Id from TbCad where Usuario = 'ADMIN'").toInt(); }
    QString senhaAdmin() { return sql("select Senha from TbCad where Usuario = 'ADMIN'").toString(); }
    int novoNivel() { return sql("insert into TbNiveis (Nivel, Descricao) values (100, 'BALCÃO') returning Id").toInt(); }
    int novoUsuario(const QString &usuario, const QString &us, const QString &senha, const QVariant &idNivel,
                    const QString &apelido = {}, const QString &tipo = "U")
    {
        return sql("insert into TbCad (Usuario, Us, Senha, IdNivel, Apelido, TipoUsuario) values (:U, :US, :S, :N, :A, :T) "
                   "returning Id", {{"U", usuario}, {"US", us}, {"S", senha}, {"N", idNivel}, {"A", apelido}, {"T", tipo}}).toInt();
    }
};

TEST_F(Login, RefusalsNameTheMessageAndTheField)
{
    novoUsuario("SEMNIVEL", "S", MD5("x"), QVariant());
    novoUsuario("NIVELSUMIU", "S", MD5("x"), 987654);  // its level was deleted
    novoUsuario("ANTIGO", "N", MD5("x"), novoNivel());  // no longer a user of the system
    struct { const char *usuario, *senha; QString campo, texto; } casos[] = {
        {"FULANO", "x", "usuario", kUsuarioNaoCadastrado}, {"ANTIGO", "x", "usuario", kUsuarioNaoCadastrado},
        {"admin", "ADMIN", "senha", kSenhaInvalida},      // passwords keep their case
        {"admin", "admin ", "senha", kSenhaInvalida},     // and their spaces
        {"semnivel", "errada", "senha", kSenhaInvalida},  // the level is not told to a wrong password
        {"semnivel", "x", "usuario", kSemAcesso},          {"NivelSumiu", "x", "usuario", kSemAcesso},
    };
    for (const auto &c : casos)
        EXPECT_EQ(recusa([&] { autenticar(t, c.usuario, c.senha); }), c.campo + ": " + c.texto) << c.usuario << " / " << c.senha;
}

TEST_F(Login, SuccessGivesTheUsersValues)
{
    const int balcao = novoNivel();
    const int nivelAdmin = sql("select Id from TbNiveis where Nivel = 999").toInt();
    // Rows of an older installation: hash in lower case, name typed in mixed case; CAIXA still on the first password.
    const int maria = novoUsuario("Maria", "S", MD5("ação").toLower(), balcao, "Mariazinha", "U");
    const int caixa = novoUsuario("CAIXA", "S", kHashInicial.toLower(), balcao, "Caixa", "S");
    struct { const char *usuario, *senha; int id; QString nome, apelido, tipo; int idNivel, nivel; bool trocar; } casos[] = {
        {" admin ", "admin", idAdmin(), "ADMIN", "ADMIN", "D", nivelAdmin, 999, true},
        {"maria", "ação", maria, "Maria", "Mariazinha", "U", balcao, 100, false},
        {"caixa", "admin", caixa, "CAIXA", "Caixa", "S", balcao, 100, true},
    };
    for (const auto &c : casos) {
        SCOPED_TRACE(c.usuario);
        const ResultadoLogin r = autenticar(t, c.usuario, c.senha);
        const Sessao &s = r.sessao;
        EXPECT_EQ(QStringList({s.usuario, s.apelido, s.tipoUsuario}), QStringList({c.nome, c.apelido, c.tipo}));
        EXPECT_EQ(QList<int>({s.idUsuario, s.idNivel, s.nivel}), QList<int>({c.id, c.idNivel, c.nivel}));
        EXPECT_EQ(r.precisaTrocarSenha, c.trocar);
    }
}

TEST_F(Login, TrocaSenhaRefusesOrTheNewPasswordLogsIn)
{
    struct { QString nova, confirmacao, campo, texto; } casos[] = {
        {"", "abc", "nova", kDigiteNovaSenha},  // an empty one is told before a mismatch
        {"abc", "ABC", "confirmacao", kConfirmacaoNaoConfere},
        {"12345678901", "12345678901", "nova", kSenhaLonga},
        {"admin", "admin", "nova", kSenhaIgualInicial},
    };
    for (const auto &c : casos) {
        EXPECT_EQ(recusa([&] { trocarSenha(t, idAdmin(), c.nova, c.confirmacao); }), c.campo + ": " + c.texto);
        EXPECT_EQ(senhaAdmin(), kHashInicial);
    }
    // Removed meanwhile by another workstation.
    EXPECT_EQ(recusa([&] { trocarSenha(t, 999999, "nova1", "nova1"); }), ": " + kUsuarioNaoCadastrado);

    for (const QString nova : {"1234567890", "Admin"}) {  // the longest allowed; the initial one in other case
        trocarSenha(t, idAdmin(), nova, nova);
        EXPECT_EQ(senhaAdmin(), MD5(nova));
        EXPECT_FALSE(autenticar(t, "admin", nova).precisaTrocarSenha);
        EXPECT_THROW(autenticar(t, "admin", "admin"), Recusa);
    }
}

TEST(Tentativas, DelayByFailuresInARowCountedFromTheLastOne)
{
    const int esperado[] = {0, 0, 0, 0, 2, 4, 8, 16, 30, 30, 30};  // index = failures so far
    for (int n = 0; n < int(std::size(esperado)); ++n) EXPECT_EQ(Tentativas::atraso(n), esperado[n]) << n << " falhas";

    const QDateTime t0(QDate(2026, 11, 23), QTime(10, 0), Qt::UTC);
    Tentativas t;
    for (int i = 0; i < 9; ++i) t.falhou(t0.addSecs(-600));
    t.acertou();
    EXPECT_EQ(t.falhas(), 0);
    for (int i = 0; i < 4; ++i) t.falhou(t0.addSecs(-60 + i));  // a fresh count; the wait runs from the last failure
    t.falhou(t0);  // the fifth: 4 seconds
    struct { qint64 ms; int espera; } casos[] = {{0, 4}, {1, 4}, {1000, 3}, {3999, 1}, {4000, 0}};
    for (const auto &c : casos) EXPECT_EQ(t.espera(t0.addMSecs(c.ms)), c.espera) << c.ms << " ms";
}

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

    digitar(dlg.usuario(), "admin");
    EXPECT_EQ(dlg.focusWidget(), dlg.senha());
    EXPECT_TRUE(msg.avisos.isEmpty());  // Enter on the name only moves on
    digitar(dlg.senha(), "errada");
    EXPECT_EQ(msg.avisos, QStringList{kSenhaInvalida});
    EXPECT_TRUE(dlg.senha()->text().isEmpty());
    EXPECT_EQ(dlg.focusWidget(), dlg.senha());

    // Three more: the fourth failure makes the next attempt wait.
    for (int i = 0; i < 3; ++i) digitar(dlg.senha(), "errada");
    EXPECT_FALSE(dlg.entrar()->isEnabled());
    EXPECT_EQ(dlg.aviso()->text(), "Aguarde 2 segundos para tentar novamente.");
    digitar(dlg.senha(), "admin");
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
        digitar(troca.nova(), "balcao1");
        EXPECT_EQ(troca.focusWidget(), troca.confirmacao());
        digitar(troca.confirmacao(), "balcao2");
        avisosNaTroca = msg.avisos.mid(4);
        EXPECT_TRUE(troca.isVisible());
        EXPECT_TRUE(troca.confirmacao()->text().isEmpty());
        digitar(troca.confirmacao(), "balcao1");
    });
    digitar(dlg.senha(), "admin");
    EXPECT_EQ(avisosNaTroca, QStringList{kConfirmacaoNaoConfere});
    EXPECT_EQ(dlg.result(), QDialog::Accepted);
    EXPECT_EQ(QStringList({sessao().usuario, sessao().tipoUsuario}), QStringList({"ADMIN", "D"}));
    EXPECT_EQ(sessao().nivel, 999);
    db::Transacao t(bt.banco());
    EXPECT_EQ(db::escalar(t, "select Senha from TbCad where Usuario = 'ADMIN'").toString(), MD5("balcao1"));
}

// Shows the file, tests a connection without writing anything, then saves what was typed.
TEST(TConfig, ByKeysTestsTheConnectionThenSaves)
{
    teste::BancoTemporario bt;  // its file is ORBManager.fdb, as the settings expect
    MensageiroTeste msg;
    QTemporaryDir dir, vazia;
    QString erroEsperado;
    try {
        db::Banco::abrir({QDir(vazia.path()).filePath("ORBManager.fdb")});
    } catch (const db::ErroBanco &e) {
        erroEsperado = e.mensagem();
    }
    ASSERT_FALSE(erroEsperado.isEmpty());
    const QByteArray antes = "[Server]\nName=velho\nPort=3050\nPath=/dados\nUser=ORB\nPassword=segredo\n";
    QFile ini(dir.filePath("ORBManager.ini"));
    ASSERT_TRUE(ini.open(QIODevice::WriteOnly) && ini.write(antes) == antes.size());
    ini.close();
    TConfig dlg(dir.path());
    EXPECT_EQ(dlg.windowTitle(), "ORB Manager - Configuração do Banco de Dados");
    EXPECT_EQ(QStringList({dlg.servidor()->text(), dlg.porta()->text(), dlg.pasta()->text()}), QStringList({"velho", "3050", "/dados"}));

    dlg.show();
    for (QLineEdit *e : {dlg.servidor(), dlg.porta(), dlg.pasta(), dlg.compartilhamento()}) e->clear();
    for (const QString &pasta : {vazia.path(), QFileInfo(bt.caminho()).absolutePath()}) {  // no server name: local
        dlg.pasta()->setText(pasta);
        dlg.findChild<QPushButton *>("BtTestar")->click();
    }
    EXPECT_EQ(msg.avisos, QStringList({erroEsperado, "Conexão efetuada com sucesso!"}));
    EXPECT_EQ(lerConfiguracao(dir.path()).nome, "velho");  // testing saves nothing

    msg.avisos.clear();
    dlg.pasta()->clear();
    digitar(dlg.servidor(), "servidor01");
    EXPECT_EQ(dlg.focusWidget(), dlg.porta());
    QTest::keyClicks(dlg.porta(), "3051");
    QTest::keyClicks(dlg.pasta(), "/srv/orb");
    QTest::keyClicks(dlg.compartilhamento(), "ORB");
    dlg.findChild<QPushButton *>("BtSalvar")->click();
    EXPECT_EQ(dlg.result(), QDialog::Accepted);
    EXPECT_TRUE(msg.avisos.isEmpty()) << msg.avisos.join(" | ").toStdString();
    // User and password are not on the form: kept from the file.
    EXPECT_EQ(lerConfiguracao(dir.path()), (Configuracao{"servidor01", "3051", "/srv/orb", "ORB", "ORB", "segredo"}));
}

} // namespace
