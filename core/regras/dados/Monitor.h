#pragma once
// The activity monitor: after saves, cancellations and deletions a JSON image of the record is
// posted to the address configured in ORBManager.ini ([Monitor] Url). Asynchronous; a failure is
// logged and never shown to the user nor allowed to hold the form up.

#include <QObject>
#include <QUrl>

class QNetworkAccessManager;

namespace orb {

class Monitor : public QObject {
    Q_OBJECT
public:
    explicit Monitor(QObject *parent = nullptr);
    void definirEndereco(const QUrl &url) { url_ = url; }
    const QUrl &endereco() const { return url_; }
    // Posts {"tabela", "acao", "registros"}; does nothing without an address.
    void HttpRequest(const QString &tabela, const QString &acao, const QString &json);

signals:
    void enviado(bool ok);  // for tests and the status bar

private:
    QNetworkAccessManager *rede_ = nullptr;
    QUrl url_;
};

// The program's monitor (no address until start-up reads the settings).
Monitor &monitor();

} // namespace orb
