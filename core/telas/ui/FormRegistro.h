#pragma once
// The standard registry form made from a declaration: its fields in the edit area, its details
// in tabs under it, edited together with the record in the area transaction and saved with it.

#include "registro/Registro.h"
#include "ui/FormCadastro.h"

#include <functional>

namespace orb {

class ModeloLinhas;

// The widget of a declared field, and its value as it is written to the database.
QWidget *criarWidgetCampo(const CampoForm &c);
QVariant lerWidgetCampo(const CampoForm &c, QWidget *w);  // throws Recusa for a bad number
void escreverWidgetCampo(QWidget *w, const QVariant &v);

class FormRegistro : public FormCadastro {
    Q_OBJECT
public:
    explicit FormRegistro(DeclaracaoRegistro d, QWidget *parent = nullptr);
    const DeclaracaoRegistro &declaracao() const { return d_; }
    // The value a field's widget holds, as it is written to the database.
    QVariant valorDoCampo(const QString &coluna) const;
    void definirValor(const QString &coluna, const QVariant &v);
    // Every field as it is written, with the numbered code Incluir offered (kCodigoOferecido), so
    // that the save numbers it anew when another workstation took the offered one meanwhile.
    Valores valoresDoRegistro() const;

protected:
    void limpar() override;
    void carregar(db::Transacao &t, int id) override;
    // The record, then its details: checked and written inside the attempt of Salvar.
    int gravar(db::Transacao &t, int id) final;
    // The record itself; registries with a routine of their own write it there.
    virtual int gravarCabecalho(db::Transacao &t, int id);
    // The detail rows the generic writer handles after the record (a routine may take some itself).
    virtual EdicaoDetalhes detalhesGenericos() const { return edicao_; }
    void apagar(db::Transacao &t, int id) override;
    void conferirOperacao(const QString &operacao, int id) override;
    void conferirCampo(QWidget *w) override;
    QWidget *widgetDaRecusa(const QString &campo) override;
    void estadoMudou() override;
    QString perguntaExclusao() const override { return d_.perguntaExclusao; }
    QString tabela() const override { return d_.tabela; }
    QString chave() const override { return d_.chave; }
    QStringList tabelasEscritas() const override;

    void registroMudou(int id) override;

public:
    // Details as this edit holds them (the stored rows while browsing).
    const EdicaoDetalhes &edicao() const { return edicao_; }
    EdicaoDetalhes &edicao() { return edicao_; }
    // Detail handlers: the current row of detail `i`, editable while the record is.
    void BtIncluirDetalheClick(int i);
    void BtAlterarDetalheClick(int i);
    void BtExcluirDetalheClick(int i);
    QAbstractItemModel *modeloDetalhe(int i) const;
    int idDaLinhaDetalhe(int i, int linha) const;
    class QTableView *gradeDetalhe(int i) const { return detalhes_.value(i).grade; }
    // How a detail row is edited; tests fill the values themselves.
    std::function<bool(const DetalheRegistro &, Valores &)> editarDetalhe;

private:
    struct Detalhe {
        ModeloConsulta *consulta = nullptr;  // read-only details: straight from the database
        ModeloLinhas *linhas = nullptr;      // editable ones: the rows of the edit
        class QTableView *grade = nullptr;
        QWidget *pagina = nullptr;
        QList<class QPushButton *> botoes;
    };
    void editarLinhaDetalhe(int i, int linha);  // -1 = a new row
    void mostrarDetalhes();
    DeclaracaoRegistro d_;
    QList<Detalhe> detalhes_;
    EdicaoDetalhes edicao_;
    QVariant oferecido_;  // the numbered code as Incluir offered it
    class QTabWidget *abasDetalhes_ = nullptr;
};

// Registers a declared registry's form under its class name.
void registrarRegistro(const DeclaracaoRegistro &d);

} // namespace orb
