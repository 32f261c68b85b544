#pragma once
// Tables changed, as this workstation learns of it: right after its own commits, and through a
// database event when another workstation commits. Lookup lists mark themselves stale and read
// their table again when next opened.

#include <QObject>
#include <QString>

namespace orb {

class AvisosTabelas : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;
    // The table (its name in upper case) has rows written or deleted since its lists were read.
    void avisar(const QString &tabela) { emit mudou(tabela.toUpper()); }

signals:
    void mudou(const QString &tabela);
};

// The workstation's one notifier (GUI thread).
AvisosTabelas &avisosTabelas();

// The lookup tables whose changes other workstations hear of through a database event of the
// table's own name (posted by a trigger the upgrade adds).
const QStringList &tabelasComAviso();

} // namespace orb
