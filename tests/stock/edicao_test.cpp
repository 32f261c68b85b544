// A record and its details saved as one: a failed Salvar leaves nothing of its attempt, a
// corrected one writes the whole record once, Cancelar undoes detail changes, a process killed
// before the commit leaves nothing, and deletions log every row that goes.

#include "Estoque.h"
#include "Movimentacao.h"
#include "TEstoque.h"
#include "TInventario.h"
#include "apoio/TabsTeste.h"

#include <QApplication>
#include <QBuffer>
#include <QComboBox>
#include <QImage>
#include <QLineEdit>
#include <QTabWidget>
#include <QTableView>
#include <QTableWidget>
#include <csignal>
#include <gtest/gtest.h>

using namespace orb;
using D = db::Decimal;

namespace {

QByteArray png(QRgb cor)
{
    QImage img(4, 4, QImage::Format_RGB32);
    img.fill(cor);
    QByteArray b;
    QBuffer buf(&b);
    buf.open(QIODevice::WriteOnly);
    img.save(&buf, "PNG");
    return b;
}

int contar(db::Transacao &t, const QString &sql, const std::map<QString, QVariant> &p = {})
{
    return db::escalar(t, sql, p).toInt();
}

// What a new item brings: a manufacturer, a second company and a supplier.
struct Cenario {
    int fabricante = 0, filial = 0, fornecedor = 0;
    explicit Cenario(db::Banco &b)
    {
        db::Transacao t(b);
        fabricante = db::escalar(t, "insert into TbFabricantes (Fabricante) values ('ACME') returning Id").toInt();
        filial = db::escalar(t, "insert into TbCad (Codigo, Nome, Apelido, Em, Pessoa) values (90, 'Filial Centro', 'FILIAL', 'S', 'J') "
                                "returning Id").toInt();
        fornecedor = db::escalar(t, "insert into TbCad (Codigo, Nome, Apelido, Fo, Pessoa) values (91, 'Distribuidora Sul', 'DIST', 'S', 'J') "
                                    "returning Id").toInt();
        t.commit();
    }
};

struct EdicaoTest : teste::ComTabs {
    std::unique_ptr<Cenario> c;
    void SetUp() override
    {
        teste::ComTabs::SetUp();
        c = std::make_unique<Cenario>(tabs.DbORB());
    }
    static void digitar(QWidget &f, const char *campo, const QString &texto)
    {
        auto *e = f.findChild<QLineEdit *>(campo);
        e->setFocus();
        e->selectAll();
        e->insert(texto);
        e->clearFocus();  // leaving the field runs its rules
    }
    static int detalhe(const FormRegistro &f, const QString &tabela)
    {
        for (int i = 0; i < f.declaracao().detalhes.size(); ++i)
            if (f.declaracao().detalhes[i].tabela == tabela) return i;
        return -1;
    }
    // Detail rows typed through the detail buttons, the dialog answered with `linhas` in turn.
    static void incluirLinhas(FormRegistro &f, const QString &tabela, QList<Valores> linhas)
    {
        f.editarDetalhe = [&linhas](const DetalheRegistro &, Valores &v) {
            if (linhas.isEmpty()) return false;  // a refused row is not typed again
            v = linhas.takeFirst();
            return true;
        };
        const int i = detalhe(f, tabela);
        while (!linhas.isEmpty()) f.BtIncluirDetalheClick(i);
    }
    void novoItem(TEstoque &f, const QString &localFilial)
    {
        f.BtIncluirClick();
        digitar(f, "CODIGO", "FUR-10");
        digitar(f, "DESCRICAO", "Furadeira de impacto");
        digitar(f, "UN", "UN");
        auto *fab = f.findChild<QComboBox *>("IDFABRICANTE");
        fab->setCurrentIndex(fab->findData(c->fabricante));
        digitar(f, "Z_ESTATUALP", "3");
        incluirLinhas(f, "TBITENSFOTOS", {{{"DESCRICAO", "Frente"}, {"FOTO", png(qRgb(255, 0, 0))}},
                                          {{"DESCRICAO", "Lado"}, {"FOTO", png(qRgb(0, 0, 255))}}});
        incluirLinhas(f, "TBITENSFORN", {{{"IDFORNECEDOR", c->fornecedor}, {"CODFORN", "DS-77"}}});
        f.findChild<QComboBox *>("EMPRESA")->setCurrentText("FILIAL");
        digitar(f, "LOCALIZACAO", localFilial);
        digitar(f, "ESTATUAL", "5");
        f.BtGravarEstoqueClick();
    }
    // Rows of the item as the area transaction sees them (uncommitted writes included).
    QString contagem(db::Transacao &t)
    {
        const int item = db::escalar(t, "select Id from TbItens where Codigo = 'FUR-10'").toInt();
        return QString("%1 itens, %2 estoques, %3 fotos, %4 fornecedores")
            .arg(contar(t, "select count(*) from TbItens where Codigo = 'FUR-10'"))
            .arg(contar(t, "select count(*) from TbItensEst where Fk = :I", {{"I", item}}))
            .arg(contar(t, "select count(*) from TbItensFotos where Fk = :I", {{"I", item}}))
            .arg(contar(t, "select count(*) from TbItensForn where Fk = :I", {{"I", item}}));
    }
};

// A stock row with a character the database cannot hold fails the save after the item was
// written; corrected, the next Salvar writes the item with every detail exactly once. Then detail
// changes are only the edit's until Salvar (Cancelar leaves the database as it was), and the
// deleted item logs itself and each row that goes with it.
TEST_F(EdicaoTest, FailedSaveCorrectedCancelledEditAndDeletion)
{
    TEstoque f;
    f.show();
    novoItem(f, QString::fromUtf8("Prateleira \xF0\x9F\x98\x80"));  // an emoji: outside WIN1252
    ASSERT_EQ(f.estoques().size(), 2);
    f.BtSalvarClick();
    ASSERT_EQ(f.estado(), FormCadastro::Estado::Incluindo);
    ASSERT_FALSE(msg.avisos.isEmpty());
    EXPECT_EQ(contagem(tabs.Tr("TrMercadorias")), "0 itens, 0 estoques, 0 fotos, 0 fornecedores");

    auto *grade = f.findChild<QTableWidget *>("ESTOQUES");
    for (int r = 0; r < grade->rowCount(); ++r)
        if (grade->item(r, 0)->text() == "FILIAL") grade->setCurrentCell(r, 0);
    digitar(f, "LOCALIZACAO", "Prateleira 4");
    f.BtGravarEstoqueClick();
    f.BtSalvarClick();
    ASSERT_EQ(f.estado(), FormCadastro::Estado::Navegando) << msg.avisos.join(" | ").toStdString();
    {
        db::Transacao t(tabs.DbORB(), db::Modo::Leitura);
        EXPECT_EQ(contagem(t), "1 itens, 2 estoques, 2 fotos, 1 fornecedores");
        EXPECT_EQ(db::escalar(t, "select Localizacao from TbItensEst where IdEmpresa = :E", {{"E", c->filial}}).toString(), "Prateleira 4");
    }

    const int fotos = detalhe(f, "TBITENSFOTOS");
    ASSERT_EQ(f.modeloDetalhe(fotos)->rowCount(), 2);

    f.BtAlterarClick();
    ASSERT_EQ(f.estado(), FormCadastro::Estado::Alterando);
    f.gradeDetalhe(fotos)->selectRow(0);
    msg.respostas << QMessageBox::Yes;
    f.BtExcluirDetalheClick(fotos);
    incluirLinhas(f, "TBITENSFORN", {{{"IDFORNECEDOR", c->fornecedor}, {"CODFORN", "DS-78"}}});
    EXPECT_EQ(f.modeloDetalhe(fotos)->rowCount(), 1);
    f.BtCancelarClick();
    {
        db::Transacao t(tabs.DbORB(), db::Modo::Leitura);
        EXPECT_EQ(contagem(t), "1 itens, 2 estoques, 2 fotos, 1 fornecedores");
    }
    EXPECT_EQ(f.modeloDetalhe(fotos)->rowCount(), 2);

    msg.respostas << QMessageBox::Yes;
    f.BtExcluirClick();
    db::Transacao t(tabs.DbORB(), db::Modo::Leitura);
    EXPECT_EQ(db::escalar(t, "select List(Tabela || '=' || n) from (select Tabela, count(*) n from TbLog where Acao = 'EXCLUSÃO' "
                             "group by Tabela order by Tabela)").toString(), "TBITENS=1,TBITENSEST=2,TBITENSFORN=1,TBITENSFOTOS=2");
    EXPECT_EQ(contar(t, "select count(*) from TbItens where Codigo = 'FUR-10'"), 0);
}

// A detail's own check at Salvar stops it with its message, its tab in front.
TEST_F(EdicaoTest, DetailCheckStopsTheSaveOnItsTab)
{
    TEstoque f;
    f.show();
    novoItem(f, "Prateleira 1");
    // A row that skipped the dialog's check, as a second path into the edit could bring it.
    const int fotos = detalhe(f, "TBITENSFOTOS");
    f.edicao()[fotos].incluir({{"DESCRICAO", "Sem arquivo"}});
    f.BtSalvarClick();
    ASSERT_EQ(f.estado(), FormCadastro::Estado::Incluindo);
    EXPECT_EQ(msg.avisos.value(0), "Defina o caminho da foto primeiro!");
    auto *abas = f.findChild<QTabWidget *>("PcDetalhes");
    EXPECT_EQ(abas->currentIndex(), fotos);
    EXPECT_EQ(contagem(tabs.Tr("TrMercadorias")), "0 itens, 0 estoques, 0 fotos, 0 fornecedores");
}

// A movement whose line the database refuses is not left without its lines: the corrected save
// writes the header and both lines once.
TEST_F(EdicaoTest, InventoryMovementFailedLineThenCorrected)
{
    std::unique_ptr<teste::PapelNoAlmoxarifado> p;
    {
        db::Transacao t(tabs.DbORB());
        p = std::make_unique<teste::PapelNoAlmoxarifado>(t, 10);
        t.commit();
    }
    const Valores cab = p->cabecalho();
    Linhas linhas{p->linha("2"), p->linha("2", kEntrada)};
    linhas[1]["OBSERVACOES"] = QString::fromUtf8("urgente \xE2\x9C\x93");  // a check mark: outside WIN1252

    db::Transacao &t = tabs.Tr("TrMovInventario");
    t.iniciar();
    try {
        db::tentativa(t, [&] { return salvarMovimentacao(t, 0, cab, linhas, teste::administrador(t)); });
        ADD_FAILURE() << "a linha fora do conjunto de caracteres foi gravada";
    } catch (const db::ErroBanco &e) {
        EXPECT_EQ(e.tipo(), db::TipoErro::ForaDoConjunto) << e.mensagem().toStdString();
    } catch (const Recusa &r) {
        ADD_FAILURE() << r.texto.toStdString();
    }
    EXPECT_EQ(contar(t, "select count(*) from TbMovInventario"), 0);
    linhas[1]["OBSERVACOES"] = "urgente";
    const int codigo = db::tentativa(t, [&] { return salvarMovimentacao(t, 0, cab, linhas, teste::administrador(t)); });
    t.commit();
    db::Transacao l(tabs.DbORB(), db::Modo::Leitura);
    EXPECT_EQ(contar(l, "select count(*) from TbMovInventario"), 1);
    EXPECT_EQ(contar(l, "select count(*) from TbItensMovInventario where Movimentacao = :C", {{"C", codigo}}), 2);
}

// The child half of the next test: it saves an item with its details in one attempt and dies
// before the commit, as a workstation switched off at that moment would.
TEST(EdicaoInterrompida, Filho)
{
    const QString banco = teste::bancoDoFilho();
    if (banco.isEmpty()) GTEST_SKIP() << "só como processo filho";
    TTabs tabs;
    Tabs = &tabs;
    tabs.conectar(db::Banco::abrir({banco}));
    db::Transacao &t = tabs.Tr("TrMercadorias");
    t.iniciar();
    const int fornecedor = db::escalar(t, "select Id from TbCad where Fo = 'S'").toInt();
    const int filial = db::escalar(t, "select Id from TbCad where Apelido = 'FILIAL'").toInt();
    Valores v = {{"CODIGO", "FUR-10"}, {"DESCRICAO", "Furadeira"}, {"UN", "UN"}, {"TIPO", "M"},
                 {"IDFABRICANTE", db::escalar(t, "select Id from TbFabricantes")}};
    LinhaEstoque principal = linhaPrincipal(t), outra;
    outra.idEmpresa = filial;
    const DeclaracaoRegistro &d = declaracaoEstoque();
    EdicaoDetalhes e(d.detalhes.size());
    for (int i = 0; i < d.detalhes.size(); ++i) {
        if (d.detalhes[i].tabela == "TBITENSFOTOS")
            for (QRgb cor : {qRgb(1, 2, 3), qRgb(4, 5, 6)}) e[i].incluir({{"DESCRICAO", "foto"}, {"FOTO", png(cor)}});
        if (d.detalhes[i].tabela == "TBITENSFORN") e[i].incluir({{"IDFORNECEDOR", fornecedor}});
    }
    db::tentativa(t, [&] {
        const int item = salvarItem(t, 0, v, {principal, outra}, "CO", teste::administrador(t));
        conferirDetalhes(t, d, e);
        gravarDetalhes(t, d, item, e, teste::administrador(t));
    });
    std::raise(SIGKILL);
}

TEST(EdicaoInterrompida, NothingOfTheItemSurvivesAKillBeforeTheCommit)
{
    teste::BancoTemporario bt;
    Cenario c(bt.banco());
    ASSERT_EQ(teste::filhoInterrompido(bt, "EdicaoInterrompida.Filho"), "");
    db::Transacao t(bt.banco(), db::Modo::Leitura);
    for (const char *tabela : {"TbItens", "TbItensEst", "TbItensFotos", "TbItensForn", "TbLog"})
        EXPECT_EQ(contar(t, QString("select count(*) from ") + tabela), 0) << tabela;
}

} // namespace
