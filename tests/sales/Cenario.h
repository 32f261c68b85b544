#pragma once
// A sales scenario on a test database: a selling company in a state with ICMS rates, a customer,
// an attendant and merchandise of each CST group.

#include "Vendas.h"
#include "apoio/BancoTeste.h"
#include "db/Banco.h"

#include <QMap>

namespace teste {

struct CenarioVendas {
    int empresa = 0, cliente = 0, atendente = 0, transportadora = 0;
    QMap<QString, int> itens;  // by CST (origin + code): "000", "010", ...

    explicit CenarioVendas(db::Transacao &t)
    {
        const int cidade = db::escalar(t, "Select First 1 Id From TbCidades Where Uf = 'SP' Order By Id").toInt();
        db::executar(t, "Insert Into TbIcms (Uf, PercIcmsO, PercIcmsD) Values ('SP', 18, 12)");
        auto cad = [&](const char *nome, const char *flag) {
            return db::escalar(t, QString("Insert Into TbCad (Nome, Apelido, Pessoa, %1, IdCidade, Endereco, Numero, Bairro, Cep) "
                                          "Values (:N, :N, 'J', 'S', :C, 'RUA DAS FLORES', '10', 'CENTRO', '01001000') Returning Id").arg(flag),
                               {{"N", nome}, {"C", cidade}}).toInt();
        };
        empresa = cad("LOJA", "Em");
        cliente = cad("CLIENTE BOM", "Cl");
        atendente = cad("ATENDENTE", "Fu");
        transportadora = cad("TRANSPORTES", "Tr");
        // Rates that leave remainders everywhere: 17.5 %, a 33.33 % margin, 41.67 % reduction.
        struct { const char *cst, *icms, *red, *mva, *redSt, *ipi; } grupos[] = {
            {"000", "17.50", "0", "0", "0", "5.00"},     {"010", "17.50", "0", "33.33", "0", "0"},
            {"020", "17.50", "41.67", "0", "0", "0"},    {"070", "17.50", "41.67", "33.33", "58.33", "2.50"},
            {"030", "0", "0", "40.55", "0", "0"},        {"040", "0", "0", "0", "0", "7.77"},
            {"260", "12.00", "0", "25.25", "0", "0"},
        };
        for (const auto &g : grupos)
            itens[g.cst] = db::escalar(t, "Insert Into TbItens (Codigo, Descricao, Tipo, Un, PrVendaAt, PrVendaVar, Origem, Cst, PercIcms, "
                                          "PercRedBcIcms, PercMvaIcmsSt, PercRedBcIcmsSt, PercIpi, ContrSerial) Values (:C, :D, 'M', 'UN', "
                                          "9.8765, 12.3457, :O, :CST, :ICMS, :RED, :MVA, :REDST, :IPI, 'SAÍ') Returning Id",
                                       {{"C", QString("M%1").arg(g.cst)}, {"D", QString("MERCADORIA %1").arg(g.cst)},
                                        {"O", QString(g.cst).left(1)}, {"CST", QString(g.cst).mid(1)},
                                        {"ICMS", QVariant::fromValue(db::Decimal(g.icms))}, {"RED", QVariant::fromValue(db::Decimal(g.red))},
                                        {"MVA", QVariant::fromValue(db::Decimal(g.mva))}, {"REDST", QVariant::fromValue(db::Decimal(g.redSt))},
                                        {"IPI", QVariant::fromValue(db::Decimal(g.ipi))}}).toInt();
        itens["SERV"] = db::escalar(t, "Insert Into TbItens (Codigo, CodigoBarras, Descricao, Tipo, Un, PrVendaAt, PrVendaVar) Values "
                                       "('S1', '7890001', 'INSTALAÇÃO', 'S', 'H', 50, 60) Returning Id").toInt();
    }
    // A new document of `modo` for the customer, by the attendant, from the company, with lines of (item, quantity).
    orb::Documento documento(db::Transacao &t, const QString &modo, const orb::Sessao &s, const QDateTime &quando,
                             const QList<QPair<const char *, const char *>> &linhas = {})
    {
        orb::Documento d = orb::incluirDocumento(t, orb::modoOperacao(modo), s, quando);
        d.cabecalho["IDCAD"] = cliente;
        d.cabecalho["IDATENDENTE"] = atendente;
        d.cabecalho["IDEMPRESA"] = empresa;
        for (const auto &[item, qtd] : linhas) {
            orb::Valores l = orb::linhaDoItem(t, itens[item], d.cabecalho["TIPO"].toString());
            l["QTD"] = QVariant::fromValue(db::Decimal(qtd));
            d.linhas.append(l);
        }
        return d;
    }
};

} // namespace teste
