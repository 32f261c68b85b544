#include "apoio/ServidorSmtp.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QTcpServer>
#include <stdexcept>

namespace teste {

namespace {

constexpr auto kPython = "/usr/bin/python3";

constexpr auto kScript = R"PY(
import sys, json, os, email, logging, warnings
warnings.simplefilter('ignore')
logging.disable(logging.WARNING)
from email import policy
from aiosmtpd.controller import Controller
from aiosmtpd.smtp import AuthResult, LoginPassword

pasta, porta, usuario, senha, recusar = sys.argv[1], int(sys.argv[2]), sys.argv[3], sys.argv[4], sys.argv[5]

class Caixa:
    n = 0
    async def handle_RCPT(self, server, session, envelope, address, rcpt_options):
        if recusar and address.startswith(recusar):
            return '550 5.1.1 Mailbox unavailable'
        envelope.rcpt_tos.append(address)
        return '250 OK'
    async def handle_DATA(self, server, session, envelope):
        Caixa.n += 1
        msg = email.message_from_bytes(envelope.original_content, policy=policy.default)
        corpo, anexos = None, []
        for parte in msg.walk():
            if parte.is_multipart():
                continue
            dados = parte.get_payload(decode=True)
            nome = parte.get_filename()
            if nome:
                arquivo = os.path.join(pasta, '%d-%d.bin' % (Caixa.n, len(anexos)))
                open(arquivo, 'wb').write(dados)
                anexos.append({'nome': nome, 'tipo': parte.get_content_type(), 'arquivo': arquivo})
            elif corpo is None:
                corpo = dados.decode(parte.get_content_charset() or 'utf-8')
        m = {'de': envelope.mail_from, 'para': envelope.rcpt_tos, 'assunto': str(msg['subject']),
             'corpo': corpo, 'anexos': anexos}
        tmp = os.path.join(pasta, '%04d.tmp' % Caixa.n)
        json.dump(m, open(tmp, 'w'))
        os.rename(tmp, os.path.join(pasta, '%04d.json' % Caixa.n))
        return '250 Message accepted'

def autenticar(server, session, envelope, mechanism, auth_data):
    ok = isinstance(auth_data, LoginPassword) and auth_data.login.decode() == usuario and auth_data.password.decode() == senha
    return AuthResult(success=ok, handled=False)

extra = dict(authenticator=autenticar, auth_required=True, auth_require_tls=False) if usuario else {}
c = Controller(Caixa(), hostname='127.0.0.1', port=porta, **extra)
c.start()
print('pronto', flush=True)
sys.stdin.read()
c.stop()
)PY";

int portaLivre()
{
    QTcpServer s;
    s.listen(QHostAddress::LocalHost, 0);
    return s.serverPort();
}

} // namespace

bool ServidorSmtp::disponivel()
{
    return QProcess::execute(kPython, {"-c", "import aiosmtpd"}) == 0;
}

ServidorSmtp::ServidorSmtp(const Opcoes &o)
{
    porta_ = portaLivre();
    proc_.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    proc_.start(kPython, {"-c", kScript, pasta_.path(), QString::number(porta_), o.usuario, o.senha, o.recusar});
    if (!proc_.waitForStarted(5000) || !proc_.waitForReadyRead(15000) || !proc_.readLine().startsWith("pronto"))
        throw std::runtime_error("o servidor SMTP de teste não iniciou");
}

ServidorSmtp::~ServidorSmtp()
{
    proc_.closeWriteChannel();
    if (!proc_.waitForFinished(3000)) {
        proc_.kill();
        proc_.waitForFinished(1000);
    }
}

QList<QJsonObject> ServidorSmtp::mensagens() const
{
    QList<QJsonObject> r;
    for (const QString &n : QDir(pasta_.path()).entryList({"*.json"}, QDir::Files, QDir::Name)) {
        QFile f(QDir(pasta_.path()).filePath(n));
        if (f.open(QIODevice::ReadOnly)) r << QJsonDocument::fromJson(f.readAll()).object();
    }
    return r;
}

} // namespace teste
