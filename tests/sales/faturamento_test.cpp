// The billing terms: dates, days to the first due date, the condition, and a paid instalment
// freezing them.

#include "Cenario.h"
#include "Faturamento.h"
#include "GeraContas.h"

#include <gtest/gtest.h>

using namespace orb;

namespace {

const QDateTime kOperacao(QDate(2026, 3, 10), QTime(9, 0));

using teste::recusa;

TEST(Faturamento, DaysAndFirstDueDateFollowEachOther)
{
    Valores fat;
    EXPECT_EQ(recusa([&] { mudarPrimVenc(fat, 30); }), "Digite a data do faturamento primeiro!");
    EXPECT_EQ(recusa([&] { mudarDataPrimVenc(fat, QDate(2026, 4, 1)); }), "Digite a data do faturamento primeiro!");
    fat["DATA"] = QDate(2026, 3, 10);
    EXPECT_EQ(recusa([&] { mudarPrimVenc(fat, -1); }), "O prazo deve ser maior ou igual a zero");
    mudarPrimVenc(fat, 30);
    EXPECT_EQ(fat["DATAPRIMVENC"].toDate(), QDate(2026, 4, 9));
    mudarDataPrimVenc(fat, QDate(2026, 3, 25));
    EXPECT_EQ(fat["PRIMVENC"].toInt(), 15);
    for (const QDate &d : {QDate(2026, 3, 10), QDate(2026, 3, 9)})
        EXPECT_EQ(recusa([&] { mudarDataPrimVenc(fat, d); }), "A data do Primeiro Vencimento deve ser maior que a data do Faturamento!");
    EXPECT_EQ(fat["PRIMVENC"].toInt(), 15);  // a refusal changes nothing
}

struct FaturamentoBanco : ::testing::Test {
    teste::BancoTemporario bt;
    db::Transacao t{bt.banco()};
};

TEST_F(FaturamentoBanco, APaidInstalmentFreezesTheTerms)
{
    db::executar(t, "Insert Into TbParVendas (Data, Parcelas, Entrada, PrimVenc, IntVenc) Values ('2026-01-01', '04', 'S', 30, 30)");
    const int doc = db::escalar(t, "Insert Into TbCom (Op, Data, Total) Values (1, :D, 100) Returning Id", {{"D", kOperacao}}).toInt();
    Valores fat = {{"DATA", QDate(2026, 3, 10)}, {"CONDPAGTO", "V"}, {"PARCELAS", "01"}, {"VALORBR", QVariant::fromValue(db::Decimal("100"))},
                   {"VALOR", QVariant::fromValue(db::Decimal("100"))}, {"FK", doc}, {"GERAFIN", "A"}};
    const ModoOperacao &m = modoOperacao("Ven");

    // "A PRAZO" takes the parameters' terms; "A VISTA" is one instalment without terms.
    auto termos = [&] {
        return QStringList({fat["PARCELAS"].toString(), fat["ENTRADA"].toString(), fat["PRIMVENC"].toString(), fat["INTVENC"].toString(),
                            fat["DATAPRIMVENC"].toDate().toString("dd/MM")}).join(' ');
    };
    mudarCondicao(t, fat, m, "P");
    EXPECT_EQ(termos(), "04 S 30 30 09/04");
    mudarCondicao(t, fat, m, "P", "06");
    EXPECT_EQ(termos(), "06 S 30 30 09/04");
    mudarCondicao(t, fat, m, "V");
    EXPECT_EQ(termos(), "01 N   ");

    EXPECT_EQ(recusa([&] { mudarDataFaturamento(t, fat, 1, kOperacao, QDate(2026, 3, 9)); }),
              "A Data do Faturamento deve ser maior ou igual a Data da Operação!");
    mudarDataFaturamento(t, fat, 1, kOperacao, QDate(2026, 3, 11));

    // Written and paid: the date and the condition stay as they are.
    mudarCondicao(t, fat, m, "P", "02");
    fat["ID"] = db::escalar(t, "Insert Into TbComFat (Fk, Data, ValorBr, Valor, CondPagto, Parcelas, Entrada, PrimVenc, IntVenc, GeraFin) "
                               "Values (:FK, :D, 100, 100, 'P', '02', 'N', 30, 30, 'A') Returning Id",
                            {{"FK", doc}, {"D", fat["DATA"]}});
    GeraContas(t, "1", fat["ID"].toString(), "I", {});
    db::executar(t, "Insert Into TbContasPagtos (Data, Valor, Fk) Select '2026-04-10', 50, Id From TbContas Where Fk = :F and Parcela = '02'",
                 {{"F", fat["ID"]}});
    EXPECT_EQ(recusa([&] { mudarDataFaturamento(t, fat, 1, kOperacao, QDate(2026, 3, 12)); }),
              "A data do faturamento não pode ser alterada pois a parcela 02 já foi quitada!");
    EXPECT_EQ(recusa([&] { mudarCondicao(t, fat, m, "V"); }), "Esta opção não pode ser alterada pois a parcela 02 já foi quitada!");
    EXPECT_EQ(recusa([&] { mudarCondicao(t, fat, m, "P", "03"); }), "Esta opção não pode ser alterada pois a parcela 02 já foi quitada!");
}

} // namespace
