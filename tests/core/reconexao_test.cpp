// A workstation whose server went away and came back: the data module attaches again.

#include "apoio/ServidorFirebird.h"
#include "dados/Tabs.h"
#include "db/Banco.h"

#include <QSignalSpy>
#include <functional>
#include <gtest/gtest.h>

namespace {

using teste::ServidorFirebird;

TEST(Reconexao, TabsAttachAgainAfterTheServerRestarted)
{
    if (!ServidorFirebird::disponivel()) GTEST_SKIP() << ServidorFirebird::motivoIndisponivel().toStdString();
    ServidorFirebird servidor;
    const db::Conexao c = servidor.conexao("reconexao.fdb");
    orb::TTabs tabs;
    tabs.conectar(db::Banco::criar(c));
    db::Banco &b = tabs.DbORB();
    db::executar(tabs.TrSys(), "create table T (N integer)");
    tabs.TrSys().commit();
    db::Eventos ev(b, {"PRONTO"});
    QSignalSpy eventos(&ev, &db::Eventos::evento);
    QSignalSpy reconectado(&tabs, &orb::TTabs::reconectado);

    // In flight when the server goes: an area edit, an open cursor, a statement kept for reuse.
    db::Transacao &edicao = tabs.Tr("TrCad");
    db::executar(edicao, "insert into T values (1)");
    db::Transacao leitura(b, db::Modo::Leitura);
    db::Consulta cursor(leitura, "select N from T");
    cursor.executar();
    const QString contar = "select count(*) from T";
    { db::Transacao t(b, db::Modo::Leitura); db::escalar(t, contar); }

    servidor.parar();
    EXPECT_FALSE(b.vivo());
    EXPECT_FALSE(tabs.reconectar());
    EXPECT_FALSE(edicao.ativa());
    // Whatever belonged to the dead attachment answers as a lost connection, never as a crash.
    const std::pair<const char *, std::function<void()>> mortos[] = {
        {"cursor", [&] { cursor.proxima(); }},
        {"commit", [&] { leitura.commit(); }},
        {"nova transação", [&] { db::Transacao t(b); }},
    };
    for (const auto &[nome, f] : mortos) {
        SCOPED_TRACE(nome);
        try {
            f();
            ADD_FAILURE() << "respondeu sem servidor";
        } catch (const db::ErroBanco &e) {
            EXPECT_EQ(e.tipo(), db::TipoErro::Conexao) << e.tecnico().toStdString();
        }
    }
    EXPECT_NO_THROW(edicao.rollback());

    servidor.iniciar();
    ASSERT_TRUE(tabs.reconectar());
    EXPECT_EQ(reconectado.count(), 1);
    EXPECT_TRUE(b.vivo());
    db::executar(edicao, "insert into T values (2)");
    edicao.commit();
    {
        db::Transacao t(b, db::Modo::Leitura);
        EXPECT_EQ(db::escalar(t, contar).toInt(), 1) << "o que não foi confirmado se perdeu com o servidor";
    }
    // The listener was armed again on the new attachment.
    auto outra = db::Banco::abrir(c);
    db::Transacao t(*outra);
    db::executar(t, "execute block as begin post_event 'PRONTO'; end");
    t.commit();
    ASSERT_TRUE(eventos.count() > 0 || eventos.wait(20000));
    EXPECT_EQ(eventos.at(0).at(0).toString(), "PRONTO");
}

} // namespace
