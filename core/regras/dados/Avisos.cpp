#include "dados/Avisos.h"

#include <QStringList>

namespace orb {

AvisosTabelas &avisosTabelas()
{
    static AvisosTabelas *a = new AvisosTabelas;
    return *a;
}

const QStringList &tabelasComAviso()
{
    // The tables lookup boxes read: registries of names, codes and people.
    static const QStringList t = {"TBCIDADES", "TBBANCOS",  "TBFABRICANTES", "TBGRUPOS",    "TBGRUPOSSUB", "TBCAD",
                                  "TBNIVEIS",  "TBCORES",   "TBESPECIES",    "TBRACAS",     "TBSUBCAT",    "TBCAT",
                                  "TBFUNCOES", "TBESPEC",   "TBCONSULTORIOS", "TBCFOP",     "TBICMS",      "TBGRADES",
                                  "TBACOND", "TBETAPASCOM", "TBSTATUSCOM", "TBBLOCOS",    "TBINTEGRANTES", "TBINVENTARIO",
                                  "TBOPTEL",   "TBHORARIOS", "TBITENS",   "TBCCUSTO"};
    return t;
}

} // namespace orb
