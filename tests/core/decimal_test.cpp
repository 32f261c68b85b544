#include "db/Decimal.h"

#include <gtest/gtest.h>

#include <climits>
#include <ostream>
#include <stdexcept>

namespace db {
// Failures show the value, not the object's bytes.
void PrintTo(const Decimal &d, std::ostream *os) { *os << d.texto().toStdString(); }
} // namespace db

using db::Arredonda;
using db::Decimal;

namespace {
constexpr auto Meio = Arredonda::MeioLonge;
constexpr auto Trunca = Arredonda::Trunca;
std::string txt(const Decimal &d) { return d.texto().toStdString(); }
} // namespace

TEST(Decimal, ArredondaSimetricoNosNegativos)
{
    struct { const char *valor; int escala; Arredonda a; const char *esperado; } casos[] = {
        {"1.005", 2, Meio, "1.01"}, {"2.5", 0, Meio, "3"},        {"2.5", 0, Trunca, "2"},
        {"0.4999", 0, Meio, "0"},   {"1.5", 4, Trunca, "1.5000"}, {"0.999999999", 0, Meio, "1"},
    };
    for (const auto &c : casos) {
        SCOPED_TRACE(c.valor);
        EXPECT_EQ(txt(Decimal(c.valor).comEscala(c.escala, c.a)), c.esperado);
        // The negative must round to the mirror image (and never print "-0").
        EXPECT_EQ(txt((-Decimal(c.valor)).comEscala(c.escala, c.a)), txt(-Decimal(c.esperado)));
    }
}

TEST(Decimal, LeTextoNosDoisFormatos)
{
    struct { const char *texto; bool br; std::int64_t m; int e; } bons[] = {
        {"-1234.56", false, -123456, 2}, {"+3", false, 3, 0},       {".5", false, 5, 1},      {"  0.50 ", false, 50, 2},
        {"1.234,56", true, 123456, 2},   {"1234,56", true, 123456, 2}, {"-0,5", true, -5, 1}, {"1.234.567", true, 1234567, 0},
        {"-9223372036854775808", false, INT64_MIN, 0}, {"0.123456789", false, 123456789, 9},
    };
    for (const auto &c : bons) {
        const auto d = Decimal::ler(QString::fromUtf8(c.texto), c.br);
        ASSERT_TRUE(d.has_value()) << c.texto;
        EXPECT_EQ(std::pair(d->mantissa(), d->escala()), std::pair(c.m, c.e)) << c.texto;
    }
    // In pt_BR the point only groups thousands, in threes.
    struct { const char *texto; bool br; } ruins[] = {
        {"   ", true},    {"-", false},       {"1,2,3", true},  {"1.2.3", false}, {"12.5", true}, {".123,4", true},
        {"- 5", false},   {"1e5", false},     {"١٢", false},    {"0.1234567891", false},
        {"9223372036854775808", false},       {"-9223372036854775809", false},
    };
    for (const auto &c : ruins) EXPECT_FALSE(Decimal::ler(QString::fromUtf8(c.texto), c.br).has_value()) << c.texto;
    EXPECT_THROW(Decimal("1,5"), std::invalid_argument);
}

TEST(Decimal, DivideComoOBanco)
{
    // The scales add up, capped at nine, and the rest is cut off.
    struct { const char *a, *b, *esperado; } casos[] = {
        {"200.00", "3", "66.66"}, {"200.00", "3.00", "66.6666"}, {"10", "-4", "-2"}, {"2.000000", "3.0000", "0.666666666"}};
    for (const auto &c : casos) EXPECT_EQ(txt(Decimal(c.a).dividirComoBanco(Decimal(c.b))), c.esperado) << c.a << " / " << c.b;
    EXPECT_EQ(txt(Decimal("1").dividir(Decimal("-8"), 2, Meio)), "-0.13");
    EXPECT_EQ(txt(Decimal("1").dividir(Decimal("8"), 2, Trunca)), "0.12");
    EXPECT_EQ(txt(Decimal("123.456789").dividir(Decimal("0.001"), 0, Meio)), "123457");
    EXPECT_THROW(Decimal("1").dividir(Decimal("0.00"), 2, Meio), std::domain_error);
}

TEST(Decimal, ContasExatasOuEstouro)
{
    EXPECT_EQ(txt(Decimal("0.1") + Decimal("0.2")), "0.3");
    EXPECT_EQ(txt(Decimal("1.5") - Decimal("0.25")), "1.25");
    EXPECT_EQ(txt(Decimal("-1.5") * Decimal("0.25")), "-0.375");
    // Ten decimals in the product come back to nine, half away from zero.
    EXPECT_EQ(txt(Decimal("0.00001") * Decimal("0.00005")), "0.000000001");
    EXPECT_EQ(txt(Decimal("-0.00001") * Decimal("0.00004")), "0.000000000");
    // The product passes through more than 64 bits, but the result fits once rounded to nine.
    EXPECT_EQ(Decimal::bruto(INT64_MAX, 9) * Decimal("0.5"), Decimal::bruto(4611686018427387904, 9));

    // Intermediate values go far past 64 bits: a cost of 9.3 billion at nine decimals, grossed up.
    const auto max = Decimal::inteiro(INT64_MAX), min = Decimal::inteiro(INT64_MIN);
    EXPECT_EQ(txt(Decimal("9300000000.0000").comEscala(9) * Decimal("1.300000000")), "12090000000.000000000");
    EXPECT_EQ(txt(max + Decimal("1")), "9223372036854775808");
    EXPECT_EQ(txt(-min), "9223372036854775808");
    EXPECT_EQ(max.comEscala(9).dividir(Decimal("0.5"), 9, Trunca), max * Decimal("2"));
    // What goes to the database fits 64 bits, at fewer decimals when it must.
    EXPECT_THROW((max + Decimal("1")).mantissa(), std::overflow_error);
    EXPECT_EQ(txt((max + Decimal("1")).dividir(Decimal("100000"), 5, Trunca).compacto()), "92233720368547.7581");
    EXPECT_EQ(Decimal("12.5").compacto().escala(), 1);
    EXPECT_THROW((max * Decimal("10")).compacto(), std::overflow_error);
    // Past 29 digits nothing any column holds can arise: that is an overflow.
    EXPECT_THROW(max * max, std::overflow_error);
    EXPECT_THROW((max * Decimal("100000000000")).comEscala(9), std::overflow_error);
    EXPECT_THROW(max.comEscala(9).dividir(Decimal("0.000000001"), 9, Trunca), std::overflow_error);
    EXPECT_THROW(Decimal::bruto(1, 10), std::invalid_argument);
}

TEST(Decimal, ComparaEntreEscalas)
{
    struct { const char *a, *b; int esperado; } casos[] = {
        {"1.50", "1.5", 0}, {"1.5", "1.49", 1}, {"-1.5", "-1.49", -1},
        {"9223372036854775807", "9223372036.854775807", 1},  // aligning must not overflow
    };
    for (const auto &c : casos) {
        const auto r = Decimal(c.a) <=> Decimal(c.b);
        EXPECT_EQ(r < 0 ? -1 : (r > 0 ? 1 : 0), c.esperado) << c.a << " <=> " << c.b;
        EXPECT_EQ(Decimal(c.a) == Decimal(c.b), c.esperado == 0) << c.a << " == " << c.b;
    }
}

TEST(Decimal, Textos)
{
    struct { const char *valor; int decimais; const char *br; } casos[] = {
        {"1234.56", 2, "1.234,56"}, {"-1234567.885", 2, "-1.234.567,89"}, {"-0.05", 2, "-0,05"}, {"-0.004", 2, "0,00"},
        {"999.5", 0, "1.000"},      {"9223372036854775807", 2, "9.223.372.036.854.775.807,00"},
    };
    for (const auto &c : casos) {
        EXPECT_EQ(txt(Decimal(c.valor)), c.valor);  // as read, every digit kept
        EXPECT_EQ(Decimal(c.valor).textoBR(c.decimais).toStdString(), c.br);
    }
    EXPECT_DOUBLE_EQ(Decimal("-12.34").paraDouble(), -12.34);
}
