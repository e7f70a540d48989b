#include "reportedversion.h"

#include <testmain.h>

class TestReportedVersion : public QObject
{
    Q_OBJECT

private slots:
    void splits_data();
    void splits();
};

void TestReportedVersion::splits_data()
{
    QTest::addColumn<QString>("version");
    QTest::addColumn<QString>("appendix");
    QTest::newRow("v3.2.0-beta.2 2025-03-14") << "v3.2.0"
                                              << "-beta.2";
    QTest::newRow("v3.1.0 2025-03-14") << "v3.1.0"
                                       << "";
    QTest::newRow("v1.2") << "v1.2"
                          << "";
    QTest::newRow("V2.7rc1") << "v2.7"
                             << "rc1";
    QTest::newRow("2.7.7 2022-02-03") << "v2.7.7"
                                      << "";
    QTest::newRow("") << "v0"
                      << "";
}

void TestReportedVersion::splits()
{
    const QString text = QString::fromLatin1(QTest::currentDataTag());
    QTEST(reportedVersion(text).toString(), "version");
    QTEST(reportedAppendix(text), "appendix");
}

ZAN_TEST_MAIN(TestReportedVersion)
#include "tst_reportedversion.moc"
