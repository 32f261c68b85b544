#pragma once
// Real Firebird databases for tests: a template made once per test binary and copied per test.

#include "acesso/Sessao.h"
#include "db/Banco.h"

#include <QProcessEnvironment>
#include <QTemporaryDir>
#include <functional>
#include <memory>

#include <ostream>

// Readable QString in test failure messages.
inline void PrintTo(const QString &s, std::ostream *os) { *os << '"' << s.toStdString() << '"'; }
inline void PrintTo(const QStringList &l, std::ostream *os) { *os << '[' << l.join(" | ").toStdString() << ']'; }

namespace teste {

enum class Forma {
    Atual,   // a new installation: whole schema, upgrade and first records
    Antiga   // an older installation: the schema before the upgrade's changes, empty
};

// An embedded database file of the test's own, removed at the end.
class BancoTemporario {
public:
    explicit BancoTemporario(Forma f = Forma::Atual);
    ~BancoTemporario();

    db::Banco &banco() { return *banco_; }
    db::Conexao conexao() const;
    QString caminho() const { return caminho_; }
    // Closes and opens the file again (a program restart).
    void reabrir();
    void fechar() { banco_.reset(); }

private:
    QTemporaryDir dir_;
    QString caminho_;
    std::unique_ptr<db::Banco> banco_;
};

// The installation's administrator (ADMIN, level 999), acting from a screen: passes every right.
orb::Sessao administrador(db::Transacao &t, const QString &menu = QStringLiteral("Cadastros"),
                          const QString &modulo = QStringLiteral("TCadComerciais"));

// The environment of a child process a test may kill: the engine's shared lock files in a folder
// of that process's own, inside `pasta`. A process killed while it holds one of the engine's
// shared mutexes leaves it held for good, and every later process using the same folder waits.
QProcessEnvironment ambienteFilho(const QString &pasta);

// The cash session of `dia` opened by `resp` at 07:00 and, when `fechado`, closed by them at 18:00.
void abrirCaixa(db::Transacao &t, const QDate &dia, int resp, bool fechado = false);

// The refusal's text when `f`, tried once in `t`, refuses; empty when it goes through.
QString recusa(db::Transacao &t, const std::function<void()> &f);
// The same without a savepoint: what `f` wrote before refusing stays for the caller to see.
QString recusa(const std::function<void()> &f);

// Runs this test binary's `filtro` as a child on `bt`'s file (closed meanwhile; the child finds it in
// ORB_TESTE_FILHO) and opens it again. Empty when the child died killed, as it should; else its output.
QString filhoInterrompido(BancoTemporario &bt, const QString &filtro);
// In that child, the file; empty when the test runs as itself (and then skips).
inline QString bancoDoFilho() { return qEnvironmentVariable("ORB_TESTE_FILHO"); }

} // namespace teste
