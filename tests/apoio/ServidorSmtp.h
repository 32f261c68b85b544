#pragma once
// A real SMTP server of the tests' own (aiosmtpd, run by /usr/bin/python3) on 127.0.0.1 and a free
// port. Every message it accepts is parsed by Python's mail library and kept in a folder: its
// envelope, subject, decoded text body and attachments (as files), so a test reads exactly what a
// mail client would show.

#include <QJsonObject>
#include <QList>
#include <QProcess>
#include <QString>
#include <QTemporaryDir>

namespace teste {

class ServidorSmtp {
public:
    struct Opcoes {
        QString usuario, senha;  // when given, the server requires this login
        QString recusar;         // recipients starting with this are refused (550)
    };
    explicit ServidorSmtp(const Opcoes &o = {});  // throws std::runtime_error when it cannot start
    ~ServidorSmtp();

    int porta() const { return porta_; }
    // The messages received so far, in order: {"de", "para" [..], "assunto", "corpo",
    // "anexos" [{"nome", "tipo", "arquivo"}]}.
    QList<QJsonObject> mensagens() const;

    static bool disponivel();  // python3 with aiosmtpd installed

private:
    QTemporaryDir pasta_;
    QProcess proc_;
    int porta_ = 0;
};

} // namespace teste
