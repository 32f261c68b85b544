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
