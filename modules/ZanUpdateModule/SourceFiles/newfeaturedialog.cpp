#include "newfeaturedialog.h"

#include "darktheme.h"
#include "opencall.h"

#include <BackendVersions>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTextStream>

#include <algorithm>
#include <utility>

static const char* const NOTES_FOLDER = "whats_new";

// ---- Order of the notes

Versions::Versions(QString text) : sVersion(std::move(text))
{
    setVersions();
}

void Versions::setVersionString(QString text)
{
    sVersion = std::move(text);
    setVersions();
}

// A part that does not parse counts as 0, so a name with a capital V sorts to the end of the list.
void Versions::setVersions()
{
    QString text = sVersion;
    text.remove(QLatin1Char('v'));
    text.replace(QLatin1Char('_'), QLatin1Char('.'));
    const QStringList parts = text.split(QLatin1Char('.'));
    major = parts.value(0).toInt();
    minor = parts.value(1).toInt();
    patch = parts.value(2).toInt();
}

bool Versions::isLess(const Versions* other) const
{
    return VersionInfo(major, minor, patch) < VersionInfo(other->major, other->minor, other->patch);
}

bool Versions::isGreater(const Versions* other) const
{
    return other->isLess(this);
}

bool versionIsLessThen(Versions* first, Versions* second)
{
    return first->isLess(second);
}

// ---- Finding the notes

// The dotted text of a note's version, for example 3.1.0.
static QString dottedVersion(const QString& fileName)
{
    return QFileInfo(fileName).baseName().replace(QLatin1Char('_'), QLatin1Char('.')).mid(1);
}

static VersionInfo noteVersion(const QString& fileName, bool* isNumbered = nullptr)
{
    const QStringList parts = dottedVersion(fileName).split(QLatin1Char('.'));
    return VersionInfo(parts.value(0).toInt(isNumbered), parts.value(1).toInt(),
                       parts.value(2).toInt());
}

QStringList NewFeatureDialog::search_dir(const QString& sDir, const QString& sSeachDir)
{
    QStringList result;
    QDir dir(sDir + QLatin1Char('/') + sSeachDir);
    if (!dir.exists())
        return result;
    dir.setNameFilters({QStringLiteral("v*_*_*.html")});
    for (const QString& entry : dir.entryList(QDir::Files, QDir::Reversed)) {
        bool isNumbered = false;
        const VersionInfo version = noteVersion(entry, &isNumbered);
        if (isNumbered && version <= vornix2)
            result.append(entry);
    }
    sortAccordingVersions(&result);
    return result;
}

void NewFeatureDialog::sortAccordingVersions(QStringList* list)
{
    QList<Versions*> versions;
    for (const QString& name : qAsConst(*list))
        versions.append(new Versions(name));
    qtSort(&versions);
    list->clear();
    for (auto version = versions.crbegin(); version != versions.crend(); ++version)
        list->append((*version)->getVersionStr());
    qDeleteAll(versions);
}

void NewFeatureDialog::qtSort(QList<Versions*>* list)
{
    std::sort(list->begin(), list->end(), versionIsLessThen);
}

bool NewFeatureDialog::is_version_available(int major, int minor, int patch)
{
    const VersionInfo version(major, minor, patch);
    return version <= beVers->systemPt() && version <= vornix2;
}

// ---- The window

NewFeatureDialog::NewFeatureDialog(QWidget* parent, BackendVersions* beVers)
    : QDialog(parent), beVers(beVers)
{
    ui.setupUi(this);
    onDarkThemeEnabled(isDarkTheme(this));
}

NewFeatureDialog::~NewFeatureDialog() = default;

void NewFeatureDialog::onDarkThemeEnabled(bool bDarkThemeEnabled)
{
    ui.label_logo->setPixmap(QPixmap(bDarkThemeEnabled
                                         ? QStringLiteral(":/orv_transparent02.png")
                                         : QStringLiteral(":/orv_transparent02-brightmode.png")));
}

void NewFeatureDialog::onSendFEVersion(QString FE_version)
{
    FE_version.remove(0, 1);
    // Every message that the receiver does not know arrives here; a version begins with a number.
    bool isNumber = false;
    FE_version.left(1).toInt(&isNumber);
    const QStringList parts = FE_version.split(QLatin1Char('.'));
    if (!isNumber || parts.size() < 3)
        return;
    const int major = parts.at(0).toInt(&isNumber);
    vornix2 =
        isNumber ? VersionInfo(major, parts.at(1).toInt(), parts.at(2).toInt()) : VersionInfo();
}

int NewFeatureDialog::update_and_exec()
{
    const OpenCall call;
    const QStringList list = search_dir(QCoreApplication::applicationDirPath(), NOTES_FOLDER);
    ui.pushButton_show_more->setEnabled(!list.isEmpty());
    if (m_trigger_at_startup && list.isEmpty())
        return 0;
    load_html(list, false);
    return exec();
}

void NewFeatureDialog::on_pushButton_show_more_clicked()
{
    load_html(search_dir(QCoreApplication::applicationDirPath(), NOTES_FOLDER), true);
}

void NewFeatureDialog::on_pushButton_exit_clicked()
{
    reject();
}

// Without a body tag the positions are -1; operators see notes cut as they are here.
static QString insideOfBody(const QString& document)
{
    const int start = document.indexOf(QLatin1String("<body>")) + 6;
    const int end = document.indexOf(QLatin1String("</body>"));
    return document.mid(start, end - start);
}

// The note as a part of the page, with its heading; null if the file cannot be read.
QString NewFeatureDialog::note(const QString& fileName)
{
    const QString name =
        QStringLiteral("%1/%2/%3")
            .arg(QCoreApplication::applicationDirPath(), QLatin1String(NOTES_FOLDER), fileName);
    QFile file(name);
    if (!file.open(QIODevice::ReadOnly) || !fileName.endsWith(QLatin1String(".html")))
        return QString();

    QTextStream stream(&file);
    QString content =
        QStringLiteral("<h2>%1</h2>").arg(QLatin1String("VORNIX3 v") + dottedVersion(fileName));
    content += insideOfBody(stream.readAll());
    const VersionInfo version = noteVersion(fileName);
    if (!is_version_available(version.major(), version.minor(), version.patch())) {
        content += tr("<h4><font color=\"red\">%1</font></h4>")
                       .arg(tr("The features are only available when the Controller is "
                               "up-to-date."));
    }
    return content;
}

bool NewFeatureDialog::load_html(QStringList file_list, bool show_all)
{
    QString content = tr("<html><body>");
    if (file_list.isEmpty()) {
        content +=
            QLatin1String("<br>") +
            tr("<h4><font color=\"red\">%1</font></h4>").arg(tr("No new feature available!"));
    }
    for (const QString& fileName : qAsConst(file_list)) {
        const QString part = note(fileName);
        if (part.isNull())
            continue;
        content += part;
        if (!show_all)
            break;
        content += QLatin1String("<hr>");
    }
    content += tr("</body></html>");
    ui.textEdit->setHtml(content);
    return false;
}
