#include "ui/FormRegistro.h"

#include "dados/Tabs.h"
#include "principal/Menus.h"
#include "ui/Recusa.h"

#include <QComboBox>
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

int gravarRegistro(db::Transacao &t, const DeclaracaoRegistro &d, int id, Valores v)
{
    conferirObrigatorios(d, v);
    if (d.validar) d.validar(t, id, v);
    if (d.completar) d.completar(t, v, id == 0);
    if (id == 0)
        for (const auto &[k, x] : d.fixos) v[k] = x;
    // Column names come from the declaration, never from what was typed.
    QStringList cols, params, sets;
    for (const auto &[k, x] : v) {
        cols << k;
        params << ":" + k;
        sets << k + " = :" + k;
    }
    if (id == 0) {
        db::Consulta q(t, QString("Insert Into %1 (%2) Values (%3) Returning Id").arg(d.tabela, cols.join(", "), params.join(", ")));
        for (const auto &[k, x] : v) q.bind(k, x);
        return q.escalar().toInt();
    }
    db::Consulta q(t, QString("Update %1 Set %2 Where Id = :ID_").arg(d.tabela, sets.join(", ")));
    for (const auto &[k, x] : v) q.bind(k, x);
    q.bind("ID_", id);
    q.executar();
    return id;
}

Valores lerRegistro(db::Transacao &t, const DeclaracaoRegistro &d, int id)
{
    QStringList cols;
    for (const CampoForm &c : d.campos) cols << c.coluna;
    db::Consulta q(t, QString("Select %1 From %2 Where Id = :ID").arg(cols.join(", "), d.tabela));
    q.bind("ID", id);
    q.executar();
    Valores v;
    if (q.proxima())
        for (const CampoForm &c : d.campos) v[c.coluna] = q.valor(c.coluna.toUpper());
    return v;
}

void excluirRegistro(db::Transacao &t, const DeclaracaoRegistro &d, int id)
{
    db::executar(t, QString("Delete From %1 Where Id = :ID").arg(d.tabela), {{"ID", id}});
}

// ------------------------------------------------------------------ the form

FormRegistro::FormRegistro(DeclaracaoRegistro d, QWidget *parent)
    : FormCadastro(d.classe, d.titulo, d.area, parent), d_(std::move(d))
{
    for (const CampoForm &c : d_.campos) {
        QWidget *w = nullptr;
        switch (c.tipo) {
        case CampoForm::Memo: w = new QPlainTextEdit; break;
        case CampoForm::Data: {
            auto *e = new QDateEdit;
            e->setDisplayFormat("dd/MM/yyyy");
            e->setCalendarPopup(true);
            e->setSpecialValueText(" ");  // the minimum date stands for "empty"
            e->setMinimumDate(QDate(1900, 1, 1));
            w = e;
            break;
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
            w = cb;
            break;
        }
        default: {
            auto *e = new QLineEdit;
            if (c.tamanho) e->setMaxLength(c.tamanho);
            if (!c.mascara.isEmpty()) e->setInputMask(c.mascara);
            if (c.tipo != CampoForm::Texto && c.tipo != CampoForm::Hora) e->setAlignment(Qt::AlignRight);
            w = e;
        }
        }
        adicionarCampo(c.coluna, c.rotulo, w);
    }
    definirConsulta(sqlGrade(d_), d_.colunas, d_.ordens);
}

QVariant FormRegistro::valorDoCampo(const QString &coluna) const
{
    const CampoForm *c = nullptr;
    for (const CampoForm &x : d_.campos)
        if (x.coluna == coluna) c = &x;
    QWidget *w = campo(coluna);
    if (!c || !w) return {};
    if (auto *cb = qobject_cast<QComboBox *>(w)) return cb->currentData();
    if (auto *m = qobject_cast<QPlainTextEdit *>(w)) return m->toPlainText().isEmpty() ? QVariant() : m->toPlainText();
    if (auto *de = qobject_cast<QDateEdit *>(w)) return de->date() == de->minimumDate() ? QVariant() : de->date();
    const QString s = static_cast<QLineEdit *>(w)->text();
    if (!preenchido(s)) return {};
    switch (c->tipo) {
    case CampoForm::Inteiro: {
        bool ok = false;
        const int n = s.trimmed().toInt(&ok);
        if (!ok) throw Recusa("Valor inválido!", coluna);
        return n;
    }
    case CampoForm::Decimal: {
        auto d = db::Decimal::ler(s, true);
        if (!d) throw Recusa("Valor inválido!", coluna);
        return QVariant::fromValue(d->comEscala(c->escala));
    }
    case CampoForm::Hora: return s;  // "hh:mm" is stored with its colon
    default: {
        // Masked numbers (CEP, phones, CPF) are stored as their digits only.
        if (c->mascara.isEmpty()) return s;
        QString digitos = s;
        digitos.remove(QRegularExpression("[^0-9A-Za-z]"));
        return digitos;
    }
    }
}

void FormRegistro::definirValor(const QString &coluna, const QVariant &v)
{
    QWidget *w = campo(coluna);
    if (!w) return;
    if (auto *cb = qobject_cast<QComboBox *>(w)) {
        cb->setCurrentIndex(std::max(0, cb->findData(v)));
    } else if (auto *m = qobject_cast<QPlainTextEdit *>(w)) {
        m->setPlainText(v.toString());
    } else if (auto *de = qobject_cast<QDateEdit *>(w)) {
        de->setDate(v.isNull() ? de->minimumDate() : v.toDate());
    } else if (auto *e = qobject_cast<QLineEdit *>(w)) {
        if (v.metaType() == QMetaType::fromType<db::Decimal>()) e->setText(v.value<db::Decimal>().textoBR(v.value<db::Decimal>().escala()));
        else e->setText(v.toString());
    }
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
