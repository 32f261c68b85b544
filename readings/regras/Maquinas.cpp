#include "Maquinas.h"

#include "Recusa.h"

namespace orb {

namespace {

using C = CampoForm;

const QString kSqlAreas = QStringLiteral("Select Id, Area From TBFL_AREAS Order By Area");
const QString kSqlRotas = QStringLiteral("Select Id, Rota From TBFL_ROTAS Order By Rota");
const QString kSqlOperadores = QStringLiteral("Select Id, Nome From TBFL_OPER Order By Nome");
const QString kSqlPontos =
    QStringLiteral("Select Id, Nome || ' / ' || Coalesce(Endereco, '') From TBFL_PONTOS Order By Nome");

QList<DeclaracaoRegistro> montar()
{
    QList<DeclaracaoRegistro> r;

    // The areas screen leaves its trace lines under the quick-registration form's name.
    DeclaracaoRegistro areas = declararRegistro("TAreas", "Áreas", "TrAreas", "TBFL_AREAS");
    areas.classeTraco = "TMiniCad";
    areas.colunas = {{"AREA", "Área"}};
    areas.ordens = {{"Área", "AREA"}};
    areas.campos = {{"AREA", "Área", C::Texto, "Digite o nome da Área primeiro!", 20}};
    areas.perguntaExclusao = "Tem certeza que deseja excluir esta Área?";
    areas.traco = "Área Excluída (";
    areas.impedem = {{"TBFL_ROTAS", "IDAREA"}, {"TBFL_LEITURAS", "IDAREA"}};
    r << areas;

    DeclaracaoRegistro rotas = declararRegistro("TRotas", "Rotas", "TrRotas", "TBFL_ROTAS");
    rotas.sqlGrade = "Select R.*, A.Area Z_Area From TBFL_ROTAS R Left Join TBFL_AREAS A On (A.Id = R.IdArea)";
    rotas.colunas = {{"ROTA", "Rota"}, {"Z_AREA", "Área"}};
    rotas.ordens = {{"Rota", "ROTA"}, {"Área", "Z_AREA,ROTA"}};
    rotas.campos = {{"ROTA", "Rota", C::Texto, "Digite o Nome da Riota primeiro!", 20},
                    {"IDAREA", "Área", C::Consulta, "Selecione a Área primeiro!", 0, 2, {}, kSqlAreas}};
    rotas.perguntaExclusao = "Tem certeza que deseja excluir esta Rota?";
    rotas.traco = "Rota Excluída (";
    rotas.impedem = {{"TBFL_PONTOS", "IDROTA"}, {"TBFL_OPER", "IDROTA"}, {"TBFL_LEITURAS", "IDROTA"}};
    r << rotas;

    DeclaracaoRegistro oper = declararRegistro("TOperadores", "Operadores", "TrOperadores", "TBFL_OPER");
    oper.sqlGrade = "Select O.*, R.Rota Z_Rota, A.Area Z_Area From TBFL_OPER O "
                    "Left Join TBFL_ROTAS R On (R.Id = O.IdRota) Left Join TBFL_AREAS A On (A.Id = R.IdArea)";
    oper.colunas = {{"NOME", "Nome"}, {"PERCCOM", "% Comissão"}, {"Z_ROTA", "Rota"}, {"Z_AREA", "Área"}};
    oper.ordens = {{"Nome", "NOME"}, {"Rota", "Z_ROTA,NOME"}};
    // The operator's name asks for "the point's name": the message stands as the users know it.
    oper.campos = {{"NOME", "Nome", C::Texto, "Digite o Nome do Ponto primeiro!", 50},
                   {"PERCCOM", "% Comissão", C::Decimal},
                   {"IDROTA", "Rota", C::Consulta, {}, 0, 2, {}, kSqlRotas}};
    oper.perguntaExclusao = "Tem certeza que deseja excluir este Operador?";
    oper.traco = "Operador Excluído (";
    oper.impedem = {{"TBFL_PONTOS", "IDOPER"}, {"TBFL_MAQ", "IDOPER"}, {"TBFL_LEITURAS", "IDOPER"},
                    {"TBFL_LEITURAS", "IDOPERL"}};
    r << oper;

    DeclaracaoRegistro pontos = declararRegistro("TPontos", "Pontos", "TrPontos", "TBFL_PONTOS");
    pontos.sqlGrade = "Select P.*, R.Rota Z_Rota, A.Area Z_Area, O.Nome Z_Oper From TBFL_PONTOS P "
                      "Left Join TBFL_ROTAS R On (R.Id = P.IdRota) Left Join TBFL_AREAS A On (A.Id = R.IdArea) "
                      "Left Join TBFL_OPER O On (O.Id = P.IdOper)";
    pontos.colunas = {{"NOME", "Ponto"}, {"RESPONSAVEL", "Responsável"}, {"TEL1", "Telefone"}, {"ENDERECO", "Endereço"},
                      {"PERCCOM", "% Comissão"}, {"Z_ROTA", "Rota"}, {"Z_AREA", "Área"}, {"Z_OPER", "Operador"}};
    pontos.ordens = {{"Ponto", "NOME"}, {"Rota", "Z_ROTA,NOME"}};
    pontos.campos = {{"NOME", "Ponto", C::Texto, "Digite o Nome do Ponto primeiro!", 20},
                     {"RESPONSAVEL", "Responsável (dono)", C::Texto, "Digite o nome do Responsável (Dono) pelo ponto primeiro!", 20},
                     {"TEL1", "Telefone 1", C::Texto, {}, 11, 2, {}, {}, "(99) 99999-9999;_"},
                     {"TEL2", "Telefone 2", C::Texto, {}, 11, 2, {}, {}, "(99) 99999-9999;_"},
                     {"ENDERECO", "Endereço", C::Texto, {}, 50},
                     {"PERCCOM", "% Comissão", C::Inteiro},
                     {"IDROTA", "Rota", C::Consulta, {}, 0, 2, {}, kSqlRotas},
                     {"IDOPER", "Operador", C::Consulta, {}, 0, 2, {}, kSqlOperadores}};
    pontos.perguntaExclusao = "Tem certeza que deseja excluir este Ponto?";
    pontos.traco = "Ponto Excluído (";
    pontos.impedem = {{"TBFL_MAQ", "IDPONTO"}, {"TBFL_LEITURAS", "IDPONTO"}};
    r << pontos;

    DeclaracaoRegistro maq = declararRegistro("TMaquinas", "Máquinas", "TrMaquinas", "TBFL_MAQ");
    maq.sqlGrade =
        "Select M.*, P.Nome || ' / ' || Coalesce(P.Endereco, '') Z_Ponto, R.Rota Z_Rota, A.Area Z_Area, O.Nome Z_Oper, "
        "(Select First 1 L.Leef From TBFL_LEITURAS L Where (L.IdMaq = M.Id) Order By L.Data Desc, L.Id Desc) Z_LEEF, "
        "(Select First 1 L.Lesf From TBFL_LEITURAS L Where (L.IdMaq = M.Id) Order By L.Data Desc, L.Id Desc) Z_LESF "
        "From TBFL_MAQ M Left Join TBFL_PONTOS P On (P.Id = M.IdPonto) Left Join TBFL_ROTAS R On (R.Id = P.IdRota) "
        "Left Join TBFL_AREAS A On (A.Id = R.IdArea) Left Join TBFL_OPER O On (O.Id = M.IdOper)";
    maq.colunas = {{"SELO", "Selo"}, {"TIPO", "Tipo"}, {"NUMSERIE", "Nº de série"}, {"MOEDA", "Moeda"},
                   {"Z_PONTO", "Ponto"}, {"Z_ROTA", "Rota"}, {"Z_AREA", "Área"}, {"Z_OPER", "Operador"},
                   {"Z_LEEF", "Última entrada"}, {"Z_LESF", "Última saída"}};
    maq.ordens = {{"Selo", "SELO"}, {"Ponto", "Z_PONTO,SELO"}};
    maq.campos = {{"SELO", "Selo", C::Texto, "Digite o número do Selo primeiro!", 10},
                  {"TIPO", "Tipo", C::Texto, "Digite o tipo da máquina primeiro!", 20},
                  {"NUMSERIE", "Nº de série", C::Texto, {}, 20},
                  {"MOEDA", "Multiplicador de moeda", C::Decimal, "Digite o valor multiplicador de moeda primeiro!"},
                  {"ENTRADA", "Contador inicial de entrada", C::Inteiro},
                  {"SAIDA", "Contador inicial de saída", C::Inteiro},
                  {"IDPONTO", "Ponto", C::Consulta, {}, 0, 2, {}, kSqlPontos},
                  {"PERCCOMPONTO", "% Comissão do ponto", C::Decimal},
                  {"IDOPER", "Operador", C::Consulta, {}, 0, 2, {}, kSqlOperadores},
                  {"PERCCOMOPER", "% Comissão do operador", C::Decimal}};
    maq.validar = [](db::Transacao &, int, const Valores &v) {
        // A coin is worth at most one real: counters count coins or cents, never more.
        const QVariant m = v.count("MOEDA") ? v.at("MOEDA") : QVariant();
        const auto moeda = m.metaType() == QMetaType::fromType<db::Decimal>() ? std::optional(m.value<db::Decimal>())
                                                                               : db::Decimal::ler(m.toString());
        if (moeda && *moeda > db::Decimal("1")) throw Recusa(kMoedaAcimaDeUm, "MOEDA");
    };
    maq.perguntaExclusao = "Tem certeza que deseja excluir esta Máquina?";
    maq.traco = "Máquina Excluída (";
    maq.impedem = {{"TBFL_LEITURAS", "IDMAQ"}};
    r << maq;
    return r;
}

} // namespace

const QList<DeclaracaoRegistro> &registrosMaquinas()
{
    static const QList<DeclaracaoRegistro> r = montar();
    return r;
}

const DeclaracaoRegistro &registroMaquinas(const QString &classe)
{
    for (const DeclaracaoRegistro &d : registrosMaquinas())
        if (d.classe == classe) return d;
    throw std::logic_error(("registro desconhecido: " + classe).toStdString());
}

} // namespace orb
