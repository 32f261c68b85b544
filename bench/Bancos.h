#pragma once
// The databases of a benchmark run: new installations in a folder of the run's own, removed when
// the program ends, and the administrator's session on them.

#include "acesso/Sessao.h"
#include "db/Banco.h"

#include <memory>

namespace bench {

// The path of `nome` in the run's folder.
QString arquivoDaExecucao(const QString &nome);

// A new installation (schema, upgrade, first records) in the file `nome`.fdb of that folder, open.
std::unique_ptr<db::Banco> bancoNovo(const QString &nome);

// ADMIN, level 999, acting from the given screen.
orb::Sessao administrador(db::Transacao &t, const QString &menu = QStringLiteral("&Comercial"),
                          const QString &modulo = QStringLiteral("TVendas"));

} // namespace bench
