#pragma once
// A numeric pad for fingers: large keys, the number in the counters' face, OK and Cancelar.

#include <QDialog>

class QLineEdit;

namespace orb {

// The counters' seven-segment face (embedded in the program), at the given pixel size.
QFont fonteContador(int pixels);

class TecladoNumerico : public QDialog {
    Q_OBJECT
public:
    TecladoNumerico(const QString &titulo, const QString &inicial, QWidget *parent = nullptr);
    QString texto() const;
    // A key as a finger presses it: "0".."9", "-", "<" (erase one), "C" (clear).
    void tecla(const QString &t);

private:
    QLineEdit *visor_ = nullptr;
    bool novo_ = true;  // the first digit replaces the number shown
};

} // namespace orb
