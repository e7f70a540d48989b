#include "scenario.h"

#include "faultjson.h"

#include <checkedjson.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>

// Outside every namespace, where the resources of a library have to be initialised.
static void initShippedScenarios()
{
    Q_INIT_RESOURCE(scenarios);
}

namespace {

constexpr int maxLineBytes = 150; // leaves room in the 200 bytes that a host has for a reply
const QLatin1String shippedFolder(":/scenarios");

bool isPlainText(const QString& text)
{
    return text.toUtf8().size() <= maxLineBytes &&
           std::all_of(text.begin(), text.end(),
                       [](QChar character) { return character.isPrint(); });
}

// A text that can stand in a reply.
QString replyText(CheckedObject* object, const QString& key, const QString& fallback)
{
    QString text = object->text(key, fallback);
    if (!isPlainText(text))
        object->fail(key, QStringLiteral("must be one line of at most %1 bytes").arg(maxLineBytes));
    return text;
}

// A text that replies and requests separate from others by a blank.
QString word(CheckedObject* object, const QString& key)
{
    QString text = object->text(key);
    if (text.isEmpty() || !isPlainText(text) || text.contains(QLatin1Char(' ')))
        object->fail(key, QStringLiteral("must be one word"));
    return text;
}

// Of a text that readers of replies take for Latin-1.
void requireLatin1(CheckedObject* object, const QString& key, const QString& text)
{
    if (QString::fromLatin1(text.toLatin1()) != text)
        object->fail(key, QStringLiteral("must have letters of Latin-1 only"));
}

QString versionText(CheckedObject* object, const QString& key)
{
    QString text = replyText(object, key, object->text(key));
    if (text.isEmpty())
        object->fail(key, QStringLiteral("must not be empty"));
    requireLatin1(object, key, text);
    return text;
}

VersionInfo protocolVersion(CheckedObject* root)
{
    const QString key = QStringLiteral("protocol");
    bool isVersion = false;
    const VersionInfo version = VersionInfo::fromString(root->text(key), &isVersion);
    if (!isVersion)
        root->fail(key, QStringLiteral("must be a version such as \"1.23\""));
    return version;
}

bool isAddress(const QString& text)
{
    const QStringList parts = text.split(QLatin1Char('.'));
    return parts.size() == 4 && std::all_of(parts.begin(), parts.end(), [](const QString& part) {
               bool isNumber = false;
               const uint number = part.toUInt(&isNumber);
               return isNumber && number <= 255 && part == QString::number(number);
           });
}

ScenarioController readController(CheckedObject object, bool slave)
{
    ScenarioController controller;
    controller.hostName = word(&object, QStringLiteral("hostName"));
    controller.address = object.text(QStringLiteral("address"));
    if (!isAddress(controller.address))
        object.fail(QStringLiteral("address"), QStringLiteral("must be dotted IPv4"));
    if (slave)
        controller.available = object.flag(QStringLiteral("available"), true);
    controller.model = static_cast<int>(object.number(QStringLiteral("model"), 0, 9999, 2));
    controller.modelDescription =
        replyText(&object, QStringLiteral("modelDescription"), QStringLiteral("ZAN"));
    controller.board = replyText(&object, QStringLiteral("board"), QString());
    controller.serial = static_cast<int>(object.number(QStringLiteral("serial"), 0, 999999999));
    controller.pt = versionText(&object, QStringLiteral("pt"));
    controller.ct = versionText(&object, QStringLiteral("ct"));
    object.finish();
    return controller;
}

// Devices are told apart by these texts, so each may stand once only.
void requireNew(QStringList* seen, const QString& text, CheckedObject* root, const QString& key)
{
    if (seen->contains(text))
        root->fail(key, QStringLiteral("\"%1\" stands there twice").arg(text));
    seen->append(text);
}

QVector<ScenarioController> readControllers(CheckedObject* root)
{
    const QString key = QStringLiteral("controllers");
    QVector<ScenarioController> controllers;
    QStringList hostNames;
    QStringList addresses;
    for (const CheckedObject& object : root->objects(key)) {
        controllers.append(readController(object, !controllers.isEmpty()));
        requireNew(&hostNames, controllers.last().hostName, root, key);
        requireNew(&addresses, controllers.last().address, root, key);
    }
    if (controllers.isEmpty())
        root->fail(key, QStringLiteral("must have at least the master"));
    return controllers;
}

QVector<ScenarioCamera> readCameras(CheckedObject* root)
{
    QVector<ScenarioCamera> cameras;
    if (!root->contains(QStringLiteral("cameras")))
        return cameras;
    for (CheckedObject object : root->objects(QStringLiteral("cameras"))) {
        ScenarioCamera camera;
        camera.model = word(&object, QStringLiteral("model"));
        requireLatin1(&object, QStringLiteral("model"), camera.model);
        camera.serial = word(&object, QStringLiteral("serial"));
        requireLatin1(&object, QStringLiteral("serial"), camera.serial);
        camera.version = versionText(&object, QStringLiteral("version"));
        camera.description = replyText(&object, QStringLiteral("description"), QString());
        requireLatin1(&object, QStringLiteral("description"), camera.description);
        object.finish();
        cameras.append(camera);
    }
    return cameras;
}

int durationMs(CheckedObject* object, const QString& key, int fallbackMs)
{
    return static_cast<int>(object->number(key, 0, maxDurationMs, fallbackMs));
}

ScenarioTiming readTiming(CheckedObject* root)
{
    ScenarioTiming timing;
    if (!root->contains(QStringLiteral("timing")))
        return timing;
    CheckedObject object = root->object(QStringLiteral("timing"));
    timing.recordsPerSecond = static_cast<int>(
        object.number(QStringLiteral("recordsPerSecond"), 0, 1000000, timing.recordsPerSecond));
    timing.cameraRecordsPerSecond = static_cast<int>(object.number(
        QStringLiteral("cameraRecordsPerSecond"), 0, 1000000, timing.cameraRecordsPerSecond));
    timing.verifyMs = durationMs(&object, QStringLiteral("verifyMs"), timing.verifyMs);
    timing.cameraVerifyMs =
        durationMs(&object, QStringLiteral("cameraVerifyMs"), timing.cameraVerifyMs);
    timing.bootMs = durationMs(&object, QStringLiteral("bootMs"), timing.bootMs);
    timing.searchMs = durationMs(&object, QStringLiteral("searchMs"), timing.searchMs);
    object.finish();
    return timing;
}

QVector<Fault> readFaults(CheckedObject* root, const QStringList& devices)
{
    QVector<Fault> faults;
    if (!root->contains(QStringLiteral("faults")))
        return faults;
    for (const CheckedObject& object : root->objects(QStringLiteral("faults")))
        faults.append(faultFromJson(object, devices));
    return faults;
}

QStringList hardwareTexts(CheckedObject* root)
{
    const QString key = QStringLiteral("hardware");
    if (!root->contains(key))
        return QStringList();
    QStringList texts = root->texts(key);
    if (!std::all_of(texts.begin(), texts.end(), isPlainText))
        root->fail(key, QStringLiteral("must be lines of at most %1 bytes").arg(maxLineBytes));
    return texts;
}

bool isFileName(const QString& text)
{
    return isPlainText(text) && !text.isEmpty() && !text.contains(QLatin1Char('/')) &&
           text != QLatin1String(".") && text != QLatin1String("..");
}

std::optional<QStringList> fileNames(CheckedObject* root, const QString& key)
{
    if (!root->contains(key))
        return std::nullopt;
    QStringList seen;
    const QStringList names = root->texts(key);
    for (int index = 0; index < names.size(); ++index) {
        if (!isFileName(names.at(index))) {
            root->fail(QStringLiteral("%1[%2]").arg(key).arg(index),
                       QStringLiteral("must be the name of a file, without a folder"));
        }
        requireNew(&seen, names.at(index), root, key);
    }
    return names;
}

// Told from the scenario's file, so that the two can be moved together.
QString updateFolder(CheckedObject* root, const QString& fileName)
{
    const QString folder = root->text(QStringLiteral("updateFolder"), QString());
    return folder.isEmpty() ? QString()
                            : QFileInfo(fileName).absoluteDir().absoluteFilePath(folder);
}

Scenario readScenario(CheckedObject* root, const QString& fileName)
{
    Scenario scenario;
    scenario.title = replyText(root, QStringLiteral("title"), root->text(QStringLiteral("title")));
    scenario.protocol = protocolVersion(root);
    scenario.backendModel = root->text(QStringLiteral("backendModel"), QStringLiteral("ZAN"));
    scenario.dhcp = root->choice(QStringLiteral("net"),
                                 {QStringLiteral("static"), QStringLiteral("dhcp")}, 0) == 1;
    scenario.wakeOnLan = root->flag(QStringLiteral("wakeOnLan"), false);
    scenario.observer = root->flag(QStringLiteral("observer"), false);
    scenario.measurement =
        root->choice(QStringLiteral("measurement"), measurementTexts(), Measurement::Off);
    scenario.hardware = hardwareTexts(root);
    scenario.updateFolder = updateFolder(root, fileName);
    scenario.updateFiles = fileNames(root, QStringLiteral("updateFiles"));
    scenario.notes = fileNames(root, QStringLiteral("notes"));
    scenario.controllers = readControllers(root);
    scenario.cameras = readCameras(root);
    scenario.timing = readTiming(root);
    scenario.faults = readFaults(root, scenario.deviceNames());
    root->finish();
    return scenario;
}

} // namespace

const EnumTexts<Measurement>& measurementTexts()
{
    static const EnumTexts<Measurement> texts = {{Measurement::Off, "off"},
                                                 {Measurement::Running, "running"},
                                                 {Measurement::Unstoppable, "unstoppable"}};
    return texts;
}

QString cameraName(int index)
{
    return QStringLiteral("c%1").arg(index + 1, 2, 10, QLatin1Char('0'));
}

QStringList Scenario::deviceNames() const
{
    QStringList names;
    for (const ScenarioController& controller : controllers)
        names.append(controller.hostName);
    for (int index = 0; index < cameras.size(); ++index)
        names.append(cameraName(index));
    return names;
}

QStringList Scenario::shipped()
{
    initShippedScenarios();
    const QString first = QStringLiteral("cascade");
    QStringList names = {first};
    for (const QFileInfo& file : QDir(shippedFolder).entryInfoList(QDir::Files, QDir::Name)) {
        if (file.completeBaseName() != first)
            names.append(file.completeBaseName());
    }
    return names;
}

std::optional<ScenarioText> ScenarioReader::load(const QString& nameOrPath, QString* error)
{
    const bool isShipped = Scenario::shipped().contains(nameOrPath);
    QFile file(isShipped ? QStringLiteral("%1/%2.json").arg(shippedFolder, nameOrPath)
                         : nameOrPath);
    if (!file.open(QIODevice::ReadOnly)) {
        *error = QStringLiteral("%1: %2").arg(nameOrPath, file.errorString());
        return std::nullopt;
    }
    return ScenarioText{file.fileName(), file.readAll()};
}

std::optional<Scenario> ScenarioReader::read(const QString& nameOrPath, QString* error)
{
    const std::optional<ScenarioText> text = load(nameOrPath, error);
    return text ? parse(text->json, text->fileName, error) : std::nullopt;
}

std::optional<QString> ScenarioReader::listShipped(QString* error)
{
    QString list;
    for (const QString& name : Scenario::shipped()) {
        const std::optional<Scenario> scenario = read(name, error);
        if (!scenario)
            return std::nullopt;
        list += QStringLiteral("  %1  %2\n").arg(name, -24).arg(scenario->title);
    }
    return list;
}

std::optional<Scenario> ScenarioReader::parse(const QByteArray& json, const QString& fileName,
                                              QString* error)
{
    const std::optional<QJsonObject> object = parseJsonObject(json, fileName, error);
    if (!object)
        return std::nullopt;

    CheckedObject root(*object, fileName, error);
    Scenario scenario = readScenario(&root, fileName);
    scenario.name = QFileInfo(fileName).completeBaseName();
    scenario.source = json;
    if (!root.ok())
        return std::nullopt;
    return scenario;
}
