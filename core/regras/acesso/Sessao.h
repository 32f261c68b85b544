#pragma once
// The logged-in user's values, set at login and read by the permission checks.

#include <QString>

namespace orb {

struct Sessao {
    int idUsuario = 0;
    QString usuario;       // login name (USUARIO)
    QString apelido;       // APELIDO, shown in the status bar and the logoff question
    QString tipoUsuario;   // "A", "S", "U" or "D"
    int idNivel = 0;       // the access level's ID
    int nivel = 0;         // the level's NIVEL; 900 or more passes every check
    // Where the user is working, kept by the main window for AcessoModulos.
    QString menuAtual;     // caption of the menu
    QString moduloAtual;   // name of the module
    QString sufixoOperacoes;  // a screen of several sheets names its operations "Incluir Estoque"

    bool logado() const { return idUsuario != 0; }
};

// The session of this workstation (one user at a time).
Sessao &sessao();

} // namespace orb
