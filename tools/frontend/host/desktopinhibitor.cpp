#include "desktopinhibitor.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusUnixFileDescriptor>
#include <QFile>
#include <QVector>

#include <memory>
#include <utility>

namespace {

/// Someone on the user's bus who gives a number for a hold, and takes it back.
struct SessionService
{
    QString service;
    QString path;
    QString interface;
    QString releaseMethod;
    bool asksWhatFor; ///< wants the window, and flags for what is held off
};

const QVector<SessionService>& sessionServices()
{
    static const QVector<SessionService> all = {
        {QStringLiteral("org.gnome.SessionManager"), QStringLiteral("/org/gnome/SessionManager"),
         QStringLiteral("org.gnome.SessionManager"), QStringLiteral("Uninhibit"), true},
        {QStringLiteral("org.freedesktop.PowerManagement"),
         QStringLiteral("/org/freedesktop/PowerManagement/Inhibit"),
         QStringLiteral("org.freedesktop.PowerManagement.Inhibit"), QStringLiteral("UnInhibit"),
         false},
    };
    return all;
}

constexpr quint32 noWindow = 0;
constexpr quint32 logoutAndSleep = 1U | 4U; // in the flags of GNOME's SessionManager

// Where no bus is, Qt would look for one in ways of its own, and may even start one.
bool hasBus(const char* variable, const QString& socket)
{
    return qEnvironmentVariableIsSet(variable) || QFile::exists(socket);
}

QDBusMessage questionTo(const QString& service, const QString& path, const QString& interface,
                        const QVariantList& arguments)
{
    QDBusMessage question =
        QDBusMessage::createMethodCall(service, path, interface, QStringLiteral("Inhibit"));
    question.setAutoStartService(false);
    question.setArguments(arguments);
    return question;
}

} // namespace

DesktopInhibitor::~DesktopInhibitor()
{
    release();
}

void DesktopInhibitor::hold(const QString& reason)
{
    if (m_hold != 0)
        return;
    m_hold = ++m_holds;
    if (hasBus("DBUS_SYSTEM_BUS_ADDRESS", QStringLiteral("/run/dbus/system_bus_socket")))
        holdSystem(reason);
    if (hasBus("DBUS_SESSION_BUS_ADDRESS",
               qEnvironmentVariable("XDG_RUNTIME_DIR") + QLatin1String("/bus")))
        holdSession(reason);
}

void DesktopInhibitor::release()
{
    m_hold = 0;
    for (const Release& release : std::exchange(m_releases, {}))
        release();
}

// The hold lasts as long as the file is open that comes as the answer.
void DesktopInhibitor::holdSystem(const QString& reason)
{
    ask(QDBusConnection::systemBus(),
        questionTo(QStringLiteral("org.freedesktop.login1"),
                   QStringLiteral("/org/freedesktop/login1"),
                   QStringLiteral("org.freedesktop.login1.Manager"),
                   {QStringLiteral("sleep:shutdown"), m_program, reason, QStringLiteral("block")}),
        [](const QVariant& answer) {
            auto file =
                std::make_shared<QDBusUnixFileDescriptor>(answer.value<QDBusUnixFileDescriptor>());
            return [file] {
                *file = QDBusUnixFileDescriptor();
            };
        });
}

void DesktopInhibitor::holdSession(const QString& reason)
{
    const QDBusConnection bus = QDBusConnection::sessionBus();
    for (const SessionService& it : sessionServices()) {
        const QVariantList arguments =
            it.asksWhatFor ? QVariantList{m_program, noWindow, reason, logoutAndSleep}
                           : QVariantList{m_program, reason};
        ask(bus, questionTo(it.service, it.path, it.interface, arguments),
            [bus, it](const QVariant& number) {
                QDBusMessage end = QDBusMessage::createMethodCall(it.service, it.path, it.interface,
                                                                  it.releaseMethod);
                end.setArguments({number});
                return [bus, end] {
                    bus.send(end);
                };
            });
    }
}

void DesktopInhibitor::ask(const QDBusConnection& bus, const QDBusMessage& question,
                           const std::function<Release(const QVariant& answer)>& releaseFor)
{
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(question), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this,
            [this, watcher, releaseFor, hold = m_hold] {
                watcher->deleteLater();
                const QDBusMessage answer = watcher->reply();
                if (answer.type() != QDBusMessage::ReplyMessage || answer.arguments().isEmpty())
                    return;
                const Release release = releaseFor(answer.arguments().constFirst());
                // It may come when it is no longer wanted.
                if (hold == m_hold)
                    m_releases.push_back(release);
                else
                    release();
            });
}
