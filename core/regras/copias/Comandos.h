#pragma once
// The command lines for administrators and schedulers: "--backup [PASTA]" and "--restore ARQUIVO".
// What they print goes to saida and erros; the result is the program's exit code.

#include "db/Banco.h"

#include <QTextStream>

namespace copias {

// Exit codes.
inline constexpr int kSaidaOk = 0;
inline constexpr int kSaidaFalhou = 1;       // nothing was done (refused, unreachable, engine error)
inline constexpr int kSaidaNaoVerificada = 2;  // the copy was made but failed its verification

// A verified copy into pasta (empty: the [Backup] folder of the settings, or "Backup" beside the
// database), then the retention of that folder.
int comandoBackup(const db::Conexao &c, const QString &pastaPrograma, const QString &pasta, QTextStream &saida, QTextStream &erros);
// The copy arquivo put in place of the database, proven first, upgraded after.
int comandoRestore(const db::Conexao &c, const QString &arquivo, QTextStream &saida, QTextStream &erros);

} // namespace copias
