// The steps of an operation on its form: approval with its dialog and its cancellation; delivery
// with its dialog, its cancellation and the reactivation of a cancelled one. Each handler traces,
// checks before asking, and runs the routine in the area transaction (all of the step or nothing).

#include "Aprovacao.h"
#include "Recusa.h"
#include "Status.h"
#include "TDataAprovacaoVendas.h"
#include "TVendas.h"
#include "dados/Tabs.h"
#include "ui/Mensagens.h"

#include <QBoxLayout>
#include <QPushButton>
#include <QShortcut>

namespace orb {

namespace {

struct Situacao {
    QString status, geraFin, responsavel;
    int op = 0;
};

Situacao ler(int id, const Sessao &quem)
{
    db::Transacao t(Tabs->DbORB(), db::Modo::Leitura);
    Situacao s;
    s.status = statusAtual(t, id);
    s.op = db::escalar(t, "Select Op From TbCom Where Id = :ID", {{"ID", id}}).toInt();
    s.geraFin = db::escalar(t, "Select First 1 GeraFin From TbComFat Where Fk = :ID Order By Id", {{"ID", id}}).toString();
    s.responsavel = db::escalar(t, "Select Nome From TbCad Where Id = :ID", {{"ID", quem.idUsuario}}).toString();
    return s;
}

// A check that locks the operation runs in a transaction of its own, undone at once.
bool conferir(const std::function<void(db::Transacao &)> &f)
{
    db::Transacao t(Tabs->DbORB());
    try {
        f(t);
        return true;
    } catch (const Recusa &r) {
        Atencao(r.texto);
    } catch (const db::ErroBanco &e) {
        Atencao(e.mensagem());
    }
    return false;
}

} // namespace

void TVendas::criarBotoesPassos()
{
    auto *aprovar = new QPushButton("Aprovar", this);
    aprovar->setObjectName("BtAprovar");
    auto *entregar = new QPushButton("Entregar (F8)", this);
    entregar->setObjectName("BtEntregar");
    connect(aprovar, &QPushButton::clicked, this, &TVendas::BtAprovarClick);
    connect(entregar, &QPushButton::clicked, this, &TVendas::BtEntregarClick);
    auto *f8 = new QShortcut(QKeySequence("F8"), this, nullptr, nullptr, Qt::WidgetWithChildrenShortcut);
    connect(f8, &QShortcut::activated, entregar, [entregar] { if (entregar->isEnabled()) entregar->click(); });
    if (auto *barra = qobject_cast<QBoxLayout *>(layout()->itemAt(0)->layout())) {
        barra->insertWidget(barra->indexOf(botao("Fechar")), aprovar);
        barra->insertWidget(barra->indexOf(botao("Fechar")), entregar);
    }
}

void TVendas::BtAprovarClick()
{
    Tabs->Deb("procedure TVendas.BtAprovarClick(Sender: TObject)");
    const int id = idAtual();
    if (estado() != Estado::Navegando || !id) return;
    const Situacao s = ler(id, quem());
    if (s.status == "AP") {
        if (!conferir([&](db::Transacao &t) { conferirCancelamentoAprovacao(t, id, quem()); })) return;
        if (!Pergunta("Deseja realmente cancelar a aprovação desta operação?")) return;
        if (naTransacao([&](db::Transacao &t) { cancelarAprovacao(t, id, quem(), QDateTime::currentDateTime()); }) == Desfecho::Feito) {
            informarMonitor(id, "Aprovação Cancelada");
            recarregar(id);
        }
        return;
    }
    if (!conferir([&](db::Transacao &t) { conferirAprovacao(t, id, quem()); })) return;
    TDataAprovacaoVendas d(s.responsavel, s.geraFin, [&](const QDateTime &data, const QString &geraFin) {
        return naTransacao([&](db::Transacao &t) { aprovarOperacao(t, id, data, geraFin, quem()); }) == Desfecho::Feito;
    }, this);
    if (executarDialogo(d) == QDialog::Accepted) {
        informarMonitor(id, "Aprovada");
        recarregar(id);
    }
}

void TVendas::BtEntregarClick()
{
    Tabs->Deb("procedure TVendas.BtEntregarClick(Sender: TObject)");
    const int id = idAtual();
    if (estado() != Estado::Navegando || !id) return;
    const Situacao s = ler(id, quem());
    if (s.status == "EN") {
        if (!conferir([&](db::Transacao &t) { conferirCancelamentoEntrega(t, id, quem()); })) return;
        if (!Pergunta("Deseja realmente cancelar a entrega desta operação?")) return;
        if (naTransacao([&](db::Transacao &t) { cancelarEntrega(t, id, quem(), QDateTime::currentDateTime()); }) == Desfecho::Feito) {
            informarMonitor(id, "Entrega Cancelada");
            recarregar(id);
        }
        return;
    }
    if (s.status == "CA") {
        if (!Pergunta("Deseja realmente reativar esta operação?")) return;
        if (naTransacao([&](db::Transacao &t) { reativarOperacao(t, id, quem(), QDateTime::currentDateTime()); }) == Desfecho::Feito) {
            informarMonitor(id, "Reativada");
            recarregar(id);
        }
        return;
    }
    if (!conferir([&](db::Transacao &t) { conferirEntrega(t, id, quem()); })) return;
    db::Transacao l(Tabs->DbORB(), db::Modo::Leitura);
    TDataEntregaVenda d(l, id, s.responsavel, [&](const QDateTime &data, const QString &nota) {
        return naTransacao([&](db::Transacao &t) { entregarOperacao(t, id, data, nota, quem()); }) == Desfecho::Feito;
    }, this);
    l.rollback();
    if (executarDialogo(d) == QDialog::Accepted) {
        informarMonitor(id, "Entregue");
        recarregar(id);
    }
}

} // namespace orb
