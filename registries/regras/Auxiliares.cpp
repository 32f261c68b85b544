// The small lookup registries: each one a declaration of its table, grid, search orders,
// required fields (in screen order, with their messages) and deletion question.

#include "Auxiliares.h"

#include "Recusa.h"

namespace orb {

namespace {

using C = CampoForm;

const QList<QPair<QString, QString>> kUfs = [] {
    QList<QPair<QString, QString>> r;
    for (const char *uf : {"AC", "AL", "AM", "AP", "BA", "CE", "DF", "ES", "GO", "MA", "MG", "MS", "MT", "PA", "PB",
                           "PE", "PI", "PR", "RJ", "RN", "RO", "RR", "RS", "SC", "SE", "SP", "TO"})
        r.append(qMakePair(QString(uf), QString(uf)));
    return r;
}();

const QList<QPair<QString, QString>> kTiposGrupo = {{"M", "Mercadorias"}, {"S", "Serviços"}, {"P", "Patrimônio"}, {"C", "Consumo"}};

// A registry whose only field is a name, numbered by CODIGO when the table requires one.
DeclaracaoRegistro simples(const QString &classe, const QString &titulo, const QString &tabela, const QString &coluna,
                           const QString &rotulo, int tamanho, const QString &msg, bool numerar = false)
{
    DeclaracaoRegistro d = declararRegistro(classe, titulo, "Tr" + classe.mid(1), tabela);
    d.colunas = {{coluna, rotulo}};
    d.ordens = {{rotulo, coluna}};
    d.campos = {{coluna, rotulo, C::Texto, msg, tamanho}};
    if (numerar) d.numerada = QStringLiteral("CODIGO");
    return d;
}

QList<DeclaracaoRegistro> montar()
{
    QList<DeclaracaoRegistro> r;

    DeclaracaoRegistro cidades = declararRegistro("TCidades", "Cidades", "TrCidades", "TBCIDADES");
    cidades.colunas = {{"CIDADE", "Cidade"}, {"UF", "UF"}, {"CEP", "CEP"}, {"CODIGO", "Código"}};
    cidades.ordens = {{"CIDADE", "CIDADE"}, {"CEP", "CEP"}};
    cidades.campos = {{"CIDADE", "Cidade", C::Texto, "Digite o nome da cidade primeiro!", 50},
                      {"UF", "Estado", C::Lista, "Digite o estado primeiro!", 0, 2, kUfs},
                      {"CEP", "CEP", C::Texto, "Digite o Cep primeiro!", 8, 2, {}, {}, "99999-999;_"},
                      {"CODIGO", "Código IBGE", C::Inteiro}};
    cidades.perguntaExclusao = "Tem certeza que deseja excluir esta Cidade?";
    cidades.traco = "Cidade Excluída (";
    r << cidades;

    DeclaracaoRegistro bancos = declararRegistro("TBancos", "Bancos", "TrBancos", "TBBANCOS");
    bancos.colunas = {{"NUMERO", "Nº"}, {"BANCO", "Banco"}, {"NOMEBANCO", "Razão social"}, {"SITE", "Site"}};
    bancos.ordens = {{"Banco", "BANCO"}, {"Nº", "NUMERO"}};
    bancos.campos = {{"NUMERO", "Nº do banco", C::Texto, "Digite o Nº do Banco primeiro!", 5},
                     {"DIG", "Dígito", C::Texto, {}, 1},
                     {"BANCO", "Banco", C::Texto, "Digite o nome do banco primeiro!", 30},
                     {"NOMEBANCO", "Razão social", C::Texto, {}, 50},
                     {"SITE", "Site", C::Texto, {}, 50}};
    bancos.perguntaExclusao = "Tem certeza que deseja excluir este Banco?";
    bancos.traco = "Banco Excluído (";
    r << bancos;

    DeclaracaoRegistro grupos = declararRegistro("TGrupos", "Grupos", "TrGrupos", "TBGRUPOS");
    grupos.colunas = {{"CODIGO", "Código"}, {"GRUPO", "Grupo"}, {"TIPO", "Tipo"}};
    grupos.ordens = {{"Grupo", "GRUPO"}};
    grupos.campos = {{"CODIGO", "Código", C::Inteiro, "Digite o código do grupo primeiro!"},
                     {"GRUPO", "Grupo", C::Texto, "Digite o nome do grupo primeiro!", 20},
                     {"TIPO", "Tipo", C::Lista, "Defina o tipo do Grupo primeiro!", 0, 2, kTiposGrupo}};
    grupos.detalhes = {{"Subgrupos", "TBGRUPOSSUB", "FK", "Select Id, Codigo, Subgrupo, Tipo From TbGruposSub Where Fk = :MESTRE Order By Subgrupo",
                        {{"CODIGO", "Código"}, {"SUBGRUPO", "Subgrupo"}, {"TIPO", "Tipo"}}}};
    grupos.perguntaExclusao = "Tem certeza que deseja excluir este Grupo?";
    grupos.traco = "Grupo Excluído (";
    r << grupos;

    DeclaracaoRegistro sub = declararRegistro("TSubgrupos", "Subgrupos", "TrSubgrupos", "TBGRUPOSSUB");
    sub.sqlGrade = "Select S.*, G.Grupo Z_Grupo From TbGruposSub S Left Join TbGrupos G On (G.Id = S.Fk)";
    sub.colunas = {{"Z_GRUPO", "Grupo"}, {"CODIGO", "Código"}, {"SUBGRUPO", "Subgrupo"}, {"TIPO", "Tipo"}};
    sub.ordens = {{"Subgrupo", "SUBGRUPO"}};
    sub.campos = {{"FK", "Grupo", C::Consulta, {}, 0, 2, {}, "Select Id, Grupo From TbGrupos Order By Grupo"},
                  {"CODIGO", "Código", C::Inteiro, "Digite o código do subgrupo primeiro!"},
                  {"SUBGRUPO", "Subgrupo", C::Texto, "Digite o nome do subgrupo primeiro!", 50},
                  {"TIPO", "Tipo", C::Lista, "Defina o tipo do subgrupo primeiro!", 0, 2, kTiposGrupo}};
    sub.perguntaExclusao = "Tem certeza que deseja excluir esta Subgrupo?";
    sub.traco = "Subgrupo Excluído (";
    r << sub;

    DeclaracaoRegistro cat = declararRegistro("TCategorias", "Categorias", "TrCategorias", "TBCAT");
    cat.colunas = {{"COD", "Código"}, {"CATEGORIA", "Categoria"}};
    cat.ordens = {{"Código", "COD"}, {"Categoria", "CATEGORIA"}};
    cat.campos = {{"COD", "Código", C::Texto, "Digite o código da categoria primeiro!", 10},
                  {"CATEGORIA", "Categoria", C::Texto, "Digite o nome da categoria primeiro!", 100}};
    cat.validar = [](db::Transacao &t, int id, const Valores &v) {
        // The code is unique; the row's own code is allowed when it is saved again.
        if (!db::escalar(t, "Select Id From TBCAT Where (Id <> :ID) and (Cod = :COD)", {{"ID", id}, {"COD", v.at("COD")}}).isNull())
            throw Recusa("Código já existente!", "COD");
    };
    cat.perguntaExclusao = "Tem certeza que deseja excluir esta Categoria?";
    cat.traco = "Categoria Excluída (";
    r << cat;

    DeclaracaoRegistro cfop = declararRegistro("TCfop", "CFOP", "TrCfop", "TBCFOP");
    cfop.colunas = {{"CFOP", "CFOP"}, {"DESCRICAO", "Descrição"}};
    cfop.ordens = {{"CFOP", "CFOP"}, {"Descrição", "DESCRICAO"}};
    cfop.campos = {{"CFOP", "CFOP", C::Inteiro, "Digite a CFOP primeiro!"},
                   {"DESCRICAO", "Descrição", C::Texto, "Digite a descrição primeiro!", 400},
                   {"NOTA", "Nota", C::Memo}};
    cfop.perguntaExclusao = "Tem certeza que deseja excluir esta CFOP?";
    r << cfop;

    DeclaracaoRegistro icms = declararRegistro("TIcms", "Alíquotas de ICMS", "TrIcms", "TBICMS");
    icms.colunas = {{"UF", "UF"}, {"PERCICMSO", "% Origem"}, {"PERCICMSD", "% Destino"}};
    icms.ordens = {{"UF", "UF"}};
    icms.campos = {{"UF", "UF", C::Lista, {}, 0, 2, kUfs},
                   {"PERCICMSO", "% ICMS da origem", C::Decimal, "Digite a alíquota de ICMS da Origem primeiro!"},
                   {"PERCICMSD", "% ICMS do destino", C::Decimal, "Digite a alíquota de ICMS do Destino primeiro!"}};
    icms.perguntaExclusao = "Tem certeza que deseja excluir esta Alíquota?";
    r << icms;

    DeclaracaoRegistro feriados = declararRegistro("TFeriados", "Feriados", "TrFeriados", "TBFERIADOS");
    feriados.colunas = {{"DATA", "Data"}, {"DESCRICAO", "Descrição"}};
    feriados.ordens = {{"Data", "DATA"}, {"Descrição", "DESCRICAO"}};
    feriados.campos = {{"DATA", "Data", C::Data, "Digite a data do feriado primeiro!"},
                       {"DESCRICAO", "Descrição", C::Texto, "Digite a descrição do feriado primeiro!", 20}};
    feriados.perguntaExclusao = "Tem certeza que deseja excluir este Feriado?";
    feriados.traco = "Feriado Excluído (";
    r << feriados;

    DeclaracaoRegistro horarios = declararRegistro("THorarios", "Horários", "TrHorarios", "TBHORARIOS");
    horarios.colunas = {{"HORARIO", "Horário"}, {"ENTRADA", "Entrada"}, {"SAIDA", "Saída"}};
    horarios.ordens = {{"Horário", "HORARIO"}};
    horarios.campos = {{"HORARIO", "Horário", C::Texto, "Digite o nome do horário primeiro!", 20},
                       {"ENTRADA", "Entrada", C::Hora, "Digite a hora de entrada primeiro!", 5, 2},
                       {"SAIDA", "Saída", C::Hora, "Digite a hora de saída primeiro!", 5, 2}};
    horarios.perguntaExclusao = "Tem certeza que deseja excluir este Horário?";
    horarios.traco = "Horário Excluído (";
    r << horarios;

    DeclaracaoRegistro optel = declararRegistro("TOpTel", "Operadoras de Telefonia", "TrOpTel", "TBOPTEL");
    optel.colunas = {{"CODIGO", "Código"}, {"NOME", "Operadora"}};
    optel.ordens = {{"Operadora", "NOME"}};
    optel.campos = {{"CODIGO", "Código de longa distância", C::Inteiro, "Digite o Código para ligações de longa distância primeiro!"},
                    {"NOME", "Operadora", C::Texto, "Digite o nome da Operadora primeiro!", 20}};
    optel.perguntaExclusao = "Tem certeza que deseja excluir esta Operadora?";
    optel.traco = "Operadora de Telefonia Excluída (";
    r << optel;

    DeclaracaoRegistro esp = simples("TEspecialidades", "Especialidades", "TBESPEC", "ESPECIALIDADE", "Especialidade", 100,
                                     "Digite o nome da Especialidade primeiro!");
    esp.perguntaExclusao = "Tem certeza que deseja excluir esta Especialidade?";
    esp.traco = "Especialidade Excluída (";
    r << esp;

    DeclaracaoRegistro cons = simples("TConsultorios", "Consultórios", "TBCONSULTORIOS", "CONSULTORIO", "Consultório", 100,
                                      "Digite o nome do Consultório primeiro!");
    cons.perguntaExclusao = "Tem certeza que deseja excluir esta Consultório?";
    cons.traco = "Consultório Excluído (";
    r << cons;

    r << simples("TFabricantes", "Fabricantes", "TBFABRICANTES", "FABRICANTE", "Fabricante", 100,
                 "Digite o nome do fabricante primeiro!", true);
    r << simples("TCores", "Cores", "TBCORES", "COR", "Cor", 20, "Digite o nome da cor primeiro!", true);
    r << simples("TEspecies", "Espécies", "TBESPECIES", "ESPECIE", "Espécie", 20, "Digite o nome da espécie primeiro!", true);
    r << simples("TRacas", "Raças", "TBRACAS", "RACA", "Raça", 40, "Digite o nome da raça primeiro!", true);
    r << simples("TSubcategorias", "Subcategorias", "TBSUBCAT", "SUBCATEGORIA", "Subcategoria", 100,
                 "Digite o nome da subcategoria primeiro!", true);
    r << simples("TBlocos", "Blocos", "TBBLOCOS", "BLOCO", "Bloco", 10, "Digite o nome do bloco primeiro!");
    r << simples("TIntegrantes", "Integrantes", "TBINTEGRANTES", "INTEGRANTE", "Integrante", 30,
                 "Digite o nome do integrante primeiro!");

    // Clothing rentals. The types' table has no ID of its own: its code is the key.
    DeclaracaoRegistro tipos = simples("TTiposRoupas", "Tipos de Roupas", "TBTIPOSROUPAS", "TIPO", "Tipo", 20,
                                       "Digite o tipo da roupa primeiro!", true);
    tipos.chave = QStringLiteral("CODIGO");
    tipos.sqlGrade = QStringLiteral("Select T.*, T.Codigo Id From TbTiposRoupas T");
    tipos.colunas = {{"CODIGO", "Código"}, {"TIPO", "Tipo"}};
    tipos.perguntaExclusao = "Tem certeza que deseja excluir este Tipo de Roupa?";
    tipos.traco = "Tipo de Roupa Excluído (";
    r << tipos;

    DeclaracaoRegistro aces = simples("TAcessorios", "Acessórios", "TBACESSORIOS", "DESCRICAO", "Descrição", 20,
                                      "Digite a descrição do acessório primeiro!", true);
    aces.colunas = {{"CODIGO", "Código"}, {"DESCRICAO", "Descrição"}, {"SEXO", "Sexo"}, {"PRALUGUEL", "Aluguel"},
                    {"PRVENDA", "Venda"}, {"ESTATUAL", "Estoque"}, {"DISPONIVEL", "Disponível"}};
    aces.ordens = {{"Descrição", "DESCRICAO"}, {"Código", "CODIGO"}};
    aces.campos << CampoForm{"SEXO", "Sexo", C::Lista, {}, 0, 2, {{"M", "Masculino"}, {"F", "Feminino"}, {"U", "Unissex"}}}
                << CampoForm{"PRALUGUEL", "Preço de aluguel", C::Decimal}
                << CampoForm{"PRVENDA", "Preço de venda", C::Decimal}
                << CampoForm{"ESTATUAL", "Estoque atual", C::Inteiro}
                << CampoForm{"ESTDISPONIVEL", "Estoque disponível", C::Inteiro}
                << CampoForm{"DISPONIVEL", "Disponível", C::Marca}
                << CampoForm{"FOTO1", "Foto", C::Foto, {}, 0, 2, {}, {}, {}, {}, false, "TIPOFOTO1"};
    aces.perguntaExclusao = "Tem certeza que deseja excluir este Acessório?";
    aces.traco = "Acessório Excluído (";
    r << aces;

    // Which garment is taken by which contract, and when: looked up, never edited here.
    DeclaracaoRegistro reservas = declararRegistro("TConsReservas", "Consulta de Reservas", "TrConsReservas", "TBROUPASALUGUEIS");
    reservas.sqlGrade = QStringLiteral(
        "Select R.Id, R.Codigo, R.Roupa, A.Codigo Z_Contrato, C.Nome Z_Cliente, A.DataProva1, A.DataEntrega, "
        "A.DataCasamento, A.DataDevolucao, A.Status "
        "From TbRoupasAlugueis R Inner Join TbAlugueis A On (A.Codigo = Cast(R.Aluguel As VarChar(10))) "
        "Left Join TbCad C On (C.Id = A.CodCliente)");
    reservas.colunas = {{"CODIGO", "Código"}, {"ROUPA", "Roupa"}, {"Z_CONTRATO", "Contrato"}, {"Z_CLIENTE", "Cliente"},
                        {"DATAPROVA1", "Prova"}, {"DATAENTREGA", "Entrega"}, {"DATACASAMENTO", "Evento"},
                        {"DATADEVOLUCAO", "Devolução"}, {"STATUS", "Situação"}};
    reservas.ordens = {{"Roupa", "ROUPA"}, {"Código", "CODIGO"}, {"Cliente", "Z_CLIENTE"}, {"Data do evento", "DATACASAMENTO"}};
    r << reservas;

    DeclaracaoRegistro funcoes = declararRegistro("TFuncoes", "Funções", "TrFuncoes", "TBFUNCOES");
    funcoes.colunas = {{"FUNCAO", "Função"}, {"CBO", "CBO"}};
    funcoes.ordens = {{"Função", "FUNCAO"}};
    funcoes.campos = {{"FUNCAO", "Função", C::Texto, "Digite o nome da Função primeiro!", 100}, {"CBO", "CBO", C::Texto, {}, 10}};
    funcoes.perguntaExclusao = "Tem certeza que deseja excluir esta Função?";
    funcoes.traco = "Função Excluída (";
    funcoes.impedem = {{"TBFUNCOESSAL", "FK"}, {"TBCADFUNCSIT", "IDFUNCAO"}, {"TBRESPCLIENTES", "IDFUNCAO"},
                       {"TBRESPFORNECEDORES", "IDFUNCAO"}, {"TBRESPTRANSPORTADORAS", "IDFUNCAO"}};
    funcoes.detalhes = {{"Salários por cidade", "TBFUNCOESSAL", "FK",
                         "Select F.*, C.Cidade || ' - ' || C.Uf Z_Cidade From TbFuncoesSal F "
                         "Left Join TbCidades C On (C.Id = F.IdCidade) Where F.Fk = :MESTRE Order By F.Data Desc",
                         {{"DATA", "Data"}, {"IDCIDADE", "Cidade"}, {"JORNADA", "Jornada"}, {"PISO", "Piso"}, {"MEDIA", "Média"},
                          {"MAIOR", "Maior"}, {"HORA", "Hora"}},
                         {{"DATA", "Data inicial", C::Data, "Digite a Data Inicial primeiro!"},
                          {"IDCIDADE", "Cidade", C::Consulta, "Selecione a Cidade primeiro!", 0, 2, {},
                           "Select Id, Cidade || ' - ' || Uf From TbCidades Order By Cidade"},
                          {"JORNADA", "Jornada", C::Inteiro, "Digite a Jornada primeiro!"},
                          {"PISO", "Piso salarial", C::Decimal, "Digite o Piso Salarial primeiro!"},
                          {"MEDIA", "Média salarial", C::Decimal, "Digite a Média Salarial primeiro!"},
                          {"MAIOR", "Maior salário", C::Decimal, "Digite o Maior Salário primeiro!"},
                          {"HORA", "Salário por hora", C::Decimal, "Digite o Salário por Hora primeiro!"}},
                         "Tem certeza que deseja excluir este Salário/Cidade?", "Salário/Cidade Excluído ("}};
    r << funcoes;

    const QList<QPair<QString, QString>> operacoes = {{"1", "1 - Venda"}, {"2", "2 - Ordem de serviço"}, {"3", "3 - Contrato"},
                                                       {"4", "4 - Compra"}, {"5", "5 - Aluguel"}, {"6", "6 - Projeto"},
                                                       {"8", "8 - Agenda da clínica"}};
    DeclaracaoRegistro etapas = declararRegistro("TEtapasCom", "Etapas das Operações", "TrEtapasCom", "TBETAPASCOM");
    etapas.colunas = {{"OP", "Operação"}, {"ORDEM", "Ordem"}, {"ETAPA", "Etapa"}};
    etapas.ordens = {{"Operação", "OP,ORDEM"}, {"Etapa", "ETAPA"}};
    etapas.campos = {{"OP", "Tipo de operação", C::Lista, "Defina o tipo de operação primeiro!", 0, 2, operacoes},
                     {"ORDEM", "Ordem", C::Texto, "Digite a ordem sequencial da Etapa primeiro!", 20},
                     {"ETAPA", "Etapa", C::Texto, "Digite o nome da Etapa primeiro!", 30},
                     {"OBSERVACOES", "Observações", C::Texto, {}, 100}};
    etapas.perguntaExclusao = "Tem certeza que deseja excluir esta Etapa?";
    etapas.traco = "Etapa Excluída (";
    etapas.impedem = {{"TBSTATUSCOM", "FK"}};
    r << etapas;

    DeclaracaoRegistro status = declararRegistro("TStatusCom", "Status das Operações", "TrStatusCom", "TBSTATUSCOM");
    status.sqlGrade = "Select S.*, E.Etapa Z_Etapa From TbStatusCom S Left Join TbEtapasCom E On (E.Id = S.Fk)";
    status.colunas = {{"Z_ETAPA", "Etapa"}, {"ORDEM", "Ordem"}, {"STATUS", "Status"}, {"OP", "Operação"}};
    // Listed stage by stage, each in its own sequence.
    status.ordens = {{"Etapa", "Z_ETAPA,ORDEM"}, {"Status", "STATUS"}};
    status.campos = {{"FK", "Etapa", C::Consulta, "Selecione a Etapa primeiro!", 0, 2, {},
                      "Select Id, Etapa || ' (' || Coalesce(Op, 0) || ')' From TbEtapasCom Order By Op, Ordem"},
                     {"OP", "Tipo de operação", C::Lista, "Defina o tipo de operação primeiro!", 0, 2, operacoes},
                     {"STATUS", "Status", C::Texto, "Digite o texto do Status primeiro!", 30},
                     {"ORDEM", "Ordem", C::Texto, "Digite a ordem sequencial do Status primeiro!", 20},
                     {"STATUSRED", "Código", C::Lista, {}, 0, 2,
                      {{"AO", "AO - AGUARDANDO ORÇAMENTO"}, {"AA", "AA - AGUARDANDO APROVAÇÃO"}, {"AP", "AP - APROVADA"},
                       {"IN", "IN - INICIADA"}, {"FI", "FI - FINALIZADA"}, {"CA", "CA - CANCELADA"}, {"EN", "EN - ENTREGUE"},
                       {"DE", "DE - DEVOLVIDA"}}},
                     {"CORFUNDO", "Cor de fundo", C::Inteiro},
                     {"CORFONTE", "Cor da fonte", C::Inteiro},
                     {"GERAFIN", "Gera financeiro", C::Marca},
                     {"GERAEST", "Movimenta estoque", C::Marca},
                     {"OBR", "Obrigatório", C::Marca},
                     {"FINAL", "Final", C::Marca},
                     {"OBSERVACOES", "Observações", C::Texto, {}, 100}};
    status.perguntaExclusao = "Tem certeza que deseja excluir este Status?";
    status.traco = "Status Excluído (";
    r << status;

    // Insurance plans and laboratories are rows of the commercial registry, with their prices.
    auto parceiro = [](const QString &classe, const QString &titulo, const QString &flag, const QString &msgCodigo,
                       const QString &msgNome, const QString &pergunta, const QString &traco) {
        DeclaracaoRegistro d = declararRegistro(classe, titulo, "Tr" + classe.mid(1), "TBCAD");
        d.filtro = flag + " = 'S'";
        d.fixos = {{"PESSOA", "J"}, {flag, "S"}};
        d.colunas = {{"CODIGO", "Código"}, {"NOME", "Nome"}, {"TELEFONE1", "Telefone"}};
        d.ordens = {{"Nome", "NOME"}};
        d.campos = {{"CODIGO", "Código", C::Inteiro, msgCodigo}, {"NOME", "Nome", C::Texto, msgNome, 50},
                    {"TELEFONE1", "Telefone", C::Texto, {}, 11, 2},
                    {"EMAIL", "E-mail", C::Texto, {}, 240}};
        d.completar = [](db::Transacao &, Valores &v, bool) {
            v["APELIDO"] = v["NOME"].toString().left(20);
            v["RAZAOSOCIAL"] = v["NOME"];
        };
        // Numbered with every other party, and the code unique among them all.
        d.numerada = QStringLiteral("CODIGO");
        d.validar = [](db::Transacao &t, int id, const Valores &v) {
            if (!db::escalar(t, "Select First 1 Id From TbCad Where (Codigo = :C) and (Id <> :ID)",
                             {{"C", v.at("CODIGO")}, {"ID", id}}).isNull())
                throw Recusa(QStringLiteral("Código já existente!"), "CODIGO");
        };
        // Like every party, it starts active, so other screens find it current.
        d.gravado = [](db::Transacao &t, int id, bool novo) {
            if (!novo) return;
            db::executar(t, "Insert Into TbCadSit (Fk, Situacao, Data, IdResp) Values (:FK, 'A', Current_Date, :RESP)",
                         {{"FK", id}, {"RESP", sessao().idUsuario ? QVariant(sessao().idUsuario) : QVariant()}});
        };
        d.perguntaExclusao = pergunta;
        d.traco = traco;
        // Prices, operations and bookings under the plan keep it.
        d.impedem = {{"TBITENSFORN", "IDFORNECEDOR"}, {"TBCOMITENS", "IDCONVENIO"}, {"TBAGENDA", "IDCONVENIO"}};
        d.dependentes = {{"TBCADSIT", "FK"}};
        d.detalhes = {{"Preços", "TBITENSFORN", "IDFORNECEDOR",
                       "Select P.*, I.Descricao Z_Exame From TbItensForn P Left Join TbItens I On (I.Id = P.Fk) "
                       "Where P.IdFornecedor = :MESTRE Order By I.Descricao",
                       {{"FK", "Exame / procedimento"}, {"PRUNITARIO", "Preço"}},
                       {{"FK", "Exame / procedimento", C::Consulta, "Selecione o exame ou procedimento primeiro!", 0, 2, {},
                         "Select Id, Descricao From TbItens Where Tipo In ('E', 'P') Order By Descricao"},
                        {"PRUNITARIO", "Preço", C::Decimal, "Digite o preço primeiro!", 0, 4}}}};
        return d;
    };
    r << parceiro("TConvenios", "Convênios", "CV", "Digite o código do Convênio primeiro!", "Digite o nome do Convênio primeiro!",
                  "Tem certeza que deseja excluir este Convênio?", "Convênio Excluído (");
    r << parceiro("TLaboratorios", "Laboratórios", "LA", "Digite o código do Laboratórioprimeiro!",
                  "Digite o nome do Laboratório primeiro!", "Tem certeza que deseja excluir este Laboratório?",
                  "Laboratório Excluído (");

    // Exams, procedures and text models are rows of the item table.
    auto item = [](const QString &classe, const QString &titulo, const QString &tipo, const QString &msgCodigo,
                   const QString &msgNome, const QString &pergunta, const QString &traco) {
        DeclaracaoRegistro d = declararRegistro(classe, titulo, "Tr" + classe.mid(1), "TBITENS");
        d.filtro = "Tipo = '" + tipo + "'";
        d.fixos = {{"TIPO", tipo}};
        d.colunas = {{"CODIGO", "Código"}, {"DESCRICAO", "Descrição"}, {"PRVENDAVAR", "Preço"}};
        d.ordens = {{"Descrição", "DESCRICAO"}, {"Código", "CODIGO"}};
        d.campos = {{"CODIGO", "Código", C::Texto, msgCodigo, 14}, {"CODIGOBARRAS", "Código de barras", C::Texto, {}, 14},
                    {"DESCRICAO", "Descrição", C::Texto, msgNome, 240}, {"CUSTO", "Custo", C::Decimal, {}, 0, 4},
                    {"PRVENDAVAR", "Preço", C::Decimal, {}, 0, 4}, {"DESCRICAODET", "Descrição detalhada", C::Memo}};
        d.perguntaExclusao = pergunta;
        d.traco = traco;
        // Its prices, its composition and the operations that sold it keep it.
        d.impedem = {{"TBITENSFORN", "FK"}, {"TBITENSCOMP", "FK"}, {"TBCOMITENS", "IDITEM"}};
        d.detalhes = {{"Preço por convênio", "TBITENSFORN", "FK",
                       "Select P.*, C.Nome Z_Convenio From TbItensForn P Left Join TbCad C On (C.Id = P.IdFornecedor) "
                       "Where P.Fk = :MESTRE Order By C.Nome",
                       {{"IDFORNECEDOR", "Convênio"}, {"PRUNITARIO", "Preço"}},
                       {{"IDFORNECEDOR", "Convênio", C::Consulta, "Selecione o Convênio primeiro!", 0, 2, {},
                         "Select Id, Nome From TbCad Where Cv = 'S' or La = 'S' Order By Nome"},
                        {"PRUNITARIO", "Preço", C::Decimal, "Digite o preço primeiro!", 0, 4}}},
                      {"Composição", "TBITENSCOMP", "FK",
                       "Select C.*, I.Descricao Z_Item From TbItensComp C Left Join TbItens I On (I.Id = C.IdItem) "
                       "Where C.Fk = :MESTRE Order By I.Descricao",
                       {{"IDITEM", "Item"}, {"QTD", "Quantidade"}, {"PRUNITARIO", "Preço"}, {"TOTAL", "Total"}},
                       {{"IDITEM", "Item", C::Consulta, "Selecione o item primeiro!", 0, 2, {},
                         "Select Id, Descricao From TbItens Where Tipo In ('D', 'L') Order By Descricao"},
                        {"QTD", "Quantidade", C::Decimal, "Digite a quantidade primeiro!", 0, 4},
                        {"PRUNITARIO", "Preço", C::Decimal, {}, 0, 4}}}};
        return d;
    };
    r << item("TExames", "Exames", "E", "Digite o código do Exame primeiro!", "Digite o nome do Exame/Procedimento primeiro!",
              "Tem certeza que deseja excluir este Exame?", "Exame Excluído (");
    r << item("TProcedimentos", "Procedimentos", "P", "Digite o código do Procedimento primeiro!",
              "Digite o nome do Procedimento primeiro!", "Tem certeza que deseja excluir este Exame?", "Procedimento Excluído (");

    // Medicines and materials are the items an attendance consumes (an exam's composition lists them).
    auto consumo = [](const QString &classe, const QString &titulo, const QString &tipo, const QString &nome,
                      const QString &excluido) {
        DeclaracaoRegistro d = declararRegistro(classe, titulo, "Tr" + classe.mid(1), "TBITENS");
        d.filtro = "Tipo = '" + tipo + "'";
        d.fixos = {{"TIPO", tipo}};
        d.colunas = {{"DESCRICAO", nome}, {"UN", "Unidade"}, {"PRVENDAVAR", "Preço"}};
        d.ordens = {{nome, "DESCRICAO"}};
        d.campos = {{"DESCRICAO", nome, C::Texto, "Digite o nome do " + nome + " primeiro!", 240},
                    {"CODIGO", "Código", C::Texto, {}, 14},
                    {"UN", "Unidade", C::Texto, {}, 6},
                    {"CUSTO", "Custo", C::Decimal, {}, 0, 4},
                    {"PRVENDAVAR", "Preço", C::Decimal, {}, 0, 4},
                    {"DESCRICAODET", "Observações", C::Memo}};
        d.perguntaExclusao = "Tem certeza que deseja excluir este " + nome + "?";
        d.traco = excluido;
        return d;
    };
    r << consumo("TMedicamentos", "Medicamentos", "D", "Medicamento", "Medicamento Excluído (");
    r << consumo("TMateriais", "Materiais", "L", "Material", "Material Excluído (");

    DeclaracaoRegistro textos = declararRegistro("TTextos", "Modelos de Texto", "TrTextos", "TBITENS");
    textos.filtro = "Tipo = 'T'";
    textos.fixos = {{"TIPO", "T"}};
    textos.colunas = {{"DESCRICAO", "Título"}};
    textos.ordens = {{"Título", "DESCRICAO"}};
    textos.campos = {{"DESCRICAO", "Título", C::Texto, "Digite o título do Modelo de Texto primeiro!", 240},
                     {"DESCRICAODET", "Texto", C::Memo}};
    textos.perguntaExclusao = "Tem certeza que deseja excluir este Modelo de Texto?";
    textos.traco = "Modelo de Texto Excluído (";
    r << textos;

    DeclaracaoRegistro cc = simples("TCentrosCusto", "Centros de Custo", "TBCCUSTO", "CENTROCUSTO", "Centro de custo", 50,
                                    "Digite o nome do centro de custo primeiro!");
    cc.campos.prepend({"CODIGO", "Código", C::Texto, "Digite o código do centro de custo primeiro!", 10});
    cc.colunas.prepend({"CODIGO", "Código"});
    r << cc;
    return r;
}

} // namespace

const QList<DeclaracaoRegistro> &registrosAuxiliares()
{
    static const QList<DeclaracaoRegistro> r = montar();
    return r;
}

const DeclaracaoRegistro *registroAuxiliar(const QString &classe)
{
    for (const DeclaracaoRegistro &d : registrosAuxiliares())
        if (d.classe == classe) return &d;
    return nullptr;
}


} // namespace orb
