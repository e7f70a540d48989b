#pragma once

#include <IOManager.h>

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QVector>

#include <optional>

/// The parts of a system that have a version of their own.
enum class Part
{
    TrackingSoftware,   ///< Pt of a controller
    ControllerFirmware, ///< Ct of a controller
    CameraFirmware,
};

/// The reply @p reply to the query @p key as text: names and descriptions of controllers are UTF-8,
/// all else is Latin-1.
QString replyText(const QByteArray& key, const QByteArray& reply);

/// Asks for the values of the command language. Both give nullopt where there is no answer.
class Queries
{
public:
    virtual ~Queries() = default;
    /// Asks @p key for a text, for example "system version".
    virtual std::optional<QString> text(const QByteArray& key) = 0;
    /// Asks @p key for a whole number, for example "system model".
    virtual std::optional<int> number(const QByteArray& key) = 0;
};

/// Asks over the command channel, and waits for each answer as long as the channel does.
class ChannelQueries final : public Queries
{
public:
    /// @param channel must outlive this object
    explicit ChannelQueries(IOManager& channel) : m_channel(channel) {}

    std::optional<QString> text(const QByteArray& key) override;
    std::optional<int> number(const QByteArray& key) override;

private:
    IOManager& m_channel;
};

/// What the controllers and cameras of a system say of themselves at one moment.
struct SystemReport
{
    /// What one controller says of itself.
    struct Controller
    {
        QString hostName; ///< as the controller tells it
        int model = 0;    ///< without an answer that of the master, or 0
        QString pt;       ///< with its pre-release text, without the date; empty: no answer
        QString ct;       ///< empty: no answer
    };
    /// What one camera says of itself.
    struct Camera
    {
        QString name;    ///< description and serial number, as in the table of the update dialog
        QString version; ///< as reported; empty: no answer
    };

    bool isReachable = false;        ///< whether the master answered at all
    QVector<Controller> controllers; ///< master first
    QVector<Camera> cameras;         ///< in the order of their numbers

    /// The different versions that the devices named @p device report for @p part: none if no such
    /// device answered, several if devices share a name and differ.
    QStringList versions(Part part, const QString& device) const;

    /// The first controller of that name, or null.
    const Controller* controller(const QString& hostName) const;

    /// Asks the master, its available slaves and all cameras. A master that does not answer the
    /// first question is not asked more.
    static SystemReport ask(Queries& queries);
};
