#include <screenshots.h>
#include <watchdog.h>
#include <windowtexts.h>

#include <fixturefiles.h>
#include <fulldisk.h>
#include <reasons.h>
#include <widgettestmain.h>

#include <QDialog>
#include <QDir>
#include <QImage>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QSemaphore>
#include <QTableWidget>
#include <QTextEdit>

#include <chrono>
#include <thread>

/// The small helpers of a run without hands.
class TestHeadlessTools : public QObject
{
    Q_OBJECT

private slots:
    void boxIsReadAsAUserDoes()
    {
        QMessageBox box(QMessageBox::Information, "Title", "First line\n\nSecond line",
                        QMessageBox::Yes | QMessageBox::No);
        box.setInformativeText("<b>Do you <i>really</i> want?</b><ul><li>so</li></ul>");
        box.show();
        QCOMPARE(windowTexts(box), (QStringList{"First line", "Second line", "Do you really want?",
                                                "so", "[Yes] [No]"}));
    }

    void windowIsReadAsAUserDoes()
    {
        QDialog window;
        QLabel label("label", &window);
        QLabel hidden("hidden", &window);
        hidden.setVisible(false);
        QTableWidget table(1, 2, &window);
        auto* box = new QTableWidgetItem;
        box->setCheckState(Qt::Checked);
        table.setItem(0, 0, box);
        table.setItem(0, 1, new QTableWidgetItem("cell"));
        QTextEdit page(&window);
        page.setHtml("<h2>1</h2>2<br>3<br>4<br>5<br>6<br>7<br>8<br>9<br>10");
        QPushButton button("&Press", &window);
        button.setEnabled(false);
        QDialog inFront(&window);
        QLabel foreign("foreign", &inFront);
        window.show();
        inFront.show();
        QCOMPARE(windowTexts(window),
                 (QStringList{"label", "[x] | cell", "1", "2", "3", "4", "5", "6", "7", "8",
                              "... (2 more lines)", "[Press] (off)"}));
    }

    void picturesAreNumberedFromStartToStart()
    {
        const FixtureFolder folder;
        QDialog window;
        window.resize(30, 20);
        QString error;
        Screenshots first(folder.path("pictures"), folder.path("counter"));
        QCOMPARE(first.save(window, "one", &error).value_or("none"), QString("01-one.png"));
        Screenshots second(folder.path("pictures"), folder.path("counter"));
        QCOMPARE(second.save(window, "two", &error).value_or("none"), QString("02-two.png"));
        QVERIFY(error.isEmpty());
        QCOMPARE(QDir(folder.path("pictures")).entryList(QDir::Files),
                 (QStringList{"01-one.png", "02-two.png"}));
        QCOMPARE(QImage(folder.path("pictures/01-one.png")).size(), QSize(30, 20));
    }

    void earlierPicturesStay()
    {
        const FixtureFolder folder;
        QDialog window;
        folder.write("pictures/01-one.png", "of another system");
        folder.write("pictures/02-two.png", "of another system");
        QString error;
        Screenshots pictures(folder.path("pictures"), folder.path("counter"));
        QCOMPARE(pictures.save(window, "one", &error).value_or("none"), QString("03-one.png"));
        QCOMPARE(pictures.save(window, "two", &error).value_or("none"), QString("04-two.png"));
        QFile file(folder.path("pictures/01-one.png"));
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), QByteArray("of another system"));
    }

    void fullDiskLeavesNoPicture()
    {
        const FixtureFolder folder;
        QDialog window;
        Screenshots pictures(folder.path("pictures"), folder.path("counter"));
        QString error;
        std::optional<QString> file;
        {
            const FullDisk disk(10);
            file = pictures.save(window, "one", &error);
        }
        QVERIFY(!file);
        QCOMPARE(error, folder.path("pictures/01-one.png") + ": " + systemReason(EFBIG));
        QVERIFY(QDir(folder.path("pictures")).isEmpty());
    }

    void picturesAreTakenOnlyIfWanted()
    {
        QDialog window;
        QString error;
        QCOMPARE(Screenshots(QString(), "/nowhere/counter").save(window, "x", &error),
                 std::make_optional(QString()));
        QVERIFY(error.isEmpty());
        const FixtureFolder folder;
        const QString file = folder.write("file", "in the way");
        QVERIFY(!Screenshots(file, folder.path("counter")).save(window, "x", &error));
        QCOMPARE(error, file + "/01-x.png cannot be written");
    }

    void watchdogBarksWhenNothingMoves()
    {
        QSemaphore barked;
        QString place;
        Watchdog watchdog(std::chrono::milliseconds(50), [&](const QString& where) {
            place = where;
            barked.release();
        });
        watchdog.feed("Window");
        QVERIFY(barked.tryAcquire(1, patienceMs));
        QCOMPARE(place, QString("Window"));
    }

    void watchdogIsQuietWhileItIsFed()
    {
        bool hasBarked = false;
        {
            Watchdog watchdog(std::chrono::seconds(5), [&](const QString&) { hasBarked = true; });
            for (int i = 0; i < 20; ++i)
                watchdog.feed("Window");
        }
        QVERIFY(!hasBarked);
    }
};

ZAN_WIDGET_TEST_MAIN(TestHeadlessTools)
#include "tst_headlesstools.moc"
