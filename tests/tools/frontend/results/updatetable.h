#pragma once

#include <QStringList>
#include <QTableWidget>

#include <initializer_list>

/// A table of updates as the update dialog shows it.
class UpdateTable : public QTableWidget
{
public:
    struct Row
    {
        bool isTicked;
        QStringList texts; ///< from "Type" to "Possible?"
    };

    UpdateTable(std::initializer_list<Row> rows, QWidget* parent = nullptr)
        : QTableWidget(0, 6, parent)
    {
        setHorizontalHeaderLabels({"Update", "Type", "From", "To", "Possible?", "Reboot?"});
        for (const Row& row : rows)
            add(row);
    }

private:
    void add(const Row& row)
    {
        const int index = rowCount();
        insertRow(index);
        auto* box = new QTableWidgetItem;
        box->setCheckState(row.isTicked ? Qt::Checked : Qt::Unchecked);
        setItem(index, 0, box);
        for (int column = 0; column < row.texts.size(); ++column)
            setItem(index, column + 1, new QTableWidgetItem(row.texts.at(column)));
    }
};
