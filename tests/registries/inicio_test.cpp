// The home page's first steps, shown in the main window and followed as the user goes through them.

#include "FormsCadastros.h"
#include "acesso/Login.h"
#include "apoio/TabsTeste.h"
#include "principal/TMain.h"

#include <QDir>
#include <QLabel>
#include <gtest/gtest.h>

using namespace orb;

namespace {

struct InicioTest : teste::ComTabs {
    void executar(const QString &sql, const std::map<QString, QVariant> &p = {})
    {
        db::Transacao t(tabs.DbORB());
        db::executar(t, sql, p);
        t.commit();
    }
};

QString resumo(const TMain &w)
{
    QStringList r;
    for (const PrimeiroPasso &p : w.passosMostrados()) r << p.chave + (p.feito ? "+" : "-");
    return r.join(' ');
}

TEST_F(InicioTest, FirstStepsFollowTheInstallationUntilAllAreDone)
{
    registrarFormulariosNucleo(QDir::tempPath());
    registrarComercial();  // no stock screens here: the step of the first item is left out
    TMain w(QDir::tempPath(), [] { return false; });
    w.FormShow();
    auto *inicio = w.findChild<QLabel *>("TsInicio");
    ASSERT_TRUE(inicio);
    EXPECT_EQ(resumo(w), "empresa- senha- usuario- cliente-");
    EXPECT_TRUE(inicio->text().contains("Primeiros passos"));
    EXPECT_TRUE(inicio->text().contains("Sistema → Empresas")) << inicio->text().toStdString();

    // The link opens the screen; what is done there shows when the home page comes back.
    emit inicio->linkActivated("tela:TEmpresas");
    ASSERT_EQ(w.abas()->count(), 2);
    EXPECT_EQ(w.abas()->currentWidget()->objectName(), "TEmpresas");
    executar("update TbCad set Nome = 'Mercearia Boa Vista' where Id = (select IdEmpresa from TbParGlobais)");
    w.abas()->setCurrentIndex(0);
    EXPECT_EQ(resumo(w), "empresa+ senha- usuario- cliente-");

    executar("update TbCad set SenhaHash = :H, Senha = null where Usuario = 'ADMIN'", {{"H", hashSenha("nova123")}});
    executar("insert into TbCad (Codigo, Nome, Us, Usuario, Cl) values (10, 'Ana', 'S', 'ANA', 'S')");
    w.abas()->setCurrentIndex(1);
    w.abas()->setCurrentIndex(0);
    EXPECT_EQ(resumo(w), "");
    EXPECT_FALSE(inicio->text().contains("Primeiros passos"));
}

} // namespace
