#pragma once
// "Sistema > Cópia de Segurança": a verified copy now, the list of copies with their verification,
// a copy proven again, and the restore of a chosen copy (level 900 or more).

#include "copias/Copias.h"

#include <QWidget>
#include <functional>

class QLabel;
class QLineEdit;
class QProgressBar;
class QPushButton;
class QTableWidget;

namespace orb {

class TCopiaSeguranca : public QWidget {
    Q_OBJECT
public:
    explicit TCopiaSeguranca(const QString &pastaPrograma, QWidget *parent = nullptr);

    void FormShow();
    void BtCopiarClick();
    void BtVerificarClick();
    void BtRestaurarClick();
    void BtPastaClick();

    QString pasta() const;
    QTableWidget *grade() const { return grade_; }
    const QList<copias::Copia> &copiasListadas() const { return lista_; }

protected:
    void keyPressEvent(QKeyEvent *e) override;

private:
    // Runs trabalho on a worker thread while the bar moves; what it throws is thrown here.
    void comProgresso(const std::function<void(const copias::Progresso &)> &trabalho);
    const copias::Copia *selecionada() const;

    QString pastaPrograma_;
    QLineEdit *edPasta_ = nullptr;
    QTableWidget *grade_ = nullptr;
    QProgressBar *barra_ = nullptr;
    QLabel *etapa_ = nullptr;
    QList<QPushButton *> botoes_;
    QList<copias::Copia> lista_;
};

// The daily copy on closing the program, when the database is local: at most once a day, with a
// progress dialog, then the retention of the folder. Tells the user when the copy failed.
void copiaAoFechar(const QString &pastaPrograma, const db::Conexao &c);

// Runs trabalho on a worker thread with a progress dialog; rethrows what it threw.
void executarComProgresso(QWidget *pai, const QString &titulo, const std::function<void(const copias::Progresso &)> &trabalho);

} // namespace orb
