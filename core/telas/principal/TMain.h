#pragma once
// The main window: the segment's menu with the user's rights applied, forms in tabs,
// the status bar, the timers, logoff and exit.

#include "acesso/Acesso.h"
#include "principal/Parametros.h"
#include "principal/PrimeirosPassos.h"

#include <QMainWindow>
#include <QPointer>
#include <QThread>
#include <functional>

class QLabel;
class QTabWidget;

class QTimer;

namespace orb {

class TMain : public QMainWindow {
    Q_OBJECT
public:
    // pedirLogin runs the login again after a logoff; false when the user gave up.
    TMain(const QString &pastaPrograma, std::function<bool()> pedirLogin, QWidget *parent = nullptr);
    ~TMain() override;

    void FormCreate();
    void FormShow();
    // Applies the logged-in user's rights to the menu items.
    void Acesso();
    void EfetuarLogoff1Click();

    const ParametrosGlobais &parametros() const { return par_; }
    QString menuPrincipal() const { return nomeMenu_; }
    QTabWidget *abas() const { return abas_; }
    // Opens the form of a menu item, in a tab (or modally, for a dialog).
    QWidget *abrirFormulario(const QString &grupoCaption, const QString &grupoNome, const ModuloMenu &m);
    // The worker thread exit waits for, when one runs.
    void definirTrabalhador(QThread *t) { trabalhador_ = t; }
    // The first steps the home page lists: those this segment's menu has a screen for, none once all are done.
    const QList<PrimeiroPasso> &passosMostrados() const { return passos_; }
    // Reads the first steps again and redraws the home page (done whenever it is shown).
    void atualizarInicio();

    QTimer *TimerAgenda = nullptr;
    QTimer *TiMonOs = nullptr;
    QTimer *TimerSplash = nullptr;
    QTimer *Timer1 = nullptr;

protected:
    void closeEvent(QCloseEvent *e) override;

private:
    void montarMenu();
    void atualizarStatus();
    void abrirTela(const QString &classe);
    QString textoPassos() const;
    void FormClose();
    void fecharAbas();

    QString pasta_;
    std::function<bool()> pedirLogin_;
    ParametrosGlobais par_;
    QString nomeMenu_;
    QList<GrupoCatalogo> menu_;
    QTabWidget *abas_ = nullptr;
    QLabel *inicio_ = nullptr;
    QList<PrimeiroPasso> passos_;
    QLabel *stUsuario_ = nullptr, *stEmpresa_ = nullptr, *stData_ = nullptr, *stBanco_ = nullptr, *stSuporte_ = nullptr;
    bool logoff_ = false;
    QPointer<QThread> trabalhador_;
};

// Registers the forms of the core (users, levels, database configuration).
void registrarFormulariosNucleo(const QString &pastaPrograma);

} // namespace orb
