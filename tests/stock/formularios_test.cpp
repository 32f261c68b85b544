// Every menu item of every business segment that has a form opens it on a fresh database.

#include "FormsCadastros.h"
#include "FormsEstoque.h"
#include "FormsFinanceiro.h"
#include "FormsVendas.h"
#include "apoio/TabsTeste.h"
#include "principal/Menus.h"
#include "principal/TMain.h"

#include <QDir>
#include <QSet>
#include <gtest/gtest.h>
#include <memory>

using namespace orb;

namespace {

struct FormulariosTest : teste::ComTabs {};

// Every menu item of every segment opens its form, and the form fits the main window's tab area on
// a 1366×768 screen: none asks for more width than the screen has.
TEST_F(FormulariosTest, EveryMenuFormOpensAndFitsTheScreen)
{
    constexpr int kLarguraUtil = 1366 - 24;  // the window's frame and the tab area's margins
    registrarFormulariosNucleo(QDir::tempPath());
    registrarAuxiliares();
    registrarComercial();
    registrarEstoque();
    registrarInventario();
    registrarFinanceiro();
    registrarVendas();
    QSet<QString> abertos;
    for (const QString &ramo : kRamos)
        for (const GrupoCatalogo &g : menuDoRamo(ramo))
            for (const ModuloMenu &m : g.modulos) {
                if (!formularioExiste(m.classe) || abertos.contains(m.classe) || m.classe == "TConfig") continue;
                SCOPED_TRACE(m.classe.toStdString());
                std::unique_ptr<QWidget> w(criarFormulario(m.classe, nullptr));
                ASSERT_NE(w, nullptr);
                w->show();
                EXPECT_LE(w->minimumSizeHint().width(), kLarguraUtil) << m.classe.toStdString();
                abertos.insert(m.classe);
            }
    // The stock forms are among them, in the segments that keep stock.
    for (const char *c : {"TEstoque", "TInventario", "TGrades", "TAcondic", "TKits", "TMedicamentos", "TMateriais", "TVendas",
                          "TCompras", "TServicos", "TContratos", "TProjetos", "TCondPagto", "TEtapasCom"})
        EXPECT_TRUE(abertos.contains(c)) << c;
    EXPECT_TRUE(msg.avisos.isEmpty()) << msg.avisos.join(" | ").toStdString();
}

} // namespace
