#include "TContas.h"

#include "Caixa.h"
#include "Graficos.h"
#include "Recusa.h"
#include "dados/Tabs.h"
#include "ui/Campos.h"
#include "ui/ComboConsulta.h"
#include "ui/Dialogos.h"
#include "ui/Mensagens.h"

#include <QComboBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QShortcut>
#include <QTableWidget>
#include <QVBoxLayout>

namespace orb {

namespace {

using C = CampoForm;
const QStringList kDocumentos = {"DINHEIRO", "BOLETO", "CHEQUE", "CARTÃO", "TRANSFERÊNCIA", "OUTROS"};

void escolher(QComboBox *cb, const QVariant &v) { cb->setCurrentIndex(v.isNull() ? -1 : cb->findData(v)); }
QVariant escolhido(QComboBox *cb) { return cb->currentIndex() < 0 ? QVariant() : cb->currentData(); }
QVariant texto(QLineEdit *e) { return e->text().trimmed().isEmpty() ? QVariant() : QVariant(e->text().trimmed()); }

std::function<void(TDataRectoContasReceber &)> &respostaDialogo()
{
    static std::function<void(TDataRectoContasReceber &)> f;
    return f;
}

} // namespace

// ------------------------------------------------------------------ receipt/payment dialog

TDataRectoContasReceber::TDataRectoContasReceber(const QString &titulo, const db::Decimal &aberto, const QString &tipoDoc,
                                                 std::function<bool(const Pagamento &)> gravar, QWidget *parent)
    : QDialog(parent), gravar_(std::move(gravar))
{
    setObjectName("TDataRectoContasReceber");
    setWindowTitle(titulo);
    auto *f = new QFormLayout(this);
    cbCCor = new ComboConsulta("Select Id, Conta From TbCCor Order By Conta", {}, this);
    for (int i = 0; i < cbCCor->count(); ++i)
        if (cbCCor->itemText(i) == "CAIXA") cbCCor->setCurrentIndex(i);
    edData = new CampoData(CampoData::Data, this);
    edData->definir(QDate::currentDate());
    edValor = new CampoNumero(C{"VALOR", "Valor", C::Decimal}, this);
    edValor->definir(QVariant::fromValue(aberto));
    edJurosDesc = new CampoNumero(C{"JUROSDESC", "Juros/Desc.", C::Decimal}, this);
    cbForma = new QComboBox(this);
    cbForma->addItems(kDocumentos);
    cbForma->setCurrentText(tipoDoc.isEmpty() ? "DINHEIRO" : tipoDoc);
    f->addRow("Conta Corrente", cbCCor);
    f->addRow("Data", edData);
    f->addRow("Valor (restante: " + aberto.textoBR(2) + ")", edValor);
    f->addRow("Juros/Desc.", edJurosDesc);
    f->addRow("Forma de pagamento", cbForma);
    cbDestino = new QComboBox(this);
    cbDestino->addItem("", "");
    for (const char *d : {"DEVOLVIDO", "REPASSADO", "CANCELADO/EST."}) cbDestino->addItem(d, d);
    edData1 = new CampoData(CampoData::Data, this);
    edMot1 = new QLineEdit(this);
    edData2 = new CampoData(CampoData::Data, this);
    edMot2 = new QLineEdit(this);
    if (tipoDoc == "CHEQUE") {
        f->addRow("Situação do cheque", cbDestino);
        f->addRow("Data (1ª devolução, repasse, cancelamento)", edData1);
        f->addRow("Motivo / receptor", edMot1);
        f->addRow("Data da 2ª devolução", edData2);
        f->addRow("Motivo da 2ª devolução", edMot2);
    }
    auto *ok = new QPushButton("OK", this);
    ok->setObjectName("BtOk");
    ok->setDefault(true);
    auto *cancelar = new QPushButton("Cancelar", this);
    connect(ok, &QPushButton::clicked, this, &TDataRectoContasReceber::BtOkClick);
    connect(cancelar, &QPushButton::clicked, this, &QDialog::reject);
    auto *b = new QHBoxLayout;
    b->addStretch();
    b->addWidget(ok);
    b->addWidget(cancelar);
    f->addRow(b);
}

Pagamento TDataRectoContasReceber::pagamento() const
{
    Pagamento p;
    p.idCCor = escolhido(cbCCor);
    p.data = edData->valor("DATA").toDate();
    p.valor = edValor->valor();
    p.formaPagto = cbForma->currentText();
    if (!edJurosDesc->valor().isNull()) p.jurosDesc = edJurosDesc->valor().value<db::Decimal>();
    p.destino = cbDestino->currentData().toString();
    p.dataSituacao1 = edData1->valor().toDate();
    p.motSituacao1 = edMot1->text().trimmed();
    p.dataSituacao2 = edData2->valor().toDate();
    p.motSituacao2 = edMot2->text().trimmed();
    return p;
}

void TDataRectoContasReceber::BtOkClick()
{
    Tabs->Deb("procedure TDataRectoContasReceber.BtOkClick(Sender: TObject)");
    try {
        if (gravar_(pagamento())) accept();
    } catch (const Recusa &r) {
        Atencao(r.texto);  // a date or number that cannot be read
    }
}

// ------------------------------------------------------------------ the accounts screen

TContas::TContas(const QString &modo, QWidget *parent)
    : FormCadastro("TContas", modo == "Pag" ? "Financeiro - Contas a Pagar" : "Financeiro - Contas a Receber", "TrContas", parent),
      tipo_(modo == "Pag" ? "D" : "C")
{
    // Filters over the list.
    auto *filtros = new QHBoxLayout;
    edDe_ = new CampoData(CampoData::Data, this);
    edDe_->setObjectName("EdVencDe");
    edAte_ = new CampoData(CampoData::Data, this);
    edAte_->setObjectName("EdVencAte");
    cbFiltroTitular_ = new ComboConsulta(tipo_ == "D" ? "Select Id, Nome From TbCad Where Fo = 'S' Order By Nome"
                                                      : "Select Id, Nome From TbCad Where Cl = 'S' Order By Nome",
                                         "(todos)", this);
    cbSituacao_ = new QComboBox(this);
    cbSituacao_->setObjectName("CbSituacao");
    for (const char *s : {"(todas)", "ABERTAS", "QUITADAS", "NÃO QUITADO", "QUITADO", "NÃO COMPENSADO", "COMPENSADO", "DEVOLVIDO", "REPASSADO",
                          "CANCELADO/EST."})
        cbSituacao_->addItem(s, QString(s).startsWith("(") ? QString() : QString(s));
    cbOrigem_ = new QComboBox(this);
    for (const auto &[t, v] : QList<QPair<QString, QString>>{{"(todas)", ""}, {"MANUAL", "MANUAL"}, {"VENDA", "1"}, {"SERVIÇO", "2"},
                                                               {"CONTRATO", "3"}, {"COMPRA", "4"}, {"LOCAÇÃO", "5"}})
        cbOrigem_->addItem(t, v);
    filtros->addWidget(new QLabel("Vencimento de", this));
    filtros->addWidget(edDe_);
    filtros->addWidget(new QLabel("até", this));
    filtros->addWidget(edAte_);
    filtros->addWidget(new QLabel(tipo_ == "D" ? "Fornecedor" : "Cliente", this));
    filtros->addWidget(cbFiltroTitular_, 1);
    filtros->addWidget(new QLabel("Situação", this));
    filtros->addWidget(cbSituacao_);
    filtros->addWidget(new QLabel("Origem", this));
    filtros->addWidget(cbOrigem_);
    auto *filtrar = new QPushButton("Filtrar", this);
    filtros->addWidget(filtrar);
    corpo()->insertLayout(0, filtros);
    connect(filtrar, &QPushButton::clicked, this, &TContas::pesquisar);
    for (QComboBox *cb : {static_cast<QComboBox *>(cbFiltroTitular_), cbSituacao_, cbOrigem_})
        connect(cb, &QComboBox::currentIndexChanged, this, &TContas::pesquisar);

    // The special actions.
    auto *quitar = new QPushButton("Quitar (F8)", this);
    quitar->setObjectName("BtQuitar");
    auto *estornar = new QPushButton("Estornar", this);
    estornar->setObjectName("BtEstornarCR");
    connect(quitar, &QPushButton::clicked, this, &TContas::BtQuitarClick);
    connect(estornar, &QPushButton::clicked, this, &TContas::BtEstornarCRClick);
    auto *f8 = new QShortcut(QKeySequence("F8"), this, nullptr, nullptr, Qt::WidgetWithChildrenShortcut);
    connect(f8, &QShortcut::activated, quitar, [quitar] { if (quitar->isEnabled()) quitar->click(); });
    if (auto *barra = qobject_cast<QBoxLayout *>(layout()->itemAt(0)->layout())) {
        barra->insertWidget(barra->indexOf(botao("Fechar")), quitar);
        barra->insertWidget(barra->indexOf(botao("Fechar")), estornar);
    }

    cbTitular_ = new ComboConsulta(tipo_ == "D" ? "Select Id, Nome From TbCad Where Fo = 'S' Order By Nome"
                                                : "Select Id, Nome From TbCad Where Cl = 'S' Order By Nome", {}, this);
    adicionarCampo("IDCAD", "Titular", cbTitular_);
    cbTitular_->setObjectName("CbTitular");
    edHistorico_ = new QLineEdit(this);
    edHistorico_->setMaxLength(240);
    adicionarCampo("HISTORICO", "Histórico", edHistorico_);
    edNumero_ = new QLineEdit(this);
    edNumero_->setMaxLength(20);
    adicionarCampo("NUMERO", "Número", edNumero_);
    edVencimento_ = new CampoData(CampoData::Data, this);
    adicionarCampo("VENCIMENTO", "Vencimento", edVencimento_);
    cbTipoDoc_ = new QComboBox(this);
    for (const QString &d : kDocumentos) cbTipoDoc_->addItem(d, d);
    adicionarCampo("TIPODOC", "Documento", cbTipoDoc_);
    cbBandeira_ = new ComboConsulta("Select Id, Bandeira From TbBandeiras Order By Bandeira", {}, this);
    adicionarCampo("IDBANDEIRA", "Bandeira", cbBandeira_);
    edValorBruto_ = new CampoNumero(C{"VALORBRUTO", "Valor Bruto", C::Decimal}, this);
    edValorBruto_->setMaximumWidth(160);
    adicionarCampo("VALORBRUTO", "Valor Bruto", edValorBruto_);
    cbCCor_ = new ComboConsulta("Select Id, Conta From TbCCor Order By Conta", {}, this);
    adicionarCampo("IDCCOR", "Conta Corrente", cbCCor_);
    cbBanco_ = new ComboConsulta("Select Id, NomeBanco From TbBancos Order By NomeBanco", {}, this);
    adicionarCampo("IDBANCO", "Banco", cbBanco_, "Cheque");
    for (const auto &[c, r] : QList<QPair<QString, QString>>{{"AGENCIACH", "Agência"}, {"CCORRENTECH", "Conta corrente"},
                                                               {"CORRENTISTACH", "Correntista"}, {"CPFCNPJCH", "CPF/CNPJ"}, {"RGIECH", "RG/IE"}}) {
        auto *e = new QLineEdit(this);
        cheque_[c] = e;
        adicionarCampo(c, r, e, "Cheque");
    }
    // The apportionment: category and value, adding up to the account's value.
    auto *painelRateio = new QWidget(this);
    auto *v = new QVBoxLayout(painelRateio);
    v->setContentsMargins(0, 0, 0, 0);
    rateio_ = new QTableWidget(0, 2, this);
    rateio_->setObjectName("GradeRateio");
    rateio_->setHorizontalHeaderLabels({"Categoria", "Valor"});
    rateio_->horizontalHeader()->setSectionResizeMode(0, QHeaderView::Stretch);
    auto *b = new QHBoxLayout;
    auto *incluir = new QPushButton("Incluir rateio", this);
    auto *excluir = new QPushButton("Excluir rateio", this);
    b->addWidget(incluir);
    b->addWidget(excluir);
    b->addStretch();
    v->addLayout(b);
    v->addWidget(rateio_);
    adicionarLinha("Rateio", painelRateio, "Rateio");
    registrarCampo("RATEIO", rateio_);
    connect(incluir, &QPushButton::clicked, this, &TContas::BtIncluirRateioClick);
    connect(excluir, &QPushButton::clicked, this, [this] {
        if (estado() != Estado::Navegando && rateio_->currentRow() >= 0) rateio_->removeRow(rateio_->currentRow());
    });

    grafico_ = new GraficoDias(this);
    adicionarPainel(grafico_, 2);

    std::map<QString, QVariant> p;
    QString base = sqlContas(FiltroContas{tipo_}, p);
    definirConsulta(base.left(base.lastIndexOf(" Order By ")),
                    {{"VENCIMENTO", "Vencimento"}, {"NUMERO", "Número"}, {"PARCELA", "Parc."}, {"Z_TITULAR", "Titular"},
                     {"HISTORICO", "Histórico"}, {"TIPODOC", "Documento"}, {"VALOR", "Valor"}, {"QUITADO", "Quitado"},
                     {"NAOQUITADO", "A quitar"}, {"SITUACAO", "Situação"}},
                    {{"VENCIMENTO", "VENCIMENTO"}});
    recarregar();
    atualizarGrafico();
}

void TContas::definirRespostaDialogo(std::function<void(TDataRectoContasReceber &)> f) { respostaDialogo() = std::move(f); }

bool TContas::montarBusca(const QString &, const QString &texto, Busca busca, QString &sql, std::map<QString, QVariant> &p)
{
    FiltroContas f;
    f.tipo = tipo_;
    f.vencimentoDe = edDe_->valor().toDate();
    f.vencimentoAte = edAte_->valor().toDate();
    f.idCad = escolhido(cbFiltroTitular_).toInt();
    f.situacao = cbSituacao_->currentData().toString();
    f.origem = cbOrigem_->currentData().toString();
    sql = sqlContas(f, p);
    if (!texto.isEmpty()) {
        const int corte = int(sql.lastIndexOf(" Order By "));
        sql = sql.left(corte) + (busca == Busca::Inicio ? " and Upper(Ca.Nome) Starting With :T" : " and Upper(C.Historico) Containing :T") +
              sql.mid(corte);
        p["T"] = texto.toUpper();
    }
    return true;
}

void TContas::mostrar(const Valores &v)
{
    atual_ = v;
    escolher(cbTitular_, valor(v, "IDCAD"));
    edHistorico_->setText(valor(v, "HISTORICO").toString());
    edNumero_->setText(valor(v, "NUMERO").toString());
    edVencimento_->definir(valor(v, "VENCIMENTO"));
    escolher(cbTipoDoc_, valor(v, "TIPODOC").isNull() ? QVariant("DINHEIRO") : valor(v, "TIPODOC"));
    escolher(cbBandeira_, valor(v, "IDBANDEIRA"));
    edValorBruto_->definir(valor(v, "VALORBRUTO"));
    escolher(cbCCor_, valor(v, "IDCCOR"));
    escolher(cbBanco_, valor(v, "IDBANCO"));
    for (auto it = cheque_.begin(); it != cheque_.end(); ++it) it.value()->setText(valor(v, it.key().toUtf8().constData()).toString());
}

void TContas::limpar()
{
    rateio_->setRowCount(0);
    Valores v;
    if (estado() == Estado::Incluindo) v = {{"VENCIMENTO", QDate::currentDate()}, {"TIPODOC", "DINHEIRO"}};
    mostrar(v);
}

void TContas::carregar(db::Transacao &t, int id)
{
    db::Consulta q(t, "Select * From TbContas Where Id = :ID");
    q.bind("ID", id);
    q.executar();
    Valores v;
    if (q.proxima())
        for (int i = 0; i < q.colunas(); ++i) v[q.nomeColuna(i)] = q[i];
    q.fechar();
    mostrar(v);
    rateio_->setRowCount(0);
    db::Consulta r(t, "Select IdCategoria, Valor, IdSubcategoria, IdCCusto From TbContasRat Where Fk = :ID Order By Id");
    r.bind("ID", id);
    r.executar();
    while (r.proxima()) {
        adicionarRateio(r[0], r[1]);
        // What the grid does not show (subcategory, cost centre) goes back as it came.
        rateio_->cellWidget(rateio_->rowCount() - 1, 0)->setProperty("resto", QVariantMap{{"IDSUBCATEGORIA", r[2]}, {"IDCCUSTO", r[3]}});
    }
}

void TContas::adicionarRateio(const QVariant &categoria, const QVariant &v)
{
    const int i = rateio_->rowCount();
    rateio_->insertRow(i);
    auto *cb = new ComboConsulta("Select Id, Categoria From TbCat Order By Categoria", {}, rateio_);
    escolher(cb, categoria);
    auto *ed = new CampoNumero(C{"VALOR", "Valor", C::Decimal}, rateio_);
    ed->definir(v);
    rateio_->setCellWidget(i, 0, cb);
    rateio_->setCellWidget(i, 1, ed);
}

void TContas::BtIncluirRateioClick()
{
    if (estado() == Estado::Navegando) return;
    // The first row proposes the whole value; later ones what is still missing.
    db::Decimal falta = edValorBruto_->valor().isNull() ? db::Decimal::bruto(0, 2) : edValorBruto_->valor().value<db::Decimal>();
    for (const Valores &r : rateios()) falta -= valor(r, "VALOR").isNull() ? db::Decimal::bruto(0, 2) : valor(r, "VALOR").value<db::Decimal>();
    adicionarRateio({}, QVariant::fromValue(falta));
}

QList<Valores> TContas::rateios() const
{
    QList<Valores> r;
    for (int i = 0; i < rateio_->rowCount(); ++i) {
        auto *cb = qobject_cast<QComboBox *>(rateio_->cellWidget(i, 0));
        auto *ed = qobject_cast<CampoNumero *>(rateio_->cellWidget(i, 1));
        Valores linha{{"IDCATEGORIA", escolhido(cb)}, {"VALOR", ed->valor()}};
        const QVariantMap resto = cb->property("resto").toMap();
        for (auto it = resto.begin(); it != resto.end(); ++it) linha[it.key()] = it.value();
        r.append(linha);
    }
    return r;
}

int TContas::gravar(db::Transacao &t, int id)
{
    Valores v;
    v["TIPO"] = tipo_;
    v["IDCAD"] = escolhido(cbTitular_);
    v["HISTORICO"] = texto(edHistorico_);
    v["NUMERO"] = texto(edNumero_);
    v["VENCIMENTO"] = edVencimento_->valor("VENCIMENTO");
    v["TIPODOC"] = cbTipoDoc_->currentData();
    v["IDBANDEIRA"] = escolhido(cbBandeira_);
    v["VALORBRUTO"] = edValorBruto_->valor();
    v["IDCCOR"] = escolhido(cbCCor_);
    v["IDBANCO"] = escolhido(cbBanco_);
    for (auto it = cheque_.begin(); it != cheque_.end(); ++it) v[it.key()] = texto(it.value());
    if (id == 0) {
        v["EMISSAO"] = QDateTime::currentDateTime();
        v["DATA"] = QDate::currentDate();
    }
    const int r = salvarConta(t, id, v, rateios(), quem());
    return r;
}

void TContas::apagar(db::Transacao &t, int id) { excluirConta(t, id, quem()); }

void TContas::conferirOperacao(const QString &operacao, int id)
{
    if (operacao != "Excluir") return;
    db::Transacao t(Tabs->DbORB());
    conferirExclusaoConta(t, id, quem());
}

void TContas::BtQuitarClick()
{
    Tabs->Deb("procedure TContas.BtQuitarClick(Sender: TObject)");
    const int id = idAtual();
    if (estado() != Estado::Navegando || !id || !permitido("Quitar")) return;
    db::Decimal aberto;
    QString doc;
    {
        db::Transacao t(Tabs->DbORB());
        try {
            conferirQuitacao(t, id, quem());
        } catch (const Recusa &r) {
            Atencao(r.texto);
            return;
        }
        aberto = db::escalar(t, "Select NaoQuitado From TbContas Where Id = :ID", {{"ID", id}}).value<db::Decimal>();
        doc = db::escalar(t, "Select TipoDoc From TbContas Where Id = :ID", {{"ID", id}}).toString();
    }
    TDataRectoContasReceber d(tipo_ == "D" ? "Pagamento" : "Recebimento", aberto, doc, [&](const Pagamento &p) {
        return naTransacao([&](db::Transacao &t) { quitarConta(t, id, p, quem()); }) == Desfecho::Feito;
    }, this);
    if (respostaDialogo()) respostaDialogo()(d);
    else d.exec();
    if (d.result() == QDialog::Accepted) {
        informarMonitor(id, "QUITAÇÃO");
        recarregar(id);
        atualizarGrafico();
    }
}

void TContas::BtEstornarCRClick()
{
    Tabs->Deb("procedure TContas.BtEstornarCRClick(Sender: TObject)");
    const int id = idAtual();
    if (estado() != Estado::Navegando || !id || !permitido("Estornar")) return;
    {
        db::Transacao t(Tabs->DbORB());
        try {
            conferirEstorno(t, id, quem());
        } catch (const Recusa &r) {
            Atencao(r.texto);
            return;
        }
    }
    if (!Pergunta(tipo_ == "D" ? "Deseja realmente estornar este pagamento?" : "Deseja realmente estornar este recebimento?")) return;
    if (naTransacao([&](db::Transacao &t) { estornarConta(t, id, quem()); }) == Desfecho::Feito) {
        informarMonitor(id, tipo_ == "D" ? "Conta a Pagar Estornada" : "Conta a Receber Estornada");
        recarregar(id);
        atualizarGrafico();
    }
}

void TContas::atualizarGrafico()
{
    try {
        db::Transacao t(Tabs->DbORB(), db::Modo::Leitura);
        grafico_->mostrar(totaisPorDia(t, QDate::currentDate(), 30));
    } catch (const db::ErroBanco &) {
        // Only a view: the list stays usable without it.
    }
}

} // namespace orb
