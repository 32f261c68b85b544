#pragma once
// The report layer's rules part: a report is a mustache HTML template, found by name in the
// "reports" folder beside the program, filled with datasets (maps, lists of maps, values).
// Printing, preview and PDF belong to the forms library (core/telas/relatorios).

#include <QString>
#include <QVariantMap>

namespace orb {

// The folder of the templates: "reports" beside the program (or beside its parent folder, where
// the test and bench programs live). `definirPastaRelatorios` overrides it.
QString pastaRelatorios();
void definirPastaRelatorios(const QString &pasta);

// The template `modelo` ("RelEncMovim") rendered with `dados`; {{> nome}} includes the part
// reports/nome.html. Texts are HTML-escaped, money and dates arrive already formatted; an empty
// text is false in a section. Throws Recusa when a template or part is missing or malformed.
QString renderizarRelatorio(const QString &modelo, const QVariantMap &dados);

} // namespace orb
