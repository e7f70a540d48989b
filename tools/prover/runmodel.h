#pragma once

#include "deliveredfiles.h"

#include <globaldefines.h>
#include <scenario.h>

#include <QHash>
#include <QString>
#include <QVector>

#include <memory>

class Inventory;

/// What a controller reports: its tracking software without the date, and its firmware.
struct ReportedVersions
{
    QString pt; ///< "v3.1.0-beta.2"
    QString ct; ///< "v1.2"
};
/// Whether the texts are the same.
bool operator==(const ReportedVersions& left, const ReportedVersions& right);

/// A model family of controllers, for which images are made.
struct ModelFamily
{
    QString name; ///< for example "BRIARSCOPE3"
    int model;    ///< a number that controllers of the family report, and what its images have
    /// Model text of a backend with such controllers.
    QString backendModel;

    /// Whether the plug-in offers @p image to controllers of the family.
    bool fits(const DeliveredImage& image) const { return image.data->canUpdateSystemModel(model); }
};
/// All families, ZAN first; valid for as long as the program runs.
const QVector<ModelFamily>& modelFamilies();

/// Up to this version of the master's tracking software the plug-in reads no image for a
/// BRIARSCOPE, whatever is delivered.
constexpr VersionInfo lastUnservedBriarscope{2, 7, 7};
/// The version behind it, from which the plug-in serves a BRIARSCOPE.
constexpr VersionInfo firstServedBriarscope{2, 7, 8};
/// From this version of the master's tracking software on, the plug-in asks for an update of a
/// BRIARSCOPE when the frontend starts. Below it the user has to open the dialog.
constexpr VersionInfo firstAskedBriarscope{2, 8, 1};

/// A controller row of the update table.
struct OfferedRow
{
    int image = 0;           ///< index into the images of the delivery
    QVector<int> blocks;     ///< indexes into its block table
    VersionInfo from;        ///< as the row shows it
    VersionInfo to;          ///< as the row shows it
    bool isFirmware = false; ///< shown as a firmware update, otherwise as a system update
    bool isPossible = false; ///< can be run
};
/// Whether the rows are the same in all that is told of them.
bool operator==(const OfferedRow& left, const OfferedRow& right);

/// A block that goes to a controller outside of the block's range.
struct StrayBlock
{
    int image = 0;  ///< index into the images of the delivery
    int block = 0;  ///< index into its block table
    VersionInfo at; ///< what the controller has when the block comes
};

/// One visit of the update dialog: what it offers to a controller, and what a run of all that is
/// possible, with the restart behind it, makes of the controller.
struct RunStep
{
    bool readsImages = false;    ///< false: the plug-in refuses to serve such a system
    bool asks = false;           ///< the dialog opens by itself
    VersionInfo pt;              ///< as the plug-in reads them
    VersionInfo ct;              ///< likewise
    QString mark;                ///< "-beta.2" in the plug-in's short form; empty for a release
    QVector<OfferedRow> rows;    ///< of the master
    bool isSameForSlave = false; ///< a slave with these versions gets the same rows

    bool runs = false;          ///< a row is possible
    ReportedVersions after;     ///< what it reports behind the restart; as before if nothing runs
    QVector<StrayBlock> strays; ///< in the order of sending
    QString failure;            ///< why the run fails; one sentence, or empty
};

/// Plays visits of the update dialog for controllers of one family, with the images of a delivery
/// in one order. The rows come from the plug-in's inventory, what a controller makes of a block
/// from the simulated controllers. To be used from one thread.
class RunModel
{
public:
    /// @param order indexes into the images of the delivery, ascending by release; it must be the
    ///              order in which the plug-in takes them when they are laid out so
    /// @param error must not be null; receives one line on failure
    /// @return null on failure
    static std::unique_ptr<RunModel> make(const DeliveredFiles& delivery, const ModelFamily& family,
                                          const QVector<int>& order, QString* error);
    ~RunModel();
    RunModel(const RunModel&) = delete;
    RunModel& operator=(const RunModel&) = delete;

    /// Plays one visit to a controller that reports @p versions.
    RunStep step(const ReportedVersions& versions);
    /// The same, kept for the next time.
    const RunStep& keptStep(const ReportedVersions& versions);

    /// The newest Pt that the plug-in knows of.
    VersionInfo highestPt() const;
    /// The newest Ct that the plug-in knows of.
    VersionInfo highestCt() const;
    /// Pre-release mark of the image with the newest Pt; empty for a release.
    QString highestMark() const;

private:
    struct Parts;
    explicit RunModel(std::unique_ptr<Parts> parts);

    std::unique_ptr<Parts> m_parts;
    QHash<QString, RunStep> m_kept;
};

/// The system that a step is played on: a master and a slave of @p family with these versions, with
/// the reply of "system version" dated as replies are.
Scenario playedSystem(const ModelFamily& family, const ReportedVersions& versions);
