#include "Gerador.h"

#include <QDate>
#include <QStringList>
#include <random>

namespace bench {

namespace {

const QStringList kNomes = {"Ana", "Bruno", "Carla", "Daniel", "Eduarda", "Felipe", "Gabriela", "Heitor", "Isabela",
                            "João", "Larissa", "Marcos", "Natália", "Otávio", "Paula", "Rafael", "Sofia", "Tiago",
                            "Vitória", "William"};
const QStringList kSobrenomes = {"Silva", "Santos", "Oliveira", "Souza", "Rodrigues", "Ferreira", "Alves", "Pereira",
                                 "Lima", "Gomes", "Costa", "Ribeiro", "Martins", "Carvalho", "Almeida", "Lopes",
                                 "Soares", "Fernandes", "Vieira", "Barbosa"};
const QStringList kProdutos = {"Parafuso", "Porca", "Arruela", "Caneta", "Caderno", "Cabo", "Tomada", "Lâmpada",
                               "Filtro", "Correia", "Rolamento", "Mangueira", "Torneira", "Fita", "Cola", "Tinta"};
const QStringList kDetalhes = {"inox", "azul", "10mm", "reforçado", "3/4", "branca", "industrial", "premium",
                               "econômico", "bivolt", "flexível", "galvanizado"};

} // namespace

void gerarCadastros(db::Banco &b, int quantos, unsigned semente)
{
    std::mt19937 g(semente);
    auto um = [&](const QStringList &l) { return l[int(g() % unsigned(l.size()))]; };
    db::Transacao t(b);
    db::Consulta q(t, "insert into TbCad (Codigo, Nome, Apelido, Pessoa, Cpf, Cnpj, RazaoSocial, Telefone1, Cl, Fo, "
                      "DataCadastro) values (:CODIGO, :NOME, :APELIDO, :PESSOA, :CPF, :CNPJ, :RAZAO, :FONE, 'S', :FO, "
                      ":DATA) returning Id");
    db::Consulta sit(t, "insert into TbCadSit (Data, Situacao, Fk) values (:DATA, 'A', :FK)");
    const QDate inicio(2015, 1, 1);
    for (int i = 0; i < quantos; ++i) {
        const bool juridica = g() % 5 == 0;
        const QString nome = um(kNomes) + " " + um(kSobrenomes) + " " + um(kSobrenomes);
        const QString digitos = QString::number(10000000000ULL + g() % 89999999999ULL);
        q.bind("CODIGO", i + 1000).bind("NOME", juridica ? nome + " Comércio Ltda" : nome).bind("APELIDO", nome.left(20));
        q.bind("PESSOA", juridica ? "J" : "F");
        q.bind("CPF", juridica ? QVariant() : QVariant(digitos.left(11)));
        q.bind("CNPJ", juridica ? QVariant(digitos + "000") : QVariant());
        q.bind("RAZAO", juridica ? QVariant(nome + " Comércio Ltda") : QVariant());
        q.bind("FONE", QString("119%1").arg(g() % 100000000, 8, 10, QChar('0')));
        q.bind("FO", juridica && g() % 3 == 0 ? "S" : "N");
        const QDate data = inicio.addDays(int(g() % 4000));
        q.bind("DATA", QDateTime(data, QTime(9, 0)));
        const int id = q.escalar().toInt();
        sit.bind("DATA", data).bind("FK", id);
        sit.executar();
    }
    t.commit();
}

QList<int> gerarItens(db::Banco &b, int quantos, int empresas, unsigned semente)
{
    std::mt19937 g(semente);
    auto um = [&](const QStringList &l) { return l[int(g() % unsigned(l.size()))]; };
    db::Transacao t(b);
    QList<int> ids;
    {
        db::Consulta q(t, "Select Id From TbCad Where Em = 'S' Order By Id");
        q.executar();
        while (q.proxima()) ids << q.valor(0).toInt();
    }
    for (int e = int(ids.size()); e < empresas; ++e)
        ids << db::escalar(t, "insert into TbCad (Nome, Apelido, Pessoa, Em) values (:N, :N, 'J', 'S') returning Id",
                           {{"N", QString("Filial %1").arg(e)}}).toInt();
    ids = ids.mid(0, empresas);
    const int grupo = db::escalar(t, "insert into TbGrupos (Codigo, Grupo, Tipo) values (1, 'Geral', 'M') returning Id").toInt();
    const int fabricante = db::escalar(t, "insert into TbFabricantes (Fabricante) values ('Fábrica') returning Id").toInt();
    db::Consulta q(t, "insert into TbItens (Tipo, Codigo, CodigoBarras, Descricao, Un, IdGrupo, IdFabricante, Custo, "
                      "PrVendaAt, PrVendaVar, DispVenda, DispWeb, Versao) values ('M', :CODIGO, :BARRAS, :DESCRICAO, 'UN', "
                      ":GRUPO, :FAB, :CUSTO, :AT, :VAR, :DISP, :WEB, :VERSAO) returning Id");
    db::Consulta est(t, "insert into TbItensEst (IdEmpresa, EstMinimo, EstMaximo, EstAtual, Fk) values (:E, :MIN, :MAX, :ATUAL, :FK)");
    for (int i = 0; i < quantos; ++i) {
        const qint64 centavos = 50 + g() % 50000;
        q.bind("CODIGO", QString("P%1").arg(i, 6, 10, QChar('0')));
        q.bind("BARRAS", QString("789%1").arg(i, 10, 10, QChar('0')));
        q.bind("DESCRICAO", QString("%1 %2 %3").arg(um(kProdutos), um(kDetalhes)).arg(i));
        q.bind("GRUPO", grupo).bind("FAB", fabricante);
        q.bind("CUSTO", QVariant::fromValue(db::Decimal::bruto(centavos, 2)));
        q.bind("AT", QVariant::fromValue(db::Decimal::bruto(centavos * 3 / 2, 2)));
        q.bind("VAR", QVariant::fromValue(db::Decimal::bruto(centavos * 2, 2)));
        q.bind("DISP", g() % 10 ? "S" : "N").bind("WEB", g() % 4 ? "N" : "S").bind("VERSAO", g() % 8 ? "C" : "N");
        const int id = q.escalar().toInt();
        for (int e : ids) {
            const int minimo = int(g() % 10), maximo = minimo + int(g() % 50);
            est.bind("E", e).bind("MIN", minimo).bind("MAX", maximo).bind("ATUAL", int(g() % 70) - 5).bind("FK", id);
            est.executar();
        }
    }
    t.commit();
    return ids;
}

int gerarDocumentos(db::Banco &b, int quantos, unsigned semente)
{
    std::mt19937 g(semente);
    db::Transacao t(b);
    QList<int> pessoas, itens;
    {
        db::Consulta q(t, "Select Id From TbCad Where Cl = 'S' Order By Id");
        q.executar();
        while (q.proxima()) pessoas << q.valor(0).toInt();
        db::Consulta i(t, "Select Id From TbItens Order By Id");
        i.executar();
        while (i.proxima()) itens << i.valor(0).toInt();
    }
    if (pessoas.isEmpty() || itens.isEmpty()) return 0;
    db::Consulta cab(t, "insert into TbCom (Op, Emissao, Data, IdCad, Total) values (1, :DATA, :DATA, :CAD, :TOTAL) returning Id");
    db::Consulta lin(t, "insert into TbComItens (Fk, IdItem, Descricao, Qtd, PrUnitario, Total) values (:FK, :ITEM, :D, :QTD, :PR, :TOTAL)");
    const QDateTime inicio(QDate(2024, 1, 1), QTime(8, 0));
    for (int n = 0; n < quantos; ++n) {
        const qint64 qtd[2] = {qint64(1 + g() % 9), qint64(1 + g() % 9)};
        const qint64 preco[2] = {qint64(100 + g() % 90000), qint64(100 + g() % 90000)};
        cab.bind("DATA", inicio.addSecs(qint64(n) * 600)).bind("CAD", pessoas[int(g() % unsigned(pessoas.size()))]);
        cab.bind("TOTAL", QVariant::fromValue(db::Decimal::bruto(qtd[0] * preco[0] + qtd[1] * preco[1], 2)));
        const int id = cab.escalar().toInt();
        for (int i = 0; i < 2; ++i) {
            lin.bind("FK", id).bind("ITEM", itens[int(g() % unsigned(itens.size()))]).bind("D", QString("Item %1 do pedido %2").arg(i + 1).arg(n));
            lin.bind("QTD", QVariant::fromValue(db::Decimal::bruto(qtd[i] * 10000, 4)));
            lin.bind("PR", QVariant::fromValue(db::Decimal::bruto(preco[i] * 100, 4)));
            lin.bind("TOTAL", QVariant::fromValue(db::Decimal::bruto(qtd[i] * preco[i], 2)));
            lin.executar();
        }
    }
    t.commit();
    return quantos;
}

} // namespace bench
