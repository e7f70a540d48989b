#include <boxanswers.h>
#include <devicetables.h>

#include <widgettestmain.h>

#include <QPushButton>

class BoxAnswersTest : public QObject
{
    Q_OBJECT

private slots:
    void boxesAreKnown_data();
    void boxesAreKnown();
    void buttonIsTheDefaultOneWhereTheExpectedIsMissing();
    void camerasTellWhatTheyNeed_data();
    void camerasTellWhatTheyNeed();
};

void BoxAnswersTest::boxesAreKnown_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("button");
    QTest::addColumn<QString>("picture");
    QTest::addColumn<bool>("isRefusal");
    QTest::addColumn<bool>("asksForPower");
    QTest::newRow("the frontend's own by its name, in any language")
        << "deliveryRefused"
        << "Anders" << int(QMessageBox::Ok) << "delivery-refused" << true << false;
    QTest::newRow("a warning of the frontend that lets the module in")
        << "deliveryDeparts"
        << "Anders" << int(QMessageBox::Ok) << "delivery-departs" << false << false;
    QTest::newRow("the module's by its text")
        << ""
        << "Do you really want to update?" << int(QMessageBox::Yes) << "confirm-update" << false
        << false;
    QTest::newRow("one that asks for a restart by hand")
        << ""
        << "VORNIX3 will be closed now." << int(QMessageBox::Ok) << "restart-by-hand" << false
        << true;
    QTest::newRow("a failure") << ""
                               << "Update failed." << int(QMessageBox::Ok) << "update-failed"
                               << true << false;
    QTest::newRow("an unknown one")
        << ""
        << "Anything" << int(QMessageBox::Ok) << "message" << false << false;
}

void BoxAnswersTest::boxesAreKnown()
{
    QFETCH(const QString, name);
    QFETCH(const QString, text);
    QFETCH(const int, button);
    QMessageBox box;
    box.setObjectName(name);
    box.setText(text);
    box.addButton(static_cast<QMessageBox::StandardButton>(button));
    box.addButton(QMessageBox::No);
    const BoxAnswer answer = answerTo(box);
    QCOMPARE(int(box.standardButton(answer.button)), button);
    QTEST(answer.pictureName, "picture");
    QTEST(answer.isRefusal, "isRefusal");
    QTEST(answer.asksForPower, "asksForPower");
}

void BoxAnswersTest::buttonIsTheDefaultOneWhereTheExpectedIsMissing()
{
    QMessageBox box;
    box.setText("Do you really want to update?");
    box.addButton(QMessageBox::Cancel);
    box.addButton(QMessageBox::Retry);
    box.setDefaultButton(QMessageBox::Retry);
    QCOMPARE(box.standardButton(answerTo(box).button), QMessageBox::Retry);
}

void BoxAnswersTest::camerasTellWhatTheyNeed_data()
{
    QTest::addColumn<bool>("isRunning");
    QTest::addColumn<bool>("isFound");
    QTest::addColumn<QString>("staged");
    QTest::addColumn<int>("need");
    QTest::newRow("one that is ready") << true << true << "" << int(DeviceNeed::Nothing);
    QTest::newRow("one that received an update")
        << true << true << "v1.4.0" << int(DeviceNeed::PowerCycle);
    QTest::newRow("one that was power-cycled")
        << true << false << "" << int(DeviceNeed::HardwareSearch);
    QTest::newRow("one that did not come back")
        << false << false << "v1.4.0" << int(DeviceNeed::Nothing);
}

void BoxAnswersTest::camerasTellWhatTheyNeed()
{
    QFETCH(const bool, isRunning);
    QFETCH(const bool, isFound);
    QFETCH(const QString, staged);
    CameraState camera;
    camera.running = isRunning;
    camera.found = isFound;
    camera.stagedVersion = staged;
    const QVector<CameraState> cameras = {camera};
    const DeviceTable<CameraState> table(
        [&]() -> const QVector<CameraState>& { return cameras; },
        {{"Camera", "", [](const CameraState& it) { return it.serial; }, {}}}, nullptr);
    QTEST(table.data(table.index(0, 0), needRole).toInt(), "need");
}

ZAN_WIDGET_TEST_MAIN(BoxAnswersTest)
#include "tst_boxanswers.moc"
