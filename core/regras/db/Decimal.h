#pragma once
// Exact decimal for every NUMERIC of the database: a mantissa with a scale (0 to 9). The mantissa
// has room far beyond the columns' 18 digits, so that products and quotients of any values the
// columns hold never overflow on the way; only what goes to the database must fit 64 bits.
// Never built from a double; rounding is named wherever digits are lost.

#include <QMetaType>
#include <QString>
#include <compare>
#include <cstdint>
#include <optional>

namespace db {

enum class Arredonda {
    MeioLonge,  // half away from zero: what Firebird does when it stores into a NUMERIC
    Trunca      // toward zero: Firebird's own division and casts that drop digits
};

class Decimal {
public:
    __extension__ typedef __int128 Mantissa;

    constexpr Decimal() = default;
    // The value mantissa / 10^escala, exactly.
    static Decimal bruto(std::int64_t mantissa, int escala);
    static Decimal inteiro(std::int64_t v) { return bruto(v, 0); }

    // Parses "1234.56", "-0.5" (point) and, with pt_BR true, "1.234,56" as typed by users.
    // Returns nothing for text that is not a number or does not fit.
    static std::optional<Decimal> ler(const QString &texto, bool ptBR = false);
    // Throws std::invalid_argument on bad text; for literals in code and tests.
    explicit Decimal(const char *texto);

    // The mantissa as the database takes it; throws std::overflow_error beyond 64 bits.
    std::int64_t mantissa() const;
    int escala() const { return e_; }
    // The same value at the largest scale (up to its own) whose mantissa fits 64 bits, rounded
    // half away from zero as the database does; throws std::overflow_error when none does.
    Decimal compacto() const;

    // The same value at another scale; more digits are exact, fewer are rounded as said.
    Decimal comEscala(int escala, Arredonda a = Arredonda::MeioLonge) const;

    Decimal operator+(const Decimal &o) const;
    Decimal operator-(const Decimal &o) const;
    Decimal operator-() const;
    // Exact product: the scale is the sum of the scales (as in Firebird); rescale explicitly after.
    Decimal operator*(const Decimal &o) const;
    // Division with the result at the given scale.
    Decimal dividir(const Decimal &o, int escala, Arredonda a) const;
    // Division as the database computes it: result scale = sum of the scales, truncated.
    Decimal dividirComoBanco(const Decimal &o) const;

    Decimal &operator+=(const Decimal &o) { return *this = *this + o; }
    Decimal &operator-=(const Decimal &o) { return *this = *this - o; }

    bool operator==(const Decimal &o) const;
    std::strong_ordering operator<=>(const Decimal &o) const;

    bool zero() const { return m_ == 0; }
    bool negativo() const { return m_ < 0; }
    int sinal() const { return m_ > 0 ? 1 : (m_ < 0 ? -1 : 0); }
    Decimal abs() const { return m_ < 0 ? -*this : *this; }

    // "1234.56": point, no grouping, exactly escala() decimals.
    QString texto() const;
    // "1.234,56" with the given number of decimals (rounded half away from zero).
    QString textoBR(int decimais = 2) const;
    // Only for display and JSON; never for arithmetic.
    double paraDouble() const;

private:
    static Decimal de(Mantissa m, int escala);
    Mantissa m_ = 0;
    int e_ = 0;
};

} // namespace db

Q_DECLARE_METATYPE(db::Decimal)
