#pragma once
// The editors every screen uses for dates, times, numbers and phones: plain line edits that take
// what people type, show it in the program's conventions on leaving, and say when it cannot be read.

#include "dados/Datas.h"

#include <QLineEdit>
#include <QVariant>
#include <memory>

class QCalendarWidget;

namespace orb {

struct CampoForm;

// Dates, times and both. "H" fills in today (or the time now); F4 or Alt+Down opens the calendar
// at the date held, or at today.
class CampoData : public QLineEdit {
    Q_OBJECT
public:
    enum Modo { Data, Hora, DataHora };
    explicit CampoData(Modo modo = Data, QWidget *parent = nullptr);

    Modo modo() const { return modo_; }
    Leitura leitura() const;
    // NULL when empty, else QDate, QTime or QDateTime; what cannot be read is refused naming `campo`.
    QVariant valor(const QString &campo = {}) const;
    void definir(const QVariant &v);
    void abrirCalendario();
    QCalendarWidget *calendario() const { return calendario_; }

protected:
    void keyPressEvent(QKeyEvent *e) override;
    void focusOutEvent(QFocusEvent *e) override;

private:
    void mostrar(const Leitura &l);

    Modo modo_;
    QCalendarWidget *calendario_ = nullptr;
};

// Integers and decimals of a field, shown as the grids show its column ("12,50", "12,50%", "000003").
class CampoNumero : public QLineEdit {
    Q_OBJECT
public:
    CampoNumero(const CampoForm &c, QWidget *parent = nullptr);
    ~CampoNumero() override;

    QVariant valor() const;  // NULL when empty; "Valor inválido!" naming the field otherwise
    void definir(const QVariant &v);

protected:
    void focusOutEvent(QFocusEvent *e) override;

private:
    std::unique_ptr<CampoForm> c_;
};

// Phones laid out while typed, landline or mobile by the digits' count; the value is the digits.
class CampoTelefone : public QLineEdit {
    Q_OBJECT
public:
    explicit CampoTelefone(QWidget *parent = nullptr);
    QString digitos() const;
    void definir(const QString &digitos);
};

} // namespace orb
