#include "Configuracao.h"
#include "apoio/BancoTeste.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QSettings>
#include <QTemporaryDir>
#include <stdexcept>

using orb::Configuracao;

namespace {

QByteArray conteudo(const QString &arquivo)
{
    QFile f(arquivo);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray("<sem arquivo>");
}

void escrever(const QString &arquivo, const QByteArray &bytes)
{
    QFile f(arquivo);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly) && f.write(bytes) == bytes.size());
}

} // namespace

TEST(Configuracao, NomeDoBanco)
{
    struct { Configuracao c; const char *esperado; } casos[] = {
        {{"servidor", "3050", "/dados"}, "servidor/3050:/dados/ORBManager.fdb"},
        {{"servidor", "", "D:\\ORB\\Dados"}, "servidor:D:\\ORB\\Dados\\ORBManager.fdb"},
        {{"servidor", "3051", "/dados/"}, "servidor/3051:/dados/ORBManager.fdb"},
        {{"servidor", "", "D:\\ORB\\"}, "servidor:D:\\ORB\\ORBManager.fdb"},
        {{"servidor", "", "D:"}, "servidor:D:\\ORBManager.fdb"},
        // Local: the program's folder, or Path taken from it; a port means nothing there.
        {{}, "/opt/orb/ORBManager.fdb"},
        {{" . ", "", "/srv/dados/"}, "/srv/dados/ORBManager.fdb"},
        {{"", "3050", "dados"}, "/opt/orb/dados/ORBManager.fdb"},
    };
    for (const auto &c : casos) EXPECT_EQ(orb::nomeBanco(c.c, "/opt/orb"), c.esperado);
}

TEST(Configuracao, GravaELeDeVolta)
{
    const Configuracao casos[] = {
        {}, {"servidor", "3050", "D:\\ORB\\Dados", "\\\\servidor\\orb"}, {"srv", "", "/dados", "", "ORB", "a;b,c\"d\\e"}};
    for (const Configuracao &c : casos) {
        QTemporaryDir dir;
        EXPECT_EQ(orb::lerConfiguracao(dir.path()), Configuracao{});  // no file yet: the local database
        orb::gravarConfiguracao(dir.path(), c);
        EXPECT_EQ(orb::lerConfiguracao(dir.path()), c) << (c.nome + c.pasta + c.senha).toStdString();
    }
}

TEST(Configuracao, RegravarGuardaOAnterior)
{
    QTemporaryDir dir;
    const QString anterior = dir.filePath("ORBManager_Anterior.ini");
    QByteArray antes = "<sem arquivo>";
    // An older copy gives way to the file just replaced.
    for (const char *nome : {"primeiro", "segundo", "terceiro"}) {
        orb::gravarConfiguracao(dir.path(), {nome, "", "/dados"});
        EXPECT_EQ(conteudo(anterior), antes) << nome;
        antes = conteudo(dir.filePath("ORBManager.ini"));
    }
    EXPECT_EQ(orb::lerConfiguracao(dir.path()).nome, "terceiro");
}

TEST(Configuracao, ArquivoEscritoAMaoLidoERegravado)
{
    // Files typed by hand or left by older installations: single backslashes, ';' and ','
    // unquoted, ANSI accents. Rewritten, every value stays as meant, unknown keys included.
    struct { QByteArray linha; QString Configuracao::*campo; const char *esperado; } casos[] = {
        {"Path=D:\\ORB\\Dados", &Configuracao::pasta, "D:\\ORB\\Dados"},
        {"Share=\\\\servidor\\orb", &Configuracao::compartilhamento, "\\\\servidor\\orb"},
        {"Password=ab;cd", &Configuracao::senha, "ab;cd"},
        {"Path=C:\\Usu\xe1rios\\ORB", &Configuracao::pasta, "C:\\Usu\xc3\xa1rios\\ORB"},
        {"Path = \"/dados\" ", &Configuracao::pasta, "/dados"},
        {"User=", &Configuracao::usuario, "SYSDBA"},
    };
    for (const auto &c : casos) {
        SCOPED_TRACE(c.linha.toStdString());
        QTemporaryDir dir;
        escrever(dir.filePath("ORBManager.ini"),
                 "[Outra]\r\nPath=x\r\n[Server]\r\nName=servidor\r\nBackup=E:\\copias;diarias\r\n" + c.linha + "\r\n");
        Configuracao lida = orb::lerConfiguracao(dir.path());
        EXPECT_EQ(lida.nome, "servidor");
        EXPECT_EQ(lida.*c.campo, c.esperado);
        lida.nome = "novo";
        orb::gravarConfiguracao(dir.path(), lida);
        EXPECT_EQ(orb::lerConfiguracao(dir.path()), lida);
        EXPECT_EQ(QSettings(dir.filePath("ORBManager.ini"), QSettings::IniFormat).value("Server/Backup").toString(), "E:\\copias;diarias");
    }
}

TEST(Configuracao, FalhaAoGravarAvisa)
{
    QTemporaryDir dir;
    // The "program folder" is a file: nothing can be written inside it.
    escrever(dir.filePath("programa"), "x");
    EXPECT_THROW(orb::gravarConfiguracao(dir.filePath("programa"), {"servidor", "", "/dados"}), std::runtime_error);
}
