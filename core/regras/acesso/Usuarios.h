#pragma once
// Users (TBCAD rows with US = "S") and access levels, with their rules.

#include "acesso/Sessao.h"
#include "db/Banco.h"
#include "Recusa.h"

namespace orb {

struct DadosUsuario {
    int id = 0;              // 0 = a new user
    QString usuario;         // login name
    QString nome;
    QString apelido;
    QString senha;           // as typed; empty keeps the stored one (required for a new user)
    QString tipoUsuario;     // "A", "S", "U" or "D"
    int idNivel = 0;
};

// Saves (inserts or updates) a user and returns its ID; throws Recusa naming the field. `atual` acts
// from the users screen: its right there, and the levels right to set a level, a type or another
// user's password; nobody changes their own level or type.
int salvarUsuario(db::Transacao &t, const DadosUsuario &u, const Sessao &atual);
// A user stops being one: the flag is cleared, the person stays in the registry.
void excluirUsuario(db::Transacao &t, int id, const Sessao &atual);

struct DadosNivel {
    int id = 0;
    int nivel = 0;
    QString descricao;
};
// With the levels screen's rights; the editor's own level keeps its number.
int salvarNivel(db::Transacao &t, const DadosNivel &n, const Sessao &atual);
// Refused while users belong to it; its permission tree goes with it.
void excluirNivel(db::Transacao &t, int id, const Sessao &atual);

// The list queries of the forms.
inline const char *kSqlUsuarios =
    "Select U.Id, U.Usuario, U.Nome, U.Apelido, U.TipoUsuario, U.IdNivel, "
    "N.Nivel Z_Nivel, N.Descricao Z_Descricao "
    "From TbCad U Left Join TbNiveis N On (N.Id = U.IdNivel) "
    "Where (U.Us = 'S') and ((U.Usuario <> 'ADMIN') or (U.Usuario is Null))";
inline const char *kSqlNiveis = "Select Id, Nivel, Descricao From TbNiveis";

} // namespace orb
