#pragma once
// The lookup registries (cities, banks, groups, categories, CFOP, holidays, ...), declared once.

#include "registro/Registro.h"

namespace orb {

const QList<DeclaracaoRegistro> &registrosAuxiliares();
const DeclaracaoRegistro *registroAuxiliar(const QString &classe);

} // namespace orb
