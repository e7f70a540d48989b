#include <logview.h>

#include <elsewhere.h>
#include <widgettestmain.h>

#include <QRegularExpression>
#include <QScrollBar>
#include <QSignalSpy>

namespace {

/// The texts that are shown, without time and sender; of a long message its first line.
QStringList textsIn(const LogView& view)
{
    QStringList texts;
    const QRegularExpression head("^\\d\\d:\\d\\d:\\d\\d\\.\\d\\d\\d  \\S+ +(.*)$");
    for (const QString& line : view.toPlainText().split('\n')) {
        const QRegularExpressionMatch match = head.match(line);
        if (match.hasMatch())
            texts += match.captured(1);
    }
    return texts;
}

} // namespace

class TestLogView : public QObject
{
    Q_OBJECT

private slots:
    void lineHasTimeSenderAndText_data()
    {
        QTest::addColumn<QTime>("time");
        QTest::addColumn<QString>("sender");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("line");
        QTest::newRow("one line") << QTime(7, 5, 3, 9) << "VORNIX3"
                                  << "search done"
                                  << "07:05:03.009  VORNIX3     search done";
        QTest::newRow("a long sender") << QTime(23, 59, 59, 999) << "ZanUpateModule"
                                       << "x"
                                       << "23:59:59.999  ZanUpateModule  x";
        QTest::newRow("two lines") << QTime(0, 0) << "A"
                                   << "first\nsecond"
                                   << "00:00:00.000  A           first\n"
                                      "                          second";
    }

    void lineHasTimeSenderAndText()
    {
        QFETCH(const QTime, time);
        QFETCH(const QString, sender);
        QFETCH(const QString, text);
        QTEST(LogView::lineOf(LogView::timeOfDay(time), sender, text), "line");
    }

    void messagesStandBelowEachOther()
    {
        const Elsewhere elsewhere("ar_EG", "XXX-5:45");
        LogView view;
        QSignalSpy added(&view, &LogView::added);
        view.add("VORNIX3", "first");
        view.add("Frontend", "<b>second</b>");
        const QStringList lines = view.toPlainText().split('\n');
        QCOMPARE(lines.size(), 2);
        const QRegularExpression first("^\\d\\d:\\d\\d:\\d\\d\\.\\d\\d\\d  VORNIX3     first$");
        QVERIFY2(lines.at(0).contains(first), qPrintable(lines.at(0)));
        QVERIFY(lines.at(1).endsWith("  Frontend    <b>second</b>"));
        QCOMPARE(added.size(), 2);
        QCOMPARE(added.at(1), (QList<QVariant>{"Frontend", "<b>second</b>"}));
    }

    void savedLinesTellDateAndZone()
    {
        const Elsewhere elsewhere("ar_EG", "XXX-5:45");
        LogView view;
        view.add("A", "first\nsecond");
        const QRegularExpression dated(
            "^\\d{4}-\\d\\d-\\d\\d (\\d\\d:\\d\\d:\\d\\d\\.\\d\\d\\d)\\+05:45  A           first\n"
            " {43}second\n$");
        const QRegularExpressionMatch match = dated.match(view.wholeText());
        QVERIFY2(match.hasMatch(), qPrintable(view.wholeText()));
        QVERIFY(view.toPlainText().startsWith(match.captured(1) + "  A"));
        QCOMPARE(view.shownText(), view.wholeText());
    }

    void filterShowsWhatMatches_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("sender");
        QTest::addColumn<QStringList>("shown"); ///< texts behind the senders
        QTest::newRow("no filter shows all")
            << ""
            << "" << QStringList{"search done", "Update failed", "an UPDATE of two"};
        QTest::newRow("a part of the text, whatever the case")
            << "upDATE"
            << "" << QStringList{"Update failed", "an UPDATE of two"};
        QTest::newRow("a part of the sender") << "nix"
                                              << "" << QStringList{"search done"};
        QTest::newRow("the time is not looked at") << ":"
                                                   << "" << QStringList();
        QTest::newRow("a second line counts") << "lines"
                                              << "" << QStringList{"an UPDATE of two"};
        QTest::newRow("signs of patterns are plain text") << ".*"
                                                          << "" << QStringList();
        QTest::newRow("one sender")
            << ""
            << "Frontend" << QStringList{"Update failed", "an UPDATE of two"};
        QTest::newRow("one sender and a text") << "fail"
                                               << "Frontend" << QStringList{"Update failed"};
        QTest::newRow("a part of a sender is not that sender") << ""
                                                               << "Front" << QStringList();
    }

    void filterShowsWhatMatches()
    {
        QFETCH(const QString, text);
        QFETCH(const QString, sender);
        QFETCH(const QStringList, shown);
        for (const bool isLate : {false, true}) { // messages before and after the filter
            LogView view;
            if (!isLate)
                view.setFilter({text, sender});
            view.add("VORNIX3", "search done");
            view.add("Frontend", "Update failed");
            view.add("Frontend", "an UPDATE of two\nlines");
            if (isLate)
                view.setFilter({text, sender});
            QCOMPARE(textsIn(view), shown);
            QCOMPARE(view.shownCount(), shown.size());
            QCOMPARE(view.messageCount(), 3);
        }
    }

    void nothingIsLostByFiltering()
    {
        LogView view;
        view.add("A", "first");
        view.add("B", "second\nhalf");
        const QString whole = view.wholeText();
        view.setFilter({"nothing like it", {}});
        view.add("A", "third");
        QCOMPARE(view.toPlainText(), QString());
        QCOMPARE(view.shownText(), QString());
        QVERIFY(view.wholeText().startsWith(whole));
        view.setFilter({});
        QCOMPARE(textsIn(view), (QStringList{"first", "second", "third"}));
        QCOMPARE(view.shownText(), view.wholeText());
    }

    void oldestGoFromALongLog()
    {
        LogView view;
        view.add("A", "the very first");
        view.add("A", "two\nlines");
        for (int i = 3; i < LogView::maxLines; ++i)
            view.add("B", "filler");
        QCOMPARE(view.messageCount(), LogView::maxLines - 1);
        view.setFilter({"t", "A"});
        QCOMPARE(view.shownCount(), 2);
        view.add("B", "one line too many");
        QCOMPARE(view.messageCount(), LogView::maxLines - 1);
        QCOMPARE(view.shownCount(), 1);
        view.add("B", "and another");
        QCOMPARE(view.messageCount(), LogView::maxLines - 1);
        QCOMPARE(view.shownCount(), 0);
        view.setFilter({});
        QCOMPARE(view.document()->blockCount(), LogView::maxLines - 1);
    }

    void newestIsInSightAfterFiltering()
    {
        LogView view;
        view.resize(400, 100);
        view.show();
        for (int i = 0; i < 200; ++i)
            view.add("A", QString::number(i));
        view.verticalScrollBar()->setValue(0);
        view.setFilter({"1", {}});
        QCOMPARE(view.verticalScrollBar()->value(), view.verticalScrollBar()->maximum());
        QVERIFY(view.verticalScrollBar()->maximum() > 0);
    }

    void nobodyWritesIntoIt()
    {
        LogView view;
        view.add("A", "text");
        const QString before = view.toPlainText();
        QTest::keyClicks(&view, "typed");
        QCOMPARE(view.toPlainText(), before);
    }
};

ZAN_WIDGET_TEST_MAIN(TestLogView)
#include "tst_logview.moc"
