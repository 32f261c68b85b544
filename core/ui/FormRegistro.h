#pragma once
// A registry as a declaration: its table, grid, search orders, fields with their required-field
// messages in screen order, and whatever rules of its own it adds. FormRegistro turns the
// declaration into the standard form; the plain routines below are what tests exercise.

#include "ui/FormCadastro.h"

#include <functional>
#include <map>

namespace orb {

using Valores = std::map<QString, QVariant>;  // column -> value, as the form gathered them

struct CampoForm {
    enum Tipo { Texto, Inteiro, Decimal, Data, Hora, Memo, Lista, Consulta, Marca /* "S"/"N" */, Foto };
    QString coluna;
    QString rotulo;
    Tipo tipo = Texto;
    QString obrigatorio;                    // the message when left empty; empty = optional
    int tamanho = 0;                        // text: maximum length
    int escala = 2;                         // decimals
    QList<QPair<QString, QString>> itens;   // Lista: (stored value, caption)
    QString sqlLista;                       // Consulta: "Select Id, <caption> From ..." (LigaCombo)
    QString mascara;                        // input mask of a text field
    QString aba;                            // tab page of the edit area ("Page|Group": a group on it); empty = the main area
    bool transitorio = false;               // typed but not a column (a new password): never read back
    QString colunaTipo;                     // Foto: the column that keeps the picture's type
};

// A detail table shown in a tab under the record, following it (its rows point at the record).
struct DetalheRegistro {
    QString titulo;                          // tab caption
    QString tabela;                          // "TBFUNCOESSAL"
    QString chave = QStringLiteral("FK");    // its column holding the record's ID
    QString sqlGrade;                        // its rows of the record: uses :MESTRE
    QList<QPair<QString, QString>> colunas;  // grid: field, caption
    QList<CampoForm> campos;                 // editable fields; none = shown read-only
    QString perguntaExclusao = QStringLiteral("Tem certeza que deseja excluir este item?");
    QString traco;
    // Values derived before writing (a component's code and description from the chosen item).
    std::function<void(db::Transacao &t, Valores &v, bool novo)> completar;
};

struct DeclaracaoRegistro {
    QString classe;                 // "TCidades"
    QString titulo;                 // tab caption
    QString area;                   // its transaction: "TrCidades"
    QString tabela;                 // "TBCIDADES"
    QString chave = QStringLiteral("ID");  // key column; another one (CODIGO) is filled by `completar`
    QString filtro;                 // rows of a larger table ("Cv = 'S'")
    Valores fixos;                  // written on every insert (PESSOA "J", CV "S")
    QString sqlGrade;               // browse query with joins; default: the table (and filter)
    QList<QPair<QString, QString>> colunas;  // grid: field, caption
    QList<QPair<QString, QString>> ordens;   // search: caption, field
    QList<CampoForm> campos;
    QString perguntaExclusao = QStringLiteral("Tem certeza que deseja excluir este registro?");
    QString traco;                  // trace line of a deletion: traco + id + ")"
    // The registry's own rules, after the required fields; throw Recusa.
    std::function<void(db::Transacao &t, int id, const Valores &v)> validar;
    // Values derived before writing (a plan's nickname from its name, ...).
    std::function<void(db::Transacao &t, Valores &v, bool novo)> completar;
    QList<DetalheRegistro> detalhes;
};

// A declaration's identity: the form's class, its caption, its area transaction and its table.
DeclaracaoRegistro declararRegistro(const QString &classe, const QString &titulo, const QString &area, const QString &tabela);

// The first empty required field, in screen order, stops the save.
void conferirObrigatorios(const DeclaracaoRegistro &d, const Valores &v);
// The type column of each picture field, from the picture's bytes.
void completarTiposFoto(const QList<CampoForm> &campos, Valores &v);
// Checks and writes; returns the record's ID.
int gravarRegistro(db::Transacao &t, const DeclaracaoRegistro &d, int id, Valores v);
Valores lerRegistro(db::Transacao &t, const DeclaracaoRegistro &d, int id);
void excluirRegistro(db::Transacao &t, const DeclaracaoRegistro &d, int id);
// The browse query of a declaration.
QString sqlGrade(const DeclaracaoRegistro &d);
// Next code of a numbered column, in the caller's transaction.
int proximoCodigo(db::Transacao &t, const QString &tabela, const QString &campo = QStringLiteral("CODIGO"));
// A detail row of the record idMestre: required fields checked, written, ID returned.
int gravarDetalhe(db::Transacao &t, const DetalheRegistro &d, int idMestre, int id, const Valores &v);
void excluirDetalhe(db::Transacao &t, const DetalheRegistro &d, int id);

// The widget of a declared field, and its value as it is written to the database.
QWidget *criarWidgetCampo(const CampoForm &c);
QVariant lerWidgetCampo(const CampoForm &c, QWidget *w);  // throws Recusa for a bad number
void escreverWidgetCampo(QWidget *w, const QVariant &v);

// Whether a value counts as filled (a blank mask such as "  :  " does not).
bool preenchido(const QVariant &v);

class FormRegistro : public FormCadastro {
    Q_OBJECT
public:
    explicit FormRegistro(DeclaracaoRegistro d, QWidget *parent = nullptr);
    const DeclaracaoRegistro &declaracao() const { return d_; }
    // The value a field's widget holds, as it is written to the database.
    QVariant valorDoCampo(const QString &coluna) const;
    void definirValor(const QString &coluna, const QVariant &v);

protected:
    void limpar() override;
    void carregar(db::Transacao &t, int id) override;
    int gravar(db::Transacao &t, int id) override;
    void apagar(db::Transacao &t, int id) override;
    QString perguntaExclusao() const override { return d_.perguntaExclusao; }
    QString tabela() const override { return d_.tabela; }
    QString chave() const override { return d_.chave; }

    void registroMudou(int id) override;

public:
    // Detail handlers: the current row of detail `i`.
    void BtIncluirDetalheClick(int i);
    void BtAlterarDetalheClick(int i);
    void BtExcluirDetalheClick(int i);
    ModeloConsulta *modeloDetalhe(int i) const { return detalhes_.value(i).modelo; }
    class QTableView *gradeDetalhe(int i) const { return detalhes_.value(i).grade; }
    // How a detail row is edited; tests fill the values themselves.
    std::function<bool(const DetalheRegistro &, Valores &)> editarDetalhe;

private:
    struct Detalhe {
        ModeloConsulta *modelo = nullptr;
        class QTableView *grade = nullptr;
    };
    void gravarLinhaDetalhe(int i, int id);
    DeclaracaoRegistro d_;
    QList<Detalhe> detalhes_;
};

// Registers a declared registry's form under its class name.
void registrarRegistro(const DeclaracaoRegistro &d);

} // namespace orb
