#include "principal/Parametros.h"

#include "schema/Atualizacao.h"

namespace orb {

QColor corDoBanco(const QVariant &v)
{
    if (v.isNull() || !v.isValid()) return {};
    const qint64 n = v.toLongLong();
    if (n < 0) return {};
    return QColor(int(n & 0xFF), int((n >> 8) & 0xFF), int((n >> 16) & 0xFF));
}

ParametrosGlobais lerParametros(db::Transacao &t)
{
    db::Consulta q(t,
        "Select P.CaminhoServidor, P.CaminhoEstacoes, P.CorCabecalho, P.CorCampoAtual, P.SupNome, P.SupCep, P.SupEnd, "
        "P.SupNum, P.SupComp, P.SupBairro, P.SupCid, P.SupTel, P.SupWhatsapp, P.SupSkype, P.SupEmail, P.SupSite, "
        "P.Ramo, P.MonOsRemId, P.MonOsUsuario, P.MonOsSenha, Current_Date DataAtual, P.IdEmpresa, "
        "Ca.Nome, Ca.IdCidade, Ci.Cidade, Ci.Uf, Ca.Telefone1, Ca.Email "
        "From TbParGlobais P "
        "Left Join TbCad Ca On (Ca.Id = P.IdEmpresa) "
        "Left Join TbCidades Ci On (Ci.Id = Ca.IdCidade) "
        "Order By P.Id");
    q.executar();
    ParametrosGlobais p;
    if (!q.proxima()) {
        // Without a parameters row there is no server date to read; this machine's date stands in.
        p.dataAtual = QDate::currentDate();
        return p;
    }
    auto s = [&](const char *c) { return q[c].toString(); };
    p.caminhoServidor = s("CAMINHOSERVIDOR");
    p.caminhoEstacoes = s("CAMINHOESTACOES");
    p.corCabecalho = corDoBanco(q["CORCABECALHO"]);
    p.corCampoAtual = corDoBanco(q["CORCAMPOATUAL"]);
    p.supNome = s("SUPNOME"), p.supCep = s("SUPCEP"), p.supEnd = s("SUPEND"), p.supNum = s("SUPNUM");
    p.supComp = s("SUPCOMP"), p.supBairro = s("SUPBAIRRO"), p.supCid = s("SUPCID"), p.supTel = s("SUPTEL");
    p.supWhatsapp = s("SUPWHATSAPP"), p.supSkype = s("SUPSKYPE"), p.supEmail = s("SUPEMAIL"), p.supSite = s("SUPSITE");
    if (!s("RAMO").trimmed().isEmpty()) p.ramo = s("RAMO").trimmed();
    p.monOsRemId = q["MONOSREMID"].toInt();
    p.monOsUsuario = s("MONOSUSUARIO");
    p.monOsSenha = s("MONOSSENHA");
    p.dataAtual = q["DATAATUAL"].toDate();
    p.idEmpresa = q["IDEMPRESA"].toInt();
    // A principal company not filled in yet lends none of its values.
    if (s("NOME").trimmed() != QLatin1String(esquema::kEmpresaNaoPreenchida)) {
        p.nome = s("NOME");
        p.idCidade = q["IDCIDADE"].toInt();
        p.cidade = s("CIDADE");
        p.uf = s("UF");
        p.telefone1 = s("TELEFONE1");
        p.email = s("EMAIL");
    }
    return p;
}

} // namespace orb
