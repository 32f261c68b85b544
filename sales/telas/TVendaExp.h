#pragma once
// The express counter sale: the cashier scans or types codes (Enter adds the line), sees the
// item's photo and the running total in large figures, chooses the payment, and Salvar (F10)
// saves, approves, receives what is due now and delivers in one go. Cancelar offers a new sale.

#include "VendaExpressa.h"
#include "ui/FormCadastro.h"

class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QStandardItemModel;
class QTableView;

namespace orb {

class ComboConsulta;
class CampoNumero;

class TVendaExp : public FormCadastro {
    Q_OBJECT
public:
    explicit TVendaExp(QWidget *parent = nullptr);

    const Documento &documento() const { return doc_; }
    // Handlers, public so that tests drive them as the keys do.
    void EditCodigoKeyPress();   // Enter in the code field
    void CbCondPagtoExit();      // the payment condition or the number of instalments changed
    void BtExcluirItemClick();   // the line marked in the grid removed
    QLineEdit *campoCodigo() const { return edCodigo_; }
    CampoNumero *campoQtd() const { return edQtd_; }
    CampoNumero *campoRecebido() const { return edRecebido_; }
    QTableView *gradeLinhas() const { return gradeLinhas_; }
    QLabel *foto() const { return foto_; }
    QLabel *total() const { return lbTotal_; }

protected:
    // Imprimir (F6) prints the sale under the cursor with the express sale's print settings.
    void imprimir() override;
    void limpar() override;
    void carregar(db::Transacao &t, int id) override;
    int gravar(db::Transacao &t, int id) override;
    void apagar(db::Transacao &t, int id) override;
    QString tabela() const override { return QStringLiteral("TBCOM"); }
    QString perguntaExclusao() const override { return QStringLiteral("Tem certeza que deseja excluir esta operação?"); }
    QStringList tabelasEscritas() const override { return {"TBCOM", "TBCOMITENS", "TBCOMFAT", "TBCOMST", "TBCONTAS", "TBITENSEST"}; }
    bool montarBusca(const QString &ordem, const QString &texto, Busca busca, QString &sql, std::map<QString, QVariant> &p) override;
    bool confirmarCancelamento() override;
    bool eventFilter(QObject *o, QEvent *e) override;
    void estadoMudou() override;

private:
    void lerCampos();
    void mostrarDocumento();
    void mostrarFoto(const QByteArray &dados, const QString &descricao);
    void mostrarTroco();
    void finalizar(int id);

    Documento doc_;
    ComboConsulta *cbCliente_ = nullptr, *cbAtendente_ = nullptr, *cbEmpresa_ = nullptr, *cbTransportadora_ = nullptr;
    QComboBox *cbCondPagto_ = nullptr, *cbParcelas_ = nullptr, *cbFrete_ = nullptr;
    QLineEdit *edCodigo_ = nullptr;
    CampoNumero *edQtd_ = nullptr, *edRecebido_ = nullptr, *edFrete_ = nullptr;
    QStandardItemModel *linhas_ = nullptr;
    QTableView *gradeLinhas_ = nullptr;
    QPushButton *btExcluirItem_ = nullptr;
    QLabel *lbLegenda_ = nullptr, *foto_ = nullptr, *lbItem_ = nullptr, *lbTotal_ = nullptr, *lbTroco_ = nullptr;
    QVariant recebido_;          // what the customer handed over, kept for the finishing after the save
    bool mostrando_ = false;     // fields being filled from the document: their signals are not the user's
    bool cancelou_ = false;      // the edit just ended by Cancelar: a new sale is offered
};

} // namespace orb
