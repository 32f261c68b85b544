#include "acesso/Sessao.h"

namespace orb {

Sessao &sessao()
{
    static Sessao s;
    return s;
}

} // namespace orb
