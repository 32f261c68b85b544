#include "ImpVenda.h"

#include "Modos.h"
#include "Recusa.h"
#include "Status.h"
#include "acesso/Permissoes.h"
#include "dados/Formatos.h"
#include "db/Decimal.h"
#include "relatorios/Relatorio.h"

#include <QHash>

namespace orb {

using db::Decimal;

namespace {

QString somenteDigitos(const QString &s)
{
    QString d;
    for (QChar c : s)
        if (c.isDigit()) d += c;
    return d;
}

QString codigo(int id) { return QString("%1").arg(id, 6, 10, QChar('0')); }

// The company's picture as an image the template shows without files of its own.
QString imagemDataUri(const QByteArray &b)
{
    if (b.startsWith("\x89PNG")) return "data:image/png;base64," + QString::fromLatin1(b.toBase64());
    if (b.startsWith("\xFF\xD8")) return "data:image/jpeg;base64," + QString::fromLatin1(b.toBase64());
    if (b.startsWith("GIF8")) return "data:image/gif;base64," + QString::fromLatin1(b.toBase64());
    if (b.startsWith("BM")) return "data:image/bmp;base64," + QString::fromLatin1(b.toBase64());
    return {};
}

// A value as the printout shows it: the column's name tells a CPF, CNPJ, CEP or telephone; a
// quantity loses needless decimals, a unit price keeps its four, money has two.
QString formatar(const QString &coluna, const QVariant &v)
{
    if (v.isNull()) return {};
    if (v.userType() == qMetaTypeId<Decimal>()) {
        const Decimal d = v.value<Decimal>();
        if (coluna.startsWith("QTD")) return textoQuantidade(d);
        if (d.escala() > 2) {
            // A unit price: two decimals at least, up to the four it is kept with.
            QString s = d.textoBR(d.escala());
            while (s.endsWith('0') && s.indexOf(',') < s.size() - 3) s.chop(1);
            return s;
        }
        return d.textoBR(2);
    }
    if (v.typeId() == QMetaType::QDateTime) {
        const QDateTime dt = v.toDateTime();
        return dt.time() == QTime(0, 0) ? dt.toString("dd/MM/yyyy") : dt.toString("dd/MM/yyyy hh:mm");
    }
    if (v.typeId() == QMetaType::QDate) return v.toDate().toString("dd/MM/yyyy");
    if (v.typeId() == QMetaType::QByteArray) return imagemDataUri(v.toByteArray());
    const QString s = v.toString().trimmed();
    if (coluna.startsWith("CPF") || coluna.startsWith("CNPJ")) return mascararDocumento(somenteDigitos(s));
    if (coluna.startsWith("CEP")) return mascararCep(somenteDigitos(s));
    if (coluna.startsWith("TELEFONE") || campoTelefone(coluna)) return mascararTelefone(somenteDigitos(s));
    return s;
}

// One row of a dataset: every column by its name as Firebird gives it (upper case), formatted;
// for money, "TEM" + the name is true when it is not zero, so that a template hides empty totals.
QVariantMap linha(const db::Consulta &q)
{
    QVariantMap m;
    for (int i = 0; i < q.colunas(); ++i) {
        const QString c = q.nomeColuna(i);
        const QVariant v = q[i];
        m[c] = formatar(c, v);
        if (v.userType() == qMetaTypeId<Decimal>()) m["TEM" + c] = !v.value<Decimal>().zero();
    }
    return m;
}

QVariantList linhas(db::Transacao &t, const QString &sql, const std::map<QString, QVariant> &p)
{
    db::Consulta q(t, sql);
    for (const auto &[k, v] : p) q.bind(k, v);
    q.executar();
    QVariantList l;
    while (q.proxima()) l << linha(q);
    return l;
}

// The header: the document, its company, its customer, the people named on it, its current status.
const char *kCabecalho =
    "Select C.*, Emp.Apelido Empresa, Emp.RazaoSocial RazEmpresa, Emp.Endereco EndEmpresa, Emp.Numero NumEmpresa, "
    "Emp.Complemento CompEmpresa, Emp.Bairro BairroEmpresa, CiE.Cidade CidEmpresa, CiE.Uf UfEmpresa, Emp.Cep CepEmpresa, "
    "Emp.Telefone1 TelefoneEmpresa1, Emp.Telefone2 TelefoneEmpresa2, Emp.Email EmailEmpresa, Emp.Site SiteEmpresa, "
    "Emp.InscrEstadual IEEmpresa, Emp.InscrMunicipal IMEmpresa, Emp.Cnpj CnpjEmpresa, Emp.Foto Logomarca, "
    "Ca.Pessoa, Ca.RazaoSocial, Ca.Endereco, Ca.Numero NumEndereco, Ca.Complemento, Ca.Bairro, Ci.Cidade Z_Cidade, Ci.Uf Z_Uf, "
    "Ca.Cep, Ca.Telefone1, Ca.Telefone2, Ca.Telefone3, Ca.Nome Cliente, Ca.TipoCliente, Ca.Cpf, Ca.Cnpj, Ca.Email, "
    "Ca.InscrEstadual IECliente, Ca.Codigo CodCliente, Fu1.Nome Z_Atendente, Rep.Nome Z_Representante, Fu2.Nome Z_Tecnico, "
    "Apr.Nome Z_Aprovador, St.Status Z_Status, Ac.Nome Z_Acond "
    "From TbCom C Left Join TbCad Emp On (Emp.Id = C.IdEmpresa) Left Join TbCidades CiE On (CiE.Id = Emp.IdCidade) "
    "Left Join TbCad Ca On (Ca.Id = C.IdCad) Left Join TbCidades Ci On (Ci.Id = Ca.IdCidade) "
    "Left Join TbCad Fu1 On (Fu1.Id = C.IdAtendente) Left Join TbCad Rep On (Rep.Id = C.IdRepresentante) "
    "Left Join TbCad Fu2 On (Fu2.Id = C.IdTecnico) "
    "Left Join TbComFat Cf On (Cf.Id = (Select First 1 F.Id From TbComFat F Where F.Fk = C.Id Order By F.Data, F.Id)) "
    "Left Join TbCad Apr On (Apr.Id = Cf.IdRespAprovacao) "
    "Left Join TbComSt St On (St.Id = (Select Max(S.Id) From TbComSt S Where S.Fk = C.Id)) "
    "Left Join TbAcond Ac On (Ac.Id = C.IdAcond) Where C.Id = :ID and C.Op = :OP";

// The lines of a kind, by the item's code, as the document's grid shows them.
const char *kLinhas =
    "Select I.Id, I.Qtd, I.Un, I.PrUnitario, I.SubtotalBr, I.PercDesconto, I.Desconto, I.SubtotalLq, I.Ipi, I.IcmsSt, I.Total, "
    "I.GarantiaDias, I.GarantiaKm, Coalesce(It.Codigo, I.CodItem) Codigo, "
    "Coalesce(Iif(I.IdItem Is Null, Null, It.Descricao), I.Descricao) Descricao1, It.CodigoBarras, It.ContrSerial, Cfop.Cfop "
    "From TbComItens I Left Join TbItens It On (It.Id = I.IdItem) Left Join TbCfop Cfop On (Cfop.Id = I.IdCfop) "
    "Where I.Fk = :ID and I.Tipo %1 Order By 14, I.Id";

const char *kFaturamentos =
    "Select F.*, Emp.Apelido Z_Empresa, Fu1.Nome Z_Atendente, Apr.Nome Z_Aprovador, Tr.Nome Z_Transportadora, "
    "Ent.Nome Z_Entregador From TbComFat F Left Join TbCad Emp On (Emp.Id = F.IdEmpresa) "
    "Left Join TbCad Fu1 On (Fu1.Id = F.IdAtendente) Left Join TbCad Apr On (Apr.Id = F.IdRespAprovacao) "
    "Left Join TbCad Tr On (Tr.Id = F.IdTransportadora) Left Join TbCad Ent On (Ent.Id = F.IdRespEntrega) "
    "Where F.Fk = :ID Order By F.Data, F.Id";

// The bank of an instalment: the card brand's account's bank, else the account's, else its own.
const char *kParcelas =
    "Select Ct.Parcela, Ct.Prazo, Ct.Vencimento, Ct.Valor, Ct.TipoDoc, Ct.Numero, Ct.Situacao, Bd.Bandeira, "
    "Coalesce(BcBd.Banco, BcCc.Banco, Bc.Banco) Z_Banco, Coalesce(BcBd.Numero, BcCc.Numero, Bc.Numero) Z_NumBanco, "
    "Cc.Conta Z_CCor, Ci.Cidade || ' - ' || Ci.Uf Z_CidadeCh, "
    "(Select Min(P.Data) From TbContasPagtos P Where P.Fk = Ct.Id) Z_DataPagto "
    "From TbContas Ct Join TbComFat F On (F.Id = Ct.Fk) "
    "Left Join TbBandeiras Bd On (Bd.Id = Ct.IdBandeira) Left Join TbCCor CcBd On (CcBd.Id = Bd.IdCCor) "
    "Left Join TbBancos BcBd On (BcBd.Id = CcBd.IdBanco) Left Join TbCCor Cc On (Cc.Id = Ct.IdCCor) "
    "Left Join TbBancos BcCc On (BcCc.Id = Cc.IdBanco) Left Join TbBancos Bc On (Bc.Id = Ct.IdBanco) "
    "Left Join TbCidades Ci On (Ci.Id = Ct.IdCidadeCh) "
    "Where F.Fk = :ID and Ct.Fks = :OP Order By Ct.Prazo, Ct.Parcela, Ct.Id";

const char *kSeriais =
    "Select Fi.IdItem Z_Linha, Coalesce(Gs.PrefixoEtiq, '') || S.Serial Serial, Gs.PrefixoEtiq "
    "From TbComFatItensSeriais S Join TbComFatItens Fi On (Fi.Id = S.Fk) Join TbComFat F On (F.Id = Fi.Fk) "
    "Join TbComItens I On (I.Id = Fi.IdItem) Left Join TbItens It On (It.Id = I.IdItem) "
    "Left Join TbGruposSub Gs On (Gs.Id = It.IdSubgrupo) Where F.Fk = :ID Order By S.Id";

// The newest row of the kind's parameters, as column -> value (empty when there is none).
QVariantMap parametros(db::Transacao &t, const QString &tabela)
{
    db::Consulta q(t, QString("Select First 1 * From %1 Order By Data Desc, Id Desc").arg(tabela));
    q.executar();
    QVariantMap m;
    if (q.proxima())
        for (int i = 0; i < q.colunas(); ++i) m[q.nomeColuna(i)] = q[i];
    return m;
}

} // namespace

QString mascararDocumento(const QString &d)
{
    if (d.size() == 11) return d.left(3) + '.' + d.mid(3, 3) + '.' + d.mid(6, 3) + '-' + d.mid(9);
    if (d.size() == 14) return d.left(2) + '.' + d.mid(2, 3) + '.' + d.mid(5, 3) + '/' + d.mid(8, 4) + '-' + d.mid(12);
    return d;
}

QString mascararCep(const QString &d) { return d.size() == 8 ? d.left(5) + '-' + d.mid(5) : d; }

QString textoQuantidade(const Decimal &d)
{
    QString s = d.textoBR(d.escala());
    if (s.contains(',')) {
        while (s.endsWith('0')) s.chop(1);
        if (s.endsWith(',')) s.chop(1);
    }
    return s;
}

ModeloImpressao modeloImpressao(int op, const QString &tipoImpressao)
{
    struct Linha { int op; const char *titulo, *completo, *curto, *outro; };
    // Rentals and purchases print on the sale's page; their short forms are their own.
    static const Linha tabela[] = {
        {1, "VENDA", "RelImpVenda", "RelImpVendaTk", "RelImpVendaCp"},
        {2, "ORDEM DE SERVIÇO", "RelImpOServico", "RelImpOServicoTk", "RelImpOServicoCp"},
        {3, "CONTRATO", "RelImpContrato", "RelImpContratoTk", "RelImpContratoCp"},
        {4, "COMPRA", "RelImpVenda", "RelImpVendaRed", "RelImpVendaExp"},
        {5, "LOCAÇÃO", "RelImpVenda", "RelImpVendaRed", "RelImpVendaExp"},
        {6, "PROJETO", "RelImpOServico", "RelImpOServicoTk", "RelImpOServicoCp"},
    };
    for (const Linha &l : tabela)
        if (l.op == op)
            return {l.titulo, tipoImpressao == "F" ? l.completo : tipoImpressao == "C" ? l.curto : l.outro};
    throw Recusa("Esta operação não pode ser impressa!");
}

Impressao prepararImpressao(db::Transacao &t, int op, int id, const QDateTime &dataApr, const QDateTime &dataEnt, const Sessao &quem,
                            const QString &sufixo)
{
    exigirOperacao(t, quem, "Imprimir");
    modeloImpressao(op, {});  // a kind without a printout is refused before anything is read
    const QVariantMap par = parametros(t, modoDoOp(op).parametros);
    const ModeloImpressao m = modeloImpressao(op, par.value("TIPOIMPRESSAO" + sufixo).toString().trimmed());

    const QVariantList cab = linhas(t, kCabecalho, {{"ID", id}, {"OP", op}});
    if (cab.isEmpty())
        throw Recusa("Esta operação não existe mais!");
    QVariantMap c = cab.first().toMap();
    const QString status = c.value("Z_STATUS").toString();
    c["Z_NOMESTATUS"] = nomeStatus(status);
    const bool juridica = c.value("PESSOA").toString() == "J";
    c["Z_CPFCNPJ"] = juridica ? c.value("CNPJ") : c.value("CPF");
    c["Z_ROTULOCPFCNPJ"] = juridica ? "CNPJ" : "CPF";
    static const QHash<QString, QString> prioridades{{"U", "URGENTE"}, {"N", "NORMAL"}, {"B", "BAIXA"}};
    c["Z_PRIORIDADE"] = prioridades.value(c.value("PRIORIDADE").toString());

    Impressao r;
    // Not approved yet: what the customer holds is a quotation, whatever the kind.
    const bool orcamento = !dataApr.isValid() && (status == "AO" || status == "AA");
    r.titulo = orcamento ? QStringLiteral("ORÇAMENTO") : m.titulo;
    r.modelo = m.modelo;
    r.numero = codigo(id);
    r.cliente = c.value("CLIENTE").toString();

    QVariantList mercadorias = linhas(t, QString(kLinhas).arg("= 'M'"), {{"ID", id}});
    const QVariantList seriais = linhas(t, kSeriais, {{"ID", id}});
    QHash<QString, QStringList> porLinha;
    for (const QVariant &s : seriais) porLinha[s.toMap().value("Z_LINHA").toString()] << s.toMap().value("SERIAL").toString();
    for (QVariant &l : mercadorias) {
        QVariantMap x = l.toMap();
        x["SERIAIS"] = porLinha.value(x.value("ID").toString()).join(", ");
        l = x;
    }

    QVariantMap &d = r.dados;
    d["TITULO"] = r.titulo;
    d["TITULOOPERACAO"] = m.titulo;
    d["NUMERO"] = r.numero;
    d["ORCAMENTO"] = orcamento;
    // Who is who on the paper, by kind.
    const bool compra = op == 4, contrato = op == 3;
    d["ROTULOCLIENTE"] = compra ? "FORNECEDOR" : contrato ? "CONTRATANTE" : "CLIENTE";
    d["ROTULOEMPRESA"] = contrato ? "CONTRATADA" : "EMPRESA";
    d["ROTULOATENDENTE"] = compra ? "Comprador" : "Atendente";
    d["ROTULOMERCADORIAS"] = op == 5 ? "ITENS LOCADOS" : "MERCADORIAS";
    const QString rotulo = modoDoOp(op).rotuloTotal;
    d["ROTULOTOTAL"] = orcamento ? QStringLiteral("Total do Orçamento") : rotulo.isEmpty() ? QStringLiteral("Total") : rotulo;
    d["cabecalho"] = c;
    d["mercadorias"] = mercadorias;
    d["servicos"] = linhas(t, QString(kLinhas).arg("in ('S', 'C')"), {{"ID", id}});
    QVariantList faturamentos = linhas(t, kFaturamentos, {{"ID", id}});
    for (QVariant &f : faturamentos) {
        QVariantMap x = f.toMap();
        x["Z_CONDPAGTO"] = x.value("CONDPAGTO") == "P" ? "A PRAZO" : "A VISTA";
        f = x;
    }
    d["faturamentos"] = faturamentos;
    d["parcelas"] = linhas(t, kParcelas, {{"ID", id}, {"OP", op}});
    d["seriais"] = seriais;
    d["TEMMERCADORIAS"] = !mercadorias.isEmpty();
    d["TEMSERVICOS"] = !d["servicos"].toList().isEmpty();
    d["TEMPARCELAS"] = !d["parcelas"].toList().isEmpty();

    // The report variables.
    d["IMPCONTRINTERNO"] = par.value("IMPCONTRINTERNO" + sufixo).toString() == "S";
    d["GARANTIA"] = par.value("GARANTIA").toString();
    d["MENSGARANTIA"] = par.value("MENSGARANTIA").toString();
    d["MENSAGEM"] = par.value("MENSAGEM" + sufixo).toString();
    // The closing message of the step reached: the delivery's, else the approval's.
    d["MENSFINAL"] = dataEnt.isValid() ? par.value("MENSENTREGA").toString()
                     : dataApr.isValid() ? par.value("MENSAPROVACAO").toString() : QString();
    d["DATAAPR"] = dataApr.isValid() ? dataApr.toString("dd/MM/yyyy hh:mm") : QString();
    d["DATAENT"] = dataEnt.isValid() ? dataEnt.toString("dd/MM/yyyy hh:mm") : QString();
    d["Z_CIDADE"] = c.value("Z_CIDADE");
    d["Z_UF"] = c.value("Z_UF");
    d["IMPRESSO"] = QDateTime::currentDateTime().toString("dd/MM/yyyy hh:mm");
    // One copy for the customer and, when the parameters ask for it, one the shop keeps.
    QVariantList vias{QVariantMap{{"VIA", "VIA DO CLIENTE"}, {"QUEBRA", false}}};
    if (d["IMPCONTRINTERNO"].toBool()) vias << QVariantMap{{"VIA", "VIA DE CONTROLE INTERNO"}, {"QUEBRA", true}};
    d["vias"] = vias;
    return r;
}

QString htmlImpressao(const Impressao &i) { return renderizarRelatorio(i.modelo, i.dados); }

QString assuntoImpressao(const Impressao &i)
{
    const QString empresa = i.dados.value("cabecalho").toMap().value("EMPRESA").toString();
    return i.titulo + " Nº " + i.numero + (empresa.isEmpty() ? QString() : " - " + empresa);
}

QString corpoImpressao(const Impressao &i)
{
    return "Ola, \r\rSegue em anexo: " + i.titulo + " Nº " + i.numero + "\r\rObrigado pela preferência!";
}

QString nomeArquivoImpressao(const Impressao &i) { return i.titulo + " " + i.numero; }

QString emailDoDocumento(db::Transacao &t, int id)
{
    return db::escalar(t, "Select Ca.Email From TbCom C Join TbCad Ca On (Ca.Id = C.IdCad) Where C.Id = :ID", {{"ID", id}})
        .toString()
        .trimmed();
}

} // namespace orb
