#include "Inventario.h"

#include "Recusa.h"
#include "acesso/Permissoes.h"

#include <optional>

namespace orb {

namespace {

using C = CampoForm;

bool vazio(const Valores &v, const QString &k) { return !preenchido(valor(v, k)); }

// A typed number or one read from the database; nothing when it is not a number.
std::optional<db::Decimal> decimal(const QVariant &x)
{
    if (!preenchido(x)) return std::nullopt;
    if (x.metaType() == QMetaType::fromType<db::Decimal>()) return x.value<db::Decimal>();
    return db::Decimal::ler(x.toString());
}

bool negativo(const Valores &v, const QString &k)
{
    const auto d = decimal(valor(v, k));
    return d && d->negativo();
}

// A person or company of TBCAD in one role, found by its code.
struct Parte {
    bool achou = false;
    int id = 0, codigo = 0;
    QString nome, apelido;
};

// The role flag of each kind of party: a fixed list, the only text that goes into the query.
QString flagDoTipo(const QString &tipo)
{
    if (tipo == kInterno || tipo == kViaFuncionario) return "FU";
    if (tipo == kExtCliente) return "CL";
    if (tipo == kExtFornecedor) return "FO";
    if (tipo == kViaTransportadora) return "TR";
    return {};
}

Parte buscarParte(db::Transacao &t, const QString &tipo, const QString &chave, const QVariant &v)
{
    Parte p;
    const QString flag = flagDoTipo(tipo);
    if (flag.isEmpty() || !preenchido(v)) return p;
    db::Consulta q(t, QString("Select Id, Codigo, Nome, Apelido From TbCad Where (%1 = :V) and (%2 = 'S')").arg(chave, flag));
    q.bind("V", v.toInt());
    q.executar();
    if (q.proxima()) {
        p.achou = true;
        p.id = q["ID"].toInt();
        p.codigo = q["CODIGO"].toInt();
        p.nome = q["NOME"].toString();
        p.apelido = q["APELIDO"].toString();
    }
    return p;
}

// The 20-character name columns keep the nickname, or the start of the name when there is none.
QString nomeCurto(const Parte &p) { return (p.apelido.trimmed().isEmpty() ? p.nome : p.apelido).left(20); }

// Group and subgroup are kept on the row by code and name as well as by ID.
void copiarGrupos(db::Transacao &t, Valores &v)
{
    db::Consulta g(t, "Select Codigo, Grupo From TbGrupos Where Id = :ID");
    g.bind("ID", valor(v, "IDGRUPO"));
    g.executar();
    const bool temGrupo = g.proxima();
    v["CODGRUPO"] = temGrupo ? g["CODIGO"] : QVariant();
    v["GRUPO"] = temGrupo ? QVariant(g["GRUPO"].toString().left(20)) : QVariant();
    db::Consulta s(t, "Select Codigo, Subgrupo From TbGruposSub Where Id = :ID");
    s.bind("ID", valor(v, "IDSUBGRUPO"));
    s.executar();
    const bool temSub = s.proxima();
    v["CODSUBGRUPO"] = temSub ? s["CODIGO"] : QVariant();
    v["SUBGRUPO"] = temSub ? QVariant(s["SUBGRUPO"].toString().left(20)) : QVariant();
}

void inserir(db::Transacao &t, const QString &tabela, const Valores &v)
{
    QStringList cols, params;
    for (const auto &[k, x] : v) {
        cols << k;
        params << ":" + k;
    }
    db::Consulta q(t, QString("Insert Into %1 (%2) Values (%3)").arg(tabela, cols.join(", "), params.join(", ")));
    for (const auto &[k, x] : v) q.bind(k, x);
    q.executar();
}

const QStringList kColunasCabecalho = {"DATA", "FORMAENVIORECTO", "CODTRANSPORTADORA", "TRANSPORTADORA", "IDMOTORISTA",
                                       "CODMOTORISTA", "MOTORISTA", "PLACAVEICULO", "NOTAFISCAL", "CODRESPMOVIMENTACAO",
                                       "RESPMOVIMENTACAO", "OBSERVACOES"};
const QStringList kColunasLinha = {"TIPOITEM", "IDGRUPO", "CODGRUPO", "GRUPO", "IDSUBGRUPO", "CODSUBGRUPO", "SUBGRUPO",
                                   "IDINVENTARIO", "CODIGO", "DESCRICAO", "TIPOMOVIMENTACAO", "QTD", "UN", "ORIGEM",
                                   "TIPOREMETENTE", "CODREMETENTE", "REMETENTE", "DESTINO", "TIPODESTINATARIO",
                                   "CODDESTINATARIO", "DESTINATARIO", "NOTAFISCAL", "OBSERVACOES"};
const QStringList kTiposParte = {kInterno, kExtCliente, kExtFornecedor};

// The approved movement's change to each supply: ENTRADA adds, SAÍDA subtracts; `sinal` -1 undoes it.
void moverEstoque(db::Transacao &t, int codigo, int sinal)
{
    std::map<int, db::Decimal> delta;
    db::Consulta q(t, "Select L.IdInventario, L.TipoMovimentacao, L.Qtd From TbItensMovInventario L "
                      "Join TbInventario I On (I.Id = L.IdInventario) Where (L.Movimentacao = :C) and (I.Tipo = :TIPO)");
    q.bind("C", codigo).bind("TIPO", kEstoque);
    q.executar();
    while (q.proxima()) {
        const db::Decimal qtd = decimal(q["QTD"]).value_or(db::Decimal());
        db::Decimal &d = delta[q["IDINVENTARIO"].toInt()];
        d = q["TIPOMOVIMENTACAO"].toString() == kEntrada ? d + qtd : d - qtd;
    }
    for (const auto &[id, d] : delta)
        db::executar(t, "Update TbInventario Set EstAtual = Coalesce(EstAtual, 0) + :D Where Id = :ID",
                     {{"D", QVariant::fromValue(sinal > 0 ? d : -d)}, {"ID", id}});
}


} // namespace

// ------------------------------------------------------------------ items

void conferirItem(db::Transacao &t, const QString &tipo, const Valores &v)
{
    if (vazio(v, "IDGRUPO")) throw Recusa("Escolha o grupo primeiro!", "IDGRUPO");
    if (vazio(v, "IDSUBGRUPO")) throw Recusa("Escolha o subgrupo primeiro!", "IDSUBGRUPO");
    if (vazio(v, "CODIGO")) throw Recusa("Digite o código primeiro!", "CODIGO");
    if (vazio(v, "DESCRICAO")) throw Recusa("Digite a descrição primeiro!", "DESCRICAO");
    if (negativo(v, "PRCOMPRA")) throw Recusa("Preço de compra inválido!", "PRCOMPRA");
    if (negativo(v, "ESTATUAL")) throw Recusa("Estoque atual inválido!", "ESTATUAL");
    if (vazio(v, "UN")) throw Recusa("Digite a unidade primeiro!", "UN");
    if (tipo == kImobilizado) {
        if (vazio(v, "DATAAQUISICAO")) throw Recusa("Digite a data de aquisição primeiro!", "DATAAQUISICAO");
        if (vazio(v, "NOTAFISCAL")) throw Recusa("Digite o número da Nota Fiscal primeiro!", "NOTAFISCAL");
        if (preenchido(valor(v, "INTMANUTENCAO")) && valor(v, "INTMANUTENCAO").toInt() < 0)
            throw Recusa("Intervalo de manutenção inválido!", "INTMANUTENCAO");
    }
}

DeclaracaoRegistro declaracaoItens(const QString &tipo)
{
    const bool ativo = tipo == kImobilizado;
    DeclaracaoRegistro d = declararRegistro("TInventario", ativo ? "Imobilizado" : "Estoque", ativo ? "TrImobilizado" : "TrInventario", "TBINVENTARIO");
    d.filtro = ativo ? "Tipo = 'IMOBILIZADO'" : "Tipo = 'ESTOQUE'";
    d.fixos = {{"TIPO", tipo}};
    d.colunas = {{"CODIGO", "Código"}, {"DESCRICAO", "Descrição"}, {"GRUPO", "Grupo"}, {"SUBGRUPO", "Subgrupo"},
                 {"UN", "Un."}, {"ESTATUAL", ativo ? "Quantidade" : "Estoque atual"}, {"PRCOMPRA", "Preço de compra"}};
    if (ativo) d.colunas << qMakePair(QString("DATAAQUISICAO"), QString("Aquisição"))
                         << qMakePair(QString("DATAULTMANUTENCAO"), QString("Última manutenção"));
    d.ordens = {{"Descrição", "DESCRICAO"}, {"Grupo", "GRUPO"}, {"Subgrupo", "SUBGRUPO"}};
    d.campos = {{"IDGRUPO", "Grupo", C::Consulta, {}, 0, 2, {}, "Select Id, Grupo From TbGrupos Order By Grupo"},
                {"IDSUBGRUPO", "Subgrupo", C::Consulta, {}, 0, 2, {}, "Select Id, Subgrupo From TbGruposSub Order By Subgrupo"},
                {"CODIGO", "Código", C::Inteiro},
                {"DESCRICAO", "Descrição", C::Texto, {}, 240},
                {"PRCOMPRA", "Preço de compra", C::Decimal, {}, 0, 4},
                {"ESTATUAL", ativo ? "Quantidade" : "Estoque atual", C::Decimal, {}, 0, 4},
                {"UN", "Unidade", C::Texto, {}, 4}};
    if (ativo)
        d.campos << C{"DATAAQUISICAO", "Data de aquisição", C::Data} << C{"NOTAFISCAL", "Nota Fiscal", C::Inteiro}
                 << C{"INTMANUTENCAO", "Intervalo de manutenção (dias)", C::Inteiro};
    d.validar = [tipo](db::Transacao &t, int id, const Valores &v) {
        conferirItem(t, tipo, v);
        // Codes are how people find an item on a label: one item per code.
        if (!db::escalar(t, "Select Id From TbInventario Where (Id <> :ID) and (Codigo = :CODIGO)",
                         {{"ID", id}, {"CODIGO", valor(v, "CODIGO")}}).isNull())
            throw Recusa("Código já existente!", "CODIGO");
    };
    d.completar = [](db::Transacao &t, Valores &v, bool) { copiarGrupos(t, v); };
    d.numerada = QStringLiteral("CODIGO");
    d.perguntaExclusao = "Tem certeza que deseja excluir este Item?";
    d.traco = "Item do Inventário Excluído (";
    return d;
}

void conferirExclusaoItemInventario(db::Transacao &t, int id)
{
    // Lines keep a copy of the item, but approval and its cancelling need the item itself.
    if (db::escalar(t, "Select Count(*) From TbItensMovInventario Where IdInventario = :ID", {{"ID", id}}).toInt() > 0)
        throw Recusa("Esse item não pode ser excluído por constar em movimentações!");
}

void excluirItemInventario(db::Transacao &t, int id, const Sessao &quem)
{
    exigirOperacao(t, quem, QStringLiteral("Excluir"));
    conferirExclusaoItemInventario(t, id);
    DeclaracaoRegistro d;
    d.tabela = QStringLiteral("TBINVENTARIO");
    d.dependentes = {{"TBMANUTINVENTARIO", "INVENTARIO"}};
    excluirRegistro(t, d, id);
}

// ------------------------------------------------------------------ maintenances

void conferirManutencao(db::Transacao &t, int id, const Valores &v)
{
    if (vazio(v, "INVENTARIO")) throw Recusa("Escolha o item do imobilizado primeiro!", "INVENTARIO");
    if (vazio(v, "DATA")) throw Recusa("Digite a data da manutenção primeiro!", "DATA");
    if (vazio(v, "TIPO")) throw Recusa("Escolha o tipo de manutenção primeiro!", "TIPO");
    const QString tipo = valor(v, "TIPO").toString();
    if (tipo != QStringLiteral("PERIÓDICA") && tipo != QStringLiteral("EVENTUAL")) throw Recusa("Tipo de manutenção inválida!", "TIPO");
    if (vazio(v, "LOCAL")) throw Recusa("Digite o local primeiro!", "LOCAL");
    if (vazio(v, "RELATORIO")) throw Recusa("Digite o relatório da manutenção primeiro!", "RELATORIO");
    if (!buscarParte(t, kInterno, "Codigo", valor(v, "CODRESPONSAVEL")).achou)
        throw Recusa("Escolha o responsável primeiro!", "CODRESPONSAVEL");
    if (!db::escalar(t, "Select Id From TbManutInventario Where (Id <> :ID) and (Inventario = :INV) and (Data = :DATA) and (Tipo = :TIPO)",
                     {{"ID", id}, {"INV", valor(v, "INVENTARIO")}, {"DATA", valor(v, "DATA")}, {"TIPO", tipo}}).isNull())
        throw Recusa("Já existe uma manutenção desse tipo nessa data para este item!", "DATA");
}

void atualizarUltimaManutencao(db::Transacao &t, int idInventario)
{
    db::executar(t, "Update TbInventario Set DataUltManutencao = (Select Max(Data) From TbManutInventario Where Inventario = :ID) "
                    "Where Id = :ID", {{"ID", idInventario}});
}

DeclaracaoRegistro declaracaoManutencoes()
{
    DeclaracaoRegistro d = declararRegistro("TInventario", "Manutenções", "TrManutInventario", "TBMANUTINVENTARIO");
    d.sqlGrade = "Select M.*, I.Codigo Z_Codigo, I.Descricao Z_Item From TbManutInventario M "
                 "Left Join TbInventario I On (I.Id = M.Inventario)";
    d.colunas = {{"DATA", "Data"}, {"Z_CODIGO", "Código"}, {"Z_ITEM", "Item"}, {"TIPO", "Tipo"}, {"LOCAL", "Local"},
                 {"RESPONSAVEL", "Responsável"}};
    d.ordens = {{"Data", "DATA"}, {"Item", "Z_ITEM"}, {"Local", "LOCAL"}};
    d.campos = {{"INVENTARIO", "Item do imobilizado", C::Consulta, {}, 0, 2, {},
                 "Select Id, Descricao || ' (' || Codigo || ')' From TbInventario Where Tipo = 'IMOBILIZADO' Order By Descricao"},
                {"DATA", "Data", C::Data},
                {"TIPO", "Tipo", C::Lista, {}, 0, 2, {{"PERIÓDICA", "PERIÓDICA"}, {"EVENTUAL", "EVENTUAL"}}},
                {"LOCAL", "Local", C::Texto, {}, 100},
                {"RELATORIO", "Relatório", C::Texto, {}, 240},
                {"CODRESPONSAVEL", "Responsável", C::Consulta, {}, 0, 2, {}, sqlPartes(kInterno)}};
    d.validar = conferirManutencao;
    d.completar = [](db::Transacao &t, Valores &v, bool) {
        v["RESPONSAVEL"] = nomeCurto(buscarParte(t, kInterno, "Codigo", valor(v, "CODRESPONSAVEL")));
    };
    d.perguntaExclusao = "Tem certeza que deseja excluir esta Manutenção?";
    d.traco = "Manutenção Excluída (";
    return d;
}

int salvarManutencao(db::Transacao &t, int id, const Valores &v, const Sessao &quem)
{
    exigirOperacao(t, quem, id ? QStringLiteral("Alterar") : QStringLiteral("Incluir"));
    const int antigo = id ? db::escalar(t, "Select Inventario From TbManutInventario Where Id = :ID", {{"ID", id}}).toInt() : 0;
    const int novo = gravarRegistro(t, declaracaoManutencoes(), id, v);
    atualizarUltimaManutencao(t, valor(v, "INVENTARIO").toInt());
    if (antigo && antigo != valor(v, "INVENTARIO").toInt()) atualizarUltimaManutencao(t, antigo);
    return novo;
}

void excluirManutencao(db::Transacao &t, int id, const Sessao &quem)
{
    exigirOperacao(t, quem, QStringLiteral("Excluir"));
    const int inv = db::escalar(t, "Select Inventario From TbManutInventario Where Id = :ID", {{"ID", id}}).toInt();
    excluirRegistro(t, declaracaoManutencoes(), id);
    atualizarUltimaManutencao(t, inv);
}

// ------------------------------------------------------------------ movements

QString sqlPartes(const QString &tipo)
{
    const QString flag = flagDoTipo(tipo);
    // Carriers are known by their name; people by their nickname, as the 20-character columns keep them.
    const QString nome = tipo == kViaTransportadora ? "Nome" : "Coalesce(Apelido, Nome)";
    return QString("Select Codigo, %1 || ' (' || Codigo || ')' From TbCad Where %2 = 'S' Order By 2").arg(nome, flag);
}

QString rotuloTipoParte(const QString &tipo)
{
    if (tipo == kExtCliente) return QStringLiteral("EXT. CLIENTE");
    if (tipo == kExtFornecedor) return QStringLiteral("EXT. FORNECEDOR");
    return tipo;
}

Valores novaMovimentacao(const QDate &hoje) { return {{"DATA", hoje}, {"FORMAENVIORECTO", kViaTransportadora}}; }

Valores novaLinha()
{
    return {{"TIPOITEM", kEstoque}, {"TIPOMOVIMENTACAO", kSaida}, {"TIPOREMETENTE", kInterno}, {"TIPODESTINATARIO", kInterno}};
}

void conferirLinha(db::Transacao &t, Valores &l, const Linhas &outras)
{
    if (vazio(l, "TIPOITEM")) throw Recusa("Escolha o tipo de item primeiro!", "TIPOITEM");
    const QString tipoItem = valor(l, "TIPOITEM").toString();
    if (tipoItem != kEstoque && tipoItem != kImobilizado) throw Recusa("Tipo de item inválido!", "TIPOITEM");
    if (vazio(l, "IDGRUPO")) throw Recusa("Selecione o grupo primeiro!", "IDGRUPO");
    if (vazio(l, "IDSUBGRUPO")) throw Recusa("Selecione o subgrupo primeiro!", "IDSUBGRUPO");
    db::Consulta item(t, "Select Id, Codigo, Descricao, Un, IdGrupo, IdSubgrupo From TbInventario Where (Id = :ID) and (Tipo = :TIPO)");
    item.bind("ID", preenchido(valor(l, "IDINVENTARIO")) ? valor(l, "IDINVENTARIO").toInt() : 0).bind("TIPO", tipoItem);
    item.executar();
    if (!item.proxima()) throw Recusa("Selecione o Item primeiro!", "IDINVENTARIO");
    if (vazio(l, "TIPOMOVIMENTACAO")) throw Recusa("Escolha o tipo de movimentação primeiro!", "TIPOMOVIMENTACAO");
    const QString mov = valor(l, "TIPOMOVIMENTACAO").toString();
    if (mov != kEntrada && mov != kSaida) throw Recusa("Tipo de movimentação inválido!", "TIPOMOVIMENTACAO");
    const auto qtd = decimal(valor(l, "QTD"));
    if (!qtd || qtd->sinal() <= 0) throw Recusa("Digite a quantidade primeiro!", "QTD");
    if (item["UN"].toString().trimmed().isEmpty())
        throw Recusa("Cadastre a unidade do item no cadastro de inventário primeiro!", "IDINVENTARIO");
    if (vazio(l, "ORIGEM")) throw Recusa("Digite a origem primeiro!", "ORIGEM");
    if (vazio(l, "TIPOREMETENTE")) throw Recusa("Escolha o tipo de remetente primeiro!", "TIPOREMETENTE");
    if (!kTiposParte.contains(valor(l, "TIPOREMETENTE").toString())) throw Recusa("Tipo de remetente inválido!", "TIPOREMETENTE");
    const Parte rem = buscarParte(t, valor(l, "TIPOREMETENTE").toString(), "Codigo", valor(l, "CODREMETENTE"));
    if (!rem.achou) throw Recusa("Escolha o remetente primeiro!", "CODREMETENTE");
    if (vazio(l, "DESTINO")) throw Recusa("Digite o destino primeiro!", "DESTINO");
    if (vazio(l, "TIPODESTINATARIO")) throw Recusa("Escolha o tipo de destinatário primeiro!", "TIPODESTINATARIO");
    if (!kTiposParte.contains(valor(l, "TIPODESTINATARIO").toString()))
        throw Recusa("Tipo de destinatário inválido!", "TIPODESTINATARIO");
    const Parte dest = buscarParte(t, valor(l, "TIPODESTINATARIO").toString(), "Codigo", valor(l, "CODDESTINATARIO"));
    if (!dest.achou) throw Recusa("Escolha o destinatário primeiro!", "CODDESTINATARIO");

    // The same item, way and parties twice in one movement would count twice at approval.
    const QStringList unicos = {"IDINVENTARIO", "TIPOMOVIMENTACAO", "TIPOREMETENTE", "CODREMETENTE", "TIPODESTINATARIO", "CODDESTINATARIO"};
    for (const Valores &o : outras) {
        bool igual = true;
        for (const QString &k : unicos) igual = igual && valor(o, k).toString() == valor(l, k).toString();
        if (igual) throw Recusa("Esse item já foi incluído nessa movimentação com o mesmo remetente e destinatário!", "IDINVENTARIO");
    }

    // What the line keeps of the item and the parties, as they are today.
    l["IDGRUPO"] = item["IDGRUPO"];
    l["IDSUBGRUPO"] = item["IDSUBGRUPO"];
    copiarGrupos(t, l);
    l["CODIGO"] = item["CODIGO"];
    l["DESCRICAO"] = item["DESCRICAO"];
    l["UN"] = item["UN"];
    l["QTD"] = QVariant::fromValue(qtd->comEscala(4));
    l["REMETENTE"] = nomeCurto(rem);
    l["DESTINATARIO"] = nomeCurto(dest);
}

bool movimentacaoAprovada(db::Transacao &t, int codigo)
{
    return !db::escalar(t, "Select DataAprovacao From TbMovInventario Where Codigo = :C", {{"C", codigo}}).isNull();
}

void conferirMovimentacaoAberta(db::Transacao &t, int codigo, const QString &operacao)
{
    if (!movimentacaoAprovada(t, codigo)) return;
    if (operacao == QStringLiteral("Excluir"))
        throw Recusa("Essa movimentação não pode ser excluída por já ter sido aprovada!");
    // Changing lines after approval would leave the stock out of step with them.
    throw Recusa("Essa movimentação não pode ser alterada por já ter sido aprovada!");
}

int salvarMovimentacao(db::Transacao &t, int codigo, Valores cab, Linhas linhas, const Sessao &quem)
{
    exigirOperacao(t, quem, codigo ? QStringLiteral("Alterar") : QStringLiteral("Incluir"));
    if (codigo) conferirMovimentacaoAberta(t, codigo, "Alterar");
    if (vazio(cab, "DATA")) throw Recusa("Digite a data da movimentação primeiro!", "DATA");
    const QString via = valor(cab, "FORMAENVIORECTO").toString();
    if (via != kViaTransportadora && via != kViaFuncionario && via != kViaOutros)
        throw Recusa("Escolha a forma de envio/recebimento primeiro!", "FORMAENVIORECTO");
    Parte levou;
    if (via != kViaOutros) {
        levou = buscarParte(t, via, "Codigo", valor(cab, "CODTRANSPORTADORA"));
        if (!levou.achou)
            throw Recusa(via == kViaTransportadora ? "Escolha a transportadora primeiro!" : "Escolha o funcionário primeiro!",
                         "CODTRANSPORTADORA");
    }
    const Parte motorista = buscarParte(t, kInterno, "Id", valor(cab, "IDMOTORISTA"));
    if (via != kViaOutros && !motorista.achou) throw Recusa("Escolha o motorista/funcionário primeiro!", "IDMOTORISTA");
    const Parte resp = buscarParte(t, kInterno, "Codigo", valor(cab, "CODRESPMOVIMENTACAO"));
    if (!resp.achou) throw Recusa("Escolha o responsável pela movimentação primeiro!", "CODRESPMOVIMENTACAO");
    if (linhas.isEmpty()) throw Recusa("Inclua o(s) itens(s) primeiro!");
    for (int i = 0; i < linhas.size(); ++i) conferirLinha(t, linhas[i], linhas.mid(0, i));

    Valores v;
    for (const QString &k : kColunasCabecalho) v[k] = valor(cab, k);
    v["CODTRANSPORTADORA"] = levou.achou ? QVariant(levou.codigo) : QVariant();
    v["TRANSPORTADORA"] = levou.achou ? QVariant(levou.nome.left(50)) : QVariant();
    v["IDMOTORISTA"] = motorista.achou ? QVariant(motorista.id) : QVariant();
    v["CODMOTORISTA"] = motorista.achou ? QVariant(motorista.codigo) : QVariant();
    v["MOTORISTA"] = motorista.achou ? QVariant(nomeCurto(motorista)) : QVariant();
    v["RESPMOVIMENTACAO"] = nomeCurto(resp);
    DeclaracaoRegistro movimentacao;
    movimentacao.tabela = QStringLiteral("TBMOVINVENTARIO");
    movimentacao.chave = QStringLiteral("CODIGO");
    movimentacao.numerada = QStringLiteral("CODIGO");
    codigo = gravarRegistro(t, movimentacao, codigo, v);
    // The lines are written again as the screen holds them.
    db::executar(t, "Delete From TbItensMovInventario Where Movimentacao = :C", {{"C", codigo}});
    for (const Valores &l : std::as_const(linhas)) {
        Valores w;
        for (const QString &k : kColunasLinha) w[k] = valor(l, k);
        w["MOVIMENTACAO"] = codigo;
        inserir(t, "TBITENSMOVINVENTARIO", w);
    }
    return codigo;
}

Linhas linhasDaMovimentacao(db::Transacao &t, int codigo)
{
    Linhas r;
    db::Consulta q(t, "Select * From TbItensMovInventario Where Movimentacao = :C Order By TipoMovimentacao, Codigo, Id");
    q.bind("C", codigo);
    q.executar();
    while (q.proxima()) {
        Valores l;
        for (const QString &k : kColunasLinha) l[k] = q[k];
        r << l;
    }
    return r;
}

void excluirMovimentacao(db::Transacao &t, int codigo, const Sessao &quem)
{
    exigirOperacao(t, quem, QStringLiteral("Excluir"));
    conferirMovimentacaoAberta(t, codigo, "Excluir");
    DeclaracaoRegistro d = declaracaoMovimentacoes();
    d.dependentes = {{"TBITENSMOVINVENTARIO", "MOVIMENTACAO"}};
    excluirRegistro(t, d, codigo);
}

void aprovarMovimentacao(db::Transacao &t, int codigo, const QDate &data, const QVariant &codResponsavel, const Sessao &quem)
{
    exigirOperacao(t, quem, quem.menuAtual, quem.moduloAtual, kAprovarMovimentacao);
    if (!codigo) throw Recusa("Selecione a movimentação que deseja aprovar!");
    const Valores atual = travarEstado(t, "TBMOVINVENTARIO", "CODIGO", codigo, {"DATAAPROVACAO"},
                                       "Selecione a movimentação que deseja aprovar!");
    if (!atual.at("DATAAPROVACAO").isNull()) throw Recusa("Essa movimentação já foi aprovada!");
    if (!data.isValid()) throw Recusa("Digite a data da aprovação primeiro!", "DATAAPROVACAO");
    if (!preenchido(codResponsavel)) throw Recusa("Escolha o Responsável pela Aprovacao primeiro!", "CODRESPAPROVACAO");
    const Parte resp = buscarParte(t, kInterno, "Codigo", codResponsavel);
    if (!resp.achou) throw Recusa("Funcionário não cadastrado!", "CODRESPAPROVACAO");
    mudarEstado(t, "TBMOVINVENTARIO", "CODIGO", codigo, {{"DATAAPROVACAO", data}, {"CODRESPAPROVACAO", resp.codigo}, {"RESPAPROVACAO", nomeCurto(resp)}},
                {{"DATAAPROVACAO", QVariant()}}, "Essa movimentação já foi aprovada!");
    moverEstoque(t, codigo, 1);
}

void cancelarAprovacao(db::Transacao &t, int codigo, const Sessao &quem)
{
    exigirOperacao(t, quem, quem.menuAtual, quem.moduloAtual, kCancelarAprovacao);
    if (!codigo) throw Recusa("Selecione uma movimentação primeiro!");
    const Valores atual = travarEstado(t, "TBMOVINVENTARIO", "CODIGO", codigo, {"DATAAPROVACAO"}, "Selecione uma movimentação primeiro!");
    if (atual.at("DATAAPROVACAO").isNull()) throw Recusa("Essa movimentação ainda não foi aprovada!");
    mudarEstado(t, "TBMOVINVENTARIO", "CODIGO", codigo,
                {{"DATAAPROVACAO", QVariant()}, {"CODRESPAPROVACAO", QVariant()}, {"RESPAPROVACAO", QVariant()}},
                {{"DATAAPROVACAO", atual.at("DATAAPROVACAO")}}, "Essa movimentação ainda não foi aprovada!");
    moverEstoque(t, codigo, -1);
}

DeclaracaoRegistro declaracaoMovimentacoes()
{
    DeclaracaoRegistro d = declararRegistro("TInventario", "Movimentação", "TrMovInventario", "TBMOVINVENTARIO");
    d.chave = "CODIGO";
    // The grid finds its rows by ID: here that is the movement's code.
    d.sqlGrade = "Select M.*, M.Codigo Id From TbMovInventario M";
    d.colunas = {{"CODIGO", "Código"}, {"DATA", "Data"}, {"FORMAENVIORECTO", "Envio/recebimento"},
                 {"TRANSPORTADORA", "Transportadora/funcionário"}, {"RESPMOVIMENTACAO", "Responsável"},
                 {"DATAAPROVACAO", "Aprovação"}, {"RESPAPROVACAO", "Aprovado por"}};
    d.ordens = {{"Data", "DATA"}, {"Responsável", "RESPMOVIMENTACAO"}, {"Transportadora/funcionário", "TRANSPORTADORA"}};
    d.campos = {{"DATA", "Data", C::Data},
                {"FORMAENVIORECTO", "Envio/recebimento por", C::Lista, {}, 0, 2,
                 {{kViaTransportadora, kViaTransportadora}, {kViaFuncionario, kViaFuncionario}, {kViaOutros, kViaOutros}}},
                {"CODTRANSPORTADORA", "Transportadora/funcionário", C::Consulta, {}, 0, 2, {}, sqlPartes(kViaTransportadora)},
                {"IDMOTORISTA", "Motorista/funcionário", C::Consulta, {}, 0, 2, {},
                 "Select Id, Coalesce(Apelido, Nome) || ' (' || Codigo || ')' From TbCad Where Fu = 'S' Order By 2"},
                {"PLACAVEICULO", "Placa do veículo", C::Texto, {}, 8},
                {"NOTAFISCAL", "Nota Fiscal", C::Inteiro},
                {"CODRESPMOVIMENTACAO", "Responsável", C::Consulta, {}, 0, 2, {}, sqlPartes(kInterno)},
                {"OBSERVACOES", "Observações", C::Texto, {}, 240}};
    d.perguntaExclusao = "Tem certeza que deseja excluir esta Movimentação?";
    d.traco = "Movimentação Excluída (";
    return d;
}

QStringList operacoesInventario()
{
    QStringList r;
    for (const char *folha : {"Estoque", "Imobilizado", "Manutenção", "Movimentação"})
        for (const char *op : {"Incluir", "Alterar", "Imprimir", "Excluir"}) r << QString::fromUtf8(op) + " " + QString::fromUtf8(folha);
    r << kAprovarMovimentacao << kCancelarAprovacao;
    return r;
}


} // namespace orb
