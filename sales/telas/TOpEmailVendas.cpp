#include "TOpEmailVendas.h"

#include "ImpVenda.h"
#include "Recusa.h"
#include "TDataAprovacaoVendas.h"
#include "dados/Tabs.h"
#include "relatorios/Relatorios.h"
#include "ui/Mensagens.h"

#include <QApplication>
#include <QComboBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace orb {

bool ImpVenda(int op, int id, const QDateTime &dataApr, const QDateTime &dataEnt, const QString &saida, const QString &dest,
              const QString &formato, QWidget *parent, const Sessao &quem, const QString &sufixo)
{
    Tabs->Deb("procedure TTabs.ImpVenda(Op, Id: String; DataApr, DataEnt: TDateTime; Saida: String = 'T'; Dest: String = ''; "
              "Formato: String = 'P')");
    try {
        db::Transacao t(Tabs->DbORB(), db::Modo::Leitura);
        const Impressao i = prepararImpressao(t, op, id, dataApr, dataEnt, quem, sufixo);
        const QString html = htmlImpressao(i);
        if (saida != "E") {
            t.rollback();
            visualizarRelatorio(i.titulo + " " + i.numero, html, parent);
            return true;
        }
        // The mail waits on the server: the cursor says so.
        QApplication::setOverrideCursor(Qt::WaitCursor);
        struct Cursor { ~Cursor() { QApplication::restoreOverrideCursor(); } } cursor;
        enviarRelatorio(t, html, formatoRelatorio(formato), nomeArquivoImpressao(i), {dest, assuntoImpressao(i), corpoImpressao(i), {}});
        return true;
    } catch (const Recusa &r) {
        Atencao(r.texto);
    } catch (const db::ErroBanco &e) {
        Atencao(e.mensagem());
    }
    return false;
}

void imprimirDocumento(int op, int id, const QString &saida, const Sessao &quem, QWidget *parent, const QString &sufixo)
{
    QDateTime apr, ent;
    {
        db::Transacao t(Tabs->DbORB(), db::Modo::Leitura);
        db::Consulta q(t, "Select First 1 DataAprovacao, DataEntrega From TbComFat Where Fk = :ID Order By Data, Id");
        q.bind("ID", id);
        q.executar();
        if (q.proxima()) apr = q[0].toDateTime(), ent = q[1].toDateTime();
    }
    if (saida != "E") {
        ImpVenda(op, id, apr, ent, "T", {}, "P", parent, quem, sufixo);
        return;
    }
    TOpEmailVendas d(op, id, apr, ent, quem, parent, sufixo);
    executarDialogo(d);
}

TOpEmailVendas::TOpEmailVendas(int op, int id, const QDateTime &dataApr, const QDateTime &dataEnt, const Sessao &quem, QWidget *parent,
                               const QString &sufixo)
    : QDialog(parent), op_(op), id_(id), dataApr_(dataApr), dataEnt_(dataEnt), quem_(quem), sufixo_(sufixo)
{
    Tabs->Deb("procedure TOpEmailVendas.FormCreate(Sender: TObject)");
    setWindowTitle("Enviar por E-mail");
    edEmail = new QLineEdit(this);
    edEmail->setObjectName("EdEmail");
    edEmail->setMinimumWidth(320);
    cbFormato = new QComboBox(this);
    cbFormato->setObjectName("CbFormato");
    cbFormato->addItem("PDF", "E");
    cbFormato->addItem("JPEG (imagem)", "J");
    cbFormato->addItem("HTML (página)", "H");
    {
        db::Transacao t(Tabs->DbORB(), db::Modo::Leitura);
        edEmail->setText(emailDoDocumento(t, id));
    }
    auto *form = new QFormLayout;
    form->addRow("E-mail", edEmail);
    form->addRow("Formato", cbFormato);
    auto *ok = new QPushButton("OK", this);
    ok->setObjectName("BtOk");
    ok->setDefault(true);
    auto *cancelar = new QPushButton("Cancelar", this);
    connect(ok, &QPushButton::clicked, this, &TOpEmailVendas::BtOkClick);
    connect(cancelar, &QPushButton::clicked, this, &QDialog::reject);
    auto *botoes = new QHBoxLayout;
    botoes->addStretch();
    botoes->addWidget(ok);
    botoes->addWidget(cancelar);
    auto *v = new QVBoxLayout(this);
    v->addLayout(form);
    v->addLayout(botoes);
}

void TOpEmailVendas::BtOkClick()
{
    Tabs->Deb("procedure TOpEmailVendas.BtOkClick(Sender: TObject)");
    const QString email = edEmail->text().trimmed();
    if (email.isEmpty()) {
        Atencao("Digite o e-mail primeiro!");
        edEmail->setFocus();
        return;
    }
    // A refusal keeps the dialog open with the address as typed.
    if (ImpVenda(op_, id_, dataApr_, dataEnt_, "E", email, cbFormato->currentData().toString(), this, quem_, sufixo_)) {
        Mensagem("E-mail enviado para " + email + "!");
        accept();
    }
}

} // namespace orb
