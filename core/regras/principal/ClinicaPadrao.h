#pragma once
// The first records a clinic needs: agenda stages and statuses, the consultation item,
// the private insurer, a room and a doctor with a working week. Each only when missing.

#include "db/Banco.h"

#include <QDate>

namespace orb {

// Runs at every start of a clinic, so each record is checked before it is inserted.
// The doctor's week is dated hoje, or the server's date when hoje is not given.
void semearClinica(db::Transacao &t, const QDate &hoje = QDate());

// The password a seeded doctor starts with.
inline constexpr const char *kSenhaInicialMedico = "123456";

} // namespace orb
