#pragma once
// One running copy per user: a second start asks the first to come to the front and ends.

#include <QObject>

class QLocalServer;
class QWidget;

namespace orb {

class InstanciaUnica : public QObject {
    Q_OBJECT
public:
    // `nome` empty: "ORBManager-" plus the user's login name.
    explicit InstanciaUnica(const QString &nome = {}, QObject *parent = nullptr);
    ~InstanciaUnica() override;
    const QString &nome() const { return nome_; }
    // True when no other copy runs (this one then answers later starts); false after asking
    // the running copy to come to the front.
    bool primeira();

signals:
    void ativar();  // another start asked this copy to come to the front

private:
    bool pedirAtivacao();
    void atender();

    QString nome_;
    QLocalServer *servidor_ = nullptr;
};

// Restores a minimised window and brings it to the front.
void trazerParaFrente(QWidget *w);

} // namespace orb
