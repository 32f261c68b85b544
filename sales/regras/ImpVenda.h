#pragma once
// The printout of a commercial document (sale, service order, contract, purchase, rental): its
// title and template by kind and print type, the six datasets as mustache data already in
// Brazilian formats, the report variables, and the mail that carries it.

#include "acesso/Sessao.h"
#include "db/Banco.h"

#include <QDateTime>
#include <QString>
#include <QVariantMap>

namespace orb {

struct ModeloImpressao {
    QString titulo;  // "VENDA", "ORDEM DE SERVIÇO", ...
    QString modelo;  // the template's stem in the reports folder: "RelImpVendaTk"
};

// The kind's title and, by `tipoImpressao` ('F' full page, 'C' the first short one, any other
// value the second), its template.
ModeloImpressao modeloImpressao(int op, const QString &tipoImpressao);

struct Impressao {
    QString titulo;    // the kind's title, or "ORÇAMENTO" while the document is not approved
    QString modelo;
    QString numero;    // "000012"
    QString cliente;   // the customer's name, for the mail's subject
    QVariantMap dados; // what the template reads
};

// The right "Imprimir" of the screen in `quem`, then the document `id` of kind `op` read with its
// datasets. `dataApr` and `dataEnt` (invalid when not reached) choose the closing messages; a
// document not approved, still in 'AO' or 'AA', is titled "ORÇAMENTO". `sufixo` "VE" reads the
// express sale's print settings (TIPOIMPRESSAOVE, IMPCONTRINTERNOVE, MENSAGEMVE) of TbParVendas.
Impressao prepararImpressao(db::Transacao &t, int op, int id, const QDateTime &dataApr, const QDateTime &dataEnt, const Sessao &quem,
                            const QString &sufixo = {});
// The template filled in.
QString htmlImpressao(const Impressao &i);

// The mail's subject and its body, "Ola, \r\rSegue em anexo: " the title and number, the thanks.
QString assuntoImpressao(const Impressao &i);
QString corpoImpressao(const Impressao &i);
// The attachment's name without extension: "VENDA 000012".
QString nomeArquivoImpressao(const Impressao &i);

// The customer's e-mail address of the document (TBCAD.EMAIL by TBCOM.IDCAD).
QString emailDoDocumento(db::Transacao &t, int id);

// Brazilian masks of the printout: CPF "000.000.000-00", CNPJ "00.000.000/0000-00", CEP
// "00000-000"; a value of another length is left as it is.
QString mascararDocumento(const QString &digitos);
QString mascararCep(const QString &digitos);
// A quantity without needless decimals: "2", "1,5", "1.234,125".
QString textoQuantidade(const db::Decimal &d);

} // namespace orb
