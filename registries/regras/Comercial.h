#pragma once
// The commercial registry: one table, TBCAD, for every person and company (customers, suppliers,
// carriers, sellers, employees, own companies, physicians, users...), each role a flag column.
// Plain routines the form calls and the tests exercise; refusals are thrown as Recusa.

#include "acesso/Sessao.h"
#include "db/Banco.h"
#include "registro/Registro.h"
#include "Recusa.h"

#include <QDate>
#include <QDateTime>
#include <QStringList>
#include <map>

namespace orb {

// --- Documents ------------------------------------------------------------------------------

// Digits only: "123.456.789-09" -> "12345678909".
QString soDigitos(const QString &s);
// Modulus-11 check digits over the digits of the text; 11 (CPF) or 14 (CNPJ) digits, not all equal.
bool cpfValido(const QString &cpf);
bool cnpjValido(const QString &cnpj);

// --- Modes of the form ------------------------------------------------------------------------

struct ModoCadastro {
    QString codigo;         // the form's mode code: "Cl", "Fo", ... or "" (every record)
    QString flag;           // role column that filters and is ticked on insert; empty in the general mode
    QString titulo;         // caption
    QString pessoaInicial;  // PESSOA of a new record: "F" or "J"
};

// Throws std::invalid_argument for a code the form does not know.
ModoCadastro modoCadastro(const QString &codigo);

// Every role flag of TBCAD (US, the user account, is not a role).
inline const QStringList kPapeis = {"CL", "MD", "FO", "TR", "RE", "FU", "EM", "LA", "CV", "CO"};

// The general mode's switches that widen the list, with the role each one adds.
inline const QList<QPair<QString, QString>> kVerPapeis = {
    {QStringLiteral("Ver Clientes"), QStringLiteral("CL")},
    {QStringLiteral("Ver Fornecedores"), QStringLiteral("FO")},
    {QStringLiteral("Ver Transportadoras"), QStringLiteral("TR")},
    {QStringLiteral("Ver Vendedores"), QStringLiteral("RE")}};

// --- Browse ------------------------------------------------------------------------------------

// The search orders, as the combo offers them.
inline const QStringList kOrdensCadastro = {
    QStringLiteral("CÓDIGO"), QStringLiteral("NOME"), QStringLiteral("RAZÃO SOCIAL"), QStringLiteral("APELIDO"),
    QStringLiteral("IDENTIDADE"), QStringLiteral("CPF"), QStringLiteral("CNPJ"), QStringLiteral("INSCR. ESTADUAL"),
    QStringLiteral("INSCR. MUNICIPAL"), QStringLiteral("TELEFONE")};

struct BuscaCadastro {
    QString sql;                               // named parameters only (":HOJE", ":TEXTO", ...)
    std::map<QString, QVariant> parametros;    // ready for db::Consulta::bind
};

// The browse query for a mode, a search order (one of kOrdensCadastro; unknown = "NOME") and the
// typed text (empty = no search clause). `ver` holds the ticked switches, by caption of kVerPapeis
// or by flag. `hoje` decides the current situation (invalid = today's date).
BuscaCadastro sqlBusca(const ModoCadastro &m, const QString &ordem, const QString &texto,
                       const QList<QString> &ver = {}, const QDate &hoje = QDate(), Busca busca = Busca::Trecho);

// --- Messages ------------------------------------------------------------------------------------

inline const QString kPerguntaExcluirCadastro = QStringLiteral("Tem certeza que deseja excluir este Cadastro?");
inline const QString kCpfExistente = QStringLiteral("CPF já existente!");
inline const QString kCnpjExistente = QStringLiteral("CNPJ já existente!");
inline const QString kCodigoExistente = QStringLiteral("Código já existente!");
inline const QString kCamposFaltando = QStringLiteral(
    "As informações a seguir devem preenchidas para que o cadastro possa ser salvo!\r"
    "Verifique os campos e tente salvar novamente:\r");
inline const QString kTipoDeCadastro = QStringLiteral("Tipo de Cadastro: Cliente, Fornecedor, Transportadora e/ou Vendedor");
inline const QString kDefinaUsuarioSenha = QStringLiteral("Defina o nome de usuário e senha de acesso ao sistema!");
inline const QString kSemPermissaoTipoUsuario = QStringLiteral("Você não tem permissão para criar usuários deste tipo!");
inline const QString kSenhaMaxima = QStringLiteral("A senha deve conter no máximo 10 caracteres");
inline const QString kUsuarioRepetido = QStringLiteral("Nome de usuário já existente!");

// --- New record, typing checks ---------------------------------------------------------------

// Defaults of a record inserted in a mode: next CODIGO, DATACADASTRO, role flags, PESSOA, the
// default company's city and CEP.
Valores novoCadastro(db::Transacao &t, const ModoCadastro &m, const QDateTime &agora);
// The agenda row a new physician starts with (TBCADMEDSIT columns); DIASEMANA 0 = every day.
Valores agendaPadrao(const QDate &hoje, const Sessao &atual);

// Another record (not `id`) with the same CPF or CNPJ: "CPF já existente!" / "CNPJ já existente!";
// empty when none or when the value is blank. `coluna` is "CPF" or "CNPJ".
QString documentoRepetido(db::Transacao &t, int id, const QString &coluna, const QString &valor);
// Another record with this CODIGO.
bool codigoRepetido(db::Transacao &t, int id, int codigo);

// --- Save ---------------------------------------------------------------------------------------

// Every missing field of a save at once: `campos` are the columns (or detail tables) to paint,
// `linhas` the lines of the message, in check order; `campo` is the first one.
struct RecusaCampos : Recusa {
    QStringList campos;
    QStringList linhas;
    RecusaCampos(const QStringList &c, const QStringList &l)
        : Recusa(kCamposFaltando + l.join('\r'), c.value(0)), campos(c), linhas(l) {}
};

// Keys of `v` that carry a password typed on this edit (plain text); absent or empty = unchanged.
// SENHA and SENHAWEB themselves are never taken from `v`: the stored hash stays unless these come.
inline const QString kNovaSenha = QStringLiteral("NOVASENHA");
inline const QString kNovaSenhaWeb = QStringLiteral("NOVASENHAWEB");

// Checks and writes a record (id 0 = new) with its situations as this edit holds them (TBCADSIT:
// rows kept, typed and removed) and, in physician mode, its agenda rows (TBCADMEDSIT; a row with
// ID is updated, one without is inserted). Throws RecusaCampos for missing fields, Recusa for user data; nothing
// is written when refused. Returns the record's ID.
int salvarCadastro(db::Transacao &t, int id, Valores v, const ModoCadastro &m, const EdicaoDetalhe &situacoes,
                   const Sessao &atual, const QDate &hoje, const QList<Valores> &agenda = {});

// --- Delete, situation ----------------------------------------------------------------------------

// Refuses while the record is in use (in the order the form tells them), else removes it with its details.
void excluirCadastro(db::Transacao &t, int id, const Sessao &atual);

// SITUACAO of the latest TBCADSIT row dated `hoje` or earlier (later rows are not current yet); empty when none.
QString situacaoAtual(db::Transacao &t, int id, const QDate &hoje);

} // namespace orb
