#include "desktop.h"

#include <QDeadlineTimer>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTest>

Desktop::Desktop()
{
    for (const char* needed : {"Xvfb", "xdotool"}) {
        if (QStandardPaths::findExecutable(needed).isEmpty()) {
            m_trouble = QStringLiteral("%1 is not installed").arg(needed);
            return;
        }
    }
    // The server chooses a number that is free, and says which.
    m_server = std::make_unique<Program>(
        "Xvfb", QStringList{"-displayfd", "1", "-screen", "0", "1400x1000x24", "-nolisten", "tcp"});
    // It may grumble before.
    bool isNumber = false;
    do {
        m_display = m_server->waitForLine(QString());
        m_display.toInt(&isNumber);
    } while (!m_display.isNull() && !isNumber);
    if (m_display.isNull())
        m_trouble = QStringLiteral("Xvfb does not start");
}

QStringList Desktop::environment() const
{
    return {"DISPLAY=:" + m_display, "QT_QPA_PLATFORM=xcb"};
}

QString Desktop::windowWith(const QString& title) const
{
    const QString pattern = '^' + QRegularExpression::escape(title) + '$';
    return run("xdotool", {"search", "--onlyvisible", "--name", pattern})
        .value_or(QString())
        .section('\n', -1);
}

bool Desktop::shows(const QString& title) const
{
    const QDeadlineTimer deadline(patienceMs);
    bool isThere = false;
    while (!isThere && !deadline.hasExpired())
        isThere = !windowWith(title).isEmpty();
    return isThere;
}

// Without a window manager nobody else gives the keyboard to a window.
bool Desktop::focus(const QString& title) const
{
    const QDeadlineTimer deadline(patienceMs);
    while (!deadline.hasExpired()) {
        const QString window = windowWith(title);
        if (!window.isEmpty() && run("xdotool", {"windowfocus", window}) &&
            run("xdotool", {"getwindowfocus"}) == window)
            return true;
    }
    return false;
}

void Desktop::press(const QStringList& keys) const
{
    run("xdotool", QStringList{"key"} + keys);
}

void Desktop::click(QPoint place) const
{
    // So soon after another one it would be a double click.
    run("xdotool", {"mousemove", QString::number(place.x()), QString::number(place.y()), "sleep",
                    "0.5", "click", "1"});
}

void Desktop::savePicture(const QString& file) const
{
    run("import", {"-window", "root", file});
}

std::optional<QString> Desktop::run(const QString& program, const QStringList& arguments) const
{
    ChildProcess process;
    process.setEnvironment(QProcess::systemEnvironment() + environment());
    process.start(program, arguments);
    if (!process.waitForEnd() || process.exitCode() != 0)
        return std::nullopt;
    return QString::fromLocal8Bit(process.readAllStandardOutput()).trimmed();
}
