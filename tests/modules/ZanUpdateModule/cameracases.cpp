#include "cameracases.h"

#include <QtTest>

const QString PREPARE = QStringLiteral("prepare_reply 1 40000 1");
const QString POLL = QStringLiteral("poll_reply 3");

QString sent(const QByteArray& record)
{
    return QStringLiteral(R"(send_command "vornix2 set camera update %1")")
        .arg(QLatin1String(record));
}

void addRowsOfReplies()
{
    QTest::addColumn<ScriptedAnswers>("answer");
    QTest::addColumn<int>("code");

    const auto rowOf = [](const char* name, const ScriptedAnswers& answer, int code) {
        QTest::newRow(name) << answer << code;
    };
    const auto row = [&](const char* name, const QByteArray& reply, int code) {
        rowOf(name, ScriptedAnswers().reply(reply), code);
    };
    const auto full = [](const QByteArray& begin, char filling) {
        return ScriptedAnswers().replyUnterminated(begin.leftJustified(200, filling));
    };
    row("a confirmation", "vornix2 ok", 0);
    row("more than a confirmation", "vornix2 ok 17", 0);
    row("an empty reply", "", 0);
    rowOf("no reply at all", ScriptedAnswers().succeed(), 0);
    row("a reply without sense", "\xE4\xF6\xFC -26", 0);
    rowOf("200 bytes without an end", full("", '\xE4'), 0);

    row("the error of a camera", "vornix2 err -26", -300);
    row("the error with its number in quotes", "vornix2 err \"-26\"", -300);
    row("the error with a quote inside its number", "vornix2 err -2\"6", -300);
    row("the error in further quotes", R"(vornix2 err" -26"")", -300);
    row("the error with more behind it", "vornix2 err -26 camera is busy", -300);
    row("a number that only begins like it", "vornix2 err -261", -300);
    rowOf("the error in 200 bytes without an end", full("vornix2 err -26", 'x'), -300);

    row("an error without a number", "vornix2 err", -333);
    row("another error", "vornix2 err -27", -333);
    row("a part of the number", "vornix2 err -2", -333);
    row("the number behind two blanks", "vornix2 err  -26", -333);
    row("the number without its sign", "vornix2 err 26", -333);
    row("letters directly behind", "vornix2 error -26", -333);
    rowOf("an error in 200 bytes without an end", full("vornix2 err", '\xE4'), -333);

    row("10 of the 11 characters", "vornix2 er", 0);
    row("another case", "Vornix2 err -26", 0);
    row("a blank in front", " vornix2 err -26", 0);
    row("all of it in quotes", "\"vornix2 err -26\"", 0);
    row("a quote inside the first 11 characters", "vornix2\" err -26", 0);
}

void addRowsOfFailingChannels()
{
    QTest::addColumn<Script>("script");
    QTest::addColumn<int>("code");
    QTest::addColumn<int>("calls");

    const auto row = [](const char* name, int code, int calls, const Script& script) {
        QTest::newRow(name) << script << code << calls;
    };
    const auto command = [](const char* record) {
        return QByteArray("vornix2 set camera update c01 2 ") + record;
    };
    row("at the first record", -200, 1,
        [=](ScriptedChannel& channel) { channel.on(command("1 BA")).fail(); });
    row("at the first record, with an error reply", -200, 1,
        [=](ScriptedChannel& channel) { channel.on(command("1 BA")).fail("vornix2 err -26"); });
    row("that is dead", -200, 1, [](ScriptedChannel& channel) { channel.die(); });
    row("at the last record, which does not count", 0, 4,
        [=](ScriptedChannel& channel) { channel.on(command("2 CA")).fail("vornix2 ok"); });
    row("at the last record, with an error reply that counts", -300, 4,
        [=](ScriptedChannel& channel) { channel.on(command("2 CA")).fail("vornix2 err -26"); });
    row("when the last reply is waited for", -222, 4,
        [](ScriptedChannel& channel) { channel.onPoll().fail(); });
    row("when the last reply, an error, is waited for", -222, 4, [=](ScriptedChannel& channel) {
        channel.on(command("2 CA")).reply("vornix2 err -26");
        channel.onPoll().fail();
    });
}
