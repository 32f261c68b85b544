#pragma once
// The lookup registries (cities, banks, groups, categories, CFOP, holidays, ...), declared once.

#include "ui/FormRegistro.h"

namespace orb {

const QList<DeclaracaoRegistro> &registrosAuxiliares();
const DeclaracaoRegistro *registroAuxiliar(const QString &classe);
// Makes their forms available to the menus.
void registrarAuxiliares();

} // namespace orb
