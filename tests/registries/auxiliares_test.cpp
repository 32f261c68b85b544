// The lookup registries: rules of each declaration, and one registry driven through its widgets.

#include "Auxiliares.h"
#include "ui/FormRegistro.h"
#include "apoio/MonitorTeste.h"
#include "apoio/TabsTeste.h"
#include "acesso/Sessao.h"
#include "dados/Monitor.h"
#include "dados/Tabs.h"
#include "ui/Impressao.h"
#include "Recusa.h"
#include "ui/Mensagens.h"

#include <QComboBox>
#include <QJsonArray>
#include <QJsonObject>
#include <QSignalSpy>
#include <QLineEdit>
#include <QPushButton>
#include <QTableView>
#include <QTest>
#include <gtest/gtest.h>
#include <tuple>

using namespace orb;

namespace {

struct AuxiliaresTest : teste::ComTabs {
};

// A plausible value for any declared field.
QVariant preencher(const CampoForm &c)
{
    switch (c.tipo) {
    case CampoForm::Inteiro: return 7;
    case CampoForm::Decimal: return QVariant::fromValue(db::Decimal("12.5"));
    case CampoForm::Data: return QDate(2026, 12, 25);
    case CampoForm::Hora: return "08:00";
    case CampoForm::Lista: return c.itens.first().first;
    case CampoForm::Consulta: return 1;  // no foreign keys: any ID stands for the chosen row
    default: return "X";
    }
}

Valores completos(const DeclaracaoRegistro &d)
{
    Valores v;
    for (const CampoForm &c : d.campos) v[c.coluna] = preencher(c);
    return v;
}

// With every field empty, then filling them one at a time in screen order, each save is refused
// with the message of the next required field, and the last one succeeds.
TEST_F(AuxiliaresTest, RequiredFieldsInScreenOrder)
{
    const QMap<QString, QStringList> esperado = {
        {"TCidades", {"Digite o nome da cidade primeiro!", "Digite o estado primeiro!", "Digite o Cep primeiro!"}},
        {"TBancos", {"Digite o Nº do Banco primeiro!", "Digite o nome do banco primeiro!"}},
        {"TGrupos", {"Digite o código do grupo primeiro!", "Digite o nome do grupo primeiro!", "Defina o tipo do Grupo primeiro!"}},
        {"TSubgrupos", {"Digite o código do subgrupo primeiro!", "Digite o nome do subgrupo primeiro!", "Defina o tipo do subgrupo primeiro!"}},
        {"TCategorias", {"Digite o código da categoria primeiro!", "Digite o nome da categoria primeiro!"}},
        {"TCfop", {"Digite a CFOP primeiro!", "Digite a descrição primeiro!"}},
        {"TIcms", {"Digite a alíquota de ICMS da Origem primeiro!", "Digite a alíquota de ICMS do Destino primeiro!"}},
        {"TFeriados", {"Digite a data do feriado primeiro!", "Digite a descrição do feriado primeiro!"}},
        {"THorarios", {"Digite o nome do horário primeiro!", "Digite a hora de entrada primeiro!", "Digite a hora de saída primeiro!"}},
        {"TOpTel", {"Digite o Código para ligações de longa distância primeiro!", "Digite o nome da Operadora primeiro!"}},
        {"TEspecialidades", {"Digite o nome da Especialidade primeiro!"}},
        {"TConsultorios", {"Digite o nome do Consultório primeiro!"}},
        {"TEtapasCom", {"Defina o tipo de operação primeiro!", "Digite a ordem sequencial da Etapa primeiro!",
                        "Digite o nome da Etapa primeiro!"}},
        {"TStatusCom", {"Selecione a Etapa primeiro!", "Defina o tipo de operação primeiro!", "Digite o texto do Status primeiro!",
                        "Digite a ordem sequencial do Status primeiro!"}},
        {"TLaboratorios", {"Digite o código do Laboratórioprimeiro!", "Digite o nome do Laboratório primeiro!"}},
        {"TExames", {"Digite o código do Exame primeiro!", "Digite o nome do Exame/Procedimento primeiro!"}},
        {"TTextos", {"Digite o título do Modelo de Texto primeiro!"}},
    };
    for (const DeclaracaoRegistro &d : registrosAuxiliares()) {
        if (d.campos.isEmpty()) continue;  // looked up, never saved
        SCOPED_TRACE(d.classe.toStdString());
        db::Transacao t(tabs.DbORB());
        Valores v;
        for (const CampoForm &c : d.campos)
            if (c.obrigatorio.isEmpty()) v[c.coluna] = preencher(c);
        QStringList recusas;
        for (const CampoForm &c : d.campos) {
            if (c.obrigatorio.isEmpty()) continue;
            try {
                gravarRegistro(t, d, 0, v);
                ADD_FAILURE() << "gravou sem " << c.coluna.toStdString();
            } catch (const Recusa &r) {
                recusas << r.texto;
                EXPECT_EQ(r.campo, c.coluna);
            }
            v[c.coluna] = preencher(c);
        }
        const int id = gravarRegistro(t, d, 0, v);
        EXPECT_GT(id, 0);
        if (esperado.contains(d.classe)) {
            EXPECT_EQ(recusas, esperado[d.classe]);
        }
        excluirRegistro(t, d, id);
        t.rollback();
    }
}

TEST_F(AuxiliaresTest, CategoryCodeIsUniqueButItsOwnIsAllowed)
{
    const DeclaracaoRegistro &d = *registroAuxiliar("TCategorias");
    db::Transacao t(tabs.DbORB());
    const int a = gravarRegistro(t, d, 0, {{"COD", "1.01"}, {"CATEGORIA", "Vendas"}});
    EXPECT_EQ(gravarRegistro(t, d, a, {{"COD", "1.01"}, {"CATEGORIA", "Vendas à vista"}}), a);
    EXPECT_EQ(teste::recusa([&] { gravarRegistro(t, d, 0, {{"COD", "1.01"}, {"CATEGORIA", "Outra"}}); }), "Código já existente!");
}

// A plan is a legal-person row of the commercial registry, and its prices are supplier rows of items.
TEST_F(AuxiliaresTest, PlanIsACommercialRowWithPrices)
{
    const DeclaracaoRegistro &d = *registroAuxiliar("TConvenios");
    db::Transacao t(tabs.DbORB());
    const int plano = gravarRegistro(t, d, 0, {{"CODIGO", 10}, {"NOME", "Saúde Total Planos"}, {"TELEFONE1", QVariant()}, {"EMAIL", QVariant()}});
    EXPECT_EQ(db::escalar(t, "select Pessoa || Cv || Apelido from TbCad where Id = :ID", {{"ID", plano}}).toString(), "JSSaúde Total Planos");
    const int exame = db::escalar(t, "insert into TbItens (Descricao, Tipo) values ('Hemograma', 'E') returning Id").toInt();
    const DetalheRegistro &precos = d.detalhes[0];
    EXPECT_EQ(teste::recusa([&] { conferirLinhaDetalhe(t, precos, {{"FK", exame}, {"PRUNITARIO", QVariant()}}, {}); }),
              "Digite o preço primeiro!");
    EdicaoDetalhes e(d.detalhes.size());
    e[0].incluir({{"FK", exame}, {"PRUNITARIO", QVariant::fromValue(db::Decimal("35.50"))}});
    gravarDetalhes(t, d, plano, e, teste::administrador(t));
    db::Consulta q(t, precos.sqlGrade);
    q.bind("MESTRE", plano);
    q.executar();
    ASSERT_TRUE(q.proxima());
    EXPECT_EQ(q["Z_EXAME"].toString(), "Hemograma");
    EXPECT_EQ(q["PRUNITARIO"].value<db::Decimal>(), db::Decimal("35.5"));
}

TEST_F(AuxiliaresTest, NameOnlyRegistriesNumberTheirCode)
{
    db::Transacao t(tabs.DbORB());
    const DeclaracaoRegistro &cores = *registroAuxiliar("TCores");
    gravarRegistro(t, cores, 0, {{"COR", "Azul"}});
    gravarRegistro(t, cores, 0, {{"COR", "Verde"}});
    EXPECT_EQ(db::escalar(t, "select list(Codigo, ',') from (select Codigo from TbCores order by Codigo)").toString(), "1,2");
}

// As a user would: open the form, Incluir, type, Salvar, find it in the grid, then delete it (logged both times).
TEST_F(AuxiliaresTest, CityThroughTheForm)
{
    FormRegistro f(*registroAuxiliar("TCidades"));
    f.show();
    QApplication::setActiveWindow(&f);
    QTest::keyClick(f.grade(), Qt::Key_F2);
    ASSERT_EQ(f.estado(), FormCadastro::Estado::Incluindo);
    auto *cidade = f.findChild<QLineEdit *>("CIDADE");
    EXPECT_TRUE(cidade->hasFocus() || QApplication::focusWidget() == nullptr);
    cidade->insert("São José dos Campos");  // typed text with accents (keyClicks takes ASCII only)
    f.BtSalvarClick();
    EXPECT_EQ(msg.avisos.value(0), "Digite o estado primeiro!");
    auto *uf = f.findChild<QComboBox *>("UF");
    EXPECT_EQ(uf->palette().color(QPalette::Button), QColor(0xFF, 0xDD, 0xCC));  // the refused field, peach
    uf->setCurrentText("SP");
    EXPECT_NE(uf->palette().color(QPalette::Button), QColor(0xFF, 0xDD, 0xCC));  // chosen: no longer
    auto *cep = f.findChild<QLineEdit *>("CEP");
    cep->setFocus();
    cep->setCursorPosition(0);
    QTest::keyClicks(cep, "12245000");
    EXPECT_EQ(cep->text(), "12245-000");
    f.BtSalvarClick();
    ASSERT_EQ(f.estado(), FormCadastro::Estado::Navegando) << msg.avisos.join(" | ").toStdString();
    // The grid stands on the saved city, among the municipalities the installation came with.
    const int linha = f.grade()->currentIndex().row();
    auto celula = [&](int coluna) { return f.modelo()->data(f.modelo()->index(linha, coluna), Qt::DisplayRole).toString(); };
    EXPECT_EQ(celula(0) + "/" + celula(2), "São José dos Campos/12245-000");

    msg.respostas = {QMessageBox::Yes};
    f.BtExcluirClick();
    db::Transacao t(tabs.DbORB(), db::Modo::Leitura);
    EXPECT_EQ(db::escalar(t, "select count(*) from TbCidades where Cep = '12245000'").toInt(), 0);
    EXPECT_EQ(db::escalar(t, "select count(*) from TbLog where Tabela = 'TBCIDADES'").toInt(), 2);  // inclusion and deletion
}

// Every member asks its own question before deleting, and traces the deletion with the record's ID.
TEST_F(AuxiliaresTest, DeleteQuestionsAndTraces)
{
    for (const DeclaracaoRegistro &d : registrosAuxiliares()) {
        if (d.campos.isEmpty()) continue;  // looked up, never deleted
        SCOPED_TRACE(d.classe.toStdString());
        int id = 0;
        {
            db::Transacao t(tabs.DbORB());
            id = gravarRegistro(t, d, 0, completos(d));
            t.commit();
        }
        FormRegistro f(d);
        const int linha = f.modelo()->linhaDoId(id);
        ASSERT_GE(linha, 0);
        f.grade()->setCurrentIndex(f.modelo()->index(linha, 0));
        msg.perguntas.clear();
        msg.respostas = {QMessageBox::No};
        f.BtExcluirClick();  // No keeps the record
        msg.respostas = {QMessageBox::Yes};
        f.BtExcluirClick();
        ASSERT_EQ(msg.perguntas.size(), 2);
        EXPECT_EQ(msg.perguntas[0], msg.perguntas[1]);
        db::Transacao t(tabs.DbORB(), db::Modo::Leitura);
        EXPECT_EQ(db::escalar(t, "select count(*) from " + d.tabela + " where " + d.chave + " = :ID", {{"ID", id}}).toInt(), 0);
        EXPECT_TRUE(msg.perguntas[0].startsWith("Tem certeza que deseja excluir")) << msg.perguntas[0].toStdString();
        if (!d.traco.isEmpty()) {
            EXPECT_TRUE(tabs.trilha().contains(d.traco + QString::number(id) + ")"));
        }
    }
}

// Imprimir sends the whole list under the current search, escaped, with its count.
TEST_F(AuxiliaresTest, PrintsTheListOfTheGrid)
{
    {
        db::Transacao t(tabs.DbORB());
        for (const char *b : {"Banco <Um>", "Banco & Dois"})
            db::executar(t, "insert into TbBancos (Numero, Banco) values ('001', :B)", {{"B", b}});
        t.commit();
    }
    QString titulo, html;
    definirImpressora([&](const QString &ti, const QString &h) { titulo = ti, html = h; });
    FormRegistro f(*registroAuxiliar("TBancos"));
    f.BtImprimirClick();
    definirImpressora({});
    EXPECT_EQ(titulo, f.windowTitle());
    EXPECT_TRUE(html.contains("Banco &lt;Um&gt;"));
    EXPECT_TRUE(html.contains("Banco &amp; Dois"));
    // Every bank, the ones the installation came with too, not only the grid's first page.
    db::Transacao t(tabs.DbORB(), db::Modo::Leitura);
    const int bancos = db::escalar(t, "select count(*) from TbBancos").toInt();
    EXPECT_GT(bancos, 400);
    EXPECT_TRUE(html.contains(QString("%1 registro(s)").arg(bancos)));
}

// Plans and laboratories are numbered with every other party, their codes unique among them all,
// and they start with an active situation.
TEST_F(AuxiliaresTest, PlansAndLaboratoriesNumberedAmongAllPartiesAndActive)
{
    for (const char *classe : {"TConvenios", "TLaboratorios"}) {
        SCOPED_TRACE(classe);
        const DeclaracaoRegistro &d = *registroAuxiliar(classe);
        db::Transacao t(tabs.DbORB());
        const int usado = db::escalar(t, "select max(Codigo) from TbCad").toInt();
        EXPECT_EQ(teste::recusa([&] { gravarRegistro(t, d, 0, {{"CODIGO", usado}, {"NOME", "Repetido"}}); }), "Código já existente!");
        const int id = gravarRegistro(t, d, 0, {{"CODIGO", usado + 1}, {"NOME", "Novo Parceiro"}});
        EXPECT_EQ(db::escalar(t, "select Situacao || IdResp from TbCadSit where Fk = :F", {{"F", id}}).toString(), "A2");
        excluirRegistro(t, d, id);
        EXPECT_EQ(db::escalar(t, "select count(*) from TbCadSit where Fk = :F", {{"F", id}}).toInt(), 0);
        t.rollback();
    }
}

// The rentals' registries: clothing types keyed by their code, accessories, and the bookings
// looked up (never edited) with their contract and customer.
TEST_F(AuxiliaresTest, ClothingTypesAccessoriesAndTheBookingLookup)
{
    {
        db::Transacao t(tabs.DbORB());
        const DeclaracaoRegistro &tipos = *registroAuxiliar("TTiposRoupas");
        const int a = gravarRegistro(t, tipos, 0, {{"TIPO", "Terno"}});
        const int b = gravarRegistro(t, tipos, 0, {{"TIPO", "Vestido"}});
        EXPECT_EQ(b, a + 1);  // the code is the key
        EXPECT_EQ(lerRegistro(t, tipos, b).at("TIPO").toString(), "Vestido");
        gravarRegistro(t, *registroAuxiliar("TAcessorios"), 0, {{"DESCRICAO", "Gravata"}, {"PRALUGUEL", QVariant::fromValue(db::Decimal("15"))}});
        const int cliente = db::escalar(t, "insert into TbCad (Codigo, Nome) values (900, 'NOIVO DA SILVA') returning Id").toInt();
        db::executar(t, "insert into TbAlugueis (Codigo, CodCliente, DataCasamento, Status) values ('77', :C, '2026-12-12', 'EM ANDAMENTO')",
                     {{"C", cliente}});
        db::executar(t, "insert into TbRoupasAlugueis (Codigo, Roupa, Aluguel) values ('T01', 'Terno preto 50', 77)");
        t.commit();
    }
    FormRegistro f(*registroAuxiliar("TConsReservas"));
    EXPECT_TRUE(f.botao("Incluir")->isHidden());
    EXPECT_FALSE(f.botao("Excluir")->isEnabled());
    ASSERT_EQ(f.modelo()->rowCount(), 1);
    EXPECT_EQ(f.modelo()->valor(0, "Z_CLIENTE").toString() + "/" + f.modelo()->valor(0, "Z_CONTRATO").toString(), "NOIVO DA SILVA/77");
    f.BtIncluirClick();
    EXPECT_EQ(f.estado(), FormCadastro::Estado::Navegando);
}

// Typing in a lookup registry's search box moves to the first row whose order column starts with
// the text, over the whole list; the box takes the order's mask; it rests while a record is edited.
TEST_F(AuxiliaresTest, TypingLocatesInTheListWithTheOrdersMask)
{
    FormRegistro f(*registroAuxiliar("TCidades"));
    f.show();
    QApplication::setActiveWindow(&f);
    auto *busca = f.findChild<QLineEdit *>("EdBusca");
    busca->setFocus();
    QTest::keyClicks(busca, "florian");
    QTRY_VERIFY(f.modelo()->valor(f.grade()->currentIndex().row(), "CIDADE").toString().startsWith("FLORIAN", Qt::CaseInsensitive));
    const int linha = f.grade()->currentIndex().row();
    ASSERT_GT(linha, 0);  // the whole list is there: the rows before it start otherwise
    EXPECT_FALSE(f.modelo()->valor(linha - 1, "CIDADE").toString().startsWith("FLORIAN", Qt::CaseInsensitive));

    auto *ordem = f.findChild<QComboBox *>("CbOrdem");
    ordem->setCurrentIndex(ordem->findText("CEP"));
    EXPECT_EQ(busca->inputMask(), "99999-999;_");
    EXPECT_TRUE(busca->text().remove('-').isEmpty());
    ordem->setCurrentIndex(ordem->findText("CIDADE"));
    EXPECT_TRUE(busca->inputMask().isEmpty());

    f.BtIncluirClick();
    EXPECT_FALSE(busca->isEnabled());
    EXPECT_FALSE(ordem->isEnabled());
    f.BtCancelarClick();
    EXPECT_TRUE(busca->isEnabled());
}

} // namespace

TEST_F(AuxiliaresTest, NavigatorMovesThroughTheGrid)
{
    {
        db::Transacao t(tabs.DbORB());
        db::executar(t, "delete from TbCidades");  // three cities alone, to know where each step lands
        for (const char *c : {"Atibaia", "Bauru", "Campinas"})
            db::executar(t, "insert into TbCidades (Cidade, Uf, Cep) values (:C, 'SP', '13000000')", {{"C", c}});
        t.commit();
    }
    FormRegistro f(*registroAuxiliar("TCidades"));
    auto cidade = [&] { return f.modelo()->valor(f.grade()->currentIndex().row(), "CIDADE").toString(); };
    const std::pair<int, const char *> passos[] = {{2, "Campinas"}, {-1, "Bauru"}, {-2, "Atibaia"}, {-1, "Atibaia"}, {1, "Bauru"}};
    for (const auto &[passo, esperado] : passos) {
        f.navegar(passo);
        EXPECT_EQ(cidade(), esperado) << passo;
    }
}

// A function with salaries, a plan with prices, an exam in an operation: refused before the question,
// by the routine too, and nothing goes; once the rows are gone, the deletion goes through.
TEST_F(AuxiliaresTest, DeleteRefusedWhileRowsDependOnIt)
{
    const struct { const char *classe, *dependente; } casos[] = {
        {"TFuncoes", "insert into TbFuncoesSal (Fk, Data, IdCidade) values (:ID, '2026-01-01', 1)"},
        {"TConvenios", "insert into TbItensForn (Fk, IdFornecedor, PrUnitario) values (1, :ID, 10)"},
        {"TExames", "insert into TbComItens (IdItem, Qtd) values (:ID, 1)"},
    };
    for (const auto &c : casos) {
        SCOPED_TRACE(c.classe);
        const DeclaracaoRegistro &d = *registroAuxiliar(c.classe);
        int id = 0;
        {
            db::Transacao t(tabs.DbORB());
            id = gravarRegistro(t, d, 0, completos(d));
            db::executar(t, c.dependente, {{"ID", id}});
            t.commit();
        }
        FormRegistro f(d);
        f.grade()->setCurrentIndex(f.modelo()->index(f.modelo()->linhaDoId(id), 0));
        msg.perguntas.clear();
        msg.avisos.clear();
        f.BtExcluirClick();
        EXPECT_TRUE(msg.perguntas.isEmpty());
        EXPECT_EQ(msg.avisos.value(0), kRegistrosDependentes);
        db::Transacao t(tabs.DbORB());
        EXPECT_THROW(excluirRegistro(t, d, id), Recusa);
        EXPECT_EQ(db::escalar(t, "select count(*) from " + d.tabela + " where Id = :ID", {{"ID", id}}).toInt(), 1);
        for (const auto &[tabela, coluna] : d.impedem) db::executar(t, "delete from " + tabela + " where " + coluna + " = :ID", {{"ID", id}});
        excluirRegistro(t, d, id);
        EXPECT_EQ(db::escalar(t, "select count(*) from " + d.tabela + " where " + d.chave + " = :ID", {{"ID", id}}).toInt(), 0);
        t.rollback();
    }
}

// Statuses are listed stage by stage, each stage in its own sequence.
TEST_F(AuxiliaresTest, StatusesListedByStageAndOrder)
{
    {
        db::Transacao t(tabs.DbORB());
        const int b = db::escalar(t, "insert into TbEtapasCom (Etapa, Op) values ('B ENTREGA', 1) returning Id").toInt();
        const int a = db::escalar(t, "insert into TbEtapasCom (Etapa, Op) values ('A PEDIDO', 1) returning Id").toInt();
        for (const auto &[etapa, ordem, status] : {std::tuple{b, "2", "ENTREGUE"}, {a, "1", "ABERTO"}, {b, "1", "SEPARADO"}})
            db::executar(t, "insert into TbStatusCom (Fk, Ordem, Status, Op) values (:F, :O, :S, 1)",
                         {{"F", etapa}, {"O", ordem}, {"S", status}});
        t.commit();
    }
    FormRegistro f(*registroAuxiliar("TStatusCom"));
    QStringList lidos;
    for (int i = 0; i < f.modelo()->rowCount(); ++i) lidos << f.modelo()->valor(i, "STATUS").toString();
    EXPECT_EQ(lidos, QStringList({"ABERTO", "SEPARADO", "ENTREGUE"}));
}

// A save is posted to the activity monitor: a real HTTP endpoint on 127.0.0.1 receives it.
TEST_F(AuxiliaresTest, SavesArePostedToTheActivityMonitor)
{
    teste::MonitorTeste http;
    ASSERT_TRUE(http.escutando());
    QSignalSpy enviado(&monitor(), &Monitor::enviado);
    FormRegistro f(*registroAuxiliar("TBancos"));
    f.BtIncluirClick();
    f.definirValor("NUMERO", "341");
    f.definirValor("BANCO", "Banco Itaú");
    f.BtSalvarClick();
    ASSERT_TRUE(enviado.wait(5000));
    EXPECT_TRUE(enviado.at(0).at(0).toBool());
    const QJsonObject o = http.recebido();
    EXPECT_EQ(QStringList({o["tabela"].toString(), o["acao"].toString(), o["registros"].toArray().at(0).toObject()["BANCO"].toString()}),
              QStringList({"TBBANCOS", "INCLUSÃO", "Banco Itaú"}));
}
