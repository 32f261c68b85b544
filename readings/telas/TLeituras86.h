#pragma once
// The readings screen, laid out for a tablet: a collapsible bar of large buttons, filters by date,
// machine, operator and route, the list, and the reading with its counters in a seven-segment face.
// A tap on a counter opens the numeric pad; a horizontal swipe moves to the next or previous reading.

#include "Leituras.h"
#include "TecladoNumerico.h"
#include "ui/FormCadastro.h"

#include <QPointF>
#include <QPointer>

class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;

namespace orb {

class CampoData;

class TLeituras86 : public FormCadastro {
    Q_OBJECT
public:
    explicit TLeituras86(QWidget *parent = nullptr);

    // Handlers, public so that tests drive them as the widgets do.
    void EdSeloExit();                    // the seal typed or chosen: the machine's data are copied
    void EdContadorExit(const QString &campo);  // LEEI, LEEF, DIFEE, LESI, LESF, DIFES
    void BtFiltrarClick();
    void BtBarraClick();                  // collapses or opens the bar of buttons and filters

    // The machine picked for the reading (as choosing its seal does).
    void escolherMaquina(int idMaq);
    QLineEdit *contador(const QString &campo) const;
    QComboBox *selo() const { return selo_; }
    CampoData *data() const { return data_; }
    QLabel *valor(const QString &coluna) const;  // HPMOEDAS, HPTOTAL, COMPONTO, ARECEBER, COMOPER, LIQUIDO
    QWidget *barra() const { return barra_; }
    QWidget *filtros() const { return filtros_; }
    QWidget *painel() const { return painel_; }
    TecladoNumerico *teclado() const { return teclado_.data(); }
    FiltroLeituras &filtro() { return filtro_; }
    void definirFiltroMaquina(int id);
    void definirFiltroOperador(int id);
    void definirFiltroRota(int id);

protected:
    void limpar() override;
    void carregar(db::Transacao &t, int id) override;
    int gravar(db::Transacao &t, int id) override;
    void apagar(db::Transacao &t, int id) override;
    QString perguntaExclusao() const override { return QStringLiteral("Deseja realmente excluir a Leitura?"); }
    QString tabela() const override { return QStringLiteral("TBFL_LEITURAS"); }
    bool montarBusca(const QString &ordem, const QString &texto, Busca busca, QString &sql,
                     std::map<QString, QVariant> &p) override;
    void estadoMudou() override;
    bool eventFilter(QObject *o, QEvent *e) override;

private:
    void montarBarra();
    void montarFiltros();
    QWidget *montarLeitura();
    void preencherListas();
    void mostrarCopiados();
    void mostrarValores();
    void mostrarBarra();
    void abrirTeclado(const QString &campo);
    bool gesto(QWidget *w, QEvent *e);  // a swipe or a tap on a counter; true when it was one

    Valores copiados_;  // what the reading took from its machine, with the display names
    bool calculando_ = false;
    bool recolhida_ = false;
    FiltroLeituras filtro_;
    QWidget *barra_ = nullptr, *filtros_ = nullptr, *painel_ = nullptr;
    QPushButton *btBarra_ = nullptr;
    QComboBox *selo_ = nullptr, *operador_ = nullptr;
    CampoData *data_ = nullptr, *de_ = nullptr, *ate_ = nullptr;
    QComboBox *fMaquina_ = nullptr, *fOperador_ = nullptr, *fRota_ = nullptr;
    QHash<QString, QLineEdit *> contadores_;
    QHash<QString, QLabel *> valores_, copiadosRotulos_;
    QPointer<TecladoNumerico> teclado_;
    QPointF inicioToque_;
};

} // namespace orb
