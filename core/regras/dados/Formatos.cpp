#include "dados/Formatos.h"

#include "db/Decimal.h"

#include <QDateTime>
#include <QLocale>
#include <algorithm>
#include <cmath>
#include <optional>
#include <vector>

namespace orb {

namespace {

const QString kMascaraTelefone = QStringLiteral("!\\(99\\)99999-9999;0;_");

bool comeca(const QString &nome, const char *prefixo)
{
    return nome.startsWith(QLatin1String(prefixo));
}

FormatoCampo formato(const char *mascara, const char *exibicao = "")
{
    return {QString::fromLatin1(mascara), QString::fromLatin1(exibicao)};
}

// ---- edit masks -------------------------------------------------------------------------

// Shows stored digits through a mask that does not save its literals ("01310100" with
// "99999\-999;0;_" gives "01310-100"). Text that does not fill the mask is shown as stored.
QString aplicarMascara(const QString &mascara, const QString &texto)
{
    const QStringList campos = mascara.split(u';');
    if (campos.value(1) != u'0')
        return texto;  // literals are saved with the data: it is already shown as typed

    std::vector<std::optional<QChar>> modelo;  // nullopt = a position for one character
    const QString &m = campos.front();
    for (qsizetype i = 0; i < m.size(); ++i) {
        const QChar ch = m[i];
        if (ch == u'\\' && i + 1 < m.size())
            modelo.emplace_back(m[++i]);
        else if (ch == u'!' || ch == u'>' || ch == u'<')
            continue;
        else if (QStringLiteral("09#LlAaCc").contains(ch))
            modelo.emplace_back(std::nullopt);
        else
            modelo.emplace_back(ch);
    }

    const QString digitos = texto.trimmed();
    const auto posicoes = std::count(modelo.begin(), modelo.end(), std::nullopt);
    if (digitos.size() != posicoes
        || !std::all_of(digitos.begin(), digitos.end(),
                        [](QChar c) { return c >= u'0' && c <= u'9'; }))
        return texto;

    QString r;
    qsizetype d = 0;
    for (const auto &p : modelo)
        r += p ? *p : digitos[d++];
    return r;
}

// ---- numbers ----------------------------------------------------------------------------

struct FormatoNumero {
    bool agrupa = false;  // thousands separated by "."
    int inteiros = 0;     // minimum integer digits, zero-padded
    int minDecimais = 0;
    int maxDecimais = 0;
    QString sufixo;       // "%", " KG", " dia(s)"
};

FormatoNumero lerFormatoNumero(const QString &f)
{
    FormatoNumero r;
    bool decimais = false;
    qsizetype i = 0;
    for (; i < f.size(); ++i) {
        const QChar ch = f[i];
        if (ch == u',')
            r.agrupa = true;
        else if (ch == u'.')
            decimais = true;
        else if (ch == u'0' && decimais)
            ++r.minDecimais, ++r.maxDecimais;
        else if (ch == u'0')
            ++r.inteiros;
        else if (ch == u'#') {
            if (decimais)
                ++r.maxDecimais;
        } else
            break;
    }
    r.sufixo = f.mid(i);
    return r;
}

QString inteiro(qint64 n, const FormatoNumero &f)
{
    const quint64 absoluto = n < 0 ? 0 - quint64(n) : quint64(n);
    QString d = QString::number(absoluto).rightJustified(f.inteiros, u'0');
    if (f.agrupa)
        for (qsizetype i = d.size() - 3; i > 0; i -= 3)
            d.insert(i, u'.');
    return (n < 0 ? QStringLiteral("-") : QString()) + d + f.sufixo;
}

// br has maxDecimais decimals; the optional ones ("#") are dropped when zero.
QString acabar(QString br, const FormatoNumero &f)
{
    if (const qsizetype virgula = br.lastIndexOf(u','); virgula >= 0) {
        qsizetype fim = br.size();
        while (fim > virgula + 1 + f.minDecimais && br[fim - 1] == u'0')
            --fim;
        br.truncate(fim == virgula + 1 ? virgula : fim);
    }
    // A tiny negative rounded to zero is zero.
    if (br.startsWith(u'-')
        && std::none_of(br.begin(), br.end(), [](QChar c) { return c >= u'1' && c <= u'9'; }))
        br.remove(0, 1);
    return br + f.sufixo;
}

bool tipoInteiro(const QVariant &v)
{
    switch (v.metaType().id()) {
    case QMetaType::Int: case QMetaType::UInt: case QMetaType::LongLong:
    case QMetaType::Short: case QMetaType::UShort: case QMetaType::Long: case QMetaType::ULong:
    case QMetaType::Char: case QMetaType::SChar: case QMetaType::UChar:
        return true;
    default:
        return false;
    }
}

QString numero(const QVariant &v, const FormatoNumero &f)
{
    std::optional<db::Decimal> d;
    if (v.metaType() == QMetaType::fromType<db::Decimal>())
        d = v.value<db::Decimal>();
    else if (tipoInteiro(v))
        d = db::Decimal::inteiro(v.toLongLong());
    if (d) {
        if (f.maxDecimais == 0)
            return inteiro(d->comEscala(0).mantissa(), f);
        return acabar(d->textoBR(f.maxDecimais), f);
    }

    bool ok = false;
    const double x = v.toDouble(&ok);
    if (!ok || !std::isfinite(x))
        return v.toString();
    if (f.maxDecimais == 0)
        return std::fabs(x) < 9e18 ? inteiro(std::llround(x), f) : v.toString();
    static const QLocale brasil(QLocale::Portuguese, QLocale::Brazil);
    return acabar(brasil.toString(x, 'f', f.maxDecimais), f);
}

// ---- dates ------------------------------------------------------------------------------

// The convention's "mm" is the month and "nn" the minutes; Qt says "MM" and "mm".
QString formatoQt(const QString &f)
{
    QString r = f;
    for (QChar &ch : r)
        ch = ch == u'm' ? u'M' : ch == u'n' ? u'm' : ch;
    return r;
}

QString data(const QVariant &v, const QString &formato)
{
    QDateTime dt;
    switch (v.metaType().id()) {
    case QMetaType::QDate:
        dt = v.toDate().startOfDay();
        break;
    case QMetaType::QDateTime:
        dt = v.toDateTime();
        break;
    case QMetaType::QTime:
        // A time alone sits on the zero day of the date-time values the convention came from.
        dt = QDateTime(QDate(1899, 12, 30), v.toTime());
        break;
    default:
        return v.toString();
    }
    return dt.isValid() ? dt.toString(formatoQt(formato)) : QString();
}

} // namespace

QString Padl(const QString &s, int n)
{
    return n <= 0 ? QString() : s.leftJustified(n, u' ', true);
}

QString RetiraEnter(const QString &s)
{
    QString r = s;
    // Backslashes first, or the ones added for the quotes would be doubled again.
    r.replace(u'\\', QStringLiteral(R"(\\\\)"));
    r.replace(u'"', QStringLiteral(R"(\\\")"));
    r.replace(QStringLiteral("\r\n"), QStringLiteral(R"(\\n\\n)"));
    return r;
}

QString ConvDecimalValor(const db::Decimal &v)
{
    return v.comEscala(2).texto();
}

FormatoCampo formatoCampo(const QString &nomeCampo, TipoCampo tipo, int escala)
{
    // Names from the catalogue come blank-padded.
    const QString n = nomeCampo.trimmed().toUpper();
    switch (tipo) {
    case TipoCampo::Texto:
        if (comeca(n, "CEP"))
            return formato("99999\\-999;0;_");
        if (comeca(n, "HORA") && !comeca(n, "HORARIO"))
            return formato("!99:99;1;_");
        if (comeca(n, "TELEFONE") || comeca(n, "FAX") || comeca(n, "TEL"))
            return {kMascaraTelefone, {}};
        if (comeca(n, "CPF") && n != u"CPFCNPJ")
            return formato("999\\.999\\.999\\-99;0;_");
        if (comeca(n, "CNPJ"))
            return formato("99\\.999\\.999\\/9999\\-99;0;_");
        return {};
    case TipoCampo::Data:
        if (comeca(n, "HORA"))
            return formato("!99/99/9999 99:99;1;_", "dd/mm/yy hh:nn");
        return formato("!99/99/9999;1;_", "dd/mm/yy");
    case TipoCampo::DataHora:
        if (comeca(n, "HORA"))
            return formato("!99/99/9999 99:99;1;_", "hh:nn");
        return formato("!99/99/9999 99:99;1;_", "dd/mm/yy hh:nn");
    case TipoCampo::Decimal:
        if (comeca(n, "Z_PERC") || comeca(n, "PERC"))
            return formato("", ",0.00%");
        if (comeca(n, "PESO"))
            return formato("", ",0.00## KG");
        switch (escala) {
        case 2: return formato("", ",0.00");
        case 3: return formato("", ",0.00#");
        case 4: return formato("", ",0.00##");
        case 5: return formato("", ",0.00###");
        default: return {};
        }
    case TipoCampo::Flutuante:
        return formato("", ",0.00###");
    case TipoCampo::Inteiro:
        if (n == u"CFOP")
            return formato("", "0,000");
        if (n == u"PRAZO" || n == u"INTVENC")
            return formato("", "00 dia(s)");
        return formato("", "000000");
    case TipoCampo::Outro:
        return {};
    }
    return {};
}

QString exibir(const QVariant &valor, const QString &nomeCampo, TipoCampo tipo, int escala)
{
    if (!valor.isValid() || valor.isNull())
        return {};
    const FormatoCampo f = formatoCampo(nomeCampo, tipo, escala);
    switch (tipo) {
    case TipoCampo::Texto: {
        const QString t = valor.toString();
        if (f.mascara == kMascaraTelefone) {
            const QString d = t.trimmed();
            const bool digitos = std::all_of(d.begin(), d.end(), [](QChar c) { return c >= u'0' && c <= u'9'; });
            return digitos && (d.size() == 10 || d.size() == 11) ? mascararTelefone(d) : t;
        }
        return f.mascara.isEmpty() ? t : aplicarMascara(f.mascara, t);
    }
    case TipoCampo::Data:
    case TipoCampo::DataHora:
        return data(valor, f.exibicao);
    case TipoCampo::Decimal:
    case TipoCampo::Flutuante:
    case TipoCampo::Inteiro:
        if (f.exibicao.isEmpty()) {
            // Scales without a convention still show all their decimals, grouped.
            const int e = std::clamp(escala, 0, 9);
            return numero(valor, {true, 1, e, e, {}});
        }
        return numero(valor, lerFormatoNumero(f.exibicao));
    case TipoCampo::Outro:
        break;
    }
    return valor.toString();
}

bool campoTelefone(const QString &nomeCampo)
{
    return formatoCampo(nomeCampo, TipoCampo::Texto).mascara == kMascaraTelefone;
}

QString mascararTelefone(const QString &digitos)
{
    const QString d = digitos.left(11);
    if (d.isEmpty())
        return {};
    if (d.size() <= 2)
        return u'(' + d;
    const QString ddd = u'(' + d.left(2) + u')';
    const int prefixo = d.size() == 11 ? 5 : 4;
    if (d.size() <= 2 + prefixo)
        return ddd + d.mid(2);
    return ddd + d.mid(2, prefixo) + u'-' + d.mid(2 + prefixo);
}

QString semSufixo(const QString &texto, const QString &nomeCampo, TipoCampo tipo, int escala)
{
    const QString sufixo = lerFormatoNumero(formatoCampo(nomeCampo, tipo, escala).exibicao).sufixo.trimmed();
    QString t = texto.trimmed();
    if (!sufixo.isEmpty() && t.endsWith(sufixo, Qt::CaseInsensitive))
        t.chop(sufixo.size());
    return t.trimmed();
}

} // namespace orb
