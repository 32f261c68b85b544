#include "principal/PrimeirosPassos.h"

#include "acesso/Login.h"
#include "schema/Atualizacao.h"

#include <QHash>
#include <QMutex>

namespace orb {

namespace {

bool existe(db::Transacao &t, const QString &sql) { return !db::escalar(t, sql).isNull(); }

// The strong hash is slow on purpose, and the home page asks at every visit: the answer for one
// stored hash never changes, so it is kept.
bool senhaInicial(const QString &hash, const QString &md5)
{
    static QMutex m;
    static QHash<QString, bool> respostas;
    const QString chave = hash + '\n' + md5;
    QMutexLocker l(&m);
    auto it = respostas.constFind(chave);
    if (it != respostas.cend()) return *it;
    const bool r = conferirSenha(QString::fromLatin1(esquema::kSenhaInicialAdmin), hash, md5);
    if (respostas.size() > 16) respostas.clear();
    respostas.insert(chave, r);
    return r;
}

} // namespace

QList<PrimeiroPasso> primeirosPassos(db::Transacao &t)
{
    const QString semNome = QLatin1String(esquema::kEmpresaNaoPreenchida);
    const QString empresa =
        db::escalar(t, "Select First 1 C.Nome From TbParGlobais P Join TbCad C On (C.Id = P.IdEmpresa) Order By P.Id")
            .toString().trimmed();

    // Still the first password: the login asks for a new one, but a database may come with ADMIN untouched.
    bool inicial = false;
    {
        db::Consulta q(t, "Select First 1 SenhaHash, Senha From TbCad Where (Upper(Usuario) = 'ADMIN') and (Us = 'S') Order By Id");
        q.executar();
        if (q.proxima()) inicial = senhaInicial(q.valor(0).toString(), q.valor(1).toString());
    }

    return {
        {"empresa", QStringLiteral("Coloque o nome da sua empresa no lugar de \"%1\"").arg(semNome), {"TEmpresas"},
         QStringLiteral("F3 altera, F10 salva"),
         !empresa.isEmpty() && empresa.compare(semNome, Qt::CaseInsensitive) != 0},
        {"senha", QStringLiteral("Troque a senha inicial do ADMIN"), {"TUsuarios"},
         QStringLiteral("escolha o ADMIN, F3, digite a senha nova, F10"), !inicial},
        {"usuario", QStringLiteral("Cadastre um usuário para cada pessoa que vai usar o programa"), {"TUsuarios"},
         QStringLiteral("F2 inclui, F10 salva"),
         existe(t, "Select First 1 Id From TbCad Where (Us = 'S') and (Upper(Coalesce(Usuario, '')) <> 'ADMIN')")},
        {"cliente", QStringLiteral("Cadastre o primeiro cliente"), {"TClientes", "TProprietarios", "TCadComerciais"},
         QStringLiteral("F2 inclui, F10 salva"), existe(t, "Select First 1 Id From TbCad Where Cl = 'S'")},
        {"item", QStringLiteral("Cadastre a primeira mercadoria ou serviço"), {"TEstoque"},
         QStringLiteral("F2 inclui, F10 salva"), existe(t, "Select First 1 Id From TbItens")},
    };
}

} // namespace orb
