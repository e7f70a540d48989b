#include "zanmoduleserver.h"

#include "ZanController.h"
#include "ZanData.h"
#include "ZanDisplay.h"
#include "camupdatedata.h"
#include "comparing.h"
#include "imagefixtures.h"
#include "privateaccess.h"
#include "scriptedcascade.h"
#include "scriptedchannel.h"
#include "testmain.h"

#include <BackendVersions>

#include <QRandomGenerator>

ZAN_EXPOSE(exemplar, &ZanModuleServer::m_exemplar);
ZAN_EXPOSE(searchDir, &ZanModuleServer::searchDir);
ZAN_EXPOSE(updatePath, &ZanModuleServer::sUpdateControllerPath);
ZAN_EXPOSE(fillListZanDisplay, &ZanModuleServer::fillListZanDisplay);
ZAN_EXPOSE(readCameraUpdateFiles, &ZanModuleServer::readCameraUpdateFiles);
ZAN_EXPOSE(updateHighestVersions, &ZanModuleServer::updateHighestVersions);
ZAN_EXPOSE(isUpdateImgContainsModel, &ZanModuleServer::isUpdateImgContainsModel);
ZAN_EXPOSE(highestPtOfControllers, &ZanModuleServer::getHighestPtVersionFromController);
ZAN_EXPOSE(ptOf, &ZanController::verPt);
ZAN_EXPOSE(appendixOf, &ZanController::sPreReleaseAppendix);

using Images = QVector<ControllerImage>;
using Cameras = QList<ScriptedCamera>;

class TestZanModuleServer : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { ZanModuleServer::ReleaseExemplar(); }

    void hasOneInstance();
    void asksForControllers_data();
    void asksForControllers();
    void takesAvailableSlavesInTheirOrder();
    void sendsNoTextBeyondTheContract();
    void survivesAnySlaveReply_data();
    void survivesAnySlaveReply();
    void findsTheUpdateDirectory_data();
    void findsTheUpdateDirectory();
    void endsItsSearchWhereLinksLeadInCircles();
    void takesAFileForTheDirectoryAndReadsNothing();
    void readsEveryImageThatIsOne();
    void sortsImagesByRelease();
    void findsTheHighestVersions_data();
    void findsTheHighestVersions();
    void keepsTheAppendixWhenThereIsNoImageAnyMore();
    void refusesAnOldBriarscope_data();
    void refusesAnOldBriarscope();
    void survivesAnyBytesInTheUpdateDirectory();
    void decidesWhatIsUpToDate_data();
    void decidesWhatIsUpToDate();
    void isUpToDateWithoutControllers();
    void knowsTheHighestSoftwareOfTheControllers();
    void clearsFlagsBeforeItKnowsTheImages_data();
    void clearsFlagsBeforeItKnowsTheImages();
    void buildsRowsByReleaseAndController();
    void passesOverControllersThatNeedNothing_data();
    void passesOverControllersThatNeedNothing();
    void offersNothingWithoutImages();
    void rebuildsControllersAndRowsButNotFiles();
    void looksBehindOnADeadChannel();
    void listsCameraFilesByName();
    void asksForCameras_data();
    void asksForCameras();
    void offersFilesToACamera_data();
    void offersFilesToACamera();
    void offersEveryFileToEveryCamera();
    void stopsAtTheFirstApplicableFile();
    void describesTheModelOfACamera_data();
    void describesTheModelOfACamera();
    void survivesAnyCameraReply_data();
    void survivesAnyCameraReply();
    void offersControllersBeforeCameras();
    void tellsCameraRowsFromOthers_data();
    void tellsCameraRowsFromOthers();
    void searchesForTheMarkedCamerasOnly_data();
    void searchesForTheMarkedCamerasOnly();
};

/// A frontend's folder, its channel and its backend, with the inventory made of them.
struct Site
{
    explicit Site(const VersionInfo& protocol = VersionInfo(1, 23),
                  const VersionInfo& systemPt = VersionInfo(3, 0, 0),
                  const QString& model = QStringLiteral("ZAN"))
        : versions(systemPt, protocol, VersionInfo(1, 0), model)
    {
    }
    ~Site() { ZanModuleServer::ReleaseExemplar(); }
    Site(const Site&) = delete;
    Site& operator=(const Site&) = delete;

    ZanModuleServer* server()
    {
        return ZanModuleServer::Exemplar(&channel, folder.path(), &versions);
    }
    void addFile(const QString& name, const QByteArray& bytes) const
    {
        folder.write(QStringLiteral("controller_update/") + name, bytes);
    }
    void addImages(const Images& images) const
    {
        for (int i = 0; i < images.size(); ++i)
            addFile(QStringLiteral("image%1").arg(i), controllerImageBytes(images.at(i)));
    }
    void addCameraFile(const QString& name, const CameraUpdateFile& file) const
    {
        addFile(name + QStringLiteral(".VX2znimg"), cameraUpdateBytes(file));
    }

    FixtureFolder folder;
    ScriptedChannel channel;
    BackendVersions versions;
};

static ScriptedController controllerAt(const QByteArray& pt, const QByteArray& ct)
{
    ScriptedController controller;
    controller.pt = pt;
    controller.ct = ct;
    return controller;
}

static ScriptedSlave slaveAt(const QByteArray& address, const ScriptedController& controller,
                             const QByteArray& available = "yes")
{
    ScriptedSlave slave;
    slave.address = address;
    slave.controller = controller;
    slave.controller.hostname = "slave-" + address;
    slave.available = available;
    return slave;
}

static ScriptedCamera cameraAt(const QByteArray& model, const QByteArray& serial,
                               const QByteArray& version)
{
    ScriptedCamera camera;
    camera.model = model;
    camera.serial = serial;
    camera.version = version;
    return camera;
}

static QStringList described(const ZanModuleServer& server)
{
    QStringList rows;
    for (const ZanDisplay* row : server.listZanDisplay)
        rows +=
            QStringLiteral("%1 %2>%3")
                .arg(row->typeString(), row->versionFrom().toString(), row->versionTo().toString());
    return rows;
}

// ---- The instance

void TestZanModuleServer::hasOneInstance()
{
    ZanModuleServer::ReleaseExemplar();

    Site first;
    scriptMaster(&first.channel, controllerAt("v3.0.0", "v1.0"));
    ZanModuleServer* server = first.server();
    QCOMPARE(exemplar(), server);
    first.channel.takeLog();

    {
        Site second;
        second.addImages({releaseImage({4, 0, 0}, {2, 0}, {systemBlock({0, 0}, {9, 0})})});
        QCOMPARE(second.server(), server);
        QVERIFY(second.channel.log().isEmpty());
        QVERIFY(first.channel.log().isEmpty());
        QCOMPARE(server->getHighestPtVersionFromUpdateFiles(), VersionInfo());

        ZanModuleServer::ReleaseExemplar();
        QCOMPARE(exemplar(), nullptr);
        ZanModuleServer::ReleaseExemplar();

        QCOMPARE(second.server()->getHighestPtVersionFromUpdateFiles(), VersionInfo(4, 0, 0));
        QVERIFY(!second.channel.log().isEmpty());
        QVERIFY(first.channel.log().isEmpty());
    }
}

// ---- Controllers

static const QStringList MASTER_CALLS{
    R"(get_string "system hostname")",          R"(get_string "system controller_version")",
    R"(get_string "system version")",           R"(get_int "system model")",
    R"(get_string "system model_description")", R"(get_int "system controller_serial")",
    R"(get_string "system extra motherboard")",
};
static const QString COUNT_CALL = R"(get_int "cascade number_of_connected_slaves")";
static const QString CAMERA_CALL = R"(get_int "camera number_of_cameras")";

static QString slaveCall(int number)
{
    return QStringLiteral(R"(get_string "cascade connected_slave d%1")")
        .arg(number, 2, 10, QLatin1Char('0'));
}

static QString availableCall(const QString& address)
{
    return QStringLiteral(R"(get_string "cascade connected_slave_available %1")").arg(address);
}

static QStringList recordCalls(const QString& address)
{
    QStringList calls{R"(get_string "system hostname_slave %1")",
                      R"(get_string "system controller_version_slave %1")",
                      R"(get_string "system version_slave %1")",
                      R"(get_int "system model_slave %1")",
                      R"(get_string "system model_description_slave %1")",
                      R"(get_string "cascade connected_slave_controller %1")"};
    for (QString& call : calls)
        call = call.arg(address);
    return calls;
}

void TestZanModuleServer::asksForControllers_data()
{
    QTest::addColumn<VersionInfo>("protocol");
    QTest::addColumn<QByteArray>("availability");
    QTest::addColumn<QByteArray>("failing");
    QTest::addColumn<QStringList>("calls");

    const auto row = [](const char* name, const VersionInfo& protocol, const char* availability,
                        const char* failing, const QStringList& calls) {
        QTest::newRow(name) << protocol << QByteArray(availability) << QByteArray(failing) << calls;
    };
    const QStringList asked{slaveCall(1), availableCall("A")};
    const QStringList second = QStringList{slaveCall(2), availableCall("B")} + recordCalls("B");
    const QStringList start = MASTER_CALLS + QStringList{COUNT_CALL};
    row("a master with two slaves", {1, 23}, "yes", "none",
        start + asked + recordCalls("A") + second + QStringList{CAMERA_CALL});
    row("a slave that is not available is left out", {1, 23}, "no", "none",
        start + asked + second + QStringList{CAMERA_CALL});
    row("a slave that says more than yes is left out", {1, 23}, "yes ", "none",
        start + asked + second + QStringList{CAMERA_CALL});
    row("a slave that says yes in another case is left out", {1, 23}, "Yes", "none",
        start + asked + second + QStringList{CAMERA_CALL});
    row("a slave that says nothing is left out", {1, 23}, "", "none",
        start + asked + second + QStringList{CAMERA_CALL});
    row("a slave without address is left out", {1, 23}, "yes", "cascade connected_slave d01",
        start + QStringList{slaveCall(1)} + second + QStringList{CAMERA_CALL});
    row("a slave without availability is left out", {1, 23}, "yes",
        "cascade connected_slave_available A", start + asked + second + QStringList{CAMERA_CALL});
    row("a count that fails is no slave", {1, 23}, "yes", "cascade number_of_connected_slaves",
        start + QStringList{CAMERA_CALL});
    row("protocol 1.6 has no slaves to ask for", {1, 6}, "yes", "none",
        MASTER_CALLS.mid(0, 5) + MASTER_CALLS.mid(6) + QStringList{CAMERA_CALL});
    row("protocol 0.14 has no board either", {0, 14}, "yes", "none",
        MASTER_CALLS.mid(0, 5) + QStringList{CAMERA_CALL});

    const auto oldRecord = [](const QString& address) {
        return recordCalls(address).mid(0, 3) + MASTER_CALLS.mid(3, 2) +
               recordCalls(address).mid(5);
    };
    for (const int minor : {7, 22}) {
        QTest::addRow("protocol 1.%d asks for slaves, and the master for their model", minor)
            << VersionInfo(1, minor) << QByteArray("yes") << QByteArray("none")
            << start + asked + oldRecord("A") + second.mid(0, 2) + oldRecord("B") +
                   QStringList{CAMERA_CALL};
    }
}

void TestZanModuleServer::asksForControllers()
{
    QFETCH(VersionInfo, protocol);
    QFETCH(QByteArray, availability);
    QFETCH(QByteArray, failing);
    Site site(protocol);
    const ScriptedController current = controllerAt("v3.0.0", "v1.0");
    scriptMaster(&site.channel, current);
    scriptSlaves(&site.channel, {slaveAt("A", current, availability), slaveAt("B", current)});
    site.channel.on(failing).fail();
    site.server();
    QTEST(site.channel.log(), "calls");
}

void TestZanModuleServer::takesAvailableSlavesInTheirOrder()
{
    Site site;
    const ScriptedController current = controllerAt("v3.0.0", "v1.0");
    scriptMaster(&site.channel, current);
    scriptSlaves(&site.channel, {slaveAt("10.0.0.3", current), slaveAt("10.0.0.1", current, "no"),
                                 slaveAt("10.0.0.2", current)});
    QStringList controllers;
    for (const ZanController* controller : site.server()->listZanController)
        controllers += controller->hostname() + '|' + controller->ip() +
                       (controller->isSlave() ? "|slave" : "|master");
    QCOMPARE(controllers, (QStringList{"alpha||master", "slave-10.0.0.3|10.0.0.3|slave",
                                       "slave-10.0.0.2|10.0.0.2|slave"}));
}

// The longest texts hold what a controller said in the 199 bytes of a reply.
void TestZanModuleServer::sendsNoTextBeyondTheContract()
{
    const QByteArray longest(199, 'x');
    Site site;
    scriptMaster(&site.channel, controllerAt("v3.0.0", "v1.0"));
    site.channel.on("cascade number_of_connected_slaves").reply(10000);
    site.channel.onPrefix("cascade connected_slave d").reply(longest);
    site.channel.onPrefix("cascade connected_slave_available ").reply("yes");
    site.channel.on("camera number_of_cameras").reply(10000);
    site.channel.onPrefix("camera ").reply(longest);
    site.server();
    int length = 0;
    for (const QString& call : site.channel.log())
        length = qMax(length, call.section('"', 1, 1).size());
    QCOMPARE(length, 234);
}

// Two digits at least.
static QString numbered(int number)
{
    return QString::number(number).rightJustified(2, '0');
}

void TestZanModuleServer::survivesAnySlaveReply_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<QByteArray>("address");
    QTest::addColumn<int>("queried");
    QTest::addColumn<int>("controllers");

    QTest::newRow("a negative count is no slave") << -1 << QByteArray("A") << 0 << 1;
    QTest::newRow("the smallest count is no slave") << INT_MIN << QByteArray("A") << 0 << 1;
    QTest::newRow("a huge count ends at ten thousand")
        << INT_MAX << QByteArray("A") << 10000 << 10001;
    QTest::newRow("ten thousand are taken") << 10000 << QByteArray("A") << 10000 << 10001;
    QTest::newRow("more than two digits are taken") << 101 << QByteArray("A") << 101 << 102;
    QTest::newRow("an empty address") << 1 << QByteArray() << 1 << 2;
    QTest::newRow("an address of 199 bytes") << 1 << QByteArray(199, 'x') << 1 << 2;
    QTest::newRow("an address beyond ASCII") << 1 << QByteArray("\xFF\xE4") << 1 << 2;
    QTest::newRow("an address with a format in it") << 1 << QByteArray("%s%n%1") << 1 << 2;
}

void TestZanModuleServer::survivesAnySlaveReply()
{
    QFETCH(int, count);
    QFETCH(QByteArray, address);
    Site site;
    scriptMaster(&site.channel, controllerAt("v3.0.0", "v1.0"));
    site.channel.on("cascade number_of_connected_slaves").reply(count);
    site.channel.onPrefix("cascade connected_slave d").reply(address);
    site.channel.onPrefix("cascade connected_slave_available ").reply("yes");
    const ZanModuleServer* server = site.server();
    const QString query = "get_string \"cascade connected_slave d";
    const QStringList queries = site.channel.logOf(query);
    QTEST(queries.size(), "queried");
    if (!queries.isEmpty())
        QCOMPARE(queries.last(), query + numbered(queries.size()) + '"');
    QTEST(server->listZanController.size(), "controllers");
    if (server->listZanController.size() == 2) {
        const QString text = QString::fromLatin1(address);
        QCOMPARE(server->listZanController.last()->ip(), text);
        QVERIFY(site.channel.log().contains(availableCall(text)));
    }
}

// ---- The update directory

void TestZanModuleServer::findsTheUpdateDirectory_data()
{
    QTest::addColumn<QStringList>("folders");
    QTest::addColumn<QStringList>("links");
    QTest::addColumn<QString>("path");

    const auto row = [](const char* name, const QStringList& folders, const QStringList& links,
                        const char* path) {
        QTest::newRow(name) << folders << links << QString(path);
    };
    row("beside the program", {"controller_update"}, {}, "controller_update/");
    row("one level down", {"a/controller_update"}, {}, "a/controller_update//");
    row("three levels down", {"a/b/c/controller_update"}, {}, "a/b/c/controller_update////");
    row("beside the program before any folder", {"a/controller_update", "controller_update"}, {},
        "controller_update/");
    row("in the first folder by name", {"c/controller_update", "b/controller_update", "a"}, {},
        "b/controller_update//");
    row("the order of names ignores case", {"B/controller_update", "a/controller_update"}, {},
        "a/controller_update//");
    row("depth goes before breadth", {"a/z/z/controller_update", "b/controller_update"}, {},
        "a/z/z/controller_update////");
    row("behind a folder that holds none", {"a/b/c", "d/controller_update"}, {},
        "d/controller_update//");
    row("a linked folder is entered", {"x/real/controller_update"}, {"a>x/real"},
        "a/controller_update//");
    row("the directory itself may be a link", {"x/images"}, {"controller_update>x/images"},
        "controller_update/");
    row("a link to nothing is none", {"b/controller_update"}, {"a>missing", "controller_update>no"},
        "b/controller_update//");
    row("a link to a folder above is not followed for ever", {"a", "b/controller_update"},
        {"a/up>"}, "b/controller_update//");
    row("links to each other are not followed for ever", {"a", "b", "c/controller_update"},
        {"a/b>b", "b/a>a"}, "c/controller_update//");
    row("hidden folders are not entered", {".a/controller_update"}, {}, "");
    row("another case is another name", {"Controller_Update", "a/CONTROLLER_UPDATE"}, {}, "");
    row("a longer name is another name", {"controller_updates", "a/old_controller_update"}, {}, "");
    row("none in many folders", {"a/b/c", "d/e", "f"}, {}, "");
}

void TestZanModuleServer::findsTheUpdateDirectory()
{
    QFETCH(QStringList, folders);
    QFETCH(QStringList, links);
    QFETCH(QString, path);
    Site site;
    for (const QString& folder : folders)
        site.folder.makeFolder(folder);
    for (const QString& link : links)
        site.folder.link(link.section('>', 0, 0), link.section('>', 1, 1));
    const ZanModuleServer* server = site.server();
    const QString root = site.folder.path() + '/';
    const QString name = QStringLiteral("controller_update");
    QCOMPARE(searchDir(server, site.folder.path(), name), path.isEmpty() ? path : root + path);
    QCOMPARE(updatePath(server), root + (path.isEmpty() ? name : path));
}

void TestZanModuleServer::endsItsSearchWhereLinksLeadInCircles()
{
    // Ways through folders that all hold links to each other are too many to be walked.
    Site site;
    QStringList folders;
    for (char name = 'a'; name <= 'p'; ++name)
        folders += QString(QLatin1Char(name));
    for (const QString& folder : folders) {
        site.folder.makeFolder(folder);
        for (const QString& other : folders)
            site.folder.link(folder + "/to_" + other, other);
    }
    QCOMPARE(searchDir(site.server(), site.folder.path(), QStringLiteral("controller_update")),
             QString());

    site.folder.makeFolder("p/z/controller_update");
    QCOMPARE(searchDir(site.server(), site.folder.path(), QStringLiteral("controller_update")),
             site.folder.path("a/to_b/to_c/to_d/to_e/to_f/to_g/to_h/to_i/to_j/to_k/to_l/to_m/to_n/"
                              "to_o/to_p/z/controller_update/") +
                 QString(17, '/'));
}

void TestZanModuleServer::takesAFileForTheDirectoryAndReadsNothing()
{
    Site site;
    scriptMaster(&site.channel, controllerAt("v1.0.0", "v1.0"));
    const ControllerImage image =
        releaseImage({3, 0, 0}, {2, 0}, {firmwareBlock({1, 0, 0}, {2, 9, 9})});
    site.folder.write("controller_update", controllerImageBytes(image));
    site.folder.write("a/controller_update/image", controllerImageBytes(image));
    const ZanModuleServer* server = site.server();
    QCOMPARE(updatePath(server), site.folder.path("controller_update/"));
    QVERIFY(server->listUpdates.isEmpty());
    QVERIFY(server->listCamUpdates.isEmpty());
    QVERIFY(server->allControllersUpToDate(true));
    QVERIFY(site.channel.messages().isEmpty());
}

// ---- Images

void TestZanModuleServer::readsEveryImageThatIsOne()
{
    Site site;
    const QByteArray image = controllerImageBytes(
        releaseImage({3, 0, 0}, {2, 0}, {firmwareBlock({1, 0, 0}, {2, 9, 9})}));
    const ControllerImage blockless = releaseImage({9, 0, 0}, {9, 0}, {});
    site.addFile("without_extension", image);
    site.addFile("an image named as a camera file.VX2znimg", image);
    site.addFile("in capitals.IMG", image);
    site.addFile("notes.txt", "nothing to be read here");
    site.addFile("empty", QByteArray());
    site.addFile("cut", image.left(60));
    site.addFile("no block", controllerImageBytes(blockless));
    site.addFile("camera", cameraUpdateBytes(cameraFile({0x0901}, {1, 4, 0})));
    site.addFile("folder/image", image);
    site.addFile(".hidden", image);
    site.folder.link("controller_update/link", "controller_update/without_extension");

    QStringList names;
    for (const ZanData* update : site.server()->listUpdates) {
        QVERIFY(update->isValid());
        names += update->fileName().section('/', -1);
    }
    names.sort();
    QCOMPARE(names, (QStringList{"an image named as a camera file.VX2znimg", "in capitals.IMG",
                                 "link", "without_extension"}));
    QVERIFY(site.channel.messages().isEmpty());
}

void TestZanModuleServer::sortsImagesByRelease()
{
    Site site;
    const QVector<VersionInfo> releases{{3, 10, 0}, {2, 0, 0},  {3, 9, 9},
                                        {10, 0, 0}, {3, 9, 10}, {1, 9, 0}};
    for (int i = 0; i < releases.size(); ++i) {
        ControllerImage image =
            releaseImage({9 - i, 0, 0}, {i, 0}, {firmwareBlock({1, 0, 0}, {2, 9, 9})});
        image.release = releases.at(i);
        site.addFile(QString::number(i), controllerImageBytes(image));
    }
    QStringList sorted;
    for (const ZanData* image : site.server()->listUpdates)
        sorted += image->newVornix2Version().toString();
    QCOMPARE(sorted, (QStringList{"v1.9.0", "v2.0.0", "v3.9.9", "v3.9.10", "v3.10.0", "v10.0.0"}));
}

static ControllerImage imageOf(const VersionInfo& release, const VersionInfo& newPt,
                               const VersionInfo& newCt, int betaNumber = 0)
{
    ControllerImage image = releaseImage(newPt, newCt, {firmwareBlock({0, 0, 0}, {99, 0, 0})});
    image.release = release;
    image.preReleaseType = betaNumber > 0 ? 20 : 0;
    image.preReleaseNumber = betaNumber;
    return image;
}

void TestZanModuleServer::findsTheHighestVersions_data()
{
    QTest::addColumn<Images>("images");
    QTest::addColumn<VersionInfo>("highestPt");
    QTest::addColumn<VersionInfo>("highestCt");
    QTest::addColumn<QString>("appendix");

    const auto row = [](const char* name, const Images& images, const VersionInfo& pt,
                        const VersionInfo& ct, const char* appendix) {
        QTest::newRow(name) << images << pt << ct << QString(appendix);
    };
    row("no image", {}, {}, {}, "");
    row("one image", {imageOf({3, 0, 0}, {3, 0, 0}, {1, 2})}, {3, 0, 0}, {1, 2}, "");
    row("each of its own image",
        {imageOf({3, 0, 0}, {3, 0, 0}, {1, 0}, 4), imageOf({2, 9, 0}, {2, 9, 0}, {1, 2}, 5)},
        {3, 0, 0}, {1, 2}, "-beta.4");
    row("the appendix of the image with the highest Pt",
        {imageOf({3, 0, 0}, {3, 0, 0}, {1, 0}), imageOf({4, 0, 0}, {2, 9, 0}, {1, 2}, 5)},
        {3, 0, 0}, {1, 2}, "");
    row("the appendix of the lower release among equals",
        {imageOf({3, 1, 0}, {3, 0, 0}, {1, 0}, 4), imageOf({3, 0, 0}, {3, 0, 0}, {1, 0}, 5)},
        {3, 0, 0}, {1, 0}, "-beta.5");
}

void TestZanModuleServer::findsTheHighestVersions()
{
    QFETCH(Images, images);
    Site site;
    site.folder.makeFolder("controller_update");
    site.addImages(images);
    const ZanModuleServer* server = site.server();
    QTEST(server->getHighestPtVersionFromUpdateFiles(), "highestPt");
    QTEST(server->getHighestCtVersionFromUpdateFiles(), "highestCt");
    QTEST(server->getHighestPtVersionAppendix(), "appendix");
}

void TestZanModuleServer::keepsTheAppendixWhenThereIsNoImageAnyMore()
{
    Site site;
    site.addImages({imageOf({3, 0, 0}, {3, 0, 0}, {1, 0}, 4)});
    ZanModuleServer* server = site.server();
    qDeleteAll(server->listUpdates);
    server->listUpdates.clear();
    updateHighestVersions(server);
    QCOMPARE(server->getHighestPtVersionFromUpdateFiles(), VersionInfo());
    QCOMPARE(server->getHighestCtVersionFromUpdateFiles(), VersionInfo());
    QCOMPARE(server->getHighestPtVersionAppendix(), QStringLiteral("-beta.4"));
}

void TestZanModuleServer::refusesAnOldBriarscope_data()
{
    QTest::addColumn<QString>("model");
    QTest::addColumn<VersionInfo>("systemPt");
    QTest::addColumn<bool>("isRefused");

    const auto row = [](const char* name, const char* model, const VersionInfo& systemPt,
                        bool isRefused) {
        QTest::newRow(name) << QString(model) << systemPt << isRefused;
    };
    row("2.7.7 is too old", "BRIARSCOPE3", {2, 7, 7}, true);
    row("2.7.8 is not", "BRIARSCOPE3", {2, 7, 8}, false);
    row("2.7.0 is too old", "BRIARSCOPE", {2, 7, 0}, true);
    row("2.7 without patch is too old", "BRIARSCOPE3", {2, 7}, true);
    row("2.6.99 is too old", "BRIARSCOPE3", {2, 6, 99}, true);
    row("1.99.99 is too old", "BRIARSCOPE3", {1, 99, 99}, true);
    row("2.8.0 is not", "BRIARSCOPE3", {2, 8, 0}, false);
    row("3.0.0 is not", "BRIARSCOPE3", {3, 0, 0}, false);
    row("an unknown version is too old", "BRIARSCOPE3", {}, true);
    row("another model of 2.7.7 is not", "ZAN", {2, 7, 7}, false);
    row("another case is another model", "Briarscope3", {2, 7, 7}, false);
    row("the name further on is another model", "ZAN BRIARSCOPE", {2, 7, 7}, false);
    row("no model is another model", "", {2, 7, 7}, false);
}

void TestZanModuleServer::refusesAnOldBriarscope()
{
    QFETCH(QString, model);
    QFETCH(VersionInfo, systemPt);
    QFETCH(bool, isRefused);
    Site site(VersionInfo(1, 23), systemPt, model);
    site.addImages({imageOf({3, 0, 0}, {3, 0, 0}, {1, 2})});
    site.addCameraFile("camera", cameraFile({0x0901}, {1, 4, 0}));
    const ZanModuleServer* server = site.server();
    QCOMPARE(server->listUpdates.size(), isRefused ? 0 : 1);
    QCOMPARE(server->getHighestPtVersionFromUpdateFiles(),
             isRefused ? VersionInfo() : VersionInfo(3, 0, 0));
    QCOMPARE(server->listCamUpdates.size(), 1);
    const QString message = "post_message standard VORNIX3 1 \"This version of VORNIX3 is "
                            "incompatible with this BRIARSCOPE! Please use Vornix2 in version "
                            "v2.7.7.\"";
    QCOMPARE(site.channel.logOf("post_message"), isRefused ? QStringList(message) : QStringList());
}

void TestZanModuleServer::survivesAnyBytesInTheUpdateDirectory()
{
    Site site;
    scriptMaster(&site.channel, controllerAt("v1.0.0", "v1.0"));
    scriptCameras(&site.channel, {cameraAt("0x0901", "C100", "v1.0.0")});
    QRandomGenerator random(20);
    const QByteArray magics[] = {"", "\x08\xD2", "\x0A\xD2", "\x18\xD2", "\x1A\xD2", "\x09\xD2"};
    for (int i = 0; i < 400; ++i) {
        QByteArray bytes = magics[i % 6];
        for (int size = random.bounded(300); size > 0; --size)
            bytes += static_cast<char>(random.bounded(256));
        site.addFile(QStringLiteral("%1%2").arg(i).arg(i % 2 ? ".VX2znimg" : ""), bytes);
    }
    ZanModuleServer* server = site.server();
    QCOMPARE(server->listCamUpdates.size(), 200);
    server->redo_fillListZanDisplay();
    for (const ZanData* image : qAsConst(server->listUpdates))
        QVERIFY(image->isValid());
    for (const ZanDisplay* row : qAsConst(server->listZanDisplay))
        QVERIFY(!row->typeString().isEmpty());
}

// ---- Decisions

void TestZanModuleServer::decidesWhatIsUpToDate_data()
{
    QTest::addColumn<Images>("images");
    QTest::addColumn<QByteArray>("pt");
    QTest::addColumn<QByteArray>("ct");
    QTest::addColumn<bool>("isUpToDate");
    QTest::addColumn<bool>("isUpToDateButForPreReleases");
    QTest::addColumn<bool>("hasFailed");

    const auto row = [](const char* name, const Images& images, const char* pt, const char* ct,
                        bool upToDate, bool butForPreReleases, bool failed) {
        QTest::newRow(name) << images << QByteArray(pt) << QByteArray(ct) << upToDate
                            << butForPreReleases << failed;
    };
    const Images final{imageOf({3, 0, 0}, {3, 0, 0}, {1, 2})};
    const Images beta{imageOf({3, 0, 0}, {3, 0, 0}, {1, 2}, 4)};
    row("at the highest versions", final, "v3.0.0", "v1.2", true, true, false);
    row("above the highest versions", final, "v3.0.1", "v1.3", true, true, false);
    row("Pt is behind", final, "v2.9.9", "v1.2", false, false, false);
    row("Ct is behind", final, "v3.0.1", "v1.1", false, false, false);
    row("Ct is behind at the highest Pt: an update failed", final, "v3.0.0", "v1.1", false, false,
        true);
    row("both are behind", final, "v2.0.0", "v1.0", false, false, false);
    row("Pt without patch is behind", final, "v3.0", "v1.2", false, false, false);
    row("Ct with a patch is above", final, "v3.0.0", "v1.2.1", true, true, false);
    row("a pre-release of the highest Pt", final, "v3.0.0-rc.1", "v1.2", false, true, false);
    row("a pre-release above the highest Pt", final, "v3.0.1-rc.1", "v1.2", true, true, false);
    row("the same pre-release as the images", beta, "v3.0.0-beta.4-gabc", "v1.2", true, true,
        false);
    row("another pre-release than the images", beta, "v3.0.0-beta.3", "v1.2", false, true, false);
    row("a final release over the images' pre-release", beta, "v3.0.0", "v1.2", true, true, false);
    row("no image", {}, "v0.0.0", "v0.0.0", true, true, false);
    row("no image and a pre-release", {}, "v1.0.0-rc.1", "v0.0.0", true, true, false);
}

void TestZanModuleServer::decidesWhatIsUpToDate()
{
    QFETCH(Images, images);
    QFETCH(QByteArray, pt);
    QFETCH(QByteArray, ct);
    QFETCH(bool, isUpToDate);
    const ScriptedController newest = controllerAt("v3.0.0", "v9.0");
    const ScriptedController asked = controllerAt(pt, ct);
    for (const bool isSlave : {false, true}) {
        Site site;
        site.addImages(images);
        scriptMaster(&site.channel, isSlave ? newest : asked);
        scriptSlaves(&site.channel, {slaveAt("A", isSlave ? asked : newest)});
        // The newest controller of all is on a final release.
        ZanModuleServer* server = site.server();
        QTEST(server->allControllersUpToDate(true), "isUpToDate");
        QTEST(server->allControllersUpToDate(false), "isUpToDateButForPreReleases");
        QTEST(server->hasFailedUpdate(), "hasFailed");

        server->redo_fillListZanDisplay();
        const ZanController* controller = server->listZanController.at(isSlave ? 1 : 0);
        QCOMPARE(controller->getNeedUpdate(), !isUpToDate);
    }
}

void TestZanModuleServer::isUpToDateWithoutControllers()
{
    Site site;
    site.addImages({imageOf({3, 0, 0}, {3, 0, 0}, {1, 2})});
    ZanModuleServer* server = site.server();
    qDeleteAll(server->listZanController);
    server->listZanController.clear();
    QVERIFY(server->allControllersUpToDate(true));
    QVERIFY(server->allControllersUpToDate(false));
    QVERIFY(!server->hasFailedUpdate());
    QCOMPARE(highestPtOfControllers(server), VersionInfo(0, 0, 0));
}

void TestZanModuleServer::knowsTheHighestSoftwareOfTheControllers()
{
    Site site;
    scriptMaster(&site.channel, controllerAt("v2.0.0", "v1.0"));
    scriptSlaves(&site.channel, {slaveAt("A", controllerAt("v3.1.0", "v1.0")),
                                 slaveAt("B", controllerAt("v3.0.9", "v1.0"))});
    QCOMPARE(highestPtOfControllers(site.server()), VersionInfo(3, 1, 0));
}

void TestZanModuleServer::clearsFlagsBeforeItKnowsTheImages_data()
{
    QTest::addColumn<VersionInfo>("protocol");
    QTest::addColumn<QByteArray>("pt");
    QTest::addColumn<bool>("flagAtFirst");
    QTest::addColumn<bool>("flagLater");
    QTest::addColumn<int>("rowsAtFirst");
    QTest::addColumn<int>("rowsLater");

    const auto row = [](const char* name, const VersionInfo& protocol, const char* pt,
                        bool flagAtFirst, bool flagLater, int rowsAtFirst, int rowsLater) {
        QTest::newRow(name) << protocol << QByteArray(pt) << flagAtFirst << flagLater << rowsAtFirst
                            << rowsLater;
    };
    row("a controller that is behind", {1, 7}, "v2.0.0", false, true, 0, 1);
    row("a pre-release that is behind", {1, 7}, "v2.0.0-rc.1", false, true, 0, 1);
    row("a controller that is up to date", {1, 7}, "v3.0.0", false, false, 0, 0);
    row("before 1.7 the flag stays", {1, 6}, "v2.0.0", true, true, 1, 1);
    row("before 1.7 the flag stays on a controller that is up to date", {1, 6}, "v3.0.0", true,
        true, 0, 0);
}

void TestZanModuleServer::clearsFlagsBeforeItKnowsTheImages()
{
    QFETCH(VersionInfo, protocol);
    QFETCH(QByteArray, pt);
    Site site(protocol);
    site.addImages({imageOf({3, 0, 0}, {3, 0, 0}, {1, 0})});
    scriptMaster(&site.channel, controllerAt(pt, "v1.0"));
    ZanModuleServer* server = site.server();
    QTEST(server->listZanController.first()->getNeedUpdate(), "flagAtFirst");
    QTEST(server->listZanDisplay.size(), "rowsAtFirst");
    server->redo_fillListZanDisplay();
    QTEST(server->listZanController.first()->getNeedUpdate(), "flagLater");
    QTEST(server->listZanDisplay.size(), "rowsLater");
}

// ---- Rows

// Pt from the major version below to this one; every Ct below 2.0.
static ControllerImage chainImage(int major)
{
    return releaseImage(
        {major, 0, 0}, {2, 0},
        {firmwareBlock({major - 1, 0, 0}, {major - 1, 65535, 65535}), systemBlock({1, 0}, {1, 9})});
}

void TestZanModuleServer::buildsRowsByReleaseAndController()
{
    Site site;
    site.addImages({chainImage(4), chainImage(2), chainImage(3)});
    scriptMaster(&site.channel, controllerAt("v1.0.0", "v2.0"));
    scriptSlaves(&site.channel, {slaveAt("A", controllerAt("v3.0.0", "v1.5")),
                                 slaveAt("B", controllerAt("v2.5.0", "v2.0"))});
    ZanModuleServer* server = site.server();
    QCOMPARE(described(*server), QStringList());
    for (int pass = 0; pass < 2; ++pass) {
        server->redo_fillListZanDisplay();
        QCOMPARE(described(*server), (QStringList{
                                         "Firmware update (alpha) v1.0.0>v2.0.0",
                                         "System update (slave-A) v1.5>v2.0",
                                         "Firmware update (alpha) v2.0.0>v3.0.0",
                                         "Firmware update (slave-B) v2.5.0>v3.0.0",
                                         "Firmware update (alpha) v3.0.0>v4.0.0",
                                         "Firmware update (slave-A) v3.0.0>v4.0.0",
                                         "Firmware update (slave-B) v3.0.0>v4.0.0",
                                     }));
    }
    for (const ZanController* controller : qAsConst(server->listZanController))
        QCOMPARE(controller->currentPt, VersionInfo(4, 0, 0));
    QVERIFY(!server->isCameraUpdate());
    QVERIFY(!server->isCameraUpdateOnly());
}

void TestZanModuleServer::passesOverControllersThatNeedNothing_data()
{
    QTest::addColumn<int>("modelFamily");
    QTest::addColumn<int>("model");
    QTest::addColumn<QByteArray>("pt");
    QTest::addColumn<QStringList>("rows");

    const auto row = [](const char* name, int modelFamily, int model, const char* pt,
                        const QStringList& rows) {
        QTest::newRow(name) << modelFamily << model << QByteArray(pt) << rows;
    };
    const QString master = "Firmware update (alpha) v1.0.0>v2.0.0";
    const QString slave = "Firmware update (slave-A) v1.5.0>v2.0.0";
    row("both need the image", 0, 0, "v1.5.0", {master, slave});
    row("an up-to-date slave needs nothing", 0, 0, "v2.0.0", {master});
    row("a slave of another model takes nothing", 0, 21, "v1.5.0", {master});
    row("a slave of a related model takes the image", 0, 20, "v1.5.0", {master, slave});
    row("a slave outside the blocks' limits takes nothing", 0, 0, "v0.5.0", {master});
    row("an image of model 21 fits model 21 alone", 21, 21, "v1.5.0", {slave});
    row("an image of model 21 fits no controller of model 0", 21, 0, "v1.5.0", {});
}

void TestZanModuleServer::passesOverControllersThatNeedNothing()
{
    QFETCH(int, modelFamily);
    QFETCH(int, model);
    QFETCH(QByteArray, pt);
    Site site;
    ControllerImage image = chainImage(2);
    image.modelFamily = modelFamily;
    site.addImages({image});
    scriptMaster(&site.channel, controllerAt("v1.0.0", "v2.0"));
    ScriptedController slave = controllerAt(pt, "v2.0");
    slave.model = model;
    scriptSlaves(&site.channel, {slaveAt("A", slave)});
    ZanModuleServer* server = site.server();
    server->redo_fillListZanDisplay();
    QTEST(described(*server), "rows");
    // A row that was dropped has left the position where it was.
    const ZanController* controller = server->listZanController.last();
    const bool hasRow = described(*server).join("").contains("slave-A");
    QCOMPARE(controller->currentPt,
             hasRow ? VersionInfo(2, 0, 0) : controller->getVersionLumasolver());
}

void TestZanModuleServer::offersNothingWithoutImages()
{
    Site site;
    scriptMaster(&site.channel, controllerAt("v1.0.0-rc.1", "v1.0"));
    scriptCameras(&site.channel, {cameraAt("0x0901", "C100", "v1.0.0")});
    site.addCameraFile("camera", cameraFile({0x0901}, {1, 4, 0}));
    ZanModuleServer* server = site.server();
    QCOMPARE(described(*server), QStringList("Camera firmware update (Camera C100) v1.0.0>v1.4.0"));

    // A pre-release of no version counts as out of date even then.
    ptOf(server->listZanController.first()) = VersionInfo();
    QVERIFY(!appendixOf(server->listZanController.first()).isEmpty());
    QVERIFY(!server->allControllersUpToDate(true));
    fillListZanDisplay(server);
    QCOMPARE(described(*server), QStringList("- no update available - >"));
    QVERIFY(!server->isCameraUpdate());
}

void TestZanModuleServer::rebuildsControllersAndRowsButNotFiles()
{
    Site site;
    site.addImages({chainImage(2)});
    site.addCameraFile("camera", cameraFile({0x0901}, {1, 4, 0}));
    scriptMaster(&site.channel, controllerAt("v1.0.0", "v2.0"));
    ZanModuleServer* server = site.server();
    const QStringList asked = site.channel.takeLog();
    QCOMPARE(asked, MASTER_CALLS + QStringList({COUNT_CALL, CAMERA_CALL}));
    const QList<ZanData*> images = server->listUpdates;
    const QList<CamUpdateData*> cameraFiles = server->listCamUpdates;
    site.addFile("later", controllerImageBytes(chainImage(3)));

    server->redo_fillListZanDisplay();
    QCOMPARE(site.channel.takeLog(), MASTER_CALLS + QStringList{COUNT_CALL});
    QCOMPARE(described(*server), QStringList("Firmware update (alpha) v1.0.0>v2.0.0"));
    QCOMPARE(server->listZanDisplay.first()->controller(), server->listZanController.first());

    scriptMaster(&site.channel, controllerAt("v2.0.0", "v2.0"));
    server->redo_fillListZanDisplay();
    QCOMPARE(site.channel.takeLog(), asked);
    QCOMPARE(described(*server), QStringList());
    QCOMPARE(server->listUpdates, images);
    QCOMPARE(server->listCamUpdates, cameraFiles);
    QCOMPARE(server->getHighestPtVersionFromUpdateFiles(), VersionInfo(2, 0, 0));
}

void TestZanModuleServer::looksBehindOnADeadChannel()
{
    Site site;
    site.addImages({releaseImage({2, 0, 0}, {2, 0}, {firmwareBlock({0, 0, 0}, {1, 9, 9})})});
    site.addCameraFile("camera", cameraFile({0x0901}, {1, 4, 0}));
    site.channel.die();
    ZanModuleServer* server = site.server();
    QCOMPARE(site.channel.takeLog(), MASTER_CALLS + QStringList({COUNT_CALL, CAMERA_CALL}));
    QVERIFY(!server->allControllersUpToDate(true));
    QVERIFY(server->allCamerasUpToDate());
    server->redo_fillListZanDisplay();
    QCOMPARE(described(*server), QStringList("Firmware update () v0.0.0>v2.0.0"));
}

// ---- Cameras

void TestZanModuleServer::listsCameraFilesByName()
{
    Site site;
    const CameraUpdateFile file = cameraFile({0x0901}, {1, 4, 0});
    for (const char* name : {"c", "B", "a", "d"})
        site.addCameraFile(name, file);
    site.addFile("e.vx2znimg", cameraUpdateBytes(file));
    site.addFile("f.VX2znimg.bak", cameraUpdateBytes(file));
    site.addFile("g", cameraUpdateBytes(file));
    site.addFile("h.VX2znimg", controllerImageBytes(chainImage(2)));
    site.addFile("i.VX2znimg", QByteArray());
    site.folder.makeFolder("controller_update/j.VX2znimg");
    ZanModuleServer* server = site.server();
    for (int pass = 0; pass < 2; ++pass) {
        QStringList names;
        for (const CamUpdateData* update : qAsConst(server->listCamUpdates))
            names += update->getFilename().section('/', -1).section('.', 0, 0);
        // By name with its case; the pattern itself ignores case, and folders match it as well.
        QCOMPARE(names, (QStringList{"B", "a", "c", "d", "e", "h", "i", "j"}));
        readCameraUpdateFiles(server);
    }
    for (const CamUpdateData* unreadable : server->listCamUpdates.mid(5))
        QVERIFY(unreadable->getCamModels().isEmpty());
    QVERIFY(isUpdateImgContainsModel(server, QStringLiteral("0x0901")));
    QVERIFY(!isUpdateImgContainsModel(server, QStringLiteral("0X0901")));
    QVERIFY(!isUpdateImgContainsModel(server, QStringLiteral("0x0c01")));
    QVERIFY(!isUpdateImgContainsModel(server, QString()));
}

static QString cameraCall(int number)
{
    return QStringLiteral(R"(get_string "camera camera c%1")").arg(number, 2, 10, QLatin1Char('0'));
}

static QString versionCall(int number)
{
    return QStringLiteral(R"(get_string "camera version c%1")")
        .arg(number, 2, 10, QLatin1Char('0'));
}

static QString descriptionCall(const QString& model)
{
    return QStringLiteral(R"(get_string "camera model_desc %1")").arg(model);
}

void TestZanModuleServer::asksForCameras_data()
{
    QTest::addColumn<QByteArray>("failing");
    QTest::addColumn<QStringList>("calls");
    QTest::addColumn<int>("rowCount");

    // Camera 1 is behind, no file serves camera 2, and camera 3 is behind.
    const auto row = [](const char* name, const char* failing, const QStringList& calls,
                        int rowCount) {
        QTest::newRow(name) << QByteArray(failing) << calls << rowCount;
    };
    const QStringList first{cameraCall(1), versionCall(1), descriptionCall("0x0901")};
    const QStringList second{cameraCall(2)};
    const QStringList third{cameraCall(3), versionCall(3), descriptionCall("0x0901")};
    row("every camera, further only those that a file serves", "none", first + second + third, 2);
    row("a count that fails is no camera", "camera number_of_cameras", {}, 0);
    row("a camera without identity is passed over", "camera camera c01",
        first.mid(0, 1) + second + third, 1);
    row("a camera without version is passed over", "camera version c01",
        first.mid(0, 2) + second + third, 1);
    row("a camera without description has its row", "camera model_desc 0x0901",
        first + second + third, 2);
}

void TestZanModuleServer::asksForCameras()
{
    QFETCH(QByteArray, failing);
    QFETCH(QStringList, calls);
    QFETCH(int, rowCount);
    Site site;
    scriptMaster(&site.channel, controllerAt("v3.0.0", "v1.0"));
    scriptCameras(&site.channel,
                  {cameraAt("0x0901", "C100", "v1.0.0"), cameraAt("0x0b01", "C101", "v1.0.0"),
                   cameraAt("0x0901", "C102", "v1.0.0")});
    site.channel.on(failing).fail();
    site.addCameraFile("camera", cameraFile({0x0901}, {1, 4, 0}));
    ZanModuleServer* server = site.server();
    QCOMPARE(site.channel.takeLog(), MASTER_CALLS + QStringList({COUNT_CALL, CAMERA_CALL}) + calls);
    QCOMPARE(server->listZanDisplay.size(), rowCount);
    QCOMPARE(server->isCameraUpdate(), rowCount > 0);
    QCOMPARE(server->isCameraUpdateOnly(), rowCount > 0);
    QCOMPARE(server->allCamerasUpToDate(), rowCount == 0);
}

void TestZanModuleServer::offersFilesToACamera_data()
{
    QTest::addColumn<QByteArray>("identity");
    QTest::addColumn<QByteArray>("version");
    QTest::addColumn<QString>("offered");

    // The file is for the models 0x0901 and 0x0c01, from 1.2.0 to 1.4.0.
    const auto row = [](const char* name, const char* identity, const char* version,
                        const char* offered) {
        QTest::newRow(name) << QByteArray(identity) << QByteArray(version) << QString(offered);
    };
    row("a camera that is behind", "0x0901 C100", "v1.3.0", "0x0901|C100|v1.3.0|v1.4.0|final");
    row("a camera of the second model", "0x0c01 C100", "v1.3.0", "0x0c01|C100|v1.3.0|v1.4.0|final");
    row("a camera of another model", "0x0e01 C100", "v1.3.0", "");
    row("a model in another case", "0X0C01 C100", "v1.3.0", "");
    row("at the minimum version", "0x0901 C100", "v1.2.0", "0x0901|C100|v1.2.0|v1.4.0|final");
    row("below the minimum version", "0x0901 C100", "v1.1.9", "");
    row("at the new version", "0x0901 C100", "v1.4.0", "");
    row("above the new version", "0x0901 C100", "v1.4.1", "");
    row("on a pre-release of the new version", "0x0901 C100", "v1.4.0-beta.2",
        "0x0901|C100|v1.4.0|v1.4.0|pre-release");
    row("on a pre-release that is behind", "0x0901 C100", "v1.3.0-rc.1",
        "0x0901|C100|v1.3.0|v1.4.0|pre-release");
    row("on a pre-release above the new version", "0x0901 C100", "v1.4.1-rc.1", "");
    row("on a pre-release below the minimum version", "0x0901 C100", "v1.1.9-rc.1", "");
    row("a version without v counts as a pre-release", "0x0901 C100", "1.4.0",
        "0x0901|C100|v1.4.0|v1.4.0|pre-release");
    row("a version with a date counts as a pre-release", "0x0901 C100", "v1.4 2024-05-06", "");
    row("a version without patch is below the one with patch 0", "0x0901 C100", "v1.2", "");
    row("a reply without a blank has no serial", "0x0901", "v1.3.0", "0x0901||v1.3.0|v1.4.0|final");
    row("a third word does not count", "0x0901 C100 x", "v1.3.0",
        "0x0901|C100|v1.3.0|v1.4.0|final");
    row("an empty version is below the minimum", "0x0901 C100", "", "");
    row("an empty identity is no model", "", "v1.3.0", "");
}

void TestZanModuleServer::offersFilesToACamera()
{
    QFETCH(QByteArray, identity);
    QFETCH(QByteArray, version);
    QFETCH(QString, offered);
    Site site;
    scriptMaster(&site.channel, controllerAt("v3.0.0", "v1.0"));
    scriptCameras(&site.channel, {ScriptedCamera()});
    site.channel.on("camera camera c01").reply(identity);
    site.channel.on("camera version c01").reply(version);
    site.addCameraFile("camera", cameraFile({0x0901, 0x0c01}, {1, 4, 0}, {1, 2, 0}));
    ZanModuleServer* server = site.server();
    QStringList rows;
    for (const ZanDisplay* camera : qAsConst(server->listZanDisplay))
        rows += QStringList{camera->getCamModel(), camera->getCamSerial(),
                            camera->versionFrom().toString(), camera->versionTo().toString(),
                            camera->getCamPreRelease() ? "pre-release" : "final"}
                    .join('|');
    QCOMPARE(rows, offered.isEmpty() ? QStringList() : QStringList(offered));
    QCOMPARE(server->allCamerasUpToDate(), offered.isEmpty());
}

void TestZanModuleServer::offersEveryFileToEveryCamera()
{
    Site site;
    scriptMaster(&site.channel, controllerAt("v3.0.0", "v1.0"));
    scriptCameras(&site.channel,
                  {cameraAt("0x0901", "C100", "v1.0.0"), cameraAt("0x0901", "C101", "v1.0.0")});
    site.addCameraFile("b", cameraFile({0x0901}, {1, 3, 0}));
    site.addCameraFile("a", cameraFile({0x0901}, {1, 4, 0}));
    site.addCameraFile("c", cameraFile({0x0c01}, {1, 5, 0}));
    ZanModuleServer* server = site.server();
    QStringList rows;
    for (const ZanDisplay* row : qAsConst(server->listZanDisplay))
        rows += QStringLiteral("%1 %2 %3")
                    .arg(row->indexCamForUpdate())
                    .arg(row->getCamSerial(), row->getCamUpdate()->getFilename().section('/', -1));
    QCOMPARE(rows, (QStringList{"0 C100 a.VX2znimg", "0 C100 b.VX2znimg", "1 C101 a.VX2znimg",
                                "1 C101 b.VX2znimg"}));
    const QStringList described{descriptionCall("0x0901"), descriptionCall("0x0901")};
    const QStringList first{cameraCall(1), versionCall(1)};
    const QStringList second{cameraCall(2), versionCall(2)};
    QCOMPARE(site.channel.takeLog(), MASTER_CALLS + QStringList({COUNT_CALL, CAMERA_CALL}) + first +
                                         described + second + described);
}

void TestZanModuleServer::stopsAtTheFirstApplicableFile()
{
    Site site;
    scriptMaster(&site.channel, controllerAt("v3.0.0", "v1.0"));
    scriptCameras(&site.channel,
                  {cameraAt("0x0901", "C100", "v1.4.0"), cameraAt("0x0901", "C101", "v1.0.0"),
                   cameraAt("0x0901", "C102", "v1.0.0")});
    site.addCameraFile("a", cameraFile({0x0901}, {1, 4, 0}));
    site.addCameraFile("b", cameraFile({0x0901}, {1, 4, 0}));
    ZanModuleServer* server = site.server();
    const QStringList rows = described(*server);
    QCOMPARE(rows.size(), 4);
    site.channel.takeLog();
    QVERIFY(!server->allCamerasUpToDate());
    QCOMPARE(site.channel.takeLog(), (QStringList{CAMERA_CALL, cameraCall(1), versionCall(1),
                                                  cameraCall(2), versionCall(2)}));
    QCOMPARE(described(*server), rows);
}

void TestZanModuleServer::describesTheModelOfACamera_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<QString>("text");

    const auto row = [](const char* name, const QByteArray& reply, const QString& text) {
        QTest::newRow(name) << reply << text;
    };
    row("quotes are taken away", "\"Wide \"7\"\"", "Camera firmware update (Wide 7 C100)");
    row("a description without quotes", "Wide", "Camera firmware update (Wide C100)");
    row("an empty description", "", "Camera firmware update (C100)");
    row("nothing but quotes", "\"\"", "Camera firmware update (C100)");
    row("letters of Latin-1", "\"K\xF6ln\"",
        QStringLiteral("Camera firmware update (K\u00f6ln C100)"));
    row("placeholders", "%1 %s", "Camera firmware update (%1 %s C100)");
}

void TestZanModuleServer::describesTheModelOfACamera()
{
    QFETCH(QByteArray, reply);
    QFETCH(QString, text);
    Site site;
    scriptMaster(&site.channel, controllerAt("v3.0.0", "v1.0"));
    ScriptedCamera camera = cameraAt("0x0901", "C100", "v1.0.0");
    camera.description = reply;
    scriptCameras(&site.channel, {camera});
    site.addCameraFile("a", cameraFile({0x0901}, {1, 4, 0}));
    QCOMPARE(described(*site.server()), QStringList(text + " v1.0.0>v1.4.0"));
}

void TestZanModuleServer::survivesAnyCameraReply_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<int>("queried");

    QTest::newRow("no camera") << 0 << QByteArray("0x0901 C1") << 0;
    QTest::newRow("a negative count is no camera") << -3 << QByteArray("0x0901 C1") << 0;
    QTest::newRow("the smallest count is no camera") << INT_MIN << QByteArray("0x0901 C1") << 0;
    QTest::newRow("a huge count ends at ten thousand")
        << INT_MAX << QByteArray("0x0901 C1") << 10000;
    QTest::newRow("more than two digits are taken") << 101 << QByteArray("0x0901 C1") << 101;
    QTest::newRow("200 letters without terminator") << 2 << QByteArray(200, 'x') << 2;
    QTest::newRow("200 bytes beyond ASCII without terminator") << 2 << QByteArray(200, '\xFF') << 2;
    QTest::newRow("200 blanks without terminator") << 2 << QByteArray(200, ' ') << 2;
    QTest::newRow("a model and 193 letters without terminator")
        << 2 << "0x0901 " + QByteArray(193, 'x') << 2;
}

void TestZanModuleServer::survivesAnyCameraReply()
{
    QFETCH(int, count);
    QFETCH(QByteArray, reply);
    QFETCH(int, queried);
    Site site;
    scriptMaster(&site.channel, controllerAt("v3.0.0", "v1.0"));
    site.channel.on("camera number_of_cameras").reply(count);
    site.channel.onPrefix("camera ").replyUnterminated(reply.leftJustified(200, '\0'));
    site.addCameraFile("a", cameraFile({0x0901}, {1, 4, 0}));
    ZanModuleServer* server = site.server();
    const QString query = "get_string \"camera camera c";
    const QStringList queries = site.channel.logOf(query);
    QCOMPARE(queries.size(), queried);
    if (queried > 0)
        QCOMPARE(queries.last(), query + numbered(queried) + '"');
    // A version without sense is (0, -1, -1), below every minimum, and no row arises.
    QVERIFY(server->listZanDisplay.isEmpty());
    QVERIFY(server->allCamerasUpToDate());
}

void TestZanModuleServer::offersControllersBeforeCameras()
{
    Site site;
    site.addImages({chainImage(2)});
    site.addCameraFile("a", cameraFile({0x0901}, {1, 4, 0}));
    scriptMaster(&site.channel, controllerAt("v1.0.0", "v2.0"));
    scriptCameras(&site.channel, {cameraAt("0x0901", "C100", "v1.0.0")});
    ZanModuleServer* server = site.server();
    // The flags mean nothing yet.
    QCOMPARE(described(*server), QStringList("Camera firmware update (Camera C100) v1.0.0>v1.4.0"));
    server->redo_fillListZanDisplay();
    QCOMPARE(described(*server), QStringList("Firmware update (alpha) v1.0.0>v2.0.0"));
    QVERIFY(!server->isCameraUpdate());
    QVERIFY(!server->isCameraUpdateOnly());

    scriptMaster(&site.channel, controllerAt("v2.0.0", "v2.0"));
    server->redo_fillListZanDisplay();
    QCOMPARE(described(*server), QStringList("Camera firmware update (Camera C100) v1.0.0>v1.4.0"));
    QVERIFY(server->isCameraUpdate());
    QVERIFY(server->isCameraUpdateOnly());
}

// A row of each kind: 'c' camera, 'f' firmware, 's' system, '-' placeholder.
static void setRows(ZanModuleServer* server, const QString& kinds)
{
    qDeleteAll(server->listZanDisplay);
    server->listZanDisplay.clear();
    for (const QChar kind : kinds) {
        ZanController* controller = server->listZanController.first();
        controller->currentPt = VersionInfo(1, 0, 0);
        controller->currentCt = VersionInfo(1, 0);
        ZanData* image = kind == 'f' ? server->listUpdates.first() : server->listUpdates.last();
        server->listZanDisplay += kind == 'c'
                                      ? new ZanDisplay(server->listCamUpdates.first(), 0, "0x0901",
                                                       "C100", "Wide", VersionInfo(1, 0, 0), false)
                                  : kind == '-' ? new ZanDisplay(nullptr, nullptr)
                                                : new ZanDisplay(controller, image);
    }
}

void TestZanModuleServer::tellsCameraRowsFromOthers_data()
{
    QTest::addColumn<QString>("kinds");
    QTest::addColumn<bool>("isCameraOnly");

    QTest::newRow("no row") << "" << false;
    QTest::newRow("a placeholder") << "-" << false;
    QTest::newRow("a camera row") << "c" << true;
    QTest::newRow("camera rows") << "ccc" << true;
    QTest::newRow("a firmware row") << "f" << false;
    QTest::newRow("a system row") << "s" << false;
    QTest::newRow("a firmware row before a camera row") << "fc" << false;
    QTest::newRow("a system row before a camera row") << "sc" << false;
    QTest::newRow("a camera row before a firmware row") << "cf" << true;
    QTest::newRow("a camera row behind a placeholder") << "-c" << true;
    QTest::newRow("a system row behind a placeholder") << "-sc" << false;
}

void TestZanModuleServer::tellsCameraRowsFromOthers()
{
    QFETCH(QString, kinds);
    Site site;
    scriptMaster(&site.channel, controllerAt("v1.0.0", "v1.0"));
    site.addImages({releaseImage({2, 0, 0}, {2, 0}, {firmwareBlock({0, 0, 0}, {9, 0, 0})}),
                    releaseImage({3, 0, 0}, {3, 0}, {systemBlock({0, 0}, {9, 0})})});
    site.addCameraFile("a", cameraFile({0x0901}, {1, 4, 0}));
    ZanModuleServer* server = site.server();
    setRows(server, kinds);
    QTEST(server->isCameraUpdateOnly(), "isCameraOnly");
}

void TestZanModuleServer::searchesForTheMarkedCamerasOnly_data()
{
    QTest::addColumn<QVector<quint16>>("models");
    QTest::addColumn<QString>("marks");
    QTest::addColumn<bool>("isSearched");

    // One camera of each model; a mark for each.
    QTest::newRow("0x0c01 is searched for") << QVector<quint16>{0x0c01} << "x" << true;
    QTest::newRow("0x0e01 is searched for") << QVector<quint16>{0x0e01} << "x" << true;
    QTest::newRow("0x0901 is not") << QVector<quint16>{0x0901} << "x" << false;
    QTest::newRow("one of several is enough") << QVector<quint16>{0x0901, 0x0e01} << "xx" << true;
    QTest::newRow("a camera without mark does not count")
        << QVector<quint16>{0x0901, 0x0e01} << "x-" << false;
    QTest::newRow("no camera with mark") << QVector<quint16>{0x0c01, 0x0e01} << "--" << false;
}

void TestZanModuleServer::searchesForTheMarkedCamerasOnly()
{
    QFETCH(QVector<quint16>, models);
    QFETCH(QString, marks);
    Site site;
    scriptMaster(&site.channel, controllerAt("v3.0.0", "v1.0"));
    Cameras cameras;
    for (const quint16 model : models) {
        const QByteArray text = "0x" + QByteArray::number(model, 16).rightJustified(4, '0');
        cameras += cameraAt(text, "C100", "v1.0.0");
        site.addCameraFile(QString::fromLatin1(text), cameraFile({model}, {1, 4, 0}));
    }
    scriptCameras(&site.channel, cameras);
    ZanModuleServer* server = site.server();
    QCOMPARE(server->listZanDisplay.size(), marks.size());
    for (int i = 0; i < marks.size(); ++i)
        server->listZanDisplay.at(i)->setToBeUpdated(marks.at(i) == 'x' ? Qt::Checked
                                                                        : Qt::Unchecked);
    QTEST(server->needsSearchHardware(), "isSearched");
}

ZAN_TEST_MAIN(TestZanModuleServer)

#include "tst_zanmoduleserver.moc"
