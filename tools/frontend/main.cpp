#include "console.h"
#include "frontend.h"
#include "options.h"
#include "programstart.h"
#include "runmodes.h"

#include <QApplication>

#include <optional>

namespace {

QtMessageHandler previousHandler = nullptr;

// Without a display Qt says this of every window.
void dropPlatformChatter(QtMsgType type, const QMessageLogContext& context, const QString& text)
{
    if (text != QLatin1String("This plugin does not support propagateSizeHints()"))
        previousHandler(type, context, text);
}

QStringList argumentList(int argc, char** argv)
{
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments += QString::fromLocal8Bit(argv[i]);
    return arguments;
}

} // namespace

int main(int argc, char** argv)
{
    Options options;
    QString error;
    const QStringList arguments = argumentList(argc, argv);
    if (!parseOptions(arguments, programFile().path(), &options, &error))
        return fail(WrongUsage, error + QStringLiteral(" (--help lists the options)"));
    if (options.action != Options::Action::Run) {
        const QCoreApplication application(argc, argv);
        return runConsole(options.action);
    }

    const bool isClaimed = Frontend::claimStateFolder(options.stateDir, &error);
    if (isClaimed) {
        const std::optional<QString> program = programFor(options, &error);
        if (!program)
            return fail(StartFailed, error);
        if (!program->isEmpty())
            return goOnWith(*program, arguments, options.stateDir);
        moveHome(Frontend::homeFolder(options.stateDir));
    }
    if (options.headless && !qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    previousHandler = qInstallMessageHandler(dropPlatformChatter);
    QApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    // The options are the frontend's own; Qt would take "--plugin" for one of its own.
    int nameOnly = 1;
    const QApplication application(nameOnly, argv);
    return isClaimed ? runFrontend(options) : failVisibly(options, error);
}
