#include "schema/Esquema.h"

#include <QFile>
#include <QRegularExpression>
#include <QHash>
#include <stdexcept>

namespace esquema {

const Coluna *Tabela::coluna(const QString &n) const
{
    for (const Coluna &c : colunas)
        if (c.nome == n) return &c;
    return nullptr;
}

QString Tabela::chave() const
{
    if (temId()) return "ID";
    for (const Coluna &c : colunas)
        if (c.obrigatoria) return c.nome;
    return {};
}

QList<Tabela> lerEsquema(const QString &texto)
{
    QList<Tabela> r;
    const QStringList linhas = texto.split('\n');
    for (int i = 0; i < linhas.size(); ++i) {
        const QString l = linhas[i].trimmed();
        if (l.isEmpty() || l.startsWith('#')) continue;
        const QStringList p = l.split(' ', Qt::SkipEmptyParts);
        if (!linhas[i].front().isSpace()) {  // tables start at the margin; columns are indented
            if (p[0] != "TABELA")
                throw std::runtime_error(QString("esquema: linha %1 inválida").arg(i + 1).toStdString());
            r.append(Tabela{p.value(1), {}});
            continue;
        }
        if (r.isEmpty() || p.size() < 2)
            throw std::runtime_error(QString("esquema: linha %1 inválida").arg(i + 1).toStdString());
        Coluna c{p[0], p[1], false, {}};
        for (int k = 2; k < p.size(); ++k) {
            if (p[k] == "NOT" && k + 1 < p.size() && p[k + 1] == "NULL") { c.obrigatoria = true; ++k; }
            else if (p[k] == "DEFAULT" && k + 1 < p.size()) c.padrao = p[++k];
        }
        r.last().colunas.append(c);
    }
    return r;
}

const QList<Tabela> &tabelas()
{
    static const QList<Tabela> t = [] {
        QFile f(":/esquema/tabelas.txt");
        if (!f.open(QIODevice::ReadOnly))
            throw std::runtime_error("esquema: recurso tabelas.txt ausente");
        return lerEsquema(QString::fromUtf8(f.readAll()));
    }();
    return t;
}

const Tabela *tabela(const QString &nome)
{
    static const QHash<QString, const Tabela *> idx = [] {
        QHash<QString, const Tabela *> h;
        for (const Tabela &t : tabelas()) h.insert(t.nome, &t);
        return h;
    }();
    return idx.value(nome.toUpper(), nullptr);
}

QString tipoDominio(const QString &d)
{
    static const QHash<QString, QString> fixos = {
        {"INTEIRO", "INTEGER"},
        {"DATA", "DATE"},
        {"DATAHORA", "TIMESTAMP"},
        {"HORA", "TIME"},
        {"NUMERO2", "NUMERIC(18,2)"},
        {"NUMERO4", "NUMERIC(18,4)"},
        {"NUMERO5", "NUMERIC(18,5)"},
        {"FLUTUANTE", "DOUBLE PRECISION"},
        {"TEXTO", "BLOB SUB_TYPE 1 SEGMENT SIZE 80"},
        {"TEXTO1024", "BLOB SUB_TYPE 1 SEGMENT SIZE 1024 CHARACTER SET WIN1252"},
        {"BINARIO", "BLOB SUB_TYPE 0 SEGMENT SIZE 80"},
    };
    if (auto it = fixos.find(d); it != fixos.end()) return *it;
    static const QRegularExpression re("^(STRING|CARACTERE)(\\d+)$");
    const auto m = re.match(d);
    if (!m.hasMatch()) return {};
    return QString("%1(%2)").arg(m.captured(1) == "STRING" ? "VARCHAR" : "CHAR", m.captured(2));
}

QStringList dominiosUsados()
{
    QStringList r;
    for (const Tabela &t : tabelas())
        for (const Coluna &c : t.colunas)
            if (!r.contains(c.dominio)) r << c.dominio;
    return r;
}

QString ddlDominio(const QString &d) { return QString("CREATE DOMAIN %1 AS %2").arg(d, tipoDominio(d)); }

QString ddlColuna(const Coluna &c)
{
    QString s = c.nome + " " + c.dominio;
    if (!c.padrao.isEmpty()) s += " DEFAULT " + c.padrao;
    if (c.obrigatoria || c.nome == "ID") s += " NOT NULL";
    return s;
}

QString ddlCriarTabela(const Tabela &t)
{
    QStringList cols;
    for (const Coluna &c : t.colunas) {
        Coluna k = c;
        if (k.nome == t.chave()) k.obrigatoria = true;  // a primary key column cannot be null
        cols << "  " + ddlColuna(k);
    }
    return QString("CREATE TABLE %1 (\n%2\n)").arg(t.nome, cols.join(",\n"));
}

QString ddlChave(const Tabela &t)
{
    return QString("ALTER TABLE %1 ADD CONSTRAINT %2 PRIMARY KEY (%3)").arg(t.nome, t.restricaoChave(), t.chave());
}

QString ddlGerador(const Tabela &t) { return "CREATE SEQUENCE " + t.gerador(); }

QString ddlGatilho(const Tabela &t)
{
    return QString("CREATE TRIGGER %1 FOR %2\nACTIVE BEFORE INSERT POSITION 0\nAS\nBEGIN\n"
                   "  IF (NEW.ID IS NULL) THEN\n    NEW.ID = GEN_ID(%3, 1);\nEND")
        .arg(t.gatilho(), t.nome, t.gerador());
}

} // namespace esquema
