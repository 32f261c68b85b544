#pragma once
// A grid model over a select, fetched a page at a time as the grid scrolls, so a list of
// a hundred thousand rows opens at once. Values are shown with the field display conventions.

#include "db/Banco.h"

#include <QAbstractTableModel>
#include <QHash>
#include <map>
#include <memory>

namespace orb {

// A grid cell of field `campo`: its text (display conventions, "SIM"/"NÃO" for flags) or its alignment.
QVariant celula(const QVariant &v, const QString &campo, int role);
// A row whose Z_DESTAQUE column holds "S" is painted apart (a serial already sold, ...).
inline const QString kColunaDestaque = QStringLiteral("Z_DESTAQUE");
QVariant corDestaque(const QVariant &destaque);

class ModeloConsulta : public QAbstractTableModel {
    Q_OBJECT
public:
    static constexpr int kPagina = 200;
    enum Papel { IdRole = Qt::UserRole + 1 };  // the row's ID column

    ModeloConsulta(db::Banco &b, QObject *parent = nullptr);
    ~ModeloConsulta() override;

    // Column captions by field name; fields without one are hidden from the grid.
    void definirColunas(const QList<QPair<QString, QString>> &campoTitulo);
    // Captions of coded values, by column ("M" -> "Mercadorias", "S" -> "SIM").
    void definirLegendas(const QHash<QString, QHash<QString, QString>> &l) { legendas_ = l; }
    void consultar(const QString &sql, const std::map<QString, QVariant> &params = {});
    void recarregar();

    QVariant valor(int linha, const QString &campo) const;
    int idDaLinha(int linha) const;
    int linhaDoId(int id);  // fetches until found; -1 when absent

    int rowCount(const QModelIndex &p = {}) const override;
    int columnCount(const QModelIndex &p = {}) const override;
    QVariant data(const QModelIndex &i, int role) const override;
    QVariant headerData(int s, Qt::Orientation o, int role) const override;
    bool canFetchMore(const QModelIndex &p) const override;
    void fetchMore(const QModelIndex &p) override;

private:
    db::Banco &b_;
    QString sql_;
    std::map<QString, QVariant> params_;
    QList<QPair<QString, QString>> colunas_;
    QHash<QString, QHash<QString, QString>> legendas_;
    std::unique_ptr<db::Transacao> tr_;
    std::unique_ptr<db::Consulta> q_;
    QHash<QString, int> indice_;        // field name -> position in the row
    QList<QList<QVariant>> linhas_;
    bool fim_ = true;
};

} // namespace orb
