#include "dados/Cep.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QRegularExpression>
#include <QSaveFile>

namespace orb {

namespace {
QString digitos(QString s) { return s.remove(QRegularExpression("[^0-9]")); }

QJsonObject lerCache(const QString &arq)
{
    QFile f(arq);
    if (arq.isEmpty() || !f.open(QIODevice::ReadOnly)) return {};
    return QJsonDocument::fromJson(f.readAll()).object();
}
} // namespace

BuscaCep::BuscaCep(QObject *parent) : QObject(parent) {}

int BuscaCep::idCidade(db::Transacao &t, const QString &cidade, const QString &uf)
{
    return db::escalar(t, "Select Min(Id) From TbCidades Where Upper(Cidade) = Upper(:C) and Uf = :UF",
                       {{"C", cidade.trimmed()}, {"UF", uf.trimmed().toUpper()}}).toInt();
}

Endereco BuscaCep::local(db::Transacao &t, const QString &cepDigitado) const
{
    Endereco e;
    e.cep = digitos(cepDigitado);
    if (e.cep.size() != 8) return e;
    const QJsonObject c = lerCache(cache_).value(e.cep).toObject();
    if (!c.isEmpty()) {
        e.logradouro = c["logradouro"].toString();
        e.bairro = c["bairro"].toString();
        e.cidade = c["cidade"].toString();
        e.uf = c["uf"].toString();
        e.idCidade = idCidade(t, e.cidade, e.uf);
        return e;
    }
    // A city's own CEP, or the CEP range of a city that has a single one (first five digits).
    db::Consulta q(t, "Select First 1 Id, Cidade, Uf From TbCidades "
                      "Where (Cep = :CEP) or (Cep Starting With :PREFIXO) Order By Case When Cep = :CEP Then 0 Else 1 End, Cidade");
    q.bind("CEP", e.cep).bind("PREFIXO", e.cep.left(5));
    q.executar();
    if (q.proxima()) {
        e.idCidade = q["ID"].toInt();
        e.cidade = q["CIDADE"].toString();
        e.uf = q["UF"].toString();
    }
    return e;
}

void BuscaCep::guardar(const Endereco &e) const
{
    if (cache_.isEmpty()) return;
    QJsonObject todos = lerCache(cache_);
    todos.insert(e.cep, QJsonObject{{"logradouro", e.logradouro}, {"bairro", e.bairro}, {"cidade", e.cidade}, {"uf", e.uf}});
    QSaveFile f(cache_);
    if (f.open(QIODevice::WriteOnly)) {
        f.write(QJsonDocument(todos).toJson(QJsonDocument::Compact));
        f.commit();
    }
}

void BuscaCep::consultar(const QString &cepDigitado)
{
    const QString cep = digitos(cepDigitado);
    if (modelo_.isEmpty() || cep.size() != 8) return;
    if (!rede_) rede_ = new QNetworkAccessManager(this);
    QNetworkRequest req(QUrl(modelo_.arg(cep)));
    req.setTransferTimeout(4000);
    QNetworkReply *r = rede_->get(req);
    connect(r, &QNetworkReply::finished, this, [this, r, cep] {
        r->deleteLater();
        if (r->error() != QNetworkReply::NoError) return;  // offline or refused: the user types it
        const QJsonObject o = QJsonDocument::fromJson(r->readAll()).object();
        Endereco e;
        e.cep = cep;
        e.logradouro = o["logradouro"].toString();
        e.bairro = o["bairro"].toString();
        e.cidade = o.contains("localidade") ? o["localidade"].toString() : o["cidade"].toString();
        e.uf = o["uf"].toString();
        if (e.cidade.isEmpty()) return;
        guardar(e);
        emit encontrado(e);
    });
}

BuscaCep &buscaCep()
{
    static BuscaCep *b = new BuscaCep;
    return *b;
}

} // namespace orb
