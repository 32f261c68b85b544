#include "acesso/Usuarios.h"

#include "acesso/Login.h"
#include "acesso/Permissoes.h"

namespace orb {

int salvarUsuario(db::Transacao &t, const DadosUsuario &u, const Sessao &atual)
{
    exigirOperacao(t, atual, u.id == 0 ? QStringLiteral("Incluir") : QStringLiteral("Alterar"));
    const QString login = u.usuario.trimmed().toUpper();
    if (login.isEmpty()) throw Recusa("Digite o nome de usuário primeiro!", "usuario");
    if (u.nome.trimmed().isEmpty()) throw Recusa("Digite o nome primeiro!", "nome");
    if (u.id == 0 && u.senha.isEmpty()) throw Recusa("Digite a senha primeiro!", "senha");
    if (!u.senha.isEmpty()) validarSenhaNova(u.senha, "senha");
    if (u.idNivel == 0) throw Recusa("Selecione o nível de acesso primeiro!", "nivel");
    if (!QStringList{"A", "S", "U", "D"}.contains(u.tipoUsuario)) throw Recusa("Selecione o tipo de usuário primeiro!", "tipo");
    // Who may create whom: administrators ("A") only by "A" or "D"; supervisors ("S") by "A", "S" or "D".
    const bool podeA = atual.tipoUsuario == "A" || atual.tipoUsuario == "D";
    const bool podeS = podeA || atual.tipoUsuario == "S";
    if ((u.tipoUsuario == "A" && !podeA) || (u.tipoUsuario == "S" && !podeS) || (u.tipoUsuario == "D" && atual.tipoUsuario != "D"))
        throw Recusa("Você não tem permissão para criar usuários deste tipo!", "tipo");
    const QVariant outro = db::escalar(t, "Select Id From TbCad Where (Us = 'S') and (Upper(Usuario) = :U) and (Id <> :ID)",
                                       {{"U", login}, {"ID", u.id}});
    if (!outro.isNull()) throw Recusa("Nome de usuário já existente!", "usuario");
    // The account's reach is the levels' business, and never one's own to raise.
    const bool proprio = u.id != 0 && u.id == atual.idUsuario;
    bool alcance = u.id == 0 || (!u.senha.isEmpty() && !proprio);
    if (u.id != 0) {
        db::Consulta q(t, "Select IdNivel, TipoUsuario From TbCad Where Id = :ID");
        q.bind("ID", u.id).executar();
        if (q.proxima() && (q.valor(0).toInt() != u.idNivel || q.valor(1).toString().trimmed() != u.tipoUsuario)) {
            if (proprio) throw Recusa(kSemPermissao, q.valor(0).toInt() != u.idNivel ? "nivel" : "tipo");
            alcance = true;
        }
    }
    if (alcance) exigirDireitoNiveis(t, atual);

    std::map<QString, QVariant> p = {{"USUARIO", login}, {"NOME", u.nome.trimmed()}, {"APELIDO", u.apelido.trimmed()},
                                     {"TIPO", u.tipoUsuario}, {"NIVEL", u.idNivel}};
    if (u.id == 0) {
        const int id = db::escalar(t, "Insert Into TbCad (Usuario, Nome, RazaoSocial, Apelido, TipoUsuario, IdNivel, Us, "
                                      "Pessoa, DataCadastro) Values (:USUARIO, :NOME, :NOME, :APELIDO, :TIPO, :NIVEL, 'S', "
                                      "'F', Current_Timestamp) Returning Id", p).toInt();
        gravarSenha(t, id, u.senha, false);
        return id;
    }
    p["ID"] = u.id;
    db::executar(t, "Update TbCad Set Usuario = :USUARIO, Nome = :NOME, Apelido = :APELIDO, TipoUsuario = :TIPO, "
                    "IdNivel = :NIVEL Where Id = :ID", p);
    if (!u.senha.isEmpty()) gravarSenha(t, u.id, u.senha, u.id == atual.idUsuario);
    return u.id;
}

void excluirUsuario(db::Transacao &t, int id, const Sessao &atual)
{
    exigirOperacao(t, atual, QStringLiteral("Excluir"));
    exigirDireitoNiveis(t, atual);
    if (id == atual.idUsuario) throw Recusa(kSemPermissao);
    if (db::escalar(t, "Select Usuario From TbCad Where Id = :ID", {{"ID", id}}).toString() == "ADMIN")
        throw Recusa("O usuário ADMIN não pode ser excluído!");
    db::executar(t, "Update TbCad Set Us = 'N' Where Id = :ID", {{"ID", id}});
}

int salvarNivel(db::Transacao &t, const DadosNivel &n, const Sessao &atual)
{
    exigirOperacao(t, atual, kMenuNiveis, kModuloNiveis, n.id == 0 ? QStringLiteral("Incluir") : QStringLiteral("Alterar"));
    if (n.id != 0 && n.id == nivelDoUsuario(t, atual.idUsuario)
        && db::escalar(t, "Select Nivel From TbNiveis Where Id = :ID", {{"ID", n.id}}).toInt() != n.nivel)
        throw Recusa(kSemPermissao, "nivel");
    if (n.nivel <= 0) throw Recusa("Digite o número do nível primeiro!", "nivel");
    if (n.descricao.trimmed().isEmpty()) throw Recusa("Digite a descrição do nível primeiro!", "descricao");
    if (!db::escalar(t, "Select Id From TbNiveis Where Nivel = :N and Id <> :ID", {{"N", n.nivel}, {"ID", n.id}}).isNull())
        throw Recusa("Número de nível já existente!", "nivel");
    if (n.id == 0)
        return db::escalar(t, "Insert Into TbNiveis (Nivel, Descricao) Values (:N, :D) Returning Id",
                           {{"N", n.nivel}, {"D", n.descricao.trimmed()}}).toInt();
    db::executar(t, "Update TbNiveis Set Nivel = :N, Descricao = :D Where Id = :ID",
                 {{"N", n.nivel}, {"D", n.descricao.trimmed()}, {"ID", n.id}});
    return n.id;
}

void excluirNivel(db::Transacao &t, int id, const Sessao &atual)
{
    exigirOperacao(t, atual, kMenuNiveis, kModuloNiveis, QStringLiteral("Excluir"));
    if (db::escalar(t, "Select Count(*) From TbCad Where IdNivel = :ID and Us = 'S'", {{"ID", id}}).toInt() > 0)
        throw Recusa("Este nível não pode ser excluído, pois existem usuários nele!");
    db::executar(t, "Delete From TbNiveisMenusModOp Where Fk In (Select Nmo.Id From TbNiveisMenusMod Nmo "
                    "Join TbNiveisMenus Nm On Nm.Id = Nmo.Fk Where Nm.Fk = :ID)", {{"ID", id}});
    db::executar(t, "Delete From TbNiveisMenusMod Where Fk In (Select Id From TbNiveisMenus Where Fk = :ID)", {{"ID", id}});
    db::executar(t, "Delete From TbNiveisMenus Where Fk = :ID", {{"ID", id}});
    db::executar(t, "Delete From TbNiveis Where Id = :ID", {{"ID", id}});
}

} // namespace orb
