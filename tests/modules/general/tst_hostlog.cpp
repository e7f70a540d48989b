#include "hostlog.h"

#include "scriptedchannel.h"
#include "testmain.h"

class TestHostLog : public QObject
{
    Q_OBJECT

private slots:
    void postsLines_data();
    void postsLines();
};

void TestHostLog::postsLines_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("posted");

    const auto row = [](const char* name, const char* text, const char* posted) {
        QTest::newRow(name) << QString::fromUtf8(text) << QString::fromUtf8(posted);
    };
    row("a line goes out as it is", "update started", "update started");
    row("Latin-1 letters stay", "größer", "größer");
    row("what Latin-1 cannot express becomes a question mark", "5 € → 6", "5 ? ? 6");
    row("a per cent sign is no format", "100 %s %n", "100 %s %n");
    row("an empty line is a line", "", "");
}

void TestHostLog::postsLines()
{
    QFETCH(QString, text);
    QFETCH(QString, posted);
    ScriptedChannel channel;
    logToHost(&channel, text);
    QCOMPARE(channel.log(),
             QStringList(QStringLiteral("post_message standard VORNIX3 1 \"%1\"").arg(posted)));
}

ZAN_TEST_MAIN(TestHostLog)

#include "tst_hostlog.moc"
