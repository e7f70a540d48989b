#include <resultdialog.h>

#include <cuttexts.h>
#include <fixturefiles.h>
#include <widgettestmain.h>

#include <QApplication>
#include <QClipboard>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTableWidget>

namespace {

PlannedUpdate updateOf(const QString& device, Outcome outcome, const QString& found,
                       const QString& remark)
{
    PlannedUpdate update;
    update.device = device;
    update.from = "v3.1.0";
    update.planned = "v3.3.0";
    update.outcome = outcome;
    update.found = found;
    update.remark = remark;
    return update;
}

PlannedRun sampleRun()
{
    PlannedRun run;
    run.started = QDateTime(QDate(2026, 3, 1), QTime(12, 0));
    run.system = "192.168.7.20";
    run.updates = {
        updateOf("zan-master", Outcome::Done, "v3.3.0", ""),
        updateOf("zan-left", Outcome::Failed, "v3.1.0",
                 "It came back with the version from before."),
        updateOf("zan-right", Outcome::Unconfirmed, "",
                 "The run was broken off. It runs a new version only after a restart, and none is "
                 "known of."),
        updateOf("zan-back", Outcome::Skipped, "", "It was not ticked.")};
    return run;
}

QStringList rowTexts(const QTableWidget& table, int row)
{
    QStringList texts;
    for (int column = 0; column < table.columnCount(); ++column)
        texts += table.item(row, column)->text();
    return texts;
}

QPushButton* buttonOf(const QDialog& dialog, const char* name)
{
    return dialog.findChild<QPushButton*>(QLatin1String(name));
}

QString textOf(const QDialog& dialog, const char* name)
{
    return dialog.findChild<QLabel*>(QLatin1String(name))->text();
}

/// The dialog with sampleRun(), on view.
struct Shown
{
    explicit Shown(const PlannedRun& run = sampleRun())
    {
        dialog.showRun(run, "/runs/run.log");
        table = dialog.findChild<QTableWidget*>("table_results");
    }

    ResultDialog dialog;
    QTableWidget* table;
};

} // namespace

class TestResultDialog : public QObject
{
    Q_OBJECT

private slots:
    void resultsAreShownDeviceByDevice();
    void laterResultsTakeTheirPlace();
    void logFileIsOpened();
    void logFileThatNothingOpensIsTold();
    void logTextIsCopied();
    void dialogLeavesTheOthersUsable();
    void everythingIsReachedByKeyboard();
    void escapeCloses();
    void nothingIsCutOff_data();
    void nothingIsCutOff();
};

void TestResultDialog::resultsAreShownDeviceByDevice()
{
    const Shown shown;
    QCOMPARE(shown.dialog.windowTitle(), QString("Results of the Update"));
    QCOMPARE(textOf(shown.dialog, "label_summary"),
             QString("1 of 3 controllers run what was planned. Failed: zan-left. Unconfirmed: "
                     "zan-right."));
    QStringList titles;
    for (int column = 0; column < shown.table->columnCount(); ++column)
        titles += shown.table->horizontalHeaderItem(column)->text();
    QCOMPARE(titles,
             (QStringList{"Device", "Part", "From", "Planned", "Found", "Outcome", "Remark"}));
    QCOMPARE(shown.table->rowCount(), 4);
    QCOMPARE(rowTexts(*shown.table, 0), (QStringList{"zan-master", "Tracking software", "v3.1.0",
                                                     "v3.3.0", "v3.3.0", "done", ""}));
    QCOMPARE(rowTexts(*shown.table, 1),
             (QStringList{"zan-left", "Tracking software", "v3.1.0", "v3.3.0", "v3.1.0", "failed",
                          "It came back with the version from before."}));
    QCOMPARE(rowTexts(*shown.table, 2).mid(4, 2), (QStringList{"-", "unconfirmed"}));
    QCOMPARE(rowTexts(*shown.table, 3).mid(4), (QStringList{"-", "skipped", "It was not ticked."}));
    QVERIFY(shown.table->item(1, 5)->font().bold());
    QVERIFY(!shown.table->item(0, 5)->font().bold());
}

void TestResultDialog::laterResultsTakeTheirPlace()
{
    Shown shown;
    PlannedRun run = sampleRun();
    run.updates.resize(1);
    shown.dialog.showRun(run, "/runs/run.log");
    QCOMPARE(shown.table->rowCount(), 1);
    QCOMPARE(textOf(shown.dialog, "label_summary"),
             QString("1 of 1 controller runs what was planned."));
}

void TestResultDialog::logFileIsOpened()
{
    Shown shown;
    QUrl opened;
    shown.dialog.setOpen([&](const QUrl& url) {
        opened = url;
        return true;
    });
    buttonOf(shown.dialog, "pushButton_openLog")->click();
    QCOMPARE(opened, QUrl("file:///runs/run.log"));
    QCOMPARE(textOf(shown.dialog, "label_message"), QString("Opened: /runs/run.log"));
}

void TestResultDialog::logFileThatNothingOpensIsTold()
{
    Shown shown;
    shown.dialog.setOpen([](const QUrl&) { return false; });
    buttonOf(shown.dialog, "pushButton_openLog")->click();
    const auto* message = shown.dialog.findChild<QLabel*>("label_message");
    QVERIFY(message->isVisible());
    QCOMPARE(message->text(),
             QString("No program was found that opens the log file: /runs/run.log"));
    shown.dialog.showRun(sampleRun(), "/runs/run.log");
    QVERIFY(!message->isVisible());
}

void TestResultDialog::logTextIsCopied()
{
    const Shown shown;
    buttonOf(shown.dialog, "pushButton_copyLog")->click();
    QCOMPARE(QApplication::clipboard()->text(), sampleRun().logText());
    QCOMPARE(textOf(shown.dialog, "label_message"), QString("Copied."));
}

void TestResultDialog::dialogLeavesTheOthersUsable()
{
    const Shown shown;
    QVERIFY(shown.dialog.isVisible());
    QVERIFY(!shown.dialog.isModal());
}

void TestResultDialog::everythingIsReachedByKeyboard()
{
    Shown shown;
    QVERIFY(QTest::qWaitForWindowActive(&shown.dialog));
    QVERIFY(buttonOf(shown.dialog, "pushButton_close")->hasFocus());
    QSet<QString> reached;
    for (int i = 0; i < 8; ++i) {
        reached.insert(shown.dialog.focusWidget()->objectName());
        QTest::keyClick(shown.dialog.focusWidget(), Qt::Key_Tab);
    }
    for (const char* name :
         {"table_results", "pushButton_openLog", "pushButton_copyLog", "pushButton_close"})
        QVERIFY2(reached.contains(name), name);
    QCOMPARE(shown.table->accessibleName(), QString("Results"));
}

void TestResultDialog::escapeCloses()
{
    Shown shown;
    QVERIFY(QTest::qWaitForWindowActive(&shown.dialog));
    QTest::keyClick(&shown.dialog, Qt::Key_Escape);
    QVERIFY(!shown.dialog.isVisible());
    shown.dialog.showRun(sampleRun(), "/runs/run.log");
    QTest::keyClick(buttonOf(shown.dialog, "pushButton_close"), Qt::Key_Space);
    QVERIFY(!shown.dialog.isVisible());
}

void TestResultDialog::nothingIsCutOff_data()
{
    LargerFont::addRows();
}

void TestResultDialog::nothingIsCutOff()
{
    QFETCH(const double, factor);
    const LargerFont font(factor);
    const Shown shown;
    QVERIFY(QTest::qWaitForWindowExposed(const_cast<ResultDialog*>(&shown.dialog)));
    const QTableWidget& table = *shown.table;
    for (int row = 0; row < table.rowCount(); ++row) {
        for (int column = 0; column < table.columnCount(); ++column) {
            const QTableWidgetItem& item = *table.item(row, column);
            const QRect room = table.visualItemRect(&item);
            const QRect text =
                QFontMetrics(item.font())
                    .boundingRect(QRect(0, 0, room.width(), 10000), Qt::TextWordWrap, item.text());
            QVERIFY(text.width() <= room.width() && text.height() <= room.height());
        }
        QVERIFY(table.viewport()->rect().contains(
            table.visualItemRect(table.item(row, table.columnCount() - 1)).bottomLeft()));
    }
    QCOMPARE(cutTexts(shown.dialog), QStringList());
}

ZAN_WIDGET_TEST_MAIN(TestResultDialog)
#include "tst_resultdialog.moc"
