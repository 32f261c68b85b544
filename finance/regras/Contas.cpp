#include "Contas.h"

#include "Caixa.h"
#include "Recusa.h"
#include "acesso/Permissoes.h"

namespace orb {

using db::Decimal;

namespace {

const QString kAusente = QStringLiteral("Esta conta não existe mais!");
const QString kMudou = QStringLiteral("Esta conta foi alterada em outra estação; consulte-a novamente.");

bool vazio(const QVariant &v) { return v.isNull() || v.toString().trimmed().isEmpty(); }
bool semId(const QVariant &v) { return v.isNull() || v.toInt() == 0; }
Decimal dec(const QVariant &v) { return v.isNull() ? Decimal::bruto(0, 2) : v.value<Decimal>(); }
QVariant qv(const Decimal &d) { return QVariant::fromValue(d); }
QString codigo(const QVariant &id) { return QString("%1").arg(id.toInt(), 6, 10, QChar('0')); }

const QStringList kColunas = {"ID", "TIPO", "NUMERO", "IDCAD", "HISTORICO", "TIPODOC", "VALOR", "QUITADO", "NAOQUITADO", "JUROSDESC",
                              "VALORTOTAL", "SITUACAO", "FKS", "FK"};

Valores travar(db::Transacao &t, int id) { return travarEstado(t, "TBCONTAS", "ID", id, kColunas, kAusente); }

bool compensavel(const QString &doc) { return doc == "CHEQUE" || doc == "CARTÃO"; }

void log(db::Transacao &t, int id, const QString &texto) { logRegistro(t, "TBCONTAS", "ID", id, texto + " (" + codigo(id) + ")"); }

} // namespace

QString sqlContas(const FiltroContas &f, std::map<QString, QVariant> &p, int limite)
{
    QStringList onde{"C.Tipo = :TIPO"};
    p["TIPO"] = f.tipo;
    if (f.vencimentoDe.isValid()) { onde << "C.Vencimento >= :DE"; p["DE"] = f.vencimentoDe; }
    if (f.vencimentoAte.isValid()) { onde << "C.Vencimento <= :ATE"; p["ATE"] = f.vencimentoAte; }
    if (f.idCad) { onde << "C.IdCad = :CAD"; p["CAD"] = f.idCad; }
    if (f.situacao == "ABERTAS") onde << "C.NaoQuitado > 0";
    else if (f.situacao == "QUITADAS") onde << "C.NaoQuitado = 0";
    else if (!f.situacao.isEmpty()) { onde << "C.Situacao = :SIT"; p["SIT"] = f.situacao; }
    if (f.origem == "MANUAL") onde << "C.Fks Is Null";
    else if (!f.origem.isEmpty()) { onde << "C.Fks = :FKS"; p["FKS"] = f.origem.toInt(); }
    return QString("Select %1 C.Id, C.Vencimento, C.Numero, C.Parcela, Ca.Nome Z_Titular, C.Historico, C.TipoDoc, C.Valor, C.Quitado, "
                   "C.NaoQuitado, C.Situacao, C.Fks, F.Fk Z_IdCom From TbContas C Left Join TbCad Ca On (Ca.Id = C.IdCad) "
                   "Left Join TbComFat F On (F.Id = C.Fk and C.Fks Is Not Null) Where %2 Order By C.Vencimento, C.Id")
        .arg(limite > 0 ? QString("First %1").arg(limite) : QString(), onde.join(" and "));
}

int salvarConta(db::Transacao &t, int id, Valores v, const QList<Valores> &rateios, const Sessao &quem)
{
    exigirOperacao(t, quem, id == 0 ? "Incluir" : "Alterar");
    const QString doc = valor(v, "TIPODOC").toString();
    if (semId(valor(v, "IDCAD"))) throw Recusa("Escolha o Titular primeiro!", "IDCAD");
    if (vazio(valor(v, "HISTORICO"))) throw Recusa("Digite o Histórico primeiro!", "HISTORICO");
    if (!valor(v, "VENCIMENTO").toDate().isValid()) throw Recusa("Digite o Vencimento primeiro!", "VENCIMENTO");
    if (doc == "CARTÃO" && semId(valor(v, "IDBANDEIRA"))) throw Recusa("Escolha a Bandeira primeiro!", "IDBANDEIRA");
    if (valor(v, "VALORBRUTO").isNull() || dec(valor(v, "VALORBRUTO")).zero())
        throw Recusa("Digite o Valor Bruto primeiro!", "VALORBRUTO");
    if (semId(valor(v, "IDCCOR"))) throw Recusa("Escolha a Conta Corrente primeiro!", "IDCCOR");
    if (doc == "CHEQUE") {
        if (semId(valor(v, "IDBANCO"))) throw Recusa("Escolha o banco primeiro!", "IDBANCO");
        const QList<QPair<const char *, const char *>> ch = {
            {"AGENCIACH", "Digite a agência primeiro!"}, {"CCORRENTECH", "Digite a conta corrente primeiro!"},
            {"CORRENTISTACH", "Digite o correntista primeiro!"}, {"CPFCNPJCH", "Digite o CPF/CNPJ primeiro!"},
            {"RGIECH", "Digite o RG/IE primeiro!"}};
        for (const auto &[c, m] : ch)
            if (vazio(valor(v, c))) throw Recusa(m, c);
    }
    const Decimal liquido = (dec(valor(v, "VALORBRUTO")) - dec(valor(v, "DESCONTOS")) + dec(valor(v, "ACRESCIMOS"))).comEscala(2);
    if (rateios.isEmpty()) throw Recusa("Inclua os rateios primeiro!", "RATEIO");
    Decimal soma = Decimal::bruto(0, 2);
    for (const Valores &r : rateios) soma += dec(valor(r, "VALOR"));
    if (soma != liquido) throw Recusa("A soma dos rateios deve ser igual ao valor da conta!", "RATEIO");

    return db::tentativa(t, [&] {
        Decimal quitado = Decimal::bruto(0, 2), juros = Decimal::bruto(0, 2);
        if (id != 0) {
            const Valores a = travar(t, id);
            quitado = dec(a.at("QUITADO"));
            juros = dec(a.at("JUROSDESC"));
            if (liquido < quitado) throw Recusa("O valor da conta não pode ser menor que o já quitado!", "VALORBRUTO");
        }
        v["VALOR"] = qv(liquido);
        v["QUITADO"] = qv(quitado);
        v["NAOQUITADO"] = qv(liquido - quitado);
        v["VALORTOTAL"] = qv(liquido + juros);
        if (id == 0)
            v["SITUACAO"] = doc == "CHEQUE" ? "NÃO COMPENSADO" : "NÃO QUITADO";
        v.erase("ID");
        QStringList cols, pars, sets;
        std::map<QString, QVariant> p;
        for (const auto &[c, x] : v) {
            if (c.startsWith("Z_") || c == "FKS" || c == "FK") continue;  // a document's link is never typed here
            cols << c;
            pars << ":" + c;
            sets << c + " = :" + c;
            p[c] = x;
        }
        int r = id;
        if (id == 0) {
            r = db::escalar(t, QString("Insert Into TbContas (%1) Values (%2) Returning Id").arg(cols.join(", "), pars.join(", ")), p).toInt();
        } else {
            p["ID"] = id;
            db::executar(t, QString("Update TbContas Set %1 Where Id = :ID").arg(sets.join(", ")), p);
        }
        db::executar(t, "Delete From TbContasRat Where Fk = :ID", {{"ID", r}});
        for (const Valores &x : rateios)
            db::executar(t, "Insert Into TbContasRat (IdCCusto, IdCategoria, IdSubcategoria, Valor, Fk) Values (:CC, :CAT, :SUB, :V, :FK)",
                         {{"CC", valor(x, "IDCCUSTO")}, {"CAT", valor(x, "IDCATEGORIA")}, {"SUB", valor(x, "IDSUBCATEGORIA")},
                          {"V", valor(x, "VALOR")}, {"FK", r}});
        logRegistro(t, "TBCONTAS", "ID", r, id == 0 ? kInclusao : kAlteracao);
        return r;
    });
}

void conferirQuitacao(db::Transacao &t, int idConta, const Sessao &quem)
{
    exigirOperacao(t, quem, "Quitar");
    const Valores a = travar(t, idConta);
    if (dec(a.at("NAOQUITADO")) <= Decimal::bruto(0, 2))
        throw Recusa("Essa conta já foi totalmente quitada!");
}

QString quitarConta(db::Transacao &t, int idConta, const Pagamento &p, const Sessao &quem)
{
    conferirQuitacao(t, idConta, quem);
    const Valores a = travar(t, idConta);
    if (semId(p.idCCor)) throw Recusa("Escolha a Conta Corrente primeiro!", "IDCCOR");
    if (!p.data.isValid()) throw Recusa("Digite a data primeiro!", "DATA");
    if (p.valor.isNull() || dec(p.valor).zero()) throw Recusa("Digite o valor primeiro!", "VALOR");
    const bool depois = temOperacao(t, quem, quem.menuAtual, quem.moduloAtual, "Quitar Contas a Receber Após Enc.");
    exigirCaixaAberto(t, p.data, "quitar essa conta", depois);
    const Decimal v = dec(p.valor).comEscala(2), aberto = dec(a.at("NAOQUITADO"));
    if (v > aberto) throw Recusa("O valor pago não pode ser maior que o restante a ser recebido da conta!", "VALOR");
    const QString doc = a.at("TIPODOC").toString();
    if (doc == "CHEQUE") {
        if (p.destino == "DEVOLVIDO") {
            if (!p.dataSituacao1.isValid()) throw Recusa("Digite a data da primeira devolução primeiro!", "DATASITUACAO1");
            if (p.motSituacao1.trimmed().isEmpty()) throw Recusa("Digite o motivo da primeira devolução primeiro!", "MOTSITUACAO1");
            if (p.dataSituacao2.isValid() && p.motSituacao2.trimmed().isEmpty())
                throw Recusa("Digite o motivo da segunda devolução primeiro!", "MOTSITUACAO2");
        } else if (p.destino == "REPASSADO") {
            if (p.motSituacao1.trimmed().isEmpty()) throw Recusa("Digite o receptor primeiro!", "MOTSITUACAO1");
            if (!p.dataSituacao1.isValid()) throw Recusa("Digite a data do repasse primeiro!", "DATASITUACAO1");
        } else if (p.destino == "CANCELADO/EST.") {
            if (!p.dataSituacao1.isValid()) throw Recusa("Digite a data do cancelamento primeiro!", "DATASITUACAO1");
            if (p.motSituacao1.trimmed().isEmpty()) throw Recusa("Digite o motivo do cancelamento/estorno primeiro!", "MOTSITUACAO1");
        }
    }

    const Decimal jd = p.jurosDesc.comEscala(2);
    db::executar(t, "Insert Into TbContasPagtos (Data, IdCCor, FormaPagto, Valor, JurosDesc, ValorTotal, IdResp, Fk) "
                    "Values (:D, :CC, :F, :V, :JD, :VT, :R, :FK)",
                 {{"D", p.data}, {"CC", p.idCCor}, {"F", p.formaPagto.isEmpty() ? doc : p.formaPagto}, {"V", qv(v)}, {"JD", qv(jd)},
                  {"VT", qv(v + jd)}, {"R", quem.idUsuario ? QVariant(quem.idUsuario) : QVariant()}, {"FK", idConta}});
    const bool total = v == aberto;
    // A partial payment keeps the account's situation: it is settled when nothing is left open.
    QVariant situacao = a.at("SITUACAO");
    if (total) situacao = compensavel(doc) ? "COMPENSADO" : "QUITADO";
    if (doc == "CHEQUE" && !p.destino.isEmpty()) situacao = p.destino;
    Valores novos{{"QUITADO", qv(dec(a.at("QUITADO")) + v)}, {"NAOQUITADO", qv(aberto - v)},
                  {"JUROSDESC", qv(dec(a.at("JUROSDESC")) + jd)}, {"VALORTOTAL", qv(dec(a.at("VALORTOTAL")) + jd)}, {"SITUACAO", situacao}};
    if (doc == "CHEQUE" && !p.destino.isEmpty()) {
        novos["DATASITUACAO1"] = p.dataSituacao1.isValid() ? QVariant(p.dataSituacao1) : QVariant();
        novos["MOTSITUACAO1"] = p.motSituacao1.isEmpty() ? QVariant() : QVariant(p.motSituacao1);
        novos["DATASITUACAO2"] = p.dataSituacao2.isValid() ? QVariant(p.dataSituacao2) : QVariant();
        novos["MOTSITUACAO2"] = p.motSituacao2.isEmpty() ? QVariant() : QVariant(p.motSituacao2);
    }
    mudarEstado(t, "TBCONTAS", "ID", idConta, novos, {{"NAOQUITADO", a.at("NAOQUITADO")}}, kMudou);
    const QString titular = db::escalar(t, "Select Nome From TbCad Where Id = :ID", {{"ID", a.at("IDCAD")}}).toString();
    const QString historico = QString(a.at("TIPO").toString() == "D" ? "Pagamento" : "Recebimento") + " de Conta (" +
                              a.at("NUMERO").toString() + " - " + titular + ")";
    logRegistro(t, "TBCONTAS", "ID", idConta, kAlteracao);
    return historico;
}

void conferirEstorno(db::Transacao &t, int idConta, const Sessao &quem)
{
    exigirOperacao(t, quem, "Estornar");
    travar(t, idConta);
    const QVariant data = db::escalar(t, "Select First 1 Data From TbContasPagtos Where Fk = :ID Order By Id Desc", {{"ID", idConta}});
    if (data.isNull() && db::escalar(t, "Select Count(*) From TbContasPagtos Where Fk = :ID", {{"ID", idConta}}).toInt() == 0)
        throw Recusa("Não existe pagamento a ser estornado!");
    const bool depois = temOperacao(t, quem, quem.menuAtual, quem.moduloAtual, "Estornar Após Enc.");
    exigirCaixaAberto(t, data.toDate(), "estornar esse lançamento", depois);
}

void estornarConta(db::Transacao &t, int idConta, const Sessao &quem)
{
    conferirEstorno(t, idConta, quem);
    const Valores a = travar(t, idConta);
    db::Consulta q(t, "Select First 1 Id, Valor, JurosDesc From TbContasPagtos Where Fk = :ID Order By Id Desc");
    q.bind("ID", idConta);
    q.executar();
    q.proxima();
    const int idPagto = q[0].toInt();
    const Decimal v = dec(q[1]), jd = dec(q[2]);
    q.fechar();
    db::executar(t, "Delete From TbContasPagtos Where Id = :ID", {{"ID", idPagto}});
    const QString doc = a.at("TIPODOC").toString();
    mudarEstado(t, "TBCONTAS", "ID", idConta,
                {{"QUITADO", qv(dec(a.at("QUITADO")) - v)}, {"NAOQUITADO", qv(dec(a.at("NAOQUITADO")) + v)},
                 {"JUROSDESC", qv(dec(a.at("JUROSDESC")) - jd)}, {"VALORTOTAL", qv(dec(a.at("VALORTOTAL")) - jd)},
                 {"SITUACAO", doc == "CHEQUE" ? "NÃO COMPENSADO" : "NÃO QUITADO"}},
                {{"NAOQUITADO", a.at("NAOQUITADO")}}, kMudou);
    log(t, idConta, a.at("TIPO").toString() == "D" ? "Conta a Pagar Estornada" : "Conta a Receber Estornada");
}

void conferirExclusaoConta(db::Transacao &t, int idConta, const Sessao &quem)
{
    exigirOperacao(t, quem, "Excluir");
    const Valores a = travar(t, idConta);
    if (!semId(a.at("FKS"))) {
        const QVariant doc = db::escalar(t, "Select Fk From TbComFat Where Id = :ID", {{"ID", a.at("FK")}});
        const int op = a.at("FKS").toInt();
        const QString alvo = op == 1 ? "a venda " : op == 2 ? "ao serviço " : op == 3 ? "ao contrato " : op == 4 ? "a compra " : "a locação ";
        throw Recusa("Esta Conta não pode ser excluída pois está vinculada " + alvo + codigo(doc) + "!");
    }
    if (db::escalar(t, "Select Count(*) From TbContasPagtos Where Fk = :ID", {{"ID", idConta}}).toInt() > 0)
        throw Recusa("Esta conta não pode ser excluída por já possuir algum pagamento!");
}

void excluirConta(db::Transacao &t, int idConta, const Sessao &quem)
{
    conferirExclusaoConta(t, idConta, quem);
    log(t, idConta, "Conta a Pagar Excluída");
    db::executar(t, "Delete From TbContasRat Where Fk = :ID", {{"ID", idConta}});
    db::executar(t, "Delete From TbContas Where Id = :ID", {{"ID", idConta}});
}

QList<TotalDia> totaisPorDia(db::Transacao &t, const QDate &hoje, int dias)
{
    QList<TotalDia> r;
    for (int i = 0; i < dias; ++i) r.append({hoje.addDays(i), Decimal::bruto(0, 2), Decimal::bruto(0, 2)});
    db::Consulta q(t, "Select Vencimento, Tipo, Sum(NaoQuitado) From TbContas Where Vencimento >= :DE and Vencimento < :ATE "
                      "and NaoQuitado > 0 Group By 1, 2");
    q.bind("DE", hoje).bind("ATE", hoje.addDays(dias));
    q.executar();
    while (q.proxima()) {
        const int i = int(hoje.daysTo(q[0].toDate()));
        if (i < 0 || i >= dias) continue;
        (q[1].toString() == "D" ? r[i].pagar : r[i].receber) = dec(q[2]);
    }
    return r;
}

} // namespace orb
