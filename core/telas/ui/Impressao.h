#pragma once
// Printing a registry's list: what the grid shows (all its rows under the current search)
// as a table under the form's title, sent to the print preview.

#include <QString>
#include <functional>

class QAbstractItemModel;
class QTextDocument;
class QWidget;

namespace orb {

// The list as an HTML document through the "RelLista" template: title, who printed it and when,
// the columns, the rows, the count.
QString htmlGrade(const QAbstractItemModel &m, const QString &titulo, const QString &usuario);

// The document of an HTML report, its inline images (data: URIs, such as a company logo) given to
// it as resources, which QTextDocument does not decode by itself.
void prepararDocumento(QTextDocument &doc, const QString &html);

// Opens the print preview of an HTML document. Tests replace the printer to read what was sent.
void imprimirHtml(const QString &titulo, const QString &html, QWidget *parent);
void definirImpressora(std::function<void(const QString &titulo, const QString &html)> f);

} // namespace orb
