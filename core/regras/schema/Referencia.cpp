#include "schema/Referencia.h"

#include "schema/Esquema.h"

#include <QFile>
#include <QSet>
#include <algorithm>
#include <stdexcept>

namespace esquema {

namespace {

struct Fonte {
    QString tabela;
    QString arquivo;     // first line: the columns, by name
    QStringList chave;   // columns of the natural key
};

const QList<Fonte> &fontes()
{
    static const QList<Fonte> f = {
        {"TBCIDADES", ":/referencia/cidades.tsv", {"CIDADE", "UF"}},
        {"TBBANCOS", ":/referencia/bancos.tsv", {"NUMERO"}},
        {"TBCFOP", ":/referencia/cfop.tsv", {"CFOP"}},
    };
    return f;
}

const Fonte &fonte(const QString &tabela)
{
    for (const Fonte &f : fontes())
        if (f.tabela == tabela) return f;
    throw std::logic_error(("tabela sem dados de referência: " + tabela).toStdString());
}

QString semAcentos(const QString &s)
{
    QString r;
    for (const QChar c : s.normalized(QString::NormalizationForm_D))
        if (c.category() != QChar::Mark_NonSpacing) r += c;
    return r;
}

} // namespace

const QStringList &tabelasReferencia()
{
    static const QStringList t = [] {
        QStringList r;
        for (const Fonte &f : fontes()) r << f.tabela;
        return r;
    }();
    return t;
}

QString marcaReferencia(const QString &tabela) { return "GN_ORB_REF_" + tabela; }

QString chaveReferencia(const QStringList &valores)
{
    QStringList partes;
    for (const QString &v : valores) {
        QString p = semAcentos(v).toUpper().simplified();
        const bool numero = !p.isEmpty() && std::all_of(p.begin(), p.end(), [](QChar c) { return c.isDigit(); });
        if (numero) {
            while (p.size() > 1 && p.startsWith('0')) p.remove(0, 1);
        }
        partes << p;
    }
    return partes.join('\t');
}

int carregarReferencia(db::Transacao &t, const QString &tabela)
{
    const Fonte &f = fonte(tabela);
    const Tabela *def = esquema::tabela(tabela);
    QFile arq(f.arquivo);
    if (!def || !arq.open(QIODevice::ReadOnly))
        throw std::logic_error(("dados de referência ausentes: " + f.arquivo).toStdString());
    const QStringList linhas = QString::fromUtf8(arq.readAll()).split('\n', Qt::SkipEmptyParts);
    // The file's own header names the columns; each must be one of the table's, so the SQL text
    // only ever holds the program's identifiers.
    const QStringList colunas = linhas.value(0).trimmed().split('\t');
    QList<bool> inteiro;
    for (const QString &c : colunas) {
        const Coluna *col = def->coluna(c);
        if (!col) throw std::logic_error(("coluna desconhecida em " + f.arquivo + ": " + c).toStdString());
        inteiro << (col->dominio == "INTEIRO");
    }
    QList<int> posChave;
    for (const QString &c : f.chave) posChave << int(colunas.indexOf(c));

    QSet<QString> existentes;
    {
        db::Consulta q(t, "SELECT " + f.chave.join(", ") + " FROM " + tabela);
        q.executar();
        while (q.proxima()) {
            QStringList k;
            for (int i = 0; i < f.chave.size(); ++i) k << q.valor(i).toString();
            existentes.insert(chaveReferencia(k));
        }
    }

    db::Consulta ins(t, "INSERT INTO " + tabela + " (" + colunas.join(", ") + ") VALUES (:" + colunas.join(", :") + ")");
    int inseridas = 0;
    for (int n = 1; n < linhas.size(); ++n) {
        const QStringList campos = linhas[n].split('\t');
        if (campos.size() != colunas.size())
            throw std::logic_error(QString("linha %1 de %2 com %3 campos").arg(n + 1).arg(f.arquivo).arg(campos.size()).toStdString());
        QStringList k;
        for (int p : posChave) k << campos[p];
        const QString chave = chaveReferencia(k);
        if (existentes.contains(chave)) continue;
        existentes.insert(chave);
        for (int i = 0; i < colunas.size(); ++i) {
            const QString v = campos[i].trimmed();
            ins.bind(colunas[i], v.isEmpty() ? QVariant() : inteiro[i] ? QVariant(v.toInt()) : QVariant(v));
        }
        ins.executar();
        ++inseridas;
    }
    return inseridas;
}

} // namespace esquema
