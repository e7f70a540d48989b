// How the what's-new viewer copes with many notes: how the time to find and sort them grows, and
// what "Show more" spends its time on. The notes lie beside the program while it runs.

#include "newfeaturedialog.h"
#include "privateaccess.h"
#include "programfolder.h"
#include "stopwatch.h"
#include "testenvironment.h"

#include <BackendVersions>

#include <QApplication>
#include <QDir>
#include <QTextEdit>

#include <cmath>
#include <cstdio>

ZAN_EXPOSE(findNotes, &NewFeatureDialog::search_dir);
ZAN_EXPOSE(showMore, &NewFeatureDialog::on_pushButton_show_more_clicked);

static constexpr int NOTES = 1000;
static constexpr int ROUNDS = 25;

// As long as a delivered note usually is.
static QByteArray body()
{
    return QByteArray(
               "<h3>Configurations</h3><ul><li>Two configurations can be compared; differences are "
               "listed by controller and camera.</li><li>Backups carry the name of their author."
               "</li></ul><h3>Corrected</h3><p>Stopping a measurement takes effect at once, also "
               "while the positions of many bodies are being written. "
               "<a href=\"https://localhost/\">More</a></p>")
        .repeated(3);
}

// No two alike, in no order of their numbers.
static VersionInfo versionOf(int index)
{
    const int mixed = index * 7919 % 10007;
    return VersionInfo(mixed % 11, mixed / 11 % 13, mixed);
}

static QString dotted(int index)
{
    return versionOf(index).toString().mid(1);
}

static void deliverNotes(const ProgramFolder& folder, int begin, int end)
{
    for (int index = begin; index < end; ++index) {
        const QString name = QLatin1Char('v') +
                             dotted(index).replace(QLatin1Char('.'), QLatin1Char('_')) +
                             QLatin1String(".html");
        folder.deliverNote(name, "<html><body>" + body() + "</body></html>");
    }
}

static void report(const QString& what, double value, const char* remark)
{
    std::printf("%-58s %8.3f   %s\n", qPrintable(what), value, remark);
}

static double secondsToFind(NewFeatureDialog& viewer, int count)
{
    const QString folder = QCoreApplication::applicationDirPath();
    return shortestSeconds<ProcessorClock>(ROUNDS, [&] {
        if (findNotes(viewer, folder, QStringLiteral("whats_new")).size() != count)
            qFatal("not all notes were found");
    });
}

// What the time would grow by if it went with n log n.
static double growthOfSorting(int from, int to)
{
    return to * std::log(to) / (from * std::log(from));
}

static void measureFinding(NewFeatureDialog& viewer)
{
    const ProgramFolder folder;
    int delivered = NOTES / 4;
    deliverNotes(folder, 0, delivered);
    double before = secondsToFind(viewer, delivered);
    for (int count = delivered * 2; count <= NOTES * 4; count *= 2) {
        deliverNotes(folder, delivered, count);
        const double seconds = secondsToFind(viewer, count);
        report(QStringLiteral("find and sort %1 notes / %2, share of n log n")
                   .arg(count)
                   .arg(delivered),
               seconds / before / growthOfSorting(delivered, count), "goal: about 1 at most");
        before = seconds;
        delivered = count;
    }
}

// The page in the words of the viewer; checked against what the viewer shows.
static QString page(const QStringList& files)
{
    QString content = QStringLiteral("<html><body>");
    for (const QString& file : files) {
        QString version = file.mid(1).section(QLatin1Char('.'), 0, 0);
        content += QStringLiteral("<h2>VORNIX3 v%1</h2>%2<hr>")
                       .arg(version.replace(QLatin1Char('_'), QLatin1Char('.')),
                            QString::fromLatin1(body()));
    }
    return content + QStringLiteral("</body></html>");
}

static void measureShowMore(NewFeatureDialog& viewer)
{
    const ProgramFolder folder;
    deliverNotes(folder, 0, NOTES);
    const QString programFolder = QCoreApplication::applicationDirPath();
    const QString content = page(findNotes(viewer, programFolder, QStringLiteral("whats_new")));
    auto* view = viewer.findChild<QTextEdit*>(QStringLiteral("textEdit"));

    const double all = shortestSeconds<ProcessorClock>(ROUNDS, [&] { showMore(viewer); });
    const QString shown = view->toPlainText();
    const double setHtml = shortestSeconds<ProcessorClock>(ROUNDS, [&] { view->setHtml(content); });
    if (view->toPlainText() != shown)
        qFatal("the page is another one");
    const double finding = secondsToFind(viewer, NOTES);
    report(QStringLiteral("\"Show more\" with %1 notes: share of Qt's setHtml").arg(NOTES),
           setHtml / all, "");
    report(QStringLiteral("\"Show more\" with %1 notes: share of finding them").arg(NOTES),
           finding / all, "");
    report(QStringLiteral("\"Show more\" with %1 notes: share of reading, joining them").arg(NOTES),
           1 - (setHtml + finding) / all, "");
}

int main(int argc, char** argv)
{
    const TestEnvironment environment;
    QApplication application(argc, argv);
    BackendVersions versions(VersionInfo(99, 0, 0), VersionInfo(1, 23), VersionInfo(1, 4),
                             QStringLiteral("ZAN"));
    NewFeatureDialog viewer(nullptr, &versions);
    viewer.onSendFEVersion(QStringLiteral("v99.0.0"));
    measureFinding(viewer);
    measureShowMore(viewer);
    return 0;
}
