#include "TInventario.h"

#include "acesso/Acesso.h"
#include "dados/Tabs.h"
#include "ui/Campos.h"
#include "ui/Dialogos.h"
#include "ui/Mensagens.h"
#include "Recusa.h"

#include <QComboBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QShortcut>
#include <QStandardItemModel>
#include <QTabWidget>
#include <QTableView>
#include <QVBoxLayout>

namespace orb {

namespace {

using C = CampoForm;

const QString kMenu = QStringLiteral("Inventário");
const QString kClasse = QStringLiteral("TInventario");

// Refills a lookup box from a query ("Select value, caption ..."), keeping the choice when it is still listed.
void encherCombo(QComboBox *cb, const QString &sql, const std::map<QString, QVariant> &p = {})
{
    const QVariant atual = cb->currentData();
    const QSignalBlocker b(cb);
    cb->clear();
    cb->addItem("", QVariant());
    if (!sql.isEmpty()) {
        db::Transacao t(Tabs->DbORB(), db::Modo::Leitura);
        db::Consulta q(t, sql);
        for (const auto &[k, x] : p) q.bind(k, x);
        q.executar();
        while (q.proxima()) cb->addItem(q.valor(1).toString(), q.valor(0));
    }
    cb->setCurrentIndex(std::max(0, cb->findData(atual)));
}

QList<QPair<QString, QString>> itens(const QStringList &valores)
{
    QList<QPair<QString, QString>> r;
    for (const QString &v : valores) r.append({v, rotuloTipoParte(v)});
    return r;
}

bool enter(QEvent *e)
{
    if (e->type() != QEvent::KeyPress) return false;
    auto *k = static_cast<QKeyEvent *>(e);
    return (k->key() == Qt::Key_Return || k->key() == Qt::Key_Enter) && k->modifiers() == Qt::NoModifier;
}

} // namespace

// ------------------------------------------------------------------ supplies and assets

FolhaItens::FolhaItens(const QString &tipo, QWidget *parent) : FormRegistro(declaracaoItens(tipo), parent)
{
    connect(static_cast<QComboBox *>(campo("IDGRUPO")), &QComboBox::currentIndexChanged, this, [this] { filtrarSubgrupos(); });
    recarregar();
}

void FolhaItens::filtrarSubgrupos()
{
    encherCombo(static_cast<QComboBox *>(campo("IDSUBGRUPO")),
                "Select Id, Subgrupo From TbGruposSub Where Fk = :G Order By Subgrupo", {{"G", valorDoCampo("IDGRUPO")}});
}

void FolhaItens::limpar()
{
    FormRegistro::limpar();
    if (estado() != Estado::Incluindo) return;
    // A new item is offered the next code; the user may type another one.
    db::Transacao t(Tabs->DbORB(), db::Modo::Leitura);
    definirValor("CODIGO", proximoCodigo(t, "TBINVENTARIO"));
    definirValor("ESTATUAL", QVariant::fromValue(db::Decimal::inteiro(0).comEscala(4)));
}

void FolhaItens::conferirOperacao(const QString &operacao, int id)
{
    if (operacao != QStringLiteral("Excluir")) return;
    db::Transacao t(Tabs->DbORB(), db::Modo::Leitura);
    conferirExclusaoItemInventario(t, id);
}

void FolhaItens::apagar(db::Transacao &t, int id)
{
    excluirItemInventario(t, id, quem());
    Tabs->Deb(declaracao().traco + QString::number(id) + ")");
}

// ------------------------------------------------------------------ maintenances

FolhaManutencoes::FolhaManutencoes(QWidget *parent) : FormRegistro(declaracaoManutencoes(), parent) {}

int FolhaManutencoes::gravarCabecalho(db::Transacao &t, int id)
{
    Valores v;
    for (const CampoForm &c : declaracao().campos) v[c.coluna] = valorDoCampo(c.coluna);
    return salvarManutencao(t, id, v, quem());
}

void FolhaManutencoes::apagar(db::Transacao &t, int id)
{
    excluirManutencao(t, id, quem());
    Tabs->Deb(declaracao().traco + QString::number(id) + ")");
}

// ------------------------------------------------------------------ movements

FolhaMovimentacao::FolhaMovimentacao(QWidget *parent) : FormRegistro(declaracaoMovimentacoes(), parent)
{
    // The carrier box lists carriers or employees by the way the goods travel.
    connect(static_cast<QComboBox *>(campo("FORMAENVIORECTO")), &QComboBox::currentIndexChanged, this, [this] {
        const QString via = valorDoCampo("FORMAENVIORECTO").toString();
        encherCombo(static_cast<QComboBox *>(campo("CODTRANSPORTADORA")), via == kViaOutros || via.isEmpty() ? QString() : sqlPartes(via));
    });
    adicionarLinha(QString(), montarLinhas());

    auto *barra = new QHBoxLayout;
    btAprovar_ = new QPushButton("Apr&ovar (F8)", this);
    btAprovar_->setObjectName("BtAprovar");
    btCancelarAprovacao_ = new QPushButton("Cancelar aprovação", this);
    btCancelarAprovacao_->setObjectName("BtCancelarAprovacao");
    connect(btAprovar_, &QPushButton::clicked, this, &FolhaMovimentacao::BtAprovarClick);
    connect(btCancelarAprovacao_, &QPushButton::clicked, this, &FolhaMovimentacao::BtCancelarAprovacaoClick);
    auto *f8 = new QShortcut(QKeySequence(Qt::Key_F8), this, nullptr, nullptr, Qt::WidgetWithChildrenShortcut);
    connect(f8, &QShortcut::activated, this, [this] { if (btAprovar_->isEnabled()) BtAprovarClick(); });
    barra->addWidget(btAprovar_);
    barra->addWidget(btCancelarAprovacao_);
    barra->addStretch();
    corpo()->insertLayout(0, barra);

    pedirAprovacao = [this](QDate &data, QVariant &resp) {
        QDialog dlg(this);
        dlg.setWindowTitle("Aprovação da Movimentação");
        auto *f = new QFormLayout(&dlg);
        auto *ed = new CampoData(CampoData::Data, &dlg);
        ed->definir(data);
        auto *cb = new QComboBox(&dlg);
        encherCombo(cb, sqlPartes(kInterno));
        cb->setCurrentIndex(std::max(0, cb->findData(resp)));
        f->addRow("Data da aprovação", ed);
        f->addRow("Responsável", cb);
        // The date must read as one before the dialog closes; empty is refused by the approval itself.
        f->addRow(botoesSalvarCancelar(&dlg, [&dlg, ed] {
            try {
                ed->valor();
                dlg.accept();
            } catch (const Recusa &r) {
                Atencao(r.texto);
                ed->setFocus();
            }
        }));
        if (dlg.exec() != QDialog::Accepted) return false;
        data = ed->valor().toDate();
        resp = cb->currentData();
        return true;
    };
    recarregar();  // the first record again, now with its lines
}

QWidget *FolhaMovimentacao::montarLinhas()
{
    camposLinha_ = {{"TIPOITEM", "Tipo de item", C::Lista, {}, 0, 2, itens({kEstoque, kImobilizado})},
                    {"IDGRUPO", "Grupo", C::Consulta, {}, 0, 2, {}, "Select Id, Grupo From TbGrupos Order By Grupo"},
                    {"IDSUBGRUPO", "Subgrupo", C::Lista},
                    {"IDINVENTARIO", "Item", C::Lista},
                    {"TIPOMOVIMENTACAO", "Movimentação", C::Lista, {}, 0, 2, itens({kEntrada, kSaida})},
                    {"QTD", "Quantidade", C::Decimal, {}, 0, 4},
                    {"ORIGEM", "Origem", C::Texto, {}, 50},
                    {"TIPOREMETENTE", "Tipo de remetente", C::Lista, {}, 0, 2, itens({kInterno, kExtCliente, kExtFornecedor})},
                    {"CODREMETENTE", "Remetente", C::Lista},
                    {"DESTINO", "Destino", C::Texto, {}, 50},
                    {"TIPODESTINATARIO", "Tipo de destinatário", C::Lista, {}, 0, 2, itens({kInterno, kExtCliente, kExtFornecedor})},
                    {"CODDESTINATARIO", "Destinatário", C::Lista},
                    {"NOTAFISCAL", "Nota Fiscal", C::Inteiro},
                    {"OBSERVACOES", "Observações", C::Texto, {}, 100}};
    auto *caixa = new QWidget;
    auto *l = new QVBoxLayout(caixa);
    l->setContentsMargins(0, 0, 0, 0);
    l->addWidget(new QLabel("<b>Itens da movimentação</b> (Enter nas observações inclui o item)"));
    auto *g = new QGridLayout;
    for (int i = 0; i < camposLinha_.size(); ++i) {
        QWidget *w = criarWidgetCampo(camposLinha_[i]);
        registrarCampo("L_" + camposLinha_[i].coluna, w);
        g->addWidget(new QLabel(camposLinha_[i].rotulo), i / 3, (i % 3) * 2);
        g->addWidget(w, i / 3, (i % 3) * 2 + 1);
    }
    l->addLayout(g);
    auto combo = [this](const char *c) { return static_cast<QComboBox *>(campo(QString("L_") + c)); };
    connect(combo("TIPOITEM"), &QComboBox::currentIndexChanged, this, [this] { filtrarItens(); });
    connect(combo("IDGRUPO"), &QComboBox::currentIndexChanged, this, [this] {
        preencherCombo("L_IDSUBGRUPO", "Select Id, Subgrupo From TbGruposSub Where Fk = :G Order By Subgrupo",
                       {{"G", valorLinha("IDGRUPO")}});
        filtrarItens();
    });
    connect(combo("IDSUBGRUPO"), &QComboBox::currentIndexChanged, this, [this] { filtrarItens(); });
    for (const char *tipo : {"REMETENTE", "DESTINATARIO"}) {
        const QString t = tipo;
        connect(combo(("TIPO" + t).toLatin1().constData()), &QComboBox::currentIndexChanged, this, [this, t] {
            const QString qual = valorLinha("TIPO" + t).toString();
            preencherCombo("L_COD" + t, qual.isEmpty() ? QString() : sqlPartes(qual));
        });
    }
    auto *b = new QHBoxLayout;
    auto *incluir = new QPushButton("Incluir item");
    incluir->setObjectName("BtIncluirItem");
    auto *excluir = new QPushButton("Excluir item");
    excluir->setObjectName("BtExcluirItem");
    registrarCampo("BtIncluirItem", incluir);  // enabled with the fields, while editing
    registrarCampo("BtExcluirItem", excluir);
    connect(incluir, &QPushButton::clicked, this, &FolhaMovimentacao::BtIncluirLinhaClick);
    connect(excluir, &QPushButton::clicked, this, &FolhaMovimentacao::BtExcluirLinhaClick);
    b->addWidget(incluir);
    b->addWidget(excluir);
    b->addStretch();
    l->addLayout(b);
    modeloLinhas_ = new QStandardItemModel(this);
    modeloLinhas_->setHorizontalHeaderLabels({"Tipo", "Código", "Descrição", "Movimentação", "Qtd", "Un.", "Origem", "Remetente",
                                              "Destino", "Destinatário", "Nota", "Observações"});
    gradeLinhas_ = new QTableView;
    gradeLinhas_->setObjectName("GradeItens");
    gradeLinhas_->setModel(modeloLinhas_);
    prepararGrade(gradeLinhas_);
    gradeLinhas_->setMinimumHeight(120);
    l->addWidget(gradeLinhas_);
    return caixa;
}

void FolhaMovimentacao::preencherCombo(const QString &coluna, const QString &sql, const std::map<QString, QVariant> &p)
{
    encherCombo(static_cast<QComboBox *>(campo(coluna)), sql, p);
}

void FolhaMovimentacao::filtrarItens()
{
    // Items of the chosen kind, group and subgroup, with their code to tell equal names apart.
    preencherCombo("L_IDINVENTARIO",
                   "Select Id, Descricao || ' (' || Codigo || ')' From TbInventario "
                   "Where (Tipo = :T) and (IdGrupo = :G) and (IdSubgrupo = :S) Order By Descricao",
                   {{"T", valorLinha("TIPOITEM")}, {"G", valorLinha("IDGRUPO")}, {"S", valorLinha("IDSUBGRUPO")}});
}

void FolhaMovimentacao::conferirCampo(QWidget *w)
{
    // The line being typed is checked on leaving its fields, as the record's own are.
    for (const CampoForm &c : camposLinha_)
        if (campo("L_" + c.coluna) == w) lerWidgetCampo(c, w);
    FormRegistro::conferirCampo(w);
}

QVariant FolhaMovimentacao::valorLinha(const QString &coluna) const
{
    for (const CampoForm &c : camposLinha_)
        if (c.coluna == coluna) return lerWidgetCampo(c, campo("L_" + coluna));
    return {};
}

void FolhaMovimentacao::definirLinha(const QString &coluna, const QVariant &v)
{
    if (QWidget *w = campo("L_" + coluna)) escreverWidgetCampo(w, v);
}

void FolhaMovimentacao::novaLinhaPadrao()
{
    // Group and kind stay as they were: a movement usually carries several items of one group.
    const Valores padrao = novaLinha();
    for (const CampoForm &c : camposLinha_) {
        if (c.coluna == "IDGRUPO" || c.coluna == "IDSUBGRUPO") continue;
        auto it = padrao.find(c.coluna);
        definirLinha(c.coluna, it == padrao.end() ? QVariant() : it->second);
    }
}

void FolhaMovimentacao::mostrarLinhas()
{
    modeloLinhas_->removeRows(0, modeloLinhas_->rowCount());
    const QStringList cols = {"TIPOITEM", "CODIGO", "DESCRICAO", "TIPOMOVIMENTACAO", "QTD", "UN", "ORIGEM", "REMETENTE",
                              "DESTINO", "DESTINATARIO", "NOTAFISCAL", "OBSERVACOES"};
    for (const Valores &l : std::as_const(linhas_)) {
        QList<QStandardItem *> linha;
        for (const QString &k : cols) {
            const auto it = l.find(k);
            const QVariant v = it == l.end() ? QVariant() : it->second;
            auto *item = new QStandardItem;
            if (v.metaType() == QMetaType::fromType<db::Decimal>()) {
                item->setText(v.value<db::Decimal>().textoBR(4));
                item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
            } else {
                item->setText(k.startsWith("TIPO") ? rotuloTipoParte(v.toString()) : v.toString());
            }
            linha << item;
        }
        modeloLinhas_->appendRow(linha);
    }
}

void FolhaMovimentacao::limpar()
{
    FormRegistro::limpar();
    linhas_.clear();
    mostrarLinhas();
    if (estado() != Estado::Incluindo) return;
    for (const auto &[k, v] : novaMovimentacao(QDate::currentDate())) definirValor(k, v);
    novaLinhaPadrao();
}

void FolhaMovimentacao::carregar(db::Transacao &t, int id)
{
    FormRegistro::carregar(t, id);
    linhas_ = linhasDaMovimentacao(t, id);
    mostrarLinhas();
    novaLinhaPadrao();
}

int FolhaMovimentacao::gravarCabecalho(db::Transacao &t, int id)
{
    Valores cab;
    for (const CampoForm &c : declaracao().campos) cab[c.coluna] = valorDoCampo(c.coluna);
    return salvarMovimentacao(t, id, cab, linhas_, quem());
}

void FolhaMovimentacao::apagar(db::Transacao &t, int id)
{
    excluirMovimentacao(t, id, quem());
    Tabs->Deb(declaracao().traco + QString::number(id) + ")");
}

void FolhaMovimentacao::conferirOperacao(const QString &operacao, int id)
{
    db::Transacao t(Tabs->DbORB(), db::Modo::Leitura);
    conferirMovimentacaoAberta(t, id, operacao);
}

void FolhaMovimentacao::registroMudou(int id)
{
    FormRegistro::registroMudou(id);
    if (btAprovar_) {
        btAprovar_->setEnabled(id != 0);
        btCancelarAprovacao_->setEnabled(id != 0);
    }
}

bool FolhaMovimentacao::eventFilter(QObject *o, QEvent *e)
{
    if (o == campo("L_OBSERVACOES") && enter(e)) {
        BtIncluirLinhaClick();
        return true;
    }
    return FormRegistro::eventFilter(o, e);
}

void FolhaMovimentacao::BtIncluirLinhaClick()
{
    Tabs->Deb("procedure TInventario.EdObservacoesItemKeyPress(Sender: TObject; var Key: Char)");
    if (estado() == Estado::Navegando) return;
    Valores l;
    try {
        for (const CampoForm &c : camposLinha_) l[c.coluna] = valorLinha(c.coluna);
        db::Transacao t(Tabs->DbORB(), db::Modo::Leitura);
        conferirLinha(t, l, linhas_);
    } catch (const Recusa &r) {
        Atencao(r.texto);
        if (QWidget *w = campo("L_" + r.campo)) {
            marcarFalha(w);
            w->setFocus();
        }
        return;
    }
    linhas_ << l;
    mostrarLinhas();
    novaLinhaPadrao();
    campo("L_IDINVENTARIO")->setFocus();
}

void FolhaMovimentacao::BtExcluirLinhaClick()
{
    Tabs->Deb("procedure TInventario.BtExcluirItemClick(Sender: TObject)");
    const QModelIndex i = gradeLinhas_->currentIndex();
    if (estado() == Estado::Navegando || !i.isValid()) return;
    // Only the screen's copy changes; Cancelar still brings the saved lines back.
    linhas_.removeAt(i.row());
    mostrarLinhas();
}

bool FolhaMovimentacao::permitido(const QString &operacao)
{
    Sessao &s = sessao();
    s.menuAtual = quem().menuAtual;
    s.moduloAtual = quem().moduloAtual;
    if (AcessoModulos(operacao)) return true;
    if (s.logado()) SemPermissao();
    return false;
}

void FolhaMovimentacao::BtAprovarClick()
{
    Tabs->Deb("procedure TInventario.BtAprovarClick(Sender: TObject)");
    if (estado() != Estado::Navegando) return;
    const int codigo = idAtual();
    if (!codigo) {
        Atencao("Selecione a movimentação que deseja aprovar!");
        return;
    }
    if (!permitido(kAprovarMovimentacao)) return;
    QDate data = QDate::currentDate();
    QVariant resp;
    // A refusal of the dialog's own fields asks again with what was chosen.
    while (pedirAprovacao(data, resp)) {
        QString campo;
        const auto d = naTransacao([&](db::Transacao &t) {
            aprovarMovimentacao(t, codigo, data, resp, quem());
            Tabs->Log(t, "TBMOVINVENTARIO", "CODIGO", codigo, kAlteracao);
        }, &campo);
        if (d == Desfecho::Feito) {
            informarMonitor(codigo, QStringLiteral("ALTERAÇÃO"));
            recarregar(codigo);
        }
        if (d != Desfecho::Recusado || campo.isEmpty()) return;
    }
}

void FolhaMovimentacao::BtCancelarAprovacaoClick()
{
    Tabs->Deb("procedure TInventario.BtCancelarAprovacaoClick(Sender: TObject)");
    if (estado() != Estado::Navegando) return;
    const int codigo = idAtual();
    if (!codigo) {
        Atencao("Selecione uma movimentação primeiro!");
        return;
    }
    if (!permitido(kCancelarAprovacao)) return;
    if (!Pergunta("Deseja realmente cancelar a aprovação desta movimentação?")) return;
    const auto d = naTransacao([&](db::Transacao &t) {
        cancelarAprovacao(t, codigo, quem());
        Tabs->Log(t, "TBMOVINVENTARIO", "CODIGO", codigo, kAlteracao);
    });
    if (d != Desfecho::Feito) return;
    informarMonitor(codigo, QStringLiteral("ALTERAÇÃO"));
    recarregar(codigo);
}

// ------------------------------------------------------------------ the screen

TInventario::TInventario(QWidget *parent) : QWidget(parent)
{
    Tabs->Deb("procedure TInventario.FormCreate(Sender: TObject)");
    setObjectName(kClasse);
    setWindowTitle("Inventário");
    // The sheets' own operations join the permission catalogue, forbidden until an administrator grants them.
    try {
        db::Transacao t(Tabs->DbORB());
        for (const QString &op : operacoesInventario()) AtualizaAcessos(t, kMenu, kClasse, op);
        t.commit();
    } catch (const db::ErroBanco &) {
        // Another workstation registering them at the same moment is no reason to keep the screen closed.
    }
    auto *l = new QVBoxLayout(this);
    l->setContentsMargins(0, 0, 0, 0);
    folhas_ = new QTabWidget(this);
    folhas_->setObjectName("PcInventario");
    l->addWidget(folhas_);
    estoque_ = new FolhaItens(kEstoque, this);
    imobilizado_ = new FolhaItens(kImobilizado, this);
    manutencoes_ = new FolhaManutencoes(this);
    movimentacao_ = new FolhaMovimentacao(this);
    const std::pair<FormRegistro *, const char *> folhas[] = {
        {estoque_, " Estoque"}, {imobilizado_, " Imobilizado"}, {manutencoes_, " Manutenção"}, {movimentacao_, " Movimentação"}};
    for (const auto &[f, sufixo] : folhas) {
        f->definirMenu(kMenu, kClasse);
        f->definirSufixoOperacoes(QString::fromUtf8(sufixo));
        folhas_->addTab(f, f->declaracao().titulo);
    }
    // Assets registered on their sheet show up in the maintenance list when it is opened again.
    connect(folhas_, &QTabWidget::currentChanged, this, [this](int i) {
        if (folhas_->widget(i) == manutencoes_ && manutencoes_->estado() == FormCadastro::Estado::Navegando)
            encherCombo(static_cast<QComboBox *>(manutencoes_->findChild<QWidget *>("INVENTARIO")),
                        manutencoes_->declaracao().campos.first().sqlLista);
    });
}

} // namespace orb
