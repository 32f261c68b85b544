#pragma once
// Creating a database so that an interruption never leaves a half one that looks usable:
// a local file is built under a temporary name and renamed into place when whole; a database on a
// server carries a mark that the last step sets, and a run that finds it unset finishes the work.

#include "schema/Atualizacao.h"

#include <functional>
#include <memory>
#include <stdexcept>

namespace esquema {

// The sequence whose value is 1 once a database made by the program is whole (0 while it is built).
inline constexpr const char *kMarcaCriacao = "GN_ORB_CRIACAO";

enum class Criacao {
    Vazio,       // no table of its own: a database just created, still to be built
    Incompleta,  // built by the program, but the last step was never reached
    Pronta       // whole, or an older installation (which has no mark)
};
Criacao estadoCriacao(db::Banco &b);

// Builds what a database of the program lacks: for a new or unfinished one the base structure,
// the upgrade and the first records, then the mark; for any other, the upgrade only.
// Returns the descriptions of what was done.
QStringList concluir(db::Banco &b, const Progresso &progresso = {});

// What stops ADMIN from logging in or the program from working, in Portuguese; empty when nothing.
QStringList faltando(db::Banco &b);

class BancoIncompleto : public std::runtime_error {
public:
    explicit BancoIncompleto(const QStringList &faltam);
    const QString &mensagem() const { return mensagem_; }
    const QStringList &faltam() const { return faltam_; }

private:
    QStringList faltam_;
    QString mensagem_;
};

// A local file (no server name before ":").
bool arquivoLocal(const db::Conexao &c);
// Where a new local database is built before it is renamed into place.
QString caminhoEmConstrucao(const QString &banco);

// Opens the database, creating a local one that does not exist yet, finishes or upgrades it and checks
// that ADMIN can log in. Throws BancoIncompleto, ErroAtualizacao or db::ErroBanco.
// aposAbrir runs once the database (or the one being built) is open.
std::unique_ptr<db::Banco> abrirAtualizado(const db::Conexao &c, QStringList &aplicadas, const Progresso &progresso = {},
                                           const std::function<void()> &aposAbrir = {});

} // namespace esquema
