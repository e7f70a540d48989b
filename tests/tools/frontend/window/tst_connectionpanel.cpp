#include <simulatorfixtures.h>

#include <connectionpanel.h>
#include <remoteequipment.h>
#include <windowtexts.h>

#include <elsewhere.h>
#include <widgettestmain.h>

#include <QProgressBar>
#include <QPushButton>

class TestConnectionPanel : public QObject
{
    Q_OBJECT

private slots:
    void connectionIsTold()
    {
        SimulatedSystem system(shippedScenario("cascade"));
        ConnectionPanel panel(system);
        panel.show();
        QCOMPARE(windowTexts(panel),
                 QStringList{QString("Connecting to %1...").arg(system.scenario().address())});
        panel.showConnected("details");
        QCOMPARE(
            windowTexts(panel),
            (QStringList{QString("Connected to %1").arg(system.scenario().address()), "details"}));
    }

    void waitingIsTold()
    {
        SimulatedSite equipment("cascade");
        equipment.system.restart();
        ConnectionPanel panel(equipment.system);
        panel.show();
        panel.showWaiting();
        QCOMPARE(windowTexts(panel),
                 (QStringList{"Waiting for the controllers to come back...", "about 8 s"}));
        QCOMPARE(panel.findChild<QProgressBar*>()->value(), 0);
        equipment.nowMs += 6000;
        QTRY_COMPARE(windowTexts(panel).constLast(), QString("about 2 s"));
        QCOMPARE(panel.findChild<QProgressBar*>()->value(), 6000);
        QCOMPARE(panel.findChild<QProgressBar*>()->maximum(), 8000);
    }

    // There is nobody whom power could be given to.
    void absenceOfTheSimulationIsTold()
    {
        RemoteEquipment nobody(Endpoint{QHostAddress(QHostAddress::LocalHost), 1},
                               shippedScenario("cascade"));
        ConnectionPanel panel(nobody);
        panel.show();
        panel.showWaiting();
        QCOMPARE(windowTexts(panel), (QStringList{"Waiting for the controllers to come back...",
                                                  "The simulated system cannot be reached."}));
        QVERIFY(panel.findChild<QPushButton*>("pushButton_power")->isHidden());
        QVERIFY(panel.findChild<QProgressBar*>()->isHidden());
    }

    void lastAnswerIsTold()
    {
        SimulatedSite equipment("cascade");
        equipment.system.restart();
        const Elsewhere elsewhere("en_US", "XXX-5:45");
        ConnectionPanel panel(equipment.system);
        panel.show();
        panel.showWaiting(QDateTime(QDate::currentDate(), QTime(9, 5, 7)));
        QCOMPARE(windowTexts(panel), (QStringList{"No answer since 9:05:07 AM. Waiting for the "
                                                  "controllers to come back...",
                                                  "about 8 s"}));
    }

    void silenceUnderPowerIsNoRestart()
    {
        SimulatedSite site("cascade");
        ConnectionPanel panel(site.system);
        panel.show();
        panel.showWaiting();
        QCOMPARE(windowTexts(panel), (QStringList{"Waiting for the controllers to come back...",
                                                  "They have power, but do not answer."}));
        QVERIFY(panel.findChild<QProgressBar*>()->isHidden());
    }

    void observerGivesNoPower()
    {
        SimulatedSite equipment("cascade");
        equipment.system.shutDown();
        ConnectionPanel panel(equipment.system, true);
        panel.show();
        panel.showWaiting();
        const auto* power = panel.findChild<QPushButton*>("pushButton_power");
        QVERIFY(power->isVisible() && !power->isEnabled());
        QCOMPARE(power->toolTip(), QString("An observer only looks on."));
    }

    void whoHasNoPowerIsGivenIt()
    {
        SimulatedSite equipment("cascade");
        equipment.system.shutDown();
        ConnectionPanel panel(equipment.system);
        panel.show();
        panel.showWaiting();
        QCOMPARE(windowTexts(panel), (QStringList{"Waiting for the controllers to come back...",
                                                  "They do not come back by themselves.",
                                                  "[Give power to the controllers]"}));
        panel.findChild<QPushButton*>("pushButton_power")->click();
        QCOMPARE(equipment.system.msUntilReachable(), 8000);
        QTRY_COMPARE(windowTexts(panel),
                     (QStringList{"Waiting for the controllers to come back...", "about 8 s"}));
    }
};

ZAN_WIDGET_TEST_MAIN(TestConnectionPanel)
#include "tst_connectionpanel.moc"
