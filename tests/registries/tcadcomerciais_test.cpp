// The commercial registry driven through its widgets, as a receptionist would.

#include "FormsCadastros.h"
#include "TCadComerciais.h"
#include "TMiniCad.h"
#include "acesso/Sessao.h"
#include "apoio/TabsTeste.h"
#include "dados/Cep.h"
#include "dados/Tabs.h"
#include "principal/Menus.h"
#include "ui/Foto.h"
#include "ui/Mensagens.h"

#include <QApplication>
#include <QComboBox>
#include <QImage>
#include <QTabWidget>
#include <QTableView>
#include <QLineEdit>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTest>
#include <gtest/gtest.h>

using namespace orb;

namespace {

struct TCadComerciaisTest : teste::ComTabs {
    static void digitar(TCadComerciais &f, const char *campo, const QString &texto)
    {
        auto *e = f.findChild<QLineEdit *>(campo);
        e->setFocus();
        e->setCursorPosition(0);
        e->insert(texto);
    }
};

TEST_F(TCadComerciaisTest, CustomerRegisteredThroughTheForm)
{
    TCadComerciais f("Cl");
    f.show();
    f.BtIncluirClick();
    ASSERT_EQ(f.estado(), FormCadastro::Estado::Incluindo);  // with the mode's defaults (NewRecordDefaultsPerMode)

    // A CPF with a wrong check digit asks to be corrected when the user leaves the field.
    digitar(f, "CPF", "11144477736");
    f.conferirDocumento("CPF");
    EXPECT_EQ(msg.perguntas.value(0), "CPF inválido! Corrigir?");
    f.findChild<QLineEdit *>("CPF")->clear();
    digitar(f, "CPF", "11144477735");
    f.conferirDocumento("CPF");
    EXPECT_EQ(msg.perguntas.size(), 1);

    f.BtSalvarClick();  // no name, no nickname: one message listing both
    ASSERT_EQ(msg.avisos.size(), 1);
    EXPECT_TRUE(msg.avisos[0].startsWith("As informações a seguir devem preenchidas")) << msg.avisos[0].toStdString();
    EXPECT_TRUE(msg.avisos[0].contains("Nome") && msg.avisos[0].contains("Apelido"));
    EXPECT_EQ(f.findChild<QLineEdit *>("APELIDO")->palette().color(QPalette::Base), QColor(0xFF, 0xDD, 0xCC));

    digitar(f, "NOME", "Maria das Graças Souza");
    digitar(f, "APELIDO", "Maria");
    f.BtSalvarClick();
    ASSERT_EQ(f.estado(), FormCadastro::Estado::Navegando) << msg.avisos.join(" | ").toStdString();
    ASSERT_EQ(f.modelo()->rowCount(), 1);
    EXPECT_EQ(f.modelo()->valor(0, "APELIDO").toString() + "/" + f.modelo()->valor(0, "Z_SITUACAO").toString(), "Maria/A");
    db::Transacao t(tabs.DbORB(), db::Modo::Leitura);
    EXPECT_EQ(db::escalar(t, "select Cpf || '/' || Cl || '/' || Pessoa from TbCad where Apelido = 'Maria'").toString(),
              "11144477735/S/F");

    // A second record with the same CPF is told at once.
    f.BtIncluirClick();
    digitar(f, "CPF", "11144477735");
    f.conferirDocumento("CPF");
    EXPECT_EQ(msg.avisos.last(), "CPF já existente!");
    f.BtCancelarClick();  // asked, and No keeps the edit
    EXPECT_EQ(f.estado(), FormCadastro::Estado::Incluindo);
    msg.respostas = {QMessageBox::Yes};
    f.BtCancelarClick();
    EXPECT_EQ(f.estado(), FormCadastro::Estado::Navegando);

    // Typed in the search box, a surname is not a name's start; Enter looks for it anywhere.
    auto *busca = f.findChild<QLineEdit *>("EdBusca");
    QTest::keyClicks(busca, "souza");
    f.pesquisar();
    EXPECT_EQ(f.modelo()->rowCount(), 0);
    QTest::keyClick(busca, Qt::Key_Return);
    EXPECT_EQ(f.modelo()->rowCount(), 1);
    f.pesquisar();  // a switch ticked afterwards keeps the search Enter chose
    EXPECT_EQ(f.modelo()->rowCount(), 1);
}

TEST_F(TCadComerciaisTest, QuickRegistration)
{
    TMiniCad mini;
    mini.definir("CPF", "11144477736");
    mini.conferirCpf();
    EXPECT_EQ(msg.perguntas.value(0), "CPF inválido! Corrigir?");
    mini.BtSalvarClick();  // no name yet
    EXPECT_TRUE(msg.avisos.value(0).contains("Nome"));
    mini.definir("CPF", "11144477735");
    mini.definir("NOME", "José Pereira");
    mini.BtSalvarClick();
    ASSERT_GT(mini.id(), 0) << msg.avisos.join(" | ").toStdString();
    db::Transacao t(tabs.DbORB(), db::Modo::Leitura);
    EXPECT_EQ(db::escalar(t, "select Apelido || '/' || Cl || '/' || Cpf from TbCad where Id = :ID", {{"ID", mini.id()}}).toString(),
              "José Pereira/S/11144477735");
    t.rollback();

    // A legal person is registered with its CNPJ instead.
    TMiniCad empresa;
    empresa.definir("PESSOA", "J");
    EXPECT_TRUE(empresa.campo("CPF")->isHidden() || !empresa.campo("CPF")->isVisibleTo(&empresa));
    empresa.definir("CNPJ", "11222333000180");
    empresa.conferirCnpj();
    EXPECT_EQ(msg.perguntas.value(1), "CNPJ inválido! Corrigir?");
    empresa.definir("CNPJ", "11222333000181");
    empresa.definir("NOME", "Padaria Pão Quente");
    empresa.BtSalvarClick();
    ASSERT_GT(empresa.id(), 0) << msg.avisos.join(" | ").toStdString();
    db::Transacao l(tabs.DbORB(), db::Modo::Leitura);
    EXPECT_EQ(db::escalar(l, "select Pessoa || '/' || Cnpj || '/' || Coalesce(Cpf, '-') || '/' || RazaoSocial from TbCad where Id = :ID",
                          {{"ID", empresa.id()}}).toString(),
              "J/11222333000181/-/Padaria Pão Quente");
}

// A user without a password: the access tab comes forward with the password field; the refusals of
// a screen the level may not see are worded as this registry words them.
TEST_F(TCadComerciaisTest, MissingPasswordBringsTheAccessTabForward)
{
    TCadComerciais f("Fu");
    f.show();
    f.BtIncluirClick();
    f.definirValor("NOME", "Carla Souza");
    f.definirValor("APELIDO", "Carla");
    f.definirValor("CPF", "52998224725");
    f.definirValor("US", "S");
    f.definirValor("USUARIO", "carla");
    f.BtSalvarClick();
    ASSERT_EQ(f.estado(), FormCadastro::Estado::Incluindo);
    EXPECT_EQ(msg.avisos.last(), kDefinaUsuarioSenha);
    auto *abas = f.findChild<QTabWidget *>("PcEdicao");
    EXPECT_EQ(abas->tabText(abas->currentIndex()), "A&cesso");
    auto *senha = f.findChild<QLineEdit *>(kNovaSenha);
    EXPECT_EQ(senha->echoMode(), QLineEdit::Password);
    EXPECT_EQ(f.findChild<QLineEdit *>(kNovaSenhaWeb)->echoMode(), QLineEdit::Password);

    registrarComercial();
    const QString registro = "Você não tem acesso a visualização deste módulo!";
    EXPECT_EQ(QStringList({recusaVisualizacao("TClientes"), recusaVisualizacao("TMembros"), recusaVisualizacao("TCidades")}),
              QStringList({registro, registro, "Você não tem permissão para visualizar esse módulo!"}));
    EXPECT_TRUE(std::unique_ptr<QWidget>(criarFormulario("TMembros", nullptr)));
}

// Offline the city comes from the registry; a configured service adds street and district, and
// what it answered is kept for the next time.
TEST_F(TCadComerciaisTest, AddressByCep)
{
    QTemporaryDir dir;
    BuscaCep &b = buscaCep();
    b.definirCache(dir.filePath("cep.json"));
    b.definirServico({});
    int taubate = 0;
    {
        db::Transacao t(tabs.DbORB());
        taubate = db::escalar(t, "insert into TbCidades (Cidade, Uf, Cep) values ('Taubaté', 'SP', '12010000') returning Id").toInt();
        t.commit();
    }
    db::Transacao t(tabs.DbORB(), db::Modo::Leitura);
    EXPECT_EQ(b.local(t, "12010-000").idCidade, taubate);
    EXPECT_EQ(b.local(t, "12010-999").idCidade, taubate);  // same CEP range
    EXPECT_FALSE(b.local(t, "01310-100").achou());

    QTcpServer http;  // the address service, answering one CEP
    ASSERT_TRUE(http.listen(QHostAddress::LocalHost));
    QObject::connect(&http, &QTcpServer::newConnection, [&] {
        QTcpSocket *s = http.nextPendingConnection();
        QObject::connect(s, &QTcpSocket::readyRead, [s] {
            s->readAll();
            const QByteArray corpo = R"({"logradouro":"Rua Quatro de Março","bairro":"Centro","localidade":"Taubaté","uf":"SP"})";
            s->write("HTTP/1.1 200 OK\r\nContent-Type: application/json\r\nContent-Length: " + QByteArray::number(corpo.size())
                     + "\r\nConnection: close\r\n\r\n" + corpo);
            s->disconnectFromHost();
        });
    });
    b.definirServico(QString("http://127.0.0.1:%1/cep/%2").arg(http.serverPort()).arg("%1"));
    TCadComerciais f("Cl");
    f.BtIncluirClick();
    QSignalSpy achou(&b, &BuscaCep::encontrado);
    digitar(f, "CEP", "12010000");
    f.buscarCep();
    EXPECT_EQ(f.valorDoCampo("IDCIDADE").toInt(), taubate);  // at once, from the registry
    ASSERT_TRUE(achou.wait(5000));
    EXPECT_EQ(f.valorDoCampo("ENDERECO").toString() + "/" + f.valorDoCampo("BAIRRO").toString(), "Rua Quatro de Março/Centro");
    msg.respostas = {QMessageBox::Yes};
    f.BtCancelarClick();
    b.definirServico({});
    EXPECT_EQ(b.local(t, "12010000").logradouro, "Rua Quatro de Março");  // from the cache, offline
    b.definirCache({});
}

// Sistema → Empresas, F3, a new name, F10: the first thing a new installation asks for.
TEST_F(TCadComerciaisTest, SeededCompanyRenamedWithTheKeys)
{
    TCadComerciais f("Em");
    f.show();
    QApplication::setActiveWindow(&f);
    ASSERT_EQ(f.modelo()->rowCount(), 1);
    f.grade()->setCurrentIndex(f.modelo()->index(0, 0));
    f.grade()->setFocus();
    QTest::keyClick(f.grade(), Qt::Key_F3);
    ASSERT_EQ(f.estado(), FormCadastro::Estado::Alterando);
    auto *nome = f.findChild<QLineEdit *>("NOME");
    nome->selectAll();
    nome->insert("Mercearia Boa Vista");
    QTest::keyClick(nome, Qt::Key_F10);
    ASSERT_EQ(f.estado(), FormCadastro::Estado::Navegando) << msg.avisos.join(" | ").toStdString();
    EXPECT_TRUE(msg.avisos.isEmpty()) << msg.avisos.join(" | ").toStdString();
    db::Transacao t(tabs.DbORB(), db::Modo::Leitura);
    EXPECT_EQ(db::escalar(t, "select c.Nome from TbParGlobais p join TbCad c on c.Id = p.IdEmpresa").toString(),
              "Mercearia Boa Vista");
}

// Users who edit their own record see the change in their session at once; the references and
// the photo typed on their tabs are kept with the record.
TEST_F(TCadComerciaisTest, OwnRecordRefreshesTheSession)
{
    int id = 0;
    {
        db::Transacao t(tabs.DbORB());
        id = db::escalar(t, "insert into TbCad (Codigo, Nome, Apelido, Pessoa, Cl, Us, Usuario, Senha, TipoUsuario, IdNivel) "
                            "values (50, 'Joana Prado', 'Joana', 'F', 'S', 'S', 'JOANA', 'X', 'U', "
                            "(select first 1 Id from TbNiveis)) returning Id").toInt();
        db::executar(t, "insert into TbCadSit (Data, Situacao, Fk) values ('2026-01-01', 'A', :ID)", {{"ID", id}});
        t.commit();
    }
    sessao().idUsuario = id;
    sessao().usuario = "JOANA";
    sessao().apelido = "Joana";
    QTemporaryDir dir;
    QImage img(4, 4, QImage::Format_RGB32);
    img.fill(Qt::blue);
    img.save(dir.filePath("joana.png"));

    TCadComerciais f("");
    f.show();
    ASSERT_EQ(f.modelo()->rowCount(), 1);
    f.grade()->setCurrentIndex(f.modelo()->index(0, 0));
    f.BtAlterarClick();
    ASSERT_EQ(f.estado(), FormCadastro::Estado::Alterando);
    auto *apelido = f.findChild<QLineEdit *>("APELIDO");
    apelido->selectAll();
    apelido->insert("Jô");
    digitar(f, "REFCOM1", "Armazém Central");
    f.findChild<CampoFoto *>("FOTO")->carregar(dir.filePath("joana.png"));
    f.BtSalvarClick();
    ASSERT_EQ(f.estado(), FormCadastro::Estado::Navegando) << (msg.avisos + msg.perguntas + tabs.trilha()).join(" | ").toStdString();
    EXPECT_EQ(sessao().apelido, "Jô");
    db::Transacao t(tabs.DbORB(), db::Modo::Leitura);
    EXPECT_EQ(db::escalar(t, "select RefCom1 || '/' || TipoFoto from TbCad where Id = :ID", {{"ID", id}}).toString(),
              "Armazém Central/PNG");
}

} // namespace
