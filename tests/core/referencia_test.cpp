// Municipalities, banks and CFOP codes: there from the first start, loaded once into older
// databases, never repeating what the installation typed itself.

#include "apoio/BancoTeste.h"
#include "schema/Atualizacao.h"
#include "schema/Referencia.h"

#include <QFile>
#include <gtest/gtest.h>

using namespace esquema;

namespace {

int linhasDoArquivo(const QString &arquivo)
{
    QFile f(":/referencia/" + arquivo);
    if (!f.open(QIODevice::ReadOnly)) return -1;
    return int(f.readAll().count('\n')) - 1;  // less the header
}

QVariant valor(db::Banco &b, const QString &sql)
{
    db::Transacao t(b, db::Modo::Leitura);
    return db::escalar(t, sql);
}

// An older installation: the reference rows and their marks gone, as before they existed.
void semReferencia(db::Banco &b)
{
    db::Transacao t(b);
    for (const QString &tb : tabelasReferencia()) {
        db::executar(t, "delete from " + tb);
        db::executar(t, "drop sequence " + marcaReferencia(tb));
    }
    t.commit();
}

TEST(Referencia, KeyIgnoresCaseAccentsSpacesAndLeadingZeros)
{
    const struct { QStringList a, b; bool iguais; } casos[] = {
        {{"São Paulo", "SP"}, {"SAO  PAULO ", "sp"}, true}, {{"Belém", "PA"}, {"Belém", "PB"}, false},
        {{"Santa Luzia", "MG"}, {"Santa Luzia D'Oeste", "RO"}, false}, {{"001"}, {"1"}, true}, {{"000"}, {"0"}, true},
        {{"104"}, {"1040"}, false}, {{"5102"}, {"5.102"}, false},  // a CFOP column holds the number itself
    };
    for (const auto &c : casos)
        EXPECT_EQ(chaveReferencia(c.a) == chaveReferencia(c.b), c.iguais) << c.a.join('/').toStdString();
}

TEST(Referencia, NewDatabaseStartsWithTheReferenceData)
{
    teste::BancoTemporario bt;
    db::Banco &b = bt.banco();
    const struct { QString sql; QVariant esperado; } casos[] = {
        {"select count(*) from TBCIDADES", linhasDoArquivo("cidades.tsv")},
        {"select count(distinct UF) from TBCIDADES", 27},
        {"select count(*) from TBCIDADES where upper(CIDADE) = 'BELO HORIZONTE' and UF = 'MG'", 1},
        {"select CODIGO from TBCIDADES where CIDADE = 'São Paulo' and UF = 'SP'", 3550308},
        {"select count(*) from TBBANCOS", linhasDoArquivo("bancos.tsv")},
        {"select BANCO || ' / ' || NOMEBANCO from TBBANCOS where NUMERO = '001'", "Banco do Brasil / Banco do Brasil S.A."},
        {"select count(*) from TBCFOP", linhasDoArquivo("cfop.tsv")},
        {"select DESCRICAO from TBCFOP where CFOP = 5102",
         "Venda de mercadoria adquirida ou recebida de terceiros, ou qualquer venda de mercadoria efetuada pelo MEI com "
         "exceção das saídas classificadas nos códigos 5.501, 5.502, 5.504 e 5.505"},
        // Quotation marks that WIN1252 holds come back as they were.
        {"select count(*) from TBCFOP where DESCRICAO containing '“'", 4},
    };
    for (const auto &c : casos) EXPECT_EQ(valor(b, c.sql).toString(), c.esperado.toString()) << c.sql.toStdString();
    EXPECT_GT(linhasDoArquivo("cidades.tsv"), 5500);
    const Metadados m = Metadados::ler(b);
    for (const QString &tb : tabelasReferencia()) EXPECT_TRUE(m.geradores.contains(marcaReferencia(tb))) << tb.toStdString();
}

TEST(Referencia, UpgradeLoadsOnceAndKeepsWhatTheUserTyped)
{
    teste::BancoTemporario bt;
    db::Banco &b = bt.banco();
    semReferencia(b);
    // Rows typed before the upgrade, in the user's own spelling.
    const struct { QString insert, conta, esperado; } proprios[] = {
        {"insert into TBCIDADES (CIDADE, UF, CEP) values ('BELO HORIZONTE', 'MG', '30000000')",
         "select list(CIDADE || '/' || CEP) from TBCIDADES where UF = 'MG' and upper(CIDADE) = 'BELO HORIZONTE'",
         "BELO HORIZONTE/30000000"},
        {"insert into TBCIDADES (CIDADE, UF) values ('Sao  Paulo', 'SP')",
         "select list(CIDADE) from TBCIDADES where UF = 'SP' and (CODIGO = 3550308 or CIDADE = 'Sao  Paulo')", "Sao  Paulo"},
        {"insert into TBBANCOS (NUMERO, BANCO) values ('1', 'BB')", "select list(BANCO) from TBBANCOS where NUMERO in ('1', '001')",
         "BB"},
        {"insert into TBCFOP (CFOP, DESCRICAO) values (5102, 'Venda')", "select list(DESCRICAO) from TBCFOP where CFOP = 5102",
         "Venda"},
    };
    {
        db::Transacao t(b);
        for (const auto &p : proprios) db::executar(t, p.insert);
        t.commit();
    }
    const QStringList feitas = atualizar(b);
    for (const QString &tb : tabelasReferencia())
        EXPECT_TRUE(feitas.contains(tb + ": carregar dados de referência")) << feitas.join(" | ").toStdString();
    auto contagens = [&] {
        return QString("%1/%2/%3").arg(valor(b, "select count(*) from TBCIDADES").toInt())
                                  .arg(valor(b, "select count(*) from TBBANCOS").toInt())
                                  .arg(valor(b, "select count(*) from TBCFOP").toInt());
    };
    const QString todas = QString("%1/%2/%3").arg(linhasDoArquivo("cidades.tsv")).arg(linhasDoArquivo("bancos.tsv"))
                              .arg(linhasDoArquivo("cfop.tsv"));
    EXPECT_EQ(contagens(), todas);
    for (const auto &p : proprios) EXPECT_EQ(valor(b, p.conta).toString(), p.esperado) << p.conta.toStdString();

    // Loaded once: rows the user deletes afterwards are not brought back.
    {
        db::Transacao t(b);
        db::executar(t, "delete from TBCIDADES where UF = 'AC'");
        t.commit();
    }
    bt.reabrir();
    EXPECT_TRUE(atualizar(bt.banco()).isEmpty());
    EXPECT_EQ(valor(bt.banco(), "select count(*) from TBCIDADES where UF = 'AC'").toInt(), 0);
}

} // namespace
