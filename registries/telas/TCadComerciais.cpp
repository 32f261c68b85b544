#include "TCadComerciais.h"

#include "acesso/Login.h"

#include "dados/Cep.h"
#include "dados/Tabs.h"
#include "principal/Menus.h"
#include "ui/Mensagens.h"
#include "ui/TratadorErros.h"

#include <QCheckBox>
#include <QComboBox>
#include <QEvent>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QTabWidget>
#include <QVBoxLayout>

namespace orb {

namespace {

using C = CampoForm;



const char *kSqlCidades = "Select Id, Cidade || ' - ' || Uf From TbCidades Order By Cidade";
const char *kSqlOpTel = "Select Id, Nome From TbOpTel Order By Nome";

// The fields of the form, grouped in the tabs a receptionist goes through.
DeclaracaoRegistro declaracaoComercial(const ModoCadastro &m)
{
    DeclaracaoRegistro d;
    d.classe = "TCadComerciais";
    d.titulo = m.titulo;
    d.area = "TrCad";
    d.tabela = "TBCAD";
    d.numerada = "CODIGO";
    d.colunas = {{"CODIGO", "Código"}, {"NOME", "Nome"}, {"APELIDO", "Apelido"}, {"Z_CIDADE", "Cidade"},
                 {"TELEFONE1", "Telefone"}, {"Z_SITUACAO", "Situação"}};
    // The captions choose the search clauses (sqlBusca); the columns are what the grid is ordered by.
    const QStringList colunas = {"CODIGO", "NOME", "RAZAOSOCIAL", "APELIDO", "NUMID", "CPF", "CNPJ", "INSCRESTADUAL",
                                 "INSCRMUNICIPAL", "TELEFONE1"};
    for (int i = 0; i < kOrdensCadastro.size(); ++i) d.ordens << qMakePair(kOrdensCadastro[i], colunas.value(i));
    d.filtro = m.flag.isEmpty() ? QString() : m.flag + " = 'S'";
    const QString dados = "&Dados", pessoal = "&Pessoal", operacional = "&Operacional", contato = "&Endereço e contato",
                  acesso = "A&cesso", obs = "O&bservações", referencias = "&Referências", foto = "&Foto";
    d.campos = {
        {"CODIGO", "Código", C::Inteiro, {}, 0, 2, {}, {}, {}, dados},
        {"PESSOA", "Pessoa", C::Lista, {}, 0, 2, {{"F", "Física"}, {"J", "Jurídica"}}, {}, {}, dados},
        {"NOME", "Nome", C::Texto, {}, 50, 2, {}, {}, {}, dados},
        {"APELIDO", "Apelido", C::Texto, {}, 20, 2, {}, {}, {}, dados},
        {"TIPOCLIENTE", "Tipo de cliente", C::Lista, {}, 0, 2, {{"V", "Varejo"}, {"A", "Atacado"}}, {}, {}, dados},
        {"RELACDESDE", "Relacionamento desde", C::Data, {}, 0, 2, {}, {}, {}, dados},
        {"CPF", "CPF", C::Texto, {}, 11, 2, {}, {}, "999.999.999-99;_", pessoal},
        {"TIPOID", "Documento", C::Lista, {}, 0, 2, {{"RG", "RG"}, {"CRV", "CRV"}, {"NIT", "NIT"}, {"CREA", "CREA"}, {"CRM", "CRM"}}, {}, {}, pessoal},
        {"NUMID", "Número do documento", C::Texto, {}, 20, 2, {}, {}, {}, pessoal},
        {"CTPS", "CTPS (funcionário)", C::Inteiro, {}, 0, 2, {}, {}, {}, pessoal},
        {"SERIECTPS", "Série da CTPS", C::Inteiro, {}, 0, 2, {}, {}, {}, pessoal},
        {"UFCTPS", "UF da CTPS", C::Texto, {}, 2, 2, {}, {}, ">AA;_", pessoal},
        {"PIS", "PIS", C::Texto, {}, 15, 2, {}, {}, {}, pessoal},
        {"DATANASC", "Nascimento", C::Data, {}, 0, 2, {}, {}, {}, pessoal},
        {"SEXO", "Sexo", C::Lista, {}, 0, 2, {{"M", "Masculino"}, {"F", "Feminino"}}, {}, {}, pessoal},
        {"ESTADOCIVIL", "Estado civil", C::Lista, {}, 0, 2,
         {{"SOLTEIRO(A)", "SOLTEIRO(A)"}, {"CASADO(A)", "CASADO(A)"}, {"DIVORCIADO(A)", "DIVORCIADO(A)"}, {"VIÚVO(A)", "VIÚVO(A)"},
          {"UNIÃO ESTÁVEL", "UNIÃO ESTÁVEL"}}, {}, {}, pessoal},
        {"CONJUGE", "Cônjuge", C::Texto, {}, 50, 2, {}, {}, {}, pessoal},
        {"PAI", "Pai", C::Texto, {}, 50, 2, {}, {}, {}, pessoal},
        {"MAE", "Mãe", C::Texto, {}, 50, 2, {}, {}, {}, pessoal},
        {"PROFISSAO", "Profissão", C::Texto, {}, 30, 2, {}, {}, {}, pessoal},
        {"RAZAOSOCIAL", "Razão social", C::Texto, {}, 50, 2, {}, {}, {}, operacional},
        {"CNPJ", "CNPJ", C::Texto, {}, 14, 2, {}, {}, "99.999.999/9999-99;_", operacional},
        {"INSCRESTADUAL", "Inscrição estadual", C::Texto, {}, 15, 2, {}, {}, {}, operacional},
        {"INSCRMUNICIPAL", "Inscrição municipal", C::Texto, {}, 15, 2, {}, {}, {}, operacional},
        {"SOCIO1", "Sócio 1", C::Texto, {}, 50, 2, {}, {}, {}, operacional},
        {"CPFSOCIO1", "CPF do sócio 1", C::Texto, {}, 11, 2, {}, {}, "999.999.999-99;_", operacional},
        {"SOCIO2", "Sócio 2", C::Texto, {}, 50, 2, {}, {}, {}, operacional},
        {"CPFSOCIO2", "CPF do sócio 2", C::Texto, {}, 11, 2, {}, {}, "999.999.999-99;_", operacional},
        {"CEP", "CEP", C::Texto, {}, 8, 2, {}, {}, "99999-999;_", contato},
        {"ENDERECO", "Endereço", C::Texto, {}, 30, 2, {}, {}, {}, contato},
        {"NUMERO", "Número", C::Texto, {}, 10, 2, {}, {}, {}, contato},
        {"COMPLEMENTO", "Complemento", C::Texto, {}, 20, 2, {}, {}, {}, contato},
        {"BAIRRO", "Bairro", C::Texto, {}, 30, 2, {}, {}, {}, contato},
        {"IDCIDADE", "Cidade", C::Consulta, {}, 0, 2, {}, kSqlCidades, {}, contato},
        {"TELEFONE1", "Telefone 1", C::Texto, {}, 11, 2, {}, {}, {}, contato},
        {"IDOPTEL1", "Operadora 1", C::Consulta, {}, 0, 2, {}, kSqlOpTel, {}, contato},
        {"TELEFONE2", "Telefone 2", C::Texto, {}, 11, 2, {}, {}, {}, contato},
        {"TELEFONE3", "Telefone 3", C::Texto, {}, 11, 2, {}, {}, {}, contato},
        {"EMAIL", "E-mail", C::Texto, {}, 240, 2, {}, {}, {}, contato},
        {"SITE", "Site", C::Texto, {}, 40, 2, {}, {}, {}, contato},
        {"US", "Usuário do sistema", C::Marca, {}, 0, 2, {}, {}, {}, acesso},
        {"USUARIO", "Nome de usuário", C::Texto, {}, 20, 2, {}, {}, {}, acesso},
        {kNovaSenha, "Senha (em branco mantém a atual)", C::Texto, {}, 10, 2, {}, {}, {}, acesso},
        {kNovaSenhaWeb, "Senha web (em branco mantém a atual)", C::Texto, {}, 10, 2, {}, {}, {}, acesso},
        {"IDNIVEL", "Nível de acesso", C::Consulta, {}, 0, 2, {}, "Select Id, Nivel || ' - ' || Descricao From TbNiveis Order By Nivel", {}, acesso},
        {"TIPOUSUARIO", "Tipo de usuário", C::Lista, {}, 0, 2, {{"U", "U - Usuário"}, {"S", "S - Supervisor"}, {"A", "A - Administrador"}}, {}, {}, acesso},
        {"OBSERVACOES", "Observações", C::Memo, {}, 0, 2, {}, {}, {}, obs},
        {"FOTO", "Foto", C::Foto, {}, 0, 2, {}, {}, {}, foto, false, "TIPOFOTO"},
    };
    // Three commercial references: the business, its phone and whom to ask for.
    for (int i = 1; i <= 3; ++i) {
        const QString n = QString::number(i);
        d.campos.append({"REFCOM" + n, "Referência " + n, C::Texto, {}, 40, 2, {}, {}, {}, referencias});
        d.campos.append({"TELREFCOM" + n, "Telefone", C::Texto, {}, 11, 2, {}, {}, {}, referencias});
        d.campos.append({"CONTATOREFCOM" + n, "Contato", C::Texto, {}, 20, 2, {}, {}, {}, referencias});
    }
    for (CampoForm &c : d.campos)
        if (c.coluna == kNovaSenha || c.coluna == kNovaSenhaWeb) c.transitorio = c.senha = true;
    // The role boxes: which kinds of party this record is.
    const QList<QPair<QString, QString>> papeis = {{"CL", "Cliente"}, {"FO", "Fornecedor"}, {"TR", "Transportadora"},
                                                   {"RE", "Vendedor"}, {"FU", "Funcionário"}, {"EM", "Empresa"},
                                                   {"MD", "Médico"}, {"LA", "Laboratório"}, {"CV", "Convênio"}, {"CO", "Condômino"}};
    for (const auto &[flag, texto] : papeis) d.campos.append({flag, texto, C::Marca, {}, 0, 2, {}, {}, {}, dados});
    d.detalhes = {
        {"Situação", "TBCADSIT", "FK",
         "Select S.*, R.Apelido Z_Resp From TbCadSit S Left Join TbCad R On (R.Id = S.IdResp) Where S.Fk = :MESTRE Order By S.Data Desc",
         {{"DATA", "Data"}, {"SITUACAO", "Situação"}, {"MOTIVO", "Motivo"}, {"IDREP", "Vendedor"}, {"PERCCOMVVAR", "Com. vendas %"},
          {"PERCCOMSVAR", "Com. serviços %"}, {"LIMCREDITO", "Limite de crédito"}, {"Z_RESP", "Responsável"}},
         {{"DATA", "Data", C::Data, "Digite a data da situação primeiro!"},
          {"SITUACAO", "Situação", C::Lista, "Defina a situação primeiro!", 0, 2, {{"A", "A - Ativo"}, {"B", "B - Bloqueado"}, {"I", "I - Inativo"}}},
          {"MOTIVO", "Motivo", C::Texto, {}, 50},
          {"IDREP", "Vendedor (representante)", C::Consulta, {}, 0, 2, {}, "Select Id, Nome From TbCad Where Re = 'S' Order By Nome"},
          {"PERCCOMVAT", "Comissão sobre vendas no atacado %", C::Decimal},
          {"PERCCOMVVAR", "Comissão sobre vendas no varejo %", C::Decimal},
          {"PERCCOMSAT", "Comissão sobre serviços no atacado %", C::Decimal},
          {"PERCCOMSVAR", "Comissão sobre serviços no varejo %", C::Decimal},
          {"LIMCREDITO", "Limite de crédito", C::Decimal}},
         "Tem certeza que deseja excluir esta Situação?"},
        {"Contatos", "TBCADCONT", "FK", "Select * From TbCadCont Where Fk = :MESTRE Order By Nome",
         {{"NOME", "Nome"}, {"CARGOSETOR", "Cargo / setor"}, {"TELEFONE1", "Telefone"}, {"EMAIL", "E-mail"}},
         {{"NOME", "Nome", C::Texto, "Digite o nome do contato primeiro!", 30},
          {"CARGOSETOR", "Cargo / setor", C::Texto, {}, 30},
          {"TELEFONE1", "Telefone", C::Texto, {}, 11, 2},
          {"RAMAL1", "Ramal", C::Texto, {}, 5},
          {"EMAIL", "E-mail", C::Texto, {}, 50}},
         "Tem certeza que deseja excluir este Contato?"},
        {"Especialidades", "TBCADESPEC", "FK",
         "Select C.*, E.Especialidade Z_Especialidade From TbCadEspec C Left Join TbEspec E On (E.Id = C.IdEspecialidade) "
         "Where C.Fk = :MESTRE Order By E.Especialidade",
         {{"IDESPECIALIDADE", "Especialidade"}, {"OBS", "Observação"}},
         {{"IDESPECIALIDADE", "Especialidade", C::Consulta, "Selecione a Especialidade primeiro!", 0, 2, {},
           "Select Id, Especialidade From TbEspec Order By Especialidade"},
          {"OBS", "Observação", C::Texto, {}, 100}},
         "Tem certeza que deseja excluir esta Especialidade?"},
    };
    const QString sqlEmpresas = "Select Id, Apelido From TbCad Where Em = 'S' Order By Apelido";
    if (m.codigo.isEmpty() || m.codigo == "Fu")
        d.detalhes.append({"Situação do funcionário", "TBCADFUNCSIT", "FK",
            "Select S.*, F.Funcao Z_Funcao, E.Apelido Z_Empresa From TbCadFuncSit S Left Join TbFuncoes F On (F.Id = S.IdFuncao) "
            "Left Join TbCad E On (E.Id = S.IdEmpresa) Where S.Fk = :MESTRE Order By S.Data Desc",
            {{"DATA", "Data"}, {"SITUACAO", "Situação"}, {"IDEMPRESA", "Empresa"}, {"IDFUNCAO", "Função"}, {"SALARIO", "Salário"}},
            {{"DATA", "Data", C::Data, "Digite a data da situação primeiro!"},
             {"SITUACAO", "Situação", C::Lista, "Defina a situação primeiro!", 0, 2, {{"A", "A - Ativo"}, {"F", "F - Férias"}, {"D", "D - Demitido"}}},
             {"IDEMPRESA", "Empresa", C::Consulta, "Selecione a Empresa primeiro!", 0, 2, {}, sqlEmpresas},
             {"IDFUNCAO", "Função", C::Consulta, "Selecione a Função primeiro!", 0, 2, {}, "Select Id, Funcao From TbFuncoes Order By Funcao"},
             {"SETOR", "Setor", C::Texto, {}, 20},
             {"IDHORARIO", "Horário", C::Consulta, {}, 0, 2, {}, "Select Id, Horario From TbHorarios Order By Horario"},
             {"SALARIO", "Salário", C::Decimal}},
            "Tem certeza que deseja excluir esta Situação?"});
    if (m.codigo.isEmpty() || m.codigo == "Em")
        d.detalhes.append({"Situação da empresa", "TBCADEMPSIT", "FK",
            "Select * From TbCadEmpSit Where Fk = :MESTRE Order By Data Desc",
            {{"DATA", "Data"}, {"REGTRIBFED", "Regime"}, {"PERCSIMPLES", "% Simples"}, {"PERCISSQN", "% ISSQN"}, {"GASTOFIXO", "Gasto fixo"}},
            {{"DATA", "Data", C::Data, "Digite a data da situação primeiro!"},
             {"REGTRIBFED", "Regime tributário", C::Lista, "Defina o regime tributário primeiro!", 0, 2,
              {{"S", "S - Simples Nacional"}, {"P", "P - Lucro Presumido"}, {"R", "R - Lucro Real"}}},
             {"PERCSIMPLES", "% Simples", C::Decimal}, {"PERCISSQN", "% ISSQN", C::Decimal}, {"PERCINSS", "% INSS", C::Decimal},
             {"PERCIRPJMD", "% IRPJ", C::Decimal}, {"PERCCSLLMD", "% CSLL", C::Decimal},
             {"GASTOFIXO", "Gasto fixo", C::Decimal}, {"PERCDESPFIN", "% Despesa financeira", C::Decimal}},
            "Tem certeza que deseja excluir esta Situação?"});
    if (m.codigo.isEmpty() || m.codigo == "Md" || m.codigo == "Es")
        d.detalhes.append({"Configuração da Agenda", "TBCADMEDSIT", "FK",
            "Select A.*, C.Consultorio Z_Consultorio From TbCadMedSit A Left Join TbConsultorios C On (C.Id = A.IdConsultorio) "
            "Where A.Fk = :MESTRE Order By A.Data Desc",
            {{"DATA", "Data"}, {"IDCONSULTORIO", "Consultório"}, {"HORAINICIO", "Início"}, {"HORASAIDAINT", "Saída"},
             {"HORARETINT", "Retorno"}, {"HORATERMINO", "Término"}, {"HORATEMPO", "Tempo"}},
            {{"DATA", "Data", C::Data, "Digite a data primeiro!"},
             {"IDCONSULTORIO", "Consultório", C::Consulta, {}, 0, 2, {}, "Select Id, Consultorio From TbConsultorios Order By Consultorio"},
             {"SESSOESPRIMATEND", "Sessões do primeiro atendimento", C::Inteiro},
             {"HORAINICIO", "Início", C::Hora, "Digite a hora de início primeiro!", 5, 2},
             {"HORASAIDAINT", "Saída para o intervalo", C::Hora, {}, 5, 2},
             {"HORARETINT", "Retorno do intervalo", C::Hora, {}, 5, 2},
             {"HORATERMINO", "Término", C::Hora, "Digite a hora de término primeiro!", 5, 2},
             {"HORATEMPO", "Tempo de cada atendimento", C::Hora, "Digite o tempo de cada atendimento primeiro!", 5, 2}},
            "Tem certeza que deseja excluir esta Configuração?"});
    if (m.codigo.isEmpty() || m.codigo == "Cl")
        d.detalhes.append({"Equipamentos", "TBCADEQUIP", "FK", "Select * From TbCadEquip Where Fk = :MESTRE Order By TipoUsuario",
            {{"USUARIO", "Usuário"}, {"SETOR", "Setor"}, {"NOMEREDE", "Nome na rede"}, {"ENDIP", "IP"}},
            {{"USUARIO", "Usuário", C::Texto, "Digite o usuário do equipamento primeiro!", 20},
             {"TIPOUSUARIO", "Tipo de usuário", C::Lista, {}, 0, 2, {{"U", "Usuário"}, {"A", "Administrador"}}},
             {"SETOR", "Setor", C::Texto, {}, 30}, {"PROCESSADOR", "Processador", C::Texto, {}, 50},
             {"MEMORIA", "Memória", C::Texto, {}, 20}, {"NOMEREDE", "Nome na rede", C::Texto, {}, 20},
             {"ENDIP", "Endereço IP", C::Texto, {}, 20}, {"OBSERVACOES", "Observações", C::Texto, {}, 200}},
            "Tem certeza que deseja excluir este Equipamento?"});
    // The last movements: read as they are, to be opened from the sales and purchases screens.
    d.detalhes.append({"Últimas movimentações", "TBCOM", "IDCAD",
        "Select First 50 Id, Op, Data, Pedido, Total, Case Op When 1 Then 'Venda' When 4 Then 'Compra' When 2 Then 'Ordem de serviço' "
        "When 3 Then 'Contrato' Else 'Operação' End Z_Tipo From TbCom Where IdCad = :MESTRE Order By Data Desc",
        {{"DATA", "Data"}, {"Z_TIPO", "Tipo"}, {"PEDIDO", "Pedido"}, {"TOTAL", "Total"}}});
    return d;
}

} // namespace

TCadComerciais::TCadComerciais(const QString &modo, QWidget *parent)
    : FormRegistro(declaracaoComercial(modoCadastro(modo)), parent), modo_(modoCadastro(modo))
{
    setWindowTitle(modo_.titulo);
    for (const char *doc : {"CPF", "CNPJ", "CPFSOCIO1", "CPFSOCIO2", "CODIGO", "CEP"})
        if (QWidget *w = campo(doc)) w->installEventFilter(this);
    connect(&buscaCep(), &BuscaCep::encontrado, this, [this](const Endereco &e) {
        Endereco c = e;
        db::Transacao t(Tabs->DbORB(), db::Modo::Leitura);
        c.idCidade = BuscaCep::idCidade(t, e.cidade, e.uf);
        preencherEndereco(c);
    });
    if (auto *p = qobject_cast<QComboBox *>(campo("PESSOA")))
        connect(p, &QComboBox::currentIndexChanged, this, &TCadComerciais::pessoaMudou);
    if (modo_.flag.isEmpty()) {
        // The general mode lists every record of the ticked roles.
        auto *linha = new QHBoxLayout;
        for (const auto &[texto, flag] : kVerPapeis) {
            auto *c = new QCheckBox(texto, this);
            c->setObjectName("Ver" + flag);
            c->setChecked(true);
            connect(c, &QCheckBox::toggled, this, [this] { pesquisar(); });
            linha->addWidget(c);
            ver_ << c;
        }
        linha->addStretch();
        corpo()->insertLayout(0, linha);
    }
    // Listed by name, as the registry is usually browsed.
    if (auto *ordem = findChild<QComboBox *>("CbOrdem")) ordem->setCurrentIndex(int(kOrdensCadastro.indexOf("NOME")));
    pesquisar();
}

QCheckBox *TCadComerciais::ver(const QString &flag) const { return findChild<QCheckBox *>("Ver" + flag); }

bool TCadComerciais::montarBusca(const QString &ordem, const QString &texto, Busca busca, QString &sql, std::map<QString, QVariant> &p)
{
    QList<QString> marcados;
    for (QCheckBox *c : ver_)
        if (c->isChecked()) marcados << c->objectName().mid(3);
    const BuscaCadastro b = sqlBusca(modo_, ordem.isEmpty() ? QStringLiteral("NOME") : ordem, texto, marcados, QDate::currentDate(), busca);
    sql = b.sql;
    p = b.parametros;
    return true;
}

void TCadComerciais::limpar()
{
    FormRegistro::limpar();
    if (estado() != Estado::Incluindo) return;
    try {
        db::Transacao t(Tabs->DbORB(), db::Modo::Leitura);
        const Valores v = novoCadastro(t, modo_, QDateTime::currentDateTime());
        for (const auto &[k, x] : v) definirValor(k, x);
    } catch (const db::ErroBanco &e) {
        AvisarFalha(e);
    }
    pessoaMudou();
}

void TCadComerciais::pessoaMudou()
{
    // A natural person shows the personal tab, a legal person the operational one.
    auto *abas = findChild<QTabWidget *>("PcEdicao");
    const bool fisica = valorDoCampo("PESSOA").toString() != "J";
    if (abas) {
        for (int i = 0; i < abas->count(); ++i) {
            if (abas->tabText(i) == "&Pessoal") abas->setTabVisible(i, fisica);
            if (abas->tabText(i) == "&Operacional") abas->setTabVisible(i, !fisica);
        }
    }
    if (fisica && estado() != Estado::Navegando) {
        if (!preenchido(valorDoCampo("SEXO"))) definirValor("SEXO", "M");
        if (!preenchido(valorDoCampo("ESTADOCIVIL"))) definirValor("ESTADOCIVIL", "SOLTEIRO(A)");
    }
}

void TCadComerciais::conferirDocumento(const QString &coluna)
{
    if (estado() == Estado::Navegando) return;
    Tabs->Deb("procedure TCadComerciais.Ed" + coluna + "Exit(Sender: TObject)");
    if (coluna == "CODIGO") {
        db::Transacao t(Tabs->DbORB(), db::Modo::Leitura);
        if (codigoRepetido(t, idAtual() && estado() == Estado::Alterando ? idAtual() : 0, valorDoCampo("CODIGO").toInt()))
            Atencao(kCodigoExistente);
        return;
    }
    const QString valor = valorDoCampo(coluna).toString();
    if (valor.isEmpty()) return;
    const bool cnpj = coluna == "CNPJ";
    const QString nome = cnpj ? "CNPJ" : "CPF";
    if (!(cnpj ? cnpjValido(valor) : cpfValido(valor))) {
        if (Pergunta(nome + " inválido! Corrigir?", true)) {
            auto *e = qobject_cast<QLineEdit *>(campo(coluna));
            QMetaObject::invokeMethod(this, [e] { e->setFocus(); e->selectAll(); }, Qt::QueuedConnection);
        }
        return;
    }
    if (coluna == "CPF" || coluna == "CNPJ") {
        db::Transacao t(Tabs->DbORB(), db::Modo::Leitura);
        const QString r = documentoRepetido(t, estado() == Estado::Alterando ? idAtual() : 0, coluna, valor);
        if (!r.isEmpty()) Atencao(r);
    }
}

void TCadComerciais::preencherEndereco(const Endereco &e)
{
    if (estado() == Estado::Navegando || e.cep != valorDoCampo("CEP").toString()) return;
    // What the user typed already stays; only empty fields are filled.
    if (!e.logradouro.isEmpty() && !preenchido(valorDoCampo("ENDERECO"))) definirValor("ENDERECO", e.logradouro.left(30));
    if (!e.bairro.isEmpty() && !preenchido(valorDoCampo("BAIRRO"))) definirValor("BAIRRO", e.bairro.left(30));
    if (e.idCidade) definirValor("IDCIDADE", e.idCidade);
}

void TCadComerciais::buscarCep()
{
    if (estado() == Estado::Navegando) return;
    Tabs->Deb("procedure TCadComerciais.EdCepExit(Sender: TObject)");
    const QString cep = valorDoCampo("CEP").toString();
    if (cep.size() != 8) return;
    db::Transacao t(Tabs->DbORB(), db::Modo::Leitura);
    preencherEndereco(buscaCep().local(t, cep));
    buscaCep().consultar(cep);
}

bool TCadComerciais::eventFilter(QObject *o, QEvent *e)
{
    if (e->type() == QEvent::FocusOut)
        if (auto *w = qobject_cast<QWidget *>(o)) {
            const QString n = w->objectName();
            if (n == "CPF" || n == "CNPJ" || n == "CPFSOCIO1" || n == "CPFSOCIO2" || n == "CODIGO") conferirDocumento(n);
            if (n == "CEP") buscarCep();
        }
    return FormRegistro::eventFilter(o, e);
}

namespace {
int indiceDetalhe(const DeclaracaoRegistro &d, const QString &tabela)
{
    for (int i = 0; i < d.detalhes.size(); ++i)
        if (d.detalhes[i].tabela == tabela) return i;
    return -1;
}
} // namespace

int TCadComerciais::gravarCabecalho(db::Transacao &t, int id)
{
    Valores v = valoresDoRegistro();
    completarTiposFoto(declaracao().campos, v);
    // Situations and the agenda take part in the record's own checks, so its routine writes them.
    const int iSit = indiceDetalhe(declaracao(), "TBCADSIT"), iAgenda = indiceDetalhe(declaracao(), "TBCADMEDSIT");
    QList<Valores> agenda;
    if (iAgenda >= 0)
        for (const LinhaDetalhe &l : edicao()[iAgenda].linhas)
            if (!l.id || l.alterada) {
                agenda << l.valores;
                if (l.id) agenda.last()["ID"] = l.id;
            }
    if (modo_.codigo == "Md" && id == 0 && agenda.isEmpty()) agenda << agendaPadrao(QDate::currentDate(), sessao());
    try {
        const int salvo = salvarCadastro(t, id, v, modo_, iSit >= 0 ? edicao()[iSit] : EdicaoDetalhe{}, quem(),
                                         QDate::currentDate(), agenda);
        // Users editing their own record see their new name and level at once.
        if (salvo == sessao().idUsuario) atualizarSessao(t, sessao());
        if (id == 0) Tabs->Deb("Novo Cadastro (" + QString::number(salvo) + ")");
        return salvo;
    } catch (const RecusaCampos &r) {
        // Every failing field is painted; the message lists them all.
        for (const QString &c : r.campos)
            if (QWidget *w = campo(c)) marcarFalha(w);
        throw;
    }
}

EdicaoDetalhes TCadComerciais::detalhesGenericos() const
{
    EdicaoDetalhes e = edicao();
    const int iSit = indiceDetalhe(declaracao(), "TBCADSIT"), iAgenda = indiceDetalhe(declaracao(), "TBCADMEDSIT");
    if (iSit >= 0) e[iSit] = {};
    if (iAgenda >= 0) e[iAgenda].linhas.clear();  // written by the record's routine; removals stay here
    return e;
}

bool TCadComerciais::confirmarCancelamento()
{
    if (!Pergunta("Deseja realmente cancelar as alterações deste cadastro?", false)) return false;
    Tabs->Deb("Operação Cancelada - " + QString::number(estado() == Estado::Alterando ? idAtual() : 0));
    return true;
}

void TCadComerciais::apagar(db::Transacao &t, int id)
{
    excluirCadastro(t, id, quem());
    Tabs->Deb("Cadastro Excluído (" + QString::number(id) + ")");
}

void registrarComercial()
{
    const QList<QPair<QString, QString>> formas = {{"TCadComerciais", ""},   {"TClientes", "Cl"},     {"TFornecedores", "Fo"},
                                                   {"TTransportadoras", "Tr"}, {"TFuncionarios", "Fu"}, {"TProprietarios", "Pr"},
                                                   {"TEmpresas", "Em"},        {"TMedicos", "Md"},      {"TEspecialistas", "Es"},
                                                   {"TMembros", "Me"}};
    for (const auto &[classe, modo] : formas)
        registrarFormulario(classe, [modo = modo, classe = classe](QWidget *p) {
            auto *f = new TCadComerciais(modo, p);
            f->setObjectName(classe);
            return f;
        }, kSemAcessoVisualizacao);
}

} // namespace orb
