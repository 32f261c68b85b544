#pragma once
// The payment-condition registry ("Comercial - Condições de Pagamento") with its instalment rows,
// which follow the count, the down payment, the first due date and the interval.

#include "registro/Registro.h"

namespace orb {

DeclaracaoRegistro declaracaoCondPagto();
// The rows as they stand after a change of the terms in `cond` (PARCELAS, ENTRADA, PRIMVENC,
// INTVENC): "EN" first with a down payment, else "01"; then "02", ...; a new row takes "CHEQUE";
// rows past the count are removed from the edit.
void refazerParcelasCondPagto(const Valores &cond, EdicaoDetalhe &linhas);

} // namespace orb
