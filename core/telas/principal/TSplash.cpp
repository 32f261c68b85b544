#include "principal/TSplash.h"

#include <QApplication>
#include <QLabel>
#include <QProgressBar>
#include <QVBoxLayout>

namespace orb {

TSplash::TSplash(QWidget *parent) : QWidget(parent, Qt::SplashScreen | Qt::FramelessWindowHint)
{
    setObjectName("TSplash");
    setFixedSize(440, 200);
    // By object name: a type selector would need the namespace spelled "orb--TSplash".
    setAttribute(Qt::WA_StyledBackground);
    setStyleSheet("#TSplash { background: #f4f6f8; border: 1px solid #9aa5b1; }");
    auto *l = new QVBoxLayout(this);
    l->setContentsMargins(24, 16, 24, 20);
    auto *nome = new QLabel("<span style='font-size:22pt; font-weight:600; color:#2d4a66'>ORB Manager</span>", this);
    nome->setAlignment(Qt::AlignCenter);
    l->addWidget(nome, 1);
    texto_ = new QLabel(this);
    texto_->setObjectName("LbStatus");
    texto_->setAlignment(Qt::AlignCenter);
    l->addWidget(texto_);
    barra_ = new QProgressBar(this);
    barra_->setTextVisible(false);
    barra_->hide();
    l->addWidget(barra_);
}

void TSplash::mostrar(const QString &texto)
{
    texto_->setText(texto);
    barra_->hide();
    QApplication::processEvents();  // the start-up work that follows blocks the event loop
}

void TSplash::progresso(int feito, int total, const QString &descricao)
{
    barra_->setRange(0, total);
    barra_->setValue(feito);
    barra_->show();
    if (!descricao.isEmpty()) texto_->setText(descricao);
    QApplication::processEvents();
}

} // namespace orb
