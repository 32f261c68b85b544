#pragma once
// Public reference data an installation starts with (municipalities, banks, CFOP codes): kept with
// the program as tab-separated files (schema/referencia, see its README) embedded as resources.

#include "db/Banco.h"

#include <QStringList>

namespace esquema {

// The tables that have reference data, in the order they are loaded.
const QStringList &tabelasReferencia();
// The sequence whose existence says the table's reference data was loaded ("GN_ORB_REF_TBCIDADES").
QString marcaReferencia(const QString &tabela);

// Inserts the rows of the table's file that the table lacks, matched by natural key (city and
// state, bank number, CFOP code), so a row the user typed is never repeated. One prepared insert
// serves every row. Returns how many rows were inserted.
int carregarReferencia(db::Transacao &t, const QString &tabela);

// How a natural key is compared: letter case, accents, repeated spaces and leading zeros of a
// number do not count ("São Paulo" = "SAO  PAULO", "001" = "1").
QString chaveReferencia(const QStringList &valores);

} // namespace esquema
