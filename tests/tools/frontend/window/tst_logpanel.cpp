#include <logpanel.h>

#include <logview.h>

#include <fixturefiles.h>
#include <fulldisk.h>
#include <reasons.h>
#include <widgettestmain.h>

#include <QAction>
#include <QComboBox>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QSignalSpy>
#include <QTimer>
#include <QToolButton>

namespace {

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : "cannot be read";
}

/// A panel on the screen, with three messages.
struct ShownPanel
{
    ShownPanel()
    {
        panel.view().add("VORNIX3", "search done");
        panel.view().add("Frontend", "first");
        panel.view().add("Frontend", "second");
        panel.show();
        filter = panel.findChild<QLineEdit*>("lineEdit_filter");
        sender = panel.findChild<QComboBox*>("comboBox_sender");
        save = panel.findChild<QPushButton*>("pushButton_saveLog");
        if (!QTest::qWaitForWindowActive(&panel))
            qFatal("no window");
    }

    /// Presses an entry of the menu, and has the file dialog take @p path.
    void saveTo(const QString& entry, const QString& path)
    {
        QTimer::singleShot(0, &panel, [this, path] {
            auto* dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
            QVERIFY(dialog);
            title = dialog->windowTitle();
            dialog->findChild<QLineEdit*>("fileNameEdit")->setText(path);
            QTimer::singleShot(0, &panel, [this] { closeBox(); });
            QMetaObject::invokeMethod(dialog, "accept");
        });
        for (QAction* action : save->menu()->actions()) {
            if (action->text() == entry)
                action->trigger();
        }
    }

    void closeBox()
    {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (!box)
            return;
        told = box->text();
        box->accept();
    }

    LogPanel panel;
    QLineEdit* filter;
    QComboBox* sender;
    QPushButton* save;
    QString title;
    QString told;
};

/// As a user reads it in the language of the machine.
QString countText(int shown, int all)
{
    return QStringLiteral("%L1 of %L2").arg(shown).arg(all);
}

} // namespace

class TestLogPanel : public QObject
{
    Q_OBJECT

private slots:
    void typingFilters()
    {
        ShownPanel shown;
        QTest::keyClick(&shown.panel.view(), Qt::Key_F, Qt::ControlModifier);
        QVERIFY(shown.filter->hasFocus());
        QTest::keyClicks(shown.filter, "FIRST");
        QCOMPARE(shown.panel.view().shownCount(), 1);
        QVERIFY(hasLabel(shown.panel, countText(1, 3)));
        shown.panel.view().add("Frontend", "the first again");
        QVERIFY(hasLabel(shown.panel, countText(2, 4)));
        QTest::keyClick(shown.filter, Qt::Key_Escape);
        QCOMPARE(shown.panel.view().shownCount(), 4);
        QVERIFY(!hasLabel(shown.panel, countText(4, 4)));
    }

    void clearButtonShowsAllAgain()
    {
        ShownPanel shown;
        shown.filter->setText("nothing like it");
        QCOMPARE(shown.panel.view().shownCount(), 0);
        auto* clear = shown.filter->findChild<QToolButton*>();
        QVERIFY(clear);
        QTest::mouseClick(clear, Qt::LeftButton);
        QCOMPARE(shown.panel.view().shownCount(), 3);
    }

    void senderIsChosen()
    {
        ShownPanel shown;
        QStringList senders;
        for (int i = 0; i < shown.sender->count(); ++i)
            senders += shown.sender->itemText(i);
        QCOMPARE(senders, (QStringList{"All", "VORNIX3", "Frontend"}));
        shown.sender->setFocus();
        QTest::keyClick(shown.sender, Qt::Key_Down);
        QCOMPARE(shown.panel.view().shownCount(), 1);
        QTest::keyClick(shown.sender, Qt::Key_Up);
        QCOMPARE(shown.panel.view().shownCount(), 3);
    }

    void logIsSaved_data()
    {
        QTest::addColumn<QString>("entry");
        QTest::addColumn<QString>("title");
        QTest::addColumn<int>("lines");
        QTest::newRow("the whole of it") << "&Whole log..."
                                         << "Save the whole log" << 4;
        QTest::newRow("what is shown") << "What is &shown..."
                                       << "Save what the log shows" << 1;
    }

    void logIsSaved()
    {
        QFETCH(const QString, entry);
        const FixtureFolder folder;
        ShownPanel shown;
        shown.panel.view().add("Frontend", "Jürgen");
        shown.filter->setText("ü");
        shown.saveTo(entry, folder.path("my.log"));
        QTEST(shown.title, "title");
        const QByteArray saved = contentOf(folder.path("my.log"));
        QTEST(saved.count('\n'), "lines");
        QVERIFY2(saved.endsWith("  Frontend    Jürgen\n"), saved.constData());
        QCOMPARE(shown.told, QString());
    }

    void failureIsTold()
    {
        const FixtureFolder folder;
        const QString path = folder.path("no such folder/my.log");
        ShownPanel shown;
        shown.saveTo("&Whole log...", path);
        QCOMPARE(shown.told, path + ": " + systemReason(ENOENT));
    }

    void fullDiskIsTold()
    {
        const FixtureFolder folder;
        const QString path = folder.path("my.log");
        ShownPanel shown;
        shown.panel.view().add("Frontend", QString(20000, 'x'));
        {
            const FullDisk disk(10000);
            shown.saveTo("&Whole log...", path);
        }
        QCOMPARE(shown.told, path + ": " + systemReason(EFBIG));
        QVERIFY(!QFile::exists(path));
    }

    void everyFieldHasANameAndAKey()
    {
        ShownPanel shown;
        QVERIFY(!shown.filter->accessibleName().isEmpty());
        QVERIFY(!shown.sender->accessibleName().isEmpty());
        QTest::keyClick(&shown.panel, Qt::Key_E, Qt::AltModifier);
        QVERIFY(shown.sender->hasFocus());
        QTest::keyClick(&shown.panel, Qt::Key_F, Qt::AltModifier);
        QVERIFY(shown.filter->hasFocus());
        QVERIFY(shown.save->text().contains('&'));
    }

private:
    static bool hasLabel(const LogPanel& panel, const QString& text)
    {
        const auto labels = panel.findChildren<QLabel*>();
        return std::any_of(labels.begin(), labels.end(),
                           [&](const QLabel* label) { return label->text() == text; });
    }
};

ZAN_WIDGET_TEST_MAIN(TestLogPanel)
#include "tst_logpanel.moc"
