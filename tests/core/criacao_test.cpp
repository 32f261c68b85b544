// A new database's creation cut short at any moment: the next run finishes it, or says what is missing.

#include "acesso/Login.h"
#include "apoio/BancoTeste.h"
#include "schema/Criacao.h"

#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <iostream>

using namespace esquema;

namespace {

struct Saida {
    bool terminou = false;
    int codigo = -1;
    QString erro;
};

QProcess *iniciar(QProcess &p, const QString &arquivo)
{
    // Killed at any moment: its engine's shared files apart from everyone else's.
    p.setProcessEnvironment(teste::ambienteFilho(QFileInfo(arquivo).absolutePath()));
    p.start(ORB_PROGRAMA, {"--database", arquivo, "--upgrade"});
    return &p;
}

Saida upgrade(const QString &arquivo)
{
    QProcess p;
    iniciar(p, arquivo);
    Saida s;
    s.terminou = p.waitForFinished(60000) && p.exitStatus() == QProcess::NormalExit;
    s.codigo = p.exitCode();
    s.erro = QString::fromUtf8(p.readAllStandardError()).trimmed();
    return s;
}

// A database ADMIN logs into with the first password, holding each first record once.
void confereUtilizavel(const QString &arquivo)
{
    db::Conexao c;
    c.banco = arquivo;
    auto b = db::Banco::abrir(c);
    EXPECT_EQ(estadoCriacao(*b), Criacao::Pronta);
    EXPECT_EQ(faltando(*b), QStringList());
    db::Transacao t(*b);
    try {
        EXPECT_TRUE(orb::autenticar(*b, "ADMIN", kSenhaInicialAdmin, QDateTime::currentDateTime()).precisaTrocarSenha);
    } catch (const orb::Recusa &r) {
        ADD_FAILURE() << "ADMIN não entra: " << r.texto.toStdString();
    }
    for (const char *sql : {"select count(*) from TBCAD where USUARIO = 'ADMIN'", "select count(*) from TBPARGLOBAIS",
                            "select count(*) from TBCAD where EM = 'S'", "select count(*) from TBNIVEIS",
                            "select count(*) from TBCCOR where NUMERO = 'CAIXA'"})
        EXPECT_EQ(db::escalar(t, sql).toInt(), 1) << sql;
}

// Killed at random moments of its creation, then run again: never a zero exit on a half database.
TEST(CriacaoInterrompida, EveryRerunEndsWithAUsableDatabaseOrAMessage)
{
    QTemporaryDir dir;
    QElapsedTimer relogio;
    // The shorter of two whole creations: the first also warms the disk cache and would stretch the range.
    int duracao = 1 << 30;
    for (const char *pasta : {"medida1", "medida2"}) {
        relogio.start();
        const Saida inteira = upgrade(dir.filePath(QString("%1/ORBManager.fdb").arg(pasta)));
        duracao = std::min(duracao, int(relogio.elapsed()));
        ASSERT_TRUE(inteira.terminou);
        ASSERT_EQ(inteira.codigo, 0) << inteira.erro.toStdString();
    }
    relogio.start();

    // Each kill costs a rerun of a whole creation (about 1.5 s here): 40 take about a minute.
    constexpr int kMortes = 40;
    int antesDoFim = 0, recusadas = 0;
    for (int i = 0; i < kMortes; ++i) {
        const QString arquivo = dir.filePath(QString("%1/ORBManager.fdb").arg(i));
        const int espera = QRandomGenerator::global()->bounded(duracao + 1);
        SCOPED_TRACE(QString("morte %1 aos %2 ms de %3 ms").arg(i).arg(espera).arg(duracao).toStdString());
        {
            QProcess p;
            iniciar(p, arquivo);
            ASSERT_TRUE(p.waitForStarted(10000));
            p.waitForFinished(espera);
            if (p.state() != QProcess::NotRunning) ++antesDoFim;
            p.kill();
            p.waitForFinished(10000);
        }
        const Saida s = upgrade(arquivo);
        ASSERT_TRUE(s.terminou);
        if (s.codigo != 0) {
            ++recusadas;
            EXPECT_FALSE(s.erro.isEmpty());
            continue;
        }
        EXPECT_FALSE(QFile::exists(caminhoEmConstrucao(arquivo)));
        confereUtilizavel(arquivo);
        if (HasFailure()) break;
    }
    std::cout << kMortes << " mortes (" << antesDoFim << " antes do fim), criação inteira em " << duracao
              << " ms, " << recusadas << " reexecuções recusadas, " << relogio.elapsed() << " ms no total\n";
}

// A database left at each stage of its creation (as a server database can be) is finished by the next open.
TEST(CriacaoInterrompida, UnfinishedDatabaseIsFinishedFromWhereItStopped)
{
    enum Etapa { Criado, Marcado, Estrutura, Atualizado, Semeado };
    for (const Etapa parou : {Criado, Marcado, Estrutura, Atualizado, Semeado}) {
        SCOPED_TRACE(int(parou));
        QTemporaryDir dir;
        db::Conexao c;
        c.banco = dir.filePath("ORBManager.fdb");
        {
            auto b = db::Banco::criar(c);
            if (parou >= Marcado) {
                db::Transacao t(*b);
                db::executar(t, QString("CREATE SEQUENCE %1").arg(kMarcaCriacao));
                t.commit();
            }
            if (parou >= Estrutura) criarEsquemaBase(*b);
            if (parou >= Atualizado) atualizar(*b);
            if (parou >= Semeado) semear(*b);
            EXPECT_EQ(estadoCriacao(*b), parou == Criado ? Criacao::Vazio : Criacao::Incompleta);
        }
        QStringList feitas;
        abrirAtualizado(c, feitas);
        EXPECT_TRUE(feitas.contains("Criação do banco de dados concluída")) << feitas.join('\n').toStdString();
        confereUtilizavel(c.banco);
    }
}

// --upgrade on a database ADMIN cannot log into exits non-zero naming what is missing.
TEST(CriacaoInterrompida, UpgradeRefusesADatabaseAdminCannotLogInto)
{
    struct Caso { teste::Forma forma; const char *estrago; const char *falta; };
    const Caso casos[] = {
        {teste::Forma::Atual, "delete from TBCAD where USUARIO = 'ADMIN'", "usuário ADMIN"},
        {teste::Forma::Atual, "update TBCAD set SENHA = null where USUARIO = 'ADMIN'", "usuário ADMIN"},
        {teste::Forma::Atual, "delete from TBPARGLOBAIS", "parâmetros globais"},
        {teste::Forma::Atual, "update TBPARGLOBAIS set IDEMPRESA = -1", "empresa principal"},
        {teste::Forma::Atual, "drop trigger TG_TBCAD_BI", "gatilho TG_TBCAD_BI"},
        {teste::Forma::Atual, "drop sequence GN_TBCCOR_ID", "gerador GN_TBCCOR_ID"},
        // An older installation is upgraded but never given an ADMIN with the known first password.
        {teste::Forma::Antiga, nullptr, "usuário ADMIN"},
    };
    for (const Caso &k : casos) {
        SCOPED_TRACE(k.falta);
        teste::BancoTemporario bt(k.forma);
        if (k.estrago) {
            db::Transacao t(bt.banco());
            if (QString(k.estrago).startsWith("drop sequence")) db::executar(t, "drop trigger TG_TBCCOR_BI");
            db::executar(t, k.estrago);
            t.commit();
        }
        bt.fechar();
        const Saida s = upgrade(bt.caminho());
        ASSERT_TRUE(s.terminou);
        EXPECT_NE(s.codigo, 0);
        EXPECT_TRUE(s.erro.contains(k.falta)) << s.erro.toStdString();
    }
}

} // namespace
