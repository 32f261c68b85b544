// Pictures: which files are accepted, with which message, and the type kept beside the bytes.

#include "apoio/TabsTeste.h"
#include "ui/Foto.h"
#include "ui/FormRegistro.h"
#include "Recusa.h"

#include <QBuffer>
#include <QImage>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace orb;

namespace {

QByteArray imagem(const char *formato)
{
    QImage i(8, 8, QImage::Format_RGB32);
    i.fill(Qt::darkGreen);
    QByteArray b;
    QBuffer buf(&b);
    buf.open(QIODevice::WriteOnly);
    i.save(&buf, formato);
    return b;
}

TEST(Foto, AcceptedFilesAndMessages)
{
    QTemporaryDir dir;
    auto arquivo = [&](const QString &nome, const QByteArray &dados) {
        QFile f(dir.filePath(nome));
        f.open(QIODevice::WriteOnly);
        f.write(dados);
        return f.fileName();
    };
    const struct { QString caminho, tipo, recusa; } casos[] = {
        {"", "", "Defina o caminho da foto primeiro!"},
        {dir.filePath("nada.jpg"), "", "Foto não encontrada!"},
        {arquivo("texto.jpg", "não sou uma foto"), "", "Tipo de arquivo inválido!"},
        {arquivo("gif.png", imagem("GIF").isEmpty() ? QByteArray("GIF89a....") : imagem("GIF")), "", "Tipo de arquivo inválido!"},
        {arquivo("a.png", imagem("PNG")), "PNG", ""},
        {arquivo("b.jpeg", imagem("JPG")), "JPG", ""},
        {arquivo("sem_extensao", imagem("BMP")), "BMP", ""},  // the content decides, not the name
    };
    for (const auto &c : casos) {
        SCOPED_TRACE(c.caminho.toStdString());
        try {
            const Foto f = carregarFoto(c.caminho);
            EXPECT_EQ(f.tipo, c.tipo);
            EXPECT_TRUE(c.recusa.isEmpty());
        } catch (const Recusa &r) {
            EXPECT_EQ(r.texto, c.recusa);
        }
    }
}

struct FotoNoBanco : teste::ComTabs {};

// The bytes go to the blob and their type to the companion column; removing clears both.
TEST_F(FotoNoBanco, TypeIsKeptBesideThePicture)
{
    DeclaracaoRegistro d;
    d.tabela = "TBCAD";
    d.campos = {{"NOME", "Nome"}, {"FOTO", "Foto", CampoForm::Foto, {}, 0, 2, {}, {}, {}, {}, false, "TIPOFOTO"}};
    db::Transacao t(tabs.DbORB());
    const QByteArray png = imagem("PNG");
    const int id = gravarRegistro(t, d, 0, {{"NOME", "Com foto"}, {"FOTO", png}});
    auto ler = [&](const char *coluna) {
        return db::escalar(t, QString("select %1 from TbCad where Id = :ID").arg(coluna), {{"ID", id}});
    };
    EXPECT_EQ(ler("Foto").toByteArray(), png);
    EXPECT_EQ(ler("TipoFoto").toString(), "PNG");
    gravarRegistro(t, d, id, {{"NOME", "Com foto"}, {"FOTO", QVariant()}});
    EXPECT_TRUE(ler("Foto").isNull());
    EXPECT_TRUE(ler("TipoFoto").isNull());
}

} // namespace
