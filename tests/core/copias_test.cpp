// Backup copies: made by the engine, proven by a restore, kept by retention, put back in place safely.

#include "Recusa.h"
#include "apoio/BancoTeste.h"
#include "apoio/ServidorFirebird.h"
#include "copias/Copias.h"
#include "copias/Restauracao.h"
#include "copias/Servico.h"
#include "schema/Criacao.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QThread>
#include <atomic>
#include <gtest/gtest.h>
#include <thread>

using namespace copias;

namespace {

const QDateTime kAgora(QDate(2026, 11, 24), QTime(21, 30, 5));

// Rows of every table and a digest of their contents, independent of the order they come in.
QMap<QString, QPair<qint64, QByteArray>> impressao(db::Banco &b)
{
    QMap<QString, QPair<qint64, QByteArray>> r;
    const QMap<QString, qint64> linhas = contarLinhas(b);
    db::Transacao t(b, db::Modo::Leitura);
    for (auto it = linhas.cbegin(); it != linhas.cend(); ++it) {
        db::Consulta q(t, QString("select * from \"%1\"").arg(it.key()));
        q.executar();
        QStringList todas;
        while (q.proxima()) {
            QStringList campos;
            for (int i = 0; i < q.colunas(); ++i) {
                const QVariant v = q.valor(i);
                campos << (v.isNull() ? QString("<nulo>") : v.typeId() == QMetaType::QByteArray ? QString(v.toByteArray().toHex()) : v.toString());
            }
            todas << campos.join('\x1f');
        }
        todas.sort();
        r.insert(it.key(), {it.value(), QCryptographicHash::hash(todas.join('\x1e').toUtf8(), QCryptographicHash::Sha256)});
    }
    return r;
}

// One sale document: the header and its lines, in the caller's transaction.
void gravarDocumento(db::Transacao &t, int linhas, int n)
{
    const int id = db::escalar(t, "insert into TBCOM (OP, IDCAD, TOTAL) values (1, 1, :T) returning ID",
                               {{"T", QVariant::fromValue(db::Decimal::bruto(qint64(n) * 100, 2))}}).toInt();
    for (int i = 0; i < linhas; ++i)
        db::executar(t, "insert into TBCOMITENS (FK, DESCRICAO, QTD, TOTAL) values (:FK, :D, 1, 1)",
                     {{"FK", id}, {"D", QString("ITEM %1 DO DOCUMENTO %2 – ação").arg(i).arg(n)}});
}

void popular(db::Banco &b, int documentos)
{
    db::Transacao t(b);
    for (int i = 0; i < 50; ++i)
        db::executar(t, "insert into TBCAD (NOME, RAZAOSOCIAL, CL) values (:N, :N, 'S')", {{"N", QString("CLIENTE Nº %1 ÇÃO").arg(i)}});
    for (int i = 0; i < documentos; ++i) gravarDocumento(t, 3, i);
    t.commit();
}

QString pastaCopias(const teste::BancoTemporario &bt) { return QFileInfo(bt.caminho()).absolutePath() + "/Backup"; }

// A backup of a populated database restores to an equal one, beside it and in its place: the same
// rows, table by table.
TEST(CopiaDeSeguranca, RestoresToAnEqualDatabase)
{
    teste::BancoTemporario bt;
    popular(bt.banco(), 20);
    const auto antes = impressao(bt.banco());
    const Copia c = fazerCopia(bt.conexao(), pastaCopias(bt), kAgora, false);
    EXPECT_EQ(c.verificacao, Verificacao::Verificada) << c.motivo.toStdString();
    EXPECT_EQ(QFileInfo(c.arquivo).fileName(), "ORBManager_20261124_213005.fbk");
    EXPECT_GT(c.tamanho, 0);
    EXPECT_EQ(c.linhas.value("TBCOMITENS"), 60);

    const QString destino = QFileInfo(bt.caminho()).absolutePath() + "/restaurado.fdb";
    restaurarConferido(bt.conexao(), c, destino);
    db::Conexao r;
    r.banco = destino;
    auto b = db::Banco::abrir(r);
    EXPECT_EQ(impressao(*b), antes);

    const QList<Copia> lista = listar(pastaCopias(bt));
    ASSERT_EQ(lista.size(), 1);
    EXPECT_EQ(lista[0].quando, kAgora);
    EXPECT_FALSE(QFile::exists(c.arquivo + ".verificando"));  // the proof leaves nothing behind

    // Restored in place by the administrator, work done after the copy goes, and so does the previous
    // file once the restored one has opened.
    popular(bt.banco(), 7);
    db::Transacao t(bt.banco());
    Restauracao rest{bt.conexao(), c, kAgora.addDays(1), teste::administrador(t).idUsuario};
    t.rollback();
    EXPECT_EQ(impressao(*restaurar(rest, &bt.banco(), [&] { bt.fechar(); })), antes);
    EXPECT_FALSE(QFile::exists(nomeAnterior(bt.caminho(), rest.agora)));
    EXPECT_FALSE(QFile::exists(bt.caminho() + ".restauracao"));
}

// A damaged copy is refused with a Portuguese message, marked, and the database is left as it was.
TEST(CopiaDeSeguranca, DamagedCopyIsRefusedAndTheDatabaseUntouched)
{
    struct Caso { const char *nome; std::function<void(QFile &)> estragar; };
    const Caso casos[] = {
        {"truncada", [](QFile &f) { f.resize(f.size() / 2); }},
        {"corrompida", [](QFile &f) {
             f.open(QIODevice::ReadWrite);
             f.seek(f.size() / 3);
             f.write(QByteArray(4096, '\x5a'));
             f.close();
         }},
    };
    for (const Caso &k : casos) {
        SCOPED_TRACE(k.nome);
        teste::BancoTemporario bt;
        popular(bt.banco(), 200);
        const auto antes = impressao(bt.banco());
        Copia c = fazerCopia(bt.conexao(), pastaCopias(bt), kAgora, false);
        ASSERT_EQ(c.verificacao, Verificacao::Verificada);
        QFile f(c.arquivo);
        k.estragar(f);

        c = verificar(bt.conexao(), c);
        EXPECT_EQ(c.verificacao, Verificacao::Falhou);
        EXPECT_TRUE(c.motivo.startsWith("A cópia")) << c.motivo.toStdString();
        EXPECT_EQ(listar(pastaCopias(bt)).value(0).verificacao, Verificacao::Falhou);

        Restauracao r{bt.conexao(), c, kAgora, 0};
        bool fechou = false;
        EXPECT_TRUE(teste::recusa([&] { restaurar(r, &bt.banco(), [&] { fechou = true; }); }).startsWith("A cópia"));
        EXPECT_FALSE(fechou);
        EXPECT_FALSE(QFile::exists(bt.caminho() + ".restaurando"));
        bt.reabrir();
        EXPECT_EQ(impressao(bt.banco()), antes);
    }
}

// Only level 900 or more restores, and never while another connection is attached.
TEST(Restauracao, RefusedBelowLevel900AndWhileAnotherConnectionIsAttached)
{
    teste::BancoTemporario bt;
    const Copia c = fazerCopia(bt.conexao(), pastaCopias(bt), kAgora, false);
    int admin = 0, caixa = 0;
    {
        db::Transacao t(bt.banco());
        admin = teste::administrador(t).idUsuario;
        const int nivel = db::escalar(t, "insert into TBNIVEIS (NIVEL, DESCRICAO) values (899, 'GERENTE') returning ID").toInt();
        caixa = db::escalar(t, "insert into TBCAD (NOME, USUARIO, US, IDNIVEL) values ('CAIXA 1', 'CAIXA1', 'S', :N) returning ID",
                            {{"N", nivel}}).toInt();
        t.commit();
    }
    struct Caso { const char *nome; int usuario; int outras; const char *mensagem; };
    const Caso casos[] = {
        {"nível 899", caixa, 0, "Você não tem permissão para efetuar esta operação!"},
        {"uma outra conexão", admin, 1, "Existe 1 outra conexão ao banco de dados"},
        {"duas outras conexões", admin, 2, "Existem 2 outras conexões ao banco de dados"},
    };
    for (const Caso &k : casos) {
        SCOPED_TRACE(k.nome);
        std::vector<std::unique_ptr<db::Banco>> outras;
        for (int i = 0; i < k.outras; ++i) outras.push_back(db::Banco::abrir(bt.conexao()));
        Restauracao r{bt.conexao(), c, kAgora, k.usuario};
        EXPECT_TRUE(teste::recusa([&] { restaurar(r, &bt.banco(), [] {}); }).startsWith(k.mensagem));
        EXPECT_FALSE(QFile::exists(bt.caminho() + ".restaurando"));
    }
}

// A copy of an older installation comes up upgraded, as any older database does.
TEST(Restauracao, OlderSchemaCopyComesUpUpgraded)
{
    teste::BancoTemporario antigo(teste::Forma::Antiga);
    {
        // What an older installation has for ADMIN to log in.
        db::Transacao t(antigo.banco());
        const int nivel = db::escalar(t, "insert into TBNIVEIS (NIVEL, DESCRICAO) values (999, 'ADMINISTRADOR') returning ID").toInt();
        const int empresa = db::escalar(t, "insert into TBCAD (NOME, RAZAOSOCIAL, EM) values ('LOJA ANTIGA', 'LOJA ANTIGA', 'S') returning ID").toInt();
        db::executar(t, "insert into TBCAD (NOME, USUARIO, SENHA, US, IDNIVEL) values ('ADMIN', 'ADMIN', '21232f297a57a5a743894a0e4a801fc3', 'S', :N)",
                     {{"N", nivel}});
        db::executar(t, "insert into TBPARGLOBAIS (IDEMPRESA) values (:E)", {{"E", empresa}});
        t.commit();
    }
    ASSERT_FALSE(esquema::Metadados::ler(antigo.banco()).temColuna("TBGRUPOSSUB", "TIPO"));
    const Copia c = fazerCopia(antigo.conexao(), pastaCopias(antigo), kAgora, false);
    ASSERT_EQ(c.verificacao, Verificacao::Verificada) << c.motivo.toStdString();

    teste::BancoTemporario atual;
    Restauracao r{atual.conexao(), c, kAgora, 0};
    QStringList feitas;
    auto b = restaurar(r, &atual.banco(), [&] { atual.fechar(); }, {}, &feitas);
    EXPECT_FALSE(feitas.isEmpty());
    EXPECT_TRUE(esquema::Metadados::ler(*b).temColuna("TBGRUPOSSUB", "TIPO"));
    EXPECT_TRUE(esquema::faltando(*b).isEmpty());
    db::Transacao t(*b, db::Modo::Leitura);
    EXPECT_EQ(db::escalar(t, "select NOME from TBCAD where EM = 'S'").toString(), "LOJA ANTIGA");
}

// Which services manager reaches a database, and the file as that manager sees it.
TEST(Servico, ManagerAndPathOfEachKindOfDatabaseName)
{
    struct Caso { const char *banco, *gerenciador, *caminho; bool alcancavel; };
    const Caso casos[] = {
        {"/dados/ORBManager.fdb", "service_mgr", "/dados/ORBManager.fdb", true},
        {"C:\\ORB\\ORBManager.fdb", "service_mgr", "C:\\ORB\\ORBManager.fdb", true},
        {"servidor/3051:/var/lib/firebird/ORBManager.fdb", "servidor/3051:service_mgr", "/var/lib/firebird/ORBManager.fdb", false},
        {"servidor:D:\\Dados\\ORBManager.fdb", "servidor:service_mgr", "D:\\Dados\\ORBManager.fdb", false},
        {"localhost:/dados/ORBManager.fdb", "localhost:service_mgr", "/dados/ORBManager.fdb", true},
        {"127.0.0.1/3050:/dados/ORBManager.fdb", "127.0.0.1/3050:service_mgr", "/dados/ORBManager.fdb", true},
    };
    for (const Caso &k : casos) {
        SCOPED_TRACE(k.banco);
        EXPECT_EQ(gerenciador(k.banco), k.gerenciador);
        EXPECT_EQ(caminhoNoServidor(k.banco), k.caminho);
        EXPECT_EQ(alcancavel(k.banco), k.alcancavel);
    }
}

Copia copiaEm(const QDateTime &quando, bool automatica = true, Verificacao v = Verificacao::Verificada)
{
    Copia c;
    c.arquivo = "/copias/" + quando.toString("yyyyMMdd_HHmmss") + ".fbk";
    c.quando = quando;
    c.automatica = automatica;
    c.verificacao = v;
    return c;
}

// Retention keeps the newest copy of each of the last N days and of each of the last M months.
TEST(Retencao, KeepsExactlyNDailyAndMMonthly)
{
    QList<Copia> copias;
    // One copy a day from 1 Sep to 24 Nov 2026, two on 24 Nov.
    for (QDate d(2026, 9, 1); d <= QDate(2026, 11, 24); d = d.addDays(1)) copias << copiaEm(QDateTime(d, QTime(18, 0)));
    copias << copiaEm(QDateTime(QDate(2026, 11, 24), QTime(12, 0)));
    struct Caso { int diarias, mensais; int ficam; };
    // Daily copies fall in November; the monthly ones add 31 Oct and 30 Sep (the newest of each month).
    const Caso casos[] = {{7, 0, 7}, {7, 1, 7}, {7, 2, 8}, {7, 3, 9}, {7, 12, 9}, {30, 3, 31}, {1, 1, 1}};
    for (const Caso &k : casos) {
        SCOPED_TRACE(QString("%1 diárias, %2 mensais").arg(k.diarias).arg(k.mensais).toStdString());
        const QStringList sai = excedentes(copias, k.diarias, k.mensais);
        EXPECT_EQ(copias.size() - sai.size(), k.ficam);
        EXPECT_FALSE(sai.contains(copiaEm(QDateTime(QDate(2026, 11, 24), QTime(18, 0))).arquivo));
        EXPECT_TRUE(sai.contains(copiaEm(QDateTime(QDate(2026, 11, 24), QTime(12, 0))).arquivo));
        if (k.mensais >= 2 && k.diarias < 24) {
            EXPECT_FALSE(sai.contains(copiaEm(QDateTime(QDate(2026, 10, 31), QTime(18, 0))).arquivo));
            EXPECT_TRUE(sai.contains(copiaEm(QDateTime(QDate(2026, 10, 30), QTime(18, 0))).arquivo));
        }
    }
}

TEST(Retencao, ManualCopiesStayAndFailedOnesKeepNoDay)
{
    const QList<Copia> copias = {
        copiaEm(QDateTime(QDate(2026, 11, 24), QTime(18, 0)), true, Verificacao::Falhou),
        copiaEm(QDateTime(QDate(2026, 11, 24), QTime(9, 0))),
        copiaEm(QDateTime(QDate(2026, 11, 23), QTime(18, 0))),
        copiaEm(QDateTime(QDate(2026, 1, 5), QTime(18, 0)), false),
    };
    const QStringList sai = excedentes(copias, 1, 0);
    // The newest is kept for the user to see it failed; the day belongs to the good 09:00 copy.
    EXPECT_EQ(sai, QStringList{copias[2].arquivo});
}

TEST(Retencao, RemovesTheFilesWithTheirRecords)
{
    QTemporaryDir dir;
    for (int i = 0; i < 5; ++i) {
        QFile f(dir.filePath(QString("ORBManager_202611%1_180000.fbk").arg(20 + i)));
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write("x");
        f.close();
        QFile r(f.fileName() + ".json");
        ASSERT_TRUE(r.open(QIODevice::WriteOnly));
        r.write(QString(R"({"quando":"%1","automatica":true,"verificacao":"verificada"})")
                    .arg(QDateTime(QDate(2026, 11, 20 + i), QTime(18, 0)).toString(Qt::ISODate)).toUtf8());
    }
    EXPECT_TRUE(copiaAutomaticaPendente(dir.path(), QDate(2026, 11, 25)));
    EXPECT_FALSE(copiaAutomaticaPendente(dir.path(), QDate(2026, 11, 24)));
    EXPECT_EQ(aplicarRetencao(dir.path(), 3, 0).size(), 2);
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files).size(), 6);
    EXPECT_EQ(listar(dir.path()).value(2).quando.date(), QDate(2026, 11, 22));
}

// Several workstations through a server on this computer: the copy is one snapshot.
struct CopiaNoServidor : ::testing::Test {
    static inline std::unique_ptr<teste::ServidorFirebird> servidor;
    static inline db::Conexao conexao;

    static void SetUpTestSuite()
    {
        if (!teste::ServidorFirebird::disponivel()) return;
        servidor = std::make_unique<teste::ServidorFirebird>();
        conexao = servidor->bancoNovo();
    }
    static void TearDownTestSuite() { servidor.reset(); }
    void SetUp() override
    {
        if (!servidor) GTEST_SKIP() << teste::ServidorFirebird::motivoIndisponivel().toStdString();
    }
};

// While another workstation keeps saving documents, the copy has each one whole or not at all.
TEST_F(CopiaNoServidor, BackupWhileAnotherWorkstationWritesIsConsistent)
{
    auto estacao = db::Banco::abrir(conexao);
    popular(*estacao, 300);
    std::atomic<bool> parar = false;
    std::atomic<int> gravados = 0;
    std::thread escritor([&] {
        auto outra = db::Banco::abrir(conexao);
        for (int n = 1000; !parar; ++n) {
            db::Transacao t(*outra);
            gravarDocumento(t, 7, n);
            t.commit();
            ++gravados;
        }
    });
    while (gravados < 5) QThread::msleep(5);
    Copia c;
    try {
        c = fazerCopia(conexao, servidor->pasta() + "/Backup", kAgora, false);
    } catch (...) {
        parar = true;
        escritor.join();
        throw;
    }
    const int durante = gravados;
    parar = true;
    escritor.join();
    ASSERT_EQ(c.verificacao, Verificacao::Verificada) << c.motivo.toStdString();
    EXPECT_GT(gravados.load(), 5) << "a outra estação não gravou enquanto a cópia era feita (" << durante << ")";

    const QString destino = servidor->pasta() + "/conferencia.fdb";
    restaurarConferido(conexao, c, destino);
    db::Conexao r = conexao;
    r.banco = servidor->endereco("conferencia.fdb");
    auto b = db::Banco::abrir(r);
    db::Transacao t(*b, db::Modo::Leitura);
    EXPECT_EQ(db::escalar(t, "select count(*) from TBCOM c where (select count(*) from TBCOMITENS i where i.FK = c.ID) "
                             "not in (3, 7)").toInt(), 0);
    EXPECT_EQ(db::escalar(t, "select count(*) from TBCOMITENS i where not exists (select 1 from TBCOM c where c.ID = i.FK)").toInt(), 0);
    EXPECT_EQ(db::escalar(t, "select count(*) from TBCOM").toLongLong(), c.linhas.value("TBCOM"));
}

// On a server of this computer: refused while another workstation is attached; alone, the copy
// replaces the database and the server serves the restored one.
TEST_F(CopiaNoServidor, RestoreWaitsForTheOtherWorkstations)
{
    auto estacao = db::Banco::abrir(conexao);
    const Copia c = fazerCopia(conexao, servidor->pasta() + "/Backup", kAgora.addSecs(60), false);
    ASSERT_EQ(c.verificacao, Verificacao::Verificada) << c.motivo.toStdString();
    {
        // Another workstation attached: refused, naming how many (the server counts them, not the file).
        auto outra = db::Banco::abrir(conexao);
        Restauracao r{conexao, c, kAgora, 0};
        EXPECT_TRUE(teste::recusa([&] { restaurar(r, estacao.get(), [] {}); }).startsWith("Existe 1 outra conexão ao banco de dados"));
    }
    {
        db::Transacao t(*estacao);
        db::executar(t, "update TBCAD set NOME = 'DEPOIS DA CÓPIA' where ID = 1");
        t.commit();
    }
    Restauracao r{conexao, c, kAgora, 0};
    auto b = restaurar(r, estacao.get(), [&] { estacao.reset(); });
    b.reset();
    auto depois = db::Banco::abrir(conexao);
    db::Transacao t(*depois, db::Modo::Leitura);
    EXPECT_NE(db::escalar(t, "select NOME from TBCAD where ID = 1").toString(), "DEPOIS DA CÓPIA");
}

// The program killed in the middle of a restore: after the copy was proven beside the database, and
// between taking the database aside and putting the copy in its place. The previous database is
// still there and opens.
TEST(Restauracao, ProgramKilledInTheMiddleLeavesThePreviousDatabase)
{
    for (const char *etapa : {"provada", "troca"}) {
        SCOPED_TRACE(etapa);
        teste::BancoTemporario bt;
        popular(bt.banco(), 30);
        const Copia c = fazerCopia(bt.conexao(), pastaCopias(bt), kAgora, false);
        ASSERT_EQ(c.verificacao, Verificacao::Verificada);
        {
            db::Transacao t(bt.banco());
            db::executar(t, "delete from TBCOMITENS where ID < 10");  // the database no longer equals the copy
            t.commit();
        }
        const auto antes = impressao(bt.banco());
        bt.fechar();

        QProcess p;
        QProcessEnvironment env = teste::ambienteFilho(QFileInfo(bt.caminho()).absolutePath());
        env.insert("ORB_PAUSA_RESTAURACAO", etapa);
        p.setProcessEnvironment(env);
        p.setReadChannel(QProcess::StandardError);
        p.start(ORB_PROGRAMA, {"--restore", c.arquivo, "--database", bt.caminho()});
        ASSERT_TRUE(p.waitForStarted(5000));
        QByteArray erros;
        while (!erros.contains("pausa:") && p.state() == QProcess::Running && p.waitForReadyRead(60000)) erros += p.readAllStandardError();
        ASSERT_TRUE(erros.contains(QByteArray("pausa: ") + etapa)) << erros.toStdString();
        if (QByteArray(etapa) == "troca") EXPECT_FALSE(QFile::exists(bt.caminho()));  // the moment with no database in place
        p.kill();
        p.waitForFinished(5000);

        QStringList aplicadas;
        auto b = esquema::abrirAtualizado(bt.conexao(), aplicadas);
        EXPECT_EQ(impressao(*b), antes);
        EXPECT_TRUE(aplicadas.isEmpty()) << aplicadas.join(" | ").toStdString();
        EXPECT_FALSE(QFile::exists(bt.caminho() + ".restaurando"));
    }
}

// The command lines: exit codes, and the copy made by one restored by the other.
TEST(Restauracao, CommandLineBackupAndRestore)
{
    teste::BancoTemporario bt;
    popular(bt.banco(), 10);
    const auto naCopia = impressao(bt.banco());
    bt.fechar();
    QTemporaryDir pasta;
    QProcess p;
    p.start(ORB_PROGRAMA, {"--backup", pasta.path(), "--database", bt.caminho()});
    ASSERT_TRUE(p.waitForFinished(120000));
    EXPECT_EQ(p.exitCode(), 0) << p.readAllStandardError().toStdString();
    EXPECT_TRUE(QString::fromUtf8(p.readAllStandardOutput()).contains("Cópia verificada"));
    const QList<Copia> l = listar(pasta.path());
    ASSERT_EQ(l.size(), 1);
    EXPECT_TRUE(l[0].automatica);

    bt.reabrir();
    popular(bt.banco(), 2);
    bt.fechar();
    p.start(ORB_PROGRAMA, {"--restore", l[0].arquivo, "--database", bt.caminho()});
    ASSERT_TRUE(p.waitForFinished(120000));
    EXPECT_EQ(p.exitCode(), 0) << p.readAllStandardError().toStdString();
    bt.reabrir();
    EXPECT_EQ(impressao(bt.banco()), naCopia);

    bt.fechar();
    p.start(ORB_PROGRAMA, {"--restore", pasta.filePath("nao-existe.fbk"), "--database", bt.caminho()});
    ASSERT_TRUE(p.waitForFinished(60000));
    EXPECT_EQ(p.exitCode(), 1);
}

} // namespace
