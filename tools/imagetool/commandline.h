#pragma once

#include <QStringList>

class QTextStream;

/// How the program `imagetool` ends.
enum ImageToolExit
{
    ImageToolDone = 0,
    ImageToolWrongUsage = 1,
    ImageToolCannotRead = 2,
    ImageToolWrongInput = 3,
    ImageToolCannotWrite = 4,
};

/// Where the program writes to.
struct ImageToolStreams
{
    QTextStream& out;        ///< results, and all errors with `--json`
    QTextStream& messages;   ///< everything else
    bool isTerminal = false; ///< progress goes to messages only if they are read on a terminal
};

/// Runs the program with @p arguments, the program's name left out. @return an ImageToolExit
int runImageTool(const QStringList& arguments, const ImageToolStreams& streams);
