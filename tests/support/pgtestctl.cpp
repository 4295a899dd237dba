// Starts or stops the tests' private PostgreSQL server (the CTest fixture).
#include "tests/support/u_pgtestserver.h"

#include <QCoreApplication>

#include <cstdio>

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    const QStringList args = app.arguments();
    if (args.size() != 3 || (args[1] != u"start" && args[1] != u"stop")) {
        std::fprintf(stderr, "usage: pgtestctl start|stop DIR\n");
        return 2;
    }
    if (args[1] == u"start")
        PgTestServer::startCluster(args[2]);
    else
        PgTestServer::stopCluster(args[2]);
    return 0;
}
