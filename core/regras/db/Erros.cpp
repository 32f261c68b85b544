#include "db/Erros.h"

#include <ibase.h>

#include <algorithm>

namespace db {

namespace {
bool tem(const std::vector<long> &c, long v) { return std::find(c.begin(), c.end(), v) != c.end(); }
} // namespace

ErroBanco::ErroBanco(TipoErro tipo, QString mensagem, QString tecnico, QString sqlstate,
                     std::vector<long> codigos, QString campo)
    : std::runtime_error((mensagem + (tecnico.isEmpty() ? QString() : "\n" + tecnico)).toStdString()),
      tipo_(tipo), mensagem_(std::move(mensagem)), tecnico_(std::move(tecnico)),
      sqlstate_(std::move(sqlstate)), codigos_(std::move(codigos)), campo_(std::move(campo))
{
}

TipoErro classificar(const QString &sqlstate, const std::vector<long> &c)
{
    if (tem(c, isc_deadlock) || tem(c, isc_lock_conflict) || tem(c, isc_update_conflict)
        || tem(c, isc_concurrent_transaction) || sqlstate == "40001")
        return TipoErro::Conflito;
    if (tem(c, isc_network_error) || tem(c, isc_net_connect_err) || tem(c, isc_net_read_err)
        || tem(c, isc_net_write_err) || tem(c, isc_lost_db_connection) || tem(c, isc_conn_lost)
        || tem(c, isc_shutdown) || tem(c, isc_att_shutdown) || tem(c, isc_net_server_shutdown)
        || tem(c, isc_unavailable) || sqlstate.startsWith("08"))
        return TipoErro::Conexao;
    if (tem(c, isc_transliteration_failed))
        return TipoErro::ForaDoConjunto;
    if (tem(c, isc_string_truncation) || sqlstate == "22001")
        return TipoErro::TextoLongo;
    if (tem(c, isc_foreign_key))
        return TipoErro::Dependentes;
    if (tem(c, isc_unique_key_violation) || tem(c, isc_no_dup))
        return TipoErro::Duplicado;
    if (tem(c, isc_not_valid))
        return TipoErro::Obrigatorio;
    if (tem(c, isc_date_range_exceeded))
        return TipoErro::DataInvalida;
    if (tem(c, isc_numeric_out_of_range) || tem(c, isc_convert_error) || sqlstate == "22003")
        return TipoErro::NumeroInvalido;
    if (sqlstate == "22018")
        return TipoErro::ForaDoConjunto;
    return TipoErro::Outro;
}

QString mensagemPara(TipoErro tipo, const QString &campo)
{
    const QString oCampo = campo.isEmpty() ? QString() : QStringLiteral(" \"%1\"").arg(campo);
    switch (tipo) {
    case TipoErro::Conflito:
        return QStringLiteral("Este registro está sendo alterado em outra estação de trabalho. "
                              "Aguarde o término da alteração e tente novamente.");
    case TipoErro::TextoLongo:
        return campo.isEmpty()
            ? QStringLiteral("O texto informado é maior do que o campo permite.")
            : QStringLiteral("O texto informado no campo%1 é maior do que o campo permite.").arg(oCampo);
    case TipoErro::ForaDoConjunto:
        return QStringLiteral("O texto informado%1 contém caracteres que o banco de dados não aceita. "
                              "Retire os símbolos especiais e tente novamente.")
            .arg(campo.isEmpty() ? QString() : QStringLiteral(" no campo%1").arg(oCampo));
    case TipoErro::Conexao:
        return QStringLiteral("Não foi possível comunicar com o servidor do banco de dados. "
                              "Verifique a rede e se o servidor está ligado.");
    case TipoErro::Dependentes:
        return QStringLiteral("Não foi possível excluir este registro pois existem registros dependentes do mesmo!");
    case TipoErro::Duplicado:
        return QStringLiteral("Já existe um registro com este valor%1.").arg(oCampo);
    case TipoErro::Obrigatorio:
        return QStringLiteral("O campo%1 é de preenchimento obrigatório.").arg(oCampo);
    case TipoErro::DataInvalida:
        return QStringLiteral("Data inválida!");
    case TipoErro::NumeroInvalido:
        return QStringLiteral("Valor inválido!");
    case TipoErro::Outro:
        break;
    }
    return QStringLiteral("Erro no banco de dados.");
}

} // namespace db
