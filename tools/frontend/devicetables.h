#pragma once

#include <testbench.h>

#include <QAbstractTableModel>

#include <functional>

/// One column of a table of devices.
template <typename Device>
struct DeviceColumn
{
    QString title;
    QString explanation;
    std::function<QString(const Device&)> text;
    std::function<QString(const Device&)> toolTip;
};

/// Role of the fraction of a progress, a double between 0 and 1; invalid where there is none.
constexpr int progressRole = Qt::UserRole;

/// A table that shows a list of devices as it is at each moment.
template <typename Device>
class DeviceTable : public QAbstractTableModel
{
public:
    using Devices = std::function<const QVector<Device>&()>;

    DeviceTable(const Devices& devices, const QVector<DeviceColumn<Device>>& columns,
                QObject* parent)
        : QAbstractTableModel(parent), m_devices(devices), m_columns(columns)
    {
    }

    /// Has the views read everything again. The number of devices never changes.
    void refresh()
    {
        if (rowCount({}) > 0)
            emit dataChanged(index(0, 0), index(rowCount({}) - 1, columnCount({}) - 1));
    }

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
        return QVariant();
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

private:
    Devices m_devices;
    QVector<DeviceColumn<Device>> m_columns;
};

/// Tables of the devices of @p bench, which must outlive them.
DeviceTable<ControllerState>* makeControllerTable(const TestBench& bench, QObject* parent);
DeviceTable<CameraState>* makeCameraTable(const TestBench& bench, QObject* parent);
