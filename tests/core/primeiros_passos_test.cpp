// The first steps of a new installation, read from a real database as it goes through them.

#include "acesso/Login.h"
#include "apoio/BancoTeste.h"
#include "principal/PrimeirosPassos.h"

#include <gtest/gtest.h>
#include <functional>

using namespace orb;

namespace {

QStringList feitos(db::Transacao &t)
{
    QStringList r;
    for (const PrimeiroPasso &p : primeirosPassos(t))
        if (p.feito) r << p.chave;
    return r;
}

void senhaDoAdmin(db::Transacao &t, const QString &senha)
{
    db::executar(t, "update TbCad set SenhaHash = :H, Senha = null where Usuario = 'ADMIN'", {{"H", hashSenha(senha)}});
}

TEST(PrimeirosPassos, EachStepIsDoneByWhatItAsksAndNothingElse)
{
    const struct {
        const char *caso;
        std::function<void(db::Transacao &)> fazer;
        QStringList feitos;
    } casos[] = {
        {"instalação nova", [](db::Transacao &) {}, {}},
        {"empresa renomeada",
         [](db::Transacao &t) { db::executar(t, "update TbCad set Nome = 'Mercearia Boa Vista' where Id = (select IdEmpresa from TbParGlobais)"); },
         {"empresa"}},
        {"empresa com o nome de fábrica em minúsculas",
         [](db::Transacao &t) { db::executar(t, "update TbCad set Nome = 'Sua Empresa Aqui' where Id = (select IdEmpresa from TbParGlobais)"); },
         {}},
        {"outra empresa que não a principal",
         [](db::Transacao &t) { db::executar(t, "insert into TbCad (Codigo, Nome, Em) values (10, 'Filial', 'S')"); }, {}},
        // The login writes the strong hash of the first password before asking for a new one.
        {"ADMIN ainda com a senha inicial", [](db::Transacao &t) { senhaDoAdmin(t, "admin"); }, {}},
        {"ADMIN com senha nova", [](db::Transacao &t) { senhaDoAdmin(t, "nova123"); }, {"senha"}},
        {"ADMIN com senha nova do tempo do MD5",
         [](db::Transacao &t) { db::executar(t, "update TbCad set Senha = :M where Usuario = 'ADMIN'", {{"M", MD5("nova123")}}); },
         {"senha"}},
        {"usuário cadastrado",
         [](db::Transacao &t) { db::executar(t, "insert into TbCad (Codigo, Nome, Us, Usuario) values (10, 'Caixa', 'S', 'CAIXA')"); },
         {"usuario"}},
        {"cadastro com login mas sem acesso",
         [](db::Transacao &t) { db::executar(t, "insert into TbCad (Codigo, Nome, Us, Usuario) values (10, 'Ex', 'N', 'EX')"); }, {}},
        {"cliente cadastrado",
         [](db::Transacao &t) { db::executar(t, "insert into TbCad (Codigo, Nome, Cl) values (10, 'Ana', 'S')"); }, {"cliente"}},
        {"fornecedor não é cliente",
         [](db::Transacao &t) { db::executar(t, "insert into TbCad (Codigo, Nome, Fo) values (10, 'Atacado', 'S')"); }, {}},
        {"mercadoria cadastrada", [](db::Transacao &t) { db::executar(t, "insert into TbItens (Descricao) values ('Arroz 5 kg')"); },
         {"item"}},
    };
    for (const auto &c : casos) {
        SCOPED_TRACE(c.caso);
        teste::BancoTemporario bt;
        db::Transacao t(bt.banco());
        c.fazer(t);
        ASSERT_EQ(primeirosPassos(t).size(), 5);
        EXPECT_EQ(feitos(t), c.feitos);
    }
}

} // namespace
