#include "Aprovacao.h"

#include "Caixa.h"
#include "Faturamento.h"
#include "GeraContas.h"
#include "Recusa.h"
#include "Status.h"
#include "acesso/Permissoes.h"
#include "registro/Registro.h"

namespace orb {

using db::Decimal;

namespace {

const QString kDataHora = QStringLiteral("Digite a data/hora primeiro!");

// The operation locked for the step, with its billing and current status.
struct Operacao {
    int id = 0, op = 0, idFat = 0, idEmpresaFat = 0;
    QVariant pedForn, idCad;
    QDate dataFat;
    QString geraFin, status;
};

Operacao travar(db::Transacao &t, int idCom)
{
    const Valores v = travarEstado(t, "TBCOM", "ID", idCom, {"OP", "PEDFORN", "IDCAD", "IDEMPRESA"}, "Esta operação não existe mais!");
    Operacao o;
    o.id = idCom;
    o.op = v.at("OP").toInt();
    o.pedForn = v.at("PEDFORN");
    o.idCad = v.at("IDCAD");
    o.status = statusAtual(t, idCom);
    db::Consulta q(t, "Select First 1 Id, Data, GeraFin, IdEmpresa From TbComFat Where Fk = :ID Order By Id");
    q.bind("ID", idCom);
    q.executar();
    if (q.proxima()) {
        o.idFat = q[0].toInt();
        o.dataFat = q[1].toDate();
        o.geraFin = q[2].toString().trimmed();
        o.idEmpresaFat = q[3].toInt();
    }
    if (o.idEmpresaFat == 0)
        o.idEmpresaFat = v.at("IDEMPRESA").toInt();
    return o;
}

QString codigo(int id) { return QString("%1").arg(id, 6, 10, QChar('0')); }

QString especie(int op)
{
    switch (op) {
    case 1: return "Venda ";
    case 2: return "Ordem de Serviço ";
    case 3: return "Contrato ";
    case 4: return "Compra ";
    default: return "Operação ";
    }
}

QString textoPorKind(int op, const QStringList &textos)  // venda, serviço, contrato, compra, locação
{
    const int i = op == 1 ? 0 : op == 2 ? 1 : op == 3 ? 2 : op == 4 ? 3 : 4;
    return textos.value(i);
}

void log(db::Transacao &t, const Operacao &o, const QString &texto)
{
    logRegistro(t, "TBCOM", "ID", o.id, texto + " (" + codigo(o.id) + ")");
}

void pedidoFornecedor(db::Transacao &t, const Operacao &o, const QString &status, const QDateTime &data, int resp)
{
    if (o.op != 4 || o.pedForn.isNull() || o.pedForn.toInt() == 0 || ramo(t) == "EN")
        return;
    db::executar(t, "Insert Into TbPedFornSt (Data, Status, IdResp, Fk) Values (:D, :S, :R, :FK)",
                 {{"D", data}, {"S", status}, {"R", resp ? QVariant(resp) : QVariant()}, {"FK", o.pedForn}});
}

void semParcelaQuitada(db::Transacao &t, const Operacao &o, const QString &mensagem)
{
    if (o.idFat && !parcelaQuitada(t, o.idFat, o.op).isEmpty())
        throw Recusa(mensagem);
}

int linhas(db::Transacao &t, int idCom)
{
    return db::escalar(t, "Select Count(*) From TbComItens Where Fk = :ID", {{"ID", idCom}}).toInt();
}

void exigirStatus(const Operacao &o, const QString &acao)
{
    if (!transicao(acao, o.status, o.op))
        throw Recusa("Esta operação não pode ser alterada pois está " + nomeStatus(o.status) + "!");
}

// The move of `acao` appended: the operation is locked by this transaction and its status was read
// under the lock, so the table's answer still holds.
void mover(db::Transacao &t, const Operacao &o, const QString &acao, NovoStatus s)
{
    exigirStatus(o, acao);
    s.codigo = transicao(acao, o.status, o.op)->para;
    acrescentarStatus(t, o.id, o.op, s);
}

// The situation of the customer: blocked or under analysis stop the step.
void conferirSituacao(db::Transacao &t, const QVariant &idCad)
{
    if (idCad.isNull())
        return;
    db::Consulta q(t, "Select First 1 Situacao, Motivo From TbCadSit Where Fk = :ID Order By Data Desc, Id Desc");
    q.bind("ID", idCad);
    q.executar();
    if (!q.proxima())
        return;
    const QString s = q[0].toString().trimmed();
    if (s == "B")
        throw Recusa("Esse cadastro está bloqueado! Motivo: " + q[1].toString());
    if (s == "E")
        throw Recusa("Esse cadastro está em análise! Motivo: " + q[1].toString());
}

// Serials of each line whose item controls them in this direction.
void conferirSeriais(db::Transacao &t, const Operacao &o)
{
    db::Consulta q(t, "Select Ci.Id, Ci.IdItem, Ci.Qtd, I.ContrSerial From TbComItens Ci Join TbItens I On (I.Id = Ci.IdItem) "
                      "Where Ci.Fk = :ID and Ci.Tipo = 'M' Order By Ci.Id");
    q.bind("ID", o.id);
    q.executar();
    struct L { int id, item; Decimal qtd; QString cs; };
    QList<L> ls;
    while (q.proxima())
        ls.append({q[0].toInt(), q[1].toInt(), q[2].value<Decimal>(), q[3].toString().trimmed()});
    q.fechar();
    for (const L &l : ls) {
        const bool controla = o.op == 4 ? (l.cs == "SIM" || l.cs == "ENT") : (l.cs == "SIM" || l.cs == "SAÍ");
        if (!controla)
            continue;
        db::Consulta s(t, "Select S.Serial From TbComFatItensSeriais S Join TbComFatItens Fi On (Fi.Id = S.Fk) Where Fi.IdItem = :L");
        s.bind("L", l.id);
        s.executar();
        QStringList seriais;
        while (s.proxima())
            seriais << s[0].toString();
        s.fechar();
        if (seriais.isEmpty())
            throw Recusa("Insira os seriais primeiro!");
        if (Decimal::inteiro(seriais.size()) < l.qtd)
            throw Recusa("Insira todos os seriais do item primeiro!");
        if (l.cs != "SIM" || o.op == 4)
            continue;
        // In stock: entered by more delivered purchases than it left by other delivered operations.
        for (const QString &serial : seriais) {
            const int saldo = db::escalar(t, "Select Sum(Iif(C.Op = 4, 1, -1)) From TbComFatItensSeriais S Join TbComFatItens Fi On (Fi.Id = S.Fk) "
                                             "Join TbComItens Ci On (Ci.Id = Fi.IdItem) Join TbComFat F On (F.Id = Fi.Fk) "
                                             "Join TbCom C On (C.Id = F.Fk) Where S.Serial = :S and Ci.IdItem = :ITEM and "
                                             "F.DataEntrega Is Not Null and C.Id <> :ID",
                                          {{"S", serial}, {"ITEM", l.item}, {"ID", o.id}}).toInt();
            if (saldo <= 0)
                throw Recusa("Serial não cadastrado! (Esse item controla serial na entrada e na saída!)");
        }
    }
}

// Adds `sinal` times each merchandise line's quantity to the item's stock row in `empresa`.
void moverEstoque(db::Transacao &t, int idCom, int empresa, int sinal)
{
    db::Consulta q(t, "Select IdItem, Sum(Qtd) From TbComItens Where Fk = :ID and Tipo = 'M' and IdItem Is Not Null Group By IdItem");
    q.bind("ID", idCom);
    q.executar();
    QList<QPair<int, Decimal>> ls;
    while (q.proxima())
        ls.append({q[0].toInt(), q[1].value<Decimal>()});
    q.fechar();
    db::Consulta atualizar(t, "Update TbItensEst Set EstAtual = Coalesce(EstAtual, 0) + :Q Where Fk = :ITEM and IdEmpresa = :EMP");
    for (const auto &[item, qtd] : ls) {
        const QVariant q4 = QVariant::fromValue(sinal > 0 ? qtd : -qtd);
        atualizar.bind("Q", q4).bind("ITEM", item).bind("EMP", empresa);
        atualizar.executar();
        if (atualizar.afetadas() == 0)
            db::executar(t, "Insert Into TbItensEst (IdEmpresa, EstAtual, Fk) Values (:EMP, :Q, :ITEM)",
                         {{"EMP", empresa}, {"Q", q4}, {"ITEM", item}});
    }
}

} // namespace

int responsavelDoUsuario(db::Transacao &t, const Sessao &quem, const QString &indefinido)
{
    if (quem.idUsuario == 0)
        throw Recusa(indefinido);
    db::Consulta q(t, "Select Fu From TbCad Where Id = :ID");
    q.bind("ID", quem.idUsuario);
    q.executar();
    if (!q.proxima())
        throw Recusa("O funcionário associado ao usuário atual não está cadastrado!");
    if (q[0].toString() != "S")
        throw Recusa(indefinido);
    return quem.idUsuario;
}

QString direitoDoPasso(const QString &passo, int op)
{
    if (op != 4)
        return passo;
    if (passo == "Entregar") return "Receber Compras";
    if (passo == "Cancelar Entrega") return "Cancelar Recebimento de Compras";
    if (passo == "Cancelar Aprovação") return "Cancelar Aprovação de Compras";
    return passo + " Compras";
}

namespace {

// Every step's opening: the operation locked, the step's right, its state in the table, then the
// checks that are the step's own, in order. Nothing is written yet.
Operacao conferirPasso(db::Transacao &t, int idCom, const Sessao &quem, const QString &passo)
{
    const Operacao o = travar(t, idCom);
    if (passo == "Entregar" && !temOperacao(t, quem, quem.menuAtual, quem.moduloAtual, direitoDoPasso(passo, o.op))) {
        if (!temOperacao(t, quem, quem.menuAtual, quem.moduloAtual, direitoDoPasso("Aprovar", o.op)))
            throw Recusa("Você não tem permissão para aprovar ou entregar operações!");
        throw Recusa(kSemPermissao);
    }
    if (passo != "Entregar")
        exigirOperacao(t, quem, direitoDoPasso(passo, o.op));
    if (passo == "Entregar" && o.status == "IN")
        throw Recusa("Esta operação não pode ser Entregue pois ainda está em Execução!");
    exigirStatus(o, passo);
    if (passo == "Aprovar" && o.op == 2 && linhas(t, idCom) == 0)
        throw Recusa("Não é possível aprovar Ordens de Serviço sem algum item!");
    if (passo == "Cancelar Aprovação") {
        semParcelaQuitada(t, o, "A aprovação desta operação não pode ser cancelada pois a mesma já possui parcela(s) Quitada(s)!");
        if (o.geraFin == "A")
            exigirCaixaAberto(t, o.dataFat, "cancelar a aprovação dessa operação");
    }
    if (passo == "Cancelar Entrega") {
        semParcelaQuitada(t, o, "A entrega desta operação não pode ser cancelada pois a mesma já possui parcela(s) Quitada(s)!");
        exigirCaixaAberto(t, o.dataFat, "cancelar a entrega dessa operação");
    }
    return o;
}

// A step undone: its log line, the status moved back with `observacao`, the step's date and
// responsible ("DATAAPROVACAO"/"IDRESPAPROVACAO", ...) cleared, the instalments it generated (when
// the billing generates them at `geraFin`) removed, and the supply order told.
void desfazerPasso(db::Transacao &t, const Operacao &o, const QString &passo, const QString &coluna, const QString &geraFin,
                   const QString &textoLog, const QString &observacao, const QString &pedido, const Sessao &quem, const QDateTime &agora)
{
    log(t, o, textoLog);
    mover(t, o, passo, {{}, observacao, agora, quem.idUsuario ? QVariant(quem.idUsuario) : QVariant()});
    db::executar(t, QString("Update TbComFat Set Data%1 = Null, IdResp%1 = Null Where Fk = :ID").arg(coluna), {{"ID", o.id}});
    db::executar(t, QString("Update TbCom Set Data%1 = Null Where Id = :ID").arg(coluna), {{"ID", o.id}});
    if (o.geraFin == geraFin && o.idFat)
        GeraContas(t, QString::number(o.op), QString::number(o.idFat), "D", {});
    pedidoFornecedor(t, o, pedido, agora, quem.idUsuario);
}

} // namespace

void conferirAprovacao(db::Transacao &t, int idCom, const Sessao &quem) { conferirPasso(t, idCom, quem, "Aprovar"); }
void conferirCancelamentoAprovacao(db::Transacao &t, int idCom, const Sessao &quem) { conferirPasso(t, idCom, quem, "Cancelar Aprovação"); }
void conferirEntrega(db::Transacao &t, int idCom, const Sessao &quem) { conferirPasso(t, idCom, quem, "Entregar"); }
void conferirCancelamentoEntrega(db::Transacao &t, int idCom, const Sessao &quem) { conferirPasso(t, idCom, quem, "Cancelar Entrega"); }

void aprovarOperacao(db::Transacao &t, int idCom, const QDateTime &data, const QString &geraFin, const Sessao &quem)
{
    const Operacao o = conferirPasso(t, idCom, quem, "Aprovar");
    if (!data.isValid())
        throw Recusa(kDataHora, "DATA");
    const int resp = responsavelDoUsuario(
        t, quem, "O funcionário associado ao usuário atual ainda não foi definido para que seja responsável pela aprovação!");
    conferirSituacao(t, o.idCad);
    if (geraFin == "A")
        exigirCaixaAberto(t, o.dataFat, "aprovar essa operação");

    mover(t, o, "Aprovar", {{}, kAguardandoEntrega, data, resp});
    db::executar(t, "Update TbComFat Set DataAprovacao = :D, IdRespAprovacao = :R, GeraFin = :G Where Fk = :ID",
                 {{"D", data}, {"R", resp}, {"G", geraFin}, {"ID", idCom}});
    db::executar(t, "Update TbCom Set DataAprovacao = :D Where Id = :ID", {{"D", data}, {"ID", idCom}});
    log(t, o, especie(o.op) + nomeStatus("AP"));
    if (geraFin == "A" && o.idFat)
        GeraContas(t, QString::number(o.op), QString::number(o.idFat), "E", data, data);
    pedidoFornecedor(t, o, "APROVADA", data, resp);
}

void cancelarAprovacao(db::Transacao &t, int idCom, const Sessao &quem, const QDateTime &agora)
{
    const Operacao o = conferirPasso(t, idCom, quem, "Cancelar Aprovação");
    desfazerPasso(t, o, "Cancelar Aprovação", "Aprovacao", "A",
                  textoPorKind(o.op, {"Aprovação da Venda Cancelada", "Aprovação de Serviço Cancelada", "Aprocação de Contrato Cancelada",
                                      "Aprovação de Compra Cancelada", "Aprovação de Locação Cancelada"}),
                  "Pronto para aprovação.", "APROVAÇÃO CANCELADA", quem, agora);
}

void entregarOperacao(db::Transacao &t, int idCom, const QDateTime &data, const QString &numeroNF, const Sessao &quem)
{
    const Operacao o = conferirPasso(t, idCom, quem, "Entregar");
    if (!data.isValid())
        throw Recusa(kDataHora, "DATA");
    const int resp = responsavelDoUsuario(
        t, quem, "O funcionário associado ao usuário atual ainda não foi definido para que seja responsável pela Entrega/Cancelamento!");
    QVariant nf;
    if (!numeroNF.trimmed().isEmpty()) {
        bool ok = false;
        const int n = numeroNF.trimmed().toInt(&ok);
        if (!ok || n <= 0)
            throw Recusa("Nota Fiscal inválida!", "NUMERONF");
        nf = n;
    }
    if (o.op == 2 && linhas(t, idCom) == 0)
        throw Recusa("Não é possível entregar Ordens de Serviço sem algum item!");
    // Instalments already effective and due by the delivery must be paid first.
    if (o.geraFin == "A" && o.idFat) {
        // "+ 0": the document's own index, not a range over every due date up to the delivery.
        const QVariant aberto = db::escalar(t, "Select Sum(NaoQuitado) From TbContas Where Fks = :OP and Fk = :F and Vencimento + 0 <= :D",
                                            {{"OP", o.op}, {"F", o.idFat}, {"D", data.date()}});
        if (!aberto.isNull() && aberto.value<Decimal>() > Decimal::inteiro(0))
            throw Recusa("Efetue o pagamento primeiro!");
    }
    conferirSeriais(t, o);

    moverEstoque(t, idCom, o.idEmpresaFat, o.op == 4 ? 1 : -1);
    mover(t, o, "Entregar", {{}, {}, data, resp});
    db::executar(t, "Update TbComFat Set DataEntrega = :D, IdRespEntrega = :R, NumeroNf = Coalesce(:NF, NumeroNf) Where Fk = :ID",
                 {{"D", data}, {"R", resp}, {"NF", nf}, {"ID", idCom}});
    db::executar(t, "Update TbCom Set DataEntrega = :D Where Id = :ID", {{"D", data}, {"ID", idCom}});
    log(t, o, especie(o.op) + "Entregue");
    if (o.geraFin == "E" && o.idFat) {
        const QDateTime aprovacao = db::escalar(t, "Select DataAprovacao From TbComFat Where Id = :F", {{"F", o.idFat}}).toDateTime();
        GeraContas(t, QString::number(o.op), QString::number(o.idFat), "E", aprovacao, data);
    }
    pedidoFornecedor(t, o, "RECEBIDA", data, resp);
}

void cancelarEntrega(db::Transacao &t, int idCom, const Sessao &quem, const QDateTime &agora)
{
    const Operacao o = conferirPasso(t, idCom, quem, "Cancelar Entrega");
    // The stock goes back to the principal company's row, not the billing company's.
    const int principal = db::escalar(t, "Select First 1 IdEmpresa From TbParGlobais Order By Id").toInt();
    moverEstoque(t, idCom, principal, o.op == 4 ? -1 : 1);
    desfazerPasso(t, o, "Cancelar Entrega", "Entrega", "E",
                  textoPorKind(o.op, {"Entrega da Venda Cancelada", "Entrega do Serviço Cancelado", "Entrega Contrato Cancelado",
                                      "Entrega da Compra Cancelada", "Entrega da Locação Cancelado"}),
                  kAguardandoEntrega, "ENTREGA CANCELADA", quem, agora);
}

void reativarOperacao(db::Transacao &t, int idCom, const Sessao &quem, const QDateTime &agora)
{
    const Operacao o = conferirPasso(t, idCom, quem, "Reativar");
    log(t, o, textoPorKind(o.op, {"Venda Reativada", "Serviço Reativado", "Contrato Reativado", "Compra Reativada", "Locação Reativada"}));
    mover(t, o, "Reativar", {{}, "Pronto para aprovação.", agora, quem.idUsuario ? QVariant(quem.idUsuario) : QVariant()});
}

} // namespace orb
