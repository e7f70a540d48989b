#include "proverfixtures.h"

#include <BackendVersions.h>
#include <ZanUpdateModule2GSettingsdlg.h>
#include <hostchannel.h>
#include <newfeaturedialog.h>
#include <payload.h>
#include <proof.h>
#include <reportedversion.h>
#include <simulatedsystem.h>
#include <simulatorlink.h>
#include <zanmoduleserver.h>

#include <programfolder.h>
#include <recordedsleep.h>
#include <widgettestmain.h>

#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QTimer>

#include <algorithm>
#include <functional>

namespace {

constexpr int deliveries = 1200;
constexpr int startsOfEach = 3;

// ---- Deliveries that nobody should make

class RandomFiles
{
public:
    explicit RandomFiles(quint32 seed) : m_random(seed) {}

    QMap<QString, UpdateFile> files();
    int below(int number) { return static_cast<int>(m_random.bounded(number)); }

private:
    bool chance(int percent) { return below(100) < percent; }
    template <typename T>
    T oneOf(const QVector<T>& values)
    {
        return values.at(below(values.size()));
    }
    VersionInfo pt();
    VersionInfo ct();
    ControllerImage image(const QString& mark);
    ControllerImageBlock block(const ControllerImage& image, const QString& mark);

    QRandomGenerator m_random;
};

VersionInfo RandomFiles::pt()
{
    return oneOf<VersionInfo>(
        {{2, 0, 0}, {2, 7, 7}, {2, 8, 0}, {2, 9, 0}, {3, 0, 0}, {3, 0, 1}, {3, 1, 0}, {3, 2, 0}});
}

VersionInfo RandomFiles::ct()
{
    return oneOf<VersionInfo>({{1, 0}, {1, 1}, {1, 2}, {2, 0}});
}

ControllerImageBlock RandomFiles::block(const ControllerImage& image, const QString& mark)
{
    const bool movesPt = chance(60);
    const VersionInfo brings = movesPt ? image.newPt : image.newCt;
    const VersionInfo low = movesPt ? VersionInfo(0, 0, 0) : VersionInfo(0, 0);
    const VersionInfo min = chance(60) ? low : (movesPt ? pt() : ct());
    const VersionInfo high = movesPt ? pt() : ct();
    const VersionInfo usual = chance(50) ? brings : justBelow(brings);
    ControllerImageBlock made =
        payloadBlock(movesPt ? FirmwareBlock : SystemBlock, min, chance(70) ? usual : high,
                     chance(95) ? brings : high, movesPt ? mark : QString());
    if (chance(4))
        made.records[0].data[45] = '?';
    if (chance(2))
        made.magic = 0;
    if (chance(2))
        made.records.clear();
    if (chance(2))
        made.type = 7;
    return made;
}

ControllerImage RandomFiles::image(const QString& mark)
{
    ControllerImage made;
    made.modelFamily = chance(25) ? briarscopeFamily : 0;
    made.release = pt();
    made.newPt = chance(90) ? made.release : pt();
    made.newCt = ct();
    made.minPt = chance(75) ? VersionInfo(0, 0, 0) : pt();
    made.minCt = chance(85) ? VersionInfo(0, 0) : ct();
    const int blocks = 1 + below(3);
    for (int index = 0; index < blocks; ++index)
        made.blocks += block(made, mark);
    return made;
}

QMap<QString, UpdateFile> RandomFiles::files()
{
    QMap<QString, UpdateFile> files;
    const int count = 1 + below(4);
    for (int index = 0; index < count; ++index) {
        const bool isPlain = chance(30);
        const QString mark = oneOf<QString>({"", "", "", "-beta.1", "-rc.1", "-beta2"});
        const bool isKindless = !isPlain && mark == "-beta2";
        ControllerImage made = image(isKindless ? "-unknown15.2" : mark);
        made.layout = isPlain ? ImageLayout::Plain : ImageLayout::Dated;
        if (!isPlain && !mark.isEmpty()) {
            made.preReleaseType = isKindless ? 15 : mark.startsWith("-rc") ? 30 : 20;
            made.preReleaseNumber = isKindless ? 2 : 1;
        }
        const QString prefix = chance(5) ? "vx_" : "";
        files.insert(QStringLiteral("%1_%2%3%4.img")
                         .arg(below(90) + 10)
                         .arg(prefix, made.release.toString(), mark),
                     made);
    }
    return files;
}

// ---- The real dialog

/// A user who updates whatever can be updated, and restarts.
class Willing : public QObject
{
public:
    Willing()
    {
        m_timer.callOnTimeout([this] { act(); });
        m_timer.start(0);
    }
    bool hasSeenFailure() const { return m_hasSeenFailure; }
    bool hasUpdated() const { return m_hasUpdated; }

private:
    void act();
    void answer(QMessageBox* box);
    void actOn(QDialog* dialog);
    static void press(QAbstractButton* button);
    static void later(QObject* context, const std::function<void()>& act);

    QTimer m_timer;
    QPointer<QWidget> m_answered;
    bool m_hasSeenFailure = false;
    bool m_hasUpdated = false;
    bool m_isUpdating = false;
    bool m_hasLeft = false;
};

void Willing::act()
{
    QWidget* window = QApplication::activeModalWidget();
    auto* dialog = qobject_cast<ZanUpdateModule2GSettingsdlg*>(window);
    if (auto* box = qobject_cast<QMessageBox*>(window); box && m_answered != box) {
        m_answered = box;
        answer(box);
    } else if (dialog && !m_isUpdating && !m_hasLeft) {
        actOn(dialog);
    }
}

void Willing::actOn(QDialog* dialog)
{
    auto* update = dialog->findChild<QPushButton*>("pushButton_update");
    m_hasLeft = m_hasUpdated || !update->isEnabled();
    if (m_hasLeft) {
        press(dialog->findChild<QPushButton*>("pushButton_exit"));
        return;
    }
    m_hasUpdated = m_isUpdating = true;
    later(update, [this, update] {
        update->click();
        m_isUpdating = false;
    });
}

void Willing::answer(QMessageBox* box)
{
    if (box->text().startsWith("Update failed!"))
        m_hasSeenFailure = true;
    QAbstractButton* yes = box->button(QMessageBox::Yes);
    press(yes ? yes : box->button(QMessageBox::Ok));
}

void Willing::press(QAbstractButton* button)
{
    later(button, [button] { button->click(); });
}

// Behind the timer, which does not strike again before its slot has returned.
void Willing::later(QObject* context, const std::function<void()>& act)
{
    QMetaObject::invokeMethod(context, act, Qt::QueuedConnection);
}

/// A system with the real module's dialog, opened once and again.
class Rack
{
public:
    explicit Rack(const Scenario& scenario) : m_system(scenario, [this] { return m_nowMs; }) {}

    struct Visit
    {
        bool asks = false;
        bool mayAsk = false; ///< at start; otherwise the user has to open the dialog
        bool runs = false;
        bool fails = false;
        QVector<ReportedVersions> after; ///< of each controller
    };
    Visit visit();

private:
    QVector<ReportedVersions> versions() const;
    void restart();

    qint64 m_nowMs = Q_INT64_C(1750000000000);
    SimulatedSystem m_system;
};

Rack::Visit Rack::visit()
{
    // A restart ends the connection, and a frontend that is started again has another one.
    SimulatorLink link(m_system, SimulatorLink::Pace::Fast);
    HostChannel channel(link);
    const Scenario& scenario = m_system.scenario();
    const ControllerState& master = m_system.controllers().constFirst();
    BackendVersions backend(reportedVersion(master.pt), scenario.protocol,
                            reportedVersion(master.ct), scenario.backendModel);
    NewFeatureDialog viewer(nullptr, &backend);
    ZanUpdateModule2GSettingsdlg dialog(&channel, nullptr, &backend, "v1.2.3", &viewer);
    Visit visit;
    const ZanModuleServer* server =
        ZanModuleServer::Exemplar(&channel, QCoreApplication::applicationDirPath(), &backend);
    visit.mayAsk = !isExemptFromStartPrompt(&backend);
    visit.asks =
        visit.mayAsk && !server->listUpdates.isEmpty() && !server->allControllersUpToDate(true);
    Willing user;
    QTimer::singleShot(0, &dialog, [&] {
        dialog.update_and_exec();
        QCoreApplication::exit();
    });
    QApplication::exec();
    visit.runs = user.hasUpdated();
    visit.fails = user.hasSeenFailure();
    ZanModuleServer::ReleaseExemplar();
    restart();
    visit.after = versions();
    return visit;
}

// Asked for by the dialog or, after a run that failed, by hand as it says.
void Rack::restart()
{
    if (m_system.isReachable())
        m_system.restart();
    m_nowMs += m_system.scenario().timing.bootMs;
    m_system.settle();
}

QVector<ReportedVersions> Rack::versions() const
{
    QVector<ReportedVersions> versions;
    for (const ControllerState& controller : m_system.controllers())
        versions += {controller.pt.section(' ', 0, 0), controller.ct};
    return versions;
}

// ---- What the prover says of it

ReportedVersions changed(const ReportedVersions& start, const ReportedVersions& hop)
{
    return {hop.pt.isEmpty() ? start.pt : hop.pt, hop.ct.isEmpty() ? start.ct : hop.ct};
}

/// "FROM", and where it departs from what was proven; empty if it does not.
QString departure(Rack* rack, const ReportedVersions& start, const Journey& journey)
{
    const bool failsAtLast = journey.ending == Ending::RunFails;
    for (const ReportedVersions& hop : journey.hops) {
        const Rack::Visit visit = rack->visit();
        if (!visit.runs || visit.fails)
            return "no run, or it fails, before " + hopText(hop);
        for (const ReportedVersions& versions : visit.after) {
            if (!(versions == changed(start, hop)))
                return hopText(versions) + " instead of " + hopText(hop);
        }
    }
    const Rack::Visit last = rack->visit();
    const bool goesOn = failsAtLast || journey.ending == Ending::OfferedForEver;
    if (last.runs != goesOn)
        return last.runs ? "another run" : "no further run";
    if (last.fails != failsAtLast)
        return last.fails ? "the run fails" : "the run does not fail";
    const bool asks = (goesOn && last.mayAsk) || journey.ending == Ending::NothingToTick;
    const bool isExpected = last.asks == asks || (failsAtLast && last.asks);
    return isExpected ? QString() : "asks or not";
}

struct Shard
{
    int index = 0;
    int count = 1;
};

Shard shard()
{
    const QRegularExpressionMatch match =
        QRegularExpression("^([1-9])/([1-9])$").match(qEnvironmentVariable("SHARD", "1/1"));
    if (!match.hasMatch())
        qFatal("There is no such shard");
    return {match.captured(1).toInt() - 1, match.captured(2).toInt()};
}

} // namespace

/// Whole runs of the real dialog on simulated systems end where the prover says.
class TestRandomDeliveries : public QObject
{
    Q_OBJECT

private slots:
    void dialogGoesTheProvenWay_data();
    void dialogGoesTheProvenWay();
    void everyEndingHasComeUp();

private:
    void compare(const FamilyProof& family, RandomFiles* random);
    const JourneyRange& rarest(const QVector<JourneyRange>& table) const;

    // Simulated devices do not need the time that the module gives real ones.
    const RecordedSleep m_sleep{[](int /*milliseconds*/) {
    }};
    QMap<Ending, int> m_endings;
    int m_severalRuns = 0;
};

void TestRandomDeliveries::dialogGoesTheProvenWay_data()
{
    QTest::addColumn<int>("seed");
    const Shard part = shard();
    for (int seed = 1 + part.index; seed <= deliveries; seed += part.count)
        QTest::newRow(qPrintable(QString("delivery %1").arg(seed))) << seed;
}

void TestRandomDeliveries::dialogGoesTheProvenWay()
{
    QFETCH(const int, seed);
    RandomFiles random(static_cast<quint32>(seed));
    const QMap<QString, UpdateFile> files = random.files();
    const FixtureFolder folder;
    const DeliveredFiles delivery = readDelivery(folder, files);
    QString error;
    const std::optional<Proof> proof = proveDelivery(delivery, {}, &error);
    QVERIFY2(proof, qPrintable(error));
    const ProgramFolder program;
    for (auto file = files.begin(); file != files.end(); ++file)
        program.deliverUpdate(file.key(), updateFileBytes(file.value()));
    for (int start = 0; start < startsOfEach; ++start) {
        // Most images are for the first family.
        compare(proof->families.at(random.below(4) == 0 ? 1 : 0), &random);
        if (QTest::currentTestFailed())
            return;
    }
}

// A way to the ending that has come up least, so that each of them does.
const JourneyRange& TestRandomDeliveries::rarest(const QVector<JourneyRange>& table) const
{
    return *std::min_element(
        table.begin(), table.end(), [&](const JourneyRange& left, const JourneyRange& right) {
            return m_endings.value(left.journey.ending) < m_endings.value(right.journey.ending);
        });
}

void TestRandomDeliveries::compare(const FamilyProof& family, RandomFiles* random)
{
    if (family.table.isEmpty())
        return;
    const JourneyRange& range = random->below(2) == 0
                                    ? family.table.at(random->below(family.table.size()))
                                    : rarest(family.table);
    const int pt = range.firstPt + random->below(range.lastPt - range.firstPt + 1);
    const int ct = range.firstCt + random->below(range.lastCt - range.firstCt + 1);
    const ReportedVersions start{family.pt.at(pt).reported(), family.ct.at(ct).example.toString()};
    Rack rack(playedSystem(family.family, start));
    const QString told = departure(&rack, start, range.journey);
    QVERIFY2(told.isEmpty(), qPrintable(QStringLiteral("%1 %2 %3, %4: %5")
                                            .arg(family.family.name, start.pt, start.ct,
                                                 endingText(range.journey.ending), told)));
    ++m_endings[range.journey.ending];
    m_severalRuns += range.journey.runs() > 1 ? 1 : 0;
}

void TestRandomDeliveries::everyEndingHasComeUp()
{
    QCOMPARE(m_endings.keys(),
             (QList<Ending>{Ending::Newest, Ending::NothingToTick, Ending::OfferedForEver,
                            Ending::LeftBehind, Ending::RunFails, Ending::NotServed}));
    QVERIFY(m_severalRuns > 0);
}

ZAN_WIDGET_TEST_MAIN(TestRandomDeliveries)
#include "tst_randomdeliveries.moc"
