#include "TVendaExp.h"

#include "Faturamento.h"
#include "Recusa.h"
#include "Status.h"
#include "acesso/Permissoes.h"
#include "dados/Tabs.h"
#include "ui/Campos.h"
#include "ui/ComboConsulta.h"
#include "ui/Mensagens.h"

#include <QComboBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPixmap>
#include <QPushButton>
#include <QScopedValueRollback>
#include <QShortcut>
#include <QSplitter>
#include <QStandardItemModel>
#include <QTableView>
#include <QVBoxLayout>

namespace orb {

namespace {

using C = CampoForm;

const ModoOperacao &venda() { return modoOperacao("Ven"); }

void escolher(QComboBox *cb, const QVariant &v) { cb->setCurrentIndex(v.isNull() ? -1 : cb->findData(v)); }

QString dinheiro(const db::Decimal &d) { return "R$ " + d.textoBR(2); }

QLabel *rotulo(const QString &texto, double escala, bool negrito, QWidget *pai)
{
    auto *l = new QLabel(texto, pai);
    QFont f = l->font();
    f.setPointSizeF(f.pointSizeF() * escala);
    f.setBold(negrito);
    l->setFont(f);
    return l;
}

} // namespace

TVendaExp::TVendaExp(QWidget *parent) : FormCadastro(kClasseVendaExpressa, kTituloVendaExpressa, "TrVendas", parent)
{
    Tabs->Deb("procedure TVendaExp.FormCreate(Sender: TObject)");
    QString ordemPadrao;
    try {
        // Approval and delivery join the permission catalogue of this screen, forbidden until granted.
        db::Transacao t(Tabs->DbORB());
        const QString menu = menuDoModulo(t, kClasseVendaExpressa);
        if (!menu.isEmpty())
            for (const QString &op : operacoesVendaExpressa()) AtualizaAcessos(t, menu, kClasseVendaExpressa, op);
        ordemPadrao = consultaVendaExpressa(t, QDate::currentDate());
        t.commit();
    } catch (const db::ErroBanco &) {
        // Another workstation registering them at the same moment is no reason to keep the screen closed.
    }

    // The counter's fields first: Incluir puts the focus on the code, the quantity may be typed before it.
    edCodigo_ = new QLineEdit(this);
    edCodigo_->setMaxLength(60);
    edCodigo_->setPlaceholderText("Código ou código de barras");
    QFont grande = edCodigo_->font();
    grande.setPointSizeF(grande.pointSizeF() * 1.6);
    edCodigo_->setFont(grande);
    edQtd_ = new CampoNumero(C{"QTD", "Qtd", C::Decimal, {}, 0, 4}, this);
    edQtd_->setFont(grande);
    edQtd_->setFixedWidth(90);
    edQtd_->setPlaceholderText("1");
    registrarCampo("CODIGO", edCodigo_);
    registrarCampo("QTD", edQtd_);

    // The header in two short rows.
    cbCliente_ = new ComboConsulta("Select Id, Nome From TbCad Where Cl = 'S' Order By Nome", {}, this);
    cbAtendente_ = new ComboConsulta("Select Id, Nome From TbCad Where Fu = 'S' Order By Nome", {}, this);
    cbEmpresa_ = new ComboConsulta("Select Id, Apelido From TbCad Where Em = 'S' Order By Apelido", {}, this);
    adicionarCampos("Cliente", {{"IDCAD", "Cliente", cbCliente_, 3}, {"IDATENDENTE", "Atendente", cbAtendente_, 2}, {"IDEMPRESA", "Empresa", cbEmpresa_, 1}});
    cbCondPagto_ = new QComboBox(this);
    cbCondPagto_->addItem("A VISTA", "V");
    cbCondPagto_->addItem("A PRAZO", "P");
    cbParcelas_ = new QComboBox(this);
    for (int i = 1; i <= 60; ++i) cbParcelas_->addItem(QString::asprintf("%02d", i), QString::asprintf("%02d", i));
    cbCondPagto_->setFixedWidth(120);
    cbParcelas_->setFixedWidth(70);
    // Freight only when the goods travel: CIF and FOB with a carrier, CIF with its value.
    cbFrete_ = new QComboBox(this);
    cbFrete_->addItem("SEM FRETE", QVariant());
    cbFrete_->addItem("CIF", "1");
    cbFrete_->addItem("FOB", "2");
    cbFrete_->addItem("OUTROS", "0");
    cbTransportadora_ = new ComboConsulta("Select Id, Nome From TbCad Where Tr = 'S' Order By Nome", {}, this);
    edFrete_ = new CampoNumero(C{"TOTALFRETE", "Valor do frete", C::Decimal}, this);
    edFrete_->setFixedWidth(100);
    adicionarCampos("Pagamento", {{"TBCOMFAT.CONDPAGTO", "Condição", cbCondPagto_, 0}, {"TBCOMFAT.PARCELAS", "Parcelas", cbParcelas_, 0},
                        {"TBCOMFAT.FRETE", "Frete", cbFrete_, 0}, {"TBCOMFAT.IDTRANSPORTADORA", "Transportadora", cbTransportadora_, 2},
                        {"TBCOMFAT.TOTALFRETE", "Valor do frete", edFrete_, 0}});
    // Names the tests and the refusals find them by, after the fields took their columns' names.
    cbCliente_->setObjectName("CbCliente");
    cbAtendente_->setObjectName("CbAtendente");
    cbEmpresa_->setObjectName("CbEmpresa");
    cbCondPagto_->setObjectName("CbCondPagto");
    cbParcelas_->setObjectName("CbParcelas");
    cbFrete_->setObjectName("CbFrete");
    cbTransportadora_->setObjectName("CbTransportadora");
    edFrete_->setObjectName("EditFrete");
    edCodigo_->setObjectName("EditCodigo");
    edQtd_->setObjectName("EditQtd");

    // The counter: entry and lines on the left; photo, total, payment and change on the right.
    auto *painel = new QWidget(this);
    auto *h = new QHBoxLayout(painel);
    h->setContentsMargins(0, 0, 0, 0);
    auto *esquerda = new QVBoxLayout;
    auto *entrada = new QHBoxLayout;
    entrada->addWidget(new QLabel("Qtd", painel));
    entrada->addWidget(edQtd_);
    entrada->addWidget(new QLabel("Código", painel));
    entrada->addWidget(edCodigo_, 1);
    btExcluirItem_ = new QPushButton("Excluir item (Del)", painel);
    btExcluirItem_->setObjectName("BtExcluirItem");
    btExcluirItem_->setFocusPolicy(Qt::NoFocus);
    entrada->addWidget(btExcluirItem_);
    esquerda->addLayout(entrada);
    linhas_ = new QStandardItemModel(0, 5, this);
    linhas_->setHorizontalHeaderLabels({"Código", "Descrição", "Qtd", "Preço unitário", "Total"});
    gradeLinhas_ = new QTableView(painel);
    gradeLinhas_->setObjectName("GradeLinhas");
    gradeLinhas_->setModel(linhas_);
    prepararGrade(gradeLinhas_);
    gradeLinhas_->horizontalHeader()->setSectionResizeMode(1, QHeaderView::Stretch);
    esquerda->addWidget(gradeLinhas_, 1);
    h->addLayout(esquerda, 1);

    auto *direita = new QVBoxLayout;
    lbLegenda_ = rotulo({}, 1.2, true, painel);
    lbLegenda_->setObjectName("LbLegenda");
    direita->addWidget(lbLegenda_);
    foto_ = new QLabel("(sem foto)", painel);
    foto_->setObjectName("Foto");
    foto_->setFixedSize(300, 200);
    foto_->setAlignment(Qt::AlignCenter);
    foto_->setFrameShape(QFrame::StyledPanel);
    direita->addWidget(foto_);
    lbItem_ = rotulo({}, 1.1, true, painel);
    lbItem_->setWordWrap(true);
    lbItem_->setFixedWidth(300);
    direita->addWidget(lbItem_);
    direita->addWidget(rotulo(venda().rotuloTotal, 1.2, false, painel));
    lbTotal_ = rotulo(dinheiro(db::Decimal("0")), 3.0, true, painel);
    lbTotal_->setObjectName("LbTotal");
    lbTotal_->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    direita->addWidget(lbTotal_);
    auto *pagamento = new QFormLayout;
    edRecebido_ = new CampoNumero(C{"RECEBIDO", "Valor recebido", C::Decimal}, this);
    edRecebido_->setObjectName("EditRecebido");
    edRecebido_->setFont(grande);
    pagamento->addRow(rotulo("Valor recebido", 1.2, false, painel), edRecebido_);
    lbTroco_ = rotulo(dinheiro(db::Decimal("0")), 1.8, true, painel);
    lbTroco_->setObjectName("LbTroco");
    lbTroco_->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    pagamento->addRow(rotulo("Troco", 1.2, false, painel), lbTroco_);
    direita->addLayout(pagamento);
    direita->addStretch(1);
    h->addLayout(direita);
    registrarCampo("RECEBIDO", edRecebido_);
    adicionarPainel(painel, 4);
    divisor()->setStretchFactor(0, 0);
    divisor()->setStretchFactor(1, 0);
    divisor()->setStretchFactor(2, 1);
    grade()->setMinimumHeight(90);
    divisor()->setSizes({110, 0, 500});

    connect(btExcluirItem_, &QPushButton::clicked, this, &TVendaExp::BtExcluirItemClick);
    auto *del = new QShortcut(QKeySequence(Qt::Key_Delete), gradeLinhas_, nullptr, nullptr, Qt::WidgetShortcut);
    connect(del, &QShortcut::activated, this, &TVendaExp::BtExcluirItemClick);
    connect(cbCondPagto_, &QComboBox::currentIndexChanged, this, &TVendaExp::CbCondPagtoExit);
    connect(cbParcelas_, &QComboBox::currentIndexChanged, this, &TVendaExp::CbCondPagtoExit);
    connect(edRecebido_, &QLineEdit::textChanged, this, &TVendaExp::mostrarTroco);
    connect(this, &FormCadastro::edicaoEncerrada, this, [this](int id) {
        if (id) {
            finalizar(id);
        } else if (cancelou_) {
            cancelou_ = false;
            if (Pergunta("Deseja iniciar uma nova Venda Expressa?", true)) BtIncluirClick();
        }
    });

    // The browse of the sales, its first order the one the parameters name.
    QString base = sqlConsultaOperacoes(venda(), {});
    base = base.left(base.lastIndexOf(" Order By "));
    QList<QPair<QString, QString>> ordens;
    for (const auto &o : venda().ordens)
        if (o.first == ordemPadrao) ordens.prepend({o.first, o.first});
        else ordens.append({o.first, o.first});
    definirConsulta(base, {{"ID", "Código"}, {"EMISSAO", "Emissão"}, {"Z_CLIENTEFOR", "Cliente"}, {"TOTAL", venda().rotuloTotal},
                           {"STATUS", "Status"}},
                    ordens);
    recarregar();
}

bool TVendaExp::montarBusca(const QString &ordem, const QString &texto, Busca busca, QString &sql, std::map<QString, QVariant> &p)
{
    sql = sqlBuscaOperacoes(venda(), ordem, texto, busca == Busca::Inicio, p);
    return true;
}

bool TVendaExp::eventFilter(QObject *o, QEvent *e)
{
    // Enter in the code adds the line (a scanner ends each code with it); in the quantity it goes to the code.
    if (e->type() == QEvent::KeyPress && (o == edCodigo_ || o == edQtd_) && estado() != Estado::Navegando) {
        auto *k = static_cast<QKeyEvent *>(e);
        if ((k->key() == Qt::Key_Return || k->key() == Qt::Key_Enter) && k->modifiers() == Qt::NoModifier) {
            if (o == edCodigo_) EditCodigoKeyPress();
            else edCodigo_->setFocus();
            return true;
        }
    }
    return FormCadastro::eventFilter(o, e);
}

void TVendaExp::limpar()
{
    recebido_ = {};
    doc_ = estado() == Estado::Incluindo ? incluirVendaExpressa(transacao(), quem(), QDateTime::currentDateTime()) : Documento{};
    mostrarDocumento();
    mostrarFoto({}, {});
    edRecebido_->definir({});
}

void TVendaExp::carregar(db::Transacao &t, int id)
{
    doc_ = lerDocumento(t, id);
    mostrarDocumento();
    mostrarFoto({}, {});
    // What the customer handed over: what was paid and the change given back.
    const db::Decimal entregue = decimal(doc_.cabecalho, "TOTALPAGO") + decimal(doc_.cabecalho, "TROCO");
    edRecebido_->definir(entregue.zero() ? QVariant() : QVariant::fromValue(entregue));
}

void TVendaExp::estadoMudou()
{
    btExcluirItem_->setEnabled(estado() != Estado::Navegando);
}

void TVendaExp::lerCampos()
{
    Valores &h = doc_.cabecalho, &f = doc_.faturamento;
    h["IDCAD"] = cbCliente_->currentData();
    h["IDATENDENTE"] = cbAtendente_->currentData();
    h["IDEMPRESA"] = cbEmpresa_->currentData();
    f["IDATENDENTE"] = h["IDATENDENTE"];
    f["IDEMPRESA"] = h["IDEMPRESA"];
    f["CONDPAGTO"] = cbCondPagto_->currentData();
    f["PARCELAS"] = cbParcelas_->currentData();
    f["FRETE"] = cbFrete_->currentData();
    f["IDTRANSPORTADORA"] = cbTransportadora_->currentData();
    f["TOTALFRETE"] = edFrete_->valor().isNull() ? QVariant::fromValue(db::Decimal("0")) : edFrete_->valor();
}

void TVendaExp::mostrarDocumento()
{
    const QScopedValueRollback<bool> ocupado(mostrando_, true);
    const Valores &h = doc_.cabecalho, &f = doc_.faturamento;
    escolher(cbCliente_, valor(h, "IDCAD"));
    escolher(cbAtendente_, valor(h, "IDATENDENTE"));
    escolher(cbEmpresa_, valor(h, "IDEMPRESA"));
    escolher(cbCondPagto_, valor(f, "CONDPAGTO").isNull() ? QVariant("V") : valor(f, "CONDPAGTO"));
    const QString parcelas = valor(f, "PARCELAS").toString().trimmed();
    escolher(cbParcelas_, parcelas.isEmpty() ? QStringLiteral("01") : parcelas);
    const QString frete = valor(f, "FRETE").toString().trimmed();
    cbFrete_->setCurrentIndex(frete.isEmpty() ? 0 : std::max(0, cbFrete_->findData(frete)));
    escolher(cbTransportadora_, valor(f, "IDTRANSPORTADORA"));
    edFrete_->definir(decimal(f, "TOTALFRETE").zero() ? QVariant() : valor(f, "TOTALFRETE"));
    lbLegenda_->setText(estado() == Estado::Incluindo ? QStringLiteral("Nova Venda Expressa")
                        : doc_.id                     ? QString::asprintf("Venda (%06d)", doc_.id)
                                                      : QString());
    linhas_->removeRows(0, linhas_->rowCount());
    for (const Valores &l : doc_.linhas) {
        auto celula = [](const QString &s, bool numero) {
            auto *i = new QStandardItem(s);
            if (numero) i->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
            return i;
        };
        linhas_->appendRow({celula(valor(l, "Z_CODIGO").toString(), false), celula(valor(l, "DESCRICAO").toString(), false),
                            celula(decimal(l, "QTD").textoBR(4), true), celula(decimal(l, "PRUNITARIO").textoBR(4), true),
                            celula(decimal(l, "TOTAL").textoBR(2), true)});
    }
    lbTotal_->setText(dinheiro(decimal(h, "TOTAL")));
    mostrarTroco();
}

void TVendaExp::mostrarTroco()
{
    // Browsing, the change the sale kept; editing, what the amount typed leaves over what is due now.
    db::Decimal troco = decimal(doc_.cabecalho, "TROCO");
    if (estado() != Estado::Navegando) {
        troco = db::Decimal("0");
        try {
            const QVariant r = lerNumeroDoCampo(C{"RECEBIDO", "Valor recebido", C::Decimal}, edRecebido_->text());
            const db::Decimal devido = devidoAgora(doc_);
            if (!r.isNull() && r.value<db::Decimal>() > devido) troco = r.value<db::Decimal>() - devido;
        } catch (const Recusa &) {
            // Half typed: the field's own check speaks when it is left.
        }
    }
    lbTroco_->setText(dinheiro(troco));
}

void TVendaExp::mostrarFoto(const QByteArray &dados, const QString &descricao)
{
    lbItem_->setText(descricao);
    QPixmap p;
    if (dados.isEmpty() || !p.loadFromData(dados)) {
        foto_->setPixmap({});
        foto_->setText(descricao.isEmpty() ? QString() : QStringLiteral("(sem foto)"));
        return;
    }
    foto_->setPixmap(p.scaled(foto_->size() - QSize(4, 4), Qt::KeepAspectRatio, Qt::SmoothTransformation));
}

void TVendaExp::EditCodigoKeyPress()
{
    Tabs->Deb("procedure TVendaExp.EditCodigoKeyPress(Sender: TObject; var Key: Char)");
    if (estado() == Estado::Navegando) return;
    const QString codigo = edCodigo_->text().trimmed();
    if (codigo.isEmpty()) {
        // Nothing more to scan: on to the payment.
        if (!doc_.linhas.isEmpty()) edRecebido_->setFocus();
        return;
    }
    try {
        const QVariant qtd = edQtd_->valor();
        lerCampos();
        db::Transacao &t = transacao();
        const int item = adicionarPorCodigo(t, doc_, codigo, qtd.isNull() ? db::Decimal("1") : qtd.value<db::Decimal>());
        mostrarDocumento();
        gradeLinhas_->selectRow(linhas_->rowCount() - 1);
        gradeLinhas_->scrollToBottom();
        mostrarFoto(fotoDoItem(t, item), valor(doc_.linhas.last(), "DESCRICAO").toString());
        edCodigo_->clear();
        edQtd_->definir({});
        edCodigo_->setFocus();
    } catch (const Recusa &r) {
        Atencao(r.texto);
        QWidget *w = r.campo == "QTD" ? static_cast<QWidget *>(edQtd_) : edCodigo_;
        w->setFocus();
        if (auto *e = qobject_cast<QLineEdit *>(w)) e->selectAll();
    } catch (const db::ErroBanco &e) {
        Atencao(e.mensagem());
    }
}

void TVendaExp::BtExcluirItemClick()
{
    Tabs->Deb("procedure TVendaExp.BtExcluirItemClick(Sender: TObject)");
    const int i = gradeLinhas_->currentIndex().row();
    if (estado() == Estado::Navegando || i < 0 || i >= doc_.linhas.size()) return;
    if (!Pergunta("Tem certeza que deseja excluir este item?")) return;
    const int id = valor(doc_.linhas[i], "ID").toInt();
    if (id) doc_.linhasExcluidas << id;
    doc_.linhas.removeAt(i);
    lerCampos();
    recalcularDocumento(transacao(), doc_);
    mostrarDocumento();
    edCodigo_->setFocus();
}

void TVendaExp::CbCondPagtoExit()
{
    if (mostrando_ || estado() == Estado::Navegando) return;
    Tabs->Deb("procedure TVendaExp.CbCondPagtoExit(Sender: TObject)");
    try {
        mudarCondicao(transacao(), doc_.faturamento, venda(), cbCondPagto_->currentData().toString(),
                      sender() == cbParcelas_ ? cbParcelas_->currentData().toString() : QString());
    } catch (const Recusa &r) {
        Atencao(r.texto);
    }
    mostrarDocumento();  // what the condition left, or the terms as they were after a refusal
}

int TVendaExp::gravar(db::Transacao &t, int)
{
    lerCampos();
    recebido_ = edRecebido_->valor();
    // The edit keeps its own copy until the save went through: a failed attempt leaves it as typed.
    Documento d = doc_;
    const int id = salvarVendaExpressa(t, d, quem(), QDateTime::currentDateTime());
    doc_ = d;
    return id;
}

void TVendaExp::finalizar(int id)
{
    // The delivery started at once: approved, paid what is due now and delivered, or nothing of it.
    Tabs->Deb("procedure TVendaExp.BtEntregarClick(Sender: TObject)");
    QString status;
    {
        db::Transacao t(Tabs->DbORB(), db::Modo::Leitura);
        status = statusAtual(t, id);
    }
    if (status != "AA" && status != "AO") return;
    if (naTransacao([&](db::Transacao &t) { finalizarVendaExpressa(t, id, quem(), QDateTime::currentDateTime(), recebido_); })
        == Desfecho::Feito) {
        informarMonitor(id, "Entregue");
        recarregar(id);
        lbLegenda_->setText(legendaVendaExpressa(id));  // the sale just made, by its number
    }
}

void TVendaExp::apagar(db::Transacao &t, int id)
{
    excluirDocumento(t, id, quem());
}

bool TVendaExp::confirmarCancelamento()
{
    Tabs->Deb("Operação Cancelada - " + (doc_.id ? QString::asprintf("%06d", doc_.id) : QStringLiteral("nova")));
    cancelou_ = true;
    return true;
}

} // namespace orb
