#pragma once
// The one registry-form mechanism: toolbar with the standard buttons and keys, the browse grid,
// the edit area, the area transaction started at Incluir/Alterar, committed at Salvar and rolled
// back at Cancelar, the record locked at Alterar, permissions checked before each action.
// A registry is a subclass that declares its query and fields and supplies its own rules.

#include "acesso/Sessao.h"
#include "db/Banco.h"
#include "registro/Registro.h"
#include "ui/ModeloConsulta.h"

#include <QHash>
#include <functional>
#include <map>
#include <tuple>
#include <QSet>
#include <QWidget>

class QComboBox;
class QFormLayout;
class QLineEdit;
class QLabel;
class QPushButton;
class QTableView;
class QTabWidget;
class QSplitter;
class QVBoxLayout;

namespace orb {

// A grid for reading: whole rows selected one at a time, nothing edited in place, one line per
// row, the last column taking the room left.
void prepararGrade(QTableView *g);

class FormCadastro : public QWidget {
    Q_OBJECT
public:
    enum class Estado { Navegando, Incluindo, Alterando };

    // classe: the form's class name (its module name in the permissions); area: its transaction.
    FormCadastro(const QString &classe, const QString &titulo, const QString &area, QWidget *parent = nullptr);
    ~FormCadastro() override;

    Estado estado() const { return estado_; }
    int idAtual() const;
    QTableView *grade() const { return grade_; }
    ModeloConsulta *modelo() const { return modelo_; }
    QPushButton *botao(const QString &nome) const;  // "Incluir", "Alterar", "Salvar", ...

    // The menu the form was opened from, for the permission checks.
    // The module name is the class the menu item opened (one form may serve several items).
    void definirMenu(const QString &menuCaption, const QString &modulo = {})
    {
        menu_ = menuCaption;
        if (!modulo.isEmpty()) classe_ = modulo;
    }
    // One module with several sheets names its operations per sheet ("Incluir" + " Estoque").
    void definirSufixoOperacoes(const QString &sufixo) { sufixoOperacoes_ = sufixo; }
    // The class name the trace lines carry, when not the form's own.
    void definirNomeTraco(const QString &nome) { nomeTraco_ = nome; }
    // The logged-in user acting from this screen: the routines check its rights with it.
    Sessao quem() const;

    // Handlers, public so that tests and shortcuts drive them as the buttons do.
    void BtIncluirClick();
    void BtAlterarClick();
    void BtSalvarClick();
    void BtCancelarClick();
    void BtExcluirClick();
    void BtImprimirClick();
    void BtFecharClick();
    // Moves through the grid: -2 first, -1 previous, 1 next, 2 last.
    void navegar(int passo);
    // Runs the browse query again with the current order and search text.
    void pesquisar();
    // The connection was lost with this edit open, so nothing of it reached the database: back to
    // browsing with the fields emptied. Returns the sentence that tells the user what was not saved.
    QString descartarEdicao();

signals:
    void fechar();
    // An edit ended: saved (the record's ID) or cancelled (0).
    void edicaoEncerrada(int id);

protected:
    // Declaration
    // The browse query (without ORDER BY) and the grid's columns (field, caption); `ordens` are
    // the search orders offered (caption, field), the first one is used at start.
    void definirConsulta(const QString &sql, const QList<QPair<QString, QString>> &colunas,
                         const QList<QPair<QString, QString>> &ordens = {});
    QFormLayout *formulario() const { return form_; }
    // Adds a field to the edit area under a caption; `nome` is how Recusa names it.
    // `aba` puts it on a tab page of the edit area (made on first use); empty = the main area.
    void adicionarCampo(const QString &nome, const QString &rotulo, QWidget *w, const QString &aba = {});
    QWidget *paginaEdicao(const QString &aba);
    // A field placed by the caller inside a widget of its own (registered for focus, colours and Recusa).
    void registrarCampo(const QString &nome, QWidget *w);
    // A row of the edit area (or of a tab page) holding a widget the caller composed.
    void adicionarLinha(const QString &rotulo, QWidget *w, const QString &aba = {});
    // A row of fields side by side, each after its caption (the first under the row's own), registered
    // as fields: column, caption, widget, stretch.
    using CampoNaLinha = std::tuple<QString, QString, QWidget *, int>;
    void adicionarCampos(const QString &rotulo, const QList<CampoNaLinha> &campos);
    QWidget *campo(const QString &nome) const { return campos_.value(nome); }
    QVBoxLayout *corpo() const { return corpo_; }
    // A panel under the edit area (details), sharing the height with the grid and the fields.
    void adicionarPainel(QWidget *w, int proporcao = 2);
    QSplitter *divisor() const { return divisor_; }  // the browse, the edit area and the panels, top to bottom

    // Alterar under the right `operacao`: the record locked and loaded, the edit begun; false when
    // refused (the user was told).
    bool alterarRegistro(const QString &operacao);

    // Rules of each registry

    virtual void limpar() = 0;                                   // Incluir: empty fields and defaults
    virtual void carregar(db::Transacao &t, int id) = 0;        // fields from the record
    virtual int gravar(db::Transacao &t, int id) = 0;           // id 0 = new; returns the ID; throws Recusa
    virtual void apagar(db::Transacao &t, int id) = 0;
    virtual QString perguntaExclusao() const { return QStringLiteral("Tem certeza que deseja excluir este registro?"); }
    virtual QString tabela() const = 0;                          // locked at Alterar
    virtual QString chave() const { return QStringLiteral("ID"); }  // the table's key column
    // A registry's refusal of "Alterar" or "Excluir" on this record, before anything is asked or locked.
    virtual void conferirOperacao(const QString &operacao, int id) {}
    // What Excluir says with no record chosen; empty = the button waits for a record.
    virtual QString semRegistro() const { return {}; }
    virtual bool confirmarCancelamento() { return true; }        // a registry may ask before losing the edit
    virtual void registroMudou(int id) {}                        // the grid moved to another record (0 = none)
    virtual void estadoMudou() {}                                // browsing, inserting or changing began
    // The tables a save or a deletion of this screen writes: their lookup lists are told.
    virtual QStringList tabelasEscritas() const { return {tabela()}; }
    // The widget a refusal names (a field, or a detail's grid), its tab brought forward.
    virtual QWidget *widgetDaRecusa(const QString &nome) { return campo(nome); }
    // A registry with search clauses of its own builds the whole browse query here.
    virtual bool montarBusca(const QString &ordem, const QString &texto, Busca busca, QString &sql,
                             std::map<QString, QVariant> &p)
    {
        return false;
    }
    // A field's check on leaving it (a date or number that cannot be read): throws Recusa.
    virtual void conferirCampo(QWidget *w) {}
    void marcarFalha(QWidget *w);
    void mostrarCampo(QWidget *w);  // the tab page holding the field comes to the front
    void reajustarColunas() { colunasAjustadas_ = false; }  // widths again from the next rows read
    void ajustarColunas();
    void focarPrimeiro();
    // Typing in the search box moves to the first row whose order column starts with the text,
    // over the list already read (the lookup registries); otherwise the list is queried again.
    void localizarAoDigitar(bool sim) { localizar_ = sim; }
    // A list to look things up in: nothing is included, changed or deleted from it.
    void somenteConsulta();
    void informarMonitor(int id, const QString &acao);

    db::Transacao &transacao();
    // One change in the area transaction: committed when `f` returns; rolled back and told to the
    // user when it refuses (the refused field in `campo`) or the database fails.
    enum class Desfecho { Feito, Recusado, Falhou };
    Desfecho naTransacao(const std::function<void(db::Transacao &)> &f, QString *campo = nullptr);
    void Botoes();
    void recarregar(int selecionar = 0);

    bool eventFilter(QObject *o, QEvent *e) override;

    // Imprimir (F6), the right already granted: the list on the grid; a document's screen prints the
    // document under the cursor instead.
    virtual void imprimir();

    // The screen's operation, asked of the database before an action; the refusal told.
    bool permitido(const QString &operacao);
    // A screen whose rights name the standard actions otherwise ("Abrir" for "Incluir").
    virtual QString nomeOperacao(const QString &operacao) const { return operacao; }

private:
    void mostrarRegistro();
    void conferirSaida(QWidget *w);
    void habilitarEdicao(bool sim);
    int consultarBusca();  // the browse query under the order and text typed; the row to select
    int localizar(const QString &campo, const QString &texto);  // first row starting with it; -1 none
    void mascararBusca();  // the search box takes the mask of the chosen order
    Busca modoBusca_ = Busca::Inicio;  // typing: the start; Enter: anywhere
    void focarCampo(QWidget *w);  // its tab page in front, then the focus

    QString classe_, titulo_, area_, menu_, sufixoOperacoes_, nomeTraco_;
    QString nomeTraco() const { return nomeTraco_.isEmpty() ? classe_ : nomeTraco_; }
    Estado estado_ = Estado::Navegando;
    int idEditado_ = 0;
    QHash<QString, QPushButton *> botoes_;
    QHash<QString, QWidget *> campos_;
    QList<QWidget *> ordemCampos_;  // in screen order, for the first field's focus
    QSet<QWidget *> falhas_;  // fields painted peach by a failed check
    QTableView *grade_ = nullptr;
    ModeloConsulta *modelo_ = nullptr;
    QFormLayout *form_ = nullptr;
    QTabWidget *abasEdicao_ = nullptr;
    QHash<QString, QFormLayout *> paginas_;
    QHash<QString, QWidget *> paginasAgrupadas_;
    bool colunasAjustadas_ = false;
    QWidget *areaEdicao_ = nullptr;
    QVBoxLayout *corpo_ = nullptr;
    QSplitter *divisor_ = nullptr;
    QList<QWidget *> paineis_;
    QLabel *status_ = nullptr;
    QString sqlBase_;
    QList<QPair<QString, QString>> ordens_;
    QComboBox *ordem_ = nullptr;
    QLineEdit *busca_ = nullptr;
    QString avisoBusca_;  // why the last search found nothing, shown on the status line
    bool localizar_ = false;
    bool consulta_ = false;
    QString consultaAtual_;  // the text and parameters of the list on the grid, to skip reading it again
};

} // namespace orb
