#include "acesso/Login.h"

#include "schema/Atualizacao.h"

#include <QCryptographicHash>
#include <algorithm>

namespace orb {

QString MD5(const QString &texto)
{
    return QCryptographicHash::hash(texto.toLatin1(), QCryptographicHash::Md5).toHex().toUpper();
}

ResultadoLogin autenticar(db::Transacao &t, const QString &usuario, const QString &senha)
{
    db::Consulta q(t, "Select U.Id, U.Usuario, U.Apelido, U.TipoUsuario, U.IdNivel, U.Senha, N.Nivel "
                      "From TbCad U Left Join TbNiveis N On (N.Id = U.IdNivel) "
                      "Where (U.Us = 'S') and (Upper(U.Usuario) = Upper(:USUARIO))");
    q.bind("USUARIO", usuario.trimmed());
    q.executar();
    if (!q.proxima()) throw Recusa(kUsuarioNaoCadastrado, "usuario");
    if (MD5(senha).compare(q["SENHA"].toString().trimmed(), Qt::CaseInsensitive) != 0) throw Recusa(kSenhaInvalida, "senha");
    if (q["IDNIVEL"].isNull() || q["NIVEL"].isNull()) throw Recusa(kSemAcesso, "usuario");
    ResultadoLogin r;
    r.sessao.idUsuario = q["ID"].toInt();
    r.sessao.usuario = q["USUARIO"].toString();
    r.sessao.apelido = q["APELIDO"].toString();
    r.sessao.tipoUsuario = q["TIPOUSUARIO"].toString();
    r.sessao.idNivel = q["IDNIVEL"].toInt();
    r.sessao.nivel = q["NIVEL"].toInt();
    r.precisaTrocarSenha = MD5(esquema::kSenhaInicialAdmin).compare(q["SENHA"].toString().trimmed(), Qt::CaseInsensitive) == 0;
    return r;
}

void trocarSenha(db::Transacao &t, int idUsuario, const QString &nova, const QString &confirmacao)
{
    if (nova.isEmpty()) throw Recusa("Digite a nova senha!", "nova");
    if (nova != confirmacao) throw Recusa("A confirmação não confere com a nova senha!", "confirmacao");
    if (nova.size() > 10) throw Recusa("A senha deve ter no máximo 10 caracteres!", "nova");
    if (nova == QString(esquema::kSenhaInicialAdmin)) throw Recusa("Escolha uma senha diferente da senha inicial!", "nova");
    db::executar(t, "Update TbCad Set Senha = :S Where Id = :ID", {{"S", MD5(nova)}, {"ID", idUsuario}});
}

void Tentativas::falhou(const QDateTime &agora)
{
    ++falhas_;
    ultima_ = agora;
}

int Tentativas::espera(const QDateTime &agora) const
{
    if (falhas_ < 3) return 0;
    const int atraso = std::min(30, 1 << std::min(falhas_ - 2, 5));
    return std::max<qint64>(0, atraso - ultima_.secsTo(agora));
}

} // namespace orb
