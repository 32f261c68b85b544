// Dates, times and numbers as people type them into the editors.

#include "dados/Datas.h"
#include "dados/Formatos.h"
#include "db/Decimal.h"
#include "registro/Registro.h"
#include "Recusa.h"

#include <gtest/gtest.h>

using namespace orb;

namespace {

const QDate kHoje(2026, 11, 24);

std::string s(const QString &q) { return q.toStdString(); }

} // namespace

constexpr auto V = Leitura::Valida, I = Leitura::Invalida;

TEST(Datas, TypedDates)
{
    struct { const char *texto; Leitura::Estado estado; QDate data; } casos[] = {
        // the forms people type
        {"25122026", V, {2026, 12, 25}}, {"25/12/2026", V, {2026, 12, 25}}, {"251226", V, {2026, 12, 25}}, {"2512", V, {2026, 12, 25}},
        {"5/3/24", V, {2024, 3, 5}},     {"05.03.2024", V, {2024, 3, 5}},   {"15/03", V, {2026, 3, 15}}, {" 15032020 ", V, {2020, 3, 15}},
        // impossible dates are refused, never moved to the month's end
        {"29022024", V, {2024, 2, 29}}, {"29/02/2023", I, {}}, {"29/02/2000", V, {2000, 2, 29}}, {"29/02/1900", I, {}},
        {"31/02/2024", I, {}}, {"3104", I, {}}, {"00/01/2026", I, {}}, {"01/13/2026", I, {}},
        // slips
        {"2512202", I, {}}, {"25/12/202", I, {}}, {"25//2026", I, {}}, {"25/12/2026/1", I, {}}, {"01/01/0026", I, {}},
        // nothing typed is no date (NULL): whether it may stay so is the field's rule
        {"", Leitura::Vazia, {}}, {"   ", Leitura::Vazia, {}},
        // two-digit years: up to 20 years ahead of this one, else the century before
        {"010146", V, {2046, 1, 1}}, {"010147", V, {1947, 1, 1}}, {"31/12/99", V, {1999, 12, 31}}, {"01/01/00", V, {2000, 1, 1}},
    };
    for (const auto &c : casos) {
        SCOPED_TRACE(c.texto);
        const Leitura l = lerData(c.texto, kHoje);
        EXPECT_EQ(l.estado, c.estado);
        EXPECT_EQ(l.data, c.data);
    }
}

TEST(Datas, CenturyPivotMovesWithTheYear)
{
    struct { int hoje, digitos, esperado; } casos[] = {
        {2026, 46, 2046}, {2026, 47, 1947}, {2080, 0, 2100}, {2080, 1, 2001}, {2085, 5, 2105}, {2085, 6, 2006},
    };
    for (const auto &c : casos)
        EXPECT_EQ(completarSeculo(c.digitos, QDate(c.hoje, 6, 1)), c.esperado) << c.hoje << " " << c.digitos;
}

TEST(Datas, TypedTimes)
{
    struct { const char *texto; Leitura::Estado estado; QTime hora; } casos[] = {
        {"0830", V, {8, 30}}, {"08:30", V, {8, 30}}, {"8:30", V, {8, 30}}, {"2359", V, {23, 59}}, {"00:00", V, {0, 0}},
        {"25:00", I, {}}, {"2400", I, {}}, {"08:60", I, {}}, {"830", I, {}}, {"08:3", I, {}}, {"", Leitura::Vazia, {}},
    };
    for (const auto &c : casos) {
        SCOPED_TRACE(c.texto);
        const Leitura l = lerHora(c.texto);
        EXPECT_EQ(l.estado, c.estado);
        EXPECT_EQ(l.hora, c.hora);
    }
    const Leitura dh = lerDataHora("2512 0830", kHoje);
    EXPECT_EQ(QDateTime(dh.data, dh.hora), QDateTime(QDate(2026, 12, 25), QTime(8, 30)));
    EXPECT_EQ(lerDataHora("25/12/2026", kHoje).hora, QTime(0, 0));
    EXPECT_EQ(lerDataHora("31/02/2026 08:30", kHoje).estado, Leitura::Invalida);
    EXPECT_EQ(lerDataHora("25/12/2026 25:00", kHoje).estado, Leitura::Invalida);
}

// What an editor shows is read back to the same value, suffix typed or not; letters are refused.
TEST(Datas, NumbersAsTheEditorShowsThem)
{
    using C = CampoForm;
    struct { C campo; const char *texto; const char *esperado; } casos[] = {
        {{"VALOR", "", C::Decimal}, "1.234,56", "1234.56"},  {{"VALOR", "", C::Decimal}, "12,5", "12.50"},
        {{"PERCICMSO", "", C::Decimal}, "12,50%", "12.50"}, {{"PERCICMSO", "", C::Decimal}, "12,5 %", "12.50"},
        {{"PRUNITARIO", "", C::Decimal, {}, 0, 4}, "3,1416", "3.1416"}, {{"CODIGO", "", C::Inteiro}, "000003", "3"},
        {{"CFOP", "", C::Inteiro}, "5.102", "5102"},        {{"PRAZO", "", C::Inteiro}, "30 dia(s)", "30"},
        {{"VALOR", "", C::Decimal}, "", ""},                {{"VALOR", "", C::Decimal}, "abc", "Valor inválido!"},
        {{"PERCICMSO", "", C::Decimal}, "12,5%%", "Valor inválido!"}, {{"CODIGO", "", C::Inteiro}, "1,5", "Valor inválido!"},
        {{"CODIGO", "", C::Inteiro}, "3000000000", "Valor inválido!"}, {{"CODIGO", "", C::Inteiro}, "12a", "Valor inválido!"},
    };
    for (const auto &c : casos) {
        SCOPED_TRACE(std::string(c.texto) + " em " + s(c.campo.coluna));
        try {
            const QVariant v = lerNumeroDoCampo(c.campo, c.texto);
            const QString texto = v.metaType() == QMetaType::fromType<db::Decimal>() ? v.value<db::Decimal>().texto() : v.toString();
            EXPECT_EQ(s(texto), c.esperado);
            // and shown as the grid shows it, it reads back to the same
            if (v.isValid()) {
                const auto tipo = c.campo.tipo == C::Inteiro ? TipoCampo::Inteiro : TipoCampo::Decimal;
                EXPECT_EQ(lerNumeroDoCampo(c.campo, exibir(v, c.campo.coluna, tipo, c.campo.escala)), v);
            }
        } catch (const Recusa &r) {
            EXPECT_EQ(s(r.texto), c.esperado);
            EXPECT_EQ(r.campo, c.campo.coluna);
        }
    }
}

TEST(Datas, PhonesLaidOutAsTyped)
{
    struct { const char *digitos, *esperado; } casos[] = {
        {"", ""}, {"3", "(3"}, {"31", "(31"}, {"313", "(31)3"}, {"313222", "(31)3222"}, {"3132221", "(31)3222-1"},
        {"3132221111", "(31)3222-1111"}, {"31987654321", "(31)98765-4321"}, {"319876543210", "(31)98765-4321"},
    };
    for (const auto &c : casos) EXPECT_EQ(s(mascararTelefone(c.digitos)), c.esperado) << c.digitos;
    EXPECT_TRUE(campoTelefone("TELREFCOM2"));
    EXPECT_FALSE(campoTelefone("CEP"));
}

// What the database's WIN1252 holds: accents and the Windows signs yes, other scripts and emoji no.
TEST(Caracteres, TextTheDatabaseHolds)
{
    const struct { const char *texto; bool cabe; } casos[] = {
        {"Ação São João º ª ç", true}, {"€ “aspas” – ™ Š œ Ÿ", true}, {"linha\tcom\ntabulação", true},
        {"Łódź", false},               {"日本", false},                 {"\xF0\x9F\x98\x80", false},
    };
    for (const auto &c : casos) EXPECT_EQ(orb::cabeEmWin1252(QString::fromUtf8(c.texto)), c.cabe) << c.texto;
}
