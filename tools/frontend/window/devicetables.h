#pragma once

#include <equipment.h>

#include <QAbstractTableModel>
#include <QGuiApplication>
#include <QPalette>

#include <functional>

/// One column of a table of devices.
template <typename Device>
struct DeviceColumn
{
    QString title;       ///< in the head of the table
    QString explanation; ///< tool tip of the title
    /// What is shown of a device.
    std::function<QString(const Device&)> text;
    /// Tool tip of that; null: the text itself.
    std::function<QString(const Device&)> toolTip;
};

/// Role of the fraction of a progress, a double between 0 and 1; invalid where there is none.
constexpr int progressRole = Qt::UserRole;

/// Role of what a device needs of somebody's hands, a DeviceNeed as int; in every column.
constexpr int needRole = Qt::UserRole + 1;

/// What a device waits for that no update brings about.
enum class DeviceNeed
{
    Nothing,
    PowerCycle,     ///< to run what it received
    HardwareSearch, ///< to be known to the controller again
};

/// What the device needs now; controllers restart by command.
///@{
DeviceNeed needOf(const ControllerState& controller);
DeviceNeed needOf(const CameraState& camera);
///@}

/// A table that shows a list of devices as it is at each moment.
template <typename Device>
class DeviceTable : public QAbstractTableModel
{
public:
    /// Gives the devices as they are now.
    using Devices = std::function<const QVector<Device>&()>;

    /// @param devices must stay good to call for as long as the table lives
    DeviceTable(const Devices& devices, const QVector<DeviceColumn<Device>>& columns,
                QObject* parent)
        : QAbstractTableModel(parent), m_devices(devices), m_columns(columns)
    {
    }

    /// Has the views read everything again. The number of devices never changes.
    /// @param isOld whether that is what was so once, which is shown in grey
    void refresh(bool isOld)
    {
        m_isOld = isOld;
        if (rowCount({}) > 0)
            emit dataChanged(index(0, 0), index(rowCount({}) - 1, columnCount({}) - 1));
    }

    /// As the views of Qt ask for it; see QAbstractTableModel.
    ///@{
    int rowCount(const QModelIndex& parent) const override
    {
        return parent.isValid() ? 0 : m_devices().size();
    }

    int columnCount(const QModelIndex& parent) const override
    {
        return parent.isValid() ? 0 : m_columns.size();
    }

    QVariant data(const QModelIndex& index, int role) const override
    {
        const Device& device = m_devices().at(index.row());
        const DeviceColumn<Device>& column = m_columns.at(index.column());
        const bool isLast = index.column() == m_columns.size() - 1;
        if (role == Qt::DisplayRole)
            return column.text(device);
        if (role == Qt::ToolTipRole)
            return column.toolTip ? column.toolTip(device) : column.text(device);
        if (role == progressRole && isLast && device.recordsExpected > 0)
            return double(device.recordsReceived) / device.recordsExpected;
        if (role == Qt::ForegroundRole && m_isOld)
            return QGuiApplication::palette().brush(QPalette::Disabled, QPalette::Text);
        return role == needRole ? QVariant(int(needOf(device))) : QVariant();
    }

    QVariant headerData(int section, Qt::Orientation orientation, int role) const override
    {
        if (orientation == Qt::Vertical)
            return QVariant();
        if (role == Qt::DisplayRole)
            return m_columns.at(section).title;
        if (role == Qt::ToolTipRole)
            return m_columns.at(section).explanation;
        if (role == Qt::TextAlignmentRole)
            return int(Qt::AlignLeft | Qt::AlignVCenter);
        return QVariant();
    }
    ///@}

private:
    Devices m_devices;
    QVector<DeviceColumn<Device>> m_columns;
    bool m_isOld = false;
};

/// A table of the devices of @p equipment, which must outlive it. @p parent owns it.
///@{
DeviceTable<ControllerState>* makeControllerTable(const Equipment& equipment, QObject* parent);
DeviceTable<CameraState>* makeCameraTable(const Equipment& equipment, QObject* parent);
///@}
