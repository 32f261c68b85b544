#pragma once
// The billing terms typed on a document's billing (TBCOMFAT): the billing date, the first due date
// by days or by date, the payment condition and the number of instalments. Each routine checks
// and changes the billing row held by the edit; nothing is written here.

#include "Modos.h"
#include "registro/Registro.h"

namespace orb {

// The number of the first instalment of the billing already paid (empty when none is).
QString parcelaQuitada(db::Transacao &t, const QVariant &idFat, int op);

// A new billing date: not before the operation's date, and frozen once an instalment is paid.
// The first due date keeps its distance in days.
void mudarDataFaturamento(db::Transacao &t, Valores &fat, int op, const QDateTime &dataOperacao, const QDate &data);
// Days to the first due date typed: the billing date first, never negative; the date follows.
void mudarPrimVenc(Valores &fat, const QVariant &dias);
// The first due date typed: after the billing date; the days follow.
void mudarDataPrimVenc(Valores &fat, const QDate &data);
// The payment condition ('V' "A VISTA", 'P' "A PRAZO") or the number of instalments changed:
// refused once an instalment is paid; "A PRAZO" takes the terms of the mode's newest parameter
// row, "A VISTA" is one instalment with no terms.
void mudarCondicao(db::Transacao &t, Valores &fat, const ModoOperacao &m, const QString &condicao, const QString &parcelas = {});

} // namespace orb
