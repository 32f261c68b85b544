#pragma once
// A real HTTP endpoint on 127.0.0.1 standing for the activity monitor: it answers 200 to each post
// and keeps the JSON of the last one. The program's monitor points at it while the object lives.

#include "dados/Monitor.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QTcpServer>
#include <QTcpSocket>
#include <QUrl>

namespace teste {

class MonitorTeste {
public:
    MonitorTeste()
    {
        http_.listen(QHostAddress::LocalHost);
        QObject::connect(&http_, &QTcpServer::newConnection, [this] {
            QTcpSocket *s = http_.nextPendingConnection();
            QObject::connect(s, &QTcpSocket::readyRead, [this, s] {
                recebido_ += s->readAll();
                const int corpo = int(recebido_.indexOf("\r\n\r\n"));
                const int tamanho =
                    recebido_.mid(recebido_.indexOf("Content-Length:") + 15).split('\r').first().trimmed().toInt();
                if (corpo >= 0 && recebido_.size() >= corpo + 4 + tamanho)
                    s->write("HTTP/1.1 200 OK\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
            });
        });
        orb::monitor().definirEndereco(QUrl(QString("http://127.0.0.1:%1/atividade").arg(http_.serverPort())));
    }
    ~MonitorTeste() { orb::monitor().definirEndereco({}); }
    bool escutando() const { return http_.isListening(); }
    // The body of what was posted, as JSON.
    QJsonObject recebido() const { return QJsonDocument::fromJson(recebido_.mid(recebido_.indexOf("\r\n\r\n") + 4)).object(); }

private:
    QTcpServer http_;
    QByteArray recebido_;
};

} // namespace teste
