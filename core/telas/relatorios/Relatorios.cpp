#include "relatorios/Relatorios.h"

#include "ui/Impressao.h"

#include <QFile>
#include <QFileInfo>
#include <QPageSize>
#include <QPdfWriter>
#include <QTextDocument>

namespace orb {

void visualizarRelatorio(const QString &titulo, const QString &html, QWidget *parent) { imprimirHtml(titulo, html, parent); }

bool salvarRelatorioPdf(const QString &html, const QString &arquivo)
{
    QPdfWriter pdf(arquivo);
    pdf.setPageSize(QPageSize(QPageSize::A4));
    pdf.setResolution(300);
    QTextDocument doc;
    doc.setHtml(html);
    doc.setPageSize(pdf.pageLayout().paintRectPixels(pdf.resolution()).size());
    doc.print(&pdf);
    return QFile::exists(arquivo) && QFileInfo(arquivo).size() > 0;
}

} // namespace orb

namespace orb {

FormatoRelatorio formatoRelatorio(const QString &codigo)
{
    if (codigo == QLatin1String("J")) return FormatoRelatorio::Jpeg;
    if (codigo == QLatin1String("H")) return FormatoRelatorio::Html;
    return FormatoRelatorio::Pdf;
}

Anexo exportarRelatorio(const QString &html, FormatoRelatorio f, const QString &nomeBase)
{
    // Filled in with the exports; until then only HTML.
    Q_UNUSED(f);
    return {nomeBase + ".html", "text/html", html.toUtf8()};
}

void enviarRelatorio(db::Transacao &t, const QString &html, FormatoRelatorio f, const QString &nomeBase, MensagemEmail m)
{
    m.anexos.append(exportarRelatorio(html, f, nomeBase));
    enviarEmail(contaEmail(t), m);
}

} // namespace orb
