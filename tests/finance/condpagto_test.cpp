// The payment-condition registry: instalment rows rebuilt on a change of the terms, and saved with the condition.

#include "apoio/BancoTeste.h"
#include "CondPagto.h"

#include <gtest/gtest.h>

using namespace orb;

namespace {

QStringList resumo(const EdicaoDetalhe &e)
{
    QStringList l;
    for (const LinhaDetalhe &x : e.linhas)
        l << x.valores.at("PARCELA").toString() + "/" + x.valores.at("PRAZO").toString() + "/" + x.valores.at("FORMAPAGTO").toString();
    return l;
}

TEST(CondPagto, RowsFollowTheTerms)
{
    EdicaoDetalhe e;
    refazerParcelasCondPagto({{"PARCELAS", "03"}, {"ENTRADA", "N"}, {"PRIMVENC", 30}, {"INTVENC", 30}}, e);
    EXPECT_EQ(resumo(e), QStringList({"01/30/CHEQUE", "02/60/CHEQUE", "03/90/CHEQUE"}));
    e.linhas[1].valores["FORMAPAGTO"] = "BOLETO";  // typed by the user: kept
    refazerParcelasCondPagto({{"PARCELAS", "04"}, {"ENTRADA", "S"}, {"PRIMVENC", 15}, {"INTVENC", 10}}, e);
    EXPECT_EQ(resumo(e), QStringList({"EN/0/CHEQUE", "02/15/BOLETO", "03/25/CHEQUE", "04/35/CHEQUE"}));
    refazerParcelasCondPagto({{"PARCELAS", "02"}, {"ENTRADA", "S"}, {"PRIMVENC", 15}, {"INTVENC", 10}}, e);
    EXPECT_EQ(resumo(e), QStringList({"EN/0/CHEQUE", "02/15/BOLETO"}));
}

TEST(CondPagto, SavedWithItsRows)
{
    teste::BancoTemporario bt;
    db::Transacao t(bt.banco());
    const DeclaracaoRegistro d = declaracaoCondPagto();
    Valores v = {{"CONDPAGTO", "30/60/90"}, {"PARCELAS", "03"}, {"ENTRADA", "N"}, {"PRIMVENC", 30}, {"INTVENC", 30}};
    EdicaoDetalhes e(d.detalhes.size());
    refazerParcelasCondPagto(v, e[0]);
    const int id = salvarRegistro(t, d, 0, v, e, teste::administrador(t, "&Financeiro", "TCondPagto"));
    EXPECT_EQ(db::escalar(t, "Select List(Parcela || ':' || Prazo, ' ') From (Select Parcela, Prazo From TbCondPagtoParc Where Fk = :ID "
                             "Order By Prazo)", {{"ID", id}}).toString(), "01:30 02:60 03:90");
    // Fewer instalments remove the surplus rows at the next save.
    EdicaoDetalhes e2 = lerDetalhes(t, d, id);
    v["PARCELAS"] = "01";
    refazerParcelasCondPagto(v, e2[0]);
    salvarRegistro(t, d, id, v, e2, teste::administrador(t, "&Financeiro", "TCondPagto"));
    EXPECT_EQ(db::escalar(t, "Select Count(*) From TbCondPagtoParc Where Fk = :ID", {{"ID", id}}).toInt(), 1);
}

} // namespace
