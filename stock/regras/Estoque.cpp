#include "Estoque.h"

#include "dados/Tabs.h"
#include "Recusa.h"
#include "acesso/Permissoes.h"

#include <array>

namespace orb {

using D = db::Decimal;
using C = CampoForm;

namespace {

D dec(const Valores &v, const QString &coluna)
{
    auto it = v.find(coluna);
    if (it == v.end() || !preenchido(it->second)) return {};
    if (it->second.metaType() == QMetaType::fromType<D>()) return it->second.value<D>();
    return D::ler(it->second.toString()).value_or(D{});
}

QVariant var(const D &d) { return QVariant::fromValue(d); }

// A percentage as a fraction, with room for the products that follow.
D fracao(const Valores &v, const QString &coluna) { return dec(v, coluna).dividir(D::inteiro(100), 9, db::Arredonda::MeioLonge); }

QString texto(const Valores &v, const QString &c)
{
    auto it = v.find(c);
    return it == v.end() ? QString() : it->second.toString().trimmed();
}

void comporPrecoExato(Valores &v)
{
    const D um = D::inteiro(1), cem = D::inteiro(100);
    const D custo = dec(v, "CUSTO");
    // One set of taxes for both levels; under the Simples regime only ICMS and the Simples rate count.
    const D imposto = texto(v, "REGTRIBFEDERAL") == "S"
                          ? fracao(v, "PERCICMS") + fracao(v, "PERCSIMPLES")
                          : fracao(v, "PERCICMS") + fracao(v, "PERCPIS") + fracao(v, "PERCCOFINS") + fracao(v, "PERCIRPJ") +
                                fracao(v, "PERCCSLL");
    const D ipi = fracao(v, "PERCIPI");
    for (const QString &nivel : {QStringLiteral("AT"), QStringLiteral("VAR")}) {
        const D comLucro = (custo * (um + fracao(v, "PERCLUCROMIN" + nivel))).comEscala(9);
        const D outros = fracao(v, "PERCCOM" + nivel) + fracao(v, "PERCFRETE" + nivel) + fracao(v, "PERCDESPFIN" + nivel);
        // Each figure follows its formula, negative ones too; only a division by zero leaves a field empty.
        for (const char *c : {"CUSTOOUTROS", "CUSTOTRIB", "PRVENDAMIN", "MARKUP"}) v[c + nivel] = QVariant();
        if ((um - outros).sinal() != 0) {
            const D p = comLucro.dividir(um - outros, 9, db::Arredonda::MeioLonge);
            // IPI is added on top of the grossed-up price, computed on P and never grossed up itself.
            const D valorIpi = (p * ipi).comEscala(9);
            v["CUSTOOUTROS" + nivel] = var((p - comLucro).comEscala(4));
            v["CUSTOTRIB" + nivel] = var(((p * imposto).comEscala(9) + valorIpi).comEscala(4));
            if ((um - imposto).sinal() != 0) {
                const D minimo = (p.dividir(um - imposto, 9, db::Arredonda::MeioLonge) + valorIpi).comEscala(4);
                v["PRVENDAMIN" + nivel] = var(minimo);
                if (custo.sinal() > 0) v["MARKUP" + nivel] = var(minimo.dividir(custo, 5, db::Arredonda::MeioLonge));
            }
        }
        if (custo.sinal() <= 0) v["MARKUP" + nivel] = var(D::bruto(0, 5));
        // The margin is measured against the cost, not the price.
        const int escala = nivel == "AT" ? 4 : 2;
        v["PERCMC" + nivel] = var(custo.sinal() > 0
                                      ? ((dec(v, "PRVENDA" + nivel) - custo) * cem).dividir(custo, escala, db::Arredonda::MeioLonge)
                                      : cem.comEscala(escala));
    }
}

} // namespace

void comporPreco(Valores &v)
{
    try {
        comporPrecoExato(v);
    } catch (const std::overflow_error &) {
        // Beyond what any price column holds: the cost typed cannot be right.
        throw Recusa(kValorInvalido, QStringLiteral("CUSTO"));
    }
}

void somarComissoes(Valores &v)
{
    for (const QString &nivel : {QStringLiteral("AT"), QStringLiteral("VAR")}) {
        D vendas, servicos;
        for (const char *quem : {"AT", "REP", "EMP", "OUT"}) {
            vendas += dec(v, QString("PERCCOM%1V%2").arg(quem, nivel));
            servicos += dec(v, QString("PERCCOM%1S%2").arg(quem, nivel));
        }
        // PERCCOMTECS* (the technician's share) is paid apart and stays out of the total.
        v["PERCCOMV" + nivel] = var(vendas.comEscala(2));
        v["PERCCOMS" + nivel] = var(servicos.comEscala(2));
    }
}

void conferirCodigoItem(db::Transacao &t, int id, const QString &codigo, const QString &campo)
{
    const QString c = codigo.trimmed();
    if (c.isEmpty()) return;
    // A code read by a scanner may land in either column: both are unique across all kinds of item.
    db::Consulta q(t, "Select First 1 Id, Tipo, Descricao From TbItens "
                      "Where ((Codigo = :C) or (CodigoBarras = :C)) and (Id <> :ID)");
    q.bind("C", c).bind("ID", id);
    q.executar();
    if (!q.proxima()) return;
    const QString descricao = q["DESCRICAO"].toString();
    if (q["TIPO"].toString() == "M") throw Recusa("Item já cadastrado! " + descricao, campo);
    throw Recusa("Este código já foi utilizado para cadastrar o Tipo de Serviço " + descricao + "!", campo);
}

int empresaPrincipal(db::Transacao &t)
{
    return db::escalar(t, "Select First 1 IdEmpresa From TbParGlobais Order By Id").toInt();
}

Valores novoItem(db::Transacao &t)
{
    Valores v = {{"CUSTO", var(D::bruto(0, 4))}, {"ORIGEM", "0"}, {"CST", "90"}, {"MODBCICMS", "4"},
                 {"MODBCICMSST", "5"}, {"DISPVENDA", "S"}, {"DISPWEB", "N"}, {"CONTRSERIAL", "NÃO"},
                 {"VERSAO", "C"}, {"TIPO", "M"}};
    db::Consulta q(t, "Select First 1 S.RegTribFed, S.PercIrpjMd, S.PercCsllMd, S.PercSimples, Ci.Uf "
                      "From TbCadEmpSit S Join TbCad C On (C.Id = S.Fk) Left Join TbCidades Ci On (Ci.Id = C.IdCidade) "
                      "Where S.Fk = :EMPRESA Order By S.Data Desc, S.Id Desc");
    q.bind("EMPRESA", empresaPrincipal(t));
    q.executar();
    if (q.proxima()) {
        const QString regime = q["REGTRIBFED"].toString().trimmed();
        v["REGTRIBFEDERAL"] = regime.isEmpty() ? QVariant() : regime;
        if (regime != "S") {
            v["PERCIRPJ"] = q["PERCIRPJMD"];
            v["PERCCSLL"] = q["PERCCSLLMD"];
        } else {
            v["PERCSIMPLES"] = q["PERCSIMPLES"];
        }
        if (!q["UF"].isNull()) v["UFDEST"] = q["UF"];
    }
    return v;
}

LinhaEstoque linhaPrincipal(db::Transacao &t)
{
    LinhaEstoque l;
    l.idEmpresa = empresaPrincipal(t);
    l.empresa = db::escalar(t, "Select Apelido From TbCad Where Id = :ID", {{"ID", l.idEmpresa}}).toString();
    return l;
}

QList<LinhaEstoque> lerEstoques(db::Transacao &t, int idItem)
{
    // Reserved: the quantities of this item in sales whose latest status is approved.
    db::Consulta q(t, R"(Select E.Id, E.IdEmpresa, C.Apelido, E.Localizacao, E.EstMinimo, E.EstMaximo, E.EstAtual,
        Coalesce((Select Sum(Ci.Qtd) From TbComItens Ci Join TbCom Co On (Co.Id = Ci.Fk)
                  Where (Ci.IdItem = E.Fk) and (Co.Op = 1)
                    and ((Select First 1 S.Status From TbComSt S Where S.Fk = Co.Id Order By S.Id Desc) = 'AP')), 0) Reservado
        From TbItensEst E Left Join TbCad C On (C.Id = E.IdEmpresa)
        Where E.Fk = :ITEM Order By C.Nome)");
    q.bind("ITEM", idItem);
    q.executar();
    QList<LinhaEstoque> r;
    while (q.proxima()) {
        LinhaEstoque l;
        l.id = q["ID"].toInt();
        l.idEmpresa = q["IDEMPRESA"].toInt();
        l.empresa = q["APELIDO"].toString();
        l.localizacao = q["LOCALIZACAO"].toString();
        l.minimo = q["ESTMINIMO"].value<D>();
        l.maximo = q["ESTMAXIMO"].value<D>();
        l.atual = q["ESTATUAL"].value<D>();
        l.reservado = q["RESERVADO"].value<D>();
        l.disponivel = l.atual - l.reservado;
        r << l;
    }
    return r;
}

namespace {

// Stock is counted, never owed: a negative figure typed for a company is refused, naming it.
void conferirQuantidades(const LinhaEstoque &l, const std::array<const char *, 3> &campos)
{
    if (l.minimo.negativo()) throw Recusa(QStringLiteral("Estoque mínimo inválido!"), campos[0]);
    if (l.maximo.negativo()) throw Recusa(QStringLiteral("Estoque máximo inválido!"), campos[1]);
    if (l.atual.negativo()) throw Recusa(QStringLiteral("Estoque atual inválido!"), campos[2]);
}

} // namespace

QPair<int, QString> empresaDoEstoque(db::Transacao &t, const QString &nome)
{
    if (nome.trimmed().isEmpty()) throw Recusa(QStringLiteral("Escolha a empresa primeiro!"), "EMPRESA");
    db::Consulta q(t, "Select First 1 Id, Apelido From TbCad Where (Em = 'S') and (Upper(Apelido) = Upper(:N))");
    q.bind("N", nome.trimmed());
    q.executar();
    if (!q.proxima()) throw Recusa(QStringLiteral("Empresa não cadastrada!"), "EMPRESA");
    return {q["ID"].toInt(), q["APELIDO"].toString()};
}

LinhaEstoque conferirLinhaEstoque(db::Transacao &t, const QString &empresa, const QString &localizacao,
                                  const QVariant &minimo, const QVariant &maximo, const QVariant &atual)
{
    LinhaEstoque l;
    std::tie(l.idEmpresa, l.empresa) = empresaDoEstoque(t, empresa);
    l.localizacao = localizacao.trimmed();
    auto numero = [](const QVariant &x, const char *campo) {
        if (!preenchido(x)) return D::bruto(0, 4);
        if (x.metaType() == QMetaType::fromType<D>()) return x.value<D>();
        return lerNumero(x.toString(), 4, campo);
    };
    l.minimo = numero(minimo, "ESTMINIMO");
    l.maximo = numero(maximo, "ESTMAXIMO");
    l.atual = numero(atual, "ESTATUAL");
    conferirQuantidades(l, {"ESTMINIMO", "ESTMAXIMO", "ESTATUAL"});
    return l;
}

int salvarItem(db::Transacao &t, int id, Valores v, const QList<LinhaEstoque> &estoques, const QString &ramo,
               const Sessao &quem)
{
    const bool mercadoria = texto(v, "TIPO").isEmpty() || texto(v, "TIPO") == "M";
    if (texto(v, "CODIGO").isEmpty()) throw Recusa(QStringLiteral("Defina o código primeiro!"), "CODIGO");
    conferirCodigoItem(t, id, texto(v, "CODIGO"), "CODIGO");
    conferirCodigoItem(t, id, texto(v, "CODIGOBARRAS"), "CODIGOBARRAS");
    if (ramo != "EN" && mercadoria && !preenchido(v["IDFABRICANTE"]))
        throw Recusa(QStringLiteral("Escolha o Fabricante primeiro!"), "IDFABRICANTE");
    if (texto(v, "DESCRICAO").isEmpty()) throw Recusa(QStringLiteral("Defina a descrição primeiro!"), "DESCRICAO");
    if (dec(v, "CUSTO").negativo()) throw Recusa(QStringLiteral("Preço de Custo inválido!"), "CUSTO");
    if (dec(v, "PRVENDAAT").negativo()) throw Recusa(QStringLiteral("Preço de venda no Atacado inválido!"), "PRVENDAAT");
    if (dec(v, "PRVENDAVAR").negativo()) throw Recusa(QStringLiteral("Preço de Venda no Varejo inválido!"), "PRVENDAVAR");
    if (texto(v, "UN").isEmpty()) throw Recusa(QStringLiteral("Defina a unidade primeiro!"), "UN");
    for (const char *c : {"MARKUPAT", "MARKUPVAR"})
        if (dec(v, c).negativo()) v[c] = QVariant();
    if (mercadoria && estoques.isEmpty()) throw Recusa(QStringLiteral("Defina o(s) estoque(s) primeiro!"), "ESTOQUES");
    QSet<int> empresas;
    const int principal = empresaPrincipal(t);
    for (const LinhaEstoque &l : estoques) {
        if (!l.idEmpresa) throw Recusa(QStringLiteral("Escolha a empresa primeiro!"), "ESTOQUES");
        if (empresas.contains(l.idEmpresa))
            throw Recusa("A empresa " + l.empresa + " já tem estoque neste item!", "ESTOQUES");
        // Sales may take a stored figure below zero; only a negative one typed now is refused.
        LinhaEstoque digitada = l;
        if (l.id) {
            db::Consulta q(t, "Select EstMinimo, EstMaximo, EstAtual From TbItensEst Where Id = :ID");
            q.bind("ID", l.id).executar();
            if (q.proxima()) {
                if (q[0].value<D>() == l.minimo) digitada.minimo = D{};
                if (q[1].value<D>() == l.maximo) digitada.maximo = D{};
                if (q[2].value<D>() == l.atual) digitada.atual = D{};
            }
        }
        conferirQuantidades(digitada, l.idEmpresa == principal ? std::array{"Z_ESTMINIMOP", "Z_ESTMAXIMOP", "Z_ESTATUALP"}
                                                                : std::array{"ESTOQUES", "ESTOQUES", "ESTOQUES"});
        empresas.insert(l.idEmpresa);
    }

    if (id == 0 && !v.count("TIPO")) v["TIPO"] = "M";
    DeclaracaoRegistro d;
    d.tabela = "TBITENS";
    const bool novo = id == 0;
    id = gravarRegistro(t, d, id, v, quem);


    // The stock rows as the edit holds them, written and logged as any detail of a record.
    EdicaoDetalhe e;
    QSet<int> mantidos;
    for (const LinhaEstoque &l : estoques) {
        mantidos.insert(l.id);
        e.linhas.append({l.id, {{"IDEMPRESA", l.idEmpresa}, {"LOCALIZACAO", l.localizacao.isEmpty() ? QVariant() : l.localizacao},
                                {"ESTMINIMO", var(l.minimo)}, {"ESTMAXIMO", var(l.maximo)}, {"ESTATUAL", var(l.atual)}},
                         true});
    }
    if (!novo)
        for (const LinhaEstoque &l : lerEstoques(t, id))
            if (!mantidos.contains(l.id)) e.excluidas << l.id;
    DeclaracaoRegistro comEstoques;
    comEstoques.detalhes = {detalheEstoques()};
    gravarDetalhes(t, comEstoques, id, {e}, quem);
    return id;
}

void conferirExclusaoItem(db::Transacao &t, int id)
{
    if (!id) throw Recusa(QStringLiteral("Selecione um produto primeiro!"));
    if (!db::escalar(t, "Select First 1 Id From TbComItens Where IdItem = :ID", {{"ID", id}}).isNull())
        throw Recusa(QStringLiteral("Este item não pode ser excluído por já estar sendo utilizada em uma operação comercial!"));
}

void excluirItem(db::Transacao &t, int id, const Sessao &quem)
{
    conferirExclusaoItem(t, id);
    excluirRegistro(t, declaracaoEstoque(), id, quem);
}

DetalheRegistro detalheEstoques()
{
    DetalheRegistro d;
    d.titulo = QStringLiteral("Estoques / Empresa");
    d.tabela = QStringLiteral("TBITENSEST");
    d.campos = {{"IDEMPRESA", "Empresa", CampoForm::Inteiro}, {"LOCALIZACAO", "Localização", CampoForm::Texto, {}, 20},
                {"ESTMINIMO", "Mínimo", CampoForm::Decimal, {}, 0, 4}, {"ESTMAXIMO", "Máximo", CampoForm::Decimal, {}, 0, 4},
                {"ESTATUAL", "Atual", CampoForm::Decimal, {}, 0, 4}};
    return d;
}

// ------------------------------------------------------------------ browse

QString clausulasFiltro(const FiltroEstoque &f)
{
    QString s;
    if (f.idGrupo) s += " and (I.IdGrupo = :GRUPO)";
    if (f.idSubgrupo) s += " and (I.IdSubgrupo = :SUBGRUPO)";
    const int disp = (f.disponiveis ? 1 : 0) | (f.indisponiveis ? 2 : 0) | (f.web ? 4 : 0);
    switch (disp) {
    case 1: s += " and (I.DispVenda = 'S') and (I.DispWeb = 'N')"; break;
    case 2: s += " and (I.DispVenda = 'N') and (I.DispWeb = 'N')"; break;
    case 4: s += " and (I.DispWeb = 'S')"; break;
    case 3: s += " and (I.DispWeb = 'N')"; break;
    case 5: s += " and ((I.DispVenda = 'S') or (I.DispWeb = 'S'))"; break;
    case 6: s += " and ((I.DispVenda = 'N') or (I.DispWeb = 'S'))"; break;
    default: break;  // none or all three: every item
    }
    if (f.novidade && !f.comum) s += " and (I.Versao = 'N')";
    if (f.comum && !f.novidade) s += " and (I.Versao = 'C')";
    return s;
}


namespace {

// An item's totals over its companies' stock rows, kept by the database in TbItensTotais (T);
// an item with no stock row has none there and counts as 0.
QString soma(const QString &coluna) { return "Coalesce(T." + coluna + ", 0)"; }

// The stock situations on the totals over companies; several ticked are joined with "or".
QString clausulasSituacao(const FiltroEstoque &f)
{
    const QString atual = soma("EstAtual"), minimo = soma("EstMinimo"), maximo = soma("EstMaximo");
    QStringList c;
    // Written as the totals' indexes are, so that the server finds these items through them.
    if (f.minimo) c << "(Iif((T.EstMinimo > 0) and (T.EstAtual <= T.EstMinimo), 1, 0) = 1)";
    if (f.maximo) c << "(Iif((T.EstMaximo > 0) and (T.EstAtual >= T.EstMaximo), 1, 0) = 1)";
    // Between the two, both included: an item at its minimum is both "Mínimo" and "Normal".
    if (f.normal) c << "((" + atual + " >= " + minimo + ") and (" + atual + " <= " + maximo + "))";
    if (f.zerado) c << "(" + atual + " <= 0)";
    return c.isEmpty() ? QString() : " and (" + c.join(" or ") + ")";
}

} // namespace

QString sqlEstoque(const QString &ordem, const QString &texto, const FiltroEstoque &f, std::map<QString, QVariant> &p,
                   Busca busca)
{
    // The totals are one row per item. "Mínimo" and "Máximo" alone need a stock row, so the few
    // items they find are looked up from the totals (an inner join lets the server start there)
    // instead of visiting every item in the order of the grid.
    const QString atual = soma("EstAtual"), minimo = soma("EstMinimo"), maximo = soma("EstMaximo");
    const bool soComEstoque = (f.minimo || f.maximo) && !f.normal && !f.zerado;
    QString sql =
        "Select I.Id, I.Codigo, I.CodigoBarras, I.Descricao, I.Un, I.Custo, I.PrVendaAt, I.PrVendaVar, I.DispVenda, "
        "I.DispWeb, I.Versao, I.Aplicacao, I.IdGrupo, I.IdSubgrupo, "
        "Gr.Grupo Z_Grupo, Sg.Subgrupo Z_Subgrupo, Fa.Fabricante Z_Fabricante, Gd.Grade Z_Grade, " +
        atual + " Z_EstAtual, " + minimo + " Z_EstMinimo, " + maximo + " Z_EstMaximo, "
        // What to buy to reach the minimum and the maximum.
        "Case When (" + atual + " < " + minimo + ") and (" + minimo + " > 0) Then " + minimo + " - " + atual + " Else 0 End Z_CompraMin, "
        "Case When (" + atual + " < " + maximo + ") and (" + maximo + " > 0) Then " + maximo + " - " + atual + " Else 0 End Z_CompraMax, "
        "Ep.EstAtual Z_EstAtualP, Ep.EstMinimo Z_EstMinimoP, Ep.EstMaximo Z_EstMaximoP "
        "From TbItens I " + QString(soComEstoque ? "Inner" : "Left") + " Join TbItensTotais T On (T.Fk = I.Id) "
        // The principal company: the IdEmpresa of the first global parameters row, read once.
        "Left Join (Select First 1 P.IdEmpresa From TbParGlobais P Order By P.Id) Pg On (1 = 1) "
        "Left Join TbGrupos Gr On (Gr.Id = I.IdGrupo) Left Join TbGruposSub Sg On (Sg.Id = I.IdSubgrupo) "
        "Left Join TbFabricantes Fa On (Fa.Id = I.IdFabricante) Left Join TbGrades Gd On (Gd.Id = I.IdGrade) "
        "Left Join TbItensEst Ep On ((Ep.Fk = I.Id) and (Ep.IdEmpresa = Pg.IdEmpresa)) "
        "Where (I.Tipo = 'M')" + clausulasFiltro(f) + clausulasSituacao(f);
    if (f.idGrupo) p["GRUPO"] = f.idGrupo;
    if (f.idSubgrupo) p["SUBGRUPO"] = f.idSubgrupo;

    QString ordenar = "I.Descricao";
    const QString t = texto.trimmed();
    if (!t.isEmpty()) p["T"] = t;
    // CONTAINING is a case-insensitive substring match; the text goes as a parameter.
    auto contem = [&](const QString &coluna) { return coluna + " Containing :T"; };
    // The upper-cased description is indexed: the items CONTAINING finds by the description's start.
    const QString inicio = QStringLiteral("Upper(I.Descricao) Starting With Upper(:T)");
    if (ordem == "CÓDIGO") {
        ordenar = "I.Codigo";
        if (!t.isEmpty()) sql += " and (" + contem("I.Codigo") + ")";
    } else if (ordem == "CÓDIGO BARRAS") {
        ordenar = "I.CodigoBarras";
        if (!t.isEmpty()) sql += " and (" + contem("I.CodigoBarras") + ")";
    } else if (ordem == "DESCRIÇÃO") {
        if (!t.isEmpty()) sql += " and (" + (busca == Busca::Inicio ? inicio : contem("I.Descricao")) + ")";
    } else if (ordem == "GRUPO/SUBGRUPO") {
        ordenar = "Gr.Grupo, Sg.Subgrupo, I.Descricao";
        if (!t.isEmpty()) sql += " and ((" + contem("Gr.Grupo") + ") or (" + contem("Sg.Subgrupo") + "))";
    } else if (ordem == "APLICAÇÃO") {
        ordenar = "I.Aplicacao";
        if (!t.isEmpty()) sql += " and (" + contem("I.Aplicacao") + ")";
    } else if (ordem == "SERIAL") {
        if (!t.isEmpty())
            sql += " and Exists (Select S.Id From TbComFatItensSeriais S Join TbComFatItens Fi On (Fi.Id = S.Fk) "
                   "Join TbComItens Ci On (Ci.Id = Fi.IdItem) Where (Ci.IdItem = I.Id) and (S.Serial Containing :T))";
    } else if (!t.isEmpty() && busca == Busca::Inicio) {
        // TODOS while typing: the description's start or a whole code (a scanner's), all indexed.
        sql += " and ((" + inicio + ") or (I.Codigo = :T) or (I.CodigoBarras = :T))";
    } else if (!t.isEmpty()) {
        // TODOS: any of the codes, the description or the application.
        sql += " and ((" + contem("I.Codigo") + ") or (" + contem("I.CodigoBarras") + ") or (" + contem("I.Descricao") +
               ") or (" + contem("I.Aplicacao") + "))";
    }
    // The few items at their minimum or maximum are sorted after they are found, instead of
    // walking the order's index over every item.
    if (soComEstoque) ordenar = ordenar.split(", ").join(" || '', ") + " || ''";
    return sql + " Order By " + ordenar;
}

// ------------------------------------------------------------------ declarations

namespace {

// The first delivered billing of an operation of kind `op` that carried the serial S.Serial out.
QString saida(const char *op, const char *coluna)
{
    return QString("(Select First 1 %2 From TbComFatItensSeriais S2 Join TbComFatItens F2 On (F2.Id = S2.Fk) "
                   "Join TbComFat Fv On (Fv.Id = F2.Fk) Join TbComItens C2 On (C2.Id = F2.IdItem) "
                   "Join TbCom Cv On (Cv.Id = C2.Fk) Where (S2.Serial = S.Serial) and (C2.IdItem = Ci.IdItem) "
                   "and (Cv.Op = %1) and (Fv.DataEntrega Is Not Null) Order By Fv.DataEntrega, Cv.Id)")
        .arg(QLatin1String(op), QLatin1String(coluna));
}


const QList<QPair<QString, QString>> kSimNao = {{"S", "SIM"}, {"N", "NÃO"}};

DeclaracaoRegistro montarEstoque()
{
    DeclaracaoRegistro d = declararRegistro("TEstoque", "Inventário - Estoque", "TrMercadorias", "TBITENS");
    d.filtro = "Tipo = 'M'";
    d.fixos = {{"TIPO", "M"}};
    d.colunas = {{"CODIGO", "Código"},       {"DESCRICAO", "Descrição"},   {"UN", "Un."},
                 {"Z_ESTATUAL", "Estoque"},  {"PRVENDAVAR", "Pr. Varejo"}, {"PRVENDAAT", "Pr. Atacado"},
                 {"Z_GRUPO", "Grupo"},       {"Z_SUBGRUPO", "Subgrupo"},   {"Z_FABRICANTE", "Fabricante"},
                 {"CODIGOBARRAS", "Código de barras"}};
    // The screen builds its own browse query (sqlEstoque); these serve until it is constructed.
    d.sqlGrade = "Select I.Id, I.Codigo, I.CodigoBarras, I.Descricao, I.Aplicacao From TbItens I Where I.Tipo = 'M'";
    const QStringList campos = {"DESCRICAO", "CODIGO", "CODIGOBARRAS", "DESCRICAO", "DESCRICAO", "APLICACAO", "DESCRICAO"};
    for (int i = 0; i < kOrdensEstoque.size(); ++i) d.ordens << qMakePair(kOrdensEstoque[i], campos[i]);
    const QString geral = "&1 Geral", adicionais = "Informações Adicionais", det = "&2 Descrição Detalhada",
                  aplic = "&3 Aplicações", compAt = "&4 Composição do Preço|Atacado", compVar = "&4 Composição do Preço|Varejo",
                  comAt = "Comissões|Atacado", comVar = "Comissões|Varejo", icms = "&6 NF-e|ICMS", federais = "&6 NF-e|Federais";
    d.campos = {
        {"CODIGO", "Código", C::Texto, {}, 14, 2, {}, {}, {}, geral},
        {"CODIGOBARRAS", "Código de barras", C::Texto, {}, 14, 2, {}, {}, {}, geral},
        {"DESCRICAO", "Descrição", C::Texto, {}, 240, 2, {}, {}, {}, geral},
        {"IDGRUPO", "Grupo", C::Consulta, {}, 0, 2, {}, "Select Id, Grupo From TbGrupos Order By Grupo", {}, geral},
        {"IDSUBGRUPO", "Subgrupo", C::Consulta, {}, 0, 2, {}, "Select Id, Subgrupo From TbGruposSub Order By Subgrupo", {}, geral},
        {"IDFABRICANTE", "Fabricante", C::Consulta, {}, 0, 2, {}, "Select Id, Fabricante From TbFabricantes Order By Fabricante", {}, geral},
        {"IDGRADE", "Grade", C::Consulta, {}, 0, 2, {}, "Select Id, Grade From TbGrades Order By Grade", {}, geral},
        {"UN", "Unidade", C::Texto, {}, 6, 2, {}, {}, {}, geral},
        {"CUSTO", "Preço de custo", C::Decimal, {}, 0, 4, {}, {}, {}, geral},
        {"PRVENDAAT", "Preço no atacado", C::Decimal, {}, 0, 4, {}, {}, {}, geral},
        {"PRVENDAVAR", "Preço no varejo", C::Decimal, {}, 0, 4, {}, {}, {}, geral},
        {"DISPVENDA", "Disponível para venda", C::Lista, {}, 0, 2, kSimNao, {}, {}, geral},
        {"CONTRSERIAL", "Controle de serial", C::Lista, {}, 0, 2,
         {{"SIM", "SIM"}, {"ENT", "ENTRADA"}, {"SAÍ", "SAÍDA"}, {"NÃO", "NÃO"}}, {}, {}, geral},
        {"TEMPO", "Tempo", C::Hora, {}, 5, 2, {}, {}, {}, adicionais},
        {"GARANTIA", "Garantia", C::Texto, {}, 100, 2, {}, {}, {}, adicionais},
        {"VALIDADE", "Validade (dias)", C::Inteiro, {}, 0, 2, {}, {}, {}, adicionais},
        {"PESO", "Peso", C::Decimal, {}, 0, 4, {}, {}, {}, adicionais},
        {"QTDPESO", "Quantidade por peso", C::Decimal, {}, 0, 4, {}, {}, {}, adicionais},
        {"QTDEMB", "Quantidade por embalagem", C::Decimal, {}, 0, 2, {}, {}, {}, adicionais},
        {"DISPWEB", "Disponível na web", C::Lista, {}, 0, 2, kSimNao, {}, {}, adicionais},
        {"ESTWEB", "Estoque na web", C::Decimal, {}, 0, 4, {}, {}, {}, adicionais},
        {"VERSAO", "Versão", C::Lista, {}, 0, 2, {{"C", "Comum"}, {"N", "Novidade"}}, {}, {}, adicionais},
        {"MODOBSVERSAO", "Modelo / observação da versão", C::Texto, {}, 30, 2, {}, {}, {}, adicionais},
        {"DATAEXPVERSAO", "Expira em", C::Data, {}, 0, 2, {}, {}, {}, adicionais},
        {"NUMORIGINAL", "Número original", C::Texto, {}, 100, 2, {}, {}, {}, adicionais},
        {"DESCRICAODET", "Descrição detalhada", C::Memo, {}, 0, 2, {}, {}, {}, det},
        {"APLICACAO", "Aplicação", C::Texto, {}, 255, 2, {}, {}, {}, aplic},
    };
    // The two price levels side by side, the same fields with their own suffix.
    for (const auto &[nivel, aba] : {std::pair{QStringLiteral("AT"), compAt}, std::pair{QStringLiteral("VAR"), compVar}}) {
        d.campos += {
            {"PERCLUCROMIN" + nivel, "Lucro Desejado %", C::Decimal, {}, 0, 2, {}, {}, {}, aba},
            {"PERCCOM" + nivel, "Outros Custos: Comissão %", C::Decimal, {}, 0, 2, {}, {}, {}, aba},
            {"PERCFRETE" + nivel, "Outros Custos: Frete %", C::Decimal, {}, 0, 2, {}, {}, {}, aba},
            {"PERCDESPFIN" + nivel, "Outros Custos: Desp. Financeiras %", C::Decimal, {}, 0, 2, {}, {}, {}, aba},
            {"CUSTOOUTROS" + nivel, "Outros Custos", C::Decimal, {}, 0, 4, {}, {}, {}, aba},
            {"CUSTOTRIB" + nivel, "Custo Tributário", C::Decimal, {}, 0, 4, {}, {}, {}, aba},
            {"PRVENDAMIN" + nivel, "Pr. Mínimo", C::Decimal, {}, 0, 4, {}, {}, {}, aba},
            {"MARKUP" + nivel, "Markup", C::Decimal, {}, 0, 5, {}, {}, {}, aba},
            {"PERCMC" + nivel, "Lucro (MC) %", C::Decimal, {}, 0, nivel == "AT" ? 4 : 2, {}, {}, {}, aba},
            {"PERCMCMIN" + nivel, "Lucro Mín. %", C::Decimal, {}, 0, 2, {}, {}, {}, aba},
            {"VRHORA" + nivel, "Valor da hora", C::Decimal, {}, 0, 2, {}, {}, {}, aba},
        };
    }
    for (const auto &[nivel, aba] : {std::pair{QStringLiteral("AT"), comAt}, std::pair{QStringLiteral("VAR"), comVar}}) {
        const QString v = "V" + nivel, s = "S" + nivel;
        d.campos += {
            {"PERCCOMAT" + v, "Vendas: Atendente %", C::Decimal, {}, 0, 2, {}, {}, {}, aba},
            {"PERCCOMREP" + v, "Vendas: Representante %", C::Decimal, {}, 0, 2, {}, {}, {}, aba},
            {"PERCCOMEMP" + v, "Vendas: Empresa %", C::Decimal, {}, 0, 2, {}, {}, {}, aba},
            {"PERCCOMOUT" + v, "Vendas: Outros %", C::Decimal, {}, 0, 2, {}, {}, {}, aba},
            {"PERCCOM" + v, "Vendas: Total %", C::Decimal, {}, 0, 2, {}, {}, {}, aba},
            {"PERCCOMAT" + s, "Serviços: Atendente %", C::Decimal, {}, 0, 2, {}, {}, {}, aba},
            {"PERCCOMREP" + s, "Serviços: Representante %", C::Decimal, {}, 0, 2, {}, {}, {}, aba},
            {"PERCCOMEMP" + s, "Serviços: Empresa %", C::Decimal, {}, 0, 2, {}, {}, {}, aba},
            {"PERCCOMOUT" + s, "Serviços: Outros %", C::Decimal, {}, 0, 2, {}, {}, {}, aba},
            {"PERCCOM" + s, "Serviços: Total %", C::Decimal, {}, 0, 2, {}, {}, {}, aba},
            {"PERCCOMTEC" + s, "Serviços: Técnico %", C::Decimal, {}, 0, 2, {}, {}, {}, aba},
        };
    }
    d.campos += {
        {"CODIGONFE", "Código na NF-e", C::Texto, {}, 13, 2, {}, {}, {}, icms},
        {"DESCRICAONFE", "Descrição na NF-e", C::Texto, {}, 240, 2, {}, {}, {}, icms},
        {"NCM", "NCM", C::Texto, {}, 8, 2, {}, {}, {}, icms},
        {"GENERO", "Gênero", C::Texto, {}, 2, 2, {}, {}, {}, icms},
        {"EXTIPI", "EX TIPI", C::Texto, {}, 3, 2, {}, {}, {}, icms},
        {"ORIGEM", "Origem", C::Lista, {}, 0, 2, {{"0", "0 - Nacional"}, {"1", "1 - Estrangeira (importação direta)"},
                                                    {"2", "2 - Estrangeira (mercado interno)"}}, {}, {}, icms},
        {"CST", "CST", C::Texto, {}, 2, 2, {}, {}, {}, icms},
        {"CSOSN", "CSOSN", C::Texto, {}, 3, 2, {}, {}, {}, icms},
        {"MODBCICMS", "Modalidade BC ICMS", C::Texto, {}, 1, 2, {}, {}, {}, icms},
        {"PERCICMS", "ICMS %", C::Decimal, {}, 0, 2, {}, {}, {}, icms},
        {"PERCREDBCICMS", "Redução BC ICMS %", C::Decimal, {}, 0, 2, {}, {}, {}, icms},
        {"MODBCICMSST", "Modalidade BC ICMS ST", C::Texto, {}, 1, 2, {}, {}, {}, icms},
        {"PERCICMSST", "ICMS ST %", C::Decimal, {}, 0, 2, {}, {}, {}, icms},
        {"PERCREDBCICMSST", "Redução BC ICMS ST %", C::Decimal, {}, 0, 2, {}, {}, {}, icms},
        {"PERCMVAICMSST", "MVA ICMS ST %", C::Decimal, {}, 0, 2, {}, {}, {}, icms},
        {"UFDEST", "UF de destino", C::Texto, {}, 2, 2, {}, {}, {}, icms},
        {"REGTRIBFEDERAL", "Regime tributário", C::Lista, {}, 0, 2,
         {{"S", "S - Simples Nacional"}, {"P", "P - Lucro Presumido"}, {"R", "R - Lucro Real"}}, {}, {}, federais},
        {"PERCIPI", "IPI %", C::Decimal, {}, 0, 2, {}, {}, {}, federais},
        {"PERCPIS", "PIS %", C::Decimal, {}, 0, 2, {}, {}, {}, federais},
        {"PERCCOFINS", "COFINS %", C::Decimal, {}, 0, 2, {}, {}, {}, federais},
        {"PERCIRPJ", "IRPJ %", C::Decimal, {}, 0, 2, {}, {}, {}, federais},
        {"PERCCSLL", "CSLL %", C::Decimal, {}, 0, 2, {}, {}, {}, federais},
        {"PERCSIMPLES", "Simples %", C::Decimal, {}, 0, 2, {}, {}, {}, federais},
        {"PERCISSQN", "ISSQN %", C::Decimal, {}, 0, 2, {}, {}, {}, federais},
        {"PERCINSS", "INSS %", C::Decimal, {}, 0, 2, {}, {}, {}, federais},
        {"DESCOUTTRIB", "Outro tributo", C::Texto, {}, 10, 2, {}, {}, {}, federais},
        {"PERCOUTTRIB", "Outro tributo %", C::Decimal, {}, 0, 2, {}, {}, {}, federais},
        {"OUTTRIB", "Outro tributo (valor)", C::Decimal, {}, 0, 2, {}, {}, {}, federais},
    };
    d.perguntaExclusao = "Tem certeza que deseja excluir este Item?";
    d.traco = "Item Excluído (";
    // Stock rows are edited on their own sheet, but go with the item all the same.
    d.dependentes = {{"TBITENSEST", "FK"}};
    d.detalhes = {
        {"&7 Fotos", "TBITENSFOTOS", "FK", "Select Id, Descricao, TipoFoto From TbItensFotos Where Fk = :MESTRE Order By Descricao",
         {{"DESCRICAO", "Descrição"}, {"TIPOFOTO", "Tipo"}},
         {{"DESCRICAO", "Descrição", C::Texto, {}, 50},
          {"FOTO", "Foto", C::Foto, "Defina o caminho da foto primeiro!", 0, 2, {}, {}, {}, {}, false, "TIPOFOTO"}},
         "Tem certeza que deseja excluir esta Foto?"},
        {"&8 Fornecedores", "TBITENSFORN", "FK",
         "Select F.*, C.Nome Z_Fornecedor From TbItensForn F Left Join TbCad C On (C.Id = F.IdFornecedor) "
         "Where F.Fk = :MESTRE Order By C.Nome",
         {{"IDFORNECEDOR", "Fornecedor"}, {"CODFORN", "Código no fornecedor"}, {"DESCRICAOFORN", "Descrição no fornecedor"},
          {"PRUNITARIO", "Preço"}, {"PERCCOMISSAO", "Comissão %"}},
         {{"IDFORNECEDOR", "Fornecedor", C::Consulta, "Escolha o fornecedor primeiro!", 0, 2, {},
           "Select Id, Nome From TbCad Where Fo = 'S' Order By Nome", {}, {}, false, {}, false, "Fornecedor não cadastrado!"},
          {"CODFORN", "Código no fornecedor", C::Texto, {}, 14},
          {"DESCRICAOFORN", "Descrição no fornecedor", C::Texto, {}, 240},
          {"PRUNITARIO", "Preço", C::Decimal, {}, 0, 4},
          {"PERCCOMISSAO", "Comissão %", C::Decimal, {}, 0, 2}},
         "Tem certeza que deseja excluir este Fornecedor?"},
        {"&9 Similares", "TBITENS", "ID",
         "Select S.Id, S.Codigo, S.Descricao, Sg.Subgrupo Z_Subgrupo, S.PrVendaAt, S.PrVendaVar From TbItens S "
         "Left Join TbGruposSub Sg On (Sg.Id = S.IdSubgrupo) Join TbItens I On (I.Id = :MESTRE) "
         "Where (S.Tipo = 'M') and (S.Id <> I.Id) and ((S.Descricao = I.Descricao) or "
         "((S.Aplicacao = I.Aplicacao) and (Coalesce(I.Aplicacao, '') <> ''))) Order By 2, 3, 4, 5, 6",
         {{"CODIGO", "Código"}, {"DESCRICAO", "Descrição"}, {"Z_SUBGRUPO", "Subgrupo"}, {"PRVENDAAT", "Pr. Atacado"},
          {"PRVENDAVAR", "Pr. Varejo"}}},
        {"Seriais", "TBCOMFATITENSSERIAIS", "FK",
         // A serial that entered with a delivered billing of any operation, the sale and the service
         // that later carried it out (painted apart), and the label prefix of the item's subgroup.
         "Select X.*, Iif(Coalesce(X.Z_IdVenda, X.Z_IdServico) Is Null, 'N', 'S') Z_Destaque From ("
         "Select S.Id, S.Serial, Co.Id Z_IdOperacao, Co.Op Z_Op, F.DataEntrega Z_DataEntrada, Sg.PrefixoEtiq, "
         + saida("1", "Cv.Id") + " Z_IdVenda, " + saida("1", "Fv.DataEntrega") + " Z_DataVenda, "
         + saida("2", "Cv.Id") + " Z_IdServico, " + saida("2", "Fv.DataEntrega") + " Z_DataServico "
         "From TbComFatItensSeriais S Join TbComFatItens Fi On (Fi.Id = S.Fk) Join TbComFat F On (F.Id = Fi.Fk) "
         "Join TbComItens Ci On (Ci.Id = Fi.IdItem) Join TbCom Co On (Co.Id = Ci.Fk) "
         "Join TbItens I On (I.Id = Ci.IdItem) Left Join TbGruposSub Sg On (Sg.Id = I.IdSubgrupo) "
         "Where (Ci.IdItem = :MESTRE) and (F.DataEntrega Is Not Null) "
         "and Exists (Select E.Id From TbItensEst E Where (E.Fk = Ci.IdItem) and (E.IdEmpresa = 1))) X "
         "Order By X.Serial, X.Z_DataEntrada",
         {{"SERIAL", "Serial"}, {"PREFIXOETIQ", "Prefixo"}, {"Z_IDOPERACAO", "Entrada (operação)"},
          {"Z_DATAENTRADA", "Data de entrada"}, {"Z_IDVENDA", "Venda"}, {"Z_DATAVENDA", "Data da venda"},
          {"Z_IDSERVICO", "Serviço"}, {"Z_DATASERVICO", "Data do serviço"}}},
        {"Últimas Compras", "TBCOMITENS", "IDITEM",
         "Select First 20 Ci.Id, Co.Id Z_Operacao, Co.Data, Cf.Nome Z_Fornecedor, Ci.Qtd, Ci.PrUnitario, Ci.Total "
         "From TbComItens Ci Join TbCom Co On (Co.Id = Ci.Fk) Left Join TbCad Cf On (Cf.Id = Co.IdCad) "
         "Where (Ci.IdItem = :MESTRE) and (Co.Op = 4) Order By Co.Data Desc, Co.Id Desc",
         {{"Z_OPERACAO", "Compra"}, {"DATA", "Data"}, {"Z_FORNECEDOR", "Fornecedor"}, {"QTD", "Qtd."}, {"PRUNITARIO", "Preço"},
          {"TOTAL", "Total"}}},
        {"Últimas Vendas/Serviços", "TBCOMITENS", "IDITEM",
         "Select First 20 Ci.Id, Co.Id Z_Operacao, Co.Data, Cc.Nome Z_Cliente, Ci.Qtd, Ci.PrUnitario, Ci.Total "
         "From TbComItens Ci Join TbCom Co On (Co.Id = Ci.Fk) Left Join TbCad Cc On (Cc.Id = Co.IdCad) "
         "Where (Ci.IdItem = :MESTRE) and (Co.Op In (1, 2)) Order By Co.Data Desc, Co.Id Desc",
         {{"Z_OPERACAO", "Operação"}, {"DATA", "Data"}, {"Z_CLIENTE", "Cliente"}, {"QTD", "Qtd."}, {"PRUNITARIO", "Preço"},
          {"TOTAL", "Total"}}},
    };
    return d;
}

QList<DeclaracaoRegistro> montarAuxiliares()
{
    QList<DeclaracaoRegistro> r;
    DeclaracaoRegistro grades = declararRegistro("TGrades", "Grades", "TrGrades", "TBGRADES");
    grades.colunas = {{"CODIGO", "Código"}, {"GRADE", "Grade"}};
    grades.ordens = {{"Grade", "GRADE"}, {"Código", "CODIGO"}};
    grades.campos = {{"CODIGO", "Código", C::Inteiro, "Digite o código da grade primeiro!"},
                     {"GRADE", "Grade", C::Texto, "Digite o nome da grade primeiro!", 30},
                     {"OBSERVACOES", "Observações", C::Texto, {}, 100}};
    grades.perguntaExclusao = "Tem certeza que deseja excluir esta Grade?";
    grades.traco = "Grade Excluída (";
    grades.detalhes = {{"Tamanhos", "TBGRADESNUM", "FK", "Select * From TbGradesNum Where Fk = :MESTRE Order By Ordem",
                        {{"ORDEM", "Ordem"}, {"NUMERO", "Tamanho"}},
                        {{"ORDEM", "Ordem", C::Inteiro, "Digite a ordem do tamanho primeiro!"},
                         {"NUMERO", "Tamanho", C::Texto, "Digite o tamanho primeiro!", 4}},
                        "Tem certeza que deseja excluir este Tamanho?"}};
    r << grades;

    DeclaracaoRegistro acond = declararRegistro("TAcondic", "Acondicionamentos", "TrAcond", "TBACOND");
    acond.colunas = {{"CODIGO", "Código"}, {"NOME", "Acondicionamento"}};
    acond.ordens = {{"Acondicionamento", "NOME"}, {"Código", "CODIGO"}};
    acond.campos = {{"CODIGO", "Código", C::Texto, "Digite o código do acondicionamento primeiro!", 10},
                    {"NOME", "Acondicionamento", C::Texto, "Digite o nome do acondicionamento primeiro!", 50},
                    {"OS", "Ordem de serviço", C::Inteiro},
                    {"OBSERVACOES", "Observações", C::Texto, {}, 100}};
    acond.perguntaExclusao = "Tem certeza que deseja excluir este Acondicionamento?";
    acond.traco = "Acondicionamento Excluído (";
    r << acond;

    DeclaracaoRegistro kits = declararRegistro("TKits", "Kits", "TrKits", "TBKITS");
    kits.colunas = {{"CODIGO", "Código"}, {"DESCRICAO", "Kit"}};
    kits.ordens = {{"Kit", "DESCRICAO"}, {"Código", "CODIGO"}};
    kits.campos = {{"CODIGO", "Código", C::Inteiro, "Digite o código do kit primeiro!"},
                   {"DESCRICAO", "Kit", C::Texto, "Digite a descrição do kit primeiro!", 50},
                   {"OBSERVACOES", "Observações", C::Texto, {}, 100}};
    kits.perguntaExclusao = "Tem certeza que deseja excluir este Kit?";
    kits.traco = "Kit Excluído (";
    kits.detalhes = {{"Componentes", "TBCOMPKITS", "KIT",
                      "Select K.*, I.Descricao Z_Item From TbCompKits K Left Join TbItens I On (I.Id = K.IdComp) "
                      "Where K.Kit = :MESTRE Order By K.Descricao",
                      {{"IDCOMP", "Item"}, {"QTD", "Qtd."}},
                      {{"IDCOMP", "Item", C::Consulta, "Selecione o item primeiro!", 0, 2, {},
                        "Select Id, Descricao From TbItens Where Tipo = 'M' Order By Descricao"},
                       {"QTD", "Quantidade", C::Inteiro, "Digite a quantidade primeiro!"}},
                      "Tem certeza que deseja excluir este Componente?"}};
    // A component keeps the item's kind, code and description, as kits are printed from them.
    kits.detalhes[0].completar = [](db::Transacao &t, Valores &v, bool) {
        db::Consulta q(t, "Select Codigo, Descricao From TbItens Where Id = :ID");
        q.bind("ID", v["IDCOMP"]);
        q.executar();
        if (!q.proxima()) return;
        v["TIPO"] = "ITEM";
        v["CODCOMP"] = q["CODIGO"].toString().left(10);
        v["DESCRICAO"] = q["DESCRICAO"].toString().left(50);
    };
    r << kits;
    return r;
}

} // namespace

const DeclaracaoRegistro &declaracaoEstoque()
{
    static const DeclaracaoRegistro d = montarEstoque();
    return d;
}

const QList<DeclaracaoRegistro> &registrosEstoque()
{
    static const QList<DeclaracaoRegistro> r = montarAuxiliares();
    return r;
}


} // namespace orb
