#pragma once
// The inventory screen: sheets "Estoque", "Imobilizado", "Manutenções" and "Movimentação",
// each a registry sheet of its own; the movement sheet also edits its lines and approves.

#include "Inventario.h"
#include "ui/FormRegistro.h"

#include <QWidget>

class QComboBox;
class QPushButton;
class QStandardItemModel;
class QTabWidget;
class QTableView;

namespace orb {

// Supplies or assets: the subgroup list follows the chosen group, a new item gets the next code.
class FolhaItens : public FormRegistro {
public:
    FolhaItens(const QString &tipo, QWidget *parent = nullptr);

protected:
    void limpar() override;
    void apagar(db::Transacao &t, int id) override;
    void conferirOperacao(const QString &operacao, int id) override;

private:
    void filtrarSubgrupos();
};

// Maintenances of assets; each save keeps the asset's last maintenance date.
class FolhaManutencoes : public FormRegistro {
public:
    explicit FolhaManutencoes(QWidget *parent = nullptr);

protected:
    int gravarCabecalho(db::Transacao &t, int id) override;
    void apagar(db::Transacao &t, int id) override;
};

// Movements: the header fields, the lines typed below them (Enter on the observations adds
// one), and the approval buttons.
class FolhaMovimentacao : public FormRegistro {
public:
    explicit FolhaMovimentacao(QWidget *parent = nullptr);

    // Handlers
    void BtAprovarClick();
    void BtCancelarAprovacaoClick();
    void BtIncluirLinhaClick();   // also Enter on the line's observations
    void BtExcluirLinhaClick();

    const Linhas &linhas() const { return linhas_; }
    // The value a line field holds ("TIPOITEM", "QTD", ...), and setting it as the user would.
    QVariant valorLinha(const QString &coluna) const;
    void definirLinha(const QString &coluna, const QVariant &v);
    // How the approval's date and responsible are asked; tests answer it themselves.
    std::function<bool(QDate &data, QVariant &codResponsavel)> pedirAprovacao;

protected:
    void limpar() override;
    void carregar(db::Transacao &t, int id) override;
    int gravarCabecalho(db::Transacao &t, int id) override;
    void apagar(db::Transacao &t, int id) override;
    void conferirOperacao(const QString &operacao, int id) override;
    void registroMudou(int id) override;
    void conferirCampo(QWidget *w) override;
    bool eventFilter(QObject *o, QEvent *e) override;

private:
    QWidget *montarLinhas();
    void mostrarLinhas();
    void preencherCombo(const QString &coluna, const QString &sql, const std::map<QString, QVariant> &p = {});
    void filtrarItens();
    void novaLinhaPadrao();
    bool permitido(const QString &operacao);

    QList<CampoForm> camposLinha_;
    Linhas linhas_;
    QStandardItemModel *modeloLinhas_ = nullptr;
    QTableView *gradeLinhas_ = nullptr;
    QPushButton *btAprovar_ = nullptr, *btCancelarAprovacao_ = nullptr;
};

class TInventario : public QWidget {
    Q_OBJECT
public:
    explicit TInventario(QWidget *parent = nullptr);
    QTabWidget *folhas() const { return folhas_; }
    FolhaItens *estoque() const { return estoque_; }
    FolhaItens *imobilizado() const { return imobilizado_; }
    FolhaManutencoes *manutencoes() const { return manutencoes_; }
    FolhaMovimentacao *movimentacao() const { return movimentacao_; }

private:
    QTabWidget *folhas_ = nullptr;
    FolhaItens *estoque_ = nullptr, *imobilizado_ = nullptr;
    FolhaManutencoes *manutencoes_ = nullptr;
    FolhaMovimentacao *movimentacao_ = nullptr;
};

} // namespace orb
