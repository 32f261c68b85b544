#pragma once
// The login dialog, and the password change a first password requires.

#include "acesso/Login.h"

#include <QDialog>

class QLabel;
class QLineEdit;
class QPushButton;
class QTimer;

namespace orb {

class TTrocaSenha : public QDialog {
    Q_OBJECT
public:
    TTrocaSenha(db::Banco &b, int idUsuario, QWidget *parent = nullptr);
    QLineEdit *nova() const { return nova_; }
    QLineEdit *confirmacao() const { return confirmacao_; }
    void BtSalvarClick();

private:
    db::Banco &b_;
    int id_;
    QLineEdit *nova_, *confirmacao_;
};

class TLogin : public QDialog {
    Q_OBJECT
public:
    explicit TLogin(db::Banco &b, QWidget *parent = nullptr);
    QLineEdit *usuario() const { return usuario_; }
    QLineEdit *senha() const { return senha_; }
    QPushButton *entrar() const { return entrar_; }
    void BtEntrarClick();
    // How the password change is run; tests drive the dialog themselves.
    std::function<bool(TTrocaSenha &)> executarTroca = [](TTrocaSenha &d) { return d.exec() == QDialog::Accepted; };

protected:
    bool eventFilter(QObject *o, QEvent *e) override;

private:
    void atualizarEspera();
    db::Banco &b_;
    QLineEdit *usuario_, *senha_;
    QPushButton *entrar_;
    QLabel *aviso_;
    QTimer *relogio_;
    Tentativas tentativas_;
};

} // namespace orb
