#pragma once
// Database failures as typed exceptions with Portuguese messages, decided from Firebird's codes.

#include <QString>
#include <stdexcept>
#include <vector>

namespace db {

enum class TipoErro {
    Conflito,          // record changed/locked by another workstation (nowait update conflict)
    TextoLongo,        // text too long for its column (SQLSTATE 22001)
    ForaDoConjunto,    // text the database character set cannot hold (22018)
    Conexao,           // server unreachable or gone away
    Dependentes,       // foreign key: other records depend on this one
    Duplicado,         // unique or primary key violation
    Obrigatorio,       // NOT NULL column left empty
    DataInvalida,      // conversion to a date or time failed
    NumeroInvalido,    // conversion to a number failed or overflowed
    Outro
};

class ErroBanco : public std::runtime_error {
public:
    ErroBanco(TipoErro tipo, QString mensagem, QString tecnico, QString sqlstate = {},
              std::vector<long> codigos = {}, QString campo = {});

    TipoErro tipo() const { return tipo_; }
    // What the user reads, in Portuguese.
    const QString &mensagem() const { return mensagem_; }
    // Firebird's own text, for the support report.
    const QString &tecnico() const { return tecnico_; }
    const QString &sqlstate() const { return sqlstate_; }
    const std::vector<long> &codigos() const { return codigos_; }
    // The column involved, when Firebird names it.
    const QString &campo() const { return campo_; }

private:
    TipoErro tipo_;
    QString mensagem_, tecnico_, sqlstate_;
    std::vector<long> codigos_;
    QString campo_;
};

// Classification from the raw status vector values; exposed for the error handler's tests.
TipoErro classificar(const QString &sqlstate, const std::vector<long> &codigos);
QString mensagemPara(TipoErro tipo, const QString &campo);

} // namespace db
