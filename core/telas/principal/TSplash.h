#pragma once
// The start-up window: what is happening now, and the progress of the schema upgrade.

#include <QWidget>

class QLabel;
class QProgressBar;

namespace orb {

class TSplash : public QWidget {
    Q_OBJECT
public:
    explicit TSplash(QWidget *parent = nullptr);
    void mostrar(const QString &texto);
    void progresso(int feito, int total, const QString &descricao);

private:
    QLabel *texto_;
    QProgressBar *barra_;
};

} // namespace orb
