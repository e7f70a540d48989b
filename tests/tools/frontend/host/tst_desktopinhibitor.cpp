#include <desktopinhibitor.h>

#include <childprocess.h>
#include <testmain.h>

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusUnixFileDescriptor>
#include <QDBusVirtualObject>
#include <QStandardPaths>

#include <fcntl.h>
#include <unistd.h>

namespace {

/// Answers as logind and as the sessions of desktops do, and writes down what it is asked.
class FakeServices : public QDBusVirtualObject
{
public:
    ~FakeServices() override { ::close(m_ends[0]); }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& bus) override
    {
        QStringList words{message.interface(), message.member()};
        for (const QVariant& argument : message.arguments())
            words += argument.toString();
        calls += words.join(' ');
        if (refuses)
            return bus.send(message.createErrorReply(QDBusError::AccessDenied, "no"));
        if (message.interface() == "org.freedesktop.login1.Manager")
            return bus.send(message.createReply(newHold()));
        return bus.send(message.createReply(42U));
    }
    QString introspect(const QString& /*path*/) const override { return QString(); }

    /// Whether whoever asked logind has let go: it keeps the one open end of a pipe.
    bool isSystemReleased() const
    {
        char byte = 0;
        return ::read(m_ends[0], &byte, 1) == 0;
    }

    QStringList calls;
    bool refuses = false;

private:
    QVariant newHold()
    {
        ::close(m_ends[0]);
        if (::pipe2(m_ends, O_NONBLOCK | O_CLOEXEC) != 0)
            return QVariant();
        const QDBusUnixFileDescriptor end(m_ends[1]); // a copy
        ::close(m_ends[1]);
        return QVariant::fromValue(end);
    }

    int m_ends[2] = {-1, -1};
};

/// A bus of the test's own, in the place of the system's and of the user's.
class Bus
{
public:
    Bus()
    {
        m_daemon.start("dbus-daemon", {"--session", "--nofork", "--print-address"});
        while (!m_daemon.canReadLine() && m_daemon.waitForReadyRead(patienceMs)) {
        }
        m_address = m_daemon.readLine().trimmed();
        qputenv("DBUS_SYSTEM_BUS_ADDRESS", m_address);
        qputenv("DBUS_SESSION_BUS_ADDRESS", m_address);
    }

    QDBusConnection connect(const QString& name) const
    {
        return QDBusConnection::connectToBus(m_address, name);
    }
    void end() { m_daemon.end(); }

private:
    ChildProcess m_daemon;
    QByteArray m_address;
};

const QStringList services = {"org.freedesktop.login1", "org.gnome.SessionManager",
                              "org.freedesktop.PowerManagement"};

} // namespace

class TestDesktopInhibitor : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanup();
    void nobodyIsMissed();
    void everyoneIsAskedAndReleased();
    void whoRefusesIsLeft();
    void answerThatComesTooLateIsReleased();
    void holdEndsWithTheObject();
    void lossOfTheBusIsNoMatter();

private:
    void offer();

    std::unique_ptr<Bus> bus;
    std::unique_ptr<FakeServices> fakes;
};

void TestDesktopInhibitor::initTestCase()
{
    if (QStandardPaths::findExecutable("dbus-daemon").isEmpty())
        QSKIP("dbus-daemon is not installed");
    // Before there is one: nothing is looked for, and nothing is started.
    qunsetenv("DBUS_SESSION_BUS_ADDRESS");
    {
        DesktopInhibitor inhibitor("VORNIX3");
        inhibitor.hold("An update is under way.");
        inhibitor.release();
    }
    bus = std::make_unique<Bus>();
}

// Everyone stands on one connection, at the paths that they have on their desktops.
void TestDesktopInhibitor::offer()
{
    fakes = std::make_unique<FakeServices>();
    QDBusConnection connection = bus->connect("fakes");
    QVERIFY(connection.registerVirtualObject("/org", fakes.get(), QDBusConnection::SubPath));
    for (const QString& service : services)
        QVERIFY(connection.registerService(service));
}

void TestDesktopInhibitor::cleanup()
{
    QDBusConnection::disconnectFromBus("fakes");
    fakes.reset();
}

void TestDesktopInhibitor::nobodyIsMissed()
{
    DesktopInhibitor inhibitor("VORNIX3");
    inhibitor.hold("An update is under way.");
    QCoreApplication::processEvents();
    inhibitor.release();
}

void TestDesktopInhibitor::everyoneIsAskedAndReleased()
{
    offer();
    DesktopInhibitor inhibitor("VORNIX3");
    inhibitor.hold("An update is under way.");
    inhibitor.hold("An update is under way."); // it does so already
    QTRY_COMPARE(fakes->calls.size(), 3);
    fakes->calls.sort();
    QCOMPARE(fakes->calls,
             (QStringList{"org.freedesktop.PowerManagement.Inhibit Inhibit VORNIX3 An update is "
                          "under way.",
                          "org.freedesktop.login1.Manager Inhibit sleep:shutdown VORNIX3 An update "
                          "is under way. block",
                          "org.gnome.SessionManager Inhibit VORNIX3 0 An update is under way. 5"}));
    QVERIFY(!fakes->isSystemReleased());
    fakes->calls.clear();

    inhibitor.release();
    inhibitor.release();
    QTRY_VERIFY(fakes->isSystemReleased());
    QTRY_COMPARE(fakes->calls.size(), 2);
    fakes->calls.sort();
    QCOMPARE(fakes->calls, (QStringList{"org.freedesktop.PowerManagement.Inhibit UnInhibit 42",
                                        "org.gnome.SessionManager Uninhibit 42"}));
    // And once more.
    inhibitor.hold("An update is under way.");
    QTRY_COMPARE(fakes->calls.size(), 5);
}

void TestDesktopInhibitor::whoRefusesIsLeft()
{
    offer();
    fakes->refuses = true;
    DesktopInhibitor inhibitor("VORNIX3");
    inhibitor.hold("An update is under way.");
    QTRY_COMPARE(fakes->calls.size(), 3);
    inhibitor.release();
    QCOMPARE(fakes->calls.size(), 3);
}

void TestDesktopInhibitor::answerThatComesTooLateIsReleased()
{
    offer();
    DesktopInhibitor inhibitor("VORNIX3");
    inhibitor.hold("An update is under way.");
    inhibitor.release();
    QTRY_COMPARE(fakes->calls.size(), 5); // three questions, and two numbers that are given back
    QTRY_VERIFY(fakes->isSystemReleased());
}

void TestDesktopInhibitor::holdEndsWithTheObject()
{
    offer();
    {
        DesktopInhibitor inhibitor("VORNIX3");
        inhibitor.hold("An update is under way.");
        QTRY_COMPARE(fakes->calls.size(), 3);
        // The answers are on their way back.
        QTRY_VERIFY(!fakes->isSystemReleased());
    }
    QTRY_VERIFY(fakes->isSystemReleased());
}

void TestDesktopInhibitor::lossOfTheBusIsNoMatter()
{
    offer();
    DesktopInhibitor inhibitor("VORNIX3");
    inhibitor.hold("An update is under way.");
    QTRY_COMPARE(fakes->calls.size(), 3);
    bus->end();
    inhibitor.release();
    inhibitor.hold("An update is under way.");
    QCoreApplication::processEvents();
}

ZAN_TEST_MAIN(TestDesktopInhibitor)
#include "tst_desktopinhibitor.moc"
