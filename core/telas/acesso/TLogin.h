#pragma once
// The login dialog, and the password change a password set by someone else requires.

#include "acesso/Login.h"

#include <QDialog>
#include <functional>

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
    QPushButton *salvar() const { return salvar_; }
    void BtSalvarClick();

protected:
    bool eventFilter(QObject *o, QEvent *e) override;

private:
    db::Banco &b_;
    int id_;
    QLineEdit *nova_, *confirmacao_;
    QPushButton *salvar_;
};

class TLogin : public QDialog {
    Q_OBJECT
public:
    explicit TLogin(db::Banco &b, QWidget *parent = nullptr);
    QLineEdit *usuario() const { return usuario_; }
    QLineEdit *senha() const { return senha_; }
    QPushButton *entrar() const { return entrar_; }
    QLabel *aviso() const { return aviso_; }
    void BtEntrarClick();

    // How the password change is run (modal by default).
    std::function<bool(TTrocaSenha &)> executarTroca = [](TTrocaSenha &d) { return d.exec() == QDialog::Accepted; };
    // The clock the slow-down counts on (shared by every dialog through the database); tests move it
    // instead of sleeping.
    std::function<QDateTime()> agora = [] { return QDateTime::currentDateTimeUtc(); };

protected:
    bool eventFilter(QObject *o, QEvent *e) override;

private:
    void atualizarEspera();
    int espera() const;
    db::Banco &b_;
    QLineEdit *usuario_, *senha_;
    QPushButton *entrar_;
    QLabel *aviso_;
    QTimer *relogio_;
    QDateTime liberaEm_;  // no attempt from here before this moment
};

} // namespace orb
