#pragma once
// The commercial document (TBCOM with its lines, its billing with its lines, the status history
// and the instalments) as plain routines: Incluir's defaults, line entry, the save with its checks
// in order and the whole document written in the caller's transaction, and the deletion.

#include "Modos.h"
#include "Recalculo.h"
#include "registro/Registro.h"

#include <QDateTime>

namespace orb {

struct Documento {
    int id = 0;                   // 0 until saved
    int op = 1;
    Valores cabecalho;            // TBCOM
    QList<Valores> linhas;        // TBCOMITENS; "ID" absent or 0 for a new line; "Z_SERIAIS" a QStringList
    QList<int> linhasExcluidas;   // IDs of lines removed in this edit
    Valores faturamento;          // TBCOMFAT (one billing per document)
    QString notaPronto;           // the note of the save's move to 'AA' when not the usual one
};

// "Nova Venda (000012)".
QString legendaDocumento(const ModoOperacao &m, int id);

// Incluir: the right ("Incluir", "Incluir Compras"), then a new document with the defaults of the
// newest row of the mode's parameter table and a billing "A VISTA" in one instalment with the
// customer's address. Nothing is written until the save.
Documento incluirDocumento(db::Transacao &t, const ModoOperacao &m, const Sessao &quem, const QDateTime &agora);
// Reads a saved document (header, lines, its billing).
Documento lerDocumento(db::Transacao &t, int id);
// The customer's address as billing and delivery take it.
QString enderecoCadastro(db::Transacao &t, int idCad);

// ---- line entry
// Merchandise whose code or description contains `texto` (the combo's list).
QList<Valores> buscarMercadorias(db::Transacao &t, const QString &texto);
// A line of the stock item, at the header's price level ('A' wholesale, else retail), with its tax data.
Valores linhaDoItem(db::Transacao &t, int idItem, const QString &tipoPreco);
// A service line by code or bar code: "Serviço não encontrada!" when none.
Valores linhaServico(db::Transacao &t, const QString &codigo, const QString &tipoPreco);
// A typed line's checks, in the order of the fields.
void conferirLinha(const Valores &linha);
// One more serial for a line of kind `op`: the item must control serials on entry (purchases) or
// exit (the others), and the line may not hold more serials than its quantity.
void conferirSerial(db::Transacao &t, const Valores &linha, int op);

// The customer's newest situation on `hoje`: "B" blocked and "E" under analysis refuse the sale.
void conferirSituacaoCliente(db::Transacao &t, const QVariant &idCad, const QDate &hoje);

// ---- recalculation and save
// The ICMS rates of the selling company's state.
Aliquotas aliquotasDaEmpresa(db::Transacao &t, const QVariant &idEmpresa);
// Steps 1 to 7 over the document in memory, with the items' tax data read from the stock.
void recalcularDocumento(db::Transacao &t, Documento &d);

// The save: the right, the recalculation, checks 1 to 11 in order (a refusal writes nothing), then
// header, lines, billing and its lines, the first status of a new document, the status moved by
// price completeness, the instalments (GeraContas "I"; a billing "A PRAZO" laid out again by
// DefineParcelas), TOTALPAGO and TROCO, and the change log. The caller commits. Returns the ID.
int salvarDocumento(db::Transacao &t, Documento &d, const Sessao &quem, const QDateTime &agora);

// Deletion: the right, refused in 'AP', 'EN' and 'CA' with the mode's noun; otherwise the
// instalments go through GeraContas "D", and the document with every line is logged and deleted.
void excluirDocumento(db::Transacao &t, int id, const Sessao &quem);

// The notes of the status moves made by the save.
inline const QString kProntoAnalise = QStringLiteral("Pronto para análise e aprovação.");
inline const QString kSemPreco = QStringLiteral("1 ou mais produtos sem um Preço Unitário válido.");
inline const QString kAlertaSemPreco = QStringLiteral("Alerta: 1 ou mais produtos sem um Preço Unitário válido.");

} // namespace orb
