#include "email/Email.h"

#include "Recusa.h"

namespace orb {

ContaEmail contaEmail(db::Transacao &) { throw Recusa("O servidor de e-mail não está configurado!"); }

void enviarEmail(const ContaEmail &, const MensagemEmail &) { throw Recusa("O envio de e-mail ainda não está disponível."); }

} // namespace orb
