// A registry driven with the keyboard only: F2, typing, Enter from field to field and on to
// Salvar, then F3, Esc and F5, with the focus where the next key needs it after each step.

#include "Auxiliares.h"
#include "apoio/TabsTeste.h"
#include "ui/FormRegistro.h"

#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTableView>
#include <QTest>

using namespace orb;

namespace {

struct TecladoTest : teste::ComTabs {};

QWidget *foco() { return QApplication::focusWidget(); }
void tecla(int k) { QTest::keyClick(foco(), Qt::Key(k)); }

TEST_F(TecladoTest, WholeRecordWithoutTheMouse)
{
    FormRegistro f(*registroAuxiliar("TGrupos"));
    f.resize(1000, 700);
    f.show();
    QApplication::setActiveWindow(&f);
    f.grade()->setFocus();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&f));

    tecla(Qt::Key_F2);
    ASSERT_EQ(f.estado(), FormCadastro::Estado::Incluindo);
    EXPECT_EQ(foco()->objectName(), "CODIGO");  // the first field, whatever its kind
    QTest::keyClicks(foco(), "7");
    tecla(Qt::Key_Return);
    EXPECT_EQ(foco()->objectName(), "GRUPO");
    QTest::keyClicks(foco(), "FERRAGENS");
    tecla(Qt::Key_Return);
    EXPECT_EQ(foco()->objectName(), "TIPO");
    tecla(Qt::Key_Down);
    tecla(Qt::Key_Return);
    EXPECT_EQ(foco()->objectName(), "BtSalvar");  // after the last field, Salvar
    tecla(Qt::Key_Return);
    ASSERT_EQ(f.estado(), FormCadastro::Estado::Navegando) << msg.avisos.join(" | ").toStdString();
    EXPECT_EQ(foco(), f.grade());
    EXPECT_EQ(f.modelo()->rowCount(), 1);

    // F3 edits the row the grid shows; Esc gives the grid back.
    tecla(Qt::Key_F3);
    ASSERT_EQ(f.estado(), FormCadastro::Estado::Alterando);
    EXPECT_NE(foco(), f.grade());
    tecla(Qt::Key_Escape);
    EXPECT_EQ(f.estado(), FormCadastro::Estado::Navegando);
    EXPECT_EQ(foco(), f.grade());

    // F5 asks, "Não" keeps the record, and the grid still answers the keys.
    msg.respostas = {QMessageBox::No};
    tecla(Qt::Key_F5);
    EXPECT_EQ(msg.perguntas.size(), 1);
    EXPECT_EQ(f.modelo()->rowCount(), 1);
    EXPECT_EQ(foco(), f.grade());
    tecla(Qt::Key_F2);
    EXPECT_EQ(f.estado(), FormCadastro::Estado::Incluindo);
}

} // namespace
