#pragma once
// Firebird's own backup and restore, through its services manager (the engine in this process for a
// local file, the server's for a database on a server). The copy reads one snapshot, so workstations
// keep working while it runs.

#include "db/Banco.h"

#include <QString>
#include <functional>

namespace copias {

// One line of the engine's verbose output ("gbak: writing data for table TBCAD", …).
using Linha = std::function<void(const QString &linha)>;

// "host[/port]:" of a database on a server, empty for a local file (a drive letter is one character).
QString prefixoServidor(const QString &banco);
// The services manager that reaches a database: "service_mgr" for a local file,
// "host[/port]:service_mgr" for one on a server.
QString gerenciador(const QString &banco);
// The file path as the services manager sees it (the part after "host[/port]:").
QString caminhoNoServidor(const QString &banco);

// Writes a backup of c.banco into arquivo (a path where the engine runs). Throws db::ErroBanco.
void gerarBackup(const db::Conexao &c, const QString &arquivo, const Linha &linha = {});
// Builds the database destino (a path where the engine runs, through the same manager as c.banco)
// from arquivo. The file must not exist. Throws db::ErroBanco.
void restaurarBackup(const db::Conexao &c, const QString &arquivo, const QString &destino, const Linha &linha = {});

} // namespace copias
