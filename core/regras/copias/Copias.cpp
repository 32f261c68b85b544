#include "copias/Copias.h"

#include "Recusa.h"
#include "copias/Servico.h"
#include "schema/Esquema.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QSaveFile>
#include <QSettings>
#include <QSysInfo>
#include <QSet>
#include <algorithm>
#ifdef Q_OS_UNIX
#include <unistd.h>
#endif

namespace copias {

namespace {

const QString kRegistro = QStringLiteral(".json");

QString registroDe(const QString &arquivo) { return arquivo + kRegistro; }

QString textoVerificacao(Verificacao v)
{
    switch (v) {
    case Verificacao::Verificada: return QStringLiteral("verificada");
    case Verificacao::Falhou: return QStringLiteral("falhou");
    case Verificacao::Pendente: break;
    }
    return QStringLiteral("pendente");
}

void gravarRegistro(const Copia &c)
{
    QJsonObject linhas;
    for (auto it = c.linhas.cbegin(); it != c.linhas.cend(); ++it) linhas.insert(it.key(), double(it.value()));
    const QJsonObject o{{"quando", c.quando.toString(Qt::ISODate)},
                        {"automatica", c.automatica},
                        {"verificacao", textoVerificacao(c.verificacao)},
                        {"motivo", c.motivo},
                        {"linhas", linhas}};
    QSaveFile f(registroDe(c.arquivo));
    if (!f.open(QIODevice::WriteOnly) || f.write(QJsonDocument(o).toJson()) < 0 || !f.commit())
        throw orb::Recusa(QString("Não foi possível gravar %1: %2").arg(QDir::toNativeSeparators(f.fileName()), f.errorString()));
}

} // namespace

Copia copiaDe(const QString &arquivo)
{
    const QFileInfo fi(arquivo);
    Copia c;
    c.arquivo = fi.absoluteFilePath();
    c.tamanho = fi.size();
    c.quando = fi.lastModified();
    QFile f(registroDe(arquivo));
    if (!f.open(QIODevice::ReadOnly)) return c;
    const QJsonObject o = QJsonDocument::fromJson(f.readAll()).object();
    if (const QDateTime q = QDateTime::fromString(o.value("quando").toString(), Qt::ISODate); q.isValid()) c.quando = q;
    c.automatica = o.value("automatica").toBool();
    const QString v = o.value("verificacao").toString();
    c.verificacao = v == "verificada" ? Verificacao::Verificada : v == "falhou" ? Verificacao::Falhou : Verificacao::Pendente;
    c.motivo = o.value("motivo").toString();
    const QJsonObject linhas = o.value("linhas").toObject();
    for (auto it = linhas.begin(); it != linhas.end(); ++it) c.linhas.insert(it.key(), qint64(it.value().toDouble()));
    return c;
}

namespace {

// Follows the engine's verbose output: "writing data for table X" / "restoring data for table X", then
// "N records written" / "N records restored" (also every 20,000 rows on the way).
struct Leitor {
    QMap<QString, qint64> linhas;
    QString atual;
    int tabelas = 0;
    std::function<void(int)> avancou;

    void operator()(const QString &l)
    {
        static const QRegularExpression tabela(QStringLiteral("(?:writing|restoring) data for table (.+)$"));
        static const QRegularExpression registros(QStringLiteral("^(?:gbak:)?\\s*(\\d+) records (?:written|restored)"));
        if (const auto m = tabela.match(l); m.hasMatch()) {
            atual = m.captured(1).trimmed();
            linhas.insert(atual, 0);
            if (avancou) avancou(++tabelas);
            return;
        }
        if (const auto r = registros.match(l); r.hasMatch() && !atual.isEmpty()) linhas[atual] = r.captured(1).toLongLong();
        if (avancou) avancou(tabelas);  // a long table still moves the clock on
    }
};

int totalTabelas(const QMap<QString, qint64> &conhecidas)
{
    return std::max<int>(int(conhecidas.size()), int(esquema::tabelas().size()));
}

} // namespace

void restaurarConferido(const db::Conexao &c, const Copia &copia, const QString &destino, const Progresso &progresso)
{
    QFile::remove(destino);
    const int total = totalTabelas(copia.linhas);
    Leitor leitor;
    leitor.avancou = [&](int n) { if (progresso) progresso(std::min(n, total), total, "Restaurando a cópia..."); };
    try {
        restaurarBackup(c, copia.arquivo, destino, std::ref(leitor));
    } catch (const db::ErroBanco &e) {
        QFile::remove(destino);
        throw orb::Recusa("A cópia não pôde ser restaurada: o arquivo está danificado, incompleto ou não é uma cópia "
                          "de segurança, ou faltou espaço em disco.\n\nFirebird: " + e.tecnico());
    }
    // A copy made elsewhere has no record of its own: the rows the restore wrote are all we know.
    const QMap<QString, qint64> esperadas = copia.linhas.isEmpty() ? leitor.linhas : copia.linhas;
    QMap<QString, qint64> restauradas;
    try {
        db::Conexao r = c;
        r.banco = prefixoServidor(c.banco) + destino;
        auto b = db::Banco::abrir(r);
        restauradas = contarLinhas(*b);
    } catch (const db::ErroBanco &e) {
        QFile::remove(destino);
        throw orb::Recusa("A cópia restaurada não pôde ser aberta: " + e.mensagem());
    }
    QStringList diferentes;
    for (auto it = esperadas.cbegin(); it != esperadas.cend(); ++it)
        if (restauradas.value(it.key(), -1) != it.value())
            diferentes << QString("%1 (%2 de %3 linhas)").arg(it.key()).arg(std::max<qint64>(0, restauradas.value(it.key(), 0))).arg(it.value());
    for (auto it = restauradas.cbegin(); it != restauradas.cend(); ++it)
        if (!esperadas.contains(it.key())) diferentes << QString("%1 (tabela a mais)").arg(it.key());
    if (esperadas.isEmpty()) diferentes << "nenhuma tabela";
    if (!diferentes.isEmpty()) {
        QFile::remove(destino);
        const int n = int(diferentes.size());
        throw orb::Recusa("A cópia restaurada não confere com o banco de dados copiado: "
                          + QStringList(diferentes.mid(0, 5)).join(", ") + (n > 5 ? QString(" e mais %1").arg(n - 5) : QString()) + ".");
    }
}

QString pastaPadrao(const QString &banco)
{
    return QDir::cleanPath(QFileInfo(caminhoNoServidor(banco)).absolutePath() + "/Backup");
}

QString nomeCopia(const QString &pasta, const QString &banco, const QDateTime &quando)
{
    return QDir(pasta).absoluteFilePath(QFileInfo(caminhoNoServidor(banco)).completeBaseName() + "_"
                                        + quando.toString("yyyyMMdd_HHmmss") + ".fbk");
}

bool alcancavel(const QString &banco)
{
    const QString p = prefixoServidor(banco);
    if (p.isEmpty()) return true;
    const QString host = p.chopped(1).section('/', 0, 0).toLower();
    return host == "localhost" || host == "127.0.0.1" || host == "::1" || host == QSysInfo::machineHostName().toLower();
}

QMap<QString, qint64> contarLinhas(db::Banco &b)
{
    db::Transacao t(b, db::Modo::Leitura);
    QStringList nomes;
    {
        db::Consulta q(t, "SELECT TRIM(RDB$RELATION_NAME) FROM RDB$RELATIONS "
                          "WHERE COALESCE(RDB$SYSTEM_FLAG, 0) = 0 AND COALESCE(RDB$RELATION_TYPE, 0) = 0 ORDER BY 1");
        q.executar();
        while (q.proxima()) nomes << q.valor(0).toString();
    }
    QMap<QString, qint64> r;
    // The names come from the system table, quoted as identifiers.
    for (const QString &n : nomes)
        r.insert(n, db::escalar(t, QString("SELECT COUNT(*) FROM \"%1\"").arg(QString(n).replace('"', "\"\""))).toLongLong());
    return r;
}

Copia fazerCopia(const db::Conexao &c, const QString &pasta, const QDateTime &agora, bool automatica, const Progresso &progresso)
{
    if (!alcancavel(c.banco))
        throw orb::Recusa("Com o banco de dados num servidor, as cópias de segurança são feitas no próprio servidor "
                          "(orbmanager --backup, agendado no servidor).");
    if (!QDir().mkpath(pasta)) throw orb::Recusa(QString("Não foi possível criar a pasta %1.").arg(QDir::toNativeSeparators(pasta)));
    Copia copia;
    copia.quando = agora;
    copia.automatica = automatica;
    copia.arquivo = nomeCopia(pasta, c.banco, agora);
    for (int n = 2; QFileInfo::exists(copia.arquivo); ++n)
        copia.arquivo = nomeCopia(pasta, c.banco, agora).replace(".fbk", QString("_%1.fbk").arg(n));

    const int total = 2 * int(esquema::tabelas().size());
    Leitor leitor;
    leitor.avancou = [&](int n) { if (progresso) progresso(std::min(n, total / 2), total, "Copiando o banco de dados..."); };
    try {
        gerarBackup(c, copia.arquivo, std::ref(leitor));
    } catch (const db::ErroBanco &e) {
        QFile::remove(copia.arquivo);
        throw orb::Recusa("Não foi possível fazer a cópia de segurança: " + e.mensagem());
    }
    // A copy still in the system's memory is lost with the power: on disk before it counts.
    if (QFile f(copia.arquivo); f.open(QIODevice::ReadWrite)) {
#ifdef Q_OS_UNIX
        ::fsync(f.handle());
#endif
    }
    copia.linhas = leitor.linhas;
    copia.tamanho = QFileInfo(copia.arquivo).size();
    gravarRegistro(copia);
    return verificar(c, copia, [&](int feito, int, const QString &) {
        if (progresso) progresso(total / 2 + std::min(feito, total / 2), total, "Verificando a cópia...");
    });
}

Copia verificar(const db::Conexao &c, Copia copia, const Progresso &progresso)
{
    const QString destino = copia.arquivo + ".verificando";
    try {
        restaurarConferido(c, copia, destino, progresso);
        QFile::remove(destino);
        copia.verificacao = Verificacao::Verificada;
        copia.motivo.clear();
    } catch (const orb::Recusa &r) {
        copia.verificacao = Verificacao::Falhou;
        copia.motivo = r.texto;
    }
    gravarRegistro(copia);
    return copia;
}

QList<Copia> listar(const QString &pasta)
{
    QList<Copia> r;
    for (const QFileInfo &fi : QDir(pasta).entryInfoList({"*.fbk"}, QDir::Files))
        r << copiaDe(fi.absoluteFilePath());
    std::sort(r.begin(), r.end(), [](const Copia &a, const Copia &b) { return a.quando > b.quando; });
    return r;
}

Opcoes lerOpcoes(const QString &pastaPrograma)
{
    QSettings s(QDir(pastaPrograma).filePath("ORBManager.ini"), QSettings::IniFormat);
    s.beginGroup("Backup");
    Opcoes o;
    o.pasta = s.value("Pasta").toString().trimmed();
    o.diarias = std::max(1, s.value("Diarias", o.diarias).toInt());
    o.mensais = std::max(0, s.value("Mensais", o.mensais).toInt());
    o.automatica = s.value("Automatica", o.automatica).toBool();
    return o;
}

QStringList excedentes(const QList<Copia> &copias, int diarias, int mensais)
{
    QList<Copia> ordem = copias;
    std::sort(ordem.begin(), ordem.end(), [](const Copia &a, const Copia &b) { return a.quando > b.quando; });
    QSet<QString> manter;
    if (!ordem.isEmpty()) manter.insert(ordem.first().arquivo);
    QSet<QDate> dias;
    QSet<int> meses;
    for (const Copia &c : ordem) {
        if (c.verificacao == Verificacao::Falhou) continue;
        const QDate d = c.quando.date();
        const int mes = d.year() * 12 + d.month();
        if (!dias.contains(d) && dias.size() < diarias) {
            dias.insert(d);
            manter.insert(c.arquivo);
        }
        if (!meses.contains(mes) && meses.size() < mensais) {
            meses.insert(mes);
            manter.insert(c.arquivo);
        }
    }
    QStringList r;
    for (const Copia &c : ordem)
        if (c.automatica && !manter.contains(c.arquivo)) r << c.arquivo;
    return r;
}

QStringList aplicarRetencao(const QString &pasta, int diarias, int mensais)
{
    const QStringList sai = excedentes(listar(pasta), diarias, mensais);
    for (const QString &a : sai) {
        QFile::remove(a);
        QFile::remove(registroDe(a));
    }
    return sai;
}

bool copiaAutomaticaPendente(const QString &pasta, const QDate &hoje)
{
    const QList<Copia> l = listar(pasta);
    return std::none_of(l.begin(), l.end(), [&](const Copia &c) { return c.automatica && c.quando.date() == hoje; });
}

QString avisoFalha(const Copia &c)
{
    return QString("A cópia de segurança %1 falhou na verificação e não deve ser usada para restaurar o banco de dados.\n\n%2")
        .arg(QDir::toNativeSeparators(c.arquivo), c.motivo);
}

} // namespace copias
