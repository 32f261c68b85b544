#pragma once
// The dialogs of approval ("Aprovação") and delivery ("Entregar"): they gather the step's entries
// and hand them to the form, which runs the step in its transaction; a refusal keeps them open.

#include <QDateTime>
#include <QDialog>
#include <functional>

class QComboBox;
class QLabel;
class QLineEdit;
class QTableWidget;

namespace db { class Transacao; }

namespace orb {

class CampoData;

// Tests answer a dialog here instead of a person: called with the dialog built, instead of exec().
using RespostaDialogo = std::function<void(QDialog &)>;
void definirRespostaDialogo(RespostaDialogo f);
int executarDialogo(QDialog &d);

class TDataAprovacaoVendas : public QDialog {
    Q_OBJECT
public:
    // `aprovar(data, geraFin)` returns whether the approval went through.
    TDataAprovacaoVendas(const QString &responsavel, const QString &geraFin,
                         std::function<bool(const QDateTime &, const QString &)> aprovar, QWidget *parent = nullptr);
    void BtOkClick();

    CampoData *edData = nullptr;
    QComboBox *cbGeraFin = nullptr;

private:
    std::function<bool(const QDateTime &, const QString &)> aprovar_;
};

class TDataEntregaVenda : public QDialog {
    Q_OBJECT
public:
    // The merchandise of the operation is shown from `t`; `entregar(data, nota)` runs the step.
    TDataEntregaVenda(db::Transacao &t, int idCom, const QString &responsavel,
                      std::function<bool(const QDateTime &, const QString &)> entregar, QWidget *parent = nullptr);
    void BtOkClick();

    CampoData *edData = nullptr;
    QLineEdit *edNota = nullptr;
    QTableWidget *itens = nullptr;

private:
    std::function<bool(const QDateTime &, const QString &)> entregar_;
};

} // namespace orb
