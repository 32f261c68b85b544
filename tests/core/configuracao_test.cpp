#include "Configuracao.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QSettings>
#include <QTemporaryDir>
#include <stdexcept>

using orb::Configuracao;

namespace {

std::string s(const QString &q) { return q.toStdString(); }

QByteArray conteudo(const QString &arquivo)
{
    QFile f(arquivo);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray("<sem arquivo>");
}

void escrever(const QString &arquivo, const QByteArray &bytes)
{
    QFile f(arquivo);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    f.write(bytes);
}

Configuracao config(const char *nome, const char *porta, const char *pasta)
{
    Configuracao c;
    c.nome = QString::fromUtf8(nome);
    c.porta = QString::fromUtf8(porta);
    c.pasta = QString::fromUtf8(pasta);
    return c;
}

} // namespace

TEST(Configuracao, NomeDoBanco)
{
    struct { const char *nome, *porta, *pasta, *esperado; } casos[] = {
        {"servidor", "3050", "/dados", "servidor/3050:/dados/ORBManager.fdb"},
        {"servidor", "", "D:\\ORB\\Dados", "servidor:D:\\ORB\\Dados\\ORBManager.fdb"},
        {"servidor", "3051", "/dados/", "servidor/3051:/dados/ORBManager.fdb"},
        {"servidor", "", "D:\\ORB\\", "servidor:D:\\ORB\\ORBManager.fdb"},
        {"servidor", "", "D:", "servidor:D:\\ORBManager.fdb"},
        // Local: the program's folder, or Path taken from it.
        {"", "3050", "", "/opt/orb/ORBManager.fdb"},
        {" . ", "", "", "/opt/orb/ORBManager.fdb"},
        {".", "", "/srv/dados/", "/srv/dados/ORBManager.fdb"},
        {"", "", "dados", "/opt/orb/dados/ORBManager.fdb"},
    };
    for (const auto &c : casos) {
        SCOPED_TRACE(std::string(c.nome) + " | " + c.porta + " | " + c.pasta);
        EXPECT_EQ(s(orb::nomeBanco(config(c.nome, c.porta, c.pasta), "/opt/orb")), c.esperado);
    }
}

TEST(Configuracao, SemArquivoEhBancoLocal)
{
    QTemporaryDir dir;
    const Configuracao c = orb::lerConfiguracao(dir.path());
    EXPECT_EQ(c, Configuracao{});
    EXPECT_TRUE(orb::bancoLocal(c));
    EXPECT_EQ(s(orb::nomeBanco(c, dir.path())), s(dir.path() + "/ORBManager.fdb"));
}

TEST(Configuracao, GravaELeDeVolta)
{
    Configuracao windows = config("servidor", "3050", "D:\\ORB\\Dados");
    windows.compartilhamento = "\\\\servidor\\orb";
    Configuracao senha = config("srv", "", "/dados");
    senha.usuario = "ORB";
    senha.senha = "a;b,c\"d\\e";
    const Configuracao casos[] = {Configuracao{}, windows, senha};

    for (const Configuracao &c : casos) {
        SCOPED_TRACE(s(c.nome + c.pasta + c.senha));
        QTemporaryDir dir;
        orb::gravarConfiguracao(dir.path(), c);
        EXPECT_EQ(orb::lerConfiguracao(dir.path()), c);
    }
}

TEST(Configuracao, RegravarGuardaOAnterior)
{
    QTemporaryDir dir;
    const QString ini = dir.filePath("ORBManager.ini");
    const QString anterior = dir.filePath("ORBManager_Anterior.ini");

    orb::gravarConfiguracao(dir.path(), config("primeiro", "3050", "/a"));
    EXPECT_FALSE(QFile::exists(anterior));
    const QByteArray primeiro = conteudo(ini);

    orb::gravarConfiguracao(dir.path(), config("segundo", "", "/b"));
    EXPECT_EQ(conteudo(anterior), primeiro);
    const QByteArray segundo = conteudo(ini);
    EXPECT_NE(segundo, primeiro);

    // An older copy gives way to the file just replaced.
    orb::gravarConfiguracao(dir.path(), config("terceiro", "", "/c"));
    EXPECT_EQ(conteudo(anterior), segundo);
    EXPECT_EQ(s(orb::lerConfiguracao(dir.path()).nome), "terceiro");
}

TEST(Configuracao, ArquivoEscritoAMao)
{
    // Files typed by hand or left by older installations: single backslashes, ';' and ','
    // unquoted, ANSI accents.
    struct { QByteArray linha; const char *chave; const char *esperado; } casos[] = {
        {"Path=D:\\ORB\\Dados", "Path", "D:\\ORB\\Dados"},
        {"Share=\\\\servidor\\orb", "Share", "\\\\servidor\\orb"},
        {"Password=ab;cd", "Password", "ab;cd"},
        {"Path=C:\\Usu\xe1rios\\ORB", "Path", "C:\\Usu\xc3\xa1rios\\ORB"},
        {"Path = \"/dados\" ", "Path", "/dados"},
        {"User=", "User", "SYSDBA"},
    };
    for (const auto &c : casos) {
        SCOPED_TRACE(c.linha.toStdString());
        QTemporaryDir dir;
        escrever(dir.filePath("ORBManager.ini"),
                 "[Outra]\r\nPath=x\r\n[Server]\r\nName=servidor\r\n" + c.linha + "\r\n");
        const Configuracao lida = orb::lerConfiguracao(dir.path());
        EXPECT_EQ(s(lida.nome), "servidor");
        const QString valor = c.chave == std::string("Path")       ? lida.pasta
                              : c.chave == std::string("Share")    ? lida.compartilhamento
                              : c.chave == std::string("Password") ? lida.senha
                                                                   : lida.usuario;
        EXPECT_EQ(s(valor), c.esperado);
    }
}

TEST(Configuracao, RegravarArquivoAMaoPreservaOutrasChaves)
{
    QTemporaryDir dir;
    escrever(dir.filePath("ORBManager.ini"),
             "[Server]\r\nName=velho\r\nPath=D:\\ORB\r\nBackup=E:\\copias;diarias\r\n");
    orb::gravarConfiguracao(dir.path(), config("novo", "", "D:\\ORB"));

    EXPECT_EQ(orb::lerConfiguracao(dir.path()), config("novo", "", "D:\\ORB"));
    const QSettings lido(dir.filePath("ORBManager.ini"), QSettings::IniFormat);
    EXPECT_EQ(s(lido.value("Server/Backup").toString()), "E:\\copias;diarias");
    EXPECT_EQ(s(lido.value("Server/Path").toString()), "D:\\ORB");
}

TEST(Configuracao, FalhaAoGravarAvisa)
{
    QTemporaryDir dir;
    // The "program folder" is a file: nothing can be written inside it.
    const QString arquivo = dir.filePath("programa");
    escrever(arquivo, "x");
    EXPECT_THROW(orb::gravarConfiguracao(arquivo, config("servidor", "", "/dados")),
                 std::runtime_error);
}
