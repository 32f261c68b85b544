// The tests' own Firebird server: a client creates and attaches databases
// through it, and it leaves nothing behind when stopped.

#include "apoio/ServidorFirebird.h"

#include <QElapsedTimer>
#include <QFileInfo>
#include <QProcess>

#include <gtest/gtest.h>

#include <iostream>
#include <memory>

#include <signal.h>

namespace {

using teste::ServidorFirebird;

#define PULAR_SEM_SERVIDOR()                                                      \
  do {                                                                            \
    if (!ServidorFirebird::disponivel())                                          \
      GTEST_SKIP() << ServidorFirebird::motivoIndisponivel().toStdString();       \
  } while (0)

std::unique_ptr<ServidorFirebird> iniciarMedindo() {
  QElapsedTimer t;
  t.start();
  auto s = std::make_unique<ServidorFirebird>();
  std::cout << "[ servidor ] porta " << s->porta() << ", pronto em " << t.elapsed() << " ms\n";
  return s;
}

QString conectar(const ServidorFirebird &s, const QString &arquivo) {
  return QStringLiteral("connect '%1' user '%2' password '%3';\n")
      .arg(s.endereco(arquivo), s.usuario(), s.senha());
}

TEST(ServidorFirebird, CriaBancoEAceitaDuasConexoesSimultaneas) {
  PULAR_SEM_SERVIDOR();
  const auto servidor = iniciarMedindo();

  int codigo = -1;
  QString saida = servidor->isql(
      QStringLiteral("create database '%1' user '%2' password '%3' default character set WIN1252;\n"
                     "create table cliente (id integer not null primary key, nome varchar(40));\n"
                     "commit;\n"
                     "insert into cliente values (1, 'Padaria Pao Quente');\n"
                     "commit;\n")
          .arg(servidor->endereco(QStringLiteral("loja.fdb")), servidor->usuario(), servidor->senha()),
      &codigo);
  ASSERT_EQ(codigo, 0) << saida.toStdString();
  EXPECT_TRUE(QFileInfo::exists(servidor->pasta() + QStringLiteral("/loja.fdb")));

  saida = servidor->isql(conectar(*servidor, QStringLiteral("loja.fdb")) +
                             QStringLiteral("select rdb$character_set_name from rdb$database;\n"
                                            "select nome from cliente;\n"),
                         &codigo);
  ASSERT_EQ(codigo, 0) << saida.toStdString();
  EXPECT_TRUE(saida.contains(QStringLiteral("WIN1252"))) << saida.toStdString();
  EXPECT_TRUE(saida.contains(QStringLiteral("Padaria Pao Quente"))) << saida.toStdString();

  // First client stays attached while the second one looks at the monitor tables.
  QProcess primeira;
  primeira.setProcessChannelMode(QProcess::MergedChannels);
  primeira.start(QStringLiteral("/usr/bin/isql-fb"),
                 {QStringLiteral("-q"), QStringLiteral("-user"), servidor->usuario(),
                  QStringLiteral("-password"), servidor->senha(),
                  servidor->endereco(QStringLiteral("loja.fdb"))});
  ASSERT_TRUE(primeira.waitForStarted(5000));
  primeira.write("select 'conectada' as estado from rdb$database;\n");
  QByteArray saidaPrimeira;
  QElapsedTimer espera;
  espera.start();
  while (!saidaPrimeira.contains("conectada") && espera.elapsed() < 15000) {
    primeira.waitForReadyRead(200);
    saidaPrimeira += primeira.readAll();
  }
  ASSERT_TRUE(saidaPrimeira.contains("conectada")) << saidaPrimeira.toStdString();

  saida = servidor->isql(conectar(*servidor, QStringLiteral("loja.fdb")) +
                             QStringLiteral("select 'anexos=' || count(*) from mon$attachments "
                                            "where mon$remote_protocol is not null;\n"),
                         &codigo);
  ASSERT_EQ(codigo, 0) << saida.toStdString();
  EXPECT_TRUE(saida.contains(QStringLiteral("anexos=2"))) << saida.toStdString();

  primeira.write("quit;\n");
  primeira.closeWriteChannel();
  EXPECT_TRUE(primeira.waitForFinished(10000));
  EXPECT_EQ(primeira.exitCode(), 0);

  // Its own security database: only this password opens it.
  saida = servidor->isql(QStringLiteral("connect '%1' user 'SYSDBA' password 'masterkey';\n")
                             .arg(servidor->endereco(QStringLiteral("loja.fdb"))),
                         &codigo);
  EXPECT_NE(codigo, 0);
  EXPECT_TRUE(saida.contains(QStringLiteral("password"))) << saida.toStdString();

  // Databases outside pasta() are refused.
  saida = servidor->isql(QStringLiteral("create database '%1' user '%2' password '%3';\n")
                             .arg(servidor->endereco(QStringLiteral("../fora.fdb")), servidor->usuario(),
                                  servidor->senha()),
                         &codigo);
  EXPECT_NE(codigo, 0) << saida.toStdString();
  EXPECT_TRUE(saida.contains(QStringLiteral("not allowed"))) << saida.toStdString();
}

TEST(ServidorFirebird, AoParar_EncerraOProcessoEApagaAPasta) {
  PULAR_SEM_SERVIDOR();
  auto servidor = iniciarMedindo();
  const qint64 pid = servidor->pid();
  const QString pasta = servidor->pasta();
  const QString endereco = servidor->endereco(QStringLiteral("parada.fdb"));
  ASSERT_GT(pid, 0);

  int codigo = -1;
  const QString saida = servidor->isql(
      QStringLiteral("create database '%1' user '%2' password '%3';\n")
          .arg(endereco, servidor->usuario(), servidor->senha()),
      &codigo);
  ASSERT_EQ(codigo, 0) << saida.toStdString();

  QElapsedTimer t;
  t.start();
  servidor.reset();
  std::cout << "[ servidor ] parado em " << t.elapsed() << " ms\n";

  EXPECT_NE(::kill(static_cast<pid_t>(pid), 0), 0) << "o processo do servidor ainda existe";
  EXPECT_FALSE(QFileInfo::exists(pasta));
}

}  // namespace
