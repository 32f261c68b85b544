// A clerk with only "Alterar" on customers tries every path above their rights: the routines that
// write refuse, whatever button or screen the attempt comes from.

#include "Comercial.h"
#include "acesso/Permissoes.h"
#include "acesso/Usuarios.h"
#include "apoio/BancoTeste.h"
#include "registro/Registro.h"

#include <functional>
#include <gtest/gtest.h>

using namespace orb;

namespace {

const QDate kHoje(2026, 3, 10);

struct DireitosTest : ::testing::Test {
    teste::BancoTemporario bt;
    db::Transacao t{bt.banco()};
    Sessao balconista;
    int nivelAdmin = 0, cliente = 0, situacao = 0;

    void SetUp() override
    {
        sincronizarCatalogo(t, {{"Cadastros1", "&Cadastros", {{"Clientes1", "&Clientes...", "TClientes"}}},
                                {"Sistema1", "&Sistema", {{"Usuarios1", "&Usuários...", "TUsuarios"},
                                                          {"Niveis1", "&Níveis de Acesso...", "TNiveis"}}}});
        const Sessao adm = teste::administrador(t, "Sistema", "TUsuarios");
        nivelAdmin = adm.idNivel;
        const int nivel = salvarNivel(t, {0, 5, "BALCÃO"}, teste::administrador(t, "Sistema", "TNiveis"));
        completarArvoreNivel(t, nivel);
        // Every menu and module open, and of their operations only "Alterar" (but not the levels').
        for (const NoPermissao &m : lerArvoreNivel(t, nivel)) {
            gravarPermissao(t, m.tipo, m.id, true);
            for (const NoPermissao &mo : m.filhos) {
                gravarPermissao(t, mo.tipo, mo.id, true);
                for (const NoPermissao &op : mo.filhos)
                    gravarPermissao(t, op.tipo, op.id, op.texto == "Alterar" && mo.texto != "Níveis de Acesso");
            }
        }
        balconista = {salvarUsuario(t, {0, "clara", "Clara Lima", "Clara", "segredo1", "U", nivel}, adm), "CLARA", {}, "U", nivel, 5,
                      "Cadastros", "TClientes"};
        cliente = db::escalar(t, "Insert Into TbCad (Codigo, Nome, Apelido, Pessoa, Cl, RazaoSocial, Cnpj) "
                                 "Values (900, 'LOJA ALFA', 'ALFA', 'J', 'S', 'ALFA LTDA', '11222333000181') "
                                 "Returning Id").toInt();
        situacao = db::escalar(t, "Insert Into TbCadSit (Fk, Data, Situacao, LimCredito) Values (:F, '2026-01-02', 'A', 500) "
                                  "Returning Id", {{"F", cliente}}).toInt();
    }

    QString recusa(const std::function<void()> &f) { return teste::recusa(t, f); }
};

TEST_F(DireitosTest, ClerkCannotReachAboveTheirRights)
{
    const ModoCadastro cl = modoCadastro("Cl");
    EdicaoDetalhe comNova;
    comNova.linhas.append({situacao, {{"ID", situacao}, {"SITUACAO", "A"}}, false});
    comNova.incluir({{"DATA", kHoje}, {"SITUACAO", "A"}, {"LIMCREDITO", QVariant::fromValue(db::Decimal("1000000"))}});
    EdicaoDetalhe semALinha;
    semALinha.linhas.append({situacao, {{"ID", situacao}, {"SITUACAO", "A"}}, false});
    semALinha.excluir(0);
    Sessao naTelaDeUsuarios = balconista;
    naTelaDeUsuarios.menuAtual = "Sistema";
    naTelaDeUsuarios.moduloAtual = "TUsuarios";
    const int eu = balconista.idUsuario;

    const struct { const char *caso; std::function<void()> tentar; } casos[] = {
        {"own level raised on the commercial registry",
         [&] { salvarCadastro(t, eu, {{"IDNIVEL", nivelAdmin}}, modoCadastro("Fu"), {}, balconista, kHoje); }},
        {"own type raised on the commercial registry",
         [&] { salvarCadastro(t, eu, {{"TIPOUSUARIO", "D"}}, modoCadastro("Fu"), {}, balconista, kHoje); }},
        {"own level raised on the users screen",
         [&] { salvarUsuario(t, {eu, "clara", "Clara Lima", "Clara", "", "U", nivelAdmin}, naTelaDeUsuarios); }},
        {"another user's password", [&] {
             const int outro = salvarUsuario(t, {0, "rui", "Rui", "Rui", "segredo2", "U", balconista.idNivel},
                                             teste::administrador(t, "Sistema", "TUsuarios"));
             salvarUsuario(t, {outro, "rui", "Rui", "Rui", "minhasenha", "U", balconista.idNivel}, naTelaDeUsuarios);
         }},
        {"a situation row added", [&] { salvarCadastro(t, cliente, {{"NOME", "LOJA ALFA"}}, cl, comNova, balconista, kHoje); }},
        {"a situation row removed", [&] { salvarCadastro(t, cliente, {{"NOME", "LOJA ALFA"}}, cl, semALinha, balconista, kHoje); }},
        {"a customer added", [&] {
             salvarCadastro(t, 0, {{"CODIGO", 901}, {"NOME", "NOVO"}, {"APELIDO", "N"}, {"PESSOA", "J"}, {"CL", "S"}}, cl, {},
                            balconista, kHoje);
         }},
        {"a customer deleted", [&] { excluirCadastro(t, cliente, balconista); }},
        {"own level's permissions", [&] {
             Sessao s = balconista;
             s.menuAtual = "Sistema";
             s.moduloAtual = "TNiveis";
             gravarPermissoes(t, balconista.idNivel, lerArvoreNivel(t, balconista.idNivel), s);
         }},
    };
    for (const auto &c : casos) {
        SCOPED_TRACE(c.caso);
        EXPECT_EQ(recusa(c.tentar), kSemPermissao);
    }
    EXPECT_EQ(db::escalar(t, "Select IdNivel From TbCad Where Id = :ID", {{"ID", eu}}).toInt(), balconista.idNivel);
    EXPECT_EQ(db::escalar(t, "Select Count(*) From TbCadSit Where Fk = :ID", {{"ID", cliente}}).toInt(), 1);

    // What the level does allow goes through: a customer's name changed.
    EXPECT_EQ(recusa([&] { salvarCadastro(t, cliente, {{"NOME", "LOJA ALFA LTDA"}}, cl, {}, balconista, kHoje); }), "");
    // And a level taken away meanwhile counts at once, without a new login.
    db::executar(t, "Update TbNiveisMenusModOp Set Permitido = 'N' Where Operacao = 'Alterar'");
    EXPECT_EQ(recusa([&] { salvarCadastro(t, cliente, {{"NOME", "LOJA ALFA"}}, cl, {}, balconista, kHoje); }), kSemPermissao);
}

} // namespace
