#include "schema/Atualizacao.h"

#include "dados/Avisos.h"
#include "schema/Criacao.h"
#include "schema/Referencia.h"

#include <QCryptographicHash>
#include <QDateTime>

namespace esquema {

using db::Banco;
using db::Transacao;

namespace {

Mudanca dominio(const QString &d) { return {Mudanca::CriarDominio, d, {}, d, {}}; }
Mudanca coluna(const QString &t, const QString &c, const QString &d, const QString &preencher = {})
{
    return {Mudanca::AdicionarColuna, t, c, d, preencher};
}
Mudanca novaTabela(const QString &t) { return {Mudanca::CriarTabela, t, {}, {}, {}}; }

// The principal company gets an active situation when it has none: its own screen refuses to save
// a record without a current one. Dated no later than today, so it is current at once.
void situarEmpresaPrincipal(Transacao &t, const QDate &hoje)
{
    db::executar(t, "INSERT INTO TBCADSIT (FK, SITUACAO, DATA, IDRESP) "
                    "SELECT C.ID, 'A', MINVALUE(COALESCE(CAST(C.DATACADASTRO AS DATE), :HOJE), :HOJE), "
                    "(SELECT FIRST 1 U.ID FROM TBCAD U WHERE U.USUARIO = 'ADMIN' ORDER BY U.ID) "
                    "FROM TBCAD C WHERE C.ID = (SELECT FIRST 1 P.IDEMPRESA FROM TBPARGLOBAIS P ORDER BY P.ID) "
                    "AND NOT EXISTS (SELECT 1 FROM TBCADSIT S WHERE S.FK = C.ID)",
                 {{"HOJE", hoje}});
}

} // namespace

QString Mudanca::descricao() const
{
    switch (tipo) {
    case CriarDominio: return QString("Criar domínio %1").arg(tabela);
    case AdicionarColuna: return QString("%1: adicionar coluna %2 (%3)").arg(tabela, coluna, dominio);
    case CriarTabela: return QString("Criar tabela %1").arg(tabela);
    case MudarDominio: return QString("%1: mudar coluna %2 para %3").arg(tabela, coluna, dominio);
    case RemoverColuna: return QString("%1: remover coluna %2").arg(tabela, coluna);
    case CriarRestricao: return QString("%1: criar restrição %2").arg(tabela, coluna);
    case CriarSequencia: return QString("Criar sequência %1").arg(tabela);
    case CriarIndice: return QString("%1: criar índice %2").arg(tabela, coluna);
    case CriarIndiceUnico: return QString("%1: criar índice único %2").arg(tabela, coluna);
    case CriarAviso: return QString("%1: criar aviso de alteração %2").arg(tabela, coluna);
    case CarregarDados: return QString("%1: %2").arg(tabela, extra);
    case CriarGatilho: return QString("%1: criar gatilho %2").arg(tabela, coluna);
    }
    return {};
}

const QList<Mudanca> &mudancas()
{
    static const QList<Mudanca> m = [] {
    QList<Mudanca> m = {
        dominio("TEXTO1024"),
        coluna("TBSTATUSMED", "COR", "INTEIRO"),
        coluna("TBCAD", "CRV", "STRING15"),
        coluna("TBCOMST", "IDSTATUS", "INTEIRO"),
        coluna("TBCOMST", "GERAFIN", "CARACTERE1"),
        coluna("TBCOMST", "GERAEST", "CARACTERE1"),
        coluna("TBCOMST", "FINAL", "CARACTERE1"),
        coluna("TBPARSERVICOS", "EXMENSINICIAL", "CARACTERE1"),
        coluna("TBPARSERVICOS", "EXCAT", "CARACTERE1"),
        coluna("TBPARVENDAS", "EXCAT", "CARACTERE1"),
        coluna("TBPARVENDAS", "EXCATVE", "CARACTERE1"),
        coluna("TBPARCOMPRAS", "EXCAT", "CARACTERE1"),
        coluna("TBCOM", "DATAPREVENTREGA", "DATAHORA", "DATAPREVENTREGA = DATA + 7"),
        coluna("TBCOM", "OBSPREVENTREGA", "STRING240"),
        coluna("TBFUNCOES", "CBO", "STRING10"),
        novaTabela("TBITENSCOMP"),
        coluna("TBCOM", "ANAMNESE", "TEXTO1024"),
        {Mudanca::MudarDominio, "TBCOM", "OBSERVACOES", "TEXTO1024", "TEXTO"},
        novaTabela("TBCONSULTORIOS"),
        novaTabela("TBPROCEDIMENTOS"),
        novaTabela("TBMEDICAMENTOS"),
        novaTabela("TBLABORATORIOS"),
        novaTabela("TBEXAMES"),
        novaTabela("TBFUNCOESSAL"),
        novaTabela("TBATENDIMENTOS"),
        coluna("TBATENDIMENTOS", "DATAINICIOINT", "DATAHORA"),
        coluna("TBATENDIMENTOS", "DATAFINALINT", "DATAHORA"),
        coluna("TBATENDIMENTOS", "SUBTOTAL", "NUMERO2"),
        coluna("TBATENDIMENTOS", "DESCDESCONTOS", "STRING100"),
        coluna("TBATENDIMENTOS", "DESCONTOS", "NUMERO2"),
        coluna("TBATENDIMENTOS", "DESCACRESCIMOS", "STRING100"),
        coluna("TBATENDIMENTOS", "ACRESCIMOS", "NUMERO2"),
        coluna("TBATENDIMENTOS", "TOTAL", "NUMERO2"),
        coluna("TBCOM", "PRIORIDADE", "CARACTERE1"),
        coluna("TBPARSERVICOS", "MENSINICIAL", "STRING240"),
        coluna("TBCAD", "MD", "CARACTERE1"),
        coluna("TBCAD", "LA", "CARACTERE1"),
        coluna("TBCAD", "CV", "CARACTERE1"),
        coluna("TBCOM", "KILOM", "INTEIRO"),
        coluna("TBCOMITENS", "GARANTIAKM", "INTEIRO"),
        coluna("TBCOMITENS", "IDCONVENIO", "INTEIRO"),
        coluna("TBCOMITENS", "GARANTIADIAS", "INTEIRO"),
        {Mudanca::RemoverColuna, "TBCOMITENS", "DESCRICAOLIVRE", {}, "STRING255"},
        coluna("TBPARGLOBAIS", "MONOSPUB", "CARACTERE1"),
        coluna("TBPARGLOBAIS", "MONOSINT", "INTEIRO"),
        coluna("TBPARGLOBAIS", "MONOSDATAPUB", "DATAHORA"),
        coluna("TBPARGLOBAIS", "MONOSREMID", "INTEIRO"),
        coluna("TBAGENDA", "IDCAD", "INTEIRO"),
        coluna("TBITENS", "IDFABRICANTE", "INTEIRO"),
        coluna("TBITENS", "IDGRADE", "INTEIRO"),
        coluna("TBITENSFORN", "PERCCOMISSAO", "NUMERO2"),
        coluna("TBPEDFORN", "IDUSUARIO", "INTEIRO"),
        coluna("TBPEDFORN", "DATA", "DATA"),
        coluna("TBPEDFORN", "PCNAME", "STRING30"),
        coluna("TBPEDFORN", "PCLOCALIP", "STRING15"),
        coluna("TBPEDFORN", "PCREMIP", "STRING15"),
        coluna("TBITENS", "QTDEMB", "NUMERO2"),
        coluna("TBAGENDA", "IDLOCAL", "INTEIRO"),
        coluna("TBGRUPOSSUB", "TIPO", "CARACTERE1"),
        {Mudanca::CriarRestricao, "TBGRUPOSSUB", "UNQ1_TBGRUPOSSUBSUBGRUPO", {}, "UNIQUE (SUBGRUPO)"},
        // The machine-reading tables arrive with the route operators' module.
        novaTabela("TBFL_AREAS"),
        novaTabela("TBFL_ROTAS"),
        novaTabela("TBFL_OPER"),
        novaTabela("TBFL_PONTOS"),
        novaTabela("TBFL_MAQ"),
        novaTabela("TBFL_LEITURAS"),
        coluna("TBFL_MAQ", "NUMSERIE", "STRING20"),
        novaTabela("TBPEDFORNST"),
        novaTabela("TBESPEC"),
        novaTabela("TBCONVENIOS"),
        novaTabela("TBETAPASCOM"),
        {Mudanca::CriarSequencia, "GN_TBUSUARIOS_ID2", {}, {}, {}},
        // The commercial registry is browsed by name and nickname, checks documents for duplicates
        // and shows each record's current situation.
        {Mudanca::CriarIndice, "TBCAD", "IDX_TBCAD_NOME", {}, "(NOME)"},
        {Mudanca::CriarIndice, "TBCAD", "IDX_TBCAD_APELIDO", {}, "(APELIDO)"},
        {Mudanca::CriarIndice, "TBCAD", "IDX_TBCAD_CPF", {}, "(CPF)"},
        {Mudanca::CriarIndice, "TBCAD", "IDX_TBCAD_CNPJ", {}, "(CNPJ)"},
        {Mudanca::CriarIndice, "TBCADSIT", "IDX_TBCADSIT_FK", {}, "(FK)"},
        // A search box finds names and descriptions by their start, whatever the letter case, as they are typed.
        {Mudanca::CriarIndice, "TBCAD", "IDX_TBCAD_NOME_MAIUSC", {}, "COMPUTED BY (UPPER(NOME))"},
        {Mudanca::CriarIndice, "TBCAD", "IDX_TBCAD_RAZAOSOCIAL_MAIUSC", {}, "COMPUTED BY (UPPER(RAZAOSOCIAL))"},
        {Mudanca::CriarIndice, "TBCAD", "IDX_TBCAD_APELIDO_MAIUSC", {}, "COMPUTED BY (UPPER(APELIDO))"},
        {Mudanca::CriarIndice, "TBITENS", "IDX_TBITENS_DESCRICAO_MAIUSC", {}, "COMPUTED BY (UPPER(DESCRICAO))"},
        // The stock screen finds items by code and description and sums each item's stock rows.
        {Mudanca::CriarIndice, "TBITENS", "IDX_TBITENS_DESCRICAO", {}, "(DESCRICAO)"},
        {Mudanca::CriarIndice, "TBITENS", "IDX_TBITENS_CODIGO", {}, "(CODIGO)"},
        {Mudanca::CriarIndice, "TBITENS", "IDX_TBITENS_CODIGOBARRAS", {}, "(CODIGOBARRAS)"},
        {Mudanca::CriarIndice, "TBITENSEST", "IDX_TBITENSEST_FK", {}, "(FK)"},
        {Mudanca::CriarIndice, "TBITENSFOTOS", "IDX_TBITENSFOTOS_FK", {}, "(FK)"},
        {Mudanca::CriarIndice, "TBITENSFORN", "IDX_TBITENSFORN_FK", {}, "(FK)"},
        {Mudanca::CriarIndice, "TBCOMITENS", "IDX_TBCOMITENS_IDITEM", {}, "(IDITEM)"},
        // Passwords move to a salted slow hash; one set by someone else must be changed by its user;
        // failed logins are counted per user name where every workstation sees them.
        coluna("TBCAD", "SENHAHASH", "STRING128"),
        coluna("TBCAD", "TROCARSENHA", "CARACTERE1"),
        novaTabela("TBLOGINFALHAS"),
        // Numbered codes stay unique when two workstations number at once: the index refuses the
        // second, whose save then takes the next number.
        {Mudanca::CriarIndiceUnico, "TBCAD", "UNQ_TBCAD_CODIGO", {}, "(CODIGO)"},
        {Mudanca::CriarIndiceUnico, "TBMOVINVENTARIO", "UNQ_TBMOVINVENTARIO_CODIGO", {}, "(CODIGO)"},
        {Mudanca::CriarIndiceUnico, "TBINVENTARIO", "UNQ_TBINVENTARIO_CODIGO", {}, "(CODIGO)"},
        {Mudanca::CriarIndiceUnico, "TBFABRICANTES", "UNQ_TBFABRICANTES_CODIGO", {}, "(CODIGO)"},
        {Mudanca::CriarIndiceUnico, "TBCORES", "UNQ_TBCORES_CODIGO", {}, "(CODIGO)"},
        {Mudanca::CriarIndiceUnico, "TBESPECIES", "UNQ_TBESPECIES_CODIGO", {}, "(CODIGO)"},
        {Mudanca::CriarIndiceUnico, "TBRACAS", "UNQ_TBRACAS_CODIGO", {}, "(CODIGO)"},
        {Mudanca::CriarIndiceUnico, "TBSUBCAT", "UNQ_TBSUBCAT_CODIGO", {}, "(CODIGO)"},
        // Readings are listed by route and by machine, latest first; a machine's latest reading
        // starts its next one.
        {Mudanca::CriarIndice, "TBFL_LEITURAS", "IDX_TBFL_LEITURAS_MAQ", {}, "(IDMAQ, DATA)"},
        {Mudanca::CriarIndice, "TBFL_LEITURAS", "IDX_TBFL_LEITURAS_ROTA", {}, "(IDROTA, DATA)"},
        {Mudanca::CriarIndice, "TBFL_LEITURAS", "IDX_TBFL_LEITURAS_DATA", {}, "(DATA)"},
        // A reading's takings are money: older databases kept them in whole reais.
        {Mudanca::MudarDominio, "TBFL_LEITURAS", "HPTOTAL", "NUMERO2", "INTEIRO"},
        // One cash session per day and opening responsible; the accounts searched by due date, by
        // document and by the day of their payments.
        {Mudanca::CriarIndiceUnico, "TBABENCMOV", "TBABENCMOV_IDDATA", {}, "(DATA, IDRESPAB)"},
        {Mudanca::CriarIndice, "TBCONTAS", "IDX_TBCONTAS_VENCIMENTO", {}, "(VENCIMENTO, ID)"},
        {Mudanca::CriarIndice, "TBCONTAS", "IDX_TBCONTAS_FKSFK", {}, "(FKS, FK)"},
        {Mudanca::CriarIndice, "TBCONTASPAGTOS", "IDX_TBCONTASPAGTOS_FK", {}, "(FK)"},
        {Mudanca::CriarIndice, "TBCONTASPAGTOS", "IDX_TBCONTASPAGTOS_DATA", {}, "(DATA)"},
        // A document's rows by the document: its status, lines, billings and their lines.
        {Mudanca::CriarIndice, "TBCOMST", "IDX_TBCOMST_FK", {}, "(FK)"},
        {Mudanca::CriarIndice, "TBCOMITENS", "IDX_TBCOMITENS_FK", {}, "(FK)"},
        {Mudanca::CriarIndice, "TBCOMFAT", "IDX_TBCOMFAT_FK", {}, "(FK)"},
        {Mudanca::CriarIndice, "TBCOMFATITENS", "IDX_TBCOMFATITENS_FK", {}, "(FK)"},
        {Mudanca::CriarIndice, "TBCOMFATITENSSERIAIS", "IDX_TBCOMFATITENSSERIAIS_FK", {}, "(FK)"},
        // The list of documents shows the newest first by code, issue or operation date; instalments by document.
        {Mudanca::CriarIndice, "TBCONTAS", "IDX_TBCONTAS_FK", {}, "(FK)"},
        {Mudanca::CriarIndice, "TBCOM", "IDX_TBCOM_ID_DESC", {}, "DESCENDING (ID)"},
        {Mudanca::CriarIndice, "TBCOM", "IDX_TBCOM_EMISSAO_DESC", {}, "DESCENDING (EMISSAO)"},
        {Mudanca::CriarIndice, "TBCOM", "IDX_TBCOM_DATA_DESC", {}, "DESCENDING (DATA)"},
    };
    // Each item's stock added up over its companies, kept by the database at every change of a
    // stock row (from this program or any other), so that the stock browse and its situation
    // filters read one row per item instead of adding up every company's row each time.
    m << novaTabela("TBITENSTOTAIS")
      << Mudanca{Mudanca::CriarIndiceUnico, "TBITENSTOTAIS", "UNQ_TBITENSTOTAIS_FK", {}, "(FK)"}
      // The few items at their minimum or maximum are found through these, not by a scan.
      << Mudanca{Mudanca::CriarIndice, "TBITENSTOTAIS", "IDX_TBITENSTOTAIS_MINIMO", {},
                 "COMPUTED BY (IIF((ESTMINIMO > 0) AND (ESTATUAL <= ESTMINIMO), 1, 0))"}
      << Mudanca{Mudanca::CriarIndice, "TBITENSTOTAIS", "IDX_TBITENSTOTAIS_MAXIMO", {},
                 "COMPUTED BY (IIF((ESTMAXIMO > 0) AND (ESTATUAL >= ESTMAXIMO), 1, 0))"}
      << Mudanca{Mudanca::CriarGatilho, "TBITENSEST", "TG_TBITENSEST_TOTAIS", {}, QStringLiteral(R"(
FOR TBITENSEST ACTIVE AFTER INSERT OR UPDATE OR DELETE POSITION 50 AS
BEGIN
  IF ((NOT INSERTING) AND (OLD.FK IS NOT NULL)) THEN
    UPDATE TBITENSTOTAIS SET ESTATUAL = ESTATUAL - COALESCE(OLD.ESTATUAL, 0),
      ESTMINIMO = ESTMINIMO - COALESCE(OLD.ESTMINIMO, 0), ESTMAXIMO = ESTMAXIMO - COALESCE(OLD.ESTMAXIMO, 0)
    WHERE FK = OLD.FK;
  IF ((NOT DELETING) AND (NEW.FK IS NOT NULL)) THEN
  BEGIN
    UPDATE TBITENSTOTAIS SET ESTATUAL = ESTATUAL + COALESCE(NEW.ESTATUAL, 0),
      ESTMINIMO = ESTMINIMO + COALESCE(NEW.ESTMINIMO, 0), ESTMAXIMO = ESTMAXIMO + COALESCE(NEW.ESTMAXIMO, 0)
    WHERE FK = NEW.FK;
    IF (ROW_COUNT = 0) THEN
      INSERT INTO TBITENSTOTAIS (FK, ESTATUAL, ESTMINIMO, ESTMAXIMO)
      VALUES (NEW.FK, COALESCE(NEW.ESTATUAL, 0), COALESCE(NEW.ESTMINIMO, 0), COALESCE(NEW.ESTMAXIMO, 0));
  END
END)")}
      // Existing stock added up once; the trigger is already on, so the sums are set, not added.
      << Mudanca{Mudanca::CarregarDados, "TBITENSTOTAIS", "GN_ORB_ITENS_TOTAIS", {}, "totais de estoque por item",
                 [](Transacao &t) {
                     db::executar(t, "MERGE INTO TBITENSTOTAIS T USING (SELECT FK, SUM(COALESCE(ESTATUAL, 0)) A, "
                                     "SUM(COALESCE(ESTMINIMO, 0)) MI, SUM(COALESCE(ESTMAXIMO, 0)) MA FROM TBITENSEST "
                                     "WHERE FK IS NOT NULL GROUP BY FK) S ON (T.FK = S.FK) "
                                     "WHEN MATCHED THEN UPDATE SET ESTATUAL = S.A, ESTMINIMO = S.MI, ESTMAXIMO = S.MA "
                                     "WHEN NOT MATCHED THEN INSERT (FK, ESTATUAL, ESTMINIMO, ESTMAXIMO) "
                                     "VALUES (S.FK, S.A, S.MI, S.MA)");
                 }};
    // Lookup tables tell every workstation, by an event of their own name, that their rows changed.
    for (const QString &t : orb::tabelasComAviso()) m << Mudanca{Mudanca::CriarAviso, t, "TG_" + t + "_AVISO", {}, {}};
    // Databases made before the principal company was seeded with a situation could not save it.
    m << Mudanca{Mudanca::CarregarDados, "TBCADSIT", "GN_ORB_SIT_EMPRESA", {}, "situação da empresa principal",
                 [](Transacao &t) { situarEmpresaPrincipal(t, QDate::currentDate()); }};
    // Municipalities, banks and CFOP codes, once per table; what the installation typed stays alone.
    for (const QString &t : tabelasReferencia())
        m << Mudanca{Mudanca::CarregarDados, t, marcaReferencia(t), {}, "carregar dados de referência",
                     [t](Transacao &tr) { carregarReferencia(tr, t); }};
    return m;
    }();
    return m;
}

// ------------------------------------------------------------------ metadata

Metadados Metadados::ler(Banco &b)
{
    Metadados m;
    Transacao t(b, db::Modo::Leitura);
    {
        db::Consulta q(t, "select trim(rdb$field_name) from rdb$fields "
                          "where coalesce(rdb$system_flag, 0) = 0 and rdb$field_name not starting with 'RDB$'");
        q.executar();
        while (q.proxima()) m.dominios.insert(q.valor(0).toString());
    }
    {
        db::Consulta q(t, "select trim(rf.rdb$relation_name), trim(rf.rdb$field_name), trim(rf.rdb$field_source), "
                          "rf.rdb$field_position from rdb$relation_fields rf "
                          "join rdb$relations r on r.rdb$relation_name = rf.rdb$relation_name "
                          "where coalesce(r.rdb$system_flag, 0) = 0");
        q.executar();
        while (q.proxima()) {
            const QString tb = q.valor(0).toString();
            m.colunas[tb].insert(q.valor(1).toString(), q.valor(2).toString());
            m.posicoes[tb].insert(q.valor(1).toString(), q.valor(3).toInt());
        }
    }
    {
        db::Consulta q(t, "select trim(rdb$relation_name) from rdb$relations where coalesce(rdb$system_flag, 0) = 0");
        q.executar();
        while (q.proxima()) m.tabelas.insert(q.valor(0).toString());
    }
    {
        db::Consulta q(t, "select trim(rdb$generator_name) from rdb$generators where coalesce(rdb$system_flag, 0) = 0");
        q.executar();
        while (q.proxima()) m.geradores.insert(q.valor(0).toString());
    }
    {
        db::Consulta q(t, "select trim(rdb$constraint_name) from rdb$relation_constraints");
        q.executar();
        while (q.proxima()) m.restricoes.insert(q.valor(0).toString());
    }
    {
        db::Consulta q(t, "select trim(rdb$index_name) from rdb$indices where coalesce(rdb$system_flag, 0) = 0");
        q.executar();
        while (q.proxima()) m.indices.insert(q.valor(0).toString());
    }
    {
        db::Consulta q(t, "select trim(rdb$trigger_name) from rdb$triggers where coalesce(rdb$system_flag, 0) = 0");
        q.executar();
        while (q.proxima()) m.gatilhos.insert(q.valor(0).toString());
    }
    t.commit();
    return m;
}

// ------------------------------------------------------------------ applying

ErroAtualizacao::ErroAtualizacao(const Mudanca &m, const QString &causa)
    : std::runtime_error(QString("Falha na atualização do banco de dados (%1): %2").arg(m.descricao(), causa).toStdString()),
      m_(m), mensagem_(QString("Falha na atualização do banco de dados.\nAlteração: %1\nMotivo: %2").arg(m.descricao(), causa))
{
}

namespace {

// Runs DDL statements in one transaction and commits, so the next step can use what they made.
void ddl(Banco &b, const QStringList &comandos)
{
    Transacao t(b);
    for (const QString &c : comandos) db::executar(t, c);
    t.commit();
}

// A domain missing from an older database is created before the first column that needs it.
void garantirDominios(Banco &b, Metadados &m, const QStringList &dominios)
{
    QStringList faltam;
    for (const QString &d : dominios)
        if (!m.dominios.contains(d) && !faltam.contains(d)) faltam << d;
    QStringList cmds;
    for (const QString &d : faltam) cmds << ddlDominio(d);
    if (cmds.isEmpty()) return;
    ddl(b, cmds);
    for (const QString &d : faltam) m.dominios.insert(d);
}

// Makes table t whole: generator, table, key and trigger, each only when missing.
bool completarTabela(Banco &b, Metadados &m, const Tabela &t)
{
    bool mudou = false;
    if (!m.tabelas.contains(t.nome)) {
        QStringList doms;
        for (const Coluna &c : t.colunas) doms << c.dominio;
        garantirDominios(b, m, doms);
        ddl(b, {ddlCriarTabela(t)});
        m.tabelas.insert(t.nome);
        for (int i = 0; i < t.colunas.size(); ++i) {
            m.colunas[t.nome].insert(t.colunas[i].nome, t.colunas[i].dominio);
            m.posicoes[t.nome].insert(t.colunas[i].nome, i);
        }
        mudou = true;
    }
    if (t.chave().isEmpty()) return mudou;
    if (!m.restricoes.contains(t.restricaoChave())) {
        ddl(b, {ddlChave(t)});
        m.restricoes.insert(t.restricaoChave());
        mudou = true;
    }
    if (!t.temId()) return mudou;
    if (!m.geradores.contains(t.gerador())) {
        ddl(b, {ddlGerador(t)});
        m.geradores.insert(t.gerador());
        mudou = true;
    }
    if (!m.gatilhos.contains(t.gatilho())) {
        ddl(b, {ddlGatilho(t)});
        m.gatilhos.insert(t.gatilho());
        mudou = true;
    }
    return mudou;
}

// A blob column cannot be retyped in place: it moves through a new column, as
// add, copy, drop, rename and reposition; every stage can be resumed after a crash.
bool moverColuna(Banco &b, Metadados &m, const Mudanca &mu)
{
    const QString tmp = mu.coluna.left(24) + "_NOVO";
    const bool temVelha = m.temColuna(mu.tabela, mu.coluna);
    const bool temNova = m.temColuna(mu.tabela, tmp);
    if (temVelha && m.colunas[mu.tabela][mu.coluna] == mu.dominio && !temNova) return false;
    garantirDominios(b, m, {mu.dominio});
    // Any other column changes type in place, keeping its values and position (INTEGER to NUMERIC).
    const auto blob = [](const QString &d) { return tipoDominio(d).isEmpty() || tipoDominio(d).startsWith("BLOB"); };
    if (temVelha && !temNova && !blob(m.colunas[mu.tabela][mu.coluna]) && !blob(mu.dominio)) {
        ddl(b, {QString("ALTER TABLE %1 ALTER COLUMN %2 TYPE %3").arg(mu.tabela, mu.coluna, mu.dominio)});
        m.colunas[mu.tabela].insert(mu.coluna, mu.dominio);
        return true;
    }
    const int posicao = m.posicoes[mu.tabela].value(mu.coluna, m.posicoes[mu.tabela].value(tmp));
    if (temVelha) {
        if (!temNova) {
            ddl(b, {QString("ALTER TABLE %1 ADD %2 %3").arg(mu.tabela, tmp, mu.dominio)});
            m.colunas[mu.tabela].insert(tmp, mu.dominio);
        }
        Transacao t(b);
        db::executar(t, QString("UPDATE %1 SET %2 = %3").arg(mu.tabela, tmp, mu.coluna));
        t.commit();
        ddl(b, {QString("ALTER TABLE %1 DROP %2").arg(mu.tabela, mu.coluna),
                QString("ALTER TABLE %1 ALTER COLUMN %2 TO %3").arg(mu.tabela, tmp, mu.coluna),
                QString("ALTER TABLE %1 ALTER COLUMN %2 POSITION %3").arg(mu.tabela, mu.coluna).arg(posicao + 1)});
    } else {
        ddl(b, {QString("ALTER TABLE %1 ALTER COLUMN %2 TO %3").arg(mu.tabela, tmp, mu.coluna),
                QString("ALTER TABLE %1 ALTER COLUMN %2 POSITION %3").arg(mu.tabela, mu.coluna).arg(posicao + 1)});
    }
    m.colunas[mu.tabela].remove(tmp);
    m.colunas[mu.tabela].insert(mu.coluna, mu.dominio);
    return true;
}

} // namespace

bool aplicar(Banco &b, Metadados &m, const Mudanca &mu)
{
    switch (mu.tipo) {
    case Mudanca::CriarDominio:
        if (m.dominios.contains(mu.tabela)) return false;
        garantirDominios(b, m, {mu.tabela});
        return true;
    case Mudanca::AdicionarColuna: {
        if (m.temColuna(mu.tabela, mu.coluna)) return false;
        garantirDominios(b, m, {mu.dominio});
        ddl(b, {QString("ALTER TABLE %1 ADD %2 %3").arg(mu.tabela, mu.coluna, mu.dominio)});
        m.colunas[mu.tabela].insert(mu.coluna, mu.dominio);
        if (!mu.extra.isEmpty()) {
            Transacao t(b);
            db::executar(t, QString("UPDATE %1 SET %2").arg(mu.tabela, mu.extra));
            t.commit();
        }
        return true;
    }
    case Mudanca::CriarTabela: {
        const Tabela *t = tabela(mu.tabela);
        if (!t) throw std::logic_error(("tabela sem definição: " + mu.tabela).toStdString());
        return completarTabela(b, m, *t);
    }
    case Mudanca::MudarDominio:
        return moverColuna(b, m, mu);
    case Mudanca::RemoverColuna:
        if (!m.temColuna(mu.tabela, mu.coluna)) return false;
        ddl(b, {QString("ALTER TABLE %1 DROP %2").arg(mu.tabela, mu.coluna)});
        m.colunas[mu.tabela].remove(mu.coluna);
        return true;
    case Mudanca::CriarRestricao:
        if (m.restricoes.contains(mu.coluna)) return false;
        ddl(b, {QString("ALTER TABLE %1 ADD CONSTRAINT %2 %3").arg(mu.tabela, mu.coluna, mu.extra)});
        m.restricoes.insert(mu.coluna);
        return true;
    case Mudanca::CriarIndice:
        if (m.indices.contains(mu.coluna)) return false;
    {
        // "DESCENDING (...)": an index read backwards, for the lists that show the newest first.
        const bool desc = mu.extra.startsWith("DESCENDING ");
        ddl(b, {QString("CREATE %4INDEX %1 ON %2 %3").arg(mu.coluna, mu.tabela, desc ? mu.extra.mid(11) : mu.extra, desc ? "DESCENDING " : "")});
        m.indices.insert(mu.coluna);
        return true;
    }
    case Mudanca::CriarIndiceUnico: {
        if (m.indices.contains(mu.coluna)) return false;
        // Existing duplicates are the installation's to sort out; until then the save's own check
        // stands alone, and the index is tried again at the next start.
        Transacao t(b, db::Modo::Leitura);
        const QString col = QString(mu.extra).remove('(').remove(')');
        const QString preenchidas = col.split(", ").join(" Is Not Null and ") + " Is Not Null";
        const bool repetidos = !db::escalar(t, QString("Select First 1 1 From %2 Where %3 Group By %1 "
                                                       "Having Count(*) > 1").arg(col, mu.tabela, preenchidas)).isNull();
        t.rollback();
        if (repetidos) return false;
        ddl(b, {QString("CREATE UNIQUE INDEX %1 ON %2 %3").arg(mu.coluna, mu.tabela, mu.extra)});
        m.indices.insert(mu.coluna);
        return true;
    }
    case Mudanca::CriarAviso:
        if (m.gatilhos.contains(mu.coluna)) return false;
        ddl(b, {QString("CREATE TRIGGER %1 FOR %2 ACTIVE AFTER INSERT OR UPDATE OR DELETE POSITION 100 AS "
                        "BEGIN POST_EVENT '%2'; END").arg(mu.coluna, mu.tabela)});
        m.gatilhos.insert(mu.coluna);
        return true;
    case Mudanca::CriarGatilho:
        if (m.gatilhos.contains(mu.coluna)) return false;
        ddl(b, {"CREATE TRIGGER " + mu.coluna + " " + mu.extra.trimmed()});
        m.gatilhos.insert(mu.coluna);
        return true;
    case Mudanca::CriarSequencia:
        if (m.geradores.contains(mu.tabela)) return false;
        ddl(b, {"CREATE SEQUENCE " + mu.tabela});
        m.geradores.insert(mu.tabela);
        return true;
    case Mudanca::CarregarDados: {
        if (m.geradores.contains(mu.coluna)) return false;
        Transacao t(b);
        mu.dados(t);
        db::executar(t, "CREATE SEQUENCE " + mu.coluna);
        t.commit();
        m.geradores.insert(mu.coluna);
        return true;
    }
    }
    return false;
}

QStringList atualizar(Banco &b, const Progresso &progresso)
{
    Metadados m = Metadados::ler(b);
    QStringList feitas;
    const QList<Mudanca> &lista = mudancas();
    for (int i = 0; i < lista.size(); ++i) {
        const Mudanca &mu = lista[i];
        if (progresso) progresso(i, int(lista.size()), mu.descricao());
        try {
            if (aplicar(b, m, mu)) feitas << mu.descricao();
        } catch (const db::ErroBanco &e) {
            throw ErroAtualizacao(mu, e.tecnico().isEmpty() ? e.mensagem() : e.tecnico());
        }
    }
    if (progresso) progresso(int(lista.size()), int(lista.size()), {});
    return feitas;
}

QList<Tabela> tabelasBase()
{
    QSet<QString> criadas;
    QHash<QString, QSet<QString>> adicionadas;
    QHash<QString, QHash<QString, QString>> dominioAnterior, removidas;
    for (const Mudanca &mu : mudancas()) {
        switch (mu.tipo) {
        case Mudanca::CriarTabela: criadas.insert(mu.tabela); break;
        case Mudanca::AdicionarColuna: adicionadas[mu.tabela].insert(mu.coluna); break;
        case Mudanca::MudarDominio: dominioAnterior[mu.tabela].insert(mu.coluna, mu.extra); break;
        case Mudanca::RemoverColuna: removidas[mu.tabela].insert(mu.coluna, mu.extra); break;
        default: break;
        }
    }
    QList<Tabela> r;
    for (const Tabela &t : tabelas()) {
        if (criadas.contains(t.nome)) continue;
        Tabela b{t.nome, {}};
        for (Coluna c : t.colunas) {
            if (adicionadas.value(t.nome).contains(c.nome)) continue;
            if (dominioAnterior.value(t.nome).contains(c.nome)) c.dominio = dominioAnterior[t.nome][c.nome];
            b.colunas << c;
        }
        const QHash<QString, QString> rem = removidas.value(t.nome);
        for (auto it = rem.begin(); it != rem.end(); ++it) b.colunas << Coluna{it.key(), it.value(), false, {}};
        r << b;
    }
    return r;
}

// Each stage commits on its own and creates only what is missing, so a run cut short is finished by the next.
void criarEsquemaBase(Banco &b)
{
    const QList<Tabela> base = tabelasBase();
    const Metadados m = Metadados::ler(b);
    QStringList doms;
    for (const Tabela &t : base)
        for (const Coluna &c : t.colunas)
            if (!m.dominios.contains(c.dominio) && !doms.contains(c.dominio)) doms << c.dominio;
    QStringList cmds;
    for (const QString &d : doms) cmds << ddlDominio(d);
    if (!cmds.isEmpty()) ddl(b, cmds);
    cmds.clear();
    for (const Tabela &t : base) {
        if (!m.tabelas.contains(t.nome)) cmds << ddlCriarTabela(t);
        if (t.temId() && !m.geradores.contains(t.gerador())) cmds << ddlGerador(t);
    }
    if (!cmds.isEmpty()) ddl(b, cmds);
    cmds.clear();
    for (const Tabela &t : base) {
        if (!t.chave().isEmpty() && !m.restricoes.contains(t.restricaoChave())) cmds << ddlChave(t);
        if (t.temId() && !m.gatilhos.contains(t.gatilho())) cmds << ddlGatilho(t);
    }
    if (!cmds.isEmpty()) ddl(b, cmds);
}

namespace {

// The parameters of p that sql names.
std::map<QString, QVariant> usados(const QString &sql, const std::map<QString, QVariant> &p)
{
    std::map<QString, QVariant> r;
    for (const QString &n : db::converterParametros(sql).nomes) r[n] = p.at(n);
    return r;
}

// The ID of the first row the select finds, or of the row the insert then makes.
QVariant achar(Transacao &t, const QString &select, const QString &insert, const std::map<QString, QVariant> &p)
{
    const QVariant id = db::escalar(t, select, usados(select, p));
    return id.isNull() ? db::escalar(t, insert + " RETURNING ID", usados(insert, p)) : id;
}

} // namespace

// Each first record is looked for before it is made: a run after an interrupted one adds only what is missing.
void semear(Banco &b)
{
    Transacao t(b);
    const QDateTime agora = QDateTime::currentDateTime();
    QVariant empresa = db::escalar(t, "SELECT FIRST 1 c.ID FROM TBPARGLOBAIS p JOIN TBCAD c ON c.ID = p.IDEMPRESA");
    if (empresa.isNull())
        empresa = achar(t, "SELECT FIRST 1 ID FROM TBCAD WHERE CODIGO = 1 AND EM = 'S' ORDER BY ID",
                        "INSERT INTO TBCAD (CODIGO, NOME, RAZAOSOCIAL, APELIDO, PESSOA, EM, DATACADASTRO) "
                        "VALUES (1, :NOME, :NOME, :APELIDO, 'J', 'S', :AGORA)",
                        {{"NOME", kEmpresaNaoPreenchida}, {"APELIDO", "SUA EMPRESA"}, {"AGORA", agora}});
    const QVariant nivel = achar(t, "SELECT FIRST 1 ID FROM TBNIVEIS WHERE NIVEL = 999 ORDER BY ID",
                                 "INSERT INTO TBNIVEIS (NIVEL, DESCRICAO) VALUES (999, :DESCRICAO)",
                                 {{"DESCRICAO", "ADMINISTRADOR"}});
    const QString senha = QCryptographicHash::hash(kSenhaInicialAdmin, QCryptographicHash::Md5).toHex().toUpper();
    achar(t, "SELECT FIRST 1 ID FROM TBCAD WHERE USUARIO = 'ADMIN'",
          "INSERT INTO TBCAD (CODIGO, NOME, RAZAOSOCIAL, APELIDO, USUARIO, SENHA, IDNIVEL, TIPOUSUARIO, PESSOA, US, "
          "DATACADASTRO) VALUES (2, :NOME, :NOME, 'ADMIN', 'ADMIN', :SENHA, :NIVEL, 'D', 'F', 'S', :AGORA)",
          {{"NOME", "ADMINISTRADOR"}, {"SENHA", senha}, {"NIVEL", nivel}, {"AGORA", agora}});
    if (db::escalar(t, "SELECT COUNT(*) FROM TBPARGLOBAIS").toInt() == 0)
        db::executar(t, "INSERT INTO TBPARGLOBAIS (RAMO, IDEMPRESA) VALUES ('CO', :EMPRESA)", {{"EMPRESA", empresa}});
    achar(t, "SELECT FIRST 1 ID FROM TBCCOR WHERE NUMERO = 'CAIXA' AND IDEMPRESA = :EMPRESA",
          "INSERT INTO TBCCOR (CONTA, NUMERO, IDEMPRESA) VALUES ('CAIXA', 'CAIXA', :EMPRESA)", {{"EMPRESA", empresa}});
    situarEmpresaPrincipal(t, agora.date());
    t.commit();
}

std::unique_ptr<Banco> criarBanco(const db::Conexao &c, const Progresso &progresso)
{
    std::unique_ptr<Banco> b = Banco::criar(c);
    concluir(*b, progresso);
    return b;
}

} // namespace esquema
