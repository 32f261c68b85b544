#include "TDataAprovacaoVendas.h"

#include "Recusa.h"
#include "dados/Tabs.h"
#include "db/Banco.h"
#include "ui/Campos.h"
#include "ui/Mensagens.h"

#include <QComboBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableWidget>

namespace orb {

namespace {

RespostaDialogo &resposta()
{
    static RespostaDialogo f;
    return f;
}

QHBoxLayout *botoesOk(QDialog *d, const std::function<void()> &ok)
{
    auto *b = new QHBoxLayout;
    auto *btOk = new QPushButton("OK", d);
    btOk->setObjectName("BtOk");
    btOk->setDefault(true);
    auto *btCancelar = new QPushButton("Cancelar", d);
    QObject::connect(btOk, &QPushButton::clicked, d, ok);
    QObject::connect(btCancelar, &QPushButton::clicked, d, &QDialog::reject);
    b->addStretch();
    b->addWidget(btOk);
    b->addWidget(btCancelar);
    return b;
}

// The typed date and time, or a refusal of what cannot be read.
QDateTime lerDataHora(CampoData *e)
{
    const QVariant v = e->valor("DATA");
    return v.isNull() ? QDateTime() : v.toDateTime();
}

} // namespace

void definirRespostaDialogo(RespostaDialogo f) { resposta() = std::move(f); }

int executarDialogo(QDialog &d)
{
    if (resposta()) {
        resposta()(d);
        return d.result();
    }
    return d.exec();
}

TDataAprovacaoVendas::TDataAprovacaoVendas(const QString &responsavel, const QString &geraFin,
                                           std::function<bool(const QDateTime &, const QString &)> aprovar, QWidget *parent)
    : QDialog(parent), aprovar_(std::move(aprovar))
{
    setObjectName("TDataAprovacaoVendas");
    setWindowTitle("Aprovação");
    auto *f = new QFormLayout(this);
    edData = new CampoData(CampoData::DataHora, this);
    edData->definir(QDateTime::currentDateTime());
    cbGeraFin = new QComboBox(this);
    cbGeraFin->addItem("NA APROVAÇÃO", "A");
    cbGeraFin->addItem("NA ENTREGA", "E");
    cbGeraFin->setCurrentIndex(geraFin == "E" ? 1 : 0);
    f->addRow("Data Aprovação", edData);
    f->addRow("Resp. Aprovação", new QLabel(responsavel, this));
    f->addRow("Gerar Financeiro", cbGeraFin);
    f->addRow(botoesOk(this, [this] { BtOkClick(); }));
}

void TDataAprovacaoVendas::BtOkClick()
{
    Tabs->Deb("procedure TDataAprovacaoVendas.BtOkClick(Sender: TObject)");
    try {
        if (aprovar_(lerDataHora(edData), cbGeraFin->currentData().toString())) accept();
    } catch (const Recusa &r) {
        Atencao(r.texto);
    }
}

TDataEntregaVenda::TDataEntregaVenda(db::Transacao &t, int idCom, const QString &responsavel,
                                     std::function<bool(const QDateTime &, const QString &)> entregar, QWidget *parent)
    : QDialog(parent), entregar_(std::move(entregar))
{
    setObjectName("TDataEntregaVenda");
    setWindowTitle("Entregar");
    resize(820, 420);
    auto *f = new QFormLayout(this);
    edData = new CampoData(CampoData::DataHora, this);
    edData->definir(QDateTime::currentDateTime());
    edNota = new QLineEdit(this);
    edNota->setObjectName("EdNotaFiscal");
    f->addRow("Data Entrega", edData);
    f->addRow("Resp. Entrega", new QLabel(responsavel, this));
    f->addRow("Nota Fiscal", edNota);
    itens = new QTableWidget(0, 7, this);
    itens->setHorizontalHeaderLabels({"Mercadoria", "Qtd", "Preço", "Desconto", "Subtotal", "CFOP", "Seriais"});
    itens->horizontalHeader()->setSectionResizeMode(0, QHeaderView::Stretch);
    itens->setEditTriggers(QAbstractItemView::NoEditTriggers);
    db::Consulta q(t, "Select Ci.Descricao, Ci.Qtd, Ci.PrUnitario, Ci.Desconto, Ci.Subtotal, Cf.Cfop, "
                      "(Select List(S.Serial, ', ') From TbComFatItensSeriais S Join TbComFatItens Fi On (Fi.Id = S.Fk) Where Fi.IdItem = Ci.Id) "
                      "From TbComItens Ci Left Join TbCfop Cf On (Cf.Id = Ci.IdCfop) Where Ci.Fk = :ID and Ci.Tipo = 'M' Order By Ci.Id");
    q.bind("ID", idCom);
    q.executar();
    while (q.proxima()) {
        const int i = itens->rowCount();
        itens->insertRow(i);
        auto celula = [&](int c, const QString &s, bool numero) {
            auto *it = new QTableWidgetItem(s);
            if (numero) it->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
            itens->setItem(i, c, it);
        };
        auto dec = [&](int c, int casas) { return q[c].isNull() ? QString() : q[c].value<db::Decimal>().textoBR(casas); };
        celula(0, q[0].toString(), false);
        celula(1, dec(1, 4), true);
        celula(2, dec(2, 4), true);
        celula(3, dec(3, 2), true);
        celula(4, dec(4, 2), true);
        celula(5, q[5].toString(), false);
        celula(6, q[6].toString(), false);
    }
    f->addRow(itens);
    f->addRow(botoesOk(this, [this] { BtOkClick(); }));
}

void TDataEntregaVenda::BtOkClick()
{
    Tabs->Deb("procedure TDataEntregaVenda.BtOkClick(Sender: TObject)");
    try {
        if (entregar_(lerDataHora(edData), edNota->text())) accept();
    } catch (const Recusa &r) {
        Atencao(r.texto);
    }
}

} // namespace orb
