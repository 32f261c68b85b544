#pragma once
// A machine's reading: its counters continue from the last reading, their differences become
// money, and the money is split between the point, the reading operator and the business.
// Plain routines over a transaction; the screen (TLeituras86) only gathers values and shows refusals.

#include "registro/Registro.h"

#include <QDate>
#include <QDateTime>

namespace orb {

// ---- counters: initial, final and difference of one counter (entries or exits)

struct Triplo {
    qint64 inicial = 0;
    qint64 final = 0;
    qint64 diferenca = 0;
    bool operator==(const Triplo &) const = default;
};

enum class Editado { Diferenca, InicialOuFinal };

// The triple after one of its fields was edited: a typed difference (> 0) moves the final; a typed
// initial or final (final > 0) gives the difference; otherwise the other way round.
Triplo recalcular(Triplo t, Editado e);

// ---- money, in the order it is computed, each value as the database keeps it (2 decimals)

struct Rateio {
    qint64 moedas = 0;       // HPMOEDAS: coins in less coins out
    db::Decimal total;       // HPTOTAL
    db::Decimal comPonto;    // COMPONTO: the point's share
    db::Decimal aReceber;    // ARECEBER
    db::Decimal comOper;     // COMOPER: the operator's share, of what remains after the point's
    db::Decimal liquido;     // LIQUIDO: the business's
};

// Counters count cents when the machine has no coin value of its own.
db::Decimal multiplicador(const db::Decimal &moeda);
Rateio ratear(qint64 difEntrada, qint64 difSaida, const db::Decimal &moeda, const db::Decimal &percPonto,
              const db::Decimal &percOper);

// ---- a reading in TBFL_LEITURAS

inline const QString kSemMaquina = QStringLiteral("Digite o Número do Selo da Máquina primeiro!");
inline const QString kSemData = QStringLiteral("Digite a Data da Leitura primeiro!");
inline const QString kSeloDesconhecido = QStringLiteral("Máquina não encontrada com este Selo!");

DeclaracaoRegistro declaracaoLeituras();

// The machine of a seal; 0 when none.
int maquinaDoSelo(db::Transacao &t, const QString &selo);
// What a reading copies from its machine and the machine's point: point, operator (who reads, by
// default the machine's), route, area, percentages, coin value, the display names (Z_), and the
// initial counters LEEI and LESI continuing from the machine's latest reading. Empty when none.
Valores dadosDaMaquina(db::Transacao &t, int idMaq);
// The money of a reading's values from its differences, its percentages and its machine's coin.
void calcularValores(Valores &v, const db::Decimal &moeda);

// Checks, computes the money again and writes; id 0 = a new reading, stamped `agora`.
int salvarLeitura(db::Transacao &t, int id, Valores v, const QDateTime &agora, const Sessao &quem);
void excluirLeitura(db::Transacao &t, int id, const Sessao &quem);

// ---- the list

struct FiltroLeituras {
    QDate de, ate;            // reading date, inclusive; null = open
    int idMaq = 0, idOper = 0, idRota = 0;  // 0 = any; the operator is the one who read
};
// The browse query, latest first, with its parameters.
QString sqlLeituras(const FiltroLeituras &f, std::map<QString, QVariant> &p);
// One reading (:LEITURA) with every name the screen shows.
QString sqlLeitura();

} // namespace orb
