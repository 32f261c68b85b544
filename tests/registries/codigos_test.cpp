// Numbered codes under simultaneous saves: every workstation offered the same next code at Incluir,
// all press Salvar together through a real server, and every record ends with a code of its own.

#include "Auxiliares.h"
#include "Comercial.h"
#include "apoio/BancoTeste.h"
#include "apoio/ServidorFirebird.h"
#include "schema/Atualizacao.h"

#include <QSet>
#include <atomic>
#include <barrier>
#include <functional>
#include <gtest/gtest.h>
#include <thread>

using namespace orb;

namespace {

const DeclaracaoRegistro &fabricantes()
{
    for (const DeclaracaoRegistro &d : registrosAuxiliares())
        if (d.classe == "TFabricantes") return d;
    throw std::logic_error("TFabricantes");
}

TEST(Codigos, SimultaneousNewRecordsGetDistinctCodes)
{
    if (!teste::ServidorFirebird::disponivel()) GTEST_SKIP() << teste::ServidorFirebird::motivoIndisponivel().toStdString();
    teste::ServidorFirebird servidor;
    const db::Conexao c = servidor.bancoNovo();

    using Salvar = std::function<void(db::Transacao &, int i, const Valores &novo)>;
    const struct {
        const char *caso, *tabela;
        std::function<Valores(db::Transacao &)> incluir;  // what the screen offers at F2
        Salvar salvar;
    } casos[] = {
        // The screen sends the code it offered with the one left in the field.
        {"clientes", "TBCAD", [](db::Transacao &t) {
             Valores v = novoCadastro(t, modoCadastro("Cl"), QDateTime::currentDateTime());
             v[kCodigoOferecido] = v["CODIGO"];
             return v;
         },
         [](db::Transacao &t, int i, const Valores &novo) {
             Valores v = novo;
             v["NOME"] = QString("CLIENTE %1").arg(i);
             v["APELIDO"] = QString("C%1").arg(i);
             salvarCadastro(t, 0, v, modoCadastro("Cl"), {}, teste::administrador(t), QDate::currentDate());
         }},
        {"fabricantes", "TBFABRICANTES", [](db::Transacao &t) {
             const int codigo = proximoCodigo(t, "TBFABRICANTES");
             return Valores{{"CODIGO", codigo}, {kCodigoOferecido, codigo}};
         },
         [](db::Transacao &t, int i, const Valores &novo) {
             Valores v = novo;
             v["FABRICANTE"] = QString("FABRICANTE %1").arg(i);
             gravarRegistro(t, fabricantes(), 0, v, teste::administrador(t, "Cadastros", "TFabricantes"));
         }},
    };
    constexpr int kEstacoes = 20;
    for (const auto &caso : casos) {
        SCOPED_TRACE(caso.caso);
        std::atomic<int> falhas{0};
        std::barrier largada(kEstacoes);
        auto estacao = [&](int i) {
            try {
                auto b = db::Banco::abrir(c);
                db::Transacao t(*b);
                const Valores novo = caso.incluir(t);
                largada.arrive_and_wait();  // everybody presses F10 together
                db::tentativa(t, [&] { caso.salvar(t, i, novo); });
                t.commit();
            } catch (const std::exception &e) {
                ++falhas;
                ADD_FAILURE() << e.what();
            }
        };
        std::vector<std::thread> estacoes;
        for (int i = 0; i < kEstacoes; ++i) estacoes.emplace_back(estacao, i);
        for (auto &e : estacoes) e.join();
        EXPECT_EQ(falhas.load(), 0);
        auto b = db::Banco::abrir(c);
        db::Transacao t(*b, db::Modo::Leitura);
        db::Consulta q(t, QString("Select Codigo, Id From %1 Where Codigo Is Not Null Order By Codigo").arg(caso.tabela));
        q.executar();
        QList<int> codigos;
        QStringList linhas;
        while (q.proxima()) {
            codigos << q.valor(0).toInt();
            linhas << q.valor(0).toString() + "/" + q.valor(1).toString();
        }
        EXPECT_GE(codigos.size(), kEstacoes);
        EXPECT_EQ(QSet<int>(codigos.begin(), codigos.end()).size(), codigos.size()) << linhas.join(' ').toStdString();
    }
}

// An installation whose rows already repeat a code keeps working; the index arrives once they don't.
TEST(Codigos, UniqueIndexWaitsForExistingDuplicates)
{
    teste::BancoTemporario bt;
    auto indice = [&] {
        db::Transacao t(bt.banco(), db::Modo::Leitura);
        return db::escalar(t, "Select Count(*) From Rdb$Indices Where Rdb$Index_Name = 'UNQ_TBCORES_CODIGO'").toInt();
    };
    {
        db::Transacao t(bt.banco());
        db::executar(t, "Drop Index UNQ_TBCORES_CODIGO");
        t.commit();
        db::executar(t, "Insert Into TbCores (Codigo, Cor) Values (7, 'AZUL')");
        db::executar(t, "Insert Into TbCores (Codigo, Cor) Values (7, 'VERDE')");
        t.commit();
    }
    bt.reabrir();
    EXPECT_NO_THROW(esquema::atualizar(bt.banco()));
    EXPECT_EQ(indice(), 0);
    {
        db::Transacao t(bt.banco());
        db::executar(t, "Update TbCores Set Codigo = 8 Where Cor = 'VERDE'");
        t.commit();
    }
    esquema::atualizar(bt.banco());
    EXPECT_EQ(indice(), 1);
}

} // namespace
