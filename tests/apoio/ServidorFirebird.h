#pragma once

#include <QString>

#include <memory>

namespace teste {

// A Firebird 3 server (SuperServer) of the tests' own, listening only on
// 127.0.0.1 on a free port. It has its own configuration, lock folder and
// security database inside a temporary folder, so it never touches the
// installed service nor the embedded engine used by other test processes.
//
// Starting one costs roughly a quarter of a second and stopping it up to two
// seconds (a clean shutdown), so share one per test suite where possible
// (SetUpTestSuite/TearDownTestSuite).
//
// The server is killed by the kernel if the thread that created this object
// dies (PR_SET_PDEATHSIG), so create it on a thread that outlives it — the
// test's main thread.
class ServidorFirebird {
public:
  // Starts the server and waits until it accepts connections.
  // Throws std::runtime_error with a readable message on failure.
  ServidorFirebird();
  // Stops the server (SIGTERM, then SIGKILL) and removes its temporary folder.
  ~ServidorFirebird();

  ServidorFirebird(const ServidorFirebird &) = delete;
  ServidorFirebird &operator=(const ServidorFirebird &) = delete;

  int porta() const;
  qint64 pid() const;

  // The only folder where this server accepts databases.
  QString pasta() const;
  // "127.0.0.1/<port>:<absolute path>"; a relative name is taken inside pasta().
  QString endereco(const QString &arquivo) const;

  QString usuario() const;  // "SYSDBA"
  QString senha() const;    // SYSDBA's password on this server

  // Whether the server and the tools it needs are installed; when not,
  // motivoIndisponivel() says what is missing (for GTEST_SKIP).
  static bool disponivel();
  static QString motivoIndisponivel();

  // Runs isql-fb as a client of this server (stdin = script) and returns its
  // combined output. Never touches the embedded engine: the client runs with
  // the caller's environment, minus ISC_USER/ISC_PASSWORD.
  QString isql(const QString &script, int *codigoSaida = nullptr,
               int timeoutMs = 30000) const;

private:
  struct Dados;
  std::unique_ptr<Dados> d;
};

}  // namespace teste
