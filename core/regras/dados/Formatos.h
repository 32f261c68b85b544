#pragma once
// Small text routines of the data module, and how fields are edited and shown: the convention
// goes by the field's name and type, so every screen and grid shows the same column alike.

#include <QString>
#include <QVariant>

namespace db {
class Decimal;
}

namespace orb {

// s left-aligned in exactly n characters: blanks on the right, or cut.
QString Padl(const QString &s, int n);

// Text ready to go inside a quoted JSON string that is itself inside another string.
QString RetiraEnter(const QString &s);

// "1234.50": point, two decimals, rounded half away from zero, whatever the locale.
QString ConvDecimalValor(const db::Decimal &v);

enum class TipoCampo { Texto, Data, DataHora, Decimal, Flutuante, Inteiro, Outro };

struct FormatoCampo {
    QString mascara;   // edit mask: "model;saves literals;blank character"
    QString exibicao;  // display format: 0 # , . for numbers, dd mm yy hh nn for dates

    bool operator==(const FormatoCampo &) const = default;
};

// escala: the decimals of a fixed-point (NUMERIC) field.
FormatoCampo formatoCampo(const QString &nomeCampo, TipoCampo tipo, int escala = 2);

// What a grid shows for the value, in Brazilian conventions ("1.234,56", "05/03/24"):
// db::Decimal for Decimal fields, double for Flutuante, QDate/QDateTime/QTime for dates.
// Null shows as "".
QString exibir(const QVariant &valor, const QString &nomeCampo, TipoCampo tipo, int escala = 2);

// Phone fields by their name (TELEFONE1, FAX, TELREFCOM2, ...).
bool campoTelefone(const QString &nomeCampo);
// The digits of a phone as far as typed, in the layout their count calls for: landline
// "(31)3222-1111" up to ten digits, mobile "(31)98765-4321" with eleven.
QString mascararTelefone(const QString &digitos);

// A number as typed or as shown, without the display's suffix ("12,5%" -> "12,5", "2 KG" -> "2").
QString semSufixo(const QString &texto, const QString &nomeCampo, TipoCampo tipo, int escala = 2);

} // namespace orb
