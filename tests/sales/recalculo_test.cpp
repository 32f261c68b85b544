// The recalculation of a document against the same statements run by the server over the same
// values: every line and header column to the cent.

#include "Cenario.h"
#include "Vendas.h"

#include <gtest/gtest.h>

using db::Decimal;
using namespace orb;

namespace {

struct Linha {
    const char *item;  // CST of the scenario's item, or "SERV"
    const char *qtd, *preco, *percDesc, *frete, *outros;
};

struct Caso {
    const char *nome;
    const char *tipoDesconto;
    const char *descontoM, *descontoS;
    QList<Linha> linhas;
};

QVariant dv(const char *s) { return QVariant::fromValue(Decimal(s)); }

struct RecalculoTest : ::testing::Test {
    teste::BancoTemporario bt;
    db::Transacao t{bt.banco()};
    teste::CenarioVendas c{t};

    // The statements of the recalculation, as the server runs them on the lines of :FK.
    void recalcularNoServidor(int fk, const QString &tipoDesconto, const Decimal &descM, const Decimal &descS)
    {
        auto x = [&](const QString &sql, std::map<QString, QVariant> p = {}) {
            p["FK"] = fk;
            db::executar(t, sql, p);
        };
        x("Update TbComItens Set SubtotalBr = Qtd * PrUnitario Where Fk = :FK");
        for (const auto &[k, desc] : {std::pair{QString("M"), descM}, std::pair{QString("S"), descS}}) {
            if (tipoDesconto == "S") {
                const QVariant br = db::escalar(t, "Select Sum(SubtotalBr) From TbComItens Where Fk = :FK and Tipo = :K", {{"FK", fk}, {"K", k}});
                x("Update TbComItens Set Desconto = Case When Cast(:D As Numeric(18,2)) = 0 or Cast(:BR As Numeric(18,2)) = 0 Then 0 "
                  "Else Cast(:D As Numeric(18,2)) * SubtotalBr / Cast(:BR As Numeric(18,2)) End Where Fk = :FK and Tipo = :K",
                  {{"D", QVariant::fromValue(desc)}, {"BR", br}, {"K", k}});
                x("Update TbComItens Set PercDesconto = Case When SubtotalBr = 0 Then 0 Else Desconto / SubtotalBr * 100 End "
                  "Where Fk = :FK and Tipo = :K", {{"K", k}});
            } else {
                x("Update TbComItens Set Desconto = SubtotalBr * PercDesconto / 100 Where Fk = :FK and Tipo = :K", {{"K", k}});
            }
        }
        x("Update TbComItens Set SubtotalLq = SubtotalBr - Desconto Where Fk = :FK");
        x("Update TbComItens Set Ipi = SubtotalLq * PercIpi / 100 Where Fk = :FK and Tipo = 'M'");
        // Taxed, and the ST group's own ICMS.
        x("Update TbComItens Set PercRedBcIcms = 0, BcIcms = SubtotalLq, Icms = SubtotalLq * PercIcms / 100 "
          "Where Fk = :FK and Cst In ('000', '100', '200', '010', '060', '160', '260')");
        x("Update TbComItens Set PercMvaIcmsSt = 0, BcIcmsSt = 0, PercIcmsSt = 0, IcmsSt = 0, PercRedBcIcmsSt = 0 "
          "Where Fk = :FK and Cst In ('000', '100', '200', '020', '120', '220', '040', '041', '050', '051', '090')");
        x("Update TbComItens Set BcIcmsSt = SubtotalLq * (1 + PercMvaIcmsSt / 100), PercIcmsSt = 12, PercRedBcIcmsSt = 0 "
          "Where Fk = :FK and Cst In ('010', '060', '160', '260', '030', '110', '130', '210', '230')");
        x("Update TbComItens Set IcmsSt = BcIcmsSt * PercIcmsSt / 100 - Icms Where Fk = :FK and Cst In ('010', '060', '160', '260')");
        // Reduced base, with ST for 070.
        x("Update TbComItens Set PercIcms = 18 Where Fk = :FK and Cst In ('020', '070', '120', '220')");
        x("Update TbComItens Set BcIcms = Case When PercIcms > 0 Then SubtotalLq * PercRedBcIcms / PercIcms / 100 Else 0 End, "
          "Icms = SubtotalLq * PercRedBcIcms / 100 Where Fk = :FK and Cst In ('020', '070', '120', '220')");
        x("Update TbComItens Set PercIcmsSt = 12 Where Fk = :FK and Cst = '070'");
        x("Update TbComItens Set BcIcmsSt = Case When PercIcmsSt > 0 Then SubtotalLq * (1 + PercMvaIcmsSt / 100) / PercIcmsSt / 100 "
          "Else 0 End Where Fk = :FK and Cst = '070'");
        x("Update TbComItens Set IcmsSt = BcIcmsSt * PercRedBcIcmsSt / 100 - Icms Where Fk = :FK and Cst = '070'");
        // Exempt with ST; no ICMS.
        x("Update TbComItens Set PercIcms = 0, BcIcms = 0, Icms = 0, PercRedBcIcms = 0 Where Fk = :FK and Cst In "
          "('030', '110', '130', '210', '230', '040', '041', '050', '051', '090')");
        x("Update TbComItens Set IcmsSt = BcIcmsSt * PercIcmsSt / 100 Where Fk = :FK and Cst In ('030', '110', '130', '210', '230')");
        x("Update TbComItens Set Subtotal = SubtotalLq + Coalesce(IcmsSt, 0) Where Fk = :FK");
        x("Update TbComItens Set Total = Subtotal + Coalesce(Frete, 0) + Coalesce(Outros, 0) + Coalesce(Ipi, 0) Where Fk = :FK");
    }
};

TEST_F(RecalculoTest, LinesAndTotalsAreTheServersToTheCent)
{
    const QList<Linha> todos = {
        {"000", "3.3333", "7.7777", "2.5000", "1.11", "0"}, {"010", "1.0000", "99.9999", "0", "0", "0.33"},
        {"020", "2.5000", "13.3333", "12.3456", "0", "0"},  {"070", "7.0000", "0.3333", "0", "0", "0"},
        {"030", "0.3333", "1000.0000", "33.3333", "0", "0"}, {"040", "12.0000", "1.0101", "0", "0", "0"},
        {"260", "5.5555", "5.5555", "0", "0", "0"},          {"SERV", "1.5000", "66.6667", "10.0000", "2.22", "0"},
    };
    const Caso casos[] = {
        {"desconto por item", "I", "0", "0", todos},
        {"desconto no subtotal", "S", "10.01", "3.33", todos},
        {"desconto zero no subtotal zera as linhas", "S", "0", "0", todos},
        {"uma linha só", "S", "0.01", "0", {{"070", "1.0000", "0.0100", "0", "0", "0"}}},
        {"valores grandes", "I", "0", "0", {{"000", "99999.9999", "99999.9999", "0.0001", "0", "0"}, {"010", "12345.6789", "98765.4321", "99.9999", "0", "0"}}},
    };
    for (const Caso &k : casos) {
        SCOPED_TRACE(k.nome);
        Documento d;
        d.cabecalho = {{"OP", 1}, {"IDEMPRESA", c.empresa}, {"TIPODESCONTO", k.tipoDesconto}, {"DESCONTOM", dv(k.descontoM)},
                       {"DESCONTOS", dv(k.descontoS)}, {"PERCCOMREPM", dv("3.33")}, {"PERCCOMATS", dv("7.77")}, {"SEGURO", dv("1.00")}};
        for (const Linha &l : k.linhas) {
            Valores v = linhaDoItem(t, c.itens[l.item], "V");
            v["QTD"] = dv(l.qtd);
            v["PRUNITARIO"] = dv(l.preco);
            v["PERCDESCONTO"] = dv(l.percDesc);
            v["FRETE"] = dv(l.frete);
            v["OUTROS"] = dv(l.outros);
            // A previous discount that a zero header discount must clear.
            v["DESCONTO"] = dv("5.00");
            d.linhas.append(v);
        }
        recalcularDocumento(t, d);

        const int fk = db::escalar(t, "Insert Into TbCom (Op) Values (1) Returning Id").toInt();
        for (const Valores &l : d.linhas) {
            const bool m = l.at("TIPO") == "M";
            db::executar(t, "Insert Into TbComItens (Tipo, Qtd, PrUnitario, PercDesconto, Frete, Outros, Cst, PercIcms, PercRedBcIcms, "
                            "PercMvaIcmsSt, PercRedBcIcmsSt, PercIpi, IdItem, Fk) Values (:T, :Q, :P, :PD, :F, :O, :CST, :I, :R, :M, :RS, :IPI, :ID, :FK)",
                         {{"T", l.at("TIPO")}, {"Q", l.at("QTD")}, {"P", l.at("PRUNITARIO")},
                          {"PD", k.tipoDesconto == QString("S") ? dv("0") : l.at("PERCDESCONTO")}, {"F", l.at("FRETE")}, {"O", l.at("OUTROS")},
                          {"CST", m ? l.at("CST") : QVariant()}, {"I", l.at("Z_PERCICMS")}, {"R", l.at("Z_PERCREDBCICMS")},
                          {"M", l.at("Z_PERCMVAICMSST")}, {"RS", l.at("Z_PERCREDBCICMSST")}, {"IPI", l.at("Z_PERCIPI")}, {"ID", l.at("IDITEM")},
                          {"FK", fk}});
        }
        recalcularNoServidor(fk, k.tipoDesconto, Decimal(k.descontoM), Decimal(k.descontoS));

        const QStringList colunas = {"SUBTOTALBR", "DESCONTO", "PERCDESCONTO", "SUBTOTALLQ", "BCICMS", "PERCICMS", "ICMS", "BCICMSST",
                                     "PERCICMSST", "ICMSST", "IPI", "SUBTOTAL", "TOTAL"};
        db::Consulta q(t, "Select " + colunas.join(", ") + ", IdItem From TbComItens Where Fk = :FK Order By Id");
        q.bind("FK", fk);
        q.executar();
        for (const Valores &l : d.linhas) {
            ASSERT_TRUE(q.proxima());
            for (const QString &col : colunas) {
                if (l.at("TIPO") == "S" && col != "SUBTOTALBR" && col != "DESCONTO" && col != "PERCDESCONTO" && col != "SUBTOTALLQ"
                    && col != "SUBTOTAL" && col != "TOTAL")
                    continue;  // services carry no ICMS
                const Decimal servidor = q[col].isNull() ? Decimal::bruto(0, 2) : q[col].value<Decimal>();
                EXPECT_EQ(decimal(l, col), servidor) << col.toStdString() << " da linha do item " << l.at("CST").toString().toStdString()
                                                     << ": " << decimal(l, col).texto().toStdString() << " x " << servidor.texto().toStdString();
            }
        }
        if (QString(k.descontoM) == "0" && QString(k.tipoDesconto) == "S")
            for (const Valores &l : d.linhas) EXPECT_TRUE(decimal(l, "DESCONTO").zero());

        // Header sums and commissions as the server adds and multiplies them.
        auto soma = [&](const QString &expr) {
            const QVariant v = db::escalar(t, "Select Sum(" + expr + ") From TbComItens Where Fk = :FK", {{"FK", fk}});
            return v.isNull() ? Decimal::bruto(0, 2) : v.value<Decimal>();
        };
        const Valores &h = d.cabecalho;
        EXPECT_EQ(decimal(h, "SUBTOTALM"), soma("Case When Tipo = 'M' Then Subtotal Else 0 End"));
        EXPECT_EQ(decimal(h, "ICMS"), soma("Icms"));
        EXPECT_EQ(decimal(h, "BCICMS"), soma("Case When PercIcms > 0 Then Subtotal Else 0 End"));
        EXPECT_EQ(decimal(h, "TOTAL"), soma("Total") + Decimal("1.00"));
        for (const auto &[comissao, base, perc] : {std::tuple{"COMREPM", "SUBTOTALM", "3.33"}, {"COMATS", "SUBTOTALS", "7.77"}})
            EXPECT_EQ(decimal(h, comissao), db::escalar(t, QString("Select Cast(Cast(:S As Numeric(18,2)) * %1 / 100 As Numeric(18,2)) "
                                                                   "From Rdb$Database").arg(perc), {{"S", h.at(base)}}).value<Decimal>()) << comissao;
        if (QString(k.tipoDesconto) == "I")
            EXPECT_EQ(decimal(h, "DESCONTOM"), soma("Case When Tipo = 'M' Then Desconto Else 0 End"));
    }
}

TEST(GrupoCst, EachCodeFallsInItsGroup)
{
    struct { const char *cst; GrupoCst g; } casos[] = {
        {"000", GrupoCst::Tributado}, {"200", GrupoCst::Tributado},  {"010", GrupoCst::ComSt},        {"260", GrupoCst::ComSt},
        {"020", GrupoCst::Reduzida},  {"220", GrupoCst::Reduzida},   {"030", GrupoCst::IsentaComSt},  {"230", GrupoCst::IsentaComSt},
        {"040", GrupoCst::SemIcms},   {"290", GrupoCst::SemIcms},    {"", GrupoCst::SemIcms},
    };
    for (const auto &c : casos) EXPECT_EQ(grupoCst(c.cst), c.g) << c.cst;
}

} // namespace
