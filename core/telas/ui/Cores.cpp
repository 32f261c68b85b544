#include "ui/Cores.h"

#include "dados/Tabs.h"

#include <QWidget>

namespace orb {

namespace {
QColor corAtual(255, 255, 204);
QColor corSalva;
} // namespace

void definirCorCampoAtual(const QColor &c) { corAtual = c; }

void MudaCorEntrada(QWidget *w)
{
    if (!w) return;
    corSalva = w->palette().color(QPalette::Base);
    QPalette p = w->palette();
    p.setColor(QPalette::Base, corAtual);
    w->setPalette(p);
}

void MudaCorSaida(QWidget *w)
{
    if (!w || !corSalva.isValid()) return;
    QPalette p = w->palette();
    p.setColor(QPalette::Base, corSalva);
    w->setPalette(p);
}

} // namespace orb
