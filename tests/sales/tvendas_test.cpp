// The operation form driven like a user: Incluir, the header, two lines, Salvar, the grid.

#include "Cenario.h"
#include "TVendas.h"
#include "apoio/TabsTeste.h"
#include "ui/ComboConsulta.h"
#include "ui/Campos.h"

#include <QComboBox>
#include <QStandardItemModel>
#include <QTableView>
#include <gtest/gtest.h>

using namespace orb;

namespace {

struct TVendasTest : teste::ComTabs {};

void escolher(QWidget *w, const QVariant &id)
{
    auto *cb = static_cast<QComboBox *>(w);
    if (auto *cc = qobject_cast<ComboConsulta *>(cb)) cc->recarregar();
    cb->setCurrentIndex(cb->findData(id));
}

TEST_F(TVendasTest, ASaleTypedAndSavedShowsInTheBrowse)
{
    int cliente, atendente, empresa, item;
    {
        db::Transacao t(tabs.DbORB());
        teste::CenarioVendas c(t);
        cliente = c.cliente;
        atendente = c.atendente;
        empresa = c.empresa;
        item = c.itens["010"];
        t.commit();
    }
    TVendas f("Ven");
    f.definirMenu("&Comercial", "TVendas");
    f.show();
    EXPECT_LE(f.minimumSizeHint().width(), 1366 - 24);  // fits the main window's tab area on a 1366×768 screen
    f.BtIncluirClick();
    ASSERT_EQ(f.estado(), FormCadastro::Estado::Incluindo) << msg.avisos.join(" | ").toStdString();
    escolher(f.findChild<ComboConsulta *>("CbCliente"), cliente);
    escolher(f.findChild<ComboConsulta *>("CbAtendente"), atendente);
    escolher(f.findChild<ComboConsulta *>("CbEmpresa"), empresa);

    // A line without quantity is refused; with it, it enters the grid and the total.
    escolher(f.comboItem(), item);
    f.BtIncluirLinhaClick();
    EXPECT_EQ(msg.avisos.value(0), "Digite a quantidade primeiro!");
    escolher(f.comboItem(), item);
    f.campoQtd()->setText("2");
    f.BtIncluirLinhaClick();
    f.comboItem()->setEditText("SERVIÇO AVULSO");
    f.campoQtd()->setText("1");
    f.BtIncluirLinhaClick();
    EXPECT_EQ(f.gradeLinhas()->model()->rowCount(), 2);
    // Term sale in three: the condition takes the parameters' terms, the count is then chosen.
    auto *cond = f.findChild<QComboBox *>("CbCondPagto");
    cond->setCurrentIndex(cond->findData("P"));
    auto *parcelas = f.findChild<QComboBox *>("CbParcelas");
    parcelas->setCurrentIndex(parcelas->findData("03"));
    // A billing date before the operation's is refused as it is left, and the date typed goes back.
    auto *dataFat = f.findChild<CampoData *>("EdDataFat");
    const QString antes = dataFat->text();
    dataFat->setText("01/01/2020");
    emit dataFat->editingFinished();
    EXPECT_EQ(msg.avisos.last(), "A Data do Faturamento deve ser maior ou igual a Data da Operação!");
    EXPECT_EQ(dataFat->text(), antes);

    f.BtSalvarClick();
    ASSERT_EQ(f.estado(), FormCadastro::Estado::Navegando) << msg.avisos.join(" | ").toStdString();
    db::Transacao t(tabs.DbORB(), db::Modo::Leitura);
    const int id = db::escalar(t, "Select Max(Id) From TbCom").toInt();
    EXPECT_EQ(db::escalar(t, "Select Count(*) From TbComItens Where Fk = :ID", {{"ID", id}}).toInt(), 2);
    EXPECT_EQ(db::escalar(t, "Select Total From TbCom Where Id = :ID", {{"ID", id}}).value<db::Decimal>(),
              f.documento().cabecalho.at("TOTAL").value<db::Decimal>());
    EXPECT_GE(f.modelo()->linhaDoId(id), 0);
    EXPECT_EQ(db::escalar(t, "Select Count(*) From TbContas C Join TbComFat F On (F.Id = C.Fk) Where C.Fks = 1 and F.Fk = :ID",
                          {{"ID", id}}).toInt(), 3);
}

} // namespace
