#include "principal/TConfig.h"

#include "Configuracao.h"
#include "db/Banco.h"
#include "ui/Mensagens.h"

#include <QApplication>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QIntValidator>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace orb {

TConfig::TConfig(const QString &pastaPrograma, QWidget *parent) : QDialog(parent), pastaPrograma_(pastaPrograma)
{
    setObjectName("TConfig");
    setWindowTitle("ORB Manager - Configuração do Banco de Dados");
    setMinimumWidth(520);
    const Configuracao c = lerConfiguracao(pastaPrograma);
    auto *l = new QVBoxLayout(this);
    l->setContentsMargins(18, 14, 18, 14);
    auto *explica = new QLabel("Deixe o servidor em branco (ou \".\") para usar o banco de dados local deste computador.", this);
    explica->setWordWrap(true);
    l->addWidget(explica);
    l->addSpacing(4);
    auto *f = new QFormLayout;
    f->setLabelAlignment(Qt::AlignRight);
    servidor_ = new QLineEdit(c.nome, this);
    servidor_->setObjectName("EdServidor");
    porta_ = new QLineEdit(c.porta, this);
    porta_->setObjectName("EdPorta");
    porta_->setValidator(new QIntValidator(1, 65535, this));
    porta_->setPlaceholderText("3050");
    porta_->setMaximumWidth(90);
    pasta_ = new QLineEdit(c.pasta, this);
    pasta_->setObjectName("EdPasta");
    compartilhamento_ = new QLineEdit(c.compartilhamento, this);
    compartilhamento_->setObjectName("EdCompartilhamento");
    f->addRow("Servidor", servidor_);
    f->addRow("Porta", porta_);
    f->addRow("Pasta do banco de dados", pasta_);
    f->addRow("Compartilhamento", compartilhamento_);
    l->addLayout(f);
    l->addSpacing(6);
    auto *b = new QHBoxLayout;
    auto *testar = new QPushButton("Testar conexão", this);
    testar->setObjectName("BtTestar");
    auto *salvar = new QPushButton("Salvar", this);
    salvar->setObjectName("BtSalvar");
    salvar->setDefault(true);
    auto *cancelar = new QPushButton("Cancelar", this);
    b->addWidget(testar);
    b->addStretch();
    b->addWidget(salvar);
    b->addWidget(cancelar);
    l->addLayout(b);
    connect(testar, &QPushButton::clicked, this, &TConfig::BtTestarClick);
    connect(salvar, &QPushButton::clicked, this, &TConfig::BtSalvarClick);
    connect(cancelar, &QPushButton::clicked, this, &QDialog::reject);
    for (QLineEdit *e : {servidor_, porta_, pasta_, compartilhamento_}) e->installEventFilter(this);
    servidor_->setFocus();
}

bool TConfig::eventFilter(QObject *o, QEvent *e)
{
    // Enter moves to the next field, as everywhere in the program.
    if (e->type() == QEvent::KeyPress) {
        const auto *k = static_cast<QKeyEvent *>(e);
        if ((k->key() == Qt::Key_Return || k->key() == Qt::Key_Enter) && k->modifiers() == Qt::NoModifier) {
            focusNextChild();
            return true;
        }
    }
    return QDialog::eventFilter(o, e);
}

Configuracao TConfig::lida() const
{
    // The database user and password are not on this form: keep what the file has.
    Configuracao c = lerConfiguracao(pastaPrograma_);
    c.nome = servidor_->text().trimmed();
    c.porta = porta_->text().trimmed();
    c.pasta = pasta_->text().trimmed();
    c.compartilhamento = compartilhamento_->text().trimmed();
    return c;
}

void TConfig::BtTestarClick()
{
    const Configuracao c = lida();
    // An unreachable server can take a while to give up.
    QApplication::setOverrideCursor(Qt::WaitCursor);
    try {
        db::Banco::abrir({nomeBanco(c, pastaPrograma_), c.usuario, c.senha});
        QApplication::restoreOverrideCursor();
        Mensagem("Conexão efetuada com sucesso!");
    } catch (const db::ErroBanco &e) {
        QApplication::restoreOverrideCursor();
        Atencao(e.mensagem());
    }
}

void TConfig::BtSalvarClick()
{
    try {
        gravarConfiguracao(pastaPrograma_, lida());
        accept();
    } catch (const std::exception &e) {
        Atencao(QString::fromUtf8(e.what()));
    }
}

} // namespace orb
