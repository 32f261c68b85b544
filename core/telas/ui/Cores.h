#pragma once
// Focus colouring of edit controls: the field with the focus wears the current-field colour of
// the global parameters; one saved-colour slot, so entry and exit must come in pairs.

#include <QColor>

class QWidget;

namespace orb {

void definirCorCampoAtual(const QColor &c);
void MudaCorEntrada(QWidget *w);
void MudaCorSaida(QWidget *w);

} // namespace orb
