#pragma once
// The report layer's forms part: a rendered report (HTML) to the print preview, the printer, a
// PDF, JPEG or HTML file, or mailed as an attachment in one of those formats.

#include "email/Email.h"

#include <QString>

class QWidget;

namespace orb {

// Preview and print (tests replace the printer: see definirImpressora in ui/Impressao.h).
void visualizarRelatorio(const QString &titulo, const QString &html, QWidget *parent);
// Writes the report as an A4 PDF; false when the file cannot be written.
bool salvarRelatorioPdf(const QString &html, const QString &arquivo);

enum class FormatoRelatorio { Pdf, Jpeg, Html };
// The mail dialogs' codes: "J" JPEG, "H" HTML, anything else ("P", "E" for the default) PDF.
FormatoRelatorio formatoRelatorio(const QString &codigo);
// The report as a file: "<nomeBase>.pdf", ".jpg" (the pages one under the other) or ".html".
Anexo exportarRelatorio(const QString &html, FormatoRelatorio f, const QString &nomeBase);
// Exports the report and mails it with the account of the global parameters; throws Recusa.
void enviarRelatorio(db::Transacao &t, const QString &html, FormatoRelatorio f, const QString &nomeBase, MensagemEmail m);

} // namespace orb
