#pragma once
// Payables and receivables (TBCONTAS): hand-entered accounts saved with their apportionment,
// settlements (full or partial) with the cash session's rule, cheque fates, reversal and deletion.
// Every step locks the account first and re-reads what it checks inside the transaction.

#include "acesso/Sessao.h"
#include "db/Banco.h"
#include "registro/Registro.h"

#include <QDate>
#include <QList>

namespace orb {

inline const QString kModuloContas = QStringLiteral("TContas");

// One payment as the receipt/payment dialog gathers it.
struct Pagamento {
    QVariant idCCor;
    QDate data;
    QVariant valor;             // db::Decimal; NULL when not typed
    QString formaPagto;         // "DINHEIRO", "CHEQUE", ...
    db::Decimal jurosDesc = db::Decimal::bruto(0, 2);
    // A cheque's later fate: "", "DEVOLVIDO", "REPASSADO" or "CANCELADO/EST.".
    QString destino;
    QDate dataSituacao1, dataSituacao2;
    QString motSituacao1, motSituacao2;  // a forwarded cheque keeps its receiver in the first reason
};

// The list's filters; empty values do not filter.
struct FiltroContas {
    QString tipo = QStringLiteral("C");  // "C" receivables (mode "Rec"), "D" payables ("Pag")
    QDate vencimentoDe, vencimentoAte;
    int idCad = 0;
    QString situacao;                    // "ABERTAS", "QUITADAS" or a Situacao value
    QString origem;                      // "MANUAL" or an operation code "1".."8"
};
// The list query with its parameters, ordered by due date; first page of `limite` rows.
QString sqlContas(const FiltroContas &f, std::map<QString, QVariant> &params, int limite = 0);

// Save: the right, checks 1 to 8 in order (the apportionment adding up to the value), then the
// account and its apportionment rows written. Returns the ID.
int salvarConta(db::Transacao &t, int id, Valores v, const QList<Valores> &rateios, const Sessao &quem);

// Quitar (before the dialog): the right, and something still open.
void conferirQuitacao(db::Transacao &t, int idConta, const Sessao &quem);
// The dialog's OK: its checks in order, the payment row, the account's totals and situation, a
// cheque's fate. Returns the payment's history text.
QString quitarConta(db::Transacao &t, int idConta, const Pagamento &p, const Sessao &quem);

// Estornar: the right, a payment to reverse and its day's cash session; the latest payment goes.
void conferirEstorno(db::Transacao &t, int idConta, const Sessao &quem);
void estornarConta(db::Transacao &t, int idConta, const Sessao &quem);

// Excluir: the right, refused for a document's account (naming it) or one with payments.
void conferirExclusaoConta(db::Transacao &t, int idConta, const Sessao &quem);
void excluirConta(db::Transacao &t, int idConta, const Sessao &quem);

// Totals per day of the next `dias` days from `hoje`: (day, receivable, payable), open amounts.
struct TotalDia {
    QDate dia;
    db::Decimal receber, pagar;
};
QList<TotalDia> totaisPorDia(db::Transacao &t, const QDate &hoje, int dias = 30);

} // namespace orb
