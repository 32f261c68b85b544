#include "ui/Dialogos.h"
#include "TMiniCad.h"

#include "dados/Tabs.h"
#include "ui/FormRegistro.h"
#include "ui/Mensagens.h"
#include "ui/TratadorErros.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QEvent>
#include <QFormLayout>
#include <QLineEdit>
#include <QPushButton>

namespace orb {

TMiniCad::TMiniCad(QWidget *parent) : QDialog(parent)
{
    setObjectName("TMiniCad");
    setWindowTitle("Cadastro Rápido");
    using C = CampoForm;
    campos_ = {{"NOME", "Nome", C::Texto, {}, 50},
               {"PESSOA", "Pessoa", C::Lista, {}, 0, 2, {{"F", "Física"}, {"J", "Jurídica"}}},
               {"CPF", "CPF", C::Texto, {}, 11, 2, {}, {}, "999.999.999-99;_"},
               {"CNPJ", "CNPJ", C::Texto, {}, 14, 2, {}, {}, "99.999.999/9999-99;_"},
               {"SEXO", "Sexo", C::Lista, {}, 0, 2, {{"M", "Masculino"}, {"F", "Feminino"}}},
               {"TELEFONE1", "Telefone", C::Texto, {}, 11, 2},
               {"CEP", "CEP", C::Texto, {}, 8, 2, {}, {}, "99999-999;_"},
               {"IDCIDADE", "Cidade", C::Consulta, {}, 0, 2, {}, "Select Id, Cidade || ' - ' || Uf From TbCidades Order By Cidade"}};
    auto *f = new QFormLayout(this);
    for (const CampoForm &c : campos_) {
        QWidget *w = criarWidgetCampo(c);
        w->setObjectName(c.coluna);
        f->addRow(c.rotulo, w);
        widgets_ << w;
    }
    definir("PESSOA", "F");
    definir("SEXO", "M");
    campo("CPF")->installEventFilter(this);
    campo("CNPJ")->installEventFilter(this);
    // A natural person has a CPF and a sex, a legal person a CNPJ.
    auto pessoaMudou = [this, f] {
        const bool juridica = lerWidgetCampo(campos_[1], campo("PESSOA")).toString() == "J";
        f->setRowVisible(campo("CPF"), !juridica);
        f->setRowVisible(campo("SEXO"), !juridica);
        f->setRowVisible(campo("CNPJ"), juridica);
    };
    connect(static_cast<QComboBox *>(campo("PESSOA")), &QComboBox::currentIndexChanged, this, pessoaMudou);
    pessoaMudou();
    f->addRow(botoesSalvarCancelar(this, [this] { BtSalvarClick(); }));
}

QWidget *TMiniCad::campo(const QString &coluna) const { return findChild<QWidget *>(coluna); }
void TMiniCad::definir(const QString &coluna, const QVariant &v) { escreverWidgetCampo(campo(coluna), v); }

bool TMiniCad::eventFilter(QObject *o, QEvent *e)
{
    if (e->type() == QEvent::FocusOut && o == campo("CPF")) conferirCpf();
    if (e->type() == QEvent::FocusOut && o == campo("CNPJ")) conferirCnpj();
    return QDialog::eventFilter(o, e);
}

void TMiniCad::conferirCpf() { conferirDocumento("CPF"); }
void TMiniCad::conferirCnpj() { conferirDocumento("CNPJ"); }

void TMiniCad::conferirDocumento(const QString &coluna)
{
    const bool cnpj = coluna == "CNPJ";
    Tabs->Deb(cnpj ? "procedure TMiniCad.EdCnpjExit(Sender: TObject)" : "procedure TMiniCad.EdCpfExit(Sender: TObject)");
    const QString numero = lerWidgetCampo(campos_[cnpj ? 3 : 2], campo(coluna)).toString();
    if (numero.isEmpty()) return;
    if (!(cnpj ? cnpjValido(numero) : cpfValido(numero))) {
        if (Pergunta(coluna + " inválido! Corrigir?", true)) campo(coluna)->setFocus();
        return;
    }
    db::Transacao t(Tabs->DbORB(), db::Modo::Leitura);
    const QString r = documentoRepetido(t, 0, coluna, numero);
    if (!r.isEmpty()) Atencao(r);
}

void TMiniCad::BtSalvarClick()
{
    Tabs->Deb("procedure TMiniCad.BtSalvarClick(Sender: TObject)");
    db::Transacao &t = Tabs->Tr("TrCad");
    t.iniciar();
    try {
        const ModoCadastro modo = modoCadastro("Cl");
        Valores v = novoCadastro(t, modo, QDateTime::currentDateTime());
        for (int i = 0; i < campos_.size(); ++i) v[campos_[i].coluna] = lerWidgetCampo(campos_[i], widgets_[i]);
        v["APELIDO"] = v["NOME"].toString().left(20);  // a quick record is known by its name
        // Only the document of the kind of person chosen is kept.
        if (v["PESSOA"].toString() == "J") {
            v["RAZAOSOCIAL"] = v["NOME"];
            v["CPF"] = QVariant();
            v["SEXO"] = QVariant();
        } else {
            v["CNPJ"] = QVariant();
        }
        id_ = salvarCadastro(t, 0, v, modo, {}, sessao(), QDate::currentDate());
        t.commit();
        accept();
    } catch (const Recusa &r) {
        t.rollback();
        Atencao(r.texto);
        if (QWidget *w = campo(r.campo)) w->setFocus();
    } catch (const db::ErroBanco &e) {
        t.rollback();
        AvisarFalha(e);
    }
}

} // namespace orb
