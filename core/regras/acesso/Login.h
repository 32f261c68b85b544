#pragma once
// Logging in: the user among the accounts, the password's MD5 against the stored one,
// the first password changed before going on, and a slower pace after repeated failures.

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

inline constexpr int kTamanhoSenha = 10;

// Upper-case hex MD5 over the password's WIN1252 bytes: the stored hashes of older
// installations were made from the single-byte text, so "ção" must hash as 3 bytes.
QString MD5(const QString &texto);

struct ResultadoLogin {
    Sessao sessao;
    bool precisaTrocarSenha = false;  // still the installation's first password
};

// Throws Recusa with one of the three refusal texts; campo is "usuario" or "senha".
ResultadoLogin autenticar(db::Transacao &t, const QString &usuario, const QString &senha);
// Reads the logged-in user's name, nickname, type and level again (after they edited their own record);
// where they are working is kept.
void atualizarSessao(db::Transacao &t, Sessao &s);
// Throws Recusa naming "nova" or "confirmacao".
void trocarSenha(db::Transacao &t, int idUsuario, const QString &nova, const QString &confirmacao);

// Failures of this workstation. The first three cost nothing; from the fourth on, the next
// attempt waits 2, 4, 8 … seconds (at most 30) counted from the last failure.
class Tentativas {
public:
    void falhou(const QDateTime &agora);
    void acertou() { falhas_ = 0; }
    // Whole seconds still to wait before the next attempt (0 = go ahead), rounded up.
    int espera(const QDateTime &agora) const;
    // The wait a failure imposes, by how many failures there have been in a row.
    static int atraso(int falhas);
    int falhas() const { return falhas_; }

private:
    int falhas_ = 0;
    QDateTime ultima_;
};

} // namespace orb
