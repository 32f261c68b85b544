#include "dados/Formatos.h"

#include "db/Decimal.h"

#include <gtest/gtest.h>

#include <QDateTime>

using orb::TipoCampo;

namespace {

std::string s(const QString &q) { return q.toStdString(); }

QVariant dec(const char *texto) { return QVariant::fromValue(db::Decimal(texto)); }

} // namespace

TEST(Formatos, Padl)
{
    struct { const char *texto; int n; const char *esperado; } casos[] = {
        {"abc", 5, "abc  "}, {"abcdef", 3, "abc"}, {"abc", 3, "abc"}, {"", 2, "  "}, {"abc", -1, ""},
    };
    for (const auto &c : casos)
        EXPECT_EQ(s(orb::Padl(c.texto, c.n)), c.esperado) << c.texto << " " << c.n;
}

TEST(Formatos, RetiraEnter)
{
    struct { const char *texto, *esperado; } casos[] = {
        {R"(a\b)", R"(a\\\\b)"}, {R"(diz "oi")", R"(diz \\\"oi\\\")"}, {"linha1\r\nlinha2", R"(linha1\\n\\nlinha2)"},
        {R"(\")", R"(\\\\\\\")"},  // the backslashes added for the quote are not doubled again
        {"a\nb\rc", "a\nb\rc"},  // only the pair is a line break
    };
    for (const auto &c : casos)
        EXPECT_EQ(s(orb::RetiraEnter(c.texto)), c.esperado) << c.texto;
}

TEST(Formatos, ConvDecimalValor)
{
    struct { const char *valor, *esperado; } casos[] = {
        {"1234.5", "1234.50"}, {"-1234.505", "-1234.51"}, {"0.004", "0.00"}, {"1234567.994", "1234567.99"},
    };
    for (const auto &c : casos)
        EXPECT_EQ(s(orb::ConvDecimalValor(db::Decimal(c.valor))), c.esperado) << c.valor;
}

TEST(Formatos, ConvencaoPeloNome)
{
    struct { const char *nome; TipoCampo tipo; int escala; const char *mascara, *exibicao; } casos[] = {
        {"cepentrega", TipoCampo::Texto, 2, "99999\\-999;0;_", ""},     {"HORAINI", TipoCampo::Texto, 2, "!99:99;1;_", ""},
        {"HORARIO", TipoCampo::Texto, 2, "", ""},                         {"CPFCNPJ ", TipoCampo::Texto, 2, "", ""},
        {"TELCOBRANCA", TipoCampo::Texto, 2, "!\\(99\\)99999-9999;0;_", ""}, {"CPF", TipoCampo::Texto, 2, "999\\.999\\.999\\-99;0;_", ""},
        {"HORAENTRADA", TipoCampo::Data, 2, "!99/99/9999 99:99;1;_", "dd/mm/yy hh:nn"},
        {"HORA", TipoCampo::DataHora, 2, "!99/99/9999 99:99;1;_", "hh:nn"},
        {"Z_PERCICMS", TipoCampo::Decimal, 4, "", ",0.00%"},  {"PESOBRUTO", TipoCampo::Decimal, 3, "", ",0.00## KG"},
        {"QUANT", TipoCampo::Decimal, 3, "", ",0.00#"},       {"INDICE", TipoCampo::Decimal, 6, "", ""},
        {"PERCENTUAL", TipoCampo::Flutuante, 2, "", ",0.00###"}, {"CFOP", TipoCampo::Inteiro, 2, "", "0,000"},
        {"CFOPENTRADA", TipoCampo::Inteiro, 2, "", "000000"}, {"intvenc", TipoCampo::Inteiro, 2, "", "00 dia(s)"},
        {"CEP", TipoCampo::Outro, 2, "", ""},
    };
    for (const auto &c : casos) {
        SCOPED_TRACE(c.nome);
        const auto f = orb::formatoCampo(c.nome, c.tipo, c.escala);
        EXPECT_EQ(s(f.mascara), c.mascara);
        EXPECT_EQ(s(f.exibicao), c.exibicao);
    }
}

TEST(Formatos, Exibir)
{
    const QDateTime momento(QDate(2024, 3, 5), QTime(14, 7, 31));
    struct { QVariant valor; const char *nome; TipoCampo tipo; int escala; const char *esperado; } casos[] = {
        {-123, "CODIGO", TipoCampo::Inteiro, 2, "-000123"},  {5102, "CFOP", TipoCampo::Inteiro, 2, "5.102"},
        {5, "INTVENC", TipoCampo::Inteiro, 2, "05 dia(s)"},   {dec("-1234567.5"), "VALOR", TipoCampo::Decimal, 2, "-1.234.567,50"},
        {dec("1.005"), "VALOR", TipoCampo::Decimal, 2, "1,01"}, {dec("-0.004"), "VALOR", TipoCampo::Decimal, 2, "0,00"},
        {dec("1.5"), "QUANT", TipoCampo::Decimal, 3, "1,50"},   {dec("1.234"), "QUANT", TipoCampo::Decimal, 3, "1,234"},
        {dec("12.5"), "PERCDESCONTO", TipoCampo::Decimal, 4, "12,50%"},
        {dec("1.23456"), "PESOLIQ", TipoCampo::Decimal, 5, "1,2346 KG"}, {dec("1234.5"), "QTD", TipoCampo::Decimal, 0, "1.235"},
        {1234.5678912, "FATOR", TipoCampo::Flutuante, 2, "1.234,56789"}, {-0.000001, "FATOR", TipoCampo::Flutuante, 2, "0,00"},
        {QDate(2024, 3, 5), "EMISSAO", TipoCampo::Data, 2, "05/03/24"}, {QDate(), "EMISSAO", TipoCampo::Data, 2, ""},
        {momento, "ALTERADO", TipoCampo::DataHora, 2, "05/03/24 14:07"}, {momento, "HORASAIDA", TipoCampo::DataHora, 2, "14:07"},
        {"01310100", "CEP", TipoCampo::Texto, 2, "01310-100"},  {"123", "CEP", TipoCampo::Texto, 2, "123"},
        {"12345678909", "CPF", TipoCampo::Texto, 2, "123.456.789-09"},
        {"12345678000195", "CNPJ", TipoCampo::Texto, 2, "12.345.678/0001-95"},
        {"11987654321", "TELEFONE", TipoCampo::Texto, 2, "(11)98765-4321"}, {"1187654321", "TELEFONE", TipoCampo::Texto, 2, "(11)8765-4321"},
        {"1187654321", "FONE", TipoCampo::Texto, 2, "1187654321"}, {"12345678909", "CPFCNPJ", TipoCampo::Texto, 2, "12345678909"},
        {QVariant(), "VALOR", TipoCampo::Decimal, 2, ""},       {QVariant(QMetaType::fromType<QString>()), "CEP", TipoCampo::Texto, 2, ""},
    };
    for (const auto &c : casos) {
        SCOPED_TRACE(std::string(c.nome) + " " + s(c.valor.toString()));
        EXPECT_EQ(s(orb::exibir(c.valor, c.nome, c.tipo, c.escala)), c.esperado);
    }
}
