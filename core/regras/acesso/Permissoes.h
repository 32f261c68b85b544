#pragma once
// What the logged-in user may open and do, asked of the database at the moment of each check,
// so that an administrator's change takes effect at once on every workstation.

#include "acesso/Sessao.h"
#include "db/Banco.h"

#include <QList>
#include <QSet>
#include <QStringList>
#include <functional>

namespace orb {

inline const QString kSemPermissao = QStringLiteral("Você não tem permissão para efetuar esta operação!");
inline const QString kSemPermissaoModulo = QStringLiteral("Você não tem permissão para visualizar esse módulo!");
// The commercial registry words the same refusal its own way.
inline const QString kSemAcessoVisualizacao = QStringLiteral("Você não tem acesso a visualização deste módulo!");
inline const QString kAcessoIndefinido = QStringLiteral("Seu acesso não pode ser definido no sistema e o mesmo será fechado!");
inline const QString kAcessoRetirado = QStringLiteral("Seu acesso ao sistema foi retirado e o mesmo será fechado!");

enum class Veredito {
    Permitido,
    Negado,
    SemCadastro,     // the user's row is gone
    AcessoRetirado   // the row is there but no longer a user (US is not "S")
};

// The checks themselves, on their own read transaction; no messages.
Veredito verificarOperacao(db::Banco &b, Sessao &s, const QString &menuCaption, const QString &modulo, const QString &operacao);
Veredito verificarOperacaoExt(db::Banco &b, Sessao &s, const QString &menu, const QString &modulo, const QString &operacao);
Veredito verificarModulo(db::Banco &b, Sessao &s, const QString &menu, const QString &modulo);

// ---- rights checked by the routines that write

// The operation's right, checked inside the transaction that writes, so that no other path (a second
// workstation, a button left enabled, a detail tab) gets past it. `quem` is the user with the menu
// caption and module of the screen acting; the user's flag, level and level number are read here.
// Refuses with kSemPermissao (or the message of an access that is gone).
void exigirOperacao(db::Transacao &t, const Sessao &quem, const QString &operacao);
void exigirOperacao(db::Transacao &t, const Sessao &quem, const QString &menuCaption, const QString &modulo,
                    const QString &operacao);

// Levels, and the users' levels, types and passwords, are changed only with this right: the
// access-levels screen's "Alterar".
inline const QString kMenuNiveis = QStringLiteral("Sistema");
inline const QString kModuloNiveis = QStringLiteral("TNiveis");
void exigirDireitoNiveis(db::Transacao &t, const Sessao &quem);

// The caption of the menu whose item opens the module (empty when the catalogue has none): a
// screen opened from elsewhere (a quick registration) checks its rights under it.
QString menuDoModulo(db::Transacao &t, const QString &modulo);

// Registers an operation of a module in the catalogue, forbidden until an administrator grants it.
void AtualizaAcessos(db::Transacao &t, const QString &menuCaption, const QString &moduloNome, const QString &operacao);

// ---- catalogue of menus, modules and operations

struct ModuloMenu {
    QString nome;      // the item's object name
    QString caption;   // as shown, "&" and "..." included
    QString classe;    // the form it opens
};
struct GrupoCatalogo {
    QString nome;
    QString caption;
    QList<ModuloMenu> modulos;
};

// Caption as the catalogue keeps it: without "&" and "...".
QString legenda(const QString &caption);
// Writes the menu into TBMENUS/TBMENUSMOD/TBMENUSMODOP; what is there already is kept as it is.
void sincronizarCatalogo(db::Transacao &t, const QList<GrupoCatalogo> &menu);

// ---- a level's own tree

// Copies into the level's tree every catalogue entry it lacks, not permitted.
void completarArvoreNivel(db::Transacao &t, int idNivel);

struct NoPermissao {
    enum Tipo { Menu, Modulo, Operacao } tipo;
    int id = 0;            // row of TBNIVEISMENUS / TBNIVEISMENUSMOD / TBNIVEISMENUSMODOP
    QString texto;
    bool permitido = false;
    QList<NoPermissao> filhos;
};
QList<NoPermissao> lerArvoreNivel(db::Transacao &t, int idNivel);
// One switch of a level's tree, for routines that checked the rights themselves.
void gravarPermissao(db::Transacao &t, NoPermissao::Tipo tipo, int id, bool permitido);
// The switches of a level's tree as edited, with the levels right and never on the editor's own level.
void gravarPermissoes(db::Transacao &t, int idNivel, const QList<NoPermissao> &arvore, const Sessao &quem);
// The user's level as the database has it now (0 when the user is gone).
int nivelDoUsuario(db::Transacao &t, int idUsuario);

// Which (menu caption, module name) pairs the level may open; the key is caption + "/" + name.
struct Liberados {
    bool tudo = false;          // level 900 or more
    QSet<QString> menus;        // menu captions permitted
    QSet<QString> modulos;      // "menu caption/module name" permitted
    bool menu(const QString &caption) const { return tudo || menus.contains(caption); }
    bool modulo(const QString &menuCaption, const QString &nome) const
    {
        return tudo || modulos.contains(menuCaption + "/" + nome);
    }
};
Liberados lerLiberados(db::Transacao &t, const Sessao &s);

} // namespace orb
