#include "Status.h"

#include "Recusa.h"
#include "registro/Registro.h"

namespace orb {

const QList<StatusOperacao> &statusOperacoes()
{
    static const QList<StatusOperacao> l = {
        {"AO", "AGUARDANDO ORÇAMENTO", "AG. ORÇAMENTO"}, {"AA", "AGUARDANDO APROVAÇÃO", "AG. APROVAÇÃO"},
        {"AP", "APROVADA", "APROVADA"},  {"IN", "INICIADA", "INICIADA"}, {"FI", "FINALIZADA", "FINALIZADA"},
        {"CA", "CANCELADA", "CANCELADA"}, {"EN", "ENTREGUE", "ENTREGUE"}, {"DE", "DEVOLVIDA", "DEVOLVIDA"},
    };
    return l;
}

QString nomeStatus(const QString &codigo)
{
    for (const auto &s : statusOperacoes())
        if (s.codigo == codigo)
            return s.nome;
    return {};
}

const QList<Transicao> &transicoes()
{
    static const QList<Transicao> l = {
        {"Orçar", "AO", "AA", {}},                 // every price filled in at the save
        {"Alertar", "AA", "AO", {}},               // a price missing again
        {"Aprovar", "AO", "AP", {}},
        {"Aprovar", "AA", "AP", {}},
        {"Cancelar Aprovação", "AP", "AA", {}},
        {"Iniciar", "AP", "IN", {2, 3, 6}},        // work steps of service orders, contracts and projects
        {"Finalizar", "IN", "FI", {2, 3, 6}},
        {"Entregar", "AP", "EN", {}},
        {"Entregar", "FI", "EN", {2, 6}},
        {"Cancelar Entrega", "EN", "AP", {}},
        {"Devolver", "EN", "DE", {}},
        {"Cancelar", "AO", "CA", {}},
        {"Cancelar", "AA", "CA", {}},
        {"Cancelar", "AP", "CA", {}},
        {"Cancelar", "IN", "CA", {2, 3, 6}},
        {"Reativar", "CA", "AA", {}},
    };
    return l;
}

const Transicao *transicao(const QString &acao, const QString &de, int op)
{
    for (const Transicao &tr : transicoes())
        if (tr.acao == acao && tr.de == de && (tr.ops.isEmpty() || tr.ops.contains(op)))
            return &tr;
    return nullptr;
}

bool movimentoPermitido(const QString &de, const QString &para, int op)
{
    for (const Transicao &tr : transicoes())
        if (tr.de == de && tr.para == para && (tr.ops.isEmpty() || tr.ops.contains(op)))
            return true;
    return false;
}

QString statusAtual(db::Transacao &t, int idCom)
{
    return db::escalar(t, "Select First 1 Status From TbComSt Where Fk = :ID Order By Id Desc", {{"ID", idCom}}).toString().trimmed();
}

void acrescentarStatus(db::Transacao &t, int idCom, int op, const NovoStatus &s)
{
    db::Consulta q(t, "Select First 1 Id, GeraFin, GeraEst, Final From TbStatusCom Where StatusRed = :COD and (Op = :OP or Op Is Null) "
                      "Order By Op Nulls Last, Ordem");
    q.bind("COD", s.codigo).bind("OP", op);
    q.executar();
    QVariant idStatus, geraFin, geraEst, final;
    if (q.proxima()) {
        idStatus = q[0];
        geraFin = q[1];
        geraEst = q[2];
        final = q[3];
    }
    q.fechar();
    db::executar(t, "Insert Into TbComSt (Status, Data, IdStatus, Observacoes, IdRespStatus, GeraFin, GeraEst, Final, Fk) "
                    "Values (:STATUS, :DATA, :IDSTATUS, :OBS, :RESP, :GF, :GE, :FIN, :FK)",
                 {{"STATUS", s.codigo}, {"DATA", s.data}, {"IDSTATUS", idStatus},
                  {"OBS", s.observacoes.isEmpty() ? QVariant() : QVariant(s.observacoes)}, {"RESP", s.idResp}, {"GF", geraFin},
                  {"GE", geraEst}, {"FIN", final}, {"FK", idCom}});
}

void statusInicial(db::Transacao &t, int idCom, int op, const QDateTime &agora, const QVariant &idResp)
{
    const QString codigo = db::escalar(t, "Select First 1 StatusRed From TbStatusCom Where Op = :OP and Ordem = '1' Order By Id",
                                       {{"OP", op}}).toString().trimmed();
    acrescentarStatus(t, idCom, op, {codigo == "AA" ? "AA" : "AO", {}, agora, idResp});
}

QString mudarStatus(db::Transacao &t, int idCom, const QString &acao, const NovoStatus &s)
{
    const Valores v = travarEstado(t, "TBCOM", "ID", idCom, {"OP"}, "Esta operação não existe mais!");
    const int op = v.at("OP").toInt();
    const QString de = statusAtual(t, idCom);
    const Transicao *tr = transicao(acao, de, op);
    if (!tr)
        throw Recusa("Esta operação não pode ser alterada pois está " + nomeStatus(de) + "!");
    NovoStatus n = s;
    n.codigo = tr->para;
    acrescentarStatus(t, idCom, op, n);
    return tr->para;
}

} // namespace orb
