#include "FormsVendas.h"

#include "TVendas.h"
#include "principal/Menus.h"

namespace orb {

void registrarVendas()
{
    registrarFormulario("TVendas", [](QWidget *p) { return new TVendas("Ven", p); });
    registrarFormulario("TCompras", [](QWidget *p) { return new TVendas("Com", p); });
}

} // namespace orb
