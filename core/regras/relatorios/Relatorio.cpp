#include "relatorios/Relatorio.h"

#include "Recusa.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
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
    return mu::data{v.toString().toStdString()};
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
    QFile f(QDir(pastaRelatorios()).filePath(modelo + ".html"));
    if (!f.open(QIODevice::ReadOnly))
        throw Recusa("Modelo de relatório não encontrado: " + f.fileName());
    mu::mustache m{QString::fromUtf8(f.readAll()).toStdString()};
    if (!m.is_valid())
        throw Recusa("Modelo de relatório inválido (" + modelo + "): " + QString::fromStdString(m.error_message()));
    return QString::fromStdString(m.render(converter(dados)));
}

} // namespace orb
