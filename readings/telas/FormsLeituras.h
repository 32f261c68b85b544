#pragma once
// The machine routes' forms, registered under their class names for the main window's menus.

namespace orb {

void registrarLeituras();

} // namespace orb
