#include "acesso/Permissoes.h"

#include "Recusa.h"
#include "dados/Tabs.h"

#include <functional>


namespace orb {

namespace {

// Reads the user's row with its level's number: a level changed meanwhile counts at once.
Veredito usuarioAtivo(db::Transacao &t, Sessao &s)
{
    db::Consulta q(t, "Select U.Id, U.Us, U.IdNivel, N.Nivel From TbCad U Left Join TbNiveis N On (N.Id = U.IdNivel) "
                      "Where (U.Id = :ID)");
    q.bind("ID", s.idUsuario);
    q.executar();
    if (!q.proxima()) return Veredito::SemCadastro;
    if (q["US"].toString() != "S") return Veredito::AcessoRetirado;
    s.idNivel = q["IDNIVEL"].toInt();
    s.nivel = q["NIVEL"].toInt();
    return Veredito::Permitido;
}

const char *kArvore = "Select N.Id From TbNiveis N "
                      "Inner Join TbNiveisMenus Nme On (Nme.Fk = N.Id) "
                      "Inner Join TbNiveisMenusMod Nmo On (Nmo.Fk = Nme.Id) ";

// The level's tree in the caller's transaction; the session already read by usuarioAtivo.
bool naArvore(db::Transacao &t, const Sessao &s, const QString &condicaoMenu, const QString &menu, const QString &modulo,
              const QString &operacao)
{
    if (s.nivel >= 900) return true;
    // Opening a module walks the same four tables as an operation, down to the module's operations.
    QString sql = kArvore;
    sql += "Inner Join TbNiveisMenusModOp Nop On (Nop.Fk = Nmo.Id) ";
    sql += "Where (N.Id = :NIVEL) and (" + condicaoMenu + " = :MENU) and (Nmo.Nome = :MODULO)";
    sql += operacao.isNull() ? " and (Nmo.Permitido = 'S')" : " and (Nop.Operacao = :OPERACAO) and (Nop.Permitido = 'S')";
    db::Consulta q(t, "Select First 1 X.Id From (" + sql + ") X");
    q.bind("NIVEL", s.idNivel).bind("MENU", menu).bind("MODULO", modulo);
    if (!operacao.isNull()) q.bind("OPERACAO", operacao);
    return q.escalar().toInt() > 0;
}

Veredito verificar(db::Banco &b, Sessao &s, const QString &condicaoMenu, const QString &menu, const QString &modulo,
                   const QString &operacao)
{
    db::Transacao t(b, db::Modo::Leitura);
    const Veredito v = usuarioAtivo(t, s);
    // A level of 900 or more passes even when the user's row is gone.
    if (v == Veredito::SemCadastro && s.nivel >= 900) return Veredito::Permitido;
    if (v != Veredito::Permitido) return v;
    const bool achou = naArvore(t, s, condicaoMenu, menu, modulo, operacao);
    t.rollback();
    return achou ? Veredito::Permitido : Veredito::Negado;
}

} // namespace

Veredito verificarOperacao(db::Banco &b, Sessao &s, const QString &menuCaption, const QString &modulo, const QString &operacao)
{
    return verificar(b, s, "Nme.Caption", menuCaption, modulo, operacao.isNull() ? QString("") : operacao);
}

Veredito verificarOperacaoExt(db::Banco &b, Sessao &s, const QString &menu, const QString &modulo, const QString &operacao)
{
    return verificar(b, s, "Nme.Menu", menu, modulo, operacao.isNull() ? QString("") : operacao);
}

Veredito verificarModulo(db::Banco &b, Sessao &s, const QString &menu, const QString &modulo)
{
    return verificar(b, s, "Nme.Menu", menu, modulo, QString());
}

// ------------------------------------------------------------------ rights of the routines

void exigirOperacao(db::Transacao &t, const Sessao &quem, const QString &menuCaption, const QString &modulo,
                    const QString &operacao)
{
    Sessao s = quem;
    switch (usuarioAtivo(t, s)) {
    case Veredito::SemCadastro:
        // As the screens' own check: a level of 900 or more passes even when the row is gone.
        if (s.nivel >= 900) return;
        throw Recusa(kAcessoIndefinido);
    case Veredito::AcessoRetirado: throw Recusa(kAcessoRetirado);
    default: break;
    }
    if (!naArvore(t, s, "Nme.Caption", menuCaption, modulo, operacao)) throw Recusa(kSemPermissao);
}

void exigirOperacao(db::Transacao &t, const Sessao &quem, const QString &operacao)
{
    exigirOperacao(t, quem, quem.menuAtual, quem.moduloAtual, operacao + quem.sufixoOperacoes);
}

void exigirDireitoNiveis(db::Transacao &t, const Sessao &quem)
{
    exigirOperacao(t, quem, kMenuNiveis, kModuloNiveis, QStringLiteral("Alterar"));
}

// ------------------------------------------------------------------ catalogue

QString menuDoModulo(db::Transacao &t, const QString &modulo)
{
    return db::escalar(t, "Select First 1 M.Caption From TbMenus M Join TbMenusMod Mo On (Mo.Fk = M.Id) "
                          "Where Mo.Nome = :MODULO Order By M.Codigo", {{"MODULO", modulo}}).toString();
}

QString legenda(const QString &caption)
{
    QString r = caption;
    r.remove('&');
    r.remove("...");
    return r.trimmed();
}

namespace {

void garantirOperacao(db::Transacao &t, int idModulo, const QString &operacao)
{
    db::Consulta q(t, "Select Id From TbMenusModOp Where (Fk = :FK) and (Operacao = :OPERACAO)");
    q.bind("FK", idModulo).bind("OPERACAO", operacao);
    if (!q.escalar().isNull()) return;
    const int codigo = db::escalar(t, "Select Coalesce(Max(Codigo), 0) + 1 From TbMenusModOp Where (Fk = :FK)",
                                   {{"FK", idModulo}}).toInt();
    db::executar(t, "Insert Into TbMenusModOp(Codigo, Operacao, Permitido, Fk) Values (:CODIGO, :OPERACAO, 'N', :FK)",
                 {{"CODIGO", codigo}, {"OPERACAO", operacao}, {"FK", idModulo}});
}

int garantirModulo(db::Transacao &t, int idMenu, const ModuloMenu &m)
{
    const QString cap = legenda(m.caption);
    db::Consulta q(t, "Select Id From TbMenusMod Where (Fk = :FK) and (Caption = :CAPTION)");
    q.bind("FK", idMenu).bind("CAPTION", cap);
    const QVariant id = q.escalar();
    if (!id.isNull()) return id.toInt();
    const int codigo = db::escalar(t, "Select Coalesce(Max(Codigo), 0) + 1 From TbMenusMod Where (Fk = :FK)",
                                   {{"FK", idMenu}}).toInt();
    return db::escalar(t,
                       "Insert Into TbMenusMod (Codigo, Modulo, Caption, Nome, Permitido, Fk) "
                       "Values (:CODIGO, :MODULO, :CAPTION, :NOME, 'N', :FK) Returning Id",
                       {{"CODIGO", codigo}, {"MODULO", m.nome}, {"CAPTION", cap}, {"NOME", m.classe}, {"FK", idMenu}})
        .toInt();
}

} // namespace

void AtualizaAcessos(db::Transacao &t, const QString &menuCaption, const QString &moduloNome, const QString &operacao)
{
    if (Tabs) Tabs->Deb("procedure TTabs.AtualizaAcessos(Menu, Modulo, Operacao: String)");
    db::Consulta q(t, "Select Mo.Id From TbMenus Me Left Outer Join TbMenusMod Mo On (Me.Id = Mo.Fk) "
                      "Where (Me.Caption = :MENU) and (Mo.Nome = :MODULO)");
    q.bind("MENU", menuCaption).bind("MODULO", moduloNome);
    const QVariant id = q.escalar();
    if (!id.isNull()) garantirOperacao(t, id.toInt(), operacao);
}

void sincronizarCatalogo(db::Transacao &t, const QList<GrupoCatalogo> &menu)
{
    for (const GrupoCatalogo &g : menu) {
        if (g.caption == "-") continue;
        const QString cap = legenda(g.caption);
        QVariant idMenu = db::escalar(t, "Select Id From TbMenus Where (Caption = :CAPTION)", {{"CAPTION", cap}});
        if (idMenu.isNull()) {
            const int codigo = db::escalar(t, "Select Max(Codigo) Codigo From TbMenus").toInt() + 1;
            idMenu = db::escalar(t, "Insert Into TbMenus (Codigo, Menu, Caption, Permitido) "
                                    "Values (:CODIGO, :MENU, :CAPTION, 'N') Returning Id",
                                 {{"CODIGO", codigo}, {"MENU", g.nome}, {"CAPTION", cap}});
        }
        const bool relatorios = cap == QStringLiteral("Relatórios");
        for (const ModuloMenu &m : g.modulos) {
            if (m.caption == "-") continue;
            const int idModulo = garantirModulo(t, idMenu.toInt(), m);
            const QStringList ops = relatorios ? QStringList{"Imprimir", "Enviar"}
                                               : QStringList{"Incluir", "Alterar", "Imprimir", "Excluir"};
            for (const QString &op : ops) garantirOperacao(t, idModulo, op);
        }
    }
}

// ------------------------------------------------------------------ a level's tree

void completarArvoreNivel(db::Transacao &t, int idNivel)
{
    // Menus, then modules, then operations: each level copies what the catalogue has and it lacks.
    db::executar(t,
        "Insert Into TbNiveisMenus (Codigo, Menu, Caption, Permitido, Fk) "
        "Select Me.Codigo, Me.Menu, Me.Caption, 'N', :NIVEL From TbMenus Me "
        "Where Not Exists (Select 1 From TbNiveisMenus Nm Where Nm.Fk = :NIVEL and Nm.Caption = Me.Caption)",
        {{"NIVEL", idNivel}});
    db::executar(t,
        "Insert Into TbNiveisMenusMod (Codigo, Modulo, Caption, Nome, Permitido, Fk) "
        "Select Mo.Codigo, Mo.Modulo, Mo.Caption, Mo.Nome, 'N', Nm.Id From TbMenusMod Mo "
        "Join TbMenus Me On Me.Id = Mo.Fk "
        "Join TbNiveisMenus Nm On Nm.Fk = :NIVEL and Nm.Caption = Me.Caption "
        "Where Not Exists (Select 1 From TbNiveisMenusMod Nmo Where Nmo.Fk = Nm.Id and Nmo.Nome = Mo.Nome)",
        {{"NIVEL", idNivel}});
    db::executar(t,
        "Insert Into TbNiveisMenusModOp (Codigo, Operacao, Permitido, Fk) "
        "Select Op.Codigo, Op.Operacao, 'N', Nmo.Id From TbMenusModOp Op "
        "Join TbMenusMod Mo On Mo.Id = Op.Fk "
        "Join TbMenus Me On Me.Id = Mo.Fk "
        "Join TbNiveisMenus Nm On Nm.Fk = :NIVEL and Nm.Caption = Me.Caption "
        "Join TbNiveisMenusMod Nmo On Nmo.Fk = Nm.Id and Nmo.Nome = Mo.Nome "
        "Where Not Exists (Select 1 From TbNiveisMenusModOp Nop Where Nop.Fk = Nmo.Id and Nop.Operacao = Op.Operacao)",
        {{"NIVEL", idNivel}});
}

QList<NoPermissao> lerArvoreNivel(db::Transacao &t, int idNivel)
{
    QList<NoPermissao> menus;
    db::Consulta q(t,
        "Select Nm.Id, Nm.Caption, Nm.Permitido, Nmo.Id, Nmo.Caption, Nmo.Permitido, Nop.Id, Nop.Operacao, Nop.Permitido "
        "From TbNiveisMenus Nm "
        "Left Join TbNiveisMenusMod Nmo On Nmo.Fk = Nm.Id "
        "Left Join TbNiveisMenusModOp Nop On Nop.Fk = Nmo.Id "
        "Where Nm.Fk = :NIVEL Order By Nm.Codigo, Nm.Id, Nmo.Codigo, Nmo.Id, Nop.Codigo, Nop.Id");
    q.bind("NIVEL", idNivel);
    q.executar();
    while (q.proxima()) {
        if (menus.isEmpty() || menus.last().id != q[0].toInt())
            menus.append({NoPermissao::Menu, q[0].toInt(), q[1].toString(), q[2].toString() == "S", {}});
        if (q[3].isNull()) continue;
        auto &mods = menus.last().filhos;
        if (mods.isEmpty() || mods.last().id != q[3].toInt())
            mods.append({NoPermissao::Modulo, q[3].toInt(), q[4].toString(), q[5].toString() == "S", {}});
        if (!q[6].isNull())
            mods.last().filhos.append({NoPermissao::Operacao, q[6].toInt(), q[7].toString(), q[8].toString() == "S", {}});
    }
    return menus;
}

void gravarPermissao(db::Transacao &t, NoPermissao::Tipo tipo, int id, bool permitido)
{
    static const char *tabelas[] = {"TbNiveisMenus", "TbNiveisMenusMod", "TbNiveisMenusModOp"};
    db::executar(t, QString("Update %1 Set Permitido = :P Where Id = :ID").arg(tabelas[tipo]),
                 {{"P", permitido ? "S" : "N"}, {"ID", id}});
}

int nivelDoUsuario(db::Transacao &t, int idUsuario)
{
    return db::escalar(t, "Select IdNivel From TbCad Where Id = :ID", {{"ID", idUsuario}}).toInt();
}

void gravarPermissoes(db::Transacao &t, int idNivel, const QList<NoPermissao> &arvore, const Sessao &quem)
{
    exigirDireitoNiveis(t, quem);
    if (idNivel == nivelDoUsuario(t, quem.idUsuario)) throw Recusa(kSemPermissao);
    // Each switch is written only where it belongs to this level's tree.
    static const char *sql[] = {
        "Update TbNiveisMenus Set Permitido = :P Where Id = :ID and Fk = :NIVEL",
        "Update TbNiveisMenusMod Set Permitido = :P Where Id = :ID and Fk In (Select Id From TbNiveisMenus Where Fk = :NIVEL)",
        "Update TbNiveisMenusModOp Set Permitido = :P Where Id = :ID and Fk In (Select Nmo.Id From TbNiveisMenusMod Nmo "
        "Join TbNiveisMenus Nm On Nm.Id = Nmo.Fk Where Nm.Fk = :NIVEL)"};
    std::function<void(const NoPermissao &)> gravar = [&](const NoPermissao &n) {
        db::executar(t, sql[n.tipo], {{"P", n.permitido ? "S" : "N"}, {"ID", n.id}, {"NIVEL", idNivel}});
        for (const NoPermissao &f : n.filhos) gravar(f);
    };
    for (const NoPermissao &n : arvore) gravar(n);
}

Liberados lerLiberados(db::Transacao &t, const Sessao &s)
{
    Liberados l;
    l.tudo = s.nivel >= 900;
    if (l.tudo) return l;
    // The catalogue joined in, so that entries the level lacks count as not permitted.
    db::Consulta q(t,
        "Select Me.Caption, Men1.Permitido, Mod1.Nome, Mod1.Permitido "
        "From TbNiveis N1 "
        "Inner Join TbNiveisMenus Men1 On (Men1.Fk = N1.Id) "
        "Left Outer Join TbMenus Me On (Me.Caption = Men1.Caption) "
        "Left Outer Join TbNiveisMenusMod Mod1 On (Mod1.Fk = Men1.Id) "
        "Where N1.Id = :NIVEL");
    q.bind("NIVEL", s.idNivel);
    q.executar();
    while (q.proxima()) {
        if (q[0].isNull() || q[1].toString() != "S") continue;
        l.menus.insert(q[0].toString());
        if (q[3].toString() == "S") l.modulos.insert(q[0].toString() + "/" + q[2].toString());
    }
    return l;
}

} // namespace orb
