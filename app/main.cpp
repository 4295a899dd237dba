#include "app/u_application.h"
#include "app/u_startup.h"

int main(int argc, char *argv[])
{
    TQuarvApplication app(argc, argv);
    return runProgram(app);
}
