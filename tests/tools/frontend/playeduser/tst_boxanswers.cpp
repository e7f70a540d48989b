#include <boxanswers.h>

#include <widgettestmain.h>

#include <QPushButton>

/// What the played user makes of message boxes.
class TestBoxAnswers : public QObject
{
    Q_OBJECT

private slots:
    void boxesAreKnown_data();
    void boxesAreKnown();
    void buttonIsTheDefaultOneWhereTheExpectedIsMissing();
};

void TestBoxAnswers::boxesAreKnown_data()
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

void TestBoxAnswers::boxesAreKnown()
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

void TestBoxAnswers::buttonIsTheDefaultOneWhereTheExpectedIsMissing()
{
    QMessageBox box;
    box.setText("Do you really want to update?");
    box.addButton(QMessageBox::Cancel);
    box.addButton(QMessageBox::Retry);
    box.setDefaultButton(QMessageBox::Retry);
    QCOMPARE(box.standardButton(answerTo(box).button), QMessageBox::Retry);
}

ZAN_WIDGET_TEST_MAIN(TestBoxAnswers)
#include "tst_boxanswers.moc"
