#include "copias/Comandos.h"

#include "Recusa.h"
#include "copias/Restauracao.h"
#include "copias/Servico.h"

#include <QDir>
#include <QFileInfo>
#include <QLocale>

namespace copias {

namespace {

QString megabytes(qint64 bytes) { return QLocale(QLocale::Portuguese, QLocale::Brazil).toString(double(bytes) / (1024.0 * 1024.0), 'f', 1) + " MB"; }

qint64 soma(const QMap<QString, qint64> &linhas)
{
    qint64 n = 0;
    for (qint64 v : linhas) n += v;
    return n;
}

} // namespace

int comandoBackup(const db::Conexao &c, const QString &pastaPrograma, const QString &pasta, QTextStream &saida, QTextStream &erros)
{
    const Opcoes o = lerOpcoes(pastaPrograma);
    const QString destino = QDir::cleanPath(QFileInfo(!pasta.isEmpty() ? pasta : !o.pasta.isEmpty() ? o.pasta : pastaPadrao(c.banco))
                                                .absoluteFilePath());
    try {
        const Copia copia = fazerCopia(c, destino, QDateTime::currentDateTime(), true);
        saida << "Cópia gravada: " << QDir::toNativeSeparators(copia.arquivo) << " (" << megabytes(copia.tamanho) << ")\n";
        if (copia.verificacao != Verificacao::Verificada) {
            erros << avisoFalha(copia) << "\n";
            return kSaidaNaoVerificada;
        }
        saida << QString("Cópia verificada: %1 tabelas, %2 linhas conferidas.\n").arg(copia.linhas.size()).arg(soma(copia.linhas));
        for (const QString &a : aplicarRetencao(destino, o.diarias, o.mensais))
            saida << "Cópia antiga removida: " << QDir::toNativeSeparators(a) << "\n";
        return kSaidaOk;
    } catch (const orb::Recusa &r) {
        erros << r.texto << "\n";
        return kSaidaFalhou;
    }
}

int comandoRestore(const db::Conexao &c, const QString &arquivo, QTextStream &saida, QTextStream &erros)
{
    if (!QFileInfo(arquivo).isFile()) {
        erros << "O arquivo " << QDir::toNativeSeparators(arquivo) << " não existe.\n";
        return kSaidaFalhou;
    }
    Restauracao r;
    r.conexao = c;
    r.copia = copiaDe(arquivo);
    r.agora = QDateTime::currentDateTime();
    try {
        recuperarRestauracao(caminhoNoServidor(c.banco));
        std::unique_ptr<db::Banco> atual;
        if (QFileInfo::exists(caminhoNoServidor(c.banco))) {
            try {
                atual = db::Banco::abrir(c);
            } catch (const db::ErroBanco &e) {
                // The embedded engine keeps a file to the program that has it open.
                erros << "O banco de dados não pôde ser aberto (o programa está aberto com ele?): " << e.mensagem() << "\n";
                return kSaidaFalhou;
            }
        }
        QStringList feitas;
        auto b = restaurar(r, atual.get(), [&] { atual.reset(); }, {}, &feitas);
        const QMap<QString, qint64> linhas = contarLinhas(*b);
        saida << "Cópia de " << r.copia.quando.toString("dd/MM/yyyy HH:mm") << " restaurada em "
              << QDir::toNativeSeparators(c.banco) << ": " << linhas.size() << " tabelas, " << soma(linhas) << " linhas.\n";
        for (const QString &f : feitas) saida << f << "\n";
        return kSaidaOk;
    } catch (const orb::Recusa &e) {
        erros << e.texto << "\n";
        return kSaidaFalhou;
    }
}

} // namespace copias
