#include "fakemodule.h"

#include <contractfile.h>
#include <hostchannel.h>
#include <modulesession.h>

#include "scriptedlink.h"

#include <fixturefiles.h>
#include <widgettestmain.h>

#include <QLibraryInfo>

class TestModuleSession : public QObject
{
    Q_OBJECT

private slots:
    void callsComeInTheOrderThatModulesRelyOn();
    void moduleIsLoadedFromAFile();
    void moduleOfAnotherContractIsNotCalled();
    void loaderSaysWhatIsWrong_data();
    void loaderSaysWhatIsWrong();
};

void TestModuleSession::callsComeInTheOrderThatModulesRelyOn()
{
    FakeModule::forgetCalls();
    ScriptedLink link;
    HostChannel channel(link);
    QWidget window;
    BackendVersions versions({3, 1, 0}, {1, 23}, {1, 2}, QStringLiteral("ZAN"));
    FakeModule module;
    {
        const ModuleSession session(module, {&channel, &window, &versions, true});
        QCOMPARE(session.elements().size(), 2);
    }
    QCOMPARE(
        FakeModule::calls(),
        (QStringList{"set_param CommandManager: IOManager*", "set_param ModuleParent: QWidget*",
                     "set_param BackendVersions: v3.1.0 v1.2 v1.23 ZAN",
                     "set_param ObserverMode: bool", "observer", "get_gui_elements",
                     "about_to_exit_module", "exit_module, the window is there"}));
}

void TestModuleSession::moduleIsLoadedFromAFile()
{
    QString error;
    ModuleInterface* module = loadModule(QStringLiteral(FAKE_MODULE), &error);
    QVERIFY2(module, qPrintable(error));
    QCOMPARE(module->get_module_version(), QString("v1.2.3"));
    QCOMPARE(loadModule(QStringLiteral(FAKE_MODULE), &error), module);
}

void TestModuleSession::moduleOfAnotherContractIsNotCalled()
{
    const FixtureFolder folder;
    // Not even loaded: there is no library of that name.
    folder.write("libmodule.contract.json", R"({"contract": "2.0"})");
    QString error;
    QVERIFY(!loadModule(folder.path("libmodule.so"), &error));
    QCOMPARE(error, whyNotToCall(folder.path("libmodule.so")));
    QVERIFY(error.contains("contract"));
}

void TestModuleSession::loaderSaysWhatIsWrong_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("error");
    const QString foreign = QLibraryInfo::location(QLibraryInfo::PluginsPath) +
                            QStringLiteral("/platforms/libqminimal.so");
    QTest::newRow("no such file") << "/nowhere/libmodule.so"
                                  << "/nowhere/libmodule.so";
    QTest::newRow("a text file") << "text.so"
                                 << "is not an ELF object";
    QTest::newRow("a plug-in of another kind")
        << foreign << foreign + ": the plug-in does not implement org.orv.vornix2.gui.Module/0.2.0";
}

void TestModuleSession::loaderSaysWhatIsWrong()
{
    QFETCH(QString, file);
    QFETCH(const QString, error);
    const FixtureFolder folder;
    if (file == QLatin1String("text.so"))
        file = folder.write(file, "This is a text and no library.\n");
    QString text;
    QVERIFY(!loadModule(file, &text));
    QVERIFY2(text.contains(error), qPrintable(text));
}

ZAN_WIDGET_TEST_MAIN(TestModuleSession)
#include "tst_modulesession.moc"
