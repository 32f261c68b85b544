#pragma once
// A registry as a declaration: its table, grid, search orders, fields with their required-field
// messages in screen order, its detail tables, and whatever rules of its own it adds. The
// routines below read, check and write a record with its details inside the caller's
// transaction; the forms library turns the same declaration into the standard screen.

#include "Recusa.h"
#include "acesso/Sessao.h"
#include "db/Banco.h"

#include <QHash>
#include <QList>
#include <QPair>
#include <functional>
#include <map>

namespace orb {

// A browse search while typing matches the start of the order's text through an index; Enter
// looks for the text anywhere (a scan, the user asked for it).
enum class Busca { Inicio, Trecho };

using Valores = std::map<QString, QVariant>;  // column -> value, as the form gathered them

// A column's value in `v`; NULL when the column is absent.
inline QVariant valor(const Valores &v, const QString &coluna)
{
    const auto it = v.find(coluna);
    return it == v.end() ? QVariant() : it->second;
}

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
    bool senha = false;                     // hidden as typed (kept last: declarations fill fields in order)
    QString desconhecido;                   // Consulta: the name may be typed; this refuses one not in the list
};

// A detail table shown in a tab under the record, following it (its rows point at the record).
// With fields it is edited together with the record and saved with it; without, it is read only.
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
    // The detail's own checks of a row, after its required fields; `outras` are the record's other rows.
    std::function<void(db::Transacao &t, const Valores &linha, const QList<Valores> &outras)> validar;

    bool editavel() const { return !campos.isEmpty(); }
};

struct DeclaracaoRegistro {
    QString classe;                 // "TCidades"
    QString titulo;                 // tab caption
    QString area;                   // its transaction: "TrCidades"
    QString tabela;                 // "TBCIDADES"
    QString classeTraco;            // the class its trace lines name, when not its own ("TMiniCad")
    QString chave = QStringLiteral("ID");  // key column; another one (CODIGO) is filled by `completar`
    QString numerada;               // column numbered with the next code on insert ("CODIGO")
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
    // Rows that go with a record just written (a new party's first situation, ...).
    std::function<void(db::Transacao &t, int id, bool novo)> gravado;
    QList<DetalheRegistro> detalhes;
    // Tables that go with a deleted record besides its editable details: (table, column holding its key).
    QList<QPair<QString, QString>> dependentes;
    // Rows that keep the record from being deleted while they exist: (table, column holding its key).
    QList<QPair<QString, QString>> impedem;
};

inline const QString kRegistrosDependentes =
    QStringLiteral("Não foi possível excluir este registro pois existem registros dependentes do mesmo!");
// Throws Recusa(kRegistrosDependentes) when a row of `impedem` still points at the record.
void conferirExclusao(db::Transacao &t, const DeclaracaoRegistro &d, int id);

// A declaration's identity: the form's class, its caption, its area transaction and its table.
DeclaracaoRegistro declararRegistro(const QString &classe, const QString &titulo, const QString &area, const QString &tabela);

// A number typed in pt_BR ("1.234,56") for a column of `escala` decimals, NUMERIC(18, escala),
// which keeps 64 bits at its scale: letters, a malformed number or one the column cannot hold
// are refused with "Valor inválido!" naming the field. Empty text is no number: the caller decides.
inline const QString kValorInvalido = QStringLiteral("Valor inválido!");
db::Decimal lerNumero(const QString &texto, int escala, const QString &campo);
// A number field's text as its editor shows it ("12,50%", "000003", "1.234,56"), the display's
// suffix typed or not: NULL when empty, an int for Inteiro fields, a Decimal at the field's scale.
QVariant lerNumeroDoCampo(const CampoForm &c, const QString &texto);
// What grids show for coded values, by column: a Lista's captions, "SIM"/"NÃO" for flags.
QHash<QString, QHash<QString, QString>> legendas(const QList<CampoForm> &campos);

// Whether a value counts as filled (a blank mask such as "  :  " does not).
bool preenchido(const QVariant &v);
// The type of a stored picture; empty when the bytes are none of the accepted ones.
QString tipoDaFoto(const QByteArray &dados);

// The first empty required field, in screen order, stops the save.
void conferirObrigatorios(const QList<CampoForm> &campos, const Valores &v);
inline void conferirObrigatorios(const DeclaracaoRegistro &d, const Valores &v) { conferirObrigatorios(d.campos, v); }
// Text the database's character set (WIN1252) cannot hold, an emoji say, refused naming its field
// before anything is written.
bool cabeEmWin1252(const QString &texto);
void conferirCaracteres(const QList<CampoForm> &campos, const Valores &v);
// The type column of each picture field, from the picture's bytes.
void completarTiposFoto(const QList<CampoForm> &campos, Valores &v);
// Checks and writes one record (id 0 = new) and logs it; returns its key. Without `quem`, for
// routines that checked their own rights; with it, the screen's "Incluir" or "Alterar" first.
int gravarRegistro(db::Transacao &t, const DeclaracaoRegistro &d, int id, Valores v);
int gravarRegistro(db::Transacao &t, const DeclaracaoRegistro &d, int id, Valores v, const Sessao &quem);
Valores lerRegistro(db::Transacao &t, const DeclaracaoRegistro &d, int id);
// Logs the record and every row of its details and dependents as deleted, then deletes them all.
void excluirRegistro(db::Transacao &t, const DeclaracaoRegistro &d, int id);
// The same after the screen's "Excluir" right.
void excluirRegistro(db::Transacao &t, const DeclaracaoRegistro &d, int id, const Sessao &quem);
// The change log of a record written or deleted by a routine of its own (see TTabs::Log).
void logRegistro(db::Transacao &t, const QString &tabela, const QString &chave, const QVariant &valor, const QString &acao,
                 const QList<QPair<QString, QString>> &detalhes = {});
inline const QString kInclusao = QStringLiteral("INCLUSÃO");
inline const QString kAlteracao = QStringLiteral("ALTERAÇÃO");
inline const QString kExclusao = QStringLiteral("EXCLUSÃO");
// The browse query of a declaration.
QString sqlGrade(const DeclaracaoRegistro &d);
// Next code of a numbered column, in the caller's transaction.
int proximoCodigo(db::Transacao &t, const QString &tabela, const QString &campo = QStringLiteral("CODIGO"));
// The code a screen offered at Incluir, sent with the record's values: a code left as offered is
// only a proposal, and becomes the next free one at the save when another record took it meanwhile.
// renumerarOferecido tells whether the code is the offered one, and drops the key when the user
// typed a code of their own.
inline const QString kCodigoOferecido = QStringLiteral("_CODIGOOFERECIDO");
bool renumerarOferecido(db::Transacao &t, const QString &tabela, const QString &coluna, Valores &v);
// Inserts a row numbered in `coluna` through `inserir`, which reads the code from `v`. An offered
// code, an empty one or one past the last is a new number: when another workstation took it
// meanwhile (the unique index refuses it) the next one is tried. A typed code stays as typed.
int inserirNumerado(db::Transacao &t, const QString &tabela, const QString &coluna, Valores &v,
                    const std::function<int()> &inserir, bool oferecido = false);

// ------------------------------------------------------------------ state changes

// A state change that two workstations may try at once (approve, deliver, settle, close the day):
// the row is locked at the start, so the second one is refused at once ("outra estação"), and
// its state is read inside the transaction that will write it. `ausente` is the refusal when the
// row does not exist. Returns the columns asked for.
Valores travarEstado(db::Transacao &t, const QString &tabela, const QString &chave, const QVariant &valor,
                     const QStringList &colunas, const QString &ausente);
// Writes `novos` only where the row still holds the state it was read in (`esperado`: column ->
// value, NULL for "still empty"); refuses with `mudou` when no row took the change.
void mudarEstado(db::Transacao &t, const QString &tabela, const QString &chave, const QVariant &valor, const Valores &novos,
                 const Valores &esperado, const QString &mudou);

// ------------------------------------------------------------------ details edited with the record

// One row of a detail as the edit holds it: ID 0 until written; `alterada` when typed in this edit.
struct LinhaDetalhe {
    int id = 0;
    Valores valores;  // the row's columns as read (joined Z_ columns too) and as typed
    bool alterada = false;
};

// The rows of one detail in an edit, and the IDs removed from it.
struct EdicaoDetalhe {
    QList<LinhaDetalhe> linhas;
    QList<int> excluidas;

    QList<Valores> valores(int exceto = -1) const;
    void incluir(const Valores &v);
    void alterar(int linha, const Valores &v);
    void excluir(int linha);
};

// One entry per declared detail, in the declaration's order (read-only details stay empty).
using EdicaoDetalhes = QList<EdicaoDetalhe>;

// The rows of every editable detail of the record (none for a new one: idMestre 0).
EdicaoDetalhes lerDetalhes(db::Transacao &t, const DeclaracaoRegistro &d, int idMestre);
// A detail row's required fields, then the detail's own checks; refusals name the detail's table.
void conferirLinhaDetalhe(db::Transacao &t, const DetalheRegistro &d, const Valores &linha, const QList<Valores> &outras);
// Every row of every editable detail, in order.
void conferirDetalhes(db::Transacao &t, const DeclaracaoRegistro &d, const EdicaoDetalhes &e);
// The rights of the rows an edit changed, of the screen's module: new rows "Incluir", typed rows
// "Alterar", removed rows "Excluir".
void exigirDireitosDetalhes(db::Transacao &t, const Sessao &quem, const QList<EdicaoDetalhe> &e);
// Writes what the edit changed under the record idMestre (rows already checked by conferirDetalhes),
// after their rights: removed rows logged and deleted, new and typed rows written and logged.
void gravarDetalhes(db::Transacao &t, const DeclaracaoRegistro &d, int idMestre, const EdicaoDetalhes &e,
                    const Sessao &quem);

// The whole save of a declared registry: the rights of `quem`, the record's checks, the details'
// checks, then the record and its details written and logged. The caller commits; on a refusal
// or a database error nothing of this attempt stays written (the transaction stays open for a
// corrected try).
int salvarRegistro(db::Transacao &t, const DeclaracaoRegistro &d, int id, Valores v, const EdicaoDetalhes &e,
                   const Sessao &quem);

} // namespace orb
