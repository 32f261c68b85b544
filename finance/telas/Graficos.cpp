#include "Graficos.h"

#include <QBarCategoryAxis>
#include <QBarSeries>
#include <QBarSet>
#include <QChart>
#include <QChartView>
#include <QLocale>
#include <QValueAxis>
#include <QVBoxLayout>

namespace orb {

namespace {

// Values for the eye: the plot's scale only, never what is stored or printed.
double paraGrafico(const db::Decimal &d) { return d.texto().toDouble(); }

QChartView *novaVista(QWidget *dono)
{
    auto *chart = new QChart;
    chart->legend()->setAlignment(Qt::AlignBottom);
    chart->setMargins(QMargins(4, 4, 4, 4));
    auto *v = new QChartView(chart, dono);
    v->setRenderHint(QPainter::Antialiasing);
    v->setMinimumHeight(210);
    auto *l = new QVBoxLayout(dono);
    l->setContentsMargins(0, 0, 0, 0);
    l->addWidget(v);
    return v;
}

void eixos(QChart *c, QAbstractSeries *s, const QStringList &categorias)
{
    auto *x = new QBarCategoryAxis;
    x->append(categorias);
    QFont pequena = x->labelsFont();
    pequena.setPointSizeF(pequena.pointSizeF() * 0.8);
    x->setLabelsFont(pequena);
    c->addAxis(x, Qt::AlignBottom);
    s->attachAxis(x);
    auto *y = new QValueAxis;
    y->setLabelFormat("%.0f");
    y->setMin(0);
    c->addAxis(y, Qt::AlignLeft);
    s->attachAxis(y);
    y->applyNiceNumbers();
    y->setLabelsFont(pequena);
}

} // namespace

GraficoFormas::GraficoFormas(const QString &titulo, QWidget *parent) : QWidget(parent), titulo_(titulo)
{
    setObjectName("GraficoFormas");
    vista_ = novaVista(this);
}

void GraficoFormas::mostrar(const QList<QPair<QString, db::Decimal>> &valores)
{
    QChart *c = vista_->chart();
    c->removeAllSeries();
    for (QAbstractAxis *a : c->axes()) c->removeAxis(a);
    c->setTitle(titulo_);
    auto *conjunto = new QBarSet("Total (R$)");
    QStringList categorias;
    for (const auto &[forma, total] : valores) {
        *conjunto << paraGrafico(total);
        categorias << forma;
    }
    conjunto->setLabelColor(Qt::black);
    auto *serie = new QBarSeries;
    serie->append(conjunto);
    serie->setLabelsVisible(true);
    serie->setLabelsFormat("@value");
    c->addSeries(serie);
    eixos(c, serie, categorias);
    c->legend()->setVisible(false);
    barras_ = int(valores.size());
}

int GraficoFormas::barras() const { return barras_; }

GraficoDias::GraficoDias(QWidget *parent) : QWidget(parent)
{
    setObjectName("GraficoDias");
    vista_ = novaVista(this);
}

void GraficoDias::mostrar(const QList<TotalDia> &dias)
{
    QChart *c = vista_->chart();
    c->removeAllSeries();
    for (QAbstractAxis *a : c->axes()) c->removeAxis(a);
    c->setTitle(dias.isEmpty() ? QString("Próximos 30 dias")
                               : "Próximos 30 dias (" + dias.first().dia.toString("dd/MM") + " a " + dias.last().dia.toString("dd/MM") + ")");
    auto *receber = new QBarSet("A receber");
    auto *pagar = new QBarSet("A pagar");
    receber->setColor(QColor("#3c8d5a"));
    pagar->setColor(QColor("#c0504d"));
    QStringList categorias;
    for (const TotalDia &d : dias) {
        *receber << paraGrafico(d.receber);
        *pagar << paraGrafico(d.pagar);
        categorias << d.dia.toString("dd");
    }
    auto *serie = new QBarSeries;
    serie->append(receber);
    serie->append(pagar);
    c->addSeries(serie);
    eixos(c, serie, categorias);
    c->legend()->setVisible(true);
}

} // namespace orb
