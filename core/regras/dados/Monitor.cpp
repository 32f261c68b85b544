#include "dados/Monitor.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>

namespace orb {

Monitor::Monitor(QObject *parent) : QObject(parent) {}

void Monitor::HttpRequest(const QString &tabela, const QString &acao, const QString &json)
{
    if (!url_.isValid() || url_.isEmpty()) return;
    if (!rede_) rede_ = new QNetworkAccessManager(this);
    QJsonObject o;
    o.insert("tabela", tabela);
    o.insert("acao", acao);
    o.insert("registros", QJsonDocument::fromJson(json.toUtf8()).array());
    QNetworkRequest req(url_);
    req.setHeader(QNetworkRequest::ContentTypeHeader, "application/json");
    req.setTransferTimeout(10000);
    QNetworkReply *r = rede_->post(req, QJsonDocument(o).toJson(QJsonDocument::Compact));
    connect(r, &QNetworkReply::finished, this, [this, r] {
        const bool ok = r->error() == QNetworkReply::NoError;
        if (!ok) qWarning("monitor de atividades: %s", qPrintable(r->errorString()));
        r->deleteLater();
        emit enviado(ok);
    });
}

Monitor &monitor()
{
    static Monitor *m = new Monitor;
    return *m;
}

} // namespace orb
