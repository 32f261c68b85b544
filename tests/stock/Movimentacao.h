#pragma once
// A supply of paper in its group and subgroup, an employee to send and receive it, and a movement's
// header and line of it, ready to be saved.

#include "Inventario.h"
#include "db/Banco.h"

#include <QDate>

namespace teste {

struct PapelNoAlmoxarifado {
    int grupo = 0, sub = 0, papel = 0, resp = 0;

    PapelNoAlmoxarifado(db::Transacao &t, int estoque)
    {
        grupo = db::escalar(t, "insert into TbGrupos (Codigo, Grupo) values (1, 'ESCRITÓRIO') returning Id").toInt();
        sub = db::escalar(t, "insert into TbGruposSub (Fk, Codigo, Subgrupo) values (:G, 1, 'PAPEL') returning Id", {{"G", grupo}}).toInt();
        papel = db::escalar(t, "insert into TbInventario (Tipo, Codigo, Descricao, Un, IdGrupo, IdSubgrupo, EstAtual) "
                               "values ('ESTOQUE', 1, 'Papel A4', 'CX', :G, :S, :E) returning Id",
                            {{"G", grupo}, {"S", sub}, {"E", estoque}}).toInt();
        resp = db::escalar(t, "insert into TbCad (Codigo, Nome, Apelido, Fu, Pessoa) values (77, 'Ana Lima', 'ANA', 'S', 'F') "
                              "returning Codigo").toInt();
    }
    orb::Valores linha(const char *qtd, const QString &tipo = orb::kSaida) const
    {
        orb::Valores l = orb::novaLinha();
        l.insert_or_assign("TIPOMOVIMENTACAO", tipo);
        for (const auto &[k, v] : orb::Valores{{"IDGRUPO", grupo}, {"IDSUBGRUPO", sub}, {"IDINVENTARIO", papel},
                                               {"QTD", QVariant::fromValue(db::Decimal(qtd))}, {"ORIGEM", "Almoxarifado"},
                                               {"DESTINO", "Recepção"}, {"CODREMETENTE", resp}, {"CODDESTINATARIO", resp}})
            l.insert_or_assign(k, v);
        return l;
    }
    orb::Valores cabecalho() const
    {
        orb::Valores c = orb::novaMovimentacao(QDate(2026, 11, 23));
        c.insert_or_assign("FORMAENVIORECTO", orb::kViaOutros);
        c.insert_or_assign("CODRESPMOVIMENTACAO", resp);
        return c;
    }
};

} // namespace teste
