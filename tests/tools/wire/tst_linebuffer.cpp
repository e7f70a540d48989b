#include <linebuffer.h>

#include <testmain.h>

namespace {

constexpr int maxBytes = 10;

QList<QByteArray> takeAll(LineBuffer* buffer)
{
    QList<QByteArray> lines;
    while (const std::optional<QByteArray> line = buffer->takeLine())
        lines.append(*line);
    return lines;
}

} // namespace

class TestLineBuffer : public QObject
{
    Q_OBJECT

private slots:
    void bytesBecomeLines_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QList<QByteArray>>("lines");
        const auto row = [](const char* name, const QByteArray& bytes,
                            const QList<QByteArray>& lines) {
            QTest::newRow(name) << bytes << lines;
        };
        row("nothing", "", {});
        row("a line without its end is none yet", "one", {});
        row("a line", "one\n", {"one"});
        row("two lines and the begin of a third", "one\ntwo\nthr", {"one", "two"});
        row("the line end of other systems", "one\r\ntwo\r\n", {"one", "two"});
        row("a carriage return inside of a line stays", "o\rne\n", {"o\rne"});
        row("of two carriage returns one stays", "one\r\r\n", {"one\r"});
        row("an empty line is a line", "\n\r\n", {"", ""});
        row("blanks stay", " one  \n", {" one  "});
        row("zero bytes stay", QByteArray("o\0e\n", 4), {QByteArray("o\0e", 3)});
        row("bytes beyond ASCII stay", "\xff\x80\n", {"\xff\x80"});
        row("a line of the greatest length", "0123456789\n", {"0123456789"});
        row("a longer line is cut", "0123456789a\nnext\n", {"0123456789", "next"});
        row("a line of the greatest length with two bytes as its end", "0123456789\r\nnext\n",
            {"0123456789", "next"});
    }

    void bytesBecomeLines()
    {
        QFETCH(const QByteArray, bytes);
        LineBuffer buffer(maxBytes);
        buffer.append(bytes);
        QTEST(takeAll(&buffer), "lines");
    }

    void partsMakeTheSameLines_data() { bytesBecomeLines_data(); }

    void partsMakeTheSameLines()
    {
        QFETCH(const QByteArray, bytes);
        LineBuffer buffer(maxBytes);
        for (int i = 0; i < bytes.size(); ++i)
            buffer.append(bytes.mid(i, 1));
        QTEST(takeAll(&buffer), "lines");
    }

    void lineCanBeTakenBetweenParts()
    {
        LineBuffer buffer(maxBytes);
        buffer.append("one\ntw");
        QCOMPARE(takeAll(&buffer), QList<QByteArray>{"one"});
        buffer.append("o\n");
        QCOMPARE(takeAll(&buffer), QList<QByteArray>{"two"});
    }

    void clearedBufferKnowsNothingOfBefore()
    {
        LineBuffer buffer(maxBytes);
        buffer.append("one\ntw");
        buffer.clear();
        buffer.append("o\n");
        QCOMPARE(takeAll(&buffer), QList<QByteArray>{"o"});
    }
};

ZAN_TEST_MAIN(TestLineBuffer)
#include "tst_linebuffer.moc"
