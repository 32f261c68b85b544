#pragma once
// Where the database lives: ORBManager.ini beside the program, section [Server].
// No file (or Name empty or ".") means the local embedded database.

#include <QString>

namespace orb {

struct Configuracao {
    QString nome;              // Name: the server; empty or "." = local
    QString porta;             // Port: empty = the server's default
    QString pasta;             // Path: folder of ORBManager.fdb (on the server, when remote)
    QString compartilhamento;  // Share
    QString usuario = QStringLiteral("SYSDBA");
    QString senha = QStringLiteral("vaultword");
    bool gravarMD5 = false;    // [Seguranca] GravarMD5: keep writing the old password digest too

    bool operator==(const Configuracao &) const = default;
};

Configuracao lerConfiguracao(const QString &pastaPrograma);

// Keeps the file being replaced as ORBManager_Anterior.ini; both readable by their owner only.
// Throws std::runtime_error (Portuguese message) when the file cannot be written.
void gravarConfiguracao(const QString &pastaPrograma, const Configuracao &c);

bool bancoLocal(const Configuracao &c);

// The database name as the client library takes it: a local absolute path or server[/port]:path.
QString nomeBanco(const Configuracao &c, const QString &pastaPrograma);

} // namespace orb
