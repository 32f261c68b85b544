// The data layer against a real embedded database: types, exact numbers, parameters, errors.

#include "apoio/BancoTeste.h"

#include <climits>
#include <gtest/gtest.h>

using db::Decimal;
using db::TipoErro;

namespace {

struct BancoTest : ::testing::Test {
    teste::BancoTemporario bt;
    db::Transacao t{bt.banco()};

    QVariant ida(const QString &sql, const QVariant &v)
    {
        db::Consulta q(t, sql);
        q.bind("V", v);
        return q.escalar();
    }

    TipoErro erroDe(const std::function<void()> &f)
    {
        try {
            f();
        } catch (const db::ErroBanco &e) {
            EXPECT_FALSE(e.mensagem().isEmpty());
            return e.tipo();
        }
        ADD_FAILURE() << "nenhum erro";
        return TipoErro::Outro;
    }
};

// Firebird rounds half away from zero when it stores more decimals; our type must agree.
TEST_F(BancoTest, StoredNumericRoundsAsTheServerDoes)
{
    const char *casos[] = {"1.005", "1.004", "0.285", "2.675", "1234567.895", "0.001", "0.005", "99.9951"};
    for (const char *c : casos) {
        for (const QString &s : {QString(c), "-" + QString(c)}) {
            const Decimal d(s.toLatin1().constData());
            const QVariant servidor = ida("select cast(:V as numeric(18,2)) from rdb$database", QVariant::fromValue(d));
            EXPECT_EQ(servidor.value<Decimal>(), d.comEscala(2, db::Arredonda::MeioLonge)) << s.toStdString();
            const QVariant s4 = ida("select cast(:V as numeric(18,4)) from rdb$database", QVariant::fromValue(d));
            EXPECT_EQ(s4.value<Decimal>(), d.comEscala(4)) << s.toStdString();
        }
    }
}

TEST_F(BancoTest, DivisionAsTheDatabaseComputesIt)
{
    struct { const char *a, *b; } casos[] = {{"200.00", "3"}, {"200.00", "3.00"}, {"-10.00", "3"}, {"1.0000", "7.00"}, {"5", "2"}};
    for (auto c : casos) {
        const Decimal a(c.a), b(c.b);
        db::Consulta r(t, QString("select %1 / %2 from rdb$database").arg(c.a, c.b));
        const QVariant v = r.escalar();  // integers divide as integers
        const Decimal lido = v.metaType() == QMetaType::fromType<Decimal>() ? v.value<Decimal>() : Decimal::inteiro(v.toLongLong());
        EXPECT_EQ(lido, a.dividirComoBanco(b)) << c.a << "/" << c.b;
    }
}

TEST_F(BancoTest, ValuesComeBackAsTheyWent)
{
    db::executar(t, "create table TIPOS (I integer, B bigint, N2 numeric(18,2), N4 numeric(18,4), N5 numeric(18,5), "
                    "S varchar(20), C char(3), D date, DH timestamp, H time, F double precision, "
                    "TX blob sub_type 1 character set WIN1252, BI blob sub_type 0)");
    t.commit();
    const QString acentos = "Ação São João º ª ç € “”";
    const QByteArray binario("\x00\x01\xff\xfe imagem", 12);
    struct Caso { const char *coluna; QVariant valor; };
    const Caso casos[] = {
        {"I", 42}, {"I", -7}, {"B", qint64(9000000000LL)},
        {"N2", QVariant::fromValue(Decimal("-1234567.89"))}, {"N4", QVariant::fromValue(Decimal("0.0001"))},
        {"N5", QVariant::fromValue(Decimal("1.23456"))},
        {"S", "Coração"}, {"C", "SIM"}, {"D", QDate(2026, 2, 28)}, {"DH", QDateTime(QDate(2026, 11, 22), QTime(23, 59, 58, 120))},
        {"H", QTime(7, 30, 15)}, {"F", 0.25}, {"TX", acentos}, {"TX", QString(70000, 'x')}, {"BI", binario},
        {"S", QVariant()},
    };
    for (const Caso &c : casos) {
        db::executar(t, "delete from TIPOS");
        db::executar(t, QString("insert into TIPOS (%1) values (:V)").arg(c.coluna), {{"V", c.valor}});
        const QVariant lido = db::escalar(t, QString("select %1 from TIPOS").arg(c.coluna));
        if (c.valor.metaType() == QMetaType::fromType<Decimal>())
            EXPECT_EQ(lido.value<Decimal>(), c.valor.value<Decimal>()) << c.coluna;
        else if (c.valor.isNull())
            EXPECT_TRUE(lido.isNull()) << c.coluna;
        else
            EXPECT_EQ(lido, c.valor) << c.coluna << " " << lido.toString().left(40).toStdString();
    }
    // A value wider than 64 bits at its own scale goes with fewer decimals, rounded by the column.
    const Decimal custo = Decimal("9300000000.1234").comEscala(9) + Decimal("0.000056789");
    db::executar(t, "delete from TIPOS");
    db::executar(t, "insert into TIPOS (N4) values (:V)", {{"V", QVariant::fromValue(custo)}});
    EXPECT_EQ(db::escalar(t, "select N4 from TIPOS").value<Decimal>(), Decimal("9300000000.1235"));
    // The text was stored in the database's own character set, not as UTF-8 bytes.
    db::executar(t, "delete from TIPOS");
    db::executar(t, "insert into TIPOS (S, TX) values (:S, :S)", {{"S", "ção"}});
    EXPECT_EQ(db::escalar(t, "select octet_length(S) from TIPOS").toInt(), 3);
    EXPECT_EQ(db::escalar(t, "select char_length(TX) from TIPOS").toInt(), 3);
}

TEST_F(BancoTest, NamedParametersIgnoreLiteralsAndRepeat)
{
    const db::SqlPosicional p = db::converterParametros(
        "select ':NAO' || :A, \":X\", :a -- :COMENTARIO\n from T where x = :B /* :C */ and y = :b_2");
    EXPECT_EQ(p.nomes, (QStringList{"A", "A", "B", "B_2"}));
    EXPECT_EQ(p.sql, "select ':NAO' || ?, \":X\", ? -- :COMENTARIO\n from T where x = ? /* :C */ and y = ?");

    EXPECT_TRUE(db::converterParametros("execute block as declare i int = 0; begin i = :i; end").nomes.isEmpty());
    db::Consulta q(t, "select cast(:X as integer) + cast(:X as integer) from rdb$database");
    q.bind(":x", 21);
    EXPECT_EQ(q.escalar().toLongLong(), 42);
    EXPECT_THROW(q.bind("Y", 1), std::invalid_argument);
}

TEST_F(BancoTest, FailuresBecomeTypedPortugueseErrors)
{
    db::Banco &b = bt.banco();
    struct Caso { const char *nome; std::function<void()> f; TipoErro tipo; };
    const Caso casos[] = {
        {"texto longo", [&] { db::executar(t, "update TBCAD set UFEXPID = :V where ID = 1", {{"V", "SPX"}}); }, TipoErro::TextoLongo},
        {"fora do WIN1252", [&] { db::executar(t, "update TBCAD set NOME = :V where ID = 1", {{"V", "Loja 日本"}}); }, TipoErro::ForaDoConjunto},
        {"data inválida", [&] { db::executar(t, "update TBCAD set DATANASC = :V where ID = 1", {{"V", "31/02/2026"}}); }, TipoErro::DataInvalida},
        {"número inválido", [&] { db::executar(t, "update TBCAD set CODIGO = :V where ID = 1", {{"V", "12a"}}); }, TipoErro::NumeroInvalido},
        // 65,546 characters once travelled as 10 (the length wrapped at 16 bits) and were stored cut.
        {"texto além de 64 KiB", [&] { db::executar(t, "update TBCAD set NOME = :V where ID = 1", {{"V", QString(65546, 'A')}}); },
         TipoErro::TextoLongo},
        {"número além da coluna", [&] {
             db::executar(t, "insert into TBITENS (CUSTO) values (:V)", {{"V", QVariant::fromValue(Decimal("1000000000000000"))}});
         }, TipoErro::NumeroInvalido},
        {"número além de 64 bits", [&] {
             const Decimal enorme = Decimal::inteiro(INT64_MAX) * Decimal("1000");
             db::executar(t, "update TBCAD set CODIGO = :V where ID = 1", {{"V", QVariant::fromValue(enorme)}});
         }, TipoErro::NumeroInvalido},
        {"chave duplicada", [&] { db::executar(t, "insert into TBCAD (ID) values (1)"); }, TipoErro::Duplicado},
        {"obrigatório", [&] { db::executar(t, "insert into TBCORES (CODIGO) values (null)"); }, TipoErro::Obrigatorio},
        {"servidor inexistente", [&] { db::Banco::abrir({"127.0.0.1/1:/nada/ORBManager.fdb"}); }, TipoErro::Conexao},
    };
    for (const Caso &c : casos) {
        SCOPED_TRACE(c.nome);
        EXPECT_EQ(erroDe(c.f), c.tipo);
        t.rollback();
    }
    // A typed-in number in Brazilian format is accepted where a number is expected.
    db::executar(t, "update TBCAD set CODIGO = :V where ID = 1", {{"V", "1.234"}});
    EXPECT_EQ(db::escalar(t, "select CODIGO from TBCAD where ID = 1").toInt(), 1234);
    EXPECT_TRUE(b.vivo());
}

TEST_F(BancoTest, TransactionRollsBackUnlessCommitted)
{
    {
        db::Transacao t2(bt.banco());
        db::executar(t2, "update TBCAD set NOME = 'MUDOU' where ID = 1");
    }
    EXPECT_EQ(db::escalar(t, "select NOME from TBCAD where ID = 1").toString(), "SUA EMPRESA AQUI");
    db::Transacao t3(bt.banco());
    db::executar(t3, "update TBCAD set NOME = 'MUDOU' where ID = 1");
    t3.commit();
    t.commit();
    EXPECT_EQ(db::escalar(t, "select NOME from TBCAD where ID = 1").toString(), "MUDOU");
}

} // namespace
