#pragma once
// Quick registration of a customer from any screen: name, person type, CPF, sex, phone, CEP, city.

#include "Comercial.h"

#include <QDialog>

namespace orb {

class TMiniCad : public QDialog {
    Q_OBJECT
public:
    explicit TMiniCad(QWidget *parent = nullptr);
    // The new record's ID once saved (0 before).
    int id() const { return id_; }
    QWidget *campo(const QString &coluna) const;
    void definir(const QString &coluna, const QVariant &v);
    void conferirCpf();
    void conferirCnpj();
    void conferirDocumento(const QString &coluna);  // "CPF" or "CNPJ": its check digits, then repeated elsewhere
    void BtSalvarClick();

protected:
    bool eventFilter(QObject *o, QEvent *e) override;

private:
    QList<CampoForm> campos_;
    QList<QWidget *> widgets_;
    int id_ = 0;
};

} // namespace orb
