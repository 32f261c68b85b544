#include "ui/ModeloLinhas.h"

#include "dados/Tabs.h"
#include "ui/ModeloConsulta.h"

namespace orb {

ModeloLinhas::ModeloLinhas(const DetalheRegistro &d, QObject *parent) : QAbstractTableModel(parent), d_(d) {}

void ModeloLinhas::definir(const EdicaoDetalhe *e)
{
    beginResetModel();
    e_ = e;
    endResetModel();
}

int ModeloLinhas::rowCount(const QModelIndex &p) const { return p.isValid() || !e_ ? 0 : int(e_->linhas.size()); }
int ModeloLinhas::columnCount(const QModelIndex &p) const { return p.isValid() ? 0 : int(d_.colunas.size()); }

QString ModeloLinhas::legenda(const CampoForm &c, const QVariant &v) const
{
    auto it = listas_.find(c.coluna);
    if (it == listas_.end()) {
        QHash<QString, QString> l;
        try {
            db::Transacao t(Tabs->DbORB(), db::Modo::Leitura);
            db::Consulta q(t, c.sqlLista);
            q.executar();
            while (q.proxima()) l.insert(q.valor(0).toString(), q.valor(1).toString());
        } catch (const db::ErroBanco &) {
            // Without the list the grid shows the stored value.
        }
        it = listas_.insert(c.coluna, l);
    }
    return it->value(v.toString(), v.toString());
}

QVariant ModeloLinhas::data(const QModelIndex &i, int role) const
{
    if (!e_ || !i.isValid() || i.row() >= e_->linhas.size()) return {};
    const QString campo = d_.colunas[i.column()].first.toUpper();
    const Valores &v = e_->linhas[i.row()].valores;
    if (role == Qt::ForegroundRole) {
        const auto d = v.find(kColunaDestaque);
        return d == v.end() ? QVariant() : corDestaque(d->second);
    }
    const auto it = v.find(campo);
    const QVariant valor = it == v.end() ? QVariant() : it->second;
    if (role == Qt::DisplayRole && preenchido(valor)) {
        for (const CampoForm &c : d_.campos) {
            if (c.coluna != campo) continue;
            if (c.tipo == CampoForm::Consulta) return legenda(c, valor);
            if (c.tipo == CampoForm::Lista || c.tipo == CampoForm::Marca)
                return legendas({c}).value(campo).value(valor.toString(), celula(valor, campo, role).toString());
        }
    }
    return celula(valor, campo, role);
}

QVariant ModeloLinhas::headerData(int s, Qt::Orientation o, int role) const
{
    if (o == Qt::Horizontal && role == Qt::DisplayRole && s < d_.colunas.size()) return d_.colunas[s].second;
    return QAbstractTableModel::headerData(s, o, role);
}

} // namespace orb
