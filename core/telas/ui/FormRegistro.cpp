#include "ui/Dialogos.h"
#include "ui/FormRegistro.h"
#include "ui/ComboConsulta.h"

#include "acesso/Permissoes.h"
#include "dados/Formatos.h"
#include "dados/Tabs.h"
#include "principal/Menus.h"
#include "ui/Campos.h"
#include "ui/Foto.h"
#include "ui/ModeloLinhas.h"
#include "ui/Mensagens.h"
#include "ui/TratadorErros.h"
#include "Recusa.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QPushButton>
#include <QTabWidget>
#include <QTableView>
#include <QVBoxLayout>
#include <QLineEdit>
#include <QLocale>
#include <QCompleter>
#include <QPlainTextEdit>
#include <QRegularExpression>

namespace orb {

// ------------------------------------------------------------------ field widgets

QWidget *criarWidgetCampo(const CampoForm &c)
{
    switch (c.tipo) {
    case CampoForm::Memo: return new QPlainTextEdit;
    case CampoForm::Marca: return new QCheckBox(c.rotulo);
    case CampoForm::Foto: return new CampoFoto;
    case CampoForm::Data: return new CampoData(CampoData::Data);
    case CampoForm::Hora: return new CampoData(CampoData::Hora);
    case CampoForm::Inteiro:
    case CampoForm::Decimal: return new CampoNumero(c);
    case CampoForm::Lista:
    case CampoForm::Consulta: {
        if (c.tipo == CampoForm::Consulta) {
            auto *cb = new ComboConsulta(c.sqlLista);
            if (!c.desconhecido.isEmpty()) {
                // The name may be typed, completed from the list as it goes.
                cb->setEditable(true);
                cb->setInsertPolicy(QComboBox::NoInsert);
                cb->completer()->setCaseSensitivity(Qt::CaseInsensitive);
                cb->completer()->setFilterMode(Qt::MatchContains);
                cb->completer()->setCompletionMode(QCompleter::PopupCompletion);
            }
            return cb;
        }
        auto *cb = new QComboBox;
        cb->addItem("", QVariant());
        for (const auto &[valor, texto] : c.itens) cb->addItem(texto, valor);
        return cb;
    }
    default: {
        if (campoTelefone(c.coluna)) return new CampoTelefone;
        auto *e = new QLineEdit;
        if (c.tamanho) e->setMaxLength(c.tamanho);
        if (!c.mascara.isEmpty()) e->setInputMask(c.mascara);
        if (c.senha) e->setEchoMode(QLineEdit::Password);
        return e;
    }
    }
}

QVariant lerWidgetCampo(const CampoForm &c, QWidget *w)
{
    if (auto *cb = qobject_cast<QComboBox *>(w)) {
        if (!cb->isEditable()) return cb->currentData();
        const QString typed = cb->currentText().trimmed();
        if (typed.isEmpty()) return {};
        const int i = cb->findText(typed, Qt::MatchFixedString);
        if (i < 0) throw Recusa(c.desconhecido, c.coluna);
        return cb->itemData(i);
    }
    if (auto *x = qobject_cast<QCheckBox *>(w)) return x->isChecked() ? "S" : "N";
    if (auto *m = qobject_cast<QPlainTextEdit *>(w)) return m->toPlainText().isEmpty() ? QVariant() : m->toPlainText();
    if (auto *f = qobject_cast<CampoFoto *>(w)) return f->dados().isEmpty() ? QVariant() : QVariant(f->dados());
    if (auto *d = qobject_cast<CampoData *>(w)) {
        const QVariant v = d->valor(c.coluna);
        // Times are kept as "hh:mm" text, with the colon.
        return v.typeId() == QMetaType::QTime ? QVariant(v.toTime().toString("HH:mm")) : v;
    }
    if (auto *n = qobject_cast<CampoNumero *>(w)) return n->valor();
    if (auto *f = qobject_cast<CampoTelefone *>(w)) return f->digitos().isEmpty() ? QVariant() : f->digitos();
    const QString s = static_cast<QLineEdit *>(w)->text();
    if (!preenchido(s)) return {};
    // Masked numbers (CEP, CPF) are stored as their digits only.
    if (c.mascara.isEmpty()) return s;
    QString digitos = s;
    digitos.remove(QRegularExpression("[^0-9A-Za-z]"));
    return digitos;
}

void escreverWidgetCampo(QWidget *w, const QVariant &v)
{
    if (auto *x = qobject_cast<QCheckBox *>(w)) {
        x->setChecked(v.toString() == "S");
    } else if (auto *cb = qobject_cast<QComboBox *>(w)) {
        // A row created since the list was read (here or elsewhere) is shown once the list is read again.
        auto *consulta = qobject_cast<ComboConsulta *>(cb);
        if (consulta && !v.isNull() && cb->findData(v) < 0) consulta->recarregar();
        cb->setCurrentIndex(std::max(0, cb->findData(v)));
    } else if (auto *m = qobject_cast<QPlainTextEdit *>(w)) {
        m->setPlainText(v.toString());
    } else if (auto *d = qobject_cast<CampoData *>(w)) {
        d->definir(v);
    } else if (auto *n = qobject_cast<CampoNumero *>(w)) {
        n->definir(v);
    } else if (auto *f = qobject_cast<CampoTelefone *>(w)) {
        f->definir(v.toString());
    } else if (auto *f = qobject_cast<CampoFoto *>(w)) {
        f->definir(v.toByteArray());
    } else if (auto *e = qobject_cast<QLineEdit *>(w)) {
        if (v.metaType() == QMetaType::fromType<db::Decimal>()) e->setText(v.value<db::Decimal>().textoBR(v.value<db::Decimal>().escala()));
        else e->setText(v.toString());
    }
}

// ------------------------------------------------------------------ the form

FormRegistro::FormRegistro(DeclaracaoRegistro d, QWidget *parent)
    : FormCadastro(d.classe, d.titulo, d.area, parent), d_(std::move(d))
{
    if (!d_.classeTraco.isEmpty()) definirNomeTraco(d_.classeTraco);
    // Consecutive check boxes on one page share a row, five to a line.
    for (int i = 0; i < d_.campos.size();) {
        const CampoForm &c = d_.campos[i];
        if (c.tipo != CampoForm::Marca) {
            adicionarCampo(c.coluna, c.rotulo, criarWidgetCampo(c), c.aba);
            ++i;
            continue;
        }
        auto *caixa = new QWidget;
        auto *grade = new QGridLayout(caixa);
        grade->setContentsMargins(0, 0, 0, 0);
        int n = 0;
        for (; i < d_.campos.size() && d_.campos[i].tipo == CampoForm::Marca && d_.campos[i].aba == c.aba; ++i, ++n) {
            QWidget *w = criarWidgetCampo(d_.campos[i]);
            registrarCampo(d_.campos[i].coluna, w);
            grade->addWidget(w, n / 5, n % 5);
        }
        adicionarLinha(n > 1 ? QStringLiteral("Tipo de cadastro") : QString(), caixa, c.aba);
    }
    edicao_ = EdicaoDetalhes(d_.detalhes.size());
    if (!d_.detalhes.isEmpty()) {
        abasDetalhes_ = new QTabWidget(this);
        abasDetalhes_->setObjectName("PcDetalhes");
        for (int i = 0; i < d_.detalhes.size(); ++i) {
            const DetalheRegistro &dd = d_.detalhes[i];
            Detalhe det;
            det.pagina = new QWidget;
            auto *l = new QVBoxLayout(det.pagina);
            det.grade = new QTableView(det.pagina);
            if (dd.editavel()) {
                det.linhas = new ModeloLinhas(d_.detalhes[i], this);
                det.linhas->definir(&edicao_[i]);
                det.grade->setModel(det.linhas);
            } else {
                det.consulta = new ModeloConsulta(Tabs->DbORB(), this);
                det.consulta->definirColunas(dd.colunas);
                det.grade->setModel(det.consulta);
            }
            prepararGrade(det.grade);
            l->addWidget(det.grade);
            if (dd.editavel()) {
                auto *b = new QHBoxLayout;
                const std::pair<const char *, void (FormRegistro::*)(int)> acoes[] = {
                    {"Incluir item", &FormRegistro::BtIncluirDetalheClick},
                    {"Alterar item", &FormRegistro::BtAlterarDetalheClick},
                    {"Excluir item", &FormRegistro::BtExcluirDetalheClick}};
                for (const auto &[texto, h] : acoes) {
                    auto *bt = new QPushButton(texto, det.pagina);
                    connect(bt, &QPushButton::clicked, this, [this, h = h, i] { (this->*h)(i); });
                    b->addWidget(bt);
                    det.botoes << bt;
                }
                b->addStretch();
                l->addLayout(b);
                connect(det.grade, &QTableView::doubleClicked, this, [this, i] { BtAlterarDetalheClick(i); });
            }
            abasDetalhes_->addTab(det.pagina, dd.titulo);
            detalhes_ << det;
        }
        adicionarPainel(abasDetalhes_);
    }
    modelo()->definirLegendas(legendas(d_.campos));
    // The small tables are read whole and typing locates in them.
    localizarAoDigitar(true);
    definirConsulta(sqlGrade(d_), d_.colunas, d_.ordens);
    if (d_.campos.isEmpty()) somenteConsulta();
    editarDetalhe = [this](const DetalheRegistro &dd, Valores &v) {
        // A small dialog made of the detail's own fields.
        QDialog dlg(this);
        dlg.setWindowTitle(QString(dd.titulo).remove('&'));
        auto *f = new QFormLayout(&dlg);
        QList<QWidget *> ws;
        for (const CampoForm &c : dd.campos) {
            QWidget *w = criarWidgetCampo(c);
            escreverWidgetCampo(w, v.count(c.coluna) ? v.at(c.coluna) : QVariant());
            f->addRow(c.rotulo, w);
            ws << w;
        }
        f->addRow(botoesSalvarCancelar(&dlg, [&dlg] { dlg.accept(); }));
        for (;;) {
            if (dlg.exec() != QDialog::Accepted) return false;
            try {
                for (int k = 0; k < dd.campos.size(); ++k) v[dd.campos[k].coluna] = lerWidgetCampo(dd.campos[k], ws[k]);
                return true;
            } catch (const Recusa &r) {
                Atencao(r.texto);  // a number typed wrong: the dialog stays with what was typed
            }
        }
    };
    estadoMudou();
}

void FormRegistro::conferirCampo(QWidget *w)
{
    for (const CampoForm &c : d_.campos)
        if (campo(c.coluna) == w) lerWidgetCampo(c, w);
}

QVariant FormRegistro::valorDoCampo(const QString &coluna) const
{
    for (const CampoForm &c : d_.campos)
        if (c.coluna == coluna) return lerWidgetCampo(c, campo(coluna));
    return {};
}

void FormRegistro::definirValor(const QString &coluna, const QVariant &v)
{
    if (QWidget *w = campo(coluna)) escreverWidgetCampo(w, v);
}

QAbstractItemModel *FormRegistro::modeloDetalhe(int i) const
{
    const Detalhe &d = detalhes_[i];
    return d.linhas ? static_cast<QAbstractItemModel *>(d.linhas) : d.consulta;
}

int FormRegistro::idDaLinhaDetalhe(int i, int linha) const
{
    const Detalhe &d = detalhes_[i];
    if (d.consulta) return d.consulta->idDaLinha(linha);
    return linha >= 0 && linha < edicao_[i].linhas.size() ? edicao_[i].linhas[linha].id : 0;
}

void FormRegistro::mostrarDetalhes()
{
    for (int i = 0; i < detalhes_.size(); ++i)
        if (detalhes_[i].linhas) {
            detalhes_[i].linhas->definir(&edicao_[i]);
            detalhes_[i].grade->resizeColumnsToContents();  // captions and names whole, not cut
        }
}

void FormRegistro::registroMudou(int id)
{
    for (int i = 0; i < detalhes_.size(); ++i)
        if (detalhes_[i].consulta) detalhes_[i].consulta->consultar(d_.detalhes[i].sqlGrade, {{"MESTRE", id}});
}

QStringList FormRegistro::tabelasEscritas() const
{
    QStringList t = {d_.tabela};
    for (const DetalheRegistro &x : d_.detalhes)
        if (x.editavel()) t << x.tabela;
    return t;
}

Valores FormRegistro::valoresDoRegistro() const
{
    Valores v;
    for (const CampoForm &c : d_.campos) v[c.coluna] = valorDoCampo(c.coluna);
    if (estado() == Estado::Incluindo && !d_.numerada.isEmpty() && !oferecido_.isNull()) v[kCodigoOferecido] = oferecido_;
    return v;
}

void FormRegistro::estadoMudou()
{
    // The code the screen offers is known once Incluir has filled the defaults.
    if (estado() != Estado::Incluindo) oferecido_ = QVariant();
    else if (!oferecido_.isValid() && !d_.numerada.isEmpty()) oferecido_ = valorDoCampo(d_.numerada);
    // Detail rows are typed only while the record itself is being edited.
    const bool editando = estado() != Estado::Navegando;
    for (const Detalhe &d : std::as_const(detalhes_))
        for (QPushButton *b : d.botoes) b->setEnabled(editando);
}

QWidget *FormRegistro::widgetDaRecusa(const QString &nome)
{
    // A refusal of a detail's row names its table: the tab comes forward with its grid.
    for (int i = 0; i < d_.detalhes.size(); ++i)
        if (d_.detalhes[i].tabela == nome && detalhes_[i].grade) {
            abasDetalhes_->setCurrentIndex(i);
            return detalhes_[i].grade;
        }
    return FormCadastro::widgetDaRecusa(nome);
}

void FormRegistro::editarLinhaDetalhe(int i, int linha)
{
    const DetalheRegistro &dd = d_.detalhes[i];
    EdicaoDetalhe &e = edicao_[i];
    Valores v = linha >= 0 ? e.linhas[linha].valores : Valores{};
    for (;;) {
        if (!editarDetalhe(dd, v)) return;
        try {
            // Checked now, so the user hears of it at once; checked again with everything at Salvar.
            conferirLinhaDetalhe(transacao(), dd, v, e.valores(linha));
        } catch (const Recusa &r) {
            Atencao(r.texto);
            continue;  // the row is asked again, with what was typed
        } catch (const db::ErroBanco &x) {
            AvisarFalha(x);
            return;
        }
        break;
    }
    if (linha >= 0) e.alterar(linha, v);
    else e.incluir(v);
    mostrarDetalhes();
    const int alvo = linha >= 0 ? linha : int(e.linhas.size()) - 1;
    detalhes_[i].grade->selectRow(alvo);
}

void FormRegistro::BtIncluirDetalheClick(int i)
{
    Tabs->Deb("procedure " + d_.classe + ".BtIncluirDetalheClick(Sender: TObject)");
    if (estado() == Estado::Navegando || !d_.detalhes[i].editavel() || !permitido("Incluir")) return;
    editarLinhaDetalhe(i, -1);
}

void FormRegistro::BtAlterarDetalheClick(int i)
{
    Tabs->Deb("procedure " + d_.classe + ".BtAlterarDetalheClick(Sender: TObject)");
    const QModelIndex ix = detalhes_[i].grade->currentIndex();
    if (estado() == Estado::Navegando || !d_.detalhes[i].editavel() || !ix.isValid() || !permitido("Alterar")) return;
    editarLinhaDetalhe(i, ix.row());
}

void FormRegistro::BtExcluirDetalheClick(int i)
{
    Tabs->Deb("procedure " + d_.classe + ".BtExcluirDetalheClick(Sender: TObject)");
    const QModelIndex ix = detalhes_[i].grade->currentIndex();
    if (estado() == Estado::Navegando || !d_.detalhes[i].editavel() || !ix.isValid() || !permitido("Excluir")) return;
    const DetalheRegistro &dd = d_.detalhes[i];
    if (!Pergunta(dd.perguntaExclusao)) return;
    const int id = edicao_[i].linhas[ix.row()].id;
    edicao_[i].excluir(ix.row());
    mostrarDetalhes();
    if (!dd.traco.isEmpty() && id) Tabs->Deb(dd.traco + QString::number(id) + ")");
}

void FormRegistro::limpar()
{
    for (const CampoForm &c : d_.campos) definirValor(c.coluna, QVariant());
    edicao_ = EdicaoDetalhes(d_.detalhes.size());
    mostrarDetalhes();
}

void FormRegistro::carregar(db::Transacao &t, int id)
{
    const Valores v = lerRegistro(t, d_, id);
    for (const CampoForm &c : d_.campos) definirValor(c.coluna, v.count(c.coluna) ? v.at(c.coluna) : QVariant());
    // At Alterar this reads in the area transaction, after the record's lock.
    edicao_ = lerDetalhes(t, d_, id);
    mostrarDetalhes();
}

int FormRegistro::gravarCabecalho(db::Transacao &t, int id)
{
    return gravarRegistro(t, d_, id, valoresDoRegistro(), quem());
}

int FormRegistro::gravar(db::Transacao &t, int id)
{
    const int chave = gravarCabecalho(t, id);
    const EdicaoDetalhes e = detalhesGenericos();
    conferirDetalhes(t, d_, e);
    gravarDetalhes(t, d_, chave, e, quem());
    return chave;
}

// Dependent rows refuse the deletion before the question; the routine checks again as it deletes.
void FormRegistro::conferirOperacao(const QString &operacao, int id)
{
    if (operacao != "Excluir" || d_.impedem.isEmpty()) return;
    db::Transacao t(Tabs->DbORB(), db::Modo::Leitura);
    conferirExclusao(t, d_, id);
}

void FormRegistro::apagar(db::Transacao &t, int id)
{
    excluirRegistro(t, d_, id, quem());
    if (!d_.traco.isEmpty()) Tabs->Deb(d_.traco + QString::number(id) + ")");
}

namespace {

// F4 on a lookup of the registry's table: the registry in a small window, already including;
// it closes with the new row's ID at Salvar, or with nothing at Cancelar.
QVariant cadastroRapido(const DeclaracaoRegistro &d, QWidget *pai)
{
    QDialog dlg(pai);
    dlg.setWindowTitle(QString(d.titulo).remove('&'));
    auto *l = new QVBoxLayout(&dlg);
    auto *f = new FormRegistro(d, &dlg);
    l->addWidget(f);
    {
        db::Transacao t(Tabs->DbORB(), db::Modo::Leitura);
        f->definirMenu(menuDoModulo(t, d.classe), d.classe);
    }
    QVariant novo;
    QObject::connect(f, &FormCadastro::edicaoEncerrada, &dlg, [&](int id) {
        novo = id ? QVariant(id) : QVariant();
        dlg.done(id ? QDialog::Accepted : QDialog::Rejected);
    });
    QObject::connect(f, &FormCadastro::fechar, &dlg, &QDialog::reject);
    f->BtIncluirClick();
    if (f->estado() != FormCadastro::Estado::Incluindo) return {};  // no right to include: already told
    dlg.resize(640, 480);
    dlg.exec();
    if (f->estado() != FormCadastro::Estado::Navegando) f->BtCancelarClick();  // closed by the window's own key
    return novo;
}

} // namespace

void registrarRegistro(const DeclaracaoRegistro &d)
{
    registrarFormulario(d.classe, [d](QWidget *p) { return new FormRegistro(d, p); });
    // A registry that is a whole table keyed by ID can be filled from any lookup of that table.
    if (d.filtro.isEmpty() && d.chave == "ID" && !temCadastroRapido(d.tabela))
        registrarCadastroRapido(d.tabela, [d](QWidget *pai) { return cadastroRapido(d, pai); });
}

} // namespace orb
