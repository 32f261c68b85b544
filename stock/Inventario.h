#pragma once
// The company's own inventory: supplies and fixed assets, their movements and maintenances.

namespace orb {

void registrarInventario();

} // namespace orb
