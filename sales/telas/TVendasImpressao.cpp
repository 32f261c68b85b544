// The printout of the document under the cursor: Imprimir (F6) previews it, the "E-mail" button
// mails it through "Enviar por E-mail". Both need the mode's right "Imprimir".

#include "TOpEmailVendas.h"
#include "TDataAprovacaoVendas.h"
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

QPair<QDateTime, QDateTime> TVendas::datasDoDocumento(int id)
{
    db::Transacao t(Tabs->DbORB(), db::Modo::Leitura);
    db::Consulta q(t, "Select First 1 DataAprovacao, DataEntrega From TbComFat Where Fk = :ID Order By Data, Id");
    q.bind("ID", id);
    q.executar();
    if (!q.proxima()) return {};
    return {q[0].toDateTime(), q[1].toDateTime()};
}

void TVendas::imprimir()
{
    const int id = idAtual();
    if (!id) return FormCadastro::imprimir();
    const auto [apr, ent] = datasDoDocumento(id);
    ImpVenda(modo_.op, id, apr, ent, "T", {}, "P", this, quem());
}

void TVendas::BtEmailClick()
{
    Tabs->Deb("procedure " + QString(modo_.classe.isEmpty() ? "TVendas" : modo_.classe) + ".BtEmailClick(Sender: TObject)");
    const int id = idAtual();
    if (estado() != Estado::Navegando || !id || !permitido("Imprimir")) return;
    const auto [apr, ent] = datasDoDocumento(id);
    TOpEmailVendas d(modo_.op, id, apr, ent, quem(), this);
    executarDialogo(d);
}

} // namespace orb
