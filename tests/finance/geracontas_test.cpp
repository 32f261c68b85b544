// GeraContas and DefineParcelas over a real database: due dates, values against the server's own
// quotient, surplus instalments, the actions' columns, apportionment adding up.

#include "apoio/BancoTeste.h"
#include "GeraContas.h"

#include <gtest/gtest.h>

using db::Decimal;
using orb::GeraContas;

namespace {

struct Parcela {
    int id;
    QString parcela;
    QDate vencimento;
    int prazo;
    QString valor, bruto, tipo;
};

struct GeraContasTest : ::testing::Test {
    teste::BancoTemporario bt;
    db::Transacao t{bt.banco()};

    // A document of kind `op` with one billing; returns the billing's ID.
    int faturamento(int op, const char *valor, int parcelas, bool entrada, int primVenc, int intVenc, QDate data = QDate(2026, 1, 31),
                    const QString &geraFin = "A")
    {
        idDoc = db::escalar(t, "Insert Into TbCom (Op, Emissao, Data, IdCad, SubtotalM, Total) Values (:OP, :D, :D, 1, :V, :V) Returning Id",
                            {{"OP", op}, {"D", QDateTime(data, QTime(9, 0))}, {"V", QVariant::fromValue(Decimal(valor))}}).toInt();
        return db::escalar(t, "Insert Into TbComFat (Fk, Data, ValorBr, Valor, CondPagto, Parcelas, Entrada, PrimVenc, IntVenc, GeraFin) "
                              "Values (:FK, :D, :V, :V, 'P', :N, :E, :PV, :IV, :GF) Returning Id",
                           {{"FK", idDoc}, {"D", data}, {"V", QVariant::fromValue(Decimal(valor))}, {"N", QString::asprintf("%02d", parcelas)},
                            {"E", entrada ? "S" : "N"}, {"PV", primVenc}, {"IV", intVenc}, {"GF", geraFin}}).toInt();
    }

    QList<Parcela> parcelas(int op, int idFat)
    {
        db::Consulta q(t, "Select Id, Parcela, Vencimento, Prazo, Valor, ValorBruto, Tipo From TbContas Where Fks = :FKS and Fk = :FK "
                          "Order By Prazo, Parcela");
        q.bind("FKS", op).bind("FK", idFat);
        q.executar();
        QList<Parcela> l;
        while (q.proxima())
            l.append({q[0].toInt(), q[1].toString(), q[2].toDate(), q[3].toInt(), q[4].value<Decimal>().texto(),
                      q[5].value<Decimal>().texto(), q[6].toString()});
        return l;
    }

    Decimal servidor(const QString &sql) { return db::escalar(t, "Select " + sql + " From Rdb$Database").value<Decimal>(); }

    int idDoc = 0;
};

TEST_F(GeraContasTest, DueDatesFollowTheTerms)
{
    // Instalment, due date and days of each, three instalments from a billing on 31/01.
    const struct { bool entrada; int primVenc, intVenc; QStringList esperado; } casos[] = {
        // A down payment: the base is the billing date + 30 days, then one month at a time from it.
        {true, 30, 30, {"EN 31/01 0", "02 02/03 30", "03 02/04 61"}},
        {false, 10, 15, {"01 10/02 10", "02 25/02 25", "03 12/03 40"}},
        // Months from the base, never chained: 31/01 + 28 days is 28/02, then 28/03, 28/04.
        {false, 28, 30, {"01 28/02 28", "02 28/03 56", "03 28/04 87"}},
    };
    for (const auto &c : casos) {
        const int fat = faturamento(1, "90.00", 3, c.entrada, c.primVenc, c.intVenc);
        GeraContas(t, "1", QString::number(fat), "I", {});
        QStringList r;
        for (const Parcela &p : parcelas(1, fat)) r << QString("%1 %2 %3").arg(p.parcela, p.vencimento.toString("dd/MM")).arg(p.prazo);
        EXPECT_EQ(r, c.esperado);
    }
}

TEST_F(GeraContasTest, ValuesAreTheServersQuotientWithTheRemainderOnTheLast)
{
    struct { const char *total; int n; } casos[] = {{"100.00", 3}, {"200.00", 3}, {"0.05", 4}, {"1234567.89", 7}, {"-100.00", 3}};
    for (const auto &c : casos) {
        SCOPED_TRACE(std::string(c.total) + " / " + std::to_string(c.n));
        const int fat = faturamento(1, c.total, c.n, false, 30, 30);
        GeraContas(t, "1", QString::number(fat), "I", {});
        const auto l = parcelas(1, fat);
        ASSERT_EQ(l.size(), c.n);
        const Decimal q = servidor(QString("Cast(%1 As Numeric(18,2)) / %2").arg(c.total).arg(c.n));
        Decimal soma = Decimal::bruto(0, 2);
        for (int i = 0; i < c.n; ++i) {
            if (i < c.n - 1)
                EXPECT_EQ(l[i].valor, q.texto());
            EXPECT_EQ(l[i].valor, l[i].bruto);
            soma += Decimal(l[i].valor.toLatin1().constData());
        }
        EXPECT_EQ(soma, Decimal(c.total));
    }
}

TEST_F(GeraContasTest, ContractsBillEachInstalmentAtTheFullValue)
{
    const int fat = faturamento(3, "100.00", 3, false, 30, 30);
    GeraContas(t, "3", QString::number(fat), "I", {});
    // The last takes the difference between three full values and the net total.
    QStringList r;
    for (const Parcela &p : parcelas(3, fat)) r << p.valor + "/" + p.bruto;
    EXPECT_EQ(r, QStringList({"100.00/100.00", "100.00/100.00", "-100.00/-100.00"}));
}

TEST_F(GeraContasTest, FewerInstalmentsDeleteOnlyTheSurplus)
{
    const int fat = faturamento(1, "500.00", 5, false, 30, 30);
    GeraContas(t, "1", QString::number(fat), "I", {});
    const auto antes = parcelas(1, fat);
    ASSERT_EQ(antes.size(), 5);
    db::executar(t, "Update TbComFat Set Parcelas = '03' Where Id = :ID", {{"ID", fat}});
    GeraContas(t, "1", QString::number(fat), "I", {});
    const auto depois = parcelas(1, fat);
    ASSERT_EQ(depois.size(), 3);
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(depois[i].id, antes[i].id) << "a parcela " << i + 1 << " foi recriada";
    EXPECT_EQ(db::escalar(t, "Select Count(*) From TbContasRat R Where R.Fk In (:A, :B)", {{"A", antes[3].id}, {"B", antes[4].id}}).toInt(), 0);
    QStringList valores;
    for (const auto &p : depois) valores << p.valor;
    EXPECT_EQ(valores, QStringList({"166.66", "166.66", "166.68"}));
}

TEST_F(GeraContasTest, PurchasesArePayables)
{
    struct { int op; const char *tipo; } casos[] = {{1, "C"}, {2, "C"}, {3, "C"}, {4, "D"}, {8, "C"}};
    for (const auto &c : casos) {
        const int fat = faturamento(c.op, "10.00", 2, false, 30, 30);
        GeraContas(t, QString::number(c.op), QString::number(fat), "I", {});
        for (const auto &p : parcelas(c.op, fat)) EXPECT_EQ(p.tipo, c.tipo) << "op " << c.op;
    }
}

TEST_F(GeraContasTest, EachActionTouchesOnlyItsColumns)
{
    const int fat = faturamento(1, "90.00", 3, false, 30, 30);
    GeraContas(t, "1", QString::number(fat), "I", {});
    auto mexer = [&] {
        db::executar(t, "Update TbContas Set Valor = 1, ValorBruto = 1, Vencimento = '2030-01-01', Prazo = 999 Where Fk = :FK", {{"FK", fat}});
    };
    mexer();
    GeraContas(t, "1", QString::number(fat), "V", {});
    for (const auto &p : parcelas(1, fat)) {
        EXPECT_NE(p.vencimento, QDate(2030, 1, 1));
        EXPECT_EQ(p.bruto, "1.00");  // values left alone
    }
    mexer();
    GeraContas(t, "1", QString::number(fat), "P", {});
    for (const auto &p : parcelas(1, fat)) {
        EXPECT_EQ(p.vencimento, QDate(2030, 1, 1));  // due dates left alone
        EXPECT_EQ(p.valor, "30.00");
    }
}

TEST_F(GeraContasTest, DeleteRemovesEverythingWhateverThePayments)
{
    const int fat = faturamento(1, "90.00", 3, false, 30, 30);
    GeraContas(t, "1", QString::number(fat), "I", {});
    const int conta = parcelas(1, fat).first().id;
    db::executar(t, "Insert Into TbContasPagtos (Data, Valor, Fk) Values ('2026-02-01', 30, :FK)", {{"FK", conta}});
    GeraContas(t, "1", QString::number(fat), "D", {});
    EXPECT_TRUE(parcelas(1, fat).isEmpty());
    EXPECT_EQ(db::escalar(t, "Select Count(*) From TbContasRat Where Fk = :FK", {{"FK", conta}}).toInt(), 0);
}

TEST_F(GeraContasTest, PaymentsAreClearedBeforeTheFinanceMomentOnly)
{
    const int fat = faturamento(1, "90.00", 1, false, 30, 30);
    GeraContas(t, "1", QString::number(fat), "I", {});
    const int conta = parcelas(1, fat).first().id;
    auto pagar = [&] { db::executar(t, "Insert Into TbContasPagtos (Data, Valor, Fk) Values ('2026-02-01', 90, :FK)", {{"FK", conta}}); };
    auto pagamentos = [&] { return db::escalar(t, "Select Count(*) From TbContasPagtos Where Fk = :FK", {{"FK", conta}}).toInt(); };
    pagar();
    GeraContas(t, "1", QString::number(fat), "I", {});  // not approved: the payment goes
    EXPECT_EQ(pagamentos(), 0);
    pagar();
    GeraContas(t, "1", QString::number(fat), "E", QDateTime(QDate(2026, 2, 1), QTime(10, 0)));  // approved: kept, instalment paid
    EXPECT_EQ(pagamentos(), 1);
    EXPECT_EQ(db::escalar(t, "Select Situacao From TbContas Where Id = :ID", {{"ID", conta}}).toString(), "QUITADO");
    db::executar(t, "Update TbParGlobais Set Ramo = 'ME'");
    GeraContas(t, "1", QString::number(fat), "I", {});  // the clinic segment never clears them
    EXPECT_EQ(pagamentos(), 1);
}

TEST_F(GeraContasTest, ApportionmentAddsUpToEachInstalment)
{
    for (const char *ramo : {"CO", "EN"}) {
        SCOPED_TRACE(ramo);
        db::executar(t, "Update TbParGlobais Set Ramo = :R", {{"R", ramo}});
        const int fat = faturamento(1, "100.00", 3, false, 30, 30);
        // Three lines over two categories: thirds that never add up by themselves.
        const char *linhas[][2] = {{"33.33", "1"}, {"33.33", "2"}, {"33.34", "1"}};
        for (const auto &l : linhas)
            db::executar(t, "Insert Into TbComItens (Tipo, Subtotal, IdCategoria, IdCCusto, Fk) Values ('M', :S, :C, :C, :FK)",
                         {{"S", QVariant::fromValue(Decimal(l[0]))}, {"C", QString(l[1]).toInt()}, {"FK", idDoc}});
        GeraContas(t, "1", QString::number(fat), "I", {});
        for (const auto &p : parcelas(1, fat)) {
            EXPECT_EQ(db::escalar(t, "Select Count(*) From TbContasRat Where Fk = :FK", {{"FK", p.id}}).toInt(), 2);
            EXPECT_EQ(db::escalar(t, "Select Sum(Valor) From TbContasRat Where Fk = :FK", {{"FK", p.id}}).value<Decimal>(),
                      Decimal(p.valor.toLatin1().constData()));
        }
    }
    // Other modules take the parameter table's default category, whole.
    db::executar(t, "Update TbParGlobais Set Ramo = 'CO'");
    db::executar(t, "Insert Into TbParServicos (Data, IdCategoria, IdSubcategoria) Values ('2026-01-01', 7, 8)");
    const int fat = faturamento(2, "100.00", 3, false, 30, 30);
    GeraContas(t, "2", QString::number(fat), "I", {});
    for (const auto &p : parcelas(2, fat))
        EXPECT_EQ(db::escalar(t, "Select List(IdCategoria || '/' || IdSubcategoria || '/' || Valor) From TbContasRat Where Fk = :FK",
                              {{"FK", p.id}}).toString(), "7/8/" + p.valor);
}

TEST_F(GeraContasTest, CardInstalmentsTakeTheBrandsDiscount)
{
    const int bandeira = db::escalar(t, "Insert Into TbBandeiras (Bandeira, PercDesconto) Values ('CARTAO X', 3.33) Returning Id").toInt();
    db::executar(t, "Insert Into TbParVendas (Data, FormaPagto) Values ('2026-01-01', 'CARTÃO')");
    const int fat = faturamento(1, "100.00", 2, false, 30, 30);
    GeraContas(t, "1", QString::number(fat), "I", {});
    db::executar(t, "Update TbContas Set IdBandeira = :B Where Fk = :F", {{"B", bandeira}, {"F", fat}});
    GeraContas(t, "1", QString::number(fat), "P", {});
    // 50.00 × (1 − 3.33 / 100): the percentage divided as the database does (0.03), then the product.
    const Decimal liquido = servidor("Cast(Cast(50.00 As Numeric(18,2)) * (1 - (Cast(3.33 As Numeric(18,2)) / 100)) As Numeric(18,2))");
    EXPECT_EQ(db::escalar(t, "Select First 1 TipoDoc || ' ' || ValorBruto || ' ' || Valor || ' ' || PercDescontos From TbContas "
                             "Where Fk = :F Order By Parcela", {{"F", fat}}).toString(),
              "CARTÃO 50.00 " + liquido.texto() + " 3.33");
}

TEST_F(GeraContasTest, CashAccountIsEnsured)
{
    db::executar(t, "Delete From TbCCor");
    const int fat = faturamento(1, "10.00", 1, false, 0, 0);
    for (int vez = 0; vez < 2; ++vez) {
        GeraContas(t, "1", QString::number(fat), "I", {});
        EXPECT_EQ(db::escalar(t, "Select Count(*) From TbCCor Where Numero = 'CAIXA'").toInt(), 1);
    }
}

TEST_F(GeraContasTest, DefineParcelasRoundsAndCopiesTheFirstDocument)
{
    const int fat = faturamento(1, "200.00", 3, false, 30, 30);
    GeraContas(t, "1", QString::number(fat), "I", {});
    const int primeira = parcelas(1, fat).first().id;
    db::executar(t, "Update TbContas Set TipoDoc = 'CHEQUE', Numero = '000041', IdBanco = 5, AgenciaCh = '1234', PercDescontos = 10 "
                    "Where Id = :ID", {{"ID", primeira}});
    orb::DefineParcelas(t, fat);
    db::Consulta q(t, "Select TipoDoc || ' ' || Numero || ' ' || IdBanco || ' ' || AgenciaCh || ' ' || ValorBruto || ' ' || Descontos || ' ' || "
                      "Valor From TbContas Where Fk = :FK Order By Prazo, Parcela");
    q.bind("FK", fat);
    q.executar();
    QStringList r;
    while (q.proxima()) r << q.valor(0).toString();
    EXPECT_EQ(r, QStringList({"CHEQUE 000041 5 1234 66.67 6.67 60.00", "CHEQUE 000042 5 1234 66.67 6.67 60.00",
                              "CHEQUE 000043 5 1234 66.66 6.67 59.99"}));
}

} // namespace
