// Creating a database and bringing older ones up to date, against real database files.

#include "apoio/BancoTeste.h"
#include "schema/Atualizacao.h"

#include <gtest/gtest.h>

using namespace esquema;
using db::Decimal;

namespace {

// Everything the program declares is in the database, on its domain, with key, generator and trigger.
void confereEsquemaCompleto(db::Banco &b)
{
    const Metadados m = Metadados::ler(b);
    for (const Tabela &t : tabelas()) {
        SCOPED_TRACE(t.nome.toStdString());
        ASSERT_TRUE(m.tabelas.contains(t.nome));
        const auto cols = m.colunas.value(t.nome);
        EXPECT_EQ(cols.size(), t.colunas.size());
        for (const Coluna &c : t.colunas) EXPECT_EQ(cols.value(c.nome), c.dominio) << c.nome.toStdString();
        if (!t.chave().isEmpty()) {
            EXPECT_TRUE(m.restricoes.contains(t.restricaoChave()));
        }
        if (t.temId()) {
            EXPECT_TRUE(m.geradores.contains(t.gerador()));
            EXPECT_TRUE(m.gatilhos.contains(t.gatilho()));
        }
    }
    EXPECT_EQ(m.tabelas.size(), tabelas().size());
    EXPECT_TRUE(m.geradores.contains("GN_TBUSUARIOS_ID2"));
    EXPECT_TRUE(m.restricoes.contains("UNQ1_TBGRUPOSSUBSUBGRUPO"));
}

QString texto1024Info(db::Banco &b)
{
    db::Transacao t(b, db::Modo::Leitura);
    db::Consulta q(t, "select f.rdb$field_sub_type, f.rdb$segment_length, trim(cs.rdb$character_set_name) "
                      "from rdb$fields f join rdb$character_sets cs on cs.rdb$character_set_id = f.rdb$character_set_id "
                      "where f.rdb$field_name = 'TEXTO1024'");
    q.executar();
    if (!q.proxima()) return {};
    return QString("%1/%2/%3").arg(q.valor(0).toInt()).arg(q.valor(1).toInt()).arg(q.valor(2).toString());
}

TEST(Esquema, NewDatabaseHasTheWholeSchemaAndTheFirstRecords)
{
    teste::BancoTemporario bt;
    confereEsquemaCompleto(bt.banco());
    EXPECT_EQ(texto1024Info(bt.banco()), "1/1024/WIN1252");
    EXPECT_TRUE(atualizar(bt.banco()).isEmpty());

    db::Transacao t(bt.banco());
    EXPECT_EQ(db::escalar(t, "select rdb$character_set_name from rdb$database").toString().trimmed(), "WIN1252");
    EXPECT_EQ(db::escalar(t, "select p.RAMO || '/' || c.NOME || '/' || c.EM from TBPARGLOBAIS p "
                             "join TBCAD c on c.ID = p.IDEMPRESA").toString(), "CO/SUA EMPRESA AQUI/S");
    EXPECT_EQ(db::escalar(t, "select n.NIVEL from TBCAD u join TBNIVEIS n on n.ID = u.IDNIVEL "
                             "where u.USUARIO = 'ADMIN' and u.US = 'S'").toInt(), 999);
    EXPECT_EQ(db::escalar(t, "select count(*) from TBCCOR where NUMERO = 'CAIXA'").toInt(), 1);
    // The trigger numbers a row inserted without ID from the table's generator.
    const int id = db::escalar(t, "insert into TBFERIADOS (DESCRICAO) values ('Natal') returning ID").toInt();
    EXPECT_EQ(db::escalar(t, "select gen_id(GN_TBFERIADOS_ID, 0) from rdb$database").toInt(), id);
}

TEST(Esquema, OlderInstallationIsUpgradedInPlaceKeepingEveryValue)
{
    teste::BancoTemporario bt(teste::Forma::Antiga);
    db::Banco &b = bt.banco();
    const QString obs = "Cliente pediu entrega à tarde; troca de peça ç/ã\n" + QString(3000, 'x');
    {
        db::Transacao t(b);
        db::executar(t, "insert into TBCOM (ID, OP, DATA, OBSERVACOES, TOTAL) values (10, 1, :D, :O, :T)",
                     {{"D", QDateTime(QDate(2026, 1, 30), QTime(10, 0))}, {"O", obs},
                      {"T", QVariant::fromValue(Decimal("1234.56"))}});
        db::executar(t, "insert into TBCOM (ID, OP) values (11, 2)");  // no date: stays without a forecast
        db::executar(t, "insert into TBCOMITENS (ID, FK, DESCRICAO, DESCRICAOLIVRE) values (1, 10, 'Parafuso', 'livre')");
        db::executar(t, "insert into TBCAD (ID, NOME) values (50, 'Padaria Pão Quente')");
        db::executar(t, "insert into TBGRUPOSSUB (ID, FK, SUBGRUPO) values (1, 1, 'Ferragens')");
        db::executar(t, "insert into TBGRUPOSSUB (ID, FK, SUBGRUPO) values (2, 1, 'Tintas')");
        t.commit();
    }
    const int posicao = Metadados::ler(b).posicoes["TBCOM"]["OBSERVACOES"];
    EXPECT_TRUE(texto1024Info(b).isEmpty());

    // Every change applies, but for columns of tables that the upgrade itself creates whole (their
    // columns are born with their present domains).
    QSet<QString> criadas;
    QStringList esperadas;
    for (const Mudanca &mu : mudancas()) {
        if (mu.tipo == Mudanca::CriarTabela) criadas.insert(mu.tabela);
        const bool deColuna = mu.tipo == Mudanca::AdicionarColuna || mu.tipo == Mudanca::MudarDominio;
        if (!(deColuna && criadas.contains(mu.tabela))) esperadas << mu.descricao();
    }
    EXPECT_EQ(atualizar(b), esperadas);
    confereEsquemaCompleto(b);
    EXPECT_EQ(Metadados::ler(b).posicoes["TBCOM"]["OBSERVACOES"], posicao);

    bt.reabrir();
    EXPECT_TRUE(atualizar(bt.banco()).isEmpty());
    db::Transacao t(bt.banco());
    db::Consulta q(t, "select OBSERVACOES, DATAPREVENTREGA, TOTAL from TBCOM order by ID");
    q.executar();
    ASSERT_TRUE(q.proxima());
    EXPECT_EQ(q["OBSERVACOES"].toString(), obs);
    EXPECT_EQ(q["DATAPREVENTREGA"].toDateTime(), QDateTime(QDate(2026, 2, 6), QTime(10, 0)));
    EXPECT_EQ(q["TOTAL"].value<Decimal>(), Decimal("1234.56"));
    ASSERT_TRUE(q.proxima());
    EXPECT_TRUE(q["DATAPREVENTREGA"].isNull());
    EXPECT_EQ(db::escalar(t, "select c.NOME || '/' || i.DESCRICAO from TBCAD c, TBCOMITENS i where c.ID = 50 and i.ID = 1").toString(),
              "Padaria Pão Quente/Parafuso");
}

TEST(Esquema, FailingChangeIsReportedAndLeavesTheDatabaseAsItWas)
{
    teste::BancoTemporario bt(teste::Forma::Antiga);
    db::Banco &b = bt.banco();
    {
        db::Transacao t(b);
        db::executar(t, "insert into TBGRUPOSSUB (ID, FK, SUBGRUPO) values (1, 1, 'Tintas')");
        db::executar(t, "insert into TBGRUPOSSUB (ID, FK, SUBGRUPO) values (2, 2, 'Tintas')");
        t.commit();
    }
    try {
        atualizar(b);
        FAIL() << "a restrição não poderia ser criada com nomes repetidos";
    } catch (const ErroAtualizacao &e) {
        EXPECT_EQ(e.mudanca().coluna, "UNQ1_TBGRUPOSSUBSUBGRUPO");
        EXPECT_TRUE(e.mensagem().contains("UNQ1_TBGRUPOSSUBSUBGRUPO")) << e.mensagem().toStdString();
    }
    Metadados m = Metadados::ler(b);
    EXPECT_FALSE(m.restricoes.contains("UNQ1_TBGRUPOSSUBSUBGRUPO"));
    EXPECT_TRUE(m.temColuna("TBGRUPOSSUB", "TIPO"));  // the changes before it stay applied
    {
        db::Transacao t(b);
        EXPECT_EQ(db::escalar(t, "select count(*) from TBGRUPOSSUB").toInt(), 2);
        db::executar(t, "update TBGRUPOSSUB set SUBGRUPO = 'Tintas 2' where ID = 2");
        t.commit();
    }
    atualizar(b);
    confereEsquemaCompleto(b);
}

// A start interrupted in the middle of moving the blob column finishes the move at the next start.
TEST(Esquema, InterruptedColumnMoveIsFinishedNextTime)
{
    const QString dominio = ddlDominio("TEXTO1024");
    const QStringList estagios[] = {
        {dominio, "ALTER TABLE TBCOM ADD OBSERVACOES_NOVO TEXTO1024"},
        {dominio, "ALTER TABLE TBCOM ADD OBSERVACOES_NOVO TEXTO1024", "#copiar",
         "ALTER TABLE TBCOM DROP OBSERVACOES"},
    };
    for (const QStringList &estagio : estagios) {
        teste::BancoTemporario bt(teste::Forma::Antiga);
        db::Banco &b = bt.banco();
        {
            db::Transacao t(b);
            db::executar(t, "insert into TBCOM (ID, OBSERVACOES) values (1, 'texto que não se perde')");
            t.commit();
        }
        for (const QString &cmd : estagio) {
            db::Transacao t(b);
            db::executar(t, cmd == "#copiar" ? "UPDATE TBCOM SET OBSERVACOES_NOVO = OBSERVACOES" : cmd);
            t.commit();
        }
        atualizar(b);
        confereEsquemaCompleto(b);
        db::Transacao t(b);
        EXPECT_EQ(db::escalar(t, "select OBSERVACOES from TBCOM where ID = 1").toString(), "texto que não se perde");
    }
}

// A database made before the principal company had a situation gets one at the next start, once;
// a company with a situation of its own keeps it as it is.
TEST(Esquema, PrincipalCompanyWithoutSituationGetsOneOnce)
{
    const struct { QString propria, esperada; } casos[] = {{"", "1/A"}, {"B", "1/B"}};
    for (const auto &c : casos) {
        SCOPED_TRACE(c.esperada.toStdString());
        teste::BancoTemporario bt;
        db::Banco &b = bt.banco();
        {
            db::Transacao t(b);
            db::executar(t, "delete from TBCADSIT");
            if (!c.propria.isEmpty())
                db::executar(t, "insert into TBCADSIT (FK, SITUACAO, DATA) select IDEMPRESA, :S, '2020-01-01' from TBPARGLOBAIS",
                             {{"S", c.propria}});
            db::executar(t, "drop sequence GN_ORB_SIT_EMPRESA");
            t.commit();
        }
        EXPECT_TRUE(atualizar(b).contains("TBCADSIT: situação da empresa principal"));
        EXPECT_TRUE(atualizar(b).isEmpty());
        db::Transacao t(b);
        EXPECT_EQ(db::escalar(t, "select count(*) || '/' || max(s.SITUACAO) from TBCADSIT s "
                                 "join TBPARGLOBAIS p on p.IDEMPRESA = s.FK where s.DATA <= current_date").toString(), c.esperada);
    }
}

// A data step cut short leaves neither rows nor its mark behind, and runs whole the next time.
TEST(Esquema, DataStepIsAllOrNothing)
{
    teste::BancoTemporario bt;
    db::Banco &b = bt.banco();
    int vezes = 0;
    const Mudanca mu{Mudanca::CarregarDados, "TBFERIADOS", "GN_ORB_TESTE", {}, "feriados", [&](db::Transacao &t) {
        db::executar(t, "insert into TBFERIADOS (DESCRICAO) values ('Natal')");
        if (++vezes == 1) throw std::runtime_error("interrompido");
    }};
    auto estado = [&] {
        db::Transacao t(b, db::Modo::Leitura);
        return QString("%1/%2").arg(db::escalar(t, "select count(*) from TBFERIADOS where DESCRICAO = 'Natal'").toInt())
                               .arg(Metadados::ler(b).geradores.contains("GN_ORB_TESTE") ? "marcado" : "-");
    };
    Metadados m = Metadados::ler(b);
    EXPECT_THROW(aplicar(b, m, mu), std::runtime_error);
    EXPECT_EQ(estado(), "0/-");
    EXPECT_TRUE(aplicar(b, m, mu));
    EXPECT_EQ(estado(), "1/marcado");
    m = Metadados::ler(b);
    EXPECT_FALSE(aplicar(b, m, mu));
    EXPECT_EQ(estado(), "1/marcado");
}

TEST(Esquema, SchemaTextParsing)
{
    const QList<Tabela> t = lerEsquema("# comentário\nTABELA TBX\n  ID INTEIRO NOT NULL\n  N STRING5 DEFAULT 0 NOT NULL\n"
                                       "TABELA TBY\n  CODIGO INTEIRO NOT NULL\n  TABELA STRING50\n");
    ASSERT_EQ(t.size(), 2);
    EXPECT_EQ(t[1].colunas.size(), 2);
    EXPECT_EQ(ddlColuna(t[0].colunas[1]), "N STRING5 DEFAULT 0 NOT NULL");
    EXPECT_EQ(t[1].chave(), "CODIGO");
    EXPECT_FALSE(t[1].temId());
    EXPECT_EQ(QStringList({tipoDominio("STRING240"), tipoDominio("CARACTERE2"), tipoDominio("STRINGX")}),
              QStringList({"VARCHAR(240)", "CHAR(2)", ""}));
    EXPECT_THROW(lerEsquema("  SEMTABELA INTEIRO"), std::runtime_error);
}

} // namespace
