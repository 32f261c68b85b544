#pragma once
// The day's cash session (TBABENCMOV): opened in the morning, closed at night, reopened with its
// rights. Approval, delivery and settlement ask it whether a day is open; the summary of a day
// totals the payments into the cash account per payment form.

#include "acesso/Sessao.h"
#include "db/Banco.h"
#include "registro/Registro.h"

#include <QDate>
#include <QDateTime>
#include <QList>
#include <QPair>

namespace orb {

inline const QString kModuloCaixa = QStringLiteral("TAbEncMovimento");

enum class EstadoCaixa { SemAbertura, Aberto, Encerrado };
// The day's state: open when any of its sessions is open, closed when all of them are.
EstadoCaixa estadoCaixa(db::Transacao &t, const QDate &dia);

// The refusals of a step that needs the day open; `acao` completes "Não é possível <acao> pois ...".
void exigirCaixaAberto(db::Transacao &t, const QDate &dia, const QString &acao, bool aceitaEncerrado = false);

// Abrir: the right, then a new session (not written until the save) for today, opened now, with
// the default responsibles of the finance parameters valid today.
Valores abrirMovimento(db::Transacao &t, const Sessao &quem, const QDateTime &agora);
// The same defaults without the right (the closing responsible proposed at F8).
Valores padroesMovimento(db::Transacao &t, const QDateTime &agora);
// Alterar: the right; the session is locked for the edit.
Valores alterarMovimento(db::Transacao &t, int id, const Sessao &quem);
// The save's checks in order, then the row written and logged. A session whose day has payments
// keeps its day. Returns the ID.
int salvarMovimento(db::Transacao &t, int id, const Valores &v, const Sessao &quem, const QDate &hoje);

// Encerrar: the right, then the session closed now by `idRespEnc` (the open state re-read under lock).
void encerrarMovimento(db::Transacao &t, int id, const QVariant &idRespEnc, const Sessao &quem, const QDateTime &agora);
// Reabrir: the right, and "Reabrir c/ Lanç. Posteriores" when the cash account has later entries.
void conferirReabertura(db::Transacao &t, int id, const Sessao &quem);
void reabrirMovimento(db::Transacao &t, int id, const Sessao &quem);
// Excluir: the right; refused while payments are dated on its day.
void conferirExclusaoMovimento(db::Transacao &t, int id, const Sessao &quem);
void excluirMovimento(db::Transacao &t, int id, const Sessao &quem);

// The printed summary of a session's day.
struct ResumoCaixa {
    QString titulo;            // "FECHAMENTO DE CAIXA - 10/03/2026" or "RESUMO DE CAIXA - ..."
    QString responsavel;       // the opening responsible's nickname
    QDate dia;
    db::Decimal saldoInicial;
    QList<QPair<QString, db::Decimal>> formas;  // payment form, total
    db::Decimal total;
};
// The right "Imprimir", the cash account (refused when missing), the totals per form.
ResumoCaixa resumoCaixa(db::Transacao &t, int id, const Sessao &quem);
// The summary as the template "RelEncMovim" takes it, money formatted "1.234,56".
QVariantMap dadosResumo(const ResumoCaixa &r, const QDateTime &agora);
// The summary rendered to HTML through the report layer.
QString htmlResumoCaixa(db::Transacao &t, int id, const Sessao &quem, const QDateTime &agora);

// The list: sessions newest first with the responsibles' nicknames.
inline const QString kSqlMovimentos = QStringLiteral(
    "Select A.*, Fu1.Apelido Z_RespAb, Fu2.Apelido Z_RespEnc From TbAbEncMov A Left Join TbCad Fu1 On (Fu1.Id = A.IdRespAb) "
    "Left Join TbCad Fu2 On (Fu2.Id = A.IdRespEnc) Order By A.Data Desc, A.Id Desc");

// Whether the user holds an operation of a module, without refusing.
bool temOperacao(db::Transacao &t, const Sessao &quem, const QString &menu, const QString &modulo, const QString &operacao);

} // namespace orb
