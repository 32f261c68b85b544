// Users, levels and permissions against a real database, and the main window's menus.

#include "acesso/FormsAcesso.h"
#include "acesso/Acesso.h"
#include "acesso/Usuarios.h"
#include "apoio/BancoTeste.h"
#include "dados/Tabs.h"
#include "principal/Menus.h"
#include "principal/TMain.h"
#include "ui/Mensagens.h"

#include <QMenuBar>
#include <QTabWidget>
#include <QTreeWidget>
#include <gtest/gtest.h>

using namespace orb;

namespace {

struct PermissoesTest : ::testing::Test {
    teste::BancoTemporario bt;
    TTabs tabs;
    MensageiroTeste msg;
    int encerrou = 0;

    void SetUp() override
    {
        Tabs = &tabs;
        tabs.conectar(db::Banco::abrir(bt.conexao()));
        definirEncerramento([this] { ++encerrou; });
        registrarFormulariosNucleo(QDir::tempPath());
    }
    void TearDown() override
    {
        tabs.desconectar();
        Tabs = nullptr;
        sessao() = Sessao{};
    }

    // A level with a menu "Sistema" whose module TUsuarios allows only the given operations.
    int nivelRestrito(const QStringList &permitidas)
    {
        db::Transacao t(tabs.DbORB());
        sincronizarCatalogo(t, {{"Sistema1", "&Sistema", {{"Usuarios1", "&Usuários...", "TUsuarios"}}}});
        const int nivel = salvarNivel(t, {0, 10, "CAIXA"}, teste::administrador(t));
        completarArvoreNivel(t, nivel);
        for (const NoPermissao &m : lerArvoreNivel(t, nivel)) {
            gravarPermissao(t, m.tipo, m.id, true);
            for (const NoPermissao &mo : m.filhos) {
                gravarPermissao(t, mo.tipo, mo.id, true);
                for (const NoPermissao &op : mo.filhos) gravarPermissao(t, op.tipo, op.id, permitidas.contains(op.texto));
            }
        }
        t.commit();
        return nivel;
    }

    Sessao usuario(int idNivel, const QString &tipo = "U")
    {
        db::Transacao t(tabs.DbORB());
        const Sessao admin = teste::administrador(t, "Sistema", "TUsuarios");
        const Sessao s{salvarUsuario(t, {0, "maria", "Maria Souza", "Maria", "segredo", tipo, idNivel}, admin), {}, {}, {}, idNivel, 10,
                       "Sistema", "TUsuarios"};
        t.commit();
        return s;
    }
};

TEST_F(PermissoesTest, OperationsFollowTheLevelsTree)
{
    Sessao s = usuario(nivelRestrito({"Incluir"}));
    struct { const char *op; Veredito v; } casos[] = {
        {"Incluir", Veredito::Permitido}, {"Excluir", Veredito::Negado}, {"Aprovar", Veredito::Negado}};
    for (auto c : casos) EXPECT_EQ(verificarOperacao(tabs.DbORB(), s, "Sistema", "TUsuarios", c.op), c.v) << c.op;
    EXPECT_EQ(verificarModulo(tabs.DbORB(), s, "Sistema1", "TUsuarios"), Veredito::Permitido);
    EXPECT_EQ(verificarOperacaoExt(tabs.DbORB(), s, "Sistema1", "TUsuarios", "Incluir"), Veredito::Permitido);

    // An operation the catalogue knows but the level's tree lacks is refused.
    db::Transacao t(tabs.DbORB());
    AtualizaAcessos(t, "Sistema", "TUsuarios", "Aprovar");
    t.commit();
    EXPECT_EQ(db::escalar(t, "select Permitido from TbMenusModOp where Operacao = 'Aprovar'").toString(), "N");
    EXPECT_EQ(verificarOperacao(tabs.DbORB(), s, "Sistema", "TUsuarios", "Aprovar"), Veredito::Negado);

    // A change made by an administrator counts at the next check.
    const auto arvore = lerArvoreNivel(t, s.idNivel);
    for (const NoPermissao &op : arvore[0].filhos[0].filhos)
        if (op.texto == "Excluir") gravarPermissao(t, op.tipo, op.id, true);
    t.commit();
    EXPECT_EQ(verificarOperacao(tabs.DbORB(), s, "Sistema", "TUsuarios", "Excluir"), Veredito::Permitido);
}

TEST_F(PermissoesTest, ThrownOutWhenAccessIsWithdrawnWhileWorking)
{
    struct Caso { const char *nome; const char *sql; QString mensagem; };
    const Caso casos[] = {
        {"flag retirada", "update TbCad set Us = 'N' where Id = :ID", kAcessoRetirado},
        {"registro apagado", "delete from TbCad where Id = :ID", kAcessoIndefinido},
    };
    const int nivel = nivelRestrito({"Incluir"});
    for (const Caso &c : casos) {
        SCOPED_TRACE(c.nome);
        sessao() = usuario(nivel);
        EXPECT_TRUE(AcessoModulos("Incluir"));
        {
            db::Transacao t(tabs.DbORB());
            db::executar(t, c.sql, {{"ID", sessao().idUsuario}});
            db::executar(t, "update TbCad set Usuario = null where Id = :ID", {{"ID", sessao().idUsuario}});
            t.commit();
        }
        encerrou = 0;
        msg.avisos.clear();
        EXPECT_FALSE(AcessoModulos("Incluir"));
        EXPECT_EQ(msg.avisos, QStringList{c.mensagem});
        EXPECT_EQ(encerrou, 1);
    }
    // Level 900 or more passes even when the user's row is gone.
    sessao().nivel = 999;
    EXPECT_TRUE(AcessoModulos("Excluir"));
}

TEST_F(PermissoesTest, CatalogueFollowsTheMenuOnceOnly)
{
    const QList<GrupoCatalogo> menu = {
        {"Sistema1", "&Sistema", {{"Usuarios1", "&Usuários...", "TUsuarios"}, {"Niveis1", "&Níveis de Acesso...", "TNiveis"}}},
        {"Relatorios1", "&Relatórios", {{"Rel1", "&Vendas...", "TRelVendas"}}},
        {"-", "-", {}},
    };
    auto contar = [&] {
        db::Transacao t(tabs.DbORB(), db::Modo::Leitura);
        return QString("%1/%2/%3").arg(db::escalar(t, "select count(*) from TbMenus").toInt())
            .arg(db::escalar(t, "select count(*) from TbMenusMod").toInt())
            .arg(db::escalar(t, "select count(*) from TbMenusModOp").toInt());
    };
    for (int vez = 0; vez < 2; ++vez) {
        db::Transacao t(tabs.DbORB());
        sincronizarCatalogo(t, menu);
        t.commit();
        EXPECT_EQ(contar(), "2/3/10") << "vez " << vez;
    }
    db::Transacao t(tabs.DbORB(), db::Modo::Leitura);
    db::Consulta q(t, "select Me.Caption, Mo.Caption, Mo.Nome, list(Op.Operacao, ',') from TbMenus Me "
                      "join TbMenusMod Mo on Mo.Fk = Me.Id join TbMenusModOp Op on Op.Fk = Mo.Id "
                      "where Op.Permitido = 'N' group by 1, 2, 3 order by 1, 2");
    q.executar();
    QStringList r;
    while (q.proxima()) {
        QStringList ops = q[3].toString().split(',');
        ops.sort();
        r << q[0].toString() + "|" + q[1].toString() + "|" + q[2].toString() + "|" + ops.join(',');
    }
    EXPECT_EQ(r, (QStringList{"Relatórios|Vendas|TRelVendas|Enviar,Imprimir",
                              "Sistema|Níveis de Acesso|TNiveis|Alterar,Excluir,Imprimir,Incluir",
                              "Sistema|Usuários|TUsuarios|Alterar,Excluir,Imprimir,Incluir"}));
}

TEST_F(PermissoesTest, UserRules)
{
    db::Transacao t(tabs.DbORB());
    Sessao supervisor = teste::administrador(t, "Sistema", "TUsuarios");
    supervisor.tipoUsuario = "S";
    const int nivel = salvarNivel(t, {0, 5, "VENDAS"}, teste::administrador(t));
    struct Caso { DadosUsuario u; QString recusa; };
    const Caso casos[] = {
        {{0, "joao", "João", "", "1234567890", "U", nivel}, ""},
        {{0, "JOAO", "Outro João", "", "123456", "U", nivel}, "Nome de usuário já existente!"},
        {{0, "chefe", "Chefe", "", "123456", "A", nivel}, "Você não tem permissão para criar usuários deste tipo!"},
        {{0, "sup", "Sup", "", "123456", "S", nivel}, ""},
        {{0, "", "Sem login", "", "x", "U", nivel}, "Digite o nome de usuário primeiro!"},
    };
    for (const Caso &c : casos)
        EXPECT_EQ(teste::recusa([&] { salvarUsuario(t, c.u, supervisor); }), c.recusa) << c.u.usuario.toStdString();
    const int admin = db::escalar(t, "select Id from TbCad where Usuario = 'ADMIN'").toInt();
    EXPECT_THROW(excluirUsuario(t, admin, teste::administrador(t)), Recusa);
    EXPECT_THROW(excluirNivel(t, nivel, teste::administrador(t)), Recusa);  // JOAO and SUP belong to it
    const int joao = db::escalar(t, "select Id from TbCad where Usuario = 'JOAO'").toInt();
    excluirUsuario(t, joao, teste::administrador(t));
    EXPECT_EQ(db::escalar(t, "select count(*) from TbCad where Id = :ID", {{"ID", joao}}).toInt(), 1);  // the person stays
    db::Consulta lista(t, QString(kSqlUsuarios) + " Order By U.Usuario");
    lista.executar();
    QStringList logins;
    while (lista.proxima()) logins << lista["USUARIO"].toString();
    EXPECT_EQ(logins, QStringList{"SUP"});  // neither ADMIN nor a former user
}

// A segment the program does not know falls back to the commerce menu.
TEST(Menus, UnknownSegmentGetsTheCommerceMenu)
{
    auto grupos = [](const char *ramo) {
        QStringList g;
        for (const GrupoCatalogo &x : menuDoRamo(ramo)) g << legenda(x.caption);
        return g;
    };
    EXPECT_EQ(grupos("XX"), grupos("CO"));
    EXPECT_EQ(nomeMenuPrincipal("XX"), nomeMenuPrincipal("CO"));
    EXPECT_NE(grupos("IG"), grupos("CO"));
    EXPECT_EQ(legenda("&Aluguéis/Vendas..."), "Aluguéis/Vendas");
}

TEST_F(PermissoesTest, MainWindowShowsOnlyWhatTheLevelAllows)
{
    const int nivel = nivelRestrito({"Incluir"});
    sessao() = usuario(nivel);
    TMain w(QDir::tempPath(), [] { return false; });
    w.FormShow();
    auto acao = [&](const QString &nome) { return w.menuBar()->findChild<QAction *>(nome); };
    ASSERT_TRUE(acao("Usuarios1"));
    EXPECT_TRUE(acao("Usuarios1")->isEnabled());
    EXPECT_FALSE(acao("Niveis1")->isEnabled());  // in the catalogue now, but not in this level
    EXPECT_EQ(acao("Clientes1"), nullptr);        // a form not built yet has no item

    // Opening a permitted module puts it in a tab; the form refuses what the level forbids.
    acao("Usuarios1")->trigger();
    ASSERT_EQ(w.abas()->count(), 2);  // the home page and the form
    auto *f = qobject_cast<FormCadastro *>(w.abas()->widget(1));
    ASSERT_TRUE(f);
    f->BtExcluirClick();
    EXPECT_EQ(msg.avisos.value(0), kSemPermissao);
    f->BtIncluirClick();
    EXPECT_EQ(f->estado(), FormCadastro::Estado::Incluindo);
    f->BtCancelarClick();
    msg.respostas = {QMessageBox::Yes};
    w.close();
    EXPECT_EQ(msg.perguntas.value(0), "Deseja realmente sair do sistema?");
}

TEST_F(PermissoesTest, PermissionTreeSwitchesWholeBranches)
{
    const int nivel = nivelRestrito({});
    Sessao adm;
    {
        db::Transacao t(tabs.DbORB(), db::Modo::Leitura);
        adm = teste::administrador(t, "Sistema", "TNiveis");
    }
    TPermissoes dlg(nivel, "CAIXA", adm);
    QTreeWidget *a = dlg.arvore();
    ASSERT_EQ(a->topLevelItemCount(), 1);
    QTreeWidgetItem *modulo = a->topLevelItem(0)->child(0);
    a->setCurrentItem(modulo);
    dlg.marcarRamo(true);
    dlg.BtSalvarClick();
    db::Transacao t(tabs.DbORB(), db::Modo::Leitura);
    EXPECT_EQ(db::escalar(t, "select count(*) from TbNiveisMenusModOp Op join TbNiveisMenusMod Mo on Mo.Id = Op.Fk "
                             "join TbNiveisMenus Me on Me.Id = Mo.Fk where Me.Fk = :N and Op.Permitido = 'S'",
                          {{"N", nivel}}).toInt(), 4);
}

} // namespace
