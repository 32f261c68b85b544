#pragma once
// The operation form's combos chosen as a user chooses them, the list read again first.

#include "Cenario.h"
#include "TVendas.h"
#include "ui/ComboConsulta.h"

namespace teste {

inline void escolher(QComboBox *cb, const QVariant &id)
{
    if (auto *cc = qobject_cast<orb::ComboConsulta *>(cb)) cc->recarregar();
    cb->setCurrentIndex(cb->findData(id));
}

// The scenario's customer, attendant and company on the header.
inline void partes(orb::TVendas &f, const CenarioVendas &c)
{
    escolher(f.findChild<orb::ComboConsulta *>("CbCliente"), c.cliente);
    escolher(f.findChild<orb::ComboConsulta *>("CbAtendente"), c.atendente);
    escolher(f.findChild<orb::ComboConsulta *>("CbEmpresa"), c.empresa);
}

} // namespace teste
