#pragma once
// Deterministic volumes for the benchmarks: the same seed gives the same rows on every machine,
// so figures of one run compare with another's.

#include "db/Banco.h"

namespace bench {

// People and companies of the commercial registry: customers (and some suppliers) with names,
// nicknames, CPF or CNPJ digits, phones and a situation row each.
void gerarCadastros(db::Banco &b, int quantos, unsigned semente = 20261122);

// Merchandise with codes, bar codes, descriptions, prices, availability and version flags, and a
// stock row for each of `empresas` companies (created when missing). Returns the companies' IDs.
QList<int> gerarItens(db::Banco &b, int quantos, int empresas = 3, unsigned semente = 20261122);

// Sale documents: a header for one of the registry's people and two lines of stock items each
// (people and items generated first). Returns the headers written.
int gerarDocumentos(db::Banco &b, int quantos, unsigned semente = 20261122);

} // namespace bench
