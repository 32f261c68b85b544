// A registry form whose server goes away and comes back: the user is told, the open edit is
// discarded, and work goes on without restarting the program.

#include "Auxiliares.h"
#include "acesso/Sessao.h"
#include "EstacaoTeste.h"
#include "apoio/ServidorFirebird.h"
#include "dados/Tabs.h"
#include "ui/FormRegistro.h"
#include "ui/Mensagens.h"
#include "ui/TratadorErros.h"

#include <QTableView>
#include <QDir>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <gtest/gtest.h>

using namespace orb;

TEST(Reconexao, EditIsDiscardedAndWorkGoesOnWhenTheServerIsBack)
{
    if (!teste::ServidorFirebird::disponivel()) GTEST_SKIP() << teste::ServidorFirebird::motivoIndisponivel().toStdString();
    teste::ServidorFirebird servidor;
    const db::Conexao c = servidor.bancoNovo();
    auto contar = [&](const QString &banco) {
        auto b = db::Banco::abrir(c);
        db::Transacao t(*b, db::Modo::Leitura);
        return db::escalar(t, "select count(*) from TbBancos where Banco = :B", {{"B", banco}}).toInt();
    };
    teste::gravar(c, "insert into TbBancos (Numero, Banco) values ('237', 'Bradesco') returning Id");
    QTemporaryDir erros;
    definirPastaErros(erros.path());
    teste::Estacao estacao(c);
    auto &msg = estacao.msg;
    const QString foraDoAr = db::mensagemPara(db::TipoErro::Conexao, {});

    // alterar: the open edit changes the existing bank instead of adding one; voltouAntes: the server is
    // already back when the user acts (a restart unnoticed).
    const struct { const char *nome; bool alterar, voltouAntes; } casos[] = {
        {"inclusão com o servidor fora", false, false},
        {"alteração depois de reiniciado", true, true},
    };
    int n = 0;
    for (const auto &caso : casos) {
        SCOPED_TRACE(caso.nome);
        msg.avisos.clear();
        FormRegistro f(*registroAuxiliar("TBancos"));
        f.show();
        auto clicar = [&](const char *b) { QTest::mouseClick(f.botao(b), Qt::LeftButton); };
        if (caso.alterar) {
            clicar("Alterar");
            ASSERT_EQ(f.estado(), FormCadastro::Estado::Alterando) << msg.avisos.join(" | ").toStdString();
        } else {
            clicar("Incluir");
            ASSERT_EQ(f.estado(), FormCadastro::Estado::Incluindo) << msg.avisos.join(" | ").toStdString();
        }
        const QString descartada = caso.alterar
            ? QString("As alterações do registro %1 de \"Bancos\" não foram salvas.").arg(f.idAtual(), 6, 10, QChar('0'))
            : QString("O novo registro de \"Bancos\" não foi salvo.");
        f.definirValor("NUMERO", "001");
        f.definirValor("BANCO", "Perdido");

        servidor.parar();
        if (caso.voltouAntes) servidor.iniciar();
        clicar("Salvar");
        EXPECT_EQ(f.estado(), FormCadastro::Estado::Navegando);
        ASSERT_EQ(msg.avisos.size(), 1);
        EXPECT_TRUE(msg.avisos[0].startsWith(caso.voltouAntes ? "A conexão com o servidor do banco de dados foi perdida e já foi "
                                                                "restabelecida."
                                                              : foraDoAr))
            << msg.avisos[0].toStdString();
        EXPECT_TRUE(msg.avisos[0].endsWith(descartada)) << msg.avisos[0].toStdString();
        EXPECT_NE(f.findChild<QLineEdit *>("BANCO")->text(), "Perdido");

        if (!caso.voltouAntes) {
            // Every other action while the server is away ends in the same message.
            msg.avisos.clear();
            clicar("Incluir");
            EXPECT_EQ(f.estado(), FormCadastro::Estado::Navegando);
            QMetaObject::invokeMethod(&f, [&f] { f.pesquisar(); }, Qt::QueuedConnection);
            QCoreApplication::processEvents();
            EXPECT_EQ(msg.avisos, QStringList({foraDoAr, foraDoAr}));
            servidor.iniciar();
        }

        // Back: the next actions work without a restart.
        msg.avisos.clear();
        const QString nome = QString("Banco %1").arg(++n);
        clicar("Incluir");
        ASSERT_EQ(f.estado(), FormCadastro::Estado::Incluindo) << msg.avisos.join(" | ").toStdString();
        f.definirValor("NUMERO", QString::number(700 + n));
        f.definirValor("BANCO", nome);
        clicar("Salvar");
        EXPECT_EQ(f.estado(), FormCadastro::Estado::Navegando) << msg.avisos.join(" | ").toStdString();
        f.findChild<QLineEdit *>("EdBusca")->setText(nome);
        f.pesquisar();
        ASSERT_GE(f.grade()->currentIndex().row(), 0);
        EXPECT_EQ(f.modelo()->valor(f.grade()->currentIndex().row(), "BANCO").toString(), nome);
        EXPECT_TRUE(msg.avisos.isEmpty()) << msg.avisos.join(" | ").toStdString();
        EXPECT_EQ(contar(nome), 1);
    }
    EXPECT_EQ(contar("Perdido"), 0);
    EXPECT_EQ(contar("Bradesco"), 1);
    EXPECT_TRUE(QDir(erros.filePath("Erros")).isEmpty()) << "nenhum relatório de erro";
    definirPastaErros({});
}
