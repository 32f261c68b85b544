#pragma once
// Backup copies of the database: made by Firebird's own backup, each proven by a restore into a
// temporary file whose row counts must equal those the backup read. Beside each copy
// ("ORBManager_20261124_213005.fbk") a small record ("….fbk.json") keeps when it was made, the rows of
// every table at that moment and the outcome of its verification.
//
// Paths are those of the computer where the engine runs: this one for a local database, and the
// server itself when the program runs there (the scheduler's command line).

#include "db/Banco.h"

#include <QDateTime>
#include <QMap>
#include <QString>
#include <functional>

namespace copias {

enum class Verificacao { Pendente, Verificada, Falhou };

struct Copia {
    QString arquivo;              // absolute path of the backup file
    QDateTime quando;             // when it was made
    qint64 tamanho = 0;           // bytes
    Verificacao verificacao = Verificacao::Pendente;
    QString motivo;               // why the verification failed, in Portuguese
    bool automatica = false;      // made on closing or by the scheduler: retention may remove it
    QMap<QString, qint64> linhas; // rows of each table the backup read
};

// feito of total steps; etapa says what is going on, in Portuguese.
using Progresso = std::function<void(int feito, int total, const QString &etapa)>;

// The folder "Backup" beside the database file.
QString pastaPadrao(const QString &banco);
// "<database name>_<yyyyMMdd_HHmmss>.fbk" inside pasta.
QString nomeCopia(const QString &pasta, const QString &banco, const QDateTime &quando);

// The database can be copied from here: a local file, or a server on this very computer.
bool alcancavel(const QString &banco);

// Backs the database up into pasta (created when missing) and verifies the copy. A copy that fails
// the verification is kept, marked, and returned with its reason. Throws orb::Recusa when the backup
// itself cannot be made (the engine's message inside ours).
Copia fazerCopia(const db::Conexao &c, const QString &pasta, const QDateTime &agora, bool automatica,
                 const Progresso &progresso = {});

// Restores the copy into a temporary file beside it and compares every table's rows with those
// the backup read; records the outcome beside the copy and returns it.
Copia verificar(const db::Conexao &c, Copia copia, const Progresso &progresso = {});

// The copy restored into destino (a path where the engine runs) and its rows compared with those the
// backup read. Throws orb::Recusa with the reason, leaving nothing at destino.
void restaurarConferido(const db::Conexao &c, const Copia &copia, const QString &destino, const Progresso &progresso = {});

// A backup file with what its record says (not verified when it has none).
Copia copiaDe(const QString &arquivo);

// The copies of pasta, newest first; a backup file without its record is listed as not verified.
QList<Copia> listar(const QString &pasta);

// Rows of every table of an open database (the program's own tables, no views or temporary ones).
QMap<QString, qint64> contarLinhas(db::Banco &b);

// Options of the [Backup] section of ORBManager.ini.
struct Opcoes {
    QString pasta;          // Pasta: where copies go; empty = pastaPadrao of the database
    int diarias = 7;        // Diarias: daily copies kept
    int mensais = 12;       // Mensais: monthly copies kept (the newest of each month)
    bool automatica = true; // Automatica: a copy on closing the program, at most once a day
};
Opcoes lerOpcoes(const QString &pastaPrograma);

// The automatic copies that retention removes: kept are the newest copy of each of the last `diarias`
// days and of each of the last `mensais` months that have copies. Copies made by hand and the newest
// copy of all are never removed; a copy that failed its verification keeps no day or month.
QStringList excedentes(const QList<Copia> &copias, int diarias, int mensais);
// Removes the excess copies of pasta with their records; returns the files removed.
QStringList aplicarRetencao(const QString &pasta, int diarias, int mensais);

// Whether an automatic copy is due: none made today in pasta.
bool copiaAutomaticaPendente(const QString &pasta, const QDate &hoje);

// What a verification that failed tells the user.
QString avisoFalha(const Copia &c);

} // namespace copias
