// Rules of the commercial registry (TBCAD): documents, modes, the browse query, defaults,
// the save with its collected refusals, and the delete with its refusals in order.

#include "Comercial.h"

#include "acesso/Login.h"
#include "acesso/Permissoes.h"

#include <algorithm>
#include <stdexcept>

namespace orb {

namespace {

// Columns of TBCAD the save may write (everything but ID and the password hashes, which only
// change through a typed password). Nothing outside this list reaches the SQL text.
const QStringList kColunasCad = {
    "NOME", "APELIDO", "TELEFONE1", "TELEFONE2", "TELEFONE3", "RADIO", "EMAIL", "RAZAOSOCIAL", "ENDERECO", "NUMERO",
    "COMPLEMENTO", "BAIRRO", "IDCIDADE", "CEP", "SITE", "CNPJ", "INSCRESTADUAL", "INSCRMUNICIPAL", "FOTO", "TIPOFOTO",
    "USUARIO", "IDNIVEL", "TIPOUSUARIO", "CL", "MD", "FO", "RE", "TR", "EM", "FU", "CO", "US", "CODIGO", "PESSOA",
    "LOCALWEB", "IDOPTEL1", "OBSTEL1", "IDOPTEL2", "OBSTEL2", "IDOPTEL3", "OBSTEL3", "HORAINICIAL1", "HORAFINAL1",
    "HORAINICIAL2", "HORAFINAL2", "TIPOCLIENTE", "SEXO", "TIPOID", "NUMID", "DATAEXPID", "ORGEXPID", "UFEXPID",
    "DATANASC", "LEMBRARANIV", "PAI", "MAE", "CPF", "IDCIDADENAT", "CTPS", "SERIECTPS", "UFCTPS", "PIS", "ESTADOCIVIL",
    "CONJUGE", "SOCIO1", "CPFSOCIO1", "SOCIO2", "CPFSOCIO2", "LOCALTRABALHO", "TELTRABALHO", "PROFISSAO", "REFCOM1",
    "TELREFCOM1", "CONTATOREFCOM1", "REFCOM2", "TELREFCOM2", "CONTATOREFCOM2", "REFCOM3", "TELREFCOM3",
    "CONTATOREFCOM3", "RELACDESDE", "DATACADASTRO", "OBSERVACOES", "CRV", "LA", "CV"};

// Kept as digits only, as the masks of the form give them.
const QStringList kColunasDigitos = {"CPF", "CNPJ", "CPFSOCIO1", "CPFSOCIO2", "CEP", "TELEFONE1", "TELEFONE2",
                                     "TELEFONE3", "TELTRABALHO", "TELREFCOM1", "TELREFCOM2", "TELREFCOM3"};

// A record never keeps data of the other person type.
const QStringList kSoPessoaFisica = {"TIPOID", "NUMID", "PAI", "MAE", "IDCIDADENAT", "DATANASC", "CPF",
                                     "SEXO", "ESTADOCIVIL", "CONJUGE", "PROFISSAO", "LOCALTRABALHO", "TELTRABALHO"};
const QStringList kSoPessoaJuridica = {"RAZAOSOCIAL", "CNPJ", "INSCRESTADUAL", "SOCIO1", "CPFSOCIO1", "SOCIO2", "CPFSOCIO2"};

const QStringList kColunasSit = {"SITUACAO", "DATA", "MOTIVO", "IDREP", "PERCCOMVAT", "PERCCOMVVAR",
                                 "PERCCOMSAT", "PERCCOMSVAR", "LIMCREDITO", "IDRESP"};

const QStringList kColunasAgenda = [] {
    QStringList r = {"EMISSAO", "DATA", "IDCONSULTORIO", "DIASEMANA", "SESSOESPRIMATEND", "IDRESP"};
    for (const char *dia : {"", "FER", "SEG", "TER", "QUA", "QUI", "SEX", "SAB"})
        for (const char *h : {"HORAINICIO", "HORASAIDAINT", "HORARETINT", "HORATERMINO", "HORATEMPO"})
            r << QString(h) + dia;
    return r;
}();

// Tables hanging from TBCAD by FK, removed with the record.
const QStringList kDetalhes = {"TBCADSIT", "TBCADCONT", "TBCADESPEC", "TBCADEMPSIT", "TBCADFUNCSIT",
                               "TBCADMEDSIT", "TBCADEQUIP", "TBCADCARTOES", "TBCADFUNCOC"};

// Strips what the document masks add; anything else (a letter) makes the text no document.
bool digitosDoDocumento(const QString &texto, int tamanho, QList<int> &d)
{
    for (const QChar c : texto) {
        if (c.isDigit()) d << c.digitValue();
        else if (c != '.' && c != '-' && c != '/' && !c.isSpace()) return false;
    }
    if (d.size() != tamanho) return false;
    return std::any_of(d.begin(), d.end(), [&](int x) { return x != d.first(); });
}

int digitoMod11(const QList<int> &d, const QList<int> &pesos)
{
    int soma = 0;
    for (int i = 0; i < pesos.size(); ++i) soma += d[i] * pesos[i];
    const int r = soma % 11;
    return r < 2 ? 0 : 11 - r;
}

QString texto(const Valores &v, const QString &c)
{
    auto i = v.find(c);
    return i == v.end() || i->second.isNull() ? QString() : i->second.toString().trimmed();
}

bool marcado(const Valores &v, const QString &c) { return texto(v, c).toUpper() == "S"; }

QString colunaPapel(const QString &flag) { return "C." + flag.left(1) + flag.mid(1).toLower(); }

Valores lerLinha(db::Consulta &q)
{
    Valores r;
    for (int i = 0; i < q.colunas(); ++i) r[q.nomeColuna(i)] = q.valor(i);
    return r;
}

// Inserts a detail row (no ID) or updates it (with ID) over the columns of a fixed list.
void gravarDetalhe(db::Transacao &t, const QString &tabela, const QStringList &colunas, int fk, const Valores &linha)
{
    QStringList usadas;
    std::map<QString, QVariant> p{{"FK", fk}};
    for (const QString &c : colunas)
        if (linha.count(c)) {
            usadas << c;
            p[c] = linha.at(c);
        }
    const int idLinha = linha.count("ID") ? linha.at("ID").toInt() : 0;
    if (idLinha > 0) {
        if (usadas.isEmpty()) return;
        QStringList sets;
        for (const QString &c : usadas) sets << c + " = :" + c;
        p["ID"] = idLinha;
        db::executar(t, "Update " + tabela + " Set " + sets.join(", ") + " Where (Id = :ID) and (Fk = :FK)", p);
        logRegistro(t, tabela, "ID", idLinha, kAlteracao);
        return;
    }
    usadas << "FK";
    const int novo = db::escalar(t, "Insert Into " + tabela + " (" + usadas.join(", ") + ") Values (:" + usadas.join(", :") +
                                        ") Returning Id", p).toInt();
    logRegistro(t, tabela, "ID", novo, kInclusao);
}

bool existe(db::Transacao &t, const QString &sql, int id)
{
    return !db::escalar(t, sql, {{"ID", id}}).isNull();
}

} // namespace

// --- Documents ----------------------------------------------------------------------------------

QString soDigitos(const QString &s)
{
    QString r;
    for (const QChar c : s)
        if (c.isDigit()) r += c;
    return r;
}

bool cpfValido(const QString &cpf)
{
    QList<int> d;
    if (!digitosDoDocumento(cpf, 11, d)) return false;
    return digitoMod11(d, {10, 9, 8, 7, 6, 5, 4, 3, 2}) == d[9]
        && digitoMod11(d, {11, 10, 9, 8, 7, 6, 5, 4, 3, 2}) == d[10];
}

bool cnpjValido(const QString &cnpj)
{
    QList<int> d;
    if (!digitosDoDocumento(cnpj, 14, d)) return false;
    return digitoMod11(d, {5, 4, 3, 2, 9, 8, 7, 6, 5, 4, 3, 2}) == d[12]
        && digitoMod11(d, {6, 5, 4, 3, 2, 9, 8, 7, 6, 5, 4, 3, 2}) == d[13];
}

// --- Modes --------------------------------------------------------------------------------------

ModoCadastro modoCadastro(const QString &codigo)
{
    // Specialists are physicians with specialties, so they share MD; owners are customers of the
    // business (CL); members of a group, like condominium members, are marked CO: TBCAD has no
    // column of their own for any of these.
    static const QList<ModoCadastro> modos = {
        {"", "", "Cadastros", "F"},
        {"Cl", "CL", "Clientes", "F"},
        {"Fo", "FO", "Fornecedores", "J"},
        {"Tr", "TR", "Transportadoras", "J"},
        {"Re", "RE", "Vendedores", "F"},
        {"Fu", "FU", "Funcionarios", "F"},
        {"Em", "EM", "Empresas", "J"},
        {"Md", "MD", "Médicos", "F"},
        {"Es", "MD", "Especialistas", "F"},
        {"Pr", "CL", "Proprietários", "F"},
        {"Me", "CO", "Membros", "F"},
        {"Mm", "CO", "Membros", "F"},
        {"Co", "CO", "Condôminos", "J"},
        {"Cv", "CV", "Convênios", "J"},
    };
    for (const ModoCadastro &m : modos)
        if (m.codigo == codigo) return m;
    throw std::invalid_argument("modo de cadastro desconhecido: " + codigo.toStdString());
}

// --- Browse -------------------------------------------------------------------------------------

BuscaCadastro sqlBusca(const ModoCadastro &m, const QString &ordem, const QString &textoBusca,
                       const QList<QString> &ver, const QDate &hoje, Busca busca)
{
    BuscaCadastro r;
    r.parametros["HOJE"] = hoje.isValid() ? hoje : QDate::currentDate();
    QString sql =
        "Select C.*, Ci.Cidade || ' - ' || Ci.Uf Z_Cidade, Cn.Cidade || ' - ' || Cn.Uf Z_CidadeNat, "
        "O1.Nome Z_OpTel1, O2.Nome Z_OpTel2, O3.Nome Z_OpTel3, N.Nivel Z_Nivel, N.Descricao Z_Descricao, "
        // Several rows on the same day: the last one typed wins, and the grid keeps one line per record.
        "(Select First 1 Cs.Situacao From TbCadSit Cs Where (Cs.Fk = C.Id) and (Cs.Data = "
        "(Select Max(S2.Data) From TbCadSit S2 Where (S2.Fk = C.Id) and (S2.Data <= :HOJE))) "
        "Order By Cs.Id Desc) Z_Situacao "
        "From TbCad C "
        "Left Join TbCidades Ci On (Ci.Id = C.IdCidade) "
        "Left Join TbCidades Cn On (Cn.Id = C.IdCidadeNat) "
        "Left Join TbOpTel O1 On (O1.Id = C.IdOpTel1) "
        "Left Join TbOpTel O2 On (O2.Id = C.IdOpTel2) "
        "Left Join TbOpTel O3 On (O3.Id = C.IdOpTel3) "
        "Left Join TbNiveis N On (N.Id = C.IdNivel)";

    QStringList onde;

    QStringList papeis;
    if (!m.flag.isEmpty()) papeis << m.flag;
    for (const QString &x : ver) {
        QString flag;
        for (const auto &[legenda, f] : kVerPapeis)
            if (x == legenda || x.toUpper() == f) flag = f;
        if (!flag.isEmpty() && !papeis.contains(flag)) papeis << flag;
    }
    if (!papeis.isEmpty()) {
        QStringList ou;
        for (const QString &f : papeis) ou << "(" + colunaPapel(f) + " = 'S')";
        onde << "(" + ou.join(" or ") + ")";
    }

    const QString ord = kOrdensCadastro.contains(ordem) ? ordem : QStringLiteral("NOME");
    const QString t = textoBusca.trimmed();
    const QString digitos = soDigitos(t);
    if (!t.isEmpty()) {
        if (ord == "CÓDIGO") {
            bool ok = false;
            const int n = t.toInt(&ok);
            onde << "(C.Codigo = :CODIGO)";
            r.parametros["CODIGO"] = ok ? QVariant(n) : QVariant();  // not a number: nothing matches
        } else if ((ord == "NOME" || ord == "RAZÃO SOCIAL" || ord == "APELIDO") && busca == Busca::Inicio) {
            // The upper-cased names are indexed: the same people CONTAINING finds by their names' start.
            onde << "((Upper(C.Nome) Starting With Upper(:TEXTO)) or (Upper(C.RazaoSocial) Starting With Upper(:TEXTO)) "
                    "or (Upper(C.Apelido) Starting With Upper(:TEXTO)))";
            r.parametros["TEXTO"] = t;
        } else if (ord == "NOME" || ord == "RAZÃO SOCIAL" || ord == "APELIDO") {
            // CONTAINING: a substring regardless of letter case, without upper-casing every row.
            onde << "((C.Nome Containing :TEXTO) or (C.RazaoSocial Containing :TEXTO) or (C.Apelido Containing :TEXTO))";
            r.parametros["TEXTO"] = t;
        } else if (ord == "IDENTIDADE") {
            onde << "(C.NumId Containing :TEXTO)";
            r.parametros["TEXTO"] = t;
        } else if (ord == "CPF" && !digitos.isEmpty()) {
            onde << "((C.Cpf = :TEXTO) or (C.CpfSocio1 = :TEXTO) or (C.CpfSocio2 = :TEXTO))";
            r.parametros["TEXTO"] = digitos;
        } else if (ord == "CNPJ" && !digitos.isEmpty()) {
            onde << "(C.Cnpj = :TEXTO)";
            r.parametros["TEXTO"] = digitos;
        } else if (ord == "INSCR. ESTADUAL") {
            onde << "(C.InscrEstadual = :TEXTO)";
            r.parametros["TEXTO"] = t;
        } else if (ord == "INSCR. MUNICIPAL") {
            onde << "(C.InscrMunicipal = :TEXTO)";
            r.parametros["TEXTO"] = t;
        } else if (ord == "TELEFONE" && !digitos.isEmpty()) {
            // Digits against digits: "(31) 98765-4321" finds 31987654321; CONTAINING keeps the text
            // within the column's size, where LIKE's "%" around a full number overflowed it.
            onde << "((C.Telefone1 Containing :TEXTO) or (C.Telefone2 Containing :TEXTO) or (C.Telefone3 Containing :TEXTO))";
            r.parametros["TEXTO"] = digitos;
        }
    }

    // The installation's own account is nobody's business in this registry.
    onde << "((C.Usuario <> 'ADMIN') or (C.Usuario is Null))";

    static const std::map<QString, QString> colunaOrdem = {
        {"CÓDIGO", "C.Codigo"}, {"NOME", "C.Nome"}, {"RAZÃO SOCIAL", "C.RazaoSocial"}, {"APELIDO", "C.Apelido"},
        {"IDENTIDADE", "C.NumId"}, {"CPF", "C.Cpf"}, {"CNPJ", "C.Cnpj"}, {"INSCR. ESTADUAL", "C.InscrEstadual"},
        {"INSCR. MUNICIPAL", "C.InscrMunicipal"}, {"TELEFONE", "C.Telefone1"}};
    sql += " Where " + onde.join(" and ") + " Order By " + colunaOrdem.at(ord);
    r.sql = sql;
    return r;
}

// --- New record, typing checks --------------------------------------------------------------------

Valores novoCadastro(db::Transacao &t, const ModoCadastro &m, const QDateTime &agora)
{
    Valores v;
    v["CODIGO"] = proximoCodigo(t, "TBCAD");
    v["DATACADASTRO"] = agora;
    for (const QString &f : kPapeis) v[f] = (f == m.flag) ? "S" : "N";
    v["US"] = "N";
    v["PESSOA"] = m.pessoaInicial;
    v["TIPOCLIENTE"] = "V";
    if (m.pessoaInicial == "F") {
        v["SEXO"] = "M";
        v["ESTADOCIVIL"] = "SOLTEIRO(A)";
    }
    db::Consulta q(t, "Select First 1 E.IdCidade, E.Cep From TbParGlobais P Join TbCad E On (E.Id = P.IdEmpresa) "
                      "Order By P.Id");
    q.executar();
    if (q.proxima()) {
        v["IDCIDADE"] = q.valor(0);
        v["CEP"] = q.valor(1);
    }
    return v;
}

Valores agendaPadrao(const QDate &hoje, const Sessao &atual)
{
    return {{"DATA", hoje},           {"DIASEMANA", 0},          {"SESSOESPRIMATEND", 1},
            {"HORAINICIO", "08:00"},  {"HORASAIDAINT", "12:00"}, {"HORARETINT", "13:00"},
            {"HORATERMINO", "18:00"}, {"HORATEMPO", "00:30"},    {"IDRESP", atual.idUsuario}};
}

QString documentoRepetido(db::Transacao &t, int id, const QString &coluna, const QString &valor)
{
    const QString c = coluna.toUpper();
    if (c != "CPF" && c != "CNPJ") throw std::invalid_argument("documento desconhecido: " + coluna.toStdString());
    const QString n = soDigitos(valor);
    if (n.isEmpty()) return {};
    const QVariant outro = db::escalar(t, "Select First 1 Id From TbCad Where (Id <> :ID) and (" + c + " = :V) and (" + c
                                              + " <> '') and (" + c + " Is Not Null)",
                                       {{"ID", id}, {"V", n}});
    if (outro.isNull()) return {};
    return c == "CPF" ? kCpfExistente : kCnpjExistente;
}

bool codigoRepetido(db::Transacao &t, int id, int codigo)
{
    return !db::escalar(t, "Select First 1 Id From TbCad Where (Id <> :ID) and (Codigo = :CODIGO)",
                        {{"ID", id}, {"CODIGO", codigo}}).isNull();
}

// --- Save -----------------------------------------------------------------------------------------

namespace {

// Who may use the program and how far is the access levels' business: a record that is or becomes
// a user has its flag, login, level, type and another person's password changed only with the
// levels right, and a user never changes their own flag, level or type, whatever rights they hold.
void exigirDireitoConta(db::Transacao &t, int id, const Valores &v, const Valores &guardado, bool senhaNova,
                        const Sessao &atual)
{
    if (!marcado(v.count("US") ? v : guardado, "US") && !marcado(guardado, "US")) return;
    auto muda = [&](const QString &c) {
        if (!v.count(c)) return false;
        return texto(v, c).toUpper() != texto(guardado, c).toUpper();
    };
    const bool proprio = id != 0 && id == atual.idUsuario;
    for (const char *c : {"US", "IDNIVEL", "TIPOUSUARIO"})
        if (proprio && muda(c)) throw Recusa(kSemPermissao, c);
    QString campo;
    for (const char *c : {"US", "USUARIO", "IDNIVEL", "TIPOUSUARIO"})
        if (campo.isEmpty() && muda(c)) campo = c;
    if (campo.isEmpty() && senhaNova && !proprio) campo = "SENHA";
    if (campo.isEmpty()) return;
    try {
        exigirDireitoNiveis(t, atual);
    } catch (const Recusa &r) {
        throw Recusa(r.texto, campo);
    }
}

} // namespace

int salvarCadastro(db::Transacao &t, int id, Valores v, const ModoCadastro &m, const EdicaoDetalhe &situacoes,
                   const Sessao &atual, const QDate &hoje, const QList<Valores> &agenda)
{
    const bool novo = id <= 0;

    // The screen's rights first, the situation and agenda rows' own with them.
    exigirOperacao(t, atual, novo ? QStringLiteral("Incluir") : QStringLiteral("Alterar"));
    EdicaoDetalhe linhasAgenda;
    for (const Valores &a : agenda) linhasAgenda.linhas.append({a.count("ID") ? a.at("ID").toInt() : 0, a, true});
    exigirDireitosDetalhes(t, atual, {situacoes, linhasAgenda});

    // The checks look at the record as it will be: what is stored, overlaid by this edit.
    Valores guardado;
    if (!novo) {
        db::Consulta q(t, "Select * From TbCad Where Id = :ID");
        q.bind("ID", id).executar();
        if (!q.proxima()) throw std::runtime_error("TBCAD sem o registro " + std::to_string(id));
        guardado = lerLinha(q);
    }
    // Rights before the fields: a refused account change is told as such, not as a missing field.
    exigirDireitoConta(t, novo ? 0 : id, v, guardado, v.count(kNovaSenha) && !v.at(kNovaSenha).toString().isEmpty(), atual);

    for (const QString &c : kColunasDigitos) {
        auto i = v.find(c);
        if (i == v.end() || i->second.typeId() != QMetaType::QString) continue;
        const QString d = soDigitos(i->second.toString());
        i->second = d.isEmpty() ? QVariant() : QVariant(d);
    }
    QString pessoa = texto(v.count("PESSOA") ? v : guardado, "PESSOA").toUpper();
    if (pessoa != "F" && pessoa != "J") pessoa = m.pessoaInicial.isEmpty() ? QStringLiteral("F") : m.pessoaInicial;
    v["PESSOA"] = pessoa;
    for (const QString &c : pessoa == "J" ? kSoPessoaFisica : kSoPessoaJuridica) v[c] = QVariant();

    // An offered code another workstation takes meanwhile moves on as it is written, never refused.
    const bool oferecido = novo && renumerarOferecido(t, "TBCAD", "CODIGO", v);
    Valores ef = guardado;
    for (const auto &[c, x] : v) ef[c] = x;

    QStringList campos, linhas;
    auto falta = [&](const QString &campo, const QString &linha) {
        campos << campo;
        linhas << linha;
    };
    const int codigo = ef.count("CODIGO") ? ef.at("CODIGO").toInt() : 0;
    if (codigo <= 0 || (!oferecido && codigoRepetido(t, novo ? 0 : id, codigo))) falta("CODIGO", kCodigoExistente);
    if (!preenchido(ef["NOME"])) falta("NOME", "Nome");
    if (!preenchido(ef["APELIDO"])) falta("APELIDO", "Apelido");
    if (pessoa == "J") {
        if (!preenchido(ef["RAZAOSOCIAL"])) falta("RAZAOSOCIAL", "Razão Social");
        // Invoices to a company need its CNPJ; a supplier's may come later with its first invoice.
        if (marcado(ef, "CL") && !preenchido(ef["CNPJ"])) falta("CNPJ", "CNPJ");
    }
    if (std::none_of(kPapeis.begin(), kPapeis.end(), [&](const QString &f) { return marcado(ef, f); }))
        falta("CL", kTipoDeCadastro);

    EdicaoDetalhe sits = situacoes;
    if (novo && sits.linhas.isEmpty()) sits.incluir({{"SITUACAO", "A"}, {"DATA", hoje}, {"IDRESP", atual.idUsuario}});
    auto vigente = [&](const QVariant &data) { return data.toDate().isValid() && data.toDate() <= hoje; };
    bool temSituacao = std::any_of(sits.linhas.begin(), sits.linhas.end(), [&](const LinhaDetalhe &s) {
        return vigente(s.valores.count("DATA") ? s.valores.at("DATA") : QVariant());
    });
    if (!temSituacao && !novo) {
        // Stored rows count unless this edit redates or removes them.
        QList<int> editadas = sits.excluidas;
        for (const LinhaDetalhe &s : sits.linhas)
            if (s.id) editadas << s.id;
        db::Consulta q(t, "Select Id, Data From TbCadSit Where Fk = :ID");
        q.bind("ID", id).executar();
        while (!temSituacao && q.proxima())
            temSituacao = !editadas.contains(q.valor(0).toInt()) && vigente(q.valor(1));
    }
    if (!temSituacao) falta("TBCADSIT", "Situação");
    if (m.codigo == "Md" && agenda.isEmpty()
        && (novo || !existe(t, "Select First 1 Id From TbCadMedSit Where Fk = :ID", id)))
        falta("TBCADMEDSIT", "Configuração da Agenda");

    if (!campos.isEmpty()) throw RecusaCampos(campos, linhas);

    // The account, when the record is a user.
    const QString novaSenha = v.count(kNovaSenha) ? v.at(kNovaSenha).toString() : QString();
    const QString novaSenhaWeb = v.count(kNovaSenhaWeb) ? v.at(kNovaSenhaWeb).toString() : QString();
    if (marcado(ef, "US")) {
        const QString login = texto(ef, "USUARIO").toUpper();
        if (login.isEmpty() || (novaSenha.isEmpty() && texto(guardado, "SENHA").isEmpty() && texto(guardado, "SENHAHASH").isEmpty()))
            throw Recusa(kDefinaUsuarioSenha, login.isEmpty() ? QStringLiteral("USUARIO") : kNovaSenha);
        // Administrators only by administrators; supervisors by supervisors too; the installation's
        // own type ("D") only by itself, as the user accounts routine has it.
        const QString tipo = texto(ef, "TIPOUSUARIO").toUpper();
        const QString quem = atual.tipoUsuario;
        const bool podeA = quem == "A" || quem == "D";
        const bool podeS = podeA || quem == "S";
        if ((tipo == "A" && !podeA) || (tipo == "S" && !podeS) || (tipo == "D" && quem != "D"))
            throw Recusa(kSemPermissaoTipoUsuario, "TIPOUSUARIO");
        if (novaSenha.size() > kTamanhoSenha) throw Recusa(kSenhaMaxima, kNovaSenha);
        if (!novaSenha.isEmpty() && novaSenha.size() < kTamanhoMinimoSenha) throw Recusa(kSenhaCurta, kNovaSenha);
        if (novaSenhaWeb.size() > kTamanhoSenha) throw Recusa(kSenhaMaxima, kNovaSenhaWeb);
        if (!db::escalar(t, "Select First 1 Id From TbCad Where (Us = 'S') and (Upper(Usuario) = :U) and (Id <> :ID)",
                         {{"U", login}, {"ID", novo ? 0 : id}}).isNull())
            throw Recusa(kUsuarioRepetido, "USUARIO");
        v["USUARIO"] = login;
    }

    // Write the master over the columns this edit carries.
    if (novo && !v.count("DATACADASTRO")) v["DATACADASTRO"] = QDateTime::currentDateTime();
    QStringList colunas;
    std::map<QString, QVariant> p;
    for (const QString &c : kColunasCad)
        if (v.count(c)) {
            colunas << c;
            p[c] = v.at(c);
        }
    if (!novaSenha.isEmpty()) {
        // Set on someone else's record, it must be changed by its user at the next login.
        colunas << "SENHA" << "SENHAHASH" << "TROCARSENHA";
        p["SENHA"] = gravarMD5() ? QVariant(MD5(novaSenha)) : QVariant();
        p["SENHAHASH"] = hashSenha(novaSenha);
        p["TROCARSENHA"] = !novo && id == atual.idUsuario ? "N" : "S";
    }
    if (!novaSenhaWeb.isEmpty()) {
        colunas << "SENHAWEB";
        p["SENHAWEB"] = MD5(novaSenhaWeb);
    }
    if (novo) {
        if (!colunas.contains("CODIGO")) colunas << "CODIGO";
        id = inserirNumerado(t, "TBCAD", "CODIGO", p, [&] {
            return db::escalar(t, "Insert Into TbCad (" + colunas.join(", ") + ") Values (:" + colunas.join(", :")
                                      + ") Returning Id", p).toInt();
        }, oferecido);
    } else if (!colunas.isEmpty()) {
        QStringList sets;
        for (const QString &c : colunas) sets << c + " = :" + c;
        p["ID"] = id;
        db::executar(t, "Update TbCad Set " + sets.join(", ") + " Where Id = :ID", p);
    }
    logRegistro(t, "TBCAD", "ID", id, novo ? kInclusao : kAlteracao);

    for (int excluida : sits.excluidas) {
        logRegistro(t, "TBCADSIT", "ID", excluida, kExclusao);
        db::executar(t, "Delete From TbCadSit Where (Id = :ID) and (Fk = :FK)", {{"ID", excluida}, {"FK", id}});
    }
    for (const LinhaDetalhe &l : sits.linhas) {
        if (l.id && !l.alterada) continue;
        Valores s = l.valores;
        if (l.id) s["ID"] = l.id;
        else s.erase("ID");
        if (!l.id && (!s.count("IDRESP") || s.at("IDRESP").isNull())) s["IDRESP"] = atual.idUsuario;
        gravarDetalhe(t, "TBCADSIT", kColunasSit, id, s);
    }
    for (const Valores &a : agenda) gravarDetalhe(t, "TBCADMEDSIT", kColunasAgenda, id, a);
    return id;
}

// --- Delete, situation ----------------------------------------------------------------------------

void excluirCadastro(db::Transacao &t, int id, const Sessao &atual)
{
    exigirOperacao(t, atual, QStringLiteral("Excluir"));
    // Deleting a user takes their access away: the levels' business, and never one's own.
    if (existe(t, "Select First 1 Id From TbCad Where (Id = :ID) and (Us = 'S')", id)) {
        if (id == atual.idUsuario) throw Recusa(kSemPermissao);
        exigirDireitoNiveis(t, atual);
    }
    // Every check looks at the rows themselves, not at the role flags: a role unticked after its
    // sales were made must not leave those sales without their party.
    const struct {
        const char *sql;
        const char *mensagem;
    } regras[] = {
        {"Select First 1 Id From TbParGlobais Where IdEmpresa = :ID",
         "Esta empresa não pode ser excluída pois a mesma esta definida como a Empresa Padrão do Sistema!"},
        {"Select First 1 Id From TbCad Where (Id = :ID) and (Usuario = 'ADMIN')", "O usuário ADMIN não pode ser excluído!"},
        // Any operation of the party counts (service orders, rentals, projects, bookings too): only
        // contracts and purchases have words of their own below.
        {"Select First 1 Id From TbCom Where (IdCad = :ID) and ((Op Is Null) or (Op Not In (3, 4)))",
         "Este cliente não pode ser excluído pois já existe alguma venda para o mesmo!"},
        {"Select First 1 Id From TbCom Where (IdCad = :ID) and (Op = 3)",
         "Este cliente não pode ser excluído pois já existe algum contrato para o mesmo!"},
        // Accounts are "C" (to receive) or "D" (to pay), as the billing writes them.
        {"Select First 1 Id From TbContas Where (IdCad = :ID) and (Tipo = 'C')",
         "Este cliente não pode ser excluído pois já existe alguma conta a receber para o mesmo!"},
        {"Select First 1 Id From TbCom Where (IdCad = :ID) and (Op = 4)",
         "Este fornecedor não pode ser excluído pois já existe alguma compra para o mesmo!"},
        {"Select First 1 Id From TbContas Where (IdCad = :ID) and (Tipo = 'D')",
         "Este fornecedor não pode ser excluído pois já existe alguma conta a pagar para o mesmo!"},
        {"Select First 1 Id From TbItensForn Where IdFornecedor = :ID",
         "Este fornecedor não pode ser excluído pois já existe alguma mercadoria no estoque para o mesmo!"},
        {"Select First 1 Id From TbComFat Where IdTransportadora = :ID",
         "Esta transportadora não pode ser excluída pois já existe alguma venda para a mesma!"},
        {"Select First 1 Id From TbCom Where IdRepresentante = :ID",
         "Este vendedor não pode ser excluído pois já existe alguma venda para o mesmo!"},
        {"Select First 1 Id From TbCadSit Where (IdRep = :ID) and (Fk <> :ID)",
         "Este vendedor não pode ser excluído pois já existe algum cliente para o mesmo!"},
    };
    for (const auto &r : regras)
        if (existe(t, r.sql, id)) throw Recusa(QString::fromUtf8(r.mensagem));

    DeclaracaoRegistro cadastro;
    cadastro.tabela = QStringLiteral("TBCAD");
    for (const QString &tabela : kDetalhes) cadastro.dependentes.append({tabela, QStringLiteral("FK")});
    excluirRegistro(t, cadastro, id);
}

QString situacaoAtual(db::Transacao &t, int id, const QDate &hoje)
{
    return db::escalar(t, "Select First 1 Situacao From TbCadSit Where (Fk = :ID) and (Data <= :HOJE) "
                          "Order By Data Desc, Id Desc",
                       {{"ID", id}, {"HOJE", hoje}}).toString();
}

} // namespace orb
