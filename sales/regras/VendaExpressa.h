#pragma once
// The express counter sale: a sales document (OP 1, the same records as the sales form) opened
// with the express defaults of the sales parameters, merchandise entered by code or bar code one
// line at a time at the customer's price, its own save checks around the document's save, and
// approval, the payment due now and delivery run in one go right after the save.

#include "Vendas.h"

#include <QByteArray>

namespace orb {

inline const QString kClasseVendaExpressa = QStringLiteral("TVendaExp");
inline const QString kTituloVendaExpressa = QStringLiteral("Comercial - Venda Expressa");
// The note of the move to 'AA' made by this screen's save, spelled as its users know it.
inline const QString kProntoVendaExpressa = QStringLiteral("Pronto ser aprovação.");

// The actions subject to permission, in order (those of the sales).
const QStringList &operacoesVendaExpressa();

// "Nova Venda Expressa (000012)".
QString legendaVendaExpressa(int id);

// Incluir: the right, then a sale with customer, attendant, representative, company, price level,
// discount kind and billing terms from the ...VE columns of the newest TbParVendas row, and the
// customer's address for delivery and billing. Nothing is written until the save.
Documento incluirVendaExpressa(db::Transacao &t, const Sessao &quem, const QDateTime &agora);
// The browse's default search order: ConsultaVE of the newest row dated `hoje` or earlier.
QString consultaVendaExpressa(db::Transacao &t, const QDate &hoje);

// The price level a customer buys at: "A" (PrVendaAt) when its TipoCliente is 'A' (Atacado),
// "V" (PrVendaVar) for 'V' (Varejo), none, or no customer.
QString precoDoCliente(db::Transacao &t, const QVariant &idCad);
// Merchandise whose Codigo, or else whose CodigoBarras, is `codigo`, as a line of `qtd` at the
// customer's price; "Mercadoria não encontrada!" when neither matches.
Valores linhaPorCodigo(db::Transacao &t, const QString &codigo, const QVariant &idCliente, const db::Decimal &qtd);
// Enter in the code field: the line appended to the document and the totals recomputed. Returns
// the item's ID.
int adicionarPorCodigo(db::Transacao &t, Documento &d, const QString &codigo, const db::Decimal &qtd);
// The item's first picture (TbItensFotos, lowest ID); empty when it has none.
QByteArray fotoDoItem(db::Transacao &t, int idItem);

// What the counter takes now for the document as typed: the instalments its terms lay out due
// on the billing date (all of an "A VISTA" sale, a down payment, a first due date of 0 days).
db::Decimal devidoAgora(const Documento &d);

// Salvar: the right, then in order customer, its situation, attendant, freight (a CIF '1' or FOB
// '2' billing needs a carrier, a CIF one a freight value), a merchandise line; each refusal writes
// nothing. Then the document's save, whose move to 'AA' carries kProntoVendaExpressa. The caller
// commits. Returns the ID.
int salvarVendaExpressa(db::Transacao &t, Documento &d, const Sessao &quem, const QDateTime &agora);

// After the save: approval at `agora` with the billing's GeraFin, the instalments due by today
// received in the cash account (under the receivables' rights), and delivery at `agora`; the
// payments are received right after the step that makes the instalments effective. `recebido`
// (a db::Decimal, or null) is what the customer handed over: not less than what was due now, the
// rest being the change (TROCO). A sale left in 'AO' (a price missing) is refused with the note
// "1 ou mais produtos sem um Preço Unitário válido.". All in the caller's transaction.
void finalizarVendaExpressa(db::Transacao &t, int id, const Sessao &quem, const QDateTime &agora, const QVariant &recebido = {});

} // namespace orb
