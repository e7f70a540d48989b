#include "fakemodule.h"

#include <hostchannel.h>
#include <modulehost.h>

#include "scriptedlink.h"

#include <fixturefiles.h>
#include <sealfixtures.h>
#include <version.h>

#include <recordingchannel.h>
#include <replaychannel.h>

#include <modaldriver.h>
#include <widgettestmain.h>

#include <QDir>
#include <QFile>
#include <QScopeGuard>
#include <QTimer>

namespace {

/// A host of the module that the file FAKE_MODULE holds, and what it says.
struct Site
{
    explicit Site(const ModuleWishes& wishes) : host(channel, window, wishes)
    {
        FakeModule::forgetCalls();
        QObject::connect(&host, &ModuleHost::message, [this](const QString& text) { log += text; });
        QObject::connect(&host, &ModuleHost::logged,
                         [this](const QString& sender, const QString& text) {
                             log += sender + " logs " + text;
                         });
        QObject::connect(&host, &ModuleHost::entered,
                         [this](const QList<GuiElement*>& elements, const QString& name) {
                             log +=
                                 QString("entered: %1, %2 entries").arg(name).arg(elements.size());
                             entries = elements;
                         });
        QObject::connect(&host, &ModuleHost::leaving, [this] {
            log += "leaving after " + FakeModule::calls().last();
            entries.clear();
        });
        QObject::connect(&host, &ModuleHost::readyToShutDown, [this] { log += "ready"; });
    }

    ScriptedLink link;
    HostChannel channel{link};
    QWidget window;
    QStringList log;
    QList<GuiElement*> entries;
    ModuleHost host; // last: its end is told to the others
};

ModuleWishes fakeModule()
{
    ModuleWishes wishes;
    wishes.file = FAKE_MODULE;
    return wishes;
}

const BackendVersions versions({3, 1, 0}, {1, 23}, {1, 2}, QStringLiteral("ZAN"));
const QString ownVersion =
    QString("message of Main_Window: %1").arg(QLatin1String(frontendVersion));
const QStringList logOfAStay = {"entered: Fake v1.2.3, 2 entries", "Module loaded: Fake v1.2.3"};
const QStringList logOfAnEnd = {"Fake logs leaving"};

} // namespace

class TestModuleHost : public QObject
{
    Q_OBJECT

private slots:
    void moduleIsServedFromItsEntryToItsEnd();
    void moduleLeavesWithItsHost();
    void moduleEntersAgain();
    void messagesReachTheModuleOnlyWhileItIsInside();
    void moduleSaysThatItHasEnded();
    void callsAreRecordedOnWish();
    void transcriptAnswersInThePlaceOfTheControllers();
    void moduleThatCannotBeLoadedIsTold();
    void nothingIsLoadedBeforeTheDeliveryIsProven();
};

void TestModuleHost::moduleIsServedFromItsEntryToItsEnd()
{
    ModuleWishes wishes = fakeModule();
    wishes.observer = true;
    Site site(wishes);
    QString error;
    QVERIFY2(site.host.prepare(&error), qPrintable(error));
    QVERIFY(!site.host.isInside());
    QCOMPARE(FakeModule::calls(), QStringList());
    QVERIFY(site.host.enter(versions));
    QVERIFY(site.host.isInside());
    QVERIFY(!site.host.isRefused());
    site.host.leave();
    QVERIFY(!site.host.isInside());
    QCOMPARE(
        FakeModule::calls(),
        (QStringList{"set_param CommandManager: IOManager*", "set_param ModuleParent: QWidget*",
                     "set_param BackendVersions: v3.1.0 v1.2 v1.23 ZAN",
                     "set_param ObserverMode: bool", "observer", "get_gui_elements", ownVersion,
                     "about_to_exit_module", "exit_module, the window is there"}));
    QCOMPARE(site.log, logOfAStay + QStringList{"leaving after " + ownVersion} + logOfAnEnd);
}

void TestModuleHost::moduleLeavesWithItsHost()
{
    {
        Site site(fakeModule());
        QVERIFY(site.host.enter(versions));
    }
    QCOMPARE(FakeModule::calls().mid(FakeModule::calls().size() - 2),
             (QStringList{"about_to_exit_module", "exit_module, the window is there"}));
}

void TestModuleHost::moduleEntersAgain()
{
    Site site(fakeModule());
    QVERIFY(site.host.enter(versions));
    site.host.leave();
    site.host.leave();
    const QStringList firstLog = site.log;
    const QStringList firstCalls = FakeModule::calls();
    site.log.clear();
    FakeModule::forgetCalls();
    QVERIFY(site.host.enter(versions));
    site.host.leave();
    QCOMPARE(site.log, firstLog);
    QCOMPARE(FakeModule::calls(), firstCalls);
}

void TestModuleHost::messagesReachTheModuleOnlyWhileItIsInside()
{
    Site site(fakeModule());
    site.host.tell("before");
    QVERIFY(site.host.enter(versions));
    FakeModule::forgetCalls();
    site.host.tell("inside");
    site.host.leave();
    site.host.tell("after");
    QCOMPARE(FakeModule::calls(),
             (QStringList{"message of Main_Window: inside", "about_to_exit_module",
                          "exit_module, the window is there"}));
}

void TestModuleHost::moduleSaysThatItHasEnded()
{
    Site site(fakeModule());
    QVERIFY(site.host.enter(versions));
    site.log.clear();
    // The entry ends the event loop, too.
    QTimer::singleShot(0, site.entries.at(1)->menu_entry, &QAction::trigger);
    QCoreApplication::exec();
    site.channel.post_message("Main_Window", "Fake", 1, "Something else");
    QCOMPARE(site.log, QStringList{"ready"});
}

void TestModuleHost::callsAreRecordedOnWish()
{
    const FixtureFolder folder;
    ModuleWishes wishes = fakeModule();
    wishes.recordFile = folder.path("calls.jsonl");
    {
        Site site(wishes);
        QVERIFY(site.host.enter(versions));
        site.host.leave();
        QCOMPARE(site.log.first(), "Recording to " + wishes.recordFile);
    }
    QFile record(wishes.recordFile);
    QVERIFY(record.open(QIODevice::ReadOnly));
    const QByteArray text = record.readAll();
    QVERIFY2(text.contains("demo-frontend v3.3.0") && text.contains("register_receiver"), text);
}

void TestModuleHost::transcriptAnswersInThePlaceOfTheControllers()
{
    const FixtureFolder folder;
    ModuleWishes recorded = fakeModule();
    recorded.recordFile = folder.path("calls.jsonl");
    {
        Site site(recorded);
        QVERIFY(site.host.enter(versions));
    }
    QString error;
    const std::optional<Transcript> transcript = Transcript::read(recorded.recordFile, &error);
    QVERIFY2(transcript, qPrintable(error));
    ModuleWishes wishes = fakeModule();
    wishes.transcript = &*transcript;
    Site site(wishes);
    QVERIFY(!site.host.replay());
    QVERIFY(site.host.enter(versions));
    site.host.leave();
    QVERIFY(site.host.replay());
    QCOMPARE(site.log.last(), QString("Everything was called as recorded."));
    QCOMPARE(site.link.log, QStringList());
}

void TestModuleHost::moduleThatCannotBeLoadedIsTold()
{
    ModuleWishes wishes;
    wishes.file = "/nowhere/libmodule.so";
    Site site(wishes);
    QString error;
    QVERIFY(!site.host.prepare(&error));
    QVERIFY2(error.startsWith("/nowhere/libmodule.so: "), qPrintable(error));
    QVERIFY(!site.host.enter(versions));
    QVERIFY(site.host.isRefused());
    QVERIFY(!site.host.isInside());
    QCOMPARE(site.log, QStringList{error});
}

// The file that would be loaded does not exist, so its loading would be told.
void TestModuleHost::nothingIsLoadedBeforeTheDeliveryIsProven()
{
    const QString updates = QCoreApplication::applicationDirPath() + "/controller_update";
    const auto cleanUp = qScopeGuard([&] { QDir(updates).removeRecursively(); });
    writeFixture(updates + "/a.vx3img", "first");
    ModuleWishes wishes;
    wishes.file = "/nowhere/libmodule.so";
    Site site(wishes);
    QString error;
    QVERIFY(site.host.setPublicKey(sample::publicKey, &error));
    QVERIFY2(site.host.prepare(&error), qPrintable(error));

    ModalDriver driver;
    ExpectedBox box;
    box.title = "VORNIX3";
    const QString summary = QString("The update files in %1 are not sealed.").arg(updates);
    const QString refusal = "The update module was not loaded.";
    box.text = QStringList{summary, "SHA256SUMS: is missing", refusal}.join("\n\n");
    box.icon = QMessageBox::Warning;
    box.defaultButton = QMessageBox::NoButton;
    driver.expect(box);
    QVERIFY(!site.host.enter(versions));
    QVERIFY2(driver.isDone(), qPrintable(driver.missing()));
    QVERIFY(site.host.isRefused());
    QCOMPARE(site.log, (QStringList{"SHA256SUMS: is missing", summary, refusal}));
}

ZAN_WIDGET_TEST_MAIN(TestModuleHost)
#include "tst_modulehost.moc"
