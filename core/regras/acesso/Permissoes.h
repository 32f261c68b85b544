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
void gravarPermissao(db::Transacao &t, NoPermissao::Tipo tipo, int id, bool permitido);

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
