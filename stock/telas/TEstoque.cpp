#include "TEstoque.h"

#include "dados/Formatos.h"
#include "dados/Tabs.h"
#include "principal/Parametros.h"
#include "ui/Mensagens.h"
#include "ui/TratadorErros.h"
#include "Recusa.h"

#include <QCheckBox>
#include <QComboBox>
#include <QEvent>
#include <QHBoxLayout>

#include "ui/ComboConsulta.h"
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLocale>
#include <QLineEdit>
#include <QPixmap>
#include <QPushButton>
#include <QRegularExpression>
#include <QTableView>
#include <QTableWidget>
#include <QTimer>
#include <QVBoxLayout>

namespace orb {

namespace {

const QString kAbaEstoques = QStringLiteral("&5 Estoques / Empresa");

// Leaving these fields proposes the prices again.
bool disparaComposicao(const QString &n)
{
    static const QStringList base = {"CUSTO", "PERCLUCROMIN", "PERCCOM", "PERCFRETE", "PERCDESPFIN", "PRVENDA"};
    for (const QString &b : base)
        if (n == b || n == b + "AT" || n == b + "VAR") return true;
    return false;
}

bool disparaComissoes(const QString &n)
{
    static const QRegularExpression re("^PERCCOM(AT|REP|EMP|OUT|TEC)[VS](AT|VAR)$");
    return re.match(n).hasMatch();
}

QLineEdit *numero(int largura = 90)
{
    auto *e = new QLineEdit;
    e->setAlignment(Qt::AlignRight);
    e->setMaximumWidth(largura);
    return e;
}

// Quantities as every grid shows them: two decimals, the others only when there are any.
QString textoNumero(const db::Decimal &d) { return exibir(QVariant::fromValue(d), "ESTATUAL", TipoCampo::Decimal, 4); }

} // namespace

TEstoque::TEstoque(QWidget *parent) : FormRegistro(declaracaoEstoque(), parent)
{
    {
        db::Transacao t(Tabs->DbORB(), db::Modo::Leitura);
        ramo_ = lerParametros(t).ramo;
        principal_ = empresaPrincipal(t);
    }
    // The principal company's figures on the general sheet: the usual case of a single shop.
    minimoP_ = numero();
    maximoP_ = numero();
    atualP_ = numero();
    auto *principal = new QWidget;
    auto *lp = new QHBoxLayout(principal);
    lp->setContentsMargins(0, 0, 0, 0);
    for (const auto &[rotulo, w, nome] : {std::tuple{"Mínimo", minimoP_, "Z_ESTMINIMOP"}, std::tuple{"Máximo", maximoP_, "Z_ESTMAXIMOP"},
                                           std::tuple{"Atual", atualP_, "Z_ESTATUALP"}}) {
        lp->addWidget(new QLabel(QString::fromUtf8(rotulo)));
        registrarCampo(nome, w);
        lp->addWidget(w);
    }
    lp->addStretch();
    adicionarLinha("Estoque (empresa principal)", principal, "&1 Geral");
    foto_ = new QLabel;
    foto_->setObjectName("ImgFoto");
    foto_->setFixedSize(140, 140);
    foto_->setAlignment(Qt::AlignCenter);
    foto_->setFrameShape(QFrame::StyledPanel);
    adicionarLinha("Foto", foto_, "&1 Geral");

    // Stock per company, edited with the item and saved with it.
    gradeEstoques_ = new QTableWidget(0, 7);
    gradeEstoques_->setHorizontalHeaderLabels({"Empresa", "Localização", "Mínimo", "Máximo", "Atual", "Reservado", "Disponível"});
    prepararGrade(gradeEstoques_);
    gradeEstoques_->setMinimumHeight(90);
    gradeEstoques_->setMaximumHeight(180);
    registrarCampo("ESTOQUES", gradeEstoques_);
    adicionarLinha({}, gradeEstoques_, kAbaEstoques);
    totalEstoques_ = new QLabel;
    totalEstoques_->setObjectName("LbTotalEstoques");
    adicionarLinha({}, totalEstoques_, kAbaEstoques);
    empresa_ = new QComboBox;
    empresa_->setEditable(true);
    empresa_->setInsertPolicy(QComboBox::NoInsert);
    {
        db::Transacao t(Tabs->DbORB(), db::Modo::Leitura);
        db::Consulta q(t, "Select Apelido From TbCad Where Em = 'S' Order By Apelido");
        q.executar();
        empresa_->addItem(QString());
        while (q.proxima()) empresa_->addItem(q.valor(0).toString());
    }
    local_ = new QLineEdit;
    local_->setMaxLength(20);
    minimo_ = numero();
    maximo_ = numero();
    atual_ = numero();
    auto *linha = new QWidget;
    auto *l = new QHBoxLayout(linha);
    l->setContentsMargins(0, 0, 0, 0);
    for (const auto &[rotulo, w, nome] :
         {std::tuple<const char *, QWidget *, const char *>{"Empresa", empresa_, "EMPRESA"}, {"Localização", local_, "LOCALIZACAO"},
          {"Mínimo", minimo_, "ESTMINIMO"}, {"Máximo", maximo_, "ESTMAXIMO"}, {"Atual", atual_, "ESTATUAL"}}) {
        l->addWidget(new QLabel(QString::fromUtf8(rotulo)));
        registrarCampo(nome, w);
        l->addWidget(w);
    }
    adicionarLinha({}, linha, kAbaEstoques);
    auto *botoes = new QWidget;
    auto *lb = new QHBoxLayout(botoes);
    lb->setContentsMargins(0, 0, 0, 0);
    auto *gravarBt = new QPushButton("Gravar estoque");
    auto *excluirBt = new QPushButton("Excluir estoque");
    registrarCampo("BtGravarEstoque", gravarBt);
    registrarCampo("BtExcluirEstoque1", excluirBt);
    connect(gravarBt, &QPushButton::clicked, this, &TEstoque::BtGravarEstoqueClick);
    connect(excluirBt, &QPushButton::clicked, this, &TEstoque::BtExcluirEstoque1Click);
    lb->addWidget(gravarBt);
    lb->addWidget(excluirBt);
    lb->addStretch();
    adicionarLinha({}, botoes, kAbaEstoques);
    connect(gradeEstoques_, &QTableWidget::currentCellChanged, this, [this](int linha) {
        if (linha < 0 || linha >= estoques_.size()) return;
        const LinhaEstoque &e = estoques_[linha];
        empresa_->setCurrentText(e.empresa);
        local_->setText(e.localizacao);
        minimo_->setText(textoNumero(e.minimo));
        maximo_->setText(textoNumero(e.maximo));
        atual_->setText(textoNumero(e.atual));
    });

    // What the composition computes is shown, not typed.
    for (const CampoForm &c : declaracao().campos) {
        static const QRegularExpression calculado("^(CUSTOOUTROS|CUSTOTRIB|PRVENDAMIN|MARKUP|PERCMC|PERCCOM[VS])(AT|VAR)$");
        if (calculado.match(c.coluna).hasMatch())
            if (auto *e = qobject_cast<QLineEdit *>(campo(c.coluna))) e->setReadOnly(true);
        if (disparaComposicao(c.coluna) || disparaComissoes(c.coluna) || c.coluna == "CODIGO" || c.coluna == "CODIGOBARRAS"
            || c.coluna == "GARANTIA")
            if (QWidget *w = campo(c.coluna)) w->installEventFilter(this);
    }
    for (QWidget *w : {static_cast<QWidget *>(minimoP_), static_cast<QWidget *>(maximoP_), static_cast<QWidget *>(atualP_),
                       static_cast<QWidget *>(atual_), static_cast<QWidget *>(empresa_), static_cast<QWidget *>(minimo_),
                       static_cast<QWidget *>(maximo_)})
        w->installEventFilter(this);

    // Filters over the browse.
    auto *filtros = new QHBoxLayout;
    // Groups registered meanwhile (here, by F4 or elsewhere) appear when the filter is next opened.
    grupo_ = new ComboConsulta("Select Id, Grupo From TbGrupos Order By Grupo", "(todos)");
    grupo_->setObjectName("CbGrupo");
    subgrupo_ = new ComboConsulta("Select Id, Subgrupo From TbGruposSub Order By Subgrupo", "(todos)");
    subgrupo_->setObjectName("CbSubgrupo");
    for (QComboBox *cb : {grupo_, subgrupo_}) connect(cb, &QComboBox::currentIndexChanged, this, [this] { pesquisar(); });
    filtros->addWidget(new QLabel("Grupo"));
    filtros->addWidget(grupo_);
    filtros->addWidget(new QLabel("Subgrupo"));
    filtros->addWidget(subgrupo_);
    const std::pair<const char *, const char *> caixas[] = {
        {"Disponiveis", "Disponíveis"}, {"Indisponiveis", "Indisponíveis"}, {"Web", "Disp. Web"}, {nullptr, "Versão:"},
        {"Novidade", "Novidade"},       {"Comum", "Comum"},                 {nullptr, "Estoque:"}, {"Minimo", "Mínimo"},
        {"Maximo", "Máximo"},           {"Normal", "Normal"},               {"Zerado", "Zerado"}};
    filtros->addSpacing(12);
    filtros->addWidget(new QLabel("Disponibilidade:"));
    // Two lines, so that the screen fits 1366 pixels: availability beside the groups, then
    // version and stock situation.
    auto *filtros2 = new QHBoxLayout;
    QHBoxLayout *linhaAtual = filtros;
    for (const auto &[nome, texto] : caixas) {
        if (!nome) {
            if (linhaAtual == filtros) linhaAtual = filtros2;
            else linhaAtual->addSpacing(12);
            linhaAtual->addWidget(new QLabel(QString::fromUtf8(texto)));
            continue;
        }
        auto *c = new QCheckBox(QString::fromUtf8(texto));
        c->setObjectName(QString("Ck") + nome);
        connect(c, &QCheckBox::toggled, this, [this] { pesquisar(); });
        linhaAtual->addWidget(c);
        filtros_.insert(nome, c);
    }
    filtros->addStretch();
    filtros2->addStretch();
    corpo()->insertLayout(0, filtros2);
    corpo()->insertLayout(0, filtros);

    // A similar item opens with a double click.
    for (int i = 0; i < declaracao().detalhes.size(); ++i)
        if (declaracao().detalhes[i].titulo == "&9 Similares")
            connect(gradeDetalhe(i), &QTableView::doubleClicked, this, [this, i](const QModelIndex &ix) {
                const int id = idDaLinhaDetalhe(i, ix.row());
                grupo_->setCurrentIndex(0);
                subgrupo_->setCurrentIndex(0);
                for (QCheckBox *c : std::as_const(filtros_)) c->setChecked(false);
                pesquisar();
                while (modelo()->linhaDoId(id) < 0 && modelo()->canFetchMore({})) modelo()->fetchMore({});
                recarregar(id);
            });
    reajustarColunas();  // the rows read while the base form was built were not this screen's
    pesquisar();
}

FiltroEstoque TEstoque::filtro() const
{
    FiltroEstoque f;
    f.idGrupo = grupo_ ? grupo_->currentData().toInt() : 0;
    f.idSubgrupo = subgrupo_ ? subgrupo_->currentData().toInt() : 0;
    auto marcado = [this](const char *n) { return filtros_.contains(n) && filtros_[n]->isChecked(); };
    f.disponiveis = marcado("Disponiveis");
    f.indisponiveis = marcado("Indisponiveis");
    f.web = marcado("Web");
    f.novidade = marcado("Novidade");
    f.comum = marcado("Comum");
    f.minimo = marcado("Minimo");
    f.maximo = marcado("Maximo");
    f.normal = marcado("Normal");
    f.zerado = marcado("Zerado");
    return f;
}

bool TEstoque::montarBusca(const QString &ordem, const QString &texto, Busca busca, QString &sql, std::map<QString, QVariant> &p)
{
    sql = sqlEstoque(ordem, texto, filtro(), p, busca);
    return true;
}

Valores TEstoque::valoresNaTela() const
{
    Valores v;
    for (const CampoForm &c : declaracao().campos) v[c.coluna] = valorDoCampo(c.coluna);
    return v;
}

void TEstoque::limpar()
{
    FormRegistro::limpar();
    estoques_.clear();
    foto_->clear();
    if (estado() == Estado::Incluindo) {
        try {
            db::Transacao t(Tabs->DbORB(), db::Modo::Leitura);
            for (const auto &[k, x] : novoItem(t)) definirValor(k, x);
            estoques_ << linhaPrincipal(t);
        } catch (const db::ErroBanco &e) {
            AvisarFalha(e);
        }
        setWindowTitle("Novo (Item)");
    } else {
        setWindowTitle(declaracao().titulo);
    }
    mostrarEstoques();
}

void TEstoque::carregar(db::Transacao &t, int id)
{
    FormRegistro::carregar(t, id);
    estoques_ = lerEstoques(t, id);
    mostrarEstoques();
    mostrarFoto(t, id);
    setWindowTitle(declaracao().titulo);
}

void TEstoque::mostrarFoto(db::Transacao &t, int id)
{
    QPixmap p;
    const QByteArray dados = db::escalar(t, "Select First 1 Foto From TbItensFotos Where Fk = :ID Order By Id", {{"ID", id}}).toByteArray();
    if (!dados.isEmpty() && p.loadFromData(dados))
        foto_->setPixmap(p.scaled(foto_->size() - QSize(4, 4), Qt::KeepAspectRatio, Qt::SmoothTransformation));
    else
        foto_->setText("(sem foto)");
}

int TEstoque::gravarCabecalho(db::Transacao &t, int id)
{
    principalDigitado();
    return salvarItem(t, id, valoresNaTela(), estoques_, ramo_, quem());
}

void TEstoque::apagar(db::Transacao &t, int id)
{
    excluirItem(t, id, quem());
    Tabs->Deb(declaracao().traco + QString::number(id) + ")");
}

void TEstoque::conferirOperacao(const QString &operacao, int id)
{
    if (operacao != "Excluir") return;
    db::Transacao t(Tabs->DbORB(), db::Modo::Leitura);
    conferirExclusaoItem(t, id);
}

bool TEstoque::confirmarCancelamento()
{
    Tabs->Deb("Operação Cancelada - " + valorDoCampo("DESCRICAO").toString());
    return true;
}

void TEstoque::mostrarEstoques()
{
    gradeEstoques_->setRowCount(int(estoques_.size()));
    for (int r = 0; r < estoques_.size(); ++r) {
        const LinhaEstoque &e = estoques_[r];
        const QStringList celulas = {e.empresa, e.localizacao, textoNumero(e.minimo), textoNumero(e.maximo), textoNumero(e.atual),
                                     textoNumero(e.reservado), textoNumero(e.disponivel)};
        for (int c = 0; c < celulas.size(); ++c) {
            auto *item = new QTableWidgetItem(celulas[c]);
            if (c >= 2) item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
            gradeEstoques_->setItem(r, c, item);
        }
    }
    gradeEstoques_->resizeColumnsToContents();
    const LinhaEstoque *p = nullptr;
    for (const LinhaEstoque &e : estoques_)
        if (e.idEmpresa == principal_) p = &e;
    db::Decimal minimo = db::Decimal::bruto(0, 4), maximo = minimo, atual = minimo;
    for (const LinhaEstoque &e : estoques_) {
        minimo = minimo + e.minimo;
        maximo = maximo + e.maximo;
        atual = atual + e.atual;
    }
    totalEstoques_->setText(QString("Todas as empresas: mínimo %1, máximo %2, atual %3")
                                .arg(textoNumero(minimo), textoNumero(maximo), textoNumero(atual)));
    minimoP_->setText(p ? textoNumero(p->minimo) : QString());
    maximoP_->setText(p ? textoNumero(p->maximo) : QString());
    atualP_->setText(p ? textoNumero(p->atual) : QString());
}

void TEstoque::principalDigitado()
{
    if (estado() == Estado::Navegando || !principal_) return;
    // A figure typed wrong is refused naming its field, never taken as zero or as what it was.
    auto ler = [](QLineEdit *e) {
        if (e->text().trimmed().isEmpty()) return db::Decimal::bruto(0, 4);
        return lerNumero(e->text(), 4, e->objectName());
    };
    const db::Decimal minimo = ler(minimoP_), maximo = ler(maximoP_), atual = ler(atualP_);
    LinhaEstoque *p = nullptr;
    for (LinhaEstoque &e : estoques_)
        if (e.idEmpresa == principal_) p = &e;
    if (!p) {
        if (minimoP_->text().trimmed().isEmpty() && maximoP_->text().trimmed().isEmpty() && atualP_->text().trimmed().isEmpty())
            return;
        db::Transacao t(Tabs->DbORB(), db::Modo::Leitura);
        estoques_ << linhaPrincipal(t);
        p = &estoques_.last();
    }
    p->minimo = minimo;
    p->maximo = maximo;
    p->atual = atual;
    p->disponivel = p->atual - p->reservado;
    mostrarEstoques();
}

void TEstoque::BtGravarEstoqueClick()
{
    Tabs->Deb("procedure TEstoque.BtGravarEstoqueClick(Sender: TObject)");
    if (estado() == Estado::Navegando) return;
    try {
        db::Transacao t(Tabs->DbORB(), db::Modo::Leitura);
        LinhaEstoque l = conferirLinhaEstoque(t, empresa_->currentText(), local_->text(), minimo_->text(), maximo_->text(),
                                              atual_->text());
        bool achou = false;
        for (LinhaEstoque &e : estoques_)
            if (e.idEmpresa == l.idEmpresa) {
                l.id = e.id;
                l.reservado = e.reservado;
                e = l;
                achou = true;
            }
        if (!achou) estoques_ << l;
        for (LinhaEstoque &e : estoques_) e.disponivel = e.atual - e.reservado;
        mostrarEstoques();
        for (QLineEdit *e : {local_, minimo_, maximo_, atual_}) e->clear();
        empresa_->setCurrentIndex(0);
        empresa_->setFocus();
    } catch (const Recusa &r) {
        Atencao(r.texto);
        if (QWidget *w = campo(r.campo)) {
            marcarFalha(w);
            w->setFocus();
        }
    }
}

bool TEstoque::empresaConferida()
{
    if (empresa_->currentText().trimmed().isEmpty()) return true;  // nothing typed: Enter moves on
    try {
        db::Transacao t(Tabs->DbORB(), db::Modo::Leitura);
        empresa_->setCurrentText(empresaDoEstoque(t, empresa_->currentText()).second);
        return true;
    } catch (const Recusa &r) {
        Atencao(r.texto);
        marcarFalha(empresa_);
        QTimer::singleShot(0, empresa_, [this] { empresa_->setFocus(); });
        return false;
    }
}

void TEstoque::BtExcluirEstoque1Click()
{
    Tabs->Deb("procedure TEstoque.BtExcluirEstoque1Click(Sender: TObject)");
    const int linha = gradeEstoques_->currentRow();
    if (estado() == Estado::Navegando || linha < 0 || linha >= estoques_.size()) return;
    estoques_.removeAt(linha);
    mostrarEstoques();
}

void TEstoque::EditCustoExit()
{
    if (estado() == Estado::Navegando) return;
    Valores v;
    try {
        v = valoresNaTela();
    } catch (const Recusa &) {
        return;  // a number still being typed wrong is told at Salvar
    }
    try {
        comporPreco(v);
    } catch (const Recusa &r) {
        Atencao(r.texto);
        return;
    }
    for (const QString &nivel : {QStringLiteral("AT"), QStringLiteral("VAR")})
        for (const char *c : {"CUSTOOUTROS", "CUSTOTRIB", "PRVENDAMIN", "MARKUP", "PERCMC"}) definirValor(c + nivel, v[c + nivel]);
}

void TEstoque::somarComissoesNaTela()
{
    if (estado() == Estado::Navegando) return;
    Valores v;
    try {
        v = valoresNaTela();
    } catch (const Recusa &) {
        return;
    }
    somarComissoes(v);
    for (const char *c : {"PERCCOMVAT", "PERCCOMSAT", "PERCCOMVVAR", "PERCCOMSVAR"}) definirValor(c, v[c]);
}

bool TEstoque::eventFilter(QObject *o, QEvent *e)
{
    auto *w = qobject_cast<QWidget *>(o);
    if (w && e->type() == QEvent::KeyPress && estado() != Estado::Navegando) {
        const int tecla = static_cast<QKeyEvent *>(e)->key();
        if ((tecla == Qt::Key_Return || tecla == Qt::Key_Enter) && w == atual_) {
            BtGravarEstoqueClick();
            return true;
        }
        // The company is checked as soon as it is typed, before its figures.
        if ((tecla == Qt::Key_Return || tecla == Qt::Key_Enter) && w == empresa_ && !empresaConferida()) return true;
    }
    if (e->type() == QEvent::FocusIn && estado() != Estado::Navegando && (w == minimo_ || w == maximo_ || w == atual_)
        && empresa_->currentText().trimmed().isEmpty()) {
        // Figures need their company first: the focus goes back before the message, so that
        // closing the message does not land on the figure again.
        empresa_->setFocus();
        marcarFalha(empresa_);
        QTimer::singleShot(0, this, [] { Atencao(QStringLiteral("Escolha a empresa primeiro!")); });
        return true;
    }
    if (w && e->type() == QEvent::FocusOut && estado() != Estado::Navegando) {
        const QString n = w->objectName();
        if (disparaComposicao(n)) EditCustoExit();
        if (disparaComissoes(n)) somarComissoesNaTela();
        if (w == minimoP_ || w == maximoP_ || w == atualP_) {
            try {
                principalDigitado();
            } catch (const Recusa &r) {
                Atencao(r.texto);
                QTimer::singleShot(0, w, [w] { w->setFocus(); });
            }
        }
        if (n == "GARANTIA") {
            // A warranty typed as a number reads as one ("12", "1,5"); words stay as typed.
            auto *g = static_cast<QLineEdit *>(w);
            const QLocale br(QLocale::Portuguese, QLocale::Brazil);
            bool ok = false;
            const double x = br.toDouble(g->text().trimmed(), &ok);
            if (ok) {
                QString t = br.toString(x, 'f', 1);
                if (t.endsWith(",0")) t.chop(2);
                g->setText(t);
            }
        }
        if (n == "CODIGO" || n == "CODIGOBARRAS") {
            try {
                db::Transacao t(Tabs->DbORB(), db::Modo::Leitura);
                conferirCodigoItem(t, estado() == Estado::Alterando ? idAtual() : 0, valorDoCampo(n).toString(), n);
            } catch (const Recusa &r) {
                Atencao(r.texto);
                QTimer::singleShot(0, w, [w] { w->setFocus(); });
            }
        }
    }
    return FormRegistro::eventFilter(o, e);
}

} // namespace orb
