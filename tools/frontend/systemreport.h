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

/// Asks for the values of the command language. Both give nullopt where there is no answer.
class Queries
{
public:
    virtual ~Queries() = default;
    virtual std::optional<QString> text(const QByteArray& key) = 0;
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
    struct Controller
    {
        QString hostName;
        int model = 0;
        QString pt; ///< with its pre-release text, without the date; empty: no answer
        QString ct;
    };
    struct Camera
    {
        QString name; ///< description and serial number, as in the table of the update dialog
        QString version;
    };

    bool isReachable = false; ///< whether the master answered at all
    QVector<Controller> controllers;
    QVector<Camera> cameras;

    /// The different versions that the devices named @p device report for @p part: none if no such
    /// device answered, several if devices share a name and differ.
    QStringList versions(Part part, const QString& device) const;

    /// The first controller of that name, or null.
    const Controller* controller(const QString& hostName) const;

    /// Asks the master, its available slaves and all cameras. A master that does not answer the
    /// first question is not asked more.
    static SystemReport ask(Queries& queries);
};
