#pragma once
// The stock forms, registered under their class names for the main window's menus.

namespace orb {

void registrarEstoque();
void registrarInventario();

} // namespace orb
