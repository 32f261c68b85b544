#include "acesso/Login.h"

#include "schema/Atualizacao.h"

#include <QCryptographicHash>
#include <algorithm>

namespace orb {

namespace {

// WIN1252 differs from Latin-1 only in 0x80–0x9F, where Windows put typographic signs.
QByteArray win1252(const QString &texto)
{
    static const char16_t kAlto[32] = {
        0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
        0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
        0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
        0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};
    QByteArray r;
    r.reserve(texto.size());
    for (const QChar c : texto) {
        const char16_t u = c.unicode();
        if (u < 0x80 || (u >= 0xA0 && u <= 0xFF)) {
            r += char(u);
            continue;
        }
        const auto *p = std::find(std::begin(kAlto), std::end(kAlto), u);
        r += p != std::end(kAlto) ? char(0x80 + (p - std::begin(kAlto))) : '?';  // as Windows does
    }
    return r;
}

bool mesmoHash(const QString &a, const QString &b)
{
    return a.compare(b.trimmed(), Qt::CaseInsensitive) == 0;
}

} // namespace

QString MD5(const QString &texto)
{
    return QString::fromLatin1(QCryptographicHash::hash(win1252(texto), QCryptographicHash::Md5).toHex().toUpper());
}

ResultadoLogin autenticar(db::Transacao &t, const QString &usuario, const QString &senha)
{
    const QString nome = usuario.trimmed();
    if (nome.isEmpty()) throw Recusa(kUsuarioNaoCadastrado, "usuario");
    db::Consulta q(t, "Select U.Id, U.Usuario, U.Apelido, U.TipoUsuario, U.IdNivel, U.Senha, N.Nivel "
                      "From TbCad U Left Join TbNiveis N On (N.Id = U.IdNivel) "
                      "Where (U.Us = 'S') and (Upper(U.Usuario) = Upper(:USUARIO)) "
                      "Order By U.Id");
    q.bind("USUARIO", nome);
    q.executar();
    if (!q.proxima()) throw Recusa(kUsuarioNaoCadastrado, "usuario");
    const QString guardada = q["SENHA"].toString();
    // The password first: a stranger learns nothing about an account's level.
    if (!mesmoHash(MD5(senha), guardada)) throw Recusa(kSenhaInvalida, "senha");
    if (q["IDNIVEL"].isNull() || q["NIVEL"].isNull()) throw Recusa(kSemAcesso, "usuario");
    ResultadoLogin r;
    r.sessao.idUsuario = q["ID"].toInt();
    r.sessao.usuario = q["USUARIO"].toString().trimmed();
    r.sessao.apelido = q["APELIDO"].toString().trimmed();
    r.sessao.tipoUsuario = q["TIPOUSUARIO"].toString().trimmed();
    r.sessao.idNivel = q["IDNIVEL"].toInt();
    r.sessao.nivel = q["NIVEL"].toInt();
    r.precisaTrocarSenha = mesmoHash(MD5(esquema::kSenhaInicialAdmin), guardada);
    return r;
}

void atualizarSessao(db::Transacao &t, Sessao &s)
{
    db::Consulta q(t, "Select U.Usuario, U.Apelido, U.TipoUsuario, U.IdNivel, N.Nivel "
                      "From TbCad U Left Join TbNiveis N On (N.Id = U.IdNivel) Where U.Id = :ID");
    q.bind("ID", s.idUsuario);
    q.executar();
    if (!q.proxima()) return;
    s.usuario = q["USUARIO"].toString().trimmed();
    s.apelido = q["APELIDO"].toString().trimmed();
    s.tipoUsuario = q["TIPOUSUARIO"].toString().trimmed();
    s.idNivel = q["IDNIVEL"].toInt();
    s.nivel = q["NIVEL"].toInt();
}

void trocarSenha(db::Transacao &t, int idUsuario, const QString &nova, const QString &confirmacao)
{
    if (nova.isEmpty()) throw Recusa(kDigiteNovaSenha, "nova");
    if (nova != confirmacao) throw Recusa(kConfirmacaoNaoConfere, "confirmacao");
    if (nova.size() > kTamanhoSenha) throw Recusa(kSenhaLonga, "nova");
    if (nova == QLatin1String(esquema::kSenhaInicialAdmin)) throw Recusa(kSenhaIgualInicial, "nova");
    db::Consulta q(t, "Update TbCad Set Senha = :SENHA Where Id = :ID");
    q.bind("SENHA", MD5(nova)).bind("ID", idUsuario);
    q.executar();
    if (q.afetadas() == 0) throw Recusa(kUsuarioNaoCadastrado);  // removed meanwhile by another workstation
}

void Tentativas::falhou(const QDateTime &agora)
{
    ++falhas_;
    ultima_ = agora;
}

int Tentativas::atraso(int falhas)
{
    if (falhas <= 3) return 0;
    return std::min(30, 1 << std::min(falhas - 3, 5));
}

int Tentativas::espera(const QDateTime &agora) const
{
    const qint64 resta = atraso(falhas_) * 1000LL - ultima_.msecsTo(agora);
    return resta > 0 ? int((resta + 999) / 1000) : 0;
}

} // namespace orb
