#include <versionclasses.h>

#include <comparing.h>
#include <testmain.h>

namespace {

QString nameOf(const VersionCell& cell)
{
    return QStringLiteral("%1: %2%3")
        .arg(rangeText(cell, cell), cell.example.toString(), cell.hasUsual ? "" : " (unusual)");
}

QStringList namesOf(const QVector<VersionInfo>& limits, VersionParts parts)
{
    QStringList names;
    for (const VersionCell& cell : versionCells(limits, parts))
        names += nameOf(cell);
    return names;
}

} // namespace

class TestVersionClasses : public QObject
{
    Q_OBJECT

private slots:
    void limitsCutTheLine_data();
    void limitsCutTheLine();
    void everyVersionIsInOneClass();
    void preReleasesComeApartWhereTheyMatter();
    void marksHaveAnOrder_data();
    void marksHaveAnOrder();
};

void TestVersionClasses::limitsCutTheLine_data()
{
    QTest::addColumn<QVector<VersionInfo>>("limits");
    QTest::addColumn<int>("parts");
    QTest::addColumn<QStringList>("cells");
    using Limits = QVector<VersionInfo>;
    QTest::newRow("no limit") << Limits{} << int(PtParts) << QStringList{"all: v0.0.0"};
    QTest::newRow("one limit") << Limits{{2, 0, 0}} << int(PtParts)
                               << QStringList{"below v2.0.0: v0.0.0", "v2.0.0: v2.0.0",
                                              "above v2.0.0: v2.0.1"};
    QTest::newRow("two limits, one of them twice, in any order")
        << Limits{{3, 0, 0}, {2, 0, 0}, {3, 0, 0}} << int(PtParts)
        << QStringList{"below v2.0.0: v0.0.0", "v2.0.0: v2.0.0",
                       "above v2.0.0 below v3.0.0: v2.0.1", "v3.0.0: v3.0.0",
                       "above v3.0.0: v3.0.1"};
    QTest::newRow("the lowest version of a file")
        << Limits{{0, 0, 0}} << int(PtParts)
        << QStringList{"below v0.0.0: v0 (unusual)", "v0.0.0: v0.0.0", "above v0.0.0: v0.0.1"};
    QTest::newRow("a gap that no file can fill")
        << Limits{{3, 1, 65535}, {3, 2, 0}} << int(PtParts)
        << QStringList{"below v3.1.65535: v0.0.0", "v3.1.65535: v3.1.65535",
                       "above v3.1.65535 below v3.2.0: v3.2 (unusual)", "v3.2.0: v3.2.0",
                       "above v3.2.0: v3.2.1"};
    QTest::newRow("neighbours of two parts, with all patches between them")
        << Limits{{1, 2}, {1, 3}} << int(CtParts)
        << QStringList{"below v1.2: v0.0", "v1.2: v1.2", "above v1.2 below v1.3: v1.2.0 (unusual)",
                       "v1.3: v1.3", "above v1.3: v1.4"};
    QTest::newRow("neighbours with nothing between them")
        << Limits{{2, 0, 0}, {2, 0, 1}} << int(PtParts)
        << QStringList{"below v2.0.0: v0.0.0", "v2.0.0: v2.0.0", "v2.0.1: v2.0.1",
                       "above v2.0.1: v2.0.2"};
    QTest::newRow("the highest version of a file")
        << Limits{{65535, 65535}} << int(CtParts)
        << QStringList{"below v65535.65535: v0.0", "v65535.65535: v65535.65535",
                       "above v65535.65535: v65536.0 (unusual)"};
}

void TestVersionClasses::limitsCutTheLine()
{
    QFETCH(const QVector<VersionInfo>, limits);
    QFETCH(const int, parts);
    QTEST(namesOf(limits, static_cast<VersionParts>(parts)), "cells");
}

void TestVersionClasses::everyVersionIsInOneClass()
{
    const QVector<VersionCell> cells =
        versionCells({{0, 0, 0}, {2, 0, 0}, {2, 0, 1}, {3, 1, 65535}, {3, 2, 0}}, PtParts);
    const auto holds = [](const VersionCell& cell, const VersionInfo& version) {
        if (cell.isLimit)
            return version == *cell.from;
        return (!cell.from || version > *cell.from) && (!cell.to || version < *cell.to);
    };
    const QVector<VersionInfo> versions = {{0},           {0, 0},        {0, 0, 0},  {1, 9, 9},
                                           {2},           {2, 0},        {2, 0, 0},  {2, 0, 1},
                                           {2, 0, 2},     {3, 1, 65535}, {3, 2},     {3, 1, 65536},
                                           {3, 1, 99999}, {3, 2, 0},     {99, 0, 0}, {70000}};
    for (const VersionInfo& version : versions) {
        int classes = 0;
        for (const VersionCell& cell : cells)
            classes += holds(cell, version) ? 1 : 0;
        QVERIFY2(classes == 1, qPrintable(version.toString()));
    }
    for (const VersionCell& cell : cells)
        QVERIFY2(holds(cell, cell.example), qPrintable(nameOf(cell)));
}

void TestVersionClasses::preReleasesComeApartWhereTheyMatter()
{
    const VersionInfo pt(3, 0, 0);
    QStringList names;
    for (const PtClass& it : ptClasses({{2, 0, 0}, pt}, {{pt, ""},
                                                         {pt, "-rc.1"},
                                                         {pt, "-beta.1"},
                                                         {pt, "-beta.1"},
                                                         {pt, ".0-2"},
                                                         {VersionInfo(4, 0, 0), "-rc.9"}}))
        names += QStringLiteral("%1: %2").arg(rangeText(it, it), it.reported());
    QCOMPARE(
        names,
        (QStringList{"below v2.0.0: v0.0.0", "v2.0.0: v2.0.0", "above v2.0.0 below v3.0.0: v2.0.1",
                     "other pre-releases of v3.0.0: v3.0.0-beta.2", "v3.0.0.0-2: v3.0.0.0-2",
                     "v3.0.0-beta.1: v3.0.0-beta.1", "v3.0.0-rc.1: v3.0.0-rc.1", "v3.0.0: v3.0.0",
                     "above v3.0.0: v3.0.1"}));
}

void TestVersionClasses::marksHaveAnOrder_data()
{
    QTest::addColumn<QString>("mark");
    QTest::addColumn<QString>("than");
    QTest::newRow("alpha before beta") << "-alpha.9"
                                       << "-beta.1";
    QTest::newRow("beta before rc") << "-beta.9"
                                    << "-rc.1";
    QTest::newRow("rc before the release") << "-rc.9"
                                           << "";
    QTest::newRow("by number") << "-beta.9"
                               << "-beta.10";
    QTest::newRow("what has no form before all") << "-beta2"
                                                 << "-alpha.0";
}

void TestVersionClasses::marksHaveAnOrder()
{
    QFETCH(const QString, mark);
    QFETCH(const QString, than);
    QVERIFY(isEarlierMark(mark, than));
    QVERIFY(!isEarlierMark(than, mark));
    QVERIFY(!isEarlierMark(mark, mark));
}

ZAN_TEST_MAIN(TestVersionClasses)
#include "tst_versionclasses.moc"
