#include "ui/Mensagens.h"

#include <QApplication>

namespace orb {

namespace {

class MensageiroReal : public Mensageiro {
public:
    void aviso(const QString &texto, const QString &titulo, QMessageBox::Icon icone) override
    {
        QMessageBox box(icone, titulo, texto, QMessageBox::Ok, QApplication::activeWindow());
        box.exec();
    }
    QMessageBox::StandardButton pergunta(const QString &texto, const QString &titulo,
                                         QMessageBox::StandardButtons botoes,
                                         QMessageBox::StandardButton padrao) override
    {
        QMessageBox box(QMessageBox::Question, titulo, texto, botoes, QApplication::activeWindow());
        box.setDefaultButton(padrao);
        box.setEscapeButton(padrao);
        return QMessageBox::StandardButton(box.exec());
    }
};

MensageiroReal real;
Mensageiro *atual = &real;

} // namespace

Mensageiro &mensageiro() { return *atual; }
void instalarMensageiro(Mensageiro *m) { atual = m ? m : &real; }

void Mensagem(const QString &texto, const QString &titulo) { atual->aviso(texto, titulo, QMessageBox::Information); }
void Atencao(const QString &texto, const QString &titulo) { atual->aviso(texto, titulo, QMessageBox::Warning); }
void Erro(const QString &texto, const QString &titulo) { atual->aviso(texto, titulo, QMessageBox::Critical); }

bool Pergunta(const QString &texto, bool padraoSim)
{
    return atual->pergunta(texto, QStringLiteral("Pergunta"), QMessageBox::Yes | QMessageBox::No,
                           padraoSim ? QMessageBox::Yes : QMessageBox::No)
        == QMessageBox::Yes;
}

MensageiroTeste::MensageiroTeste() { instalarMensageiro(this); }
MensageiroTeste::~MensageiroTeste() { instalarMensageiro(nullptr); }

void MensageiroTeste::aviso(const QString &texto, const QString &, QMessageBox::Icon) { avisos << texto; }

QMessageBox::StandardButton MensageiroTeste::pergunta(const QString &texto, const QString &,
                                                      QMessageBox::StandardButtons, QMessageBox::StandardButton)
{
    perguntas << texto;
    return respostas.isEmpty() ? QMessageBox::No : respostas.takeFirst();
}

} // namespace orb
