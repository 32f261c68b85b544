#include "TLeituras86.h"

#include "TecladoNumerico.h"

#include "Recusa.h"
#include "dados/Tabs.h"
#include "ui/Campos.h"
#include "ui/Mensagens.h"

#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRegularExpressionValidator>
#include <QScroller>
#include <QTableView>
#include <QTouchEvent>
#include <QVBoxLayout>

namespace orb {

namespace {

const QStringList kEntradas = {"LEEI", "LEEF", "DIFEE"};
const QStringList kSaidas = {"LESI", "LESF", "DIFES"};
const QStringList kBotoes = {"Incluir", "Alterar", "Salvar", "Cancelar", "Excluir", "Imprimir", "Fechar",
                             "Primeiro", "Anterior", "Proximo", "Ultimo"};
constexpr int kArrasto = 80;   // pixels a finger travels for a swipe
constexpr int kToque = 16;     // at most this far, a tap

// Large targets for fingers, calm colours; the counters look like the machines' own displays.
const char *kEstilo = R"(
    QPushButton { min-height: 44px; min-width: 64px; font-size: 15px; padding: 0 10px; }
    QComboBox, QLineEdit { min-height: 40px; font-size: 16px; }
    QLabel, QTableView, QHeaderView { font-size: 15px; }
    QLabel[papel="copiado"] { font-weight: bold; }
    QLabel[papel="dinheiro"] { font-size: 24px; font-weight: bold; qproperty-alignment: AlignRight; }
    QLineEdit[papel="contador"] { background: #1d2420; color: #8fe36a; border: 2px solid #56644f; border-radius: 6px;
                                  padding: 2px 8px; min-height: 56px; }
    QLineEdit[papel="contador"]:disabled { color: #6fae55; }
    QLineEdit[papel="contador"]:focus { border-color: #e0b040; }
)";

qint64 numero(const QLineEdit *e) { return e->text().trimmed().toLongLong(); }

db::Decimal decimalDe(const QVariant &x)
{
    if (x.metaType() == QMetaType::fromType<db::Decimal>()) return x.value<db::Decimal>();
    return db::Decimal::ler(x.toString()).value_or(db::Decimal());
}

QVariant de(const Valores &v, const QString &k)
{
    auto it = v.find(k);
    return it == v.end() ? QVariant() : it->second;
}

void encher(QComboBox *c, const QString &sql, const QString &todos)
{
    const QVariant atual = c->currentData();
    const QSignalBlocker b(c);
    c->clear();
    if (!todos.isEmpty()) c->addItem(todos, 0);
    db::Transacao t(Tabs->DbORB(), db::Modo::Leitura);
    db::Consulta q(t, sql);
    q.executar();
    while (q.proxima()) c->addItem(q.valor(1).toString(), q.valor(0));
    c->setCurrentIndex(todos.isEmpty() ? c->findData(atual) : std::max(0, c->findData(atual)));
}

} // namespace

TLeituras86::TLeituras86(QWidget *parent) : FormCadastro("TLeituras86", "Leituras", "TrLeituras", parent)
{
    definirMenu("&Máquinas", "TLeituras86");
    setStyleSheet(kEstilo);
    montarBarra();
    montarFiltros();
    adicionarLinha(QString(), montarLeitura());
    grade()->verticalHeader()->setDefaultSectionSize(44);
    QScroller::grabGesture(grade()->viewport(), QScroller::TouchGesture);  // a finger scrolls the list
    preencherListas();
    definirConsulta(QString(), declaracaoLeituras().colunas);
    estadoMudou();
}

void TLeituras86::montarBarra()
{
    // The standard buttons move into a bar that folds away, leaving the room to the readings.
    barra_ = new QFrame(this);
    barra_->setObjectName("BarraAplicativo");
    auto *l = new QHBoxLayout(barra_);
    l->setContentsMargins(0, 0, 0, 0);
    btBarra_ = new QPushButton(QStringLiteral("☰"), barra_);
    btBarra_->setObjectName("BtBarra");
    btBarra_->setToolTip(QStringLiteral("Recolher ou mostrar a barra"));
    btBarra_->setFocusPolicy(Qt::NoFocus);
    btBarra_->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    connect(btBarra_, &QPushButton::clicked, this, &TLeituras86::BtBarraClick);
    l->addWidget(btBarra_);
    auto *lb = new QHBoxLayout;
    auto *antiga = static_cast<QBoxLayout *>(layout()->itemAt(0)->layout());
    for (const QString &n : kBotoes) {
        QPushButton *b = botao(n);
        antiga->removeWidget(b);
        if (n == "Primeiro") lb->addSpacing(16);
        if (n == "Primeiro" || n == "Anterior" || n == "Proximo" || n == "Ultimo") b->setFixedWidth(64);
        lb->addWidget(b);
    }
    lb->addStretch();
    l->addLayout(lb, 1);
    static_cast<QVBoxLayout *>(layout())->insertWidget(0, barra_);
}

void TLeituras86::montarFiltros()
{
    filtros_ = new QWidget(this);
    filtros_->setObjectName("Filtros");
    auto *l = new QHBoxLayout(filtros_);
    l->setContentsMargins(0, 0, 0, 0);
    de_ = new CampoData(CampoData::Data, filtros_);
    de_->setObjectName("EdDe");
    ate_ = new CampoData(CampoData::Data, filtros_);
    ate_->setObjectName("EdAte");
    fMaquina_ = new QComboBox(filtros_);
    fMaquina_->setObjectName("CbFiltroMaquina");
    fOperador_ = new QComboBox(filtros_);
    fOperador_->setObjectName("CbFiltroOperador");
    fRota_ = new QComboBox(filtros_);
    fRota_->setObjectName("CbFiltroRota");
    for (QWidget *w : {static_cast<QWidget *>(de_), static_cast<QWidget *>(ate_)}) w->setMaximumWidth(150);
    l->addWidget(new QLabel(QStringLiteral("De"), filtros_));
    l->addWidget(de_);
    l->addWidget(new QLabel(QStringLiteral("Até"), filtros_));
    l->addWidget(ate_);
    l->addWidget(new QLabel(QStringLiteral("Máquina"), filtros_));
    l->addWidget(fMaquina_, 1);
    l->addWidget(new QLabel(QStringLiteral("Operador"), filtros_));
    l->addWidget(fOperador_, 2);
    l->addWidget(new QLabel(QStringLiteral("Rota"), filtros_));
    l->addWidget(fRota_, 2);
    auto *bt = new QPushButton(QStringLiteral("Filtrar"), filtros_);
    bt->setObjectName("BtFiltrar");
    connect(bt, &QPushButton::clicked, this, &TLeituras86::BtFiltrarClick);
    l->addWidget(bt);
    // A choice filters at once: one touch, no second button.
    for (QComboBox *c : {fMaquina_, fOperador_, fRota_})
        connect(c, &QComboBox::activated, this, &TLeituras86::BtFiltrarClick);
    static_cast<QVBoxLayout *>(layout())->insertWidget(1, filtros_);
}

QWidget *TLeituras86::montarLeitura()
{
    painel_ = new QWidget(this);
    painel_->setObjectName("PainelLeitura");
    painel_->setAttribute(Qt::WA_AcceptTouchEvents);
    painel_->installEventFilter(this);
    auto *g = new QGridLayout(painel_);
    g->setContentsMargins(4, 4, 4, 4);

    // Machine, date and who read it.
    auto *topo = new QHBoxLayout;
    selo_ = new QComboBox(painel_);
    selo_->setEditable(true);
    selo_->setInsertPolicy(QComboBox::NoInsert);
    selo_->setMinimumWidth(180);
    data_ = new CampoData(CampoData::Data, painel_);
    data_->setMaximumWidth(150);
    operador_ = new QComboBox(painel_);
    operador_->setMinimumWidth(220);
    topo->addWidget(new QLabel(QStringLiteral("Selo"), painel_));
    topo->addWidget(selo_);
    topo->addWidget(new QLabel(QStringLiteral("Data"), painel_));
    topo->addWidget(data_);
    topo->addWidget(new QLabel(QStringLiteral("Operador"), painel_));
    topo->addWidget(operador_, 1);
    registrarCampo("IDMAQ", selo_);
    registrarCampo("DATA", data_);
    registrarCampo("IDOPERL", operador_);
    connect(selo_, &QComboBox::activated, this, &TLeituras86::EdSeloExit);
    connect(selo_->lineEdit(), &QLineEdit::editingFinished, this, &TLeituras86::EdSeloExit);
    g->addLayout(topo, 0, 0, 1, 2);

    // What the machine gave the reading.
    auto *info = new QHBoxLayout;
    const std::pair<const char *, const char *> copiados[] = {{"Z_PONTO", "Ponto"}, {"Z_ROTA", "Rota"},
                                                              {"Z_AREA", "Área"}, {"Z_OPER", "Op. da máquina"},
                                                              {"PERCCOMPONTO", "% Ponto"}, {"PERCCOMOPER", "% Operador"}};
    for (const auto &[col, rot] : copiados) {
        info->addWidget(new QLabel(QString::fromUtf8(rot) + ":", painel_));
        auto *v = new QLabel(painel_);
        v->setObjectName(QString("Lb") + col);
        v->setProperty("papel", "copiado");
        info->addWidget(v);
        info->addSpacing(10);
        copiadosRotulos_.insert(col, v);
    }
    info->addStretch();
    g->addLayout(info, 1, 0, 1, 2);

    // The counters: initial, final and difference, for coins in and coins out.
    auto triplo = [this](const QString &titulo, const QStringList &campos) {
        auto *caixa = new QGroupBox(titulo, painel_);
        auto *l = new QGridLayout(caixa);
        const char *rotulos[] = {"Inicial", "Final", "Diferença"};
        for (int i = 0; i < 3; ++i) {
            l->addWidget(new QLabel(QString::fromUtf8(rotulos[i]), caixa), 0, i);
            auto *e = new QLineEdit(caixa);
            e->setProperty("papel", "contador");
            e->setFont(fonteContador(30));
            e->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
            e->setValidator(new QRegularExpressionValidator(QRegularExpression("-?\\d{0,10}"), e));
            e->setMinimumWidth(150);
            const QString campo = campos[i];
            registrarCampo(campo, e);
            connect(e, &QLineEdit::editingFinished, this, [this, campo] { EdContadorExit(campo); });
            l->addWidget(e, 1, i);
            contadores_.insert(campo, e);
        }
        return caixa;
    };
    g->addWidget(triplo(QStringLiteral("Entradas"), kEntradas), 2, 0);
    g->addWidget(triplo(QStringLiteral("Saídas"), kSaidas), 2, 1);

    // The takings and their split, as they will be saved.
    auto *dinheiro = new QGroupBox(QStringLiteral("Valores"), painel_);
    auto *ld = new QGridLayout(dinheiro);
    const std::pair<const char *, const char *> valores[] = {{"HPMOEDAS", "Moedas"},  {"HPTOTAL", "Total"},
                                                             {"COMPONTO", "Ponto"},   {"ARECEBER", "A receber"},
                                                             {"COMOPER", "Operador"}, {"LIQUIDO", "Líquido"}};
    int i = 0;
    for (const auto &[col, rot] : valores) {
        ld->addWidget(new QLabel(QString::fromUtf8(rot), dinheiro), 0, i);
        auto *v = new QLabel(dinheiro);
        v->setObjectName(QString("Lb") + col);
        v->setProperty("papel", "dinheiro");
        ld->addWidget(v, 1, i++);
        valores_.insert(col, v);
    }
    g->addWidget(dinheiro, 3, 0, 1, 2);
    return painel_;
}

void TLeituras86::preencherListas()
{
    encher(fMaquina_, "Select Id, Selo From TBFL_MAQ Order By Selo", QStringLiteral("(todas)"));
    encher(fOperador_, "Select Id, Nome From TBFL_OPER Order By Nome", QStringLiteral("(todos)"));
    encher(fRota_, "Select Id, Rota From TBFL_ROTAS Order By Rota", QStringLiteral("(todas)"));
    encher(selo_, "Select Id, Selo From TBFL_MAQ Order By Selo", {});
    encher(operador_, "Select Id, Nome From TBFL_OPER Order By Nome", {});
}

QLineEdit *TLeituras86::contador(const QString &campo) const { return contadores_.value(campo); }
QLabel *TLeituras86::valor(const QString &coluna) const { return valores_.value(coluna); }

// ------------------------------------------------------------------ the reading

void TLeituras86::limpar()
{
    copiados_.clear();
    if (estado() == Estado::Incluindo) preencherListas();  // machines and operators registered meanwhile
    selo_->setCurrentIndex(-1);
    selo_->setEditText(QString());
    data_->definir(estado() == Estado::Incluindo ? QVariant(QDate::currentDate()) : QVariant());
    operador_->setCurrentIndex(-1);
    for (QLineEdit *e : std::as_const(contadores_)) e->clear();
    mostrarCopiados();
    mostrarValores();
}

void TLeituras86::carregar(db::Transacao &t, int id)
{
    db::Consulta q(t, sqlLeitura());
    q.bind("LEITURA", id);
    q.executar();
    copiados_.clear();
    if (!q.proxima()) return limpar();
    for (const char *c : {"IDMAQ", "Z_MAQ", "IDPONTO", "Z_PONTO", "IDOPER", "Z_OPER", "IDOPERL", "IDROTA", "Z_ROTA",
                          "IDAREA", "Z_AREA", "PERCCOMPONTO", "PERCCOMOPER"})
        copiados_[c] = q[c];
    copiados_["MOEDA"] = q["Z_MOEDA"];
    selo_->setEditText(q["Z_MAQ"].toString());
    data_->definir(q["DATA"]);
    operador_->setCurrentIndex(operador_->findData(q["IDOPERL"]));
    for (auto it = contadores_.begin(); it != contadores_.end(); ++it)
        it.value()->setText(q[it.key()].isNull() ? QString() : q[it.key()].toString());
    mostrarCopiados();
    mostrarValores();
}

void TLeituras86::escolherMaquina(int idMaq)
{
    {
        db::Transacao t(Tabs->DbORB(), db::Modo::Leitura);
        copiados_ = dadosDaMaquina(t, idMaq);
    }
    const QSignalBlocker b(selo_);
    selo_->setCurrentIndex(selo_->findData(idMaq));
    selo_->setEditText(de(copiados_, "Z_MAQ").toString());
    operador_->setCurrentIndex(operador_->findData(de(copiados_, "IDOPERL")));
    calculando_ = true;
    for (QLineEdit *e : std::as_const(contadores_)) e->clear();
    if (!copiados_.empty()) {
        contadores_["LEEI"]->setText(de(copiados_, "LEEI").toString());
        contadores_["LESI"]->setText(de(copiados_, "LESI").toString());
    }
    calculando_ = false;
    mostrarCopiados();
    mostrarValores();
}

void TLeituras86::EdSeloExit()
{
    if (estado() == Estado::Navegando || calculando_) return;
    Tabs->Deb("procedure TLeituras86.EdSeloExit(Sender: TObject)");
    const QString texto = selo_->currentText().trimmed();
    if (texto == de(copiados_, "Z_MAQ").toString() && !copiados_.empty()) return;  // the same machine: nothing restarts
    if (texto.isEmpty()) {
        copiados_.clear();
        mostrarCopiados();
        mostrarValores();
        return;
    }
    int id = 0;
    {
        db::Transacao t(Tabs->DbORB(), db::Modo::Leitura);
        id = maquinaDoSelo(t, texto);
    }
    if (!id) {
        Atencao(kSeloDesconhecido);
        marcarFalha(selo_);
        return;
    }
    escolherMaquina(id);
}

void TLeituras86::EdContadorExit(const QString &campo)
{
    if (estado() == Estado::Navegando || calculando_) return;
    Tabs->Deb("procedure TLeituras86.Ed" + campo + "Exit(Sender: TObject)");
    const QStringList &grupo = kEntradas.contains(campo) ? kEntradas : kSaidas;
    QLineEdit *ini = contadores_[grupo[0]], *fim = contadores_[grupo[1]], *dif = contadores_[grupo[2]];
    const Triplo r = recalcular({numero(ini), numero(fim), numero(dif)},
                                campo.startsWith("DIF") ? Editado::Diferenca : Editado::InicialOuFinal);
    // The writes below would leave the fields again: their exit handlers stay out until done.
    calculando_ = true;
    {
        const QSignalBlocker a(ini), b(fim), c(dif);
        ini->setText(QString::number(r.inicial));
        fim->setText(QString::number(r.final));
        dif->setText(QString::number(r.diferenca));
    }
    calculando_ = false;
    mostrarValores();
}

void TLeituras86::mostrarCopiados()
{
    for (auto it = copiadosRotulos_.begin(); it != copiadosRotulos_.end(); ++it) {
        const QVariant v = de(copiados_, it.key());
        it.value()->setText(it.key().startsWith("PERC") ? (v.isNull() ? QString() : decimalDe(v).textoBR(2) + "%")
                                                        : v.toString());
    }
}

void TLeituras86::mostrarValores()
{
    const Rateio r = ratear(numero(contadores_["DIFEE"]), numero(contadores_["DIFES"]), decimalDe(de(copiados_, "MOEDA")),
                            decimalDe(de(copiados_, "PERCCOMPONTO")), decimalDe(de(copiados_, "PERCCOMOPER")));
    valores_["HPMOEDAS"]->setText(QLocale(QLocale::Portuguese, QLocale::Brazil).toString(r.moedas));
    valores_["HPTOTAL"]->setText(r.total.textoBR());
    valores_["COMPONTO"]->setText(r.comPonto.textoBR());
    valores_["ARECEBER"]->setText(r.aReceber.textoBR());
    valores_["COMOPER"]->setText(r.comOper.textoBR());
    valores_["LIQUIDO"]->setText(r.liquido.textoBR());
}

int TLeituras86::gravar(db::Transacao &t, int id)
{
    // Salvar by key leaves no field: the seal or counter being typed counts as left.
    if (QWidget *e = focusWidget(); e && e->property("papel") == "contador") EdContadorExit(e->objectName());
    if (selo_->currentText().trimmed() != de(copiados_, "Z_MAQ").toString()) EdSeloExit();
    Valores v;
    for (const auto &[k, x] : copiados_)
        if (!k.startsWith("Z_") && k != "MOEDA") v[k] = x;
    v["DATA"] = data_->valor("DATA");
    v["IDOPERL"] = operador_->currentIndex() >= 0 ? operador_->currentData() : QVariant();
    for (auto it = contadores_.begin(); it != contadores_.end(); ++it)
        v[it.key()] = it.value()->text().trimmed().isEmpty() ? QVariant() : QVariant(numero(it.value()));
    const int novo = salvarLeitura(t, id, v, QDateTime::currentDateTime(), quem());
    if (!id) Tabs->Deb("Nova Leitura (" + QString::number(novo) + ")");
    return novo;
}

void TLeituras86::apagar(db::Transacao &t, int id)
{
    excluirLeitura(t, id, quem());
    Tabs->Deb("Leitura Excluída (" + QString::number(id) + ")");
}

// ------------------------------------------------------------------ list and filters

bool TLeituras86::montarBusca(const QString &, const QString &, Busca, QString &sql, std::map<QString, QVariant> &p)
{
    sql = sqlLeituras(filtro_, p);
    return true;
}

void TLeituras86::BtFiltrarClick()
{
    Tabs->Deb("procedure TLeituras86.BtFiltrarClick(Sender: TObject)");
    if (estado() != Estado::Navegando) return;
    try {
        filtro_.de = de_->valor("De").toDate();
        filtro_.ate = ate_->valor("Até").toDate();
    } catch (const Recusa &r) {
        Atencao(r.texto);
        return;
    }
    filtro_.idMaq = fMaquina_->currentData().toInt();
    filtro_.idOper = fOperador_->currentData().toInt();
    filtro_.idRota = fRota_->currentData().toInt();
    pesquisar();
}

void TLeituras86::definirFiltroMaquina(int id) { fMaquina_->setCurrentIndex(std::max(0, fMaquina_->findData(id))); }
void TLeituras86::definirFiltroOperador(int id) { fOperador_->setCurrentIndex(std::max(0, fOperador_->findData(id))); }
void TLeituras86::definirFiltroRota(int id) { fRota_->setCurrentIndex(std::max(0, fRota_->findData(id))); }

void TLeituras86::BtBarraClick()
{
    Tabs->Deb("procedure TLeituras86.BtBarraClick(Sender: TObject)");
    recolhida_ = !recolhida_;
    btBarra_->setText(recolhida_ ? QStringLiteral("☰  Mostrar botões e filtros") : QStringLiteral("☰"));
    mostrarBarra();
}

void TLeituras86::mostrarBarra()
{
    // Folded, the bar keeps only what ends the reading being typed: Salvar and Cancelar.
    const bool editando = estado() != Estado::Navegando;
    filtros_->setVisible(!recolhida_);
    for (const QString &n : kBotoes) botao(n)->setVisible(!recolhida_ || (editando && (n == "Salvar" || n == "Cancelar")));
}

void TLeituras86::estadoMudou()
{
    const bool navegando = estado() == Estado::Navegando;
    filtros_->setEnabled(navegando);
    mostrarBarra();
    // Counters answer a finger while the reading is being typed; otherwise the panel takes the swipe.
    for (QLineEdit *e : std::as_const(contadores_)) e->setAttribute(Qt::WA_AcceptTouchEvents, !navegando);
}

// ------------------------------------------------------------------ touch

void TLeituras86::abrirTeclado(const QString &campo)
{
    Tabs->Deb("procedure TLeituras86.AbrirTeclado(Sender: TObject)");
    if (teclado_) teclado_->close();
    QLineEdit *e = contadores_[campo];
    const QString titulo = (kEntradas.contains(campo) ? QStringLiteral("Entradas - ") : QStringLiteral("Saídas - "))
                           + (campo.startsWith("DIF") ? QStringLiteral("Diferença")
                                                      : campo.endsWith('I') ? QStringLiteral("Inicial") : QStringLiteral("Final"));
    teclado_ = new TecladoNumerico(titulo, e->text(), this);
    teclado_->setAttribute(Qt::WA_DeleteOnClose);
    connect(teclado_, &QDialog::accepted, this, [this, campo, t = teclado_] {
        if (estado() == Estado::Navegando) return;
        contadores_[campo]->setText(t->texto());
        EdContadorExit(campo);
    });
    teclado_->open();
}

bool TLeituras86::gesto(QWidget *w, QEvent *e)
{
    const auto tipo = e->type();
    if (tipo != QEvent::TouchBegin && tipo != QEvent::TouchUpdate && tipo != QEvent::TouchEnd) return false;
    auto *toque = static_cast<QTouchEvent *>(e);
    if (toque->points().isEmpty()) return false;
    const QPointF aqui = toque->points().first().globalPosition();
    if (tipo == QEvent::TouchBegin) inicioToque_ = aqui;
    e->accept();
    if (tipo != QEvent::TouchEnd) return true;
    const QPointF d = aqui - inicioToque_;
    if (w != painel_) {  // a counter
        if (d.manhattanLength() <= kToque && estado() != Estado::Navegando) abrirTeclado(w->objectName());
        return true;
    }
    // Leftwards to the next reading (older, further down the list), rightwards back.
    if (std::abs(d.x()) >= kArrasto && std::abs(d.x()) > 2 * std::abs(d.y()))
        navegar(d.x() < 0 ? 1 : -1);
    return true;
}

bool TLeituras86::eventFilter(QObject *o, QEvent *e)
{
    if (auto *w = qobject_cast<QWidget *>(o); w && (w == painel_ || w->property("papel") == "contador"))
        if (gesto(w, e)) return true;
    return FormCadastro::eventFilter(o, e);
}

} // namespace orb
