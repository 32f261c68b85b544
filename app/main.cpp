// ORB Manager: opens (or creates) its database, brings it up to date and shows the main window.

#include "Configuracao.h"
#include "db/Banco.h"
#include "schema/Atualizacao.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QFileInfo>
#include <QLabel>
#include <QMainWindow>
#include <QMessageBox>
#include <QDir>
#include <cstdio>

namespace {

struct Opcoes {
    QString banco;        // --database: a local file instead of the settings
    bool atualizar = false;
};

Opcoes lerOpcoes(const QStringList &args)
{
    QCommandLineParser p;
    p.setApplicationDescription("ORB Manager");
    p.addHelpOption();
    p.addOption({"database", "Usa este arquivo de banco de dados local em vez da configuração.", "arquivo"});
    p.addOption({"upgrade", "Cria o banco se não existir, atualiza sua estrutura, mostra o que mudou e sai."});
    p.process(args);
    return {p.value("database"), p.isSet("upgrade")};
}

db::Conexao conexao(const Opcoes &o)
{
    const QString pasta = QCoreApplication::applicationDirPath();
    const orb::Configuracao cfg = orb::lerConfiguracao(pasta);
    db::Conexao c;
    c.usuario = cfg.usuario;
    c.senha = cfg.senha;
    c.banco = o.banco.isEmpty() ? orb::nomeBanco(cfg, pasta) : QFileInfo(o.banco).absoluteFilePath();
    return c;
}

bool arquivoLocal(const db::Conexao &c)
{
    // A server name comes before ":" (but a Windows drive letter is one character).
    const int dp = int(c.banco.indexOf(':'));
    return dp < 0 || dp == 1;
}

// Opens the database, creating a local one on first start, then applies the upgrade.
std::unique_ptr<db::Banco> abrirAtualizado(const db::Conexao &c, QStringList &aplicadas, const esquema::Progresso &prog)
{
    if (arquivoLocal(c) && !QFileInfo::exists(c.banco)) {
        QDir().mkpath(QFileInfo(c.banco).absolutePath());
        aplicadas << QString("Banco de dados criado: %1").arg(c.banco);
        auto b = esquema::criarBanco(c, prog);
        return b;
    }
    auto b = db::Banco::abrir(c);
    aplicadas << esquema::atualizar(*b, prog);
    return b;
}

int modoAtualizacao(const db::Conexao &c)
{
    try {
        QStringList aplicadas;
        abrirAtualizado(c, aplicadas, {});
        if (aplicadas.isEmpty())
            std::printf("Banco de dados já está atualizado; nenhuma alteração necessária.\n");
        for (const QString &a : aplicadas) std::printf("%s\n", qPrintable(a));
        return 0;
    } catch (const esquema::ErroAtualizacao &e) {
        std::fprintf(stderr, "%s\n", qPrintable(e.mensagem()));
    } catch (const db::ErroBanco &e) {
        std::fprintf(stderr, "%s\n%s\n", qPrintable(e.mensagem()), qPrintable(e.tecnico()));
    } catch (const std::exception &e) {
        std::fprintf(stderr, "Erro: %s\n", e.what());
    }
    return 1;
}

} // namespace

int main(int argc, char *argv[])
{
    QStringList args;
    for (int i = 0; i < argc; ++i) args << QString::fromLocal8Bit(argv[i]);
    const bool semJanela = args.contains("--upgrade") || args.contains("--help") || args.contains("-h");
    if (semJanela) {
        QCoreApplication app(argc, argv);
        const Opcoes o = lerOpcoes(app.arguments());
        return modoAtualizacao(conexao(o));
    }

    QApplication app(argc, argv);
    app.setApplicationName("ORB Manager");
    const Opcoes o = lerOpcoes(app.arguments());
    const db::Conexao c = conexao(o);
    std::unique_ptr<db::Banco> banco;
    try {
        QStringList aplicadas;
        banco = abrirAtualizado(c, aplicadas, {});
    } catch (const esquema::ErroAtualizacao &e) {
        QMessageBox::critical(nullptr, "ORB Manager", e.mensagem());
        return 1;
    } catch (const db::ErroBanco &e) {
        QMessageBox::critical(nullptr, "ORB Manager",
                              QString("Não foi possível abrir o banco de dados %1.\n\n%2").arg(c.banco, e.mensagem()));
        return 1;
    }

    QMainWindow w;
    w.setWindowTitle("ORB Manager");
    auto *l = new QLabel(QString("Banco de dados: %1").arg(c.banco), &w);
    l->setAlignment(Qt::AlignCenter);
    w.setCentralWidget(l);
    w.resize(1024, 700);
    w.show();
    return app.exec();
}
