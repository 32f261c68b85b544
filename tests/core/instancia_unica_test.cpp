// One copy per user, checked across two real processes.

#include "principal/InstanciaUnica.h"

#include <QProcess>
#include <QTest>
#include <QWidget>
#include <gtest/gtest.h>

using orb::InstanciaUnica;

namespace {

QString nomeTeste(const char *caso)
{
    return QString("orb-instancia-%1-%2").arg(QCoreApplication::applicationPid()).arg(caso);
}

// Starts the helper holding the guard and waits for it to say it holds it.
bool iniciar(QProcess &p, const QString &nome, int vidaMs)
{
    p.start(ORB_INSTANCIA_TESTE, {nome, QString::number(vidaMs)});
    if (!p.waitForStarted(5000)) return false;
    while (!p.readAllStandardOutput().contains("PRONTO"))
        if (!p.waitForReadyRead(5000)) return false;
    return true;
}

TEST(InstanciaUnicaProcessos, ASecondCopyAsksTheFirstToComeToTheFront)
{
    const QString nome = nomeTeste("segunda");
    QProcess outra;
    ASSERT_TRUE(iniciar(outra, nome, 1500));

    InstanciaUnica esta(nome);
    EXPECT_FALSE(esta.primeira());
    QByteArray saida;
    for (int i = 0; i < 50 && !saida.contains("ATIVADO"); ++i)
        if (outra.waitForReadyRead(100)) saida += outra.readAllStandardOutput();
    EXPECT_TRUE(saida.contains("ATIVADO"));

    ASSERT_TRUE(outra.waitForFinished(5000));
    EXPECT_EQ(outra.exitCode(), 1);  // exactly one request
    EXPECT_TRUE(esta.primeira());    // the first copy is gone: this one takes over
}

// The name frees itself whether the first copy ended well or crashed and left its socket behind.
TEST(InstanciaUnicaProcessos, TheNameIsFreeOnceTheFirstCopyIsGone)
{
    const struct { const char *caso; bool mata; } casos[] = {{"saiu", false}, {"caiu", true}};
    for (const auto &c : casos) {
        SCOPED_TRACE(c.caso);
        const QString nome = nomeTeste(c.caso);
        QProcess outra;
        ASSERT_TRUE(iniciar(outra, nome, c.mata ? 30000 : 200));
        if (c.mata) outra.kill();
        ASSERT_TRUE(outra.waitForFinished(5000));
        InstanciaUnica esta(nome);
        EXPECT_TRUE(esta.primeira());

        // Now this process holds it: a further copy is turned away.
        QProcess terceira;
        terceira.start(ORB_INSTANCIA_TESTE, {nome, "200"});
        while (terceira.state() != QProcess::NotRunning) QTest::qWait(20);  // our event loop answers it
        EXPECT_EQ(terceira.exitCode(), 101);
    }
}

TEST(InstanciaUnicaProcessos, BringingToTheFrontRestoresAMinimisedWindow)
{
    QWidget w;
    w.showMinimized();
    ASSERT_TRUE(w.isMinimized());
    orb::trazerParaFrente(&w);
    EXPECT_FALSE(w.isMinimized());
    EXPECT_TRUE(w.isVisible());
}

} // namespace
