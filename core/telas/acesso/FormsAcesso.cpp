// Administration forms: users, access levels and each level's tree of permissions.

#include "ui/Dialogos.h"
#include "acesso/FormsAcesso.h"
#include "ui/ComboConsulta.h"
#include "acesso/Login.h"

#include "acesso/Permissoes.h"
#include "acesso/Usuarios.h"
#include "dados/Tabs.h"
#include "ui/Mensagens.h"
#include "ui/TratadorErros.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QTableView>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace orb {

// ------------------------------------------------------------------ users

TUsuarios::TUsuarios(QWidget *parent) : FormCadastro("TUsuarios", "Usuários", "TrUsuarios", parent)
{
    usuario_ = new QLineEdit;
    usuario_->setMaxLength(20);
    nome_ = new QLineEdit;
    nome_->setMaxLength(50);
    apelido_ = new QLineEdit;
    apelido_->setMaxLength(20);
    senha_ = new QLineEdit;
    senha_->setMaxLength(10);
    senha_->setEchoMode(QLineEdit::Password);
    senha_->setPlaceholderText("(em branco mantém a senha atual)");
    // Levels created in another tab appear when the list is next opened.
    nivel_ = new ComboConsulta("Select Id, Lpad(Nivel, 3, '0') || ' - ' || Descricao From TbNiveis Order By Nivel");
    tipo_ = new QComboBox;
    tipo_->addItem("U - Usuário", "U");
    tipo_->addItem("S - Supervisor", "S");
    tipo_->addItem("A - Administrador", "A");
    tipo_->addItem("D - Desenvolvedor", "D");
    adicionarCampo("usuario", "Usuário", usuario_);
    adicionarCampo("nome", "Nome", nome_);
    adicionarCampo("apelido", "Apelido", apelido_);
    adicionarCampo("senha", "Senha", senha_);
    adicionarCampo("nivel", "Nível de acesso", nivel_);
    adicionarCampo("tipo", "Tipo de usuário", tipo_);
    definirConsulta(kSqlUsuarios, {{"USUARIO", "Usuário"}, {"NOME", "Nome"}, {"APELIDO", "Apelido"},
                                   {"Z_NIVEL", "Nível"}, {"Z_DESCRICAO", "Descrição"}, {"TIPOUSUARIO", "Tipo"}},
                    {{"Usuário", "USUARIO"}, {"Nome", "NOME"}, {"Apelido", "APELIDO"}});
}

void TUsuarios::limpar()
{
    for (QLineEdit *e : {usuario_, nome_, apelido_, senha_}) e->clear();
    nivel_->setCurrentIndex(0);
    tipo_->setCurrentIndex(0);
}

void TUsuarios::carregar(db::Transacao &t, int id)
{
    db::Consulta q(t, "Select Usuario, Nome, Apelido, TipoUsuario, IdNivel From TbCad Where Id = :ID");
    q.bind("ID", id);
    q.executar();
    if (!q.proxima()) return limpar();
    usuario_->setText(q["USUARIO"].toString());
    nome_->setText(q["NOME"].toString());
    apelido_->setText(q["APELIDO"].toString());
    senha_->clear();
    if (nivel_->findData(q["IDNIVEL"].toInt()) < 0) nivel_->recarregar();
    nivel_->setCurrentIndex(std::max(0, nivel_->findData(q["IDNIVEL"].toInt())));
    tipo_->setCurrentIndex(std::max(0, tipo_->findData(q["TIPOUSUARIO"].toString())));
}

int TUsuarios::gravar(db::Transacao &t, int id)
{
    const int salvo = salvarUsuario(t, {id, usuario_->text(), nome_->text(), apelido_->text(), senha_->text(),
                                        tipo_->currentData().toString(), nivel_->currentData().toInt()},
                                    quem());
    if (salvo == sessao().idUsuario) atualizarSessao(t, sessao());
    return salvo;
}

void TUsuarios::apagar(db::Transacao &t, int id) { excluirUsuario(t, id, quem()); }

// ------------------------------------------------------------------ levels

TNiveis::TNiveis(QWidget *parent) : FormCadastro("TNiveis", "Níveis de Acesso", "TrMenus", parent)
{
    nivel_ = new QSpinBox;
    nivel_->setRange(0, 999);
    descricao_ = new QLineEdit;
    descricao_->setMaxLength(50);
    adicionarCampo("nivel", "Nível", nivel_);
    adicionarCampo("descricao", "Descrição", descricao_);
    auto *permissoes = new QPushButton("Permissões do nível...", this);
    permissoes->setObjectName("BtPermissoes");
    connect(permissoes, &QPushButton::clicked, this, &TNiveis::BtPermissoesClick);
    corpo()->addWidget(permissoes, 0, Qt::AlignLeft);
    definirConsulta(kSqlNiveis, {{"NIVEL", "Nível"}, {"DESCRICAO", "Descrição"}}, {{"Nível", "NIVEL"}, {"Descrição", "DESCRICAO"}});
}

void TNiveis::limpar()
{
    nivel_->setValue(0);
    descricao_->clear();
}

void TNiveis::carregar(db::Transacao &t, int id)
{
    db::Consulta q(t, "Select Nivel, Descricao From TbNiveis Where Id = :ID");
    q.bind("ID", id);
    q.executar();
    if (!q.proxima()) return limpar();
    nivel_->setValue(q["NIVEL"].toInt());
    descricao_->setText(q["DESCRICAO"].toString());
}

int TNiveis::gravar(db::Transacao &t, int id) { return salvarNivel(t, {id, nivel_->value(), descricao_->text()}, quem()); }
void TNiveis::apagar(db::Transacao &t, int id) { excluirNivel(t, id, quem()); }

void TNiveis::BtPermissoesClick()
{
    Tabs->Deb("procedure TNiveis.BtPermissoesClick(Sender: TObject)");
    const int id = idAtual();
    if (!id || estado() != Estado::Navegando) return;
    TPermissoes dlg(id, modelo()->valor(grade()->currentIndex().row(), "DESCRICAO").toString(), quem(), this);
    dlg.exec();
}

// ------------------------------------------------------------------ permission tree

TPermissoes::TPermissoes(int idNivel, const QString &descricao, const Sessao &quem, QWidget *parent)
    : QDialog(parent), idNivel_(idNivel), quem_(quem), tr_(Tabs->DbORB())
{
    setObjectName("TPermissoes");
    setWindowTitle("Permissões do nível " + descricao);
    resize(640, 600);
    auto *l = new QVBoxLayout(this);
    arvore_ = new QTreeWidget(this);
    arvore_->setHeaderLabels({"Menu / Módulo / Operação", "Permitido"});
    arvore_->header()->setStretchLastSection(false);
    arvore_->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    l->addWidget(arvore_);
    auto *ramo = new QHBoxLayout;
    auto *todos = new QPushButton("Marcar ramo", this);
    todos->setObjectName("BtTodos");
    auto *nenhum = new QPushButton("Desmarcar ramo", this);
    nenhum->setObjectName("BtNenhum");
    connect(todos, &QPushButton::clicked, this, [this] { marcarRamo(true); });
    connect(nenhum, &QPushButton::clicked, this, [this] { marcarRamo(false); });
    ramo->addWidget(todos);
    ramo->addWidget(nenhum);
    ramo->addStretch();
    l->addLayout(ramo);
    l->addWidget(botoesSalvarCancelar(this, [this] { BtSalvarClick(); }));

    completarArvoreNivel(tr_, idNivel_);
    for (const NoPermissao &m : lerArvoreNivel(tr_, idNivel_)) {
        auto *im = adicionar(nullptr, m);
        for (const NoPermissao &mo : m.filhos) {
            auto *imo = adicionar(im, mo);
            for (const NoPermissao &op : mo.filhos) adicionar(imo, op);
        }
    }
    arvore_->expandToDepth(0);
}

QTreeWidgetItem *TPermissoes::adicionar(QTreeWidgetItem *pai, const NoPermissao &n)
{
    auto *i = pai ? new QTreeWidgetItem(pai) : new QTreeWidgetItem(arvore_);
    i->setText(0, n.texto);
    i->setData(0, Qt::UserRole, n.id);
    i->setData(0, Qt::UserRole + 1, int(n.tipo));
    i->setCheckState(1, n.permitido ? Qt::Checked : Qt::Unchecked);
    return i;
}

void TPermissoes::marcarRamo(bool sim)
{
    QTreeWidgetItem *i = arvore_->currentItem();
    if (!i) return;
    std::function<void(QTreeWidgetItem *)> marcar = [&](QTreeWidgetItem *x) {
        x->setCheckState(1, sim ? Qt::Checked : Qt::Unchecked);
        for (int k = 0; k < x->childCount(); ++k) marcar(x->child(k));
    };
    marcar(i);
}

void TPermissoes::BtSalvarClick()
{
    Tabs->Deb("procedure TPermissoes.BtSalvarClick(Sender: TObject)");
    std::function<NoPermissao(QTreeWidgetItem *)> no = [&](QTreeWidgetItem *x) {
        NoPermissao n{NoPermissao::Tipo(x->data(0, Qt::UserRole + 1).toInt()), x->data(0, Qt::UserRole).toInt(), x->text(0),
                      x->checkState(1) == Qt::Checked, {}};
        for (int k = 0; k < x->childCount(); ++k) n.filhos << no(x->child(k));
        return n;
    };
    QList<NoPermissao> arvore;
    for (int k = 0; k < arvore_->topLevelItemCount(); ++k) arvore << no(arvore_->topLevelItem(k));
    try {
        db::tentativa(tr_, [&] { gravarPermissoes(tr_, idNivel_, arvore, quem_); });
        tr_.commit();
        accept();
    } catch (const Recusa &r) {
        Atencao(r.texto);
    } catch (const db::ErroBanco &e) {
        AvisarFalha(e);
    }
}

void registrarFormulariosAcesso()
{
    registrarFormulario("TUsuarios", [](QWidget *p) { return new TUsuarios(p); });
    registrarFormulario("TNiveis", [](QWidget *p) { return new TNiveis(p); });
}

} // namespace orb
