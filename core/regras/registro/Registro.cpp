#include "registro/Registro.h"

#include "dados/Formatos.h"

#include "acesso/Permissoes.h"
#include "dados/Tabs.h"

#include <QRegularExpression>
#include <QSet>

#include <algorithm>
#include <limits>

namespace orb {

namespace {


// A detail as a registry of its own: its table, its fields, the record's key written on every row.
DeclaracaoRegistro comoRegistro(const DetalheRegistro &d, int idMestre)
{
    DeclaracaoRegistro r;
    r.tabela = d.tabela;
    r.campos = d.campos;
    r.fixos = {{d.chave, idMestre}};
    r.completar = d.completar;
    return r;
}

} // namespace

void logRegistro(db::Transacao &t, const QString &tabela, const QString &chave, const QVariant &valor, const QString &acao,
                 const QList<QPair<QString, QString>> &detalhes)
{
    if (Tabs) Tabs->Log(t, tabela, chave, valor, acao, detalhes);
}

db::Decimal lerNumero(const QString &texto, int escala, const QString &campo)
{
    const auto d = db::Decimal::ler(texto, true);
    if (!d) throw Recusa(kValorInvalido, campo);
    const db::Decimal r = d->comEscala(escala);
    try {
        r.mantissa();  // the column keeps 64 bits at its scale
    } catch (const std::overflow_error &) {
        throw Recusa(kValorInvalido, campo);
    }
    return r;
}

QVariant lerNumeroDoCampo(const CampoForm &c, const QString &texto)
{
    const bool inteiro = c.tipo == CampoForm::Inteiro;
    const QString t = semSufixo(texto, c.coluna, inteiro ? TipoCampo::Inteiro : TipoCampo::Decimal, c.escala);
    if (t.isEmpty()) return {};
    if (!inteiro) return QVariant::fromValue(lerNumero(t, c.escala, c.coluna));
    // An integer with decimals is refused, not rounded to the next one.
    const auto d = db::Decimal::ler(t, true);
    if (!d || !(d->comEscala(0, db::Arredonda::Trunca) == *d)) throw Recusa(kValorInvalido, c.coluna);
    const db::Decimal n = d->comEscala(0);
    if (n.abs() > db::Decimal::inteiro(std::numeric_limits<int>::max())) throw Recusa(kValorInvalido, c.coluna);
    return int(n.mantissa());
}

QHash<QString, QHash<QString, QString>> legendas(const QList<CampoForm> &campos)
{
    QHash<QString, QHash<QString, QString>> r;
    for (const CampoForm &c : campos) {
        if (c.tipo == CampoForm::Marca) r[c.coluna] = {{"S", QStringLiteral("SIM")}, {"N", QStringLiteral("NÃO")}};
        if (c.tipo == CampoForm::Lista && !c.itens.isEmpty())
            for (const auto &[valor, texto] : c.itens) r[c.coluna].insert(valor, texto);
    }
    return r;
}

bool cabeEmWin1252(const QString &texto)
{
    // Latin-1's printable range plus the 27 signs Windows puts where Latin-1 has control codes.
    static const QSet<char16_t> extras = {0x20AC, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030,
                                          0x0160, 0x2039, 0x0152, 0x017D, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
                                          0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x017E, 0x0178};
    for (const QChar c : texto) {
        const char16_t u = c.unicode();
        if (u < 0x80 || (u >= 0xA0 && u <= 0xFF) || extras.contains(u)) continue;
        return false;
    }
    return true;
}

void conferirCaracteres(const QList<CampoForm> &campos, const Valores &v)
{
    for (const CampoForm &c : campos) {
        auto it = v.find(c.coluna);
        if (it == v.end() || it->second.typeId() != QMetaType::QString || cabeEmWin1252(it->second.toString())) continue;
        throw Recusa(db::mensagemPara(db::TipoErro::ForaDoConjunto, QString(c.rotulo).remove('&')), c.coluna);
    }
}

bool preenchido(const QVariant &v)
{
    if (!v.isValid() || v.isNull()) return false;
    if (v.typeId() == QMetaType::QString) {
        static const QRegularExpression soMascara("^[\\s:/.\\-()_]*$");
        return !soMascara.match(v.toString()).hasMatch();
    }
    return true;
}

QString tipoDaFoto(const QByteArray &d)
{
    if (d.startsWith("\xFF\xD8\xFF")) return QStringLiteral("JPG");
    if (d.startsWith("\x89PNG\r\n\x1A\n")) return QStringLiteral("PNG");
    if (d.startsWith("BM") && d.size() > 14) return QStringLiteral("BMP");
    return {};
}

DeclaracaoRegistro declararRegistro(const QString &classe, const QString &titulo, const QString &area, const QString &tabela)
{
    DeclaracaoRegistro d;
    d.classe = classe;
    d.titulo = titulo;
    d.area = area;
    d.tabela = tabela;
    return d;
}

void conferirObrigatorios(const QList<CampoForm> &campos, const Valores &v)
{
    for (const CampoForm &c : campos) {
        if (c.obrigatorio.isEmpty()) continue;
        auto it = v.find(c.coluna);
        if (it == v.end() || !preenchido(it->second)) throw Recusa(c.obrigatorio, c.coluna);
    }
}

int proximoCodigo(db::Transacao &t, const QString &tabela, const QString &campo)
{
    return db::escalar(t, QString("Select Coalesce(Max(%1), 0) + 1 From %2").arg(campo, tabela)).toInt();
}

bool renumerarOferecido(db::Transacao &t, const QString &tabela, const QString &coluna, Valores &v)
{
    const auto o = v.find(kCodigoOferecido);
    if (o == v.end()) return false;
    const auto c = v.find(coluna);
    if (c == v.end() || c->second.isNull() || c->second.toInt() != o->second.toInt()) {
        v.erase(o);  // a code of the user's own
        return false;
    }
    c->second = std::max(c->second.toInt(), proximoCodigo(t, tabela, coluna));
    o->second = c->second;
    return true;
}

int inserirNumerado(db::Transacao &t, const QString &tabela, const QString &coluna, Valores &v,
                    const std::function<int()> &inserir, bool oferecido)
{
    const int proximo = proximoCodigo(t, tabela, coluna);
    int codigo = v.count(coluna) ? v.at(coluna).toInt() : 0;
    const bool novoNumero = oferecido || codigo <= 0 || codigo >= proximo;
    if (codigo <= 0) codigo = proximo;
    for (int vez = 0;; ++vez) {
        v[coluna] = codigo;
        try {
            return db::tentativa(t, inserir);
        } catch (const db::ErroBanco &e) {
            const bool tomado = e.tipo() == db::TipoErro::Duplicado || e.tipo() == db::TipoErro::Conflito;
            // Under simultaneous saves the server was seen to keep the refused row (its own undo
            // missed it) with the code the index refused: it goes now, or it would be committed.
            if (tomado)
                db::executar(t, QString("Delete From %1 Where (%2 = :K) and (Rdb$Record_Version = Current_Transaction)")
                                    .arg(tabela, coluna), {{"K", codigo}});
            if (!novoNumero || !tomado || vez >= 100) throw;
            ++codigo;
        }
    }
}

QString sqlGrade(const DeclaracaoRegistro &d)
{
    if (!d.sqlGrade.isEmpty()) return d.sqlGrade;
    return "Select * From " + d.tabela + (d.filtro.isEmpty() ? QString() : " Where (" + d.filtro + ")");
}

void completarTiposFoto(const QList<CampoForm> &campos, Valores &v)
{
    for (const CampoForm &c : campos)
        if (c.tipo == CampoForm::Foto && !c.colunaTipo.isEmpty() && v.count(c.coluna)) {
            const QString tipo = tipoDaFoto(v[c.coluna].toByteArray());
            v[c.colunaTipo] = tipo.isEmpty() ? QVariant() : tipo;
        }
}

namespace {

// The record written as checked: derived values, fixed values of a new one, then the row and its log.
int escrever(db::Transacao &t, const DeclaracaoRegistro &d, int id, Valores v)
{
    if (d.completar) d.completar(t, v, id == 0);
    if (id == 0)
        for (const auto &[k, x] : d.fixos) v[k] = x;
    completarTiposFoto(d.campos, v);
    // Typed but not columns (a new password before it is hashed) never reach the table.
    for (const CampoForm &c : d.campos)
        if (c.transitorio) v.erase(c.coluna);
    const bool oferecido = v.erase(kCodigoOferecido) > 0;
    if (id == 0 && !d.numerada.isEmpty()) v.try_emplace(d.numerada, QVariant());
    // Column names come from the declaration, never from what was typed.
    QStringList cols, params, sets;
    for (const auto &[k, x] : v) {
        cols << k;
        params << ":" + k;
        sets << k + " = :" + k;
    }
    // The statement hands back the row as written, so the change log needs no second read.
    const QStringList imagem = Tabs ? Tabs->colunasTexto(t, d.tabela) : QStringList();
    const QString devolver = " Returning " + (imagem.isEmpty() ? d.chave : imagem.join(", ") + ", " + d.chave + " As CHAVE_");
    const QString acao = id == 0 ? kInclusao : kAlteracao;
    QString sql;
    if (id == 0) sql = QString("Insert Into %1 (%2) Values (%3)").arg(d.tabela, cols.join(", "), params.join(", "));
    else if (!v.empty()) sql = QString("Update %1 Set %2 Where %3 = :ID_").arg(d.tabela, sets.join(", "), d.chave);
    if (sql.isEmpty()) {
        logRegistro(t, d.tabela, d.chave, id, acao);
        return id;
    }
    auto gravar = [&]() -> int {
        db::Consulta q(t, sql + devolver);
        for (const auto &[k, x] : v) q.bind(k, x);
        if (id) q.bind("ID_", id);
        q.executar();
        if (!q.proxima()) {  // nothing changed: the record is gone
            logRegistro(t, d.tabela, d.chave, id, acao);
            return id;
        }
        const int chave = imagem.isEmpty() ? q.valor(0).toInt() : q.valor(int(imagem.size())).toInt();
        if (Tabs) {
            Registro r{"select * from " + d.tabela.toUpper(), {}};
            for (int i = 0; i < imagem.size(); ++i) r.campos.append({imagem[i], q.valor(i)});
            Tabs->Log(t, r, acao);
        }
        return chave;
    };
    const int chave = id == 0 && !d.numerada.isEmpty() ? inserirNumerado(t, d.tabela, d.numerada, v, gravar, oferecido) : gravar();
    if (d.gravado) d.gravado(t, chave, id == 0);
    return chave;
}

void conferirRegistro(db::Transacao &t, const DeclaracaoRegistro &d, int id, Valores &v)
{
    const bool oferecido = id == 0 && !d.numerada.isEmpty() && renumerarOferecido(t, d.tabela, d.numerada, v);
    conferirObrigatorios(d, v);
    conferirCaracteres(d.campos, v);
    if (!d.validar) return;
    for (int vez = 0;; ++vez) {
        try {
            d.validar(t, id, v);
            return;
        } catch (const Recusa &r) {
            // Another workstation saved the offered code between its numbering and this check.
            if (!oferecido || r.campo != d.numerada || vez >= 100) throw;
            v[d.numerada] = v[d.numerada].toInt() + 1;
            v[kCodigoOferecido] = v[d.numerada];
        }
    }
}

} // namespace

int gravarRegistro(db::Transacao &t, const DeclaracaoRegistro &d, int id, Valores v)
{
    conferirRegistro(t, d, id, v);
    return escrever(t, d, id, std::move(v));
}

int gravarRegistro(db::Transacao &t, const DeclaracaoRegistro &d, int id, Valores v, const Sessao &quem)
{
    exigirOperacao(t, quem, id == 0 ? QStringLiteral("Incluir") : QStringLiteral("Alterar"));
    return gravarRegistro(t, d, id, std::move(v));
}

Valores lerRegistro(db::Transacao &t, const DeclaracaoRegistro &d, int id)
{
    QStringList cols;
    for (const CampoForm &c : d.campos)
        if (!c.transitorio) cols << c.coluna;
    if (cols.isEmpty()) return {};  // a list to look things up in has no fields to read
    db::Consulta q(t, QString("Select %1 From %2 Where %3 = :ID").arg(cols.join(", "), d.tabela, d.chave));
    q.bind("ID", id);
    q.executar();
    Valores v;
    if (q.proxima())
        for (const CampoForm &c : d.campos)
            if (!c.transitorio) v[c.coluna] = q.valor(c.coluna.toUpper());
    return v;
}

void conferirExclusao(db::Transacao &t, const DeclaracaoRegistro &d, int id)
{
    // Names come from the declaration, never from what was typed.
    for (const auto &[tabela, coluna] : d.impedem)
        if (!db::escalar(t, QString("Select First 1 1 From %1 Where %2 = :ID").arg(tabela, coluna), {{"ID", id}}).isNull())
            throw Recusa(kRegistrosDependentes);
}

void excluirRegistro(db::Transacao &t, const DeclaracaoRegistro &d, int id)
{
    conferirExclusao(t, d, id);
    QList<QPair<QString, QString>> detalhes = d.dependentes;
    for (const DetalheRegistro &x : d.detalhes)
        if (x.editavel() && !detalhes.contains({x.tabela, x.chave})) detalhes.append({x.tabela, x.chave});
    logRegistro(t, d.tabela, d.chave, id, kExclusao, detalhes);
    for (const auto &[tabela, fk] : std::as_const(detalhes))
        db::executar(t, QString("Delete From %1 Where %2 = :ID").arg(tabela, fk), {{"ID", id}});
    db::executar(t, QString("Delete From %1 Where %2 = :ID").arg(d.tabela, d.chave), {{"ID", id}});
}

void excluirRegistro(db::Transacao &t, const DeclaracaoRegistro &d, int id, const Sessao &quem)
{
    exigirOperacao(t, quem, QStringLiteral("Excluir"));
    excluirRegistro(t, d, id);
}

// ------------------------------------------------------------------ state changes

Valores travarEstado(db::Transacao &t, const QString &tabela, const QString &chave, const QVariant &valor,
                     const QStringList &colunas, const QString &ausente)
{
    // Table and column names come from the calling routine, never from what was typed.
    db::Consulta q(t, QString("Select %1 From %2 Where %3 = :VALOR With Lock").arg((colunas.isEmpty() ? QStringList{chave} : colunas).join(", "), tabela, chave));
    q.bind("VALOR", valor);
    q.executar();
    if (!q.proxima()) throw Recusa(ausente);
    Valores v;
    for (int i = 0; i < q.colunas(); ++i) v[q.nomeColuna(i)] = q.valor(i);
    return v;
}

void mudarEstado(db::Transacao &t, const QString &tabela, const QString &chave, const QVariant &valor, const Valores &novos,
                 const Valores &esperado, const QString &mudou)
{
    QStringList sets, onde{chave + " = :CHAVE_"};
    for (const auto &[k, x] : novos) sets << k + " = :N_" + k;
    for (const auto &[k, x] : esperado) onde << (x.isNull() ? k + " Is Null" : k + " = :E_" + k);
    db::Consulta q(t, QString("Update %1 Set %2 Where %3").arg(tabela, sets.join(", "), onde.join(" and ")));
    for (const auto &[k, x] : novos) q.bind("N_" + k, x);
    for (const auto &[k, x] : esperado)
        if (!x.isNull()) q.bind("E_" + k, x);
    q.bind("CHAVE_", valor);
    q.executar();
    if (q.afetadas() != 1) throw Recusa(mudou);
}

// ------------------------------------------------------------------ details

QList<Valores> EdicaoDetalhe::valores(int exceto) const
{
    QList<Valores> r;
    for (int i = 0; i < linhas.size(); ++i)
        if (i != exceto) r << linhas[i].valores;
    return r;
}

void EdicaoDetalhe::incluir(const Valores &v) { linhas.append({0, v, true}); }

void EdicaoDetalhe::alterar(int linha, const Valores &v)
{
    LinhaDetalhe &l = linhas[linha];
    for (const auto &[k, x] : v) l.valores[k] = x;
    l.alterada = true;
}

void EdicaoDetalhe::excluir(int linha)
{
    if (linhas[linha].id) excluidas << linhas[linha].id;
    linhas.removeAt(linha);
}

EdicaoDetalhes lerDetalhes(db::Transacao &t, const DeclaracaoRegistro &d, int idMestre)
{
    EdicaoDetalhes r;
    for (const DetalheRegistro &x : d.detalhes) {
        EdicaoDetalhe e;
        if (x.editavel() && idMestre) {
            db::Consulta q(t, x.sqlGrade);
            q.bind("MESTRE", idMestre);
            q.executar();
            while (q.proxima()) {
                LinhaDetalhe l;
                for (int i = 0; i < q.colunas(); ++i) l.valores[q.nomeColuna(i)] = q.valor(i);
                l.id = l.valores["ID"].toInt();
                e.linhas << l;
            }
        }
        r << e;
    }
    return r;
}

void conferirLinhaDetalhe(db::Transacao &t, const DetalheRegistro &d, const Valores &linha, const QList<Valores> &outras)
{
    try {
        conferirObrigatorios(d.campos, linha);
        conferirCaracteres(d.campos, linha);
        if (d.validar) d.validar(t, linha, outras);
    } catch (const Recusa &r) {
        // The form brings the detail's tab forward: the refusal names its table.
        throw Recusa(r.texto, d.tabela);
    }
}

void conferirDetalhes(db::Transacao &t, const DeclaracaoRegistro &d, const EdicaoDetalhes &e)
{
    for (int i = 0; i < d.detalhes.size() && i < e.size(); ++i) {
        if (!d.detalhes[i].editavel()) continue;
        for (int k = 0; k < e[i].linhas.size(); ++k) conferirLinhaDetalhe(t, d.detalhes[i], e[i].linhas[k].valores, e[i].valores(k));
    }
}

void exigirDireitosDetalhes(db::Transacao &t, const Sessao &quem, const QList<EdicaoDetalhe> &e)
{
    bool incluidas = false, alteradas = false, excluidas = false;
    for (const EdicaoDetalhe &x : e) {
        excluidas = excluidas || !x.excluidas.isEmpty();
        for (const LinhaDetalhe &l : x.linhas) {
            incluidas = incluidas || !l.id;
            alteradas = alteradas || (l.id && l.alterada);
        }
    }
    if (incluidas) exigirOperacao(t, quem, QStringLiteral("Incluir"));
    if (alteradas) exigirOperacao(t, quem, QStringLiteral("Alterar"));
    if (excluidas) exigirOperacao(t, quem, QStringLiteral("Excluir"));
}

void gravarDetalhes(db::Transacao &t, const DeclaracaoRegistro &d, int idMestre, const EdicaoDetalhes &e, const Sessao &quem)
{
    QList<EdicaoDetalhe> editaveis;
    for (int i = 0; i < d.detalhes.size() && i < e.size(); ++i)
        if (d.detalhes[i].editavel()) editaveis << e[i];
    exigirDireitosDetalhes(t, quem, editaveis);
    for (int i = 0; i < d.detalhes.size() && i < e.size(); ++i) {
        const DetalheRegistro &x = d.detalhes[i];
        if (!x.editavel()) continue;
        for (int id : e[i].excluidas) {
            logRegistro(t, x.tabela, QStringLiteral("ID"), id, kExclusao);
            db::executar(t, QString("Delete From %1 Where (Id = :ID) and (%2 = :MESTRE)").arg(x.tabela, x.chave),
                         {{"ID", id}, {"MESTRE", idMestre}});
        }
        const DeclaracaoRegistro r = comoRegistro(x, idMestre);
        for (const LinhaDetalhe &l : e[i].linhas) {
            if (l.id && !l.alterada) continue;
            // Only the detail's own fields are written; joined columns came along for the grid.
            Valores v;
            for (const CampoForm &c : x.campos)
                if (auto it = l.valores.find(c.coluna); it != l.valores.end()) v[c.coluna] = it->second;
            escrever(t, r, l.id, v);
        }
    }
}

int salvarRegistro(db::Transacao &t, const DeclaracaoRegistro &d, int id, Valores v, const EdicaoDetalhes &e,
                   const Sessao &quem)
{
    return db::tentativa(t, [&] {
        exigirOperacao(t, quem, id == 0 ? QStringLiteral("Incluir") : QStringLiteral("Alterar"));
        conferirRegistro(t, d, id, v);
        conferirDetalhes(t, d, e);
        const int chave = escrever(t, d, id, v);
        gravarDetalhes(t, d, chave, e, quem);
        return chave;
    });
}

} // namespace orb
