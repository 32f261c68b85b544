#include "Caixa.h"

#include "GeraContas.h"
#include "Recusa.h"
#include "acesso/Permissoes.h"
#include "dados/Formatos.h"
#include "relatorios/Relatorio.h"

namespace orb {

using db::Decimal;

namespace {

const QString kAusente = QStringLiteral("Este movimento não existe mais!");
const QString kMudou = QStringLiteral("Este movimento foi alterado em outra estação; consulte-o novamente.");
const QString kDataFutura = QStringLiteral("A data não pode ser maior que a data atual!");

bool vazio(const QVariant &v) { return v.isNull() || v.toInt() == 0; }

QString codigo(int id) { return QString("%1").arg(id, 6, 10, QChar('0')); }

void log(db::Transacao &t, int id, const QString &texto)
{
    logRegistro(t, "TBABENCMOV", "ID", id, texto + " (" + codigo(id) + ")");
}

QDate diaDoMovimento(db::Transacao &t, int id)
{
    const QVariant d = db::escalar(t, "Select Data From TbAbEncMov Where Id = :ID", {{"ID", id}});
    if (d.isNull() && db::escalar(t, "Select Count(*) From TbAbEncMov Where Id = :ID", {{"ID", id}}).toInt() == 0)
        throw Recusa(kAusente);
    return d.toDate();
}

int pagamentosNoDia(db::Transacao &t, const QDate &dia)
{
    return db::escalar(t, "Select Count(*) Qtd From TbContasPagtos Where (Data = :DIA)", {{"DIA", dia}}).toInt();
}

} // namespace

bool temOperacao(db::Transacao &t, const Sessao &quem, const QString &menu, const QString &modulo, const QString &operacao)
{
    try {
        exigirOperacao(t, quem, menu, modulo, operacao);
        return true;
    } catch (const Recusa &) {
        return false;
    }
}

EstadoCaixa estadoCaixa(db::Transacao &t, const QDate &dia)
{
    db::Consulta q(t, "Select Count(*), Sum(Iif(DataEnc Is Null, 1, 0)) From TbAbEncMov Where Data = :DIA");
    q.bind("DIA", dia);
    q.executar();
    q.proxima();
    if (q[0].toInt() == 0)
        return EstadoCaixa::SemAbertura;
    return q[1].toInt() > 0 ? EstadoCaixa::Aberto : EstadoCaixa::Encerrado;
}

void exigirCaixaAberto(db::Transacao &t, const QDate &dia, const QString &acao, bool aceitaEncerrado)
{
    switch (estadoCaixa(t, dia)) {
    case EstadoCaixa::SemAbertura:
        throw Recusa("Não é possível " + acao + " pois ainda não foi efetuada a abertura do movimento nesta data!");
    case EstadoCaixa::Encerrado:
        if (!aceitaEncerrado)
            throw Recusa("Não é possível " + acao + " pois já foi efetuado o encerramento do movimento nesta data!");
        break;
    case EstadoCaixa::Aberto: break;
    }
}

Valores abrirMovimento(db::Transacao &t, const Sessao &quem, const QDateTime &agora)
{
    exigirOperacao(t, quem, "Abrir");
    return padroesMovimento(t, agora);
}

Valores padroesMovimento(db::Transacao &t, const QDateTime &agora)
{
    Valores v{{"DATA", agora.date()}, {"DATAAB", agora}};
    db::Consulta q(t, "Select First 1 IdRespAberturaAE, IdRespEncerramentoAE From TbParContas Where Data <= :HOJE "
                      "Order By Data Desc, Id Desc");
    q.bind("HOJE", agora.date());
    q.executar();
    if (q.proxima()) {
        if (q[0].toInt() > 0) v["IDRESPAB"] = q[0];
        if (q[1].toInt() > 0) v["IDRESPENC"] = q[1];
    }
    return v;
}

Valores alterarMovimento(db::Transacao &t, int id, const Sessao &quem)
{
    exigirOperacao(t, quem, "Alterar");
    return travarEstado(t, "TBABENCMOV", "ID", id, {"ID", "DATA", "DATAAB", "IDRESPAB", "DATAENC", "IDRESPENC", "SALDOINIC", "SALDOFINAL"},
                        kAusente);
}

int salvarMovimento(db::Transacao &t, int id, const Valores &v, const Sessao &quem, const QDate &hoje)
{
    exigirOperacao(t, quem, id == 0 ? "Abrir" : "Alterar");
    const QDate dia = valor(v, "DATA").toDate();
    if (!dia.isValid())
        throw Recusa("Digite a data do movimento primeiro!", "DATA");
    if (dia > hoje)
        throw Recusa(kDataFutura, "DATA");
    if (vazio(valor(v, "IDRESPAB")))
        throw Recusa("Escolha o responsável pela abertura do movimento primeiro!", "IDRESPAB");
    const QDateTime enc = valor(v, "DATAENC").toDateTime();
    if (enc.isValid() && vazio(valor(v, "IDRESPENC")))
        throw Recusa("Escolha o responsável pelo encerramento do movimento primeiro!", "IDRESPENC");
    if (enc.isValid() && enc.date() > hoje)
        throw Recusa(kDataFutura, "DATAENC");

    const std::map<QString, QVariant> p = {
        {"DATA", dia}, {"DATAAB", valor(v, "DATAAB")}, {"RESPAB", valor(v, "IDRESPAB")},
        {"DATAENC", enc.isValid() ? QVariant(enc) : QVariant()},
        {"RESPENC", vazio(valor(v, "IDRESPENC")) ? QVariant() : valor(v, "IDRESPENC")},
        {"SI", valor(v, "SALDOINIC")}, {"SF", valor(v, "SALDOFINAL")}};
    return db::tentativa(t, [&] {
        int r = id;
        if (id == 0) {
            auto q = p;
            r = db::escalar(t, "Insert Into TbAbEncMov (Data, DataAb, IdRespAb, DataEnc, IdRespEnc, SaldoInic, SaldoFinal) Values "
                               "(:DATA, :DATAAB, :RESPAB, :DATAENC, :RESPENC, :SI, :SF) Returning Id", q).toInt();
            log(t, r, "Nova Abertura de Movimento");
        } else {
            const QDate antes = diaDoMovimento(t, id);
            if (antes != dia && pagamentosNoDia(t, antes) > 0)
                throw Recusa("A data desse movimento não pode ser alterada pois já existem lançamentos na mesma!", "DATA");
            auto q = p;
            q["ID"] = id;
            db::executar(t, "Update TbAbEncMov Set Data = :DATA, DataAb = :DATAAB, IdRespAb = :RESPAB, DataEnc = :DATAENC, "
                            "IdRespEnc = :RESPENC, SaldoInic = :SI, SaldoFinal = :SF Where Id = :ID", q);
            log(t, id, "Abertura de Movimento Alterada");
        }
        return r;
    });
}

void encerrarMovimento(db::Transacao &t, int id, const QVariant &idRespEnc, const Sessao &quem, const QDateTime &agora)
{
    exigirOperacao(t, quem, "Encerrar");
    const Valores v = travarEstado(t, "TBABENCMOV", "ID", id, {"DATAENC"}, kAusente);
    if (!v.at("DATAENC").isNull())
        throw Recusa("Este movimento já foi encerrado em outra estação!");
    if (vazio(idRespEnc))
        throw Recusa("Escolha o responsável pelo encerramento do movimento primeiro!", "IDRESPENC");
    mudarEstado(t, "TBABENCMOV", "ID", id, {{"DATAENC", agora}, {"IDRESPENC", idRespEnc}}, {{"DATAENC", QVariant()}}, kMudou);
    log(t, id, "Movimento Encerrado");
}

void conferirReabertura(db::Transacao &t, int id, const Sessao &quem)
{
    exigirOperacao(t, quem, "Reabrir");
    const QDate dia = diaDoMovimento(t, id);
    const int caixa = contaCaixa(t);
    const int posteriores = db::escalar(t, "Select Count(*) Qtd From TbContas Where (Data > :DIA) and (IdCCor = :CAIXA)",
                                        {{"DIA", dia}, {"CAIXA", caixa}}).toInt();
    if (posteriores > 0 && !temOperacao(t, quem, quem.menuAtual, quem.moduloAtual, "Reabrir c/ Lanç. Posteriores"))
        throw Recusa("Esse movimento não pode ser reaberto pois já existem lançamentos posteriores ao mesmo!");
}

void reabrirMovimento(db::Transacao &t, int id, const Sessao &quem)
{
    const Valores v = travarEstado(t, "TBABENCMOV", "ID", id, {"DATAENC"}, kAusente);
    conferirReabertura(t, id, quem);
    if (v.at("DATAENC").isNull())
        throw Recusa("Este movimento já foi reaberto em outra estação!");
    mudarEstado(t, "TBABENCMOV", "ID", id, {{"DATAENC", QVariant()}, {"IDRESPENC", QVariant()}}, {{"DATAENC", v.at("DATAENC")}}, kMudou);
    log(t, id, "Movimento Reaberto");
}

void conferirExclusaoMovimento(db::Transacao &t, int id, const Sessao &quem)
{
    exigirOperacao(t, quem, "Excluir");
    const QDate dia = diaDoMovimento(t, id);
    const int n = db::escalar(t, "Select Count(*) Qtd From TbContas C Inner Join TbContasPagtos Cp On (Cp.Fk = C.Id) Where (Cp.Data = :DIA)",
                              {{"DIA", dia}}).toInt();
    if (n >= 1)
        throw Recusa("Esse movimento não pode ser excluído pois já existem lançamentos iguais e/ou posteriores ao mesmo!");
}

void excluirMovimento(db::Transacao &t, int id, const Sessao &quem)
{
    travarEstado(t, "TBABENCMOV", "ID", id, {"ID"}, kAusente);
    conferirExclusaoMovimento(t, id, quem);
    log(t, id, "Abertura de Movimento Excluída");
    db::executar(t, "Delete From TbAbEncMovOp Where Fk = :ID", {{"ID", id}});
    db::executar(t, "Delete From TbAbEncMov Where Id = :ID", {{"ID", id}});
}

ResumoCaixa resumoCaixa(db::Transacao &t, int id, const Sessao &quem)
{
    exigirOperacao(t, quem, "Imprimir");
    const QVariant caixa = db::escalar(t, "Select First 1 Id From TbCCor Where Conta = 'CAIXA' Order By Id");
    if (caixa.isNull())
        throw Recusa("Conta CAIXA não encontrada! Reinicie o sistema e tente novamente. Caso o erro se repita entre em contato com o suporte técnico!");
    ResumoCaixa r;
    {
        db::Consulta q(t, "Select A.Data, A.DataEnc, A.SaldoInic, Fu1.Apelido From TbAbEncMov A Left Join TbCad Fu1 On (Fu1.Id = A.IdRespAb) "
                          "Where A.Id = :ID");
        q.bind("ID", id);
        q.executar();
        if (!q.proxima())
            throw Recusa(kAusente);
        r.dia = q[0].toDate();
        r.titulo = (q[1].isNull() ? "RESUMO DE CAIXA - " : "FECHAMENTO DE CAIXA - ") + r.dia.toString("dd/MM/yyyy");
        r.saldoInicial = q[2].isNull() ? Decimal::bruto(0, 2) : q[2].value<Decimal>();
        r.responsavel = q[3].toString();
    }
    r.total = Decimal::bruto(0, 2);
    db::Consulta q(t, "Select Cp.FormaPagto, Sum(Coalesce(Cp.Valor, 0)) Total From TbContas C Inner Join TbContasPagtos Cp On (Cp.Fk = C.Id) "
                      "Where (C.Data = :DIA) and (Cp.IdCCor = :CAIXA) Group By 1 Order By 1");
    q.bind("DIA", r.dia).bind("CAIXA", caixa);
    q.executar();
    while (q.proxima()) {
        const Decimal v = q[1].value<Decimal>();
        r.formas.append({q[0].toString(), v});
        r.total = r.total + v;
    }
    return r;
}

QVariantMap dadosResumo(const ResumoCaixa &r, const QDateTime &agora)
{
    auto dinheiro = [](const Decimal &d) { return exibir(QVariant::fromValue(d), "VALOR", TipoCampo::Decimal, 2); };
    QVariantList formas;
    for (const auto &[forma, total] : r.formas)
        formas << QVariantMap{{"forma", forma}, {"total", dinheiro(total)}};
    return {{"titulo", r.titulo}, {"responsavel", r.responsavel}, {"impresso", agora.toString("dd/MM/yyyy hh:mm")},
            {"saldoInicial", dinheiro(r.saldoInicial)}, {"formas", formas}, {"total", dinheiro(r.total)},
            {"saldoFinal", dinheiro(r.saldoInicial + r.total)}};
}

QString htmlResumoCaixa(db::Transacao &t, int id, const Sessao &quem, const QDateTime &agora)
{
    return renderizarRelatorio("RelEncMovim", dadosResumo(resumoCaixa(t, id, quem), agora));
}

} // namespace orb
