#include "Leituras.h"

#include "Recusa.h"

namespace orb {

namespace {

using C = CampoForm;

// A number as the database or the screen gives it; empty counts as zero.
db::Decimal decimal(const QVariant &x)
{
    if (!preenchido(x)) return {};
    if (x.metaType() == QMetaType::fromType<db::Decimal>()) return x.value<db::Decimal>();
    if (x.typeId() == QMetaType::Int || x.typeId() == QMetaType::LongLong) return db::Decimal::inteiro(x.toLongLong());
    return db::Decimal::ler(x.toString()).value_or(db::Decimal());
}

qint64 inteiro(const QVariant &x) { return preenchido(x) ? x.toLongLong() : 0; }

// Two decimals, as the NUMERIC(18,2) columns keep them.
db::Decimal centavos(const db::Decimal &d) { return d.comEscala(2, db::Arredonda::MeioLonge); }

db::Decimal porcento(const db::Decimal &base, const db::Decimal &perc)
{
    return (base * perc).dividir(db::Decimal::inteiro(100), 2, db::Arredonda::MeioLonge);
}

const QString kUltima = QStringLiteral(
    "(Select First 1 L.%1 From TBFL_LEITURAS L Where (L.IdMaq = M.Id) Order By L.Data Desc, L.Id Desc)");

} // namespace

// ------------------------------------------------------------------ counters and money

Triplo recalcular(Triplo t, Editado e)
{
    if (e == Editado::Diferenca) {
        if (t.diferenca > 0) t.final = t.inicial + t.diferenca;
        else t.diferenca = t.final - t.inicial;
    } else {
        if (t.final > 0) t.diferenca = t.final - t.inicial;
        else t.final = t.inicial + t.diferenca;
    }
    return t;
}

db::Decimal multiplicador(const db::Decimal &moeda) { return moeda > db::Decimal() ? moeda : db::Decimal("0.01"); }

Rateio ratear(qint64 difEntrada, qint64 difSaida, const db::Decimal &moeda, const db::Decimal &percPonto,
              const db::Decimal &percOper)
{
    Rateio r;
    r.moedas = difEntrada - difSaida;
    r.total = centavos(db::Decimal::inteiro(r.moedas) * multiplicador(moeda));
    r.comPonto = porcento(r.total, percPonto);
    r.aReceber = r.total - r.comPonto;
    r.comOper = porcento(r.aReceber, percOper);
    r.liquido = r.aReceber - r.comOper;
    return r;
}

void calcularValores(Valores &v, const db::Decimal &moeda)
{
    const Rateio r = ratear(inteiro(valor(v, "DIFEE")), inteiro(valor(v, "DIFES")), moeda, decimal(valor(v, "PERCCOMPONTO")),
                            decimal(valor(v, "PERCCOMOPER")));
    v["HPMOEDAS"] = r.moedas;
    v["HPTOTAL"] = QVariant::fromValue(r.total);
    v["COMPONTO"] = QVariant::fromValue(r.comPonto);
    v["ARECEBER"] = QVariant::fromValue(r.aReceber);
    v["COMOPER"] = QVariant::fromValue(r.comOper);
    v["LIQUIDO"] = QVariant::fromValue(r.liquido);
}

// ------------------------------------------------------------------ the reading

DeclaracaoRegistro declaracaoLeituras()
{
    DeclaracaoRegistro d = declararRegistro("TLeituras86", "Leituras", "TrLeituras", "TBFL_LEITURAS");
    FiltroLeituras todas;
    std::map<QString, QVariant> p;
    d.sqlGrade = sqlLeituras(todas, p);
    d.colunas = {{"DATA", "Data"},        {"Z_MAQ", "Selo"},         {"Z_PONTO", "Ponto"},
                 {"Z_ROTA", "Rota"},      {"Z_OPERL", "Operador"},   {"DIFEE", "Entradas"},
                 {"DIFES", "Saídas"},     {"HPTOTAL", "Total"},      {"COMPONTO", "Ponto R$"},
                 {"COMOPER", "Oper. R$"}, {"LIQUIDO", "Líquido"}};
    // The machine first: the date check comes after it.
    d.campos = {{"IDMAQ", "Máquina", C::Inteiro, kSemMaquina},
                {"DATA", "Data", C::Data, kSemData},
                {"EMISSAO", "Emissão", C::Texto},
                {"IDPONTO", "Ponto", C::Inteiro},
                {"IDOPERL", "Operador da leitura", C::Inteiro},
                {"IDOPER", "Operador da máquina", C::Inteiro},
                {"IDROTA", "Rota", C::Inteiro},
                {"IDAREA", "Área", C::Inteiro}};
    for (const char *c : {"LEEI", "LEEF", "DIFEE", "LESI", "LESF", "DIFES", "MOEDASE", "LMEI", "LMEF", "DIFME", "LMSI",
                          "LMSF", "DIFMS", "MOEDASM", "HPMOEDAS"})
        d.campos << C{c, c, C::Inteiro};
    for (const char *c : {"HPTOTAL", "PERCCOMPONTO", "COMPONTO", "ARECEBER", "DEBITOSANT", "BRUTO", "RECEBIDO", "DEBITO",
                          "PERCCOMOPER", "COMOPER", "LIQUIDO"})
        d.campos << C{c, c, C::Decimal};
    d.perguntaExclusao = "Deseja realmente excluir a Leitura?";
    d.traco = "Leitura Excluída (";
    return d;
}

int maquinaDoSelo(db::Transacao &t, const QString &selo)
{
    if (selo.trimmed().isEmpty()) return 0;
    return db::escalar(t, "Select First 1 Id From TBFL_MAQ Where Selo = :SELO Order By Id", {{"SELO", selo.trimmed()}}).toInt();
}

Valores dadosDaMaquina(db::Transacao &t, int idMaq)
{
    // A machine without percentages of its own takes its point's and its operator's.
    db::Consulta q(t, "Select M.Id, M.Selo, M.Moeda, M.Entrada, M.Saida, M.IdPonto, "
                      "P.Nome || ' / ' || Coalesce(P.Endereco, '') Z_Ponto, Coalesce(M.IdOper, P.IdOper) IdOper, "
                      "O.Nome Z_Oper, P.IdRota, R.Rota Z_Rota, R.IdArea, A.Area Z_Area, "
                      "Coalesce(M.PercComPonto, P.PercCom) PercComPonto, Coalesce(M.PercComOper, O.PercCom) PercComOper, "
                      + kUltima.arg("Leef") + " Z_LEEF, " + kUltima.arg("Lesf") + " Z_LESF "
                      "From TBFL_MAQ M Left Join TBFL_PONTOS P On (P.Id = M.IdPonto) "
                      "Left Join TBFL_OPER O On (O.Id = Coalesce(M.IdOper, P.IdOper)) "
                      "Left Join TBFL_ROTAS R On (R.Id = P.IdRota) Left Join TBFL_AREAS A On (A.Id = R.IdArea) "
                      "Where M.Id = :ID");
    q.bind("ID", idMaq);
    q.executar();
    Valores v;
    if (!q.proxima()) return v;
    v["IDMAQ"] = q["ID"];
    v["Z_MAQ"] = q["SELO"];
    v["MOEDA"] = QVariant::fromValue(decimal(q["MOEDA"]));
    v["IDPONTO"] = q["IDPONTO"];
    v["Z_PONTO"] = q["Z_PONTO"];
    v["IDOPER"] = q["IDOPER"];
    v["IDOPERL"] = q["IDOPER"];
    v["Z_OPER"] = q["Z_OPER"];
    v["Z_OPERL"] = q["Z_OPER"];
    v["IDROTA"] = q["IDROTA"];
    v["Z_ROTA"] = q["Z_ROTA"];
    v["IDAREA"] = q["IDAREA"];
    v["Z_AREA"] = q["Z_AREA"];
    v["PERCCOMPONTO"] = QVariant::fromValue(decimal(q["PERCCOMPONTO"]));
    v["PERCCOMOPER"] = QVariant::fromValue(decimal(q["PERCCOMOPER"]));
    // The entry counter decides where both counters continue from.
    const bool continua = inteiro(q["Z_LEEF"]) > 0;
    v["LEEI"] = continua ? inteiro(q["Z_LEEF"]) : inteiro(q["ENTRADA"]);
    v["LESI"] = continua ? inteiro(q["Z_LESF"]) : inteiro(q["SAIDA"]);
    return v;
}

int salvarLeitura(db::Transacao &t, int id, Valores v, const QDateTime &agora, const Sessao &quem)
{
    static const DeclaracaoRegistro d = declaracaoLeituras();
    conferirObrigatorios(d, v);
    // The money is the routine's: whatever the screen showed, it follows the counters and the machine.
    db::Consulta q(t, "Select Moeda From TBFL_MAQ Where Id = :ID");
    q.bind("ID", valor(v, "IDMAQ"));
    q.executar();
    if (!q.proxima()) throw Recusa(kSemMaquina, "IDMAQ");
    calcularValores(v, decimal(q["MOEDA"]));
    if (id == 0) v["EMISSAO"] = agora;
    else v.erase("EMISSAO");
    Valores colunas;
    for (const CampoForm &c : d.campos)
        if (v.count(c.coluna)) colunas[c.coluna] = v.at(c.coluna);
    return gravarRegistro(t, d, id, colunas, quem);
}

void excluirLeitura(db::Transacao &t, int id, const Sessao &quem)
{
    static const DeclaracaoRegistro d = declaracaoLeituras();
    excluirRegistro(t, d, id, quem);
}

// ------------------------------------------------------------------ the list

namespace {

// The names a reading shows, joined to the rows of `origem` (aliased L).
QString comNomes(const QString &origem, const QString &extra = {})
{
    return "Select L.*, M.Selo Z_Maq, M.Moeda Z_Moeda, P.Nome Z_Ponto, R.Rota Z_Rota, OL.Nome Z_OperL" + extra + " From "
           + origem + " Left Join TBFL_MAQ M On (M.Id = L.IdMaq) Left Join TBFL_PONTOS P On (P.Id = L.IdPonto) "
           "Left Join TBFL_ROTAS R On (R.Id = L.IdRota) Left Join TBFL_OPER OL On (OL.Id = L.IdOperL)";
}

} // namespace

QString sqlLeituras(const FiltroLeituras &f, std::map<QString, QVariant> &p)
{
    QStringList onde;
    if (f.de.isValid()) {
        onde << "Data >= :DE";
        p["DE"] = f.de;
    }
    if (f.ate.isValid()) {
        onde << "Data <= :ATE";
        p["ATE"] = f.ate;
    }
    if (f.idMaq) {
        onde << "IdMaq = :MAQ";
        p["MAQ"] = f.idMaq;
    }
    if (f.idOper) {
        onde << "IdOperL = :OPER";
        p["OPER"] = f.idOper;
    }
    if (f.idRota) {
        onde << "IdRota = :ROTA";
        p["ROTA"] = f.idRota;
    }
    // Sorted before the names are joined, so that a page joins only its own rows: the left joins
    // run as nested loops over the sorted readings and keep their order.
    return comNomes("(Select * From TBFL_LEITURAS" + (onde.isEmpty() ? QString() : " Where " + onde.join(" and "))
                    + " Order By Data Desc, Id Desc) L");
}

QString sqlLeitura()
{
    return comNomes("TBFL_LEITURAS L", ", (Select A.Area From TBFL_AREAS A Where A.Id = L.IdArea) Z_Area, "
                                       "(Select O.Nome From TBFL_OPER O Where O.Id = L.IdOper) Z_Oper")
           + " Where L.Id = :LEITURA";
}

} // namespace orb
