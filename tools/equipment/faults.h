#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QVector>

#include <optional>

/// @file
/// The one list of named faults that simulated devices can show. Scenarios, live controls and tests
/// all go by it, so a new mode is known everywhere once it stands here.

/// What goes wrong.
enum class FaultMode
{
    RefuseRecord,                ///< an error reply without a meaning of its own
    RefuseWithCameraError,       ///< the error reply "vornix2 err -26"
    RefuseWithQuotedCameraError, ///< the same with the number in double quotes
    DropConnection,              ///< the connection closes instead of an answer
    AnswerLate,                  ///< all is well, but the answer takes Fault::delayMs longer
    AnswerGarbage, ///< the device does its work; the answer is not text of the language
    StaySilent,    ///< the device ignores the request and never answers it
    LosePower,     ///< the whole system loses power and boots again
    ComeBackOld,   ///< after a restart the old versions are still running
    NeverComeBack, ///< a restart does not end until power is given back by hand
};

/// When a mode can strike.
enum class FaultMoment
{
    Exchange, ///< at a record of an update, or at any other request
    Restart,  ///< at a restart of the system or at the power cycle of a camera
};

/// One entry of the list of modes.
struct FaultModeInfo
{
    FaultMode mode;     ///< the one that the entry is about
    QString name;       ///< as scenarios write it, for example "refuse-record"
    QString title;      ///< one line for people
    FaultMoment moment; ///< when it can strike
    int defaultPercent; ///< which record of a block it strikes if no moment is told: 100 is the
                        ///< last
};

/// All modes, in the order of FaultMode.
const QVector<FaultModeInfo>& faultModes();
/// The entry of @p mode; valid for as long as the program runs.
const FaultModeInfo& faultModeInfo(FaultMode mode);

/// One fault that is armed: a mode, the device that shows it and the moment.
///
/// Of the three ways to tell the moment of an exchange, `request` goes before `record`, and that
/// before `seed`. With none of them the mode's own record strikes.
struct Fault
{
    FaultMode mode = FaultMode::RefuseRecord; ///< what goes wrong
    QString device;              ///< host name of a controller, or "c01" for a camera; empty: any
    QByteArray request;          ///< strikes a text that begins with this, of whatever device
    int record = 0;              ///< number of the record in its block, from 1; 0: not told
    std::optional<quint32> seed; ///< strikes a random record of the block, the same for one seed
    int times = 1;               ///< how often it strikes; 0: every time
    int delayMs = 130000;        ///< FaultMode::AnswerLate only; beyond all time-outs of an update

    /// Whether the fault is one of @p deviceName.
    bool concerns(const QString& deviceName) const;

    /// One line for people: "Refuse a record: zan-left, record 10, every time".
    QString text() const;
};

/// One exchange as faults see it.
struct ExchangeMoment
{
    QByteArray text; ///< the request as it was sent
    QString device;  ///< the device that a record goes to; empty for other requests
    int record = 0;  ///< number of the record, 0 for other requests
    int records = 0; ///< number of records of its block
};

/// The faults that are armed. A fault is used up once it has struck as often as it may.
class FaultPlan
{
public:
    /// @param faults armed from the start
    explicit FaultPlan(const QVector<Fault>& faults = {});

    /// Arms one more fault; the first of several that could strike does.
    void add(const Fault& fault);
    /// Disarms all.
    void clear();
    /// Those that have not struck as often as they may, in the order of their arming.
    const QVector<Fault>& armed() const { return m_faults; }

    /// The first fault that strikes at @p moment, taken off the count of its times.
    std::optional<Fault> takeForExchange(const ExchangeMoment& moment);

    /// All faults that strike at a restart of @p devices, each taken off the count of its times.
    QVector<Fault> takeForRestart(const QStringList& devices);

private:
    Fault takeAt(int index);

    QVector<Fault> m_faults;
};
