#include "FormsVendas.h"

#include "TVendaExp.h"
#include "TVendas.h"
#include "principal/Menus.h"

namespace orb {

void registrarVendas()
{
    // One form for every kind a menu names; the rentals of the operation model have no menu item.
    for (const ModoOperacao &m : modosOperacao())
        if (!m.classe.isEmpty())
            registrarFormulario(m.classe, [codigo = m.codigo](QWidget *p) { return new TVendas(codigo, p); });
    registrarFormulario(kClasseVendaExpressa, [](QWidget *p) { return new TVendaExp(p); });
}

} // namespace orb
