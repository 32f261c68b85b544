#pragma once
// Address by CEP: what this workstation already knows (its cache, then the cities registry) at
// once, and, when an online service is configured and answers, the street and district too.
// Offline is never an error: the user just types what is missing.

#include "db/Banco.h"

#include <QObject>
#include <QUrl>

class QNetworkAccessManager;

namespace orb {

struct Endereco {
    QString cep, logradouro, bairro, cidade, uf;
    int idCidade = 0;
    bool achou() const { return idCidade != 0 || !logradouro.isEmpty(); }
};

class BuscaCep : public QObject {
    Q_OBJECT
public:
    explicit BuscaCep(QObject *parent = nullptr);
    // The service's address with "%1" where the CEP goes; empty = offline only.
    void definirServico(const QString &modelo) { modelo_ = modelo; }
    void definirCache(const QString &arquivo) { cache_ = arquivo; }
    // Immediate answer from the cache or the cities registry.
    Endereco local(db::Transacao &t, const QString &cep) const;
    // Asks the service; `encontrado` arrives later (nothing when offline or unknown).
    void consultar(const QString &cep);
    // The city of the registry for a name and state (0 when the registry lacks it).
    static int idCidade(db::Transacao &t, const QString &cidade, const QString &uf);

signals:
    void encontrado(const orb::Endereco &e);

private:
    void guardar(const Endereco &e) const;
    QString modelo_, cache_;
    QNetworkAccessManager *rede_ = nullptr;
};

BuscaCep &buscaCep();

} // namespace orb
