#pragma once
// The stock screen: the item registry with its sheets, the stock per company edited with the
// item, the price composition proposed as the user leaves its fields, and the browse filters.

#include "Estoque.h"
#include "ui/FormRegistro.h"

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QTableWidget;

namespace orb {

class TEstoque : public FormRegistro {
    Q_OBJECT
public:
    explicit TEstoque(QWidget *parent = nullptr);

    // Handlers of the stock sheet, public as the buttons' are.
    void BtGravarEstoqueClick();   // the row typed below the grid (Enter on the current stock)
    void BtExcluirEstoque1Click(); // the current row of the grid
    const QList<LinhaEstoque> &estoques() const { return estoques_; }
    FiltroEstoque filtro() const;
    // Runs the composition and the commission totals over what the fields hold.
    void EditCustoExit();
    void somarComissoesNaTela();

protected:
    void limpar() override;
    void carregar(db::Transacao &t, int id) override;
    int gravarCabecalho(db::Transacao &t, int id) override;
    void apagar(db::Transacao &t, int id) override;
    bool confirmarCancelamento() override;
    void conferirOperacao(const QString &operacao, int id) override;
    bool montarBusca(const QString &ordem, const QString &texto, Busca busca, QString &sql, std::map<QString, QVariant> &p) override;
    bool eventFilter(QObject *o, QEvent *e) override;
    QString semRegistro() const override { return QStringLiteral("Selecione um produto primeiro!"); }

private:
    // The typed company checked at once, on Enter; false = refused and told.
    bool empresaConferida();
    Valores valoresNaTela() const;
    void mostrarEstoques();
    void principalDigitado();  // the principal company's figures typed on the general sheet
    void mostrarFoto(db::Transacao &t, int id);

    QString ramo_;
    int principal_ = 0;
    QList<LinhaEstoque> estoques_;
    QTableWidget *gradeEstoques_ = nullptr;
    QComboBox *empresa_ = nullptr;
    QLineEdit *local_ = nullptr, *minimo_ = nullptr, *maximo_ = nullptr, *atual_ = nullptr;
    QLineEdit *minimoP_ = nullptr, *maximoP_ = nullptr, *atualP_ = nullptr;
    QLabel *foto_ = nullptr;
    QLabel *totalEstoques_ = nullptr;  // the rows added up, after each one posted
    QComboBox *grupo_ = nullptr, *subgrupo_ = nullptr;
    QHash<QString, QCheckBox *> filtros_;
};

} // namespace orb
