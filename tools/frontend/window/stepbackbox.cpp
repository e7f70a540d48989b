#include "stepbackbox.h"

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>

namespace {

constexpr int mostSteps = 10; // the log has all

QString listOf(const QVector<StepBack>& steps)
{
    QStringList lines;
    for (const StepBack& step : steps.mid(0, mostSteps))
        lines += stepBackText(step);
    if (lines.size() < steps.size())
        lines += QApplication::translate("StepBackBox", "... and %1 more, which the log shows")
                     .arg(steps.size() - lines.size());
    return lines.join(QLatin1Char('\n'));
}

} // namespace

bool allowsStepsBack(const QVector<StepBack>& steps, QWidget* window)
{
    const auto tr = [](const char* text) {
        return QApplication::translate("StepBackBox", text);
    };
    QWidget* dialog = QApplication::activeModalWidget();
    QMessageBox box(QMessageBox::Warning, QStringLiteral("VORNIX3"),
                    tr("This update would bring older versions than those that run."),
                    QMessageBox::NoButton, dialog ? dialog : window);
    box.setObjectName(QStringLiteral("stepsBack"));
    // Names of devices could be taken for markup.
    box.setTextFormat(Qt::PlainText);
    box.setInformativeText(
        listOf(steps) + QStringLiteral("\n\n") +
        tr("An answer may have been lost when the table of updates was filled. Stop, open it again "
           "and compare."));
    QPushButton* stop = box.addButton(tr("&Stop"), QMessageBox::RejectRole);
    const QPushButton* goOn =
        box.addButton(tr("&Update all the same"), QMessageBox::DestructiveRole);
    box.setDefaultButton(stop);
    box.setEscapeButton(stop);
    box.exec();
    return box.clickedButton() == goOn;
}
