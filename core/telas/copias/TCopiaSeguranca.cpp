#include "copias/TCopiaSeguranca.h"

#include "Recusa.h"
#include "acesso/Acesso.h"
#include "acesso/Sessao.h"
#include "copias/Restauracao.h"
#include "copias/Servico.h"
#include "dados/Tabs.h"
#include "schema/Criacao.h"
#include "ui/Mensagens.h"

#include <QApplication>
#include <QDir>
#include <QEventLoop>
#include <QFileDialog>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QProgressDialog>
#include <QPushButton>
#include <QTabWidget>
#include <QTableWidget>
#include <QThread>
#include <QVBoxLayout>

namespace orb {

namespace {

using Mostrar = std::function<void(int feito, int total, const QString &etapa)>;

// The work runs on a thread of its own (the engine is thread-safe) while this thread keeps the
// screen painted; the user's input waits, as behind any progress dialog.
void emSegundoPlano(const std::function<void(const copias::Progresso &)> &trabalho, const Mostrar &mostrar)
{
    std::exception_ptr erro;
    QObject receptor;
    QEventLoop loop;
    QThread *t = QThread::create([&] {
        try {
            trabalho([&](int f, int total, const QString &etapa) {
                QMetaObject::invokeMethod(&receptor, [&mostrar, f, total, etapa] { mostrar(f, total, etapa); }, Qt::QueuedConnection);
            });
        } catch (...) {
            erro = std::current_exception();
        }
    });
    QObject::connect(t, &QThread::finished, &loop, &QEventLoop::quit);
    t->start();
    loop.exec(QEventLoop::ExcludeUserInputEvents);
    t->wait();
    delete t;
    if (erro) std::rethrow_exception(erro);
}

// Runs f on the screen's thread and waits for it (the data module lives there).
void naTela(QObject *receptor, const std::function<void()> &f)
{
    if (QThread::currentThread() == receptor->thread()) f();
    else QMetaObject::invokeMethod(receptor, f, Qt::BlockingQueuedConnection);
}

QString tamanho(qint64 bytes)
{
    const QLocale l;
    if (bytes < 1024 * 1024) return l.toString(double(bytes) / 1024.0, 'f', 0) + " KB";
    return l.toString(double(bytes) / (1024.0 * 1024.0), 'f', 1) + " MB";
}

QString situacao(const copias::Copia &c)
{
    switch (c.verificacao) {
    case copias::Verificacao::Verificada: return QStringLiteral("Verificada");
    case copias::Verificacao::Falhou: return QStringLiteral("FALHOU");
    case copias::Verificacao::Pendente: break;
    }
    return QStringLiteral("Não verificada");
}

QString pastaDasCopias(const QString &pastaPrograma, const QString &banco)
{
    const copias::Opcoes o = copias::lerOpcoes(pastaPrograma);
    if (o.pasta.isEmpty()) return copias::pastaPadrao(banco);
    return QDir(pastaPrograma).absoluteFilePath(o.pasta);
}

} // namespace

void executarComProgresso(QWidget *pai, const QString &titulo, const std::function<void(const copias::Progresso &)> &trabalho)
{
    QProgressDialog d(titulo, QString(), 0, 0, pai);
    d.setWindowTitle("ORB Manager");
    d.setCancelButton(nullptr);
    d.setWindowModality(Qt::ApplicationModal);
    d.setMinimumDuration(0);
    d.setMinimumWidth(420);
    d.show();
    emSegundoPlano(trabalho, [&d](int f, int total, const QString &etapa) {
        d.setMaximum(total);
        d.setValue(f);
        d.setLabelText(etapa);
    });
}

TCopiaSeguranca::TCopiaSeguranca(const QString &pastaPrograma, QWidget *parent) : QWidget(parent), pastaPrograma_(pastaPrograma)
{
    setObjectName("TCopiaSeguranca");
    auto *l = new QVBoxLayout(this);
    l->setContentsMargins(12, 10, 12, 8);

    auto *barraBotoes = new QHBoxLayout;
    auto botao = [&](const char *nome, const QString &texto, const char *icone, void (TCopiaSeguranca::*f)()) {
        auto *b = new QPushButton(QIcon::fromTheme(icone), texto, this);
        b->setObjectName(nome);
        connect(b, &QPushButton::clicked, this, f);
        barraBotoes->addWidget(b);
        botoes_ << b;
        return b;
    };
    botao("BtCopiar", "Fazer Cópia Agora (F2)", "document-save", &TCopiaSeguranca::BtCopiarClick);
    botao("BtVerificar", "Verificar (F3)", "dialog-ok-apply", &TCopiaSeguranca::BtVerificarClick);
    botao("BtRestaurar", "Restaurar (F8)", "document-revert", &TCopiaSeguranca::BtRestaurarClick);
    barraBotoes->addStretch();
    l->addLayout(barraBotoes);

    auto *linhaPasta = new QHBoxLayout;
    linhaPasta->addWidget(new QLabel("Pasta das cópias:", this));
    edPasta_ = new QLineEdit(this);
    edPasta_->setObjectName("EdPasta");
    linhaPasta->addWidget(edPasta_, 1);
    auto *escolher = new QPushButton("...", this);
    escolher->setObjectName("BtPasta");
    escolher->setToolTip("Escolher a pasta");
    escolher->setMaximumWidth(36);
    connect(escolher, &QPushButton::clicked, this, &TCopiaSeguranca::BtPastaClick);
    connect(edPasta_, &QLineEdit::editingFinished, this, &TCopiaSeguranca::FormShow);
    linhaPasta->addWidget(escolher);
    l->addLayout(linhaPasta);

    grade_ = new QTableWidget(0, 5, this);
    grade_->setObjectName("GrCopias");
    grade_->setHorizontalHeaderLabels({"Data e hora", "Tamanho", "Verificação", "Tipo", "Arquivo"});
    grade_->setSelectionBehavior(QAbstractItemView::SelectRows);
    grade_->setSelectionMode(QAbstractItemView::SingleSelection);
    grade_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    grade_->verticalHeader()->hide();
    grade_->horizontalHeader()->setStretchLastSection(true);
    grade_->setAlternatingRowColors(true);
    l->addWidget(grade_, 1);

    etapa_ = new QLabel(this);
    etapa_->setObjectName("LbEtapa");
    barra_ = new QProgressBar(this);
    barra_->setObjectName("PbProgresso");
    barra_->setTextVisible(true);
    auto *rodape = new QHBoxLayout;
    rodape->addWidget(etapa_, 1);
    rodape->addWidget(barra_, 1);
    l->addLayout(rodape);

    const copias::Opcoes o = copias::lerOpcoes(pastaPrograma_);
    auto *nota = new QLabel(this);
    nota->setObjectName("LbAutomatica");
    nota->setWordWrap(true);
    nota->setStyleSheet("color:#555");
    nota->setText(o.automatica
                      ? QString("Com o banco de dados neste computador, uma cópia é feita ao fechar o programa, uma vez por dia; "
                                "ficam as %1 últimas diárias e %2 mensais (ORBManager.ini, seção [Backup]). Cada cópia é "
                                "restaurada num arquivo temporário e conferida tabela por tabela.").arg(o.diarias).arg(o.mensais)
                      : QString("A cópia automática ao fechar o programa está desligada (ORBManager.ini, seção [Backup])."));
    l->addWidget(nota);

    const QString banco = Tabs->DbORB().conexao().banco;
    edPasta_->setText(QDir::toNativeSeparators(pastaDasCopias(pastaPrograma_, banco)));
    if (!copias::alcancavel(banco)) {
        // The server writes the copies into its own folders, which this computer does not see.
        nota->setText(QString("O banco de dados está no servidor %1: as cópias de segurança são feitas no próprio servidor, "
                              "pelo comando orbmanager --backup agendado nele, ou por esta tela aberta no servidor.")
                          .arg(copias::prefixoServidor(banco).chopped(1)));
        for (QPushButton *b : std::as_const(botoes_)) b->setEnabled(false);
        edPasta_->setEnabled(false);
        escolher->setEnabled(false);
        return;
    }
    FormShow();
}

QString TCopiaSeguranca::pasta() const { return QDir::fromNativeSeparators(edPasta_->text().trimmed()); }

void TCopiaSeguranca::FormShow()
{
    Tabs->Deb("procedure TCopiaSeguranca.FormShow(Sender: TObject)");
    lista_ = copias::listar(pasta());
    grade_->setRowCount(int(lista_.size()));
    for (int i = 0; i < lista_.size(); ++i) {
        const copias::Copia &c = lista_[i];
        auto item = [&](int col, const QString &texto, Qt::Alignment a = Qt::AlignLeft | Qt::AlignVCenter) {
            auto *it = new QTableWidgetItem(texto);
            it->setTextAlignment(a);
            if (c.verificacao == copias::Verificacao::Falhou) it->setForeground(QColor("#b00020"));
            if (!c.motivo.isEmpty()) it->setToolTip(c.motivo);
            grade_->setItem(i, col, it);
        };
        item(0, c.quando.toString("dd/MM/yyyy HH:mm:ss"));
        item(1, tamanho(c.tamanho), Qt::AlignRight | Qt::AlignVCenter);
        item(2, situacao(c));
        item(3, c.automatica ? "Automática" : "Manual");
        item(4, QFileInfo(c.arquivo).fileName());
    }
    grade_->resizeColumnsToContents();
    if (!lista_.isEmpty()) grade_->selectRow(0);
    etapa_->setText(lista_.isEmpty() ? QString("Nenhuma cópia nesta pasta.") : QString("%1 cópia(s) nesta pasta.").arg(lista_.size()));
}

void TCopiaSeguranca::comProgresso(const std::function<void(const copias::Progresso &)> &trabalho)
{
    for (QPushButton *b : std::as_const(botoes_)) b->setEnabled(false);
    barra_->setRange(0, 0);
    struct Reativar {
        TCopiaSeguranca *t;
        ~Reativar()
        {
            for (QPushButton *b : std::as_const(t->botoes_)) b->setEnabled(true);
            t->barra_->setRange(0, 1);
            t->barra_->setValue(1);
        }
    } reativar{this};
    emSegundoPlano(trabalho, [this](int f, int total, const QString &etapa) {
        barra_->setRange(0, total);
        barra_->setValue(f);
        etapa_->setText(etapa);
    });
}

const copias::Copia *TCopiaSeguranca::selecionada() const
{
    const int i = grade_->currentRow();
    return i >= 0 && i < lista_.size() ? &lista_[i] : nullptr;
}

void TCopiaSeguranca::BtCopiarClick()
{
    Tabs->Deb("procedure TCopiaSeguranca.BtCopiarClick(Sender: TObject)");
    if (!AcessoModulos("Incluir")) return;
    const db::Conexao c = Tabs->DbORB().conexao();
    const QString destino = pasta();
    copias::Copia feita;
    try {
        comProgresso([&](const copias::Progresso &p) { feita = copias::fazerCopia(c, destino, QDateTime::currentDateTime(), false, p); });
    } catch (const Recusa &r) {
        FormShow();
        Atencao(r.texto);
        return;
    }
    FormShow();
    if (feita.verificacao == copias::Verificacao::Falhou) {
        Atencao(copias::avisoFalha(feita));
        return;
    }
    Mensagem(QString("Cópia de segurança gravada e verificada.\n\n%1\nTamanho: %2")
                 .arg(QDir::toNativeSeparators(feita.arquivo), tamanho(feita.tamanho)));
}

void TCopiaSeguranca::BtVerificarClick()
{
    Tabs->Deb("procedure TCopiaSeguranca.BtVerificarClick(Sender: TObject)");
    const copias::Copia *s = selecionada();
    if (!s) {
        Atencao("Escolha uma cópia na lista.");
        return;
    }
    const db::Conexao c = Tabs->DbORB().conexao();
    copias::Copia copia = *s;
    try {
        comProgresso([&](const copias::Progresso &p) { copia = copias::verificar(c, copia, p); });
    } catch (const Recusa &r) {
        Atencao(r.texto);
        return;
    }
    FormShow();
    if (copia.verificacao == copias::Verificacao::Falhou) Atencao(copias::avisoFalha(copia));
    else Mensagem("A cópia foi restaurada num arquivo temporário e confere com o banco de dados copiado.");
}

void TCopiaSeguranca::BtRestaurarClick()
{
    Tabs->Deb("procedure TCopiaSeguranca.BtRestaurarClick(Sender: TObject)");
    const copias::Copia *s = selecionada();
    if (!s) {
        Atencao("Escolha uma cópia na lista.");
        return;
    }
    // The screens hold transactions and lists of the database about to be closed.
    for (QWidget *w = parentWidget(); w; w = w->parentWidget())
        if (auto *abas = qobject_cast<QTabWidget *>(w); abas && abas->count() > 2) {
            Atencao("Feche as outras telas antes de restaurar uma cópia de segurança.");
            return;
        }
    const copias::Copia copia = *s;
    const db::Conexao c = Tabs->DbORB().conexao();
    try {
        // Refused before the question when it cannot be done at all.
        copias::conferirRestauracao(Tabs->DbORB(), sessao().idUsuario);
    } catch (const Recusa &r) {
        Atencao(r.texto);
        return;
    }
    QString texto = QString("Restaurar a cópia de segurança de %1?\n\nTodos os dados gravados depois dessa data serão "
                            "perdidos. O banco de dados atual só é descartado depois que a cópia for restaurada, aberta e "
                            "atualizada.\n\nDepois da restauração o programa será fechado.")
                        .arg(copia.quando.toString("dd/MM/yyyy 'às' HH:mm"));
    if (copia.verificacao == copias::Verificacao::Falhou)
        texto = "ATENÇÃO: esta cópia falhou na verificação.\n\n" + texto;
    if (!Pergunta(texto, false)) return;

    copias::Restauracao r{c, copia, QDateTime::currentDateTime(), sessao().idUsuario};
    std::unique_ptr<db::Banco> nova;
    QObject *tela = this;
    db::Banco *atual = &Tabs->DbORB();
    try {
        comProgresso([&](const copias::Progresso &p) {
            nova = copias::restaurar(r, atual, [tela] { naTela(tela, [] { Tabs->desconectar(); }); }, p);
        });
    } catch (const Recusa &e) {
        Atencao(e.texto);
        // The previous database is back in place: the work goes on with it.
        if (!Tabs->conectado()) Tabs->conectar(db::Banco::abrir(c));
        return;
    }
    Tabs->conectar(std::move(nova));
    Mensagem(QString("Cópia de %1 restaurada. O programa será fechado; abra-o novamente para entrar com os usuários da cópia.")
                 .arg(copia.quando.toString("dd/MM/yyyy HH:mm")));
    QCoreApplication::exit(0);
}

void TCopiaSeguranca::BtPastaClick()
{
    Tabs->Deb("procedure TCopiaSeguranca.BtPastaClick(Sender: TObject)");
    const QString p = QFileDialog::getExistingDirectory(this, "Pasta das cópias de segurança", pasta());
    if (p.isEmpty()) return;
    edPasta_->setText(QDir::toNativeSeparators(p));
    FormShow();
}

void TCopiaSeguranca::keyPressEvent(QKeyEvent *e)
{
    switch (e->key()) {
    case Qt::Key_F2: BtCopiarClick(); return;
    case Qt::Key_F3: BtVerificarClick(); return;
    case Qt::Key_F8: BtRestaurarClick(); return;
    case Qt::Key_Escape:
        for (QWidget *w = parentWidget(); w; w = w->parentWidget())
            if (auto *abas = qobject_cast<QTabWidget *>(w)) {
                emit abas->tabCloseRequested(abas->indexOf(this));
                return;
            }
        return;
    default: QWidget::keyPressEvent(e);
    }
}

void copiaAoFechar(const QString &pastaPrograma, const db::Conexao &c)
{
    const copias::Opcoes o = copias::lerOpcoes(pastaPrograma);
    if (!o.automatica || !esquema::arquivoLocal(c)) return;
    const QString destino = pastaDasCopias(pastaPrograma, c.banco);
    if (!copias::copiaAutomaticaPendente(destino, QDate::currentDate())) return;
    copias::Copia feita;
    try {
        executarComProgresso(nullptr, "Fazendo a cópia de segurança diária...", [&](const copias::Progresso &p) {
            feita = copias::fazerCopia(c, destino, QDateTime::currentDateTime(), true, p);
            copias::aplicarRetencao(destino, o.diarias, o.mensais);
        });
    } catch (const Recusa &r) {
        Atencao("A cópia de segurança diária não foi feita.\n\n" + r.texto);
        return;
    }
    if (feita.verificacao == copias::Verificacao::Falhou) Atencao(copias::avisoFalha(feita));
}

} // namespace orb
