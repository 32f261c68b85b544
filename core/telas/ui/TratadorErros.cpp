#include "ui/TratadorErros.h"

#include "acesso/Sessao.h"
#include "dados/Monitor.h"
#include "dados/Tabs.h"
#include "db/Erros.h"
#include "ui/FormCadastro.h"
#include "ui/Mensagens.h"
#include "Recusa.h"

#include <QBuffer>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QPixmap>
#include <QScopeGuard>
#include <QScreen>
#include <QStandardPaths>
#include <QSysInfo>
#include <QTabWidget>
#include <QThread>
#include <QWidget>
#include <cxxabi.h>
#include <memory>

namespace orb {

namespace {

QString pastaBase;

QString desmangle(const char *nome)
{
    int st = 0;
    std::unique_ptr<char, void (*)(void *)> n(abi::__cxa_demangle(nome, nullptr, nullptr, &st), std::free);
    return QString::fromLatin1(st == 0 ? n.get() : nome);
}

QString nomeDe(QObject *o)
{
    if (!o) return {};
    return o->objectName().isEmpty() ? QString::fromLatin1(o->metaObject()->className()) : o->objectName();
}

QString paginaAtiva()
{
    QWidget *w = QApplication::activeWindow();
    auto *abas = w ? w->findChild<QTabWidget *>() : nullptr;
    return abas && abas->currentIndex() >= 0 ? abas->tabText(abas->currentIndex()) : QString();
}

// The program's folder may be read-only once installed; the user's data folder then takes the files.
QString pastaErros()
{
    const QString p = (pastaBase.isEmpty() ? QCoreApplication::applicationDirPath() : pastaBase) + "/Erros";
    if (QDir().mkpath(p) && QFileInfo(p).isWritable()) return p;
    const QString alt = QStandardPaths::writableLocation(QStandardPaths::AppLocalDataLocation) + "/Erros";
    QDir().mkpath(alt);
    return alt;
}

QImage capturarTela()
{
    QImage img;
    if (QWidget *w = QApplication::activeWindow()) {
        // The screen's pixels show dialogs and native parts too; some platforms refuse, the widget still paints.
        if (QScreen *s = w->screen()) img = s->grabWindow(w->winId()).toImage();
        if (img.isNull()) img = w->grab().toImage();
    } else if (QScreen *s = QGuiApplication::primaryScreen()) {
        img = s->grabWindow(0).toImage();
    }
    if (img.isNull()) {
        img = QImage(320, 200, QImage::Format_RGB32);
        img.fill(Qt::white);
    }
    return img;
}

// Saves the screenshot and the support report side by side, and returns the report's path. The
// report also goes to the activity monitor when one is configured; otherwise it waits in "Erros"
// for technical support to collect.
QString registrar(const QString &mensagem, const QString &tecnico, const QString &classe, QObject *sender)
{
    const QString base = pastaErros() + "/A_Erro" + QDateTime::currentDateTime().toString("ddMMyyhhmmsszzz");
    // The screenshot and the report may show what the user was typing: created readable by their owner only.
    const auto soDono = QFileDevice::ReadOwner | QFileDevice::WriteOwner;
    {
        QByteArray jpg;
        QBuffer buf(&jpg);
        buf.open(QIODevice::WriteOnly);
        capturarTela().save(&buf, "JPG");
        QFile img(base + ".jpg");
        if (img.open(QIODevice::WriteOnly, soDono)) img.write(jpg);
    }

    const QStringList trilha = Tabs ? Tabs->trilha() : QStringList();
    QString erro = mensagem.toHtmlEscaped();
    if (!tecnico.isEmpty()) erro += " - " + tecnico.toHtmlEscaped();
    QStringList l;
    l << "<b>Versão:</b> " + QCoreApplication::applicationVersion() << "<b>Atualizador:</b> "
      << "<b>Usuário:</b> " + sessao().usuario.toHtmlEscaped()
      << "<b>Nome do Computador:</b> " + QSysInfo::machineHostName() << "<b>Erro:</b> " + erro
      << "<b>ClassName(Erro):</b> " + classe.toHtmlEscaped();
    for (int i = 0; i < 10; ++i) l << QString("<b>Handler %1:</b> ").arg(i) + trilha.value(i).toHtmlEscaped();
    l << "<b>ActiveControl:</b> " + nomeDe(QApplication::focusWidget()) << "<b>ActivePage:</b> " + paginaAtiva().toHtmlEscaped()
      << "<b>Sender:</b> " + nomeDe(sender);
    const QString html = "***************************<br>" + l.join("<br>") + "<br>***************************<br>";
    QFile f(base + ".html");
    if (f.open(QIODevice::WriteOnly, soDono)) f.write(html.toUtf8());
    QJsonObject relatorio;
    relatorio.insert("RELATORIO", html);
    monitor().HttpRequest("ERRO", "ERRO", QJsonDocument(QJsonArray{relatorio}).toJson(QJsonDocument::Compact));
    return QDir::toNativeSeparators(base + ".html");
}

} // namespace

void definirPastaErros(const QString &pasta) { pastaBase = pasta; }

void Ae1Exception(const std::exception_ptr &ep, QObject *sender)
{
    if (qApp && QThread::currentThread() != qApp->thread()) {
        // Boxes and screenshots only work in the GUI thread; the sender may not outlive the trip.
        QMetaObject::invokeMethod(qApp, [ep] { Ae1Exception(ep); }, Qt::QueuedConnection);
        return;
    }
    QString mensagem, tecnico, classe;
    try {
        if (ep) std::rethrow_exception(ep);
        mensagem = "Erro desconhecido";  // called outside any catch block
        classe = "Exception";
    } catch (const db::ErroBanco &e) {
        switch (e.tipo()) {
        case db::TipoErro::DataInvalida: return Atencao(kDataInvalida);
        case db::TipoErro::NumeroInvalido: return Atencao(kValorInvalido);
        case db::TipoErro::Dependentes: return Atencao(kDependentes);
        case db::TipoErro::Conexao: return ConexaoPerdida();
        default: break;
        }
        mensagem = e.mensagem();
        tecnico = e.tecnico();
        classe = "ErroBanco";
    } catch (const Recusa &r) {
        return Atencao(r.texto);  // a rule's refusal that a handler did not catch is still just a refusal
    } catch (const std::overflow_error &) {
        return Atencao(kValorInvalido);  // arithmetic on a value no column can hold: a number typed wrong
    } catch (const std::exception &e) {
        mensagem = QString::fromUtf8(e.what());
        classe = desmangle(typeid(e).name());
    } catch (...) {
        mensagem = "Erro desconhecido";
        const std::type_info *t = abi::__cxa_current_exception_type();
        classe = t ? desmangle(t->name()) : QString("Exception");
    }
    const QString relatorio = registrar(mensagem, tecnico, classe, sender);
    // Only a report that left for support is said to have been sent.
    const QString destino = monitor().endereco().isEmpty()
                                ? "O relatório do erro foi salvo em " + relatorio + " para o suporte técnico."
                                : QStringLiteral("O erro foi enviado para o suporte técnico. ");

    const QStringList trilha = Tabs ? Tabs->trilha() : QStringList();
    QWidget *janela = QApplication::activeWindow();
    const QString titulo =
        (janela && !janela->windowTitle().isEmpty() ? janela->windowTitle() : QString("ORB Manager")) + " - Erro";
    Erro("Este módulo está apresentando o seguinte erro: " + mensagem + "\n\nClassName: " + classe
             + "\nHandler 0: " + trilha.value(0) + "\nHandler 1: " + trilha.value(1) + "\nHandler 2:" + trilha.value(2)
             + "\n\nPara evitar problemas consequentes desse erro é aconselhável reiniciar o aplicativo.\n"
               + destino,
         titulo);
}

void ConexaoPerdida()
{
    // Boxes wait for the user while timers and grids keep running: one message at a time.
    static bool emCurso = false;
    if (emCurso) return;
    emCurso = true;
    const QScopeGuard fim([] { emCurso = false; });
    QString texto = db::mensagemPara(db::TipoErro::Conexao, {});
    if (Tabs && Tabs->conectado() && !Tabs->DbORB().vivo()) {
        QStringList perdidas;
        for (QWidget *w : QApplication::allWidgets())
            if (auto *f = qobject_cast<FormCadastro *>(w); f && f->estado() != FormCadastro::Estado::Navegando)
                perdidas << f->descartarEdicao();
        if (Tabs->reconectar())
            texto = QStringLiteral("A conexão com o servidor do banco de dados foi perdida e já foi restabelecida. "
                                   "Repita a operação.");
        if (!perdidas.isEmpty()) texto += "\n\n" + perdidas.join('\n');
    }
    Atencao(texto);
}

void AvisarFalha(const db::ErroBanco &e)
{
    if (e.tipo() == db::TipoErro::Conexao) return ConexaoPerdida();
    Atencao(e.mensagem());
}

Aplicacao::Aplicacao(int &argc, char **argv) : QApplication(argc, argv) {}

bool Aplicacao::notify(QObject *receptor, QEvent *evento)
{
    try {
        return QApplication::notify(receptor, evento);
    } catch (...) {
        try {
            Ae1Exception(std::current_exception(), receptor);
        } catch (...) {
            // The report itself failed (out of memory, most likely); going on beats ending here.
        }
    }
    return false;
}

} // namespace orb
