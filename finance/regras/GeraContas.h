#pragma once
// The instalments of a billing (TBCOMFAT) in TBCONTAS, with their apportionment in TBCONTASRAT.
// GeraContas is the one writer of instalments that come from documents; DefineParcelas lays
// out the payment documents the billing screen typed on the first instalment.
//
// Who writes the values: every save of a document runs GeraContas "I" then "P", which gives each
// instalment the quotient as the database computes it (truncated) with the remainder on the last.
// A billing "A PRAZO" is then laid out by DefineParcelas, which rounds V/N to the cent and again
// puts the remainder on the last; that is what a term sale keeps. Either way the values add up
// to the billing and each apportionment to its instalment.

#include "db/Banco.h"

#include <QDate>
#include <QDateTime>
#include <QString>

namespace orb {

// Modules (TBCONTAS.FKS = TBCOM.OP) with their history text and parameter table.
struct ModuloContas {
    QString codigo;     // "1"
    QString historico;  // "DA VENDA"
    QString parametros; // "TbParVendas"
};
const ModuloContas &moduloContas(const QString &codigo);

// `acao`: "D" deletes the billing's instalments; "I" (re)generates everything; "P" refreshes the
// values; "V" the due dates; "E" the common fields only, keeping the payments recorded.
// `dataAprovacao` is the billing's approval date (null before it); `agora` stamps new rows.
void GeraContas(db::Transacao &t, const QString &modulo, const QString &id, const QString &acao,
                const QDateTime &dataAprovacao, const QDateTime &agora = QDateTime::currentDateTime());
// Kept for the callers that still name it: it does nothing.
void ExcluiContas(const QString &tipo, const QDateTime &data, const QString &modulo, const QString &id);
// The payment document of the first instalment copied into the others (cheques numbered on),
// values V/N rounded to the cent with the difference on the last, discounts from the percentage.
void DefineParcelas(db::Transacao &t, int idFat);

// Due date of instalment i (1-based): the billing date for a down payment, else the base
// (billing + primVenc days) moved by whole months when the interval is 30, else by days.
QDate vencimentoParcela(const QDate &dataFat, int i, bool entrada, int primVenc, int intVenc);
// "EN" for a down payment, else "01", "02", ...
QString numeroParcela(int i, bool entrada);

// The apportionment of one instalment refreshed so that its rows add up to its value.
void ratearParcela(db::Transacao &t, int idConta, const QString &modulo, int idDocumento);

// The cash account's ID, created when missing.
int contaCaixa(db::Transacao &t);
// The business segment of the installation ("CO", "EN", "ME", ...).
QString ramo(db::Transacao &t);

} // namespace orb
