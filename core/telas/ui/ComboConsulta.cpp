#include "ui/ComboConsulta.h"

#include "dados/Avisos.h"
#include "dados/Tabs.h"
#include "ui/Mensagens.h"
#include "ui/TratadorErros.h"

#include <QHash>
#include <QKeyEvent>
#include <QRegularExpression>

namespace orb {

namespace {
QHash<QString, CadastroRapido> &rapidos()
{
    static QHash<QString, CadastroRapido> r;
    return r;
}
} // namespace

void registrarCadastroRapido(const QString &tabela, CadastroRapido f) { rapidos().insert(tabela.toUpper(), std::move(f)); }
bool temCadastroRapido(const QString &tabela) { return rapidos().contains(tabela.toUpper()); }

ComboConsulta::ComboConsulta(const QString &sqlLista, const QString &vazio, QWidget *parent)
    : QComboBox(parent), sql_(sqlLista), vazio_(vazio)
{
    static const QRegularExpression de(R"(\bFrom\s+(\w+))", QRegularExpression::CaseInsensitiveOption);
    tabela_ = de.match(sql_).captured(1).toUpper();
    if (temCadastroRapido(tabela_)) setToolTip(QStringLiteral("F4: cadastrar novo"));
    connect(&avisosTabelas(), &AvisosTabelas::mudou, this, [this](const QString &t) {
        if (t == tabela_) desatualizada_ = true;
    });
    recarregar();
}

void ComboConsulta::recarregar()
{
    const QVariant escolhido = currentData();
    QList<QPair<QString, QVariant>> itens;
    {
        db::Transacao t(Tabs->DbORB(), db::Modo::Leitura);
        db::Consulta q(t, sql_);
        q.executar();
        while (q.proxima()) itens.append({q.valor(1).toString(), q.valor(0)});
    }
    const QSignalBlocker b(this);
    clear();
    addItem(vazio_, QVariant());
    for (const auto &[texto, id] : itens) addItem(texto, id);
    setCurrentIndex(std::max(0, findData(escolhido)));
    desatualizada_ = false;
}

void ComboConsulta::atualizarSeNecessario()
{
    if (!desatualizada_) return;
    try {
        recarregar();
    } catch (const db::ErroBanco &e) {
        AvisarFalha(e);  // the old list stays usable
    }
}

void ComboConsulta::showPopup()
{
    atualizarSeNecessario();
    QComboBox::showPopup();
}

void ComboConsulta::focusInEvent(QFocusEvent *e)
{
    atualizarSeNecessario();
    QComboBox::focusInEvent(e);
}

void ComboConsulta::cadastrarNovo()
{
    auto it = rapidos().find(tabela_);
    if (it == rapidos().end()) return;
    const QVariant novo = (*it)(this);
    if (!novo.isValid()) return;
    recarregar();
    setCurrentIndex(std::max(0, findData(novo)));
    setFocus();
}

void ComboConsulta::keyPressEvent(QKeyEvent *e)
{
    if (e->key() == Qt::Key_F4 && e->modifiers() == Qt::NoModifier && isEnabled() && temCadastroRapido(tabela_)) {
        cadastrarNovo();
        return;
    }
    QComboBox::keyPressEvent(e);
}

} // namespace orb
