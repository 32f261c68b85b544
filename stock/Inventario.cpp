#include "Inventario.h"

namespace orb {

void registrarInventario()
{
}

} // namespace orb
