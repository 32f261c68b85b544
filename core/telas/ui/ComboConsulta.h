#pragma once
// A lookup box over a list query ("Select Id, caption From Table …"). It stays true to its table:
// when the table changes (here or on another workstation) the list is read again, lazily, the
// next time the box is opened or entered, keeping the entry chosen. F4 registers a new entry of
// the table in place, without leaving the edit, and chooses it.

#include <QComboBox>
#include <functional>

namespace orb {

class ComboConsulta : public QComboBox {
    Q_OBJECT
public:
    // `vazio` is the caption of the first entry, the one with no row ("(todos)" in a filter).
    explicit ComboConsulta(const QString &sqlLista, const QString &vazio = {}, QWidget *parent = nullptr);
    // The table the list reads (upper case), taken from the query's first "From".
    const QString &tabela() const { return tabela_; }
    bool desatualizada() const { return desatualizada_; }
    // Reads the list now; the chosen entry stays chosen while it exists.
    void recarregar();
    // F4: the table's quick registration, when it has one; the new entry is chosen.
    void cadastrarNovo();
    void showPopup() override;

protected:
    void focusInEvent(QFocusEvent *e) override;
    void keyPressEvent(QKeyEvent *e) override;

private:
    void atualizarSeNecessario();
    QString sql_, vazio_, tabela_;
    bool desatualizada_ = false;
};

// How F4 registers a new row of a table: a small registration whose result is the new row's ID
// (an invalid QVariant when the user gave up).
using CadastroRapido = std::function<QVariant(QWidget *pai)>;
void registrarCadastroRapido(const QString &tabela, CadastroRapido f);
bool temCadastroRapido(const QString &tabela);

} // namespace orb
