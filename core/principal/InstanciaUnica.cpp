#include "principal/InstanciaUnica.h"

#include <QLocalServer>
#include <QLocalSocket>
#include <QWidget>

namespace orb {

InstanciaUnica::InstanciaUnica(const QString &nome, QObject *parent) : QObject(parent), nome_(nome)
{
    if (nome_.isEmpty()) nome_ = "ORBManager-" + qEnvironmentVariable("USER", qEnvironmentVariable("USERNAME", "usuario"));
}

InstanciaUnica::~InstanciaUnica() = default;

bool InstanciaUnica::primeira()
{
    QLocalSocket s;
    s.connectToServer(nome_);
    if (s.waitForConnected(500)) {
        s.write("ativar\n");
        s.waitForBytesWritten(500);
        s.disconnectFromServer();
        return false;
    }
    // Nobody answered: a name left behind by a copy that crashed is taken over.
    QLocalServer::removeServer(nome_);
    servidor_ = new QLocalServer(this);
    servidor_->setSocketOptions(QLocalServer::UserAccessOption);
    if (!servidor_->listen(nome_)) return true;  // no guard is better than no program
    connect(servidor_, &QLocalServer::newConnection, this, [this] {
        while (QLocalSocket *c = servidor_->nextPendingConnection()) {
            connect(c, &QLocalSocket::readyRead, this, [this, c] {
                if (c->readAll().contains("ativar")) emit ativar();
            });
            connect(c, &QLocalSocket::disconnected, c, &QObject::deleteLater);
        }
    });
    return true;
}

void trazerParaFrente(QWidget *w)
{
    if (!w) return;
    if (w->isMinimized()) w->showNormal();
    w->show();
    w->raise();
    w->activateWindow();
}

} // namespace orb
