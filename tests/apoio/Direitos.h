#pragma once
// A user of a level of their own holding only the named operations of one screen, and an
// employee (the responsible of approvals and deliveries) unless told otherwise.

#include "acesso/Permissoes.h"
#include "acesso/Usuarios.h"
#include "apoio/BancoTeste.h"

namespace teste {

inline orb::Sessao usuarioCom(db::Transacao &t, const QString &menu, const QString &modulo, const QStringList &todas,
                              const QStringList &permitidas, const QString &login = QStringLiteral("caixa1"))
{
    using namespace orb;
    sincronizarCatalogo(t, {{menu + "1", menu, {{modulo + "1", modulo, modulo}}}});
    for (const QString &op : todas)
        AtualizaAcessos(t, menu, modulo, op);
    const Sessao adm = administrador(t, "Sistema", "TNiveis");
    const int numero = 10 + db::escalar(t, "Select Count(*) From TbNiveis").toInt();
    const int nivel = salvarNivel(t, {0, numero, "NÍVEL " + login.toUpper()}, adm);
    completarArvoreNivel(t, nivel);
    for (const NoPermissao &m : lerArvoreNivel(t, nivel)) {
        gravarPermissao(t, m.tipo, m.id, true);
        for (const NoPermissao &mo : m.filhos) {
            gravarPermissao(t, mo.tipo, mo.id, true);
            for (const NoPermissao &op : mo.filhos)
                gravarPermissao(t, op.tipo, op.id, mo.texto == modulo && permitidas.contains(op.texto));
        }
    }
    Sessao s;
    s.idUsuario = salvarUsuario(t, {0, login, "USUARIO " + login.toUpper(), login.toUpper(), "segredo1", "U", nivel},
                                administrador(t, "Sistema", "TUsuarios"));
    db::executar(t, "Update TbCad Set Fu = 'S' Where Id = :ID", {{"ID", s.idUsuario}});
    s.usuario = login.toUpper();
    s.tipoUsuario = "U";
    s.idNivel = nivel;
    s.nivel = numero;
    s.menuAtual = menu;
    s.moduloAtual = modulo;
    return s;
}

} // namespace teste
