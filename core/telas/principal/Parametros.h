#pragma once
// The global parameters the main window reads once per session.

#include "db/Banco.h"

#include <QColor>
#include <QDate>

namespace orb {

struct ParametrosGlobais {
    QString ramo = QStringLiteral("CO");
    QString caminhoServidor, caminhoEstacoes;
    QColor corCabecalho, corCampoAtual;
    QString supNome, supCep, supEnd, supNum, supComp, supBairro, supCid, supTel, supWhatsapp, supSkype, supEmail, supSite;
    int monOsRemId = 0;
    QString monOsUsuario, monOsSenha;
    QDate dataAtual;  // the server's date
    // The principal company; empty while it is still "SUA EMPRESA AQUI".
    QString nome, cidade, uf, telefone1, email;
    int idCidade = 0;
    int idEmpresa = 0;
};

// One row of TbParGlobais with its principal company; defaults when the table is empty.
ParametrosGlobais lerParametros(db::Transacao &t);

// Colours are kept as the toolkit's numbers, in blue-green-red byte order; negatives are system colours.
QColor corDoBanco(const QVariant &v);

} // namespace orb
