// The first steps of a new installation, read from a real database as it goes through them.

#include "acesso/Login.h"
#include "apoio/BancoTeste.h"
#include "principal/PrimeirosPassos.h"

#include <gtest/gtest.h>

using namespace orb;

namespace {

QStringList feitos(db::Transacao &t)
{
    QStringList r;
    for (const PrimeiroPasso &p : primeirosPassos(t))
        if (p.feito) r << p.chave;
    return r;
}

TEST(PrimeirosPassos, EachStepIsDoneByWhatItAsksAndNothingElse)
{
    const QString empresa = "update TbCad set Nome = :V where Id = (select IdEmpresa from TbParGlobais)";
    const QString hash = "update TbCad set SenhaHash = :V, Senha = null where Usuario = 'ADMIN'";
    const struct { const char *caso; QString sql; QVariant v; QStringList feitos; } casos[] = {
        {"instalação nova", {}, {}, {}},
        {"empresa renomeada", empresa, "Mercearia Boa Vista", {"empresa"}},
        {"empresa com o nome de fábrica em minúsculas", empresa, "Sua Empresa Aqui", {}},
        {"outra empresa que não a principal", "insert into TbCad (Codigo, Nome, Em) values (10, 'Filial', 'S')", {}, {}},
        // The login writes the strong hash of the first password before asking for a new one.
        {"ADMIN ainda com a senha inicial", hash, hashSenha("admin"), {}},
        {"ADMIN com senha nova", hash, hashSenha("nova123"), {"senha"}},
        {"ADMIN com senha nova do tempo do MD5", "update TbCad set Senha = :V where Usuario = 'ADMIN'", MD5("nova123"), {"senha"}},
        {"usuário cadastrado", "insert into TbCad (Codigo, Nome, Us, Usuario) values (10, 'Caixa', 'S', 'CAIXA')", {}, {"usuario"}},
        {"cadastro com login mas sem acesso", "insert into TbCad (Codigo, Nome, Us, Usuario) values (10, 'Ex', 'N', 'EX')", {}, {}},
        {"cliente cadastrado", "insert into TbCad (Codigo, Nome, Cl) values (10, 'Ana', 'S')", {}, {"cliente"}},
        {"fornecedor não é cliente", "insert into TbCad (Codigo, Nome, Fo) values (10, 'Atacado', 'S')", {}, {}},
        {"mercadoria cadastrada", "insert into TbItens (Descricao) values ('Arroz 5 kg')", {}, {"item"}},
    };
    teste::BancoTemporario bt;
    for (const auto &c : casos) {
        SCOPED_TRACE(c.caso);
        db::Transacao t(bt.banco());  // rolled back at the end of each case
        std::map<QString, QVariant> p;
        if (c.v.isValid()) p["V"] = c.v;
        if (!c.sql.isEmpty()) db::executar(t, c.sql, p);
        ASSERT_EQ(primeirosPassos(t).size(), 5);
        EXPECT_EQ(feitos(t), c.feitos);
    }
}

} // namespace
