#include "plan.h"

#include "texttable.h"

#include <QJsonArray>

namespace {

QString durationText(int seconds)
{
    if (seconds < 60)
        return QStringLiteral("%1 s").arg(seconds);
    return QStringLiteral("%1 min %2 s").arg(seconds / 60).arg(seconds % 60);
}

QString blocksText(const QVector<int>& blocks)
{
    QStringList texts;
    for (const int block : blocks)
        texts += QString::number(block);
    return texts.join(QLatin1Char(','));
}

QString rowsText(const UpdatePlan& plan)
{
    if (plan.rows.isEmpty())
        return QStringLiteral("The table of updates is empty.\n");
    QVector<QStringList> table{{QString(), "Type", "From", "To", "Possible?", "Reboot?", "Blocks",
                                "Commands", "Time", "File"}};
    for (const PlannedRow& row : plan.rows) {
        table += {row.isTicked ? "[x]" : "[ ]",
                  row.type,
                  row.from,
                  row.to,
                  row.possible,
                  row.reboot,
                  blocksText(row.blocks),
                  row.commands > 0 ? QString::number(row.commands) : QString(),
                  row.seconds > 0 ? durationText(row.seconds) : QString(),
                  row.file};
    }
    return alignedTable(table);
}

QString reasonsText(const UpdatePlan& plan)
{
    if (plan.withoutRow.isEmpty())
        return QString();
    QString text = QStringLiteral("\nWithout a row:\n");
    for (const FileWithoutRow& file : plan.withoutRow) {
        const QString device =
            file.device.isEmpty() ? QString() : QStringLiteral(" (%1)").arg(file.device);
        text += QStringLiteral("  %1%2: %3\n").arg(file.file, device, file.reason);
    }
    return text;
}

QJsonObject rowJson(const PlannedRow& row)
{
    QJsonArray blocks;
    for (const int block : row.blocks)
        blocks += block;
    return {{"ticked", row.isTicked},   {"device", row.device},  {"file", row.file},
            {"type", row.type},         {"from", row.from},      {"to", row.to},
            {"possible", row.possible}, {"reboot", row.reboot},  {"blocks", blocks},
            {"commands", row.commands}, {"seconds", row.seconds}};
}

} // namespace

QString planText(const UpdatePlan& plan)
{
    QString text = rowsText(plan);
    if (plan.commands > 0)
        text += QStringLiteral("\nA run with the ticked rows: %1 commands, %2 by the dialog's "
                               "first estimate\n")
                    .arg(plan.commands)
                    .arg(durationText(plan.seconds));
    text +=
        plan.asksForUpdate
            ? QStringLiteral("\nThe dialog asks for an update of the controllers at each start.\n")
            : QString();
    return text + reasonsText(plan);
}

QJsonObject planJson(const UpdatePlan& plan)
{
    QJsonArray rows;
    for (const PlannedRow& row : plan.rows)
        rows += rowJson(row);
    QJsonArray withoutRow;
    for (const FileWithoutRow& file : plan.withoutRow) {
        QJsonObject object{{"file", file.file}, {"reason", file.reason}};
        if (!file.device.isEmpty())
            object.insert("device", file.device);
        withoutRow += object;
    }
    return {{"asksForUpdate", plan.asksForUpdate},
            {"rows", rows},
            {"withoutRow", withoutRow},
            {"commands", plan.commands},
            {"seconds", plan.seconds}};
}
