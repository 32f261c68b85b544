#pragma once
// The data module: owner of the connection, of one transaction per business area, of the
// trace trail and of the routines every form calls (codes, change log, JSON images).

#include "db/Banco.h"

#include <QHash>
#include <QJsonArray>
#include <QObject>
#include <QPointer>
#include <QStringList>
#include <array>
#include <memory>

namespace orb {

// One field of a record as a form's dataset holds it.
struct Campo {
    QString nome;
    QVariant valor;
    bool memo = false;  // memo and blob fields stay out of the change log's text
};

// The current record of a dataset: its select text (where the table is named) and its fields.
struct Registro {
    QString sql;
    QList<Campo> campos;

    QVariant valor(const QString &nome) const;
    void definir(const QString &nome, const QVariant &v, bool memo = false);
};

class TTabs : public QObject {
    Q_OBJECT
public:
    explicit TTabs(QObject *parent = nullptr);
    ~TTabs() override;

    // The start-up sequence opens the connection and hands it over.
    void conectar(std::unique_ptr<db::Banco> banco);
    void desconectar();
    bool conectado() const { return banco_ != nullptr; }
    db::Banco &DbORB();
    // After a lost connection (server restarted, network down). While the attachment still answers
    // nothing was lost: true, everything kept. Otherwise the area transactions, which lived on the
    // dead attachment, are let go and a new attachment is opened with the same settings; false while
    // the server does not answer (the next use of the connection tries again by itself).
    bool reconectar();

    // The area's transaction (TrVendas, TrCad, ...), made on first use and not started.
    // TrSys is the one the module's own routines use.
    db::Transacao &Tr(const QString &area);
    db::Transacao &TrSys() { return Tr("TrSys"); }
    QStringList areas() const { return transacoes_.keys(); }

    // Trace: the last ten routine signatures, newest first.
    void Deb(const QString &assinatura);
    QStringList trilha() const;

    // The logged-in user, recorded in the change log.
    void definirUsuario(int id) { idUsuario_ = id; }
    int idUsuario() const { return idUsuario_; }

    // The change log of one record as the caller's transaction sees it now: the text image of all
    // its fields in table order (memo and blob fields skipped), the user and the moment. For
    // "EXCLUSÃO" call it before deleting: the rows of `detalhes` (table, column holding the
    // record's key) are logged one by one with the same action.
    void Log(db::Transacao &t, const QString &tabela, const QString &chave, const QVariant &valor, const QString &acao,
             const QList<QPair<QString, QString>> &detalhes = {});
    // The same from records already in hand.
    void Log(db::Transacao &t, const Registro &reg, const QString &acao, const QList<Registro> &detalhes = {});
    // The columns of a table the change log shows, in table order (no blobs); read once.
    QStringList colunasTexto(db::Transacao &t, const QString &tabela);
    // Rows of a table as the change log shows them: `Where coluna = :valor`, columns in table order, no blobs.
    QList<Registro> imagens(db::Transacao &t, const QString &tabela, const QString &coluna, const QVariant &valor);

    // Next free code: the greatest value of campo in tabela (filtered) plus one; 1 when none.
    int NovoCodigo(const QString &tabela, const QString &campo, const QString &filtro = {});

    // Rolls back every active area transaction except TrAgenda (the agenda alerts live on it).
    void RollbackTransacoes();
    // Rolls back the inactive ones and ignores what that raises; it changes nothing, kept as settled.
    void RollbackTransacoesIn();

    QString Padl(const QString &s, int n);
    QString RetiraEnter(const QString &s);
    QString ConvDecimalValor(const db::Decimal &v);
    // Records as a JSON array: numbers as numbers, images and blobs base64; password columns left out.
    QString TbToJson(const QList<Registro> &registros);

signals:
    // A new attachment replaced a dead one: screens read their lists again.
    void reconectado();

public:
    // Parts of the change log, exposed for tests.
    static QString textoLog(const Registro &reg);
    static QString tabelaDoSql(const QString &sql);

private:
    QString chavePrimaria(db::Transacao &t, const QString &tabela);
    void logUm(db::Transacao &t, const Registro &reg, const QString &acao);

    std::unique_ptr<db::Banco> banco_;
    std::unique_ptr<db::Eventos> avisos_;  // other workstations' changes to the lookup tables
    QHash<QString, std::shared_ptr<db::Transacao>> transacoes_;
    std::array<QString, 10> trilha_;
    int idUsuario_ = 0;
    QHash<QString, QString> chaves_;
    QHash<QString, QStringList> colunas_;
};

// The single instance, created at start before any form.
extern TTabs *Tabs;

// Password columns (stored hashes, typed new ones, the monitor's own credentials): never copied
// into the change log, the activity monitor or a report.
bool colunaSecreta(const QString &coluna);

} // namespace orb
