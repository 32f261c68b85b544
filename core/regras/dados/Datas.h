#pragma once
// Dates and times as people type them: "25122026", "25/12/2026", "251226", "2512" (this year),
// "0830", "08:30". An impossible date or time is refused, never moved to a near one.

#include <QDate>
#include <QDateTime>
#include <QString>
#include <QTime>

namespace orb {

inline const QString kDataInvalida = QStringLiteral("Data inválida!");
inline const QString kHoraInvalida = QStringLiteral("Hora inválida!");

struct Leitura {
    enum Estado { Vazia, Valida, Invalida };
    Estado estado = Vazia;
    QDate data;
    QTime hora;

    bool vazia() const { return estado == Vazia; }
    bool valida() const { return estado == Valida; }
};

// Two-digit years fall within the hundred years that end 20 years after `hoje`'s year: in 2026,
// "46" is 2046 and "47" is 1947. Dates further ahead or back are typed with four digits.
int completarSeculo(int doisDigitos, const QDate &hoje);

// Day, month and year in that order, with "/", "." or "-" between them or none at all; the year
// may be left out (this year), given with two digits or with four.
Leitura lerData(const QString &texto, const QDate &hoje);
// "hh:mm" or its four digits; hours 0-23, minutes 0-59.
Leitura lerHora(const QString &texto);
// A date, then a time after a blank; the time alone may be left out (midnight).
Leitura lerDataHora(const QString &texto, const QDate &hoje);

} // namespace orb
