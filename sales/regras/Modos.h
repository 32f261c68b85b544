#pragma once
// The kinds of commercial operation as data a form reads: caption, total label, the menu key of its
// rights and its list of actions, the parameter table of its defaults, the browse query with its
// joins and computed columns, and its search orders.

#include "db/Banco.h"

#include <QList>
#include <QVariant>
#include <map>
#include <QPair>
#include <QString>
#include <QStringList>

namespace orb {

struct ModoOperacao {
    QString codigo;         // "Ven"
    int op = 0;             // TBCOM.OP
    QString titulo;         // "Comercial - Vendas"
    QString rotuloTotal;    // "Total da Venda"
    QString chaveMenu;      // the menu key its rights are kept under
    QStringList operacoes;  // the actions subject to permission, in order
    QString parametros;     // "TbParVendas": defaults and the browse's default text
    QString novo;           // "Nova Venda": the caption of a new document, before " (" code ")"
    QString substantivo;    // "Esta venda": the document in refusals
    QString incluir = QStringLiteral("Incluir");  // the right of Incluir ("Incluir Compras")
    bool previsaoEntrega = false;  // the save asks for the delivery forecast
    QList<QPair<QString, QString>> ordens;  // search orders: caption, Order By
    QString classe;         // the form class the menus open it by ("TVendas"); empty when no menu names it
};

const QList<ModoOperacao> &modosOperacao();
// The mode by its code ("Ven", "Ser", "Con", "Com", "Loc", "Pro"); throws std::out_of_range.
const ModoOperacao &modoOperacao(const QString &codigo);
const ModoOperacao &modoDoOp(int op);

// The browse of the mode's operations: header, billing (inner), latest status and the parties,
// with Z_ClienteFor, Z_CpfCnpj, TotalFrete, Z_TotalFatBr, Z_TotalAFatBr, Z_APagar, Status,
// DataEntrega and DataAprovacao; `ordem` is a caption of the mode's orders.
QString sqlConsultaOperacoes(const ModoOperacao &m, const QString &ordem);
// The browse under a typed search: a number under the order "CÓDIGO" finds that document, any
// other text the customer's (or supplier's) name starting with it (`inicio`) or containing it.
QString sqlBuscaOperacoes(const ModoOperacao &m, const QString &ordem, const QString &texto, bool inicio,
                          std::map<QString, QVariant> &params);
// The browse's default text: Consulta of the newest row of the mode's parameter table dated
// `hoje` or earlier (empty when there is none).
QString consultaPadrao(db::Transacao &t, const ModoOperacao &m, const QDate &hoje);

} // namespace orb
