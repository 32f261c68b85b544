// Two workstations on one record through a real server: the second Alterar is refused at once.

#include "Auxiliares.h"
#include "ui/FormRegistro.h"
#include "acesso/Sessao.h"
#include "EstacaoTeste.h"
#include "apoio/ServidorFirebird.h"
#include "dados/Tabs.h"
#include "ui/Mensagens.h"

#include <QLineEdit>
#include <QTableView>
#include <utility>
#include <gtest/gtest.h>

using namespace orb;

TEST(Travamento, SecondWorkstationIsToldTheRecordIsInUse)
{
    if (!teste::ServidorFirebird::disponivel()) GTEST_SKIP() << teste::ServidorFirebird::motivoIndisponivel().toStdString();
    teste::ServidorFirebird servidor;
    const db::Conexao c = servidor.bancoNovo();
    const int taubate = teste::gravar(c, "insert into TbCidades (Cidade, Uf, Cep) values ('Taubaté', 'SP', '12010000') returning Id").toInt();
    teste::Estacao estacao(c);  // this workstation
    auto &msg = estacao.msg;
    {
        FormRegistro primeira(*registroAuxiliar("TCidades"));
        auto escolher = [&] { primeira.grade()->setCurrentIndex(primeira.modelo()->index(primeira.modelo()->linhaDoId(taubate), 0)); };
        escolher();
        // The other workstation is changing the same city.
        auto outra = db::Banco::abrir(c);
        db::Transacao alterando(*outra);
        db::executar(alterando, "update TbCidades set Cidade = 'Taubaté (centro)' where Cep = '12010000'");

        primeira.BtAlterarClick();
        EXPECT_EQ(primeira.estado(), FormCadastro::Estado::Navegando);
        ASSERT_EQ(msg.avisos.size(), 1);
        EXPECT_TRUE(msg.avisos[0].contains("outra estação de trabalho")) << msg.avisos[0].toStdString();

        // Once the other one saves, this one edits the saved record: nothing was lost.
        alterando.commit();
        primeira.pesquisar();
        escolher();
        primeira.BtAlterarClick();
        ASSERT_EQ(primeira.estado(), FormCadastro::Estado::Alterando);
        EXPECT_EQ(primeira.findChild<QLineEdit *>("CIDADE")->text(), "Taubaté (centro)");
        primeira.BtCancelarClick();
    }
}

// While a record's details are being edited (nothing written yet), the record stays locked.
TEST(Travamento, RecordStaysLockedWhileItsDetailsAreEdited)
{
    if (!teste::ServidorFirebird::disponivel()) GTEST_SKIP() << teste::ServidorFirebird::motivoIndisponivel().toStdString();
    teste::ServidorFirebird servidor;
    const db::Conexao c = servidor.bancoNovo();
    const int funcao = teste::gravar(c, "insert into TbFuncoes (Funcao) values ('Balconista') returning Id").toInt();
    const int cidade = teste::gravar(c, "insert into TbCidades (Cidade, Uf, Cep) values ('Lorena', 'SP', '12600000') returning Id").toInt();
    teste::Estacao estacao(c);
    auto &msg = estacao.msg;
    {
        FormRegistro f(*registroAuxiliar("TFuncoes"));
        f.BtAlterarClick();
        ASSERT_EQ(f.estado(), FormCadastro::Estado::Alterando);
        bool respondido = false;  // the dialog is answered once; a refused row would be asked again
        f.editarDetalhe = [&](const DetalheRegistro &, Valores &v) {
            const QVariant valor = QVariant::fromValue(db::Decimal("1800"));
            v = {{"DATA", QDate(2026, 11, 1)}, {"IDCIDADE", cidade}, {"JORNADA", 44}, {"PISO", valor}, {"MEDIA", valor},
                 {"MAIOR", valor}, {"HORA", QVariant::fromValue(db::Decimal("8.18"))}};
            return !std::exchange(respondido, true);
        };
        f.BtIncluirDetalheClick(0);
        ASSERT_EQ(f.modeloDetalhe(0)->rowCount(), 1);

        auto outra = db::Banco::abrir(c);
        db::Transacao segunda(*outra);
        try {
            db::executar(segunda, "update TbFuncoes set Id = Id where Id = :ID", {{"ID", funcao}});
            FAIL() << "a segunda estação alterou o registro em edição";
        } catch (const db::ErroBanco &e) {
            EXPECT_EQ(e.tipo(), db::TipoErro::Conflito) << e.mensagem().toStdString();
        }
        segunda.rollback();
        f.BtSalvarClick();
        ASSERT_EQ(f.estado(), FormCadastro::Estado::Navegando) << msg.avisos.join(" | ").toStdString();
        db::Transacao l(*outra, db::Modo::Leitura);
        EXPECT_EQ(db::escalar(l, "select count(*) from TbFuncoesSal where Fk = :F", {{"F", funcao}}).toInt(), 1);
    }
}
