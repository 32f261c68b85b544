// The status table and history, and the modes' browse (two workstations racing: entrega_estacoes_test).

#include "Cenario.h"
#include "Status.h"
#include "Vendas.h"

#include <gtest/gtest.h>

using db::Decimal;
using namespace orb;

namespace {

const QDateTime kAgora(QDate(2026, 3, 10), QTime(14, 30));

TEST(Transicoes, OnlyTheMovesOfTheTable)
{
    struct { const char *de, *para; int op; bool permitido; } casos[] = {
        {"AO", "AA", 1, true},  {"AA", "AO", 1, true},  {"AA", "AP", 1, true},  {"AP", "EN", 1, true},  {"EN", "AP", 1, true},
        {"AP", "AA", 4, true},  {"AP", "IN", 2, true},  {"IN", "FI", 2, true},  {"FI", "EN", 2, true},  {"CA", "AA", 1, true},
        {"AP", "IN", 1, false}, {"FI", "EN", 1, false}, {"EN", "AO", 1, false}, {"CA", "EN", 1, false}, {"AO", "EN", 2, false},
        {"EN", "CA", 1, false}, {"DE", "AP", 1, false},
    };
    for (const auto &c : casos)
        EXPECT_EQ(movimentoPermitido(c.de, c.para, c.op), c.permitido) << c.de << " -> " << c.para << " op " << c.op;
}

struct StatusTest : ::testing::Test {
    teste::BancoTemporario bt;
    int id = 0;

    void SetUp() override
    {
        db::Transacao t(bt.banco());
        teste::CenarioVendas c(t);
        const Sessao adm = teste::administrador(t, "&Comercial", "TVendas");
        // No IPI nor freight: the billing, which sums the lines' subtotals, is the whole total.
        Documento d = c.documento(t, "Ven", adm, kAgora, {{"010", "2"}});
        id = salvarDocumento(t, d, adm, kAgora);
        t.commit();
    }
};

TEST_F(StatusTest, TheHistoryOnlyGrowsAndTheNewestRowIsTheStatus)
{
    db::Transacao t(bt.banco());
    EXPECT_EQ(statusAtual(t, id), "AA");
    EXPECT_EQ(mudarStatus(t, id, "Aprovar", {{}, "Aguardando entrega.", kAgora, {}}), "AP");
    EXPECT_EQ(mudarStatus(t, id, "Entregar", {{}, {}, kAgora, {}}), "EN");
    EXPECT_THROW(mudarStatus(t, id, "Aprovar", {{}, {}, kAgora, {}}), Recusa);
    EXPECT_EQ(db::escalar(t, "Select List(Status, '>') From (Select Status From TbComSt Where Fk = :ID Order By Id)", {{"ID", id}}).toString(),
              "AO>AA>AP>EN");
}

TEST_F(StatusTest, BrowseOfEveryModeAndOrder)
{
    db::Transacao t(bt.banco());
    db::executar(t, "Insert Into TbParVendas (Data, Consulta) Values ('2026-03-01', 'CLIENTE')");
    db::executar(t, "Insert Into TbParVendas (Data, Consulta) Values ('2026-04-01', 'FUTURO')");
    EXPECT_EQ(consultaPadrao(t, modoOperacao("Ven"), QDate(2026, 3, 10)), "CLIENTE");
    EXPECT_EQ(consultaPadrao(t, modoOperacao("Com"), QDate(2026, 3, 10)), "");
    for (const ModoOperacao &m : modosOperacao())
        for (const auto &o : m.ordens) {
            db::Consulta q(t, sqlConsultaOperacoes(m, o.first));
            EXPECT_NO_THROW(q.executar()) << m.codigo.toStdString() << " " << o.first.toStdString();
        }
    mudarStatus(t, id, "Aprovar", {{}, {}, kAgora, {}});
    db::Consulta q(t, sqlConsultaOperacoes(modoOperacao("Ven"), "CÓDIGO"));
    q.executar();
    ASSERT_TRUE(q.proxima());
    const QString total = q["TOTAL"].value<Decimal>().texto();
    EXPECT_EQ(QStringList({q["Z_CLIENTEFOR"].toString(), q["STATUS"].toString(), q["DATAAPROVACAO"].toDateTime().toString("dd/MM hh:mm"),
                           q["DATAENTREGA"].toString(), q["Z_TOTALFATBR"].value<Decimal>().texto(), q["Z_TOTALAFATBR"].value<Decimal>().texto(),
                           q["Z_APAGAR"].value<Decimal>().texto()}),
              QStringList({"CLIENTE BOM", "AP", "10/03 14:30", "", total, "0.00", total}));
    EXPECT_FALSE(q.proxima());
}

// Code and number name the same mode; an unknown code is no mode.
TEST(Modos, CodeAndNumberAgree)
{
    for (const ModoOperacao &m : modosOperacao()) EXPECT_EQ(&modoDoOp(m.op), &modoOperacao(m.codigo)) << m.codigo.toStdString();
    EXPECT_THROW(modoOperacao("Xyz"), std::out_of_range);
}

} // namespace
