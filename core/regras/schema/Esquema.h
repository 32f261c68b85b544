#pragma once
// The database's tables and domains as the program knows them, and the DDL that makes them.

#include <QList>
#include <QString>
#include <QStringList>

namespace esquema {

struct Coluna {
    QString nome;
    QString dominio;
    bool obrigatoria = false;
    QString padrao;  // DEFAULT clause value, when any
};

struct Tabela {
    QString nome;
    QList<Coluna> colunas;

    bool temId() const { return coluna("ID") != nullptr; }
    const Coluna *coluna(const QString &nome) const;
    // The key column: ID, or for the few old tables without it their first required column.
    QString chave() const;
    QString gerador() const { return "GN_" + nome + "_ID"; }
    QString gatilho() const { return "TG_" + nome + "_BI"; }
    QString restricaoChave() const { return nome + "_PRIMARY"; }
};

// Every table of an up-to-date database, in the order they are created.
const QList<Tabela> &tabelas();
const Tabela *tabela(const QString &nome);

// SQL type of a domain name: INTEIRO, DATA, DATAHORA, HORA, NUMERO2/4/5, FLUTUANTE, CARACTEREn,
// STRINGn, TEXTO, TEXTO1024, BINARIO. Empty for an unknown name.
QString tipoDominio(const QString &dominio);
// Every domain the tables use, in a stable order.
QStringList dominiosUsados();

QString ddlDominio(const QString &dominio);
// Column definition as in CREATE TABLE / ALTER TABLE ADD.
QString ddlColuna(const Coluna &c);
QString ddlCriarTabela(const Tabela &t);
QString ddlChave(const Tabela &t);
QString ddlGerador(const Tabela &t);
QString ddlGatilho(const Tabela &t);

// Parses the schema text ("TABELA name" blocks); exposed for tests.
QList<Tabela> lerEsquema(const QString &texto);

} // namespace esquema
