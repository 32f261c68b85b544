#include "FormsCadastros.h"

#include "Auxiliares.h"
#include "ui/FormRegistro.h"

namespace orb {

void registrarAuxiliares()
{
    for (const DeclaracaoRegistro &d : registrosAuxiliares()) registrarRegistro(d);
}

} // namespace orb
