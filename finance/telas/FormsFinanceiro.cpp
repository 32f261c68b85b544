#include "FormsFinanceiro.h"

#include "CondPagto.h"
#include "TAbEncMovimento.h"
#include "TContas.h"
#include "principal/Menus.h"
#include "ui/FormRegistro.h"

namespace orb {

void registrarFinanceiro()
{
    static const DeclaracaoRegistro condPagto = declaracaoCondPagto();
    registrarRegistro(condPagto);
    registrarFormulario("TAbEncMovimento", [](QWidget *p) { return new TAbEncMovimento(p); });
    registrarFormulario("TContas", [](QWidget *p) { return new TContas("Rec", p); });
    registrarFormulario("TContasPagar", [](QWidget *p) { return new TContas("Pag", p); });
}

} // namespace orb
