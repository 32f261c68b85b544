#include "ui/Impressao.h"

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
    QString h = "<html><body style='font-family:sans-serif; font-size:9pt'>";
    h += "<h3>" + titulo.toHtmlEscaped() + "</h3>";
    h += "<p>" + QDateTime::currentDateTime().toString("dd/MM/yyyy hh:mm") +
         (usuario.isEmpty() ? QString() : " - " + usuario.toHtmlEscaped()) + "</p>";
    h += "<table border='1' cellspacing='0' cellpadding='3' width='100%'><tr>";
    const int colunas = m.columnCount();
    for (int c = 0; c < colunas; ++c)
        h += "<th align='left'>" + m.headerData(c, Qt::Horizontal).toString().toHtmlEscaped() + "</th>";
    h += "</tr>";
    for (int r = 0; r < m.rowCount(); ++r) {
        h += "<tr>";
        for (int c = 0; c < colunas; ++c) {
            const QModelIndex ix = m.index(r, c);
            const bool direita = m.data(ix, Qt::TextAlignmentRole).toInt() & Qt::AlignRight;
            h += QString("<td%1>").arg(direita ? " align='right'" : "") + m.data(ix).toString().toHtmlEscaped() + "</td>";
        }
        h += "</tr>";
    }
    h += "</table><p>" + QString("%1 registro(s)").arg(m.rowCount()) + "</p></body></html>";
    return h;
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
