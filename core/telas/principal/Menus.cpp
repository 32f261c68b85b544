#include "principal/Menus.h"

#include <QHash>

namespace orb {

namespace {

QHash<QString, FabricaFormulario> &fabricas()
{
    static QHash<QString, FabricaFormulario> f;
    return f;
}

using G = GrupoCatalogo;
using M = ModuloMenu;

// Administration is reached the same way in every segment.
G sistema()
{
    return {"Sistema1", "&Sistema",
            {{"Usuarios1", "&Usuários...", "TUsuarios"},
             {"Niveis1", "&Níveis de Acesso...", "TNiveis"},
             {"Empresas1", "&Empresas...", "TEmpresas"},
             {"Config1", "&Configuração do Banco de Dados...", "TConfig"},
             {"CopiaSeguranca1", "Cópia de Se&gurança...", "TCopiaSeguranca"}}};
}

G fichario(const QString &nome, const QString &caption)
{
    return {nome, caption,
            {{"Clientes1", "&Clientes...", "TClientes"},
             {"Fornecedores1", "&Fornecedores...", "TFornecedores"},
             {"Transportadoras1", "&Transportadoras...", "TTransportadoras"},
             {"CadComerciais1", "Cadastro &Geral...", "TCadComerciais"},
             {"Cidades1", "C&idades...", "TCidades"},
             {"Bancos1", "&Bancos...", "TBancos"},
             {"OpTel1", "&Operadoras de Telefonia...", "TOpTel"},
             {"Feriados1", "Feri&ados...", "TFeriados"}}};
}

G pessoal(QList<M> extra = {})
{
    G g{"Pessoal1", "&Pessoal",
        {{"Funcionarios1", "&Funcionários...", "TFuncionarios"},
         {"Funcoes1", "F&unções...", "TFuncoes"},
         {"Horarios1", "&Horários...", "THorarios"}}};
    g.modulos += extra;
    return g;
}

G inventario()
{
    return {"Inventario1", "&Inventário",
            {{"Estoque1", "&Estoque...", "TEstoque"},
             {"Inventario2", "&Inventário...", "TInventario"},
             {"Grupos1", "&Grupos...", "TGrupos"},
             {"Subgrupos1", "&Subgrupos...", "TSubgrupos"},
             {"Acondic1", "&Acondicionamentos...", "TAcondic"},
             {"Kits1", "&Kits...", "TKits"}}};
}

G financeiro()
{
    return {"Financeiro1", "&Financeiro",
            {{"ContasPagar1", "Contas a &Pagar...", "TContasPagar"},
             {"ContasReceber1", "Contas a &Receber...", "TContas"},
             {"AbEncMov1", "&Abertura e Encerramento do Movimento...", "TAbEncMovimento"},
             {"CondPagto1", "&Condições de Pagamento...", "TCondPagto"},
             {"Categorias1", "Ca&tegorias...", "TCategorias"},
             {"Subcategorias1", "&Subcategorias...", "TSubcategorias"},
             {"CentrosCusto1", "Centros de C&usto...", "TCentrosCusto"}}};
}

G relatorios()
{
    return {"Relatorios1", "&Relatórios", {{"RelApontamentos1", "&Apontamentos...", "TOpImpApontamentos"}}};
}

QList<G> comercial()
{
    return {sistema(),
            fichario("Operacional1", "&Operacional"),
            pessoal(),
            inventario(),
            {"Comercial1", "&Comercial",
             {{"Mercadorias1", "&Mercadorias e Serviços...", "TEstoque"},
              {"Fabricantes1", "&Fabricantes...", "TFabricantes"},
              {"Grades1", "G&rades...", "TGrades"},
              {"Vendas1", "&Vendas...", "TVendas"},
              {"OrdensServico1", "&Ordens de Serviço...", "TServicos"},
              {"Contratos1", "C&ontratos...", "TContratos"},
              {"VendaExp1", "Venda &Expressa...", "TVendaExp"},
              {"Compras1", "&Compras...", "TCompras"},
              {"EtapasCom1", "&Etapas das Operações...", "TEtapasCom"},
              {"StatusCom1", "&Status das Operações...", "TStatusCom"},
              {"Cfop1", "CF&OP...", "TCfop"},
              {"Icms1", "&ICMS...", "TIcms"}}},
            financeiro(),
            {"Maquinas1", "&Máquinas",
             {{"Areas1", "Á&reas...", "TAreas"},
              {"Rotas1", "&Rotas...", "TRotas"},
              {"Operadores1", "&Operadores...", "TOperadores"},
              {"Pontos1", "&Pontos...", "TPontos"},
              {"Maquinas2", "&Máquinas...", "TMaquinas"},
              {"Leituras1", "&Leituras...", "TLeituras86"}}},
            relatorios()};
}

} // namespace

QString nomeMenuPrincipal(const QString &ramo)
{
    const int i = int(kRamos.indexOf(ramo));
    static const char *nomes[] = {"MainMenu1", "MainMenu2", "MainMenu5", "MainMenu3", "MainMenu4", "MainMenu6", "MainMenu7"};
    return i < 0 ? "MainMenu1" : nomes[i];
}

QList<GrupoCatalogo> menuDoRamo(const QString &ramo)
{
    if (ramo == "IG")
        return {sistema(),
                {"Eclesiasticos1", "&Eclesiásticos",
                 {{"Membros1", "&Membros...", "TMembros"}, {"Pastores1", "&Pastores...", "TPastores"},
                  {"Igrejas1", "&Igrejas...", "TIgrejas"}, {"Ministerios1", "Mi&nistérios...", "TMinisterios"}}},
                {"Secretaria1", "Se&cretaria",
                 {{"Agendas1", "&Agendas...", "TAgendas"}, {"Certificados1", "&Certificados...", "TCertificados"},
                  {"Cartas1", "Cartas de &Transferência...", "TCartasTransf"}}},
                {"Atividades1", "&Atividades", {{"Atividades2", "&Atividades...", "TAtividades"}}},
                financeiro()};
    if (ramo == "AL")
        return {sistema(),
                fichario("Fichario1", "&Fichário"),
                pessoal({{"Apontamentos1", "&Cartão de Ponto...", "TApontamentos"}}),
                {"Comercial1", "&Comercial",
                 {{"TiposRoupas1", "&Tipos de Roupas...", "TTiposRoupas"},
                  {"Roupas1", "&Estoque...", "TEstoque"},
                  {"Compras1", "C&ompras...", "TCompras"},
                  {"Integrantes1", "&Integrantes...", "TIntegrantes"},
                  {"Reservas1", "Consulta de &Reservas...", "TConsReservas"},
                  {"Acessorios1", "A&cessórios...", "TAcessorios"},
                  {"Alugueis1", "&Aluguéis/Vendas...", "TAlugueis"},
                  {"Comissoes1", "Co&missões...", "TFecComissoes"}}},
                financeiro()};
    if (ramo == "AC")
        return {sistema(),
                {"Condominios1", "&Condomínios",
                 {{"Condominios2", "&Condomínios...", "TCondominios"}, {"Blocos1", "&Blocos...", "TBlocos"},
                  {"Cartoes1", "Cartões de &Acesso...", "TCartoes"}}}};
    if (ramo == "EN")
        return {sistema(),
                fichario("Operacional1", "&Operacional"),
                pessoal(),
                {"Suprimentos1", "S&uprimentos",
                 {{"PedForn1", "&Pedidos de Fornecimento...", "TPedForn"}, {"Compras1", "&Compras...", "TCompras"}}},
                {"Projetos1", "P&rojetos",
                 {{"Projetos2", "&Projetos...", "TProjetos"}, {"OrdensServico1", "&Ordens de Serviço...", "TServicos"}}},
                inventario(),
                financeiro()};
    if (ramo == "ME")
        return {sistema(),
                {"Clinica1", "C&línica",
                 {{"Laboratorios1", "&Laboratórios...", "TLaboratorios"}, {"Materiais1", "&Materiais...", "TMateriais"},
                  {"Medicamentos1", "M&edicamentos...", "TMedicamentos"}, {"Convenios1", "&Convênios...", "TConvenios"},
                  {"Exames1", "E&xames...", "TExames"}, {"Procedimentos1", "&Procedimentos...", "TProcedimentos"},
                  {"Consultorios1", "C&onsultórios...", "TConsultorios"},
                  {"StatusMed1", "&Status da Agenda...", "TStatusMed"},
                  {"AgendaMed1", "&Agenda...", "TAgendaMed"}, {"Textos1", "Modelos de &Textos...", "TTextos"},
                  {"AtendMed1", "A&tendimentos...", "TAtendMed"}}},
                fichario("Operacional1", "&Operacional"),
                pessoal({{"Especialidades1", "&Especialidades...", "TEspecialidades"},
                         {"Especialistas1", "E&specialistas...", "TEspecialistas"},
                         {"Medicos1", "&Médicos...", "TMedicos"}}),
                inventario()};
    if (ramo == "VE")
        return {sistema(),
                {"Operacional1", "&Operacional",
                 {{"Proprietarios1", "&Proprietários...", "TProprietarios"}, {"Especies1", "&Espécies...", "TEspecies"},
                  {"Racas1", "&Raças...", "TRacas"}, {"Cores1", "&Cores...", "TCores"},
                  {"Animais1", "&Animais...", "TAnimais"}}},
                pessoal(),
                {"Clinica1", "C&línica",
                 {{"AgendaMed1", "&Agenda...", "TAgendaMed"}, {"Atendimentos1", "A&tendimentos...", "TAtendimentos"}}},
                relatorios()};
    return comercial();
}

QList<GrupoCatalogo> menuDisponivel(const QString &ramo)
{
    QList<GrupoCatalogo> r = menuDoRamo(ramo);
    for (GrupoCatalogo &g : r)
        g.modulos.removeIf([](const ModuloMenu &m) { return !formularioExiste(m.classe); });
    return r;
}

QHash<QString, QString> &recusas()
{
    static QHash<QString, QString> r;
    return r;
}

void registrarFormulario(const QString &classe, FabricaFormulario f, const QString &recusaVisualizacao)
{
    fabricas().insert(classe, std::move(f));
    if (!recusaVisualizacao.isEmpty()) recusas().insert(classe, recusaVisualizacao);
}

QString recusaVisualizacao(const QString &classe) { return recusas().value(classe, kSemPermissaoModulo); }
bool formularioExiste(const QString &classe) { return fabricas().contains(classe); }

QWidget *criarFormulario(const QString &classe, QWidget *parent)
{
    auto it = fabricas().find(classe);
    return it == fabricas().end() ? nullptr : (*it)(parent);
}

} // namespace orb
