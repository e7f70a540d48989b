#include <logview.h>

#include <widgettestmain.h>

#include <QRegularExpression>
#include <QSignalSpy>

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
        QTEST(LogView::lineOf(time, sender, text), "line");
    }

    void messagesStandBelowEachOther()
    {
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
