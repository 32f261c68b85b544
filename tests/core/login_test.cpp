// Logging in: refusals and the session's values, password storage and changes, the slower pace
// after failures, the login dialog driven by keys, and the database settings dialog.

#include "Configuracao.h"
#include "acesso/TLogin.h"
#include "acesso/Usuarios.h"
#include "dados/Tabs.h"
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

// Every statement commits: the login routine reads and writes in transactions of its own.
struct Login : ::testing::Test {
    teste::BancoTemporario bt;
    MensageiroTeste msg;
    const QDateTime agora{QDate(2026, 11, 23), QTime(10, 0), Qt::UTC};

    void TearDown() override { definirGravarMD5(false); }
    QVariant sql(const QString &s, const std::map<QString, QVariant> &p = {})
    {
        db::Transacao t(bt.banco());
        const QVariant v = db::escalar(t, s, p);
        t.commit();
        return v;
    }
    template <class F> void emTransacao(F &&f)
    {
        db::Transacao t(bt.banco());
        f(t);
        t.commit();
    }
    ResultadoLogin entrar(const QString &usuario, const QString &senha, const QDateTime &quando = {})
    {
        return autenticar(bt.banco(), usuario, senha, quando.isValid() ? quando : agora);
    }
    int idAdmin() { return sql("select Id from TbCad where Usuario = 'ADMIN'").toInt(); }
    QVariant coluna(int id, const QString &c) { return sql("select " + c + " from TbCad where Id = :ID", {{"ID", id}}); }
    int novoNivel() { return sql("insert into TbNiveis (Nivel, Descricao) values (100, 'BALCÃO') returning Id").toInt(); }
    int novoUsuario(const QString &usuario, const QString &us, const QString &senha, const QVariant &idNivel,
                    const QString &apelido = {}, const QString &tipo = "U")
    {
        return sql("insert into TbCad (Usuario, Us, Senha, IdNivel, Apelido, TipoUsuario) values (:U, :US, :S, :N, :A, :T) "
                   "returning Id", {{"U", usuario}, {"US", us}, {"S", senha}, {"N", idNivel}, {"A", apelido}, {"T", tipo}}).toInt();
    }
    static Sessao sessaoDe(int id, const QString &tipo) { return Sessao{id, {}, {}, tipo}; }
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
        EXPECT_EQ(recusa([&] { entrar(c.usuario, c.senha); }), c.campo + ": " + c.texto) << c.usuario << " / " << c.senha;
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
        for (int vez = 0; vez < 2; ++vez) {  // from the old digest, then from the hash that replaced it
            const ResultadoLogin r = entrar(c.usuario, c.senha);
            const Sessao &s = r.sessao;
            EXPECT_EQ(QStringList({s.usuario, s.apelido, s.tipoUsuario}), QStringList({c.nome, c.apelido, c.tipo}));
            EXPECT_EQ(QList<int>({s.idUsuario, s.idNivel, s.nivel}), QList<int>({c.id, c.idNivel, c.nivel}));
            EXPECT_EQ(r.precisaTrocarSenha, c.trocar);
        }
    }
}

// An older database's MD5 logs in as before and is replaced by a salted Argon2id at once; the setting
// keeps the MD5 written as well for another program on the same database.
TEST_F(Login, Md5IsReplacedByTheStrongHashOnLogin)
{
    const int nivel = novoNivel();
    for (const bool manterMD5 : {false, true}) {
        SCOPED_TRACE(manterMD5);
        definirGravarMD5(manterMD5);
        const QString nome = manterMD5 ? "MISTO" : "NOVO";
        const int id = novoUsuario(nome, "S", MD5("segredo1"), nivel);
        EXPECT_THROW(entrar(nome, "segredo2"), Recusa);
        EXPECT_EQ(coluna(id, "SENHA").toString(), MD5("segredo1"));  // a wrong password changes nothing
        EXPECT_TRUE(coluna(id, "SENHAHASH").isNull());

        entrar(nome, "segredo1");
        const QString hash = coluna(id, "SENHAHASH").toString();
        EXPECT_TRUE(hash.startsWith("$argon2id$")) << hash.toStdString();
        EXPECT_EQ(coluna(id, "SENHA"), manterMD5 ? QVariant(MD5("segredo1")) : QVariant());
        EXPECT_EQ(entrar(nome, "segredo1").sessao.idUsuario, id);
        EXPECT_EQ(coluna(id, "SENHAHASH").toString(), hash);  // a current hash is not rewritten
        EXPECT_EQ(recusa([&] { entrar(nome, "segredo2"); }), "senha: " + kSenhaInvalida);
    }
}

TEST_F(Login, EqualPasswordsAreStoredDifferently)
{
    const int nivel = novoNivel();
    const Sessao admin = sessaoDe(idAdmin(), "D");
    int ids[2];
    emTransacao([&](db::Transacao &t) {
        for (int i = 0; i < 2; ++i) ids[i] = salvarUsuario(t, {0, QString("IGUAL%1").arg(i), "Igual", {}, "mesma123", "U", nivel}, admin);
    });
    EXPECT_NE(coluna(ids[0], "SENHAHASH").toString(), coluna(ids[1], "SENHAHASH").toString());
    for (const int id : ids) {
        EXPECT_TRUE(coluna(id, "SENHA").isNull());
        EXPECT_TRUE(conferirSenha("mesma123", coluna(id, "SENHAHASH").toString(), {}));
    }
}

TEST_F(Login, ChangeRefusesOrTheNewPasswordLogsIn)
{
    struct { QString nova, confirmacao, campo, texto; } casos[] = {
        {"", "abc", "nova", kDigiteNovaSenha},  // an empty one is told before a mismatch
        {"abc", "ABC", "confirmacao", kConfirmacaoNaoConfere},
        {"12345678901", "12345678901", "nova", kSenhaLonga},
        {"12345", "12345", "nova", kSenhaCurta},
        {"admin", "admin", "nova", kSenhaIgualInicial},
    };
    for (const auto &c : casos) {
        emTransacao([&](db::Transacao &t) {
            EXPECT_EQ(recusa([&] { trocarSenha(t, idAdmin(), c.nova, c.confirmacao); }), c.campo + ": " + c.texto);
        });
        EXPECT_EQ(coluna(idAdmin(), "SENHA").toString(), kHashInicial);
    }
    // Removed meanwhile by another workstation.
    emTransacao([&](db::Transacao &t) {
        EXPECT_EQ(recusa([&] { trocarSenha(t, 999999, "nova12", "nova12"); }), ": " + kUsuarioNaoCadastrado);
    });

    for (const QString nova : {"1234567890", "123456"}) {  // the longest and the shortest allowed
        emTransacao([&](db::Transacao &t) { trocarSenha(t, idAdmin(), nova, nova); });
        EXPECT_TRUE(coluna(idAdmin(), "SENHA").isNull());
        EXPECT_FALSE(entrar("admin", nova).precisaTrocarSenha);
        EXPECT_THROW(entrar("admin", "admin"), Recusa);
    }
}

// A password someone else set (a new user, an administrator's reset) is the user's to change at the
// next login; one they chose themselves is not.
TEST_F(Login, PasswordSetByAnotherMustBeChanged)
{
    // A manager's level, so that the user may save their own record on the users screen.
    const int nivel = sql("insert into TbNiveis (Nivel, Descricao) values (900, 'GERÊNCIA') returning Id").toInt();
    const Sessao admin = sessaoDe(idAdmin(), "D");
    int id = 0;
    auto salvar = [&](const Sessao &quem, const QString &senha) {
        emTransacao([&](db::Transacao &t) { id = salvarUsuario(t, {id, "BALCAO", "Balcão", {}, senha, "U", nivel}, quem); });
    };
    EXPECT_EQ(recusa([&] { salvar(admin, "abc"); }), "senha: " + kSenhaCurta);
    EXPECT_EQ(id, 0);
    struct { const char *passo; std::function<void()> fazer; QString senha; bool trocar; } passos[] = {
        {"novo usuário", [&] { salvar(admin, "inicial1"); }, "inicial1", true},
        {"ele troca", [&] { emTransacao([&](db::Transacao &t) { trocarSenha(t, id, "minha123", "minha123"); }); }, "minha123", false},
        {"o administrador redefine", [&] { salvar(admin, "reset123"); }, "reset123", true},
        {"ele mesmo no cadastro", [&] { salvar(sessaoDe(id, "U"), "outra123"); }, "outra123", false},
        {"outro nome, mesma senha", [&] { salvar(admin, {}); }, "outra123", false},  // empty keeps it
    };
    for (const auto &p : passos) {
        SCOPED_TRACE(p.passo);
        p.fazer();
        EXPECT_EQ(entrar("balcao", p.senha).precisaTrocarSenha, p.trocar);
    }
}

// The slow-down lives in the database: it holds across separate calls (two dialogs, two workstations)
// for the same name, not for another, and an early attempt is refused without looking at the password.
TEST_F(Login, DelayCountsPerNameAcrossCalls)
{
    const int esperado[] = {0, 0, 0, 0, 2, 4, 8, 16, 30, 30, 30};  // index = failures so far
    for (int n = 0; n < int(std::size(esperado)); ++n) EXPECT_EQ(atrasoLogin(n), esperado[n]) << n << " falhas";

    novoUsuario("MARIA", "S", MD5("maria123"), novoNivel());
    for (int i = 0; i < 3; ++i) EXPECT_EQ(recusa([&] { entrar("admin", "errada", agora.addSecs(-60 + i)); }), "senha: " + kSenhaInvalida);
    EXPECT_EQ(esperaLogin(bt.banco(), "ADMIN", agora), 0);
    EXPECT_THROW(entrar(" Admin", "errada", agora), Recusa);  // the fourth: 2 seconds from now
    struct { qint64 ms; const char *usuario, *senha; QString resultado; } casos[] = {
        {0, "admin", "admin", "senha: Aguarde 2 segundos para tentar novamente."},
        {1500, "ADMIN", "admin", "senha: Aguarde 1 segundo para tentar novamente."},
        {1500, "admin", "errada", "senha: Aguarde 1 segundo para tentar novamente."},  // not counted
        {1500, "maria", "maria123", ""},                                               // another name
        {1999, "admin", "admin", "senha: Aguarde 1 segundo para tentar novamente."},
        {2000, "admin", "errada", "senha: " + kSenhaInvalida},  // the fifth: 4 seconds
        {5999, "admin", "admin", "senha: Aguarde 1 segundo para tentar novamente."},
        {6000, "admin", "admin", ""},
        {6000, "admin", "errada", "senha: " + kSenhaInvalida},  // a fresh count after a success
        {6001, "fulano", "x", "usuario: " + kUsuarioNaoCadastrado},
    };
    for (const auto &c : casos)
        EXPECT_EQ(recusa([&] { entrar(c.usuario, c.senha, agora.addMSecs(c.ms)); }), c.resultado) << c.ms << " " << c.usuario;
    EXPECT_EQ(esperaLogin(bt.banco(), "admin", agora.addMSecs(6000)), 0);
}

// The user record as the activity monitor and the change log see it: no password column.
TEST_F(Login, PasswordColumnsStayOutOfMonitorAndLog)
{
    const int id = novoUsuario("MARIA", "S", MD5("maria123"), novoNivel());
    sql("update TbCad set SenhaWeb = :W, SenhaHash = :H where Id = :ID", {{"W", MD5("web")}, {"H", hashSenha("maria123")}, {"ID", id}});
    db::Transacao t(bt.banco(), db::Modo::Leitura);
    db::Consulta q(t, "select * from TbCad where Id = :ID");
    q.bind("ID", id).executar();
    ASSERT_TRUE(q.proxima());
    Registro r{"select * from TBCAD", {}};
    for (int i = 0; i < q.colunas(); ++i) r.definir(q.nomeColuna(i), q.valor(i));
    r.definir("NOVASENHA", "typed1");
    TTabs tabs;
    const QString json = tabs.TbToJson({r});
    const QString log = TTabs::textoLog(r);
    EXPECT_TRUE(json.contains("\"USUARIO\":\"MARIA\""));
    EXPECT_TRUE(log.contains("USUARIO: MARIA"));
    for (const QString &texto : {json, log}) {
        for (const QString col : {"SENHA", "SENHAWEB", "SENHAHASH", "NOVASENHA"})
            EXPECT_FALSE(texto.contains("\"" + col + "\"") || (" - " + texto).contains(" - " + col + ":")) << col.toStdString();
        for (const QString &segredo : {MD5("maria123"), MD5("web"), QString("$argon2id$"), QString("typed1")})
            EXPECT_FALSE(texto.contains(segredo, Qt::CaseInsensitive)) << segredo.toStdString();
    }
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
    EXPECT_EQ(sessao().usuario, "ADMIN");  // the session's values are Login.SuccessGivesTheUsersValues'
    db::Transacao t(bt.banco());
    EXPECT_TRUE(conferirSenha("balcao1", db::escalar(t, "select SenhaHash from TbCad where Usuario = 'ADMIN'").toString(), {}));
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
