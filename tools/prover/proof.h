#pragma once

#include "proofrule.h"
#include "runmodel.h"
#include "versionclasses.h"

#include <QJsonObject>
#include <QStringList>
#include <QVector>

#include <functional>
#include <optional>

/// @file
/// What becomes of every controller that meets a delivery: a proof that all of them come to the
/// newest release, or counterexamples. docs/proving-deliveries.md describes it.

/// Where the runs of the update dialog end.
enum class Ending
{
    Newest,         ///< the newest release runs, and nothing is offered
    NothingToTick,  ///< the dialog asks at each start and has nothing that can be ticked
    OfferedForEver, ///< the same versions come again and again
    LeftBehind,     ///< an older release runs, and nothing is said
    RunFails,       ///< a run fails each time
    NotServed,      ///< the plug-in serves no system this old, whatever is delivered
};
/// The ending in a few words, for people.
QString endingText(Ending ending);
/// Whether the delivery is at fault.
bool isDeadEnd(Ending ending);

/// The way of a class of versions.
struct Journey
{
    QVector<ReportedVersions> hops; ///< what runs after each run; an empty text: as it was
    Ending ending = Ending::Newest; ///< where the last run leads
    bool isOrderly = true;          ///< the same in every order of equal releases
    /// How many runs the way takes.
    int runs() const { return hops.size(); }
};
/// Whether both take the same way to the same end.
bool operator==(const Journey& left, const Journey& right);

/// Neighbouring classes of the same way: all pairs of a range of Pt with a range of Ct.
struct JourneyRange
{
    int firstPt = 0; ///< indexes into the classes of the family
    int lastPt = 0;  ///< not before firstPt
    int firstCt = 0; ///< likewise for Ct
    int lastCt = 0;  ///< not before firstCt
    Journey journey; ///< of every pair
};

/// How much a finding weighs.
enum class Weight
{
    Error,   ///< a controller with versions that files can bring is concerned: no proof
    Warning, ///< only rare circumstances, which no delivery can rule out
    Note,    ///< worth knowing when the result is read
};
/// "error", "warning" or "note".
QString weightText(Weight weight);

/// Something that was found.
struct Finding
{
    ProofRule rule = ProofRule::NothingToTick; ///< what is found
    Weight weight = Weight::Error;             ///< an error keeps the proof from holding
    QString family;                            ///< empty: all
    QString text;                              ///< what happens and why, one sentence
    QString concerned; ///< the classes that it happens to, in words; empty: see the text
    int classes = 0;   ///< how many classes it happens to
    std::optional<Scenario> example; ///< a system on which it can be seen
    QVector<int> order; ///< in which the images must stand for it; empty: that of the names

    /// The name of its rule, for example "nothing-to-tick".
    QString ruleName() const { return proofRules().of(rule); }
};

/// What was found for one family.
struct FamilyProof
{
    ModelFamily family;    ///< the one that it is about
    bool isServed = false; ///< the delivery has an image for it
    QString goal;          ///< the newest release: "v3.3.0, Ct v1.4"
    QString goalFile;      ///< name of the image that brings it

    /// What one of its images brings.
    struct Release
    {
        QString pt;   ///< with the pre-release text
        QString ct;   ///< for example "v1.4"
        QString file; ///< name of the image
    };
    QVector<Release> releases;   ///< ascending
    int orders = 1;              ///< of images of one release, that were looked at
    QVector<PtClass> pt;         ///< classes of tracking software, ascending
    QVector<VersionCell> ct;     ///< classes of controller firmware, ascending
    QVector<JourneyRange> table; ///< all pairs of the classes, each in one entry
};

/// What was found for a delivery.
struct Proof
{
    QStringList files; ///< the images, ascending by release
    QString scope;     ///< which controllers were looked at: "every controller with Pt from v2.0.0"
    /// One for each family that was asked for.
    QVector<FamilyProof> families;
    QVector<Finding> findings; ///< errors first

    /// Whether every controller that was looked at comes to the newest release: no finding is an
    /// error.
    bool holds() const;
    /// The first finding that can be shown on a system; of @p rule, if one is given. Null if
    /// there is none.
    const Finding* counterexample(std::optional<ProofRule> rule = std::nullopt) const;
};

/// Versions that controllers start from; both ends are included.
struct StartRange
{
    /// None: from the lowest.
    std::optional<VersionInfo> from;
    /// None: to the highest.
    std::optional<VersionInfo> to;

    /// Whether @p version lies in the range.
    bool contains(const VersionInfo& version) const
    {
        return (!from || version >= *from) && (!to || version <= *to);
    }
};

/// What is to be looked at, and who is told how far it is.
struct ProofOptions
{
    StartRange pt;                                     ///< tracking software
    StartRange ct;                                     ///< controller firmware
    QString family;                                    ///< empty: both
    std::function<void(int done, int total)> progress; ///< may be null
};

/// Proves @p delivery for all classes of versions.
/// @param error must not be null; receives one line if it cannot be looked at
std::optional<Proof> proveDelivery(const DeliveredFiles& delivery, const ProofOptions& options,
                                   QString* error);

/// The proof for people.
QString proofText(const Proof& proof);
/// The proof for programs.
QJsonObject proofJson(const Proof& proof);

/// The words of a range of the table.
///@{
QString ptText(const FamilyProof& family, const JourneyRange& range);
QString ctText(const FamilyProof& family, const JourneyRange& range);
///@}
/// The versions after a run: "v3.3.0, Ct v1.4"; "Ct v1.4" where Pt stays as it was.
QString hopText(const ReportedVersions& versions);
