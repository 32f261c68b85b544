#include "ui/FormCadastro.h"

#include "dados/Avisos.h"

#include "acesso/Acesso.h"
#include "dados/Monitor.h"
#include "dados/Tabs.h"
#include "ui/Impressao.h"
#include "ui/Cores.h"
#include "ui/Mensagens.h"
#include "ui/TratadorErros.h"
#include "Recusa.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QPlainTextEdit>
#include <QFormLayout>
#include <QLineEdit>
#include <QRegularExpression>
#include <QTimer>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QPointer>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QShortcut>
#include <QGroupBox>
#include <QSplitter>
#include <QStackedWidget>
#include <QTabWidget>
#include <QTableView>
#include <QVBoxLayout>

namespace orb {

namespace {

// The peach of a refused field gives way to the application's own colours (an empty palette set
// on the widget would keep what it had).
void semCorFalha(QWidget *w)
{
    const QPalette padrao = QApplication::palette(w);
    QPalette p = w->palette();
    p.setColor(QPalette::Base, padrao.color(QPalette::Base));
    p.setColor(QPalette::Button, padrao.color(QPalette::Button));
    w->setPalette(p);
}

} // namespace


void prepararGrade(QTableView *g)
{
    g->setSelectionBehavior(QAbstractItemView::SelectRows);
    g->setSelectionMode(QAbstractItemView::SingleSelection);
    g->setEditTriggers(QAbstractItemView::NoEditTriggers);
    g->verticalHeader()->hide();
    g->horizontalHeader()->setStretchLastSection(true);
    g->setWordWrap(false);  // one line per record; long texts are cut short with "..."
}

FormCadastro::FormCadastro(const QString &classe, const QString &titulo, const QString &area, QWidget *parent)
    : QWidget(parent), classe_(classe), titulo_(titulo), area_(area)
{
    setObjectName(classe);
    setWindowTitle(titulo);
    auto *layout = new QVBoxLayout(this);

    auto *barra = new QHBoxLayout;
    struct B { const char *nome, *texto, *tecla; void (FormCadastro::*h)(); };
    const B defs[] = {{"Incluir", "Incluir (F2)", "F2", &FormCadastro::BtIncluirClick},
                      {"Alterar", "Alterar (F3)", "F3", &FormCadastro::BtAlterarClick},
                      {"Salvar", "Salvar (F10)", "F10", &FormCadastro::BtSalvarClick},
                      {"Cancelar", "Cancelar (Esc)", nullptr, &FormCadastro::BtCancelarClick},
                      {"Excluir", "Excluir (F5)", "F5", &FormCadastro::BtExcluirClick},
                      {"Imprimir", "Imprimir (F6)", "F6", &FormCadastro::BtImprimirClick},
                      {"Fechar", "Fechar", nullptr, &FormCadastro::BtFecharClick}};
    for (const B &d : defs) {
        auto *b = new QPushButton(QString::fromUtf8(d.texto), this);
        b->setObjectName(QString("Bt") + d.nome);
        b->setFocusPolicy(Qt::TabFocus);
        b->setAutoDefault(true);  // Enter presses the button that has the focus
        connect(b, &QPushButton::clicked, this, d.h);
        if (d.tecla) {
            auto *s = new QShortcut(QKeySequence(d.tecla), this, nullptr, nullptr, Qt::WidgetWithChildrenShortcut);
            connect(s, &QShortcut::activated, b, [b] { if (b->isEnabled()) b->click(); });
        }
        barra->addWidget(b);
        botoes_.insert(d.nome, b);
    }
    // The navigator: first, previous, next and last record of the grid.
    const std::pair<const char *, int> nav[] = {{"Primeiro", -2}, {"Anterior", -1}, {"Proximo", 1}, {"Ultimo", 2}};
    const char *setas[] = {"|◀", "◀", "▶", "▶|"};
    barra->addSpacing(12);
    for (int k = 0; k < 4; ++k) {
        auto *b = new QPushButton(QString::fromUtf8(setas[k]), this);
        b->setObjectName(QString("Bt") + nav[k].first);
        b->setFocusPolicy(Qt::TabFocus);
        b->setFixedWidth(36);
        const int passo = nav[k].second;
        connect(b, &QPushButton::clicked, this, [this, passo] { navegar(passo); });
        barra->addWidget(b);
        botoes_.insert(nav[k].first, b);
    }
    barra->addStretch();
    layout->addLayout(barra);
    // Esc cancels an edit, or closes the form while browsing.
    auto *esc = new QShortcut(QKeySequence(Qt::Key_Escape), this, nullptr, nullptr, Qt::WidgetWithChildrenShortcut);
    connect(esc, &QShortcut::activated, this, [this] { estado_ == Estado::Navegando ? BtFecharClick() : BtCancelarClick(); });
    auto *ctrlEnter = new QShortcut(QKeySequence(Qt::CTRL | Qt::Key_Return), this, nullptr, nullptr, Qt::WidgetWithChildrenShortcut);
    connect(ctrlEnter, &QShortcut::activated, this, [this] { if (estado_ != Estado::Navegando) BtSalvarClick(); });

    // The search line: order and incremental search over the grid.
    auto *linha = new QHBoxLayout;
    ordem_ = new QComboBox(this);
    ordem_->setObjectName("CbOrdem");
    busca_ = new QLineEdit(this);
    busca_->setObjectName("EdBusca");
    busca_->setPlaceholderText("Pesquisar...");
    busca_->setClearButtonEnabled(true);
    auto *rotuloOrdem = new QLabel("Ordem:", this);
    rotuloOrdem->setObjectName("LbOrdem");
    linha->addWidget(rotuloOrdem);
    linha->addWidget(ordem_);
    linha->addWidget(busca_, 1);
    layout->addLayout(linha);
    auto *espera = new QTimer(this);
    espera->setSingleShot(true);
    espera->setInterval(150);
    connect(busca_, &QLineEdit::textChanged, espera, [this, espera] {
        modoBusca_ = Busca::Inicio;
        espera->start();
    });
    connect(espera, &QTimer::timeout, this, &FormCadastro::pesquisar);
    connect(ordem_, &QComboBox::currentIndexChanged, this, [this] {
        mascararBusca();
        pesquisar();
    });
    // Enter: the text anywhere in the order's column, and the grid takes the keyboard.
    connect(busca_, &QLineEdit::returnPressed, this, [this, espera] {
        espera->stop();
        modoBusca_ = Busca::Trecho;
        if (!busca_->text().trimmed().isEmpty()) pesquisar();
        grade_->setFocus();
    });

    corpo_ = new QVBoxLayout;
    layout->addLayout(corpo_, 1);
    modelo_ = new ModeloConsulta(Tabs->DbORB(), this);
    grade_ = new QTableView(this);
    grade_->setModel(modelo_);
    prepararGrade(grade_);
    grade_->setAlternatingRowColors(true);
    grade_->verticalHeader()->setDefaultSectionSize(grade_->fontMetrics().height() + 8);
    grade_->setMinimumHeight(140);
    connect(grade_, &QTableView::doubleClicked, this, [this] { BtAlterarClick(); });
    // Grid, edit area and details share the height; the user may move the dividers.
    divisor_ = new QSplitter(Qt::Vertical, this);
    divisor_->setChildrenCollapsible(false);
    corpo_->addWidget(divisor_, 1);
    divisor_->addWidget(grade_);
    connect(grade_->selectionModel(), &QItemSelectionModel::currentRowChanged, this, [this] { mostrarRegistro(); });

    areaEdicao_ = new QWidget(this);
    areaEdicao_->setMaximumWidth(1100);  // long lines of fields are hard to read
    form_ = new QFormLayout(areaEdicao_);
    auto *rolagem = new QScrollArea(this);
    rolagem->setWidget(areaEdicao_);
    rolagem->setWidgetResizable(true);
    rolagem->setFrameShape(QFrame::NoFrame);
    divisor_->addWidget(rolagem);
    divisor_->setStretchFactor(0, 2);
    divisor_->setStretchFactor(1, 3);
    divisor_->setSizes({250, 350});

    status_ = new QLabel(this);
    status_->setObjectName("LbStatus");
    layout->addWidget(status_);
    habilitarEdicao(false);
    // The grid's cursor died with the old attachment: read the list again on the new one.
    connect(Tabs, &TTabs::reconectado, this, [this] {
        if (estado_ == Estado::Navegando) recarregar(idAtual());
    });
}

FormCadastro::~FormCadastro()
{
    if (Tabs && Tabs->conectado() && Tabs->Tr(area_).ativa()) Tabs->Tr(area_).rollback();
}

QPushButton *FormCadastro::botao(const QString &nome) const { return botoes_.value(nome); }

void FormCadastro::definirConsulta(const QString &sql, const QList<QPair<QString, QString>> &colunas,
                                   const QList<QPair<QString, QString>> &ordens)
{
    sqlBase_ = sql;
    ordens_ = ordens;
    const QSignalBlocker b(ordem_);
    for (const auto &o : ordens) ordem_->addItem(o.first, o.second);
    ordem_->setVisible(!ordens.isEmpty());
    findChild<QLabel *>("LbOrdem", Qt::FindDirectChildrenOnly)->setVisible(!ordens.isEmpty());
    busca_->setVisible(!ordens.isEmpty());
    mascararBusca();
    modelo_->definirColunas(colunas);
    pesquisar();
}

QWidget *FormCadastro::paginaEdicao(const QString &aba)
{
    if (!abasEdicao_) {
        abasEdicao_ = new QTabWidget(areaEdicao_);
        abasEdicao_->setObjectName("PcEdicao");
        form_->addRow(abasEdicao_);
    }
    if (paginas_.contains(aba)) return paginas_[aba]->parentWidget();
    const int barra = int(aba.indexOf('|'));
    if (barra < 0) {
        auto *p = new QWidget;
        paginas_.insert(aba, new QFormLayout(p));
        abasEdicao_->addTab(p, aba);
        return p;
    }
    // "Page|Group": groups of fields side by side on one page (wholesale beside retail, ...).
    const QString nome = aba.left(barra);
    QWidget *pagina = paginasAgrupadas_.value(nome);
    if (!pagina) {
        pagina = new QWidget;
        new QHBoxLayout(pagina);
        abasEdicao_->addTab(pagina, nome);
        paginasAgrupadas_.insert(nome, pagina);
    }
    auto *grupo = new QGroupBox(aba.mid(barra + 1), pagina);
    paginas_.insert(aba, new QFormLayout(grupo));
    static_cast<QHBoxLayout *>(pagina->layout())->addWidget(grupo, 0, Qt::AlignTop);
    return grupo;
}

void FormCadastro::navegar(int passo)
{
    if (estado_ != Estado::Navegando) return;
    if (passo == 2)
        while (modelo_->canFetchMore({})) modelo_->fetchMore({});
    const int n = modelo_->rowCount();
    if (!n) return;
    const int atual = std::max(0, grade_->currentIndex().row());
    const int alvo = passo == -2 ? 0 : passo == 2 ? n - 1 : std::clamp(atual + passo, 0, n - 1);
    grade_->selectRow(alvo);
}

void FormCadastro::focarPrimeiro()
{
    // The first field still empty, of any kind (a code or defaults may be filled already), else the first one.
    auto vazio = [](QWidget *w) {
        if (auto *e = qobject_cast<QLineEdit *>(w)) return e->text().isEmpty();
        if (auto *c = qobject_cast<QComboBox *>(w)) return c->currentIndex() < 0 || c->currentData().isNull();
        if (auto *m = qobject_cast<QPlainTextEdit *>(w)) return m->toPlainText().isEmpty();
        return false;
    };
    QWidget *alvo = nullptr;
    for (QWidget *w : std::as_const(ordemCampos_)) {
        if (!w->isEnabled()) continue;
        if (!alvo) alvo = w;
        if (vazio(w)) {
            alvo = w;
            break;
        }
    }
    if (alvo) focarCampo(alvo);
}

void FormCadastro::adicionarPainel(QWidget *w, int proporcao)
{
    divisor_->addWidget(w);
    divisor_->setStretchFactor(divisor_->count() - 1, proporcao);
    paineis_ << w;
    divisor_->setSizes({220, 330, 220});
}

void FormCadastro::registrarCampo(const QString &nome, QWidget *w)
{
    w->setObjectName(nome);
    campos_.insert(nome, w);
    ordemCampos_ << w;
    w->installEventFilter(this);
}

void FormCadastro::adicionarLinha(const QString &rotulo, QWidget *w, const QString &aba)
{
    if (aba.isEmpty()) {
        form_->addRow(rotulo, w);
    } else {
        paginaEdicao(aba);
        paginas_[aba]->addRow(rotulo, w);
    }
}

void FormCadastro::adicionarCampos(const QString &rotulo, const QList<CampoNaLinha> &campos)
{
    auto *w = new QWidget(this);
    auto *h = new QHBoxLayout(w);
    h->setContentsMargins(0, 0, 0, 0);
    for (const auto &[nome, legenda, campo, esticar] : campos) {
        if (campo != std::get<2>(campos.first())) h->addWidget(new QLabel(legenda, w));
        h->addWidget(campo, esticar);
        registrarCampo(nome, campo);
    }
    adicionarLinha(rotulo, w);
}

void FormCadastro::adicionarCampo(const QString &nome, const QString &rotulo, QWidget *w, const QString &aba)
{
    registrarCampo(nome, w);
    adicionarLinha(rotulo, w, aba);
}

void FormCadastro::ajustarColunas()
{
    if (colunasAjustadas_ || modelo_->rowCount() == 0) return;
    // Widths from the first rows read, once, so that later searches do not make the grid jump.
    colunasAjustadas_ = true;
    grade_->horizontalHeader()->setStretchLastSection(false);
    grade_->horizontalHeader()->setSectionResizeMode(QHeaderView::Interactive);
    grade_->resizeColumnsToContents();
    int larga = 0;
    for (int c = 0; c < modelo_->columnCount(); ++c) {
        grade_->setColumnWidth(c, std::clamp(grade_->columnWidth(c), 60, 360));
        if (grade_->columnWidth(c) > grade_->columnWidth(larga)) larga = c;
    }
    // The widest column (a name, a description) takes the room left, not the last one.
    grade_->horizontalHeader()->setSectionResizeMode(larga, QHeaderView::Stretch);
}

void FormCadastro::pesquisar()
{
    avisoBusca_.clear();
    int linha = 0;
    try {
        linha = consultarBusca();
    } catch (const db::ErroBanco &e) {
        // Typed while searching: the grid stays empty and the line under it says why, with no box
        // to interrupt the typing. A text longer than the column cannot match anything. A server
        // gone away is the one thing worth a box.
        if (e.tipo() == db::TipoErro::Conexao) AvisarFalha(e);
        avisoBusca_ = e.tipo() == db::TipoErro::TextoLongo
                          ? QStringLiteral("nenhum registro tem um texto tão longo neste campo")
                          : e.mensagem();
        consultaAtual_.clear();
    }
    if (linha >= 0 && modelo_->rowCount() > linha) {
        grade_->selectRow(linha);
        grade_->scrollTo(modelo_->index(linha, 0), QAbstractItemView::PositionAtCenter);
    }
    ajustarColunas();
    mostrarRegistro();
}

namespace {

// What was typed in a masked search box: the mask's blanks and trailing separators are not text;
// documents, CEP and phones are kept as their digits, so the separators go altogether.
QString textoBusca(const QLineEdit *e)
{
    QString t = e->text();
    if (!e->inputMask().isEmpty()) {
        t.remove('_');
        while (!t.isEmpty() && !t.back().isLetterOrNumber()) t.chop(1);
        if (!e->inputMask().startsWith("99/")) t.remove(QRegularExpression("[^0-9A-Za-z]"));
    }
    return t.trimmed();
}

QString comparavel(const QVariant &v)
{
    if (v.typeId() == QMetaType::QDate) return v.toDate().toString("dd/MM/yyyy");
    if (v.typeId() == QMetaType::QDateTime) return v.toDateTime().toString("dd/MM/yyyy hh:mm");
    return v.toString().toUpper();
}

} // namespace

int FormCadastro::localizar(const QString &campo, const QString &texto)
{
    const QString t = texto.toUpper();
    for (int i = 0;; ++i) {
        if (i >= modelo_->rowCount()) {
            if (!modelo_->canFetchMore({})) return -1;
            modelo_->fetchMore({});
            if (i >= modelo_->rowCount()) return -1;
        }
        if (comparavel(modelo_->valor(i, campo)).startsWith(t)) return i;
    }
}

void FormCadastro::mascararBusca()
{
    // The order's caption says what the column holds.
    const QString o = ordem_->currentText().toUpper();
    QString m;
    if (o.contains("CEP")) m = "99999-999;_";
    else if (o == "CPF") m = "999.999.999-99;_";
    else if (o == "CNPJ") m = "99.999.999/9999-99;_";
    else if (o.startsWith("TELEFONE") || o == "FONE") m = "(99) 99999-9999;_";
    else if (o.startsWith("DATA")) m = "99/99/9999;_";
    if (busca_->inputMask() == m) return;
    const QSignalBlocker b(busca_);
    busca_->clear();
    busca_->setInputMask(m);
}

int FormCadastro::consultarBusca()
{
    const QString texto = textoBusca(busca_);
    QString propria;
    std::map<QString, QVariant> pp;
    if (montarBusca(ordem_->currentText(), texto, modoBusca_, propria, pp)) {
        modelo_->consultar(propria, pp);
        consultaAtual_.clear();
        return 0;
    }
    if (ordens_.isEmpty()) {
        modelo_->consultar(sqlBase_);
        consultaAtual_.clear();
        return 0;
    }
    // Only a field from the declared list goes into the text; what was typed goes as a parameter.
    // An order of several columns ("A,B") searches the first.
    const QStringList colunas = ordem_->currentData().toString().split(',');
    const QString campo = colunas.first();
    QString sql = "Select * From (" + sqlBase_ + ") X";
    std::map<QString, QVariant> p;
    const bool localizando = localizar_ && modoBusca_ == Busca::Inicio;
    if (!texto.isEmpty() && !localizando) {
        sql += modoBusca_ == Busca::Inicio ? " Where Upper(X." + campo + ") Starting With Upper(:BUSCA)"
                                           : " Where X." + campo + " Containing :BUSCA";
        p["BUSCA"] = texto;
    }
    sql += " Order By X." + colunas.join(", X.");
    const QString chave = sql + '\n' + texto;
    // Locating moves over the list already on the grid; only another order (or the end of a
    // search made with Enter) reads it again.
    if (!localizando || consultaAtual_ != sql) {
        modelo_->consultar(sql, p);
        consultaAtual_ = localizando ? sql : chave;
    }
    if (!localizando || texto.isEmpty()) return 0;
    const int linha = localizar(campo, texto);
    if (linha < 0) avisoBusca_ = QStringLiteral("nenhum registro começa com este texto");
    return linha;
}

int FormCadastro::idAtual() const
{
    const QModelIndex i = grade_->currentIndex();
    return i.isValid() ? modelo_->idDaLinha(i.row()) : 0;
}

db::Transacao &FormCadastro::transacao() { return Tabs->Tr(area_); }

void FormCadastro::recarregar(int selecionar)
{
    modelo_->recarregar();
    ajustarColunas();
    const int linha = selecionar ? modelo_->linhaDoId(selecionar) : (modelo_->rowCount() ? 0 : -1);
    if (linha >= 0) grade_->selectRow(linha);
    mostrarRegistro();
    Botoes();
}

void FormCadastro::Botoes()
{
    const bool navegando = estado_ == Estado::Navegando;
    const bool temRegistro = idAtual() != 0;
    botoes_["Incluir"]->setEnabled(navegando && !consulta_);
    botoes_["Alterar"]->setEnabled(navegando && temRegistro && !consulta_);
    botoes_["Excluir"]->setEnabled(navegando && (temRegistro || !semRegistro().isEmpty()) && !consulta_);
    botoes_["Salvar"]->setEnabled(!navegando);
    botoes_["Cancelar"]->setEnabled(!navegando);
    botoes_["Imprimir"]->setEnabled(navegando);
    botoes_["Fechar"]->setEnabled(navegando);
    for (const char *n : {"Primeiro", "Anterior", "Proximo", "Ultimo"}) botoes_[n]->setEnabled(navegando && temRegistro);
    grade_->setEnabled(navegando);
    // Searching would move the grid away from the record being edited.
    ordem_->setEnabled(navegando);
    busca_->setEnabled(navegando);
    const int n = modelo_->rowCount();
    status_->setText(navegando ? QString("%1 registro(s)%2%3").arg(n).arg(modelo_->canFetchMore({}) ? "+" : "",
                                                               avisoBusca_.isEmpty() ? QString() : " - " + avisoBusca_)
                               : (estado_ == Estado::Incluindo ? "Incluindo novo registro" : "Alterando registro"));
    estadoMudou();
}

void FormCadastro::somenteConsulta()
{
    consulta_ = true;
    for (const char *n : {"Incluir", "Alterar", "Salvar", "Cancelar", "Excluir"}) botoes_[n]->hide();
    // No fields to show: the list takes the whole height.
    for (int i = 1; i < divisor_->count(); ++i) divisor_->widget(i)->hide();
    Botoes();
}

void FormCadastro::habilitarEdicao(bool sim)
{
    if (!sim) {
        for (QWidget *w : std::as_const(falhas_)) semCorFalha(w);
        falhas_.clear();
    }
    for (QWidget *w : std::as_const(campos_)) w->setEnabled(sim);
}

void FormCadastro::mostrarRegistro()
{
    if (estado_ != Estado::Navegando) return;
    const int id = idAtual();
    if (!id) {
        limpar();
    } else {
        db::Transacao t(Tabs->DbORB(), db::Modo::Leitura);
        carregar(t, id);
    }
    registroMudou(id);
    Botoes();
}

Sessao FormCadastro::quem() const
{
    Sessao s = sessao();
    s.menuAtual = menu_;
    s.moduloAtual = classe_;
    s.sufixoOperacoes = sufixoOperacoes_;
    return s;
}

bool FormCadastro::permitido(const QString &operacao)
{
    Sessao &s = sessao();
    s.menuAtual = menu_;
    s.moduloAtual = classe_;
    if (AcessoModulos(nomeOperacao(operacao) + sufixoOperacoes_)) return true;
    if (s.logado()) SemPermissao();
    return false;
}

void FormCadastro::BtIncluirClick()
{
    Tabs->Deb("procedure " + nomeTraco() + ".BtIncluirClick(Sender: TObject)");
    if (estado_ != Estado::Navegando || consulta_ || !permitido("Incluir")) return;
    transacao().iniciar();
    estado_ = Estado::Incluindo;
    idEditado_ = 0;
    limpar();
    if (estado_ != Estado::Incluindo) return;  // the defaults could not be read: the edit was discarded
    habilitarEdicao(true);
    Botoes();
    focarPrimeiro();
}

void FormCadastro::BtAlterarClick()
{
    Tabs->Deb("procedure " + nomeTraco() + ".BtAlterarClick(Sender: TObject)");
    alterarRegistro("Alterar");
}

bool FormCadastro::alterarRegistro(const QString &operacao)
{
    const int id = idAtual();
    if (estado_ != Estado::Navegando || !id || consulta_ || !permitido(operacao)) return false;
    try {
        conferirOperacao(operacao, id);
    } catch (const Recusa &r) {
        Atencao(r.texto);
        return false;
    }
    db::Transacao &t = transacao();
    t.iniciar();
    try {
        // Touching the record takes its lock now: a second workstation is told at once.
        db::executar(t, QString("Update %1 Set %2 = %2 Where %2 = :ID").arg(tabela(), chave()), {{"ID", id}});
        carregar(t, id);
    } catch (const db::ErroBanco &e) {
        t.rollback();
        AvisarFalha(e);
        return false;
    }
    estado_ = Estado::Alterando;
    idEditado_ = id;
    habilitarEdicao(true);
    Botoes();
    focarPrimeiro();
    return true;
}

void FormCadastro::BtSalvarClick()
{
    Tabs->Deb("procedure " + nomeTraco() + ".BtSalvarClick(Sender: TObject)");
    if (estado_ == Estado::Navegando) return;
    db::Transacao &t = transacao();
    try {
        // One attempt: a refusal or a failure undoes all of it, and the edit (with its lock) goes on.
        const int id = db::tentativa(t, [&] { return gravar(t, idEditado_); });
        const QString acao = estado_ == Estado::Incluindo ? QStringLiteral("INCLUSÃO") : QStringLiteral("ALTERAÇÃO");
        t.commit();
        for (const QString &tab : tabelasEscritas()) avisosTabelas().avisar(tab);
        informarMonitor(id, acao);
        estado_ = Estado::Navegando;
        habilitarEdicao(false);
        recarregar(id);
        grade_->setFocus();  // F2, F3, F5 and the arrows work at once
        emit edicaoEncerrada(id);
    } catch (const Recusa &r) {
        Atencao(r.texto);
        if (QWidget *w = widgetDaRecusa(r.campo)) {
            if (campos_.values().contains(w)) marcarFalha(w);
            mostrarCampo(w);
            w->setFocus();
        }
    } catch (const db::ErroBanco &e) {
        AvisarFalha(e);
    }
}

void FormCadastro::BtCancelarClick()
{
    Tabs->Deb("procedure " + nomeTraco() + ".BtCancelarClick(Sender: TObject)");
    if (estado_ == Estado::Navegando || !confirmarCancelamento()) return;
    transacao().rollback();
    if (estado_ == Estado::Alterando) {
        // The record as it stays, for the change log and the monitor.
        estado_ = Estado::Navegando;
        naTransacao([&](db::Transacao &t) { Tabs->Log(t, tabela(), chave(), idEditado_, QStringLiteral("CANCELAMENTO")); });
        informarMonitor(idEditado_, QStringLiteral("CANCELAMENTO"));
    }
    estado_ = Estado::Navegando;
    habilitarEdicao(false);
    mostrarRegistro();
    grade_->setFocus();
    emit edicaoEncerrada(0);
}

void FormCadastro::BtExcluirClick()
{
    Tabs->Deb("procedure " + nomeTraco() + ".BtExcluirClick(Sender: TObject)");
    const int id = idAtual();
    if (estado_ != Estado::Navegando || consulta_ || !permitido("Excluir")) return;
    if (!id) {
        if (!semRegistro().isEmpty()) Atencao(semRegistro());
        return;
    }
    try {
        conferirOperacao("Excluir", id);
    } catch (const Recusa &r) {
        Atencao(r.texto);
        return;
    }
    if (!Pergunta(perguntaExclusao())) return;
    const auto d = naTransacao([&](db::Transacao &t) {
        apagar(t, id);  // logs the record and its details before they go
    });
    if (d != Desfecho::Feito) return;
    for (const QString &tab : tabelasEscritas()) avisosTabelas().avisar(tab);
    informarMonitor(id, QStringLiteral("EXCLUSÃO"));
    recarregar();
    grade_->setFocus();
}

FormCadastro::Desfecho FormCadastro::naTransacao(const std::function<void(db::Transacao &)> &f, QString *campo)
{
    db::Transacao &t = transacao();
    t.iniciar();
    try {
        f(t);
        t.commit();
        return Desfecho::Feito;
    } catch (const Recusa &r) {
        t.rollback();
        Atencao(r.texto);
        if (campo) *campo = r.campo;
        return Desfecho::Recusado;
    } catch (const db::ErroBanco &e) {
        t.rollback();
        AvisarFalha(e);
        return Desfecho::Falhou;
    }
}

QString FormCadastro::descartarEdicao()
{
    Tabs->Deb("procedure " + nomeTraco() + ".DescartarEdicao");
    const QString texto = estado_ == Estado::Incluindo
        ? QStringLiteral("O novo registro de \"%1\" não foi salvo.").arg(titulo_)
        : QStringLiteral("As alterações do registro %1 de \"%2\" não foram salvas.").arg(QString::number(idEditado_).rightJustified(6, u'0'), titulo_);
    estado_ = Estado::Navegando;
    habilitarEdicao(false);
    limpar();  // no reading: the server may still be away
    Botoes();
    return texto;
}

void FormCadastro::mostrarCampo(QWidget *w)
{
    // Brings forward every tab page on the way from the field up to the form.
    for (QWidget *p = w; p && p != this; p = p->parentWidget())
        if (auto *pilha = qobject_cast<QStackedWidget *>(p->parentWidget()))
            if (auto *abas = qobject_cast<QTabWidget *>(pilha->parentWidget())) abas->setCurrentWidget(p);
}

void FormCadastro::conferirSaida(QWidget *w)
{
    if (estado_ == Estado::Navegando || !w->isEnabled()) return;
    try {
        conferirCampo(w);
    } catch (const Recusa &r) {
        Atencao(r.texto);
        marcarFalha(w);
        mostrarCampo(w);
        w->setFocus();
    }
}

void FormCadastro::marcarFalha(QWidget *w)
{
    QPalette p = w->palette();
    p.setColor(QPalette::Base, QColor(0xFF, 0xDD, 0xCC));
    p.setColor(QPalette::Button, QColor(0xFF, 0xDD, 0xCC));
    w->setPalette(p);
    falhas_.insert(w);
    // Any change clears it, typed or chosen with the mouse.
    auto corrigido = [this, w = QPointer<QWidget>(w)] {
        if (!w || !falhas_.remove(w)) return;
        semCorFalha(w);
        if (w->hasFocus()) MudaCorEntrada(w);
    };
    if (auto *cb = qobject_cast<QComboBox *>(w)) {
        connect(cb, &QComboBox::currentIndexChanged, this, corrigido, Qt::SingleShotConnection);
        if (cb->isEditable()) connect(cb, &QComboBox::editTextChanged, this, corrigido, Qt::SingleShotConnection);
    } else if (auto *x = qobject_cast<QCheckBox *>(w)) {
        connect(x, &QCheckBox::toggled, this, corrigido, Qt::SingleShotConnection);
    } else if (auto *l = qobject_cast<QLineEdit *>(w)) {
        connect(l, &QLineEdit::textChanged, this, corrigido, Qt::SingleShotConnection);
    }
}

void FormCadastro::informarMonitor(int id, const QString &acao)
{
    if (monitor().endereco().isEmpty()) return;
    try {
        // The record as saved, read again: the monitor sees what the database holds.
        db::Transacao t(Tabs->DbORB(), db::Modo::Leitura);
        db::Consulta q(t, QString("Select * From %1 Where %2 = :ID").arg(tabela(), chave()));
        q.bind("ID", id);
        q.executar();
        Registro r{"select * from " + tabela(), {}};
        if (q.proxima())
            for (int i = 0; i < q.colunas(); ++i) r.definir(q.nomeColuna(i), q.valor(i));
        else
            r.definir(chave(), id);
        monitor().HttpRequest(tabela(), acao, Tabs->TbToJson({r}));
    } catch (const db::ErroBanco &) {
        // The monitor never holds the user up.
    }
}

bool FormCadastro::eventFilter(QObject *o, QEvent *e)
{
    // Enter moves to the next field, as users of this kind of program expect.
    // The field with the focus wears the current-field colour; one that failed a check stays peach.
    if (auto *w = qobject_cast<QWidget *>(o); w && campos_.values().contains(w)) {
        if (e->type() == QEvent::FocusIn && !falhas_.contains(w)) MudaCorEntrada(w);
        if (e->type() == QEvent::FocusOut && !falhas_.contains(w)) MudaCorSaida(w);
        // Checked once the focus has settled, so that the message box does not fight the move.
        if (e->type() == QEvent::FocusOut && estado_ != Estado::Navegando) {
            const auto razao = static_cast<QFocusEvent *>(e)->reason();
            if (razao != Qt::PopupFocusReason && razao != Qt::ActiveWindowFocusReason)
                QMetaObject::invokeMethod(this, [this, w = QPointer<QWidget>(w)] { if (w) conferirSaida(w); }, Qt::QueuedConnection);
        }
        if (e->type() == QEvent::KeyPress && falhas_.contains(w)) {
            falhas_.remove(w);
            semCorFalha(w);
            MudaCorEntrada(w);
        }
    }
    if (e->type() == QEvent::KeyPress) {
        auto *k = static_cast<QKeyEvent *>(e);
        if ((k->key() == Qt::Key_Return || k->key() == Qt::Key_Enter) && k->modifiers() == Qt::NoModifier
            && !o->inherits("QPlainTextEdit") && !o->inherits("QTextEdit")) {
            auto *w = qobject_cast<QWidget *>(o);
            const qsizetype i = w ? ordemCampos_.indexOf(w) : -1;
            if (i < 0 || estado_ == Estado::Navegando) {
                focusNextChild();
                return true;
            }
            // The next field even on another page; after the last one, Salvar (Enter presses it).
            for (qsizetype j = i + 1; j < ordemCampos_.size(); ++j)
                if (ordemCampos_[j]->isEnabled()) {
                    focarCampo(ordemCampos_[j]);
                    return true;
                }
            botoes_["Salvar"]->setFocus();
            return true;
        }
    }
    return QWidget::eventFilter(o, e);
}

void FormCadastro::focarCampo(QWidget *w)
{
    // Bring its tab page forward before giving it the focus.
    if (abasEdicao_)
        for (int i = 0; i < abasEdicao_->count(); ++i)
            if (abasEdicao_->widget(i)->isAncestorOf(w)) abasEdicao_->setCurrentIndex(i);
    w->setFocus(Qt::TabFocusReason);  // as Tab would: a filled field comes selected, typing replaces it
}

void FormCadastro::BtImprimirClick()
{
    Tabs->Deb("procedure " + nomeTraco() + ".BtImprimirClick(Sender: TObject)");
    if (estado_ != Estado::Navegando || !permitido("Imprimir")) return;
    imprimir();
}

void FormCadastro::imprimir() { imprimirHtml(titulo_, htmlGrade(*modelo_, titulo_, sessao().usuario), this); }

void FormCadastro::BtFecharClick()
{
    Tabs->Deb("procedure " + nomeTraco() + ".BtFecharClick(Sender: TObject)");
    if (estado_ != Estado::Navegando) return;
    emit fechar();
}

} // namespace orb
