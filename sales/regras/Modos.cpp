#include "Modos.h"

#include <stdexcept>

namespace orb {

namespace {

const QString kLista1 = "Incluir;Alterar;Imprimir;Excluir";
const QString kLista2 = "Incluir;Alterar;Imprimir;Excluir;Aprovar;Cancelar Aprovação;Iniciar;Finalizar;Cancelar;Entregar;Cancelar Entrega";
const QString kLista3 = "Incluir;Alterar;Imprimir;Excluir;Aprovar;Cancelar Aprovação;Iniciar;Finalizar;Cancelar;Paralizar";
const QString kLista4 = "Incluir;Alterar;Imprimir;Excluir;Aprovar;Cancelar Aprovação;Cancelar;Entregar;Cancelar Entrega";

const QList<QPair<QString, QString>> kOrdensComuns = {
    {"CÓDIGO", "C.Id Desc"}, {"DATA EMISSÃO", "C.Emissao Desc"}, {"CLIENTE", "C.Emissao Desc, Ca1.Nome"}, {"SERIAL", "C.Id Desc"}};

QList<QPair<QString, QString>> ordens(const QList<QPair<QString, QString>> &extras)
{
    QList<QPair<QString, QString>> l = kOrdensComuns;
    l.append(extras);
    return l;
}

} // namespace

const QList<ModoOperacao> &modosOperacao()
{
    // Sales, purchases and rentals approve and deliver without work steps; service orders start
    // and finish their work; contracts and projects may be stopped instead of delivered.
    static const QList<ModoOperacao> l = {
        {"Ven", 1, "Comercial - Vendas", "Total da Venda", "Vendas", kLista4.split(';'), "TbParVendas", "Nova Venda", "Esta venda",
         "Incluir", false, ordens({{"DATA VENDA", "C.Data Desc"}}), "TVendas"},
        {"Ser", 2, "Comercial - Ordens de Serviço", "Total da OS", "Servicos", kLista2.split(';'), "TbParServicos", "Novo Serviço",
         "Este serviço", "Incluir", true,
         ordens({{"PLACA", "C.Placa, C.Emissao Desc"}, {"TÉCNICO", "C.Emissao Desc, Fu2.Nome"}}), "TServicos"},
        {"Con", 3, "Comercial - Contratos", "Total do Contrato", "Contratos", kLista3.split(';'), "TbParContratos", "Novo Contrato",
         "Este contrato", "Incluir", false, ordens({}), "TContratos"},
        {"Com", 4, "Comercial - Compras", "Total da Compra", "Compras", kLista4.split(';'), "TbParCompras", "Nova Compra", "Esta compra",
         "Incluir Compras", false, ordens({{"DATA COMPRA", "C.Data Desc"}, {"FORNECEDOR", "Ca1.Nome, C.Emissao Desc"}}), "TCompras"},
        {"Loc", 5, "Comercial - Locações", "", "Locacoes", kLista4.split(';'), "TbParVendas", "Nova Locação", "Esta locação", "Incluir",
         false, ordens({})},
        {"Pro", 6, "Comercial - Projetos", "Total do Projeto", "Projetos", kLista3.split(';'), "TbParServicos", "Novo Projeto",
         "Este projeto", "Incluir", false, ordens({{"CATEGORIA", "C.Emissao Desc"}}), "TProjetos"},
    };
    return l;
}

const ModoOperacao &modoOperacao(const QString &codigo)
{
    for (const ModoOperacao &m : modosOperacao())
        if (m.codigo == codigo)
            return m;
    throw std::out_of_range("modo de operação desconhecido: " + codigo.toStdString());
}

const ModoOperacao &modoDoOp(int op)
{
    for (const ModoOperacao &m : modosOperacao())
        if (m.op == op)
            return m;
    throw std::out_of_range("operação desconhecida: " + std::to_string(op));
}

QString sqlConsultaOperacoes(const ModoOperacao &m, const QString &ordem)
{
    QString orderBy = "C.Id Desc";
    for (const auto &o : m.ordens)
        if (o.first == ordem)
            orderBy = o.second;
    // The op is a constant of the mode, never typed; the order comes from the fixed list above.
    return QString(
               // The computed TotalFrete, DataEntrega and DataAprovacao come before the header's own columns of the
               // same names, so that a lookup by name finds them.
               "Select (Select Sum(F.TotalFrete) From TbComFat F Where F.Fk = C.Id) TotalFrete, "
               "St.Status Status, Case When St.Status = 'EN' Then St.Data End DataEntrega, "
               "Case When St.Status = 'AP' Then St.Data End DataAprovacao, C.*, Cf.Id Z_IdFat, Ca1.Nome Z_ClienteFor, Ci.Cidade Z_Cidade, Ci.Uf Z_Uf, Ca1.Telefone1 Z_Telefone1, "
               "Ca1.Telefone2 Z_Telefone2, Ca1.Telefone3 Z_Telefone3, Ca1.Radio Z_Radio, Ca1.Email Z_Email, "
               "Case When Ca1.Pessoa = 'F' Then Ca1.Cpf When Ca1.Pessoa = 'J' Then Ca1.Cnpj End Z_CpfCnpj, "
               "Rep.Nome Z_Representante, Fu1.Nome Z_Atendente, Fu2.Nome Z_Tecnico, Emp.Apelido Z_Empresa, Ac.Nome Z_Acond, "
               "(Select Sum(F.ValorBr) From TbComFat F Where F.Fk = C.Id) Z_TotalFatBr, "
               "C.Total - Coalesce((Select Sum(F.ValorBr) From TbComFat F Where F.Fk = C.Id), 0) Z_TotalAFatBr, "
               "(Select Sum(Ct.Valor) From TbContas Ct Join TbComFat F On (F.Id = Ct.Fk) Where F.Fk = C.Id and Ct.Fks = C.Op "
               "and Ct.NaoQuitado > 0) Z_APagar "
               "From TbCom C "
               // The billing joined as an inner join would be, but after the header: the list then walks the
               // header's index newest first and stops at the page instead of sorting every document.
               "Left Join TbComFat Cf On (Cf.Fk = C.Id) "
               "Left Join TbComSt St On (St.Id = (Select Max(S.Id) From TbComSt S Where S.Fk = C.Id)) "
               "Left Join TbCad Ca1 On (Ca1.Id = C.IdCad) Left Join TbCidades Ci On (Ci.Id = Ca1.IdCidade) "
               "Left Join TbCad Rep On (Rep.Id = C.IdRepresentante) Left Join TbCad Fu1 On (Fu1.Id = C.IdAtendente) "
               "Left Join TbCad Fu2 On (Fu2.Id = C.IdTecnico) Left Join TbCad Emp On (Emp.Id = C.IdEmpresa) "
               "Left Join TbAcond Ac On (Ac.Id = C.IdAcond) "
               "Where C.Op = %1 and Cf.Id Is Not Null Order By %2")
        .arg(m.op)
        .arg(orderBy);
}

QString sqlBuscaOperacoes(const ModoOperacao &m, const QString &ordem, const QString &texto, bool inicio,
                          std::map<QString, QVariant> &params)
{
    const QString s = sqlConsultaOperacoes(m, ordem);
    const int corte = int(s.lastIndexOf(" Order By "));
    QString filtro;
    const QString t = texto.trimmed();
    bool numero = false;
    const int id = t.toInt(&numero);
    if (!t.isEmpty() && numero && (ordem == "CÓDIGO" || ordem.isEmpty())) {
        filtro = " and C.Id = :ID";
        params["ID"] = id;
    } else if (!t.isEmpty()) {
        filtro = inicio ? " and Upper(Ca1.Nome) Starting With :T" : " and Upper(Ca1.Nome) Containing :T";
        params["T"] = t.toUpper();
    }
    return s.left(corte) + filtro + s.mid(corte);
}

QString consultaPadrao(db::Transacao &t, const ModoOperacao &m, const QDate &hoje)
{
    return db::escalar(t, QString("Select First 1 Consulta From %1 Where Data <= :HOJE Order By Data Desc, Id Desc").arg(m.parametros),
                       {{"HOJE", hoje}}).toString();
}

} // namespace orb
