#pragma once
// A rule refused what the user asked: the message to show and the field to focus.
// Business routines throw it; the form's handler shows it and puts the cursor on the field.

#include <QString>
#include <stdexcept>

namespace orb {

struct Recusa : std::runtime_error {
    QString texto;
    QString campo;
    explicit Recusa(const QString &t, const QString &c = {}) : std::runtime_error(t.toStdString()), texto(t), campo(c) {}
};

} // namespace orb
