#pragma once
// Payables ("Pag") and receivables ("Rec"): the list filtered by due date, holder, situation and
// origin; a hand-entered account with its apportionment; settling through the receipt/payment
// dialog (F8), reversing, deleting; the next 30 days' totals as a chart.

#include "Contas.h"
#include "ui/FormCadastro.h"

#include <QDialog>

class QComboBox;
class QLineEdit;
class QTableWidget;

namespace orb {

class CampoData;
class CampoNumero;
class ComboConsulta;
class GraficoDias;

// The receipt/payment dialog: one payment of the account, and a cheque's fate.
class TDataRectoContasReceber : public QDialog {
    Q_OBJECT
public:
    // `gravar` records the payment and returns whether it went through (a refusal was told).
    TDataRectoContasReceber(const QString &titulo, const db::Decimal &aberto, const QString &tipoDoc,
                            std::function<bool(const Pagamento &)> gravar, QWidget *parent = nullptr);
    void BtOkClick();
    Pagamento pagamento() const;

    ComboConsulta *cbCCor = nullptr;
    CampoData *edData = nullptr, *edData1 = nullptr, *edData2 = nullptr;
    CampoNumero *edValor = nullptr, *edJurosDesc = nullptr;
    QComboBox *cbForma = nullptr, *cbDestino = nullptr;
    QLineEdit *edMot1 = nullptr, *edMot2 = nullptr;

private:
    std::function<bool(const Pagamento &)> gravar_;
};

class TContas : public FormCadastro {
    Q_OBJECT
public:
    // modo: "Pag" or "Rec".
    explicit TContas(const QString &modo, QWidget *parent = nullptr);

    void BtQuitarClick();
    void BtEstornarCRClick();
    void BtIncluirRateioClick();
    // Tests answer the dialog: called with it open, before exec.
    static void definirRespostaDialogo(std::function<void(TDataRectoContasReceber &)> f);

    QComboBox *filtroSituacao() const { return cbSituacao_; }
    CampoData *filtroDe() const { return edDe_; }
    CampoData *filtroAte() const { return edAte_; }

protected:
    void limpar() override;
    void carregar(db::Transacao &t, int id) override;
    int gravar(db::Transacao &t, int id) override;
    void apagar(db::Transacao &t, int id) override;
    QString tabela() const override { return QStringLiteral("TBCONTAS"); }
    QString perguntaExclusao() const override { return QStringLiteral("Deseja realmente excluir esta Conta?"); }
    void conferirOperacao(const QString &operacao, int id) override;
    bool montarBusca(const QString &ordem, const QString &texto, Busca busca, QString &sql, std::map<QString, QVariant> &p) override;
    QStringList tabelasEscritas() const override { return {"TBCONTAS", "TBCONTASRAT", "TBCONTASPAGTOS"}; }

private:
    void mostrar(const Valores &v);
    void adicionarRateio(const QVariant &categoria, const QVariant &valor);
    QList<Valores> rateios() const;
    void atualizarGrafico();

    QString tipo_;  // "D" payables, "C" receivables
    Valores atual_;
    ComboConsulta *cbTitular_ = nullptr, *cbBandeira_ = nullptr, *cbCCor_ = nullptr, *cbBanco_ = nullptr;
    QLineEdit *edHistorico_ = nullptr, *edNumero_ = nullptr;
    QHash<QString, QLineEdit *> cheque_;
    CampoData *edVencimento_ = nullptr, *edDe_ = nullptr, *edAte_ = nullptr;
    CampoNumero *edValorBruto_ = nullptr;
    QComboBox *cbTipoDoc_ = nullptr, *cbSituacao_ = nullptr, *cbOrigem_ = nullptr;
    ComboConsulta *cbFiltroTitular_ = nullptr;
    QTableWidget *rateio_ = nullptr;
    GraficoDias *grafico_ = nullptr;
};

} // namespace orb
