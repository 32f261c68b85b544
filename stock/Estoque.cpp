#include "Estoque.h"

namespace orb {

void registrarEstoque()
{
}

} // namespace orb
