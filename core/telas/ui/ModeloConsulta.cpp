#include "ui/ModeloConsulta.h"

#include <QColor>

#include "dados/Formatos.h"
#include "ui/TratadorErros.h"

namespace orb {

ModeloConsulta::ModeloConsulta(db::Banco &b, QObject *parent) : QAbstractTableModel(parent), b_(b) {}
ModeloConsulta::~ModeloConsulta() = default;

void ModeloConsulta::definirColunas(const QList<QPair<QString, QString>> &c)
{
    beginResetModel();
    colunas_ = c;
    endResetModel();
}

void ModeloConsulta::consultar(const QString &sql, const std::map<QString, QVariant> &params)
{
    sql_ = sql;
    params_ = params;
    recarregar();
}

void ModeloConsulta::recarregar()
{
    beginResetModel();
    linhas_.clear();
    q_.reset();
    tr_.reset();
    indice_.clear();
    fim_ = true;
    try {
        tr_ = std::make_unique<db::Transacao>(b_, db::Modo::Leitura);
        q_ = std::make_unique<db::Consulta>(*tr_, sql_);
        for (const auto &[k, v] : params_) q_->bind(k, v);
        q_->executar();
        for (int i = 0; i < q_->colunas(); ++i) indice_.insert(q_->nomeColuna(i), i);
        fim_ = false;
    } catch (...) {
        // A query that failed leaves an empty grid, never one with rows it cannot show.
        q_.reset();
        tr_.reset();
        endResetModel();
        throw;
    }
    endResetModel();
    fetchMore({});
}

bool ModeloConsulta::canFetchMore(const QModelIndex &p) const { return !p.isValid() && !fim_; }

void ModeloConsulta::fetchMore(const QModelIndex &)
{
    if (fim_ || !q_) return;
    if (!tr_->ativa()) {
        // Its attachment was replaced after a lost connection, already told: the list ends here.
        fim_ = true;
        q_.reset();
        tr_.reset();
        return;
    }
    QList<QList<QVariant>> novas;
    try {
        while (novas.size() < kPagina) {
            if (!q_->proxima()) {
                fim_ = true;
                break;
            }
            QList<QVariant> l;
            for (int i = 0; i < q_->colunas(); ++i) l << q_->valor(i);
            novas << l;
        }
    } catch (const db::ErroBanco &) {
        // The view asks for rows while painting: the list ends here and the failure is told
        // once the event at hand is over.
        fim_ = true;
        QMetaObject::invokeMethod(this, [e = std::current_exception()] { Ae1Exception(e); }, Qt::QueuedConnection);
    }
    if (fim_) {  // the whole result is read (or cannot be): the transaction has nothing left to do
        q_.reset();
        tr_.reset();
    }
    if (novas.isEmpty()) return;
    beginInsertRows({}, int(linhas_.size()), int(linhas_.size() + novas.size() - 1));
    linhas_ += novas;
    endInsertRows();
}

QVariant ModeloConsulta::valor(int linha, const QString &campo) const
{
    const int c = indice_.value(campo.toUpper(), -1);
    if (linha < 0 || linha >= linhas_.size() || c < 0) return {};
    return linhas_[linha][c];
}

int ModeloConsulta::idDaLinha(int linha) const { return valor(linha, "ID").toInt(); }

int ModeloConsulta::linhaDoId(int id)
{
    for (int i = 0;; ++i) {
        if (i >= linhas_.size()) {
            if (fim_) return -1;
            fetchMore({});
            if (i >= linhas_.size()) return -1;
        }
        if (idDaLinha(i) == id) return i;
    }
}

int ModeloConsulta::rowCount(const QModelIndex &p) const { return p.isValid() ? 0 : int(linhas_.size()); }
int ModeloConsulta::columnCount(const QModelIndex &p) const { return p.isValid() ? 0 : int(colunas_.size()); }

namespace {
TipoCampo tipoDe(const QVariant &v)
{
    if (v.metaType() == QMetaType::fromType<db::Decimal>()) return TipoCampo::Decimal;
    switch (v.typeId()) {
    case QMetaType::Int: case QMetaType::LongLong: return TipoCampo::Inteiro;
    case QMetaType::Double: return TipoCampo::Flutuante;
    case QMetaType::QDate: return TipoCampo::Data;
    case QMetaType::QDateTime: return TipoCampo::DataHora;
    default: return TipoCampo::Texto;
    }
}
} // namespace

QVariant corDestaque(const QVariant &destaque)
{
    if (destaque.toString() != "S") return {};
    return QColor(0xB0, 0x30, 0x20);
}

QVariant celula(const QVariant &v, const QString &campo, int role)
{
    switch (role) {
    case Qt::DisplayRole: {
        if (v.typeId() == QMetaType::QString && (v.toString() == "S" || v.toString() == "N") && campo.size() <= 2)
            return v.toString() == "S" ? QStringLiteral("SIM") : QStringLiteral("NÃO");  // flags
        const TipoCampo t = tipoDe(v);
        return exibir(v, campo, t, t == TipoCampo::Decimal ? v.value<db::Decimal>().escala() : 2);
    }
    case Qt::EditRole: return v;
    case Qt::TextAlignmentRole: {
        const TipoCampo t = tipoDe(v);
        if (t == TipoCampo::Decimal || t == TipoCampo::Flutuante || t == TipoCampo::Inteiro)
            return int(Qt::AlignRight | Qt::AlignVCenter);
        return int(Qt::AlignLeft | Qt::AlignVCenter);
    }
    default: return {};
    }
}

QVariant ModeloConsulta::data(const QModelIndex &i, int role) const
{
    if (!i.isValid() || i.row() >= linhas_.size()) return {};
    if (role == IdRole) return idDaLinha(i.row());
    if (role == Qt::ForegroundRole) return corDestaque(valor(i.row(), kColunaDestaque));
    const QString campo = colunas_[i.column()].first.toUpper();
    const QVariant v = valor(i.row(), campo);
    if (role == Qt::DisplayRole)
        if (const auto l = legendas_.constFind(campo); l != legendas_.cend() && l->contains(v.toString()))
            return l->value(v.toString());
    return celula(v, campo, role);
}

QVariant ModeloConsulta::headerData(int s, Qt::Orientation o, int role) const
{
    if (o == Qt::Horizontal && role == Qt::DisplayRole && s < colunas_.size()) return colunas_[s].second;
    return QAbstractTableModel::headerData(s, o, role);
}

} // namespace orb
