#include "principal/InstanciaUnica.h"

#include <QDir>
#include <QLocalServer>
#include <QLocalSocket>
#include <QLockFile>
#include <QWidget>

namespace orb {

namespace {
const QByteArray kPedido = "ativar\n";
}

InstanciaUnica::InstanciaUnica(const QString &nome, QObject *parent) : QObject(parent), nome_(nome)
{
    if (nome_.isEmpty())
        nome_ = "ORBManager-" + qEnvironmentVariable("USER", qEnvironmentVariable("USERNAME", "usuario"));
}

InstanciaUnica::~InstanciaUnica() = default;

// Whether a running copy took the request. A copy that is alive but busy still counts as
// running, so that its name is never taken from under it.
bool InstanciaUnica::pedirAtivacao()
{
    QLocalSocket s;
    s.connectToServer(nome_);
    if (!s.waitForConnected(1000))
        return s.error() == QLocalSocket::SocketTimeoutError;
    s.write(kPedido);
    s.waitForBytesWritten(1000);
    s.disconnectFromServer();
    return true;
}

bool InstanciaUnica::primeira()
{
    if (servidor_) return true;
    // Two copies started at the same moment would both find nobody and both listen.
    QLockFile trava(QDir::temp().filePath(nome_ + ".lock"));
    trava.setStaleLockTime(10000);
    trava.tryLock(5000);  // without it the guard still works, only the race is open

    if (pedirAtivacao()) return false;
    // Nobody answered: a name left behind by a copy that crashed is taken over.
    QLocalServer::removeServer(nome_);
    servidor_ = new QLocalServer(this);
    servidor_->setSocketOptions(QLocalServer::UserAccessOption);
    if (!servidor_->listen(nome_)) return true;  // no guard is better than no program
    connect(servidor_, &QLocalServer::newConnection, this, &InstanciaUnica::atender);
    return true;
}

void InstanciaUnica::atender()
{
    while (QLocalSocket *c = servidor_->nextPendingConnection()) {
        auto ler = [this, c] {
            while (c->canReadLine())
                if (c->readLine() == kPedido) emit ativar();
        };
        connect(c, &QLocalSocket::readyRead, this, ler);
        connect(c, &QLocalSocket::disconnected, c, &QObject::deleteLater);
        ler();  // what arrived before the connection above
    }
}

void trazerParaFrente(QWidget *w)
{
    if (!w) return;
    if (w->isMinimized()) {
        if (w->isMaximized()) w->showMaximized();  // minimised from maximised keeps both flags
        else w->showNormal();
    }
    w->show();
    w->raise();
    w->activateWindow();
}

} // namespace orb
