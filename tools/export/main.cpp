// tkquarv-export: see u_exportcli.h.

#include "paper/u_fonts.h"
#include "tools/export/u_exportcli.h"

#include <QCoreApplication>
#include <QGuiApplication>

#include <memory>

int main(int argc, char **argv)
{
    std::unique_ptr<QCoreApplication> app;
    if (cli::needsFonts(argc, argv)) {
#ifndef Q_OS_WIN
        // Nothing is shown: a server without a display writes PDFs too.
        if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
            qputenv("QT_QPA_PLATFORM", "offscreen");
#endif
        app = std::make_unique<QGuiApplication>(argc, argv);
        paper::installFontSubstitutes();
    } else {
        app = std::make_unique<QCoreApplication>(argc, argv);
    }
    return cli::run(QCoreApplication::arguments());
}
