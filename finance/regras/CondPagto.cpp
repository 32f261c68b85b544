#include "CondPagto.h"

#include "GeraContas.h"

namespace orb {

namespace {
using C = CampoForm;

QList<QPair<QString, QString>> parcelas()
{
    QList<QPair<QString, QString>> l;
    for (int i = 1; i <= 60; ++i)
        l.append({QString::asprintf("%02d", i), QString::asprintf("%02d", i)});
    return l;
}
} // namespace

DeclaracaoRegistro declaracaoCondPagto()
{
    DeclaracaoRegistro d = declararRegistro("TCondPagto", "Comercial - Condições de Pagamento", "TrCondPagto", "TBCONDPAGTO");
    d.numerada = "CODIGO";
    d.colunas = {{"CODIGO", "Código"}, {"CONDPAGTO", "Condição"}, {"PARCELAS", "Parcelas"}, {"ENTRADA", "Entrada"}};
    d.ordens = {{"Condição", "CONDPAGTO"}, {"Código", "CODIGO"}};
    d.campos = {{"CODIGO", "Código", C::Inteiro},
                {"CONDPAGTO", "Condição", C::Texto, "Digite a Condição de Pagamento primeiro!", 50},
                {"PARCELAS", "Parcelas", C::Lista, "Defina o número de parcelas primeiro!", 0, 2, parcelas()},
                {"PRIMVENC", "1° Vencimento", C::Inteiro},
                {"INTVENC", "Interv. Venc.", C::Inteiro},
                {"ENTRADA", "Entrada", C::Lista, {}, 0, 2, {{"N", "NÃO"}, {"S", "SIM"}}},
                {"FRETE", "Frete", C::Lista, {}, 0, 2, {{"1", "CIF"}, {"2", "FOB"}, {"0", "OUTROS"}}},
                {"PERCACRESCIMO", "% Acréscimo", C::Decimal},
                {"PERCDESCONTO", "% Desconto", C::Decimal}};
    d.perguntaExclusao = "Tem certeza que deseja excluir esta Condição de Pagamento?";
    d.traco = "Condição de Pagamento Excluída (";
    d.detalhes = {{"Parcelas", "TBCONDPAGTOPARC", "FK",
                   "Select P.*, Coalesce(B.Bandeira, Bc.NomeBanco) Z_BancoBandeira From TbCondPagtoParc P "
                   "Left Join TbBandeiras B On (B.Id = P.IdBandeira) Left Join TbBancos Bc On (Bc.Id = P.IdBanco) "
                   "Where P.Fk = :MESTRE Order By P.Prazo, P.Parcela",
                   {{"PARCELA", "Parcela"}, {"FORMAPAGTO", "Forma. Pagto."}, {"PRAZO", "Prazo"}, {"Z_BANCOBANDEIRA", "Banco/Bandeira"}},
                   {{"PARCELA", "Parcela", C::Texto, {}, 2},
                    {"FORMAPAGTO", "Forma. Pagto.", C::Lista, {}, 0, 2,
                     {{"DINHEIRO", "DINHEIRO"}, {"TRANSFERÊNCIA", "TRANSFERÊNCIA"}, {"CARTÃO", "CARTÃO"}, {"BOLETO", "BOLETO"},
                      {"CHEQUE", "CHEQUE"}, {"OUTROS", "OUTROS"}}},
                    {"PRAZO", "Prazo", C::Inteiro},
                    {"IDBANDEIRA", "Bandeira", C::Consulta, {}, 0, 2, {}, "Select Id, Bandeira From TbBandeiras Order By Bandeira"},
                    {"IDBANCO", "Banco", C::Consulta, {}, 0, 2, {}, "Select Id, NomeBanco From TbBancos Order By NomeBanco"}}}};
    return d;
}

void refazerParcelasCondPagto(const Valores &cond, EdicaoDetalhe &linhas)
{
    auto valor = [&](const char *c) { const auto it = cond.find(c); return it == cond.end() ? QVariant() : it->second; };
    const int n = valor("PARCELAS").toString().trimmed().toInt();
    const bool entrada = valor("ENTRADA").toString() == "S";
    const int primVenc = valor("PRIMVENC").toInt(), intVenc = valor("INTVENC").toInt();
    while (linhas.linhas.size() > n)
        linhas.excluir(int(linhas.linhas.size()) - 1);
    for (int i = 1; i <= n; ++i) {
        Valores v = i <= linhas.linhas.size() ? linhas.linhas[i - 1].valores : Valores{{"FORMAPAGTO", "CHEQUE"}};
        v["PARCELA"] = numeroParcela(i, entrada);
        v["PRAZO"] = i == 1 && entrada ? 0 : primVenc + intVenc * (entrada ? i - 2 : i - 1);
        if (i <= linhas.linhas.size())
            linhas.alterar(i - 1, v);
        else
            linhas.incluir(v);
    }
}

} // namespace orb
