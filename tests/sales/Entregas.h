#pragma once
// A sale ready for approval and delivery: an item of 100.00 without tax remainders, the billing
// "A PRAZO" in three, the logged user an employee, the day's cash session open.

#include "Cenario.h"
#include "Vendas.h"
#include "apoio/BancoTeste.h"

namespace teste {

inline const QDateTime kDia(QDate(2026, 3, 10), QTime(9, 0));

struct VendaPronta {
    db::Transacao &t;
    CenarioVendas c{t};
    orb::Sessao adm = administrador(t, "&Comercial", "TVendas");
    int item = 0, principal = 0;

    explicit VendaPronta(db::Transacao &tr) : t(tr)
    {
        db::executar(t, "Update TbCad Set Fu = 'S' Where Id = :ID", {{"ID", adm.idUsuario}});
        item = db::escalar(t, "Insert Into TbItens (Codigo, Descricao, Tipo, Un, PrVendaAt, PrVendaVar, Origem, Cst, PercIcms, PercIpi, "
                              "ContrSerial) Values ('M100', 'MERCADORIA CEM', 'M', 'UN', 100, 100, '0', '40', 0, 0, 'NÃO') Returning Id").toInt();
        principal = db::escalar(t, "Select First 1 IdEmpresa From TbParGlobais").toInt();
    }
    void abrirCaixa(bool fechado = false) { teste::abrirCaixa(t, kDia.date(), adm.idUsuario, fechado); }
    // A sale (op 1) or a purchase (op 4) of `qtd` of `idItem`, in `parcelas` instalments.
    int salvar(const char *qtd = "2.0000", const QString &parcelas = "03", const QString &geraFin = "A", int idItem = 0, int op = 1)
    {
        orb::Documento d = c.documento(t, orb::modoDoOp(op).codigo, adm, kDia);
        orb::Valores l = orb::linhaDoItem(t, idItem ? idItem : item, "V");
        l["QTD"] = QVariant::fromValue(db::Decimal(qtd));
        l["PRUNITARIO"] = QVariant::fromValue(db::Decimal("50.0000"));
        d.linhas.append(l);
        d.faturamento["IDEMPRESA"] = c.empresa;
        d.faturamento["GERAFIN"] = geraFin;
        if (parcelas != "01") {
            d.faturamento["CONDPAGTO"] = "P";
            d.faturamento["PARCELAS"] = parcelas;
            d.faturamento["PRIMVENC"] = 30;
            d.faturamento["INTVENC"] = 30;
        }
        return orb::salvarDocumento(t, d, adm, kDia);
    }
    int fat(int idCom) { return db::escalar(t, "Select Id From TbComFat Where Fk = :ID", {{"ID", idCom}}).toInt(); }
    db::Decimal estoque(int empresa, int idItem = 0)
    {
        return db::escalar(t, "Select EstAtual From TbItensEst Where Fk = :I and IdEmpresa = :E",
                           {{"I", idItem ? idItem : item}, {"E", empresa}}).value<db::Decimal>();
    }
    bool temEstoque(int empresa)
    {
        return db::escalar(t, "Select Count(*) From TbItensEst Where Fk = :I and IdEmpresa = :E", {{"I", item}, {"E", empresa}}).toInt() > 0;
    }
};

} // namespace teste
