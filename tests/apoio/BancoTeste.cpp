#include <QCoreApplication>
#include <QDir>
#include "apoio/BancoTeste.h"

#include "Recusa.h"
#include "schema/Atualizacao.h"

#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <stdexcept>

namespace teste {

namespace {

// Creating the schema takes about a second; each binary does it once per form.
QString modelo(Forma f)
{
    static QTemporaryDir dir;
    static QString caminhos[2];
    QString &c = caminhos[f == Forma::Atual ? 0 : 1];
    if (!c.isEmpty()) return c;
    const QString arq = dir.filePath(f == Forma::Atual ? "modelo_atual.fdb" : "modelo_antigo.fdb");
    db::Conexao con;
    con.banco = arq;
    if (f == Forma::Atual) {
        esquema::criarBanco(con);
    } else {
        auto b = db::Banco::criar(con);
        esquema::criarEsquemaBase(*b);
    }
    c = arq;
    return c;
}

} // namespace

BancoTemporario::BancoTemporario(Forma f)
{
    caminho_ = dir_.filePath("ORBManager.fdb");
    if (!QFile::copy(modelo(f), caminho_)) throw std::runtime_error("não foi possível copiar o banco modelo");
    QFile::setPermissions(caminho_, QFile::ReadOwner | QFile::WriteOwner);
    reabrir();
}

BancoTemporario::~BancoTemporario() { banco_.reset(); }

db::Conexao BancoTemporario::conexao() const
{
    db::Conexao c;
    c.banco = caminho_;
    return c;
}

void BancoTemporario::reabrir()
{
    banco_.reset();
    banco_ = db::Banco::abrir(conexao());
}

QProcessEnvironment ambienteFilho(const QString &pasta)
{
    static int n = 0;
    const QString travas = pasta + QString("/travas-%1-%2").arg(QCoreApplication::applicationPid()).arg(++n);
    QDir().mkpath(travas);
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert("FIREBIRD_LOCK", travas);
    env.insert("QT_QPA_PLATFORM", "offscreen");
    return env;
}

void abrirCaixa(db::Transacao &t, const QDate &dia, int resp, bool fechado)
{
    db::executar(t, "Insert Into TbAbEncMov (Data, DataAb, IdRespAb, DataEnc, IdRespEnc) Values (:D, :A, :R, :E, :RE)",
                 {{"D", dia}, {"A", QDateTime(dia, QTime(7, 0))}, {"R", resp},
                  {"E", fechado ? QVariant(QDateTime(dia, QTime(18, 0))) : QVariant()}, {"RE", fechado ? QVariant(resp) : QVariant()}});
}

QString recusa(db::Transacao &t, const std::function<void()> &f)
{
    try {
        db::tentativa(t, f);
    } catch (const orb::Recusa &r) {
        return r.texto;
    }
    return {};
}

QString recusa(const std::function<void()> &f)
{
    try {
        f();
    } catch (const orb::Recusa &r) {
        return r.texto;
    }
    return {};
}

QString filhoInterrompido(BancoTemporario &bt, const QString &filtro)
{
    bt.fechar();  // the embedded engine opens the file for one process at a time
    QProcess filho;
    QProcessEnvironment env = ambienteFilho(QFileInfo(bt.caminho()).absolutePath());
    env.insert("ORB_TESTE_FILHO", bt.caminho());
    filho.setProcessEnvironment(env);
    filho.setProcessChannelMode(QProcess::MergedChannels);
    filho.start(QCoreApplication::applicationFilePath(), {"--gtest_filter=" + filtro});
    const bool terminou = filho.waitForFinished(60000);
    const QString saida = QString::fromLocal8Bit(filho.readAll());
    bt.reabrir();
    if (terminou && filho.exitStatus() == QProcess::CrashExit) return {};
    return saida.isEmpty() ? QStringLiteral("o filho terminou sem ser interrompido") : saida;
}

orb::Sessao administrador(db::Transacao &t, const QString &menu, const QString &modulo)
{
    db::Consulta q(t, "Select U.Id, U.IdNivel, N.Nivel From TbCad U Join TbNiveis N On N.Id = U.IdNivel Where U.Usuario = 'ADMIN'");
    q.executar();
    if (!q.proxima()) throw std::runtime_error("banco de teste sem ADMIN");
    orb::Sessao s;
    s.idUsuario = q.valor(0).toInt();
    s.usuario = QStringLiteral("ADMIN");
    s.tipoUsuario = QStringLiteral("D");
    s.idNivel = q.valor(1).toInt();
    s.nivel = q.valor(2).toInt();
    s.menuAtual = menu;
    s.moduloAtual = modulo;
    return s;
}

} // namespace teste
