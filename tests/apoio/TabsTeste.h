#pragma once
// A workstation on a fresh database: the data module connected, the administrator logged in,
// message boxes recorded instead of shown.

#include "acesso/Sessao.h"
#include "apoio/BancoTeste.h"
#include "dados/Tabs.h"
#include "ui/Mensagens.h"

#include <gtest/gtest.h>

namespace teste {

struct ComTabs : ::testing::Test {
    BancoTemporario bt;
    orb::TTabs tabs;
    orb::MensageiroTeste msg;

    void SetUp() override
    {
        orb::Tabs = &tabs;
        tabs.conectar(db::Banco::abrir(bt.conexao()));
        orb::sessao() = orb::Sessao{};
        orb::sessao().idUsuario = 2;
        orb::sessao().nivel = 999;
        orb::sessao().tipoUsuario = "D";
    }
    void TearDown() override
    {
        tabs.desconectar();
        orb::Tabs = nullptr;
        orb::sessao() = orb::Sessao{};
    }
};

} // namespace teste
