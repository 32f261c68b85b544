#pragma once
// A workstation of its own on a server's database: the data module attached, the administrator's
// session, message boxes recorded; all given back when it goes.

#include "acesso/Sessao.h"
#include "dados/Tabs.h"
#include "ui/Mensagens.h"

namespace teste {

struct Estacao {
    orb::TTabs tabs;
    orb::MensageiroTeste msg;

    explicit Estacao(const db::Conexao &c)
    {
        orb::Tabs = &tabs;
        tabs.conectar(db::Banco::abrir(c));
        orb::sessao().idUsuario = 2;
        orb::sessao().nivel = 999;
    }
    ~Estacao()
    {
        tabs.desconectar();
        orb::Tabs = nullptr;
        orb::sessao() = orb::Sessao{};
    }
};

// Runs `sql` in a transaction of its own on a new attachment, committed; the first column of the result.
inline QVariant gravar(const db::Conexao &c, const QString &sql, const std::map<QString, QVariant> &p = {})
{
    auto b = db::Banco::abrir(c);
    db::Transacao t(*b);
    const QVariant v = db::escalar(t, sql, p);
    t.commit();
    return v;
}

} // namespace teste
