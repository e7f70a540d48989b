#include <VersionInfo>

#include "comparing.h"
#include "testmain.h"

class TestVersionInfo : public QObject
{
    Q_OBJECT

private slots:
    void isAbsentByDefault();
    void holdsItsParts();
    void readsTextWithAFlag_data();
    void readsTextWithAFlag();
    void readsTextWithoutAFlag_data();
    void readsTextWithoutAFlag();
    void readsTheReplyOfAControllerByItsFirstWord();
    void printsItself_data();
    void printsItself();
    void ordersEveryPair();
    void decidesAboutProtocols_data();
    void decidesAboutProtocols();
};

void TestVersionInfo::isAbsentByDefault()
{
    const VersionInfo version;
    QCOMPARE(version.ma, -1);
    QCOMPARE(version.mi, -1);
    QCOMPARE(version.pa, -1);
    QVERIFY(version != VersionInfo(0, 0, 0));
    QCOMPARE(VersionInfo(2), VersionInfo(2, -1, -1));
    QCOMPARE(VersionInfo(2, 7), VersionInfo(2, 7, -1));
}

void TestVersionInfo::holdsItsParts()
{
    VersionInfo version(1, 2, 3);
    QCOMPARE(version.major(), 1);
    QCOMPARE(version.minor(), 2);
    QCOMPARE(version.patch(), 3);
    version.setVer(-4, 5, 6);
    QCOMPARE(version.ma, -4);
    QCOMPARE(version.mi, 5);
    QCOMPARE(version.pa, 6);
}

void TestVersionInfo::readsTextWithAFlag_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<VersionInfo>("version");
    QTest::addColumn<bool>("flag");

    const auto row = [](const char* name, const char* text, const VersionInfo& version, bool flag) {
        QTest::newRow(name) << QString::fromUtf8(text) << version << flag;
    };
    row("three parts", "2.7.7", {2, 7, 7}, true);
    row("a leading v is dropped", "v2.7.7", {2, 7, 7}, true);
    row("a leading capital V is dropped", "V3.0.1", {3, 0, 1}, true);
    row("only one v is dropped", "vv1", {0, -1, -1}, false);
    row("a fourth part is ignored", "3.0.1.7", {3, 0, 1}, true);
    row("a fourth part that is no number is not looked at", "3.0.1.?", {3, 0, 1}, true);
    row("one part stands alone", "3", {3, -1, -1}, true);
    row("two parts", "2.7", {2, 7, -1}, true);
    row("a pre-release appendix is cut off", "v2.7.7-beta.3", {2, 7, 7}, true);
    row("a pre-release without patch keeps none", "2.7-rc.1", {2, 7, -1}, true);
    row("a word right behind the number is cut off", "2.7rc1", {2, 7, -1}, true);
    row("a capital word behind the number is cut off", "2.7RC1", {2, 7, -1}, true);
    row("an empty text is a failed zero", "", {0, -1, -1}, false);
    row("a lone v is a failed zero", "v", {0, -1, -1}, false);
    row("another first letter leaves nothing", "beta 3", {0, -1, -1}, false);
    row("a leading dash leaves nothing", "-1.2", {0, -1, -1}, false);
    row("an empty second part ends the reading", "1..2", {1, 0, -1}, false);
    row("a word as second part ends the reading", "1.x.2", {1, 0, -1}, false);
    row("an empty third part counts as zero", "1.2.", {1, 2, 0}, false);
    row("an empty first part ends the reading", ".2.3", {0, -1, -1}, false);
    row("an uncut date spoils the patch", "v2.7.7 2024-05-06", {2, 7, 0}, false);
    row("a foreign letter does not cut", "2.7.\u00e4", {2, 7, 0}, false);
    row("a number beyond 32 bits does not convert", "99999999999.1", {0, -1, -1}, false);
    row("leading zeros do not count", "02.007.0", {2, 7, 0}, true);
    row("the largest number converts", "2147483647", {2147483647, -1, -1}, true);
}

void TestVersionInfo::readsTextWithAFlag()
{
    QFETCH(QString, text);
    QFETCH(bool, flag);
    for (bool ok : {false, true}) {
        QTEST(VersionInfo::fromString(text, &ok), "version");
        QCOMPARE(ok, flag);
    }
}

void TestVersionInfo::readsTextWithoutAFlag_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<VersionInfo>("version");

    const auto row = [](const char* name, const char* text, const VersionInfo& version) {
        QTest::newRow(name) << QString::fromUtf8(text) << version;
    };
    row("three parts", "v2.7.7", {2, 7, 7});
    row("an empty second part counts as zero", "1..2", {1, 0, 2});
    row("an empty first part counts as zero", ".2.3", {0, 2, 3});
    row("three empty parts are zeros", "..", {0, 0, 0});
    row("an empty text is zero", "", {0, -1, -1});
    row("a text without sense is zero", "hostname", {0, -1, -1});
    row("a cut second part counts as zero", "1.x.2", {1, 0, -1});
    row("a number beyond 32 bits counts as zero", "99999999999.1.2", {0, 1, 2});
    row("an uncut date spoils the patch", "v2.7.7 2024-05-06", {2, 7, 0});
}

void TestVersionInfo::readsTextWithoutAFlag()
{
    QFETCH(QString, text);
    QTEST(VersionInfo::fromString(text), "version");
    QTEST(VersionInfo::fromString(text, nullptr), "version");
}

// As the documents tell those who fill BackendVersions.
void TestVersionInfo::readsTheReplyOfAControllerByItsFirstWord()
{
    const QString reply = QStringLiteral("v3.1.2 2025-03-14");
    QCOMPARE(VersionInfo::fromString(reply).toString(), QStringLiteral("v3.1.0"));
    const QString firstWord = reply.section(QLatin1Char(' '), 0, 0);
    QCOMPARE(VersionInfo::fromString(firstWord).toString(), QStringLiteral("v3.1.2"));
}

void TestVersionInfo::printsItself_data()
{
    QTest::addColumn<VersionInfo>("version");
    QTest::addColumn<QString>("text");

    const auto row = [](const char* name, const VersionInfo& version, const char* text) {
        QTest::newRow(name) << version << QString::fromLatin1(text);
    };
    row("three parts", {2, 7, 7}, "v2.7.7");
    row("no patch", {2, 7, -1}, "v2.7");
    row("no minor hides the patch", {2, -1, 5}, "v2");
    row("no major leaves nothing", {-1, 3, 4}, "");
    row("no version at all is empty", {}, "");
    row("a failed reading prints as zero", {0, -1, -1}, "v0");
    row("one part", {3, -1, -1}, "v3");
    row("zeros are printed", {0, 0, 0}, "v0.0.0");
    row("large parts are plain numbers", {65535, 1000000, 2147483647}, "v65535.1000000.2147483647");
    row("any negative part counts as absent", {1, -7, 3}, "v1");
}

void TestVersionInfo::printsItself()
{
    QFETCH(VersionInfo, version);
    QTEST(version.toString(), "text");
}

void TestVersionInfo::ordersEveryPair()
{
    const QVector<VersionInfo> ascending{
        {-2, 9, 9}, {-1, -1, -1}, {-1, 3, 4}, {0, -1, -1}, {0, 0, -1}, {0, 0, 0},
        {0, 0, 1},  {0, 1, -1},   {1, 6, 9},  {1, 7, -1},  {1, 7, 0},  {1, 7, 3},
        {2, -1, 5}, {2, 7, -1},   {2, 7, 0},  {2, 7, 1},   {2, 10, 0}, {10, 0, 0},
    };
    for (int i = 0; i < ascending.size(); ++i) {
        for (int j = 0; j < ascending.size(); ++j) {
            const VersionInfo& a = ascending.at(i);
            const VersionInfo& b = ascending.at(j);
            QCOMPARE(a == b, i == j);
            QCOMPARE(a != b, i != j);
            QCOMPARE(a > b, i > j);
            QCOMPARE(a >= b, i >= j);
            QCOMPARE(a < b, i < j);
            QCOMPARE(a <= b, i <= j);
        }
    }
}

void TestVersionInfo::decidesAboutProtocols_data()
{
    QTest::addColumn<VersionInfo>("protocol");
    QTest::addColumn<bool>("atLeast17");

    QTest::newRow("1.7 without patch is enough") << VersionInfo(1, 7) << true;
    QTest::newRow("1.7.0 is enough") << VersionInfo(1, 7, 0) << true;
    QTest::newRow("1.7.3 is enough") << VersionInfo(1, 7, 3) << true;
    QTest::newRow("1.6.9 is not enough") << VersionInfo(1, 6, 9) << false;
    QTest::newRow("a bare 1 is not enough") << VersionInfo(1) << false;
    QTest::newRow("no version is not enough") << VersionInfo() << false;
}

void TestVersionInfo::decidesAboutProtocols()
{
    QFETCH(VersionInfo, protocol);
    QTEST(protocol >= VersionInfo(1, 7, -1), "atLeast17");
}

ZAN_TEST_MAIN(TestVersionInfo)

#include "tst_versioninfo.moc"
