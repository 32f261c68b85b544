// One copy per user: the real program started a second time.

#include "principal/InstanciaUnica.h"

#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <gtest/gtest.h>

using namespace orb;

namespace {

// A second start of the program brings the first to the front and opens nothing.
TEST(InstanciaUnica, SecondStartBringsTheFirstToTheFront)
{
    const QString nome = QString("orb-teste-%1").arg(QCoreApplication::applicationPid());
    InstanciaUnica primeira(nome);
    ASSERT_TRUE(primeira.primeira());
    QSignalSpy ativou(&primeira, &InstanciaUnica::ativar);
    QTemporaryDir dir;
    QProcess segunda;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert("ORB_INSTANCIA", nome);
    env.insert("QT_QPA_PLATFORM", "offscreen");
    segunda.setProcessEnvironment(env);
    segunda.start(ORB_PROGRAMA, {"--database", dir.filePath("ORBManager.fdb")});
    ASSERT_TRUE(segunda.waitForStarted(5000));
    for (int i = 0; i < 100 && segunda.state() != QProcess::NotRunning; ++i) QTest::qWait(50);
    ASSERT_EQ(segunda.state(), QProcess::NotRunning);
    EXPECT_EQ(segunda.exitCode(), 0);
    EXPECT_TRUE(ativou.count() > 0 || ativou.wait(2000));
    EXPECT_FALSE(QFile::exists(dir.filePath("ORBManager.fdb")));  // it opened nothing
}

} // namespace
