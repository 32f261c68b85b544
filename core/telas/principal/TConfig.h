#pragma once
// Where the database is: server, port, folder and share, kept in ORBManager.ini.

#include <QDialog>

class QLineEdit;

namespace orb {

struct Configuracao;

class TConfig : public QDialog {
    Q_OBJECT
public:
    explicit TConfig(const QString &pastaPrograma, QWidget *parent = nullptr);
    QLineEdit *servidor() const { return servidor_; }
    QLineEdit *porta() const { return porta_; }
    QLineEdit *pasta() const { return pasta_; }
    QLineEdit *compartilhamento() const { return compartilhamento_; }
    void BtTestarClick();
    void BtSalvarClick();

protected:
    bool eventFilter(QObject *o, QEvent *e) override;

private:
    Configuracao lida() const;
    QString pastaPrograma_;
    QLineEdit *servidor_, *porta_, *pasta_, *compartilhamento_;
};

} // namespace orb
