// Two workstations approving and cancelling the same inventory movement at the same moment,
// through a real server: each step moves the stock once, and never twice.

#include "Movimentacao.h"
#include "apoio/BancoTeste.h"
#include "apoio/ServidorFirebird.h"

#include <QDate>
#include <atomic>
#include <barrier>
#include <gtest/gtest.h>
#include <thread>

using namespace orb;

TEST(Concorrencia, RacingApprovalsMoveTheStockOncePerStep)
{
    if (!teste::ServidorFirebird::disponivel()) GTEST_SKIP() << teste::ServidorFirebird::motivoIndisponivel().toStdString();
    teste::ServidorFirebird servidor;
    const db::Conexao c = servidor.bancoNovo();
    int papel = 0, codigo = 0;
    {
        auto b = db::Banco::abrir(c);
        db::Transacao t(*b);
        const teste::PapelNoAlmoxarifado p(t, 0);
        papel = p.papel;
        codigo = salvarMovimentacao(t, 0, p.cabecalho(), {p.linha("1", kEntrada)}, teste::administrador(t));
        t.commit();
    }

    constexpr int kRodadas = 400;
    std::atomic<int> aprovadas{0}, canceladas{0}, duplas{0};
    std::barrier largada(2);
    auto estacao = [&] {
        auto b = db::Banco::abrir(c);
        for (int r = 0; r < kRodadas; ++r) {
            largada.arrive_and_wait();  // both workstations press the button together
            db::Transacao t(*b);
            try {
                if (r % 2 == 0) aprovarMovimentacao(t, codigo, QDate(2026, 11, 23), 77, teste::administrador(t));
                else cancelarAprovacao(t, codigo, teste::administrador(t));
                t.commit();
                ++(r % 2 == 0 ? aprovadas : canceladas);
            } catch (const Recusa &) {
                t.rollback();  // the other one got there first and committed
            } catch (const db::ErroBanco &e) {
                t.rollback();
                if (e.tipo() != db::TipoErro::Conflito) ++duplas;  // only "another workstation" is expected
            }
            largada.arrive_and_wait();  // the round is over for both before the next one starts
        }
    };
    std::thread a(estacao), b(estacao);
    a.join();
    b.join();

    EXPECT_EQ(duplas.load(), 0);
    EXPECT_GT(aprovadas.load(), 0);
    // A cancelling can only follow an approval, so the two counts differ by at most one.
    EXPECT_LE(canceladas.load(), aprovadas.load());
    EXPECT_LE(aprovadas.load() - canceladas.load(), 1);
    auto banco = db::Banco::abrir(c);
    db::Transacao t(*banco, db::Modo::Leitura);
    const db::Decimal estoque = db::escalar(t, "select EstAtual from TbInventario where Id = :ID", {{"ID", papel}}).value<db::Decimal>();
    EXPECT_EQ(estoque, db::Decimal::inteiro(aprovadas.load() - canceladas.load()));
    const bool aprovada = !db::escalar(t, "select DataAprovacao from TbMovInventario where Codigo = :C", {{"C", codigo}}).isNull();
    EXPECT_EQ(aprovada, aprovadas.load() > canceladas.load());
}
