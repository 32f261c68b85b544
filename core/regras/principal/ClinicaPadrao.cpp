#include "principal/ClinicaPadrao.h"

#include <QCryptographicHash>

namespace orb {

namespace {

struct Status {
    const char *ordem, *status, *red;
    int cor;
    const char *obr;
};
struct Etapa {
    const char *ordem, *etapa;
    QList<Status> status;
};

// A system colour (negative): the agenda paints these statuses with the window's own colour.
const int kCorSistema = -16777206;

const QList<Etapa> kEtapas = {
    {"1", "AGENDAMENTO", {{"1", "AGENDADO", "AG", 16776960, "N"}}},
    {"2", "RECEPÇÃO", {{"1", "AGUARDANDO", "AD", 65535, "N"}}},
    {"3", "ATENDIMENTO", {{"1", "EM ATENDIMENTO", "EA", 255, "N"}}},
    {"4", "FINALIZAÇÃO",
     {{"1", "REMARCADO", "RE", kCorSistema, "N"}, {"2", "FALTA", "FA", kCorSistema, "N"},
      {"3", "CANCELADO", "CA", kCorSistema, "N"}, {"4", "ATENDIDO / FINALIZADO", "FI", 32768, "S"}}},
};

// The week's column groups: no suffix is the default day, FER holidays, then Monday to Saturday.
const char *const kDias[] = {"", "FER", "SEG", "TER", "QUA", "QUI", "SEX", "SAB"};

int contar(db::Transacao &t, const QString &sql, const std::map<QString, QVariant> &p = {})
{
    return db::escalar(t, sql, p).toInt();
}

void etapasEStatus(db::Transacao &t)
{
    if (contar(t, "Select Count(*) Qtd From TbEtapasCom Where Op = 8") == 0)
        for (const Etapa &e : kEtapas)
            db::executar(t, "Insert Into TbEtapasCom (Ordem, Etapa, Op) Values (:ORDEM, :ETAPA, 8)",
                         {{"ORDEM", e.ordem}, {"ETAPA", e.etapa}});
    // A stage the user already gave statuses to keeps them, even if they differ from these.
    for (const Etapa &e : kEtapas) {
        const QVariant idEtapa = db::escalar(t, "Select Min(Id) From TbEtapasCom Where Op = 8 and Etapa = :ETAPA",
                                             {{"ETAPA", e.etapa}});
        if (idEtapa.isNull() || contar(t, "Select Count(*) From TbStatusCom Where Fk = :FK", {{"FK", idEtapa}}) > 0)
            continue;
        for (const Status &s : e.status)
            db::executar(t,
                "Insert Into TbStatusCom (Ordem, Status, StatusRed, CorFundo, GeraFin, GeraEst, Op, Obr, Final, Fk) "
                "Values (:ORDEM, :STATUS, :RED, :COR, 'N', 'N', 8, :OBR, 'N', :FK)",
                {{"ORDEM", s.ordem}, {"STATUS", s.status}, {"RED", s.red}, {"COR", s.cor}, {"OBR", s.obr},
                 {"FK", idEtapa}});
    }
}

void itemConsulta(db::Transacao &t)
{
    if (contar(t, "Select Count(*) From TbItens Where Tipo = 'P' and Descricao = 'CONSULTA'") > 0) return;
    if (contar(t, "Select Count(*) From TbItens Where Id = 1") > 0) {
        db::executar(t, "Insert Into TbItens (Descricao, Tipo) Values ('CONSULTA', 'P')");
        return;
    }
    db::executar(t, "Insert Into TbItens (Id, Descricao, Tipo) Values (1, 'CONSULTA', 'P')");
    // An ID given by hand leaves the generator behind; the next item would collide with it.
    if (db::escalar(t, "Select Gen_Id(GN_TBITENS_ID, 0) From Rdb$Database").toLongLong() < 1)
        db::escalar(t, "Select Gen_Id(GN_TBITENS_ID, 1) From Rdb$Database");
}

// Seeded people get the next code, as the registration screen would give them.
const char *const kProximoCodigo = "(Select Coalesce(Max(Codigo), 0) + 1 From TbCad)";

void convenioParticular(db::Transacao &t)
{
    if (contar(t, "Select Count(*) From TbCad Where Cv = 'S' and Nome = 'PARTICULAR'") > 0) return;
    db::executar(t,
        QString("Insert Into TbCad (Codigo, Pessoa, Nome, RazaoSocial, Apelido, Cv, DataCadastro) "
                "Values (%1, 'J', :NOME, :NOME, :NOME, 'S', Current_Timestamp)").arg(kProximoCodigo),
        {{"NOME", "PARTICULAR"}});
}

QVariant medico(db::Transacao &t)
{
    QVariant id = db::escalar(t, "Select Min(Id) From TbCad Where Md = 'S'");
    if (!id.isNull()) return id;
    QVariant nivel = db::escalar(t, "Select Min(Id) From TbNiveis Where Nivel = 3");
    if (nivel.isNull())
        nivel = db::escalar(t, "Insert Into TbNiveis (Nivel, Descricao) Values (3, :DESCRICAO) Returning Id",
                            {{"DESCRICAO", "MÉDICO"}});
    const QString senha = QCryptographicHash::hash(QString::fromLatin1(kSenhaInicialMedico).toLatin1(),
                                                   QCryptographicHash::Md5).toHex().toUpper();
    return db::escalar(t,
        QString("Insert Into TbCad (Codigo, Pessoa, Nome, RazaoSocial, Apelido, Usuario, Md, Us, IdNivel, TipoUsuario, "
                "Senha, DataCadastro) "
                "Values (%1, 'F', :NOME, :NOME, :NOME, :NOME, 'S', 'S', :NIVEL, 'A', :SENHA, Current_Timestamp) "
                "Returning Id").arg(kProximoCodigo),
        {{"NOME", "MEDICO 1"}, {"NIVEL", nivel}, {"SENHA", senha}});
}

void semanaDoMedico(db::Transacao &t, const QVariant &idMedico, const QDate &hoje)
{
    if (contar(t, "Select Count(*) From TbCadMedSit Where Fk = :FK", {{"FK", idMedico}}) > 0) return;
    QStringList cols = {"FK", "DATA", "EMISSAO"};
    QStringList vals = {":FK", "Coalesce(Cast(:DATA As Date), Current_Date)", "Current_Timestamp"};
    const char *const campos[] = {"HORAINICIO", "HORASAIDAINT", "HORARETINT", "HORATERMINO", "HORATEMPO"};
    const char *const params[] = {":INICIO", ":SAIDA", ":RETORNO", ":TERMINO", ":TEMPO"};
    for (const char *dia : kDias)
        for (int i = 0; i < 5; ++i) {
            cols << QString(campos[i]) + dia;
            vals << params[i];
        }
    db::executar(t, "Insert Into TbCadMedSit (" + cols.join(", ") + ") Values (" + vals.join(", ") + ")",
                 {{"FK", idMedico}, {"DATA", hoje.isValid() ? QVariant(hoje) : QVariant()},
                  {"INICIO", "08:00"}, {"SAIDA", "12:00"}, {"RETORNO", "13:00"}, {"TERMINO", "18:00"},
                  {"TEMPO", "00:30"}});
}

} // namespace

void semearClinica(db::Transacao &t, const QDate &hoje)
{
    etapasEStatus(t);
    itemConsulta(t);
    convenioParticular(t);
    if (contar(t, "Select Count(*) From TbConsultorios") == 0)
        db::executar(t, "Insert Into TbConsultorios (Consultorio) Values (:C)", {{"C", "CONSULTORIO 1"}});
    semanaDoMedico(t, medico(t), hoje);
}

} // namespace orb
