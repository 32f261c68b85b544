#pragma once
// Statuses of the commercial operations: codes, names, the moves allowed between them (one
// table), and the append-only history TBCOMST whose newest row (greatest ID) is the current one.

#include "db/Banco.h"

#include <QDateTime>
#include <QList>
#include <QString>

namespace orb {

struct StatusOperacao {
    QString codigo;   // "AO"
    QString nome;     // "AGUARDANDO ORÇAMENTO"
    QString curto;    // "AG. ORÇAMENTO"
};
const QList<StatusOperacao> &statusOperacoes();
QString nomeStatus(const QString &codigo);

// One allowed move: the action that makes it, from, to, and the kinds (OP) it applies to (empty = all).
struct Transicao {
    QString acao;     // "Aprovar"
    QString de, para;
    QList<int> ops;
};
const QList<Transicao> &transicoes();
// The move of `acao` from `de` for kind `op`; nullptr when not allowed.
const Transicao *transicao(const QString &acao, const QString &de, int op);
bool movimentoPermitido(const QString &de, const QString &para, int op);

// The operation's current status code (empty when it has no history).
QString statusAtual(db::Transacao &t, int idCom);

struct NovoStatus {
    QString codigo;
    QString observacoes;
    QDateTime data;
    QVariant idResp;
};
// Appends a history row; the status's TbStatusCom row of this kind gives IdStatus and its flags.
void acrescentarStatus(db::Transacao &t, int idCom, int op, const NovoStatus &s);
// The first history row of a new operation: the kind's TbStatusCom row with Ordem 1 ('AO' when none).
void statusInicial(db::Transacao &t, int idCom, int op, const QDateTime &agora, const QVariant &idResp);
// A move two workstations may try at once: the operation is locked, its status read again inside
// the transaction, the move checked against the table, the row appended. Returns the status left.
QString mudarStatus(db::Transacao &t, int idCom, const QString &acao, const NovoStatus &s);

} // namespace orb
