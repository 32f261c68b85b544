#include "apoio/ServidorFirebird.h"

#include "schema/Atualizacao.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QProcessEnvironment>
#include <QRandomGenerator>
#include <QTemporaryDir>

#include <stdexcept>

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

namespace teste {

namespace {

const QString kServidor = QStringLiteral("/usr/sbin/firebird");
const QString kIsql = QStringLiteral("/usr/bin/isql-fb");
const QString kConfigSistema = QStringLiteral("/etc/firebird/3.0");
const QString kSegurancaSistema = QStringLiteral("/var/lib/firebird/3.0/system/security3.fdb");
// The engine writes its log here whatever root it is given.
const QString kLogSistema = QStringLiteral("/var/log/firebird/firebird3.0.log");
const QString kUsuario = QStringLiteral("SYSDBA");
// Same password the application uses by default, so tests can rely on it.
const QString kSenha = QStringLiteral("vaultword");

// Below the kernel's ephemeral range (32768+), so client sockets never
// occupy the port between our probe and the server's bind.
constexpr int kPortaMin = 21000;
constexpr int kPortaMax = 30000;
constexpr int kEsperaProntoMs = 10000;
constexpr int kEsperaParadaMs = 1500;

// Debian keeps messages and the charset module under a multiarch folder.
QString pastaBibliotecas() {
  const QDir usrLib(QStringLiteral("/usr/lib"));
  const QStringList arquiteturas = usrLib.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
  for (const QString &arq : arquiteturas) {
    const QString p = usrLib.filePath(arq + QStringLiteral("/firebird/3.0"));
    if (QFileInfo::exists(p + QStringLiteral("/firebird.msg")) &&
        QFileInfo::exists(p + QStringLiteral("/intl/libfbintl.so")))
      return p;
  }
  return {};
}

QString aspas(const QString &s) {
  QString r = s;
  r.replace(QLatin1Char('\''), QStringLiteral("''"));
  return QLatin1Char('\'') + r + QLatin1Char('\'');
}

QString lerArquivo(const QString &caminho, int ultimasLinhas = -1) {
  QFile f(caminho);
  if (!f.open(QIODevice::ReadOnly)) return {};
  QString texto = QString::fromLocal8Bit(f.readAll());
  if (ultimasLinhas > 0) {
    QStringList linhas = texto.split(QLatin1Char('\n'));
    if (linhas.size() > ultimasLinhas) linhas = linhas.mid(linhas.size() - ultimasLinhas);
    texto = linhas.join(QLatin1Char('\n'));
  }
  return texto.trimmed();
}

void escrever(const QString &caminho, const QString &conteudo) {
  QFile f(caminho);
  if (!f.open(QIODevice::WriteOnly | QIODevice::Truncate))
    throw std::runtime_error("ServidorFirebird: não foi possível escrever " + caminho.toStdString());
  f.write(conteudo.toUtf8());
}

// The server sets SO_REUSEADDR too, so probe with the same semantics: a
// lingering TIME_WAIT does not block it, a listener does.
bool portaLivre(int porta) {
  const int s = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (s < 0) return false;
  const int um = 1;
  ::setsockopt(s, SOL_SOCKET, SO_REUSEADDR, &um, sizeof um);
  sockaddr_in a{};
  a.sin_family = AF_INET;
  a.sin_port = htons(static_cast<uint16_t>(porta));
  a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  const bool ok = ::bind(s, reinterpret_cast<sockaddr *>(&a), sizeof a) == 0;
  ::close(s);
  return ok;
}

bool portaAceita(int porta) {
  const int s = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (s < 0) return false;
  sockaddr_in a{};
  a.sin_family = AF_INET;
  a.sin_port = htons(static_cast<uint16_t>(porta));
  a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  const bool ok = ::connect(s, reinterpret_cast<sockaddr *>(&a), sizeof a) == 0;
  ::close(s);
  return ok;
}

// Test binaries run in parallel: a lock file per port keeps two of them
// from picking the same one. Held until the server stops (the kernel drops
// it if we crash), then the file is removed.
struct ReservaPorta {
  int fd = -1;
  QByteArray arquivo;
};

QByteArray arquivoReserva(int porta) {
  const QString pasta = QDir::tempPath() + QStringLiteral("/orb-servidor-firebird-portas");
  if (!QFileInfo::exists(pasta)) {
    QDir().mkpath(pasta);
    // Shared by every user that runs tests on this machine.
    ::chmod(QFile::encodeName(pasta).constData(), 01777);
  }
  return QFile::encodeName(pasta + QStringLiteral("/%1.lock").arg(porta));
}

bool reservarPorta(int porta, ReservaPorta &reserva) {
  const QByteArray arquivo = arquivoReserva(porta);
  const int fd = ::open(arquivo.constData(), O_RDONLY | O_CREAT | O_CLOEXEC, 0644);
  if (fd < 0) return false;
  // Same inode check: the previous holder may have unlinked the file between
  // our open and our flock.
  struct stat aberto{}, atual{};
  if (::flock(fd, LOCK_EX | LOCK_NB) != 0 || ::fstat(fd, &aberto) != 0 ||
      ::stat(arquivo.constData(), &atual) != 0 || aberto.st_ino != atual.st_ino ||
      aberto.st_dev != atual.st_dev) {
    ::close(fd);
    return false;
  }
  reserva.fd = fd;
  reserva.arquivo = arquivo;
  return true;
}

void liberarPorta(ReservaPorta &reserva) {
  if (reserva.fd < 0) return;
  ::unlink(reserva.arquivo.constData());
  ::close(reserva.fd);
  reserva.fd = -1;
}

// Runs isql-fb with the script on stdin; returns stdout+stderr.
QString rodarIsql(const QProcessEnvironment &env, const QString &script, int *codigo, int timeoutMs) {
  QProcess p;
  p.setProcessEnvironment(env);
  p.setProcessChannelMode(QProcess::MergedChannels);
  p.start(kIsql, {QStringLiteral("-q"), QStringLiteral("-b")});
  if (!p.waitForStarted(5000)) {
    if (codigo) *codigo = -1;
    return QStringLiteral("isql-fb não iniciou: ") + p.errorString();
  }
  p.write(script.toUtf8());
  p.closeWriteChannel();
  if (!p.waitForFinished(timeoutMs)) {
    p.kill();
    p.waitForFinished(2000);
    if (codigo) *codigo = -1;
    return QString::fromLocal8Bit(p.readAll()) + QStringLiteral("\n[isql-fb excedeu o tempo limite]");
  }
  if (codigo)
    *codigo = p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1;
  return QString::fromLocal8Bit(p.readAll());
}

}  // namespace

struct ServidorFirebird::Dados {
  // Declared first so it is removed last, after the server is gone.
  QTemporaryDir temp{QDir::tempPath() + QStringLiteral("/orb-servidor-firebird-XXXXXX")};
  QString raiz;
  QString bancos;
  int porta = 0;
  ReservaPorta reserva;
  std::unique_ptr<QProcess> processo;

  ~Dados() {
    parar();
    liberarPorta(reserva);
  }

  void parar() {
    if (processo && processo->state() != QProcess::NotRunning) {
      // A clean stop takes well under 0.5 s, but this server version now and
      // then ignores SIGTERM for good (about 1 stop in 12): don't wait long.
      processo->terminate();
      if (!processo->waitForFinished(kEsperaParadaMs)) {
        processo->kill();
        processo->waitForFinished(5000);
      }
    }
    processo.reset();
  }

  [[noreturn]] void falhar(const QString &motivo) const {
    QString msg = QStringLiteral("ServidorFirebird: ") + motivo;
    if (!raiz.isEmpty()) {
      const QString err = lerArquivo(raiz + QStringLiteral("/servidor.err"));
      if (!err.isEmpty()) msg += QStringLiteral("\n--- stderr do servidor ---\n") + err;
    }
    const QString log = lerArquivo(kLogSistema, 12);
    if (!log.isEmpty()) msg += QStringLiteral("\n--- fim de ") + kLogSistema + QStringLiteral(" ---\n") + log;
    throw std::runtime_error(msg.toStdString());
  }

  QProcessEnvironment ambienteServidor() const {
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.remove(QStringLiteral("ISC_USER"));
    env.remove(QStringLiteral("ISC_PASSWORD"));
    // Our own root: firebird.conf, databases.conf, plugins.conf, intl/.
    env.insert(QStringLiteral("FIREBIRD"), raiz);
    // Own lock/shared-memory files: never shared with the embedded engine
    // of other test processes (which use /tmp/firebird).
    env.insert(QStringLiteral("FIREBIRD_LOCK"), raiz + QStringLiteral("/lock"));
    env.insert(QStringLiteral("FIREBIRD_TMP"), raiz + QStringLiteral("/tmp"));
    // firebird.msg is looked up under the root unless told otherwise.
    env.insert(QStringLiteral("FIREBIRD_MSG"), pastaBibliotecas());
    return env;
  }

  void prepararPasta() {
    if (!temp.isValid()) falhar(QStringLiteral("não criou pasta temporária: ") + temp.errorString());
    raiz = temp.path();
    bancos = raiz + QStringLiteral("/bancos");
    for (const char *sub : {"lock", "tmp", "bancos", "intl"})
      if (!QDir(raiz).mkpath(QString::fromLatin1(sub))) falhar(QStringLiteral("não criou subpastas em ") + raiz);

    // The charset module must be a real file under <root>/intl: fbintl.conf
    // points at $(root)/intl, and through a symlink the engine loads it but
    // then reports every non-builtin charset (WIN1252) as "not installed".
    const QString intl = pastaBibliotecas() + QStringLiteral("/intl/libfbintl.so");
    if (!QFile::copy(intl, raiz + QStringLiteral("/intl/libfbintl.so")))
      falhar(QStringLiteral("não copiou ") + intl);

    const QString plugins = kConfigSistema + QStringLiteral("/plugins.conf");
    if (QFileInfo::exists(plugins)) QFile::copy(plugins, raiz + QStringLiteral("/plugins.conf"));
  }

  void escreverConfig() const {
    const QString seguranca = raiz + QStringLiteral("/security3.fdb");
    // The port goes here rather than "-p": with -p the server ignores
    // RemoteBindAddress and listens on every interface.
    escrever(raiz + QStringLiteral("/firebird.conf"),
             QStringLiteral("# Test server; generated by tests/apoio/ServidorFirebird.cpp\n"
                            "RemoteServicePort = %1\n"
                            "RemoteBindAddress = 127.0.0.1\n"
                            "ServerMode = Super\n"
                            "SecurityDatabase = %2\n"
                            "DatabaseAccess = Restrict %3\n"
                            "TempDirectories = %4\n"
                            "UdfAccess = None\n")
                 .arg(porta)
                 .arg(seguranca, bancos, raiz + QStringLiteral("/tmp")));
    escrever(raiz + QStringLiteral("/databases.conf"),
             QStringLiteral("security.db = %1\n").arg(seguranca));
  }

  // Our own security database with SYSDBA's password set, changed through
  // the embedded engine under our own root, so the system one is never
  // touched. Copying the installed one and altering it takes ~0.1 s; creating
  // one from scratch ~0.5 s (synchronous writes), so that is only the
  // fallback for when the installed one is not readable (non-root).
  void criarBancoSeguranca() const {
    const QString destino = raiz + QStringLiteral("/security3.fdb");
    QString erroCopia;
    if (QFile::copy(kSegurancaSistema, destino)) {
      int codigo = 0;
      const QString saida = rodarIsql(ambienteServidor(),
                                      QStringLiteral("connect %1 user 'SYSDBA';\n"
                                                     "create or alter user SYSDBA password %2;\n"
                                                     "commit;\n")
                                          .arg(aspas(destino), aspas(kSenha)),
                                      &codigo, 30000);
      if (codigo == 0) return;
      erroCopia = QStringLiteral("\n(a cópia de %1 também falhou:\n%2)").arg(kSegurancaSistema, saida);
      QFile::remove(destino);
    }

    int codigo = 0;
    const QString saida = rodarIsql(ambienteServidor(),
                                    QStringLiteral("create database %1 user 'SYSDBA';\n"
                                                   "create user SYSDBA password %2;\n"
                                                   "commit;\n")
                                        .arg(aspas(destino), aspas(kSenha)),
                                    &codigo, 30000);
    if (codigo != 0) falhar(QStringLiteral("não criou o banco de segurança:\n") + saida + erroCopia);
  }

  void escolherPorta() {
    auto *rng = QRandomGenerator::global();
    for (int tentativa = 0; tentativa < 500; ++tentativa) {
      const int p = rng->bounded(kPortaMin, kPortaMax);
      if (!reservarPorta(p, reserva)) continue;
      if (portaLivre(p)) {
        porta = p;
        return;
      }
      liberarPorta(reserva);
    }
    falhar(QStringLiteral("nenhuma porta livre entre %1 e %2").arg(kPortaMin).arg(kPortaMax));
  }

  void iniciar() {
    processo = std::make_unique<QProcess>();
    processo->setProgram(kServidor);
    processo->setWorkingDirectory(raiz);
    processo->setProcessEnvironment(ambienteServidor());
    // The server closes stdin/stdout itself but keeps stderr: keep it for
    // error messages.
    processo->setStandardInputFile(QProcess::nullDevice());
    processo->setStandardOutputFile(QProcess::nullDevice());
    processo->setStandardErrorFile(raiz + QStringLiteral("/servidor.err"));
    // The server moves to its own process group, so a Ctrl-C or a crash of
    // the test would leave it running: have the kernel kill it with us.
    const pid_t pai = ::getpid();
    processo->setChildProcessModifier([pai] {
      ::prctl(PR_SET_PDEATHSIG, SIGKILL);
      if (::getppid() != pai) ::_exit(127);
    });
    processo->start();
    if (!processo->waitForStarted(5000))
      falhar(QStringLiteral("não iniciou %1: %2").arg(kServidor, processo->errorString()));

    QElapsedTimer relogio;
    relogio.start();
    while (relogio.elapsed() < kEsperaProntoMs) {
      if (processo->state() == QProcess::NotRunning)
        falhar(QStringLiteral("o servidor terminou ao iniciar (código %1)").arg(processo->exitCode()));
      if (portaAceita(porta)) return;
      processo->waitForFinished(10);  // also serves as the pause between probes
    }
    falhar(QStringLiteral("o servidor não aceitou conexões na porta %1 em %2 ms")
               .arg(porta)
               .arg(kEsperaProntoMs));
  }
};

ServidorFirebird::ServidorFirebird() : d(std::make_unique<Dados>()) {
  if (!disponivel()) throw std::runtime_error(("ServidorFirebird: " + motivoIndisponivel()).toStdString());
  d->prepararPasta();
  d->escolherPorta();
  d->escreverConfig();
  d->criarBancoSeguranca();
  d->iniciar();
}

ServidorFirebird::~ServidorFirebird() = default;

void ServidorFirebird::parar() { d->parar(); }

void ServidorFirebird::iniciar() {
  if (d->processo) return;
  d->iniciar();
}

int ServidorFirebird::porta() const { return d->porta; }

QString ServidorFirebird::pasta() const { return d->bancos; }

QString ServidorFirebird::endereco(const QString &arquivo) const {
  const QString caminho = QDir(d->bancos).absoluteFilePath(arquivo);
  return QStringLiteral("127.0.0.1/%1:%2").arg(d->porta).arg(QDir::cleanPath(caminho));
}

QString ServidorFirebird::usuario() const { return kUsuario; }

QString ServidorFirebird::senha() const { return kSenha; }

db::Conexao ServidorFirebird::conexao(const QString &arquivo) const { return {endereco(arquivo), kUsuario, kSenha}; }

db::Conexao ServidorFirebird::bancoNovo(const QString &arquivo) const {
  const db::Conexao c = conexao(arquivo);
  esquema::criarBanco(c);
  return c;
}

bool ServidorFirebird::disponivel() { return motivoIndisponivel().isEmpty(); }

QString ServidorFirebird::motivoIndisponivel() {
  if (!QFileInfo(kServidor).isExecutable())
    return kServidor + QStringLiteral(" não encontrado (pacote firebird3.0-server)");
  if (!QFileInfo(kIsql).isExecutable())
    return kIsql + QStringLiteral(" não encontrado (pacote firebird3.0-utils)");
  if (pastaBibliotecas().isEmpty())
    return QStringLiteral("firebird.msg/intl do Firebird 3.0 não encontrados em /usr/lib/*/firebird/3.0");
  return {};
}

}  // namespace teste
