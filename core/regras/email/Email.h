#pragma once
// Mail with attachments through the SMTP account of the global parameters (libcurl, with STARTTLS
// or implicit TLS as configured). A failure comes back as a Recusa with a Portuguese message; the
// account's password never appears in a message, a trace or an error report.

#include "db/Banco.h"

#include <QByteArray>
#include <QList>
#include <QString>

namespace orb {

struct ContaEmail {
    QString servidor;         // TBPARGLOBAIS.SMTP
    int porta = 587;          // PORTASMTP
    QString tls;              // TLSSMTP
    bool ssl = false;         // SSLSMTP 'S': TLS from the first byte (smtps)
    bool autenticar = false;  // AUTSMTP 'S'
    QString usuario, senha;   // USUARIOSMTP, SENHASMTP
    QString remetente;        // the sender's address
};

// The account of the newest TBPARGLOBAIS row; "O servidor de e-mail não está configurado!" when
// it names no server.
ContaEmail contaEmail(db::Transacao &t);

struct Anexo {
    QString nome;      // "Venda 000012.pdf"
    QString tipoMime;  // "application/pdf"
    QByteArray conteudo;
};

struct MensagemEmail {
    QString para;  // one address, or several separated by ";" or ","
    QString assunto;
    QString corpo;  // plain text
    QList<Anexo> anexos;
};

// Sends the message; throws Recusa when the address is invalid, the server cannot be reached, the
// login is refused or the server refuses the message.
void enviarEmail(const ContaEmail &conta, const MensagemEmail &m);

} // namespace orb
