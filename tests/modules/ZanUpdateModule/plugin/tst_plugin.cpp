#include <childprocess.h>
#include <testmain.h>

#include <ModuleInterface>

#include <QJsonDocument>
#include <QJsonObject>
#include <QPluginLoader>

#include <algorithm>
#include <memory>

/// The built plug-in file, seen as a host and the dynamic linker see it.
class TestPlugin : public QObject
{
    Q_OBJECT

private slots:
    void metaDataAnswersBeforeAnyCodeRuns();
    void loadsWithAllSymbolsResolved();
    void castsToItsNames_data();
    void castsToItsNames();
    void existsOnce();
    void introducesItself();
    void exportsQtsTwoFunctionsOnly();
    void linksQtCoreGuiWidgetsXmlOnly();
    void leavesNoSymbolUndefined();
};

static QString pluginFile()
{
    return QStringLiteral(PLUGIN_FILE);
}

/// What the program prints, line by line; nothing if it cannot run or fails.
static QStringList outputOf(const QString& program, const QStringList& arguments)
{
    ChildProcess process;
    process.start(program, arguments);
    if (!process.waitForEnd() || process.exitCode() != 0)
        return {};
    return QString::fromLocal8Bit(process.readAllStandardOutput() + process.readAllStandardError())
        .split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

void TestPlugin::metaDataAnswersBeforeAnyCodeRuns()
{
    const QPluginLoader loader(pluginFile());
    const QJsonObject expected{
        {QStringLiteral("IID"), QStringLiteral("org.orv.Vornix2.ZanUpdateModule")},
        {QStringLiteral("className"), QStringLiteral("ZanUpdateModule")},
        // Qt's plug-in macro names the minor version of Qt, without its patch.
        {QStringLiteral("version"), QT_VERSION_CHECK(QT_VERSION_MAJOR, QT_VERSION_MINOR, 0)},
        {QStringLiteral("debug"), false},
        {QStringLiteral("MetaData"), QJsonObject()}};
    QJsonObject metaData = loader.metaData();
    // Qt 5.15 leaves an empty object out of the file, and tells what the file asks of the processor
    // beside what is written in it.
    metaData.insert(QStringLiteral("MetaData"),
                    metaData.value(QStringLiteral("MetaData")).toObject());
    metaData.remove(QStringLiteral("archreq"));
    QCOMPARE(QJsonDocument(metaData).toJson(), QJsonDocument(expected).toJson());
    QVERIFY(!loader.isLoaded());
}

void TestPlugin::loadsWithAllSymbolsResolved()
{
    QPluginLoader loader(pluginFile());
    loader.setLoadHints(QLibrary::ResolveAllSymbolsHint);
    QVERIFY2(loader.load(), qPrintable(loader.errorString()));
    QVERIFY(qobject_cast<ModuleInterface*>(loader.instance()));
}

void TestPlugin::castsToItsNames_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QByteArray>("answer");

    const QByteArray object = "the object";
    const QByteArray interface = "its interface";
    QTest::newRow("the class name is the object") << QByteArray("ZanUpdateModule") << object;
    QTest::newRow("the interface's name is the interface")
        << QByteArray("ModuleInterface") << interface;
    QTest::newRow("the interface's id is the interface")
        << QByteArray("org.orv.vornix2.gui.Module/0.2.0") << interface;
    QTest::newRow("QObject answers for itself") << QByteArray("QObject") << object;
    QTest::newRow("the id of the plug-in is no name")
        << QByteArray("org.orv.Vornix2.ZanUpdateModule") << QByteArray("nothing");
    QTest::newRow("names are case sensitive")
        << QByteArray("moduleinterface") << QByteArray("nothing");
    QTest::newRow("other names are nothing") << QByteArray("QWidget") << QByteArray("nothing");
}

void TestPlugin::castsToItsNames()
{
    QFETCH(QByteArray, name);
    QFETCH(QByteArray, answer);

    QPluginLoader loader(pluginFile());
    QObject* instance = loader.instance();
    QVERIFY(instance);
    void* cast = instance->qt_metacast(name.constData());
    if (answer == "the object")
        QCOMPARE(cast, static_cast<void*>(instance));
    else if (answer == "its interface")
        QCOMPARE(cast, static_cast<void*>(qobject_cast<ModuleInterface*>(instance)));
    else
        QVERIFY(!cast);
}

void TestPlugin::existsOnce()
{
    QPluginLoader first(pluginFile());
    QPluginLoader second(pluginFile());
    QPointer<QObject> instance = first.instance();
    QVERIFY(instance);
    QCOMPARE(first.instance(), instance.data());
    QCOMPARE(second.instance(), instance.data());

    delete instance;
    QVERIFY(!instance);
    QVERIFY(qobject_cast<ModuleInterface*>(second.instance()));
    QCOMPARE(first.instance(), second.instance());
}

void TestPlugin::introducesItself()
{
    QPluginLoader loader(pluginFile());
    const auto* module = qobject_cast<ModuleInterface*>(loader.instance());
    QVERIFY(module);
    QCOMPARE(module->get_module_name(), QStringLiteral("GUI Controller Update"));
    QCOMPARE(module->get_module_version(), QStringLiteral("v2.0.0"));
}

void TestPlugin::exportsQtsTwoFunctionsOnly()
{
    QStringList names;
    const QStringList lines =
        outputOf(QStringLiteral("nm"), {QStringLiteral("-D"), QStringLiteral("--defined-only"),
                                        QStringLiteral("--format=posix"), pluginFile()});
    for (const QString& line : lines)
        names += line.section(QLatin1Char(' '), 0, 0);
    names.sort();
    QCOMPARE(names, (QStringList{QStringLiteral("qt_plugin_instance"),
                                 QStringLiteral("qt_plugin_query_metadata")}));
}

static bool isOfCompiler(const QString& library)
{
    const QStringList names{QStringLiteral("libstdc++.so"), QStringLiteral("libgcc_s.so"),
                            QStringLiteral("libm.so"), QStringLiteral("libc.so"),
                            QStringLiteral("ld-linux")};
    const auto isPrefix = [&](const QString& name) {
        return library.startsWith(name);
    };
    if (std::any_of(names.begin(), names.end(), isPrefix))
        return true;
    const bool isSanitized = *SANITIZERS != '\0';
    return isSanitized &&
           (isPrefix(QStringLiteral("libasan.so")) || isPrefix(QStringLiteral("libubsan.so")) ||
            isPrefix(QStringLiteral("libtsan.so")));
}

void TestPlugin::linksQtCoreGuiWidgetsXmlOnly()
{
    QStringList libraries;
    const QStringList lines =
        outputOf(QStringLiteral("readelf"), {QStringLiteral("-dW"), pluginFile()});
    for (const QString& line : lines) {
        const QString library = line.section(QLatin1Char('['), 1).section(QLatin1Char(']'), 0, 0);
        if (line.contains(QLatin1String("(NEEDED)")) && !isOfCompiler(library))
            libraries += library;
    }
    libraries.sort();
    QCOMPARE(libraries,
             (QStringList{QStringLiteral("libQt5Core.so.5"), QStringLiteral("libQt5Gui.so.5"),
                          QStringLiteral("libQt5Widgets.so.5"), QStringLiteral("libQt5Xml.so.5")}));
}

// Of what it links itself, and not of what this program happens to have loaded.
void TestPlugin::leavesNoSymbolUndefined()
{
    const QStringList lines = outputOf(QStringLiteral("ldd"), {QStringLiteral("-r"), pluginFile()});
    QVERIFY2(lines.filter(QStringLiteral("libQt5Core.so.5 => /")).size() == 1,
             qPrintable(lines.join(QLatin1Char('\n'))));
    QCOMPARE(lines.filter(QStringLiteral("undefined symbol")), QStringList());
    QCOMPARE(lines.filter(QStringLiteral("not found")), QStringList());
}

ZAN_TEST_MAIN(TestPlugin)

#include "tst_plugin.moc"
