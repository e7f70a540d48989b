#include "runequipment.h"

#include <imagefixtures.h>

#include <QDir>
#include <QFileInfo>
#include <QMap>

#include <unistd.h>

const QVector<QPair<Equipment, const char*>>& equipments()
{
    static const QVector<QPair<Equipment, const char*>> all = {
        {Equipment::Cascade, "a cascade"},
        {Equipment::Cameras, "cameras"},
        {Equipment::RefusedBlock, "a refused block"},
        {Equipment::OldBackend, "an old backend"},
        {Equipment::FactoryAddress, "a factory address"},
        {Equipment::UpToDate, "nothing to update"},
    };
    return all;
}

// No two records of an image are alike, nor two images'.
static QVector<ImageRecord> records(int image, int block, int count)
{
    QVector<ImageRecord> records;
    for (int i = 0; i < count; ++i) {
        QByteArray bytes;
        for (const int value : {image, block, i % 256, i / 256})
            bytes += static_cast<char>(value);
        records += ImageRecord(bytes);
    }
    return records;
}

static ControllerImageBlock withRecords(ControllerImageBlock block,
                                        const QVector<ImageRecord>& records)
{
    block.records = records;
    return block;
}

static void deliverReleases(const ModuleFixture& fixture, int firstLength)
{
    const VersionInfo first(3, 1, 0);
    const VersionInfo second(3, 2, 0);
    fixture.delivered.deliverUpdate(
        QStringLiteral("first"),
        controllerImageBytes(releaseImage(
            first, VersionInfo(1, 1),
            {withRecords(firmwareBlock(VersionInfo(3, 0, 0), VersionInfo(3, 0, 99)),
                         records(1, 1, firstLength)),
             withRecords(systemBlock(VersionInfo(1, 0), VersionInfo(1, 0)), records(1, 2, 2))})));
    fixture.delivered.deliverUpdate(
        QStringLiteral("second"),
        controllerImageBytes(releaseImage(
            second, VersionInfo(1, 2),
            {withRecords(firmwareBlock(first, VersionInfo(3, 1, 99)), records(2, 1, 3)),
             withRecords(systemBlock(VersionInfo(1, 1), VersionInfo(1, 1)), records(2, 2, 1))})));
}

// The slaves are one release ahead of the master.
static void connectControllers(ModuleFixture* fixture, int slaveCount, int firstLength = 5)
{
    ScriptedController master;
    master.board = "\"Fujitsu D3231\"";
    scriptMaster(&fixture->channel, master);
    QList<ScriptedSlave> slaves;
    for (int i = 1; i <= slaveCount; ++i) {
        ScriptedSlave slave;
        slave.address = "10.0.0." + QByteArray::number(i);
        slave.controller.hostname = "slave" + QByteArray::number(i);
        slave.controller.serial = 600 + i;
        slave.controller.pt = "v3.1.0 2024-05-06";
        slave.controller.ct = "v1.1";
        slaves += slave;
    }
    scriptSlaves(&fixture->channel, slaves);
    deliverReleases(*fixture, firstLength);
}

static void connectCameras(ModuleFixture* fixture)
{
    QList<ScriptedCamera> cameras;
    for (const int model : {0x0901, 0x0c01}) {
        CameraUpdateFile file = cameraFile({static_cast<quint16>(model)}, VersionInfo(1, 1, 0));
        file.images = {file.images.first(), file.images.first()};
        file.images[0].records = records(model, 1, 3);
        file.images[1].records = records(model, 2, 2);
        ScriptedCamera camera;
        camera.model = "0x0" + QByteArray::number(model, 16);
        cameras += camera;
        fixture->delivered.deliverUpdate(QString::fromLatin1(camera.model) +
                                             QLatin1String(".VX2znimg"),
                                         cameraUpdateBytes(file));
    }
    scriptCameras(&fixture->channel, cameras);
}

void connectEquipment(ModuleFixture* fixture, Equipment equipment)
{
    fixture->channel.on("system extra number_of_hardware").reply(0);
    fixture->channel.on("status active").reply("");
    switch (equipment) {
    case Equipment::Cascade:
        // Long enough that events are served in the middle of a block as well.
        connectControllers(fixture, 2, 1002);
        break;
    case Equipment::Cameras:
        connectCameras(fixture);
        break;
    case Equipment::RefusedBlock:
        connectControllers(fixture, 1);
        fixture->channel.onPrefix("system update 3 2 ").fail();
        break;
    case Equipment::FactoryAddress:
        fixture->channel.on("system net").reply("dhcp");
        fixture->channel.setAddress("192.168.0.1");
        connectControllers(fixture, 0);
        break;
    case Equipment::OldBackend:
        connectControllers(fixture, 0);
        break;
    case Equipment::UpToDate:
        fixture->deliverNotes();
        break;
    }
}

BackendVersions backendOf(Equipment equipment)
{
    const VersionInfo protocol =
        equipment == Equipment::OldBackend ? VersionInfo(0, 16) : VersionInfo(1, 23);
    return BackendVersions(VersionInfo(3, 0, 0), protocol, VersionInfo(1, 0),
                           QStringLiteral("ZAN"));
}

void closeUpdateFiles()
{
    const QDir open(QStringLiteral("/proc/self/fd"));
    for (const QFileInfo& file : open.entryInfoList(QDir::Files | QDir::System)) {
        if (file.symLinkTarget().contains(QLatin1String("/controller_update/")))
            ::close(file.fileName().toInt());
    }
}

Undisturbed undisturbed(Equipment equipment)
{
    static QMap<Equipment, Undisturbed> known;
    if (!known.contains(equipment)) {
        ModuleFixture fixture(backendOf(equipment));
        connectEquipment(&fixture, equipment);
        fixture.giveParameters();
        RunRoad road(&fixture);
        road.go();
        known.insert(equipment, {road.places(), road.calls()});
        closeUpdateFiles();
    }
    return known.value(equipment);
}

// ---- What went out

QString textOf(const QString& call)
{
    return call.section(QLatin1Char('"'), 1, 1);
}

static bool isRecord(const QString& call)
{
    const QString text = textOf(call);
    return text.startsWith(QLatin1String("system update ")) ||
           text.startsWith(QLatin1String("system ctupdt ")) ||
           text.startsWith(QLatin1String("vornix2 set camera update "));
}

QStringList sentRecords(const QStringList& calls)
{
    static const QString redirection = QStringLiteral("system redirect_update ");
    QString target;
    QStringList sent;
    for (const QString& call : calls) {
        if (textOf(call).startsWith(redirection))
            target = textOf(call).mid(redirection.size());
        else if (isRecord(call))
            sent += target + QLatin1Char(' ') + textOf(call);
    }
    return sent;
}

// ---- The undisturbed road

int Undisturbed::lastBoxBeforeTheRun() const
{
    int last = 0;
    while (last < places.size() && places.at(last).kind != Place::InRun)
        ++last;
    return last - 1;
}

int Undisturbed::callsBeforeTheRun() const
{
    return places.at(lastBoxBeforeTheRun()).callCount;
}
