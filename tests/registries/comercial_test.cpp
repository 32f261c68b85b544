// The commercial registry's rules against a real database: documents, modes, the browse query,
// new-record defaults, the collected save refusals, user data, the situation and the delete order.

#include "Comercial.h"
#include "acesso/Login.h"
#include "apoio/BancoTeste.h"
#include "dados/Tabs.h"

#include <gtest/gtest.h>

using namespace orb;

namespace {

const QDate kHoje(2026, 3, 10);

// Situations typed in an edit, none of them stored yet.
EdicaoDetalhe novas(const QList<Valores> &linhas)
{
    EdicaoDetalhe e;
    for (const Valores &v : linhas) e.incluir(v);
    return e;
}

struct ComercialTest : ::testing::Test {
    teste::BancoTemporario bt;
    db::Transacao t{bt.banco()};
    Sessao atual{2, "ADMIN", "ADMIN", "A", 1, 999};

    QVariant sql(const QString &s, const Valores &p = {}) { return db::escalar(t, s, p); }
    int contar(const QString &s, int id = 0) { return sql(s, s.contains(":ID") ? Valores{{"ID", id}} : Valores{}).toInt(); }
    QVariant ler(int id, const QString &col) { return sql("Select " + col + " From TbCad Where Id = :ID", {{"ID", id}}); }
    // A row put in directly, around the rules, as older data or other modules leave it.
    int inserir(Valores v)
    {
        v.try_emplace("CODIGO", proximoCodigo(t, "TBCAD"));
        QStringList c;
        for (const auto &kv : v) c << kv.first;
        return sql("Insert Into TbCad (" + c.join(", ") + ") Values (:" + c.join(", :") + ") Returning Id", v).toInt();
    }
    void situacao(int fk, const QDate &d, const QString &s)
    {
        db::executar(t, "Insert Into TbCadSit (Fk, Data, Situacao) Values (:FK, :D, :S)", {{"FK", fk}, {"D", d}, {"S", s}});
    }
    // Names the browse query lists, in its order, each with its situation when asked.
    QStringList listar(const BuscaCadastro &b, bool comSituacao = false)
    {
        db::Consulta q(t, b.sql);
        for (const auto &[k, x] : b.parametros) q.bind(k, x);
        q.executar();
        QStringList r;
        while (q.proxima()) r << q["NOME"].toString() + (comSituacao ? "=" + q["Z_SITUACAO"].toString() : "");
        return r;
    }
    // A record the save accepts, to be spoiled by each case.
    Valores valido(const QString &pessoa, const QString &papel)
    {
        Valores v{{"CODIGO", proximoCodigo(t, "TBCAD")}, {"NOME", "FULANO"}, {"APELIDO", "FU"}, {"PESSOA", pessoa}, {papel, "S"}};
        if (pessoa == "J") v["RAZAOSOCIAL"] = "FULANO LTDA";
        return v;
    }
};

TEST(CpfCnpj, CheckDigits)
{
    // 98765432100's first check digit comes from a remainder below 2, which gives 0.
    for (const QString cpf : {"52998224725", "529.982.247-25", "98765432100"}) EXPECT_TRUE(cpfValido(cpf)) << cpf.toStdString();
    for (const QString cnpj : {"11222333000181", "11.222.333/0001-81"}) EXPECT_TRUE(cnpjValido(cnpj)) << cnpj.toStdString();
    for (const QString doc : {"52998224724", "52998224735", "11111111111", "5299822472", "529982247250", "529.982.247-2x",
                              "11222333000182", "11222333000191"})
        EXPECT_FALSE(cpfValido(doc) || cnpjValido(doc)) << doc.toStdString();
}

// The modes' table is data; what matters is that an unknown one is no silent "no role".
TEST(ComercialModos, UnknownModeIsRefused)
{
    EXPECT_THROW(modoCadastro("Xx"), std::invalid_argument);
}

TEST_F(ComercialTest, NewRecordDefaultsPerMode)
{
    const int cidade = sql("Insert Into TbCidades (Cidade, Uf, Cep) Values ('MARINGA', 'PR', '87000000') Returning Id").toInt();
    db::executar(t, "Update TbCad Set IdCidade = :C, Cep = '87010000' Where Id = 1", {{"C", cidade}});
    inserir({{"NOME", "X"}, {"CODIGO", 41}});
    const QDateTime agora(kHoje, QTime(9, 30));
    for (const QString cod : {"Cl", "Fo", ""}) {  // a person, a company, no role at all
        SCOPED_TRACE(cod.toStdString());
        const ModoCadastro m = modoCadastro(cod);
        Valores v = novoCadastro(t, m, agora);
        EXPECT_EQ(v["CODIGO"].toInt(), 42);
        EXPECT_EQ(v["DATACADASTRO"].toDateTime(), agora);
        for (const QString &f : kPapeis) EXPECT_EQ(v[f].toString(), f == m.flag ? "S" : "N") << f.toStdString();
        const bool f = m.pessoaInicial == "F";
        EXPECT_EQ(QStringList({v["PESSOA"].toString(), v["TIPOCLIENTE"].toString(), v["SEXO"].toString(), v["ESTADOCIVIL"].toString(),
                               v["CEP"].toString()}), QStringList({m.pessoaInicial, "V", f ? "M" : "", f ? "SOLTEIRO(A)" : "", "87010000"}));
        EXPECT_EQ(v["IDCIDADE"].toInt(), cidade);
    }
}

TEST_F(ComercialTest, BrowseFiltersSearchesAndHidesAdmin)
{
    const int ana = inserir({{"NOME", "ANA"}, {"APELIDO", "NINA"}, {"CL", "S"}, {"PESSOA", "F"}, {"CPF", "52998224725"},
                             {"TELEFONE1", "4432221111"}, {"NUMID", "RG778"}});
    inserir({{"NOME", "BETA LTDA"}, {"RAZAOSOCIAL", "BETA COMERCIO"}, {"FO", "S"}, {"PESSOA", "J"},
             {"CNPJ", "11222333000181"}, {"CPFSOCIO2", "52998224725"}, {"INSCRESTADUAL", "ISENTO"}});
    inserir({{"NOME", "CARGA"}, {"TR", "S"}, {"CODIGO", 77}});
    inserir({{"NOME", "ADMIN DOIS"}, {"USUARIO", "ADMIN"}, {"CL", "S"}});  // whoever holds the login stays hidden
    situacao(ana, kHoje.addDays(-1), "A");
    situacao(ana, kHoje.addDays(1), "I");

    const struct { QString modo, ordem, texto; QList<QString> ver; QStringList nomes; } casos[] = {
        {"Cl", "NOME", "", {}, {"ANA"}},
        {"Cl", "NOME", "", {"Ver Fornecedores", "Ver Transportadoras"}, {"ANA", "BETA LTDA", "CARGA"}},
        {"", "APELIDO", "nin", {}, {"ANA"}},              {"", "RAZÃO SOCIAL", "comercio", {}, {"BETA LTDA"}},
        {"", "CPF", "529.982.247-25", {}, {"ANA", "BETA LTDA"}}, {"", "CNPJ", "11.222.333/0001-81", {}, {"BETA LTDA"}},
        {"", "CÓDIGO", "77", {}, {"CARGA"}},              {"", "CÓDIGO", "sete", {}, {}},
        {"", "TELEFONE", "(44)3222", {}, {"ANA"}},        {"", "IDENTIDADE", "778", {}, {"ANA"}},
        {"", "TELEFONE", "(44) 3222-1111", {}, {"ANA"}},  // the whole number with its area code
        {"", "INSCR. ESTADUAL", "ISENTO", {}, {"BETA LTDA"}}, {"", "INSCR. MUNICIPAL", "ISENTO", {}, {}},
    };
    for (const auto &c : casos) {
        QStringList achados = listar(sqlBusca(modoCadastro(c.modo), c.ordem, c.texto, c.ver, kHoje));
        achados.sort();
        EXPECT_EQ(achados, c.nomes) << (c.modo + "/" + c.ordem + "/" + c.texto).toStdString();
    }
    EXPECT_EQ(listar(sqlBusca(modoCadastro(""), "CÓDIGO", "", {}, kHoje)), QStringList({"SUA EMPRESA AQUI", "ANA", "BETA LTDA", "CARGA"}));
    EXPECT_EQ(listar(sqlBusca(modoCadastro("Cl"), "NOME", "", {}, kHoje), true), QStringList{"ANA=A"});  // tomorrow's "I" not yet
    EXPECT_EQ(listar(sqlBusca(modoCadastro("Cl"), "NOME", "", {}, kHoje.addDays(1)), true), QStringList{"ANA=I"});
}

// Typing finds names by their start (name, company name or nickname, any letter case); Enter finds
// the text anywhere. Whoever the start finds, the substring search finds too.
TEST_F(ComercialTest, SearchWhileTypingAndOnEnter)
{
    inserir({{"NOME", "Sofia Lima"}, {"CL", "S"}});
    inserir({{"NOME", "ANA SOFIA"}, {"CL", "S"}});
    inserir({{"NOME", "Beto"}, {"APELIDO", "sofinha"}, {"CL", "S"}});
    inserir({{"NOME", "Ótica Central"}, {"RAZAOSOCIAL", "SOFTEX ÓTICA LTDA"}, {"CL", "S"}});
    const struct { const char *texto; QStringList inicio, trecho; } casos[] = {
        {"sof", {"Beto", "Sofia Lima", "Ótica Central"}, {"ANA SOFIA", "Beto", "Sofia Lima", "Ótica Central"}},
        {"SOFIA", {"Sofia Lima"}, {"ANA SOFIA", "Sofia Lima"}},
        {"ótica", {"Ótica Central"}, {"Ótica Central"}},
        {"lima", {}, {"Sofia Lima"}},
    };
    for (const auto &c : casos) {
        for (const auto &[busca, esperado] : {std::pair{Busca::Inicio, c.inicio}, {Busca::Trecho, c.trecho}}) {
            QStringList achados = listar(sqlBusca(modoCadastro("Cl"), "NOME", c.texto, {}, kHoje, busca));
            achados.sort();
            QStringList e = esperado;
            e.sort();
            EXPECT_EQ(achados, e) << c.texto << (busca == Busca::Inicio ? " ao digitar" : " com Enter");
        }
    }
}

TEST_F(ComercialTest, CurrentSituation)
{
    // Today's row counts, tomorrow's not yet; on one day the last typed wins.
    const struct { QList<QPair<int, QString>> linhas; QString atual; } casos[] = {
        {{{-1, "A"}, {1, "I"}}, "A"}, {{{-5, "A"}, {0, "B"}}, "B"}, {{{-2, "A"}, {-2, "B"}}, "B"}, {{}, ""},
    };
    for (const auto &c : casos) {
        const int id = inserir({{"NOME", "S"}});
        for (const auto &[dias, s] : c.linhas) situacao(id, kHoje.addDays(dias), s);
        EXPECT_EQ(situacaoAtual(t, id, kHoje), c.atual);
    }
}

TEST_F(ComercialTest, RepeatedDocumentsAndCodes)
{
    const int ana = inserir({{"NOME", "ANA"}, {"CPF", "52998224725"}, {"CODIGO", 50}});
    inserir({{"NOME", "BETA"}, {"CNPJ", "11222333000181"}});
    const struct { int id; QString col, valor, msg; } casos[] = {
        {0, "CPF", "529.982.247-25", kCpfExistente}, {ana, "CPF", "52998224725", ""}, {0, "CPF", "", ""},
        {0, "CPF", "11144477735", ""}, {0, "CNPJ", "11.222.333/0001-81", kCnpjExistente},
    };
    for (const auto &c : casos) EXPECT_EQ(documentoRepetido(t, c.id, c.col, c.valor), c.msg) << c.valor.toStdString();
    EXPECT_TRUE(codigoRepetido(t, 0, 50));
    EXPECT_FALSE(codigoRepetido(t, ana, 50));
    EXPECT_FALSE(codigoRepetido(t, 0, 99));
}

TEST_F(ComercialTest, SaveCollectsEveryMissingFieldAndWritesNothing)
{
    const int antes = contar("Select Count(*) From TbCad");
    const struct { QString modo; Valores v; QList<Valores> sits; QStringList campos; } casos[] = {
        {"Cl", {{"CODIGO", 1}, {"PESSOA", "J"}, {"CL", "S"}, {"NOME", " "}}, {{{"SITUACAO", "A"}, {"DATA", kHoje.addDays(1)}}},
         {"CODIGO", "NOME", "APELIDO", "RAZAOSOCIAL", "CNPJ", "TBCADSIT"}},
        {"Md", {{"PESSOA", "F"}, {"NOME", "X"}, {"RAZAOSOCIAL", "Y"}}, {}, {"CODIGO", "APELIDO", "CL", "TBCADMEDSIT"}},
    };
    QString primeiroTexto;
    for (const auto &c : casos) {
        try {
            salvarCadastro(t, 0, c.v, modoCadastro(c.modo), novas(c.sits), atual, kHoje);
            ADD_FAILURE() << "saved " << c.campos.join(",").toStdString();
        } catch (const RecusaCampos &r) {
            EXPECT_EQ(r.campos, c.campos);
            if (primeiroTexto.isEmpty()) primeiroTexto = r.texto;
        }
    }
    EXPECT_EQ(primeiroTexto, "As informações a seguir devem preenchidas para que o cadastro possa ser salvo!\rVerifique os "
                             "campos e tente salvar novamente:\rCódigo já existente!\rNome\rApelido\rRazão Social\rCNPJ\rSituação");
    EXPECT_EQ(contar("Select Count(*) From TbCad"), antes);
    // An old record without any situation is refused too; a supplier company needs no CNPJ.
    const int velho = inserir({{"NOME", "V"}, {"APELIDO", "V"}, {"CL", "S"}});
    EXPECT_THROW(salvarCadastro(t, velho, {{"NOME", "VV"}}, modoCadastro("Cl"), {}, atual, kHoje), RecusaCampos);
    EXPECT_GT(salvarCadastro(t, 0, valido("J", "FO"), modoCadastro("Fo"), {}, atual, kHoje), 0);
}

TEST_F(ComercialTest, SaveClearsTheOtherPersonTypeAndAddsFirstSituation)
{
    for (const QString pessoa : {"F", "J"}) {
        Valores v = valido(pessoa, "CL");
        v.insert({{"CPF", "529.982.247-25"}, {"PAI", "P"}, {"CNPJ", "11222333000181"}, {"SOCIO1", "S1"}});
        const int id = salvarCadastro(t, 0, v, modoCadastro("Cl"), {}, atual, kHoje);
        const bool f = pessoa == "F";
        EXPECT_EQ(ler(id, "CPF").toString(), f ? "52998224725" : "");
        EXPECT_EQ(ler(id, "PAI").isNull(), !f);
        for (const QString col : {"CNPJ", "SOCIO1", "RAZAOSOCIAL"}) EXPECT_EQ(ler(id, col).isNull(), f) << col.toStdString();
        EXPECT_EQ(contar("Select Count(*) From TbCadSit Where Fk = :ID and Situacao = 'A' and IdResp = 2 and Data = '2026-03-10'", id), 1);
    }
}

TEST_F(ComercialTest, UserDataPasswordsAndTypeRights)
{
    // Who saves (session type), the type given, login, password, web password, refusal.
    const struct { QString quem, tipo, login, senha, web, msg; } casos[] = {
        {"A", "U", "JOAO", "1234567890", "", ""},          {"A", "U", "JOAO2", "12345678901", "", kSenhaMaxima},
        {"A", "U", "JOAO3", "123456", "12345678901", kSenhaMaxima}, {"A", "U", "", "123", "", kDefinaUsuarioSenha},
        {"A", "U", "JOAO4", "", "", kDefinaUsuarioSenha},   {"S", "A", "JOAO6", "123456", "", kSemPermissaoTipoUsuario},
        {"S", "S", "JOAO7", "123456", "", ""},              {"U", "S", "JOAO8", "123456", "", kSemPermissaoTipoUsuario},
        {"D", "A", "JOAO9", "123456", "web", ""},           {"A", "U", "admin", "123456", "", kUsuarioRepetido},
        {"A", "U", "JOAO5", "12345", "", kSenhaCurta},
    };
    for (const auto &c : casos) {
        SCOPED_TRACE(c.login.toStdString() + c.quem.toStdString() + c.tipo.toStdString());
        Valores v = valido("F", "FU");
        v.insert({{"US", "S"}, {"USUARIO", c.login}, {"TIPOUSUARIO", c.tipo}, {kNovaSenha, c.senha}, {kNovaSenhaWeb, c.web}});
        Sessao s = atual;
        s.tipoUsuario = c.quem;
        const int antes = contar("Select Count(*) From TbCad");
        try {
            const int id = salvarCadastro(t, 0, v, modoCadastro("Fu"), {}, s, kHoje);
            EXPECT_EQ(c.msg, "");
            EXPECT_EQ(ler(id, "SENHAWEB").toString(), c.web.isEmpty() ? "" : MD5(c.web));
            // An edit without a typed password keeps the stored hash.
            salvarCadastro(t, id, {{"NOME", "OUTRO"}}, modoCadastro("Fu"), {}, s, kHoje);
            // Only the salted hash is kept, and the user must choose their own at the next login.
            EXPECT_TRUE(ler(id, "SENHA").isNull());
            EXPECT_TRUE(conferirSenha(c.senha, ler(id, "SENHAHASH").toString(), {}));
            EXPECT_EQ(ler(id, "TROCARSENHA").toString(), "S");
            EXPECT_EQ(ler(id, "NOME").toString(), "OUTRO");
        } catch (const Recusa &r) {
            EXPECT_EQ(r.texto, c.msg);
            EXPECT_EQ(contar("Select Count(*) From TbCad"), antes);
        }
    }
}

TEST_F(ComercialTest, DeleteRefusalsInOrder)
{
    // Case i sets up the dependencies of its own rule and of every later one: the first must win.
    const std::pair<QString, QString> regras[] = {
        {"Esta empresa não pode ser excluída pois a mesma esta definida como a Empresa Padrão do Sistema!",
         "Update TbParGlobais Set IdEmpresa = :ID"},
        {"O usuário ADMIN não pode ser excluído!",
         "Update TbCad Set Usuario = 'ADMIN' Where Id = :ID"},
        {"Este cliente não pode ser excluído pois já existe alguma venda para o mesmo!",
         "Insert Into TbCom (Op, IdCad) Values (1, :ID)"},
        {"Este cliente não pode ser excluído pois já existe algum contrato para o mesmo!",
         "Insert Into TbCom (Op, IdCad) Values (3, :ID)"},
        {"Este cliente não pode ser excluído pois já existe alguma conta a receber para o mesmo!",
         "Insert Into TbContas (Tipo, IdCad) Values ('C', :ID)"},
        {"Este fornecedor não pode ser excluído pois já existe alguma compra para o mesmo!",
         "Insert Into TbCom (Op, IdCad) Values (4, :ID)"},
        {"Este fornecedor não pode ser excluído pois já existe alguma conta a pagar para o mesmo!",
         "Insert Into TbContas (Tipo, IdCad) Values ('D', :ID)"},
        {"Este fornecedor não pode ser excluído pois já existe alguma mercadoria no estoque para o mesmo!",
         "Insert Into TbItensForn (IdFornecedor) Values (:ID)"},
        {"Esta transportadora não pode ser excluída pois já existe alguma venda para a mesma!",
         "Insert Into TbComFat (IdTransportadora) Values (:ID)"},
        {"Este vendedor não pode ser excluído pois já existe alguma venda para o mesmo!",
         "Insert Into TbCom (Op, IdRepresentante) Values (2, :ID)"},
        {"Este vendedor não pode ser excluído pois já existe algum cliente para o mesmo!",
         "Insert Into TbCadSit (Fk, Situacao, IdRep) Values (1, 'A', :ID)"},
    };
    const int n = int(std::size(regras));
    for (int i = 0; i < n; ++i) {
        const int id = inserir({{"NOME", "ALVO"}, {"CL", "S"}, {"FO", "S"}, {"TR", "S"}, {"RE", "S"}});
        for (int j = i; j < n; ++j) db::executar(t, regras[j].second, {{"ID", id}});
        EXPECT_EQ(teste::recusa([&] { excluirCadastro(t, id, teste::administrador(t)); }), regras[i].first);
        EXPECT_EQ(contar("Select Count(*) From TbCad Where Id = :ID", id), 1);
        t.rollback();
        t.iniciar();
    }

    // A service order, a rental, a project or a booking keeps the customer as a sale does.
    for (const int op : {2, 5, 6, 8}) {
        const int id = inserir({{"NOME", "ALVO"}, {"CL", "S"}});
        db::executar(t, "Insert Into TbCom (Op, IdCad) Values (:OP, :ID)", {{"OP", op}, {"ID", id}});
        EXPECT_THROW(excluirCadastro(t, id, teste::administrador(t)), Recusa) << op;
        EXPECT_EQ(contar("Select Count(*) From TbCad Where Id = :ID", id), 1) << op;
    }

    // Free of use: the record goes with every detail row.
    const int id = inserir({{"NOME", "LIVRE"}, {"CL", "S"}});
    const QStringList detalhes = {"TbCadSit", "TbCadCont", "TbCadEspec", "TbCadEmpSit", "TbCadFuncSit", "TbCadMedSit", "TbCadEquip"};
    for (const QString &tab : detalhes) db::executar(t, "Insert Into " + tab + " (Fk) Values (:ID)", {{"ID", id}});
    excluirCadastro(t, id, teste::administrador(t));
    EXPECT_EQ(contar("Select Count(*) From TbCad Where Id = :ID", id), 0);
    for (const QString &tab : detalhes) EXPECT_EQ(contar("Select Count(*) From " + tab + " Where Fk = :ID", id), 0) << tab.toStdString();
}

// Every save logs the whole record as it then stood, in the table's field order, memos left out;
// text is kept as typed.
TEST_F(ComercialTest, LogKeepsEachSaveWholeAsTyped)
{
    Tabs = nullptr;
    TTabs tabs;
    Tabs = &tabs;
    tabs.conectar(db::Banco::abrir(bt.conexao()));
    tabs.definirUsuario(2);
    db::Transacao &tr = tabs.Tr("TrCad");
    tr.iniciar();
    Valores v = {{"CODIGO", 501}, {"NOME", "Maria Sant'Ana"}, {"APELIDO", "Maria"}, {"CL", "S"}, {"PESSOA", "F"},
                 {"TELEFONE1", "12911112222"}, {"OBSERVACOES", "memo que não entra"}};
    const int id = salvarCadastro(tr, 0, v, modoCadastro("Cl"), {}, atual, kHoje);
    salvarCadastro(tr, id, {{"TELEFONE1", "12933334444"}}, modoCadastro("Cl"), {}, atual, kHoje);
    tr.commit();

    db::Transacao l(tabs.DbORB(), db::Modo::Leitura);
    db::Consulta q(l, "select Acao, Dados from TbLog where Tabela = 'TBCAD' and Registro = :ID order by Id");
    q.bind("ID", id);
    q.executar();
    QStringList acoes, dados;
    while (q.proxima()) {
        acoes << q.valor(0).toString();
        dados << q.valor(1).toString();
    }
    ASSERT_EQ(acoes, (QStringList{"INCLUSÃO", "ALTERAÇÃO"}));
    EXPECT_TRUE(dados[0].contains("TELEFONE1: 12911112222")) << dados[0].toStdString();
    EXPECT_TRUE(dados[1].contains("TELEFONE1: 12933334444")) << dados[1].toStdString();
    for (const QString &d : dados) {
        EXPECT_TRUE(d.startsWith("ID: " + QString::number(id) + " - ")) << d.toStdString();
        const qsizetype nome = d.indexOf("NOME: Maria Sant'Ana - "), apelido = d.indexOf("APELIDO: Maria"), fone = d.indexOf("TELEFONE1: ");
        EXPECT_TRUE(nome > 0 && nome < apelido && apelido < fone && d.contains("CODIGO: 501")) << d.toStdString();
        EXPECT_FALSE(d.contains("memo que não entra"));
    }
    tabs.desconectar();
    Tabs = nullptr;
}

} // namespace
