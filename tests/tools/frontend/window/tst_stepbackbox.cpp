#include <stepbackbox.h>

#include <widgettestmain.h>

#include <QMessageBox>
#include <QPushButton>
#include <QTimer>

namespace {

const QVector<StepBack> oneStep = {{"zan-<b>master", Part::ControllerFirmware, "v1.4", "v1.3"}};

/// What the box shows, and then what @p act does with it.
template <typename Act>
bool answer(const QVector<StepBack>& steps, QWidget& window, const Act& act)
{
    QTimer::singleShot(0, [&] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (!box)
            qFatal("there is no box");
        act(*box);
    });
    return allowsStepsBack(steps, &window);
}

QAbstractButton* buttonOf(const QMessageBox& box, const QString& text)
{
    for (QAbstractButton* button : box.buttons()) {
        if (button->text() == text)
            return button;
    }
    return nullptr;
}

} // namespace

class TestStepBackBox : public QObject
{
    Q_OBJECT

private slots:
    void boxTellsWhatWouldBecomeOlder()
    {
        QWidget window;
        QStringList shown;
        answer(oneStep, window, [&](QMessageBox& box) {
            shown = QStringList{box.windowTitle(), box.text(), box.informativeText(),
                                box.defaultButton()->text()};
            QCOMPARE(box.textFormat(), Qt::PlainText);
            QCOMPARE(box.icon(), QMessageBox::Warning);
            QCOMPARE(box.buttons().size(), 2);
            QCOMPARE(box.parentWidget(), &window);
            box.reject();
        });
        QCOMPARE(shown,
                 (QStringList{"VORNIX3",
                              "This update would bring older versions than those that "
                              "run.",
                              "Controller firmware of zan-<b>master: runs v1.4, would get v1.3\n\n"
                              "An answer may have been lost when the table of updates was filled. "
                              "Stop, open it again and compare.",
                              "&Stop"}));
    }

    void manyDevicesAreNotAllListed()
    {
        QWidget window;
        QString shown;
        answer(QVector<StepBack>(12, oneStep.constFirst()), window, [&](QMessageBox& box) {
            shown = box.informativeText();
            box.reject();
        });
        QCOMPARE(shown.count("would get"), 10);
        QVERIFY2(shown.contains("\n... and 2 more, which the log shows\n"), qPrintable(shown));
    }

    void onlyItsButtonLetsTheRunGo_data()
    {
        QTest::addColumn<QString>("how");
        QTest::addColumn<bool>("allows");
        QTest::newRow("the button that says so") << "&Update all the same" << true;
        QTest::newRow("the button Stop") << "&Stop" << false;
        QTest::newRow("Return") << "Return" << false;
        QTest::newRow("Escape") << "Escape" << false;
        QTest::newRow("the window is closed") << "close" << false;
        QTest::newRow("the program ends") << "quit" << false;
    }

    void onlyItsButtonLetsTheRunGo()
    {
        QFETCH(const QString, how);
        QFETCH(const bool, allows);
        QWidget window;
        const bool allowed = answer(oneStep, window, [&](QMessageBox& box) {
            if (how == "Return")
                QTest::keyClick(&box, Qt::Key_Return);
            else if (how == "Escape")
                QTest::keyClick(&box, Qt::Key_Escape);
            else if (how == "close")
                box.close();
            else if (how == "quit")
                QCoreApplication::quit();
            else
                buttonOf(box, how)->click();
        });
        QCOMPARE(allowed, allows);
    }

    void boxStandsBeforeTheDialogThatIsOpen()
    {
        QWidget window;
        QDialog dialog(&window);
        dialog.setModal(true);
        dialog.show();
        answer(oneStep, window, [&](QMessageBox& box) {
            QCOMPARE(box.parentWidget(), &dialog);
            box.reject();
        });
    }
};

ZAN_WIDGET_TEST_MAIN(TestStepBackBox)
#include "tst_stepbackbox.moc"
