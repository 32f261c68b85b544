// The global parameters the main window reads, and the records a clinic starts with.

#include "apoio/BancoTeste.h"
#include "principal/ClinicaPadrao.h"
#include "principal/Parametros.h"

#include <gtest/gtest.h>

using namespace orb;

namespace {

// The first column of every row, in order.
QStringList coluna(db::Transacao &t, const QString &sql)
{
    db::Consulta q(t, sql);
    q.executar();
    QStringList r;
    while (q.proxima()) r << q.valor(0).toString();
    return r;
}

std::map<QString, int> contagens(db::Transacao &t)
{
    std::map<QString, int> r;
    for (const char *tab : {"TBETAPASCOM", "TBSTATUSCOM", "TBITENS", "TBCAD", "TBCONSULTORIOS", "TBNIVEIS", "TBCADMEDSIT"})
        r[tab] = db::escalar(t, QString("Select Count(*) From ") + tab).toInt();
    return r;
}

// Seeds twice and returns the rows the first time added per table; the second must add none.
std::map<QString, int> semear(db::Transacao &t, const QDate &hoje = {})
{
    const auto antes = contagens(t);
    semearClinica(t, hoje);
    const auto depois = contagens(t);
    semearClinica(t, hoje);
    EXPECT_EQ(contagens(t), depois) << "a segunda vez inseriu";
    auto novos = depois;
    for (auto &[tab, n] : novos) n -= antes.at(tab);
    return novos;
}

} // namespace

TEST(Parametros, BancoNovoEDepoisDePreenchido)
{
    teste::BancoTemporario bt;
    db::Transacao t(bt.banco());
    ParametrosGlobais p = lerParametros(t);
    EXPECT_EQ(p.ramo, "CO");
    EXPECT_GT(p.idEmpresa, 0);
    EXPECT_EQ(p.dataAtual, QDate::currentDate());
    EXPECT_FALSE(p.corCabecalho.isValid());
    // "SUA EMPRESA AQUI" lends nothing.
    EXPECT_EQ(QStringList({p.nome, p.cidade, p.uf, p.telefone1, p.email}), QStringList(5, ""));
    EXPECT_EQ(p.idCidade, 0);

    const QVariant cidade = db::escalar(t, "Insert Into TbCidades (Cidade, Uf) Values ('SÃO JOSÉ', 'SC') Returning Id");
    db::executar(t, "Update TbCad Set Nome = 'ÓTICA BOA VISTA', IdCidade = :C, Telefone1 = '4832220000', "
                    "Email = 'contato@boavista.com.br' Where Id = (Select IdEmpresa From TbParGlobais)", {{"C", cidade}});
    // A different value per column, so that no two fields can be swapped unnoticed.
    db::executar(t, "Update TbParGlobais Set Ramo = 'ME', CaminhoServidor = '/srv/orb', CaminhoEstacoes = 'C:\\ORB', "
                    "SupNome = 'SUPORTE LTDA', SupCep = '88000000', SupEnd = 'RUA DAS FLORES', SupNum = '100', "
                    "SupComp = 'SALA 2', SupBairro = 'CENTRO', SupCid = 'FLORIANÓPOLIS', SupTel = '4830000000', "
                    "SupWhatsapp = '48999990000', SupSkype = 'suporte.orb', SupEmail = 'suporte@exemplo.com.br', "
                    "SupSite = 'www.exemplo.com.br', MonOsRemId = 42, MonOsUsuario = 'monitor', MonOsSenha = 'segredo', "
                    "CorCabecalho = 65535, CorCampoAtual = -16777211");
    p = lerParametros(t);
    EXPECT_EQ(QStringList({p.ramo, p.caminhoServidor, p.caminhoEstacoes, p.supNome, p.supCep, p.supEnd, p.supNum, p.supComp,
                           p.supBairro, p.supCid, p.supTel, p.supWhatsapp, p.supSkype, p.supEmail, p.supSite,
                           QString::number(p.monOsRemId), p.monOsUsuario, p.monOsSenha}),
              QStringList({"ME", "/srv/orb", "C:\\ORB", "SUPORTE LTDA", "88000000", "RUA DAS FLORES", "100", "SALA 2", "CENTRO",
                           "FLORIANÓPOLIS", "4830000000", "48999990000", "suporte.orb", "suporte@exemplo.com.br",
                           "www.exemplo.com.br", "42", "monitor", "segredo"}));
    EXPECT_EQ(p.corCabecalho, QColor(Qt::yellow));
    EXPECT_FALSE(p.corCampoAtual.isValid());
    EXPECT_EQ(QStringList({p.nome, p.cidade, p.uf, p.telefone1, p.email}),
              QStringList({"ÓTICA BOA VISTA", "SÃO JOSÉ", "SC", "4832220000", "contato@boavista.com.br"}));
    EXPECT_EQ(p.idCidade, cidade.toInt());
}

TEST(Parametros, CorDoBanco)
{
    // Blue-green-red, the low byte is red; system colours (negative) and NULL give none.
    const std::pair<QVariant, QColor> casos[] = {
        {0x336699, QColor("#996633")}, {-16777206, QColor()}, {QVariant(QMetaType::fromType<int>()), QColor()}};
    for (const auto &[valor, cor] : casos) EXPECT_EQ(corDoBanco(valor), cor) << valor.toString().toStdString();
}

// Seeded once (a second call adds nothing): the stages and statuses, the doctor with level, password and week.
TEST(Clinica, SemeiaUmaVezEtapasStatusEMedico)
{
    teste::BancoTemporario bt;
    db::Transacao t(bt.banco());
    const QDate hoje(2024, 3, 15);
    EXPECT_EQ(semear(t, hoje), (std::map<QString, int>{{"TBETAPASCOM", 4}, {"TBSTATUSCOM", 7}, {"TBITENS", 1}, {"TBCAD", 2},
                                                        {"TBCONSULTORIOS", 1}, {"TBNIVEIS", 1}, {"TBCADMEDSIT", 1}}));
    // The doctor logs in with "123456" at level 3, and their week is dated the day given.
    EXPECT_EQ(coluna(t, "Select C.Usuario || ' ' || C.Us || ' ' || C.Senha || ' ' || N.Nivel || ' ' || M.Data From TbCad C "
                        "Join TbNiveis N On (N.Id = C.IdNivel) Join TbCadMedSit M On (M.Fk = C.Id) Where C.Md = 'S'"),
              QStringList{"MEDICO 1 S E10ADC3949BA59ABBE56E057F20F883E 3 2024-03-15"});
}

// Without a date given, the week is dated by the server.
TEST(Clinica, SemanaDatadaPeloServidor)
{
    teste::BancoTemporario bt;
    db::Transacao t(bt.banco());
    semearClinica(t);
    EXPECT_EQ(db::escalar(t, "Select Data From TbCadMedSit").toDate(), QDate::currentDate());
}

// What the user already has is kept and reused, and only the missing records are added.
TEST(Clinica, RespeitaOQueJaExiste)
{
    struct Caso {
        const char *nome;
        QStringList preparar;
        std::map<QString, int> novos;
        const char *conferir, *esperado;  // a query's value, when there is one to look at
    };
    const Caso casos[] = {
        {"nivel 3 existente", {"Insert Into TbNiveis (Nivel, Descricao) Values (3, 'DOUTOR')"}, {{"TBNIVEIS", 0}, {"TBCAD", 2}},
         "Select N.Descricao From TbCad C Join TbNiveis N On (N.Id = C.IdNivel) Where C.Md = 'S'", "DOUTOR"},
        {"medico existente com semana",
         {"Insert Into TbCad (Nome, Md) Values ('DRA. ANA', 'S')",
          "Insert Into TbCadMedSit (Fk, HoraInicio) Select Id, '07:00' From TbCad Where Nome = 'DRA. ANA'"},
         {{"TBNIVEIS", 0}, {"TBCAD", 1}, {"TBCADMEDSIT", 0}}, "Select Count(*) From TbCad Where Nome = 'MEDICO 1'", "0"},
        {"medico existente sem semana", {"Insert Into TbCad (Nome, Md) Values ('DRA. ANA', 'S')"},
         {{"TBNIVEIS", 0}, {"TBCAD", 1}, {"TBCADMEDSIT", 1}},
         "Select C.Nome From TbCadMedSit M Join TbCad C On (C.Id = M.Fk)", "DRA. ANA"},
        {"id 1 de outro item", {"Insert Into TbItens (Descricao, Tipo) Values ('PARAFUSO', 'M')"}, {{"TBITENS", 1}},
         "Select Id || Descricao || Tipo From TbItens Where Descricao = 'CONSULTA'", "2CONSULTAP"},
        {"consulta, convenio e consultorio existentes",
         {"Insert Into TbItens (Descricao, Tipo) Values ('CONSULTA', 'P')", "Insert Into TbCad (Nome, Cv) Values ('PARTICULAR', 'S')",
          "Insert Into TbConsultorios (Consultorio) Values ('SALA A')"},
         {{"TBITENS", 0}, {"TBCAD", 1}, {"TBCONSULTORIOS", 0}}, nullptr, nullptr},
        // Stages the user has are not added again; one with statuses keeps them, a missing one is skipped.
        {"etapas existentes, uma sem status",
         {"Insert Into TbEtapasCom (Ordem, Etapa, Op) Values ('9', 'AGENDAMENTO', 8)",
          "Insert Into TbEtapasCom (Ordem, Etapa, Op) Values ('9', 'ATENDIMENTO', 8)",
          "Insert Into TbStatusCom (Status, Op, Fk) Select 'PROPRIO', 8, Id From TbEtapasCom Where Etapa = 'AGENDAMENTO'"},
         {{"TBETAPASCOM", 0}, {"TBSTATUSCOM", 1}},
         "Select S.Status From TbStatusCom S Join TbEtapasCom E On (E.Id = S.Fk) Where E.Etapa = 'ATENDIMENTO'", "EM ATENDIMENTO"},
    };
    for (const Caso &c : casos) {
        SCOPED_TRACE(c.nome);
        teste::BancoTemporario bt;
        db::Transacao t(bt.banco());
        for (const QString &sql : c.preparar) db::executar(t, sql);
        const auto novos = semear(t);
        for (const auto &[tab, n] : c.novos) EXPECT_EQ(novos.at(tab), n) << tab.toStdString();
        if (c.conferir) {
            EXPECT_EQ(db::escalar(t, c.conferir).toString(), c.esperado);
        }
    }
}
