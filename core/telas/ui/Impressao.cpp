#include "ui/Impressao.h"

#include "relatorios/Relatorio.h"

#include <QAbstractItemModel>
#include <QDateTime>
#include <QPrintPreviewDialog>
#include <QPrinter>
#include <QImage>
#include <QRegularExpression>
#include <QTextDocument>
#include <QUrl>

namespace orb {

namespace {
std::function<void(const QString &, const QString &)> &impressora()
{
    static std::function<void(const QString &, const QString &)> f;
    return f;
}
} // namespace

QString htmlGrade(const QAbstractItemModel &mc, const QString &titulo, const QString &usuario)
{
    auto &m = const_cast<QAbstractItemModel &>(mc);
    // A lazily fetched list prints whole, not just the page on screen.
    while (m.canFetchMore({})) m.fetchMore({});
    const int colunas = m.columnCount();
    QVariantList cab, linhas;
    for (int c = 0; c < colunas; ++c) {
        const bool direita = m.data(m.index(0, c), Qt::TextAlignmentRole).toInt() & Qt::AlignRight;
        cab << QVariantMap{{"nome", m.headerData(c, Qt::Horizontal).toString()}, {"direita", direita}};
    }
    for (int r = 0; r < m.rowCount(); ++r) {
        QVariantList celulas;
        for (int c = 0; c < colunas; ++c) {
            const QModelIndex ix = m.index(r, c);
            celulas << QVariantMap{{"texto", m.data(ix).toString()},
                                   {"direita", bool(m.data(ix, Qt::TextAlignmentRole).toInt() & Qt::AlignRight)}};
        }
        linhas << QVariantMap{{"celulas", celulas}};
    }
    return renderizarRelatorio("RelLista", {{"titulo", titulo},
                                            {"impresso", QDateTime::currentDateTime().toString("dd/MM/yyyy hh:mm")},
                                            {"usuario", usuario},
                                            {"colunas", cab},
                                            {"linhas", linhas},
                                            {"registros", m.rowCount()}});
}

void prepararDocumento(QTextDocument &doc, const QString &html)
{
    static const QRegularExpression dados(R"(src\s*=\s*["'](data:image/[a-z+]+;base64,([A-Za-z0-9+/=\s]+))["'])");
    for (auto it = dados.globalMatch(html); it.hasNext();) {
        const auto m = it.next();
        QImage img;
        if (img.loadFromData(QByteArray::fromBase64(m.captured(2).toLatin1())))
            doc.addResource(QTextDocument::ImageResource, QUrl(m.captured(1)), img);
    }
    doc.setHtml(html);
}

void definirImpressora(std::function<void(const QString &, const QString &)> f)
{
    impressora() = std::move(f);
}

void imprimirHtml(const QString &titulo, const QString &html, QWidget *parent)
{
    if (impressora()) {
        impressora()(titulo, html);
        return;
    }
    QPrinter printer(QPrinter::HighResolution);
    printer.setDocName(titulo);
    QPrintPreviewDialog dlg(&printer, parent);
    dlg.setWindowTitle(titulo);
    QObject::connect(&dlg, &QPrintPreviewDialog::paintRequested, &dlg, [&html](QPrinter *p) {
        QTextDocument doc;
        prepararDocumento(doc, html);
        doc.print(p);
    });
    dlg.exec();
}

} // namespace orb
