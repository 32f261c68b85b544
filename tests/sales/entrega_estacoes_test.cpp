// Two workstations approving the same sale through a real server, and a delivery killed between
// its stock rows and its commit: one approval, nothing doubled; the delivery whole or absent.

#include "Aprovacao.h"
#include "Entregas.h"
#include "Status.h"
#include "apoio/ServidorFirebird.h"

#include <QElapsedTimer>
#include <csignal>
#include <gtest/gtest.h>

using db::Decimal;
using namespace orb;
using teste::kDia;

TEST(EntregaEstacoes, TwoWorkstationsApprovingAtOnceOneSucceedsTheOtherIsRefusedAtOnce)
{
    if (!teste::ServidorFirebird::disponivel()) GTEST_SKIP() << teste::ServidorFirebird::motivoIndisponivel().toStdString();
    teste::ServidorFirebird servidor;
    const db::Conexao c = servidor.bancoNovo();
    int id = 0;
    Sessao adm;
    {
        auto b = db::Banco::abrir(c);
        db::Transacao t(*b);
        teste::VendaPronta v(t);
        v.abrirCaixa();
        id = v.salvar();
        adm = v.adm;
        t.commit();
    }
    auto b1 = db::Banco::abrir(c), b2 = db::Banco::abrir(c);
    db::Transacao t1(*b1), t2(*b2);
    aprovarOperacao(t1, id, kDia, "A", adm);
    QElapsedTimer relogio;
    relogio.start();
    bool conflito = false;
    try {
        aprovarOperacao(t2, id, kDia, "A", adm);
    } catch (const db::ErroBanco &e) {
        conflito = e.tipo() == db::TipoErro::Conflito;
    } catch (const Recusa &) {
        conflito = true;
    }
    EXPECT_TRUE(conflito);
    EXPECT_LT(relogio.elapsed(), 2000);  // refused at once, not after the first one's commit
    t2.rollback();
    t1.commit();
    // Once committed, the second workstation finds it approved.
    db::Transacao t3(*b2);
    try {
        aprovarOperacao(t3, id, kDia, "A", adm);
        ADD_FAILURE() << "aprovada duas vezes";
    } catch (const Recusa &r) {
        EXPECT_EQ(r.texto, "Esta operação não pode ser alterada pois está APROVADA!");
    }
    t3.rollback();
    db::Transacao l(*b1, db::Modo::Leitura);
    EXPECT_EQ(db::escalar(l, "Select Count(*) From TbComSt Where Fk = :ID and Status = 'AP'", {{"ID", id}}).toInt(), 1);
    EXPECT_EQ(db::escalar(l, "Select Count(*) From TbContas Where Fks = 1").toInt(), 3);
}

// The child: a delivery that dies after its stock rows, before the commit.
TEST(EntregaInterrompida, Filho)
{
    const QString banco = teste::bancoDoFilho();
    if (banco.isEmpty()) GTEST_SKIP() << "só como processo filho";
    auto b = db::Banco::abrir({banco});
    db::Transacao t(*b);
    const int id = db::escalar(t, "Select Max(Id) From TbCom").toInt();
    Sessao adm = teste::administrador(t, "&Comercial", "TVendas");
    entregarOperacao(t, id, kDia, "55", adm);
    std::raise(SIGKILL);
}

TEST(EntregaInterrompida, ADeliveryKilledBeforeItsCommitIsAbsentWhenReopened)
{
    teste::BancoTemporario bt;
    int id = 0, empresa = 0;
    {
        db::Transacao t(bt.banco());
        teste::VendaPronta v(t);
        v.abrirCaixa();
        id = v.salvar("2.0000", "03", "E");
        aprovarOperacao(t, id, kDia, "E", v.adm);
        empresa = v.c.empresa;
        t.commit();
    }
    ASSERT_EQ(teste::filhoInterrompido(bt, "EntregaInterrompida.Filho"), "");
    db::Transacao t(bt.banco(), db::Modo::Leitura);
    EXPECT_EQ(statusAtual(t, id), "AP");
    EXPECT_EQ(db::escalar(t, "Select Count(*) From TbItensEst Where IdEmpresa = :E", {{"E", empresa}}).toInt(), 0);
    EXPECT_TRUE(db::escalar(t, "Select DataEntrega From TbComFat Where Fk = :ID", {{"ID", id}}).isNull());
    EXPECT_EQ(db::escalar(t, "Select Count(*) From TbContas Where Fks = 1 and Situacao Is Not Null").toInt(), 0);
}
