#include "deliveredfrontend.h"
#include "desktop.h"

#include <endpoint.h>
#include <equipmentlanguage.h>
#include <wirelanguage.h>

#include <fixturefiles.h>
#include <imagefixtures.h>
#include <testmain.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTcpSocket>

namespace {

const QString frontendTitle = "VORNIX3 v3.3.0 - 192.168.7.20";
const QString lostTitle = frontendTitle + " (no answer)";
const QString updateTitle = "Controller and Camera Update";
const QString boxTitle = "VORNIX3";

// One controller, so that a run takes some seconds where the pace is fast. Where it is steady there
// is time to do something meanwhile; else a run takes longer than any test, as there is one record
// in a second.
const QByteArray scenarioJson = R"({
    "title": "One release behind",
    "protocol": "1.23",
    "controllers": [
        {"hostName": "zan-master", "address": "192.168.7.20", "model": 2,
         "modelDescription": "ZAN C2", "board": "FUJITSU D3231-S1", "serial": 731,
         "pt": "v3.2.0 2025-06-20", "ct": "v1.3"}
    ],
    "timing": {"bootMs": 3000, "recordsPerSecond": 1}
})";

const QString isUnderWay = "An update is under way. Do not switch off the controllers, the cameras "
                           "or this computer.";

/// The simulated system in its own process, and what its bench tells.
class System
{
public:
    explicit System(const FixtureFolder& folder, const QByteArray& scenario = scenarioJson)
        : m_folder(folder), m_scenario(scenario)
    {
    }

    enum class Pace
    {
        Fast,
        Steady, ///< a run takes 20 s
        Endless ///< no run ends
    };

    /// Starts it, at the same port if it ran before. @return whether it listens
    bool start(Pace pace = Pace::Fast)
    {
        const QByteArray records = pace == Pace::Steady ? "3000" : "1";
        m_folder.write("behind.json", QByteArray(m_scenario)
                                          .replace(R"("recordsPerSecond": 1)",
                                                   R"("recordsPerSecond": )" + records));
        QStringList arguments = {"--scenario", m_folder.path("behind.json"),
                                 "--state",    m_folder.path("system/state.json"),
                                 "--listen",   m_at.text()};
        if (pace == Pace::Fast)
            arguments += "--fast";
        m_program = std::make_unique<Program>(SIMULATED_SYSTEM, arguments);
        const QString line = m_program->waitForLine("Listening on ");
        const std::optional<Endpoint> at = Endpoint::read(line.section(' ', -1));
        if (at)
            m_at = *at;
        return at.has_value();
    }

    void kill() { m_program->kill(); }
    /// As if its cable was pulled, or plugged in again.
    ///@{
    void freeze() { m_program->freeze(); }
    void thaw() { m_program->thaw(); }
    ///@}

    /// Takes the controllers' power and gives it back.
    void losePower() const { ask(commandLine({EquipmentCommand::Kind::PowerCycle})); }

    /// Goes on with another system at the same port: one that runs newer firmware.
    bool exchange()
    {
        kill();
        m_scenario.replace("One release behind", "Another system")
            .replace(R"("pt": "v3.2.0 2025-06-20")", R"("pt": "v9.0.0 2027-06-20")");
        QFile::remove(m_folder.path("system/state.json"));
        return start();
    }
    QString address() const { return m_at.text(); }

    /// The state of the controller as the bench tells it, such as "v3.2.0 v1.3, 12 of 40 records";
    /// empty without an answer.
    QString state() const
    {
        const std::optional<WireReply> reply = ask("state");
        return reply ? stateText(QJsonDocument::fromJson(reply->text).object()) : QString();
    }

    /// Has no query that begins with @p request answered for so many times; 0: ever.
    /// @return whether the system took it
    bool losesReplies(const QByteArray& request, int times)
    {
        return arms(R"({"mode": "stay-silent", "request": ")" + request + R"(", "times": )" +
                    QByteArray::number(times) + '}');
    }

    /// Has the next last record of a block answered that much later. @return as above
    bool answersLate(int delayMs)
    {
        return arms(R"({"mode": "answer-late", "delayMs": )" + QByteArray::number(delayMs) + '}');
    }

private:
    bool arms(const QByteArray& fault)
    {
        const std::optional<WireReply> reply = ask("arm " + fault);
        return reply && reply->ok;
    }

    std::optional<WireReply> ask(const QByteArray& line) const
    {
        QTcpSocket socket;
        socket.connectToHost(m_at.address, m_at.port);
        if (!socket.waitForConnected(patienceMs))
            return std::nullopt;
        socket.write(equipmentLine(QByteArray(), line));
        while (!socket.canReadLine() && socket.waitForReadyRead(patienceMs)) {
        }
        return readReply(socket.readLine().trimmed());
    }

    static QString stateText(const QJsonObject& state)
    {
        const QJsonObject memory = state["memory"].toObject();
        const QJsonObject kept = memory["controllers"].toArray().at(0).toObject();
        const QJsonObject now = state["controllers"].toArray().at(0).toObject();
        const QString staged = kept["stagedPt"].toString() + kept["stagedCt"].toString();
        return QStringLiteral("%1 %2%3, %4")
            .arg(kept["pt"].toString().section(' ', 0, 0), kept["ct"].toString(),
                 staged.isEmpty() ? QString() : " and more to come",
                 now["received"].toInt() > 0 ? "has received" : "has received nothing");
    }

    const FixtureFolder& m_folder;
    QByteArray m_scenario;
    Endpoint m_at;
    std::unique_ptr<Program> m_program;
};

/// A start of the frontend on the desktop, and a user in front of it.
class Session
{
public:
    Session(Desktop& desktop, const System& system, const FixtureFolder& folder,
            const QString& program = DEMO_FRONTEND)
        : m_desktop(desktop), m_program(program,
                                        {"--connect", system.address(), "--state-dir",
                                         folder.path("state"), "--narrate"},
                                        desktop.environment())
    {
    }

    /// Waits until the user reads a line that has @p text in it.
    bool reads(const QString& text) { return !m_program.waitForLine(text).isNull(); }

    /// Clicks on what is told as a place from now on, such as "Exit" or "row 1".
    bool clicks(const QString& name)
    {
        const QString line = m_program.waitForLine("place     " + name + ' ');
        const QStringList place = line.section(' ', -1).split(',');
        if (place.size() != 2)
            return false;
        m_place = QPoint(place.at(0).toInt(), place.at(1).toInt());
        m_desktop.click(m_place);
        return true;
    }

    void clicksAgain() { m_desktop.click(m_place); }

    /// Presses keys in the window with that title.
    bool presses(const QStringList& keys, const QString& title)
    {
        if (!m_desktop.focus(title))
            return false;
        m_desktop.press(keys);
        return true;
    }

    /// Leaves the update dialog that comes up by itself.
    bool comesToRest()
    {
        return reads("window    " + updateTitle) && presses({"Escape"}, updateTitle) &&
               reads("window    " + frontendTitle);
    }

    /// Goes from the update dialog, which has come up, into the run.
    bool startsTheRun()
    {
        return presses({"Tab", "space"}, updateTitle) && reads("Do you really want to update?") &&
               presses({"alt+y"}, boxTitle) && reads("Don't stop the update process") &&
               presses({"Return"}, boxTitle);
    }

    /// Starts the run, and leaves its dialog as soon as it tells of the first step.
    bool leavesTheRun()
    {
        return startsTheRun() && reads("Updating firmware (zan-master)") &&
               presses({"Escape"}, updateTitle) && reads("window    " + frontendTitle) &&
               reads(isUnderWay);
    }

    /// Waits for the end of a run that is well, and takes the restart.
    bool takesTheRestart()
    {
        return reads("The Controller is updated successfully and must be restarted.") &&
               presses({"alt+y"}, boxTitle) && m_program.waitForEnd() == 0;
    }

    Program& program() { return m_program; }
    qint64 processId() const { return m_program.processId(); }

private:
    Desktop& m_desktop;
    Program m_program;
    QPoint m_place;
};

/// What the frontend has kept of its log.
QStringList keptLog(const FixtureFolder& folder)
{
    QFile file(folder.path("state/log.jsonl"));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QString::fromUtf8(file.readAll()).split('\n');
}

int indexOf(const QStringList& lines, const QString& part)
{
    return lines.indexOf(QRegularExpression(".*" + QRegularExpression::escape(part) + ".*"));
}

const QString oldVersions = "v3.2.0 v1.3, has received nothing";
const QString newVersions = "v3.3.0 v1.4, has received nothing";

// A controller whose firmware is not known is offered all controller firmware that there is.
QMap<QString, QByteArray> updatesFromAnyFirmware()
{
    const ControllerImageBlock before = systemBlock(VersionInfo(0, 0), VersionInfo(1, 2));
    const ControllerImageBlock newest = systemBlock(VersionInfo(0, 0), VersionInfo(1, 3));
    return {{"v3.2.0.vx3img",
             controllerImageBytes(releaseImage(VersionInfo(3, 2, 0), VersionInfo(1, 3), {before}))},
            {"v3.3.0.vx3img", controllerImageBytes(releaseImage(VersionInfo(3, 3, 0),
                                                                VersionInfo(1, 4), {newest}))}};
}

QByteArray currentScenarioJson()
{
    return QByteArray(scenarioJson)
        .replace("v3.2.0 2025-06-20", "v3.3.0 2025-09-30")
        .replace(R"("ct": "v1.3")", R"("ct": "v1.4")");
}

} // namespace

/// The frontend with its built module on a real display, with a user's keys and clicks, against a
/// system in another process.
class TestDesktop : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY2(desktop.trouble().isEmpty(), qPrintable(desktop.trouble())); }

    void cleanup()
    {
        if (QTest::currentTestFailed())
            desktop.savePicture(QStringLiteral(PICTURES "/%1.png")
                                    .arg(QLatin1String(QTest::currentTestFunction())));
    }

    void updateGoesItsWholeRoad();
    void frontendKilledInARunBeginsAnew();
    void systemKilledInARunIsUpdatedLater();
    void systemKilledWhileNothingHappensIsConnectedAgain();
    void silentSystemIsLostUntilItAnswers();
    void dialogIsNotOpenedOnADeadLine();
    void lossOfPowerIsToldAndItsEnd();
    void lossIsToldBehindAnOpenDialog();
    void planIsNotSentToAnotherSystem();
    void secondFrontendLooksOn();
    void runThatIsLeftIsFoundAgain();
    void quitWaitsForTheEndOfTheRun();
    void endOfTheSessionWaitsForTheEndOfTheRun();
    void oneLostReplyMakesNoControllerOld();
    void lostRepliesLeadToAQuestion();

private:
    Desktop desktop;
};

void TestDesktop::updateGoesItsWholeRoad()
{
    const FixtureFolder folder;
    System system(folder);
    QVERIFY(system.start());
    {
        Session first(desktop, system, folder);
        QVERIFY(first.reads("window    " + updateTitle));
        // A tick is taken away and put back.
        QVERIFY(first.clicks("row 1"));
        QVERIFY(first.reads("[ ] | Firmware update (zan-master) | v3.2.0 | v3.3.0 | yes | yes"));
        QVERIFY(first.reads("[Update] (off) [Exit]"));
        first.clicksAgain();
        QVERIFY(first.reads("[x] | Firmware update (zan-master) | v3.2.0 | v3.3.0 | yes | yes"));
        QVERIFY(first.reads("[Update] [Exit]"));
        QVERIFY(first.startsTheRun());
        QVERIFY(first.takesTheRestart());
    }
    QTRY_COMPARE(system.state(), newVersions);

    Session second(desktop, system, folder);
    QVERIFY(second.reads("1 of 1 controller runs what was planned."));
    QVERIFY(second.reads("window    New Features"));
    QVERIFY(second.clicks("Show more"));
    QVERIFY(second.reads("more lines)"));
    QVERIFY(second.presses({"Escape"}, "New Features"));
    QVERIFY(second.reads("window    " + frontendTitle));
    QVERIFY(second.presses({"alt+h", "c"}, frontendTitle));
    QVERIFY(second.reads("window    " + updateTitle));
    QVERIFY(second.reads("Controller(s) and cameras are up to date"));
    QVERIFY(second.presses({"Escape"}, updateTitle));
    QVERIFY(second.reads("window    " + frontendTitle));
    QVERIFY(second.presses({"ctrl+q"}, frontendTitle));
    QCOMPARE(second.program().waitForEnd(), 0);
}

void TestDesktop::frontendKilledInARunBeginsAnew()
{
    const FixtureFolder folder;
    System system(folder);
    QVERIFY(system.start(System::Pace::Endless));
    {
        Session first(desktop, system, folder);
        QVERIFY(first.reads("window    " + updateTitle));
        QVERIFY(first.startsTheRun());
        QTRY_VERIFY(system.state().endsWith("has received"));
        first.program().kill();
    }
    // Nothing of what was received runs without a restart.
    QVERIFY2(system.state().startsWith("v3.2.0 v1.3"), qPrintable(system.state()));
    system.kill();
    QVERIFY(system.start());

    Session second(desktop, system, folder);
    QVERIFY(second.reads("0 of 1 controller runs what was planned. Unconfirmed: zan-master."));
    QVERIFY(second.reads("window    " + updateTitle));
    QVERIFY(second.reads("[x] | Firmware update (zan-master) | v3.2.0 | v3.3.0 | yes | yes"));
    QVERIFY(second.startsTheRun());
    QVERIFY(second.takesTheRestart());
    QTRY_COMPARE(system.state(), newVersions);
}

void TestDesktop::systemKilledInARunIsUpdatedLater()
{
    const FixtureFolder folder;
    System system(folder);
    QVERIFY(system.start(System::Pace::Endless));
    Session session(desktop, system, folder);
    QVERIFY(session.reads("window    " + updateTitle));
    QVERIFY(session.startsTheRun());
    QTRY_VERIFY(system.state().endsWith("has received"));
    system.kill();

    QVERIFY(session.reads("Update failed!"));
    QVERIFY(session.presses({"Return"}, boxTitle));
    QVERIFY(session.presses({"Escape"}, updateTitle));
    QVERIFY(session.reads("The simulated system cannot be reached."));

    QVERIFY(system.start());
    QVERIFY2(system.state().startsWith("v3.2.0 v1.3"), qPrintable(system.state()));
    QVERIFY(session.reads("Frontend: Connected to 192.168.7.20"));
    QVERIFY(session.reads("window    " + updateTitle));
    QVERIFY(session.startsTheRun());
    QVERIFY(session.takesTheRestart());
    QTRY_COMPARE(system.state(), newVersions);
}

void TestDesktop::systemKilledWhileNothingHappensIsConnectedAgain()
{
    const FixtureFolder folder;
    System system(folder);
    QVERIFY(system.start());
    Session session(desktop, system, folder);
    QVERIFY(session.reads("window    " + updateTitle));
    QVERIFY(session.presses({"Escape"}, updateTitle));
    QVERIFY(session.reads("window    " + frontendTitle));
    system.kill();
    QVERIFY(session.reads("Frontend: The controllers do not answer any more."));
    QVERIFY(session.reads("The simulated system cannot be reached."));

    QVERIFY(system.start());
    QCOMPARE(system.state(), oldVersions);
    QVERIFY(session.reads("Frontend: Connected to 192.168.7.20"));
    QVERIFY(session.reads("window    " + updateTitle));
    QVERIFY(session.presses({"Escape"}, updateTitle));
    QVERIFY(session.reads("window    " + frontendTitle));
    QVERIFY(session.presses({"ctrl+q"}, frontendTitle));
    QCOMPARE(session.program().waitForEnd(), 0);
}

// It keeps its connections and says nothing.
void TestDesktop::silentSystemIsLostUntilItAnswers()
{
    const FixtureFolder folder;
    System system(folder);
    QVERIFY(system.start());
    Session session(desktop, system, folder);
    QVERIFY(session.comesToRest());
    system.freeze();
    QVERIFY(session.reads("window    " + lostTitle));
    QVERIFY(session.reads("No answer since "));

    system.thaw();
    QVERIFY(session.reads("Frontend: Connected to 192.168.7.20"));
    QVERIFY(session.reads("window    " + updateTitle));
    QVERIFY(session.presses({"Escape"}, updateTitle));
    QVERIFY(session.reads("window    " + frontendTitle));
    QVERIFY(session.reads("[Faults on demand...] [Power-cycle the controllers]"));
    QVERIFY(session.presses({"ctrl+q"}, frontendTitle));
    QCOMPARE(session.program().waitForEnd(), 0);
}

// It would say that all is up to date, as nothing is heard of anything older.
void TestDesktop::dialogIsNotOpenedOnADeadLine()
{
    const FixtureFolder folder;
    System system(folder);
    QVERIFY(system.start());
    Session session(desktop, system, folder);
    QVERIFY(session.comesToRest());
    system.freeze();
    QVERIFY(session.presses({"alt+h", "c"}, frontendTitle));
    QVERIFY(session.reads("The controllers do not answer, so nothing was opened."));
    system.thaw();
    QVERIFY(session.presses({"Return"}, boxTitle));
    QVERIFY(session.reads("Frontend: Connected to 192.168.7.20"));
    QVERIFY(session.reads("[x] | Firmware update (zan-master) | v3.2.0 | v3.3.0 | yes | yes"));
}

void TestDesktop::lossOfPowerIsToldAndItsEnd()
{
    const FixtureFolder folder;
    System system(folder);
    QVERIFY(system.start());
    Session session(desktop, system, folder);
    QVERIFY(session.comesToRest());
    system.losePower();
    QVERIFY(session.reads("window    " + lostTitle));
    QVERIFY(session.reads("No answer since "));
    QVERIFY(session.reads("Frontend: Connected to 192.168.7.20"));
    QVERIFY(session.reads("window    " + updateTitle));
}

void TestDesktop::lossIsToldBehindAnOpenDialog()
{
    const FixtureFolder folder;
    System system(folder);
    QVERIFY(system.start());
    Session session(desktop, system, folder);
    QVERIFY(session.reads("window    " + updateTitle));
    system.kill();
    QVERIFY(session.reads("Frontend: The controllers do not answer any more."));
    QVERIFY(desktop.shows(lostTitle));
    QVERIFY(system.start());
    QVERIFY(session.reads("Frontend: The controllers answer again."));
    QVERIFY(desktop.shows(frontendTitle));

    // What the module knows is still of before the loss.
    QVERIFY(session.presses({"Escape"}, updateTitle));
    QVERIFY(session.reads("Frontend: Connected to 192.168.7.20"));
    QVERIFY(session.reads("window    " + updateTitle));
}

// The dialog stays open while another system takes the place of the one that it was opened for.
void TestDesktop::planIsNotSentToAnotherSystem()
{
    const FixtureFolder folder;
    System system(folder);
    QVERIFY(system.start());
    Session session(desktop, system, folder);
    QVERIFY(session.reads("window    " + updateTitle));
    QVERIFY(session.reads("[x] | Firmware update (zan-master) | v3.2.0 | v3.3.0 | yes | yes"));
    QVERIFY(system.exchange());
    QVERIFY(session.reads("Another system is served at " + system.address() + " now."));

    QVERIFY(session.startsTheRun());
    QVERIFY(session.reads("Update failed!"));
    QCOMPARE(system.state(), QString("v9.0.0 v1.3, has received nothing"));
    QVERIFY(session.presses({"Return"}, boxTitle));
    QVERIFY(session.presses({"Escape"}, updateTitle));
    QVERIFY(session.reads("Frontend: Simulated system: Another system"));
    QVERIFY(session.reads("Frontend: Connected to 192.168.7.20"));
    QCOMPARE(system.state(), QString("v9.0.0 v1.3, has received nothing"));
    // The log of the new window begins with what the old one told.
    const QStringList log = keptLog(folder);
    const int told = indexOf(log, "Another system is served at " + system.address() + " now.");
    QVERIFY2(told >= 0, qPrintable(log.join('\n')));
    QVERIFY(indexOf(log, "Simulated system: Another system") > told);
}

void TestDesktop::secondFrontendLooksOn()
{
    const FixtureFolder folder;
    const FixtureFolder another;
    System system(folder);
    QVERIFY(system.start(System::Pace::Endless));
    Session ann(desktop, system, folder);
    QVERIFY(ann.reads("window    " + updateTitle));
    QVERIFY(ann.startsTheRun());
    QTRY_VERIFY(system.state().endsWith("has received"));

    Session ben(desktop, system, another);
    const QString who = QStringLiteral(", process %1 updates this system.").arg(ann.processId());
    // Only from then on it is told when that is over.
    QVERIFY(ben.reads("Frontend: Connected to 192.168.7.20"));
    QVERIFY(ben.reads(who));

    // The one who updates dies, and the other one may.
    ann.program().kill();
    QVERIFY(ben.reads("Frontend: The other host is through with its update."));
    QVERIFY(ben.reads("Frontend: Module loaded"));
    QVERIFY(ben.reads("window    " + updateTitle));
}

void TestDesktop::runThatIsLeftIsFoundAgain()
{
    const FixtureFolder folder;
    System system(folder);
    QVERIFY(system.start(System::Pace::Steady));
    Session session(desktop, system, folder);
    QVERIFY(session.reads("window    " + updateTitle));
    QVERIFY(session.leavesTheRun());
    QVERIFY(session.reads("[Power-cycle the controllers] (off)"));
    QVERIFY(session.reads("Step 1: tracking software of zan-master, ")); // at each percent
    // The search for hardware is not to be had: with its window in front there would be no
    // question.
    QVERIFY(session.presses({"alt+v", "h", "Escape", "Escape"}, frontendTitle));
    QVERIFY(session.presses({"ctrl+q"}, frontendTitle));
    QVERIFY(session.reads("An update is under way. The frontend does not quit before it is over."));
    QVERIFY(session.reads("[Quit when it is over] [Do not quit]"));
    QVERIFY(session.presses({"Return"}, "Quit VORNIX3"));
    QVERIFY(session.clicks("Show the update window"));
    QVERIFY(session.reads("window    " + updateTitle));
    QVERIFY(session.takesTheRestart());
    QTRY_COMPARE(system.state(), newVersions);
}

void TestDesktop::quitWaitsForTheEndOfTheRun()
{
    const FixtureFolder folder;
    System system(folder);
    QVERIFY(system.start(System::Pace::Steady));
    Session session(desktop, system, folder);
    QVERIFY(session.reads("window    " + updateTitle));
    QVERIFY(system.answersLate(5000));
    QVERIFY(session.leavesTheRun());
    QVERIFY(session.presses({"ctrl+q"}, frontendTitle));
    QVERIFY(session.reads("[Quit when it is over] [Do not quit]"));
    QVERIFY(session.presses({"alt+q"}, "Quit VORNIX3"));
    QVERIFY(session.reads("The frontend quits when it is over."));
    // The window goes on telling while the last record is awaited.
    QVERIFY(session.reads("Step 1: tracking software of zan-master. All records are sent; the "
                          "device has to confirm the last one."));
    QVERIFY(session.reads("The Controller is updated successfully and must be restarted."));
    QVERIFY(session.presses({"alt+n"}, boxTitle));
    QCOMPARE(session.program().waitForEnd(), 0);
    QCOMPARE(system.state(), QString("v3.2.0 v1.3 and more to come, has received"));
}

// Nobody is there any more who could answer a question.
void TestDesktop::endOfTheSessionWaitsForTheEndOfTheRun()
{
    const FixtureFolder folder;
    System system(folder);
    QVERIFY(system.start(System::Pace::Steady));
    Session session(desktop, system, folder);
    QVERIFY(session.reads("window    " + updateTitle));
    QVERIFY(session.leavesTheRun());
    session.program().terminate();
    QVERIFY(session.reads("Frontend: The frontend quits when the update is over."));
    QVERIFY(session.reads("The frontend quits when it is over.")); // in its window, which stays
    QCOMPARE(session.program().waitForEnd(), 0);
    QCOMPARE(system.state(), QString("v3.2.0 v1.3 and more to come, has received"));
}

void TestDesktop::oneLostReplyMakesNoControllerOld()
{
    const FixtureFolder folder;
    const DeliveredFrontend delivered(updatesFromAnyFirmware());
    System system(folder, currentScenarioJson());
    QVERIFY(system.start());
    Session user(desktop, system, folder, delivered.program());
    QVERIFY(user.reads("Frontend: Module loaded"));
    QVERIFY(system.losesReplies("system controller_version", 1));
    QVERIFY(user.presses({"alt+h", "c"}, frontendTitle));
    QVERIFY(user.reads("window    " + updateTitle));
    QVERIFY(user.reads("Controller(s) and cameras are up to date"));
    QVERIFY(user.reads("[Update] (off) [Exit]"));
    QCOMPARE(system.state(), newVersions);
}

// Not even the answers to repeated questions come: the module takes the controller for an old one.
void TestDesktop::lostRepliesLeadToAQuestion()
{
    const FixtureFolder folder;
    const DeliveredFrontend delivered(updatesFromAnyFirmware());
    System system(folder, currentScenarioJson());
    QVERIFY(system.start());
    Session user(desktop, system, folder, delivered.program());
    QVERIFY(user.reads("Frontend: Module loaded"));
    QVERIFY(system.losesReplies("system controller_version", 0));
    QVERIFY(user.presses({"alt+h", "c"}, frontendTitle));
    QVERIFY(user.reads("[x] | System update (zan-master) | v0.0.0 | v1.3 | yes | no"));
    QVERIFY(user.reads("[x] | System update (zan-master) | v1.3 | v1.4 | yes | no"));
    QVERIFY(user.startsTheRun());
    QVERIFY(user.reads("This update would bring older versions than those that run."));
    QVERIFY(user.reads("Controller firmware of zan-master: runs v1.4, would get v1.3"));
    QVERIFY(user.reads("[Stop] [Update all the same]"));
    QVERIFY(user.presses({"Escape"}, boxTitle));
    QVERIFY(user.reads("The run was stopped before its first record. Nothing was sent."));
    QVERIFY(user.reads("Update failed!"));
    QVERIFY(user.presses({"Return"}, boxTitle));
    QVERIFY(user.reads("[Update] [Exit]"));
    QCOMPARE(system.state(), newVersions);
}

ZAN_TEST_MAIN(TestDesktop)
#include "tst_desktop.moc"
