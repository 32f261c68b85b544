// Readings: the split of the takings to the cent, the counter triples, where a reading's counters
// start, the registries' checks in their order, the save's checks, and the takings column of
// older databases becoming money.

#include "Leituras.h"
#include "Maquinas.h"
#include "Recusa.h"
#include "apoio/TabsTeste.h"
#include "schema/Atualizacao.h"

#include <gtest/gtest.h>

using namespace orb;
using db::Decimal;

namespace {

QVariant dec(const char *s) { return QVariant::fromValue(Decimal(s)); }

// ------------------------------------------------------------------ money and counters

// The coin value multiplies the counted difference (none or a negative one: the counters count cents);
// the operator's share comes from what the point left; half a cent goes away from zero, as the
// database stores it, on both sides of zero.
TEST(Rateio, SplitsTheTakingsToTheCent)
{
    const struct { qint64 difEntrada, difSaida; const char *moeda, *percPonto, *percOper; QString esperado; } casos[] = {
        {1000, 200, "0", "30", "10", "800 8.00 2.40 5.60 0.56 5.04"},
        {1000, 200, "-0.50", "30", "10", "800 8.00 2.40 5.60 0.56 5.04"},
        {1000, 200, "0.25", "30", "10", "800 200.00 60.00 140.00 14.00 126.00"},
        {333, 0, "1", "12.5", "7", "333 333.00 41.63 291.37 20.40 270.97"},
        {500, 500, "0.25", "30", "10", "0 0.00 0.00 0.00 0.00 0.00"},
        {100, 300, "0", "30", "10", "-200 -2.00 -0.60 -1.40 -0.14 -1.26"},
        {1, 0, "0", "50", "50", "1 0.01 0.01 0.00 0.00 0.00"},
        {0, 1, "0", "50", "50", "-1 -0.01 -0.01 0.00 0.00 0.00"},
        {1234, 34, "0.10", "0", "0", "1200 120.00 0.00 120.00 0.00 120.00"},
    };
    for (const auto &c : casos) {
        const Rateio r = ratear(c.difEntrada, c.difSaida, Decimal(c.moeda), Decimal(c.percPonto), Decimal(c.percOper));
        EXPECT_EQ(QStringList({QString::number(r.moedas), r.total.texto(), r.comPonto.texto(), r.aReceber.texto(), r.comOper.texto(),
                               r.liquido.texto()}).join(' '), c.esperado) << c.difEntrada << "/" << c.difSaida << " x " << c.moeda;
    }
}

// The field not typed follows the other two; a zero or negative difference comes from the final.
TEST(Triplo, FillsTheOtherField)
{
    const struct { Triplo antes; Editado editado; Triplo depois; } casos[] = {
        {{1000, 0, 150}, Editado::Diferenca, {1000, 1150, 150}},
        {{1000, 1200, 150}, Editado::Diferenca, {1000, 1150, 150}},
        {{1000, 1200, 0}, Editado::Diferenca, {1000, 1200, 200}},
        {{1000, 900, -5}, Editado::Diferenca, {1000, 900, -100}},
        {{1000, 1200, 150}, Editado::InicialOuFinal, {1000, 1200, 200}},
        {{1000, 900, 0}, Editado::InicialOuFinal, {1000, 900, -100}},
        {{1000, 0, 150}, Editado::InicialOuFinal, {1000, 1150, 150}},
        {{1000, 0, 0}, Editado::InicialOuFinal, {1000, 1000, 0}},
    };
    for (const auto &c : casos) EXPECT_EQ(recalcular(c.antes, c.editado), c.depois);
}

// ------------------------------------------------------------------ with a database

struct LeiturasTest : teste::ComTabs {
    std::unique_ptr<db::Transacao> tr;
    int area = 0, rota = 0, operador = 0, ponto = 0, maquina = 0;

    void SetUp() override
    {
        ComTabs::SetUp();
        tr = std::make_unique<db::Transacao>(tabs.DbORB());
        area = salvar("TAreas", {{"AREA", "Centro"}});
        rota = salvar("TRotas", {{"ROTA", "Rota 1"}, {"IDAREA", area}});
        operador = salvar("TOperadores", {{"NOME", "Paulo"}, {"PERCCOM", dec("10")}, {"IDROTA", rota}});
        ponto = salvar("TPontos", {{"NOME", "Bar do Zé"}, {"RESPONSAVEL", "José"}, {"ENDERECO", "Rua A, 10"},
                                   {"PERCCOM", 25}, {"IDROTA", rota}, {"IDOPER", operador}});
        maquina = salvar("TMaquinas", {{"SELO", "S-001"}, {"TIPO", "Música"}, {"MOEDA", dec("0")}, {"ENTRADA", 1000},
                                       {"SAIDA", 500}, {"IDPONTO", ponto}, {"PERCCOMPONTO", dec("30")},
                                       {"PERCCOMOPER", dec("10")}});
    }
    void TearDown() override
    {
        if (tr && tr->ativa()) tr->rollback();
        tr.reset();
        ComTabs::TearDown();
    }
    int salvar(const QString &classe, const Valores &v)
    {
        return gravarRegistro(*tr, registroMaquinas(classe), 0, v, teste::administrador(*tr, "&Máquinas", classe));
    }
    int ler(const QDate &data, qint64 leef, qint64 difee, qint64 lesf, qint64 difes)
    {
        Valores v = dadosDaMaquina(*tr, maquina);
        for (auto it = v.begin(); it != v.end();) it = it->first.startsWith("Z_") || it->first == "MOEDA" ? v.erase(it) : ++it;
        v["DATA"] = data;
        v["LEEF"] = leef;
        v["DIFEE"] = difee;
        v["LESF"] = lesf;
        v["DIFES"] = difes;
        return salvarLeitura(*tr, 0, v, QDateTime(data, QTime(10, 0)), sessaoLeituras());
    }
    Sessao sessaoLeituras() { return teste::administrador(*tr, "&Máquinas", "TLeituras86"); }
};

// The first reading starts from the machine's counters, the next from the latest finals by date; a
// zero final entry counter sends both back to the machine's (the exit follows the entry's test).
TEST_F(LeiturasTest, ReadingsStartFromTheMachineOrTheLatestFinals)
{
    auto iniciais = [&] {
        const Valores v = dadosDaMaquina(*tr, maquina);
        return QString("%1/%2").arg(v.at("LEEI").toLongLong()).arg(v.at("LESI").toLongLong());
    };
    EXPECT_EQ(iniciais(), "1000/500");
    ler(QDate(2026, 3, 2), 1800, 800, 600, 100);
    EXPECT_EQ(iniciais(), "1800/600");
    ler(QDate(2026, 2, 1), 1500, 500, 550, 50);  // older, typed later: not the last one
    EXPECT_EQ(iniciais(), "1800/600");
    ler(QDate(2026, 3, 9), 0, 0, 700, 100);
    EXPECT_EQ(iniciais(), "1000/500");
}

TEST_F(LeiturasTest, PickingTheMachineCopiesPointOperatorRouteAreaAndPercentages)
{
    // The operator: the machine has none, so its point's.
    const Valores v = dadosDaMaquina(*tr, maquina);
    QStringList r;
    for (const char *c : {"IDPONTO", "IDOPER", "IDOPERL", "IDROTA", "IDAREA", "Z_PONTO", "Z_ROTA", "Z_AREA"}) r << v.at(c).toString();
    EXPECT_EQ(r, QStringList({QString::number(ponto), QString::number(operador), QString::number(operador), QString::number(rota),
                              QString::number(area), "Bar do Zé / Rua A, 10", "Rota 1", "Centro"}));
    EXPECT_EQ(v.at("PERCCOMPONTO").value<Decimal>(), Decimal("30"));
    EXPECT_EQ(v.at("PERCCOMOPER").value<Decimal>(), Decimal("10"));
    EXPECT_TRUE(dadosDaMaquina(*tr, maquina + 1000).empty());
    EXPECT_EQ(maquinaDoSelo(*tr, " S-001 "), maquina);
    EXPECT_EQ(maquinaDoSelo(*tr, "S-999"), 0);
}

// The save stores the money of the counters ("Centavos" above), stamped, with the machine's area;
// changed, the reading's money is computed again (never taken as typed) and its stamp kept.
TEST_F(LeiturasTest, SaveStoresTheMoneyOfTheCountersAndAChangeRecomputesIt)
{
    const int id = ler(QDate(2026, 3, 2), 2000, 1000, 700, 200);
    EXPECT_EQ(db::escalar(*tr, "Select HpMoedas || ' ' || HpTotal || ' ' || ComPonto || ' ' || AReceber || ' ' || ComOper || ' ' || "
                               "Liquido || ' ' || Emissao || ' ' || IdArea From TBFL_LEITURAS Where Id = :ID", {{"ID", id}}).toString(),
              QString("800 8.00 2.40 5.60 0.56 5.04 2026-03-02 10:00:00.0000 %1").arg(area));
    Valores v = {{"IDMAQ", maquina}, {"DATA", QDate(2026, 3, 2)}, {"LEEI", 1000}, {"LEEF", 1500}, {"DIFEE", 500},
                 {"LESI", 500}, {"LESF", 600}, {"DIFES", 100}, {"PERCCOMPONTO", dec("30")}, {"PERCCOMOPER", dec("10")},
                 {"HPTOTAL", dec("999.99")}, {"EMISSAO", QDateTime(QDate(2030, 1, 1), QTime(0, 0))}};
    EXPECT_EQ(salvarLeitura(*tr, id, v, QDateTime(QDate(2026, 4, 1), QTime(8, 0)), sessaoLeituras()), id);
    EXPECT_EQ(db::escalar(*tr, "Select HpTotal || ' ' || Liquido || ' ' || Emissao From TBFL_LEITURAS Where Id = :ID", {{"ID", id}}).toString(),
              "4.00 2.52 2026-03-02 10:00:00.0000");
}

TEST_F(LeiturasTest, SaveAsksForTheMachineThenTheDate)
{
    const std::pair<Valores, QString> casos[] = {
        {{}, kSemMaquina},
        {{{"IDMAQ", maquina}, {"DATA", "  /  /    "}}, kSemData},
        {{{"IDMAQ", maquina + 1000}, {"DATA", QDate(2026, 1, 1)}}, kSemMaquina},
    };
    for (const auto &[v, mensagem] : casos)
        EXPECT_EQ(teste::recusa([&] { salvarLeitura(*tr, 0, v, QDateTime::currentDateTime(), sessaoLeituras()); }), mensagem);
}

TEST_F(LeiturasTest, ListFiltersByDateMachineOperatorAndRoute)
{
    const int outraRota = salvar("TRotas", {{"ROTA", "Rota 2"}, {"IDAREA", area}});
    for (int semana = 0; semana < 6; ++semana) ler(QDate(2026, 1, 5).addDays(7 * semana), 1100 + semana * 100, 100, 510, 10);
    db::executar(*tr, "Update TBFL_LEITURAS Set IdRota = :R Where Data > :D", {{"R", outraRota}, {"D", QDate(2026, 1, 31)}});
    auto contar = [&](const FiltroLeituras &f) {
        std::map<QString, QVariant> p;
        db::Consulta q(*tr, "Select Count(*) From (" + sqlLeituras(f, p) + ")");
        for (const auto &[k, v] : p) q.bind(k, v);
        q.executar();
        q.proxima();
        return q.valor(0).toInt();
    };
    const std::pair<FiltroLeituras, int> casos[] = {
        {{}, 6}, {{QDate(2026, 1, 12), QDate(2026, 1, 26)}, 3}, {{{}, {}, 0, 0, rota}, 4}, {{{}, {}, 0, 0, outraRota}, 2},
        {{{}, {}, maquina, operador, rota}, 4}, {{{}, {}, maquina + 1, 0, 0}, 0}, {{{}, {}, 0, operador + 1, 0}, 0},
    };
    for (const auto &[f, n] : casos) EXPECT_EQ(contar(f), n);
    // Newest first, and on one day the last typed first, with the names of each row.
    ler(QDate(2026, 2, 9), 1800, 100, 520, 10);
    std::map<QString, QVariant> p;
    db::Consulta q(*tr, sqlLeituras({}, p));
    q.executar();
    QStringList ordem, nomes;
    while (q.proxima())
        ordem << q["DATA"].toDate().toString("dd/MM") + "#" + q["LEEF"].toString(), nomes << q["Z_MAQ"].toString() + "|" + q["Z_PONTO"].toString();
    EXPECT_EQ(ordem, (QStringList{"09/02#1800", "09/02#1600", "02/02#1500", "26/01#1400", "19/01#1300", "12/01#1200",
                                  "05/01#1100"}));
    nomes.removeDuplicates();
    EXPECT_EQ(nomes, QStringList{"S-001|Bar do Zé"});
}

// ------------------------------------------------------------------ registries

struct CasoRegistro {
    const char *classe;
    Valores valores;
    QString mensagem;  // empty: saved
};

TEST_F(LeiturasTest, RegistriesCheckInTheirOrder)
{
    const CasoRegistro casos[] = {
        {"TAreas", {}, "Digite o nome da Área primeiro!"},
        {"TRotas", {{"IDAREA", area}}, "Digite o Nome da Riota primeiro!"},
        {"TRotas", {{"ROTA", "Norte"}}, "Selecione a Área primeiro!"},
        {"TOperadores", {{"IDROTA", rota}}, "Digite o Nome do Ponto primeiro!"},
        {"TPontos", {}, "Digite o Nome do Ponto primeiro!"},
        {"TPontos", {{"NOME", "Padaria"}}, "Digite o nome do Responsável (Dono) pelo ponto primeiro!"},
        {"TMaquinas", {{"TIPO", "Música"}, {"MOEDA", dec("1")}}, "Digite o número do Selo primeiro!"},
        {"TMaquinas", {{"SELO", "S-2"}, {"MOEDA", dec("1")}}, "Digite o tipo da máquina primeiro!"},
        {"TMaquinas", {{"SELO", "S-2"}, {"TIPO", "Música"}}, "Digite o valor multiplicador de moeda primeiro!"},
        {"TMaquinas", {{"SELO", "S-2"}, {"TIPO", "Música"}, {"MOEDA", dec("1.5")}}, kMoedaAcimaDeUm},
        {"TMaquinas", {{"SELO", "S-2"}, {"TIPO", "Música"}, {"MOEDA", dec("1.01")}}, kMoedaAcimaDeUm},
        {"TMaquinas", {{"SELO", "S-2"}, {"TIPO", "Música"}, {"MOEDA", dec("1")}}, {}},
        {"TMaquinas", {{"SELO", "S-4"}, {"TIPO", "Música"}, {"MOEDA", dec("0")}}, {}},
    };
    for (const CasoRegistro &c : casos)
        EXPECT_EQ(teste::recusa(*tr, [&] { salvar(c.classe, c.valores); }), c.mensagem) << c.classe;
}

TEST_F(LeiturasTest, MachineBrowseShowsTheLatestFinalsAndReadingsKeepTheirRegistries)
{
    ler(QDate(2026, 3, 2), 1800, 800, 600, 100);
    ler(QDate(2026, 3, 9), 1900, 100, 650, 50);
    db::Consulta q(*tr, sqlGrade(registroMaquinas("TMaquinas")));
    q.executar();
    ASSERT_TRUE(q.proxima());
    EXPECT_EQ(QStringList({q["Z_LEEF"].toString(), q["Z_LESF"].toString(), q["Z_PONTO"].toString(), q["Z_AREA"].toString()}),
              QStringList({"1900", "650", "Bar do Zé / Rua A, 10", "Centro"}));
    q.fechar();
    for (const auto &[classe, id] : {std::pair{"TMaquinas", maquina}, {"TPontos", ponto}, {"TRotas", rota}, {"TAreas", area}})
        EXPECT_THROW(excluirRegistro(*tr, registroMaquinas(classe), id), Recusa) << classe;
}

// ------------------------------------------------------------------ older databases

TEST(TakingsColumn, IntegerTakingsBecomeMoneyKeepingTheirValues)
{
    teste::BancoTemporario bt;
    db::Banco &b = bt.banco();
    {
        // The column as older databases have it, with a reading in it.
        db::Transacao t(b);
        db::executar(t, "ALTER TABLE TBFL_LEITURAS DROP HPTOTAL");
        t.commit();
        t.iniciar();
        db::executar(t, "ALTER TABLE TBFL_LEITURAS ADD HPTOTAL INTEIRO");
        t.commit();
        t.iniciar();
        db::executar(t, "Insert Into TBFL_LEITURAS (Id, HpTotal) Values (1, 123)");
        t.commit();
    }
    const QStringList feitas = esquema::atualizar(b, {});
    EXPECT_TRUE(feitas.contains("TBFL_LEITURAS: mudar coluna HPTOTAL para NUMERO2")) << feitas.join(" | ").toStdString();
    EXPECT_EQ(esquema::Metadados::ler(b).colunas["TBFL_LEITURAS"]["HPTOTAL"], "NUMERO2");
    db::Transacao t(b);
    db::executar(t, "Insert Into TBFL_LEITURAS (Id, HpTotal) Values (2, :V)", {{"V", dec("8.56")}});
    EXPECT_EQ(db::escalar(t, "Select List(HpTotal, ' ') From (Select HpTotal From TBFL_LEITURAS Order By Id)").toString(), "123.00 8.56");
    t.commit();
    EXPECT_FALSE(esquema::atualizar(b, {}).contains("TBFL_LEITURAS: mudar coluna HPTOTAL para NUMERO2"));
}

} // namespace
