#pragma once
// The printout of a commercial document on screen (print preview, then the printer) or mailed as
// a PDF, JPEG or HTML attachment, and the dialog that confirms the address and the format.

#include "acesso/Sessao.h"

#include <QDateTime>
#include <QDialog>
#include <QString>

class QComboBox;
class QLineEdit;

namespace orb {

// `saida` "T" previews the document, "E" mails it to `dest` in `formato` ("P" PDF, "J" JPEG, "H"
// HTML). A refusal (no right, no mail account, a server that refuses) is told and nothing is
// lost; returns whether the document went out.
// `sufixo` "VE": the express sale's print settings.
bool ImpVenda(int op, int id, const QDateTime &dataApr, const QDateTime &dataEnt, const QString &saida = QStringLiteral("T"),
              const QString &dest = {}, const QString &formato = QStringLiteral("P"), QWidget *parent = nullptr,
              const Sessao &quem = sessao(), const QString &sufixo = {});

// A document's screen printing or mailing the document `id`, with the approval and delivery
// dates of its billing: "T" previews it, "E" opens "Enviar por E-mail".
void imprimirDocumento(int op, int id, const QString &saida, const Sessao &quem, QWidget *parent, const QString &sufixo = {});

// "Enviar por E-mail": the customer's address, editable, and the format; OK mails the document.
class TOpEmailVendas : public QDialog {
    Q_OBJECT
public:
    TOpEmailVendas(int op, int id, const QDateTime &dataApr, const QDateTime &dataEnt, const Sessao &quem, QWidget *parent = nullptr,
                   const QString &sufixo = {});
    void BtOkClick();

    QLineEdit *edEmail = nullptr;
    QComboBox *cbFormato = nullptr;  // data: "E" (PDF, the default), "J", "H"

private:
    int op_, id_;
    QDateTime dataApr_, dataEnt_;
    Sessao quem_;
    QString sufixo_;
};

} // namespace orb
