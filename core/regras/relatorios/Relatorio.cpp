#include "relatorios/Relatorio.h"

#include "Recusa.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QSet>
#include <kainjow/mustache.hpp>

namespace orb {

namespace mu = kainjow::mustache;

namespace {

QString &pastaDefinida()
{
    static QString p;
    return p;
}

mu::data converter(const QVariant &v)
{
    if (v.typeId() == QMetaType::QVariantMap) {
        mu::data d{mu::data::type::object};
        const QVariantMap m = v.toMap();
        for (auto it = m.begin(); it != m.end(); ++it)
            d.set(it.key().toStdString(), converter(it.value()));
        return d;
    }
    if (v.typeId() == QMetaType::QVariantList) {
        mu::data l{mu::data::type::list};
        for (const QVariant &x : v.toList())
            l.push_back(converter(x));
        return l;
    }
    if (v.typeId() == QMetaType::Bool)
        return v.toBool() ? mu::data{mu::data::type::bool_true} : mu::data{mu::data::type::bool_false};
    // An empty text is false, as in most mustache renderers: {{#EMAIL}}...{{/EMAIL}} hides a line with nothing to show.
    const QString s = v.toString();
    return s.isEmpty() ? mu::data{mu::data::type::bool_false} : mu::data{s.toStdString()};
}

QString lerModelo(const QString &nome)
{
    QFile f(QDir(pastaRelatorios()).filePath(nome + ".html"));
    if (!f.open(QIODevice::ReadOnly))
        throw Recusa("Modelo de relatório não encontrado: " + f.fileName());
    return QString::fromUtf8(f.readAll());
}

// Every part the template includes ({{> nome}}: reports/nome.html), and the parts those include,
// read once and handed to the renderer beside the data.
void incluirPartes(const QString &texto, mu::data &dados, QSet<QString> &lidas)
{
    static const QRegularExpression parte(QStringLiteral("\\{\\{>\\s*([\\w.-]+)\\s*\\}\\}"));
    for (auto it = parte.globalMatch(texto); it.hasNext();) {
        const QString nome = it.next().captured(1);
        if (lidas.contains(nome)) continue;
        lidas.insert(nome);
        const QString conteudo = lerModelo(nome);
        dados.set(nome.toStdString(), mu::data{conteudo.toStdString()});
        incluirPartes(conteudo, dados, lidas);
    }
}

} // namespace

QString pastaRelatorios()
{
    if (!pastaDefinida().isEmpty())
        return pastaDefinida();
    const QDir programa(QCoreApplication::applicationDirPath());
    for (const QString &p : {programa.filePath("reports"), programa.filePath("../reports")})
        if (QDir(p).exists())
            return QDir(p).absolutePath();
    return programa.filePath("reports");
}

void definirPastaRelatorios(const QString &pasta) { pastaDefinida() = pasta; }

QString renderizarRelatorio(const QString &modelo, const QVariantMap &dados)
{
    const QString texto = lerModelo(modelo);
    mu::mustache m{texto.toStdString()};
    if (!m.is_valid())
        throw Recusa("Modelo de relatório inválido (" + modelo + "): " + QString::fromStdString(m.error_message()));
    mu::data d = converter(dados);
    QSet<QString> lidas;
    incluirPartes(texto, d, lidas);
    const std::string html = m.render(d);
    if (!m.is_valid())
        throw Recusa("Modelo de relatório inválido (" + modelo + "): " + QString::fromStdString(m.error_message()));
    return QString::fromStdString(html);
}

} // namespace orb
