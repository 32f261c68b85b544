#pragma once

#include "db/Banco.h"

#include <QString>

#include <memory>

namespace teste {

// A Firebird 3 server (SuperServer) of the tests' own, listening only on
// 127.0.0.1 on a free port. It has its own configuration, lock folder and
// security database inside a temporary folder, so it never touches the
// installed service nor the embedded engine used by other test processes.
//
// Starting one takes ~0.1-0.3 s (more under disk load); stopping usually
// well under 0.5 s, 1.5 s more when the server ignores SIGTERM and has to be
// killed. Share one per test suite (SetUpTestSuite/TearDownTestSuite) when
// a test needs several databases.
//
// The server is killed by the kernel if the thread that created this object
// dies (PR_SET_PDEATHSIG), so create it on a thread that outlives it — the
// test's main thread.
class ServidorFirebird {
public:
  // Starts the server and waits until it accepts connections.
  // Throws std::runtime_error with a readable message on failure.
  ServidorFirebird();
  // Stops the server (SIGTERM, SIGKILL after 1.5 s) and removes its folder.
  ~ServidorFirebird();

  ServidorFirebird(const ServidorFirebird &) = delete;
  ServidorFirebird &operator=(const ServidorFirebird &) = delete;

  // Stops the server process only, as a crash or a reboot would: the folder, its
  // databases and the port stay, so iniciar() brings the same server back.
  void parar();
  void iniciar();

  int porta() const;

  // The only folder where this server accepts databases.
  QString pasta() const;
  // "127.0.0.1/<port>:<absolute path>"; a relative name is taken inside pasta().
  QString endereco(const QString &arquivo) const;

  QString usuario() const;  // "SYSDBA"
  QString senha() const;    // SYSDBA's password on this server
  // The connection to `arquivo` on this server as SYSDBA; bancoNovo() first creates it as a new
  // installation (schema, upgrade and first records).
  db::Conexao conexao(const QString &arquivo = QStringLiteral("ORBManager.fdb")) const;
  db::Conexao bancoNovo(const QString &arquivo = QStringLiteral("ORBManager.fdb")) const;

  // Whether the server and the tools it needs are installed; when not,
  // motivoIndisponivel() says what is missing (for GTEST_SKIP).
  static bool disponivel();
  static QString motivoIndisponivel();

private:
  struct Dados;
  std::unique_ptr<Dados> d;
};

}  // namespace teste
