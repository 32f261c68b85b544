#include "db/Banco.h"

#include <firebird/Interface.h>
#include <ibase.h>

#include <QDeadlineTimer>
#include <QMetaObject>
#include <QMutex>
#include <QRegularExpression>
#include <QWaitCondition>
#include <cstring>
#include <stdexcept>

using namespace Firebird;

namespace db {

IMaster *mestre()
{
    static IMaster *m = fb_get_master_interface();
    return m;
}

namespace {

IUtil *util() { return mestre()->getUtilInterface(); }

// Status wrapper bound to a fresh status object; disposed at scope end.
struct Status : ThrowStatusWrapper {
    Status() : ThrowStatusWrapper(mestre()->getStatus()) {}
    ~Status() { dispose(); }
};

QString campoDoErro(const std::vector<const char *> &textos)
{
    // Firebird passes the column name as a string argument in NOT NULL and key errors.
    for (const char *t : textos) {
        QString s = QString::fromUtf8(t);
        if (s.contains('.')) s = s.section('.', -1);
        s.remove('"');
        if (!s.isEmpty() && s.size() <= 63) return s;
    }
    return {};
}

[[noreturn]] void lancar(const FbException &e)
{
    const intptr_t *v = e.getStatus()->getErrors();
    std::vector<long> codigos;
    std::vector<const char *> textos;
    QString sqlstate;
    for (const intptr_t *p = v; *p != isc_arg_end;) {
        const intptr_t tipo = *p++;
        switch (tipo) {
        case isc_arg_gds: codigos.push_back(long(*p++)); break;
        case isc_arg_string:
        case isc_arg_interpreted: textos.push_back(reinterpret_cast<const char *>(*p++)); break;
        case isc_arg_sql_state: sqlstate = QString::fromLatin1(reinterpret_cast<const char *>(*p++)); break;
        case isc_arg_cstring: p += 2; break;
        default: ++p; break;
        }
    }
    char buf[2048];
    util()->formatStatus(buf, sizeof buf, e.getStatus());
    const QString tecnico = QString::fromUtf8(buf);
    const TipoErro tipo = classificar(sqlstate, codigos);
    QString campo;
    if (tipo == TipoErro::Obrigatorio || tipo == TipoErro::Duplicado) campo = campoDoErro(textos);
    throw ErroBanco(tipo, mensagemPara(tipo, campo), tecnico, sqlstate, codigos, campo);
}

template <typename F> auto guardado(F &&f) -> decltype(f())
{
    try {
        return f();
    } catch (const FbException &e) {
        lancar(e);
    }
}

QByteArray dpb(const Conexao &c, bool criar)
{
    Status s;
    IXpbBuilder *b = util()->getXpbBuilder(&s, IXpbBuilder::DPB, nullptr, 0);
    b->insertString(&s, isc_dpb_user_name, c.usuario.toUtf8().constData());
    b->insertString(&s, isc_dpb_password, c.senha.toUtf8().constData());
    // Text travels as UTF-8 for QString; the database itself keeps WIN1252.
    b->insertString(&s, isc_dpb_lc_ctype, "UTF8");
    if (criar) {
        b->insertString(&s, isc_dpb_set_db_charset, "WIN1252");
        b->insertInt(&s, isc_dpb_sql_dialect, 3);
        b->insertInt(&s, isc_dpb_page_size, 8192);
    }
    QByteArray r(reinterpret_cast<const char *>(b->getBuffer(&s)), int(b->getBufferLength(&s)));
    b->dispose();
    return r;
}

[[noreturn]] void perdida(const char *oque)
{
    throw ErroBanco(TipoErro::Conexao, mensagemPara(TipoErro::Conexao, {}), QString::fromLatin1(oque));
}

IAttachment *anexar(const Conexao &c, bool criar)
{
    return guardado([&] {
        Status s;
        IProvider *prov = mestre()->getDispatcher();
        const QByteArray d = dpb(c, criar);
        IAttachment *att = nullptr;
        try {
            const auto *dados = reinterpret_cast<const unsigned char *>(d.constData());
            att = criar ? prov->createDatabase(&s, c.banco.toUtf8().constData(), unsigned(d.size()), dados)
                        : prov->attachDatabase(&s, c.banco.toUtf8().constData(), unsigned(d.size()), dados);
        } catch (...) {
            prov->release();
            throw;
        }
        prov->release();
        return att;
    });
}

} // namespace

// ---------------------------------------------------------------- Banco

Banco::Banco(const Conexao &c, IAttachment *att) : c_(c), att_(att) {}

Firebird::IStatement *Banco::tomarPreparada(const QByteArray &sql)
{
    auto it = preparadas_.find(sql);
    if (it == preparadas_.end()) return nullptr;
    IStatement *st = it->second;
    preparadas_.erase(it);
    return st;
}

void Banco::devolverPreparada(const QByteArray &sql, Firebird::IStatement *st)
{
    constexpr size_t kMaximo = 128;
    if (preparadas_.size() >= kMaximo) esquecerPreparadas();
    preparadas_.emplace(sql, st);
}

void Banco::esquecerPreparadas()
{
    for (auto &[sql, st] : preparadas_) {
        Status s;
        try {
            st->free(&s);
        } catch (const FbException &) {
            st->release();
        }
    }
    preparadas_.clear();
}

Banco::~Banco()
{
    esquecerPreparadas();
    if (!att_) return;
    Status s;
    try {
        att_->detach(&s);
    } catch (const FbException &) {
        att_->release();  // the server is gone: drop our side of it
    }
}

std::unique_ptr<Banco> Banco::abrir(const Conexao &c) { return std::unique_ptr<Banco>(new Banco(c, anexar(c, false))); }

std::unique_ptr<Banco> Banco::criar(const Conexao &c) { return std::unique_ptr<Banco>(new Banco(c, anexar(c, true))); }

IAttachment *Banco::api()
{
    if (!att_) ligar();
    return att_;
}

void Banco::reconectar()
{
    // Statements and event registrations are children of the attachment: let go of them first.
    for (auto &[sql, st] : preparadas_) st->release();
    preparadas_.clear();
    for (Eventos *e : ouvintes_) {
        if (e->ev_) static_cast<IEvents *>(e->ev_)->release();
        e->ev_ = nullptr;
    }
    if (att_) {
        try {
            Status s;
            att_->detach(&s);
        } catch (const FbException &) {
            att_->release();
        }
        att_ = nullptr;
    }
    ++geracao_;
    ligar();
}

void Banco::ligar()
{
    att_ = anexar(c_, false);
    for (Eventos *e : ouvintes_) {
        try {
            e->rearmar();
        } catch (const ErroBanco &) {
            // The alerts resume at the next reconnection; the data itself is reachable.
        }
    }
}

bool Banco::vivo()
{
    if (!att_) return false;
    try {
        Status s;
        att_->ping(&s);
        return true;
    } catch (const FbException &) {
        return false;
    }
}

// ---------------------------------------------------------------- Transacao

Transacao::Transacao(Banco &b, Modo m, bool ini) : b_(b), modo_(m)
{
    if (ini) iniciar();
}

Transacao::~Transacao()
{
    if (!tr_) return;
    if (orfa()) {
        soltar();
        return;
    }
    try {
        Status s;
        tr_->rollback(&s);
    } catch (const FbException &) {
        tr_->release();
    }
    tr_ = nullptr;
}

void Transacao::soltar()
{
    tr_->release();
    tr_ = nullptr;
}

void Transacao::iniciar()
{
    if (orfa()) soltar();
    if (tr_) return;
    guardado([&] {
        static const unsigned char escrita[] = {isc_tpb_version3, isc_tpb_write, isc_tpb_read_committed,
                                                isc_tpb_rec_version, isc_tpb_nowait};
        static const unsigned char leitura[] = {isc_tpb_version3, isc_tpb_read, isc_tpb_read_committed,
                                                isc_tpb_rec_version, isc_tpb_nowait};
        Status s;
        if (modo_ == Modo::Escrita)
            tr_ = b_.api()->startTransaction(&s, sizeof escrita, escrita);
        else
            tr_ = b_.api()->startTransaction(&s, sizeof leitura, leitura);
        geracao_ = b_.geracao();
    });
}

ITransaction *Transacao::api()
{
    if (orfa()) {
        soltar();
        perdida("transação de uma conexão perdida");
    }
    if (!tr_) iniciar();
    return tr_;
}

void Transacao::commit()
{
    if (!tr_) return;
    if (orfa()) {
        soltar();
        perdida("transação de uma conexão perdida");
    }
    guardado([&] {
        Status s;
        tr_->commit(&s);
        tr_ = nullptr;
    });
}

namespace {
thread_local int profundidade = 0;  // nested attempts get names of their own
}

PontoSalvamento::PontoSalvamento(Transacao &t) : t_(t), nome_(QStringLiteral("ORB_TENTATIVA_%1").arg(++profundidade))
{
    try {
        executar(t_, "Savepoint " + nome_);
    } catch (...) {
        --profundidade;
        throw;
    }
}

PontoSalvamento::~PontoSalvamento()
{
    if (aberto_) {
        try {
            desfazer();
        } catch (...) {
            // The connection may be gone; the transaction's own rollback covers it then.
        }
    }
    --profundidade;
}

void PontoSalvamento::liberar()
{
    if (!aberto_) return;
    aberto_ = false;
    executar(t_, "Release Savepoint " + nome_);
}

void PontoSalvamento::desfazer()
{
    if (!aberto_) return;
    aberto_ = false;
    if (!t_.ativa()) return;
    executar(t_, "Rollback To Savepoint " + nome_);
    executar(t_, "Release Savepoint " + nome_);
}

void Transacao::commitRetaining()
{
    if (!tr_) return;
    if (orfa()) {
        soltar();
        perdida("transação de uma conexão perdida");
    }
    guardado([&] {
        Status s;
        tr_->commitRetaining(&s);
    });
}

void Transacao::rollback()
{
    if (!tr_) return;
    if (orfa()) return soltar();
    ITransaction *t = tr_;
    tr_ = nullptr;
    try {
        Status s;
        t->rollback(&s);
    } catch (const FbException &e) {
        t->release();
        try {
            lancar(e);
        } catch (const ErroBanco &x) {
            // Unreachable server: it undoes the work of the dead attachment itself.
            if (x.tipo() != TipoErro::Conexao) throw;
        }
    }
}

// ---------------------------------------------------------------- named parameters

SqlPosicional converterParametros(const QString &sql)
{
    SqlPosicional r;
    // In PSQL bodies (EXECUTE BLOCK, procedures, triggers) ":name" is a local variable, not ours.
    static const QRegularExpression psql("^\\s*(EXECUTE\\s+BLOCK|CREATE|ALTER|RECREATE)\\b",
                                         QRegularExpression::CaseInsensitiveOption);
    if (psql.match(sql).hasMatch()) return {sql, {}};
    r.sql.reserve(sql.size());
    const int n = int(sql.size());
    for (int i = 0; i < n;) {
        const QChar c = sql[i];
        if (c == '\'' || c == '"') {  // literal or quoted identifier: copy through the closing quote
            int j = i + 1;
            while (j < n) {
                if (sql[j] == c) {
                    if (j + 1 < n && sql[j + 1] == c) { j += 2; continue; }
                    break;
                }
                ++j;
            }
            r.sql += sql.mid(i, j - i + 1);
            i = j + 1;
        } else if (c == '-' && i + 1 < n && sql[i + 1] == '-') {
            int j = int(sql.indexOf('\n', i));
            if (j < 0) j = n;
            r.sql += sql.mid(i, j - i);
            i = j;
        } else if (c == '/' && i + 1 < n && sql[i + 1] == '*') {
            int j = int(sql.indexOf("*/", i + 2));
            j = j < 0 ? n : j + 2;
            r.sql += sql.mid(i, j - i);
            i = j;
        } else if (c == ':' && i + 1 < n && (sql[i + 1].isLetter() || sql[i + 1] == '_')) {
            int j = i + 1;
            while (j < n && (sql[j].isLetterOrNumber() || sql[j] == '_' || sql[j] == '$')) ++j;
            r.nomes << sql.mid(i + 1, j - i - 1).toUpper();
            r.sql += '?';
            i = j;
        } else {
            r.sql += c;
            ++i;
        }
    }
    return r;
}

// ---------------------------------------------------------------- Consulta

namespace {

constexpr unsigned kUtf8 = 4;

unsigned tipoBase(unsigned t) { return t & ~1u; }

// Client-side conversions of typed-in text, so that a bad date or number is told as such.
QVariant converterTexto(const QString &s, unsigned tipoServidor)
{
    const QString t = s.trimmed();
    switch (tipoBase(tipoServidor)) {
    case SQL_TYPE_DATE: {
        QDate d = QDate::fromString(t, "dd/MM/yyyy");
        if (!d.isValid()) d = QDate::fromString(t, Qt::ISODate);
        if (!d.isValid())
            throw ErroBanco(TipoErro::DataInvalida, mensagemPara(TipoErro::DataInvalida, {}), s);
        return d;
    }
    case SQL_TIMESTAMP: {
        QDateTime d = QDateTime::fromString(t, "dd/MM/yyyy hh:mm:ss");
        if (!d.isValid()) d = QDateTime::fromString(t, "dd/MM/yyyy hh:mm");
        if (!d.isValid()) d = QDateTime(QDate::fromString(t, "dd/MM/yyyy"), QTime(0, 0));
        if (!d.isValid()) d = QDateTime::fromString(t, Qt::ISODate);
        if (!d.isValid())
            throw ErroBanco(TipoErro::DataInvalida, mensagemPara(TipoErro::DataInvalida, {}), s);
        return d;
    }
    case SQL_SHORT:
    case SQL_LONG:
    case SQL_INT64:
    case SQL_FLOAT:
    case SQL_DOUBLE:
    case SQL_D_FLOAT: {
        auto d = Decimal::ler(t, true);  // typed by a Brazilian user: "1.234,56"
        if (!d) throw ErroBanco(TipoErro::NumeroInvalido, mensagemPara(TipoErro::NumeroInvalido, {}), s);
        return QVariant::fromValue(*d);
    }
    default:
        return s;
    }
}

ISC_DATE codificarData(const QDate &d) { return util()->encodeDate(unsigned(d.year()), unsigned(d.month()), unsigned(d.day())); }
ISC_TIME codificarHora(const QTime &t)
{
    return util()->encodeTime(unsigned(t.hour()), unsigned(t.minute()), unsigned(t.second()), unsigned(t.msec()) * 10);
}
QDate decodificarData(ISC_DATE d)
{
    unsigned a, m, di;
    util()->decodeDate(d, &a, &m, &di);
    return QDate(int(a), int(m), int(di));
}
QTime decodificarHora(ISC_TIME t)
{
    unsigned h, m, s, f;
    util()->decodeTime(t, &h, &m, &s, &f);
    return QTime(int(h), int(m), int(s), int(f / 10));
}

} // namespace

struct Consulta::Impl {
    IStatement *st = nullptr;
    IResultSet *rs = nullptr;
    IMessageMetadata *inServidor = nullptr;  // as the server describes the parameters
    IMessageMetadata *in = nullptr;          // as we send them (types follow the bound values)
    IMessageMetadata *out = nullptr;
    QStringList nomes;                       // name of each "?" position
    std::vector<QVariant> valores;           // bound value per position
    std::vector<int> tiposEnviados;          // type code per position of the current `in`
    std::vector<unsigned char> bufIn, bufOut;
    unsigned tipoStmt = 0;
    bool linhaPendente = false;              // executed statement with a RETURNING row
    bool temLinha = false;
    std::vector<QVariant> linha;             // decoded current row
    QStringList colunas;

    Banco *banco = nullptr;
    quint64 geracao = 0;                     // of the attachment the statement was prepared on
    QByteArray texto;
    bool reutilizavel = false;               // closed cleanly: goes back to the connection's pool

    ~Impl()
    {
        if (banco && geracao != banco->geracao()) {
            // Its attachment is gone, and the cursor with it (freed by the client library): only
            // our references are let go, nothing is asked of the server.
            if (st) st->release();
            for (IMessageMetadata *m : {inServidor, in, out})
                if (m) m->release();
            return;
        }
        Status s;
        bool fechado = true;
        try { if (rs) rs->close(&s); } catch (const FbException &) { rs->release(); fechado = false; }
        // Reads and writes (select, insert, update, delete, execute procedure) are kept for reuse.
        const bool dml = tipoStmt == isc_info_sql_stmt_select || tipoStmt == isc_info_sql_stmt_insert ||
                         tipoStmt == isc_info_sql_stmt_update || tipoStmt == isc_info_sql_stmt_delete ||
                         tipoStmt == isc_info_sql_stmt_exec_procedure || tipoStmt == isc_info_sql_stmt_select_for_upd;
        if (st && banco && fechado && dml && reutilizavel && geracao == banco->geracao()) {
            banco->devolverPreparada(texto, st);
            st = nullptr;
        }
        try { if (st) st->free(&s); } catch (const FbException &) { st->release(); }
        if (inServidor) inServidor->release();
        if (in) in->release();
        if (out) out->release();
    }
};

Consulta::Consulta(Transacao &t, const QString &sql) : d(std::make_unique<Impl>()), sql_(sql), t_(t)
{
    const SqlPosicional p = converterParametros(sql);
    d->nomes = p.nomes;
    d->valores.resize(size_t(p.nomes.size()));
    guardado([&] {
        Status s;
        d->texto = p.sql.toUtf8();
        d->banco = &t.banco();
        ITransaction *tr = t.api();  // first: a lost attachment is replaced before the pool is looked at
        d->geracao = d->banco->geracao();
        d->st = d->banco->tomarPreparada(d->texto);
        if (!d->st)
            d->st = d->banco->api()->prepare(&s, tr, unsigned(d->texto.size()), d->texto.constData(), SQL_DIALECT_V6,
                                             IStatement::PREPARE_PREFETCH_METADATA);
        d->tipoStmt = d->st->getType(&s);
        d->inServidor = d->st->getInputMetadata(&s);
        d->out = d->st->getOutputMetadata(&s);
        d->bufOut.resize(d->out->getMessageLength(&s));
        const unsigned nc = d->out->getCount(&s);
        for (unsigned i = 0; i < nc; ++i)
            d->colunas << QString::fromUtf8(d->out->getAlias(&s, i)).toUpper();
        d->linha.resize(nc);
    });
}

Consulta::~Consulta() = default;

Consulta &Consulta::bind(const QString &nome, const QVariant &valor)
{
    const QString n = nome.startsWith(':') ? nome.mid(1).toUpper() : nome.toUpper();
    bool achou = false;
    for (int i = 0; i < d->nomes.size(); ++i)
        if (d->nomes[i] == n) {
            d->valores[size_t(i)] = valor;
            achou = true;
        }
    if (!achou) throw std::invalid_argument(("parâmetro desconhecido: " + n).toStdString());
    return *this;
}

QStringList Consulta::parametros() const { return d->nomes; }

void Consulta::executar()
{
    if (d->geracao != d->banco->geracao()) perdida("comando de uma conexão perdida");
    if (d->tipoStmt == isc_info_sql_stmt_ddl) t_.banco().esquecerPreparadas();
    d->reutilizavel = false;
    guardado([&] {
        Status s;
        if (d->rs) {
            d->rs->close(&s);
            d->rs = nullptr;
        }
        d->temLinha = false;
        d->linhaPendente = false;
        const unsigned n = d->inServidor->getCount(&s);

        // The message we send: each position typed after the value bound to it, so that
        // the server does the conversions (rounding of NUMERIC included) exactly as it would in SQL.
        std::vector<QVariant> vals(n);
        std::vector<int> tipos(n);
        for (unsigned i = 0; i < n; ++i) {
            QVariant v = i < d->valores.size() ? d->valores[i] : QVariant();
            const unsigned ts = tipoBase(d->inServidor->getType(&s, i));
            if (v.isValid() && !v.isNull() && v.typeId() == QMetaType::QString && ts != SQL_BLOB && ts != SQL_TEXT
                && ts != SQL_VARYING)
                v = converterTexto(v.toString(), ts);
            int tipo;
            if (!v.isValid() || v.isNull()) tipo = int(ts);
            else if (ts == SQL_BLOB) tipo = SQL_BLOB;
            else {
                switch (v.typeId()) {
                case QMetaType::Int: case QMetaType::UInt: case QMetaType::LongLong: case QMetaType::ULongLong:
                case QMetaType::Long: case QMetaType::Short:
                    tipo = SQL_INT64; break;
                case QMetaType::Bool: tipo = ts == SQL_BOOLEAN ? SQL_BOOLEAN : SQL_INT64; break;
                case QMetaType::Double: case QMetaType::Float: tipo = SQL_DOUBLE; break;
                case QMetaType::QDate: tipo = SQL_TYPE_DATE; break;
                case QMetaType::QDateTime: tipo = SQL_TIMESTAMP; break;
                case QMetaType::QTime: tipo = SQL_TYPE_TIME; break;
                default:
                    if (v.canConvert<Decimal>() && v.metaType() == QMetaType::fromType<Decimal>()) tipo = -SQL_INT64;
                    else tipo = SQL_VARYING;
                }
            }
            // A value wider than 64 bits goes at fewer decimals; the column rounds it to its own anyway.
            if (tipo == -SQL_INT64) {
                try {
                    v = QVariant::fromValue(v.value<Decimal>().compacto());
                } catch (const std::overflow_error &) {
                    throw ErroBanco(TipoErro::NumeroInvalido, mensagemPara(TipoErro::NumeroInvalido, {}),
                                    "valor fora do intervalo: " + v.value<Decimal>().texto());
                }
            }
            // A text's length travels in 16 bits: a longer one would arrive cut, and no column holds it.
            if (tipo == SQL_VARYING && v.toString().size() > 8000 && v.toString().toUtf8().size() > 32765)
                throw ErroBanco(TipoErro::TextoLongo, mensagemPara(TipoErro::TextoLongo, {}),
                                QString("texto de %1 bytes").arg(v.toString().toUtf8().size()));
            vals[i] = v;
            tipos[i] = tipo;
        }

        // Rebuild the metadata only when the kinds of bound values change (hot path for bulk inserts).
        std::vector<int> assinatura(n);
        for (unsigned i = 0; i < n; ++i) {
            int a = tipos[i];
            if (a == -SQL_INT64) a = -SQL_INT64 * 100 - vals[i].value<Decimal>().escala();
            // Text up to the column's own size reuses the message; only longer text needs a new one.
            if (a == SQL_VARYING) {
                const int tam = int(vals[i].toString().toUtf8().size());
                a = SQL_VARYING * 100000 + (tam <= int(d->inServidor->getLength(&s, i)) ? 0 : tam);
            }
            assinatura[i] = a;
        }
        if (!d->in || assinatura != d->tiposEnviados) {
            IMetadataBuilder *b = d->inServidor->getBuilder(&s);
            for (unsigned i = 0; i < n; ++i) {
                const int t = tipos[i];
                if (!vals[i].isValid() || vals[i].isNull()) {
                    continue;  // keep the server's own description; only the null flag is sent
                }
                // Type, length and scale of the value as we send it (nullable, so the null flag counts).
                auto definir = [&](unsigned tipo, unsigned tamanho, int escala) {
                    b->setType(&s, i, tipo + 1);
                    b->setLength(&s, i, tamanho);
                    b->setScale(&s, i, escala);
                };
                switch (t) {
                case -SQL_INT64: definir(SQL_INT64, sizeof(ISC_INT64), -vals[i].value<Decimal>().escala()); break;
                case SQL_INT64: definir(SQL_INT64, sizeof(ISC_INT64), 0); break;
                case SQL_DOUBLE: definir(SQL_DOUBLE, sizeof(double), 0); break;
                case SQL_TYPE_DATE: definir(SQL_TYPE_DATE, sizeof(ISC_DATE), 0); break;
                case SQL_TIMESTAMP: definir(SQL_TIMESTAMP, sizeof(ISC_TIMESTAMP), 0); break;
                case SQL_TYPE_TIME: definir(SQL_TYPE_TIME, sizeof(ISC_TIME), 0); break;
                case SQL_BOOLEAN: definir(SQL_BOOLEAN, 1, 0); break;
                case SQL_BLOB: definir(SQL_BLOB, sizeof(ISC_QUAD), 0); break;
                case SQL_VARYING:
                    b->setType(&s, i, SQL_VARYING + 1);
                    b->setLength(&s, i, std::max({1u, unsigned(vals[i].toString().toUtf8().size()),
                                                  tipoBase(d->inServidor->getType(&s, i)) == SQL_VARYING
                                                      ? d->inServidor->getLength(&s, i) : 0u}));
                    b->setCharSet(&s, i, kUtf8);
                    b->setScale(&s, i, 0);
                    break;
                }
            }
            if (d->in) d->in->release();
            d->in = b->getMetadata(&s);
            b->release();
            d->tiposEnviados = assinatura;
            d->bufIn.assign(d->in->getMessageLength(&s), 0);
        }

        unsigned char *buf = d->bufIn.data();
        for (unsigned i = 0; i < n; ++i) {
            short *nulo = reinterpret_cast<short *>(buf + d->in->getNullOffset(&s, i));
            unsigned char *p = buf + d->in->getOffset(&s, i);
            const QVariant &v = vals[i];
            if (!v.isValid() || v.isNull()) {
                *nulo = -1;
                continue;
            }
            *nulo = 0;
            switch (tipos[i]) {
            case -SQL_INT64: {
                const ISC_INT64 m = v.value<Decimal>().mantissa();
                std::memcpy(p, &m, sizeof m);
                break;
            }
            case SQL_INT64: {
                const ISC_INT64 m = v.toLongLong();
                std::memcpy(p, &m, sizeof m);
                break;
            }
            case SQL_DOUBLE: {
                const double x = v.toDouble();
                std::memcpy(p, &x, sizeof x);
                break;
            }
            case SQL_TYPE_DATE: {
                const ISC_DATE x = codificarData(v.toDate());
                std::memcpy(p, &x, sizeof x);
                break;
            }
            case SQL_TIMESTAMP: {
                const QDateTime dt = v.toDateTime();
                ISC_TIMESTAMP x{codificarData(dt.date()), codificarHora(dt.time())};
                std::memcpy(p, &x, sizeof x);
                break;
            }
            case SQL_TYPE_TIME: {
                const ISC_TIME x = codificarHora(v.toTime());
                std::memcpy(p, &x, sizeof x);
                break;
            }
            case SQL_BOOLEAN: *p = v.toBool() ? 1 : 0; break;
            case SQL_BLOB: {
                const bool texto = v.typeId() != QMetaType::QByteArray;
                const QByteArray dados = texto ? v.toString().toUtf8() : v.toByteArray();
                ISC_QUAD id;
                // Text blobs are written in the connection's UTF-8 and stored in the column's charset.
                static const unsigned char bpbTexto[] = {isc_bpb_version1, isc_bpb_source_type, 1, 1,
                                                         isc_bpb_source_interp, 1, kUtf8,
                                                         isc_bpb_target_type, 1, 1};
                IBlob *bl = texto ? t_.banco().api()->createBlob(&s, t_.api(), &id, sizeof bpbTexto, bpbTexto)
                                  : t_.banco().api()->createBlob(&s, t_.api(), &id, 0, nullptr);
                for (qsizetype off = 0; off < dados.size(); off += 32768) {
                    const unsigned len = unsigned(std::min<qsizetype>(32768, dados.size() - off));
                    bl->putSegment(&s, len, dados.constData() + off);
                }
                bl->close(&s);
                std::memcpy(p, &id, sizeof id);
                break;
            }
            case SQL_VARYING: {
                const QByteArray u = v.toString().toUtf8();
                const ISC_USHORT len = ISC_USHORT(u.size());
                std::memcpy(p, &len, sizeof len);
                std::memcpy(p + sizeof len, u.constData(), size_t(u.size()));
                break;
            }
            }
        }

        const bool select = d->tipoStmt == isc_info_sql_stmt_select || d->tipoStmt == isc_info_sql_stmt_select_for_upd;
        if (select) {
            d->rs = d->st->openCursor(&s, t_.api(), d->in, buf, d->out, 0);
        } else {
            const bool saida = d->out->getCount(&s) > 0;
            d->st->execute(&s, t_.api(), d->in, buf, saida ? d->out : nullptr, saida ? d->bufOut.data() : nullptr);
            d->linhaPendente = saida;
        }
        d->reutilizavel = true;
    });
}

namespace {
QVariant decodificar(IMessageMetadata *meta, unsigned i, const unsigned char *buf, IAttachment *att, ITransaction *tr)
{
    Status s;
    if (*reinterpret_cast<const short *>(buf + meta->getNullOffset(&s, i))) return QVariant();
    const unsigned char *p = buf + meta->getOffset(&s, i);
    const int escala = meta->getScale(&s, i);
    switch (tipoBase(meta->getType(&s, i))) {
    case SQL_VARYING: {
        ISC_USHORT len;
        std::memcpy(&len, p, sizeof len);
        return QString::fromUtf8(reinterpret_cast<const char *>(p + sizeof len), len);
    }
    case SQL_TEXT: {
        // CHAR columns come padded with blanks; the program never relies on trailing blanks.
        QString r = QString::fromUtf8(reinterpret_cast<const char *>(p), int(meta->getLength(&s, i)));
        while (!r.isEmpty() && r.back() == ' ') r.chop(1);
        return r;
    }
    case SQL_SHORT: {
        ISC_SHORT x;
        std::memcpy(&x, p, sizeof x);
        return escala ? QVariant::fromValue(Decimal::bruto(x, -escala)) : QVariant(int(x));
    }
    case SQL_LONG: {
        ISC_LONG x;
        std::memcpy(&x, p, sizeof x);
        return escala ? QVariant::fromValue(Decimal::bruto(x, -escala)) : QVariant(int(x));
    }
    case SQL_INT64: {
        ISC_INT64 x;
        std::memcpy(&x, p, sizeof x);
        return escala ? QVariant::fromValue(Decimal::bruto(x, -escala)) : QVariant(qint64(x));
    }
    case SQL_FLOAT: {
        float x;
        std::memcpy(&x, p, sizeof x);
        return double(x);
    }
    case SQL_DOUBLE:
    case SQL_D_FLOAT: {
        double x;
        std::memcpy(&x, p, sizeof x);
        return x;
    }
    case SQL_TYPE_DATE: {
        ISC_DATE x;
        std::memcpy(&x, p, sizeof x);
        return decodificarData(x);
    }
    case SQL_TYPE_TIME: {
        ISC_TIME x;
        std::memcpy(&x, p, sizeof x);
        return decodificarHora(x);
    }
    case SQL_TIMESTAMP: {
        ISC_TIMESTAMP x;
        std::memcpy(&x, p, sizeof x);
        return QDateTime(decodificarData(x.timestamp_date), decodificarHora(x.timestamp_time));
    }
    case SQL_BOOLEAN: return bool(*p);
    case SQL_BLOB: {
        ISC_QUAD id;
        std::memcpy(&id, p, sizeof id);
        IBlob *bl = att->openBlob(&s, tr, &id, 0, nullptr);
        QByteArray dados;
        char seg[32768];
        for (;;) {
            unsigned lido = 0;
            const int r = bl->getSegment(&s, sizeof seg, seg, &lido);
            if (r == IStatus::RESULT_OK || r == IStatus::RESULT_SEGMENT) dados.append(seg, lido);
            else break;
        }
        bl->close(&s);
        if (meta->getSubType(&s, i) == 1) return QString::fromUtf8(dados);
        return dados;
    }
    default: return QVariant();
    }
}
} // namespace

bool Consulta::proxima()
{
    if (d->geracao != d->banco->geracao()) perdida("cursor de uma conexão perdida");
    return guardado([&] {
        Status s;
        if (d->linhaPendente) {
            d->linhaPendente = false;
        } else if (d->rs) {
            if (d->rs->fetchNext(&s, d->bufOut.data()) != IStatus::RESULT_OK) {
                d->rs->close(&s);
                d->rs = nullptr;
                d->temLinha = false;
                return false;
            }
        } else {
            d->temLinha = false;
            return false;
        }
        for (unsigned i = 0; i < unsigned(d->linha.size()); ++i)
            d->linha[i] = decodificar(d->out, i, d->bufOut.data(), t_.banco().api(), t_.api());
        d->temLinha = true;
        return true;
    });
}

void Consulta::fechar()
{
    if (d->geracao != d->banco->geracao()) {
        d->temLinha = false;
        return;  // the cursor died with its attachment; the destructor lets it go
    }
    guardado([&] {
        Status s;
        if (d->rs) {
            d->rs->close(&s);
            d->rs = nullptr;
        }
        d->temLinha = false;
    });
}

int Consulta::colunas() const { return int(d->colunas.size()); }
QString Consulta::nomeColuna(int i) const { return d->colunas.value(i); }
int Consulta::indice(const QString &coluna) const { return int(d->colunas.indexOf(coluna.toUpper())); }

QVariant Consulta::valor(int i) const
{
    if (!d->temLinha || i < 0 || i >= int(d->linha.size())) return QVariant();
    return d->linha[size_t(i)];
}

QVariant Consulta::valor(const QString &coluna) const
{
    const int i = indice(coluna);
    if (i < 0) throw std::out_of_range(("coluna desconhecida: " + coluna).toStdString());
    return valor(i);
}

qint64 Consulta::afetadas()
{
    return guardado([&] {
        Status s;
        return qint64(d->st->getAffectedRecords(&s));
    });
}

QVariant Consulta::escalar()
{
    executar();
    QVariant r = proxima() ? valor(0) : QVariant();
    fechar();
    return r;
}

QVariant escalar(Transacao &t, const QString &sql, const std::map<QString, QVariant> &params)
{
    Consulta q(t, sql);
    for (const auto &[k, v] : params) q.bind(k, v);
    return q.escalar();
}

void executar(Transacao &t, const QString &sql, const std::map<QString, QVariant> &params)
{
    Consulta q(t, sql);
    for (const auto &[k, v] : params) q.bind(k, v);
    q.executar();
}

// ---------------------------------------------------------------- Eventos

// Firebird calls back on its own thread; the buffer is handed to the owner's thread.
struct Eventos::Callback : IEventCallbackImpl<Eventos::Callback, ThrowStatusWrapper> {
    QMutex mtx;
    Eventos *dono;
    // While the registration waits for its first callback, that callback is handed over here.
    bool esperando = false, temInicial = false;
    QByteArray inicial;
    QWaitCondition chegouInicial;
    explicit Callback(Eventos *d) : dono(d) {}
    void addRef() override {}
    int release() override { return 1; }
    void eventCallbackFunction(unsigned length, const unsigned char *events) override
    {
        QMutexLocker l(&mtx);
        if (!dono || !events) return;
        QByteArray b(reinterpret_cast<const char *>(events), int(length));
        if (esperando) {
            esperando = false;
            temInicial = true;
            inicial = b;
            chegouInicial.wakeAll();
            return;
        }
        Eventos *d = dono;
        const void *eu = this;
        QMetaObject::invokeMethod(d, [d, b, eu] { d->chegou(b, eu); }, Qt::QueuedConnection);
    }
};

namespace {

// Event parameter block: version, then per name its length, the name and a 4-byte count, all zero.
QByteArray blocoEventos(const QStringList &nomes)
{
    QByteArray b(1, char(1));  // EPB_version1
    for (const QString &n : nomes) {
        const QByteArray u = n.toUtf8();
        b.append(char(u.size()));
        b.append(u);
        b.append(4, '\0');
    }
    return b;
}

} // namespace

Eventos::Eventos(Banco &b, const QStringList &nomes, QObject *parent)
    : QObject(parent), b_(b), nomes_(nomes), buf_(blocoEventos(nomes)), cb_(std::make_unique<Callback>(this))
{
    registrar();
    b_.ouvintes_.push_back(this);
}

Eventos::~Eventos()
{
    std::erase(b_.ouvintes_, this);
    antigos_.push_back(std::move(cb_));
    for (auto &cb : antigos_) {
        QMutexLocker l(&cb->mtx);
        cb->dono = nullptr;
    }
    // A cancelled registration may still be called, with an empty block, when the attachment ends.
    for (auto &cb : antigos_) b_.callbacksRetirados_.push_back(std::shared_ptr<void>(std::move(cb)));
    if (ev_) {
        auto *ev = static_cast<IEvents *>(ev_);
        try {
            Status s;
            ev->cancel(&s);
        } catch (const FbException &) {
            ev->release();
        }
    }
}

void Eventos::armar()
{
    guardado([&] {
        Status s;
        if (ev_) static_cast<IEvents *>(ev_)->release();
        ev_ = b_.api()->queEvents(&s, cb_.get(), unsigned(buf_.size()),
                                  reinterpret_cast<const unsigned char *>(buf_.constData()));
    });
}

// The first callback reports the counts at registration. Taking it here, before the caller can post
// anything, keeps an event posted at once from arriving folded into that baseline and being lost.
void Eventos::registrar()
{
    constexpr int kEsperaBaseMs = 2000;
    {
        QMutexLocker l(&cb_->mtx);
        cb_->esperando = true;
        cb_->temInicial = false;
    }
    QByteArray base;
    try {
        armar();
        QMutexLocker l(&cb_->mtx);
        QDeadlineTimer prazo(kEsperaBaseMs);
        while (!cb_->temInicial && cb_->chegouInicial.wait(&cb_->mtx, prazo)) {}
        cb_->esperando = false;
        if (cb_->temInicial) base = cb_->inicial;
    } catch (...) {
        QMutexLocker l(&cb_->mtx);
        cb_->esperando = false;
        throw;
    }
    // Late: the first queued callback is taken as the baseline instead.
    if (!base.isEmpty()) chegou(base, cb_.get());
}

void Eventos::rearmar()
{
    // The old registration's callback may still run: it is kept, silenced, and what it queued is ignored.
    {
        QMutexLocker l(&cb_->mtx);
        cb_->dono = nullptr;
    }
    antigos_.push_back(std::move(cb_));
    cb_ = std::make_unique<Callback>(this);
    if (ev_) static_cast<IEvents *>(ev_)->release();
    ev_ = nullptr;
    // Counts start again on the new attachment: asking from zero brings the baseline callback at once.
    primeira_ = true;
    buf_ = blocoEventos(nomes_);
    registrar();
}

void Eventos::chegou(const QByteArray &novo, const void *deQuem)
{
    // A registration lost with its connection reports an empty block; a replaced one is over.
    if (deQuem != cb_.get() || novo.size() < buf_.size()) return;
    // Compare counts name by name; the first callback only reports the counts at registration.
    int pos = 1;
    for (const QString &n : nomes_) {
        const int len = static_cast<unsigned char>(buf_[pos]);
        const int off = pos + 1 + len;
        quint32 antes = 0, depois = 0;
        std::memcpy(&antes, buf_.constData() + off, 4);
        if (off + 4 <= novo.size()) std::memcpy(&depois, novo.constData() + off, 4);
        if (!primeira_ && depois > antes) emit evento(n, int(depois - antes));
        pos = off + 4;
    }
    primeira_ = false;
    buf_ = novo.left(buf_.size());
    try {
        armar();
    } catch (const ErroBanco &) {
        // The connection is gone; whoever uses the database will report that.
    }
}

} // namespace db
