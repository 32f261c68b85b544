#include "acesso/TLogin.h"

#include "dados/Tabs.h"
#include "ui/Mensagens.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

namespace orb {

TTrocaSenha::TTrocaSenha(db::Banco &b, int idUsuario, QWidget *parent) : QDialog(parent), b_(b), id_(idUsuario)
{
    setObjectName("TTrocaSenha");
    setWindowTitle("ORB Manager - Troca de Senha");
    auto *l = new QVBoxLayout(this);
    l->addWidget(new QLabel("Esta é a senha inicial da instalação.\nEscolha uma nova senha antes de continuar.", this));
    auto *f = new QFormLayout;
    nova_ = new QLineEdit(this);
    confirmacao_ = new QLineEdit(this);
    for (QLineEdit *e : {nova_, confirmacao_}) {
        e->setEchoMode(QLineEdit::Password);
        e->setMaxLength(10);
    }
    f->addRow("Nova senha", nova_);
    f->addRow("Confirmação", confirmacao_);
    l->addLayout(f);
    auto *bb = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    bb->button(QDialogButtonBox::Ok)->setText("Salvar");
    bb->button(QDialogButtonBox::Cancel)->setText("Cancelar");
    connect(bb, &QDialogButtonBox::accepted, this, &TTrocaSenha::BtSalvarClick);
    connect(bb, &QDialogButtonBox::rejected, this, &QDialog::reject);
    l->addWidget(bb);
}

void TTrocaSenha::BtSalvarClick()
{
    if (Tabs) Tabs->Deb("procedure TTrocaSenha.BtSalvarClick(Sender: TObject)");
    try {
        db::Transacao t(b_);
        trocarSenha(t, id_, nova_->text(), confirmacao_->text());
        t.commit();
        accept();
    } catch (const Recusa &r) {
        Atencao(r.texto);
        (r.campo == "confirmacao" ? confirmacao_ : nova_)->setFocus();
    } catch (const db::ErroBanco &e) {
        Atencao(e.mensagem());
    }
}

TLogin::TLogin(db::Banco &b, QWidget *parent) : QDialog(parent), b_(b)
{
    setObjectName("TLogin");
    setWindowTitle("ORB Manager - Autenticação");
    setMinimumWidth(380);
    auto *l = new QVBoxLayout(this);
    auto *titulo = new QLabel("<h2>ORB Manager</h2>", this);
    titulo->setAlignment(Qt::AlignCenter);
    l->addWidget(titulo);
    auto *f = new QFormLayout;
    usuario_ = new QLineEdit(this);
    usuario_->setObjectName("EdUsuario");
    usuario_->setMaxLength(20);
    senha_ = new QLineEdit(this);
    senha_->setObjectName("EdSenha");
    senha_->setEchoMode(QLineEdit::Password);
    f->addRow("Usuário", usuario_);
    f->addRow("Senha", senha_);
    l->addLayout(f);
    aviso_ = new QLabel(this);
    aviso_->setStyleSheet("color: #a04000");
    l->addWidget(aviso_);
    auto *botoes = new QHBoxLayout;
    entrar_ = new QPushButton("Entrar", this);
    entrar_->setObjectName("BtEntrar");
    auto *cancelar = new QPushButton("Cancelar", this);
    botoes->addStretch();
    botoes->addWidget(entrar_);
    botoes->addWidget(cancelar);
    l->addLayout(botoes);
    connect(entrar_, &QPushButton::clicked, this, &TLogin::BtEntrarClick);
    connect(cancelar, &QPushButton::clicked, this, &QDialog::reject);
    usuario_->installEventFilter(this);
    senha_->installEventFilter(this);
    relogio_ = new QTimer(this);
    relogio_->setInterval(250);
    connect(relogio_, &QTimer::timeout, this, &TLogin::atualizarEspera);
    usuario_->setFocus();
}

bool TLogin::eventFilter(QObject *o, QEvent *e)
{
    if (e->type() == QEvent::KeyPress) {
        const int k = static_cast<QKeyEvent *>(e)->key();
        if (k == Qt::Key_Return || k == Qt::Key_Enter) {
            // Enter goes from the user name to the password, and from there logs in.
            if (o == usuario_) senha_->setFocus();
            else if (entrar_->isEnabled()) BtEntrarClick();
            return true;
        }
    }
    return QDialog::eventFilter(o, e);
}

void TLogin::atualizarEspera()
{
    const int s = tentativas_.espera(QDateTime::currentDateTime());
    entrar_->setEnabled(s == 0);
    aviso_->setText(s ? QString("Aguarde %1 segundos para tentar novamente.").arg(s) : QString());
    if (!s) relogio_->stop();
}

void TLogin::BtEntrarClick()
{
    if (Tabs) Tabs->Deb("procedure TLogin.BtEntrarClick(Sender: TObject)");
    if (tentativas_.espera(QDateTime::currentDateTime()) > 0) return;
    try {
        db::Transacao t(b_, db::Modo::Leitura);
        const ResultadoLogin r = autenticar(t, usuario_->text(), senha_->text());
        t.commit();
        if (r.precisaTrocarSenha) {
            TTrocaSenha troca(b_, r.sessao.idUsuario, this);
            if (!executarTroca(troca)) return;
        }
        tentativas_.acertou();
        sessao() = r.sessao;
        accept();
    } catch (const Recusa &r) {
        tentativas_.falhou(QDateTime::currentDateTime());
        Atencao(r.texto);
        if (r.campo == "senha") {
            senha_->clear();
            senha_->setFocus();
        } else {
            usuario_->selectAll();
            usuario_->setFocus();
        }
        atualizarEspera();
        if (!entrar_->isEnabled()) relogio_->start();
    } catch (const db::ErroBanco &e) {
        Atencao(e.mensagem());
    }
}

} // namespace orb
