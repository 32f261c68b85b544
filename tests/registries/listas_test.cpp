// Lookup lists stay true: an entry saved in another screen, by F4 from the lookup itself, or on
// another workstation appears in a screen already open, without closing it or losing the edit.

#include "Auxiliares.h"
#include "FormsCadastros.h"
#include "EstacaoTeste.h"
#include "apoio/ServidorFirebird.h"
#include "apoio/TabsTeste.h"
#include "dados/Avisos.h"
#include "ui/ComboConsulta.h"
#include "ui/FormRegistro.h"

#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

using namespace orb;

namespace {

struct ListasTest : teste::ComTabs {
    void SetUp() override
    {
        teste::ComTabs::SetUp();
        registrarAuxiliares();
    }
    static void novoGrupo(FormRegistro &f, const QString &codigo, const QString &nome)
    {
        f.findChild<QLineEdit *>("CODIGO")->setText(codigo);
        f.findChild<QLineEdit *>("GRUPO")->setText(nome);
        f.findChild<QComboBox *>("TIPO")->setCurrentIndex(1);
        f.BtSalvarClick();
    }
};

TEST_F(ListasTest, EntrySavedElsewhereOrByF4AppearsInTheOpenEdit)
{
    FormRegistro subgrupos(*registroAuxiliar("TSubgrupos"));
    subgrupos.show();
    subgrupos.BtIncluirClick();
    subgrupos.findChild<QLineEdit *>("SUBGRUPO")->setText("PREGOS");  // typing under way
    auto *grupo = subgrupos.findChild<ComboConsulta *>("FK");
    ASSERT_NE(grupo, nullptr);
    EXPECT_EQ(grupo->count(), 1);  // only the empty entry

    // Saved in another tab: the open list learns of it and reads it when next opened.
    FormRegistro grupos(*registroAuxiliar("TGrupos"));
    grupos.BtIncluirClick();
    novoGrupo(grupos, "1", "FERRAGENS");
    ASSERT_EQ(grupos.estado(), FormCadastro::Estado::Navegando) << msg.avisos.join(" | ").toStdString();
    EXPECT_TRUE(grupo->desatualizada());
    grupo->showPopup();
    grupo->hidePopup();
    EXPECT_GE(grupo->findText("FERRAGENS"), 1);

    // F4 on the lookup: the registry opens already including; its Salvar brings the new entry chosen.
    QTimer::singleShot(0, [] {
        auto *janela = QApplication::activeModalWidget();
        ASSERT_NE(janela, nullptr);
        auto *f = janela->findChild<FormRegistro *>();
        ASSERT_EQ(f->estado(), FormCadastro::Estado::Incluindo);
        novoGrupo(*f, "2", "TINTAS");
    });
    grupo->setFocus();
    QTest::keyClick(grupo, Qt::Key_F4);
    EXPECT_EQ(grupo->currentText(), "TINTAS");
    EXPECT_EQ(subgrupos.estado(), FormCadastro::Estado::Incluindo);
    EXPECT_EQ(subgrupos.findChild<QLineEdit *>("SUBGRUPO")->text(), "PREGOS");
}

// Another workstation saves a group through the server: its commit's event marks this one's list.
TEST(ListasEstacoes, SecondWorkstationsEntryReachesTheOpenList)
{
    if (!teste::ServidorFirebird::disponivel()) GTEST_SKIP() << teste::ServidorFirebird::motivoIndisponivel().toStdString();
    teste::ServidorFirebird servidor;
    const db::Conexao c = servidor.bancoNovo();
    teste::Estacao estacao(c);
    ComboConsulta grupo("Select Id, Grupo From TbGrupos Order By Grupo");
    QSignalSpy aviso(&avisosTabelas(), &AvisosTabelas::mudou);
    teste::gravar(c, "insert into TbGrupos (Codigo, Grupo, Tipo) values (7, 'ELÉTRICA', 'M') returning Id");
    while (!grupo.desatualizada() && aviso.wait(20000)) {
    }
    EXPECT_TRUE(grupo.desatualizada());
    grupo.showPopup();
    grupo.hidePopup();
    EXPECT_GE(grupo.findText("ELÉTRICA"), 1);
}

} // namespace
