#include "filechecks.h"

#include "payloadchecks.h"
#include "rangechecks.h"

#include <camupdatedata.h>
#include <fieldoffsets.h>
#include <filenames.h>
#include <imagewords.h>
#include <releasetext.h>

#include <QDate>
#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>

namespace {

QString bytesText(qint64 count)
{
    return QStringLiteral("%1 bytes").arg(count);
}

/// Takes part in the check of one file. Each function looks at one thing.
class FileCheck
{
public:
    FileCheck(const ScannedFile& scanned, const QString& fileName)
        : m_scanned(scanned), m_fileName(fileName)
    {
    }

    QVector<RuleFinding> run();

private:
    void checkController(const ControllerImage& image);
    void checkCamera(const CameraUpdateFile& file);

    void checkName();
    void checkSizes(const char* parts);
    void checkGaps(qint64 tablesEnd, const char* parts);

    void checkVersions(const ControllerImage& image);
    void checkDates(const ControllerImage& image);
    void checkPreRelease(const ControllerImage& image);
    void checkPlainName(const ControllerImage& image);

    void checkCameraVersions(const CameraUpdateFile& file);
    void checkWaitingTimes(const CameraUpdateFile& file);
    void checkCameraEnding();

    void add(const RuleFinding& finding) { m_findings.append(finding); }

    const ScannedFile& m_scanned;
    const QString m_fileName;
    QVector<RuleFinding> m_findings;
};

template <typename Part>
qint64 tableEnd(qint64 headEnd, const QVector<Part>& parts)
{
    for (const Part& part : parts)
        headEnd += entryFields(part).size();
    return headEnd;
}

QVector<RuleFinding> FileCheck::run()
{
    m_findings = m_scanned.findings + payloadFindings(m_scanned);
    checkName();
    if (m_scanned.file) {
        if (const auto* image = std::get_if<ControllerImage>(&*m_scanned.file))
            checkController(*image);
        else
            checkCamera(std::get<CameraUpdateFile>(*m_scanned.file));
    }
    std::stable_sort(m_findings.begin(), m_findings.end(),
                     [](const RuleFinding& left, const RuleFinding& right) {
                         return left.offset < right.offset;
                     });
    return m_findings;
}

void FileCheck::checkController(const ControllerImage& image)
{
    checkSizes("blocks");
    checkGaps(tableEnd(headSize(image), image.blocks), "blocks");
    checkVersions(image);
    checkDates(image);
    checkPreRelease(image);
    checkPlainName(image);
    m_findings += checkRanges(image, preReleaseOf(image, m_fileName).isEmpty());
}

void FileCheck::checkCamera(const CameraUpdateFile& file)
{
    checkSizes("images");
    checkGaps(tableEnd(headSize(file), file.images), "images");
    checkCameraVersions(file);
    checkWaitingTimes(file);
    checkCameraEnding();
}

void FileCheck::checkName()
{
    const QString name = QFileInfo(m_fileName).fileName();
    const auto isBeyond = [&](ushort last) {
        return std::any_of(name.begin(), name.end(),
                           [&](QChar letter) { return letter.unicode() > last; });
    };
    if (isBeyond(0xFF))
        add({Rule::NameLatin1, QStringLiteral("name"), name,
             QStringLiteral("letters of ASCII, or at least of Latin-1")});
    else if (isBeyond(0x7F))
        add({Rule::NameAscii, QStringLiteral("name"), name, QStringLiteral("letters of ASCII")});
}

void FileCheck::checkSizes(const char* parts)
{
    for (int index = 0; index < m_scanned.contents.size(); ++index) {
        const ScannedContent& content = m_scanned.contents[index];
        const QString field = QStringLiteral("%1[%2].records").arg(QLatin1String(parts)).arg(index);
        if (content.totals.count > maxRecords)
            add({Rule::TooManyRecords, field,
                 QStringLiteral("%1 records").arg(content.totals.count),
                 QStringLiteral("at most %1").arg(maxRecords), content.start});
        if (content.totals.bytes > maxBlockBytes)
            add({Rule::TooManyBytes, field, bytesText(content.totals.bytes),
                 QStringLiteral("at most %1").arg(maxBlockBytes), content.start});
    }
}

// What belongs to no block can be told only once all blocks could be read.
void FileCheck::checkGaps(qint64 tablesEnd, const char* parts)
{
    QVector<QPair<qint64, int>> starts;
    for (const ScannedContent& content : m_scanned.contents) {
        if (!content.isComplete)
            return;
        starts.append({content.start, starts.size()});
    }
    std::sort(starts.begin(), starts.end());
    qint64 end = tablesEnd;
    for (const auto& [start, index] : starts) {
        if (start > end)
            add({Rule::Gap, QStringLiteral("the place before %1[%2]").arg(parts).arg(index),
                 bytesText(start - end), QStringLiteral("nothing"), end});
        end = m_scanned.contents[index].end;
    }
    if (end < m_scanned.size && !starts.isEmpty())
        add({Rule::LeftOver, QStringLiteral("the end of the file"), bytesText(m_scanned.size - end),
             QStringLiteral("nothing"), end});
}

void FileCheck::checkVersions(const ControllerImage& image)
{
    const auto compare = [&](const char* newName, const VersionInfo& newVer, const char* minName,
                             const VersionInfo& minVer) {
        if (newVer < minVer)
            add({Rule::NewBelowMin, newName, versionText(newVer),
                 QStringLiteral("at least %1 %2").arg(QLatin1String(minName), versionText(minVer)),
                 headOffset(image, newName)});
    };
    compare("newPt", image.newPt, "minPt", image.minPt);
    compare("newCt", image.newCt, "minCt", image.minCt);
    if (image.release != image.newPt)
        add({Rule::ReleaseNotPt, QStringLiteral("release"), versionText(image.release),
             QStringLiteral("newPt %1").arg(versionText(image.newPt)),
             headOffset(image, QStringLiteral("release"))});
}

void FileCheck::checkDates(const ControllerImage& image)
{
    if (image.layout != ImageLayout::Dated)
        return;
    const auto check = [&](const char* name, const ImageDate& date) {
        if (!QDate::isValid(date.year, date.month, date.day))
            add({Rule::Date, name, dateText(date), QStringLiteral("a date"),
                 headOffset(image, name)});
    };
    check("releaseDate", image.releaseDate);
    check("minorReleaseDate", image.minorReleaseDate);
}

void FileCheck::checkPreRelease(const ControllerImage& image)
{
    if (image.layout != ImageLayout::Dated)
        return;
    const bool isFinal = image.preReleaseType == 0 && image.preReleaseNumber == 0;
    if (!isFinal && !preReleaseWords().contains(image.preReleaseType))
        add({Rule::PreReleaseKind, QStringLiteral("preReleaseType"),
             QStringLiteral("%1 with number %2")
                 .arg(image.preReleaseType)
                 .arg(image.preReleaseNumber),
             QStringLiteral("0 with number 0, 10, 20 or 30"),
             headOffset(image, QStringLiteral("preReleaseType"))});
}

void FileCheck::checkPlainName(const ControllerImage& image)
{
    static const QRegularExpression form("^(-(alpha|beta|rc)\\.[0-9]+)?\\z");
    if (image.layout != ImageLayout::Plain || m_fileName.isEmpty())
        return;
    const QString mark = preReleaseOf(image, m_fileName);
    if (!form.match(mark).hasMatch()) {
        add({Rule::NameMark, QStringLiteral("the pre-release in the name"), '"' + mark + '"',
             QStringLiteral("nothing, or for example \"-beta.2\"")});
        return;
    }
    for (int index = 0; index < image.blocks.size(); ++index) {
        const ScannedContent& content = m_scanned.contents.value(index);
        if (image.blocks[index].type == FirmwareBlock && content.payload &&
            content.payload->appendix != mark) {
            add({Rule::NamePreRelease, QStringLiteral("the pre-release in the name"),
                 '"' + mark + '"',
                 QStringLiteral("\"%1\" as in blocks[%2].payload")
                     .arg(content.payload->appendix)
                     .arg(index)});
            return;
        }
    }
}

void FileCheck::checkCameraVersions(const CameraUpdateFile& file)
{
    if (file.newVer < file.minVer)
        add({Rule::NewBelowMin, QStringLiteral("newVersion"), versionText(file.newVer),
             QStringLiteral("at least minVersion %1").arg(versionText(file.minVer)),
             headOffset(file, QStringLiteral("newVersion"))});
    qint64 entry = headSize(file);
    for (int index = 0; index < file.images.size(); ++index) {
        const CameraImage& image = file.images[index];
        const auto compare = [&](const char* name, const VersionInfo& version,
                                 const VersionInfo& wanted) {
            if (version != wanted)
                add({Rule::ImageVersion,
                     QStringLiteral("images[%1].%2").arg(index).arg(QLatin1String(name)),
                     versionText(version),
                     QStringLiteral("%1 as in the head").arg(versionText(wanted)),
                     entry + entryFields(image, name).offset()});
        };
        compare("newVersion", image.newVer.value_or(file.newVer), file.newVer);
        compare("minVersion", image.minVer.value_or(file.minVer), file.minVer);
        entry += entryFields(image).size();
    }
}

void FileCheck::checkWaitingTimes(const CameraUpdateFile& file)
{
    const auto text = [](quint16 model) {
        return QStringLiteral("0x%1").arg(model, 4, 16, QLatin1Char('0'));
    };
    QStringList all;
    for (const quint16 model : file.models)
        all += text(model);
    const double used = durationLastCmdSec(all);
    for (int index = 0; index < all.size(); ++index) {
        const double wanted = durationLastCmdSec({all[index]});
        if (wanted != used)
            add({Rule::WaitingTimes, QStringLiteral("models[%1]").arg(index),
                 QStringLiteral("%1, which needs %2 s").arg(all[index]).arg(wanted),
                 QStringLiteral("a model that needs %1 s as the file gets").arg(used),
                 headOffset(file, QStringLiteral("models")) + qint64(2) * index});
    }
}

void FileCheck::checkCameraEnding()
{
    if (!m_fileName.isEmpty() &&
        !QDir::match(QStringLiteral("*.VX2znimg"), QFileInfo(m_fileName).fileName()))
        add({Rule::CameraEnding, QStringLiteral("name"), QFileInfo(m_fileName).fileName(),
             QStringLiteral("a name that ends with .VX2znimg")});
}

} // namespace

QString preReleaseOf(const ControllerImage& image, const QString& fileName)
{
    if (image.layout == ImageLayout::Plain)
        return preReleaseOfFileName(fileName);
    return preReleaseText(image.preReleaseType, image.preReleaseNumber);
}

QVector<RuleFinding> checkUpdateFile(const ScannedFile& scanned, const QString& fileName)
{
    return FileCheck(scanned, fileName).run();
}
