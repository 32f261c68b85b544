#pragma once
// The main menus of the business segments, and the forms the program has built.
// A menu item shows only when its form exists, so a user never meets a dead click.

#include "acesso/Permissoes.h"

#include <QList>
#include <QString>
#include <functional>

class QWidget;

namespace orb {

// The seven segments, in the order they are compared.
inline const QStringList kRamos = {"CO", "IG", "AL", "AC", "EN", "ME", "VE"};

// Menu of a segment ("MainMenu1" … "MainMenu7"); an unknown code keeps the commercial one.
QString nomeMenuPrincipal(const QString &ramo);
// Every group and item designed for the segment, built or not.
QList<GrupoCatalogo> menuDoRamo(const QString &ramo);
// The same, keeping only items whose form exists (groups are kept even when empty).
QList<GrupoCatalogo> menuDisponivel(const QString &ramo);

// Forms register a factory under their class name ("TCadComerciais") at start.
using FabricaFormulario = std::function<QWidget *(QWidget *parent)>;
// `recusaVisualizacao`: what a user without access to the module is told (forms word it their own way).
void registrarFormulario(const QString &classe, FabricaFormulario f, const QString &recusaVisualizacao = {});
QString recusaVisualizacao(const QString &classe);
bool formularioExiste(const QString &classe);
QWidget *criarFormulario(const QString &classe, QWidget *parent);

} // namespace orb
