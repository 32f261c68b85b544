#pragma once
// Every message box and question of the program goes through here, so that tests can answer
// questions and read what the user would have been told, without a person.

#include <QMessageBox>
#include <QString>
#include <QStringList>
#include <functional>

namespace orb {

class Mensageiro {
public:
    virtual ~Mensageiro() = default;
    // An information or warning box with one OK button.
    virtual void aviso(const QString &texto, const QString &titulo, QMessageBox::Icon icone) = 0;
    // A question; returns the button chosen. `padrao` is the safe answer (the default button).
    virtual QMessageBox::StandardButton pergunta(const QString &texto, const QString &titulo,
                                                 QMessageBox::StandardButtons botoes,
                                                 QMessageBox::StandardButton padrao) = 0;
};

// The one in use (real message boxes unless a test installed another).
Mensageiro &mensageiro();
void instalarMensageiro(Mensageiro *m);  // nullptr restores the real one

// Shortcuts with the program's usual titles.
void Mensagem(const QString &texto, const QString &titulo = QStringLiteral("Informação"));
void Atencao(const QString &texto, const QString &titulo = QStringLiteral("Atenção"));
void Erro(const QString &texto, const QString &titulo = QStringLiteral("Erro"));
// Yes/No question titled "Pergunta"; padraoSim false makes No the default (deletions).
bool Pergunta(const QString &texto, bool padraoSim = false);

// For tests: records every box and answers questions from a queue (No when the queue is empty).
class MensageiroTeste : public Mensageiro {
public:
    MensageiroTeste();
    ~MensageiroTeste() override;
    QStringList avisos;      // texts shown, in order
    QStringList perguntas;   // questions asked, in order
    QList<QMessageBox::StandardButton> respostas;

    void aviso(const QString &texto, const QString &titulo, QMessageBox::Icon icone) override;
    QMessageBox::StandardButton pergunta(const QString &texto, const QString &titulo,
                                         QMessageBox::StandardButtons botoes,
                                         QMessageBox::StandardButton padrao) override;
};

} // namespace orb
