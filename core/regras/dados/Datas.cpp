#include "dados/Datas.h"

#include <QRegularExpression>

#include <algorithm>

namespace orb {

namespace {

Leitura invalida() { return {Leitura::Invalida, {}, {}}; }

bool soDigitos(const QString &s)
{
    return !s.isEmpty() && std::all_of(s.begin(), s.end(), [](QChar c) { return c >= u'0' && c <= u'9'; });
}

} // namespace

int completarSeculo(int doisDigitos, const QDate &hoje)
{
    const int limite = hoje.year() + 20;
    const int seculo = limite / 100 * 100;
    const int ano = seculo + doisDigitos;
    return ano > limite ? ano - 100 : ano;
}

Leitura lerData(const QString &texto, const QDate &hoje)
{
    const QString t = texto.trimmed();
    if (t.isEmpty()) return {};
    QString dia, mes, ano;
    if (soDigitos(t)) {
        // Digits alone: ddmm, ddmmyy or ddmmyyyy.
        if (t.size() != 4 && t.size() != 6 && t.size() != 8) return invalida();
        dia = t.left(2);
        mes = t.mid(2, 2);
        ano = t.mid(4);
    } else {
        const QStringList partes = t.split(QRegularExpression("[/.\\-]"));
        if (partes.size() < 2 || partes.size() > 3) return invalida();
        dia = partes[0];
        mes = partes[1];
        ano = partes.value(2);
        if (!soDigitos(dia) || !soDigitos(mes) || dia.size() > 2 || mes.size() > 2) return invalida();
        if (partes.size() == 3 && (!soDigitos(ano) || (ano.size() != 2 && ano.size() != 4))) return invalida();
    }
    int a = hoje.year();
    if (ano.size() == 2) a = completarSeculo(ano.toInt(), hoje);
    else if (ano.size() == 4) a = ano.toInt();
    const QDate d(a, mes.toInt(), dia.toInt());
    // Years before 1900 are typing slips, not dates this program keeps.
    if (!d.isValid() || a < 1900) return invalida();
    return {Leitura::Valida, d, {}};
}

Leitura lerHora(const QString &texto)
{
    const QString t = texto.trimmed();
    if (t.isEmpty()) return {};
    QString h, m;
    if (soDigitos(t) && t.size() == 4) {
        h = t.left(2);
        m = t.mid(2);
    } else {
        const QStringList partes = t.split(u':');
        if (partes.size() != 2 || !soDigitos(partes[0]) || !soDigitos(partes[1]) || partes[0].size() > 2
            || partes[1].size() != 2)
            return invalida();
        h = partes[0];
        m = partes[1];
    }
    const QTime r(h.toInt(), m.toInt());
    if (!r.isValid()) return invalida();
    return {Leitura::Valida, {}, r};
}

Leitura lerDataHora(const QString &texto, const QDate &hoje)
{
    const QString t = texto.simplified();
    if (t.isEmpty()) return {};
    const qsizetype espaco = t.indexOf(u' ');
    Leitura d = lerData(t.left(espaco), hoje);
    if (!d.valida()) return invalida();
    if (espaco < 0) {
        d.hora = QTime(0, 0);
        return d;
    }
    const Leitura h = lerHora(t.mid(espaco + 1));
    if (!h.valida()) return invalida();
    d.hora = h.hora;
    return d;
}

} // namespace orb
