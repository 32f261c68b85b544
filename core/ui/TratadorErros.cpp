#include "ui/TratadorErros.h"

#include "acesso/Sessao.h"
#include "dados/Tabs.h"
#include "db/Erros.h"
#include "ui/Mensagens.h"
#include "ui/Recusa.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QScreen>
#include <QSysInfo>
#include <QTabWidget>
#include <QWidget>
#include <cxxabi.h>
#include <memory>

namespace orb {

namespace {

QString pastaErros;

QString classeDe(const std::exception &e)
{
    if (dynamic_cast<const db::ErroBanco *>(&e)) return "ErroBanco";
    int st = 0;
    std::unique_ptr<char, void (*)(void *)> n(abi::__cxa_demangle(typeid(e).name(), nullptr, nullptr, &st), std::free);
    return st == 0 ? QString::fromLatin1(n.get()) : QString::fromLatin1(typeid(e).name());
}

QString nomeDe(QObject *o) { return o ? (o->objectName().isEmpty() ? o->metaObject()->className() : o->objectName()) : QString(); }

QString paginaAtiva()
{
    QWidget *w = QApplication::activeWindow();
    if (!w) return {};
    auto *abas = w->findChild<QTabWidget *>();
    return abas && abas->currentIndex() >= 0 ? abas->tabText(abas->currentIndex()) : QString();
}

// Saves the screenshot and the support report; the report is kept for technical support to collect.
void registrar(const QString &mensagem, const QString &classe, QObject *sender)
{
    const QString pasta = (pastaErros.isEmpty() ? QCoreApplication::applicationDirPath() : pastaErros) + "/Erros";
    QDir().mkpath(pasta);
    const QString base = pasta + "/A_Erro" + QDateTime::currentDateTime().toString("ddMMyyhhmmsszzz");
    QImage img;
    if (QWidget *w = QApplication::activeWindow()) img = w->grab().toImage();
    else if (QScreen *s = QGuiApplication::primaryScreen()) img = s->grabWindow(0).toImage();
    if (img.isNull()) {
        img = QImage(320, 200, QImage::Format_RGB32);
        img.fill(Qt::white);
    }
    img.save(base + ".jpg", "JPG");

    const QStringList trilha = Tabs ? Tabs->trilha() : QStringList(10, QString());
    QStringList l;
    l << "<b>Versão:</b> " + QCoreApplication::applicationVersion() << "<b>Atualizador:</b> "
      << "<b>Usuário:</b> " + sessao().usuario << "<b>Nome do Computador:</b> " + QSysInfo::machineHostName()
      << "<b>Erro:</b> " + mensagem.toHtmlEscaped() << "<b>ClassName(Erro):</b> " + classe;
    for (int i = 0; i < 10; ++i) l << QString("<b>Handler %1:</b> ").arg(i) + trilha.value(i).toHtmlEscaped();
    l << "<b>ActiveControl:</b> " + nomeDe(QApplication::focusWidget()) << "<b>ActivePage:</b> " + paginaAtiva()
      << "<b>Sender:</b> " + nomeDe(sender);
    QFile f(base + ".html");
    if (f.open(QIODevice::WriteOnly))
        f.write(("***************************<br>" + l.join("<br>") + "<br>***************************<br>").toUtf8());
}

} // namespace

void definirPastaErros(const QString &pasta) { pastaErros = pasta; }

void Ae1Exception(const std::exception_ptr &ep, QObject *sender)
{
    QString mensagem, tecnico, classe = "Exception";
    try {
        std::rethrow_exception(ep);
    } catch (const db::ErroBanco &e) {
        switch (e.tipo()) {
        case db::TipoErro::DataInvalida: return Atencao(kDataInvalida);
        case db::TipoErro::NumeroInvalido: return Atencao(kValorInvalido);
        case db::TipoErro::Dependentes: return Atencao(kDependentes);
        default: break;
        }
        mensagem = e.mensagem();
        tecnico = e.tecnico();
        classe = classeDe(e);
    } catch (const Recusa &r) {
        return Atencao(r.texto);  // a rule's refusal that a handler did not catch is still just a refusal
    } catch (const std::exception &e) {
        mensagem = QString::fromUtf8(e.what());
        classe = classeDe(e);
    } catch (...) {
        mensagem = "Erro desconhecido";
    }
    registrar(tecnico.isEmpty() ? mensagem : mensagem + "\n" + tecnico, classe, sender);
    const QStringList trilha = Tabs ? Tabs->trilha() : QStringList();
    QWidget *janela = QApplication::activeWindow();
    const QString titulo = (janela && !janela->windowTitle().isEmpty() ? janela->windowTitle() : QString("ORB Manager")) + " - Erro";
    Erro("Este módulo está apresentando o seguinte erro: " + mensagem + "\n\nClassName: " + classe
             + "\nHandler 0: " + trilha.value(0) + "\nHandler 1: " + trilha.value(1) + "\nHandler 2:" + trilha.value(2)
             + "\n\nPara evitar problemas consequentes desse erro é aconselhável reiniciar o aplicativo.\n"
               "O erro foi enviado para o suporte técnico. ",
         titulo);
}

Aplicacao::Aplicacao(int &argc, char **argv) : QApplication(argc, argv) {}

bool Aplicacao::notify(QObject *receptor, QEvent *evento)
{
    try {
        return QApplication::notify(receptor, evento);
    } catch (...) {
        Ae1Exception(std::current_exception(), receptor);
    }
    return false;
}

} // namespace orb
