#include "childprocess.h"
#include "modaldriver.h"
#include "widgettestmain.h"

/// Every case here fails, and with the words that CTest looks for: what shows that the support of
/// the other tests can fail them.
class FailingCases : public QObject
{
    Q_OBJECT

private slots:
    void unexpectedBox();
    void unexpectedDialog();
    void otherWindow();
    void wrongTitle();
    void wrongText();
    void wrongInformativeText();
    void wrongIcon();
    void wrongButtons();
    void wrongDefaultButton();
    void missingButton();
    void windowThatStaysOpen();
    void unexpectedWarning();
    void missingWarning();
    void processThatHangs();
    void functionThatHangs();
};

static ExpectedBox expectedBox()
{
    ExpectedBox box;
    box.title = QStringLiteral("title");
    box.text = QStringLiteral("text");
    box.icon = QMessageBox::Information;
    return box;
}

static void show(const ExpectedBox& expected)
{
    ModalDriver driver;
    driver.expect(expected);
    QMessageBox::information(nullptr, QStringLiteral("title"), QStringLiteral("text"));
}

void FailingCases::unexpectedBox()
{
    ModalDriver driver;
    QMessageBox::information(nullptr, QStringLiteral("title"), QStringLiteral("text"));
}

void FailingCases::unexpectedDialog()
{
    ModalDriver driver;
    QDialog dialog;
    dialog.setObjectName(QStringLiteral("name"));
    dialog.exec();
}

void FailingCases::otherWindow()
{
    ModalDriver driver;
    driver.expectDialog(QStringLiteral("expected"), [](QDialog& dialog) { dialog.reject(); });
    QDialog dialog;
    dialog.setObjectName(QStringLiteral("name"));
    dialog.exec();
}

void FailingCases::wrongTitle()
{
    ExpectedBox box = expectedBox();
    box.title = QStringLiteral("Title");
    show(box);
}

void FailingCases::wrongText()
{
    ExpectedBox box = expectedBox();
    box.text = QStringLiteral("text ");
    show(box);
}

void FailingCases::wrongInformativeText()
{
    ExpectedBox box = expectedBox();
    box.informativeText = QStringLiteral("more");
    show(box);
}

void FailingCases::wrongIcon()
{
    ExpectedBox box = expectedBox();
    box.icon = QMessageBox::Warning;
    show(box);
}

void FailingCases::wrongButtons()
{
    ExpectedBox box = expectedBox();
    box.buttons = QMessageBox::Ok | QMessageBox::Cancel;
    show(box);
}

void FailingCases::wrongDefaultButton()
{
    ExpectedBox box = expectedBox();
    box.defaultButton = QMessageBox::NoButton;
    show(box);
}

void FailingCases::missingButton()
{
    ExpectedBox box = expectedBox();
    box.press = QMessageBox::Yes;
    show(box);
}

void FailingCases::windowThatStaysOpen()
{
    ModalDriver driver(100);
    driver.expectDialog(QStringLiteral("name"), [](QDialog&) {});
    QDialog dialog;
    dialog.setObjectName(QStringLiteral("name"));
    dialog.exec();
}

void FailingCases::unexpectedWarning()
{
    qWarning("something is wrong");
}

void FailingCases::missingWarning()
{
    const ExpectedWarning warning(QStringLiteral("something is wrong"));
}

void FailingCases::processThatHangs()
{
    ChildProcess process;
    process.start(QStringLiteral("sh"),
                  {QStringLiteral("-c"), QStringLiteral("echo begun; read x")});
    QVERIFY(process.waitForReadyRead(patienceMs));
    QVERIFY(!process.waitForEnd(1));
    QCOMPARE(process.state(), QProcess::NotRunning);
}

void FailingCases::functionThatHangs()
{
    QTest::qSleep(patienceMs);
}

ZAN_WIDGET_TEST_MAIN(FailingCases)

#include "failingcases.moc"
