#include "ui/Campos.h"

#include "dados/Formatos.h"
#include "registro/Registro.h"
#include "Recusa.h"

#include <QCalendarWidget>
#include <QIcon>
#include <QKeyEvent>
#include <QRegularExpressionValidator>

namespace orb {

namespace {

QString formatoQt(CampoData::Modo m)
{
    return m == CampoData::Data ? QStringLiteral("dd/MM/yyyy")
           : m == CampoData::Hora ? QStringLiteral("HH:mm")
                                  : QStringLiteral("dd/MM/yyyy HH:mm");
}

QString soDigitos(const QString &s)
{
    QString r;
    for (QChar c : s)
        if (c.isDigit()) r += c;
    return r;
}

} // namespace

// ------------------------------------------------------------------ dates and times

CampoData::CampoData(Modo modo, QWidget *parent) : QLineEdit(parent), modo_(modo)
{
    // Digits and separators only: letters are keys ("H"), never text.
    setValidator(new QRegularExpressionValidator(QRegularExpression("[0-9/.\\-: ]*"), this));
    setMaxLength(modo == DataHora ? 16 : modo == Data ? 10 : 5);
    setPlaceholderText(modo == Data ? QStringLiteral("dd/mm/aaaa") : modo == Hora ? QStringLiteral("hh:mm")
                                                                                  : QStringLiteral("dd/mm/aaaa hh:mm"));
    // Wide enough for its longest text and the calendar button, no wider.
    setMaximumWidth(fontMetrics().horizontalAdvance(QStringLiteral("00/00/0000 00:00")) + 60);
    if (modo != Hora) {
        QAction *a = addAction(QIcon::fromTheme("view-calendar", QIcon::fromTheme("x-office-calendar")),
                               QLineEdit::TrailingPosition);
        a->setToolTip(QStringLiteral("Calendário (F4)"));
        connect(a, &QAction::triggered, this, &CampoData::abrirCalendario);
    }
}

Leitura CampoData::leitura() const
{
    const QDate hoje = QDate::currentDate();
    switch (modo_) {
    case Data: return lerData(text(), hoje);
    case Hora: return lerHora(text());
    case DataHora: return lerDataHora(text(), hoje);
    }
    return {};
}

QVariant CampoData::valor(const QString &campo) const
{
    const Leitura l = leitura();
    if (l.vazia()) return {};
    if (!l.valida()) throw Recusa(modo_ == Hora ? kHoraInvalida : kDataInvalida, campo);
    switch (modo_) {
    case Data: return l.data;
    case Hora: return l.hora;
    case DataHora: return QDateTime(l.data, l.hora);
    }
    return {};
}

void CampoData::mostrar(const Leitura &l)
{
    if (!l.valida()) return;
    setText(QDateTime(l.data.isValid() ? l.data : QDate(2000, 1, 1), l.hora).toString(formatoQt(modo_)));
}

void CampoData::definir(const QVariant &v)
{
    if (!v.isValid() || v.isNull()) {
        clear();
        return;
    }
    switch (v.typeId()) {
    case QMetaType::QDate: setText(v.toDate().toString(formatoQt(modo_))); break;
    case QMetaType::QDateTime: setText(v.toDateTime().toString(formatoQt(modo_))); break;
    case QMetaType::QTime: setText(v.toTime().toString(formatoQt(modo_))); break;
    default:
        // Times kept as text ("08:30") and anything else as it came.
        setText(v.toString());
        mostrar(leitura());
    }
}

void CampoData::abrirCalendario()
{
    if (modo_ == Hora || isReadOnly() || !isEnabled()) return;
    if (!calendario_) {
        calendario_ = new QCalendarWidget(this);
        calendario_->setObjectName("Calendario");
        calendario_->setWindowFlags(Qt::Popup);
        calendario_->setGridVisible(true);
        calendario_->setLocale(QLocale(QLocale::Portuguese, QLocale::Brazil));
        auto escolher = [this](QDate d) {
            Leitura l = leitura();
            l.estado = Leitura::Valida;
            l.data = d;
            if (modo_ == DataHora && !l.hora.isValid()) l.hora = QTime(0, 0);
            mostrar(l);
            calendario_->hide();
            setFocus(Qt::PopupFocusReason);
        };
        connect(calendario_, &QCalendarWidget::activated, this, escolher);
        connect(calendario_, &QCalendarWidget::clicked, this, escolher);
    }
    const Leitura l = leitura();
    calendario_->setSelectedDate(l.valida() ? l.data : QDate::currentDate());
    calendario_->adjustSize();
    calendario_->move(mapToGlobal(QPoint(0, height())));
    calendario_->show();
    calendario_->setFocus(Qt::PopupFocusReason);
}

void CampoData::keyPressEvent(QKeyEvent *e)
{
    if (!isReadOnly() && (e->key() == Qt::Key_F4 || (e->key() == Qt::Key_Down && e->modifiers() & Qt::AltModifier))) {
        abrirCalendario();
        return;
    }
    if (!isReadOnly() && e->key() == Qt::Key_H && !(e->modifiers() & (Qt::ControlModifier | Qt::AltModifier))) {
        const QDateTime agora = QDateTime::currentDateTime();
        mostrar({Leitura::Valida, agora.date(), QTime(agora.time().hour(), agora.time().minute())});
        return;
    }
    QLineEdit::keyPressEvent(e);
}

void CampoData::focusOutEvent(QFocusEvent *e)
{
    // What can be read takes the editor's layout; what cannot stays as typed, to be corrected.
    mostrar(leitura());
    QLineEdit::focusOutEvent(e);
}

// ------------------------------------------------------------------ numbers

CampoNumero::CampoNumero(const CampoForm &c, QWidget *parent) : QLineEdit(parent), c_(std::make_unique<CampoForm>(c))
{
    setAlignment(Qt::AlignRight);
}

CampoNumero::~CampoNumero() = default;

QVariant CampoNumero::valor() const { return lerNumeroDoCampo(*c_, text()); }

void CampoNumero::definir(const QVariant &v)
{
    const bool inteiro = c_->tipo == CampoForm::Inteiro;
    setText(exibir(v, c_->coluna, inteiro ? TipoCampo::Inteiro : TipoCampo::Decimal, c_->escala));
}

void CampoNumero::focusOutEvent(QFocusEvent *e)
{
    try {
        definir(valor());
    } catch (const Recusa &) {
        // Left as typed: the form tells the user and brings the field back.
    }
    QLineEdit::focusOutEvent(e);
}

// ------------------------------------------------------------------ phones

CampoTelefone::CampoTelefone(QWidget *parent) : QLineEdit(parent)
{
    setValidator(new QRegularExpressionValidator(QRegularExpression("[0-9() \\-]*"), this));
    setMaxLength(16);
    connect(this, &QLineEdit::textEdited, this, [this](const QString &t) {
        // Laid out again after every key, the cursor kept after the same digit.
        const int antes = int(soDigitos(t.left(cursorPosition())).size());
        const QString novo = mascararTelefone(soDigitos(t));
        setText(novo);
        int pos = 0;
        for (int n = 0; pos < novo.size() && n < antes; ++pos)
            if (novo[pos].isDigit()) ++n;
        setCursorPosition(pos);
    });
}

QString CampoTelefone::digitos() const { return soDigitos(text()); }

void CampoTelefone::definir(const QString &digitos) { setText(mascararTelefone(soDigitos(digitos))); }

} // namespace orb
