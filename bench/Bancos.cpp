#include "Bancos.h"

#include "schema/Atualizacao.h"

#include <QTemporaryDir>

namespace bench {

QString arquivoDaExecucao(const QString &nome)
{
    static QTemporaryDir pasta;
    return pasta.filePath(nome);
}

std::unique_ptr<db::Banco> bancoNovo(const QString &nome)
{
    db::Conexao c;
    c.banco = arquivoDaExecucao(nome + ".fdb");
    return esquema::criarBanco(c);
}

orb::Sessao administrador(db::Transacao &t, const QString &menu, const QString &modulo)
{
    db::Consulta q(t, "Select U.Id, U.IdNivel, N.Nivel From TbCad U Join TbNiveis N On N.Id = U.IdNivel Where U.Usuario = 'ADMIN'");
    q.executar();
    q.proxima();
    orb::Sessao s;
    s.idUsuario = q[0].toInt();
    s.usuario = "ADMIN";
    s.tipoUsuario = "D";
    s.idNivel = q[1].toInt();
    s.nivel = q[2].toInt();
    s.menuAtual = menu;
    s.moduloAtual = modulo;
    return s;
}

} // namespace bench
