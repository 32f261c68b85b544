#include "acesso/TLogin.h"

#include "dados/Tabs.h"
#include "ui/Mensagens.h"

#include <QFormLayout>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

namespace orb {

namespace {

bool ehEnter(QEvent *e)
{
    if (e->type() != QEvent::KeyPress) return false;
    const auto *k = static_cast<QKeyEvent *>(e);
    return (k->key() == Qt::Key_Return || k->key() == Qt::Key_Enter) && k->modifiers() == Qt::NoModifier;
}

QLineEdit *campoSenha(QWidget *pai, const QString &nome)
{
    auto *e = new QLineEdit(pai);
    e->setObjectName(nome);
    e->setEchoMode(QLineEdit::Password);
    e->setMaxLength(kTamanhoSenha);
    return e;
}

QLabel *cabecalho(const QString &texto, QWidget *pai)
{
    auto *l = new QLabel(texto, pai);
    QFont f = l->font();
    f.setPointSizeF(f.pointSizeF() * 1.6);
    f.setBold(true);
    l->setFont(f);
    l->setAlignment(Qt::AlignCenter);
    l->setStyleSheet("color: #2d4a66");
    return l;
}

} // namespace

// ---------------------------------------------------------------- TTrocaSenha

TTrocaSenha::TTrocaSenha(db::Banco &b, int idUsuario, QWidget *parent) : QDialog(parent), b_(b), id_(idUsuario)
{
    setObjectName("TTrocaSenha");
    setWindowTitle("ORB Manager - Troca de Senha");
    setMinimumWidth(360);
    auto *l = new QVBoxLayout(this);
    l->setContentsMargins(18, 14, 18, 14);
    auto *explica = new QLabel("Esta senha foi definida pelo administrador ou é a senha inicial da instalação.\n"
                               "Escolha uma nova senha antes de continuar.", this);
    l->addWidget(explica);
    auto *f = new QFormLayout;
    f->setLabelAlignment(Qt::AlignRight);
    nova_ = campoSenha(this, "EdNovaSenha");
    confirmacao_ = campoSenha(this, "EdConfirmacao");
    f->addRow("Nova senha", nova_);
    f->addRow("Confirmação", confirmacao_);
    l->addLayout(f);
    auto *botoes = new QHBoxLayout;
    salvar_ = new QPushButton("Salvar", this);
    salvar_->setObjectName("BtSalvar");
    auto *cancelar = new QPushButton("Cancelar", this);
    botoes->addStretch();
    botoes->addWidget(salvar_);
    botoes->addWidget(cancelar);
    l->addSpacing(6);
    l->addLayout(botoes);
    connect(salvar_, &QPushButton::clicked, this, &TTrocaSenha::BtSalvarClick);
    connect(cancelar, &QPushButton::clicked, this, &QDialog::reject);
    nova_->installEventFilter(this);
    confirmacao_->installEventFilter(this);
    nova_->setFocus();
}

bool TTrocaSenha::eventFilter(QObject *o, QEvent *e)
{
    // Enter goes from the new password to its confirmation, and from there saves.
    if (ehEnter(e)) {
        if (o == nova_) confirmacao_->setFocus();
        else BtSalvarClick();
        return true;
    }
    return QDialog::eventFilter(o, e);
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
        if (r.campo == "confirmacao") {
            confirmacao_->clear();
            confirmacao_->setFocus();
        } else {
            nova_->selectAll();
            nova_->setFocus();
        }
    } catch (const db::ErroBanco &e) {
        Atencao(e.mensagem());
    }
}

// ---------------------------------------------------------------- TLogin

TLogin::TLogin(db::Banco &b, QWidget *parent) : QDialog(parent), b_(b)
{
    setObjectName("TLogin");
    setWindowTitle("ORB Manager - Autenticação");
    setMinimumWidth(380);
    auto *l = new QVBoxLayout(this);
    l->setContentsMargins(24, 18, 24, 16);
    l->addWidget(cabecalho("ORB Manager", this));
    l->addSpacing(10);
    auto *f = new QFormLayout;
    f->setLabelAlignment(Qt::AlignRight);
    usuario_ = new QLineEdit(this);
    usuario_->setObjectName("EdUsuario");
    usuario_->setMaxLength(20);  // TBCAD.USUARIO
    senha_ = campoSenha(this, "EdSenha");
    f->addRow("Usuário", usuario_);
    f->addRow("Senha", senha_);
    l->addLayout(f);
    aviso_ = new QLabel(this);
    aviso_->setObjectName("LbAviso");
    aviso_->setAlignment(Qt::AlignCenter);
    aviso_->setStyleSheet("color: #a04000");
    aviso_->setMinimumHeight(aviso_->fontMetrics().height() + 4);  // no jump when the countdown appears
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
    // Enter goes from the user name to the password, and from there logs in.
    if (ehEnter(e)) {
        if (o == usuario_) senha_->setFocus();
        else if (entrar_->isEnabled()) BtEntrarClick();
        return true;
    }
    return QDialog::eventFilter(o, e);
}

int TLogin::espera() const
{
    const qint64 resta = liberaEm_.isValid() ? agora().msecsTo(liberaEm_) : 0;
    return resta > 0 ? int((resta + 999) / 1000) : 0;
}

void TLogin::atualizarEspera()
{
    const int s = espera();
    entrar_->setEnabled(s == 0);
    aviso_->setText(s ? textoAguarde(s) : QString());
    if (s) relogio_->start();
    else relogio_->stop();
}

void TLogin::BtEntrarClick()
{
    if (Tabs) Tabs->Deb("procedure TLogin.BtEntrarClick(Sender: TObject)");
    if (espera() > 0) return;
    try {
        const ResultadoLogin r = autenticar(b_, usuario_->text(), senha_->text(), agora());
        if (r.precisaTrocarSenha) {
            TTrocaSenha troca(b_, r.sessao.idUsuario, this);
            if (!executarTroca(troca)) {
                // Not logged in until the first password is gone; start over from the password.
                senha_->clear();
                senha_->setFocus();
                return;
            }
        }
        sessao() = r.sessao;
        accept();
    } catch (const Recusa &r) {
        Atencao(r.texto);
        if (r.campo == "senha") {
            senha_->clear();
            senha_->setFocus();
        } else {
            usuario_->selectAll();
            usuario_->setFocus();
        }
        // The wait the database now imposes on this name, shown as a countdown.
        try {
            liberaEm_ = agora().addSecs(esperaLogin(b_, usuario_->text(), agora()));
        } catch (const db::ErroBanco &) {
            liberaEm_ = {};
        }
        atualizarEspera();
    } catch (const db::ErroBanco &e) {
        Atencao(e.mensagem());
    }
}

} // namespace orb
