#pragma once
// The permission checks as the forms call them: on the data module's connection and this
// workstation's session, telling the user when the answer is no.

#include "acesso/Permissoes.h"

#include <functional>

namespace orb {

// The routines the forms call, on the data module's connection and the session of this workstation.
// A user whose access is gone is told so, pending edits are cancelled and the program ends.
bool AcessoModulos(const QString &Operacao);
bool AcessoModulosExt(const QString &Menu, const QString &Modulo, const QString &Operacao);
bool AcessoSubModulos(const QString &Menu, const QString &Modulo);
// Shows a refusal with the system's text (the standard one when none is given).
void SemPermissao(const QString &texto = kSemPermissao);

// How the program ends when a user is thrown out; tests replace it.
void definirEncerramento(std::function<void()> f);

} // namespace orb
