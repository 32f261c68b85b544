#include "principal/TConfig.h"

#include "Configuracao.h"
#include "db/Banco.h"
#include "ui/Mensagens.h"

#include <QFormLayout>
#include <QHBoxLayout>
#include <QIntValidator>
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
    l->addWidget(new QLabel("Deixe o servidor em branco (ou \".\") para usar o banco de dados local deste computador.", this));
    auto *f = new QFormLayout;
    servidor_ = new QLineEdit(c.nome, this);
    porta_ = new QLineEdit(c.porta, this);
    porta_->setValidator(new QIntValidator(1, 65535, this));
    porta_->setPlaceholderText("3050");
    pasta_ = new QLineEdit(c.pasta, this);
    compartilhamento_ = new QLineEdit(c.compartilhamento, this);
    f->addRow("Servidor", servidor_);
    f->addRow("Porta", porta_);
    f->addRow("Pasta do banco de dados", pasta_);
    f->addRow("Compartilhamento", compartilhamento_);
    l->addLayout(f);
    auto *b = new QHBoxLayout;
    auto *testar = new QPushButton("Testar conexão", this);
    auto *salvar = new QPushButton("Salvar", this);
    auto *cancelar = new QPushButton("Cancelar", this);
    b->addWidget(testar);
    b->addStretch();
    b->addWidget(salvar);
    b->addWidget(cancelar);
    l->addLayout(b);
    connect(testar, &QPushButton::clicked, this, &TConfig::BtTestarClick);
    connect(salvar, &QPushButton::clicked, this, &TConfig::BtSalvarClick);
    connect(cancelar, &QPushButton::clicked, this, &QDialog::reject);
}

Configuracao TConfig::lida() const
{
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
    try {
        db::Banco::abrir({nomeBanco(c, pastaPrograma_), c.usuario, c.senha});
        Mensagem("Conexão efetuada com sucesso!");
    } catch (const db::ErroBanco &e) {
        Atencao(e.mensagem() + "\n\n" + e.tecnico());
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
