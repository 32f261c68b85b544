#include "FormsFinanceiro.h"

#include "CondPagto.h"
#include "ui/FormRegistro.h"

namespace orb {

void registrarFinanceiro()
{
    static const DeclaracaoRegistro condPagto = declaracaoCondPagto();
    registrarRegistro(condPagto);
}

} // namespace orb
