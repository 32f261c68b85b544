#pragma once
// The report layer's forms part: a rendered report (HTML) to the print preview, or to a PDF file.

#include <QString>

class QWidget;

namespace orb {

// Preview and print (tests replace the printer: see definirImpressora in ui/Impressao.h).
void visualizarRelatorio(const QString &titulo, const QString &html, QWidget *parent);
// Writes the report as an A4 PDF; false when the file cannot be written.
bool salvarRelatorioPdf(const QString &html, const QString &arquivo);

} // namespace orb
