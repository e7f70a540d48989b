#include <scriptedchannel.h>
#include <testmain.h>
#include <zanupdatemessagereceiver.h>

#include <QMetaMethod>
#include <QSignalSpy>

/// The plug-in's end of the host's messages.
class TestZanUpdateMessageReceiver : public QObject
{
    Q_OBJECT

private slots:
    void emitsTheSignalOfTheText_data();
    void emitsTheSignalOfTheText();
    void ignoresKindAndSender_data();
    void ignoresKindAndSender();
    void takesANullTextForAVersion();
    void receivesWhatIsPostedToItsName();
    void declaresItsSignalsInOrder();
    void castsToItsNames();
    void belongsToItsParentAndLeavesTheChannelAlone();
};

namespace {

/// Everything that one receiver emits, each signal as one line.
class Emitted : public QObject
{
public:
    explicit Emitted(const ZanUpdateMessageReceiver* receiver)
    {
        connect(receiver, &ZanUpdateMessageReceiver::sendCheckForOldFrontendOrBackend, this,
                [this](bool on) { lines += on ? "check on" : "check off"; });
        connect(receiver, &ZanUpdateMessageReceiver::sendModuleParentVersion, this,
                [this](const QString& text) { lines += "version " + text.toUtf8(); });
        connect(receiver, &ZanUpdateMessageReceiver::sendDarkThemeEnabled, this,
                [this](bool on) { lines += on ? "dark" : "bright"; });
    }

    QList<QByteArray> lines;
};

} // namespace

void TestZanUpdateMessageReceiver::emitsTheSignalOfTheText_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("emitted");

    const auto row = [](const char* name, const char* text, const char* emitted) {
        QTest::newRow(name) << QByteArray(text) << QByteArray(emitted);
    };
    row("the check is turned on", "CheckForOldFrontendOrBackend", "check on");
    row("the check is turned off", "NotCheckForOldFrontendOrBackend", "check off");
    row("the theme gets dark", "DarkThemeEnabled", "dark");
    row("the theme gets bright", "DarkThemeDisabled", "bright");
    row("a version is passed on", "v3.1.0", "version v3.1.0");
    row("a keyword in lower case is a version", "darkthemeenabled", "version darkthemeenabled");
    row("a keyword in upper case is a version", "NOTCHECKFOROLDFRONTENDORBACKEND",
        "version NOTCHECKFOROLDFRONTENDORBACKEND");
    row("a keyword with a blank behind it is a version", "DarkThemeEnabled ",
        "version DarkThemeEnabled ");
    row("a keyword with a blank before it is a version", " DarkThemeDisabled",
        "version  DarkThemeDisabled");
    row("the beginning of a keyword is a version", "DarkTheme", "version DarkTheme");
    row("a keyword with more behind it is a version", "CheckForOldFrontendOrBackend2",
        "version CheckForOldFrontendOrBackend2");
    row("the empty text is a version", "", "version ");
    row("nothing validates a version", "any other text", "version any other text");
    row("a text is read as Latin-1",
        "v3.1.0 f\xFC"
        "r",
        "version v3.1.0 f\xC3\xBCr");
}

void TestZanUpdateMessageReceiver::emitsTheSignalOfTheText()
{
    QFETCH(QByteArray, text);
    QFETCH(QByteArray, emitted);

    ZanUpdateMessageReceiver receiver(nullptr, nullptr);
    const Emitted signalsOf(&receiver);
    QCOMPARE(receiver.transmit_message(1, "host", text.constData()), 0);
    QCOMPARE(signalsOf.lines, QList<QByteArray>{emitted});
}

void TestZanUpdateMessageReceiver::ignoresKindAndSender_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<QByteArray>("sender");

    QTest::newRow("the usual kind and sender") << 1 << QByteArray("Main_Window");
    QTest::newRow("kind 0") << 0 << QByteArray("Main_Window");
    QTest::newRow("a negative kind") << -7 << QByteArray("Main_Window");
    QTest::newRow("an empty sender") << 1 << QByteArray("");
    QTest::newRow("a null sender") << 1 << QByteArray();
    QTest::newRow("a sender that looks like a text") << 1 << QByteArray("DarkThemeDisabled");
}

void TestZanUpdateMessageReceiver::ignoresKindAndSender()
{
    QFETCH(int, kind);
    QFETCH(QByteArray, sender);

    ZanUpdateMessageReceiver receiver(nullptr, nullptr);
    const Emitted signalsOf(&receiver);
    const char* source = sender.isNull() ? nullptr : sender.constData();
    QCOMPARE(receiver.transmit_message(kind, source, "DarkThemeEnabled"), 0);
    QCOMPARE(signalsOf.lines, QList<QByteArray>{"dark"});
}

void TestZanUpdateMessageReceiver::takesANullTextForAVersion()
{
    ZanUpdateMessageReceiver receiver(nullptr, nullptr);
    const Emitted signalsOf(&receiver);
    QSignalSpy versions(&receiver, &ZanUpdateMessageReceiver::sendModuleParentVersion);
    QCOMPARE(receiver.transmit_message(1, "host", nullptr), 0);
    QCOMPARE(signalsOf.lines, QList<QByteArray>{"version "});
    QVERIFY(versions.at(0).at(0).toString().isNull());
}

void TestZanUpdateMessageReceiver::receivesWhatIsPostedToItsName()
{
    ScriptedChannel channel;
    ZanUpdateMessageReceiver receiver(nullptr, &channel);
    const Emitted signalsOf(&receiver);
    channel.register_receiver("UpdateModule", &receiver);
    channel.post_message("UpdateModule", "Main_Window", 1, "v3.1.0");
    channel.post_message("UpdateModule", "anyone", 42, "DarkThemeDisabled");
    channel.post_message("Main_Window", "anyone", 1, "DarkThemeEnabled");
    QCOMPARE(signalsOf.lines, (QList<QByteArray>{"version v3.1.0", "bright"}));
}

void TestZanUpdateMessageReceiver::declaresItsSignalsInOrder()
{
    const QMetaObject& meta = ZanUpdateMessageReceiver::staticMetaObject;
    QList<QByteArray> methods;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        QCOMPARE(meta.method(i).methodType(), QMetaMethod::Signal);
        methods += meta.method(i).methodSignature();
    }
    QCOMPARE(methods,
             (QList<QByteArray>{"sendCheckForOldFrontendOrBackend(bool)",
                                "sendModuleParentVersion(QString)", "sendDarkThemeEnabled(bool)"}));
}

void TestZanUpdateMessageReceiver::castsToItsNames()
{
    ZanUpdateMessageReceiver receiver(nullptr, nullptr);
    QCOMPARE(receiver.qt_metacast("ZanUpdateMessageReceiver"), static_cast<void*>(&receiver));
    QCOMPARE(receiver.qt_metacast("MessageReceiver"),
             static_cast<void*>(static_cast<MessageReceiver*>(&receiver)));
    QVERIFY(receiver.qt_metacast("MessageReceiver") != static_cast<void*>(&receiver));
    QVERIFY(!receiver.qt_metacast("messagereceiver"));
}

void TestZanUpdateMessageReceiver::belongsToItsParentAndLeavesTheChannelAlone()
{
    ScriptedChannel channel;
    QObject parent;
    auto* receiver = new ZanUpdateMessageReceiver(&parent, &channel);
    QCOMPARE(receiver->parent(), &parent);
    receiver->transmit_message(1, "host", "v3.1.0");
    QCOMPARE(channel.log(), QStringList());
}

ZAN_TEST_MAIN(TestZanUpdateMessageReceiver)

#include "tst_zanupdatemessagereceiver.moc"
