#include "commandline.h"

#include <QCoreApplication>
#include <QFile>

#include <cstdio>
#include <unistd.h>

namespace {

// Colours are for people who did not ask for none: see no-color.org.
bool isColourWanted()
{
    return isatty(STDOUT_FILENO) == 1 && qEnvironmentVariableIsEmpty("NO_COLOR") &&
           qgetenv("TERM") != "dumb";
}

} // namespace

int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    QTextStream out(stdout);
    QTextStream messages(stderr);
    QFile in;
    in.open(stdin, QIODevice::ReadOnly);
    const VerbStreams streams{out, messages, isatty(STDERR_FILENO) == 1, isColourWanted(), &in};
    return runVerb(imageTool(), QCoreApplication::arguments().mid(1), streams);
}
