#pragma once
// The "Salvar"/"Cancelar" pair every dialog of the program ends with.

#include <QDialog>
#include <QDialogButtonBox>
#include <QPushButton>
#include <functional>

namespace orb {

// Salvar runs `salvar` (which accepts the dialog when it succeeds); Cancelar rejects it.
inline QDialogButtonBox *botoesSalvarCancelar(QDialog *d, std::function<void()> salvar)
{
    auto *bb = new QDialogButtonBox(QDialogButtonBox::Save | QDialogButtonBox::Cancel, d);
    bb->button(QDialogButtonBox::Save)->setText(QStringLiteral("Salvar"));
    bb->button(QDialogButtonBox::Cancel)->setText(QStringLiteral("Cancelar"));
    QObject::connect(bb, &QDialogButtonBox::accepted, d, std::move(salvar));
    QObject::connect(bb, &QDialogButtonBox::rejected, d, &QDialog::reject);
    return bb;
}

} // namespace orb
