#include "headlessstart.h"

#include <simulatorfixtures.h>

#include <deliverylayout.h>

#include <recordedsleep.h>
#include <widgettestmain.h>

#include <QDirIterator>
#include <QRegularExpression>

#include <algorithm>

namespace {

const QString confirmation = "press: Yes";
const QString dontStop = ": Don't stop the update process until it is finished!";
const QString restart = ": The Controller is updated successfully and must be restarted.";
const QString notPossible =
    ": An update to the selected version is not possible due to discontinued support for your "
    "controller.";
const QString allNewest = "result: All controllers and cameras run the newest versions.";
const QString notAllNewest = "result: Not all controllers and cameras run the newest versions.";
const QString upToDate = ": Controller(s) and cameras are up to date";

QString firmwareRow(const QString& host, const QString& from, const QString& to)
{
    return QStringLiteral(": [x] | Firmware update (%1) | %2 | %3 | yes | yes").arg(host, from, to);
}

QString systemRow(const QString& from, const QString& to, const QString& restart)
{
    return QStringLiteral(": [x] | System update (zan-master) | %1 | %2 | yes | %3")
        .arg(from, to, restart);
}

QString cameraRow(const QString& camera, const QString& from, const QString& to)
{
    return QStringLiteral(": [x] | Camera firmware update (Tracking camera %1) | %2 | %3 | yes | "
                          "yes")
        .arg(camera, from, to);
}

QString readyRow(const QString& controller, const QString& versions)
{
    return QStringLiteral(": %1 | ZAN C2 | %2 | Ready").arg(controller, versions);
}

/// What makes a scenario the situation that its title names.
struct Situation
{
    const char* row;
    const char* scenario;
    QVector<int> codes; ///< of one start after the other
    QStringList told;   ///< these lines, in this order, with others between them
    QStringList untold; ///< no line begins like this
    Attitude user = Attitude::Willing;
};

const QVector<int> twoStarts = {StartAgain, Success};

QStringList chainOfThree(const QString& from)
{
    return {firmwareRow("zan-master", from, "v3.1.0"),
            firmwareRow("zan-master", "v3.1.0", "v3.2.0"),
            firmwareRow("zan-master", "v3.2.0", "v3.3.0"), ": [Update] [Exit]"};
}

QVector<Situation> controllerSituations()
{
    return {
        {"nothing to update",
         "up-to-date",
         {Success},
         {"window: New Features", upToDate, allNewest},
         {"press: Update"}},
        {"one release behind",
         "one-release-behind",
         twoStarts,
         {firmwareRow("zan-master", "v3.2.0", "v3.3.0"), ": [Update] [Exit]",
          readyRow("zan-master | Master | 192.168.7.20", "731 | v3.3.0 | v1.4")},
         {}},
        {"two releases behind",
         "single",
         twoStarts,
         {firmwareRow("zan-master", "v3.1.0", "v3.2.0"),
          firmwareRow("zan-master", "v3.2.0", "v3.3.0"), ": [Update] [Exit]", allNewest},
         {}},
        {"three releases behind, in a chain",
         "three-releases-behind",
         twoStarts,
         chainOfThree("v3.0.1") << ": This action will install new firmware to your Controller."
                                << ": Do you really want to update?" << dontStop << restart
                                << allNewest,
         {": Please be aware"}},
        {"a step over version 3, of which the confirmation warns",
         "major-step",
         twoStarts,
         chainOfThree("v2.9.0") << ": Please be aware that..." << confirmation << allNewest,
         {}},
        {"a cascade, all of it behind",
         "cascade",
         twoStarts,
         {firmwareRow("zan-right", "v3.1.0", "v3.2.0"),
          firmwareRow("zan-master", "v3.2.0", "v3.3.0"), allNewest},
         {}},
        {"firmware and system blocks, shown as a system update",
         "system-behind",
         twoStarts,
         {systemRow("v1.3", "v1.4", "yes"), allNewest},
         {": [x] | Firmware"}},
        {"system blocks alone",
         "firmware-behind-only",
         twoStarts,
         {systemRow("v1.3", "v1.4", "no"),
          readyRow("zan-master | Master | 192.168.7.20", "731 | v3.3.1 | v1.4")},
         {": [x] | Firmware"}},
        {"a final release over its own pre-release",
         "final-over-pre-release",
         twoStarts,
         {firmwareRow("zan-master", "v3.3.0", "v3.3.0"),
          firmwareRow("zan-left", "v3.3.0", "v3.3.0"),
          ": zan-left | Slave | 192.168.7.21 | ZAN C2 | 732 | v3.3.0-beta.3 | v1.3 | Pt v3.3.0, Ct "
          "v1.4 | Restarting",
          upToDate, readyRow("zan-master | Master | 192.168.7.20", "731 | v3.3.0 | v1.4"),
          readyRow("zan-left | Slave | 192.168.7.21", "732 | v3.3.0 | v1.4"), allNewest},
         {}},
        {"only some of the update files, and no notes",
         "one-update-file",
         twoStarts,
         {firmwareRow("zan-master", "v3.1.0", "v3.2.0"), ": [Update] [Exit]",
          readyRow("zan-master | Master | 192.168.7.20", "731 | v3.2.0-beta.2 | v1.3"), allNewest},
         {"window: New Features"}},
        {"a slave that is not available",
         "slave-missing",
         twoStarts,
         {firmwareRow("zan-left", "v3.1.0", "v3.2.0"), ": [Update] [Exit]",
          ": zan-right | Slave | 192.168.7.22 | ZAN C2 | 733 | v3.1.0 | v1.2 | Not available"},
         {": [x] | Firmware update (zan-right)"}},
        {"a part of a cascade behind",
         "partly-updated",
         twoStarts,
         {firmwareRow("zan-right", "v3.1.0", "v3.2.0"), allNewest},
         {": [x] | Firmware update (zan-left)", ": [x] | Firmware update (zan-master)"}},
        {"slaves that are woken over the network",
         "wake-on-lan",
         twoStarts,
         {firmwareRow("zan-right", "v3.2.0", "v3.3.0"), allNewest},
         {}},
    };
}

QVector<Situation> refusalSituations()
{
    return {
        {"a board that is discontinued",
         "discontinued",
         {NotNewest},
         {notPossible, ": Discontinued controllers: zan-master (SN 731), zan-master (SN 731)",
          notAllNewest},
         {confirmation}},
        {"a slave's serial that is discontinued",
         "discontinued-slave",
         {NotNewest},
         {notPossible, ": Discontinued controllers: zan-left (SN 521), zan-left (SN 521)",
          notAllNewest},
         {confirmation}},
        {"a compact system that is exempt",
         "briarscope-exempt",
         twoStarts,
         {"window: New Features", "menu: Controller and Camera Update"},
         {}},
        {"a compact system that is too old",
         "briarscope-too-old",
         {NotNewest},
         {"log: VORNIX3: This version of VORNIX3 is incompatible with this BRIARSCOPE! Please use "
          "Vornix2 in version v2.7.7.",
          upToDate, notAllNewest},
         {"press: Update"}},
        {"a compact system that is shut down",
         "briarscope",
         twoStarts,
         {": The BRIARSCOPE is updated successfully and must be restarted.",
          ": Do you want to shut down the BRIARSCOPE now?", "press: Give power to the controllers",
          allNewest},
         {}},
        {"protocol 0.16, without a restart by command",
         "old-protocol",
         twoStarts,
         {": The Controller is updated successfully.", ": Please restart the Controller.",
          ": VORNIX3 will be closed now.", "press: Power-cycle the controllers", allNewest},
         {": Do you want to restart"}},
        {"protocol 1.6, without slaves",
         "protocol-1.6",
         {StartAgain, NotNewest},
         {firmwareRow("zan-master", "v3.1.0", "v3.2.0"), ": [Update] [Exit]",
          "result: zan-right runs Ct v1.2 and not v1.4"},
         {": [x] | Firmware update (zan-left)"}},
        {"protocol 1.22, without the slaves' models",
         "protocol-1.22",
         twoStarts,
         {firmwareRow("zan-right", "v3.1.0", "v3.2.0"), ": [Update] [Exit]",
          ": zan-right | Slave | 192.168.7.22 | BRIARSCOPE3 | 733 | v3.3.0 | v1.4 | Ready"},
         {}},
        {"the factory address after DHCP failed",
         "dhcp-fallback",
         twoStarts,
         {"window: Warning", ": The Controller's network is set to 'DHCP';",
          ": as it currently is using the fallback IP address,", allNewest},
         {}},
        {"a measurement that stops",
         "measuring",
         twoStarts,
         {confirmation, dontStop, allNewest},
         {"log: VORNIX3: measurement stop unsuccessful"}},
        {"a measurement that refuses to stop",
         "measurement-refuses",
         {NotNewest},
         {confirmation, "log: VORNIX3: measurement stop unsuccessful", ": Measurement runs",
          "result: refused: measurement stop unsuccessful", notAllNewest},
         {": Don't stop the update process"}},
        {"an observer",
         "observer",
         {NotNewest},
         {"menu: What's New?", ": Observer", notAllNewest},
         {"window: Controller and Camera Update"}},
        {"release notes of two versions only",
         "two-notes",
         {Success},
         {"press: Show more", ": ... (27 more lines)", upToDate, allNewest},
         {"press: Update"}},
    };
}

QVector<Situation> cameraSituations()
{
    const QString update = ": The cameras are updated successfully and must be restarted manually!";
    return {
        {"cameras behind",
         "cameras",
         {Success},
         {cameraRow("T9 C-4101", "v1.3.0", "v1.4.0"), cameraRow("T12 C-5201", "v2.0.0", "v2.1.0"),
          cameraRow("T14 C-6301", "v1.5.0", "v1.6.0"),
          ": This action will install new firmware to your camera(s).",
          "window: Search for new hardware", update, allNewest},
         {": [x] | Firmware"}},
        {"controllers first, then cameras",
         "controllers-and-cameras",
         twoStarts,
         {firmwareRow("zan-master", "v3.2.0", "v3.3.0"), ": [Update] [Exit]",
          cameraRow("T9 C-4102", "v1.3.0", "v1.4.0"), update, allNewest},
         {}},
        {"a camera on a pre-release",
         "camera-pre-release",
         {Success},
         {cameraRow("T9 C-4101", "v1.4.0", "v1.4.0"), update, allNewest},
         {": [x] | Camera firmware update (Tracking camera T9 C-4102)"}},
        {"a camera that refuses",
         "camera-refuses",
         {NotNewest},
         {": Update failed!", ": Update of camera was not successful",
          "result: camera c02 (C-4102) runs firmware v1.3.0 and not v1.4.0", notAllNewest},
         {"result: camera c01"}},
        {"two files for ten cameras",
         "ten-cameras",
         {Success},
         {cameraRow("T10 C-7110", "v1.0.0", "v1.1.0"), cameraRow("T10 C-7110", "v1.0.0", "v1.2.0"),
          ": Tracking camera T10 | 0x0a01 | C-7110 | v1.2.0 | Ready", allNewest},
         {}},
    };
}

QVector<Situation> otherUsers()
{
    return {
        {"an update that is put off",
         "cascade",
         {NotNewest},
         {": To start the update process later,", notAllNewest},
         {"press: Update"},
         Attitude::Later},
        {"an update of a part of a cascade",
         "cascade",
         {StartAgain},
         {"untick: Firmware update (zan-master)",
          ": You intend to update the Cascaded System only partially!", "press: Update",
          confirmation},
         {},
         Attitude::Partial},
        {"an update of nothing",
         "single",
         {NotNewest},
         {"press: F3", ": Nothing was updated, because no update is selected.", notAllNewest},
         {},
         Attitude::Idle},
        {"menu entries, with no notes to show",
         "one-update-file",
         {NotNewest},
         {"menu: What's New?", "window: New Features", "menu: About",
          ": VORNIX3 demo frontend v3.3.0"},
         {"press: Update"},
         Attitude::Curious},
    };
}

QVector<Situation> situations()
{
    return controllerSituations() + refusalSituations() + cameraSituations() + otherUsers();
}

/// Which rows are run here: every @c count -th one, from row @c index on.
struct Shard
{
    int index = 0;
    int count = 1;
};

/// From the environment, "2/4" as a rule; all rows without it.
Shard shard()
{
    if (!qEnvironmentVariableIsSet("SHARD"))
        return Shard();
    const QRegularExpressionMatch match =
        QRegularExpression("^([1-9])/([1-9])$").match(qEnvironmentVariable("SHARD"));
    const Shard shard{match.captured(1).toInt() - 1, match.captured(2).toInt()};
    if (!match.hasMatch() || shard.index >= shard.count)
        qFatal("There is no such shard: %s", qPrintable(qEnvironmentVariable("SHARD")));
    return shard;
}

/// A box of the update module, by the first line of its text.
struct Box
{
    QString line;
    bool isReached = true;
};

/// One for each place in the module that brings up a box, whatever the texts there.
QVector<Box> boxes()
{
    return {
        {"The Controller's network is set to 'DHCP';"},
        {"To start the update process later,"},
        {"You intend to update the Cascaded System only partially!"},
        {"An update to the selected version is not possible due to discontinued support for your "
         "controller."},
        // Nothing is refused for its hardware at present.
        {"Controller Update to the next version is not possible due to incompatible hardware.",
         false},
        {"This action will install new firmware to your camera(s)."},
        {"This action will install new firmware to your Controller."},
        {"Don't stop the update process until it is finished!"},
        {"Nothing was updated, because no update is selected."},
        {"The Controller is updated successfully and must be restarted."},
        {"Update failed!"},
        {"The Controller is updated successfully."},
    };
}

int boxesInModules()
{
    const QRegularExpression place(
        "QMessageBox(::(information|warning|critical|question|about)\\(| box[;(])");
    int count = 0;
    QDirIterator sources(SOURCES "/modules", {"*.cpp"}, QDir::Files, QDirIterator::Subdirectories);
    while (sources.hasNext()) {
        QFile source(sources.next());
        if (source.open(QIODevice::ReadOnly))
            count += QString::fromUtf8(source.readAll()).count(place);
    }
    return count;
}

/// All starts of a frontend with the delivered files that the scenario wants.
class Story
{
public:
    Story(Scenario scenario, int starts, Attitude user)
    {
        QString error;
        const QString state = m_folder.path("state");
        // First of all, as the fonts keep a cache in the home folder where they have none.
        if (!Frontend::claimStateFolder(state, &error))
            qFatal("%s", qPrintable(error));
        qputenv("HOME", QFile::encodeName(Frontend::homeFolder(state)));
        if (!layOutFiles(scenario, QStringLiteral(DELIVERED),
                         QCoreApplication::applicationDirPath(), &error))
            qFatal("%s", qPrintable(error));
        for (int i = 1; i <= starts; ++i) {
            // No start but the last one sees the end of a restart.
            scenario.timing.bootMs = i < starts ? endlessBootMs : seenBootMs;
            const Start start(scenario, m_folder, user);
            m_codes += start.code;
            m_lines += storyOf(start.narrator);
        }
    }

    const QVector<int>& codes() const { return m_codes; }

    /// The first of @p told that is missing, or not in its place.
    QString missing(const QStringList& told) const
    {
        auto from = m_lines.begin();
        for (const QString& line : told) {
            from = std::find(from, m_lines.end(), line);
            if (from == m_lines.end())
                return line;
            ++from;
        }
        return QString();
    }

    bool tells(const QString& beginning) const
    {
        return std::any_of(m_lines.begin(), m_lines.end(),
                           [&](const QString& line) { return line.startsWith(beginning); });
    }

    QByteArray text() const { return '\n' + m_lines.join('\n').toLocal8Bit(); }

private:
    FixtureFolder m_folder;
    QVector<int> m_codes;
    QStringList m_lines;
};

} // namespace

Q_DECLARE_METATYPE(Situation)

/// Each scenario that ships, run with the built module to its end.
class TestShippedScenarios : public QObject
{
    Q_OBJECT

private slots:
    void eachIsLookedAt();
    void everyBoxIsLookedFor();
    void eachBringsAboutItsSituation_data();
    void eachBringsAboutItsSituation();
};

void TestShippedScenarios::eachIsLookedAt()
{
    QStringList names;
    for (const Situation& situation : situations())
        names += situation.scenario;
    QStringList shipped = Scenario::shipped();
    names.removeDuplicates();
    names.sort();
    shipped.sort();
    QCOMPARE(names, shipped);
}

void TestShippedScenarios::everyBoxIsLookedFor()
{
    QStringList told;
    for (const Situation& situation : situations())
        told += situation.told;
    QCOMPARE(boxes().size(), boxesInModules());
    for (const Box& box : boxes())
        QVERIFY2(told.contains(": " + box.line) == box.isReached, qPrintable(box.line));
}

void TestShippedScenarios::eachBringsAboutItsSituation_data()
{
    QTest::addColumn<Situation>("situation");
    const QVector<Situation> all = situations();
    const Shard part = shard();
    for (int i = part.index; i < all.size(); i += part.count)
        QTest::newRow(all[i].row) << all[i];
}

void TestShippedScenarios::eachBringsAboutItsSituation()
{
    QFETCH(const Situation, situation);
    // Simulated devices do not need the time that the module gives real ones.
    const RecordedSleep sleep([](int /*milliseconds*/) {});
    const Story story(shippedScenario(situation.scenario), situation.codes.size(), situation.user);
    QVERIFY2(story.codes() == situation.codes, story.text().constData());
    const QString missing = story.missing(situation.told);
    QVERIFY2(missing.isEmpty(), qPrintable("Not told: " + missing + story.text()));
    for (const QString& line : situation.untold)
        QVERIFY2(!story.tells(line), qPrintable("Told: " + line + story.text()));
    for (const Box& box : boxes())
        QVERIFY2(box.isReached || !story.tells(": " + box.line), story.text().constData());
}

ZAN_WIDGET_TEST_MAIN(TestShippedScenarios)
#include "tst_shippedscenarios.moc"
