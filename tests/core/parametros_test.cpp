// The global parameters the main window reads, and the records a clinic starts with.

#include "apoio/BancoTeste.h"
#include "principal/ClinicaPadrao.h"
#include "principal/Parametros.h"

#include <gtest/gtest.h>

#include <functional>

using namespace orb;

namespace {

std::string s(const QString &q) { return q.toStdString(); }

int contar(db::Transacao &t, const QString &sql) { return db::escalar(t, sql).toInt(); }

const char *const kTabelasDaClinica[] = {"TBETAPASCOM", "TBSTATUSCOM", "TBITENS", "TBCAD",
                                         "TBCONSULTORIOS", "TBNIVEIS", "TBCADMEDSIT"};

std::map<QString, int> contagens(db::Transacao &t)
{
    std::map<QString, int> r;
    for (const char *tab : kTabelasDaClinica) r[tab] = contar(t, QString("Select Count(*) From ") + tab);
    return r;
}

} // namespace

// ---- lerParametros ----

TEST(Parametros, BancoNovoTemRamoPadraoEEmpresaAindaNaoPreenchida)
{
    teste::BancoTemporario bt;
    db::Transacao t(bt.banco());
    const ParametrosGlobais p = lerParametros(t);
    EXPECT_EQ(s(p.ramo), "CO");
    EXPECT_GT(p.idEmpresa, 0);
    EXPECT_EQ(p.dataAtual, QDate::currentDate());
    EXPECT_FALSE(p.corCabecalho.isValid());
    EXPECT_FALSE(p.corCampoAtual.isValid());
    // "SUA EMPRESA AQUI" lends nothing.
    EXPECT_EQ(s(p.nome), "");
    EXPECT_EQ(s(p.cidade), "");
    EXPECT_EQ(s(p.uf), "");
    EXPECT_EQ(s(p.telefone1), "");
    EXPECT_EQ(s(p.email), "");
    EXPECT_EQ(p.idCidade, 0);
}

TEST(Parametros, EmpresaPreenchidaEParametrosSaoLidos)
{
    teste::BancoTemporario bt;
    db::Transacao t(bt.banco());
    const QVariant cidade = db::escalar(t, "Insert Into TbCidades (Cidade, Uf) Values ('SÃO JOSÉ', 'SC') Returning Id");
    db::executar(t, "Update TbCad Set Nome = 'ÓTICA BOA VISTA', IdCidade = :C, Telefone1 = '4832220000', "
                    "Email = 'contato@boavista.com.br' Where Id = (Select IdEmpresa From TbParGlobais)", {{"C", cidade}});

    struct Caso {
        const char *coluna;
        QVariant valor;
        std::function<QVariant(const ParametrosGlobais &)> lido;
    };
    const Caso casos[] = {
        {"RAMO", "ME", [](auto &p) { return p.ramo; }},
        {"CAMINHOSERVIDOR", "/srv/orb", [](auto &p) { return p.caminhoServidor; }},
        {"CAMINHOESTACOES", "C:\\ORB", [](auto &p) { return p.caminhoEstacoes; }},
        {"SUPNOME", "SUPORTE LTDA", [](auto &p) { return p.supNome; }},
        {"SUPCEP", "88000000", [](auto &p) { return p.supCep; }},
        {"SUPEND", "RUA DAS FLORES", [](auto &p) { return p.supEnd; }},
        {"SUPNUM", "100", [](auto &p) { return p.supNum; }},
        {"SUPCOMP", "SALA 2", [](auto &p) { return p.supComp; }},
        {"SUPBAIRRO", "CENTRO", [](auto &p) { return p.supBairro; }},
        {"SUPCID", "FLORIANÓPOLIS", [](auto &p) { return p.supCid; }},
        {"SUPTEL", "4830000000", [](auto &p) { return p.supTel; }},
        {"SUPWHATSAPP", "48999990000", [](auto &p) { return p.supWhatsapp; }},
        {"SUPSKYPE", "suporte.orb", [](auto &p) { return p.supSkype; }},
        {"SUPEMAIL", "suporte@exemplo.com.br", [](auto &p) { return p.supEmail; }},
        {"SUPSITE", "www.exemplo.com.br", [](auto &p) { return p.supSite; }},
        {"MONOSREMID", 42, [](auto &p) { return p.monOsRemId; }},
        {"MONOSUSUARIO", "monitor", [](auto &p) { return p.monOsUsuario; }},
        {"MONOSSENHA", "segredo", [](auto &p) { return p.monOsSenha; }},
    };
    for (const Caso &c : casos)
        db::executar(t, QString("Update TbParGlobais Set %1 = :V").arg(c.coluna), {{"V", c.valor}});
    db::executar(t, "Update TbParGlobais Set CorCabecalho = 65535, CorCampoAtual = -16777211");

    const ParametrosGlobais p = lerParametros(t);
    for (const Caso &c : casos) {
        SCOPED_TRACE(c.coluna);
        EXPECT_EQ(s(c.lido(p).toString()), s(c.valor.toString()));
    }
    EXPECT_EQ(p.corCabecalho, QColor(Qt::yellow));
    EXPECT_FALSE(p.corCampoAtual.isValid());
    EXPECT_EQ(s(p.nome), "ÓTICA BOA VISTA");
    EXPECT_EQ(p.idCidade, cidade.toInt());
    EXPECT_EQ(s(p.cidade), "SÃO JOSÉ");
    EXPECT_EQ(s(p.uf), "SC");
    EXPECT_EQ(s(p.telefone1), "4832220000");
    EXPECT_EQ(s(p.email), "contato@boavista.com.br");
}

TEST(Parametros, CorDoBanco)
{
    struct { QVariant valor; QColor esperada; } casos[] = {
        {16776960, QColor("#00FFFF")},
        {65535, QColor("#FFFF00")},
        {255, QColor("#FF0000")},
        {32768, QColor("#008000")},
        {0x336699, QColor("#996633")},  // blue-green-red: the low byte is red
        {-16777206, QColor()},
        {-16777211, QColor()},
        {QVariant(), QColor()},
        {QVariant(QMetaType::fromType<int>()), QColor()},  // a NULL column
    };
    for (const auto &c : casos) {
        SCOPED_TRACE(s(c.valor.toString()));
        const QColor cor = corDoBanco(c.valor);
        EXPECT_EQ(cor.isValid(), c.esperada.isValid());
        if (c.esperada.isValid()) {
            EXPECT_EQ(s(cor.name()), s(c.esperada.name()));
        }
    }
}

// ---- semearClinica ----

TEST(Clinica, SemeiaUmaVezESegundaChamadaNadaInsere)
{
    teste::BancoTemporario bt;
    db::Transacao t(bt.banco());
    const auto antes = contagens(t);
    semearClinica(t);
    const auto depois = contagens(t);
    const std::map<QString, int> novos = {{"TBETAPASCOM", 4}, {"TBSTATUSCOM", 7}, {"TBITENS", 1}, {"TBCAD", 2},
                                          {"TBCONSULTORIOS", 1}, {"TBNIVEIS", 1}, {"TBCADMEDSIT", 1}};
    for (const auto &[tab, n] : novos) {
        SCOPED_TRACE(s(tab));
        EXPECT_EQ(depois.at(tab) - antes.at(tab), n);
    }
    semearClinica(t);
    EXPECT_EQ(contagens(t), depois);
    // Without a date given, the week is dated by the server.
    EXPECT_EQ(db::escalar(t, "Select Data From TbCadMedSit").toDate(), QDate::currentDate());
    t.commit();

    // Seeded records survive a restart and a further start seeds nothing.
    bt.reabrir();
    db::Transacao t2(bt.banco());
    semearClinica(t2);
    EXPECT_EQ(contagens(t2), depois);
}

TEST(Clinica, EtapasEStatus)
{
    teste::BancoTemporario bt;
    db::Transacao t(bt.banco());
    semearClinica(t);
    struct Linha { const char *ordemEtapa, *etapa, *ordem, *status, *red; int cor; const char *obr; };
    const Linha esperadas[] = {
        {"1", "AGENDAMENTO", "1", "AGENDADO", "AG", 16776960, "N"},
        {"2", "RECEPÇÃO", "1", "AGUARDANDO", "AD", 65535, "N"},
        {"3", "ATENDIMENTO", "1", "EM ATENDIMENTO", "EA", 255, "N"},
        {"4", "FINALIZAÇÃO", "1", "REMARCADO", "RE", -16777206, "N"},
        {"4", "FINALIZAÇÃO", "2", "FALTA", "FA", -16777206, "N"},
        {"4", "FINALIZAÇÃO", "3", "CANCELADO", "CA", -16777206, "N"},
        {"4", "FINALIZAÇÃO", "4", "ATENDIDO / FINALIZADO", "FI", 32768, "S"},
    };
    db::Consulta q(t, "Select E.Ordem OE, E.Etapa, E.Op OPE, S.Ordem, S.Status, S.StatusRed, S.CorFundo, S.Obr, "
                      "S.GeraFin, S.GeraEst, S.Op, S.Final "
                      "From TbEtapasCom E Join TbStatusCom S On (S.Fk = E.Id) Order By E.Ordem, S.Ordem");
    q.executar();
    for (const Linha &e : esperadas) {
        SCOPED_TRACE(e.status);
        ASSERT_TRUE(q.proxima());
        EXPECT_EQ(s(q["OE"].toString()), e.ordemEtapa);
        EXPECT_EQ(s(q["ETAPA"].toString()), e.etapa);
        EXPECT_EQ(q["OPE"].toInt(), 8);
        EXPECT_EQ(s(q["ORDEM"].toString()), e.ordem);
        EXPECT_EQ(s(q["STATUS"].toString()), e.status);
        EXPECT_EQ(s(q["STATUSRED"].toString()), e.red);
        EXPECT_EQ(q["CORFUNDO"].toInt(), e.cor);
        EXPECT_EQ(s(q["OBR"].toString()), e.obr);
        EXPECT_EQ(s(q["GERAFIN"].toString()), "N");
        EXPECT_EQ(s(q["GERAEST"].toString()), "N");
        EXPECT_EQ(s(q["FINAL"].toString()), "N");
        EXPECT_EQ(q["OP"].toInt(), 8);
    }
    EXPECT_FALSE(q.proxima());
}

TEST(Clinica, MedicoComNivelSenhaESemana)
{
    teste::BancoTemporario bt;
    db::Transacao t(bt.banco());
    const QDate hoje(2024, 3, 15);
    semearClinica(t, hoje);
    db::Consulta q(t, "Select C.Id, C.Pessoa, C.Nome, C.RazaoSocial, C.Apelido, C.Usuario, C.Us, C.TipoUsuario, C.Senha, "
                      "N.Nivel, N.Descricao From TbCad C Join TbNiveis N On (N.Id = C.IdNivel) Where C.Md = 'S'");
    q.executar();
    ASSERT_TRUE(q.proxima());
    const QVariant id = q["ID"];
    for (const char *c : {"NOME", "RAZAOSOCIAL", "APELIDO", "USUARIO"}) EXPECT_EQ(s(q[c].toString()), "MEDICO 1") << c;
    EXPECT_EQ(s(q["PESSOA"].toString()), "F");
    EXPECT_EQ(s(q["US"].toString()), "S");
    EXPECT_EQ(s(q["TIPOUSUARIO"].toString()), "A");
    EXPECT_EQ(s(q["SENHA"].toString()), "E10ADC3949BA59ABBE56E057F20F883E");  // MD5 of "123456"
    EXPECT_EQ(q["NIVEL"].toInt(), 3);
    EXPECT_EQ(s(q["DESCRICAO"].toString()), "MÉDICO");
    EXPECT_FALSE(q.proxima());

    db::Consulta w(t, "Select * From TbCadMedSit Where Fk = :FK");
    w.bind("FK", id).executar();
    ASSERT_TRUE(w.proxima());
    EXPECT_EQ(w["DATA"].toDate(), hoje);
    const std::pair<const char *, const char *> horas[] = {{"HORAINICIO", "08:00"}, {"HORASAIDAINT", "12:00"},
                                                           {"HORARETINT", "13:00"}, {"HORATERMINO", "18:00"},
                                                           {"HORATEMPO", "00:30"}};
    for (const char *dia : {"", "FER", "SEG", "TER", "QUA", "QUI", "SEX", "SAB"})
        for (const auto &[campo, hora] : horas) {
            const QString col = QString(campo) + dia;
            EXPECT_EQ(s(w[col].toString()), hora) << s(col);
        }
    EXPECT_FALSE(w.proxima());
}

// What the user already has is kept and reused, and only the missing records are added.
TEST(Clinica, RespeitaOQueJaExiste)
{
    struct Caso {
        const char *nome;
        std::function<void(db::Transacao &)> preparar;
        std::map<QString, int> novos;
        std::function<void(db::Transacao &)> conferir;
    };
    const Caso casos[] = {
        {"nivel 3 existente",
         [](db::Transacao &t) { db::executar(t, "Insert Into TbNiveis (Nivel, Descricao) Values (3, 'DOUTOR')"); },
         {{"TBNIVEIS", 0}, {"TBCAD", 2}},
         [](db::Transacao &t) {
             EXPECT_EQ(s(db::escalar(t, "Select N.Descricao From TbCad C Join TbNiveis N On (N.Id = C.IdNivel) "
                                        "Where C.Md = 'S'").toString()), "DOUTOR");
         }},
        {"medico existente com semana",
         [](db::Transacao &t) {
             const QVariant id = db::escalar(t, "Insert Into TbCad (Nome, Md) Values ('DRA. ANA', 'S') Returning Id");
             db::executar(t, "Insert Into TbCadMedSit (Fk, HoraInicio) Values (:F, '07:00')", {{"F", id}});
         },
         {{"TBNIVEIS", 0}, {"TBCAD", 1}, {"TBCADMEDSIT", 0}},
         [](db::Transacao &t) { EXPECT_EQ(contar(t, "Select Count(*) From TbCad Where Nome = 'MEDICO 1'"), 0); }},
        {"medico existente sem semana",
         [](db::Transacao &t) { db::executar(t, "Insert Into TbCad (Nome, Md) Values ('DRA. ANA', 'S')"); },
         {{"TBNIVEIS", 0}, {"TBCAD", 1}, {"TBCADMEDSIT", 1}},
         [](db::Transacao &t) {
             EXPECT_EQ(s(db::escalar(t, "Select C.Nome From TbCadMedSit M Join TbCad C On (C.Id = M.Fk)").toString()),
                       "DRA. ANA");
         }},
        {"id 1 de outro item",
         [](db::Transacao &t) { db::executar(t, "Insert Into TbItens (Descricao, Tipo) Values ('PARAFUSO', 'M')"); },
         {{"TBITENS", 1}},
         [](db::Transacao &t) {
             EXPECT_EQ(s(db::escalar(t, "Select Descricao From TbItens Where Id = 1").toString()), "PARAFUSO");
             EXPECT_EQ(contar(t, "Select Count(*) From TbItens Where Descricao = 'CONSULTA' and Tipo = 'P'"), 1);
         }},
        {"consulta, convenio e consultorio existentes",
         [](db::Transacao &t) {
             db::executar(t, "Insert Into TbItens (Descricao, Tipo) Values ('CONSULTA', 'P')");
             db::executar(t, "Insert Into TbCad (Nome, Cv) Values ('PARTICULAR', 'S')");
             db::executar(t, "Insert Into TbConsultorios (Consultorio) Values ('SALA A')");
         },
         {{"TBITENS", 0}, {"TBCAD", 1}, {"TBCONSULTORIOS", 0}},
         [](db::Transacao &) {}},
        {"etapas existentes, uma sem status",
         [](db::Transacao &t) {
             for (const char *e : {"AGENDAMENTO", "RECEPÇÃO", "ATENDIMENTO", "FINALIZAÇÃO"})
                 db::executar(t, "Insert Into TbEtapasCom (Ordem, Etapa, Op) Values ('9', :E, 8)", {{"E", e}});
             db::executar(t, "Insert Into TbStatusCom (Status, Op, Fk) Select 'PROPRIO', 8, Id From TbEtapasCom "
                             "Where Etapa <> 'ATENDIMENTO'");
         },
         {{"TBETAPASCOM", 0}, {"TBSTATUSCOM", 1}},
         [](db::Transacao &t) {
             EXPECT_EQ(s(db::escalar(t, "Select S.Status From TbStatusCom S Join TbEtapasCom E On (E.Id = S.Fk) "
                                        "Where E.Etapa = 'ATENDIMENTO'").toString()), "EM ATENDIMENTO");
         }},
    };
    for (const Caso &c : casos) {
        SCOPED_TRACE(c.nome);
        teste::BancoTemporario bt;
        db::Transacao t(bt.banco());
        c.preparar(t);
        const auto antes = contagens(t);
        semearClinica(t);
        const auto depois = contagens(t);
        for (const auto &[tab, n] : c.novos) EXPECT_EQ(depois.at(tab) - antes.at(tab), n) << s(tab);
        c.conferir(t);
        semearClinica(t);
        EXPECT_EQ(contagens(t), depois);
    }
}
