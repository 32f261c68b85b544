// ORB Manager: one copy per user, splash, database (created on first start), upgrade, login, main window.

#include "Configuracao.h"
#include "FormsCadastros.h"
#include "FormsEstoque.h"
#include "FormsLeituras.h"
#include "FormsFinanceiro.h"
#include "FormsVendas.h"
#include "acesso/TLogin.h"
#include "copias/Comandos.h"
#include "dados/Cep.h"
#include "dados/Monitor.h"
#include "dados/Tabs.h"
#include "db/Banco.h"
#include "copias/TCopiaSeguranca.h"
#include "principal/InstanciaUnica.h"
#include "principal/TConfig.h"
#include "principal/TMain.h"
#include "principal/TSplash.h"
#include "schema/Criacao.h"
#include "ui/Mensagens.h"
#include "ui/TratadorErros.h"

#include <QCommandLineParser>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QFont>
#include <QLibraryInfo>
#include <QLocale>
#include <QPointer>
#include <QSettings>
#include <QStandardPaths>
#include <QUrl>
#include <QIcon>
#include <QStyleFactory>
#include <QTextStream>
#include <QTimer>
#include <QTranslator>
#include <cstdio>

namespace {

struct Opcoes {
    QString banco;  // --database: a local file instead of the settings
    bool atualizar = false;
    bool backup = false;    // --backup [PASTA]
    QString pastaBackup;
    QString restore;        // --restore ARQUIVO
};

Opcoes lerOpcoes(const QStringList &args)
{
    QCommandLineParser p;
    p.setApplicationDescription("ORB Manager");
    p.addHelpOption();
    p.addOption({"database", "Usa este arquivo de banco de dados local em vez da configuração.", "arquivo"});
    p.addOption({"upgrade", "Cria o banco se não existir, atualiza sua estrutura, mostra o que mudou e sai."});
    p.addOption({"backup", "Faz uma cópia de segurança verificada do banco (na pasta dada, ou na configurada) e sai."});
    p.addOption({"restore", "Restaura esta cópia de segurança no lugar do banco de dados, depois de verificá-la, e sai.", "arquivo"});
    p.addPositionalArgument("pasta", "Pasta da cópia de segurança (com --backup).", "[pasta]");
    p.process(args);
    return {p.value("database"), p.isSet("upgrade"), p.isSet("backup"), p.positionalArguments().value(0), p.value("restore")};
}

db::Conexao conexao(const Opcoes &o, const QString &pasta)
{
    const orb::Configuracao cfg = orb::lerConfiguracao(pasta);
    orb::definirGravarMD5(cfg.gravarMD5);
    db::Conexao c;
    c.usuario = cfg.usuario;
    c.senha = cfg.senha;
    c.banco = o.banco.isEmpty() ? orb::nomeBanco(cfg, pasta) : QFileInfo(o.banco).absoluteFilePath();
    return c;
}

int modoAtualizacao(const db::Conexao &c)
{
    try {
        QStringList aplicadas;
        esquema::abrirAtualizado(c, aplicadas);
        if (aplicadas.isEmpty()) std::printf("Banco de dados já está atualizado; nenhuma alteração necessária.\n");
        for (const QString &a : aplicadas) std::printf("%s\n", qPrintable(a));
        return 0;
    } catch (const esquema::ErroAtualizacao &e) {
        std::fprintf(stderr, "%s\n", qPrintable(e.mensagem()));
    } catch (const esquema::BancoIncompleto &e) {
        std::fprintf(stderr, "%s\n", qPrintable(e.mensagem()));
    } catch (const db::ErroBanco &e) {
        std::fprintf(stderr, "%s\n%s\n", qPrintable(e.mensagem()), qPrintable(e.tecnico()));
    } catch (const std::exception &e) {
        std::fprintf(stderr, "Erro: %s\n", e.what());
    }
    return 1;
}

void aparencia(QApplication &app)
{
    app.setStyle(QStyleFactory::create("Fusion"));
    QIcon::setThemeName("breeze");  // one icon theme on every screen
    QFont f("DejaVu Sans");
    f.setPointSize(10);
    app.setFont(f);
    QLocale::setDefault(QLocale(QLocale::Portuguese, QLocale::Brazil));
    // Qt's own dialogs in Portuguese too.
    static QTranslator qt;
    if (qt.load(QLocale(QLocale::Portuguese, QLocale::Brazil), "qtbase", "_", QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        app.installTranslator(&qt);
}

} // namespace

int main(int argc, char *argv[])
{
    QElapsedTimer relogio;
    relogio.start();
    QStringList args;
    for (int i = 0; i < argc; ++i) args << QString::fromLocal8Bit(argv[i]);
    if (args.contains("--upgrade") || args.contains("--help") || args.contains("-h") || args.contains("--backup")
        || args.contains("--restore")) {
        QCoreApplication app(argc, argv);
        const Opcoes o = lerOpcoes(app.arguments());
        const QString pasta = QCoreApplication::applicationDirPath();
        QTextStream saida(stdout), erros(stderr);
        if (o.backup) return copias::comandoBackup(conexao(o, pasta), pasta, o.pastaBackup, saida, erros);
        if (!o.restore.isEmpty()) return copias::comandoRestore(conexao(o, pasta), o.restore, saida, erros);
        return modoAtualizacao(conexao(o, pasta));
    }

    orb::Aplicacao app(argc, argv);
    app.setApplicationName("ORB Manager");
    app.setApplicationVersion(QStringLiteral(ORB_VERSAO));
    aparencia(app);
    const Opcoes o = lerOpcoes(app.arguments());
    const QString pasta = QCoreApplication::applicationDirPath();

    orb::InstanciaUnica guarda(qEnvironmentVariable("ORB_INSTANCIA"));  // tests give their own name
    if (!guarda.primeira()) return 0;  // the running copy comes to the front

    orb::TTabs tabs;
    orb::Tabs = &tabs;
    orb::registrarFormulariosNucleo(pasta);
    orb::registrarAuxiliares();
    orb::registrarComercial();
    orb::registrarEstoque();
    orb::registrarInventario();
    orb::registrarLeituras();
    orb::registrarFinanceiro();
    orb::registrarVendas();
    {
        // The activity monitor's address, when this installation has one.
        QSettings ini(pasta + "/ORBManager.ini", QSettings::IniFormat);
        orb::monitor().definirEndereco(QUrl(ini.value("Monitor/Url").toString()));
        // The address service by CEP, when configured ("…/%1/…"); known CEPs are kept on this computer.
        orb::buscaCep().definirServico(ini.value("Cep/Url").toString());
        const QString dados = QStandardPaths::writableLocation(QStandardPaths::AppLocalDataLocation);
        QDir().mkpath(dados);
        orb::buscaCep().definirCache(dados + "/cep.json");
    }

    orb::TSplash splash;
    // A second start finds this copy wherever it is: a question or the login on the screen, the
    // splash, then the main window.
    QPointer<QWidget> janela = &splash;
    QObject::connect(&guarda, &orb::InstanciaUnica::ativar, &app, [&janela] {
        if (QWidget *modal = QApplication::activeModalWidget()) orb::trazerParaFrente(modal);
        else if (janela && janela->isVisible()) orb::trazerParaFrente(janela);
    });
    splash.show();
    splash.mostrar("Verificando atualizações...");
    splash.mostrar("Abrindo base de dados...");

    std::unique_ptr<db::Banco> banco;
    for (;;) {
        const db::Conexao c = conexao(o, pasta);
        try {
            // Only a first start, with no settings yet, creates the local database; settings that
            // name a file that is not there are a wrong path, never a reason to start an empty one.
            if (o.banco.isEmpty() && QFileInfo::exists(pasta + "/ORBManager.ini") && esquema::arquivoLocal(c) &&
                !QFileInfo::exists(c.banco))
                throw db::ErroBanco(db::TipoErro::Conexao, QString("O arquivo %1 não existe.").arg(c.banco), {});
            QStringList aplicadas;
            banco = esquema::abrirAtualizado(c, aplicadas, [&](int f, int t, const QString &d) { splash.progresso(f, t, d); },
                                             [&] { splash.mostrar("Atualizando a estrutura do banco de dados..."); });
            break;
        } catch (const esquema::ErroAtualizacao &e) {
            orb::Erro(e.mensagem());
            return 1;
        } catch (const esquema::BancoIncompleto &e) {
            orb::Erro(e.mensagem());
            return 1;
        } catch (const db::ErroBanco &e) {
            splash.hide();
            // The engine's own words follow ours: a wrong password, path or server each read as they are.
            QString erro = e.mensagem();
            if (!e.tecnico().isEmpty() && e.tecnico() != erro) erro += "\n" + e.tecnico();
            const QString texto = "Não foi possível abrir a base de dados do servidor!\n\nErro: " + erro
                + "\n\nDeseja abrir a configuração para ajustar o caminho do servidor e banco de dados?";
            if (!orb::Pergunta(texto, true)) return 1;
            orb::TConfig cfg(pasta);
            if (cfg.exec() != QDialog::Accepted) return 1;
            splash.show();
        } catch (const std::exception &e) {  // a local file that could not be created or renamed
            orb::Erro(QString::fromUtf8(e.what()));
            return 1;
        }
    }
    tabs.conectar(std::move(banco));

    splash.mostrar("Efetuando autenticação...");
    auto login = [&]() -> bool {
        orb::TLogin dlg(tabs.DbORB());
        if (qEnvironmentVariableIsSet("ORB_MEDIR_INICIO")) {
            // Start-up measurement: the login window is on the screen, stop here.
            QTimer::singleShot(0, [&] {
                std::printf("login em %lld ms\n", static_cast<long long>(relogio.elapsed()));
                std::fflush(stdout);
                std::_Exit(0);
            });
        }
        splash.hide();
        const bool ok = dlg.exec() == QDialog::Accepted;
        if (ok) tabs.definirUsuario(orb::sessao().idUsuario);
        return ok;
    };
    if (!login()) return 0;

    orb::TMain principal(pasta, login);
    janela = &principal;
    principal.FormShow();
    const int r = app.exec();
    if (tabs.conectado()) orb::copiaAoFechar(pasta, tabs.DbORB().conexao());
    orb::Tabs = nullptr;
    return r;
}
