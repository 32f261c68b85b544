#include "copias/Servico.h"

#include <firebird/Interface.h>
#include <ibase.h>

#include <vector>
#ifdef Q_OS_UNIX
#include <cstdio>
#include <unistd.h>
#endif

using namespace Firebird;

namespace copias {

namespace {

struct Status : ThrowStatusWrapper {
    Status() : ThrowStatusWrapper(db::mestre()->getStatus()) {}
    ~Status() { dispose(); }
};

[[noreturn]] void lancar(const FbException &e)
{
    std::vector<long> codigos;
    QString sqlstate;
    for (const intptr_t *p = e.getStatus()->getErrors(); *p != isc_arg_end;) {
        const intptr_t tipo = *p++;
        if (tipo == isc_arg_gds) codigos.push_back(long(*p));
        else if (tipo == isc_arg_sql_state) sqlstate = QString::fromLatin1(reinterpret_cast<const char *>(*p));
        p += tipo == isc_arg_cstring ? 2 : 1;
    }
    char buf[2048];
    db::mestre()->getUtilInterface()->formatStatus(buf, sizeof buf, e.getStatus());
    const QString tecnico = QString::fromUtf8(buf).trimmed();
    const db::TipoErro tipo = db::classificar(sqlstate, codigos);
    // The engine's own words say what was wrong with the file; ours only frame them.
    throw db::ErroBanco(tipo, tipo == db::TipoErro::Conexao ? db::mensagemPara(tipo, {}) : tecnico, tecnico, sqlstate, codigos);
}

class Bloco {
public:
    Bloco(unsigned tipo) { b_ = db::mestre()->getUtilInterface()->getXpbBuilder(&s_, tipo, nullptr, 0); }
    ~Bloco() { b_->dispose(); }
    IXpbBuilder *operator->() { return b_; }
    Status &s() { return s_; }
    const unsigned char *dados() { return b_->getBuffer(&s_); }
    unsigned tamanho() { return b_->getBufferLength(&s_); }

private:
    Status s_;
    IXpbBuilder *b_;
};

// The engine in this process, meeting a backup file that ends too early, asks on the terminal for
// its next volume and waits for an answer; the program reads nothing from there, so the question
// meets the end of the input and the restore fails, as it should.
void semTerminal()
{
#ifdef Q_OS_UNIX
    static const bool feito = [] { return isatty(STDIN_FILENO) ? std::freopen("/dev/null", "r", stdin) != nullptr : true; }();
    (void)feito;
#endif
}

// Starts the action on the manager and hands each output line over until the service is done;
// an action that failed throws when its output ends.
void executar(const db::Conexao &c, const std::function<void(Bloco &)> &acao, const Linha &linha)
{
    semTerminal();
    try {
        Status s;
        Bloco anexo(IXpbBuilder::SPB_ATTACH);
        anexo->insertString(&anexo.s(), isc_spb_user_name, c.usuario.toUtf8().constData());
        anexo->insertString(&anexo.s(), isc_spb_password, c.senha.toUtf8().constData());
        IProvider *prov = db::mestre()->getDispatcher();
        IService *svc = nullptr;
        try {
            svc = prov->attachServiceManager(&s, gerenciador(c.banco).toUtf8().constData(), anexo.tamanho(), anexo.dados());
        } catch (...) {
            prov->release();
            throw;
        }
        prov->release();
        struct Soltar {
            IService *svc;
            ~Soltar()
            {
                Status s;
                try { svc->detach(&s); } catch (...) { svc->release(); }
            }
        } soltar{svc};

        Bloco inicio(IXpbBuilder::SPB_START);
        acao(inicio);
        svc->start(&s, inicio.tamanho(), inicio.dados());

        // Waits up to a second for each line; an empty answer while the service still runs is only a pause.
        const unsigned char espera[] = {isc_info_svc_timeout, 4, 0, 1, 0, 0, 0};
        const unsigned char pedido[] = {isc_info_svc_line};
        const unsigned char situacao[] = {isc_info_svc_running};
        std::vector<unsigned char> buf(32000);  // the length travels in 16 bits
        for (;;) {
            svc->query(&s, sizeof espera, espera, sizeof pedido, pedido, unsigned(buf.size()), buf.data());
            const unsigned char *p = buf.data();
            unsigned n = 0;
            if (*p == isc_info_svc_line) {
                n = unsigned(p[1]) | (unsigned(p[2]) << 8);
                if (n > 0 && linha) linha(QString::fromUtf8(reinterpret_cast<const char *>(p + 3), int(n)));
            }
            if (n > 0) continue;
            svc->query(&s, 0, nullptr, sizeof situacao, situacao, unsigned(buf.size()), buf.data());
            const bool rodando = buf[0] == isc_info_svc_running && (buf[1] | buf[2] | buf[3] | buf[4]) != 0;
            if (!rodando) break;
        }
    } catch (const FbException &e) {
        lancar(e);
    }
}

void texto(Bloco &b, unsigned char tag, const QString &v) { b->insertString(&b.s(), tag, v.toUtf8().constData()); }

} // namespace

QString prefixoServidor(const QString &banco)
{
    const int dp = int(banco.indexOf(':'));
    return dp <= 1 ? QString() : banco.left(dp + 1);
}

QString gerenciador(const QString &banco) { return prefixoServidor(banco) + QStringLiteral("service_mgr"); }

QString caminhoNoServidor(const QString &banco) { return banco.mid(prefixoServidor(banco).size()); }

void gerarBackup(const db::Conexao &c, const QString &arquivo, const Linha &linha)
{
    executar(c, [&](Bloco &b) {
        b->insertTag(&b.s(), isc_action_svc_backup);
        texto(b, isc_spb_dbname, caminhoNoServidor(c.banco));
        texto(b, isc_spb_bkp_file, arquivo);
        b->insertTag(&b.s(), isc_spb_verbose);
    }, linha);
}

void restaurarBackup(const db::Conexao &c, const QString &arquivo, const QString &destino, const Linha &linha)
{
    executar(c, [&](Bloco &b) {
        b->insertTag(&b.s(), isc_action_svc_restore);
        texto(b, isc_spb_bkp_file, arquivo);
        texto(b, isc_spb_dbname, destino);
        b->insertInt(&b.s(), isc_spb_options, isc_spb_res_create);
        b->insertTag(&b.s(), isc_spb_verbose);
    }, linha);
}

} // namespace copias
