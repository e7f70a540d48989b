#include "deliverygate.h"

#include <QCoreApplication>
#include <QMessageBox>

namespace {

constexpr int mostProblems = 10; // in a message box; the log has all
constexpr int eventsMs = 50;

} // namespace

DeliveryGate::DeliveryGate(QWidget& window) : m_window(window)
{
    m_check.setProgress([this](const QString& /*name*/, qint64 doneBytes, qint64 allBytes) {
        if (m_sinceEvents.elapsed() < eventsMs)
            return;
        emit progressed(allBytes > 0 ? static_cast<int>(doneBytes * 100 / allBytes) : 0);
        QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
        m_sinceEvents.start();
    });
}

bool DeliveryGate::letsIn(const QString& applicationDir)
{
    m_sinceEvents.start();
    const DeliveryReport report = m_check.checkBeside(applicationDir);
    const bool letsIn = m_check.allowsLoading(report);
    tell(report, letsIn);
    return letsIn;
}

void DeliveryGate::tell(const DeliveryReport& report, bool letsIn)
{
    using Verdict = DeliveryReport::Verdict;
    const bool isAskedFor = asksForProof() || (report.verdict != Verdict::NotSealed &&
                                               report.verdict != Verdict::NothingDelivered);
    if (!isAskedFor)
        return;
    const QStringList problems = report.problems();
    for (const QString& problem : problems)
        emit message(problem);
    emit message(report.summary());
    if (letsIn && report.verdict != Verdict::Departs)
        return;

    const QString consequence =
        letsIn ? tr("The update module is loaded all the same, as there is no public key to tell "
                    "by whom they were sealed.")
               : tr("The update module was not loaded.");
    if (!letsIn)
        emit message(consequence);
    QStringList shown = problems.mid(0, mostProblems);
    if (shown.size() < problems.size())
        shown += tr("... and %1 more, which the log shows").arg(problems.size() - shown.size());
    QMessageBox box(QMessageBox::Warning, QStringLiteral("VORNIX3"), QString(), QMessageBox::Ok,
                    &m_window);
    box.setObjectName(letsIn ? QStringLiteral("deliveryDeparts")
                             : QStringLiteral("deliveryRefused"));
    // Names of files could be taken for markup.
    box.setTextFormat(Qt::PlainText);
    box.setText(QStringList{report.summary(), shown.join(QLatin1Char('\n')), consequence}.join(
        QStringLiteral("\n\n")));
    box.exec();
}
