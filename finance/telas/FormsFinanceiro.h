#pragma once
// The finance forms, registered under their class names for the main window's menus.

namespace orb {

void registrarFinanceiro();

} // namespace orb
