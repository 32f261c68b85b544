// Two workstations on one record through a real server: the second Alterar is refused at once.

#include "Auxiliares.h"
#include "ui/FormRegistro.h"
#include "acesso/Sessao.h"
#include "apoio/ServidorFirebird.h"
#include "dados/Tabs.h"
#include "schema/Atualizacao.h"
#include "ui/Mensagens.h"

#include <QLineEdit>
#include <gtest/gtest.h>

using namespace orb;

TEST(Travamento, SecondWorkstationIsToldTheRecordIsInUse)
{
    if (!teste::ServidorFirebird::disponivel()) GTEST_SKIP() << teste::ServidorFirebird::motivoIndisponivel().toStdString();
    teste::ServidorFirebird servidor;
    const db::Conexao c{servidor.endereco("ORBManager.fdb"), servidor.usuario(), servidor.senha()};
    esquema::criarBanco(c);
    {
        auto b = db::Banco::abrir(c);
        db::Transacao t(*b);
        db::executar(t, "insert into TbCidades (Cidade, Uf, Cep) values ('Taubaté', 'SP', '12010000')");
        t.commit();
    }
    TTabs tabs;  // this workstation
    Tabs = &tabs;
    tabs.conectar(db::Banco::abrir(c));
    sessao().idUsuario = 2;
    sessao().nivel = 999;
    MensageiroTeste msg;
    {
        FormRegistro primeira(*registroAuxiliar("TCidades"));
        // The other workstation is changing the same city.
        auto outra = db::Banco::abrir(c);
        db::Transacao alterando(*outra);
        db::executar(alterando, "update TbCidades set Cidade = 'Taubaté (centro)' where Cep = '12010000'");

        primeira.BtAlterarClick();
        EXPECT_EQ(primeira.estado(), FormCadastro::Estado::Navegando);
        ASSERT_EQ(msg.avisos.size(), 1);
        EXPECT_TRUE(msg.avisos[0].contains("outra estação de trabalho")) << msg.avisos[0].toStdString();

        // Once the other one saves, this one edits the saved record: nothing was lost.
        alterando.commit();
        primeira.pesquisar();
        primeira.BtAlterarClick();
        ASSERT_EQ(primeira.estado(), FormCadastro::Estado::Alterando);
        EXPECT_EQ(primeira.findChild<QLineEdit *>("CIDADE")->text(), "Taubaté (centro)");
        primeira.BtCancelarClick();
    }
    tabs.desconectar();
    Tabs = nullptr;
    sessao() = Sessao{};
}
