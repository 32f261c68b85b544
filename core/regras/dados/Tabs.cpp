#include "dados/Tabs.h"

#include "dados/Avisos.h"
#include "dados/Formatos.h"

#include <QDateTime>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSet>

namespace orb {

TTabs *Tabs = nullptr;

QVariant Registro::valor(const QString &nome) const
{
    for (const Campo &c : campos)
        if (c.nome.compare(nome, Qt::CaseInsensitive) == 0) return c.valor;
    return {};
}

void Registro::definir(const QString &nome, const QVariant &v, bool memo)
{
    for (Campo &c : campos)
        if (c.nome.compare(nome, Qt::CaseInsensitive) == 0) {
            c.valor = v;
            c.memo = memo;
            return;
        }
    campos.append({nome, v, memo});
}

TTabs::TTabs(QObject *parent) : QObject(parent)
{
    Deb("procedure TTabs.DataModuleCreate(Sender: TObject)");
}

TTabs::~TTabs() { desconectar(); }

void TTabs::conectar(std::unique_ptr<db::Banco> banco)
{
    desconectar();
    banco_ = std::move(banco);
    // Lookup lists hear of other workstations' commits through the tables' own events.
    try {
        avisos_ = std::make_unique<db::Eventos>(*banco_, tabelasComAviso(), this);
        connect(avisos_.get(), &db::Eventos::evento, this, [](const QString &tabela) { avisosTabelas().avisar(tabela); });
    } catch (const db::ErroBanco &) {
        avisos_.reset();  // without events the lists still follow this workstation's own saves
    }
}

void TTabs::desconectar()
{
    avisos_.reset();
    transacoes_.clear();  // each rolls back what it still holds
    banco_.reset();
}

db::Banco &TTabs::DbORB()
{
    if (!banco_) throw db::ErroBanco(db::TipoErro::Conexao, db::mensagemPara(db::TipoErro::Conexao, {}), "sem conexão");
    return *banco_;
}

bool TTabs::reconectar()
{
    Deb("procedure TTabs.Reconectar");
    db::Banco &b = DbORB();
    if (b.vivo()) return true;
    for (const auto &t : std::as_const(transacoes_)) t->rollback();  // the server undoes them itself
    try {
        b.reconectar();
    } catch (const db::ErroBanco &e) {
        if (e.tipo() != db::TipoErro::Conexao) throw;
        return false;
    }
    emit reconectado();
    return true;
}

db::Transacao &TTabs::Tr(const QString &area)
{
    auto it = transacoes_.find(area);
    if (it == transacoes_.end())
        it = transacoes_.insert(area, std::make_shared<db::Transacao>(DbORB(), db::Modo::Escrita, false));
    return **it;
}

void TTabs::Deb(const QString &assinatura)
{
    std::move_backward(trilha_.begin(), trilha_.end() - 1, trilha_.end());
    trilha_[0] = assinatura;
}

QStringList TTabs::trilha() const
{
    QStringList r;
    for (const QString &s : trilha_) r << s;
    return r;
}

bool colunaSecreta(const QString &coluna)
{
    static const QSet<QString> kSecretas = {"SENHA", "SENHAWEB", "SENHAHASH", "NOVASENHA", "NOVASENHAWEB", "MONOSSENHA"};
    return kSecretas.contains(coluna.trimmed().toUpper());
}

// ------------------------------------------------------------------ change log

QString TTabs::textoLog(const Registro &reg)
{
    QString r;
    for (const Campo &c : reg.campos) {
        if (c.memo || c.valor.typeId() == QMetaType::QByteArray || colunaSecreta(c.nome)) continue;
        QString v;
        const QVariant &x = c.valor;
        if (x.isNull() || !x.isValid()) v = "";
        else if (x.metaType() == QMetaType::fromType<db::Decimal>()) v = x.value<db::Decimal>().texto().replace('.', ',');
        else if (x.typeId() == QMetaType::QDate) v = x.toDate().toString("dd/MM/yyyy");
        else if (x.typeId() == QMetaType::QDateTime) v = x.toDateTime().toString("dd/MM/yyyy hh:mm:ss");
        else v = x.toString();
        // Kept as typed: the text goes to the database as a parameter.
        r += " - " + c.nome + ": " + v;
    }
    return r.mid(3).left(5000);
}

QString TTabs::tabelaDoSql(const QString &sql)
{
    const QString s = sql.toUpper();
    const int i = int(s.indexOf("TB"));
    if (i < 0) return {};
    int j = i;
    while (j < s.size() && (s[j].isLetterOrNumber() || s[j] == '_' || s[j] == '$')) ++j;
    return s.mid(i, j - i);
}

QString TTabs::chavePrimaria(db::Transacao &t, const QString &tabela)
{
    auto it = chaves_.find(tabela);
    if (it != chaves_.end()) return *it;
    db::Consulta q(t, "Select RDB$FIELD_NAME Campo "
                      "From RDB$RELATION_CONSTRAINTS C, RDB$INDEX_SEGMENTS S "
                      "Where C.RDB$RELATION_NAME = :Tabela and C.RDB$CONSTRAINT_TYPE = 'PRIMARY KEY' "
                      "and S.RDB$INDEX_NAME = C.RDB$INDEX_NAME "
                      "Order By RDB$FIELD_POSITION");
    q.bind("Tabela", tabela);
    const QString campo = q.escalar().toString().trimmed();
    chaves_.insert(tabela, campo);
    return campo;
}

void TTabs::logUm(db::Transacao &t, const Registro &reg, const QString &acao)
{
    const QString tabela = tabelaDoSql(reg.sql);
    const QString chave = chavePrimaria(t, tabela);
    QDateTime agora = QDateTime::currentDateTime();
    agora.setTime(QTime(agora.time().hour(), agora.time().minute()));  // the log keeps minutes only
    db::executar(t,
                 "Insert Into TbLog (Tabela, Registro, Data, Acao, IdUsuario, Dados) "
                 "Values (:Tabela, :Registro, :Data, :Acao, :IdUsuario, :Dados)",
                 {{"Tabela", tabela},
                  {"Registro", chave.isEmpty() ? QVariant() : reg.valor(chave)},
                  {"Data", agora},
                  {"Acao", acao},
                  {"IdUsuario", idUsuario_ ? QVariant(idUsuario_) : QVariant()},
                  {"Dados", textoLog(reg)}});
}

QStringList TTabs::colunasTexto(db::Transacao &t, const QString &tabela)
{
    auto it = colunas_.find(tabela);
    if (it != colunas_.end()) return *it;
    // Blob columns (memos, pictures) stay out of the image and are not even read.
    db::Consulta q(t, "Select Trim(Rf.RDB$FIELD_NAME) From RDB$RELATION_FIELDS Rf "
                      "Join RDB$FIELDS F On (F.RDB$FIELD_NAME = Rf.RDB$FIELD_SOURCE) "
                      "Where (Rf.RDB$RELATION_NAME = :T) and (F.RDB$FIELD_TYPE <> 261) Order By Rf.RDB$FIELD_POSITION");
    q.bind("T", tabela.toUpper());
    q.executar();
    QStringList r;
    while (q.proxima()) r << q.valor(0).toString();
    colunas_.insert(tabela, r);
    return r;
}

QList<Registro> TTabs::imagens(db::Transacao &t, const QString &tabela, const QString &coluna, const QVariant &valor)
{
    const QStringList cols = colunasTexto(t, tabela);
    QList<Registro> r;
    if (cols.isEmpty()) return r;
    // Table and column names come from declarations and the system tables, never from typing.
    db::Consulta q(t, "Select " + cols.join(", ") + " From " + tabela + " Where " + coluna + " = :VALOR");
    q.bind("VALOR", valor);
    q.executar();
    while (q.proxima()) {
        Registro reg{"select * from " + tabela.toUpper(), {}};
        for (int i = 0; i < cols.size(); ++i) reg.campos.append({cols[i], q.valor(i)});
        r << reg;
    }
    return r;
}

void TTabs::Log(db::Transacao &t, const QString &tabela, const QString &chave, const QVariant &valor, const QString &acao,
                const QList<QPair<QString, QString>> &detalhes)
{
    Deb("procedure TTabs.Log(Tabela: TDataSet; Acao: String)");
    QList<Registro> regs = imagens(t, tabela, chave, valor);
    if (regs.isEmpty()) regs << Registro{"select * from " + tabela.toUpper(), {{chave.toUpper(), valor}}};
    for (const Registro &r : std::as_const(regs)) logUm(t, r, acao);
    if (acao != QStringLiteral("EXCLUSÃO")) return;
    for (const auto &[det, fk] : detalhes)
        for (const Registro &r : imagens(t, det, fk, valor)) logUm(t, r, acao);
}

void TTabs::Log(db::Transacao &t, const Registro &reg, const QString &acao, const QList<Registro> &detalhes)
{
    Deb("procedure TTabs.Log(Tabela: TDataSet; Acao: String)");
    logUm(t, reg, acao);
    if (acao == QStringLiteral("EXCLUSÃO"))
        for (const Registro &d : detalhes) logUm(t, d, acao);
}

// ------------------------------------------------------------------ codes and transactions

int TTabs::NovoCodigo(const QString &tabela, const QString &campo, const QString &filtro)
{
    Deb("function TTabs.NovoCodigo(Tabela, Campo, Filtro: String): Integer");
    // Table, column and filter come from the program's own code, never from what a user typed.
    QString sql = "Select Max(" + campo + ") " + campo + "\nFrom " + tabela;
    if (!filtro.isEmpty()) sql += "\nWhere  " + filtro;
    db::Transacao &t = TrSys();
    const bool propria = !t.ativa();
    db::Consulta q(t, sql);
    const QVariant max = q.escalar();
    if (propria) t.commit();
    if (max.isNull() || !max.isValid()) return 1;
    bool ok = false;
    const qlonglong v = max.toString().trimmed().toLongLong(&ok);
    return ok ? int(v + 1) : 1;
}

void TTabs::RollbackTransacoes()
{
    Deb("procedure TTabs.RollbackTransacoes");
    for (auto it = transacoes_.begin(); it != transacoes_.end(); ++it)
        if (it.key() != "TrAgenda" && (*it)->ativa()) (*it)->rollback();
}

void TTabs::RollbackTransacoesIn()
{
    Deb("procedure TTabs.RollbackTransacoesIn");
    for (auto it = transacoes_.begin(); it != transacoes_.end(); ++it)
        if (!(*it)->ativa()) {
            try {
                (*it)->rollback();
            } catch (...) {
            }
        }
}

// ------------------------------------------------------------------ small routines

QString TTabs::Padl(const QString &s, int n)
{
    Deb("function TTabs.Padl(s: String; n: Integer): String");
    return orb::Padl(s, n);
}

QString TTabs::RetiraEnter(const QString &s) { return orb::RetiraEnter(s); }

QString TTabs::ConvDecimalValor(const db::Decimal &v) { return orb::ConvDecimalValor(v); }

QString TTabs::TbToJson(const QList<Registro> &registros)
{
    Deb("function TTabs.TbToJson(DataSet: TDataSet): String");
    QJsonArray a;
    for (const Registro &r : registros) {
        QJsonObject o;
        for (const Campo &c : r.campos) {
            const QVariant &v = c.valor;
            const QString n = c.nome.toUpper();
            if (colunaSecreta(n)) continue;
            if (!v.isValid() || v.isNull()) o.insert(c.nome, QJsonValue::Null);
            else if (v.typeId() == QMetaType::QByteArray || n == "IMG" || n == "IMAGEM" || n == "FOTO")
                o.insert(c.nome, QString::fromLatin1(v.toByteArray().toBase64()));
            else if (v.metaType() == QMetaType::fromType<db::Decimal>())
                o.insert(c.nome, v.value<db::Decimal>().paraDouble());
            else if (v.typeId() == QMetaType::Int || v.typeId() == QMetaType::LongLong) o.insert(c.nome, v.toLongLong());
            else if (v.typeId() == QMetaType::Double) o.insert(c.nome, v.toDouble());
            else if (v.typeId() == QMetaType::QDate) o.insert(c.nome, v.toDate().toString(Qt::ISODate));
            else if (v.typeId() == QMetaType::QDateTime) o.insert(c.nome, v.toDateTime().toString(Qt::ISODate));
            else o.insert(c.nome, v.toString());
        }
        a.append(o);
    }
    return QString::fromUtf8(QJsonDocument(a).toJson(QJsonDocument::Compact));
}

} // namespace orb
