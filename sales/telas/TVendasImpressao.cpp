// The printout of the document under the cursor on the sales screens: Imprimir (F6) previews it,
// the "E-mail" button mails it through "Enviar por E-mail". Both need the right "Imprimir".

#include "TOpEmailVendas.h"
#include "TVendaExp.h"
#include "TVendas.h"
#include "dados/Tabs.h"

#include <QBoxLayout>
#include <QPushButton>

namespace orb {

void TVendas::criarBotaoEmail()
{
    auto *email = new QPushButton("E-mail", this);
    email->setObjectName("BtEmail");
    email->setToolTip("Enviar o documento por e-mail (PDF, JPEG ou HTML)");
    connect(email, &QPushButton::clicked, this, &TVendas::BtEmailClick);
    if (auto *barra = qobject_cast<QBoxLayout *>(layout()->itemAt(0)->layout()))
        barra->insertWidget(barra->indexOf(botao("Imprimir")) + 1, email);
}

void TVendas::estadoMudou()
{
    if (auto *b = findChild<QPushButton *>("BtEmail")) b->setEnabled(estado() == Estado::Navegando);
}

void TVendas::imprimir()
{
    const int id = idAtual();
    if (!id) return FormCadastro::imprimir();
    imprimirDocumento(modo_.op, id, "T", quem(), this);
}

void TVendas::BtEmailClick()
{
    Tabs->Deb("procedure " + QString(modo_.classe.isEmpty() ? "TVendas" : modo_.classe) + ".BtEmailClick(Sender: TObject)");
    const int id = idAtual();
    if (estado() != Estado::Navegando || !id || !permitido("Imprimir")) return;
    imprimirDocumento(modo_.op, id, "E", quem(), this);
}

void TVendaExp::imprimir()
{
    const int id = idAtual();
    if (!id) return FormCadastro::imprimir();
    imprimirDocumento(1, id, "T", quem(), this, "VE");
}

} // namespace orb
