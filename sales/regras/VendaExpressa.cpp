#include "VendaExpressa.h"

#include "Aprovacao.h"
#include "Contas.h"
#include "GeraContas.h"
#include "Status.h"
#include "acesso/Permissoes.h"

namespace orb {

using db::Decimal;

namespace {

const Decimal kZero = Decimal::bruto(0, 2);

bool vazio(const QVariant &v) { return v.isNull() || v.toString().trimmed().isEmpty() || v.toString() == "0"; }

Valores primeiraLinha(db::Transacao &t, const QString &sql, const std::map<QString, QVariant> &p = {})
{
    db::Consulta q(t, sql);
    for (const auto &[k, v] : p)
        q.bind(k, v);
    q.executar();
    Valores v;
    if (q.proxima())
        for (int i = 0; i < q.colunas(); ++i)
            v[q.nomeColuna(i)] = q[i];
    return v;
}

Valores parametrosExpressa(db::Transacao &t)
{
    return primeiraLinha(t, "Select First 1 * From TbParVendas Order By Data Desc, Id Desc");
}

// The express sale's own checks, in the order the counter meets them.
void conferirVendaExpressa(db::Transacao &t, const Documento &d, const QDate &hoje)
{
    const Valores &h = d.cabecalho, &f = d.faturamento;
    if (vazio(valor(h, "IDCAD")))
        throw Recusa("Escolha o cliente primeiro!", "IDCAD");
    conferirSituacaoCliente(t, valor(h, "IDCAD"), hoje);
    if (vazio(valor(h, "IDATENDENTE")))
        throw Recusa("Escolha o(a) atendente primeiro!", "IDATENDENTE");
    // CIF ('1') and FOB ('2') travel with a carrier; under CIF the seller charges the freight.
    const QString frete = valor(f, "FRETE").toString().trimmed();
    if ((frete == "1" || frete == "2") && vazio(valor(f, "IDTRANSPORTADORA")))
        throw Recusa("Escolha a Transportadora primeiro!", "TBCOMFAT.IDTRANSPORTADORA");
    if (frete == "1" && decimal(f, "TOTALFRETE") <= kZero)
        throw Recusa("Digite o valor do Frete primeiro!", "TBCOMFAT.TOTALFRETE");
    if (std::none_of(d.linhas.begin(), d.linhas.end(), [](const Valores &l) { return valor(l, "TIPO") == "M"; }))
        throw Recusa("Inclua a(s) mercadoria(s) primeiro!", "TBCOMITENS");
}

// The instalments of the billing due by `dia` and still open, received in cash. Returns their sum.
Decimal receberDevido(db::Transacao &t, int op, int idFat, const QDate &dia, const Sessao &quem)
{
    db::Consulta q(t, "Select Id, NaoQuitado From TbContas Where Fks = :OP and Fk = :F and Vencimento <= :D and NaoQuitado > 0 "
                      "Order By Vencimento, Id");
    q.bind("OP", op).bind("F", idFat).bind("D", dia);
    q.executar();
    QList<QPair<int, QVariant>> abertas;
    while (q.proxima())
        abertas.append({q[0].toInt(), q[1]});
    q.fechar();
    if (abertas.isEmpty())
        return kZero;
    // Money taken at the counter is a receipt like any other: the receivables' rights decide it.
    Sessao caixa = quem;
    caixa.menuAtual = menuDoModulo(t, kModuloContas);
    caixa.moduloAtual = kModuloContas;
    caixa.sufixoOperacoes.clear();
    Pagamento p;
    p.idCCor = contaCaixa(t);
    p.data = dia;
    p.formaPagto = valor(parametrosExpressa(t), "FORMAPAGTOVE").toString().trimmed();
    if (p.formaPagto.isEmpty())
        p.formaPagto = QStringLiteral("DINHEIRO");
    Decimal soma = kZero;
    for (const auto &[id, aberto] : abertas) {
        p.valor = aberto;
        quitarConta(t, id, p, caixa);
        soma += aberto.value<Decimal>();
    }
    return soma;
}

} // namespace

const QStringList &operacoesVendaExpressa()
{
    static const QStringList l = modoOperacao("Ven").operacoes;
    return l;
}

QString legendaVendaExpressa(int id) { return "Nova Venda Expressa (" + QString::asprintf("%06d", id) + ")"; }

Documento incluirVendaExpressa(db::Transacao &t, const Sessao &quem, const QDateTime &agora)
{
    Documento d = incluirDocumento(t, modoOperacao("Ven"), quem, agora);
    const Valores par = parametrosExpressa(t);
    auto ve = [&par](const char *c) { return valor(par, QString(c) + "VE"); };
    Valores &h = d.cabecalho;
    h["IDCAD"] = ve("IDCLIENTE");
    h["IDATENDENTE"] = ve("IDATENDENTE");
    h["IDREPRESENTANTE"] = ve("IDREPRESENTANTE");
    h["IDEMPRESA"] = ve("IDEMPRESA");
    h["TIPO"] = ve("DEFPRECO").toString() == "A" ? "A" : "V";
    h["TIPODESCONTO"] = ve("TIPODESCONTO").toString() == "S" ? "S" : "I";
    Valores &f = d.faturamento;
    f["GERAFIN"] = ve("GERAFIN").toString() == "E" ? "E" : "A";
    f["IDEMPRESA"] = h["IDEMPRESA"];
    f["IDATENDENTE"] = h["IDATENDENTE"];
    f["IDTRANSPORTADORA"] = ve("IDTRANSPORTADORA");
    if (ve("CONDPAGTO").toString() == "P") {
        f["CONDPAGTO"] = "P";
        const QString parcelas = ve("PARCELAS").toString().trimmed();
        f["PARCELAS"] = parcelas.isEmpty() ? QStringLiteral("01") : parcelas.rightJustified(2, '0');
        f["ENTRADA"] = ve("ENTRADA").toString() == "S" ? "S" : "N";
        f["PRIMVENC"] = ve("PRIMVENC").toInt();
        f["INTVENC"] = ve("INTVENC").toInt();
        f["DATAPRIMVENC"] = agora.date().addDays(ve("PRIMVENC").toInt());
    }
    const QString end = vazio(h["IDCAD"]) ? QString() : enderecoCadastro(t, h["IDCAD"].toInt());
    f["ENDENTREGA"] = end.isEmpty() ? QVariant() : QVariant(end);
    f["ENDCOBRANCA"] = f["ENDENTREGA"];
    return d;
}

QString consultaVendaExpressa(db::Transacao &t, const QDate &hoje)
{
    return db::escalar(t, "Select First 1 ConsultaVE From TbParVendas Where Data <= :HOJE Order By Data Desc, Id Desc", {{"HOJE", hoje}})
        .toString();
}

QString precoDoCliente(db::Transacao &t, const QVariant &idCad)
{
    if (vazio(idCad))
        return QStringLiteral("V");
    return db::escalar(t, "Select TipoCliente From TbCad Where Id = :ID", {{"ID", idCad}}).toString().trimmed() == "A" ? QStringLiteral("A")
                                                                                                                    : QStringLiteral("V");
}

Valores linhaPorCodigo(db::Transacao &t, const QString &codigo, const QVariant &idCliente, const Decimal &qtd)
{
    const QString c = codigo.trimmed();
    Valores achado;
    // The code first, then the bar code: each lookup on its own index.
    if (!c.isEmpty())
        for (const char *coluna : {"Codigo", "CodigoBarras"}) {
            achado = primeiraLinha(t, QString("Select First 1 Id, Codigo From TbItens Where %1 = :C and Tipo = 'M' Order By Id").arg(coluna),
                                   {{"C", c}});
            if (!achado.empty())
                break;
        }
    if (achado.empty())
        throw Recusa("Mercadoria não encontrada!", "CODIGO");
    Valores l = linhaDoItem(t, achado.at("ID").toInt(), precoDoCliente(t, idCliente));
    l["QTD"] = QVariant::fromValue(qtd);
    l["Z_CODIGO"] = achado.at("CODIGO");
    return l;
}

int adicionarPorCodigo(db::Transacao &t, Documento &d, const QString &codigo, const Decimal &qtd)
{
    Valores l = linhaPorCodigo(t, codigo, valor(d.cabecalho, "IDCAD"), qtd);
    conferirLinha(l);
    d.linhas.append(l);
    recalcularDocumento(t, d);
    return l.at("IDITEM").toInt();
}

Decimal devidoAgora(const Documento &d)
{
    // As the billing takes it: the lines' subtotals, split in equal instalments with the rest on the last.
    Decimal valor = kZero;
    for (const Valores &l : d.linhas)
        valor += decimal(l, "SUBTOTAL");
    const Valores &f = d.faturamento;
    const bool prazo = orb::valor(f, "CONDPAGTO").toString() == "P";
    const int n = prazo ? std::max(1, orb::valor(f, "PARCELAS").toString().toInt()) : 1;
    const bool entrada = prazo && orb::valor(f, "ENTRADA").toString() == "S";
    const QDate dia = orb::valor(f, "DATA").toDate();
    const Decimal parcela = valor.dividir(Decimal::inteiro(n), 2, db::Arredonda::MeioLonge);
    Decimal devido = kZero;
    for (int i = 1; i <= n; ++i)
        if (!prazo || vencimentoParcela(dia, i, entrada, orb::valor(f, "PRIMVENC").toInt(), orb::valor(f, "INTVENC").toInt()) <= dia)
            devido += i < n ? parcela : valor - parcela * Decimal::inteiro(n - 1);
    return devido.comEscala(2);
}

QByteArray fotoDoItem(db::Transacao &t, int idItem)
{
    return db::escalar(t, "Select First 1 Foto From TbItensFotos Where Fk = :ID and Foto Is Not Null Order By Id", {{"ID", idItem}})
        .toByteArray();
}

int salvarVendaExpressa(db::Transacao &t, Documento &d, const Sessao &quem, const QDateTime &agora)
{
    exigirOperacao(t, quem, d.id ? QStringLiteral("Alterar") : QStringLiteral("Incluir"));
    d.op = 1;
    recalcularDocumento(t, d);
    conferirVendaExpressa(t, d, agora.date());
    d.notaPronto = kProntoVendaExpressa;
    return salvarDocumento(t, d, quem, agora);
}

void finalizarVendaExpressa(db::Transacao &t, int id, const Sessao &quem, const QDateTime &agora, const QVariant &recebido)
{
    if (statusAtual(t, id) == "AO")
        throw Recusa(kSemPreco);
    const Valores fat = primeiraLinha(t, "Select First 1 Id, GeraFin From TbComFat Where Fk = :ID Order By Id", {{"ID", id}});
    const int idFat = valor(fat, "ID").toInt();
    const QString geraFin = valor(fat, "GERAFIN").toString().trimmed() == "E" ? "E" : "A";
    aprovarOperacao(t, id, agora, geraFin, quem);
    Decimal devido = kZero;
    if (geraFin == "A")
        devido += receberDevido(t, 1, idFat, agora.date(), quem);
    entregarOperacao(t, id, agora, {}, quem);
    if (geraFin == "E")
        devido += receberDevido(t, 1, idFat, agora.date(), quem);

    const Decimal dado = recebido.isNull() ? devido : recebido.value<Decimal>().comEscala(2);
    if (dado < devido)
        throw Recusa("O valor recebido é menor que o valor a receber agora (R$ " + devido.textoBR(2) + ")!", "RECEBIDO");
    const QVariant pago = db::escalar(t, "Select Sum(P.Valor) From TbContasPagtos P Join TbContas C On (C.Id = P.Fk) "
                                         "Where C.Fks = 1 and C.Fk = :F", {{"F", idFat}});
    db::executar(t, "Update TbCom Set TotalPago = :P, Troco = :T Where Id = :ID",
                 {{"P", pago.isNull() ? QVariant::fromValue(kZero) : pago}, {"T", QVariant::fromValue(dado - devido)}, {"ID", id}});
}

} // namespace orb
