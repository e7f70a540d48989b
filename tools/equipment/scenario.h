#pragma once

#include "faults.h"

#include <VersionInfo.h>
#include <enumtexts.h>

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QVector>

#include <optional>

/// What a running measurement does when it is told to stop.
enum class Measurement
{
    Off,
    Running,
    Unstoppable, ///< runs and refuses to stop
};

/// The texts of Measurement in files.
const EnumTexts<Measurement>& measurementTexts();

/// A controller as it is before the first run. Texts are what goes over the wire.
struct ScenarioController
{
    QString hostName;         ///< name under which faults and views know it
    QString address;          ///< dotted IPv4; a slave is addressed by it
    bool available = true;    ///< only a slave can be missing
    int model = 2;            ///< model number, 21 in the family BRIARSCOPE3
    QString modelDescription; ///< what the model is called
    QString board;            ///< what the mainboard is called; may be empty
    int serial = 0;           ///< 0 to 999999999
    QString pt; ///< tracking software, with appendix and date: "v3.1.0-beta.2 2025-03-14"
    QString ct; ///< controller firmware, for example "v1.2"
};

/// A camera as it is before the first run.
struct ScenarioCamera
{
    QString model;       ///< for example "0x0901"
    QString serial;      ///< one word of Latin-1
    QString version;     ///< with appendix, for example "v1.3.0-rc.1"
    QString description; ///< of its model, for people
};

/// Longest time that a device may take for anything, in milliseconds.
constexpr int maxDurationMs = 24 * 3600 * 1000;

/// How long the devices take. Nothing in the simulator waits: who asks is told the time.
struct ScenarioTiming
{
    int recordsPerSecond = 2750;       ///< controllers; 0: no time at all
    int cameraRecordsPerSecond = 3700; ///< cameras; 0: no time at all
    int verifyMs = 4000;               ///< a controller's check of a whole block
    int cameraVerifyMs = 4000;         ///< a camera's check of a whole image
    int bootMs = 8000;                 ///< a restart, during which nothing is answered
    int searchMs = 5000;               ///< the search for hardware
};

/// The name of camera @p index, from 0, in requests and elsewhere: "c01" for the first.
QString cameraName(int index);

/// A situation to be simulated, read from one JSON file; docs/simulator.md describes its keys.
struct Scenario
{
    QString name;           ///< base name of the file
    QString title;          ///< one line
    VersionInfo protocol;   ///< version of the command protocol that the backend speaks
    QString backendModel;   ///< model text of the backend; it decides the family
    bool dhcp = false;      ///< the master's address is given to it, not fixed
    bool wakeOnLan = false; ///< slaves are woken over the network
    bool observer = false;  ///< the frontend is started as an observer
    Measurement measurement = Measurement::Off; ///< when the frontend comes
    QStringList hardware;                       ///< further pieces of hardware, one text for each
    /// Folder of the update files that stand beside the frontend; empty: the delivered one.
    QString updateFolder;
    /// Names of the update files, and of the release notes, that stand beside the frontend; without
    /// a value all that are delivered.
    std::optional<QStringList> updateFiles;
    /// Names of the release notes that stand beside the frontend; without a value all that are
    /// delivered.
    std::optional<QStringList> notes;
    QVector<ScenarioController> controllers; ///< at least one: the master, then its slaves
    QVector<ScenarioCamera> cameras;         ///< "c01" first
    ScenarioTiming timing;                   ///< of all devices
    QVector<Fault> faults;                   ///< armed from the start
    QByteArray source;                       ///< the text that it was read from

    /// Address at which the frontend reaches the master.
    const QString& address() const { return controllers.first().address; }

    /// Names under which faults and views know the devices: host names, then "c01" and so on.
    QStringList deviceNames() const;

    /// Names of the scenarios that come with the simulator; "cascade", the default, is the first.
    static QStringList shipped();
};

/// The text of a scenario with the file that it stands in.
struct ScenarioText
{
    QString fileName; ///< gives the scenario its name, and stands in errors
    QByteArray json;  ///< all of the file
};

/// Reads scenarios. Safe to use from any thread.
class ScenarioReader
{
public:
    /// The text of a shipped scenario by its name, or of any other file by its path.
    /// @param error must not be null; on failure "FILE: REASON"
    static std::optional<ScenarioText> load(const QString& nameOrPath, QString* error);

    /// Reads a shipped scenario by its name, or any other file by its path.
    ///
    /// @param error must not be null; on failure it is "FILE: PATH: REASON" with a path such as
    ///        "controllers[1].serial", or "FILE: REASON" if the file cannot be read.
    /// @return nullopt on failure; keys that the schema does not know are failures.
    static std::optional<Scenario> read(const QString& nameOrPath, QString* error);

    /// The names and titles of the shipped scenarios, one line for each.
    /// @param error must not be null; receives one line on failure
    static std::optional<QString> listShipped(QString* error);

    /// Reads a scenario from the text @p json; @p fileName gives its name and stands in errors.
    static std::optional<Scenario> parse(const QByteArray& json, const QString& fileName,
                                         QString* error);
};
