#include "FormsLeituras.h"

#include "Maquinas.h"
#include "TLeituras86.h"
#include "principal/Menus.h"
#include "ui/FormRegistro.h"

namespace orb {

void registrarLeituras()
{
    for (const DeclaracaoRegistro &d : registrosMaquinas()) registrarRegistro(d);
    registrarFormulario("TLeituras86", [](QWidget *p) { return new TLeituras86(p); });
}

} // namespace orb
