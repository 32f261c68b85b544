#include "ui/Dialogos.h"
#include "ui/FormRegistro.h"

#include "dados/Tabs.h"
#include "principal/Menus.h"
#include "ui/Foto.h"
#include "ui/Mensagens.h"
#include "ui/Recusa.h"

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
#include <QDateEdit>
#include <QLineEdit>
#include <QLocale>
#include <QPlainTextEdit>
#include <QRegularExpression>

namespace orb {

bool preenchido(const QVariant &v)
{
    if (!v.isValid() || v.isNull()) return false;
    if (v.typeId() == QMetaType::QString) {
        static const QRegularExpression soMascara("^[\\s:/.\\-()_]*$");
        return !soMascara.match(v.toString()).hasMatch();
    }
    return true;
}

DeclaracaoRegistro declararRegistro(const QString &classe, const QString &titulo, const QString &area, const QString &tabela)
{
    DeclaracaoRegistro d;
    d.classe = classe;
    d.titulo = titulo;
    d.area = area;
    d.tabela = tabela;
    return d;
}

void conferirObrigatorios(const DeclaracaoRegistro &d, const Valores &v)
{
    for (const CampoForm &c : d.campos) {
        if (c.obrigatorio.isEmpty()) continue;
        auto it = v.find(c.coluna);
        if (it == v.end() || !preenchido(it->second)) throw Recusa(c.obrigatorio, c.coluna);
    }
}

int proximoCodigo(db::Transacao &t, const QString &tabela, const QString &campo)
{
    return db::escalar(t, QString("Select Coalesce(Max(%1), 0) + 1 From %2").arg(campo, tabela)).toInt();
}

QString sqlGrade(const DeclaracaoRegistro &d)
{
    if (!d.sqlGrade.isEmpty()) return d.sqlGrade;
    return "Select * From " + d.tabela + (d.filtro.isEmpty() ? QString() : " Where (" + d.filtro + ")");
}

void completarTiposFoto(const QList<CampoForm> &campos, Valores &v)
{
    for (const CampoForm &c : campos)
        if (c.tipo == CampoForm::Foto && !c.colunaTipo.isEmpty() && v.count(c.coluna)) {
            const QString tipo = tipoDaFoto(v[c.coluna].toByteArray());
            v[c.colunaTipo] = tipo.isEmpty() ? QVariant() : tipo;
        }
}

int gravarRegistro(db::Transacao &t, const DeclaracaoRegistro &d, int id, Valores v)
{
    conferirObrigatorios(d, v);
    if (d.validar) d.validar(t, id, v);
    if (d.completar) d.completar(t, v, id == 0);
    if (id == 0)
        for (const auto &[k, x] : d.fixos) v[k] = x;
    completarTiposFoto(d.campos, v);
    // Column names come from the declaration, never from what was typed.
    QStringList cols, params, sets;
    for (const auto &[k, x] : v) {
        cols << k;
        params << ":" + k;
        sets << k + " = :" + k;
    }
    if (id == 0) {
        db::Consulta q(t, QString("Insert Into %1 (%2) Values (%3) Returning %4").arg(d.tabela, cols.join(", "), params.join(", "), d.chave));
        for (const auto &[k, x] : v) q.bind(k, x);
        return q.escalar().toInt();
    }
    db::Consulta q(t, QString("Update %1 Set %2 Where %3 = :ID_").arg(d.tabela, sets.join(", "), d.chave));
    for (const auto &[k, x] : v) q.bind(k, x);
    q.bind("ID_", id);
    q.executar();
    return id;
}

Valores lerRegistro(db::Transacao &t, const DeclaracaoRegistro &d, int id)
{
    QStringList cols;
    for (const CampoForm &c : d.campos)
        if (!c.transitorio) cols << c.coluna;
    db::Consulta q(t, QString("Select %1 From %2 Where %3 = :ID").arg(cols.join(", "), d.tabela, d.chave));
    q.bind("ID", id);
    q.executar();
    Valores v;
    if (q.proxima())
        for (const CampoForm &c : d.campos)
            if (!c.transitorio) v[c.coluna] = q.valor(c.coluna.toUpper());
    return v;
}

void excluirRegistro(db::Transacao &t, const DeclaracaoRegistro &d, int id)
{
    db::executar(t, QString("Delete From %1 Where %2 = :ID").arg(d.tabela, d.chave), {{"ID", id}});
}

int gravarDetalhe(db::Transacao &t, const DetalheRegistro &d, int idMestre, int id, const Valores &v)
{
    DeclaracaoRegistro r;
    r.tabela = d.tabela;
    r.campos = d.campos;
    r.fixos = {{d.chave, idMestre}};
    r.completar = d.completar;
    return gravarRegistro(t, r, id, v);
}

void excluirDetalhe(db::Transacao &t, const DetalheRegistro &d, int id)
{
    db::executar(t, QString("Delete From %1 Where Id = :ID").arg(d.tabela), {{"ID", id}});
}

// ------------------------------------------------------------------ field widgets

QWidget *criarWidgetCampo(const CampoForm &c)
{
    switch (c.tipo) {
    case CampoForm::Memo: return new QPlainTextEdit;
    case CampoForm::Marca: return new QCheckBox(c.rotulo);
    case CampoForm::Foto: return new CampoFoto;
    case CampoForm::Data: {
        auto *e = new QDateEdit;
        e->setDisplayFormat("dd/MM/yyyy");
        e->setCalendarPopup(true);
        e->setSpecialValueText(" ");  // the minimum date stands for "empty"
        e->setMinimumDate(QDate(1900, 1, 1));
        return e;
    }
    case CampoForm::Lista:
    case CampoForm::Consulta: {
        auto *cb = new QComboBox;
        cb->addItem("", QVariant());
        if (c.tipo == CampoForm::Lista) {
            for (const auto &[valor, texto] : c.itens) cb->addItem(texto, valor);
        } else {
            // The list query of the lookup box, read when the form opens.
            db::Transacao t(Tabs->DbORB(), db::Modo::Leitura);
            db::Consulta q(t, c.sqlLista);
            q.executar();
            while (q.proxima()) cb->addItem(q.valor(1).toString(), q.valor(0));
        }
        return cb;
    }
    default: {
        auto *e = new QLineEdit;
        if (c.tamanho) e->setMaxLength(c.tamanho);
        if (!c.mascara.isEmpty()) e->setInputMask(c.mascara);
        if (c.tipo != CampoForm::Texto && c.tipo != CampoForm::Hora) e->setAlignment(Qt::AlignRight);
        return e;
    }
    }
}

QVariant lerWidgetCampo(const CampoForm &c, QWidget *w)
{
    if (auto *cb = qobject_cast<QComboBox *>(w)) return cb->currentData();
    if (auto *x = qobject_cast<QCheckBox *>(w)) return x->isChecked() ? "S" : "N";
    if (auto *m = qobject_cast<QPlainTextEdit *>(w)) return m->toPlainText().isEmpty() ? QVariant() : m->toPlainText();
    if (auto *de = qobject_cast<QDateEdit *>(w)) return de->date() == de->minimumDate() ? QVariant() : de->date();
    if (auto *f = qobject_cast<CampoFoto *>(w)) return f->dados().isEmpty() ? QVariant() : QVariant(f->dados());
    const QString s = static_cast<QLineEdit *>(w)->text();
    if (!preenchido(s)) return {};
    switch (c.tipo) {
    case CampoForm::Inteiro: {
        bool ok = false;
        const int n = s.trimmed().toInt(&ok);
        if (!ok) throw Recusa("Valor inválido!", c.coluna);
        return n;
    }
    case CampoForm::Decimal: {
        auto d = db::Decimal::ler(s, true);
        if (!d) throw Recusa("Valor inválido!", c.coluna);
        return QVariant::fromValue(d->comEscala(c.escala));
    }
    case CampoForm::Hora: return s;  // "hh:mm" is stored with its colon
    default: {
        // Masked numbers (CEP, phones, CPF) are stored as their digits only.
        if (c.mascara.isEmpty()) return s;
        QString digitos = s;
        digitos.remove(QRegularExpression("[^0-9A-Za-z]"));
        return digitos;
    }
    }
}

void escreverWidgetCampo(QWidget *w, const QVariant &v)
{
    if (auto *x = qobject_cast<QCheckBox *>(w)) {
        x->setChecked(v.toString() == "S");
    } else if (auto *cb = qobject_cast<QComboBox *>(w)) {
        cb->setCurrentIndex(std::max(0, cb->findData(v)));
    } else if (auto *m = qobject_cast<QPlainTextEdit *>(w)) {
        m->setPlainText(v.toString());
    } else if (auto *de = qobject_cast<QDateEdit *>(w)) {
        de->setDate(v.isNull() ? de->minimumDate() : v.toDate());
    } else if (auto *f = qobject_cast<CampoFoto *>(w)) {
        f->definir(v.toByteArray());
    } else if (auto *e = qobject_cast<QLineEdit *>(w)) {
        if (v.metaType() == QMetaType::fromType<db::Decimal>()) e->setText(v.value<db::Decimal>().textoBR(v.value<db::Decimal>().escala()));
        else if (v.typeId() == QMetaType::QTime) e->setText(v.toTime().toString("HH:mm"));
        else e->setText(v.toString());
    }
}

// ------------------------------------------------------------------ the form

FormRegistro::FormRegistro(DeclaracaoRegistro d, QWidget *parent)
    : FormCadastro(d.classe, d.titulo, d.area, parent), d_(std::move(d))
{
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
    if (!d_.detalhes.isEmpty()) {
        auto *abas = new QTabWidget(this);
        abas->setObjectName("PcDetalhes");
        for (int i = 0; i < d_.detalhes.size(); ++i) {
            const DetalheRegistro &dd = d_.detalhes[i];
            auto *pag = new QWidget;
            auto *l = new QVBoxLayout(pag);
            Detalhe det;
            det.modelo = new ModeloConsulta(Tabs->DbORB(), this);
            det.modelo->definirColunas(dd.colunas);
            det.grade = new QTableView(pag);
            det.grade->setModel(det.modelo);
            prepararGrade(det.grade);
            l->addWidget(det.grade);
            if (!dd.campos.isEmpty()) {
                auto *b = new QHBoxLayout;
                const std::pair<const char *, void (FormRegistro::*)(int)> acoes[] = {
                    {"Incluir item", &FormRegistro::BtIncluirDetalheClick},
                    {"Alterar item", &FormRegistro::BtAlterarDetalheClick},
                    {"Excluir item", &FormRegistro::BtExcluirDetalheClick}};
                for (const auto &[texto, h] : acoes) {
                    auto *bt = new QPushButton(texto, pag);
                    connect(bt, &QPushButton::clicked, this, [this, h = h, i] { (this->*h)(i); });
                    b->addWidget(bt);
                }
                b->addStretch();
                l->addLayout(b);
                connect(det.grade, &QTableView::doubleClicked, this, [this, i] { BtAlterarDetalheClick(i); });
            }
            abas->addTab(pag, dd.titulo);
            detalhes_ << det;
        }
        adicionarPainel(abas);
    }
    definirConsulta(sqlGrade(d_), d_.colunas, d_.ordens);
    editarDetalhe = [this](const DetalheRegistro &dd, Valores &v) {
        // A small dialog made of the detail's own fields.
        QDialog dlg(this);
        dlg.setWindowTitle(dd.titulo);
        auto *f = new QFormLayout(&dlg);
        QList<QWidget *> ws;
        for (const CampoForm &c : dd.campos) {
            QWidget *w = criarWidgetCampo(c);
            escreverWidgetCampo(w, v.count(c.coluna) ? v.at(c.coluna) : QVariant());
            f->addRow(c.rotulo, w);
            ws << w;
        }
        f->addRow(botoesSalvarCancelar(&dlg, [&dlg] { dlg.accept(); }));
        if (dlg.exec() != QDialog::Accepted) return false;
        for (int k = 0; k < dd.campos.size(); ++k) v[dd.campos[k].coluna] = lerWidgetCampo(dd.campos[k], ws[k]);
        return true;
    };
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

void FormRegistro::registroMudou(int id)
{
    for (int i = 0; i < detalhes_.size(); ++i) detalhes_[i].modelo->consultar(d_.detalhes[i].sqlGrade, {{"MESTRE", id}});
}

void FormRegistro::gravarLinhaDetalhe(int i, int id)
{
    const DetalheRegistro &dd = d_.detalhes[i];
    Valores v;
    if (id) {
        db::Transacao t(Tabs->DbORB(), db::Modo::Leitura);
        DeclaracaoRegistro r;
        r.tabela = dd.tabela;
        r.campos = dd.campos;
        v = lerRegistro(t, r, id);
    }
    for (;;) {
        if (!editarDetalhe(dd, v)) return;
        const auto d = naTransacao([&](db::Transacao &t) {
            const int novo = gravarDetalhe(t, dd, idAtual(), id, v);
            Tabs->Log(t, Registro{"select * from " + dd.tabela, {{"ID", novo}}}, id ? QStringLiteral("ALTERAÇÃO") : QStringLiteral("INCLUSÃO"));
        });
        if (d == Desfecho::Feito) registroMudou(idAtual());
        if (d != Desfecho::Recusado) return;  // refused: the row is asked again, with what was typed
    }
}

void FormRegistro::BtIncluirDetalheClick(int i)
{
    Tabs->Deb("procedure " + d_.classe + ".BtIncluirDetalheClick(Sender: TObject)");
    if (estado() != Estado::Navegando || !idAtual()) return;
    gravarLinhaDetalhe(i, 0);
}

void FormRegistro::BtAlterarDetalheClick(int i)
{
    Tabs->Deb("procedure " + d_.classe + ".BtAlterarDetalheClick(Sender: TObject)");
    const QModelIndex ix = detalhes_[i].grade->currentIndex();
    if (estado() != Estado::Navegando || !ix.isValid()) return;
    gravarLinhaDetalhe(i, detalhes_[i].modelo->idDaLinha(ix.row()));
}

void FormRegistro::BtExcluirDetalheClick(int i)
{
    Tabs->Deb("procedure " + d_.classe + ".BtExcluirDetalheClick(Sender: TObject)");
    const QModelIndex ix = detalhes_[i].grade->currentIndex();
    if (estado() != Estado::Navegando || !ix.isValid()) return;
    const DetalheRegistro &dd = d_.detalhes[i];
    if (!Pergunta(dd.perguntaExclusao)) return;
    const int id = detalhes_[i].modelo->idDaLinha(ix.row());
    const auto d = naTransacao([&](db::Transacao &t) {
        excluirDetalhe(t, dd, id);
        Tabs->Log(t, Registro{"select * from " + dd.tabela, {{"ID", id}}}, QStringLiteral("EXCLUSÃO"));
    });
    if (d != Desfecho::Feito) return;
    if (!dd.traco.isEmpty()) Tabs->Deb(dd.traco + QString::number(id) + ")");
    registroMudou(idAtual());
}

void FormRegistro::limpar()
{
    for (const CampoForm &c : d_.campos) definirValor(c.coluna, QVariant());
}


void FormRegistro::carregar(db::Transacao &t, int id)
{
    const Valores v = lerRegistro(t, d_, id);
    for (const CampoForm &c : d_.campos) definirValor(c.coluna, v.count(c.coluna) ? v.at(c.coluna) : QVariant());
}

int FormRegistro::gravar(db::Transacao &t, int id)
{
    Valores v;
    for (const CampoForm &c : d_.campos) v[c.coluna] = valorDoCampo(c.coluna);
    return gravarRegistro(t, d_, id, v);
}

void FormRegistro::apagar(db::Transacao &t, int id)
{
    excluirRegistro(t, d_, id);
    if (!d_.traco.isEmpty()) Tabs->Deb(d_.traco + QString::number(id) + ")");
}

void registrarRegistro(const DeclaracaoRegistro &d)
{
    registrarFormulario(d.classe, [d](QWidget *p) { return new FormRegistro(d, p); });
}

} // namespace orb
