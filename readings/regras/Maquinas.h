#pragma once
// The route operator's registries: areas, routes, reading operators, points and machines, each a
// declaration of its table, joins, order, required fields and deletion question.

#include "registro/Registro.h"

namespace orb {

inline const QString kMoedaAcimaDeUm = QStringLiteral("O valor multiplicador de moeda não pode ser maior que 1!");

// TAreas, TRotas, TOperadores, TPontos, TMaquinas, in the menu's order.
const QList<DeclaracaoRegistro> &registrosMaquinas();
const DeclaracaoRegistro &registroMaquinas(const QString &classe);

} // namespace orb
