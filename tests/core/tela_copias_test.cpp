// The copy screen driven as a user would: copy now, the list, the restore question.

#include "apoio/TabsTeste.h"
#include "copias/TCopiaSeguranca.h"

#include <QDir>
#include <QFile>
#include <QTableWidget>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

struct TelaCopias : teste::ComTabs {
    QTemporaryDir programa;
};

TEST_F(TelaCopias, CopyNowThenRestoreAfterAQuestionNamingTheDate)
{
    bt.fechar();  // the workstation's own connection is the data module's
    orb::TCopiaSeguranca tela(programa.path());
    tela.resize(1000, 520);
    EXPECT_EQ(tela.pasta(), QFileInfo(bt.caminho()).absolutePath() + "/Backup");
    EXPECT_EQ(tela.grade()->rowCount(), 0);

    tela.BtCopiarClick();
    ASSERT_EQ(tela.grade()->rowCount(), 1);
    EXPECT_EQ(tela.grade()->item(0, 2)->text() + "/" + tela.grade()->item(0, 3)->text(), "Verificada/Manual");
    ASSERT_FALSE(msg.avisos.isEmpty());
    EXPECT_TRUE(msg.avisos.last().startsWith("Cópia de segurança gravada e verificada.") && msg.avisos.last().contains("Tamanho: "))
        << msg.avisos.last().toStdString();

    const copias::Copia copia = tela.copiasListadas().value(0);
    {
        db::Transacao t(tabs.DbORB());
        db::executar(t, "update TBCAD set NOME = 'DEPOIS DA CÓPIA' where ID = 1");
        t.commit();
    }
    msg.respostas = {QMessageBox::No};
    tela.BtRestaurarClick();
    ASSERT_EQ(msg.perguntas.size(), 1);
    EXPECT_TRUE(msg.perguntas.last().startsWith("Restaurar a cópia de segurança de " + copia.quando.toString("dd/MM/yyyy 'às' HH:mm") + "?"))
        << msg.perguntas.last().toStdString();

    msg.respostas = {QMessageBox::Yes};
    tela.BtRestaurarClick();
    ASSERT_TRUE(tabs.conectado());
    db::Transacao t(tabs.DbORB(), db::Modo::Leitura);
    EXPECT_NE(db::escalar(t, "select NOME from TBCAD where ID = 1").toString(), "DEPOIS DA CÓPIA");
    EXPECT_TRUE(msg.avisos.last().startsWith("Cópia de ")) << msg.avisos.last().toStdString();
}

// On closing, one automatic copy a day, where the settings say, then the retention of that folder.
TEST_F(TelaCopias, DailyCopyOnClosingAtMostOnceADay)
{
    QFile ini(programa.filePath("ORBManager.ini"));
    ASSERT_TRUE(ini.open(QIODevice::WriteOnly));
    ini.write("[Backup]\nPasta=copias\nDiarias=3\nMensais=0\n");
    ini.close();
    orb::copiaAoFechar(programa.path(), tabs.DbORB().conexao());
    orb::copiaAoFechar(programa.path(), tabs.DbORB().conexao());
    const QList<copias::Copia> l = copias::listar(programa.filePath("copias"));
    ASSERT_EQ(l.size(), 1);
    EXPECT_TRUE(l[0].automatica);
    EXPECT_EQ(l[0].verificacao, copias::Verificacao::Verificada);
    EXPECT_TRUE(msg.avisos.isEmpty()) << msg.avisos.join(" | ").toStdString();

    ini.open(QIODevice::WriteOnly);
    ini.write("[Backup]\nPasta=outra\nAutomatica=0\n");
    ini.close();
    orb::copiaAoFechar(programa.path(), tabs.DbORB().conexao());
    EXPECT_FALSE(QDir(programa.filePath("outra")).exists());
}

} // namespace
