// The data module's routines: trace trail, change log, code numbering, transactions.

#include "apoio/BancoTeste.h"
#include "dados/Tabs.h"

#include <gtest/gtest.h>

using orb::Registro;
using orb::TTabs;

namespace {

struct TabsTest : ::testing::Test {
    teste::BancoTemporario bt;
    TTabs tabs;
    void SetUp() override { tabs.conectar(db::Banco::abrir(bt.conexao())); }
    void TearDown() override { tabs.desconectar(); }
};

TEST(Deb, KeepsTheLastTenNewestFirst)
{
    TTabs tabs;
    for (int i = 1; i <= 11; ++i) tabs.Deb(QString("procedure T.P%1").arg(i));
    const QStringList r = tabs.trilha();
    ASSERT_EQ(r.size(), 10);
    EXPECT_EQ(r.first(), "procedure T.P11");
    EXPECT_EQ(r.last(), "procedure T.P2");
}

TEST(Log, DataTextAndTableName)
{
    Registro r{"select F.*, C.CIDADE Z_CIDADE\nfrom TbFeriados F left join TBCIDADES C on 1=0", {}};
    r.definir("ID", 7);
    r.definir("DESCRICAO", "Dia d'Água");
    r.definir("OBS", "memo", true);
    r.definir("VALOR", QVariant::fromValue(db::Decimal("12.50")));
    r.definir("DATA", QDate(2026, 12, 25));
    r.definir("VAZIO", QVariant());
    EXPECT_EQ(TTabs::textoLog(r), "ID: 7 - DESCRICAO: Dia d'Água - VALOR: 12,50 - DATA: 25/12/2026 - VAZIO: ");
    EXPECT_EQ(TTabs::tabelaDoSql(r.sql), "TBFERIADOS");
    EXPECT_EQ(TTabs::tabelaDoSql("Select * From TbCad(1)"), "TBCAD");

    Registro longo{"select * from TBCAD", {}};
    longo.definir("NOME", QString(6000, 'a'));
    EXPECT_EQ(TTabs::textoLog(longo).size(), 5000);
}

TEST_F(TabsTest, LogWritesOneRowPerRecordAndDetailsOnDeletion)
{
    tabs.definirUsuario(2);
    db::Transacao &t = tabs.Tr("TrVendas");
    Registro doc{"select * from TBCOM", {{"ID", 55}, {"OBSERVACOES", "não entra", true}}};
    QList<Registro> itens;
    for (int i = 1; i <= 3; ++i) itens << Registro{"select * from TBCOMITENS where FK = :ID", {{"ID", 100 + i}, {"DESCRICAO", "Peça 'A'"}}};
    tabs.Log(t, doc, "INCLUSÃO", itens);  // details go only with a deletion
    tabs.Log(t, doc, "EXCLUSÃO", itens);
    t.commit();

    db::Transacao l(bt.banco());
    db::Consulta q(l, "select TABELA, REGISTRO, ACAO, IDUSUARIO, DADOS, DATA from TBLOG order by ID");
    q.executar();
    QStringList linhas;
    while (q.proxima()) {
        linhas << QString("%1 %2 %3 %4 %5").arg(q[0].toString(), q[1].toString(), q[2].toString(), q[3].toString(), q[4].toString());
        EXPECT_EQ(q["DATA"].toDateTime().time().second(), 0);
    }
    EXPECT_EQ(linhas, (QStringList{"TBCOM 55 INCLUSÃO 2 ID: 55", "TBCOM 55 EXCLUSÃO 2 ID: 55",
                                   "TBCOMITENS 101 EXCLUSÃO 2 ID: 101 - DESCRICAO: Peça 'A'",
                                   "TBCOMITENS 102 EXCLUSÃO 2 ID: 102 - DESCRICAO: Peça 'A'",
                                   "TBCOMITENS 103 EXCLUSÃO 2 ID: 103 - DESCRICAO: Peça 'A'"}));
}

TEST_F(TabsTest, NovoCodigoIsTheGreatestPlusOne)
{
    {
        db::Transacao t(bt.banco());
        for (int c : {3, 9, 4}) db::executar(t, "insert into TBCORES (CODIGO, COR) values (:C, 'x')", {{"C", c}});
        t.commit();
    }
    struct { const char *tabela, *filtro; int esperado; } casos[] = {
        {"TBCORES", "", 10}, {"TBCORES", "CODIGO < 5", 5}, {"TBCORES", "CODIGO > 100", 1}, {"TBFERIADOS", "", 1}};
    for (auto c : casos)
        EXPECT_EQ(tabs.NovoCodigo(c.tabela, c.tabela == QString("TBFERIADOS") ? "ID" : "CODIGO", c.filtro), c.esperado)
            << c.tabela << " " << c.filtro;
    EXPECT_FALSE(tabs.TrSys().ativa());
}

TEST_F(TabsTest, RollbackTransacoesLeavesTheAgendaOpen)
{
    for (const char *a : {"TrVendas", "TrCad", "TrAgenda"}) tabs.Tr(a).iniciar();
    tabs.RollbackTransacoes();
    EXPECT_EQ(QList<bool>({tabs.Tr("TrVendas").ativa(), tabs.Tr("TrCad").ativa(), tabs.Tr("TrAgenda").ativa()}),
              QList<bool>({false, false, true}));
    tabs.RollbackTransacoesIn();
    EXPECT_TRUE(tabs.Tr("TrAgenda").ativa());
}

TEST(TbToJson, NumbersAsNumbersImagesAsBase64)
{
    TTabs tabs;
    Registro r{"select * from TBCAD", {}};
    r.definir("ID", 1);
    r.definir("VALOR", QVariant::fromValue(db::Decimal("10.25")));
    r.definir("FOTO", QByteArray("\x01\x02", 2));
    r.definir("NOME", "Zé");
    r.definir("OBS", QVariant());
    EXPECT_EQ(tabs.TbToJson({r}), R"([{"FOTO":"AQI=","ID":1,"NOME":"Zé","OBS":null,"VALOR":10.25}])");
}

} // namespace
