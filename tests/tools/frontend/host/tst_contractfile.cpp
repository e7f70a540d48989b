#include <contractfile.h>

#include <fixturefiles.h>
#include <testmain.h>

#include <QDir>
#include <QFile>

class TestContractFile : public QObject
{
    Q_OBJECT

private slots:
    void fileStandsBesideTheLibrary_data()
    {
        QTest::addColumn<QString>("library");
        QTest::addColumn<QString>("file");
        QTest::newRow("with a folder") << "/opt/modules/libModule.so"
                                       << "/opt/modules/libModule.contract.json";
        QTest::newRow("dots in the folder") << "/opt/v3.1/libModule.so"
                                            << "/opt/v3.1/libModule.contract.json";
        QTest::newRow("dots in the name") << "/opt/libModule.2.so"
                                          << "/opt/libModule.2.contract.json";
        QTest::newRow("without an ending") << "/opt/module"
                                           << "/opt/module.contract.json";
    }

    void fileStandsBesideTheLibrary()
    {
        QFETCH(const QString, library);
        QTEST(contractFileOf(library), "file");
    }

    void libraryWithoutTheFileIsOfTheFirstContract()
    {
        const FixtureFolder folder;
        QCOMPARE(whyNotToCall(folder.path("libModule.so")), QString());
    }

    void pluginThatIsBuiltMayBeCalled()
    {
        QVERIFY(QFile::exists(contractFileOf(UPDATE_MODULE)));
        QCOMPARE(whyNotToCall(UPDATE_MODULE), QString());
    }

    void majorNumberDecides_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("reason");
        const QString another = "LIBRARY: was built for version %1 of the contract between plug-in "
                                "and frontend, and this frontend for 1.0. Both have to come from "
                                "deliveries that fit together.";
        const QString none = "FILE: tells no version of the contract between plug-in and frontend";
        QTest::newRow("the same") << QByteArray(R"({"contract": "1.0"})") << QString();
        QTest::newRow("more that is added") << QByteArray(R"({"contract": "1.23"})") << QString();
        QTest::newRow("other keys")
            << QByteArray(R"({"other": [], "contract": "1.0"})") << QString();
        QTest::newRow("a later one") << QByteArray(R"({"contract": "2.0"})") << another.arg("2.0");
        QTest::newRow("an earlier one")
            << QByteArray(R"({"contract": "0.9"})") << another.arg("0.9");
        QTest::newRow("begins alike")
            << QByteArray(R"({"contract": "10.0"})") << another.arg("10.0");
        QTest::newRow("one number") << QByteArray(R"({"contract": "1"})") << none;
        QTest::newRow("three numbers") << QByteArray(R"({"contract": "1.0.0"})") << none;
        QTest::newRow("a line behind it") << QByteArray(R"({"contract": "1.0\n"})") << none;
        QTest::newRow("too large a number")
            << QByteArray(R"({"contract": "4294967297.0"})") << none;
        QTest::newRow("no text") << QByteArray(R"({"contract": 1.0})") << none;
        QTest::newRow("without the key") << QByteArray(R"({"version": "1.0"})") << none;
        QTest::newRow("no JSON") << QByteArray("1.0") << none;
        QTest::newRow("empty") << QByteArray() << none;
    }

    void majorNumberDecides()
    {
        QFETCH(const QByteArray, content);
        QFETCH(QString, reason);
        const FixtureFolder folder;
        const QString library = folder.path("libModule.so");
        const QString file = folder.write("libModule.contract.json", content);
        reason.replace("LIBRARY", library).replace("FILE", file);
        QCOMPARE(whyNotToCall(library), reason);
    }

    void fileThatCannotBeReadKeepsTheHostFromCalling()
    {
        const FixtureFolder folder;
        const QString file = folder.path("libModule.contract.json");
        QVERIFY(QDir().mkpath(file)); // which not even root can read as a file
        const QString reason = whyNotToCall(folder.path("libModule.so"));
        QVERIFY2(reason.startsWith(file + ": "), qPrintable(reason));
        QVERIFY(reason.size() > file.size() + 2);
    }
};

ZAN_TEST_MAIN(TestContractFile)
#include "tst_contractfile.moc"
