#pragma once
// Administration forms: users, access levels and a level's permission tree.

#include "acesso/Permissoes.h"
#include "principal/Menus.h"
#include "ui/FormCadastro.h"

#include <QDialog>

class QComboBox;
class QLineEdit;
class QSpinBox;
class QTreeWidget;
class QTreeWidgetItem;

namespace orb {

class TUsuarios : public FormCadastro {
    Q_OBJECT
public:
    explicit TUsuarios(QWidget *parent = nullptr);

protected:
    void limpar() override;
    void carregar(db::Transacao &t, int id) override;
    int gravar(db::Transacao &t, int id) override;
    void apagar(db::Transacao &t, int id) override;
    QString perguntaExclusao() const override { return QStringLiteral("Tem certeza que deseja excluir este usuário?"); }
    QString tabela() const override { return QStringLiteral("TBCAD"); }

private:
    QLineEdit *usuario_, *nome_, *apelido_, *senha_;
    class ComboConsulta *nivel_;
    QComboBox *tipo_;
};

class TNiveis : public FormCadastro {
    Q_OBJECT
public:
    explicit TNiveis(QWidget *parent = nullptr);
    void BtPermissoesClick();

protected:
    void limpar() override;
    void carregar(db::Transacao &t, int id) override;
    int gravar(db::Transacao &t, int id) override;
    void apagar(db::Transacao &t, int id) override;
    QString perguntaExclusao() const override { return QStringLiteral("Tem certeza que deseja excluir este nível de acesso?"); }
    QString tabela() const override { return QStringLiteral("TBNIVEIS"); }

private:
    QSpinBox *nivel_;
    QLineEdit *descricao_;
};

// The level's tree of menus, modules and operations, each with its "permitted" switch.
class TPermissoes : public QDialog {
    Q_OBJECT
public:
    // `quem` acts from the levels screen: its rights are checked when the tree is saved.
    TPermissoes(int idNivel, const QString &descricao, const Sessao &quem, QWidget *parent = nullptr);
    QTreeWidget *arvore() const { return arvore_; }
    void marcarRamo(bool sim);  // the selected item and everything under it
    void BtSalvarClick();

private:
    QTreeWidgetItem *adicionar(QTreeWidgetItem *pai, const NoPermissao &n);
    int idNivel_;
    Sessao quem_;
    db::Transacao tr_;
    QTreeWidget *arvore_;
};

void registrarFormulariosAcesso();

} // namespace orb
