// tkquarv-export: see u_exportcli.h.

#include "tools/export/u_exportcli.h"

#include <QCoreApplication>

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    return cli::run(app.arguments());
}
