#include "commandline.h"

#include <QCoreApplication>
#include <QTextStream>

#include <cstdio>
#include <unistd.h>

int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    QTextStream out(stdout);
    QTextStream messages(stderr);
    const bool isTerminal = isatty(STDERR_FILENO) == 1;
    return runImageTool(QCoreApplication::arguments().mid(1), {out, messages, isTerminal});
}
