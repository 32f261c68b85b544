// The company's own inventory: item, movement, line and maintenance checks in their order,
// approval and its cancelling on the supplies' stock, and one movement made through the screen.

#include "Inventario.h"
#include "TInventario.h"
#include "apoio/TabsTeste.h"
#include "Recusa.h"

#include <QLineEdit>
#include <QTabWidget>
#include <QTest>
#include <gtest/gtest.h>

using namespace orb;

namespace {

QVariant dec(const char *s) { return QVariant::fromValue(db::Decimal(s)); }

// One change to the values, the message it must provoke, and the change that satisfies it.
struct Passo {
    Valores ruim;
    QString mensagem;
    Valores bom;
};

struct InventarioTest : teste::ComTabs {
    std::unique_ptr<db::Transacao> tr;
    int grupo = 0, subgrupo = 0;
    // Codes of the parties; IDs where a column keeps the ID.
    int funcionario = 0, idFuncionario = 0, cliente = 0, idCliente = 0, fornecedor = 0, transportadora = 0;

    void SetUp() override
    {
        ComTabs::SetUp();
        tr = std::make_unique<db::Transacao>(tabs.DbORB());
        grupo = sql("Insert Into TbGrupos (Codigo, Grupo, Tipo) Values (3, 'Limpeza', 'C') Returning Id").toInt();
        subgrupo = sql("Insert Into TbGruposSub (Fk, Codigo, Subgrupo, Tipo) Values (:G, 31, 'Descartáveis', 'C') Returning Id",
                       {{"G", grupo}}).toInt();
        idFuncionario = pessoa("FU", 501, "Joana");
        funcionario = 501;
        idCliente = pessoa("CL", 502, "Mercado Sol");
        cliente = 502;
        pessoa("FO", 503, "Distribuidora Lima");
        fornecedor = 503;
        pessoa("TR", 504, "Rápido Sul");
        transportadora = 504;
    }
    void TearDown() override
    {
        if (tr && tr->ativa()) tr->rollback();
        tr.reset();
        ComTabs::TearDown();
    }
    db::Transacao &t() { return *tr; }
    QVariant sql(const QString &s, const Valores &p = {}) { return db::escalar(*tr, s, p); }
    int pessoa(const QString &flag, int codigo, const QString &apelido)
    {
        return sql(QString("Insert Into TbCad (Codigo, Nome, Apelido, %1) Values (:C, :N, :A, 'S') Returning Id").arg(flag),
                   {{"C", codigo}, {"N", apelido + " Ltda"}, {"A", apelido}}).toInt();
    }
    int item(const QString &tipo, int codigo, const char *estoque, const QVariant &un = "UN")
    {
        return sql("Insert Into TbInventario (Codigo, Descricao, IdGrupo, IdSubgrupo, EstAtual, Un, Tipo) "
                   "Values (:C, :D, :G, :S, :E, :UN, :T) Returning Id",
                   {{"C", codigo}, {"D", "Item " + QString::number(codigo)}, {"G", grupo}, {"S", subgrupo},
                    {"E", dec(estoque)}, {"UN", un}, {"T", tipo}}).toInt();
    }
    db::Decimal estoque(int id)
    {
        return sql("Select EstAtual From TbInventario Where Id = :ID", {{"ID", id}}).value<db::Decimal>();
    }
    Valores linha(int idItem, const QString &mov, const char *qtd)
    {
        Valores l = novaLinha();
        for (const auto &[k, x] : Valores{{"TIPOITEM", sql("Select Tipo From TbInventario Where Id = :ID", {{"ID", idItem}})},
                                          {"IDGRUPO", grupo}, {"IDSUBGRUPO", subgrupo}, {"IDINVENTARIO", idItem}, {"TIPOMOVIMENTACAO", mov},
                                          {"QTD", dec(qtd)}, {"ORIGEM", "Almoxarifado"}, {"CODREMETENTE", funcionario}, {"DESTINO", "Filial"},
                                          {"CODDESTINATARIO", funcionario}})
            l.insert_or_assign(k, x);
        return l;
    }
    Valores cabecalho()
    {
        Valores c = novaMovimentacao(QDate(2026, 3, 10));
        for (const auto &[k, x] : Valores{{"CODTRANSPORTADORA", transportadora}, {"IDMOTORISTA", idFuncionario}, {"CODRESPMOVIMENTACAO", funcionario}})
            c.insert_or_assign(k, x);
        return c;
    }
    // Runs the steps: every "ruim" is in place at the start, so each refusal also proves the order.
    template <typename F> QStringList percorrer(Valores v, const QList<Passo> &passos, F salvar)
    {
        for (auto it = passos.rbegin(); it != passos.rend(); ++it)
            for (const auto &[k, x] : it->ruim) v.insert_or_assign(k, x);
        QStringList r;
        for (const Passo &p : passos) {
            for (const auto &[k, x] : p.ruim) v.insert_or_assign(k, x);
            try {
                salvar(v);
                r << "(gravou)";
            } catch (const Recusa &e) {
                r << e.texto;
            }
            for (const auto &[k, x] : p.bom) v.insert_or_assign(k, x);
        }
        salvar(v);  // all satisfied: it saves
        return r;
    }
    static QStringList mensagens(const QList<Passo> &passos)
    {
        QStringList r;
        for (const Passo &p : passos) r << p.mensagem;
        return r;
    }
};

TEST_F(InventarioTest, ItemChecksInOrderForSuppliesAndAssets)
{
    item(kEstoque, 900, "1");
    const QList<Passo> comuns = {
        {{{"IDGRUPO", QVariant()}}, "Escolha o grupo primeiro!", {{"IDGRUPO", grupo}}},
        {{{"IDSUBGRUPO", QVariant()}}, "Escolha o subgrupo primeiro!", {{"IDSUBGRUPO", subgrupo}}},
        {{{"CODIGO", QVariant()}}, "Digite o código primeiro!", {{"CODIGO", 10}}},
        {{{"DESCRICAO", ""}}, "Digite a descrição primeiro!", {{"DESCRICAO", "Detergente"}}},
        {{{"PRCOMPRA", dec("-0.0001")}}, "Preço de compra inválido!", {{"PRCOMPRA", dec("2.35")}}},
        {{{"ESTATUAL", dec("-1")}}, "Estoque atual inválido!", {{"ESTATUAL", dec("0")}}},
        {{{"UN", ""}}, "Digite a unidade primeiro!", {{"UN", "FR"}}},
    };
    const QList<Passo> ativos = {
        {{{"DATAAQUISICAO", QVariant()}}, "Digite a data de aquisição primeiro!", {{"DATAAQUISICAO", QDate(2025, 5, 2)}}},
        {{{"NOTAFISCAL", QVariant()}}, "Digite o número da Nota Fiscal primeiro!", {{"NOTAFISCAL", 4411}}},
        {{{"INTMANUTENCAO", -1}}, "Intervalo de manutenção inválido!", {{"INTMANUTENCAO", 180}}},
    };
    const QList<Passo> codigoRepetido = {{{{"CODIGO", 900}}, "Código já existente!", {{"CODIGO", 10}}}};
    for (const QString &tipo : {kEstoque, kImobilizado}) {
        SCOPED_TRACE(tipo.toStdString());
        const DeclaracaoRegistro d = declaracaoItens(tipo);
        const QList<Passo> passos = comuns + (tipo == kImobilizado ? ativos : QList<Passo>{}) + codigoRepetido;
        // A supply is saved with the asset fields left wrong: they are not its business.
        Valores inicio = {{"DATAAQUISICAO", QVariant()}, {"NOTAFISCAL", QVariant()}, {"INTMANUTENCAO", -1}};
        int id = 0;
        EXPECT_EQ(percorrer(inicio, passos, [&](const Valores &v) { id = gravarRegistro(t(), d, 0, v); }), mensagens(passos));
        EXPECT_EQ(sql("Select Tipo || '/' || CodGrupo || '/' || Grupo || '/' || Subgrupo From TbInventario Where Id = :ID",
                      {{"ID", id}}).toString(), tipo + "/3/Limpeza/Descartáveis");
        sql("Delete From TbInventario Where Id = :ID", {{"ID", id}});
    }
}

TEST_F(InventarioTest, MovementChecksInOrder)
{
    const QList<Passo> passos = {
        {{{"DATA", QVariant()}}, "Digite a data da movimentação primeiro!", {{"DATA", QDate(2026, 3, 10)}}},
        {{{"FORMAENVIORECTO", kViaTransportadora}, {"CODTRANSPORTADORA", QVariant()}}, "Escolha a transportadora primeiro!",
         {{"CODTRANSPORTADORA", transportadora}}},
        // Sent by an employee, the carrier chosen before no longer counts.
        {{{"FORMAENVIORECTO", kViaFuncionario}}, "Escolha o funcionário primeiro!", {{"CODTRANSPORTADORA", funcionario}}},
        {{{"IDMOTORISTA", idCliente}}, "Escolha o motorista/funcionário primeiro!", {{"IDMOTORISTA", idFuncionario}}},
        {{{"CODRESPMOVIMENTACAO", fornecedor}}, "Escolha o responsável pela movimentação primeiro!", {{"CODRESPMOVIMENTACAO", funcionario}}},
        // "_SEM" is no column: it stands for a movement still without lines.
        {{{"_SEM", true}}, "Inclua o(s) itens(s) primeiro!", {{"_SEM", false}}},
    };
    const Linhas linhas = {linha(item(kEstoque, 1, "0"), kEntrada, "1")};
    int codigo = 0;
    EXPECT_EQ(percorrer(cabecalho(), passos, [&](const Valores &v) {
                  codigo = salvarMovimentacao(t(), 0, v, v.at("_SEM").toBool() ? Linhas{} : linhas, teste::administrador(t()));
              }),
              mensagens(passos));
    EXPECT_EQ(sql("Select FormaEnvioRecto || '/' || Transportadora || '/' || Motorista || '/' || RespMovimentacao "
                  "From TbMovInventario Where Codigo = :C", {{"C", codigo}}).toString(),
              kViaFuncionario + "/Joana Ltda/Joana/Joana");
    EXPECT_EQ(linhasDaMovimentacao(t(), codigo).value(0).at("DESCRICAO").toString(), "Item 1");
}

TEST_F(InventarioTest, LineChecksInOrder)
{
    const int semUnidade = item(kEstoque, 1, "0", QVariant());
    const int ativo = item(kImobilizado, 2, "1");
    const int suprimento = item(kEstoque, 3, "0");
    const QList<Passo> passos = {
        {{{"TIPOITEM", QVariant()}}, "Escolha o tipo de item primeiro!", {}},
        {{{"TIPOITEM", "MATERIAL"}}, "Tipo de item inválido!", {{"TIPOITEM", kEstoque}}},
        {{{"IDGRUPO", QVariant()}}, "Selecione o grupo primeiro!", {{"IDGRUPO", grupo}}},
        {{{"IDSUBGRUPO", QVariant()}}, "Selecione o subgrupo primeiro!", {{"IDSUBGRUPO", subgrupo}}},
        {{{"IDINVENTARIO", ativo}}, "Selecione o Item primeiro!", {{"IDINVENTARIO", semUnidade}}},  // an asset is not a supply
        {{{"TIPOMOVIMENTACAO", QVariant()}}, "Escolha o tipo de movimentação primeiro!", {}},
        {{{"TIPOMOVIMENTACAO", "TROCA"}}, "Tipo de movimentação inválido!", {{"TIPOMOVIMENTACAO", kEntrada}}},
        {{{"QTD", QVariant()}}, "Digite a quantidade primeiro!", {}},
        {{{"QTD", dec("0")}}, "Digite a quantidade primeiro!", {{"QTD", dec("2.5")}}},
        {{}, "Cadastre a unidade do item no cadastro de inventário primeiro!", {{"IDINVENTARIO", suprimento}}},
        {{{"ORIGEM", ""}}, "Digite a origem primeiro!", {{"ORIGEM", "Depósito"}}},
        {{{"TIPOREMETENTE", QVariant()}}, "Escolha o tipo de remetente primeiro!", {}},
        {{{"TIPOREMETENTE", "EXTERNO"}}, "Tipo de remetente inválido!", {{"TIPOREMETENTE", kExtFornecedor}}},
        {{{"CODREMETENTE", cliente}}, "Escolha o remetente primeiro!", {{"CODREMETENTE", fornecedor}}},  // a customer is no supplier
        {{{"DESTINO", ""}}, "Digite o destino primeiro!", {{"DESTINO", "Loja"}}},
        {{{"TIPODESTINATARIO", QVariant()}}, "Escolha o tipo de destinatário primeiro!", {}},
        {{{"TIPODESTINATARIO", "LOJA"}}, "Tipo de destinatário inválido!", {{"TIPODESTINATARIO", kExtCliente}}},
        {{{"CODDESTINATARIO", funcionario}}, "Escolha o destinatário primeiro!", {{"CODDESTINATARIO", cliente}}},
    };
    Valores gravada;
    EXPECT_EQ(percorrer(novaLinha(), passos, [&](const Valores &v) {
                  gravada = v;
                  conferirLinha(t(), gravada, {});
              }),
              mensagens(passos));
    EXPECT_EQ(gravada["UN"].toString() + "|" + gravada["REMETENTE"].toString() + "|" + gravada["DESTINATARIO"].toString(),
              "UN|Distribuidora Lima|Mercado Sol");
    // The same item, way and parties again in one movement is refused; the other way is a new line.
    Valores repetida = gravada;
    EXPECT_THROW(conferirLinha(t(), repetida, {gravada}), Recusa);
    repetida["TIPOMOVIMENTACAO"] = kSaida;
    EXPECT_NO_THROW(conferirLinha(t(), repetida, {gravada}));
}

// ENTRADA 5 and SAÍDA 2 of one supply raise it by 3; the asset in the same movement keeps its quantity;
// an approved movement can't be deleted; cancelling restores the stock and clears the approval.
TEST_F(InventarioTest, ApprovalMovesSuppliesAndCancellingRestoresThem)
{
    const int suprimento = item(kEstoque, 1, "10");
    const int ativo = item(kImobilizado, 2, "1");
    Valores saida = linha(suprimento, kSaida, "2");
    saida["CODDESTINATARIO"] = cliente;
    saida["TIPODESTINATARIO"] = kExtCliente;
    const int codigo = salvarMovimentacao(t(), 0, cabecalho(), {linha(suprimento, kEntrada, "5"), saida, linha(ativo, kEntrada, "1")}, teste::administrador(t()));
    aprovarMovimentacao(t(), codigo, QDate(2026, 3, 11), funcionario, teste::administrador(t()));
    EXPECT_EQ(estoque(suprimento).texto() + " " + estoque(ativo).texto(), "13.0000 1.0000");
    EXPECT_EQ(sql("Select DataAprovacao || '/' || CodRespAprovacao || '/' || RespAprovacao From TbMovInventario Where Codigo = :C",
                  {{"C", codigo}}).toString(), "2026-03-11/501/Joana");

    const QList<std::pair<std::function<void()>, QString>> recusas = {
        {[&] { aprovarMovimentacao(t(), codigo, QDate(2026, 3, 12), funcionario, teste::administrador(t())); }, "Essa movimentação já foi aprovada!"},
        {[&] { excluirMovimentacao(t(), codigo, teste::administrador(t())); }, "Essa movimentação não pode ser excluída por já ter sido aprovada!"},
        {[&] { salvarMovimentacao(t(), codigo, cabecalho(), linhasDaMovimentacao(t(), codigo), teste::administrador(t())); },
         "Essa movimentação não pode ser alterada por já ter sido aprovada!"},
    };
    for (const auto &[acao, mensagem] : recusas) EXPECT_EQ(teste::recusa(acao), mensagem);
    EXPECT_EQ(estoque(suprimento), db::Decimal("13"));

    cancelarAprovacao(t(), codigo, teste::administrador(t()));
    EXPECT_EQ(estoque(suprimento).texto() + " " + estoque(ativo).texto(), "10.0000 1.0000");
    EXPECT_TRUE(sql("Select RespAprovacao From TbMovInventario Where Codigo = :C", {{"C", codigo}}).isNull());
    excluirMovimentacao(t(), codigo, teste::administrador(t()));
    EXPECT_EQ(sql("Select Count(*) From TbItensMovInventario Where Movimentacao = :C", {{"C", codigo}}).toInt(), 0);
}

// The approval's refusals; then, approved, the movement may take a supply below zero (typed stock may not).
TEST_F(InventarioTest, ApprovalRefusalsAndStockBelowZero)
{
    const int suprimento = item(kEstoque, 1, "1");
    const int codigo = salvarMovimentacao(t(), 0, cabecalho(), {linha(suprimento, kSaida, "3")}, teste::administrador(t()));
    const QList<std::tuple<int, QVariant, QString>> casos = {
        {0, funcionario, "Selecione a movimentação que deseja aprovar!"},
        {codigo, QVariant(), "Escolha o Responsável pela Aprovacao primeiro!"},
        {codigo, cliente, "Funcionário não cadastrado!"},
    };
    for (const auto &[c, resp, mensagem] : casos)
        EXPECT_EQ(teste::recusa([&] { aprovarMovimentacao(t(), c, QDate(2026, 3, 11), resp, teste::administrador(t())); }), mensagem);
    EXPECT_THROW(cancelarAprovacao(t(), 0, teste::administrador(t())), Recusa);
    aprovarMovimentacao(t(), codigo, QDate(2026, 3, 11), funcionario, teste::administrador(t()));
    EXPECT_EQ(estoque(suprimento), db::Decimal("-2"));
}

TEST_F(InventarioTest, MaintenanceChecksInOrderAndLastDateOnTheAsset)
{
    const int ativo = item(kImobilizado, 1, "1");
    const QList<Passo> passos = {
        {{{"INVENTARIO", QVariant()}}, "Escolha o item do imobilizado primeiro!", {{"INVENTARIO", ativo}}},
        {{{"DATA", QVariant()}}, "Digite a data da manutenção primeiro!", {{"DATA", QDate(2026, 2, 1)}}},
        {{{"TIPO", QVariant()}}, "Escolha o tipo de manutenção primeiro!", {}},
        {{{"TIPO", "ANUAL"}}, "Tipo de manutenção inválida!", {{"TIPO", "PERIÓDICA"}}},
        {{{"LOCAL", ""}}, "Digite o local primeiro!", {{"LOCAL", "Oficina"}}},
        {{{"RELATORIO", ""}}, "Digite o relatório da manutenção primeiro!", {{"RELATORIO", "Troca de filtro"}}},
        {{{"CODRESPONSAVEL", cliente}}, "Escolha o responsável primeiro!", {{"CODRESPONSAVEL", funcionario}}},
    };
    EXPECT_EQ(percorrer({}, passos, [&](const Valores &v) { salvarManutencao(t(), 0, v, teste::administrador(t())); }), mensagens(passos));
    const int eventual = salvarManutencao(t(), 0, {{"INVENTARIO", ativo}, {"DATA", QDate(2026, 3, 5)}, {"TIPO", "EVENTUAL"},
                                                    {"LOCAL", "Oficina"}, {"RELATORIO", "Correia"}, {"CODRESPONSAVEL", funcionario}}, teste::administrador(t()));
    EXPECT_EQ(sql("Select DataUltManutencao From TbInventario Where Id = :ID", {{"ID", ativo}}).toDate(), QDate(2026, 3, 5));
    excluirManutencao(t(), eventual, teste::administrador(t()));
    EXPECT_EQ(sql("Select DataUltManutencao From TbInventario Where Id = :ID", {{"ID", ativo}}).toDate(), QDate(2026, 2, 1));
}

// Through the screen: a movement with one line typed under it, saved and approved.
TEST_F(InventarioTest, MovementMadeAndApprovedThroughTheScreen)
{
    const int suprimento = item(kEstoque, 7, "4");
    tr->commit();
    tr->iniciar();
    TInventario tela;
    tela.show();
    FolhaMovimentacao &f = *tela.movimentacao();
    tela.folhas()->setCurrentWidget(&f);
    f.BtIncluirClick();
    ASSERT_EQ(f.estado(), FormCadastro::Estado::Incluindo);
    EXPECT_EQ(f.valorDoCampo("FORMAENVIORECTO").toString(), kViaTransportadora);
    EXPECT_EQ(f.valorLinha("TIPOMOVIMENTACAO").toString(), kSaida);
    f.definirValor("CODTRANSPORTADORA", transportadora);
    f.definirValor("IDMOTORISTA", idFuncionario);
    f.definirValor("CODRESPMOVIMENTACAO", funcionario);
    f.definirLinha("IDGRUPO", grupo);
    f.definirLinha("IDSUBGRUPO", subgrupo);
    f.definirLinha("IDINVENTARIO", suprimento);  // listed once the kind, group and subgroup are chosen
    f.definirLinha("TIPOMOVIMENTACAO", kEntrada);
    f.definirLinha("QTD", dec("5"));
    f.definirLinha("ORIGEM", "Fornecedor");
    f.definirLinha("CODREMETENTE", funcionario);
    f.definirLinha("DESTINO", "Almoxarifado");
    f.definirLinha("CODDESTINATARIO", funcionario);
    auto *obs = f.findChild<QLineEdit *>("L_OBSERVACOES");
    obs->setFocus();
    QTest::keyClick(obs, Qt::Key_Return);
    ASSERT_EQ(f.linhas().size(), 1) << msg.avisos.join(" | ").toStdString();
    EXPECT_EQ(f.valorLinha("TIPOMOVIMENTACAO").toString(), kSaida);  // the next line starts over
    f.BtSalvarClick();
    ASSERT_EQ(f.estado(), FormCadastro::Estado::Navegando) << msg.avisos.join(" | ").toStdString();
    ASSERT_EQ(f.modelo()->rowCount(), 1);

    f.pedirAprovacao = [&](QDate &data, QVariant &resp) {
        data = QDate(2026, 3, 11);
        resp = funcionario;
        return true;
    };
    f.BtAprovarClick();
    EXPECT_EQ(estoque(suprimento), db::Decimal("9"));
    EXPECT_EQ(f.modelo()->valor(0, "RESPAPROVACAO").toString(), "Joana");
}

} // namespace
