#pragma once
// The commercial registry form: every person and company in one table, opened in a mode
// (customers, suppliers, carriers, sellers, employees, companies, physicians, ...).

#include "Comercial.h"
#include "ui/FormRegistro.h"

class QCheckBox;

namespace orb {

class TCadComerciais : public FormRegistro {
    Q_OBJECT
public:
    explicit TCadComerciais(const QString &modo, QWidget *parent = nullptr);
    const ModoCadastro &modo() const { return modo_; }
    // Checks of a document field when the user leaves it (validity, then duplicates).
    void conferirDocumento(const QString &coluna);
    QCheckBox *ver(const QString &flag) const;
    // Address by CEP when the user leaves the CEP field.
    void buscarCep();

protected:
    void limpar() override;
    int gravarCabecalho(db::Transacao &t, int id) override;
    EdicaoDetalhes detalhesGenericos() const override;
    void apagar(db::Transacao &t, int id) override;
    QString perguntaExclusao() const override { return kPerguntaExcluirCadastro; }
    bool montarBusca(const QString &ordem, const QString &texto, Busca busca, QString &sql, std::map<QString, QVariant> &p) override;
    bool eventFilter(QObject *o, QEvent *e) override;
    bool confirmarCancelamento() override;

private:
    void preencherEndereco(const struct Endereco &e);
    void pessoaMudou();
    ModoCadastro modo_;
    QList<QCheckBox *> ver_;
};

// Registers the commercial registry under each of its names (TCadComerciais, TClientes, ...).


} // namespace orb
