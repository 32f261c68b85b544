#include "Recalculo.h"

namespace orb {

using db::Decimal;

namespace {

const Decimal kZero = Decimal::bruto(0, 2);
const Decimal kCem = Decimal::inteiro(100);
const Decimal kUm = Decimal::inteiro(1);

// What NUMERIC(18,2) and (18,4) columns keep.
QVariant n2(const Decimal &d) { return QVariant::fromValue(d.comEscala(2)); }
QVariant n4(const Decimal &d) { return QVariant::fromValue(d.comEscala(4)); }
Decimal sobre100(const Decimal &d) { return d.dividirComoBanco(kCem); }

void zerar(Valores &l, const QStringList &colunas)
{
    for (const QString &c : colunas)
        l[c] = n2(kZero);
}

const QStringList kSt = {"PERCREDBCICMSST", "PERCMVAICMSST", "BCICMSST", "PERCICMSST", "ICMSST"};
const QStringList kIcms = {"PERCREDBCICMS", "BCICMS", "PERCICMS", "ICMS"};

void tributar(Valores &l, const Aliquotas &a)
{
    const bool temItem = l.count("Z_CST") && !l["Z_CST"].isNull();
    if (temItem) {
        l["CST"] = l["Z_ORIGEM"].toString().trimmed() + l["Z_CST"].toString().trimmed();
        l["PERCIPI"] = n2(decimal(l, "Z_PERCIPI"));
    }
    const Decimal lq = decimal(l, "SUBTOTALLQ");
    l["IPI"] = n2(sobre100(lq * decimal(l, "PERCIPI")));
    // The item's own rate and base with no reduction, then the group's ST.
    auto tributado = [&] {
        l["PERCREDBCICMS"] = n2(kZero);
        l["PERCICMS"] = n2(decimal(l, temItem ? "Z_PERCICMS" : "PERCICMS"));
        l["BCICMS"] = n2(lq);
        l["ICMS"] = n2(sobre100(lq * decimal(l, "PERCICMS")));
    };
    auto baseSt = [&] {
        l["PERCMVAICMSST"] = n2(decimal(l, temItem ? "Z_PERCMVAICMSST" : "PERCMVAICMSST"));
        l["BCICMSST"] = n2(lq * (kUm + sobre100(decimal(l, "PERCMVAICMSST"))));
        l["PERCICMSST"] = n2(a.percIcmsD);
        l["PERCREDBCICMSST"] = n2(kZero);
    };
    switch (grupoCst(l["CST"].toString().trimmed())) {
    case GrupoCst::Tributado:
        tributado();
        zerar(l, kSt);
        break;
    case GrupoCst::ComSt:
        tributado();
        baseSt();
        l["ICMSST"] = n2(sobre100(decimal(l, "BCICMSST") * decimal(l, "PERCICMSST")) - decimal(l, "ICMS"));
        break;
    case GrupoCst::Reduzida: {
        // Both formulas as the system has them: the reduction percentage read as the effective rate.
        const Decimal red = decimal(l, temItem ? "Z_PERCREDBCICMS" : "PERCREDBCICMS");
        l["PERCREDBCICMS"] = n2(red);
        l["PERCICMS"] = n2(a.percIcmsO);
        const Decimal perc = decimal(l, "PERCICMS");
        l["BCICMS"] = n2(perc > kZero ? sobre100((lq * red).dividirComoBanco(perc)) : kZero);
        l["ICMS"] = n2(sobre100(lq * red));
        if (l["CST"].toString().trimmed().endsWith("70")) {
            // Reduced base with ST: the same pairing, on the line's net subtotal.
            l["PERCREDBCICMSST"] = n2(decimal(l, temItem ? "Z_PERCREDBCICMSST" : "PERCREDBCICMSST"));
            l["PERCMVAICMSST"] = n2(decimal(l, temItem ? "Z_PERCMVAICMSST" : "PERCMVAICMSST"));
            l["PERCICMSST"] = n2(a.percIcmsD);
            const Decimal pst = decimal(l, "PERCICMSST");
            l["BCICMSST"] = n2(pst > kZero ? sobre100((lq * (kUm + sobre100(decimal(l, "PERCMVAICMSST")))).dividirComoBanco(pst)) : kZero);
            l["ICMSST"] = n2(sobre100(decimal(l, "BCICMSST") * decimal(l, "PERCREDBCICMSST")) - decimal(l, "ICMS"));
        } else {
            zerar(l, kSt);
        }
        break;
    }
    case GrupoCst::IsentaComSt:
        zerar(l, kIcms);
        baseSt();
        l["ICMSST"] = n2(sobre100(decimal(l, "BCICMSST") * decimal(l, "PERCICMSST")));
        break;
    case GrupoCst::SemIcms:
        zerar(l, kIcms);
        zerar(l, kSt);
        break;
    }
}

} // namespace

Decimal decimal(const Valores &v, const QString &coluna)
{
    const auto it = v.find(coluna);
    if (it == v.end() || it->second.isNull())
        return kZero;
    if (it->second.metaType() == QMetaType::fromType<Decimal>())
        return it->second.value<Decimal>();
    return Decimal::inteiro(it->second.toLongLong());
}

GrupoCst grupoCst(const QString &cst)
{
    static const QStringList tributado = {"000", "100", "200"}, st = {"010", "060", "160", "260"},
                             reduzida = {"020", "070", "120", "220"}, isentaSt = {"030", "110", "130", "210", "230"};
    if (tributado.contains(cst)) return GrupoCst::Tributado;
    if (st.contains(cst)) return GrupoCst::ComSt;
    if (reduzida.contains(cst)) return GrupoCst::Reduzida;
    if (isentaSt.contains(cst)) return GrupoCst::IsentaComSt;
    return GrupoCst::SemIcms;
}

void recalcular(Valores &h, QList<Valores> &linhas, const Aliquotas &a)
{
    auto soma = [&](const QString &tipo, const QString &coluna, const std::function<bool(const Valores &)> &filtro = {}) {
        Decimal s = kZero;
        for (const Valores &l : linhas)
            if ((tipo.isEmpty() || l.at("TIPO").toString() == tipo) && (!filtro || filtro(l)))
                s += decimal(l, coluna);
        return s;
    };
    // 1. Gross.
    for (Valores &l : linhas)
        l["SUBTOTALBR"] = n2(decimal(l, "QTD") * decimal(l, "PRUNITARIO"));
    h["SUBTOTALBRM"] = n2(soma("M", "SUBTOTALBR"));
    h["SUBTOTALBRS"] = n2(soma("S", "SUBTOTALBR"));

    // 2. Discount, merchandise and services each with their own header fields.
    const bool spread = h["TIPODESCONTO"].toString() == "S";
    for (const QString k : {"M", "S"}) {
        const Decimal br = decimal(h, "SUBTOTALBR" + k), desc = decimal(h, "DESCONTO" + k);
        for (Valores &l : linhas) {
            if (l.at("TIPO").toString() != k)
                continue;
            const Decimal sbr = decimal(l, "SUBTOTALBR");
            if (spread) {
                l["DESCONTO"] = n2(desc.zero() || br.zero() ? kZero : (desc * sbr).dividirComoBanco(br));
                l["PERCDESCONTO"] = n4(sbr.zero() ? kZero : decimal(l, "DESCONTO").dividirComoBanco(sbr) * kCem);
            } else {
                l["DESCONTO"] = n2(sobre100(sbr * decimal(l, "PERCDESCONTO")));
            }
        }
        if (!spread)
            h["DESCONTO" + k] = n2(soma(k, "DESCONTO"));
        h["PERCDESCONTO" + k] = n2(br.zero() ? kZero : decimal(h, "DESCONTO" + k).dividirComoBanco(br) * kCem);
    }

    // 3. Net.
    for (Valores &l : linhas)
        l["SUBTOTALLQ"] = n2(decimal(l, "SUBTOTALBR") - decimal(l, "DESCONTO"));
    h["SUBTOTALLQM"] = n2(soma("M", "SUBTOTALLQ"));
    h["SUBTOTALLQS"] = n2(soma("S", "SUBTOTALLQ"));

    // 4. Taxes of merchandise.
    for (Valores &l : linhas)
        if (l.at("TIPO").toString() == "M")
            tributar(l, a);

    // 5. Subtotal and total.
    for (Valores &l : linhas) {
        const Decimal st = a.stNoSubtotal ? decimal(l, "ICMSST") : kZero;
        l["SUBTOTAL"] = n2(decimal(l, "SUBTOTALLQ") + st);
        l["TOTAL"] = n2(decimal(l, "SUBTOTAL") + decimal(l, "FRETE") + decimal(l, "OUTROS") + (a.ipiNoTotal ? decimal(l, "IPI") : kZero));
    }
    h["SUBTOTALM"] = n2(soma("M", "SUBTOTAL"));
    h["SUBTOTALS"] = n2(soma("S", "SUBTOTAL"));

    // 6. Commissions of representative, attendant and company on each kind's subtotal.
    for (const QString k : {"M", "S"})
        for (const QString quem : {"REP", "AT", "EMP"}) {
            h["BCCOM" + quem + k] = h["SUBTOTAL" + k];
            h["COM" + quem + k] = n2(sobre100(decimal(h, "SUBTOTAL" + k) * decimal(h, "PERCCOM" + quem + k)));
        }

    // 7. Header sums and totals.
    h["BCICMS"] = n2(soma("", "SUBTOTAL", [](const Valores &l) { return decimal(l, "PERCICMS") > kZero; }));
    h["ICMS"] = n2(soma("", "ICMS"));
    h["BCICMSST"] = n2(soma("", "BCICMSST"));
    h["ICMSST"] = n2(soma("", "ICMSST"));
    h["IPI"] = n2(soma("", "IPI"));
    h["TOTALFRETEM"] = n2(soma("M", "FRETE"));
    h["TOTALFRETES"] = n2(soma("S", "FRETE"));
    h["TOTALFRETE"] = n2(decimal(h, "TOTALFRETEM") + decimal(h, "TOTALFRETES"));
    h["OUTROSM"] = n2(soma("M", "OUTROS"));
    h["OUTROSS"] = n2(soma("S", "OUTROS"));
    h["TOTALM"] = n2(decimal(h, "SUBTOTALM") + decimal(h, "TOTALFRETEM") + decimal(h, "SEGURO") + decimal(h, "OUTROSM")
                     + (a.ipiNoTotal ? decimal(h, "IPI") : kZero));
    h["TOTALS"] = n2(decimal(h, "SUBTOTALS") + decimal(h, "TOTALFRETES") + decimal(h, "OUTROSS"));
    h["TOTAL"] = n2(decimal(h, "TOTALM") + decimal(h, "TOTALS"));
}

} // namespace orb
