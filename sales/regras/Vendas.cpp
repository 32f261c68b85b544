#include "Vendas.h"

#include "GeraContas.h"
#include "Status.h"
#include "acesso/Permissoes.h"

#include <QHash>
#include <QSet>

namespace orb {

using db::Decimal;

namespace {

const Decimal kZero = Decimal::bruto(0, 2);

bool vazio(const QVariant &v) { return v.isNull() || v.toString().trimmed().isEmpty() || v.toString() == "0"; }

// The columns of a table as the database has them: only those are written.
const QSet<QString> &colunasDe(db::Transacao &t, const QString &tabela)
{
    static QHash<QString, QSet<QString>> cache;  // by database and table: an older database may lack columns
    const QString chave = t.banco().conexao().banco + '|' + tabela;
    auto it = cache.find(chave);
    if (it == cache.end()) {
        QSet<QString> s;
        db::Consulta q(t, "Select Trim(Rdb$Field_Name) From Rdb$Relation_Fields Where Rdb$Relation_Name = :T");
        q.bind("T", tabela);
        q.executar();
        while (q.proxima())
            s.insert(q[0].toString());
        it = cache.insert(chave, s);
    }
    return *it;
}

// Inserts (id 0) or updates a row with the values of `v` that are columns of the table.
int gravar(db::Transacao &t, const QString &tabela, int id, const Valores &v)
{
    const QSet<QString> &cols = colunasDe(t, tabela);
    QStringList nomes;
    std::map<QString, QVariant> p;
    for (const auto &[c, x] : v)
        if (c != "ID" && cols.contains(c)) {
            nomes << c;
            p[c] = x;
        }
    if (id == 0) {
        QStringList params;
        for (const QString &c : nomes)
            params << ":" + c;
        return db::escalar(t, QString("Insert Into %1 (%2) Values (%3) Returning Id").arg(tabela, nomes.join(", "), params.join(", ")), p)
            .toInt();
    }
    QStringList sets;
    for (const QString &c : nomes)
        sets << c + " = :" + c;
    p["ID"] = id;
    if (!sets.isEmpty())
        db::executar(t, QString("Update %1 Set %2 Where Id = :ID").arg(tabela, sets.join(", ")), p);
    return id;
}

Valores lerLinha(db::Consulta &q)
{
    Valores v;
    for (int i = 0; i < q.colunas(); ++i)
        v[q.nomeColuna(i)] = q[i];
    return v;
}

Valores primeiraLinha(db::Transacao &t, const QString &sql, const std::map<QString, QVariant> &p = {})
{
    db::Consulta q(t, sql);
    for (const auto &[k, v] : p)
        q.bind(k, v);
    q.executar();
    return q.proxima() ? lerLinha(q) : Valores{};
}

const char *kColunasLinhaFat[] = {"QTD", "SUBTOTALBR", "DESCONTO", "SUBTOTALLQ", "SUBTOTAL", "TOTAL", "DESCRICAO"};

} // namespace

QString legendaDocumento(const ModoOperacao &m, int id) { return m.novo + " (" + QString::asprintf("%06d", id) + ")"; }

QString enderecoCadastro(db::Transacao &t, int idCad)
{
    const Valores c = primeiraLinha(t, "Select C.Endereco, C.Numero, C.Complemento, C.Bairro, Ci.Cidade, Ci.Uf, C.Cep From TbCad C "
                                       "Left Join TbCidades Ci On (Ci.Id = C.IdCidade) Where C.Id = :ID", {{"ID", idCad}});
    if (c.empty())
        return {};
    QStringList partes;
    for (const char *k : {"ENDERECO", "NUMERO", "COMPLEMENTO", "BAIRRO"})
        if (!valor(c, k).toString().trimmed().isEmpty())
            partes << valor(c, k).toString().trimmed();
    QString s = partes.join(", ");
    QStringList cidade;
    for (const char *k : {"CIDADE", "UF", "CEP"})
        if (!valor(c, k).toString().trimmed().isEmpty())
            cidade << valor(c, k).toString().trimmed();
    if (!cidade.isEmpty())
        s += " - " + cidade.join(" ");
    return s.left(160);
}

Documento incluirDocumento(db::Transacao &t, const ModoOperacao &m, const Sessao &quem, const QDateTime &agora)
{
    exigirOperacao(t, quem, m.incluir);
    const Valores par = primeiraLinha(t, QString("Select First 1 * From %1 Order By Data Desc, Id Desc").arg(m.parametros));
    Documento d;
    d.op = m.op;
    Valores &h = d.cabecalho;
    h["OP"] = m.op;
    h["EMISSAO"] = agora;
    h["DATA"] = QDateTime(agora.date(), QTime(0, 0));
    h["IDCAD"] = m.op == 4 ? valor(par, "IDFORNECEDOR") : valor(par, "IDCLIENTE");
    h["IDATENDENTE"] = m.op == 4 ? valor(par, "IDCOMPRADOR") : valor(par, "IDATENDENTE");
    h["IDREPRESENTANTE"] = valor(par, "IDREPRESENTANTE");
    h["IDEMPRESA"] = valor(par, "IDEMPRESA");
    // The level the lines take their price from.
    h["TIPO"] = valor(par, "DEFPRECO").toString() == "A" ? "A" : "V";
    h["TIPODESCONTO"] = valor(par, "TIPODESCONTO").toString() == "S" ? "S" : "I";
    h["TIPOATRECTO"] = "B";
    h["PRIORIDADE"] = "N";
    for (const char *c : {"SUBTOTALBRM", "DESCONTOM", "PERCDESCONTOM", "SUBTOTALLQM", "SUBTOTALBRS", "DESCONTOS", "PERCDESCONTOS",
                          "SUBTOTALLQS", "SUBTOTALM", "SUBTOTALS", "TOTALM", "TOTALS", "TOTAL", "TOTALPAGO", "TROCO", "SEGURO"})
        h[c] = QVariant::fromValue(kZero);

    Valores &f = d.faturamento;
    f["EMISSAO"] = agora;
    f["DATA"] = agora.date();
    f["GERAFIN"] = valor(par, "GERAFIN").toString() == "E" ? "E" : "A";
    f["CONDPAGTO"] = "V";
    f["PARCELAS"] = "01";
    f["ENTRADA"] = "N";
    f["PRIMVENC"] = 0;
    f["INTVENC"] = 0;
    f["IDEMPRESA"] = h["IDEMPRESA"];
    f["IDATENDENTE"] = h["IDATENDENTE"];
    f["IDTRANSPORTADORA"] = valor(par, "IDTRANSPORTADORA");
    f["PREVENTREGA"] = QDateTime(agora.date(), QTime(0, 0));
    if (!vazio(h["IDCAD"])) {
        const QString end = enderecoCadastro(t, h["IDCAD"].toInt());
        f["ENDENTREGA"] = end;
        f["ENDCOBRANCA"] = end;
    }
    for (const char *c : {"VALORBR", "DESCONTO", "VALOR", "TOTALFRETE"})
        f[c] = QVariant::fromValue(kZero);
    return d;
}

Documento lerDocumento(db::Transacao &t, int id)
{
    Documento d;
    d.cabecalho = primeiraLinha(t, "Select * From TbCom Where Id = :ID", {{"ID", id}});
    if (d.cabecalho.empty())
        throw Recusa("Esta operação não existe mais!");
    d.id = id;
    d.op = d.cabecalho["OP"].toInt();
    // Z_CODIGO: the item's code, or the one kept on a free line, as the grid shows it.
    db::Consulta q(t, "Select I.*, Coalesce(It.Codigo, I.CodItem) Z_CODIGO From TbComItens I Left Join TbItens It On (It.Id = I.IdItem) "
                      "Where I.Fk = :ID Order By I.Tipo, I.Descricao, I.Id");
    q.bind("ID", id);
    q.executar();
    while (q.proxima())
        d.linhas.append(lerLinha(q));
    d.faturamento = primeiraLinha(t, "Select First 1 * From TbComFat Where Fk = :ID Order By Data, Id", {{"ID", id}});
    // The serials typed on each line, kept on its billing line.
    QHash<int, QStringList> seriais;
    db::Consulta s(t, "Select Fi.IdItem, S.Serial From TbComFatItensSeriais S Join TbComFatItens Fi On (Fi.Id = S.Fk) "
                      "Join TbComFat F On (F.Id = Fi.Fk) Where F.Fk = :ID Order By S.Id");
    s.bind("ID", id);
    s.executar();
    while (s.proxima())
        seriais[s[0].toInt()] << s[1].toString();
    for (Valores &l : d.linhas)
        if (seriais.contains(l["ID"].toInt())) l["Z_SERIAIS"] = seriais.value(l["ID"].toInt());
    return d;
}

// ------------------------------------------------------------------ line entry

QList<Valores> buscarMercadorias(db::Transacao &t, const QString &texto)
{
    db::Consulta q(t, "Select First 50 Id, Codigo, Descricao, Un, PrVendaAt, PrVendaVar From TbItens Where Tipo = 'M' and "
                      "(Upper(Codigo) Containing :T or Upper(Descricao) Containing :T) Order By Descricao");
    q.bind("T", texto.toUpper());
    q.executar();
    QList<Valores> l;
    while (q.proxima())
        l.append(lerLinha(q));
    return l;
}

Valores linhaDoItem(db::Transacao &t, int idItem, const QString &tipoPreco)
{
    const Valores i = primeiraLinha(t, "Select * From TbItens Where Id = :ID", {{"ID", idItem}});
    if (i.empty())
        throw Recusa("Escolha a mercadoria primeiro!", "IDITEM");
    Valores l;
    l["TIPO"] = valor(i, "TIPO").toString() == "S" ? "S" : "M";
    l["IDITEM"] = idItem;
    l["DESCRICAO"] = valor(i, "DESCRICAO");
    l["UN"] = valor(i, "UN");
    l["PRUNITARIO"] = valor(i, tipoPreco == "A" ? "PRVENDAAT" : "PRVENDAVAR");
    l["Z_CONTRSERIAL"] = valor(i, "CONTRSERIAL");
    for (const QString &z : kTributosItem)
        l[z] = valor(i, z.mid(2));
    return l;
}

Valores linhaServico(db::Transacao &t, const QString &codigo, const QString &tipoPreco)
{
    const QVariant id = db::escalar(t, "Select First 1 Id From TbItens Where Tipo = 'S' and (Codigo = :C or CodigoBarras = :C) Order By Id",
                                    {{"C", codigo.trimmed()}});
    if (id.isNull())
        throw Recusa("Serviço não encontrada!", "IDITEM");
    return linhaDoItem(t, id.toInt(), tipoPreco);
}

void conferirLinha(const Valores &l)
{
    if (vazio(valor(l, "IDITEM")) && valor(l, "DESCRICAO").toString().trimmed().isEmpty())
        throw Recusa("Escolha a mercadoria primeiro!", "IDITEM");
    if (decimal(l, "QTD").zero())
        throw Recusa("Digite a quantidade primeiro!", "QTD");
    if (decimal(l, "PRUNITARIO").negativo())
        throw Recusa("Preço Unitário inválido!", "PRUNITARIO");
    if (decimal(l, "PERCDESCONTO").negativo())
        throw Recusa("O desconto deve ser maior ou igual a 0%!", "PERCDESCONTO");
    if (decimal(l, "PERCDESCONTO") > Decimal::inteiro(100))
        throw Recusa("O desconto deve ser menor ou igual a 100%!", "PERCDESCONTO");
}

void conferirSerial(db::Transacao &t, const Valores &l, int op)
{
    const QString contr = vazio(valor(l, "IDITEM")) ? QString()
                              : db::escalar(t, "Select ContrSerial From TbItens Where Id = :ID", {{"ID", valor(l, "IDITEM")}}).toString().trimmed();
    if (op == 4 && contr != "SIM" && contr != "ENT")
        throw Recusa("Essa mercadoria não controla seriais na entrada!", "SERIAL");
    if (op != 4 && contr != "SIM" && contr != "SAÍ")
        throw Recusa("Essa mercadoria não controla seriais na saída!", "SERIAL");
    if (Decimal::inteiro(valor(l, "Z_SERIAIS").toStringList().size()) >= decimal(l, "QTD"))
        throw Recusa("A quantidade de seriais já atingiu a quantidade da mercadoria!", "SERIAL");
}

// ------------------------------------------------------------------ recalculation

Aliquotas aliquotasDaEmpresa(db::Transacao &t, const QVariant &idEmpresa)
{
    Aliquotas a;
    const Valores r = primeiraLinha(t, "Select First 1 I.PercIcmsO, I.PercIcmsD From TbCad E Join TbCidades Ci On (Ci.Id = E.IdCidade) "
                                       "Join TbIcms I On (I.Uf = Ci.Uf) Where E.Id = :ID Order By I.Id", {{"ID", idEmpresa}});
    a.percIcmsO = decimal(r, "PERCICMSO");
    a.percIcmsD = decimal(r, "PERCICMSD");
    return a;
}

void recalcularDocumento(db::Transacao &t, Documento &d)
{
    for (Valores &l : d.linhas) {
        if (vazio(valor(l, "IDITEM")) || l.count("Z_CST"))
            continue;
        const Valores i = primeiraLinha(t, "Select Origem, Cst, PercIcms, PercRedBcIcms, PercMvaIcmsSt, PercRedBcIcmsSt, PercIpi "
                                           "From TbItens Where Id = :ID", {{"ID", valor(l, "IDITEM")}});
        for (const QString &z : kTributosItem)
            l[z] = valor(i, z.mid(2));
    }
    recalcular(d.cabecalho, d.linhas, aliquotasDaEmpresa(t, valor(d.cabecalho, "IDEMPRESA")));
}

void conferirSituacaoCliente(db::Transacao &t, const QVariant &idCad, const QDate &hoje)
{
    const Valores s = primeiraLinha(t, "Select First 1 Situacao, Motivo From TbCadSit Where Fk = :ID and (Data <= :HOJE or Data Is Null) "
                                       "Order By Data Desc, Id Desc", {{"ID", idCad}, {"HOJE", hoje}});
    const QString sit = valor(s, "SITUACAO").toString().trimmed();
    if (sit == "B")
        throw Recusa("Esse cliente está bloqueado! Motivo: " + valor(s, "MOTIVO").toString(), "IDCAD");
    if (sit == "E")
        throw Recusa("Esse cliente está em análise! Motivo: " + valor(s, "MOTIVO").toString(), "IDCAD");
}

// ------------------------------------------------------------------ save

namespace {

void conferirDocumento(db::Transacao &t, const Documento &d, const ModoOperacao &m, const QDate &hoje)
{
    const Valores &h = d.cabecalho, &f = d.faturamento;
    if (valor(h, "DATA").isNull())
        throw Recusa("Digite a data primeiro!", "DATA");
    if (valor(f, "DATA").isNull())
        throw Recusa("Digite a data do faturamento primeiro!", "TBCOMFAT.DATA");
    if (valor(f, "DATA").toDate() < valor(h, "DATA").toDateTime().date())
        throw Recusa("A data do faturamento deve ser maior ou igual a data da operação!", "TBCOMFAT.DATA");
    if (vazio(valor(h, "IDCAD")))
        throw Recusa(m.op == 4 ? "Escolha o fornecedor primeiro!" : "Escolha o cliente primeiro!", "IDCAD");
    if (m.op != 4) conferirSituacaoCliente(t, valor(h, "IDCAD"), hoje);
    if (vazio(valor(h, "IDATENDENTE")))
        throw Recusa("Escolha o(a) atendente primeiro!", "IDATENDENTE");
    if (vazio(valor(h, "IDEMPRESA")))
        throw Recusa("Escolha a Empresa primeiro!", "IDEMPRESA");
    if (decimal(h, "TOTALFRETE") > kZero && vazio(valor(f, "IDTRANSPORTADORA")))
        throw Recusa("Escolha a Transportadora primeiro!", "TBCOMFAT.IDTRANSPORTADORA");
    if (m.previsaoEntrega && valor(h, "DATAPREVENTREGA").isNull())
        throw Recusa("Digite a data de Previsão de Entrega primeiro!", "DATAPREVENTREGA");
    const bool temMercadoria = std::any_of(d.linhas.begin(), d.linhas.end(), [](const Valores &l) { return valor(l, "TIPO") == "M"; });
    if (m.op == 1 && !temMercadoria)
        throw Recusa("Inclua a(s) mercadoria(s) primeiro!", "TBCOMITENS");
    if (m.op == 5 && d.linhas.isEmpty())
        throw Recusa("Inclua a(s) roupa(s) primeiro!", "TBCOMITENS");
    if (m.op == 2) {
        const QString acond = valor(h, "ACOND").toString().trimmed();
        if (!acond.isEmpty() && acond != "NÃO APLICADO") {
            const QVariant outra = db::escalar(
                t, "Select First 1 C.Id From TbCom C Where C.Acond = :A and C.Id <> :ID and Coalesce((Select First 1 S.Status From TbComSt S "
                   "Where S.Fk = C.Id Order By S.Id Desc), '') Not In ('EN', 'CA') Order By C.Id",
                {{"A", acond}, {"ID", d.id}});
            if (!outra.isNull())
                throw Recusa("Esse Acondicionamento está sendo utilizado na Ordem de Serviço " + QString::asprintf("%06d", outra.toInt()),
                             "IDACOND");
        }
        const QString st = d.id ? statusAtual(t, d.id) : QStringLiteral("AO");
        if (acond.isEmpty() && (st == "AO" || st == "AA"))
            throw Recusa("Defina o Acondicionamento (Pasta, Mochila, Caixa) primeiro!", "IDACOND");
    }
}

// Billing lines follow the operation's: removed, updated, inserted; the billing's values are their sum.
void seguirFaturamento(db::Transacao &t, int idFat, const QList<Valores> &linhas)
{
    QHash<int, int> fatDaLinha;  // operation line -> billing line
    db::Consulta q(t, "Select Id, IdItem From TbComFatItens Where Fk = :FK");
    q.bind("FK", idFat);
    q.executar();
    QList<int> orfas;
    QSet<int> vivas;
    for (const Valores &l : linhas)
        vivas.insert(l.at("ID").toInt());
    while (q.proxima()) {
        if (vivas.contains(q[1].toInt()))
            fatDaLinha[q[1].toInt()] = q[0].toInt();
        else
            orfas << q[0].toInt();
    }
    q.fechar();
    for (int id : orfas) {
        db::executar(t, "Delete From TbComFatItensSeriais Where Fk = :ID", {{"ID", id}});
        db::executar(t, "Delete From TbComFatItens Where Id = :ID", {{"ID", id}});
    }
    Decimal soma = kZero;
    for (const Valores &l : linhas) {
        Valores v;
        for (const char *c : kColunasLinhaFat)
            v[c] = valor(l, c);
        v["IDITEM"] = l.at("ID");
        v["FK"] = idFat;
        const int idLinhaFat = gravar(t, "TBCOMFATITENS", fatDaLinha.value(l.at("ID").toInt()), v);
        if (l.count("Z_SERIAIS")) {
            db::executar(t, "Delete From TbComFatItensSeriais Where Fk = :ID", {{"ID", idLinhaFat}});
            for (const QString &s : l.at("Z_SERIAIS").toStringList())
                db::executar(t, "Insert Into TbComFatItensSeriais (Serial, Fk) Values (:S, :FK)", {{"S", s}, {"FK", idLinhaFat}});
        }
        soma += decimal(l, "SUBTOTAL");
    }
    db::executar(t, "Update TbComFat Set ValorBr = :S, Valor = :S Where Id = :ID", {{"S", QVariant::fromValue(soma)}, {"ID", idFat}});
}

} // namespace

int salvarDocumento(db::Transacao &t, Documento &d, const Sessao &quem, const QDateTime &agora)
{
    const ModoOperacao &m = modoDoOp(d.op);
    const bool novo = d.id == 0;
    exigirOperacao(t, quem, novo ? m.incluir : QStringLiteral("Alterar"));
    d.cabecalho["OP"] = m.op;
    recalcularDocumento(t, d);
    conferirDocumento(t, d, m, agora.date());

    // Nothing was written before this point: a refusal above leaves the database as it was.
    d.id = gravar(t, "TBCOM", d.id, d.cabecalho);
    d.cabecalho["ID"] = d.id;
    for (int id : d.linhasExcluidas) {
        logRegistro(t, "TBCOMITENS", "ID", id, kExclusao);
        db::executar(t, "Delete From TbComFatItensSeriais Where Fk In (Select Id From TbComFatItens Where IdItem = :ID)", {{"ID", id}});
        db::executar(t, "Delete From TbComFatItens Where IdItem = :ID", {{"ID", id}});
        db::executar(t, "Delete From TbComItens Where Id = :ID", {{"ID", id}});
    }
    d.linhasExcluidas.clear();
    for (Valores &l : d.linhas) {
        l["FK"] = d.id;
        l["ID"] = gravar(t, "TBCOMITENS", valor(l, "ID").toInt(), l);
    }
    Valores &f = d.faturamento;
    f["FK"] = d.id;
    f["ID"] = gravar(t, "TBCOMFAT", valor(f, "ID").toInt(), f);
    const int idFat = f["ID"].toInt();
    seguirFaturamento(t, idFat, d.linhas);

    // The status by price completeness.
    const bool semPreco = std::any_of(d.linhas.begin(), d.linhas.end(), [](const Valores &l) { return decimal(l, "PRUNITARIO").zero(); });
    if (novo)
        statusInicial(t, d.id, m.op, agora, quem.idUsuario ? QVariant(quem.idUsuario) : QVariant());
    const QString st = statusAtual(t, d.id);
    const QVariant resp = quem.idUsuario ? QVariant(quem.idUsuario) : QVariant();
    const QString pronto = !d.notaPronto.isEmpty() ? d.notaPronto : m.op == 2 ? kProntoAnalise : QStringLiteral("Pronto para aprovação.");
    if (st == "AO" && !semPreco)
        acrescentarStatus(t, d.id, m.op, {"AA", pronto, agora, resp});
    else if (st == "AO" && semPreco && novo)
        db::executar(t, "Update TbComSt Set Observacoes = :O Where Id = (Select Max(Id) From TbComSt Where Fk = :FK)",
                     {{"O", kSemPreco}, {"FK", d.id}});
    else if (st == "AA" && semPreco)
        acrescentarStatus(t, d.id, m.op, {"AO", kAlertaSemPreco, agora, resp});

    // The instalments follow the billing.
    GeraContas(t, QString::number(m.op), QString::number(idFat), "I", valor(f, "DATAAPROVACAO").toDateTime(), agora);
    if (valor(f, "CONDPAGTO").toString() == "P")
        DefineParcelas(t, idFat);

    const Decimal pago = decimal({{"P", db::escalar(t, "Select Sum(P.Valor) From TbContasPagtos P Join TbContas C On (C.Id = P.Fk) "
                                                       "Join TbComFat F On (F.Id = C.Fk) Where F.Fk = :ID and C.Fks = :OP",
                                                    {{"ID", d.id}, {"OP", m.op}})}},
                                 "P");
    const Decimal troco = pago - decimal(d.cabecalho, "TOTAL");
    d.cabecalho["TOTALPAGO"] = QVariant::fromValue(pago);
    d.cabecalho["TROCO"] = QVariant::fromValue(troco > kZero ? troco : kZero);
    db::executar(t, "Update TbCom Set TotalPago = :P, Troco = :T Where Id = :ID",
                 {{"P", d.cabecalho["TOTALPAGO"]}, {"T", d.cabecalho["TROCO"]}, {"ID", d.id}});
    // A purchase effects the supply order it serves (engineering keeps its own steps for them).
    if (m.op == 4 && !vazio(valor(d.cabecalho, "PEDFORN")) && ramo(t) != "EN")
        db::executar(t, "Insert Into TbPedFornSt (Data, Status, IdResp, Fk) Values (:D, 'EFETUADA', :R, :FK)",
                     {{"D", agora}, {"R", resp}, {"FK", valor(d.cabecalho, "PEDFORN")}});
    logRegistro(t, "TBCOM", "ID", d.id, novo ? kInclusao : kAlteracao);
    return d.id;
}

void excluirDocumento(db::Transacao &t, int id, const Sessao &quem)
{
    exigirOperacao(t, quem, "Excluir");
    const Valores h = travarEstado(t, "TBCOM", "ID", id, {"OP"}, "Esta operação não existe mais!");
    const ModoOperacao &m = modoDoOp(h.at("OP").toInt());
    const QString st = statusAtual(t, id);
    if (st == "AP")
        throw Recusa(m.substantivo + " não pode ser alterada por já ter sido Aprovada!");
    if (st == "EN")
        throw Recusa(m.substantivo + " não pode ser alterada por já ter sido Entregue!");
    if (st == "CA")
        throw Recusa(m.substantivo + " não pode ser alterada por já ter sido Cancelada!");
    db::Consulta fats(t, "Select Id From TbComFat Where Fk = :ID");
    fats.bind("ID", id);
    fats.executar();
    QList<int> idsFat;
    while (fats.proxima())
        idsFat << fats[0].toInt();
    fats.fechar();
    for (int f : idsFat) {
        GeraContas(t, QString::number(m.op), QString::number(f), "D", {});
        db::executar(t, "Delete From TbComFatItensSeriais Where Fk In (Select Id From TbComFatItens Where Fk = :F)", {{"F", f}});
        db::executar(t, "Delete From TbComFatItens Where Fk = :F", {{"F", f}});
    }
    db::Consulta linhas(t, "Select Id From TbComItens Where Fk = :ID");
    linhas.bind("ID", id);
    linhas.executar();
    QList<QPair<QString, QString>> detalhes;
    QList<int> idsLinhas;
    while (linhas.proxima())
        idsLinhas << linhas[0].toInt();
    linhas.fechar();
    for (int l : idsLinhas)
        logRegistro(t, "TBCOMITENS", "ID", l, kExclusao);
    logRegistro(t, "TBCOM", "ID", id, kExclusao);
    for (const char *sql : {"Delete From TbComFat Where Fk = :ID", "Delete From TbComItens Where Fk = :ID", "Delete From TbComSt Where Fk = :ID",
                            "Delete From TbCom Where Id = :ID"})
        db::executar(t, sql, {{"ID", id}});
}

} // namespace orb
