#pragma once
// Bringing a database up to date: an ordered list of guarded changes, applied at every start.
// The list only grows; each change checks the database first, so a second run changes nothing.

#include "db/Banco.h"
#include "schema/Esquema.h"

#include <QHash>
#include <QSet>
#include <functional>
#include <stdexcept>

namespace esquema {

struct Mudanca {
    enum Tipo { CriarDominio, AdicionarColuna, CriarTabela, MudarDominio, RemoverColuna, CriarRestricao, CriarSequencia, CriarIndice, CriarIndiceUnico,
                CriarAviso, CarregarDados, CriarGatilho };
    Tipo tipo;
    QString tabela;     // or the domain / sequence name for CriarDominio / CriarSequencia
    QString coluna;     // or the constraint / index / trigger name for CriarRestricao / CriarIndice / CriarAviso /
                        // CriarGatilho;
                        // for CarregarDados the sequence that marks the step as done
    QString dominio;    // the column's domain; for MudarDominio the new one
    QString extra;      // AdicionarColuna: fill for existing rows ("SET ..."); CriarRestricao: its definition;
                        // CriarIndice, CriarIndiceUnico: its columns ("(FK)"); a unique index waits,
                        // at every start, until the rows hold no duplicate;
                        // MudarDominio and RemoverColuna: the domain the column had before;
                        // CarregarDados: what the rows are, for the description;
                        // CriarGatilho: the trigger's whole definition after its name
    // CarregarDados: writes the rows the table lacks. It runs once, in one transaction with the
    // creation of its mark, so a run cut short leaves neither rows nor mark behind.
    std::function<void(db::Transacao &)> dados;
    QString descricao() const;
};

// The changes in the order they are applied.
const QList<Mudanca> &mudancas();

// What the database has, read once and kept in step with the changes applied.
struct Metadados {
    QSet<QString> dominios, geradores, restricoes, gatilhos, tabelas, indices;
    QHash<QString, QHash<QString, QString>> colunas;  // table -> column -> domain (RDB$FIELD_SOURCE)
    QHash<QString, QHash<QString, int>> posicoes;     // table -> column -> position (0-based)

    static Metadados ler(db::Banco &b);
    bool temColuna(const QString &t, const QString &c) const { return colunas.value(t).contains(c); }
};

class ErroAtualizacao : public std::runtime_error {
public:
    ErroAtualizacao(const Mudanca &m, const QString &causa);
    const QString &mensagem() const { return mensagem_; }
    const Mudanca &mudanca() const { return m_; }

private:
    Mudanca m_;
    QString mensagem_;
};

using Progresso = std::function<void(int feito, int total, const QString &descricao)>;

// Applies one change when the database lacks it; true when something was done.
bool aplicar(db::Banco &b, Metadados &m, const Mudanca &mu);

// Applies every change the database lacks; returns the descriptions of those applied.
// Each change commits on its own; one that fails is rolled back and reported by ErroAtualizacao.
QStringList atualizar(db::Banco &b, const Progresso &progresso = {});

// The tables of an older installation: the current schema without what the changes add.
QList<Tabela> tabelasBase();

// Creates a database from nothing: WIN1252, the older installation's schema, the same upgrade
// older databases get, then the records a new installation needs to be used at once.
std::unique_ptr<db::Banco> criarBanco(const db::Conexao &c, const Progresso &progresso = {});
// Creates the older installation's schema only (for tools and tests of the upgrade).
void criarEsquemaBase(db::Banco &b);
// The first records of a new installation.
void semear(db::Banco &b);

// First password of the ADMIN user of a new installation.
inline constexpr const char *kSenhaInicialAdmin = "admin";
// The name a new installation gives its principal company until the user fills it in.
inline constexpr const char *kEmpresaNaoPreenchida = "SUA EMPRESA AQUI";

} // namespace esquema
