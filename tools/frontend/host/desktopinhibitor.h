#pragma once

#include <QObject>

#include <functional>
#include <vector>

class QDBusConnection;
class QDBusMessage;
class QVariant;

/// Holds off sleep, shutdown and logout, as far as the desktop and the system let programs do so:
/// by logind, and by GNOME and its relatives, or the power management of other desktops. What
/// is not there is not missed, and nothing is waited for. The desktop ends it by itself when the
/// process dies.
///
/// To be used from the user interface thread.
class DesktopInhibitor : public QObject
{
    Q_OBJECT

public:
    /// @param program its name, as the desktop shows it
    explicit DesktopInhibitor(QString program) : m_program(std::move(program)) {}
    /// Releases.
    ~DesktopInhibitor() override;

    /// Asks the desktop to hold off all three; does nothing if it was asked before.
    /// @param reason one sentence, as the desktop shows it
    void hold(const QString& reason);
    /// Takes that back.
    void release();

private:
    using Release = std::function<void()>;

    void holdSystem(const QString& reason);
    void holdSession(const QString& reason);
    void ask(const QDBusConnection& bus, const QDBusMessage& question,
             const std::function<Release(const QVariant& answer)>& releaseFor);

    QString m_program;
    int m_hold = 0; // number of the hold that is wanted; 0: none
    int m_holds = 0;
    std::vector<Release> m_releases;
};
