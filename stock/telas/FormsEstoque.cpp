#include "FormsEstoque.h"

#include "TEstoque.h"
#include "TInventario.h"
#include "principal/Menus.h"

namespace orb {

void registrarEstoque()
{
    for (const DeclaracaoRegistro &d : registrosEstoque()) registrarRegistro(d);
    registrarFormulario("TEstoque", [](QWidget *p) { return new TEstoque(p); });
}

void registrarInventario()
{
    registrarFormulario("TInventario", [](QWidget *p) { return new TInventario(p); });
}

} // namespace orb
