#pragma once
// The first steps of a new installation, as the home page lists them: each one read from the
// database as done or not, with the screens where it is done and the keys to use there.

#include "db/Banco.h"

#include <QList>
#include <QString>
#include <QStringList>

namespace orb {

struct PrimeiroPasso {
    QString chave;       // "empresa", "senha", "usuario", "cliente", "item"
    QString texto;       // what to do, as the user reads it
    QStringList telas;   // form classes where it is done, the first one the menu has wins
    QString teclas;      // what to press there
    bool feito = false;
};

// The steps in the order a new installation takes them.
QList<PrimeiroPasso> primeirosPassos(db::Transacao &t);

} // namespace orb
