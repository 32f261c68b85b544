#include "TAbEncMovimento.h"

#include "Caixa.h"
#include "Graficos.h"
#include "Recusa.h"
#include "dados/Tabs.h"
#include "relatorios/Relatorio.h"
#include "relatorios/Relatorios.h"
#include "ui/Campos.h"
#include "ui/ComboConsulta.h"
#include "ui/Mensagens.h"
#include "ui/ModeloConsulta.h"

#include <QBoxLayout>
#include <QKeySequence>
#include <QPushButton>
#include <QShortcut>
#include <QTableView>

namespace orb {

namespace {

using C = CampoForm;
const char *kClasse = "TAbEncMovimento";

void escolher(QComboBox *cb, const QVariant &v) { cb->setCurrentIndex(v.isNull() ? -1 : cb->findData(v)); }
QVariant escolhido(QComboBox *cb) { return cb->currentIndex() < 0 ? QVariant() : cb->currentData(); }
} // namespace

TAbEncMovimento::TAbEncMovimento(QWidget *parent)
    : FormCadastro(kClasse, "Financeiro - Abertura e Encerramento do Movimento", "TrAbEncMov", parent)
{
    botao("Incluir")->setText("A&brir (F2)");
    botao("Alterar")->setText("&Alterar (F3)");
    botao("Salvar")->setText("&Salvar (F10)");
    botao("Cancelar")->setText("&Cancelar (Esc)");
    botao("Excluir")->setText("&Excluir (F5)");
    botao("Fechar")->setText("&Fechar (Esc)");
    botao("Imprimir")->setText("Im&primir (F6)");
    auto *quitar = new QPushButton("E&ncerrar/Reabrir (F8)", this);
    quitar->setObjectName("BtQuitar");
    connect(quitar, &QPushButton::clicked, this, &TAbEncMovimento::BtQuitarClick);
    auto *f8 = new QShortcut(QKeySequence("F8"), this, nullptr, nullptr, Qt::WidgetWithChildrenShortcut);
    connect(f8, &QShortcut::activated, quitar, [quitar] { if (quitar->isEnabled()) quitar->click(); });
    // The special action goes before "Fechar" on the toolbar.
    if (auto *barra = qobject_cast<QBoxLayout *>(botao("Fechar")->parentWidget()->layout()->itemAt(0)->layout()))
        barra->insertWidget(barra->indexOf(botao("Fechar")), quitar);

    edData_ = new CampoData(CampoData::Data, this);
    adicionarCampo("DATA", "Data Movim.", edData_);
    edDataAb_ = new CampoData(CampoData::DataHora, this);
    adicionarCampo("DATAAB", "Data/Hora Abertura", edDataAb_);
    cbRespAb_ = new ComboConsulta("Select Id, Nome From TbCad Where Fu = 'S' Order By Nome", {}, this);
    adicionarCampo("IDRESPAB", "Resp. Abertura", cbRespAb_);
    cbRespAb_->setObjectName("CbRespAb");
    edSaldoInic_ = new CampoNumero(C{"SALDOINIC", "Saldo inicial", C::Decimal}, this);
    edSaldoInic_->setMaximumWidth(160);
    adicionarCampo("SALDOINIC", "Saldo inicial (R$)", edSaldoInic_);
    edDataEnc_ = new CampoData(CampoData::DataHora, this);
    edDataEnc_->setReadOnly(true);
    adicionarCampo("DATAENC", "Data/Hora Encerramento", edDataEnc_);
    cbRespEnc_ = new ComboConsulta("Select Id, Nome From TbCad Where Fu = 'S' Order By Nome", {}, this);
    adicionarCampo("IDRESPENC", "Resp. Encerramento", cbRespEnc_);
    cbRespEnc_->setObjectName("CbRespEnc");
    edSaldoFinal_ = new CampoNumero(C{"SALDOFINAL", "Saldo final", C::Decimal}, this);
    edSaldoFinal_->setMaximumWidth(160);
    adicionarCampo("SALDOFINAL", "Saldo final (R$)", edSaldoFinal_);

    // The session's operations, read only.
    operacoes_ = new ModeloConsulta(Tabs->DbORB(), this);
    operacoes_->definirColunas({{"OP", "Operação"}, {"TOTAL", "Total"}});
    auto *gradeOp = new QTableView(this);
    gradeOp->setObjectName("GradeMovimentacao");
    gradeOp->setModel(operacoes_);
    prepararGrade(gradeOp);
    gradeOp->setMinimumHeight(90);
    adicionarLinha({}, gradeOp, "Movimentação");

    grafico_ = new GraficoFormas("Recebimentos do dia por forma de pagamento", this);
    adicionarPainel(grafico_, 2);

    QString base = kSqlMovimentos;
    base = base.left(base.lastIndexOf(" Order By "));
    definirConsulta(base,
                    {{"ID", "Código"}, {"DATA", "Data Movim."}, {"DATAAB", "Data/Hora Abertura"}, {"Z_RESPAB", "Resp. Abertura"},
                     {"DATAENC", "Data/Hora Encerramento"}, {"Z_RESPENC", "Resp. Encerramento"}},
                    {{"DATA MOVIMENTO", "DATA MOVIMENTO"}, {"CÓDIGO", "CÓDIGO"}});
    recarregar();
}

QString TAbEncMovimento::nomeOperacao(const QString &operacao) const
{
    return operacao == "Incluir" ? QStringLiteral("Abrir") : operacao;
}

bool TAbEncMovimento::montarBusca(const QString &ordem, const QString &texto, Busca busca, QString &sql, std::map<QString, QVariant> &p)
{
    QString s = kSqlMovimentos;
    const int corte = int(s.lastIndexOf(" Order By "));
    QString onde;
    if (!texto.trimmed().isEmpty()) {
        // "Encontrar Resp. Abertura:": the opening responsible's nickname.
        onde = busca == Busca::Inicio ? " Where Upper(Fu1.Apelido) Starting With :T" : " Where Upper(Fu1.Apelido) Containing :T";
        p["T"] = texto.trimmed().toUpper();
    }
    sql = s.left(corte) + onde + (ordem == "CÓDIGO" ? " Order By A.Id Desc" : " Order By A.Data Desc, A.Id Desc");
    return true;
}

void TAbEncMovimento::mostrar(const Valores &v)
{
    atual_ = v;
    edData_->definir(valor(v, "DATA"));
    edDataAb_->definir(valor(v, "DATAAB"));
    escolher(cbRespAb_, valor(v, "IDRESPAB"));
    edDataEnc_->definir(valor(v, "DATAENC"));
    escolher(cbRespEnc_, valor(v, "IDRESPENC"));
    edSaldoInic_->definir(valor(v, "SALDOINIC"));
    edSaldoFinal_->definir(valor(v, "SALDOFINAL"));
}

void TAbEncMovimento::estadoMudou()
{
    if (estado() != Estado::Alterando) encerrando_ = false;
}

void TAbEncMovimento::limpar()
{
    mostrar(estado() == Estado::Incluindo ? abrirMovimento(transacao(), quem(), QDateTime::currentDateTime()) : Valores{});
}

void TAbEncMovimento::carregar(db::Transacao &t, int id)
{
    db::Consulta q(t, "Select Id, Data, DataAb, IdRespAb, DataEnc, IdRespEnc, SaldoInic, SaldoFinal From TbAbEncMov Where Id = :ID");
    q.bind("ID", id);
    q.executar();
    Valores v;
    if (q.proxima())
        for (int i = 0; i < q.colunas(); ++i) v[q.nomeColuna(i)] = q[i];
    mostrar(v);
}

int TAbEncMovimento::gravar(db::Transacao &t, int id)
{
    if (encerrando_) {
        encerrarMovimento(t, id, escolhido(cbRespEnc_), quem(), edDataEnc_->valor("DATAENC").toDateTime());
        db::executar(t, "Update TbAbEncMov Set SaldoFinal = :SF Where Id = :ID", {{"SF", edSaldoFinal_->valor()}, {"ID", id}});
        return id;
    }
    Valores v = atual_;
    v["DATA"] = edData_->valor("DATA");
    v["DATAAB"] = edDataAb_->valor("DATAAB");
    v["IDRESPAB"] = escolhido(cbRespAb_);
    v["DATAENC"] = edDataEnc_->valor("DATAENC");
    v["IDRESPENC"] = escolhido(cbRespEnc_);
    v["SALDOINIC"] = edSaldoInic_->valor();
    v["SALDOFINAL"] = edSaldoFinal_->valor();
    return salvarMovimento(t, id, v, quem(), QDate::currentDate());
}

void TAbEncMovimento::apagar(db::Transacao &t, int id) { excluirMovimento(t, id, quem()); }

void TAbEncMovimento::conferirOperacao(const QString &operacao, int id)
{
    if (operacao != "Excluir") return;
    db::Transacao t(Tabs->DbORB(), db::Modo::Leitura);
    conferirExclusaoMovimento(t, id, quem());
}

void TAbEncMovimento::registroMudou(int id)
{
    try {
        operacoes_->consultar("Select Id, Ord, Op, Total From TbAbEncMovOp Where (Fk = :ID) Order By Id", {{"ID", id}});
    } catch (const db::ErroBanco &) {
        // Read-only rows: the session stays usable without them.
    }
    QList<QPair<QString, db::Decimal>> formas;
    if (id) {
        try {
            db::Transacao t(Tabs->DbORB(), db::Modo::Leitura);
            db::Consulta q(t, "Select Cp.FormaPagto, Sum(Cp.Valor) From TbContasPagtos Cp Join TbAbEncMov A On (A.Data = Cp.Data) "
                              "Where A.Id = :ID Group By 1 Order By 1");
            q.bind("ID", id);
            q.executar();
            while (q.proxima()) formas.append({q[0].toString(), q[1].value<db::Decimal>()});
        } catch (const db::ErroBanco &) {
            // The plot is only a view; the list stays usable without it.
        }
    }
    grafico_->mostrar(formas);
}

void TAbEncMovimento::BtQuitarClick()
{
    Tabs->Deb("procedure TAbEncMovimento.BtQuitarClick(Sender: TObject)");
    const int id = idAtual();
    if (estado() != Estado::Navegando || !id) return;
    db::Transacao l(Tabs->DbORB(), db::Modo::Leitura);
    const bool aberto = db::escalar(l, "Select DataEnc From TbAbEncMov Where Id = :ID", {{"ID", id}}).isNull();
    l.rollback();
    if (aberto) {
        // Closing is an edit under the right "Encerrar": the closing time set now, the responsible
        // chosen (the parameters' default offered), and Salvar closes; Cancelar leaves it open.
        if (!alterarRegistro("Encerrar")) return;
        encerrando_ = true;
        const QDateTime agora = QDateTime::currentDateTime();
        edDataEnc_->definir(agora);
        if (escolhido(cbRespEnc_).isNull()) {
            const QVariant padrao = valor(padroesMovimento(transacao(), agora), "IDRESPENC");
            escolher(cbRespEnc_, padrao.isNull() ? QVariant(quem().idUsuario) : padrao);
        }
        for (QWidget *w : std::initializer_list<QWidget *>{edData_, edDataAb_, cbRespAb_, edSaldoInic_}) w->setEnabled(false);
        cbRespEnc_->setFocus();
        return;
    }
    if (!permitido("Reabrir")) return;
    {
        db::Transacao t(Tabs->DbORB(), db::Modo::Leitura);
        try {
            conferirReabertura(t, id, quem());
        } catch (const Recusa &r) {
            Atencao(r.texto);
            return;
        }
    }
    if (!Pergunta("Deseja realmente reabrir esse movimento?")) return;
    if (naTransacao([&](db::Transacao &t) { reabrirMovimento(t, id, quem()); }) == Desfecho::Feito) {
        informarMonitor(id, "Movimento Reaberto");
        recarregar(id);
    }
}

void TAbEncMovimento::imprimir()
{
    const int id = idAtual();
    if (!id) return;
    try {
        db::Transacao t(Tabs->DbORB(), db::Modo::Leitura);
        const ResumoCaixa r = resumoCaixa(t, id, quem());
        visualizarRelatorio(r.titulo, renderizarRelatorio("RelEncMovim", dadosResumo(r, QDateTime::currentDateTime())), this);
    } catch (const Recusa &r) {
        Atencao(r.texto);
    }
}

} // namespace orb
