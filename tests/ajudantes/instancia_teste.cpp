// A second copy for the single-instance tests: holds the guard named in argv[1], says "PRONTO",
// says "ATIVADO" on each request to come to the front and ends after argv[2] ms (3000 by default),
// its exit code being the number of requests.

#include "principal/InstanciaUnica.h"

#include <QCoreApplication>
#include <QTimer>
#include <cstdio>
#include <cstdlib>

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    if (argc < 2) return 100;
    orb::InstanciaUnica guarda(QString::fromLocal8Bit(argv[1]));
    if (!guarda.primeira()) return 101;  // well above any count of requests
    int vezes = 0;
    QObject::connect(&guarda, &orb::InstanciaUnica::ativar, [&vezes] {
        ++vezes;
        std::puts("ATIVADO");
        std::fflush(stdout);
    });
    QTimer::singleShot(argc > 2 ? std::atoi(argv[2]) : 3000, &app, &QCoreApplication::quit);
    std::puts("PRONTO");
    std::fflush(stdout);
    app.exec();
    return vezes;
}
