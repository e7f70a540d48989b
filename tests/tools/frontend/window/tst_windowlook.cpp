#include <windowlook.h>

#include <fixturefiles.h>
#include <fulldisk.h>
#include <reasons.h>
#include <testmain.h>

class TestWindowLook : public QObject
{
    Q_OBJECT

private slots:
    void lookIsReadAsItWasWritten()
    {
        const FixtureFolder folder;
        const QString file = folder.path("window.json");
        QString error;
        QVERIFY2(writeWindowLook(file, {{1234, 567}, true, true}, &error), qPrintable(error));
        const std::optional<WindowLook> look = readWindowLook(file, &error);
        QVERIFY2(look, qPrintable(error));
        QCOMPARE(look->size, QSize(1234, 567));
        QVERIFY(look->isMaximized && look->isDark);
        QVERIFY(writeWindowLook(file, {{1, 2}, false, false}, &error));
        QVERIFY(!readWindowLook(file, &error)->isMaximized);
        QVERIFY(!readWindowLook(file, &error)->isDark);
    }

    void noFileIsNoError()
    {
        const FixtureFolder folder;
        QString error;
        QVERIFY(!readWindowLook(folder.path("window.json"), &error));
        QCOMPARE(error, QString());
    }

    void whatIsNoLookIsTold_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("reason");
        const QByteArray whole =
            R"({"format": "frontend-window-1", "width": 9, "height": 9, "isDark": true})";
        QTest::newRow("nothing") << QByteArray() << "line 1: illegal value";
        QTest::newRow("cut off") << whole.left(20) << "line 1: unterminated string";
        QTest::newRow("another format") << QByteArray(whole).replace("window-1", "window-2")
                                        << "format: must be one of \"frontend-window-1\"";
        QTest::newRow("a size without a height")
            << QByteArray(whole).replace("height", "depth") << "height: missing";
        QTest::newRow("a size that is none")
            << QByteArray(whole).replace("\"width\": 9", "\"width\": 0")
            << "width: must be a whole number from 1 to 100000";
    }

    void whatIsNoLookIsTold()
    {
        QFETCH(const QByteArray, content);
        QFETCH(const QString, reason);
        const FixtureFolder folder;
        const QString file = folder.write("window.json", content);
        QString error;
        QVERIFY(!readWindowLook(file, &error));
        QCOMPARE(error, file + ": " + reason);
    }

    void fullDiskLeavesTheEarlierLook()
    {
        const FixtureFolder folder;
        const QString file = folder.path("window.json");
        QString error;
        QVERIFY(writeWindowLook(file, {{800, 600}, false, true}, &error));
        {
            const FullDisk disk(10);
            QVERIFY(!writeWindowLook(file, {{900, 700}, false, false}, &error));
        }
        QCOMPARE(error, file + ": " + systemReason(EFBIG));
        QCOMPARE(readWindowLook(file, &error)->size, QSize(800, 600));
    }
};

ZAN_TEST_MAIN(TestWindowLook)
#include "tst_windowlook.moc"
