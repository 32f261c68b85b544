// Several workstations on one database through a real Firebird server on 127.0.0.1.

#include "apoio/ServidorFirebird.h"
#include "db/Banco.h"

#include <QSignalSpy>
#include <gtest/gtest.h>

namespace {

using teste::ServidorFirebird;

struct EstacoesTest : ::testing::Test {
    static inline std::unique_ptr<ServidorFirebird> servidor;
    static inline db::Conexao conexao;

    static void SetUpTestSuite()
    {
        if (!ServidorFirebird::disponivel()) return;
        servidor = std::make_unique<ServidorFirebird>();
        conexao = servidor->bancoNovo();
    }
    static void TearDownTestSuite() { servidor.reset(); }
    void SetUp() override
    {
        if (!servidor) GTEST_SKIP() << ServidorFirebird::motivoIndisponivel().toStdString();
    }
};

TEST_F(EstacoesTest, SecondWorkstationIsToldAtOnceAndNothingIsLost)
{
    auto estacao1 = db::Banco::abrir(conexao);
    auto estacao2 = db::Banco::abrir(conexao);
    db::Transacao t1(*estacao1), t2(*estacao2);
    db::executar(t1, "update TBCAD set NOME = 'ALTERADO NA ESTAÇÃO 1' where ID = 1");
    try {
        db::executar(t2, "update TBCAD set NOME = 'ALTERADO NA ESTAÇÃO 2' where ID = 1");
        FAIL() << "a segunda estação deveria ser recusada";
    } catch (const db::ErroBanco &e) {
        EXPECT_EQ(e.tipo(), db::TipoErro::Conflito) << e.tecnico().toStdString();
        EXPECT_TRUE(e.mensagem().contains("outra estação de trabalho"));
    }
    t2.rollback();
    t1.commit();
    db::Transacao t3(*estacao2);
    EXPECT_EQ(db::escalar(t3, "select NOME from TBCAD where ID = 1").toString(), "ALTERADO NA ESTAÇÃO 1");
    db::executar(t3, "update TBCAD set NOME = 'SUA EMPRESA AQUI' where ID = 1");  // free again
    t3.commit();
}

TEST_F(EstacoesTest, EventsPostedByOneArriveAtTheOther)
{
    auto ouvinte = db::Banco::abrir(conexao);
    auto outra = db::Banco::abrir(conexao);
    db::Eventos ev(*ouvinte, {"AGENDA", "OUTRO"});
    QSignalSpy spy(&ev, &db::Eventos::evento);
    // Posted at once, with no event loop turn in between: not to be taken for the registration's counts.
    for (int i = 0; i < 2; ++i) {
        db::Transacao t(*outra);
        db::executar(t, "execute block as begin post_event 'AGENDA'; end");
        t.commit();
        ASSERT_TRUE(spy.count() > i || spy.wait(20000)) << "evento " << i;  // slow when the machine is busy
    }
    EXPECT_EQ(spy.count(), 2);
    EXPECT_EQ(spy.at(0).at(0).toString(), "AGENDA");
    EXPECT_EQ(spy.at(0).at(1).toInt(), 1);
}

} // namespace
