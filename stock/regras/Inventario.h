#pragma once
// The company's own inventory: supplies and fixed assets, their movements and maintenances.
// Plain routines over a transaction; the screen (TInventario) only gathers values and shows refusals.

#include "registro/Registro.h"

#include <QDate>

namespace orb {

inline const QString kEstoque = QStringLiteral("ESTOQUE");
inline const QString kImobilizado = QStringLiteral("IMOBILIZADO");
inline const QString kEntrada = QStringLiteral("ENTRADA");
inline const QString kSaida = QStringLiteral("SAÍDA");
inline const QString kInterno = QStringLiteral("INTERNO");
// Sender and recipient kinds are kept in ten characters: "EXT. CLIENTE" and "EXT. FORNECEDOR"
// would not fit, so they are stored shortened and shown in full (rotuloTipoParte).
inline const QString kExtCliente = QStringLiteral("EXT. CLI.");
inline const QString kExtFornecedor = QStringLiteral("EXT. FORN.");
inline const QString kViaTransportadora = QStringLiteral("TRANSPORTADORA");
inline const QString kViaFuncionario = QStringLiteral("FUNCIONÁRIO");
inline const QString kViaOutros = QStringLiteral("OUTROS");

// ---- items ("ESTOQUE" supplies, "IMOBILIZADO" assets) in TBINVENTARIO

// The sheet of one kind of item: fields, grid, checks in their order, group names copied on the row.
DeclaracaoRegistro declaracaoItens(const QString &tipo);
// The item checks, in order; throws Recusa naming the column.
void conferirItem(db::Transacao &t, const QString &tipo, const Valores &v);
// An item in a movement stays; an asset's maintenances go with it.
void conferirExclusaoItemInventario(db::Transacao &t, int id);
void excluirItemInventario(db::Transacao &t, int id, const Sessao &quem);

// ---- maintenances of assets in TBMANUTINVENTARIO (INVENTARIO = the asset's ID)

DeclaracaoRegistro declaracaoManutencoes();
void conferirManutencao(db::Transacao &t, int id, const Valores &v);
int salvarManutencao(db::Transacao &t, int id, const Valores &v, const Sessao &quem);
void excluirManutencao(db::Transacao &t, int id, const Sessao &quem);
// DATAULTMANUTENCAO of the asset follows its latest maintenance.
void atualizarUltimaManutencao(db::Transacao &t, int idInventario);

// ---- movements in TBMOVINVENTARIO (key CODIGO) and their lines in TBITENSMOVINVENTARIO

using Linhas = QList<Valores>;

DeclaracaoRegistro declaracaoMovimentacoes();
// What a new movement and a new line start with.
Valores novaMovimentacao(const QDate &hoje);
Valores novaLinha();
// Lists of TBCAD for a kind of party ("INTERNO" employees, "EXT. CLIENTE", "EXT. FORNECEDOR")
// or a way of sending ("TRANSPORTADORA" carriers, "FUNCIONÁRIO" employees): "Select Codigo, name ...".
QString sqlPartes(const QString &tipo);
QString rotuloTipoParte(const QString &tipo);

// Checks a line in order against the lines already in the movement and fills what it copies
// (item code, description, unit, group and subgroup, names of sender and recipient).
void conferirLinha(db::Transacao &t, Valores &linha, const Linhas &outras);
// Checks the header and every line, writes them; codigo 0 = a new movement. Returns its CODIGO.
// The lines are the movement's body: the movement's own "Incluir"/"Alterar" covers them.
int salvarMovimentacao(db::Transacao &t, int codigo, Valores cab, Linhas linhas, const Sessao &quem);
Linhas linhasDaMovimentacao(db::Transacao &t, int codigo);
bool movimentacaoAprovada(db::Transacao &t, int codigo);
// Refuses changing or deleting an approved movement.
void conferirMovimentacaoAberta(db::Transacao &t, int codigo, const QString &operacao);
void excluirMovimentacao(db::Transacao &t, int codigo, const Sessao &quem);

// Approval moves the supplies' stock: ENTRADA adds QTD, SAÍDA subtracts it; assets never change.
void aprovarMovimentacao(db::Transacao &t, int codigo, const QDate &data, const QVariant &codResponsavel, const Sessao &quem);
void cancelarAprovacao(db::Transacao &t, int codigo, const Sessao &quem);
inline const QString kAprovarMovimentacao = QStringLiteral("Aprovar Movimentação");
inline const QString kCancelarAprovacao = QStringLiteral("Cancelar Aprovação de Movimentação");

// The operations of the screen registered in the permission catalogue.
QStringList operacoesInventario();


} // namespace orb
