// db::Decimal against the server's own arithmetic, over random operands of the NUMERIC columns.

#include "apoio/BancoTeste.h"

#include <gtest/gtest.h>

#include <random>

using db::Decimal;

namespace {

struct Par {
    Decimal a, b;
};

// Mantissas of every length up to 18 digits (the long ones are the ones that lose digits), either
// sign, at the given scale; a fixed seed so that a failure can be run again.
std::vector<Par> pares(int n, int escalaA, int escalaB, unsigned semente, int maxDigitosB = 18)
{
    std::mt19937_64 g(semente);
    auto valor = [&](int escala, int maxDigitos) {
        const int digitos = std::uniform_int_distribution<int>(1, maxDigitos)(g);
        std::int64_t limite = 1;
        for (int i = 0; i < digitos; ++i)
            limite *= 10;
        std::int64_t m = std::uniform_int_distribution<std::int64_t>(0, limite - 1)(g);
        if (g() % 4 == 0)
            m = -m;
        return Decimal::bruto(m, escala);
    };
    std::vector<Par> v;
    while (int(v.size()) < n) {
        Par p{valor(escalaA, 18), valor(escalaB, maxDigitosB)};
        if (!p.b.zero())
            v.push_back(p);
    }
    // The edges: where the dividend can no longer move up a decimal, and the divisor's trailing zeros.
    v.push_back({Decimal("92233720368547.7580"), Decimal("3.1234")});
    v.push_back({Decimal("92233720368547.7581"), Decimal("3.1234")});
    v.push_back({Decimal("-92233720368547.7580"), Decimal("3.1234")});
    v.push_back({Decimal("-92233720368547.7581"), Decimal("3.1234")});
    v.push_back({Decimal("10000000.0000"), Decimal("3.1234")});
    v.push_back({Decimal("10000000000.0000"), Decimal("3.1000")});
    v.push_back({Decimal("123456789012.3456"), Decimal("-0.0100")});
    return v;
}

struct Resultado {
    bool erro = false;
    Decimal valor;
};

Resultado doServidor(db::Consulta &q, const Par &p)
{
    try {
        q.bind("A", QVariant::fromValue(p.a)).bind("B", QVariant::fromValue(p.b));
        return {false, q.escalar().value<Decimal>()};
    } catch (const db::ErroBanco &) {
        return {true, {}};
    }
}

template <class F>
Resultado nosso(F &&f)
{
    try {
        Decimal r = f();
        r.mantissa();  // the server's results are 64 bits
        return {false, r};
    } catch (const std::overflow_error &) {
        return {true, {}};
    }
}

struct AritmeticaServidor : ::testing::Test {
    teste::BancoTemporario bt;
    db::Transacao t{bt.banco()};
};

TEST_F(AritmeticaServidor, DivisionGivesTheServersDigits)
{
    struct { int ea, eb; unsigned semente; } casos[] = {{4, 4, 1}, {2, 4, 2}, {4, 2, 3}, {2, 2, 4}, {2, 0, 5}, {0, 2, 6}};
    for (const auto &c : casos) {
        db::Consulta q(t, QString("select cast(:A as numeric(18,%1)) / cast(:B as numeric(18,%2)) from rdb$database")
                              .arg(c.ea).arg(c.eb));
        for (const Par &p : pares(700, c.ea, c.eb, c.semente)) {
            // The casts of the statement, as the server makes them.
            const Par c2{p.a.comEscala(c.ea), p.b.comEscala(c.eb)};
            if (c2.b.zero())
                continue;
            const Resultado s = doServidor(q, p), n = nosso([&] { return c2.a.dividirComoBanco(c2.b); });
            ASSERT_EQ(n.erro, s.erro) << p.a.texto().toStdString() << " / " << p.b.texto().toStdString();
            if (!s.erro)
                ASSERT_EQ(n.valor, s.valor) << p.a.texto().toStdString() << " / " << p.b.texto().toStdString()
                                            << ": " << n.valor.texto().toStdString() << " vs " << s.valor.texto().toStdString();
        }
    }
}

TEST_F(AritmeticaServidor, ProductsAndRoundedStoresGiveTheServersDigits)
{
    // A product exact at the summed scale (or the server's overflow), then stored at two decimals.
    db::Consulta q(t, "select cast(cast(:A as numeric(18,4)) * cast(:B as numeric(18,4)) as numeric(18,2)) from rdb$database");
    for (const Par &p : pares(1500, 4, 4, 7, 9)) {
        const Resultado s = doServidor(q, p), n = nosso([&] { return (p.a * p.b).comEscala(2); });
        // Our products go past 64 bits where the server refuses; only the stored value must agree.
        if (!s.erro)
            ASSERT_EQ(n.valor, s.valor) << p.a.texto().toStdString() << " * " << p.b.texto().toStdString();
    }
}

} // namespace
