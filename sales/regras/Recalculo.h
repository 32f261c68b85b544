#pragma once
// The totals of a commercial operation recomputed from its lines, to the cent the database's own
// arithmetic gives for the same statements: products exact, divisions truncated at the summed
// scale, every stored value rounded half away from zero at its column's scale.

#include "registro/Registro.h"

namespace orb {

// ICMS rates of the selling company's state (TbIcms) and how the taxes reach the totals.
struct Aliquotas {
    db::Decimal percIcmsO = db::Decimal::bruto(0, 2);  // internal rate
    db::Decimal percIcmsD = db::Decimal::bruto(0, 2);  // rate for another state
    bool stNoSubtotal = true;  // ICMS ST is added to the price
    bool ipiNoTotal = true;    // IPI is charged on top
};

// The item's tax data a merchandise line takes, kept in the line under these keys (never written).
inline const QStringList kTributosItem = {"Z_ORIGEM", "Z_CST", "Z_PERCICMS", "Z_PERCREDBCICMS", "Z_PERCMVAICMSST",
                                          "Z_PERCREDBCICMSST", "Z_PERCIPI"};

// Steps 1 to 7 over the lines (TBCOMITENS columns, TIPO 'M' or 'S') and the header (TBCOM
// columns), in order: gross, discount ('S' spread from the header, 'I' per line), net, taxes of
// merchandise by CST group, subtotal and total, commissions, header sums.
void recalcular(Valores &cabecalho, QList<Valores> &linhas, const Aliquotas &a);

// The CST groups of the recalculation.
enum class GrupoCst { Tributado, ComSt, Reduzida, IsentaComSt, SemIcms };
GrupoCst grupoCst(const QString &cst);

db::Decimal decimal(const Valores &v, const QString &coluna);

} // namespace orb
