#pragma once
// Logging in: the user among the accounts, the password against its stored hash, a password
// someone else set changed before going on, and a slower pace after repeated failures.

#include "acesso/Sessao.h"
#include "db/Banco.h"
#include "Recusa.h"

#include <QDateTime>

namespace orb {

inline const QString kUsuarioNaoCadastrado = QStringLiteral("Usuário não cadastrado!");
inline const QString kSenhaInvalida = QStringLiteral("Senha Inválida!");
inline const QString kSemAcesso = QStringLiteral(
    "Este usuário não tem acesso ao sistema! Entre em contacto o administrador do sistema para maiores esclarecimentos.");
inline const QString kDigiteNovaSenha = QStringLiteral("Digite a nova senha!");
inline const QString kConfirmacaoNaoConfere = QStringLiteral("A confirmação não confere com a nova senha!");
inline const QString kSenhaLonga = QStringLiteral("A senha deve ter no máximo 10 caracteres!");
inline const QString kSenhaIgualInicial = QStringLiteral("Escolha uma senha diferente da senha inicial!");

inline const QString kSenhaCurta = QStringLiteral("A senha deve conter no mínimo 6 caracteres");

inline constexpr int kTamanhoSenha = 10;
inline constexpr int kTamanhoMinimoSenha = 6;

// Upper-case hex MD5 over the password's WIN1252 bytes: the stored hashes of older
// installations were made from the single-byte text, so "ção" must hash as 3 bytes.
QString MD5(const QString &texto);

// Sites that still run another program on the same database keep getting the MD5 in SENHA
// (ORBManager.ini, [Seguranca] GravarMD5=1); otherwise SENHA is emptied once the strong hash is written.
void definirGravarMD5(bool gravar);
bool gravarMD5();

// Argon2id with its own salt: equal passwords give different strings.
QString hashSenha(const QString &senha);
// The typed password against what the row holds: the strong hash when there is one, else the old MD5.
bool conferirSenha(const QString &senha, const QString &hash, const QString &md5);

// Length limits of a password being chosen; throws Recusa naming `campo`.
void validarSenhaNova(const QString &senha, const QString &campo);
// Writes a user's new password. One set by someone else (a new user, an administrator's reset)
// must be changed by its user at the next login.
void gravarSenha(db::Transacao &t, int idUsuario, const QString &senha, bool peloProprioUsuario);

struct ResultadoLogin {
    Sessao sessao;
    bool precisaTrocarSenha = false;  // the installation's first password, or one an administrator set
};

// Checks a login in its own transactions, counting failures per user name in the database, so every
// dialog and workstation shares the slow-down; an attempt before the wait is over is refused
// without looking at the password. Throws Recusa with the refusal text; campo is "usuario" or "senha".
// On success an old MD5 is replaced by the strong hash.
ResultadoLogin autenticar(db::Banco &b, const QString &usuario, const QString &senha, const QDateTime &agora);
// Whole seconds still to wait before the next attempt for this user name (0 = go ahead), rounded up.
int esperaLogin(db::Banco &b, const QString &usuario, const QDateTime &agora);
// The wait a failure imposes, by how many failures there have been in a row: the first three
// cost nothing, then 2, 4, 8, 16 and at most 30 seconds.
int atrasoLogin(int falhas);
QString textoAguarde(int segundos);

// Reads the logged-in user's name, nickname, type and level again (after they edited their own record);
// where they are working is kept.
void atualizarSessao(db::Transacao &t, Sessao &s);
// The user's own change; throws Recusa naming "nova" or "confirmacao".
void trocarSenha(db::Transacao &t, int idUsuario, const QString &nova, const QString &confirmacao);

} // namespace orb
