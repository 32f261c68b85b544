// What a clumsy user types into real screens: each wrong entry ends in the message of its kind,
// nothing is written, and the screen goes on working.

#include "Auxiliares.h"
#include "apoio/TabsTeste.h"
#include "ui/FormRegistro.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTableView>
#include <QTest>

using namespace orb;

namespace {

struct EntradaTest : teste::ComTabs {
    int contar(const QString &tabela)
    {
        db::Transacao t(tabs.DbORB(), db::Modo::Leitura);
        return db::escalar(t, "Select Count(*) From " + tabela).toInt();
    }
    // Incluir with every field holding something acceptable, as a careful user leaves it.
    static void preencher(FormRegistro &f)
    {
        f.BtIncluirClick();
        for (const CampoForm &c : f.declaracao().campos) {
            QWidget *w = f.findChild<QWidget *>(c.coluna);
            if (auto *e = qobject_cast<QLineEdit *>(w))
                e->setText(c.tipo == CampoForm::Decimal || c.tipo == CampoForm::Inteiro ? "1" : "Texto");
            else if (auto *cb = qobject_cast<QComboBox *>(w))
                cb->setCurrentIndex(1);
        }
    }
};

TEST_F(EntradaTest, WrongEntriesAreToldAndNothingIsWritten)
{
    const struct { const char *caso, *classe, *tabela, *campo; QString texto, mensagem; } casos[] = {
        // Two decimals leave the column 17 digits before the comma.
        {"18 dígitos", "TIcms", "TBICMS", "PERCICMSO", "123456789012345678", "Valor inválido!"},
        {"19 dígitos", "TIcms", "TBICMS", "PERCICMSD", "1.234.567.890.123.456.789", "Valor inválido!"},
        {"ponto como decimal", "TIcms", "TBICMS", "PERCICMSD", "12.5", "Valor inválido!"},
        // Told with the field's name, and the field gets the focus.
        {"emoji", "TTextos", "TBITENS", "DESCRICAO", QString::fromUtf8("Orçamento \xF0\x9F\x98\x80"),
         "O texto informado no campo \"Título\" contém caracteres que o banco de dados não aceita. Retire os símbolos "
         "especiais e tente novamente."},
    };
    for (const auto &c : casos) {
        SCOPED_TRACE(c.caso);
        FormRegistro f(*registroAuxiliar(c.classe));
        const int antes = contar(c.tabela);
        preencher(f);
        f.findChild<QLineEdit *>(c.campo)->setText(c.texto);
        msg.avisos.clear();
        f.BtSalvarClick();
        EXPECT_EQ(msg.avisos, QStringList{c.mensagem});
        EXPECT_EQ(f.estado(), FormCadastro::Estado::Incluindo);  // what was typed stays to be corrected
        EXPECT_EQ(contar(c.tabela), antes);
        // Corrected, it saves at once.
        f.findChild<QLineEdit *>(c.campo)->setText(c.classe == QString("TIcms") ? "12,5" : "Correto");
        f.BtSalvarClick();
        EXPECT_EQ(f.estado(), FormCadastro::Estado::Navegando);
        EXPECT_EQ(contar(c.tabela), antes + 1);
    }
}

// A long memo is stored and read back whole; a search text longer than its column finds nothing,
// says so on the status line without a box, and the next search works.
TEST_F(EntradaTest, LongTextsInMemosAndSearches)
{
    FormRegistro textos(*registroAuxiliar("TTextos"));
    preencher(textos);
    const QString longo = QString("Cláusula ").repeated(7778);  // 70,002 characters
    textos.findChild<QPlainTextEdit *>("DESCRICAODET")->setPlainText(longo);
    textos.BtSalvarClick();
    ASSERT_EQ(textos.estado(), FormCadastro::Estado::Navegando) << msg.avisos.join(" | ").toStdString();
    {
        db::Transacao t(tabs.DbORB(), db::Modo::Leitura);
        EXPECT_EQ(db::escalar(t, "Select DescricaoDet From TbItens Where Tipo = 'T'").toString(), longo);
    }

    FormRegistro cidades(*registroAuxiliar("TCidades"));
    preencher(cidades);
    cidades.findChild<QLineEdit *>("CIDADE")->setText("Vila Nova do Taubaté");  // no municipality has this name
    cidades.findChild<QLineEdit *>("CEP")->setText("12010000");
    cidades.BtSalvarClick();
    ASSERT_EQ(cidades.estado(), FormCadastro::Estado::Navegando) << msg.avisos.join(" | ").toStdString();
    msg.avisos.clear();
    auto *busca = cidades.findChild<QLineEdit *>("EdBusca");
    busca->setText(QString(300, 'T'));
    cidades.pesquisar();
    EXPECT_TRUE(cidades.findChild<QLabel *>("LbStatus")->text().contains("nenhum registro"));
    EXPECT_TRUE(msg.avisos.isEmpty());
    busca->setText("Vila Nova do T");
    cidades.pesquisar();
    EXPECT_EQ(cidades.modelo()->valor(cidades.grade()->currentIndex().row(), "CIDADE").toString(), "Vila Nova do Taubaté");
    EXPECT_FALSE(cidades.findChild<QLabel *>("LbStatus")->text().contains("nenhum registro"));
    // Enter looks for the text anywhere, and an overlong one finds nothing without a box.
    busca->setText(QString(300, 'T'));
    QTest::keyClick(busca, Qt::Key_Return);
    EXPECT_EQ(cidades.modelo()->rowCount(), 0);
    EXPECT_TRUE(cidades.findChild<QLabel *>("LbStatus")->text().contains("nenhum registro"));
    EXPECT_TRUE(msg.avisos.isEmpty());
}

} // namespace
