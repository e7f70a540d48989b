#include "deliverygate.h"

#include <deliverysealing.h>
#include <sealfixtures.h>

#include <modaldriver.h>
#include <widgettestmain.h>

#include <QSignalSpy>
#include <QWidget>

namespace {

/// A program's folder with a delivery of two files, which may be sealed.
struct Site
{
    explicit Site(bool isSealed = false, bool isSigned = false)
    {
        folder.write("controller_update/a.vx3img", "first");
        folder.write("controller_update/b.VX2znimg", QByteArray(1 << 20, 'b'));
        QString error;
        int files = 0;
        std::optional<MinisignSecretKey> key;
        if (isSigned)
            key = MinisignSecretKey::parse(sample::secretKeyFile, nullptr, &error);
        if (isSealed && DeliverySealing(key, "3.3.0").seal(updates, &files, &error) !=
                            DeliverySealing::Outcome::Done)
            qFatal("%s", qPrintable(error));
        QObject::connect(&gate, &DeliveryGate::message,
                         [this](const QString& text) { log += text; });
    }

    void askForProof()
    {
        QString error;
        if (!gate.setPublicKey(sample::publicKey, &error))
            qFatal("%s", qPrintable(error));
    }

    FixtureFolder folder;
    QString updates = folder.path("controller_update");
    QWidget window;
    DeliveryGate gate{window};
    QStringList log;
};

ExpectedBox warning(const QStringList& paragraphs)
{
    ExpectedBox box;
    box.title = "VORNIX3";
    box.text = paragraphs.join("\n\n");
    box.icon = QMessageBox::Warning;
    box.defaultButton = QMessageBox::NoButton;
    return box;
}

const QString notLoaded = "The update module was not loaded.";
const QString loadedAllTheSame = "The update module is loaded all the same, as there is no public "
                                 "key to tell by whom they were sealed.";

} // namespace

class TestDeliveryGate : public QObject
{
    Q_OBJECT

private slots:
    void letsInWhatNobodyAskedFor_data();
    void letsInWhatNobodyAskedFor();
    void letsInAProvenDelivery();
    void warnsOfAnAlteredDelivery();
    void keepsOutAnAlteredDelivery();
    void keepsOutAnUnsealedDelivery();
    void showsNotMoreThanABoxHolds();
    void looksAgainEachTime();
    void tellsHowFarItIs();
};

void TestDeliveryGate::letsInWhatNobodyAskedFor_data()
{
    QTest::addColumn<bool>("isDelivered");
    QTest::newRow("update files without a seal") << true;
    QTest::newRow("no update files at all") << false;
}

void TestDeliveryGate::letsInWhatNobodyAskedFor()
{
    QFETCH(const bool, isDelivered);
    Site site;
    QVERIFY(site.gate.letsIn(isDelivered ? site.folder.path() : site.folder.makeFolder("empty")));
    QCOMPARE(site.log, QStringList());
}

void TestDeliveryGate::letsInAProvenDelivery()
{
    Site site(true, true);
    QVERIFY(site.gate.letsIn(site.folder.path()));
    site.askForProof();
    QVERIFY(site.gate.letsIn(site.folder.path()));
    QVERIFY(site.gate.letsIn(site.folder.makeFolder("empty")));
    QCOMPARE(
        site.log,
        (QStringList{QString("The update files in %1 are as they were sealed (2 in all); there "
                             "was no public key to tell by whom.")
                         .arg(site.updates),
                     QString("The update files in %1 are as they were sealed and signed (2 in "
                             "all).")
                         .arg(site.updates),
                     "No update files are delivered."}));
}

void TestDeliveryGate::warnsOfAnAlteredDelivery()
{
    Site site(true);
    site.folder.write("controller_update/a.vx3img", "First");
    const QString summary =
        QString("The update files in %1 are not as they were sealed.").arg(site.updates);
    ModalDriver driver;
    driver.expect(warning({summary, "a.vx3img: is not what was sealed", loadedAllTheSame}));
    QVERIFY(site.gate.letsIn(site.folder.path()));
    QVERIFY2(driver.isDone(), qPrintable(driver.missing()));
    QCOMPARE(site.log, (QStringList{"a.vx3img: is not what was sealed", summary}));
}

void TestDeliveryGate::keepsOutAnAlteredDelivery()
{
    Site site(true, true);
    site.askForProof();
    site.folder.write("controller_update/<b>new<b>", "");
    const QString summary =
        QString("The update files in %1 are not as they were sealed.").arg(site.updates);
    const QString problem = "<b>new<b>: is not listed in SHA256SUMS";
    ExpectedBox box = warning({summary, problem, notLoaded});
    box.inspect = [](QMessageBox& shown) {
        QCOMPARE(shown.textFormat(), Qt::PlainText);
    };
    ModalDriver driver;
    driver.expect(box);
    QVERIFY(!site.gate.letsIn(site.folder.path()));
    QVERIFY2(driver.isDone(), qPrintable(driver.missing()));
    QCOMPARE(site.log, (QStringList{problem, summary, notLoaded}));
}

void TestDeliveryGate::keepsOutAnUnsealedDelivery()
{
    Site site;
    site.askForProof();
    const QString summary = QString("The update files in %1 are not sealed.").arg(site.updates);
    ModalDriver driver;
    driver.expect(warning({summary, "SHA256SUMS: is missing", notLoaded}));
    QVERIFY(!site.gate.letsIn(site.folder.path()));
    QVERIFY2(driver.isDone(), qPrintable(driver.missing()));
}

void TestDeliveryGate::showsNotMoreThanABoxHolds()
{
    Site site(true);
    QStringList problems;
    for (int i = 10; i < 22; ++i) {
        site.folder.write(QString("controller_update/new%1").arg(i), "");
        problems += QString("new%1: is not listed in SHA256SUMS").arg(i);
    }
    const QString summary =
        QString("The update files in %1 are not as they were sealed.").arg(site.updates);
    ModalDriver driver;
    driver.expect(warning(
        {summary,
         (problems.mid(0, 10) + QStringList{"... and 2 more, which the log shows"}).join('\n'),
         loadedAllTheSame}));
    QVERIFY(site.gate.letsIn(site.folder.path()));
    QVERIFY2(driver.isDone(), qPrintable(driver.missing()));
    QCOMPARE(site.log, problems + QStringList{summary});
}

void TestDeliveryGate::looksAgainEachTime()
{
    Site site(true, true);
    site.askForProof();
    QVERIFY(site.gate.letsIn(site.folder.path()));
    site.folder.write("controller_update/c", "");
    {
        ModalDriver driver;
        driver.expect(warning(
            {QString("The update files in %1 are not as they were sealed.").arg(site.updates),
             "c: is not listed in SHA256SUMS", notLoaded}));
        QVERIFY(!site.gate.letsIn(site.folder.path()));
        QVERIFY2(driver.isDone(), qPrintable(driver.missing()));
    }
    QFile::remove(site.folder.path("controller_update/c"));
    QVERIFY(site.gate.letsIn(site.folder.path()));
}

void TestDeliveryGate::tellsHowFarItIs()
{
    Site site(true);
    // A hole that takes no room, and long enough to be waited for.
    QVERIFY(QFile::resize(site.updates + "/b.VX2znimg", 256LL << 20));
    int files = 0;
    QString error;
    QVERIFY(DeliverySealing().seal(site.updates, &files, &error) == DeliverySealing::Outcome::Done);
    QSignalSpy progress(&site.gate, &DeliveryGate::progressed);
    bool isServed = false;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&] { isServed = progress.count() > 0; });
    timer.start(0);
    QVERIFY(site.gate.letsIn(site.folder.path()));
    QVERIFY(isServed);
    int last = 0;
    for (const QList<QVariant>& told : progress) {
        QVERIFY(told[0].toInt() >= last && told[0].toInt() <= 100);
        last = told[0].toInt();
    }
}

ZAN_WIDGET_TEST_MAIN(TestDeliveryGate)
#include "tst_deliverygate.moc"
