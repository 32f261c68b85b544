#pragma once
// The finance screens' plots: totals per payment form (bars), and receivable and payable totals
// per day (two bar series).

#include "Contas.h"

#include <QList>
#include <QPair>
#include <QWidget>

class QChartView;

namespace orb {

class GraficoFormas : public QWidget {
    Q_OBJECT
public:
    explicit GraficoFormas(const QString &titulo, QWidget *parent = nullptr);
    // (category, value): bars with the value over each.
    void mostrar(const QList<QPair<QString, db::Decimal>> &valores);
    int barras() const;

private:
    QChartView *vista_ = nullptr;
    QString titulo_;
    int barras_ = 0;
};

class GraficoDias : public QWidget {
    Q_OBJECT
public:
    explicit GraficoDias(QWidget *parent = nullptr);
    void mostrar(const QList<TotalDia> &dias);

private:
    QChartView *vista_ = nullptr;
};

} // namespace orb
