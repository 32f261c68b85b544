#pragma once
// The program's thin layer over Firebird's OO API: attachments, transactions, statements with
// named parameters, rows as QVariant (NUMERIC as db::Decimal, text as QString), blobs and events.

#include "db/Decimal.h"
#include "db/Erros.h"

#include <QByteArray>
#include <QDate>
#include <QDateTime>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QTime>
#include <QVariant>
#include <map>
#include <memory>
#include <type_traits>
#include <vector>

namespace Firebird {
class IAttachment;
class ITransaction;
class IStatement;
class IResultSet;
class IMessageMetadata;
class IMaster;
class IStatus;
class ThrowStatusWrapper;
}

namespace db {

struct Conexao {
    QString banco;                 // "/path/ORBManager.fdb" (embedded) or "host/port:/path/ORBManager.fdb"
    QString usuario = "SYSDBA";
    QString senha = "vaultword";
};

// The engine's master interface; one per process.
Firebird::IMaster *mestre();

class Eventos;


class Banco {
public:
    // Opens an existing database. Throws ErroBanco (Conexao when it cannot be reached).
    static std::unique_ptr<Banco> abrir(const Conexao &c);
    // Creates a new database with character set WIN1252 and opens it.
    static std::unique_ptr<Banco> criar(const Conexao &c);
    ~Banco();

    Banco(const Banco &) = delete;
    Banco &operator=(const Banco &) = delete;

    // The attachment; when the last one was lost and not yet replaced, a new one is opened first
    // (throws ErroBanco of kind Conexao while the server does not answer).
    Firebird::IAttachment *api();
    const Conexao &conexao() const { return c_; }
    // The server is still answering (a cheap round trip).
    bool vivo();
    // Drops the attachment (meant for a dead one) and attaches again with the same settings. Its transactions and
    // statements are released without a word to the server (which undoes a dead attachment's work
    // itself) and answer from then on as a lost connection; event listeners are armed again.
    // Throws ErroBanco (Conexao) while the server does not answer; api() then tries again.
    void reconectar();
    // Counts the attachments this object has had: what was made on an older one is dead.
    quint64 geracao() const { return geracao_; }

    // Prepared statements kept for the next Consulta of the same text (reads and writes only):
    // a screen saving a record with its rows prepares each statement once.
    Firebird::IStatement *tomarPreparada(const QByteArray &sql);
    void devolverPreparada(const QByteArray &sql, Firebird::IStatement *st);
    // Structure changes must not meet statements that still reference the old shape.
    void esquecerPreparadas();

private:
    friend class Eventos;
    explicit Banco(const Conexao &c, Firebird::IAttachment *att);
    void ligar();
    Conexao c_;
    Firebird::IAttachment *att_ = nullptr;
    quint64 geracao_ = 0;
    std::multimap<QByteArray, Firebird::IStatement *> preparadas_;
    std::vector<Eventos *> ouvintes_;  // armed again on a new attachment
    // Callbacks of listeners already gone: the client library may still call them, up to the detach.
    std::vector<std::shared_ptr<void>> callbacksRetirados_;
};

enum class Modo {
    Escrita,  // read committed, record version, nowait, write: every business transaction
    Leitura   // read committed, read-only: browsing
};

// Rolls back on destruction unless committed; may be restarted after commit or rollback.
// A transaction of a lost attachment is no longer active: committing or using it throws
// ErroBanco (Conexao), rolling it back just lets it go.
class Transacao {
public:
    explicit Transacao(Banco &b, Modo m = Modo::Escrita, bool iniciar = true);
    ~Transacao();
    Transacao(const Transacao &) = delete;
    Transacao &operator=(const Transacao &) = delete;

    void iniciar();
    void commit();
    void commitRetaining();
    void rollback();
    bool ativa() const { return tr_ && geracao_ == b_.geracao(); }

    Banco &banco() const { return b_; }
    Modo modo() const { return modo_; }
    Firebird::ITransaction *api();

private:
    bool orfa() const { return tr_ && geracao_ != b_.geracao(); }
    void soltar();
    Banco &b_;
    Modo modo_;
    Firebird::ITransaction *tr_ = nullptr;
    quint64 geracao_ = 0;
};

// A savepoint inside an open transaction: on destruction, unless released, everything written
// after it is undone while the transaction (and the locks taken before it) stays open.
class PontoSalvamento {
public:
    explicit PontoSalvamento(Transacao &t);
    ~PontoSalvamento();
    PontoSalvamento(const PontoSalvamento &) = delete;
    PontoSalvamento &operator=(const PontoSalvamento &) = delete;
    void liberar();    // keep what was written
    void desfazer();   // undo it now

private:
    Transacao &t_;
    QString nome_;
    bool aberto_ = true;
};

// Runs f as one attempt: whatever it wrote is undone when it throws, and the exception goes on.
template <class F>
auto tentativa(Transacao &t, F &&f) -> decltype(f())
{
    PontoSalvamento p(t);
    if constexpr (std::is_void_v<decltype(f())>) {
        f();
        p.liberar();
    } else {
        auto r = f();
        p.liberar();
        return r;
    }
}

// One SQL statement with named parameters (":ID"). Prepared once, executed many times.
class Consulta {
public:
    Consulta(Transacao &t, const QString &sql);
    ~Consulta();
    Consulta(const Consulta &) = delete;
    Consulta &operator=(const Consulta &) = delete;

    // Binds every occurrence of :nome. QVariant() is NULL. Types: int/qint64, db::Decimal,
    // QString, QDate, QDateTime, QTime, QByteArray (binary blob), double, bool.
    Consulta &bind(const QString &nome, const QVariant &valor);
    QStringList parametros() const;

    // Runs the statement. For a select, the cursor is opened; call proxima() to read.
    void executar();
    // Next row of a select (or the single row of an "execute ... returning"); false at the end.
    bool proxima();
    void fechar();

    int colunas() const;
    QString nomeColuna(int i) const;  // the alias, upper case as Firebird gives it
    int indice(const QString &coluna) const;  // -1 when absent
    QVariant valor(int i) const;
    QVariant valor(const QString &coluna) const;  // throws std::out_of_range for an unknown name
    QVariant operator[](const QString &coluna) const { return valor(coluna); }
    QVariant operator[](int i) const { return valor(i); }

    // Rows changed by the last insert, update or delete.
    qint64 afetadas();

    // Convenience: execute and return the first row's first column (QVariant() when none).
    QVariant escalar();

    const QString &sql() const { return sql_; }

private:
    struct Impl;
    std::unique_ptr<Impl> d;
    QString sql_;
    Transacao &t_;
};

// Runs one statement and returns the first column of its first row.
QVariant escalar(Transacao &t, const QString &sql, const std::map<QString, QVariant> &params = {});
// Runs one statement that returns no rows.
void executar(Transacao &t, const QString &sql, const std::map<QString, QVariant> &params = {});

// Named parameters rewritten to "?" with the name of each position; literals and comments kept.
struct SqlPosicional {
    QString sql;
    QStringList nomes;
};
SqlPosicional converterParametros(const QString &sql);

// Firebird POST_EVENT alerts, delivered on the thread that owns this object (the GUI thread).
class Eventos : public QObject {
    Q_OBJECT
public:
    Eventos(Banco &b, const QStringList &nomes, QObject *parent = nullptr);
    ~Eventos() override;
    const QStringList &nomes() const { return nomes_; }

signals:
    void evento(const QString &nome, int vezes);

private:
    friend class Banco;
    void armar();
    void registrar();  // armar() and the baseline callback
    void rearmar();  // on a new attachment of the same Banco
    void chegou(const QByteArray &buffer, const void *deQuem);
    struct Callback;
    Banco &b_;
    QStringList nomes_;
    QByteArray buf_;
    std::unique_ptr<Callback> cb_;
    std::vector<std::unique_ptr<Callback>> antigos_;  // of dead attachments; may still be called
    void *ev_ = nullptr;  // Firebird::IEvents*
    bool primeira_ = true;
};

} // namespace db
