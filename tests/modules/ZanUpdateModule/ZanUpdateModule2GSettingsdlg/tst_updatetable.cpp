#include "dialogfixture.h"
#include "exposeddialog.h"
#include "fixtureimages.h"

#include <ZanController.h>
#include <ZanDisplay.h>
#include <comparing.h>
#include <markingtranslator.h>
#include <modaldriver.h>
#include <widgettestmain.h>

#include <QHeaderView>

ZAN_EXPOSE(from, &ZanDisplay::viFrom);
ZAN_EXPOSE(to, &ZanDisplay::viTo);

class UpdateTable : public QObject
{
    Q_OBJECT

private slots:
    void isSetUp();
    void showsRows_data();
    void showsRows();
    void showsAPlaceholder();
    void showsAChainInItsOrder();
    void showsVersions_data();
    void showsVersions();
    void givesCellsNothingOfTheirOwn();
    void emptyListGivesAnEmptyTable();
    void refillForgetsTheUsersTicks();

    void clickChangesTheTick();
    void clickBesideTheBoxReadsTheTick();
    void clickOnAGreyBoxReadsTheTick();
    void spaceBarDoesWhatAClickDoes();
    void spaceBarLeavesGreyBoxesAlone();
    void tabKeyLeavesTheTable();
    void clickInOtherColumnsDoesNothing_data();
    void clickInOtherColumnsDoesNothing();
    void selectionIsReadFromTheTable();
    void warnsOfAPartialCascade_data();
    void warnsOfAPartialCascade();
    void doesNotTranslateThePartialWarning();
    void cascadeIsMoreThanOneController();

    void columnsFollowTheWidth_data();
    void columnsFollowTheWidth();
    void resizeSetsTheColumns();
};

static ControllerImage firmwareImage()
{
    return releaseImage(VersionInfo(3, 1, 0), VersionInfo(1, 0), {blockOf(FirmwareBlock)});
}

static QStringList textsOfRow(const QTableWidget* table, int row)
{
    QStringList texts;
    for (int column = 0; column < table->columnCount(); ++column)
        texts += table->item(row, column)->text();
    return texts;
}

static Qt::ItemFlags defaultFlags()
{
    return QTableWidgetItem().flags();
}

static Qt::ItemFlags flagsOfATickableBox()
{
    return Qt::ItemIsUserCheckable | Qt::ItemIsEnabled;
}

// ---- Content

void UpdateTable::isSetUp()
{
    DialogFixture fixture;
    const QTableWidget* table = fixture.table();
    QStringList titles;
    for (int column = 0; column < table->columnCount(); ++column)
        titles += table->horizontalHeaderItem(column)->text();
    QCOMPARE(titles, (QStringList{"Update", "Type", "From", "To", "Possible?", "Reboot?"}));
    QCOMPARE(table->rowCount(), 0);
    QVERIFY(table->verticalHeader()->isHidden());
    QVERIFY(!table->horizontalHeader()->isHidden());
    QVERIFY(!table->horizontalHeader()->sectionsClickable());
    QVERIFY(table->horizontalHeader()->stretchLastSection());
    QCOMPARE(table->selectionMode(), QAbstractItemView::NoSelection);
    QCOMPARE(table->editTriggers(),
             QAbstractItemView::EditTriggers(QAbstractItemView::NoEditTriggers));
}

void UpdateTable::showsRows_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<bool>("isTicked");
    QTest::addColumn<QStringList>("texts");

    QTest::newRow("a firmware update")
        << updateFileBytes(firmwareImage()) << true
        << QStringList{"", "Firmware update (alpha)", "v3.0.0", "v3.1.0", "yes", "yes"};

    const ControllerImage system =
        releaseImage(VersionInfo(3, 0, 0), VersionInfo(1, 1),
                     {systemBlock(VersionInfo(1, 0), VersionInfo(1, 0))});
    QTest::newRow("a system update")
        << updateFileBytes(system) << true
        << QStringList{"", "System update (alpha)", "v1.0", "v1.1", "yes", "no"};

    ControllerImage notYet = firmwareImage();
    notYet.minPt = VersionInfo(3, 0, 1);
    QTest::newRow("an update that is not possible yet has a grey box and reads as any other")
        << updateFileBytes(notYet) << false
        << QStringList{"", "Firmware update (alpha)", "v3.0.0", "v3.1.0", "no", "yes"};

    QTest::newRow("a camera update")
        << updateFileBytes(cameraFile({0x0901}, VersionInfo(1, 1, 0))) << true
        << QStringList{"",   "Camera firmware update (Camera C100)", "v1.0.0", "v1.1.0", "yes",
                       "yes"};
}

void UpdateTable::showsRows()
{
    QFETCH(const QByteArray, file);
    QFETCH(const bool, isTicked);
    DialogFixture fixture;
    scriptMaster(&fixture.channel, {});
    scriptCameras(&fixture.channel, {ScriptedCamera()});
    fixture.programFolder().deliverUpdate(QStringLiteral("file.VX2znimg"), file);
    updateTablewidget(fixture.dialog);

    QCOMPARE(fixture.table()->rowCount(), 1);
    QTEST(textsOfRow(fixture.table(), 0), "texts");
    const QTableWidgetItem* box = fixture.table()->item(0, 0);
    QCOMPARE(box->checkState(), isTicked ? Qt::Checked : Qt::Unchecked);
    QCOMPARE(box->data(Qt::CheckStateRole).toInt(), isTicked ? 2 : 0);
    QCOMPARE(box->flags(), isTicked ? flagsOfATickableBox() : Qt::ItemFlags(Qt::NoItemFlags));
}

void UpdateTable::showsAPlaceholder()
{
    DialogFixture fixture;
    ZanDisplay placeholder(nullptr, nullptr);
    placeholder.setToBeUpdated(Qt::Checked);
    fixture.table()->setRowCount(1);
    fillTableRow(fixture.dialog, 0, placeholder);
    QCOMPARE(textsOfRow(fixture.table(), 0),
             (QStringList{"", "- no update available -", "", "", "", ""}));
    QCOMPARE(fixture.table()->item(0, 0)->checkState(), Qt::Unchecked);
    QCOMPARE(fixture.table()->item(0, 0)->flags(), Qt::ItemFlags(Qt::NoItemFlags));
}

static void deliverChain(DialogFixture* fixture)
{
    const auto deliver = [&](const char* name, const VersionInfo& from, const VersionInfo& to) {
        fixture->deliver(QLatin1String(name),
                         releaseImage(to, VersionInfo(1, 0), {blockFrom(from, FirmwareBlock)}));
    };
    deliver("b", VersionInfo(3, 0, 0), VersionInfo(3, 1, 0));
    deliver("a", VersionInfo(3, 1, 0), VersionInfo(3, 2, 0));
}

static ScriptedSlave slave()
{
    ScriptedSlave slave;
    slave.address = "10.0.0.2";
    slave.controller.hostname = "beta";
    return slave;
}

void UpdateTable::showsAChainInItsOrder()
{
    DialogFixture fixture;
    scriptMaster(&fixture.channel, {});
    scriptSlaves(&fixture.channel, {slave()});
    deliverChain(&fixture);
    updateTablewidget(fixture.dialog);
    QStringList rows;
    for (int row = 0; row < fixture.table()->rowCount(); ++row)
        rows += textsOfRow(fixture.table(), row).mid(1, 3).join(QLatin1Char(' '));
    QCOMPARE(rows, (QStringList{"Firmware update (alpha) v3.0.0 v3.1.0",
                                "Firmware update (beta) v3.0.0 v3.1.0",
                                "Firmware update (alpha) v3.1.0 v3.2.0",
                                "Firmware update (beta) v3.1.0 v3.2.0"}));
}

void UpdateTable::showsVersions_data()
{
    QTest::addColumn<VersionInfo>("version");
    QTest::addColumn<QString>("text");
    QTest::newRow("no version") << VersionInfo() << "";
    QTest::newRow("a major part") << VersionInfo(3) << "v3";
    QTest::newRow("two parts") << VersionInfo(3, 1) << "v3.1";
    QTest::newRow("three parts") << VersionInfo(3, 1, 7) << "v3.1.7";
    QTest::newRow("zeros") << VersionInfo(0, 0, 0) << "v0.0.0";
    QTest::newRow("a patch without a minor part") << VersionInfo(3, -1, 7) << "v3";
    QTest::newRow("parts behind an absent major one") << VersionInfo(-1, 3, 4) << "";
}

void UpdateTable::showsVersions()
{
    QFETCH(const VersionInfo, version);
    QFETCH(const QString, text);
    DialogFixture fixture;
    ZanDisplay row(nullptr, nullptr);
    from(row) = version;
    to(row) = version;
    fixture.table()->setRowCount(1);
    fillTableRow(fixture.dialog, 0, row);
    QCOMPARE(textsOfRow(fixture.table(), 0).mid(2, 2), (QStringList{text, text}));
}

void UpdateTable::givesCellsNothingOfTheirOwn()
{
    DialogFixture fixture;
    const auto* row = fixture.addRow(fixture.addMaster({}), firmwareImage());
    fixture.table()->setRowCount(1);
    fillTableRow(fixture.dialog, 0, *row);
    for (int column = 0; column < 6; ++column) {
        const QTableWidgetItem* item = fixture.table()->item(0, column);
        for (const int role :
             {Qt::DecorationRole, Qt::ToolTipRole, Qt::StatusTipRole, Qt::WhatsThisRole,
              Qt::FontRole, Qt::TextAlignmentRole, Qt::BackgroundRole, Qt::ForegroundRole})
            QVERIFY(!item->data(role).isValid());
        if (column > 0) {
            QCOMPARE(item->flags(), defaultFlags());
            QVERIFY(!item->data(Qt::CheckStateRole).isValid());
        }
    }
}

void UpdateTable::emptyListGivesAnEmptyTable()
{
    DialogFixture fixture;
    fixture.table()->setRowCount(3);
    fixture.table()->horizontalHeader()->setStretchLastSection(false);
    updateTablewidget(fixture.dialog);
    QCOMPARE(fixture.table()->rowCount(), 0);
    QCOMPARE(fixture.table()->columnCount(), 6);
    QCOMPARE(fixture.table()->horizontalHeader()->sectionResizeMode(0),
             QHeaderView::ResizeToContents);
    QVERIFY(fixture.table()->horizontalHeader()->stretchLastSection());
}

void UpdateTable::refillForgetsTheUsersTicks()
{
    DialogFixture fixture;
    scriptMaster(&fixture.channel, {});
    fixture.deliver(QStringLiteral("image"), firmwareImage());
    updateTablewidget(fixture.dialog);
    fixture.table()->item(0, 0)->setCheckState(Qt::Unchecked);
    clickCell(fixture.dialog, 0, 0);
    QVERIFY(!fixture.inventory()->listZanDisplay.first()->toBeUpdated());

    fixture.channel.takeLog();
    updateTablewidget(fixture.dialog);
    QVERIFY(fixture.inventory()->listZanDisplay.first()->toBeUpdated());
    QCOMPARE(fixture.table()->item(0, 0)->checkState(), Qt::Checked);
    // The controllers are asked again.
    QCOMPARE(
        fixture.channel.log(),
        (QStringList{R"(get_string "system hostname")", R"(get_string "system controller_version")",
                     R"(get_string "system version")", R"(get_int "system model")",
                     R"(get_string "system model_description")",
                     R"(get_int "system controller_serial")",
                     R"(get_string "system extra motherboard")",
                     R"(get_int "cascade number_of_connected_slaves")"}));
}

// ---- Clicks

/// One row for each letter, filled into the table: M is a master, S a slave, C a camera; the
/// small letter stands for a row that the inventory did not mark.
static void addRows(DialogFixture* fixture, const QByteArray& kinds)
{
    for (const char kind : kinds) {
        const QByteArray upper = QByteArray(1, kind).toUpper();
        ZanDisplay* row = nullptr;
        if (upper == "C")
            row = fixture->addCameraRow(cameraFile({0x0a01}, VersionInfo(1, 1, 0)));
        else
            row =
                fixture->addRow(upper == "S" ? fixture->addSlave(slave()) : fixture->addMaster({}),
                                firmwareImage());
        row->setToBeUpdated(upper.at(0) == kind ? Qt::Checked : Qt::Unchecked);
    }
    const QList<ZanDisplay*>& rows = fixture->inventory()->listZanDisplay;
    fixture->table()->setRowCount(rows.size());
    for (int i = 0; i < rows.size(); ++i)
        fillTableRow(fixture->dialog, i, *rows.at(i));
}

static bool isSelected(DialogFixture* fixture, int row)
{
    return fixture->inventory()->listZanDisplay.at(row)->toBeUpdated();
}

/// Where the mouse meets the cell: the box, or the corner beside it.
static QPoint pointIn(QTableWidget* table, int row, int column, bool isOnBox)
{
    QStyleOptionViewItem option;
    option.initFrom(table);
    option.rect = table->visualItemRect(table->item(row, column));
    option.features = QStyleOptionViewItem::HasCheckIndicator;
    const QRect box =
        table->style()->subElementRect(QStyle::SE_ItemViewItemCheckIndicator, &option, table);
    return isOnBox ? box.center() : option.rect.bottomRight() - QPoint(1, 1);
}

static void clickAt(DialogFixture* fixture, int row, int column, bool isOnBox)
{
    QTest::mouseClick(fixture->table()->viewport(), Qt::LeftButton, Qt::NoModifier,
                      pointIn(fixture->table(), row, column, isOnBox));
}

void UpdateTable::clickChangesTheTick()
{
    DialogFixture fixture;
    addRows(&fixture, "M");
    fixture.dialog.show();
    for (const bool isTicked : {false, true}) {
        clickAt(&fixture, 0, 0, true);
        QCOMPARE(fixture.table()->item(0, 0)->checkState(), isTicked ? Qt::Checked : Qt::Unchecked);
        QCOMPARE(isSelected(&fixture, 0), isTicked);
        QCOMPARE(fixture.updateButton()->isEnabled(), isTicked);
    }
}

void UpdateTable::clickBesideTheBoxReadsTheTick()
{
    DialogFixture fixture;
    addRows(&fixture, "M");
    fixture.inventory()->listZanDisplay.first()->setToBeUpdated(Qt::Unchecked);
    fixture.updateButton()->setEnabled(false);
    fixture.dialog.show();
    clickAt(&fixture, 0, 0, false);
    QCOMPARE(fixture.table()->item(0, 0)->checkState(), Qt::Checked);
    QVERIFY(isSelected(&fixture, 0));
    QVERIFY(fixture.updateButton()->isEnabled());
}

void UpdateTable::clickOnAGreyBoxReadsTheTick()
{
    DialogFixture fixture;
    addRows(&fixture, "m");
    fixture.inventory()->listZanDisplay.first()->setToBeUpdated(Qt::Checked);
    fixture.updateButton()->setEnabled(true);
    fixture.dialog.show();
    clickAt(&fixture, 0, 0, true);
    // The user can never tick it, but the click runs its steps.
    QCOMPARE(fixture.table()->item(0, 0)->checkState(), Qt::Unchecked);
    QVERIFY(!isSelected(&fixture, 0));
    QVERIFY(!fixture.updateButton()->isEnabled());
}

void UpdateTable::spaceBarLeavesGreyBoxesAlone()
{
    DialogFixture fixture;
    addRows(&fixture, "m");
    fixture.dialog.show();
    fixture.dialog.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&fixture.dialog));
    fixture.table()->setFocus();
    fixture.table()->setCurrentCell(0, 0);
    QTest::keyClick(fixture.table(), Qt::Key_Space);
    QCOMPARE(fixture.table()->item(0, 0)->checkState(), Qt::Unchecked);
    QVERIFY(!isSelected(&fixture, 0));
}

void UpdateTable::tabKeyLeavesTheTable()
{
    DialogFixture fixture;
    addRows(&fixture, "M");
    fixture.dialog.show();
    fixture.dialog.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&fixture.dialog));
    fixture.table()->setFocus();
    QTest::keyClick(fixture.table(), Qt::Key_Tab);
    QVERIFY(!fixture.table()->hasFocus());
}

void UpdateTable::clickInOtherColumnsDoesNothing_data()
{
    QTest::addColumn<int>("column");
    for (int column = 1; column < 6; ++column)
        QTest::addRow("column %d", column) << column;
}

void UpdateTable::clickInOtherColumnsDoesNothing()
{
    QFETCH(const int, column);
    DialogFixture fixture;
    addRows(&fixture, "Ms");
    fixture.inventory()->listZanDisplay.first()->setToBeUpdated(Qt::Unchecked);
    fixture.updateButton()->setEnabled(false);
    ModalDriver driver;
    fixture.dialog.show();
    clickAt(&fixture, 0, column, false);
    QVERIFY(!isSelected(&fixture, 0));
    QVERIFY(!fixture.updateButton()->isEnabled());
    QCOMPARE(driver.seen(), QStringList());
}

void UpdateTable::selectionIsReadFromTheTable()
{
    DialogFixture fixture;
    QVERIFY(!isMinOneUpdateSelected(fixture.dialog));
    addRows(&fixture, "mM");
    QVERIFY(isMinOneUpdateSelected(fixture.dialog));
    fixture.table()->item(1, 0)->setCheckState(Qt::Unchecked);
    QVERIFY(isSelected(&fixture, 1));
    QVERIFY(!isMinOneUpdateSelected(fixture.dialog));
}

void UpdateTable::warnsOfAPartialCascade_data()
{
    QTest::addColumn<QByteArray>("rows");
    QTest::addColumn<QByteArray>("clicks");
    QTest::addColumn<QByteArray>("warnings");

    // A click is the row's number with what becomes of its tick: + on, - off, = nothing. A warning
    // that it brings is a !, and a . stands for none.
    const auto row = [](const char* name, const char* rows, const char* clicks,
                        const char* warnings) {
        QTest::newRow(name) << QByteArray(rows) << QByteArray(clicks) << QByteArray(warnings);
    };
    row("one of two rows is taken off", "MS", "1-", "!");
    row("all rows are taken off", "MS", "1-0-", "!.");
    row("all are taken off and one is put back", "MS", "1-0-0+", "!.!");
    row("all are ticked again", "MS", "1-1+", "!.");
    row("all stay ticked", "MS", "0=", ".");
    row("it comes again at every click while it holds", "MS", "1-1=0=", "!!!");
    row("a grey row counts among the rows", "MSs", "0=1=2=", "!!!");
    row("a slave alone is a cascade", "SS", "0-", "!");
    row("a row without a controller is passed over", "CMS", "0-", "!");
    row("a system without slaves, however many rows", "MMM", "0-1-", "..");
    row("cameras have no slaves", "CC", "0-", ".");
    row("a cascade with one row", "S", "0-0+", "..");
}

static ExpectedBox partialWarning()
{
    ExpectedBox box;
    box.title = QStringLiteral("Warning");
    box.icon = QMessageBox::Warning;
    box.text =
        QStringLiteral("You intend to update the Cascaded System only partially!\n\nThere's the "
                       "risk of creating an inconsistent system\nand the Cascaded System might "
                       "not work properly thereafter!");
    return box;
}

void UpdateTable::spaceBarDoesWhatAClickDoes()
{
    DialogFixture fixture;
    addRows(&fixture, "MS");
    fixture.dialog.show();
    fixture.dialog.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&fixture.dialog));
    fixture.table()->setFocus();
    fixture.table()->setCurrentCell(1, 3);
    ModalDriver driver;
    driver.expect(partialWarning());
    QTest::keyClick(fixture.table(), Qt::Key_Space);
    QCOMPARE(fixture.table()->item(1, 0)->checkState(), Qt::Unchecked);
    QVERIFY(isSelected(&fixture, 0));
    QVERIFY(!isSelected(&fixture, 1));
    fixture.dialog.activateWindow(); // the box took that
    QVERIFY(QTest::qWaitForWindowActive(&fixture.dialog));
    QTest::keyClick(fixture.table(), Qt::Key_Space);
    QVERIFY(isSelected(&fixture, 1));
    QVERIFY2(driver.isDone(), qPrintable(driver.missing()));
}

void UpdateTable::warnsOfAPartialCascade()
{
    QFETCH(const QByteArray, rows);
    QFETCH(const QByteArray, clicks);
    DialogFixture fixture;
    addRows(&fixture, rows);
    QByteArray warnings;
    for (int i = 0; i < clicks.size(); i += 2) {
        const int row = clicks.at(i) - '0';
        QTableWidgetItem* box = fixture.table()->item(row, 0);
        if (clicks.at(i + 1) != '=')
            box->setCheckState(clicks.at(i + 1) == '+' ? Qt::Checked : Qt::Unchecked);
        const Qt::CheckState state = box->checkState();
        ModalDriver driver;
        driver.expect(partialWarning());
        clickCell(fixture.dialog, row, 0);
        warnings += driver.isDone() ? '!' : '.';
        // The warning stops nothing.
        QCOMPARE(box->checkState(), state);
        QCOMPARE(isSelected(&fixture, row), state == Qt::Checked);
        QCOMPARE(fixture.updateButton()->isEnabled(), isMinOneUpdateSelected(fixture.dialog));
    }
    QTEST(warnings, "warnings");
}

void UpdateTable::doesNotTranslateThePartialWarning()
{
    const MarkingTranslator translator("ZanUpdateModule2GSettingsdlg");
    DialogFixture fixture;
    addRows(&fixture, "MS");
    fixture.table()->item(1, 0)->setCheckState(Qt::Unchecked);
    ModalDriver driver;
    driver.expect(partialWarning());
    clickCell(fixture.dialog, 1, 0);
    QVERIFY2(driver.isDone(), qPrintable(driver.missing()));
}

void UpdateTable::cascadeIsMoreThanOneController()
{
    DialogFixture fixture;
    scriptMaster(&fixture.channel, {});
    QVERIFY(!isCascade(fixture.dialog));
    scriptSlaves(&fixture.channel, {slave()});
    fixture.refreshedInventory();
    QVERIFY(isCascade(fixture.dialog));
}

// ---- Widths

void UpdateTable::columnsFollowTheWidth_data()
{
    QTest::addColumn<int>("width");
    QTest::addColumn<QVector<int>>("widths");
    QTest::newRow("a round width") << 1000 << QVector<int>{490, 100, 100, 100};
    QTest::newRow("fractions are cut") << 999 << QVector<int>{489, 99, 99, 99};
    QTest::newRow("a narrow table") << 501 << QVector<int>{245, 50, 50, 50};
    QTest::newRow("a wide table") << 2001 << QVector<int>{980, 200, 200, 200};
}

static QVector<int> widthsOfColumns(const QTableWidget* table)
{
    QVector<int> widths;
    for (int column = 1; column < 5; ++column)
        widths += table->columnWidth(column);
    return widths;
}

void UpdateTable::columnsFollowTheWidth()
{
    QFETCH(const int, width);
    DialogFixture fixture;
    scriptMaster(&fixture.channel, {});
    fixture.deliver(QStringLiteral("image"), firmwareImage());
    updateTablewidget(fixture.dialog);
    fixture.table()->resize(width, 300);
    setTableColumnWidth(fixture.dialog);
    QTEST(widthsOfColumns(fixture.table()), "widths");
}

void UpdateTable::resizeSetsTheColumns()
{
    DialogFixture fixture;
    scriptMaster(&fixture.channel, {});
    fixture.deliver(QStringLiteral("image"), firmwareImage());
    updateTablewidget(fixture.dialog);
    fixture.dialog.show();
    const int boxWidth = fixture.table()->columnWidth(0);
    for (const int width : {900, 1300, 1000}) {
        fixture.dialog.resize(width, 600);
        const int tableWidth = fixture.table()->width();
        const int tenth = tableWidth / 10;
        QCOMPARE(widthsOfColumns(fixture.table()),
                 (QVector<int>{tableWidth * 49 / 100, tenth, tenth, tenth}));
        // The first column keeps fitting its content, and the last one takes the rest.
        QCOMPARE(fixture.table()->columnWidth(0), boxWidth);
        QCOMPARE(fixture.table()->horizontalHeader()->length(),
                 fixture.table()->viewport()->width());
    }
}

ZAN_WIDGET_TEST_MAIN(UpdateTable)

#include "tst_updatetable.moc"
