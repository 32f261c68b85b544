#pragma once
// The sales forms, registered under their class names for the main window's menus.

namespace orb {

void registrarVendas();

} // namespace orb
