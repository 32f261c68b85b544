#pragma once
// Logging in: the user among the accounts, the password's MD5 against the stored one,
// the first password changed before going on, and a slower pace after repeated failures.

#include "acesso/Sessao.h"
#include "db/Banco.h"
#include "ui/Recusa.h"

#include <QDateTime>

namespace orb {

inline const QString kUsuarioNaoCadastrado = QStringLiteral("Usuário não cadastrado!");
inline const QString kSenhaInvalida = QStringLiteral("Senha Inválida!");
inline const QString kSemAcesso = QStringLiteral(
    "Este usuário não tem acesso ao sistema! Entre em contacto o administrador do sistema para maiores esclarecimentos.");

// Upper-case hex MD5 over the password's single-byte text, as the database keeps it.
QString MD5(const QString &texto);

struct ResultadoLogin {
    Sessao sessao;
    bool precisaTrocarSenha = false;  // still the installation's first password
};

// Throws Recusa with one of the three refusal texts (campo "usuario" or "senha").
ResultadoLogin autenticar(db::Transacao &t, const QString &usuario, const QString &senha);
void trocarSenha(db::Transacao &t, int idUsuario, const QString &nova, const QString &confirmacao);

// Failures of this workstation: after three, each further attempt waits longer (2, 4, 8 … 30 s).
class Tentativas {
public:
    void falhou(const QDateTime &agora);
    void acertou() { falhas_ = 0; }
    // Seconds still to wait before the next attempt (0 = go ahead).
    int espera(const QDateTime &agora) const;
    int falhas() const { return falhas_; }

private:
    int falhas_ = 0;
    QDateTime ultima_;
};

} // namespace orb
