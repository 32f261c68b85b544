#include "acesso/Acesso.h"

#include "dados/Tabs.h"
#include "ui/Mensagens.h"

#include <QCoreApplication>

namespace orb {

namespace {

std::function<void()> encerrar = [] {
    if (Tabs) Tabs->RollbackTransacoes();
    QCoreApplication::exit(1);
};

// Tells a thrown-out user why, cancels pending edits and ends the program.
bool responder(Veredito v)
{
    switch (v) {
    case Veredito::Permitido: return true;
    case Veredito::Negado: return false;
    case Veredito::SemCadastro: Atencao(kAcessoIndefinido); break;
    case Veredito::AcessoRetirado: Atencao(kAcessoRetirado); break;
    }
    encerrar();
    return false;
}

} // namespace

void definirEncerramento(std::function<void()> f) { encerrar = std::move(f); }

bool AcessoModulos(const QString &Operacao)
{
    Tabs->Deb("function TTabs.AcessoModulos(Operacao: String): Boolean");
    Sessao &s = sessao();
    return responder(verificarOperacao(Tabs->DbORB(), s, s.menuAtual, s.moduloAtual, Operacao));
}

bool AcessoModulosExt(const QString &Menu, const QString &Modulo, const QString &Operacao)
{
    Tabs->Deb("function TTabs.AcessoModulosExt(Menu, Modulo, Operacao: String): Boolean");
    return responder(verificarOperacaoExt(Tabs->DbORB(), sessao(), Menu, Modulo, Operacao));
}

bool AcessoSubModulos(const QString &Menu, const QString &Modulo)
{
    Tabs->Deb("function TTabs.AcessoSubModulos(Menu, Modulo: String): Boolean");
    return responder(verificarModulo(Tabs->DbORB(), sessao(), Menu, Modulo));
}

void SemPermissao(const QString &texto) { Atencao(texto); }

} // namespace orb
