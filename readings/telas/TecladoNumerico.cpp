#include "TecladoNumerico.h"

#include <QFontDatabase>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace orb {

QFont fonteContador(int pixels)
{
    static const QString familia = [] {
        const int id = QFontDatabase::addApplicationFont(QStringLiteral(":/fontes/DSEG7Classic-Bold.ttf"));
        const QStringList f = id < 0 ? QStringList() : QFontDatabase::applicationFontFamilies(id);
        return f.isEmpty() ? QStringLiteral("DejaVu Sans Mono") : f.first();
    }();
    QFont f(familia);
    f.setPixelSize(pixels);
    return f;
}

TecladoNumerico::TecladoNumerico(const QString &titulo, const QString &inicial, QWidget *parent) : QDialog(parent)
{
    setObjectName("TecladoNumerico");
    setWindowTitle(titulo);
    auto *l = new QVBoxLayout(this);
    auto *rotulo = new QLabel(titulo, this);
    rotulo->setStyleSheet("font-size: 18px;");
    l->addWidget(rotulo);
    visor_ = new QLineEdit(inicial, this);
    visor_->setObjectName("EdVisor");
    visor_->setReadOnly(true);
    visor_->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    visor_->setFont(fonteContador(40));
    visor_->setMinimumHeight(72);
    l->addWidget(visor_);
    auto *g = new QGridLayout;
    g->setSpacing(8);
    const char *teclas[] = {"7", "8", "9", "4", "5", "6", "1", "2", "3", "-", "0", "<"};
    for (int i = 0; i < 12; ++i) {
        const QString t = QString::fromLatin1(teclas[i]);
        auto *b = new QPushButton(t == "<" ? QStringLiteral("⌫") : t, this);
        b->setObjectName("Bt" + QString(t == "<" ? "Apagar" : t == "-" ? "Menos" : t));
        b->setMinimumSize(88, 72);
        b->setFocusPolicy(Qt::NoFocus);
        b->setStyleSheet("font-size: 26px;");
        connect(b, &QPushButton::clicked, this, [this, t] { tecla(t); });
        g->addWidget(b, i / 3, i % 3);
    }
    l->addLayout(g);
    auto *baixo = new QHBoxLayout;
    const std::pair<const char *, const char *> acoes[] = {{"BtLimpar", "Limpar"}, {"BtCancelar", "Cancelar"}, {"BtOk", "OK"}};
    for (const auto &[nome, texto] : acoes) {
        auto *b = new QPushButton(QString::fromUtf8(texto), this);
        b->setObjectName(nome);
        b->setMinimumHeight(64);
        b->setFocusPolicy(Qt::NoFocus);
        b->setStyleSheet("font-size: 20px;");
        baixo->addWidget(b);
        if (QLatin1String(nome) == "BtLimpar") connect(b, &QPushButton::clicked, this, [this] { tecla("C"); });
        else if (QLatin1String(nome) == "BtCancelar") connect(b, &QPushButton::clicked, this, &QDialog::reject);
        else connect(b, &QPushButton::clicked, this, &QDialog::accept);
    }
    l->addLayout(baixo);
}

QString TecladoNumerico::texto() const { return visor_->text(); }

void TecladoNumerico::tecla(const QString &t)
{
    QString s = novo_ ? QString() : visor_->text();
    novo_ = false;
    if (t == "C") s.clear();
    else if (t == "<") s.chop(1);
    else if (t == "-") s = s.startsWith('-') ? s.mid(1) : "-" + s;
    else if (s.size() < 10) s += t;  // the column is a 32-bit integer
    visor_->setText(s);
}

} // namespace orb
