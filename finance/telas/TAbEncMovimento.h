#pragma once
// The cash sessions: the list newest first, opening, editing, closing and reopening (F8), the
// deletion and the day's summary (F6); the day's receipts by payment form as a chart.

#include "ui/FormCadastro.h"

class QLabel;

namespace orb {

class CampoData;
class CampoNumero;
class ComboConsulta;
class GraficoFormas;

class TAbEncMovimento : public FormCadastro {
    Q_OBJECT
public:
    explicit TAbEncMovimento(QWidget *parent = nullptr);

    void BtQuitarClick();     // "E&ncerrar/Reabrir (F8)"

protected:
    // Imprimir (F6) prints the day's summary, not the list.
    void imprimir() override;
    void limpar() override;
    void estadoMudou() override;
    void carregar(db::Transacao &t, int id) override;
    int gravar(db::Transacao &t, int id) override;
    void apagar(db::Transacao &t, int id) override;
    QString tabela() const override { return QStringLiteral("TBABENCMOV"); }
    QString perguntaExclusao() const override { return QStringLiteral("Deseja realmente excluir este Movimento?"); }
    void conferirOperacao(const QString &operacao, int id) override;
    void registroMudou(int id) override;
    QString nomeOperacao(const QString &operacao) const override;
    bool montarBusca(const QString &ordem, const QString &texto, Busca busca, QString &sql, std::map<QString, QVariant> &p) override;

private:
    bool encerrando_ = false;  // the edit begun by Encerrar (F8): Salvar closes the day
    void mostrar(const Valores &v);
    Valores atual_;
    CampoData *edData_ = nullptr, *edDataAb_ = nullptr, *edDataEnc_ = nullptr;
    ComboConsulta *cbRespAb_ = nullptr, *cbRespEnc_ = nullptr;
    CampoNumero *edSaldoInic_ = nullptr, *edSaldoFinal_ = nullptr;
    GraficoFormas *grafico_ = nullptr;
    ModeloConsulta *operacoes_ = nullptr;  // the session's rows of TbAbEncMovOp
};

} // namespace orb
