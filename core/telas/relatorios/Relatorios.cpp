#include "relatorios/Relatorios.h"

#include "Recusa.h"
#include "ui/Impressao.h"

#include <QAbstractTextDocumentLayout>
#include <QBuffer>
#include <QFile>
#include <QImage>
#include <QPageSize>
#include <QPainter>
#include <QPdfWriter>
#include <QTextDocument>

namespace orb {

namespace {

constexpr int kResolucao = 300;  // dots per inch of the PDF
constexpr int kDpiImagem = 120;  // of the JPEG pages: legible on a phone, small enough to mail

// The report laid out on A4 pages at `dpi`: the fonts are measured on a device of that resolution
// (`dispositivo`, which must outlive the layout), so that they keep their size in points whatever
// the screen's resolution, and printing only scales the page to the paper.
void montar(QTextDocument &doc, QImage &dispositivo, const QString &html, int dpi)
{
    dispositivo = QImage(1, 1, QImage::Format_RGB32);
    dispositivo.setDotsPerMeterX(qRound(dpi / 0.0254));
    dispositivo.setDotsPerMeterY(qRound(dpi / 0.0254));
    doc.documentLayout()->setPaintDevice(&dispositivo);
    prepararDocumento(doc, html);
    const QPageLayout pagina(QPageSize(QPageSize::A4), QPageLayout::Portrait, QMarginsF(12, 12, 12, 12), QPageLayout::Millimeter);
    doc.setPageSize(pagina.paintRectPixels(dpi).size());
}

QByteArray pdf(const QString &html)
{
    QByteArray bytes;
    QBuffer buf(&bytes);
    buf.open(QIODevice::WriteOnly);
    QPdfWriter w(&buf);
    w.setPageSize(QPageSize(QPageSize::A4));
    w.setPageMargins(QMarginsF(12, 12, 12, 12), QPageLayout::Millimeter);
    w.setResolution(kResolucao);
    QTextDocument doc;
    QImage dispositivo;
    montar(doc, dispositivo, html, kResolucao);
    doc.print(&w);
    return bytes;
}

// Every page one under the other, on white, as one JPEG.
QByteArray jpeg(const QString &html)
{
    QTextDocument doc;
    QImage dispositivo;
    montar(doc, dispositivo, html, kDpiImagem);
    const QSizeF pag = doc.pageSize();
    const int paginas = qMax(1, doc.pageCount());
    const int margem = kDpiImagem / 2;
    QImage img(int(pag.width()) + 2 * margem, paginas * (int(pag.height()) + margem) + margem, QImage::Format_RGB32);
    img.fill(Qt::white);
    QPainter p(&img);
    p.translate(margem, margem);
    doc.drawContents(&p, QRectF(QPointF(0, 0), QSizeF(pag.width(), paginas * pag.height())));
    p.end();
    QByteArray bytes;
    QBuffer buf(&bytes);
    buf.open(QIODevice::WriteOnly);
    img.save(&buf, "JPG", 85);
    return bytes;
}

} // namespace

void visualizarRelatorio(const QString &titulo, const QString &html, QWidget *parent) { imprimirHtml(titulo, html, parent); }

bool salvarRelatorioPdf(const QString &html, const QString &arquivo)
{
    QFile f(arquivo);
    const QByteArray bytes = pdf(html);
    return f.open(QIODevice::WriteOnly) && f.write(bytes) == bytes.size();
}

FormatoRelatorio formatoRelatorio(const QString &codigo)
{
    if (codigo == QLatin1String("J")) return FormatoRelatorio::Jpeg;
    if (codigo == QLatin1String("H")) return FormatoRelatorio::Html;
    return FormatoRelatorio::Pdf;
}

Anexo exportarRelatorio(const QString &html, FormatoRelatorio f, const QString &nomeBase)
{
    switch (f) {
    case FormatoRelatorio::Jpeg: return {nomeBase + ".jpg", "image/jpeg", jpeg(html)};
    case FormatoRelatorio::Html: return {nomeBase + ".html", "text/html; charset=UTF-8", html.toUtf8()};
    case FormatoRelatorio::Pdf: break;
    }
    return {nomeBase + ".pdf", "application/pdf", pdf(html)};
}

void enviarRelatorio(db::Transacao &t, const QString &html, FormatoRelatorio f, const QString &nomeBase, MensagemEmail m)
{
    const ContaEmail conta = contaEmail(t);  // before the export: a missing account costs nothing
    m.anexos.append(exportarRelatorio(html, f, nomeBase));
    enviarEmail(conta, m);
}

} // namespace orb
