#pragma once
// The registries' forms, registered under their class names for the main window's menus.

namespace orb {

void registrarAuxiliares();
void registrarComercial();

} // namespace orb
