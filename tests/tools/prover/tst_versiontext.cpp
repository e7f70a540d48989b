#include <versiontext.h>

#include <comparing.h>
#include <testmain.h>

class TestVersionText : public QObject
{
    Q_OBJECT

private slots:
    void versionsOfUpdateFilesAreRead_data();
    void versionsOfUpdateFilesAreRead();
};

void TestVersionText::versionsOfUpdateFilesAreRead_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("parts");
    QTest::addColumn<VersionInfo>("version"); ///< absent: refused
    const VersionInfo refused;
    QTest::newRow("three numbers") << "3.1.0" << int(PtParts) << VersionInfo(3, 1, 0);
    QTest::newRow("with a letter in front") << "v3.1.0" << int(PtParts) << VersionInfo(3, 1, 0);
    QTest::newRow("two numbers") << "1.2" << int(CtParts) << VersionInfo(1, 2);
    QTest::newRow("the largest number") << "65535.0" << int(CtParts) << VersionInfo(65535, 0);
    QTest::newRow("a number too large") << "65536.0" << int(CtParts) << refused;
    QTest::newRow("a number too many") << "1.2.3" << int(CtParts) << refused;
    QTest::newRow("a number too few") << "1.2" << int(PtParts) << refused;
    QTest::newRow("a pre-release") << "3.1.0-beta.2" << int(PtParts) << refused;
    QTest::newRow("leading zeros") << "03.1.0" << int(PtParts) << refused;
    QTest::newRow("a negative number") << "-3.1.0" << int(PtParts) << refused;
    QTest::newRow("nothing") << "" << int(PtParts) << refused;
}

void TestVersionText::versionsOfUpdateFilesAreRead()
{
    QFETCH(const QString, text);
    QFETCH(const int, parts);
    QTEST(versionOf(text, static_cast<VersionParts>(parts)).value_or(VersionInfo()), "version");
}

ZAN_TEST_MAIN(TestVersionText)
#include "tst_versiontext.moc"
