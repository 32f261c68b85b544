#pragma once
// Pictures kept in the database (a person's photo, an item's photos): loading a file with the
// registry's messages, telling its type from its bytes, and the field that shows one.

#include "registro/Registro.h"

#include <QByteArray>
#include <QString>
#include <QWidget>

class QLabel;

namespace orb {

struct Foto {
    QByteArray dados;
    QString tipo;  // "JPG", "PNG", "BMP" (the TIPOFOTO columns hold 5 characters)
};

// The file's picture; throws Recusa "Defina o caminho da foto primeiro!", "Foto não encontrada!"
// or "Tipo de arquivo inválido!". The type is read from the content, not trusted from the name.
Foto carregarFoto(const QString &caminho);

// A picture field: the image scaled to fit, with buttons to load one from a file and to remove it.
class CampoFoto : public QWidget {
    Q_OBJECT
public:
    explicit CampoFoto(QWidget *parent = nullptr);
    QByteArray dados() const { return dados_; }
    void definir(const QByteArray &dados);
    // Loads a file as the "Carregar..." button does, without the file dialog.
    void carregar(const QString &caminho);

protected:
    void resizeEvent(QResizeEvent *) override;

private:
    void mostrar();
    QByteArray dados_;
    QLabel *imagem_ = nullptr;
};

} // namespace orb
