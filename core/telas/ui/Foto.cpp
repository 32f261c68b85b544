#include "ui/Foto.h"

#include "ui/Mensagens.h"
#include "Recusa.h"

#include <QFile>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QPixmap>
#include <QPushButton>
#include <QVBoxLayout>

namespace orb {

Foto carregarFoto(const QString &caminho)
{
    if (caminho.trimmed().isEmpty()) throw Recusa(QStringLiteral("Defina o caminho da foto primeiro!"));
    QFile f(caminho.trimmed());
    if (!f.exists() || !f.open(QIODevice::ReadOnly)) throw Recusa(QStringLiteral("Foto não encontrada!"));
    Foto foto{f.readAll(), {}};
    foto.tipo = tipoDaFoto(foto.dados);
    if (foto.tipo.isEmpty() || QPixmap().loadFromData(foto.dados) == false)
        throw Recusa(QStringLiteral("Tipo de arquivo inválido!"));
    return foto;
}

CampoFoto::CampoFoto(QWidget *parent) : QWidget(parent)
{
    auto *l = new QHBoxLayout(this);
    l->setContentsMargins(0, 0, 0, 0);
    imagem_ = new QLabel(this);
    imagem_->setObjectName("ImgFoto");
    imagem_->setMinimumSize(160, 160);
    imagem_->setAlignment(Qt::AlignCenter);
    imagem_->setFrameShape(QFrame::StyledPanel);
    l->addWidget(imagem_, 1);
    auto *botoes = new QVBoxLayout;
    auto *carregarBt = new QPushButton(QStringLiteral("Carregar..."), this);
    auto *removerBt = new QPushButton(QStringLiteral("Remover"), this);
    botoes->addWidget(carregarBt);
    botoes->addWidget(removerBt);
    botoes->addStretch();
    l->addLayout(botoes);
    connect(carregarBt, &QPushButton::clicked, this, [this] {
        const QString arq = QFileDialog::getOpenFileName(this, QStringLiteral("Foto"), {},
                                                         QStringLiteral("Imagens (*.jpg *.jpeg *.png *.bmp)"));
        if (arq.isEmpty()) return;
        try {
            carregar(arq);
        } catch (const Recusa &r) {
            Atencao(r.texto);
        }
    });
    connect(removerBt, &QPushButton::clicked, this, [this] { definir({}); });
    mostrar();
}

void CampoFoto::definir(const QByteArray &dados)
{
    dados_ = dados;
    mostrar();
}

void CampoFoto::carregar(const QString &caminho)
{
    definir(carregarFoto(caminho).dados);
}

void CampoFoto::resizeEvent(QResizeEvent *)
{
    mostrar();
}

void CampoFoto::mostrar()
{
    QPixmap p;
    if (dados_.isEmpty() || !p.loadFromData(dados_)) {
        imagem_->setPixmap({});
        imagem_->setText(QStringLiteral("(sem foto)"));
        return;
    }
    imagem_->setPixmap(p.scaled(imagem_->size() - QSize(4, 4), Qt::KeepAspectRatio, Qt::SmoothTransformation));
}

} // namespace orb
