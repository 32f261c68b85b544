#pragma once
// The one place unhandled errors end up: known data errors get a short message, anything else
// the long one, a screenshot and a support report saved in "Erros"; the program keeps running.

#include "dados/Datas.h"
#include "db/Erros.h"
#include "registro/Registro.h"

#include <QApplication>
#include <exception>

namespace orb {

// The program's application object: an exception escaping any event handler is reported by
// Ae1Exception instead of ending the program.
class Aplicacao : public QApplication {
    Q_OBJECT
public:
    Aplicacao(int &argc, char **argv);
    bool notify(QObject *receptor, QEvent *evento) override;
};

// Where "Erros" is created (the program's folder when empty).
void definirPastaErros(const QString &pasta);

// Reports an error. Inside any catch block `Ae1Exception()` reports the one being handled.
// Callable from any thread: the report is made in the GUI thread.
void Ae1Exception(const std::exception_ptr &e = std::current_exception(), QObject *sender = nullptr);

// The server stopped answering. Open edits are discarded (their area transaction died with the
// attachment), the workstation attaches again when the server already answers (else at the next
// action), and the user reads one short message naming what was not saved.
void ConexaoPerdida();
// A database error a handler caught: a lost connection goes the way above, any other kind shows
// its own message.
void AvisarFalha(const db::ErroBanco &e);

// The short messages, decided from the error's kind (kDataInvalida comes with the date rules).
inline const QString kDependentes =
    QStringLiteral("Não foi possível excluir este registro pois existem registros dependentes do mesmo!");

} // namespace orb
