#include "email/Email.h"

#include "Recusa.h"

#include <QDateTime>
#include <QLocale>
#include <QRegularExpression>
#include <QUuid>
#include <curl/curl.h>
#include <memory>
#include <mutex>

namespace orb {

namespace {

constexpr auto kContaSql = R"(
Select First 1 P.SMTP, P.TLSSMTP, P.PORTASMTP, P.SSLSMTP, P.AUTSMTP, P.USUARIOSMTP, P.SENHASMTP,
       E.EMAIL As Z_EMAILEMPRESA
  From TBPARGLOBAIS P
  Left Join TBCAD E On E.ID = P.IDEMPRESA
 Order By P.ID Desc)";

QStringList enderecos(const QString &texto)
{
    QStringList r;
    for (const QString &a : texto.split(QRegularExpression("[;,]"), Qt::SkipEmptyParts))
        if (!a.trimmed().isEmpty()) r << a.trimmed();
    return r;
}

bool enderecoValido(const QString &a)
{
    static const QRegularExpression re(R"(^[^@\s<>,;"]+@[^@\s<>,;"]+\.[^@\s<>,;".]+$)");
    return re.match(a).hasMatch();
}

// A header value outside ASCII, as RFC 2047 encoded words.
QByteArray cabecalho(const QString &v)
{
    bool ascii = true;
    for (QChar c : v) ascii = ascii && c.unicode() < 128;
    return ascii ? v.toUtf8() : "=?UTF-8?B?" + v.toUtf8().toBase64() + "?=";
}

// No STARTTLS only when the settings say so in words; implicit TLS when SSLSMTP is 'S'.
bool semTls(const QString &tls)
{
    const QString t = tls.trimmed().toUpper();
    return t == "N" || t == "NAO" || t == "NÃO" || t == "NENHUM" || t == "NENHUMA";
}

struct Curl {
    CURL *h = curl_easy_init();
    curl_slist *para = nullptr, *cabecalhos = nullptr;
    curl_mime *mime = nullptr;
    ~Curl()
    {
        if (mime) curl_mime_free(mime);
        curl_slist_free_all(para);
        curl_slist_free_all(cabecalhos);
        if (h) curl_easy_cleanup(h);
    }
};

QString mensagemErro(CURLcode c, long resposta, const ContaEmail &conta, const char *detalhe)
{
    const QString servidor = conta.servidor + ":" + QString::number(conta.porta);
    switch (c) {
    case CURLE_COULDNT_RESOLVE_HOST:
    case CURLE_COULDNT_CONNECT:
    case CURLE_OPERATION_TIMEDOUT:
        return "Não foi possível conectar ao servidor de e-mail " + servidor + ". Verifique a conexão e as configurações de e-mail.";
    case CURLE_LOGIN_DENIED:
        return "O servidor de e-mail recusou o usuário ou a senha. Verifique as configurações de e-mail.";
    case CURLE_USE_SSL_FAILED:
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_PEER_FAILED_VERIFICATION:
        return "Não foi possível estabelecer uma conexão segura com o servidor de e-mail " + servidor + ".";
    default:
        break;
    }
    QString r = "O servidor de e-mail recusou a mensagem";
    if (resposta > 0) r += " (código " + QString::number(resposta) + ")";
    const QString d = QString::fromUtf8(detalhe).trimmed();
    return r + (d.isEmpty() ? QString(".") : ": " + d + ".");
}

} // namespace

ContaEmail contaEmail(db::Transacao &t)
{
    db::Consulta q(t, kContaSql);
    q.executar();
    ContaEmail c;
    if (q.proxima()) {
        c.servidor = q["SMTP"].toString().trimmed();
        c.tls = q["TLSSMTP"].toString();
        c.porta = q["PORTASMTP"].isNull() ? 0 : q["PORTASMTP"].toInt();
        c.ssl = q["SSLSMTP"].toString() == "S";
        c.autenticar = q["AUTSMTP"].toString() == "S";
        c.usuario = q["USUARIOSMTP"].toString().trimmed();
        c.senha = q["SENHASMTP"].toString();
        // The account's user is the sender when it is an address; else the principal company's.
        c.remetente = c.usuario.contains('@') ? c.usuario : enderecos(q["Z_EMAILEMPRESA"].toString()).value(0);
    }
    if (c.servidor.isEmpty()) throw Recusa("O servidor de e-mail não está configurado!");
    if (c.porta <= 0) c.porta = c.ssl ? 465 : 587;
    return c;
}

void enviarEmail(const ContaEmail &conta, const MensagemEmail &m)
{
    static std::once_flag iniciado;
    std::call_once(iniciado, [] { curl_global_init(CURL_GLOBAL_DEFAULT); });

    const QStringList para = enderecos(m.para);
    if (para.isEmpty()) throw Recusa("Digite o e-mail do destinatário primeiro!", "Email");
    for (const QString &a : para)
        if (!enderecoValido(a)) throw Recusa("E-mail inválido: " + a, "Email");
    if (!enderecoValido(conta.remetente))
        throw Recusa("O e-mail do remetente não está configurado: informe o usuário de e-mail ou o e-mail da empresa principal.");

    Curl c;
    if (!c.h) throw Recusa("Não foi possível preparar o envio de e-mail.");
    const QByteArray url = QString("%1://%2:%3").arg(conta.ssl ? "smtps" : "smtp", conta.servidor).arg(conta.porta).toUtf8();
    curl_easy_setopt(c.h, CURLOPT_URL, url.constData());
    if (!conta.ssl)
        curl_easy_setopt(c.h, CURLOPT_USE_SSL, semTls(conta.tls) ? CURLUSESSL_NONE : (conta.tls.trimmed().isEmpty() ? CURLUSESSL_TRY : CURLUSESSL_ALL));
    const QByteArray usuario = conta.usuario.toUtf8(), senha = conta.senha.toUtf8();
    if (conta.autenticar) {
        curl_easy_setopt(c.h, CURLOPT_USERNAME, usuario.constData());
        curl_easy_setopt(c.h, CURLOPT_PASSWORD, senha.constData());
    }
    const QByteArray de = "<" + conta.remetente.toUtf8() + ">";
    curl_easy_setopt(c.h, CURLOPT_MAIL_FROM, de.constData());
    for (const QString &a : para) c.para = curl_slist_append(c.para, ("<" + a.toUtf8() + ">").constData());
    curl_easy_setopt(c.h, CURLOPT_MAIL_RCPT, c.para);
    curl_easy_setopt(c.h, CURLOPT_CONNECTTIMEOUT, 15L);
    curl_easy_setopt(c.h, CURLOPT_TIMEOUT, 120L);
    curl_easy_setopt(c.h, CURLOPT_NOSIGNAL, 1L);

    const QByteArray data = QLocale::c().toString(QDateTime::currentDateTime(), "ddd, dd MMM yyyy hh:mm:ss t").toUtf8();
    for (const QByteArray &h : {"Date: " + data, "From: " + de, "To: " + para.join(", ").toUtf8(),
                                "Subject: " + cabecalho(m.assunto),
                                "Message-ID: <" + QUuid::createUuid().toString(QUuid::WithoutBraces).toUtf8() + "@orbmanager>"})
        c.cabecalhos = curl_slist_append(c.cabecalhos, h.constData());
    curl_easy_setopt(c.h, CURLOPT_HTTPHEADER, c.cabecalhos);

    // Quoted-printable keeps the body's own line breaks (bare CRs included) as they were written.
    c.mime = curl_mime_init(c.h);
    const QByteArray corpo = m.corpo.toUtf8();
    curl_mimepart *texto = curl_mime_addpart(c.mime);
    curl_mime_data(texto, corpo.constData(), size_t(corpo.size()));
    curl_mime_type(texto, "text/plain; charset=UTF-8");
    curl_mime_encoder(texto, "quoted-printable");
    for (const Anexo &a : m.anexos) {
        curl_mimepart *p = curl_mime_addpart(c.mime);
        curl_mime_data(p, a.conteudo.constData(), size_t(a.conteudo.size()));
        curl_mime_type(p, a.tipoMime.toUtf8().constData());
        curl_mime_filename(p, a.nome.toUtf8().constData());
        curl_mime_encoder(p, "base64");
    }
    curl_easy_setopt(c.h, CURLOPT_MIMEPOST, c.mime);

    char erro[CURL_ERROR_SIZE] = {};
    curl_easy_setopt(c.h, CURLOPT_ERRORBUFFER, erro);
    const CURLcode r = curl_easy_perform(c.h);
    if (r != CURLE_OK) {
        long resposta = 0;
        curl_easy_getinfo(c.h, CURLINFO_RESPONSE_CODE, &resposta);
        throw Recusa(mensagemErro(r, resposta, conta, erro));
    }
}

} // namespace orb
