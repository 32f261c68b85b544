#pragma once
// Stock items and their lookup registries (size grids, packaging units, kits).

namespace orb {

void registrarEstoque();

} // namespace orb
