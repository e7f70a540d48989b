#include <simulatorfixtures.h>

#include <faultdialog.h>
#include <systemview.h>

#include <cuttexts.h>
#include <widgettestmain.h>

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QSpinBox>

namespace {

/// The dialog over a system of its own.
struct Dialog
{
    QComboBox& mode() { return *dialog.findChild<QComboBox*>("comboBox_faultMode"); }
    QComboBox& device() { return *dialog.findChild<QComboBox*>("comboBox_faultDevice"); }
    QComboBox& moment() { return *dialog.findChild<QComboBox*>("comboBox_faultMoment"); }
    QSpinBox& number() { return *dialog.findChild<QSpinBox*>("spinBox_faultNumber"); }
    QPushButton& arm() { return *dialog.findChild<QPushButton*>("pushButton_armFault"); }
    QPushButton& disarm() { return *dialog.findChild<QPushButton*>("pushButton_disarmFaults"); }
    QString armedText() { return dialog.findChild<QLabel*>("label_armedFaults")->text(); }

    SimulatedSystem system{shippedScenario("controllers-and-cameras")};
    FaultDialog dialog{system};
};

QStringList itemsOf(const QComboBox& box)
{
    QStringList items;
    for (int index = 0; index < box.count(); ++index)
        items += box.itemText(index);
    return items;
}

} // namespace

class TestFaultDialog : public QObject
{
    Q_OBJECT

private slots:
    void everyModeAndDeviceCanBeChosen()
    {
        Dialog dialog;
        QStringList titles;
        for (const FaultModeInfo& info : faultModes())
            titles += info.title;
        QCOMPARE(itemsOf(dialog.mode()), titles);
        QCOMPARE(itemsOf(dialog.device()),
                 QStringList("any device") + dialog.system.scenario().deviceNames());
    }

    void everyModeCanBeArmed_data()
    {
        QTest::addColumn<int>("index");
        for (int index = 0; index < faultModes().size(); ++index)
            QTest::newRow(qPrintable(faultModes().at(index).name)) << index;
    }

    void everyModeCanBeArmed()
    {
        QFETCH(const int, index);
        Dialog dialog;
        dialog.mode().setCurrentIndex(index);
        dialog.device().setCurrentIndex(1);
        dialog.moment().setCurrentIndex(1);
        dialog.number().setValue(17);
        dialog.arm().click();

        QCOMPARE(dialog.system.armedFaults().size(), 1);
        const Fault& fault = dialog.system.armedFaults().constFirst();
        const FaultModeInfo& info = faultModes().at(index);
        const bool hasRecord = info.moment == FaultMoment::Exchange;
        QCOMPARE(fault.mode, info.mode);
        QCOMPARE(fault.device, dialog.system.scenario().deviceNames().constFirst());
        QCOMPARE(fault.record, hasRecord ? 17 : 0);
        QVERIFY(!fault.seed);
        QCOMPARE(dialog.moment().isEnabled(), hasRecord);
        QCOMPARE(dialog.number().isEnabled(), hasRecord);
        QCOMPARE(dialog.armedText(), "Armed:\n" + fault.text());
    }

    void usualMomentNeedsNoNumber()
    {
        Dialog dialog;
        QVERIFY(!dialog.number().isEnabled());
        dialog.arm().click();
        QCOMPARE(dialog.system.armedFaults().constFirst().record, 0);
        QVERIFY(!dialog.system.armedFaults().constFirst().seed);
    }

    void randomRecordTakesTheNumberForSeed()
    {
        Dialog dialog;
        dialog.moment().setCurrentIndex(2);
        QVERIFY(dialog.number().isEnabled());
        dialog.number().setValue(4711);
        dialog.arm().click();
        QCOMPARE(dialog.system.armedFaults().constFirst().record, 0);
        QCOMPARE(dialog.system.armedFaults().constFirst().seed.value_or(0), 4711U);
    }

    void delayAndRepetitionCanBeChosen()
    {
        Dialog dialog;
        auto* delay = dialog.dialog.findChild<QSpinBox*>("spinBox_faultDelay");
        QVERIFY(!delay->isEnabled());
        dialog.mode().setCurrentIndex(int(FaultMode::AnswerLate));
        QVERIFY(delay->isEnabled());
        dialog.arm().click();
        delay->setValue(7);
        dialog.dialog.findChild<QCheckBox*>("checkBox_everyTime")->setChecked(true);
        dialog.arm().click();

        const QVector<Fault>& faults = dialog.system.armedFaults();
        QCOMPARE(faults.at(0).delayMs, Fault().delayMs);
        QCOMPARE(faults.at(0).times, 1);
        QCOMPARE(faults.at(1).delayMs, 7000);
        QCOMPARE(faults.at(1).times, 0);
    }

    void armedFaultsAreToldAndCanBeDisarmed()
    {
        Dialog dialog;
        QCOMPARE(dialog.armedText(), QString("No fault is armed."));
        QVERIFY(!dialog.disarm().isEnabled());
        dialog.arm().click();
        dialog.mode().setCurrentIndex(dialog.mode().count() - 1);
        dialog.arm().click();
        QCOMPARE(dialog.armedText(), QString("Armed:\nRefuse a record: any device\n"
                                             "Never come back from the restart: any device"));
        QVERIFY(dialog.disarm().isEnabled());
        dialog.disarm().click();
        QCOMPARE(dialog.armedText(), QString("No fault is armed."));
        QVERIFY(dialog.system.armedFaults().isEmpty());
    }

    void faultThatHasStruckIsToldNoLonger()
    {
        Dialog dialog;
        dialog.mode().setCurrentIndex(int(FaultMode::NeverComeBack));
        dialog.arm().click();
        dialog.system.restart();
        QCOMPARE(dialog.armedText(), QString("No fault is armed."));
    }

    void systemViewTellsHowManyAreArmed()
    {
        SimulatedSystem system(shippedScenario("single"));
        SystemView view(system);
        auto* button = view.findChild<QPushButton*>("pushButton_faults");
        QCOMPARE(button->text(), QString("Fa&ults on demand..."));
        system.armFault(Fault());
        system.armFault(Fault());
        QTRY_COMPARE(button->text(), QString("Fa&ults on demand (2 armed)..."));
        button->click();
        auto* dialog = view.findChild<FaultDialog*>();
        QVERIFY(dialog->isVisible());
        QVERIFY(!dialog->isModal());
        button->click();
        QCOMPARE(view.findChildren<FaultDialog*>().size(), 1);
    }

    // Run at 100 %, 125 % and 150 %, of the scale and of the fonts.
    void nothingIsCutOff()
    {
        Dialog dialog;
        dialog.arm().click();
        dialog.mode().setCurrentIndex(int(FaultMode::NeverComeBack));
        dialog.dialog.show();
        QVERIFY(QTest::qWaitForWindowExposed(&dialog.dialog));
        QCOMPARE(cutTexts(dialog.dialog), QStringList());
        // What is armed while the window is open takes no room from the rest.
        for (int i = 0; i < 4; ++i)
            dialog.arm().click();
        QTRY_COMPARE(cutTexts(dialog.dialog), QStringList());
    }
};

ZAN_WIDGET_TEST_MAIN(TestFaultDialog)
#include "tst_faultdialog.moc"
