#include "acesso/Login.h"

#include "schema/Atualizacao.h"

#include <QCryptographicHash>
#include <algorithm>
#include <atomic>
#include <sodium.h>
#include <stdexcept>

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

std::atomic<bool> gravarMD5_{false};

void iniciarSodium()
{
    static const int ok = sodium_init();
    if (ok < 0) throw std::runtime_error("libsodium não pôde ser iniciada");
}

// The failure counter's key: the name as the users table keeps it.
QString chaveFalhas(const QString &usuario) { return usuario.trimmed().toUpper().left(20); }

// The timestamp column has no zone: the counter keeps UTC wall-clock time, whatever the workstation's zone.
QDateTime paraBanco(const QDateTime &agora)
{
    const QDateTime u = agora.toUTC();
    return QDateTime(u.date(), u.time());
}

int segundosRestantes(int falhas, const QVariant &ultima, const QDateTime &agora)
{
    if (ultima.isNull()) return 0;
    const QDateTime d = ultima.toDateTime();
    const QDateTime ult(d.date(), d.time(), Qt::UTC);
    const qint64 resta = atrasoLogin(falhas) * 1000LL - ult.msecsTo(agora.toUTC());
    return resta > 0 ? int((resta + 999) / 1000) : 0;
}

// SENHA, SENHAHASH and TROCARSENHA for a password just chosen.
void escreverSenha(db::Transacao &t, int idUsuario, const QString &senha, const QVariant &trocar)
{
    db::Consulta q(t, trocar.isNull() ? "Update TbCad Set SenhaHash = :HASH, Senha = :MD5 Where Id = :ID"
                                      : "Update TbCad Set SenhaHash = :HASH, Senha = :MD5, TrocarSenha = :TROCAR Where Id = :ID");
    q.bind("HASH", hashSenha(senha)).bind("MD5", gravarMD5() ? QVariant(MD5(senha)) : QVariant());
    if (!trocar.isNull()) q.bind("TROCAR", trocar);
    q.bind("ID", idUsuario);
    q.executar();
    if (q.afetadas() == 0) throw Recusa(kUsuarioNaoCadastrado);  // removed meanwhile by another workstation
}

} // namespace

void definirGravarMD5(bool gravar) { gravarMD5_ = gravar; }
bool gravarMD5() { return gravarMD5_; }

QString hashSenha(const QString &senha)
{
    iniciarSodium();
    const QByteArray b = senha.toUtf8();
    char out[crypto_pwhash_STRBYTES];
    if (crypto_pwhash_str(out, b.constData(), quint64(b.size()), crypto_pwhash_OPSLIMIT_INTERACTIVE,
                          crypto_pwhash_MEMLIMIT_INTERACTIVE) != 0)
        throw std::runtime_error("memória insuficiente para calcular o hash da senha");
    return QString::fromLatin1(out);
}

bool conferirSenha(const QString &senha, const QString &hash, const QString &md5)
{
    const QByteArray h = hash.trimmed().toLatin1();
    if (h.isEmpty()) return !md5.trimmed().isEmpty() && mesmoHash(MD5(senha), md5);
    iniciarSodium();
    const QByteArray b = senha.toUtf8();
    return crypto_pwhash_str_verify(h.constData(), b.constData(), quint64(b.size())) == 0;
}

void validarSenhaNova(const QString &senha, const QString &campo)
{
    if (senha.size() > kTamanhoSenha) throw Recusa(kSenhaLonga, campo);
    if (senha.size() < kTamanhoMinimoSenha) throw Recusa(kSenhaCurta, campo);
}

void gravarSenha(db::Transacao &t, int idUsuario, const QString &senha, bool peloProprioUsuario)
{
    escreverSenha(t, idUsuario, senha, peloProprioUsuario ? "N" : "S");
}

int atrasoLogin(int falhas)
{
    if (falhas <= 3) return 0;
    return std::min(30, 1 << std::min(falhas - 3, 5));
}

QString textoAguarde(int segundos)
{
    return segundos == 1 ? QStringLiteral("Aguarde 1 segundo para tentar novamente.")
                         : QStringLiteral("Aguarde %1 segundos para tentar novamente.").arg(segundos);
}

int esperaLogin(db::Banco &b, const QString &usuario, const QDateTime &agora)
{
    db::Transacao t(b, db::Modo::Leitura);
    db::Consulta q(t, "Select Falhas, Ultima From TbLoginFalhas Where Usuario = :U");
    q.bind("U", chaveFalhas(usuario));
    q.executar();
    return q.proxima() ? segundosRestantes(q.valor(0).toInt(), q.valor(1), agora) : 0;
}

QString MD5(const QString &texto)
{
    return QString::fromLatin1(QCryptographicHash::hash(win1252(texto), QCryptographicHash::Md5).toHex().toUpper());
}

ResultadoLogin autenticar(db::Banco &b, const QString &usuario, const QString &senha, const QDateTime &agora)
{
    const QString nome = usuario.trimmed();
    if (nome.isEmpty()) throw Recusa(kUsuarioNaoCadastrado, "usuario");
    const QString chave = chaveFalhas(nome);
    db::Transacao t(b);
    // The name's counter row is taken first and held to the end: a second attempt at the same name
    // meanwhile (another dialog, another workstation) is turned away, so parallel guesses gain nothing.
    try {
        db::Consulta tomar(t, "Update TbLoginFalhas Set Falhas = Falhas Where Usuario = :U");
        tomar.bind("U", chave).executar();
        if (tomar.afetadas() == 0)
            db::executar(t, "Insert Into TbLoginFalhas (Usuario, Falhas) Values (:U, 0)", {{"U", chave}});
    } catch (const db::ErroBanco &e) {
        if (e.tipo() != db::TipoErro::Conflito && e.tipo() != db::TipoErro::Duplicado) throw;
        throw Recusa(textoAguarde(1), "senha");
    }
    {
        db::Consulta c(t, "Select Falhas, Ultima From TbLoginFalhas Where Usuario = :U");
        c.bind("U", chave).executar();
        c.proxima();
        if (const int s = segundosRestantes(c.valor(0).toInt(), c.valor(1), agora)) throw Recusa(textoAguarde(s), "senha");
    }

    auto falhou = [&](const QString &texto, const QString &campo) {
        db::executar(t, "Update TbLoginFalhas Set Falhas = Falhas + 1, Ultima = :AGORA Where Usuario = :U",
                     {{"U", chave}, {"AGORA", paraBanco(agora)}});
        t.commit();
        return Recusa(texto, campo);
    };
    db::Consulta q(t, "Select U.Id, U.Usuario, U.Apelido, U.TipoUsuario, U.IdNivel, U.Senha, U.SenhaHash, "
                      "U.TrocarSenha, N.Nivel "
                      "From TbCad U Left Join TbNiveis N On (N.Id = U.IdNivel) "
                      "Where (U.Us = 'S') and (Upper(U.Usuario) = Upper(:USUARIO)) "
                      "Order By U.Id");
    q.bind("USUARIO", nome);
    q.executar();
    if (!q.proxima()) throw falhou(kUsuarioNaoCadastrado, "usuario");
    const QString md5 = q["SENHA"].toString().trimmed();
    const QString hash = q["SENHAHASH"].toString().trimmed();
    // The password first: a stranger learns nothing about an account's level.
    if (!conferirSenha(senha, hash, md5)) throw falhou(kSenhaInvalida, "senha");
    ResultadoLogin r;
    r.sessao.idUsuario = q["ID"].toInt();
    r.sessao.usuario = q["USUARIO"].toString().trimmed();
    r.sessao.apelido = q["APELIDO"].toString().trimmed();
    r.sessao.tipoUsuario = q["TIPOUSUARIO"].toString().trimmed();
    r.sessao.idNivel = q["IDNIVEL"].toInt();
    r.sessao.nivel = q["NIVEL"].toInt();
    r.precisaTrocarSenha = senha == QLatin1String(esquema::kSenhaInicialAdmin) || q["TROCARSENHA"].toString() == "S";
    const bool semNivel = q["IDNIVEL"].isNull() || q["NIVEL"].isNull();
    q.fechar();

    db::executar(t, "Delete From TbLoginFalhas Where Usuario = :U", {{"U", chave}});
    // An old digest (or a weaker hash, or SENHA kept against the setting) is rewritten now that the
    // password is known.
    const bool md5EmDia = gravarMD5() ? mesmoHash(MD5(senha), md5) : md5.isEmpty();
    iniciarSodium();
    if (hash.isEmpty() || !md5EmDia
        || crypto_pwhash_str_needs_rehash(hash.toLatin1().constData(), crypto_pwhash_OPSLIMIT_INTERACTIVE,
                                          crypto_pwhash_MEMLIMIT_INTERACTIVE) != 0)
        escreverSenha(t, r.sessao.idUsuario, senha, QVariant());
    t.commit();
    if (semNivel) throw Recusa(kSemAcesso, "usuario");
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
    if (nova == QLatin1String(esquema::kSenhaInicialAdmin)) throw Recusa(kSenhaIgualInicial, "nova");
    validarSenhaNova(nova, "nova");
    gravarSenha(t, idUsuario, nova, true);
}

} // namespace orb
