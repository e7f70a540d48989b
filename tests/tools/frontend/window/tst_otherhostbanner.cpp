#include <simulatorfixtures.h>

#include <mainwindow.h>
#include <otherhostbanner.h>

#include <modaldriver.h>
#include <widgettestmain.h>

#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QProgressBar>
#include <QPushButton>

namespace {

QStringList textsIn(const QWidget& banner)
{
    QStringList texts;
    for (const QLabel* label : banner.findChildren<QLabel*>()) {
        if (!label->text().isEmpty())
            texts += label->text();
    }
    return texts;
}

const QString lookOnly = "You can only look on until that is over: nothing can be changed from "
                         "here, and nothing can be updated.";

/// The entries that can be chosen.
QStringList enabledIn(const MainWindow& window)
{
    QStringList texts;
    for (const QAction* menu : window.menuBar()->actions()) {
        for (const QAction* action : menu->menu()->actions()) {
            if (action->isEnabled())
                texts += action->text();
        }
    }
    return texts;
}

} // namespace

class TestOtherHostBanner : public QObject
{
    Q_OBJECT

private slots:
    void bannerTellsWhoAndHowFar()
    {
        SimulatedSite site("cascade");
        const OtherHostBanner banner(site.system);
        QVERIFY(banner.isHidden());
        site.system.setUpdatedBy("ann@console-3, process 4711");
        QVERIFY(!banner.isHidden());
        QCOMPARE(textsIn(banner),
                 (QStringList{"ann@console-3, process 4711 updates this system.", lookOnly}));
        QVERIFY(banner.findChild<QProgressBar*>()->isHidden());

        site.set("system redirect_update 192.168.7.21");
        const QList<QByteArray> records = recordTexts(trackingSoftware({3, 3, 0}));
        for (int i = 0; i < 6; ++i)
            site.set("system update " + QByteArray::number(records.size()) + ' ' +
                     QByteArray::number(i + 1) + ' ' + records.at(i));
        QCOMPARE(textsIn(banner).constLast(),
                 QStringLiteral("zan-left: 6 of %1 records\n").arg(records.size()) + lookOnly);
        QCOMPARE(banner.findChild<QProgressBar*>()->value(), 600 / records.size());

        site.system.setUpdatedBy(QString());
        QVERIFY(banner.isHidden());
    }

    void handsAreKeptAway()
    {
        SimulatedSite site("cascade");
        MainWindow window(site.system, false);
        QAction anytime("Anytime");
        QAction update("Update");
        GuiElement first{&anytime, 30, "&Help", 700, nullptr, 1};
        GuiElement second{&update, 31, "&Help", 700, nullptr, 0};
        window.addModuleEntries({&first, &second});
        const QStringList before = enabledIn(window);
        QVERIFY(before.contains("Update") && before.contains("Search for &hardware..."));
        auto* power = window.findChild<QPushButton*>("pushButton_powerCycleControllers");
        auto* faults = window.findChild<QPushButton*>("pushButton_faults");
        QVERIFY(power->isEnabled() && faults->isEnabled());

        site.system.setUpdatedBy("ann@console");
        QCOMPARE(enabledIn(window), (QStringList{"&Quit", "&Dark theme", "Anytime", "&About"}));
        QTRY_VERIFY(!power->isEnabled() && !faults->isEnabled());
        QCOMPARE(power->toolTip(), QString("ann@console updates this system."));

        site.system.setUpdatedBy(QString());
        QCOMPARE(enabledIn(window), before);
        QTRY_VERIFY(power->isEnabled() && faults->isEnabled());
        window.removeModuleEntries();
    }

    void refusalSaysWhy()
    {
        SimulatedSite site("cascade");
        site.system.setUpdatedBy("ann@console");
        QWidget window;
        ModalDriver driver;
        ExpectedBox box;
        box.title = "VORNIX3";
        box.text = "ann@console updates this system.";
        box.informativeText = "Nothing was sent from here. Do not restart the controllers; open "
                              "the update dialog again when that update is over.";
        box.defaultButton = QMessageBox::NoButton;
        driver.expect(box);
        refuseForOtherHost(site.system, &window);
        QVERIFY2(driver.isDone(), qPrintable(driver.missing()));
    }
};

ZAN_WIDGET_TEST_MAIN(TestOtherHostBanner)
#include "tst_otherhostbanner.moc"
