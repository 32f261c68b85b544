#include "Faturamento.h"

namespace orb {

namespace {

} // namespace

QString parcelaQuitada(db::Transacao &t, const QVariant &idFat, int op)
{
    if (idFat.isNull() || idFat.toInt() == 0)
        return {};
    return db::escalar(t, "Select First 1 C.Parcela From TbContas C Where C.Fks = :OP and C.Fk = :F and "
                          "Exists (Select 1 From TbContasPagtos P Where P.Fk = C.Id) Order By C.Prazo, C.Parcela",
                       {{"OP", op}, {"F", idFat}}).toString().trimmed();
}

void mudarDataFaturamento(db::Transacao &t, Valores &fat, int op, const QDateTime &dataOperacao, const QDate &data)
{
    if (data.isValid() && dataOperacao.isValid() && data < dataOperacao.date())
        throw Recusa("A Data do Faturamento deve ser maior ou igual a Data da Operação!", "TBCOMFAT.DATA");
    const QString paga = parcelaQuitada(t, valor(fat, "ID"), op);
    if (!paga.isEmpty() && data != valor(fat, "DATA").toDate())
        throw Recusa("A data do faturamento não pode ser alterada pois a parcela " + paga + " já foi quitada!", "TBCOMFAT.DATA");
    fat["DATA"] = data.isValid() ? QVariant(data) : QVariant();
    if (data.isValid() && !valor(fat, "PRIMVENC").isNull())
        fat["DATAPRIMVENC"] = data.addDays(valor(fat, "PRIMVENC").toInt());
}

void mudarPrimVenc(Valores &fat, const QVariant &dias)
{
    if (valor(fat, "DATA").isNull())
        throw Recusa("Digite a data do faturamento primeiro!", "TBCOMFAT.DATA");
    if (!dias.isNull() && dias.toInt() < 0)
        throw Recusa("O prazo deve ser maior ou igual a zero", "TBCOMFAT.PRIMVENC");
    fat["PRIMVENC"] = dias;
    fat["DATAPRIMVENC"] = dias.isNull() ? QVariant() : QVariant(valor(fat, "DATA").toDate().addDays(dias.toInt()));
}

void mudarDataPrimVenc(Valores &fat, const QDate &data)
{
    if (valor(fat, "DATA").isNull())
        throw Recusa("Digite a data do faturamento primeiro!", "TBCOMFAT.DATA");
    const QDate fatura = valor(fat, "DATA").toDate();
    if (data.isValid() && data <= fatura)
        throw Recusa("A data do Primeiro Vencimento deve ser maior que a data do Faturamento!", "TBCOMFAT.DATAPRIMVENC");
    fat["DATAPRIMVENC"] = data.isValid() ? QVariant(data) : QVariant();
    fat["PRIMVENC"] = data.isValid() ? QVariant(int(fatura.daysTo(data))) : QVariant();
}

void mudarCondicao(db::Transacao &t, Valores &fat, const ModoOperacao &m, const QString &condicao, const QString &parcelas)
{
    const QString paga = parcelaQuitada(t, valor(fat, "ID"), m.op);
    if (!paga.isEmpty())
        throw Recusa("Esta opção não pode ser alterada pois a parcela " + paga + " já foi quitada!", "TBCOMFAT.CONDPAGTO");
    const bool mudouCondicao = condicao != valor(fat, "CONDPAGTO").toString();
    fat["CONDPAGTO"] = condicao;
    if (condicao == "V") {
        fat["PARCELAS"] = "01";
        fat["PRIMVENC"] = QVariant();
        fat["DATAPRIMVENC"] = QVariant();
        fat["INTVENC"] = QVariant();
        fat["ENTRADA"] = "N";
        return;
    }
    if (mudouCondicao) {
        db::Consulta q(t, QString("Select First 1 Parcelas, Entrada, PrimVenc, IntVenc From %1 Order By Data Desc, Id Desc").arg(m.parametros));
        q.executar();
        if (q.proxima()) {
            fat["PARCELAS"] = q[0].toString().trimmed().isEmpty() ? QVariant("01") : QVariant(q[0].toString().trimmed());
            fat["ENTRADA"] = q[1].toString() == "S" ? "S" : "N";
            fat["PRIMVENC"] = q[2];
            fat["INTVENC"] = q[3];
        }
    }
    if (!parcelas.isEmpty())
        fat["PARCELAS"] = parcelas;
    if (!valor(fat, "DATA").isNull() && !valor(fat, "PRIMVENC").isNull())
        fat["DATAPRIMVENC"] = valor(fat, "DATA").toDate().addDays(valor(fat, "PRIMVENC").toInt());
}

} // namespace orb
