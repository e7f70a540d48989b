#include "hostsample.h"
#include "transcriptfixtures.h"

#include <scriptedchannel.h>
#include <testmain.h>

namespace {

/// A module that asks one thing.
class AskingModule final : public ModuleInterface
{
public:
    void about_to_exit_module() override {}
    void exit_module() override {}
    QString get_module_name() const override { return QString(); }
    QString get_module_version() const override { return QString(); }
    QList<GuiElement*> get_gui_elements() override
    {
        char reply[200] = "";
        channel->get_string(reply, "system hostname");
        return {};
    }
    void set_param(QString key, QVariant value) override
    {
        QCOMPARE(key, QString("CommandManager"));
        channel = value.value<IOManager*>();
    }

    IOManager* channel = nullptr;
};

/// The lines between the marks of the sample, without their indentation.
QByteArray sampleText()
{
    const QByteArray source = contentOf(QStringLiteral(SAMPLE_FOLDER "/hostsample.cpp"));
    const QByteArray begin = "    // Sample begins\n";
    const int start = source.indexOf(begin) + begin.size();
    return source.mid(start, source.indexOf("    // Sample ends") - start)
        .replace("\n    ", "\n")
        .mid(4);
}

} // namespace

/// recordingchannel.h and .cpp in the tree of a host: nothing else of the tools is linked here.
class TestHostSample : public QObject
{
    Q_OBJECT

private slots:
    void sampleRecordsWhatTheModuleCalls()
    {
        ScriptedChannel channel;
        channel.on("system hostname").reply("alpha");
        AskingModule module;
        RecordingHost host;
        host.giveChannel(module, channel, sampleHead().versions, false);
        module.get_gui_elements();
        QCOMPARE(withoutTimes(contentOf(QDir::homePath() + "/update.transcript")),
                 sampleHeadText().replace("tests v1", "my-frontend v3.3.0") +
                     "get_string \"system hostname\" = 0 \"alpha\"\n");
        QCOMPARE(channel.log(), QStringList("get_string \"system hostname\""));
    }

    void pageShowsTheSampleAsItIsCompiled()
    {
        QVERIFY(sampleText().contains("set_param"));
        const QByteArray page = contentOf(QStringLiteral(TRANSCRIPTS_PAGE));
        QVERIFY2(page.contains("```cpp\n" + sampleText() + "```\n"), sampleText());
    }
};

ZAN_TEST_MAIN(TestHostSample)
#include "tst_hostsample.moc"
