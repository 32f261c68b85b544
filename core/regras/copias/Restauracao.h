#pragma once
// Putting a copy in place of the database. The copy is first restored and proven beside the database
// ("ORBManager.fdb.restaurando"); only then is the current file renamed aside with the date and the
// restored one put in its place; it must open and pass the upgrade before the old one is let go.
// A note beside the database ("ORBManager.fdb.restauracao") lets the next start put the old file
// back when the program was stopped in between.

#include "copias/Copias.h"

#include <memory>

namespace copias {

struct Restauracao {
    db::Conexao conexao;  // the database to replace (a local file or a server on this computer)
    Copia copia;
    QDateTime agora;
    // The user who asks, checked in the database (level 900 or more); 0 for the administrator's
    // command line, who already holds the files.
    int idUsuario = 0;
};

// Other attachments to the database than this one.
int outrasConexoes(db::Banco &b);

// Refuses (orb::Recusa) what must stop a restore before anything is touched: a user below level 900,
// other workstations connected. atual is the open database.
void conferirRestauracao(db::Banco &atual, int idUsuario);

// Restores r.copia over r.conexao.banco. atual is the open database (null when the file does not
// exist); fecharAtual closes it (and every other attachment of this program) just before the switch.
// Returns the restored database, open and upgraded. On a refusal nothing was touched; on a failure
// after the switch the previous file is back in place and, closed, waits to be opened again.
// Throws orb::Recusa.
std::unique_ptr<db::Banco> restaurar(const Restauracao &r, db::Banco *atual, const std::function<void()> &fecharAtual,
                                     const Progresso &progresso = {}, QStringList *aplicadas = nullptr);

// Puts the previous database back when a restore was cut short; true when it did.
bool recuperarRestauracao(const QString &banco);

// The name the current file gets while a restore replaces it.
QString nomeAnterior(const QString &banco, const QDateTime &quando);

} // namespace copias
