#include "principal/TMain.h"

#include "acesso/FormsAcesso.h"
#include "copias/TCopiaSeguranca.h"
#include "dados/Tabs.h"
#include "principal/ClinicaPadrao.h"
#include "principal/Menus.h"
#include "principal/TConfig.h"
#include "schema/Atualizacao.h"
#include "ui/Cores.h"
#include "ui/FormCadastro.h"
#include "ui/Mensagens.h"

#include <QCloseEvent>
#include <QDialog>
#include <QLabel>
#include <QMenuBar>
#include <QStatusBar>
#include <QTabBar>
#include <QTabWidget>
#include <QThread>
#include <QTimer>
#include <algorithm>

namespace orb {

TMain::TMain(const QString &pastaPrograma, std::function<bool()> pedirLogin, QWidget *parent)
    : QMainWindow(parent), pasta_(pastaPrograma), pedirLogin_(std::move(pedirLogin))
{
    setObjectName("TMain");
    setWindowTitle("ORB Manager");
    resize(1280, 760);
    abas_ = new QTabWidget(this);
    abas_->setObjectName("PcPrincipal");
    abas_->setTabsClosable(true);
    abas_->setDocumentMode(true);
    connect(abas_, &QTabWidget::tabCloseRequested, this, [this](int i) {
        QWidget *w = abas_->widget(i);
        if (w == inicio_) return;
        // A screen may hold several registry sheets: none of them may be left in the middle of an edit.
        QList<FormCadastro *> fs = w->findChildren<FormCadastro *>();
        if (auto *f = qobject_cast<FormCadastro *>(w)) fs << f;
        for (FormCadastro *f : std::as_const(fs))
            if (f->estado() != FormCadastro::Estado::Navegando) {
                // What was typed is neither thrown away nor left behind unseen: the user decides.
                abas_->setCurrentIndex(i);
                Atencao(QStringLiteral("Salve (F10) ou cancele (Esc) o registro em edição antes de fechar esta tela."));
                return;
            }
        abas_->removeTab(i);
        w->deleteLater();  // a form lives as long as its tab
    });
    setCentralWidget(abas_);
    inicio_ = new QLabel(this);
    inicio_->setObjectName("TsInicio");
    inicio_->setAlignment(Qt::AlignCenter);
    inicio_->setTextFormat(Qt::RichText);
    inicio_->setTextInteractionFlags(Qt::LinksAccessibleByMouse | Qt::LinksAccessibleByKeyboard);
    connect(inicio_, &QLabel::linkActivated, this, [this](const QString &link) { abrirTela(link.section(':', 1)); });
    abas_->addTab(inicio_, "Início");
    abas_->tabBar()->setTabButton(0, QTabBar::RightSide, nullptr);  // the home page stays
    // What was done in the other tabs shows in the first steps when the user comes back.
    connect(abas_, &QTabWidget::currentChanged, this, [this](int i) {
        if (isVisible() && abas_->widget(i) == inicio_) atualizarInicio();
    });

    stUsuario_ = new QLabel(this);
    stEmpresa_ = new QLabel(this);
    stData_ = new QLabel(this);
    stBanco_ = new QLabel(this);
    stSuporte_ = new QLabel(this);
    for (QLabel *l : {stUsuario_, stEmpresa_, stData_, stBanco_}) statusBar()->addWidget(l);
    statusBar()->addPermanentWidget(stSuporte_);

    // The timers exist from the start; the modules that need them start them.
    auto timer = [this](const char *nome, int ms) {
        auto *t = new QTimer(this);
        t->setObjectName(nome);
        t->setInterval(ms);
        return t;
    };
    TimerAgenda = timer("TimerAgenda", 30000);
    TiMonOs = timer("TiMonOs", 60000);
    TimerSplash = timer("TimerSplash", 60000);
    Timer1 = timer("Timer1", 1000);
    FormCreate();
}

// The tabs go after this object's members: none of their signals may reach it by then.
TMain::~TMain() { abas_->disconnect(this); }

void TMain::FormCreate()
{
    Tabs->Deb("procedure TMain.FormCreate(Sender: TObject)");
    db::Transacao t(Tabs->DbORB());
    par_ = lerParametros(t);
    if (par_.ramo == "ME") semearClinica(t);
    t.commit();
    if (par_.corCampoAtual.isValid()) definirCorCampoAtual(par_.corCampoAtual);
}

void TMain::montarMenu()
{
    menuBar()->clear();
    nomeMenu_ = nomeMenuPrincipal(par_.ramo);
    menu_ = menuDisponivel(par_.ramo);
    for (const GrupoCatalogo &g : menu_) {
        QMenu *m = menuBar()->addMenu(g.caption);
        m->setObjectName(g.nome);
        for (const ModuloMenu &item : g.modulos) {
            QAction *a = m->addAction(item.caption);
            a->setObjectName(item.nome);
            a->setData(item.classe);
            connect(a, &QAction::triggered, this, [this, g, item] { abrirFormulario(legenda(g.caption), g.nome, item); });
        }
        if (g.nome == "Sistema1") {
            m->addSeparator();
            QAction *logoff = m->addAction("Efetuar &Logoff");
            logoff->setObjectName("EfetuarLogoff1");
            connect(logoff, &QAction::triggered, this, &TMain::EfetuarLogoff1Click);
            QAction *sair = m->addAction("Sai&r");
            sair->setObjectName("Sair1");
            connect(sair, &QAction::triggered, this, &QWidget::close);
        }
    }
}

void TMain::FormShow()
{
    Tabs->Deb("procedure TMain.FormShow(Sender: TObject)");
    montarMenu();
    {
        db::Transacao t(Tabs->DbORB());
        sincronizarCatalogo(t, menu_);
        t.commit();
    }
    Acesso();
    atualizarInicio();
    logoff_ = false;
    showMaximized();
}

void TMain::Acesso()
{
    Tabs->Deb("procedure TMain.Acesso");
    db::Transacao t(Tabs->DbORB(), db::Modo::Leitura);
    const Liberados l = lerLiberados(t, sessao());
    for (QAction *ag : menuBar()->actions()) {
        QMenu *m = ag->menu();
        if (!m) continue;
        const QString cap = legenda(ag->text());
        bool algum = false;
        for (QAction *a : m->actions()) {
            if (a->isSeparator() || a->data().toString().isEmpty()) continue;
            const bool ok = l.menu(cap) && l.modulo(cap, a->data().toString());
            a->setEnabled(ok);
            algum = algum || ok;
        }
        // Logoff and exit are always there; a group with nothing to open is shown but unavailable.
        ag->setEnabled(algum || m->objectName() == "Sistema1");
    }
}

QWidget *TMain::abrirFormulario(const QString &grupoCaption, const QString &grupoNome, const ModuloMenu &m)
{
    Tabs->Deb("procedure TMain.AbrirFormulario(Sender: TObject)");
    Sessao &s = sessao();
    const Veredito v = verificarModulo(Tabs->DbORB(), s, grupoNome, m.classe);
    if (v == Veredito::Negado) {
        SemPermissao(recusaVisualizacao(m.classe));
        return nullptr;
    }
    if (v != Veredito::Permitido) {
        AcessoSubModulos(grupoNome, m.classe);  // tells the user and ends the program
        return nullptr;
    }
    s.menuAtual = grupoCaption;
    s.moduloAtual = m.classe;
    for (int i = 0; i < abas_->count(); ++i)
        if (abas_->widget(i)->objectName() == m.classe) {
            abas_->setCurrentIndex(i);
            return abas_->widget(i);
        }
    QWidget *w = criarFormulario(m.classe, this);
    if (!w) return nullptr;
    if (auto *d = qobject_cast<QDialog *>(w)) {
        d->exec();
        delete d;
        return nullptr;
    }
    QList<FormCadastro *> fs = w->findChildren<FormCadastro *>();
    if (auto *f = qobject_cast<FormCadastro *>(w)) fs << f;
    for (FormCadastro *f : std::as_const(fs)) {
        f->definirMenu(grupoCaption, m.classe);
        connect(f, &FormCadastro::fechar, this, [this, w] {
            const int i = abas_->indexOf(w);
            if (i >= 0) emit abas_->tabCloseRequested(i);
        });
    }
    w->setObjectName(m.classe);
    abas_->setCurrentIndex(abas_->addTab(w, legenda(m.caption)));
    w->setFocus();
    return w;
}

namespace {

// Where a screen is in this segment's menu ("Sistema → Empresas"); empty when it has none.
QPair<const GrupoCatalogo *, const ModuloMenu *> itemDoMenu(const QList<GrupoCatalogo> &menu, const QString &classe)
{
    for (const GrupoCatalogo &g : menu)
        for (const ModuloMenu &m : g.modulos)
            if (m.classe == classe) return {&g, &m};
    return {nullptr, nullptr};
}

} // namespace

void TMain::abrirTela(const QString &classe)
{
    const auto [g, m] = itemDoMenu(menu_, classe);
    if (g) abrirFormulario(legenda(g->caption), g->nome, *m);
}

QString TMain::textoPassos() const
{
    if (passos_.isEmpty()) return {};
    QString linhas;
    for (const PrimeiroPasso &p : passos_) {
        const auto [g, m] = itemDoMenu(menu_, p.telas.value(0));
        const QString caminho = g ? legenda(g->caption) + " → " + legenda(m->caption) : QString();
        linhas += QString("<tr><td style='color:%1; padding-right:8px'>%2</td><td style='color:%3'>%4</td>"
                          "<td style='padding-left:16px'><a href='tela:%5'>%6</a> <span style='color:#777'>(%7)</span></td></tr>")
                      .arg(p.feito ? "#2e7d32" : "#555", p.feito ? "✔" : "☐", p.feito ? "#777" : "#222", p.texto.toHtmlEscaped(),
                           p.telas.value(0), caminho.toHtmlEscaped(), p.teclas.toHtmlEscaped());
    }
    return "<p style='font-size:13pt; font-weight:600; margin-top:24px'>Primeiros passos</p>"
           "<table align='center' cellspacing='4'>" + linhas + "</table>";
}

void TMain::atualizarInicio()
{
    passos_.clear();
    try {
        db::Transacao t(Tabs->DbORB(), db::Modo::Leitura);
        for (PrimeiroPasso p : primeirosPassos(t)) {
            // Only what this segment has a screen for, at the first screen its menu has.
            const auto it = std::find_if(p.telas.begin(), p.telas.end(), [&](const QString &c) { return itemDoMenu(menu_, c).first; });
            if (it == p.telas.end()) continue;
            p.telas = {*it};
            passos_ << p;
        }
    } catch (const db::ErroBanco &) {
        passos_.clear();  // the home page shows without the list; the next screen tells what failed
    }
    if (std::all_of(passos_.begin(), passos_.end(), [](const PrimeiroPasso &p) { return p.feito; })) passos_.clear();
    atualizarStatus();
}

void TMain::atualizarStatus()
{
    QString empresa = par_.nome.isEmpty() ? QString(esquema::kEmpresaNaoPreenchida) : par_.nome.toHtmlEscaped();
    QString suporte;
    for (const QString &x : {par_.supNome, par_.supTel, par_.supWhatsapp, par_.supEmail, par_.supSite})
        if (!x.isEmpty()) suporte += x.toHtmlEscaped() + "<br>";
    const QString cab = par_.corCabecalho.isValid() ? par_.corCabecalho.name() : QStringLiteral("#2d4a66");
    inicio_->setText(QString("<div style='color:%1'><span style='font-size:20pt; font-weight:600'>%2</span></div>"
                             "<p style='font-size:12pt'>Bem-vindo(a), %3.</p>"
                             "<p style='color:#555'>Escolha no menu acima o que deseja fazer. Nas telas de cadastro:<br>"
                             "F2 inclui · F3 altera · F10 salva · Esc cancela · F5 exclui · Enter passa ao próximo campo</p>"
                             "%4")
                         .arg(cab, empresa, (sessao().apelido.isEmpty() ? sessao().usuario : sessao().apelido).toHtmlEscaped(),
                              suporte.isEmpty() ? QString() : "<p style='color:#555'><b>Suporte técnico</b><br>" + suporte + "</p>")
                     + textoPassos());
    const Sessao &s = sessao();
    stUsuario_->setText("Usuário: " + (s.apelido.isEmpty() ? s.usuario : s.apelido));
    stEmpresa_->setText("Empresa: " + (par_.nome.isEmpty() ? QString(esquema::kEmpresaNaoPreenchida) : par_.nome));
    stData_->setText("Data: " + QDate::currentDate().toString("dd/MM/yyyy"));
    stBanco_->setText("Banco de dados: " + Tabs->DbORB().conexao().banco);
    QStringList sup;
    for (const QString &x : {par_.supNome, par_.supTel, par_.supEmail}) if (!x.isEmpty()) sup << x;
    stSuporte_->setText(sup.isEmpty() ? QString() : "Suporte: " + sup.join(" · "));
}

void TMain::EfetuarLogoff1Click()
{
    Tabs->Deb("procedure TMain.EfetuarLogoff1Click(Sender: TObject)");
    if (!Pergunta("Deseja realmente efetuar Logoff de " + sessao().apelido + "?", true)) {
        Acesso();
        return;
    }
    logoff_ = true;
    hide();
    fecharAbas();
    Tabs->RollbackTransacoes();
    sessao() = Sessao{};
    if (pedirLogin_ && pedirLogin_()) {
        FormShow();
        return;
    }
    logoff_ = false;
    close();
}

void TMain::fecharAbas()
{
    while (abas_->count() > 1) {
        QWidget *w = abas_->widget(1);
        abas_->removeTab(1);
        delete w;
    }
}

void TMain::closeEvent(QCloseEvent *e)
{
    Tabs->Deb("procedure TMain.FormCloseQuery(Sender: TObject; var CanClose: Boolean)");
    if (!logoff_ && isVisible()) {
        const auto r = mensageiro().pergunta("Deseja realmente sair do sistema?", "Pergunta",
                                             QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel, QMessageBox::No);
        if (r != QMessageBox::Yes) {
            e->ignore();
            return;
        }
    }
    if (trabalhador_ && trabalhador_->isRunning()) {
        Atencao("Existe um processamento em andamento. O sistema será fechado assim que ele terminar.");
        trabalhador_->wait();
    }
    FormClose();
    e->accept();
}

void TMain::FormClose()
{
    Tabs->Deb("procedure TMain.FormClose(Sender: TObject; var Action: TCloseAction)");
    for (QTimer *t : {TimerAgenda, TiMonOs, TimerSplash, Timer1}) t->stop();
    fecharAbas();
    Tabs->RollbackTransacoes();
}

void registrarFormulariosNucleo(const QString &pastaPrograma)
{
    registrarFormulariosAcesso();
    registrarFormulario("TConfig", [pastaPrograma](QWidget *p) { return new TConfig(pastaPrograma, p); });
    registrarFormulario("TCopiaSeguranca", [pastaPrograma](QWidget *p) { return new TCopiaSeguranca(pastaPrograma, p); });
}

} // namespace orb
