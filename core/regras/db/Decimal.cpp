#include "db/Decimal.h"

#include <QList>
#include <algorithm>
#include <initializer_list>
#include <stdexcept>
#include <string>

namespace db {

namespace {

__extension__ typedef __int128 i128;
__extension__ typedef unsigned __int128 u128;

constexpr int kEscalaMax = 9;

constexpr i128 pot10(int n)
{
    i128 p = 1;
    for (int i = 0; i < n; ++i)
        p *= 10;
    return p;
}

// Mantissas stay below 10^29: moved up by nine decimals they still fit 128 bits, so aligning two
// values never overflows. That is eleven digits past what any column holds.
constexpr i128 kLimite = pot10(29);

void validarEscala(int escala)
{
    if (escala < 0 || escala > kEscalaMax)
        throw std::invalid_argument("Escala inválida: " + std::to_string(escala)
                                    + " (aceita de 0 a 9)");
}

[[noreturn]] void estouro() { throw std::overflow_error("Valor fora do intervalo permitido"); }

i128 caber(i128 v)
{
    if (v >= kLimite || v <= -kLimite)
        estouro();
    return v;
}

i128 multiplicar(i128 a, i128 b)
{
    i128 r;
    if (__builtin_mul_overflow(a, b, &r))
        estouro();
    return r;
}

// n / d with the named rounding; C++ division already truncates toward zero.
i128 dividirArredondando(i128 n, i128 d, Arredonda a)
{
    i128 q = n / d;
    const i128 r = n % d;
    if (a == Arredonda::MeioLonge && r != 0) {
        const i128 absR = r < 0 ? -r : r;
        const i128 absD = d < 0 ? -d : d;
        if (2 * absR >= absD)
            q += ((n < 0) != (d < 0)) ? -1 : 1;
    }
    return q;
}

// The mantissa moved from escala `de` to escala `para`.
i128 reescalar(i128 m, int de, int para, Arredonda a)
{
    if (para >= de)
        return multiplicar(m, pot10(para - de));
    return dividirArredondando(m, pot10(de - para), a);
}

// Digits of v / 10^escala; sepMilhar 0 means no grouping.
QString formatar(i128 v, int escala, char sepDecimal, char sepMilhar)
{
    u128 mag = v < 0 ? u128(0) - u128(v) : u128(v);
    std::string dig;
    do {
        dig.insert(dig.begin(), char('0' + int(mag % 10)));
        mag /= 10;
    } while (mag != 0);
    if (dig.size() < std::size_t(escala) + 1)
        dig.insert(0, std::size_t(escala) + 1 - dig.size(), '0');

    const std::size_t nInt = dig.size() - std::size_t(escala);
    std::string out;
    if (v < 0)
        out += '-';
    for (std::size_t i = 0; i < nInt; ++i) {
        if (sepMilhar && i > 0 && (nInt - i) % 3 == 0)
            out += sepMilhar;
        out += dig[i];
    }
    if (escala > 0) {
        out += sepDecimal;
        out.append(dig, nInt, std::string::npos);
    }
    return QString::fromLatin1(out.data(), qsizetype(out.size()));
}

bool soDigitos(QStringView s)
{
    for (QChar c : s)
        if (c < u'0' || c > u'9')  // not isDigit(): that accepts other scripts' digits
            return false;
    return true;
}

// In pt_BR the points are only thousands separators; "12.5" is rejected rather than read
// as 125, since a user who typed it almost certainly meant twelve and a half.
bool tirarMilhares(QStringView inteira, QString &saida)
{
    const auto grupos = inteira.split(u'.');
    for (qsizetype i = 0; i < grupos.size(); ++i) {
        const qsizetype n = grupos[i].size();
        const bool ok = grupos.size() == 1 || (i == 0 ? (n >= 1 && n <= 3) : n == 3);
        if (!ok)
            return false;
        saida += grupos[i];
    }
    return true;
}

} // namespace

Decimal Decimal::de(Mantissa m, int escala)
{
    validarEscala(escala);
    Decimal d;
    d.m_ = caber(m);
    d.e_ = escala;
    return d;
}

Decimal Decimal::bruto(std::int64_t mantissa, int escala) { return de(mantissa, escala); }

std::int64_t Decimal::mantissa() const
{
    if (m_ > INT64_MAX || m_ < INT64_MIN)
        estouro();
    return static_cast<std::int64_t>(m_);
}

Decimal Decimal::compacto() const
{
    for (int e = e_; e >= 0; --e) {
        const i128 m = reescalar(m_, e_, e, Arredonda::MeioLonge);
        if (m <= INT64_MAX && m >= INT64_MIN)
            return de(m, e);
    }
    estouro();
}

std::optional<Decimal> Decimal::ler(const QString &texto, bool ptBR)
{
    const QString t = texto.trimmed();
    QStringView v(t);
    bool negativo = false;
    if (!v.isEmpty() && (v.front() == u'+' || v.front() == u'-')) {
        negativo = v.front() == u'-';
        v = v.mid(1);
    }

    const QChar sepDecimal = ptBR ? u',' : u'.';
    const qsizetype pos = v.indexOf(sepDecimal);
    QStringView inteiraBruta = pos < 0 ? v : v.left(pos);
    const QStringView fracao = pos < 0 ? QStringView() : v.mid(pos + 1);

    QString inteira;
    if (ptBR) {
        if (!tirarMilhares(inteiraBruta, inteira))
            return std::nullopt;
    } else {
        inteira = inteiraBruta.toString();
    }

    if (inteira.isEmpty() && fracao.isEmpty())
        return std::nullopt;
    if (!soDigitos(inteira) || !soDigitos(fracao) || fracao.size() > kEscalaMax)
        return std::nullopt;

    // Magnitude may reach 2^63 so that INT64_MIN itself can be typed.
    constexpr i128 limite = i128(INT64_MAX) + 1;
    i128 m = 0;
    for (QStringView parte : {QStringView(inteira), fracao}) {
        for (QChar c : parte) {
            m = m * 10 + (c.unicode() - u'0');
            if (m > limite)
                return std::nullopt;
        }
    }
    if (negativo)
        m = -m;
    if (m > INT64_MAX)
        return std::nullopt;
    return de(m, int(fracao.size()));
}

Decimal::Decimal(const char *texto)
{
    const auto d = texto ? ler(QString::fromUtf8(texto)) : std::nullopt;
    if (!d)
        throw std::invalid_argument(std::string("Número inválido: \"") + (texto ? texto : "")
                                    + "\"");
    *this = *d;
}

Decimal Decimal::comEscala(int escala, Arredonda a) const
{
    validarEscala(escala);
    return de(reescalar(m_, e_, escala, a), escala);
}

Decimal Decimal::operator+(const Decimal &o) const
{
    const int e = std::max(e_, o.e_);
    return de(reescalar(m_, e_, e, Arredonda::Trunca) + reescalar(o.m_, o.e_, e, Arredonda::Trunca), e);
}

Decimal Decimal::operator-(const Decimal &o) const
{
    const int e = std::max(e_, o.e_);
    return de(reescalar(m_, e_, e, Arredonda::Trunca) - reescalar(o.m_, o.e_, e, Arredonda::Trunca), e);
}

Decimal Decimal::operator-() const
{
    return de(-m_, e_);
}

Decimal Decimal::operator*(const Decimal &o) const
{
    // Beyond nine decimals the column types cannot hold it anyway; round once, here.
    const int soma = e_ + o.e_;
    const int e = std::min(soma, kEscalaMax);
    return de(reescalar(multiplicar(m_, o.m_), soma, e, Arredonda::MeioLonge), e);
}

Decimal Decimal::dividir(const Decimal &o, int escala, Arredonda a) const
{
    validarEscala(escala);
    if (o.m_ == 0)
        throw std::domain_error("Divisão por zero");
    // (m / 10^e) / (om / 10^oe) at scale s  =  m * 10^(s + oe - e) / om
    const int k = escala + o.e_ - e_;
    const i128 n = multiplicar(m_, pot10(std::max(k, 0)));
    const i128 d = multiplicar(o.m_, pot10(std::max(-k, 0)));
    return de(dividirArredondando(n, d, a), escala);
}

Decimal Decimal::dividirComoBanco(const Decimal &o) const
{
    if (o.m_ == 0)
        throw std::domain_error("Divisão por zero");
    if (e_ + o.e_ > kEscalaMax)
        return dividir(o, kEscalaMax, Arredonda::Trunca);
    // The server's own steps: it needs the divisor's scale twice more in the dividend, moves the
    // dividend up one decimal at a time while it stays below a tenth of the 64-bit maximum, then
    // drops trailing zeros of the divisor, divides, and pads the quotient with zeros for what is
    // left. Past the first step digits are lost exactly where the server loses them.
    constexpr i128 limite = INT64_MAX / 10;
    i128 n = m_, d = o.m_;
    int falta = 2 * o.e_;
    while (falta > 0 && (n >= 0 ? n <= limite : n >= -limite)) {
        n *= 10;
        --falta;
    }
    while (falta > 0 && d % 10 == 0) {
        d /= 10;
        --falta;
    }
    i128 q = n / d;
    for (; falta > 0; --falta) {
        if (q > limite || q < -limite)
            estouro();
        q *= 10;
    }
    return de(q, e_ + o.e_);
}

bool Decimal::operator==(const Decimal &o) const
{
    return (*this <=> o) == 0;
}

std::strong_ordering Decimal::operator<=>(const Decimal &o) const
{
    const int e = std::max(e_, o.e_);
    const i128 a = reescalar(m_, e_, e, Arredonda::Trunca);
    const i128 b = reescalar(o.m_, o.e_, e, Arredonda::Trunca);
    if (a < b)
        return std::strong_ordering::less;
    if (a > b)
        return std::strong_ordering::greater;
    return std::strong_ordering::equal;
}

QString Decimal::texto() const
{
    return formatar(m_, e_, '.', 0);
}

QString Decimal::textoBR(int decimais) const
{
    validarEscala(decimais);
    // Rounded in 128 bits: a large integer shown with decimals must not overflow.
    return formatar(reescalar(m_, e_, decimais, Arredonda::MeioLonge), decimais, ',', '.');
}

double Decimal::paraDouble() const
{
    // Both operands are exact doubles for |m| < 2^53, so the single division rounds correctly.
    return static_cast<double>(m_) / static_cast<double>(pot10(e_));
}

} // namespace db
