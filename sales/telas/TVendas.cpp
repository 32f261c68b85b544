#include "TVendas.h"

#include "Recusa.h"
#include "Faturamento.h"
#include "dados/Tabs.h"
#include "ui/Campos.h"
#include "ui/ComboConsulta.h"
#include "ui/Mensagens.h"

#include <QComboBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPlainTextEdit>
#include <QLineEdit>
#include <QPushButton>
#include <QStandardItemModel>
#include <QTableView>
#include <QScopedValueRollback>
#include <QScrollArea>
#include <QSplitter>
#include <QVBoxLayout>

#include <tuple>

namespace orb {

namespace {

using C = CampoForm;

// The billing page: the discount, the terms and the instalments side by side, so that it needs no scrolling.
const QString kDesconto = QStringLiteral("Faturamento|Descontos e seguro");
const QString kCondicoes = QStringLiteral("Faturamento|Condições");
const QString kVencimentos = QStringLiteral("Faturamento|Vencimentos");
const QString kParcelas = QStringLiteral("Faturamento|Parcelas");
const QString kServico = QStringLiteral("Serviço|Responsáveis");
const QString kEquipamento = QStringLiteral("Serviço|Equipamento / veículo");

// A text of several lines, as tall as four of them.
QPlainTextEdit *novoMemo(QWidget *pai)
{
    auto *e = new QPlainTextEdit(pai);
    e->setTabChangesFocus(true);  // Tab and Enter keep moving through the fields
    e->setFixedHeight(e->fontMetrics().lineSpacing() * 4 + 12);
    return e;
}

QString classeDo(const ModoOperacao &m) { return m.classe.isEmpty() ? QStringLiteral("TVendas") : m.classe; }

void escolher(QComboBox *cb, const QVariant &v) { cb->setCurrentIndex(std::max(0, cb->findData(v))); }

QVariant escolhido(QComboBox *cb) { return cb->currentData(); }

QString dinheiro(const Valores &v, const QString &c) { return decimal(v, c).textoBR(2); }

} // namespace

TVendas::TVendas(const QString &modo, QWidget *parent)
    : FormCadastro(classeDo(modoOperacao(modo)), modoOperacao(modo).titulo, "TrVendas", parent), modo_(modoOperacao(modo))
{
    // The header in two rows of fields side by side: the billing and the lines keep the height.
    edData_ = new CampoData(CampoData::Data, this);
    edData_->setMaximumWidth(120);
    cbCliente_ = new ComboConsulta(modo_.op == 4 ? "Select Id, Nome From TbCad Where Fo = 'S' Order By Nome"
                                                 : "Select Id, Nome From TbCad Where Cl = 'S' Order By Nome", {}, this);
    cbAtendente_ = new ComboConsulta("Select Id, Nome From TbCad Where Fu = 'S' Order By Nome", {}, this);
    cbEmpresa_ = new ComboConsulta("Select Id, Apelido From TbCad Where Em = 'S' Order By Apelido", {}, this);
    adicionarCampos("Data", {{"DATA", "Data", edData_, 0}, {"IDCAD", modo_.op == 4 ? "Fornecedor" : "Cliente", cbCliente_, 1}});
    QList<CampoNaLinha> segunda = {
        {"IDATENDENTE", modo_.op == 4 ? "Comprador" : "Atendente", cbAtendente_, 1}, {"IDEMPRESA", "Empresa", cbEmpresa_, 1}};
    // The freight of each line goes with the document's carrier.
    cbTransportadora_ = new ComboConsulta("Select Id, Nome From TbCad Where Tr = 'S' Order By Nome", {}, this);
    segunda.append({"TBCOMFAT.IDTRANSPORTADORA", "Transportadora", cbTransportadora_, 1});
    if (modo_.previsaoEntrega) {
        edPrevEntrega_ = new CampoData(CampoData::Data, this);
        edPrevEntrega_->setMaximumWidth(120);
        segunda.append({"DATAPREVENTREGA", "Previsão de entrega", edPrevEntrega_, 0});
    }
    adicionarCampos(modo_.op == 4 ? "Comprador" : "Atendente", segunda);
    // Names the tests and the refusals find them by, after the fields took their columns' names.
    cbCliente_->setObjectName("CbCliente");
    cbAtendente_->setObjectName("CbAtendente");
    cbEmpresa_->setObjectName("CbEmpresa");
    if (edPrevEntrega_) edPrevEntrega_->setObjectName("EdPrevEntrega");
    if (modo_.op == 2) {
        // The service order: who works on it, the equipment or vehicle left and what holds it.
        cbTecnico_ = new ComboConsulta("Select Id, Nome From TbCad Where Fu = 'S' Order By Nome", {}, this);
        adicionarCampo("IDTECNICO", "Técnico", cbTecnico_, kServico);
        cbTecnico_->setObjectName("CbTecnico");  // after the field took its column's name
        cbAcond_ = new ComboConsulta("Select Id, Nome From TbAcond Order By Nome", {}, this);
        adicionarCampo("IDACOND", "Acondicionamento", cbAcond_, kServico);
        cbAcond_->setObjectName("CbAcond");  // after the field took its column's name
        const struct { const char *coluna, *rotulo; int tamanho; } textos[] = {
            {"PLACA", "Placa", 7}, {"TIPOMARCA", "Tipo / marca", 100}, {"MODELO", "Modelo", 100}, {"NUMSERIE", "Nº de série", 100}};
        for (const auto &x : textos) {
            auto *e = new QLineEdit(this);
            e->setMaxLength(x.tamanho);
            textosServico_.append({x.coluna, e});
            adicionarCampo(x.coluna, x.rotulo, e, kEquipamento);
        }
        for (QWidget *w : std::initializer_list<QWidget *>{cbTecnico_, cbAcond_}) w->setMinimumWidth(220);
        for (const auto &[coluna, e] : textosServico_) e->setMinimumWidth(coluna == "PLACA" ? 90 : 220);
        edKilom_ = new CampoNumero(C{"KILOM", "Quilometragem", C::Inteiro}, this);
        adicionarCampo("KILOM", "Quilometragem", edKilom_, kEquipamento);
        const struct { const char *coluna, *rotulo, *aba; } memos[] = {
            {"SOLICITACOES", "Solicitações", "Solicitações e laudo|Do cliente"},
            {"INFEQUIPAMENTO", "Equipamento", "Solicitações e laudo|Do cliente"},
            {"LAUDOTECNICO", "Laudo técnico", "Solicitações e laudo|Do técnico"}};
        for (const auto &x : memos) memos_.append({x.coluna, criarMemo(x.coluna, x.rotulo, x.aba)});
    }
    cbTipoDesconto_ = new QComboBox(this);
    cbTipoDesconto_->addItem("ITEM", "I");
    cbTipoDesconto_->addItem("SUBTOTAL", "S");
    adicionarCampo("TIPODESCONTO", "Tipo", cbTipoDesconto_, kDesconto);
    edDescontoM_ = new CampoNumero(C{"DESCONTOM", "Desconto (R$)", C::Decimal}, this);
    adicionarCampo("DESCONTOM", "Mercadorias (R$)", edDescontoM_, kDesconto);
    edDescontoS_ = new CampoNumero(C{"DESCONTOS", "Desconto nos serviços (R$)", C::Decimal}, this);
    adicionarCampo("DESCONTOS", "Serviços (R$)", edDescontoS_, kDesconto);
    edSeguro_ = new CampoNumero(C{"SEGURO", "Seguro (R$)", C::Decimal}, this);
    adicionarCampo("SEGURO", "Seguro (R$)", edSeguro_, kDesconto);
    edDataFat_ = new CampoData(CampoData::Data, this);
    adicionarCampo("TBCOMFAT.DATA", "Data do faturamento", edDataFat_, kCondicoes);
    cbCondPagto_ = new QComboBox(this);
    cbCondPagto_->addItem("A VISTA", "V");
    cbCondPagto_->addItem("A PRAZO", "P");
    adicionarCampo("TBCOMFAT.CONDPAGTO", "Condição", cbCondPagto_, kCondicoes);
    cbParcelas_ = new QComboBox(this);
    for (int i = 1; i <= 60; ++i) cbParcelas_->addItem(QString::asprintf("%02d", i), QString::asprintf("%02d", i));
    adicionarCampo("TBCOMFAT.PARCELAS", "Parcelas", cbParcelas_, kCondicoes);
    edPrimVenc_ = new CampoNumero(C{"PRIMVENC", "1° Vencimento", C::Inteiro}, this);
    adicionarCampo("TBCOMFAT.PRIMVENC", "1° Vencimento (dias)", edPrimVenc_, kVencimentos);
    edIntVenc_ = new CampoNumero(C{"INTVENC", "Interv. Venc.", C::Inteiro}, this);
    adicionarCampo("TBCOMFAT.INTVENC", "Interv. Venc.", edIntVenc_, kVencimentos);

    parcelas_ = new QStandardItemModel(0, 3, this);
    parcelas_->setHorizontalHeaderLabels({"Parcela", "Vencimento", "Valor"});
    gradeParcelas_ = new QTableView(this);
    gradeParcelas_->setObjectName("GradeParcelas");
    gradeParcelas_->setModel(parcelas_);
    prepararGrade(gradeParcelas_);
    gradeParcelas_->setMinimumWidth(270);
    gradeParcelas_->setMaximumHeight(128);  // three instalments in view; more scroll inside the grid
    adicionarLinha({}, gradeParcelas_, kParcelas);
    memos_.append({"OBSERVACOES", criarMemo("OBSERVACOES", "Observações", "Observações")});

    // Short fields for short values: the four groups share the edit area's width.
    for (QWidget *w : std::initializer_list<QWidget *>{cbTipoDesconto_, edDescontoM_, edDescontoS_, edSeguro_, edDataFat_, cbCondPagto_, cbParcelas_, edPrimVenc_, edIntVenc_})
        w->setFixedWidth(w == cbParcelas_ ? 60 : w == edPrimVenc_ || w == edIntVenc_ ? 80 : 105);
    gradeParcelas_->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    gradeParcelas_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);

    cbCondPagto_->setObjectName("CbCondPagto");
    edDataFat_->setObjectName("EdDataFat");
    cbParcelas_->setObjectName("CbParcelas");

    // The lines: an entry row over their grid, and the total under it.
    auto *painel = new QWidget(this);
    auto *v = new QVBoxLayout(painel);
    v->setContentsMargins(0, 0, 0, 0);
    auto *entrada = new QHBoxLayout;
    cbItem_ = new ComboConsulta("Select Id, Codigo || ' - ' || Descricao From TbItens Where Tipo In ('M', 'S') Order By Descricao", {}, this);
    cbItem_->setEditable(true);
    cbItem_->setMinimumWidth(280);
    edQtd_ = new CampoNumero(C{"QTD", "Qtd", C::Decimal, {}, 0, 4}, this);
    edPreco_ = new CampoNumero(C{"PRUNITARIO", "Preço", C::Decimal, {}, 0, 4}, this);
    edPercDesc_ = new CampoNumero(C{"PERCDESCONTO", "% Desc.", C::Decimal, {}, 0, 4}, this);
    edFrete_ = new CampoNumero(C{"FRETE", "Frete", C::Decimal}, this);
    edOutros_ = new CampoNumero(C{"OUTROS", "Outras despesas", C::Decimal}, this);
    for (auto *w : {edQtd_, edPreco_, edPercDesc_, edFrete_, edOutros_}) w->setMaximumWidth(w == edFrete_ || w == edOutros_ ? 80 : 100);
    auto *btIncluir = new QPushButton("Incluir item", this);
    btIncluir->setObjectName("BtIncluirLinha");
    auto *btExcluir = new QPushButton("Excluir item", this);
    btExcluir->setObjectName("BtExcluirLinha");
    edSerial_ = new QLineEdit(this);
    edSerial_->setMaxLength(50);
    edSerial_->setMaximumWidth(160);
    edSerial_->setPlaceholderText("Serial");
    auto *btSerial = new QPushButton("Incluir serial", this);
    btSerial->setObjectName("BtIncluirSerial");
    entrada->addWidget(new QLabel(modo_.op == 4 ? "Mercadoria" : "Mercadoria / serviço", this));
    entrada->addWidget(cbItem_, 1);
    entrada->addWidget(new QLabel("Qtd", this));
    entrada->addWidget(edQtd_);
    entrada->addWidget(new QLabel("Preço", this));
    entrada->addWidget(edPreco_);
    entrada->addWidget(new QLabel("% Desc.", this));
    entrada->addWidget(edPercDesc_);
    entrada->addWidget(new QLabel("Frete", this));
    entrada->addWidget(edFrete_);
    entrada->addWidget(new QLabel("Outras", this));
    entrada->addWidget(edOutros_);
    entrada->addWidget(btIncluir);
    entrada->addWidget(btExcluir);
    entrada->addWidget(edSerial_);
    entrada->addWidget(btSerial);
    v->addLayout(entrada);
    linhas_ = new QStandardItemModel(0, 8, this);
    linhas_->setHorizontalHeaderLabels({"Código", "Descrição", "Qtd", "Preço unitário", "Desconto", "Subtotal", "Total", "Seriais"});
    gradeLinhas_ = new QTableView(this);
    gradeLinhas_->setModel(linhas_);
    prepararGrade(gradeLinhas_);
    gradeLinhas_->horizontalHeader()->setSectionResizeMode(1, QHeaderView::Stretch);
    v->addWidget(gradeLinhas_, 1);
    lbTotal_ = new QLabel(this);
    lbTotal_->setObjectName("LbTotal");
    lbTotal_->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    QFont f = lbTotal_->font();
    f.setPointSizeF(f.pointSizeF() * 1.4);
    f.setBold(true);
    lbTotal_->setFont(f);
    v->addWidget(lbTotal_);
    registrarCampo("TBCOMITENS", cbItem_);
    registrarCampo("IDITEM", cbItem_);
    registrarCampo("QTD", edQtd_);
    registrarCampo("PRUNITARIO", edPreco_);
    registrarCampo("PERCDESCONTO", edPercDesc_);
    registrarCampo("FRETE", edFrete_);
    registrarCampo("OUTROS", edOutros_);
    registrarCampo("SERIAL", edSerial_);
    adicionarPainel(painel, 3);
    // A few rows of the browse, the header and billing whole without scrolling, the lines the rest.
    if (auto *rolagem = qobject_cast<QScrollArea *>(divisor()->widget(1)))
    {
        rolagem->setMinimumHeight(rolagem->widget()->sizeHint().height());
        rolagem->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);  // the fields fit a 1366-wide screen
    }
    divisor()->setStretchFactor(0, 0);
    divisor()->setStretchFactor(1, 0);
    divisor()->setStretchFactor(2, 1);
    grade()->setMinimumHeight(100);
    divisor()->setSizes({100, 0, 400});
    connect(btIncluir, &QPushButton::clicked, this, &TVendas::BtIncluirLinhaClick);
    connect(btExcluir, &QPushButton::clicked, this, &TVendas::BtExcluirLinhaClick);
    connect(btSerial, &QPushButton::clicked, this, &TVendas::BtIncluirSerialClick);
    connect(edSerial_, &QLineEdit::returnPressed, this, &TVendas::BtIncluirSerialClick);
    connect(cbCondPagto_, &QComboBox::currentIndexChanged, this, &TVendas::CbParcelasChange);
    connect(cbParcelas_, &QComboBox::currentIndexChanged, this, &TVendas::CbParcelasChange);
    connect(edDataFat_, &QLineEdit::editingFinished, this, &TVendas::EditDataFatExit);
    connect(edPrimVenc_, &QLineEdit::editingFinished, this, &TVendas::EditPrazoExit);
    criarBotoesPassos();
    criarBotaoEmail();
    for (auto *e : {edDescontoM_, edDescontoS_, edSeguro_}) connect(e, &QLineEdit::editingFinished, this, &TVendas::EditDescontoExit);
    connect(cbTipoDesconto_, &QComboBox::currentIndexChanged, this, &TVendas::EditDescontoExit);
    // The browse last: showing its first record fills the fields made above.
    QString base = sqlConsultaOperacoes(modo_, {});
    base = base.left(base.lastIndexOf(" Order By "));
    QList<QPair<QString, QString>> ordens;
    for (const auto &o : modo_.ordens) ordens.append({o.first, o.first});
    definirConsulta(base,
                    {{"ID", "Código"}, {"EMISSAO", "Emissão"}, {"Z_CLIENTEFOR", modo_.op == 4 ? "Fornecedor" : "Cliente"},
                     {"TOTAL", modo_.rotuloTotal.isEmpty() ? "Total" : modo_.rotuloTotal}, {"STATUS", "Status"}},
                    ordens);

    recarregar();
}

bool TVendas::montarBusca(const QString &ordem, const QString &texto, Busca busca, QString &sql, std::map<QString, QVariant> &p)
{
    sql = sqlBuscaOperacoes(modo_, ordem, texto, busca == Busca::Inicio, p);
    return true;
}

void TVendas::limpar()
{
    doc_ = estado() == Estado::Incluindo ? incluirDocumento(transacao(), modo_, quem(), QDateTime::currentDateTime()) : Documento{};
    doc_.op = modo_.op;
    mostrarDocumento();
    parcelas_->removeRows(0, parcelas_->rowCount());
}

void TVendas::carregar(db::Transacao &t, int id)
{
    doc_ = lerDocumento(t, id);
    mostrarDocumento();
    mostrarParcelas(t);
}

void TVendas::mostrarParcelas(db::Transacao &t)
{
    parcelas_->removeRows(0, parcelas_->rowCount());
    const auto it = doc_.faturamento.find("ID");
    if (it == doc_.faturamento.end() || it->second.toInt() == 0) return;
    db::Consulta q(t, "Select Parcela, Vencimento, Valor From TbContas Where Fk = :FAT and Fks = :OP Order By Vencimento, Id");
    q.bind("FAT", it->second);
    q.bind("OP", modo_.op);
    q.executar();
    while (q.proxima()) {
        auto *valor = new QStandardItem(q[2].value<db::Decimal>().textoBR(2));
        valor->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
        parcelas_->appendRow({new QStandardItem(q[0].toString()), new QStandardItem(q[1].toDate().toString("dd/MM/yyyy")), valor});
    }
}

void TVendas::lerCampos()
{
    Valores &h = doc_.cabecalho;
    const QVariant data = edData_->valor("DATA");
    h["DATA"] = data.isNull() ? QVariant() : QVariant(QDateTime(data.toDate(), QTime(0, 0)));
    h["IDCAD"] = escolhido(cbCliente_);
    h["IDATENDENTE"] = escolhido(cbAtendente_);
    h["IDEMPRESA"] = escolhido(cbEmpresa_);
    h["TIPODESCONTO"] = cbTipoDesconto_->currentData();
    h["DESCONTOM"] = edDescontoM_->valor();
    // Left empty, they are none: the totals add them up.
    for (const auto &[coluna, campo] : {std::pair{"DESCONTOS", edDescontoS_}, std::pair{"SEGURO", edSeguro_}})
        h[coluna] = campo->valor().isNull() ? QVariant::fromValue(db::Decimal("0")) : campo->valor();
    if (edPrevEntrega_) {
        const QVariant prev = edPrevEntrega_->valor("DATAPREVENTREGA");
        h["DATAPREVENTREGA"] = prev.isNull() ? QVariant() : QVariant(QDateTime(prev.toDate(), QTime(0, 0)));
    }
    if (cbTecnico_) {
        h["IDTECNICO"] = escolhido(cbTecnico_);
        h["IDACOND"] = escolhido(cbAcond_);
        // The packaging's name is kept too: a packaging in use is found by it.
        h["ACOND"] = cbAcond_->currentIndex() >= 0 && !escolhido(cbAcond_).isNull() ? QVariant(cbAcond_->currentText()) : QVariant();
        for (const auto &[coluna, e] : textosServico_)
            h[coluna] = e->text().trimmed().isEmpty() ? QVariant() : QVariant(e->text().trimmed().toUpper());
        h["KILOM"] = edKilom_->valor();
    }
    for (const auto &[coluna, e] : memos_)
        h[coluna] = e->toPlainText().trimmed().isEmpty() ? QVariant() : QVariant(e->toPlainText().trimmed());
    Valores &f = doc_.faturamento;
    f["DATA"] = edDataFat_->valor("TBCOMFAT.DATA");
    f["CONDPAGTO"] = cbCondPagto_->currentData();
    f["PARCELAS"] = cbParcelas_->currentData();
    f["PRIMVENC"] = edPrimVenc_->valor();
    f["INTVENC"] = edIntVenc_->valor();
    f["IDTRANSPORTADORA"] = escolhido(cbTransportadora_);
}

QPlainTextEdit *TVendas::criarMemo(const QString &coluna, const QString &rotulo, const QString &aba)
{
    QPlainTextEdit *e = novoMemo(this);
    adicionarCampo(coluna, rotulo, e, aba);
    return e;
}

void TVendas::mostrarDocumento()
{
    const QScopedValueRollback<bool> ocupado(mostrando_, true);
    const Valores &h = doc_.cabecalho;
    edData_->definir(valor(h, "DATA").toDateTime().date());
    escolher(cbCliente_, valor(h, "IDCAD"));
    escolher(cbAtendente_, valor(h, "IDATENDENTE"));
    escolher(cbEmpresa_, valor(h, "IDEMPRESA"));
    escolher(cbTipoDesconto_, valor(h, "TIPODESCONTO").isNull() ? QVariant("I") : valor(h, "TIPODESCONTO"));
    edDescontoM_->definir(valor(h, "DESCONTOM"));
    edDescontoS_->definir(valor(h, "DESCONTOS"));
    edSeguro_->definir(valor(h, "SEGURO"));
    if (edPrevEntrega_) edPrevEntrega_->definir(valor(h, "DATAPREVENTREGA").toDateTime().date());
    if (cbTecnico_) {
        escolher(cbTecnico_, valor(h, "IDTECNICO"));
        escolher(cbAcond_, valor(h, "IDACOND"));
        if (valor(h, "IDTECNICO").isNull()) cbTecnico_->setCurrentIndex(-1);
        if (valor(h, "IDACOND").isNull()) cbAcond_->setCurrentIndex(-1);
        for (const auto &[coluna, e] : textosServico_) e->setText(valor(h, coluna).toString());
        edKilom_->definir(valor(h, "KILOM"));
    }
    for (const auto &[coluna, e] : memos_) e->setPlainText(valor(h, coluna).toString());
    mostrarCondicoes();
    linhas_->removeRows(0, linhas_->rowCount());
    for (const Valores &l : doc_.linhas) {
        auto celula = [](const QString &s, bool numero) {
            auto *i = new QStandardItem(s);
            if (numero) i->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
            return i;
        };
        const auto cod = l.find("Z_CODIGO");
        linhas_->appendRow({celula(cod == l.end() ? QString() : cod->second.toString(), false),
                            celula(valor(l, "DESCRICAO").toString(), false), celula(decimal(l, "QTD").textoBR(4), true),
                            celula(decimal(l, "PRUNITARIO").textoBR(4), true), celula(dinheiro(l, "DESCONTO"), true),
                            celula(dinheiro(l, "SUBTOTAL"), true), celula(dinheiro(l, "TOTAL"), true),
                            celula(valor(l, "Z_SERIAIS").toStringList().join(", "), false)});
    }
    lbTotal_->setText((modo_.rotuloTotal.isEmpty() ? QStringLiteral("Total") : modo_.rotuloTotal) + ": R$ " + dinheiro(h, "TOTAL"));
}

void TVendas::mostrarCondicoes()
{
    const QScopedValueRollback<bool> ocupado(mostrando_, true);
    const Valores &f = doc_.faturamento;
    edDataFat_->definir(valor(f, "DATA"));
    escolher(cbCondPagto_, valor(f, "CONDPAGTO").isNull() ? QVariant("V") : valor(f, "CONDPAGTO"));
    escolher(cbParcelas_, valor(f, "PARCELAS").toString().trimmed().isEmpty() ? QVariant("01") : QVariant(valor(f, "PARCELAS").toString().trimmed()));
    edPrimVenc_->definir(valor(f, "PRIMVENC"));
    edIntVenc_->definir(valor(f, "INTVENC"));
    escolher(cbTransportadora_, valor(f, "IDTRANSPORTADORA"));
}

void TVendas::EditDescontoExit()
{
    if (mostrando_ || estado() == Estado::Navegando) return;
    Tabs->Deb("procedure " + classeDo(modo_) + ".EditDescontoExit(Sender: TObject)");
    try {
        recalcularTela();
    } catch (const Recusa &r) {
        Atencao(r.texto);
        if (QWidget *w = campo(r.campo)) w->setFocus();
    }
}

void TVendas::recalcularTela()
{
    lerCampos();
    db::Transacao t(Tabs->DbORB(), db::Modo::Leitura);
    recalcularDocumento(t, doc_);
    mostrarDocumento();
}

void TVendas::BtIncluirLinhaClick()
{
    Tabs->Deb("procedure " + classeDo(modo_) + ".BtIncluirLinhaClick(Sender: TObject)");
    if (estado() == Estado::Navegando) return;
    try {
        db::Transacao t(Tabs->DbORB(), db::Modo::Leitura);
        Valores l;
        // An entry of the list, or a line typed free whose text is the description.
        const int i = cbItem_->currentIndex();
        const QVariant item = i >= 0 && cbItem_->currentText() == cbItem_->itemText(i) ? cbItem_->itemData(i) : QVariant();
        if (!item.isNull()) {
            l = linhaDoItem(t, item.toInt(), doc_.cabecalho["TIPO"].toString());
            l["Z_CODIGO"] = db::escalar(t, "Select Codigo From TbItens Where Id = :ID", {{"ID", item}});
        } else {
            l["TIPO"] = "M";
            l["DESCRICAO"] = cbItem_->currentText().trimmed();
        }
        l["QTD"] = edQtd_->valor();
        if (!edPreco_->valor().isNull()) l["PRUNITARIO"] = edPreco_->valor();
        l["PERCDESCONTO"] = edPercDesc_->valor();
        for (const auto &[coluna, e] : {std::pair{"FRETE", edFrete_}, std::pair{"OUTROS", edOutros_}})
            if (!e->valor().isNull()) l[coluna] = e->valor();
        conferirLinha(l);
        lerCampos();
        doc_.linhas.append(l);
        recalcularDocumento(t, doc_);
        mostrarDocumento();
        cbItem_->setCurrentIndex(-1);
        cbItem_->setEditText({});
        for (auto *w : {edQtd_, edPreco_, edPercDesc_, edFrete_, edOutros_}) w->definir({});
        cbItem_->setFocus();
    } catch (const Recusa &r) {
        Atencao(r.texto);
        if (QWidget *w = campo(r.campo)) w->setFocus();
    }
}

void TVendas::BtExcluirLinhaClick()
{
    Tabs->Deb("procedure " + classeDo(modo_) + ".BtExcluirLinhaClick(Sender: TObject)");
    const int i = gradeLinhas_->currentIndex().row();
    if (estado() == Estado::Navegando || i < 0 || i >= doc_.linhas.size()) return;
    if (!Pergunta("Tem certeza que deseja excluir este item?")) return;
    const int id = doc_.linhas[i].count("ID") ? doc_.linhas[i].at("ID").toInt() : 0;
    if (id) doc_.linhasExcluidas << id;
    doc_.linhas.removeAt(i);
    recalcularTela();
}

void TVendas::BtIncluirSerialClick()
{
    Tabs->Deb("procedure " + classeDo(modo_) + ".BtIncluirSerialClick(Sender: TObject)");
    const int i = gradeLinhas_->currentIndex().row();
    const QString serial = edSerial_->text().trimmed();
    if (estado() == Estado::Navegando || i < 0 || i >= doc_.linhas.size() || serial.isEmpty()) return;
    try {
        db::Transacao t(Tabs->DbORB(), db::Modo::Leitura);
        Valores &l = doc_.linhas[i];
        conferirSerial(t, l, modo_.op);
        QStringList seriais = l.count("Z_SERIAIS") ? l.at("Z_SERIAIS").toStringList() : QStringList();
        seriais << serial;
        l["Z_SERIAIS"] = seriais;
        mostrarDocumento();
        gradeLinhas_->selectRow(i);
        edSerial_->clear();
    } catch (const Recusa &r) {
        Atencao(r.texto);
        edSerial_->setFocus();
    }
}

void TVendas::CbParcelasChange()
{
    if (mostrando_ || estado() == Estado::Navegando) return;
    Tabs->Deb("procedure " + classeDo(modo_) + ".CbParcelasChange(Sender: TObject)");
    try {
        db::Transacao t(Tabs->DbORB(), db::Modo::Leitura);
        mudarCondicao(t, doc_.faturamento, modo_, cbCondPagto_->currentData().toString(),
                      sender() == cbParcelas_ ? cbParcelas_->currentData().toString() : QString());
    } catch (const Recusa &r) {
        Atencao(r.texto);
    }
    mostrarCondicoes();  // what the condition left, or the terms as they were after a refusal; the rest stays as typed
}

void TVendas::EditDataFatExit()
{
    if (mostrando_ || estado() == Estado::Navegando) return;
    Tabs->Deb("procedure " + classeDo(modo_) + ".EditDataFatExit(Sender: TObject)");
    try {
        const QVariant data = edDataFat_->valor("TBCOMFAT.DATA");
        if (data.toDate() == doc_.faturamento["DATA"].toDate()) return;
        db::Transacao t(Tabs->DbORB(), db::Modo::Leitura);
        const QVariant op = edData_->valor("DATA");
        mudarDataFaturamento(t, doc_.faturamento, modo_.op, QDateTime(op.toDate(), QTime(0, 0)), data.toDate());
    } catch (const Recusa &r) {
        Atencao(r.texto);
    }
    mostrarCondicoes();
}

void TVendas::EditPrazoExit()
{
    if (mostrando_ || estado() == Estado::Navegando) return;
    Tabs->Deb("procedure " + classeDo(modo_) + ".EditPrazoExit(Sender: TObject)");
    try {
        const QVariant dias = edPrimVenc_->valor();
        if (dias == doc_.faturamento["PRIMVENC"]) return;
        mudarPrimVenc(doc_.faturamento, dias);
    } catch (const Recusa &r) {
        Atencao(r.texto);
    }
    mostrarCondicoes();
}

int TVendas::gravar(db::Transacao &t, int)
{
    lerCampos();
    // The edit keeps its own copy until the save went through: a failed attempt leaves it as typed.
    Documento d = doc_;
    const int id = salvarDocumento(t, d, quem(), QDateTime::currentDateTime());
    doc_ = d;
    mostrarParcelas(t);
    return id;
}

void TVendas::apagar(db::Transacao &t, int id)
{
    excluirDocumento(t, id, quem());
}

} // namespace orb
