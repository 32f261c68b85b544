#pragma once
// Stock items (merchandise rows of TBITENS) with their stock per company, and the rules of the
// stock screen as plain routines: price composition, code uniqueness, a new item's defaults,
// the save and delete checks, the browse query with its filters. Size grids, packaging units
// and kits are lookup registries declared here too.

#include "registro/Registro.h"

#include <QSet>

namespace orb {

// ------------------------------------------------------------------ price composition

// Proposes the minimum sale price of both levels (wholesale "AT", retail "VAR") from the cost,
// the desired profit, commission, freight and financial expenses and the item's taxes, and shows
// markup and margin. Reads and writes TBITENS columns in `v`; empty values count as zero.
void comporPreco(Valores &v);
// The commission totals of both levels; the technician's share stays outside the services total.
void somarComissoes(Valores &v);

// ------------------------------------------------------------------ codes

// Refuses a code (or bar code) already held by another row of TBITENS, naming that row's kind.
// An empty code is not looked up.
void conferirCodigoItem(db::Transacao &t, int id, const QString &codigo, const QString &campo);

// ------------------------------------------------------------------ the item

// A stock row of the item: company, location, minimum, maximum and current stock.
struct LinhaEstoque {
    int id = 0;          // 0 = not yet written
    int idEmpresa = 0;
    QString empresa;     // its short name, for the grid
    QString localizacao;
    db::Decimal minimo, maximo, atual;
    db::Decimal reservado, disponivel;  // from approved sales; read only
};

// The principal company (IDEMPRESA of the first TBPARGLOBAIS row); 0 when there is none.
int empresaPrincipal(db::Transacao &t);
// Values of a new item: fixed defaults and the tax regime of the principal company's latest situation.
Valores novoItem(db::Transacao &t);
// The principal company's stock row, appended at once to a new item.
LinhaEstoque linhaPrincipal(db::Transacao &t);
// The stock rows of an item with their reservations, ordered by company name.
QList<LinhaEstoque> lerEstoques(db::Transacao &t, int idItem);
// The company of a stock row, typed by its short name: (ID, short name as registered); refuses an
// empty name with "Escolha a empresa primeiro!" and an unknown one with "Empresa não cadastrada!".
QPair<int, QString> empresaDoEstoque(db::Transacao &t, const QString &nome);
// A stock row typed on the stock sheet: company chosen by name among the companies.
LinhaEstoque conferirLinhaEstoque(db::Transacao &t, const QString &empresa, const QString &localizacao,
                                  const QVariant &minimo, const QVariant &maximo, const QVariant &atual);

// Checks in order and writes the item and its stock rows (rows missing from `estoques` are
// deleted); returns the item's ID. `ramo` is the business segment of the installation.
int salvarItem(db::Transacao &t, int id, Valores v, const QList<LinhaEstoque> &estoques, const QString &ramo,
               const Sessao &quem);
// The stock rows as a detail of the item (TBITENSEST), written by salvarItem.
DetalheRegistro detalheEstoques();
// Refuses an item used in any commercial operation, of any kind or state.
void conferirExclusaoItem(db::Transacao &t, int id);
// Deletes the item with its stock rows, photos and suppliers, after the same refusal.
void excluirItem(db::Transacao &t, int id, const Sessao &quem);

// ------------------------------------------------------------------ browse

struct FiltroEstoque {
    int idGrupo = 0, idSubgrupo = 0;
    bool disponiveis = false, indisponiveis = false, web = false;
    bool novidade = false, comum = false;
    bool minimo = false, maximo = false, normal = false, zerado = false;
};
inline const QStringList kOrdensEstoque = {"TODOS", "CÓDIGO", "CÓDIGO BARRAS", "DESCRIÇÃO", "GRUPO/SUBGRUPO", "APLICAÇÃO",
                                           "SERIAL"};
// The browse query with the per-item totals over companies and the principal company's figures,
// the search text of an order (a substring, as a parameter) and the filters.
QString sqlEstoque(const QString &ordem, const QString &texto, const FiltroEstoque &f, std::map<QString, QVariant> &p,
                   Busca busca = Busca::Trecho);
// Just the filter clauses, as appended to the browse query.
QString clausulasFiltro(const FiltroEstoque &f);

// The stock screen's declaration: fields by sheet, and the details that follow the item.
const DeclaracaoRegistro &declaracaoEstoque();

// Size grids, packaging units and kits.
const QList<DeclaracaoRegistro> &registrosEstoque();

} // namespace orb
