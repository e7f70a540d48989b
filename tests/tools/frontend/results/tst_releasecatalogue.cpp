#include <imagewriter.h>
#include <releasecatalogue.h>

#include <fixturefiles.h>
#include <testmain.h>

namespace {

ControllerImage imageOf(VersionInfo pt, int modelFamily, int preReleaseType)
{
    ControllerImage image;
    image.modelFamily = modelFamily;
    image.release = pt;
    image.preReleaseType = preReleaseType;
    image.preReleaseNumber = preReleaseType ? 2 : 0;
    image.newPt = pt;
    image.newCt = {1, 4};
    image.minPt = {2, 0, 0};
    image.minCt = {1, 0};
    ControllerImageBlock firmware;
    firmware.minVer = {2, 0, 0};
    firmware.maxVer = {3, 1, 0};
    // Longer than what is read of a file.
    firmware.records = splitIntoRecords(QByteArray(20000, 'x'));
    ControllerImageBlock system;
    system.type = SystemBlock;
    system.minVer = {1, 0};
    system.maxVer = {1, 3};
    system.records = splitIntoRecords(QByteArray(100, 'y'));
    image.blocks = {firmware, system};
    return image;
}

} // namespace

class TestReleaseCatalogue : public QObject
{
    Q_OBJECT

private slots:
    void headsOfImagesTellReleases();
    void familiesAreKeptApart();
    void severalImagesOfOneVersionAreNoAnswer();
    void plainImagesDoNotTellPreReleases();
    void firmwareFollowsFromTheRange_data();
    void firmwareFollowsFromTheRange();
    void foreignFilesDoNotCount();
    void allOfAFileTellsItsReleaseToo();
    void folderIsTheOneThatModulesFind();
};

void TestReleaseCatalogue::headsOfImagesTellReleases()
{
    const FixtureFolder folder;
    folder.write("a.vx3img", controllerImageBytes(imageOf({3, 2, 0}, 0, 20)));
    folder.write("b.vx3img", controllerImageBytes(imageOf({3, 3, 0}, 0, 0)));
    const ReleaseCatalogue catalogue = ReleaseCatalogue::readHeads(folder.path());
    const std::optional<Release> preRelease = catalogue.find({3, 2, 0}, 2);
    QVERIFY(preRelease);
    QCOMPARE(preRelease->appendix, std::make_optional(QString("-beta.2")));
    QCOMPARE(preRelease->ct.toString(), QString("v1.4"));
    QCOMPARE(preRelease->systemBlocks.size(), 1);
    QCOMPARE(preRelease->systemBlocks.constFirst().highest.toString(), QString("v1.3"));
    QCOMPARE(catalogue.find({3, 3, 0}, 2)->appendix, std::make_optional(QString()));
    QVERIFY(!catalogue.find({3, 4, 0}, 2));
}

void TestReleaseCatalogue::familiesAreKeptApart()
{
    const FixtureFolder folder;
    folder.write("a.vx3img", controllerImageBytes(imageOf({3, 3, 0}, 0, 0)));
    folder.write("b.vx3img", controllerImageBytes(imageOf({3, 3, 0}, briarscopeFamily, 30)));
    const ReleaseCatalogue catalogue = ReleaseCatalogue::readHeads(folder.path());
    QCOMPARE(catalogue.find({3, 3, 0}, 0)->modelFamily, 0);
    QCOMPARE(catalogue.find({3, 3, 0}, 2)->modelFamily, 0);
    QCOMPARE(catalogue.find({3, 3, 0}, briarscopeFamily)->modelFamily, briarscopeFamily);
}

void TestReleaseCatalogue::severalImagesOfOneVersionAreNoAnswer()
{
    const FixtureFolder folder;
    folder.write("a.vx3img", controllerImageBytes(imageOf({3, 3, 0}, 0, 0)));
    folder.write("b.vx3img", controllerImageBytes(imageOf({3, 3, 0}, 0, 30)));
    QVERIFY(!ReleaseCatalogue::readHeads(folder.path()).find({3, 3, 0}, 0));
}

void TestReleaseCatalogue::plainImagesDoNotTellPreReleases()
{
    const FixtureFolder folder;
    ControllerImage image = imageOf({3, 1, 0}, 0, 0);
    image.layout = ImageLayout::Plain;
    folder.write("a.vx3img", controllerImageBytes(image));
    const std::optional<Release> release =
        ReleaseCatalogue::readHeads(folder.path()).find({3, 1, 0}, 0);
    QVERIFY(release);
    QVERIFY(!release->appendix);
}

void TestReleaseCatalogue::firmwareFollowsFromTheRange_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("after");
    QTest::newRow("below") << "v0.9"
                           << "v0.9";
    QTest::newRow("at the lowest") << "v1.0"
                                   << "v1.4";
    QTest::newRow("at the highest") << "v1.3"
                                    << "v1.4";
    QTest::newRow("above") << "v1.3.1"
                           << "v1.3.1";
}

void TestReleaseCatalogue::firmwareFollowsFromTheRange()
{
    QFETCH(const QString, before);
    const Release release{0, {3, 3, 0}, {1, 4}, QString(), {{{1, 0}, {1, 3}}}};
    QTEST(release.ctAfter(VersionInfo::fromString(before)).toString(), "after");
}

void TestReleaseCatalogue::foreignFilesDoNotCount()
{
    const FixtureFolder folder;
    folder.write("readme.txt", "no image");
    folder.write("empty", "");
    const QByteArray image = controllerImageBytes(imageOf({3, 3, 0}, 0, 0));
    folder.write("cut-off", image.left(20));
    QVERIFY(!ReleaseCatalogue::readHeads(folder.path()).find({3, 3, 0}, 0));
    QVERIFY(!ReleaseCatalogue::readHeads(folder.path("nowhere")).find({3, 3, 0}, 0));
}

// What their blocks bring is nothing that a device takes, and does not count as a version.
void TestReleaseCatalogue::allOfAFileTellsItsReleaseToo()
{
    const FixtureFolder folder;
    folder.write("a.vx3img", controllerImageBytes(imageOf({3, 3, 0}, 0, 0)));
    const ReleaseCatalogue catalogue = ReleaseCatalogue::readAll(folder.path());
    QCOMPARE(catalogue.find({3, 3, 0}, 2)->ct.toString(), QString("v1.4"));
    QCOMPARE(catalogue.newestForController(2).pt.text(), DeliveredVersion().text());
    QCOMPARE(catalogue.newestForController(2).ct.text(), DeliveredVersion().text());
}

void TestReleaseCatalogue::folderIsTheOneThatModulesFind()
{
    const FixtureFolder program;
    QCOMPARE(updateFolder(program.path()), program.path("controller_update"));
    program.makeFolder("deeper/controller_update");
    QCOMPARE(updateFolder(program.path()), program.path("deeper/controller_update"));
    program.makeFolder("controller_update");
    QCOMPARE(updateFolder(program.path()), program.path("controller_update"));
}

ZAN_TEST_MAIN(TestReleaseCatalogue)
#include "tst_releasecatalogue.moc"
