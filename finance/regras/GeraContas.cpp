#include "GeraContas.h"

#include "registro/Registro.h"

#include <QList>
#include <optional>

namespace orb {

using db::Decimal;

namespace {

Decimal dec(const QVariant &v)
{
    if (v.isNull())
        return Decimal::bruto(0, 2);
    if (v.metaType() == QMetaType::fromType<Decimal>())
        return v.value<Decimal>();
    return Decimal::inteiro(v.toLongLong());
}

QVariant qv(const Decimal &d) { return QVariant::fromValue(d); }
// What a NUMERIC(18,2) column keeps of a value: rounded half away from zero.
Decimal n2(const Decimal &d) { return d.comEscala(2); }

const QList<ModuloContas> kModulos = {
    {"1", "DA VENDA", "TbParVendas"},        {"2", "DO SERVIÇO", "TbParServicos"},
    {"3", "DO CONTRATO", "TbParContratos"},  {"4", "DA COMPRA", "TbParCompras"},
    {"8", "DO ATENDIMENTO", "TbParVendas"},
};

bool documentoSemNumero(const QString &forma) { return forma == "CHEQUE" || forma == "BOLETO"; }

// The instalment's share of a card brand's discount: gross × (1 − % / 100), as the database computes it.
Decimal liquidoCartao(const Decimal &bruto, const Decimal &perc)
{
    const Decimal fator = Decimal::inteiro(1) - perc.dividirComoBanco(Decimal::inteiro(100));
    return n2(bruto * fator);
}

struct Fat {
    int id = 0, fk = 0, idEmpresa = 0, n = 0, intVenc = 0, primVenc = 0;
    QDate data;
    QString geraFin;
    bool entrada = false, entregue = false;
    Decimal total, valorBr;
    QVariant idCategoria, idSubcategoria;
};

Fat lerFat(db::Transacao &t, const ModuloContas &m, int id)
{
    db::Consulta q(t, QString("Select Cf.*, (Select First 1 P.IdCategoria From %1 P Order By P.Data Desc, P.Id Desc) Z_Cat, "
                              "(Select First 1 P.IdSubcategoria From %1 P Order By P.Data Desc, P.Id Desc) Z_Sub "
                              "From TbComFat Cf Where Cf.Id = :ID").arg(m.parametros));
    q.bind("ID", id);
    q.executar();
    Fat f;
    if (!q.proxima())
        return f;
    f.id = id;
    f.fk = q["FK"].toInt();
    f.idEmpresa = q["IDEMPRESA"].toInt();
    f.n = q["PARCELAS"].toString().trimmed().toInt();
    f.intVenc = q["INTVENC"].toInt();
    f.primVenc = q["PRIMVENC"].toInt();
    f.data = q["DATA"].toDate();
    f.geraFin = q["GERAFIN"].toString();
    f.entrada = q["ENTRADA"].toString() == "S";
    f.entregue = !q["DATAENTREGA"].isNull();
    f.total = dec(q["VALOR"]);
    f.valorBr = dec(q["VALORBR"]);
    f.idCategoria = q["Z_CAT"];
    f.idSubcategoria = q["Z_SUB"];
    return f;
}

// Brings the sums of the billing's instalments to its net total: the whole remainder on the last.
void arredondarUltima(db::Transacao &t, const ModuloContas &m, const Fat &f, int idUltima)
{
    const std::map<QString, QVariant> p = {{"FKS", m.codigo.toInt()}, {"FK", f.id}};
    const Decimal somaBr = dec(db::escalar(t, "Select Sum(ValorBruto) From TbContas Where Fks = :FKS and Fk = :FK", p));
    if (somaBr != f.total)
        db::executar(t, "Update TbContas Set ValorBruto = ValorBruto + :DIF Where Id = :ID",
                     {{"DIF", qv(f.total - somaBr)}, {"ID", idUltima}});
    const Decimal soma = dec(db::escalar(t, "Select Sum(Valor) From TbContas Where Fks = :FKS and Fk = :FK", p));
    if (soma != f.total) {
        db::executar(t, "Update TbContas Set Valor = Valor + :DIF Where Id = :ID", {{"DIF", qv(f.total - soma)}, {"ID", idUltima}});
        db::executar(t, "Update TbContas Set ValorBruto = Valor Where Id = :ID", {{"ID", idUltima}});
    }
}

struct Rateio {
    QVariant cCusto, categoria, subcategoria;
    Decimal valor;
};

bool mesmaChave(const QVariant &a, const QVariant &b)
{
    return a.isNull() == b.isNull() && (a.isNull() || a.toInt() == b.toInt());
}

} // namespace

const ModuloContas &moduloContas(const QString &codigo)
{
    for (const ModuloContas &m : kModulos)
        if (m.codigo == codigo)
            return m;
    return kModulos.front();
}

QString ramo(db::Transacao &t)
{
    return db::escalar(t, "Select First 1 Ramo From TbParGlobais Order By Id").toString().trimmed();
}

int contaCaixa(db::Transacao &t)
{
    const QVariant id = db::escalar(t, "Select First 1 Id From TbCCor Where Numero = 'CAIXA' Order By Id");
    if (!id.isNull())
        return id.toInt();
    return db::escalar(t, "Insert Into TbCCor (Conta, Numero, AgenciaNome, TipoMinimo) "
                          "Values ('CAIXA', 'CAIXA', 'CAIXA', 'U') Returning Id").toInt();
}

QString numeroParcela(int i, bool entrada)
{
    return i == 1 && entrada ? QStringLiteral("EN") : QString::asprintf("%02d", i);
}

QDate vencimentoParcela(const QDate &dataFat, int i, bool entrada, int primVenc, int intVenc)
{
    if (i == 1 && entrada)
        return dataFat;
    // With a down payment the second instalment is the first to take the base.
    const int k = entrada ? i - 2 : i - 1;
    const QDate base = dataFat.addDays(primVenc);
    return intVenc == 30 ? base.addMonths(k) : base.addDays(qint64(intVenc) * k);
}

namespace {

// The keys an instalment is apportioned over, each with its share of the document: the document's
// lines grouped by key for sales and purchases, else the module's default key, whole.
struct Partilha {
    QList<Rateio> chaves;  // valor: the share, as the database divides it
    bool inteira = false;  // one key takes the whole value
};

Partilha partilhar(db::Transacao &t, const ModuloContas &m, int idDocumento, bool en)
{
    Partilha p;
    if (m.codigo == "1" || m.codigo == "4") {
        db::Consulta q(t, en ? "Select IdCCusto, IdCategoria, Cast(Null As Integer) IdSubcategoria, Subtotal From TbComItens "
                               "Where Fk = :FK Order By IdCCusto, IdCategoria, Id"
                             : "Select Cast(Null As Integer) IdCCusto, IdCategoria, IdSubcategoria, Subtotal From TbComItens "
                               "Where Fk = :FK Order By IdCategoria, IdSubcategoria, Id");
        q.bind("FK", idDocumento);
        q.executar();
        struct L { QVariant cc, cat, sub; Decimal sub2; };
        QList<L> linhas;
        Decimal soma = Decimal::bruto(0, 2);
        while (q.proxima()) {
            linhas.append({q[0], q[1], q[2], dec(q[3])});
            soma += dec(q[3]);
        }
        for (const L &l : linhas) {
            Rateio *r = nullptr;
            for (Rateio &a : p.chaves)
                if (mesmaChave(a.cCusto, l.cc) && mesmaChave(a.categoria, l.cat) && mesmaChave(a.subcategoria, l.sub))
                    r = &a;
            if (!r) {
                p.chaves.append({l.cc, l.cat, l.sub, Decimal::bruto(0, 4)});
                r = &p.chaves.last();
            }
            // Each line's share as the database divides it.
            if (!soma.zero())
                r->valor += l.sub2.dividirComoBanco(soma);
        }
        // A document without values goes whole to its first key.
        if (soma.zero() && !p.chaves.isEmpty()) {
            p.chaves = {p.chaves.first()};
            p.inteira = true;
        }
    }
    if (p.chaves.isEmpty()) {
        const Valores par = [&] {
            db::Consulta q(t, QString("Select First 1 IdCategoria, IdSubcategoria From %1 Order By Data Desc, Id Desc").arg(m.parametros));
            q.executar();
            Valores v;
            if (q.proxima()) {
                v["CAT"] = q[0];
                v["SUB"] = q[1];
            }
            return v;
        }();
        auto de = [&](const char *k) { const auto it = par.find(k); return it == par.end() ? QVariant() : it->second; };
        p.chaves.append({en ? QVariant(idDocumento) : QVariant(), de("CAT"), en ? QVariant() : de("SUB"), {}});
        p.inteira = true;
    }
    return p;
}

// Rows of other keys go; rows of the keys take their values; the remainder goes to the newest row.
void aplicarRateio(db::Transacao &t, int idConta, const Partilha &p)
{
    const Decimal valor = dec(db::escalar(t, "Select Valor From TbContas Where Id = :ID", {{"ID", idConta}}));
    QList<Rateio> alvo = p.chaves;
    Decimal soma = Decimal::bruto(0, 2);
    for (Rateio &r : alvo) {
        r.valor = p.inteira ? valor : n2(r.valor * valor);
        soma += r.valor;
    }
    db::Consulta atuais(t, "Select Id, IdCCusto, IdCategoria, IdSubcategoria From TbContasRat Where Fk = :FK Order By Id");
    atuais.bind("FK", idConta);
    atuais.executar();
    QList<Rateio> existentes;
    QList<int> ids;
    while (atuais.proxima()) {
        existentes.append({atuais[1], atuais[2], atuais[3], {}});
        ids.append(atuais[0].toInt());
    }
    atuais.fechar();
    QList<int> destino(alvo.size(), 0);  // the row of each key
    for (int i = 0; i < existentes.size(); ++i) {
        int achou = -1;
        for (int j = 0; j < alvo.size() && achou < 0; ++j)
            if (!destino[j] && mesmaChave(alvo[j].cCusto, existentes[i].cCusto) && mesmaChave(alvo[j].categoria, existentes[i].categoria)
                && mesmaChave(alvo[j].subcategoria, existentes[i].subcategoria))
                achou = j;
        if (achou < 0)
            db::executar(t, "Delete From TbContasRat Where Id = :ID", {{"ID", ids[i]}});
        else
            destino[achou] = ids[i];
    }
    for (int j = 0; j < alvo.size(); ++j)
        if (!destino[j])
            destino[j] = db::escalar(t, "Insert Into TbContasRat (IdCCusto, IdCategoria, IdSubcategoria, Fk) Values (:CC, :CAT, :SUB, :FK) "
                                        "Returning Id",
                                     {{"CC", alvo[j].cCusto}, {"CAT", alvo[j].categoria}, {"SUB", alvo[j].subcategoria}, {"FK", idConta}})
                             .toInt();
    int ultima = 0;
    for (int j = 0; j < alvo.size(); ++j)
        if (destino[j] > ultima)
            ultima = destino[j];
    for (int j = 0; j < alvo.size(); ++j)
        db::executar(t, "Update TbContasRat Set Valor = :V Where Id = :ID",
                     {{"V", qv(destino[j] == ultima ? alvo[j].valor + (valor - soma) : alvo[j].valor)}, {"ID", destino[j]}});
}

} // namespace

void ratearParcela(db::Transacao &t, int idConta, const QString &modulo, int idDocumento)
{
    const ModuloContas &m = moduloContas(modulo);
    aplicarRateio(t, idConta, partilhar(t, m, idDocumento, ramo(t) == "EN"));
}

void GeraContas(db::Transacao &t, const QString &modulo, const QString &id, const QString &acao,
                const QDateTime &dataAprovacao, const QDateTime &agora)
{
    const ModuloContas &m = moduloContas(modulo);
    const int fks = m.codigo.toInt(), idFat = id.toInt();
    // Apportionment rows go with their instalments.
    const char *excluirRateio = "Delete From TbContasRat R Where R.Fk In (Select C.Id From TbContas C Where C.Fks = :FKS and C.Fk = :FK%1)";
    if (acao == "D") {
        db::executar(t, QString(excluirRateio).arg(""), {{"FKS", fks}, {"FK", idFat}});
        db::executar(t, "Delete From TbContas Where Fks = :FKS and Fk = :FK", {{"FKS", fks}, {"FK", idFat}});
        return;
    }

    const int idCaixa = contaCaixa(t);
    const QString segmento = ramo(t);
    const Fat f = lerFat(t, m, idFat);
    if (f.id == 0)
        return;
    const Partilha partilha = partilhar(t, m, f.fk, segmento == "EN");

    // Surplus instalments of a smaller count go.
    const QString surplus = QString(" and C.Parcela > :N and %1").arg(f.entrada ? "C.Parcela <> 'EN'" : "C.Prazo > 0");
    const std::map<QString, QVariant> ps = {{"FKS", fks}, {"FK", idFat}, {"N", QString::asprintf("%02d", f.n)}};
    db::executar(t, QString(excluirRateio).arg(surplus), ps);
    db::executar(t, "Delete From TbContas C Where C.Fks = :FKS and C.Fk = :FK" + surplus, ps);

    // The document, its latest status and the parameter row valid at the billing date.
    db::Consulta doc(t, QString("Select C.Id, C.IdCad, C.Observacoes, (Select First 1 S.Status From TbComSt S Where S.Fk = C.Id "
                                "Order By S.Id Desc) Z_Status, (Select First 1 P.FormaPagto From %1 P Where P.Data <= :DATA "
                                "Order By P.Data Desc, P.Id Desc) Z_Forma From TbCom C Where C.Id = :ID").arg(m.parametros));
    doc.bind("ID", f.fk).bind("DATA", f.data);
    doc.executar();
    QVariant idCad, observacoes;
    QString forma = "DINHEIRO";
    if (doc.proxima()) {
        idCad = doc["IDCAD"].toInt() == 0 ? QVariant() : doc["IDCAD"];
        observacoes = doc["OBSERVACOES"];
        if (!doc["Z_FORMA"].toString().isEmpty())
            forma = doc["Z_FORMA"].toString();
    }
    doc.fechar();
    const bool momento = (f.geraFin == "A" && dataAprovacao.isValid()) || (f.geraFin == "E" && f.entregue);
    const bool limparPagamentos = !momento && segmento != "ME" && acao != "E";
    const Decimal parte = f.n == 0 ? Decimal::bruto(0, 2) : (m.codigo == "3" ? f.valorBr : f.valorBr.dividirComoBanco(Decimal::inteiro(f.n)));
    // The account of the document's first payment, for slips and transfers.
    const QVariant contaPagto = db::escalar(t, "Select First 1 P.IdCCor From TbContasPagtos P Join TbContas C On (C.Id = P.Fk) "
                                               "Where C.Fks = :FKS and C.Fk = :FK Order By C.Prazo, C.Parcela, P.Id",
                                            {{"FKS", fks}, {"FK", idFat}});

    for (int i = 1; i <= f.n; ++i) {
        const QString parcela = numeroParcela(i, f.entrada);
        int idConta = db::escalar(t, "Select First 1 Id From TbContas Where Fks = :FKS and Fk = :FK and Parcela In (:P, :Q) Order By Id",
                                  {{"FKS", fks}, {"FK", idFat}, {"P", i == 1 ? QString("EN") : parcela}, {"Q", i == 1 ? QString("01") : parcela}})
                          .toInt();
        const QDate venc = vencimentoParcela(f.data, i, f.entrada, f.primVenc, f.intVenc);
        const int prazo = int(f.data.daysTo(venc));

        if (idConta == 0) {
            const bool cartao = forma == "CARTÃO";
            const bool comNumero = forma == "DINHEIRO" || forma == "TRANSFERÊNCIA" || cartao || forma == "OUTROS";
            idConta = db::escalar(t, "Insert Into TbContas (Tipo, Emissao, Data, TipoDoc, Numero, IdBandeira, IdCCor, IdBanco, Valor, "
                                     "PercDescontos, Descontos, ValorBruto, Prazo, Vencimento, Parcela, Fks, Fk) Values (:TIPO, :EMISSAO, "
                                     ":DATA, :DOC, :NUMERO, :BAND, :CCOR, Null, :VALOR, :PD, :D, :VALOR, :PRAZO, :VENC, :PARC, :FKS, :FK) "
                                     "Returning Id",
                                  {{"TIPO", m.codigo == "4" ? "D" : "C"}, {"EMISSAO", agora}, {"DATA", f.data}, {"DOC", forma},
                                   {"NUMERO", comNumero ? QVariant(QString::number(idFat)) : QVariant()},
                                   {"BAND", cartao ? QVariant(0) : QVariant()},
                                   {"CCOR", forma == "BOLETO" || forma == "TRANSFERÊNCIA" ? QVariant(contaPagto.isNull() ? 0 : contaPagto.toInt()) : QVariant()},
                                   {"VALOR", qv(parte)}, {"PD", cartao ? qv(Decimal::inteiro(0)) : QVariant()},
                                   {"D", cartao ? qv(Decimal::inteiro(0)) : QVariant()}, {"PRAZO", prazo}, {"VENC", venc},
                                   {"PARC", parcela}, {"FKS", fks}, {"FK", idFat}}).toInt();
            if (i == f.n && f.n >= 2)
                arredondarUltima(t, m, f, idConta);
        }

        // The update pass: the instalment as it stands, its payments and its card brand.
        db::Consulta c(t, "Select C.Valor, C.TipoDoc, C.Numero, C.IdBandeira, C.IdCCor, C.IdBanco, B.PercDesconto Z_PercBand, "
                          "(Select Sum(P.Valor) From TbContasPagtos P Where P.Fk = C.Id) Z_Pago From TbContas C "
                          "Left Join TbBandeiras B On (B.Id = C.IdBandeira) Where C.Id = :ID");
        c.bind("ID", idConta);
        c.executar();
        c.proxima();
        const QString doc2 = c["TIPODOC"].toString();
        const bool cartao = doc2 == "CARTÃO";
        const Decimal percBand = dec(c["Z_PERCBAND"]);
        QVariant numero = c["NUMERO"];
        if (!documentoSemNumero(doc2) && numero.toString().isEmpty())
            numero = QString::number(idFat);
        const QVariant band = cartao ? (c["IDBANDEIRA"].isNull() ? QVariant(0) : c["IDBANDEIRA"]) : QVariant();
        const QVariant ccor = doc2 == "BOLETO" || doc2 == "TRANSFERÊNCIA" ? (c["IDCCOR"].isNull() ? QVariant(idCaixa) : c["IDCCOR"]) : QVariant();
        const QVariant banco = doc2 == "CHEQUE" ? c["IDBANCO"] : QVariant();
        const Decimal pago = limparPagamentos ? Decimal::bruto(0, 2) : dec(c["Z_PAGO"]);
        const bool temPagamentos = !c["Z_PAGO"].isNull();
        Decimal valorFinal = dec(c["VALOR"]);
        c.fechar();
        if (limparPagamentos && temPagamentos)
            db::executar(t, "Delete From TbContasPagtos Where Fk = :ID", {{"ID", idConta}});

        QStringList sets = {"Data = :DATA", "Parcela = :PARC", "Numero = :NUMERO", "IdBandeira = :BAND", "IdCCor = :CCOR",
                            "IdBanco = :BANCO", "TipoDoc = :DOC", "IdCad = :IDCAD", "Historico = :HIST", "Observacoes = :OBS",
                            "PercDescontos = :PD", "Descontos = " + QString(cartao ? "Valor * (1 - (Cast(:PB As Numeric(18,2)) / 100))" : "Null")};
        std::map<QString, QVariant> p = {
            {"ID", idConta}, {"DATA", f.data}, {"PARC", parcela}, {"NUMERO", numero}, {"BAND", band}, {"CCOR", ccor}, {"BANCO", banco},
            {"DOC", doc2}, {"IDCAD", momento || segmento != "ME" ? idCad : QVariant()},
            {"HIST", (i == 1 && f.entrada ? "ENTRADA/" + QString::asprintf("%02d", f.n) : "PARC. " + parcela + "/" + QString::asprintf("%02d", f.n))
                         + " " + m.historico + " " + QString::number(f.fk)},
            {"OBS", observacoes}, {"PD", cartao ? qv(percBand) : QVariant()}};
        if (cartao)
            p["PB"] = qv(percBand);
        if (doc2 != "CHEQUE")
            sets << "AgenciaCh = Null" << "CCorrenteCh = Null" << "CorrentistaCh = Null" << "CpfCnpjCh = Null" << "TelefoneCh = Null"
                 << "IdCidadeCh = Null";
        if (acao == "P" || acao == "I") {
            sets << "Valor = :VALOR" << "ValorBruto = :BRUTO";
            valorFinal = cartao ? liquidoCartao(parte, percBand) : parte;
            p["VALOR"] = qv(valorFinal);
            p["BRUTO"] = qv(parte);
        }
        if (acao == "V" || acao == "I") {
            sets << "Prazo = :PRAZO" << "Vencimento = :VENC";
            p["PRAZO"] = prazo;
            p["VENC"] = venc;
        }
        if (f.idEmpresa != 0) {
            sets << "IdEmpresa = :EMP";
            p["EMP"] = f.idEmpresa;
        }
        QString situacao;
        if (momento || segmento == "ME")
            situacao = doc2 == "CHEQUE" ? "NÃO COMPENSADO" : doc2 == "BOLETO" ? "NÃO QUITADO" : (pago > Decimal::inteiro(0) ? "QUITADO" : "NÃO QUITADO");
        sets << "Situacao = :SIT" << "Quitado = :PAGO" << "NaoQuitado = :NAOPAGO" << "ValorTotal = :VALORTOTAL";
        p["SIT"] = situacao.isEmpty() ? QVariant() : QVariant(situacao);
        p["PAGO"] = qv(pago);
        p["NAOPAGO"] = qv(valorFinal - pago);
        p["VALORTOTAL"] = qv(valorFinal);
        db::executar(t, "Update TbContas Set " + sets.join(", ") + " Where Id = :ID", p);
        if (i == f.n && f.n >= 2 && (acao == "P" || acao == "I")) {
            arredondarUltima(t, m, f, idConta);
            // Paid and unpaid follow the value the last instalment ends with.
            db::executar(t, "Update TbContas Set NaoQuitado = Valor - Quitado, ValorTotal = Valor Where Id = :ID", {{"ID", idConta}});
        }
        aplicarRateio(t, idConta, partilha);
    }
}

void ExcluiContas(const QString &, const QDateTime &, const QString &, const QString &) {}

void DefineParcelas(db::Transacao &t, int idFat)
{
    db::Consulta fq(t, "Select Cf.ValorBr, Cf.Parcelas, C.Op, C.Id From TbComFat Cf Join TbCom C On (C.Id = Cf.Fk) Where Cf.Id = :ID");
    fq.bind("ID", idFat);
    fq.executar();
    if (!fq.proxima())
        return;
    const Decimal v = dec(fq[0]);
    const int n = fq[1].toString().trimmed().toInt();
    const QString modulo = fq[2].toString();
    const int idDoc = fq[3].toInt();
    fq.fechar();
    if (n <= 0)
        return;

    db::Consulta q(t, "Select Id, TipoDoc, Numero, IdBanco, IdCCor, IdBandeira, AgenciaCh, CCorrenteCh, CorrentistaCh, CpfCnpjCh, "
                      "TelefoneCh, IdCidadeCh, PercDescontos From TbContas Where Fks = :FKS and Fk = :FK Order By Prazo, Parcela");
    q.bind("FKS", modulo.toInt()).bind("FK", idFat);
    q.executar();
    QList<int> ids;
    Valores primeira;
    while (q.proxima()) {
        if (ids.isEmpty())
            for (int c = 1; c < q.colunas(); ++c)
                primeira[q.nomeColuna(c)] = q[c];
        ids.append(q[0].toInt());
    }
    q.fechar();
    if (ids.isEmpty())
        return;

    const QString forma = primeira["TIPODOC"].toString();
    const Decimal bruto = v.dividir(Decimal::inteiro(n), 2, db::Arredonda::MeioLonge);
    const qint64 cheque = primeira["NUMERO"].toString().toLongLong();
    for (int k = 0; k < ids.size(); ++k) {
        std::map<QString, QVariant> p = {{"ID", ids[k]}, {"DOC", forma}, {"PD", primeira["PERCDESCONTOS"]}, {"BRUTO", qv(bruto)}};
        QStringList sets = {"TipoDoc = :DOC", "PercDescontos = :PD", "ValorBruto = :BRUTO"};
        if (k > 0) {
            if (forma == "CHEQUE") {
                sets << "Numero = :NUM" << "IdBanco = :IDBANCO";
                p["NUM"] = QString::asprintf("%06lld", cheque + k);
                p["IDBANCO"] = primeira["IDBANCO"];
                for (const char *col : {"AGENCIACH", "CCORRENTECH", "CORRENTISTACH", "CPFCNPJCH", "TELEFONECH", "IDCIDADECH"}) {
                    sets << QString("%1 = :%1").arg(col);
                    p[col] = primeira[col];
                }
            } else if (forma == "BOLETO") {
                sets << "IdBanco = :IDBANCO";
                p["IDBANCO"] = primeira["IDBANCO"];
            } else if (forma == "TRANSFERÊNCIA") {
                sets << "IdCCor = :IDCCOR";
                p["IDCCOR"] = primeira["IDCCOR"];
            } else if (forma == "CARTÃO") {
                sets << "IdBandeira = :IDBAND";
                p["IDBAND"] = primeira["IDBANDEIRA"];
            }
        }
        db::executar(t, "Update TbContas Set " + sets.join(", ") + " Where Id = :ID", p);
    }
    // The difference, either way, on the last; then discounts and values from each gross value.
    const Decimal soma = dec(db::escalar(t, "Select Sum(ValorBruto) From TbContas Where Fks = :FKS and Fk = :FK",
                                         {{"FKS", modulo.toInt()}, {"FK", idFat}}));
    if (soma != v)
        db::executar(t, "Update TbContas Set ValorBruto = ValorBruto + :DIF Where Id = :ID", {{"DIF", qv(v - soma)}, {"ID", ids.last()}});
    const Partilha partilha = partilhar(t, moduloContas(modulo), idDoc, ramo(t) == "EN");
    for (int id : ids) {
        db::executar(t, "Update TbContas Set Descontos = ValorBruto * Coalesce(PercDescontos, 0) / 100 Where Id = :ID", {{"ID", id}});
        db::executar(t, "Update TbContas Set Valor = ValorBruto - Descontos, NaoQuitado = ValorBruto - Descontos, Quitado = 0, "
                        "ValorTotal = ValorBruto - Descontos Where Id = :ID", {{"ID", id}});
        aplicarRateio(t, id, partilha);
    }
}

} // namespace orb
