#include "deliverychecks.h"

#include "filechecks.h"

#include <checksumlist.h>
#include <fieldoffsets.h>
#include <releasetext.h>
#include <updatefolder.h>

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QHash>

#include <algorithm>

namespace {

/// One controller image of a delivery.
struct Release
{
    QString path;
    ControllerImage image;
    QString preRelease;

    QString name() const { return QFileInfo(path).fileName(); }
    QString text() const { return versionText(image.release) + preRelease; }
};

/// Whether a controller at the new versions of @p from gets what brings it to those of @p to.
bool isTaken(const ControllerImage& to, quint16 type, const VersionInfo& from,
             const VersionInfo& goal)
{
    bool hasBlock = false;
    for (const ControllerImageBlock& block : to.blocks) {
        if (block.type != type)
            continue;
        hasBlock = true;
        if (from >= block.minVer && from <= block.maxVer)
            return true;
    }
    return !hasBlock || from >= goal;
}

bool leads(const Release& from, const Release& to)
{
    return isTaken(to.image, FirmwareBlock, from.image.newPt, to.image.newPt) &&
           isTaken(to.image, SystemBlock, from.image.newCt, to.image.newCt);
}

bool reachesMinimum(const Release& from, const Release& to)
{
    return from.image.newPt >= to.image.minPt && from.image.newCt >= to.image.minCt;
}

QString rangesText(const ControllerImage& image)
{
    QStringList texts;
    for (const ControllerImageBlock& block : image.blocks) {
        if (block.type == FirmwareBlock || block.type == SystemBlock)
            texts += QStringLiteral("%1 %2 to %3")
                         .arg(block.type == FirmwareBlock ? "Pt" : "Ct", versionText(block.minVer),
                              versionText(block.maxVer));
    }
    return texts.join(QStringLiteral(", "));
}

/// Checks the images of one model family, which are in the order of their releases.
class ChainCheck
{
public:
    explicit ChainCheck(QVector<Release> releases) : m_releases(std::move(releases)) {}

    QVector<RuleFinding> run();

private:
    void checkTwice(const Release& former, const Release& release);
    void checkWay(int index);
    void add(Rule rule, const Release& release, const QString& value, const QString& expected);

    const QVector<Release> m_releases;
    QVector<RuleFinding> m_findings;
};

QVector<RuleFinding> ChainCheck::run()
{
    for (int index = 1; index < m_releases.size(); ++index) {
        checkTwice(m_releases[index - 1], m_releases[index]);
        checkWay(index);
    }
    return m_findings;
}

void ChainCheck::checkTwice(const Release& former, const Release& release)
{
    if (former.image.release != release.image.release)
        return;
    RuleFinding finding{
        Rule::ReleaseTwice, QStringLiteral("release"), release.text(),
        QStringLiteral("another release than %1 of %2").arg(former.text(), former.name()),
        headOffset(release.image, QStringLiteral("release"))};
    finding.file = release.path;
    m_findings.append(finding);
}

void ChainCheck::checkWay(int index)
{
    const Release& release = m_releases[index];
    const Release& before = m_releases[index - 1];
    const auto* end = m_releases.begin() + index;
    const bool isLedTo = std::any_of(m_releases.begin(), end,
                                     [&](const Release& from) { return leads(from, release); });
    const QString expected =
        QStringLiteral("ranges with Pt %1 and Ct %2, as %3 leaves them")
            .arg(versionText(before.image.newPt), versionText(before.image.newCt), before.name());
    if (!isLedTo && index == m_releases.size() - 1)
        add(Rule::NothingLeads, release, rangesText(release.image), expected);
    else if (!leads(before, release))
        add(Rule::ChainHole, release, rangesText(release.image), expected);
    else if (std::none_of(m_releases.begin(), end,
                          [&](const Release& from) { return reachesMinimum(from, release); }))
        add(Rule::MinUnreachable, release,
            QStringLiteral("from Pt %1 and Ct %2")
                .arg(versionText(release.image.minPt), versionText(release.image.minCt)),
            QStringLiteral("at most Pt %1 and Ct %2, as %3 leaves them")
                .arg(versionText(before.image.newPt), versionText(before.image.newCt),
                     before.name()));
}

void ChainCheck::add(Rule rule, const Release& release, const QString& value,
                     const QString& expected)
{
    RuleFinding finding{rule, QStringLiteral("the way to release %1").arg(release.text()), value,
                        expected};
    finding.file = release.path;
    m_findings.append(finding);
}

/// The images of each model family in the order of their releases.
QHash<int, QVector<Release>> releasesOf(const QVector<DeliveredFile>& files)
{
    QHash<int, QVector<Release>> families;
    for (const DeliveredFile& file : files) {
        const auto* image =
            file.scanned.file ? std::get_if<ControllerImage>(&*file.scanned.file) : nullptr;
        if (image)
            families[image->modelFamily].append(
                {file.path, *image, preReleaseOf(*image, file.path)});
    }
    for (QVector<Release>& releases : families)
        std::stable_sort(releases.begin(), releases.end(),
                         [](const Release& left, const Release& right) {
                             return left.image.release < right.image.release;
                         });
    return families;
}

QVector<RuleFinding> checkCameraFiles(const QVector<DeliveredFile>& files)
{
    QVector<RuleFinding> findings;
    QHash<quint16, QString> fileOfModel;
    for (const DeliveredFile& file : files) {
        const auto* camera =
            file.scanned.file ? std::get_if<CameraUpdateFile>(&*file.scanned.file) : nullptr;
        for (int index = 0; camera && index < camera->models.size(); ++index) {
            const quint16 model = camera->models[index];
            const QString other = fileOfModel.value(model, file.path);
            fileOfModel.insert(model, file.path);
            if (other == file.path)
                continue;
            RuleFinding finding{
                Rule::CameraFileTwice, QStringLiteral("models[%1]").arg(index),
                QStringLiteral("0x%1").arg(model, 4, 16, QLatin1Char('0')),
                QStringLiteral("a model that %1 is not for").arg(QFileInfo(other).fileName()),
                headOffset(*camera, QStringLiteral("models")) + qint64(2) * index};
            finding.file = file.path;
            findings.append(finding);
        }
    }
    return findings;
}

RuleFinding nestedFolder(const QString& path, const QString& value, const QString& expected)
{
    RuleFinding finding{Rule::NestedFolder, QFileInfo(path).fileName(), value, expected};
    finding.file = path;
    return finding;
}

} // namespace

QVector<RuleFinding> checkDelivery(const QVector<DeliveredFile>& files)
{
    QVector<RuleFinding> findings;
    const QHash<int, QVector<Release>> families = releasesOf(files);
    for (const int family : {0, briarscopeFamily})
        findings += ChainCheck(families.value(family)).run();
    return findings + checkCameraFiles(files);
}

QString updateFolderOf(const QString& folder)
{
    QString cleanFolder = QDir::cleanPath(folder);
    if (QFileInfo(QDir(cleanFolder).absolutePath()).fileName() == updateFolderName)
        return cleanFolder;
    const QString found = findUpdateFolder(cleanFolder);
    return found.isEmpty() ? cleanFolder : QDir::cleanPath(found);
}

QVector<RuleFinding> checkFolders(const QString& folder)
{
    QVector<RuleFinding> findings;
    const QString used = updateFolderOf(folder);
    if (QFileInfo(used).isFile())
        findings += nestedFolder(used, QStringLiteral("a file"), QStringLiteral("a folder"));
    QDirIterator inside(used, QDir::Dirs | QDir::NoDotAndDotDot);
    while (inside.hasNext())
        findings += nestedFolder(inside.next(), QStringLiteral("a folder"),
                                 QStringLiteral("no folder, as the plug-in does not look into it"));
    QDirIterator below(folder, {updateFolderName}, QDir::AllEntries | QDir::NoDotAndDotDot,
                       QDirIterator::Subdirectories);
    while (below.hasNext()) {
        const QString path = below.next();
        if (QDir::cleanPath(path) != used && QFileInfo(path).path() != used)
            findings += nestedFolder(path, QStringLiteral("never read"),
                                     QStringLiteral("only %1, which is found first").arg(used));
    }
    std::sort(
        findings.begin(), findings.end(),
        [](const RuleFinding& left, const RuleFinding& right) { return left.file < right.file; });
    return findings;
}

bool isForeignToDeliveries(const QString& path)
{
    return !QDir::match(QStringLiteral("*.vx3img;*.VX2znimg"), QFileInfo(path).fileName());
}

bool isSealOfDelivery(const QString& path)
{
    return isPartOfSeal(QFile::encodeName(QFileInfo(path).fileName()));
}
