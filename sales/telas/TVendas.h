#pragma once
// The operation form of every kind of commercial document: a short screen over the sales rules.
// The mode ("Ven", "Com", ...) is fixed when the form is opened.

#include "Vendas.h"
#include "ui/FormCadastro.h"

class QComboBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QStandardItemModel;
class QTableView;

namespace orb {

class ComboConsulta;
class CampoData;
class CampoNumero;

class TVendas : public FormCadastro {
    Q_OBJECT
public:
    explicit TVendas(const QString &modo, QWidget *parent = nullptr);

    const Documento &documento() const { return doc_; }
    // Line entry, public so that tests drive it as the buttons do.
    void BtIncluirLinhaClick();
    void BtExcluirLinhaClick();
    // The serial typed, for the line marked in the grid.
    void BtIncluirSerialClick();
    // The payment condition or the number of instalments changed.
    void CbParcelasChange();
    // The billing date or the days to the first due date typed.
    void EditDataFatExit();
    void EditPrazoExit();
    // Approval and its cancellation; delivery, its cancellation and reactivation (TVendasPassos.cpp).
    void BtAprovarClick();
    void BtEntregarClick();
    // The document under the cursor mailed through "Enviar por E-mail" (TVendasImpressao.cpp).
    void BtEmailClick();
    // The discount or its kind changed: the totals again.
    void EditDescontoExit();
    ComboConsulta *comboItem() const { return cbItem_; }
    CampoNumero *campoQtd() const { return edQtd_; }
    QTableView *gradeLinhas() const { return gradeLinhas_; }
    QTableView *gradeParcelas() const { return gradeParcelas_; }

protected:
    // Imprimir prints the document under the cursor, not the list.
    void imprimir() override;
    void estadoMudou() override;  // the E-mail button while browsing only
    void limpar() override;
    void carregar(db::Transacao &t, int id) override;
    int gravar(db::Transacao &t, int id) override;
    void apagar(db::Transacao &t, int id) override;
    QString tabela() const override { return QStringLiteral("TBCOM"); }
    // Purchases are included under their own right.
    QString nomeOperacao(const QString &operacao) const override { return operacao == "Incluir" ? modo_.incluir : operacao; }
    QString perguntaExclusao() const override { return QStringLiteral("Tem certeza que deseja excluir esta operação?"); }
    QStringList tabelasEscritas() const override { return {"TBCOM", "TBCOMITENS", "TBCOMFAT", "TBCOMST", "TBCONTAS"}; }
    bool montarBusca(const QString &ordem, const QString &texto, Busca busca, QString &sql, std::map<QString, QVariant> &p) override;

private:
    void criarBotoesPassos();
    void criarBotaoEmail();
    void lerCampos();
    void mostrarDocumento();
    void recalcularTela();
    void mostrarParcelas(db::Transacao &t);
    QPlainTextEdit *criarMemo(const QString &coluna, const QString &rotulo, const QString &aba);
    void mostrarCondicoes();  // the billing terms only  // the saved billing's instalments

    const ModoOperacao &modo_;
    Documento doc_;
    CampoData *edData_ = nullptr, *edDataFat_ = nullptr;
    ComboConsulta *cbCliente_ = nullptr, *cbAtendente_ = nullptr, *cbEmpresa_ = nullptr, *cbItem_ = nullptr;
    QComboBox *cbTipoDesconto_ = nullptr, *cbCondPagto_ = nullptr, *cbParcelas_ = nullptr;
    CampoNumero *edDescontoM_ = nullptr, *edDescontoS_ = nullptr, *edSeguro_ = nullptr, *edPrimVenc_ = nullptr, *edIntVenc_ = nullptr;
    CampoNumero *edQtd_ = nullptr, *edPreco_ = nullptr, *edPercDesc_ = nullptr, *edFrete_ = nullptr, *edOutros_ = nullptr;
    ComboConsulta *cbTransportadora_ = nullptr;
    QLineEdit *edSerial_ = nullptr;
    QStandardItemModel *linhas_ = nullptr, *parcelas_ = nullptr;
    QTableView *gradeLinhas_ = nullptr, *gradeParcelas_ = nullptr;
    // Fields of some modes only: null where the mode has none.
    CampoData *edPrevEntrega_ = nullptr;
    ComboConsulta *cbTecnico_ = nullptr, *cbAcond_ = nullptr;
    CampoNumero *edKilom_ = nullptr;
    QList<QPair<QString, QLineEdit *>> textosServico_;
    QList<QPair<QString, QPlainTextEdit *>> memos_;  // texts of several lines: the notes, a service order's request and report
    QLabel *lbTotal_ = nullptr;
    bool mostrando_ = false;  // fields being filled from the document: their signals are not the user's
};

} // namespace orb
