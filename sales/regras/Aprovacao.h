#pragma once
// Approval and delivery of a commercial operation, their cancellations and the reactivation of a
// cancelled one. Each step locks the operation, runs its checks in order (a refusal writes
// nothing), then writes in the caller's transaction everything it changes: the status row, the
// billing's columns, the stock rows, the instalments (GeraContas) and the supply order served.
// The caller commits once.

#include "acesso/Sessao.h"
#include "db/Banco.h"

#include <QDateTime>
#include <QString>

namespace orb {

// The employee responsible for a step: the logged-in user's own registry row, when it is an
// employee. `indefinido` is the refusal when the user has none.
int responsavelDoUsuario(db::Transacao &t, const Sessao &quem, const QString &indefinido);

// The right of a step for the operation's kind ("Aprovar", "Aprovar Compras", ...).
QString direitoDoPasso(const QString &passo, int op);

// ---- approval (dialog "Aprovação")
// Before the dialog: the right, and a service order needs a line.
void conferirAprovacao(db::Transacao &t, int idCom, const Sessao &quem);
// The dialog's OK: checks a to d in order, then the 'AP' row, the billing's approval columns,
// the log line, with 'A' the instalments made effective, a purchase's supply order "APROVADA".
void aprovarOperacao(db::Transacao &t, int idCom, const QDateTime &data, const QString &geraFin, const Sessao &quem);

// Before the question: the right, no paid instalment, with 'A' the day of the billing open.
void conferirCancelamentoAprovacao(db::Transacao &t, int idCom, const Sessao &quem);
// After the question: the 'AA' row, the approval date cleared, with 'A' the instalments removed.
void cancelarAprovacao(db::Transacao &t, int idCom, const Sessao &quem, const QDateTime &agora);

// ---- delivery (dialog "Entregar")
void conferirEntrega(db::Transacao &t, int idCom, const Sessao &quem);
// The dialog's OK: its checks in order (serials included), then each merchandise line's stock in
// the billing company (a purchase adds, the others subtract; a missing row is created with the
// signed quantity), the 'EN' row, the billing's delivery columns, with 'E' the instalments.
void entregarOperacao(db::Transacao &t, int idCom, const QDateTime &data, const QString &numeroNF, const Sessao &quem);

void conferirCancelamentoEntrega(db::Transacao &t, int idCom, const Sessao &quem);
// Stock back on the principal company's row (not the billing company's), the 'AP' row, the
// delivery columns cleared, with 'E' the instalments removed.
void cancelarEntrega(db::Transacao &t, int idCom, const Sessao &quem, const QDateTime &agora);

// A cancelled operation back to 'AA'.
void reativarOperacao(db::Transacao &t, int idCom, const Sessao &quem, const QDateTime &agora);

inline const QString kAguardandoEntrega = QStringLiteral("Aguardando entrega.");

} // namespace orb
