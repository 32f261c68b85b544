#include "copias/Restauracao.h"

#include "Recusa.h"
#include "acesso/Permissoes.h"
#include "copias/Servico.h"
#include "schema/Criacao.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QThread>
#include <cstdio>

namespace copias {

namespace {

QString nota(const QString &banco) { return banco + ".restauracao"; }
QString emRestauracao(const QString &banco) { return banco + ".restaurando"; }

// Tests stop the command line at a named step to kill it there, where the engine is between calls
// (killing it inside one may leave the engine's shared locks of this computer held).
void pausaDeTeste(const char *etapa)
{
    if (qEnvironmentVariable("ORB_PAUSA_RESTAURACAO") != QLatin1String(etapa)) return;
    std::fprintf(stderr, "pausa: %s\n", etapa);
    std::fflush(stderr);
    for (;;) QThread::sleep(1);
}

// Puts the previous file back in place of the restored one.
void desfazer(const QString &banco, const QString &anterior, bool existia)
{
    if (existia) {
        QFile::remove(banco);
        QFile::rename(anterior, banco);
    }
    QFile::remove(nota(banco));
}

} // namespace

QString nomeAnterior(const QString &banco, const QDateTime &quando)
{
    const QFileInfo fi(banco);
    return fi.absoluteDir().absoluteFilePath(fi.completeBaseName() + "_anterior_" + quando.toString("yyyyMMdd_HHmmss") + ".fdb");
}

int outrasConexoes(db::Banco &b)
{
    db::Transacao t(b, db::Modo::Leitura);
    return db::escalar(t, "SELECT COUNT(*) FROM MON$ATTACHMENTS WHERE MON$ATTACHMENT_ID <> CURRENT_CONNECTION "
                          "AND COALESCE(MON$SYSTEM_FLAG, 0) = 0").toInt();
}

void conferirRestauracao(db::Banco &atual, int idUsuario)
{
    if (idUsuario != 0) {
        db::Transacao t(atual, db::Modo::Leitura);
        const QVariant nivel = db::escalar(t, "SELECT N.NIVEL FROM TBCAD U JOIN TBNIVEIS N ON N.ID = U.IDNIVEL "
                                              "WHERE U.ID = :ID AND U.US = 'S'", {{"ID", idUsuario}});
        if (nivel.isNull() || nivel.toInt() < 900) throw orb::Recusa(orb::kSemPermissao);
    }
    const int n = outrasConexoes(atual);
    if (n == 1)
        throw orb::Recusa("Existe 1 outra conexão ao banco de dados (outra estação ou programa). "
                          "Feche o programa nas outras estações e tente novamente.");
    if (n > 1)
        throw orb::Recusa(QString("Existem %1 outras conexões ao banco de dados (outras estações ou programas). "
                                  "Feche o programa nas outras estações e tente novamente.").arg(n));
}

std::unique_ptr<db::Banco> restaurar(const Restauracao &r, db::Banco *atual, const std::function<void()> &fecharAtual,
                                     const Progresso &progresso, QStringList *aplicadas)
{
    const db::Conexao &c = r.conexao;
    if (!alcancavel(c.banco))
        throw orb::Recusa("Com o banco de dados num servidor, a restauração é feita no próprio servidor "
                          "(orbmanager --restore).");
    if (atual) conferirRestauracao(*atual, r.idUsuario);
    else if (r.idUsuario != 0) throw orb::Recusa(orb::kSemPermissao);

    const QString banco = caminhoNoServidor(c.banco);
    const QString temp = emRestauracao(banco);
    restaurarConferido(c, r.copia, temp, progresso);
    // Someone may have connected while the copy was being proven.
    if (atual) {
        try {
            conferirRestauracao(*atual, r.idUsuario);
        } catch (...) {
            QFile::remove(temp);
            throw;
        }
        if (fecharAtual) fecharAtual();
    }
    pausaDeTeste("provada");

    const bool existia = QFileInfo::exists(banco);
    const QString anterior = nomeAnterior(banco, r.agora);
    {
        QSaveFile f(nota(banco));
        if (!f.open(QIODevice::WriteOnly) || f.write(anterior.toUtf8()) < 0 || !f.commit()) {
            QFile::remove(temp);
            throw orb::Recusa(QString("Não foi possível gravar %1: %2").arg(QDir::toNativeSeparators(f.fileName()), f.errorString()));
        }
    }
    if (existia && !QFile::rename(banco, anterior)) {
        QFile::remove(temp);
        QFile::remove(nota(banco));
        throw orb::Recusa(QString("Não foi possível renomear %1 para %2.").arg(QDir::toNativeSeparators(banco), QDir::toNativeSeparators(anterior)));
    }
    pausaDeTeste("troca");
    if (!QFile::rename(temp, banco)) {
        QFile::remove(temp);
        desfazer(banco, anterior, existia);
        throw orb::Recusa(QString("Não foi possível renomear %1 para %2.").arg(QDir::toNativeSeparators(temp), QDir::toNativeSeparators(banco)));
    }

    QString falha;
    try {
        auto b = db::Banco::abrir(c);
        const QStringList feitas = esquema::concluir(*b, [&](int f, int t, const QString &) {
            if (progresso) progresso(f, t, "Atualizando a estrutura do banco de dados...");
        });
        if (const QStringList faltam = esquema::faltando(*b); !faltam.isEmpty()) throw esquema::BancoIncompleto(faltam);
        if (aplicadas) *aplicadas = feitas;
        // Open and upgraded: the previous file is no longer needed.
        QFile::remove(anterior);
        QFile::remove(nota(banco));
        return b;
    } catch (const esquema::ErroAtualizacao &e) {
        falha = e.mensagem();
    } catch (const esquema::BancoIncompleto &e) {
        falha = e.mensagem();
    } catch (const db::ErroBanco &e) {
        falha = e.mensagem();
    }
    desfazer(banco, anterior, existia);
    throw orb::Recusa("A cópia foi restaurada mas não pôde ser aberta e atualizada; o banco de dados anterior foi mantido.\n\n" + falha);
}

bool recuperarRestauracao(const QString &banco)
{
    // A copy restored beside the database by a run that stopped is only a leftover.
    QFile::remove(emRestauracao(banco));
    QFile f(nota(banco));
    if (!f.open(QIODevice::ReadOnly)) return false;
    const QString anterior = QString::fromUtf8(f.readAll()).trimmed();
    f.close();
    bool devolvido = false;
    if (!anterior.isEmpty() && QFileInfo::exists(anterior)) {
        QFile::remove(banco);
        devolvido = QFile::rename(anterior, banco);
    }
    if (devolvido || !QFileInfo::exists(anterior)) QFile::remove(nota(banco));
    return devolvido;
}

} // namespace copias
