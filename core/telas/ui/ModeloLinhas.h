#pragma once
// A grid model over the rows of a detail as an edit holds them (not yet written), shown with the
// same conventions as the database grids; a lookup field shows its list's caption, not its ID.

#include "registro/Registro.h"

#include <QAbstractTableModel>
#include <QHash>

namespace orb {

class ModeloLinhas : public QAbstractTableModel {
    Q_OBJECT
public:
    ModeloLinhas(const DetalheRegistro &d, QObject *parent = nullptr);

    // The rows to show; the model keeps a pointer, so call again after the edit changes.
    void definir(const EdicaoDetalhe *e);
    // The lookup captions are read again (a list changed elsewhere).
    void esquecerListas() { listas_.clear(); }

    int rowCount(const QModelIndex &p = {}) const override;
    int columnCount(const QModelIndex &p = {}) const override;
    QVariant data(const QModelIndex &i, int role) const override;
    QVariant headerData(int s, Qt::Orientation o, int role) const override;

private:
    QString legenda(const CampoForm &c, const QVariant &v) const;
    const DetalheRegistro d_;  // a copy: the form's declaration is gone before its children
    const EdicaoDetalhe *e_ = nullptr;
    mutable QHash<QString, QHash<QString, QString>> listas_;  // field -> (id as text -> caption)
};

} // namespace orb
