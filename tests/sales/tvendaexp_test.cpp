// The express sale driven like a cashier: Incluir, a code and a bar code scanned with Enter (a
// quantity typed first), an unknown code refused, three instalments with a down payment, the
// amount handed over, Salvar: approved and delivered at once, stock moved, the down payment
// received and the change shown. Cancelar offers the next sale.

#include "Entregas.h"
#include "FormsVendas.h"
#include "Status.h"
#include "TVendaExp.h"
#include "apoio/TabsTeste.h"
#include "principal/Menus.h"
#include "ui/Campos.h"
#include "ui/ComboConsulta.h"

#include <QBuffer>
#include <QComboBox>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QTableView>
#include <QTest>
#include <gtest/gtest.h>
#include <memory>

using namespace orb;
using db::Decimal;

namespace {

struct TVendaExpTest : teste::ComTabs {
    int cliente = 0, empresa = 0, vinte = 0;

    void SetUp() override
    {
        ComTabs::SetUp();
        db::Transacao t(tabs.DbORB());
        teste::VendaPronta v(t);
        cliente = v.c.cliente;
        empresa = v.c.empresa;
        vinte = db::escalar(t, "Insert Into TbItens (Codigo, CodigoBarras, Descricao, Tipo, Un, PrVendaAt, PrVendaVar, Origem, Cst) "
                               "Values ('M25', '7891234567895', 'MERCADORIA VINTE E CINCO', 'M', 'UN', 20, 25, '0', '40') Returning Id")
                    .toInt();
        QImage imagem(64, 48, QImage::Format_RGB32);
        imagem.fill(Qt::darkCyan);
        QByteArray png;
        QBuffer b(&png);
        b.open(QIODevice::WriteOnly);
        imagem.save(&b, "PNG");
        db::executar(t, "Insert Into TbItensFotos (Descricao, Foto, TipoFoto, Fk) Values ('FRENTE', :F, 'PNG', :ID)",
                     {{"F", png}, {"ID", vinte}});
        // Counter defaults; a term sale in three with the first instalment paid at once.
        db::executar(t, "Insert Into TbParVendas (Data, IdClienteVE, IdAtendenteVE, IdEmpresaVE, GeraFinVE, CondPagtoVE, Parcelas, "
                        "Entrada, PrimVenc, IntVenc) Values ('2020-01-01', :CL, :AT, :EM, 'A', 'V', '03', 'S', 30, 30)",
                     {{"CL", cliente}, {"AT", v.c.atendente}, {"EM", empresa}});
        teste::abrirCaixa(t, QDate::currentDate(), v.adm.idUsuario);
        sessao().idUsuario = v.adm.idUsuario;
        t.commit();
    }
    QVariant escalar(const QString &sql, int id = 0)
    {
        db::Transacao t(tabs.DbORB(), db::Modo::Leitura);
        return sql.contains(":ID") ? db::escalar(t, sql, {{"ID", id}}) : db::escalar(t, sql);
    }
};

void teclar(QWidget *w, const QString &texto)
{
    QTest::keyClicks(w, texto);
    QTest::keyClick(w, Qt::Key_Return);
}

TEST_F(TVendaExpTest, ACashierScansPaysAndTheSaleIsApprovedAndDeliveredAtOnce)
{
    registrarVendas();
    std::unique_ptr<QWidget> w(criarFormulario(kClasseVendaExpressa, nullptr));
    auto *f = qobject_cast<TVendaExp *>(w.get());
    ASSERT_NE(f, nullptr);
    f->definirMenu("Comercial", kClasseVendaExpressa);
    f->resize(1366, 700);
    f->show();
    f->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(f));
    f->BtIncluirClick();
    EXPECT_TRUE(f->campoCodigo()->hasFocus());  // ready for the first scan
    ASSERT_EQ(f->estado(), FormCadastro::Estado::Incluindo) << msg.avisos.join(" | ").toStdString();
    EXPECT_EQ(f->findChild<QComboBox *>("CbCliente")->currentData().toInt(), cliente);

    teclar(f->campoCodigo(), "M100");
    EXPECT_TRUE(f->campoCodigo()->hasFocus() && f->campoCodigo()->text().isEmpty());  // cleared, focus kept
    teclar(f->campoQtd(), "2");  // the quantity first, then the scan
    EXPECT_TRUE(f->campoCodigo()->hasFocus());
    teclar(f->campoCodigo(), "7891234567895");
    teclar(f->campoCodigo(), "NAOEXISTE");
    ASSERT_EQ(msg.avisos, QStringList{"Mercadoria não encontrada!"});
    EXPECT_EQ(f->campoCodigo()->text(), "NAOEXISTE");  // kept for correction
    f->campoCodigo()->clear();
    teclar(f->campoCodigo(), "");  // nothing more to scan: on to the payment
    EXPECT_TRUE(f->campoRecebido()->hasFocus());
    EXPECT_EQ(f->gradeLinhas()->model()->rowCount(), 2);
    EXPECT_EQ(f->gradeLinhas()->model()->index(1, 2).data().toString(), "2,0000");
    EXPECT_TRUE(f->campoQtd()->text().isEmpty());
    EXPECT_EQ(f->total()->text(), "R$ 150,00");
    EXPECT_FALSE(f->foto()->pixmap().isNull());  // the last item scanned has a photo

    auto *cond = f->findChild<QComboBox *>("CbCondPagto");
    cond->setCurrentIndex(cond->findData("P"));
    EXPECT_EQ(f->findChild<QComboBox *>("CbParcelas")->currentData().toString(), "03");
    f->campoRecebido()->setText("60,00");
    EXPECT_EQ(f->findChild<QLabel *>("LbTroco")->text(), "R$ 10,00");
    f->BtSalvarClick();
    ASSERT_EQ(msg.avisos.size(), 1) << msg.avisos.join(" | ").toStdString();
    ASSERT_EQ(f->estado(), FormCadastro::Estado::Navegando);

    // Finished as the rules finish it (vendaexp_test pins the instalments and the stock).
    const int id = escalar("Select Max(Id) From TbCom").toInt();
    EXPECT_EQ(escalar("Select First 1 Status From TbComSt Where Fk = :ID Order By Id Desc", id).toString(), "EN");
    EXPECT_EQ(escalar("Select Sum(EstAtual) From TbItensEst Where IdEmpresa = :ID", empresa).value<Decimal>(), Decimal("-3.0000"));
    EXPECT_EQ(escalar("Select TotalPago From TbCom Where Id = :ID", id).value<Decimal>(), Decimal("50.00"));
    EXPECT_EQ(f->findChild<QLabel *>("LbTroco")->text(), "R$ 10,00");  // the saved sale shows its change
    EXPECT_EQ(f->findChild<QLabel *>("LbLegenda")->text(), QString::asprintf("Nova Venda Expressa (%06d)", id));
}

TEST_F(TVendaExpTest, CancelarTracesTheOperationAndOffersANewSale)
{
    TVendaExp f;
    f.definirMenu("Comercial", kClasseVendaExpressa);
    f.BtIncluirClick();
    teclar(f.campoCodigo(), "M25");
    msg.respostas = {QMessageBox::Yes};
    f.BtCancelarClick();
    EXPECT_TRUE(tabs.trilha().contains("Operação Cancelada - nova"));
    EXPECT_EQ(msg.perguntas, QStringList{"Deseja iniciar uma nova Venda Expressa?"});
    EXPECT_EQ(f.estado(), FormCadastro::Estado::Incluindo);
    EXPECT_EQ(f.gradeLinhas()->model()->rowCount(), 0);
    EXPECT_EQ(escalar("Select Count(*) From TbCom").toInt(), 0);
    f.BtCancelarClick();  // answered no: back to the list
    EXPECT_EQ(f.estado(), FormCadastro::Estado::Navegando);
}

} // namespace
