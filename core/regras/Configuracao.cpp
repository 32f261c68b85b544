#include "Configuracao.h"

#include <QDir>
#include <QFile>
#include <QHash>
#include <QSaveFile>
#include <QSettings>
#include <QStringDecoder>
#include <stdexcept>

namespace orb {

namespace {

const QString kArquivo = QStringLiteral("ORBManager.ini");
const QString kAnterior = QStringLiteral("ORBManager_Anterior.ini");
const QString kBanco = QStringLiteral("ORBManager.fdb");
const QString kSecao = QStringLiteral("Server");
const QString kUsuarioPadrao = Configuracao{}.usuario;
const QString kSenhaPadrao = Configuracao{}.senha;

[[noreturn]] void falhar(const QString &mensagem)
{
    throw std::runtime_error(mensagem.toStdString());
}

// The [Server] lines exactly as typed. Files written by hand or by older installations hold
// Windows paths with single backslashes ("D:\ORB\Dados") and passwords with ';' or ',', which
// QSettings would read as escapes, comments or lists.
struct SecaoBruta {
    QHash<QString, QString> valores;
    bool latin1 = false;  // not UTF-8: an old ANSI file, QSettings would garble its accents
};

SecaoBruta lerSecaoBruta(const QString &arquivo)
{
    SecaoBruta r;
    QFile f(arquivo);
    if (!f.open(QIODevice::ReadOnly))
        return r;
    const QByteArray bytes = f.readAll();
    QStringDecoder utf8(QStringDecoder::Utf8);
    QString texto = utf8(bytes);
    if (utf8.hasError()) {
        r.latin1 = true;
        texto = QString::fromLatin1(bytes);
    }
    bool naSecao = false;
    for (const QString &l : texto.split(u'\n')) {
        const QString linha = l.trimmed();
        if (linha.startsWith(u'[')) {
            naSecao = linha == u'[' + kSecao + u']';
            continue;
        }
        const qsizetype igual = linha.indexOf(u'=');
        if (!naSecao || igual <= 0 || linha.startsWith(u';'))
            continue;
        const QString chave = linha.left(igual).trimmed();
        if (!r.valores.contains(chave))
            r.valores.insert(chave, linha.mid(igual + 1).trimmed());
    }
    return r;
}

// True when QSettings reads the text back as it was meant: every backslash escapes another
// backslash or a quote, and ',' / ';' only appear inside quotes.
bool escritoPeloQSettings(const QString &v)
{
    for (qsizetype i = 0; i < v.size(); ++i) {
        if (v[i] != u'\\')
            continue;
        if (i + 1 >= v.size() || (v[i + 1] != u'\\' && v[i + 1] != u'"'))
            return false;
        ++i;
    }
    return v.startsWith(u'"') || (!v.contains(u',') && !v.contains(u';'));
}

// s is inside the [Server] group.
QString valor(const QSettings &s, const SecaoBruta &bruta, const QString &chave)
{
    const auto it = bruta.valores.constFind(chave);
    if (it != bruta.valores.constEnd() && (bruta.latin1 || !escritoPeloQSettings(*it))) {
        QString v = *it;
        if (v.size() >= 2 && v.startsWith(u'"') && v.endsWith(u'"'))
            v = v.mid(1, v.size() - 2);
        return v;
    }
    return s.value(chave).toString();
}

void copiarAnterior(const QString &arquivo, const QString &anterior)
{
    QFile origem(arquivo);
    if (!origem.open(QIODevice::ReadOnly))
        falhar(QStringLiteral("Não foi possível ler %1: %2").arg(arquivo, origem.errorString()));
    // QSaveFile replaces the older copy in one step: there is always a complete one.
    QSaveFile copia(anterior);
    if (!copia.open(QIODevice::WriteOnly) || copia.write(origem.readAll()) < 0 || !copia.commit())
        falhar(QStringLiteral("Não foi possível guardar a cópia %1: %2")
                   .arg(anterior, copia.errorString()));
}

bool pareceWindows(const QString &pasta)
{
    const bool unidade = pasta.size() >= 2 && pasta[1] == u':'
                         && ((pasta[0] >= u'A' && pasta[0] <= u'Z')
                             || (pasta[0] >= u'a' && pasta[0] <= u'z'));
    return unidade || pasta.contains(u'\\');
}

} // namespace

Configuracao lerConfiguracao(const QString &pastaPrograma)
{
    const QString arquivo = QDir(pastaPrograma).filePath(kArquivo);
    Configuracao c;
    if (!QFile::exists(arquivo))
        return c;
    const SecaoBruta bruta = lerSecaoBruta(arquivo);
    QSettings s(arquivo, QSettings::IniFormat);
    s.beginGroup(kSecao);
    c.nome = valor(s, bruta, QStringLiteral("Name"));
    c.porta = valor(s, bruta, QStringLiteral("Port"));
    c.pasta = valor(s, bruta, QStringLiteral("Path"));
    c.compartilhamento = valor(s, bruta, QStringLiteral("Share"));
    const QString usuario = valor(s, bruta, QStringLiteral("User"));
    const QString senha = valor(s, bruta, QStringLiteral("Password"));
    if (!usuario.isEmpty())
        c.usuario = usuario;
    if (!senha.isEmpty())
        c.senha = senha;
    c.gravarMD5 = QSettings(arquivo, QSettings::IniFormat).value(QStringLiteral("Seguranca/GravarMD5")).toBool();
    return c;
}

void gravarConfiguracao(const QString &pastaPrograma, const Configuracao &c)
{
    const QDir dir(pastaPrograma);
    const QString arquivo = dir.filePath(kArquivo);
    SecaoBruta bruta;
    if (QFile::exists(arquivo)) {
        copiarAnterior(arquivo, dir.filePath(kAnterior));
        bruta = lerSecaoBruta(arquivo);
    }

    QSettings s(arquivo, QSettings::IniFormat);
    s.beginGroup(kSecao);
    // QSettings rewrites the whole section in its own escaping: carry the other keys' values
    // over as they were meant, not as QSettings misread them.
    for (const QString &chave : s.childKeys())
        s.setValue(chave, valor(s, bruta, chave));
    s.setValue(QStringLiteral("Name"), c.nome);
    s.setValue(QStringLiteral("Port"), c.porta);
    s.setValue(QStringLiteral("Path"), c.pasta);
    s.setValue(QStringLiteral("Share"), c.compartilhamento);
    // The defaults stay out of the file, so the password is not written where it need not be.
    if (c.usuario.isEmpty() || c.usuario == kUsuarioPadrao)
        s.remove(QStringLiteral("User"));
    else
        s.setValue(QStringLiteral("User"), c.usuario);
    if (c.senha.isEmpty() || c.senha == kSenhaPadrao)
        s.remove(QStringLiteral("Password"));
    else
        s.setValue(QStringLiteral("Password"), c.senha);
    s.endGroup();

    // sync() writes through a temporary file and a rename, so a crash leaves the old file whole.
    s.sync();
    if (s.status() != QSettings::NoError)
        falhar(QStringLiteral("Não foi possível gravar %1.").arg(QDir::toNativeSeparators(arquivo)));
    // It holds the database password.
    for (const QString &f : {arquivo, dir.filePath(kAnterior)})
        if (QFile::exists(f)) QFile::setPermissions(f, QFileDevice::ReadOwner | QFileDevice::WriteOwner);
}

bool bancoLocal(const Configuracao &c)
{
    const QString nome = c.nome.trimmed();
    return nome.isEmpty() || nome == u'.';
}

QString nomeBanco(const Configuracao &c, const QString &pastaPrograma)
{
    const QString pasta = c.pasta.trimmed();
    if (bancoLocal(c)) {
        // A relative Path is taken from the program's folder, where the settings file is.
        const QDir programa(QDir(pastaPrograma).absolutePath());
        const QDir base(pasta.isEmpty() ? programa.path() : programa.absoluteFilePath(pasta));
        return QDir::cleanPath(base.absoluteFilePath(kBanco));
    }

    QString r = c.nome.trimmed();
    if (const QString porta = c.porta.trimmed(); !porta.isEmpty())
        r += u'/' + porta;
    r += u':' + pasta;
    if (!pasta.isEmpty() && !pasta.endsWith(u'/') && !pasta.endsWith(u'\\'))
        r += pareceWindows(pasta) ? u'\\' : u'/';
    return r + kBanco;
}

} // namespace orb
