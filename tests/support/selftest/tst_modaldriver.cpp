#include "modaldriver.h"
#include "widgettestmain.h"

#include <QPushButton>

class TestModalDriver : public QObject
{
    Q_OBJECT

private slots:
    void pressesTheButtonThatIsAskedFor();
    void closesABoxWithEscape();
    void takesWindowsInTheirOrder();
    void takesAWindowInsideAWindow();
    void takesTheSameDialogTwice();
    void meetsAWindowBeforeItsTimersRunOut();
    void saysWhatHasNotCome();
};

static ExpectedBox yesOrNo(const QString& text, QMessageBox::StandardButton press)
{
    ExpectedBox box;
    box.title = QStringLiteral("VORNIX3");
    box.text = text;
    box.informativeText = QStringLiteral("Really?");
    box.icon = QMessageBox::Question;
    box.buttons = QMessageBox::Yes | QMessageBox::No;
    box.defaultButton = QMessageBox::No;
    box.press = press;
    return box;
}

static int ask(const QString& text)
{
    QMessageBox box(QMessageBox::Question, QStringLiteral("VORNIX3"), text,
                    QMessageBox::Yes | QMessageBox::No);
    box.setInformativeText(QStringLiteral("Really?"));
    box.setDefaultButton(QMessageBox::No);
    return box.exec();
}

void TestModalDriver::pressesTheButtonThatIsAskedFor()
{
    ModalDriver driver;
    driver.expect(yesOrNo(QStringLiteral("one"), QMessageBox::Yes));
    QCOMPARE(ask(QStringLiteral("one")), int(QMessageBox::Yes));
    QVERIFY2(driver.isDone(), qPrintable(driver.missing()));
}

void TestModalDriver::closesABoxWithEscape()
{
    ModalDriver driver;
    ExpectedBox box;
    box.title = QStringLiteral("VORNIX3");
    box.text = QStringLiteral("Go on?");
    box.icon = QMessageBox::Warning;
    box.buttons = QMessageBox::Ok | QMessageBox::Cancel;
    box.press = QMessageBox::NoButton;
    driver.expect(box);
    const int pressed = QMessageBox::warning(nullptr, box.title, box.text, box.buttons);
    QCOMPARE(pressed, int(QMessageBox::Cancel));
    QVERIFY2(driver.isDone(), qPrintable(driver.missing()));
}

void TestModalDriver::takesWindowsInTheirOrder()
{
    ModalDriver driver;
    driver.expect(yesOrNo(QStringLiteral("one"), QMessageBox::Yes));
    driver.expect(yesOrNo(QStringLiteral("two"), QMessageBox::No));
    QCOMPARE(ask(QStringLiteral("one")), int(QMessageBox::Yes));
    QCOMPARE(ask(QStringLiteral("two")), int(QMessageBox::No));
    QVERIFY2(driver.isDone(), qPrintable(driver.missing()));
    QCOMPARE(driver.seen(), (QStringList{QStringLiteral("one"), QStringLiteral("two")}));
}

void TestModalDriver::takesAWindowInsideAWindow()
{
    ModalDriver driver;
    int inner = QMessageBox::NoButton;
    driver.expectDialog(QStringLiteral("outer"), [&](QDialog& dialog) {
        inner = ask(QStringLiteral("inner"));
        dialog.accept();
    });
    driver.expect(yesOrNo(QStringLiteral("inner"), QMessageBox::Yes));

    QDialog dialog;
    dialog.setObjectName(QStringLiteral("outer"));
    QCOMPARE(dialog.exec(), int(QDialog::Accepted));
    QCOMPARE(inner, int(QMessageBox::Yes));
    QVERIFY2(driver.isDone(), qPrintable(driver.missing()));
}

void TestModalDriver::takesTheSameDialogTwice()
{
    QDialog dialog;
    dialog.setObjectName(QStringLiteral("again"));
    ModalDriver driver;
    driver.expectDialog(QStringLiteral("again"), [](QDialog& window) { window.done(3); });
    driver.expectDialog(QStringLiteral("again"), [](QDialog& window) { window.done(4); });
    QCOMPARE(dialog.exec(), 3);
    QCOMPARE(dialog.exec(), 4);
    QVERIFY2(driver.isDone(), qPrintable(driver.missing()));
}

// On a busy machine a window takes its time to open, and what it does by itself is due by then.
void TestModalDriver::meetsAWindowBeforeItsTimersRunOut()
{
    ModalDriver driver;
    QStringList order;
    QDialog dialog;
    dialog.setObjectName(QStringLiteral("name"));
    driver.expectDialog(QStringLiteral("name"), [&](QDialog&) { order += "user"; });
    QTimer::singleShot(1, &dialog, [&] {
        order += "timer";
        dialog.reject();
    });
    QTest::qSleep(20); // longer than the timer
    dialog.exec();
    QCOMPARE(order, (QStringList{"user", "timer"}));
}

void TestModalDriver::saysWhatHasNotCome()
{
    ModalDriver driver;
    driver.expect(yesOrNo(QStringLiteral("one"), QMessageBox::Yes));
    driver.expectDialog(QStringLiteral("two"), [](QDialog&) {});
    QVERIFY(!driver.isDone());
    QCOMPARE(driver.missing(), QStringLiteral("windows that did not come: one | two"));
}

ZAN_WIDGET_TEST_MAIN(TestModalDriver)

#include "tst_modaldriver.moc"
