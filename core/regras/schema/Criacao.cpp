#include "schema/Criacao.h"

#include "copias/Restauracao.h"
#include "copias/Servico.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace esquema {

using db::Banco;
using db::Transacao;

Criacao estadoCriacao(Banco &b)
{
    Transacao t(b, db::Modo::Leitura);
    const bool temMarca = db::escalar(t, "SELECT COUNT(*) FROM RDB$GENERATORS WHERE RDB$GENERATOR_NAME = :N",
                                      {{"N", kMarcaCriacao}}).toInt() > 0;
    if (temMarca) {
        const qint64 v = db::escalar(t, QString("SELECT GEN_ID(%1, 0) FROM RDB$DATABASE").arg(kMarcaCriacao)).toLongLong();
        return v >= 1 ? Criacao::Pronta : Criacao::Incompleta;
    }
    const int proprias = db::escalar(t, "SELECT COUNT(*) FROM RDB$RELATIONS WHERE COALESCE(RDB$SYSTEM_FLAG, 0) = 0").toInt();
    return proprias == 0 ? Criacao::Vazio : Criacao::Pronta;
}

namespace {

void ddl(Banco &b, const QString &comando)
{
    Transacao t(b);
    db::executar(t, comando);
    t.commit();
}

} // namespace

QStringList concluir(Banco &b, const Progresso &progresso)
{
    switch (estadoCriacao(b)) {
    case Criacao::Pronta:
        return atualizar(b, progresso);
    case Criacao::Vazio:
        // The mark comes first, in its own commit: from here on a rerun knows the database is ours to finish.
        ddl(b, QString("CREATE SEQUENCE %1").arg(kMarcaCriacao));
        [[fallthrough]];
    case Criacao::Incompleta:
        break;
    }
    criarEsquemaBase(b);
    QStringList feitas = atualizar(b, progresso);
    semear(b);
    // Only a database that ADMIN can log into gets the mark.
    const QStringList faltam = faltando(b);
    if (!faltam.isEmpty()) throw BancoIncompleto(faltam);
    Transacao t(b);
    db::escalar(t, QString("SELECT GEN_ID(%1, 1) FROM RDB$DATABASE").arg(kMarcaCriacao));
    t.commit();
    return feitas;
}

QStringList faltando(Banco &b)
{
    const Metadados m = Metadados::ler(b);
    QStringList r;
    for (const Tabela &t : tabelas()) {
        if (!m.tabelas.contains(t.nome)) {
            r << QString("tabela %1").arg(t.nome);
            continue;
        }
        if (!t.chave().isEmpty() && !m.restricoes.contains(t.restricaoChave()))
            r << QString("chave primária de %1").arg(t.nome);
        if (!t.temId()) continue;
        if (!m.geradores.contains(t.gerador())) r << QString("gerador %1").arg(t.gerador());
        if (!m.gatilhos.contains(t.gatilho())) r << QString("gatilho %1").arg(t.gatilho());
    }
    if (!m.tabelas.contains("TBCAD") || !m.tabelas.contains("TBPARGLOBAIS") || !m.tabelas.contains("TBNIVEIS")) return r;

    Transacao t(b, db::Modo::Leitura);
    const int parametros = db::escalar(t, "SELECT COUNT(*) FROM TBPARGLOBAIS").toInt();
    if (parametros == 0) r << "parâmetros globais (TBPARGLOBAIS)";
    else if (db::escalar(t, "SELECT COUNT(*) FROM TBPARGLOBAIS p JOIN TBCAD c ON c.ID = p.IDEMPRESA").toInt() == 0)
        r << "empresa principal";
    // What the login needs of an account: active, a password digest and a level.
    if (db::escalar(t, "SELECT COUNT(*) FROM TBCAD U JOIN TBNIVEIS N ON N.ID = U.IDNIVEL WHERE UPPER(U.USUARIO) = 'ADMIN' "
                       "AND U.US = 'S' AND COALESCE(U.SENHA, '') <> '' AND N.NIVEL IS NOT NULL").toInt() == 0)
        r << "usuário ADMIN ativo, com senha e nível";
    return r;
}

BancoIncompleto::BancoIncompleto(const QStringList &faltam)
    : std::runtime_error("banco de dados incompleto: " + faltam.join(", ").toStdString()), faltam_(faltam)
{
    // A database missing its whole structure would name hundreds of objects: the first ones say enough.
    constexpr int kMostrar = 10;
    QString lista = QStringList(faltam.mid(0, kMostrar)).join(", ");
    if (faltam.size() > kMostrar) lista += QString(" e mais %1 itens").arg(faltam.size() - kMostrar);
    mensagem_ = QString("O banco de dados está incompleto e não permite entrar no sistema.\nFalta: %1.\n"
                        "Execute novamente com --upgrade para completá-lo.").arg(lista);
}

bool arquivoLocal(const db::Conexao &c)
{
    // A server name comes before ":" (a Windows drive letter is one character).
    const int dp = int(c.banco.indexOf(':'));
    return dp < 0 || dp == 1;
}

QString caminhoEmConstrucao(const QString &banco) { return banco + ".criando"; }

namespace {

// Builds the whole database beside the target and renames it into place; a file left by a run
// that was cut short is discarded and built again.
QStringList criarLocal(const db::Conexao &c, const Progresso &progresso, const std::function<void()> &aposAbrir)
{
    QDir().mkpath(QFileInfo(c.banco).absolutePath());
    db::Conexao tmp = c;
    tmp.banco = caminhoEmConstrucao(c.banco);
    if (QFileInfo::exists(tmp.banco) && !QFile::remove(tmp.banco))
        throw std::runtime_error(
            QString("Não foi possível remover o arquivo de uma criação interrompida: %1").arg(tmp.banco).toStdString());
    QStringList feitas;
    {
        std::unique_ptr<Banco> b = Banco::criar(tmp);
        if (aposAbrir) aposAbrir();
        feitas = concluir(*b, progresso);
    }  // closed before the rename
    if (!QFile::rename(tmp.banco, c.banco))
        throw std::runtime_error(
            QString("Não foi possível renomear %1 para %2").arg(tmp.banco, c.banco).toStdString());
    return feitas;
}

} // namespace

std::unique_ptr<Banco> abrirAtualizado(const db::Conexao &c, QStringList &aplicadas, const Progresso &progresso,
                                       const std::function<void()> &aposAbrir)
{
    // A restore cut short puts the previous file back before anything looks for it.
    if (copias::alcancavel(c.banco)) copias::recuperarRestauracao(copias::caminhoNoServidor(c.banco));
    bool criado = false;
    if (arquivoLocal(c) && !QFileInfo::exists(c.banco)) {
        aplicadas << QString("Banco de dados criado: %1").arg(c.banco);
        aplicadas << criarLocal(c, progresso, aposAbrir);
        criado = true;
    }
    auto b = Banco::abrir(c);
    if (aposAbrir && !criado) aposAbrir();
    const Criacao antes = estadoCriacao(*b);
    const QStringList feitas = concluir(*b, progresso);
    if (antes != Criacao::Pronta) aplicadas << "Criação do banco de dados concluída";
    aplicadas << feitas;
    const QStringList faltam = faltando(*b);
    if (!faltam.isEmpty()) throw BancoIncompleto(faltam);
    return b;
}

} // namespace esquema
