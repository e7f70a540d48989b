#include "ZanData.h"

#include "filenames.h"
#include "littleendianreader.h"

ZanData::ZanData(const QString& fileName) : sFileName(fileName)
{
    if (readFileInfo() != 0)
        blocks.resize(0);
}

const ZanUpdateBlock* ZanData::getUpdateBlock(int i) const
{
    return i >= 0 && i < blocks.size() ? &blocks.at(i) : nullptr;
}

static FILE* openForReading(const QString& path)
{
    return std::fopen(path.toLatin1().constData(), "rb");
}

FILE* ZanData::getUpdateBlockInFile(int i) const
{
    const ZanUpdateBlock* block = getUpdateBlock(i);
    FILE* stream = block ? openForReading(sFileName) : nullptr;
    // A failed seek cannot harm a controller: the start of the file holds no block magic.
    if (stream)
        (void)std::fseek(stream, block->offset, SEEK_SET);
    return stream;
}

bool ZanData::canUpdateSystemModel(int model) const
{
    switch (systemModel) {
    case 0:
        return model == 0 || model == 2 || model == 20;
    case 21:
        return model == 21;
    default:
        return false;
    }
}

int ZanData::readFileInfo()
{
    FILE* stream = openForReading(sFileName);
    if (!stream)
        return -1;
    const int code = [&] {
        LittleEndianReader reader(stream);
        bool hasDates = false;
        int result = readMagic(reader, &hasDates);
        if (result == 0)
            result = readRelease(reader, hasDates);
        if (result == 0)
            result = readComponentVersions(reader);
        return result == 0 ? readBlockTable(reader) : result;
    }();
    std::fclose(stream);
    return code;
}

int ZanData::readMagic(LittleEndianReader& reader, bool* hasDates)
{
    int magic = 0;
    if (!reader.readU16(&magic))
        return -2;
    *hasDates = magic == 0xD218 || magic == 0xD21A;
    switch (magic) {
    case 0xD208:
    case 0xD218:
        systemModel = 0;
        systemModelDesc = QStringLiteral("ZAN");
        return 0;
    case 0xD20A:
    case 0xD21A:
        systemModel = 21;
        systemModelDesc = QStringLiteral("BRIARSCOPE3");
        return 0;
    default:
        systemModel = -1;
        systemModelDesc = QStringLiteral("UNKNOWN");
        return -3;
    }
}

int ZanData::readRelease(LittleEndianReader& reader, bool hasDates)
{
    const int code = reader.readWords(
        {{nullptr, -4}, {&newVX2Ver.ma, -5}, {&newVX2Ver.mi, -5}, {&newVX2Ver.pa, -5}});
    if (code != 0)
        return code;
    if (hasDates)
        return readPreReleaseAndDates(reader);
    sPreReleaseAppendix = getPreReleaseAppendixFromFilename(sFileName);
    return 0;
}

static int readDate(LittleEndianReader& reader, int codeIfMissing, QString* date)
{
    int year = 0;
    int month = 0;
    int day = 0;
    const int code =
        reader.readWords({{&year, codeIfMissing}, {&month, codeIfMissing}, {&day, codeIfMissing}});
    if (code == 0) {
        const QLatin1Char zero('0');
        *date = QStringLiteral("%1-%2-%3")
                    .arg(year, 4, 10, zero)
                    .arg(month, 2, 10, zero)
                    .arg(day, 2, 10, zero);
    }
    return code;
}

int ZanData::readPreReleaseAndDates(LittleEndianReader& reader)
{
    int type = 0;
    int number = 0;
    int code = reader.readWords({{&type, -6}, {&number, -6}});
    if (code != 0)
        return code;
    sPreReleaseAppendix = getPreReleaseAppendix(type, number);

    code = readDate(reader, -6, &m_releaseDate);
    if (code == 0)
        code = readDate(reader, -7, &m_releaseMinorDate);
    m_hasReleaseDates = code == 0;
    return code;
}

int ZanData::readComponentVersions(LittleEndianReader& reader)
{
    // Ct versions have two parts in the file. The codes are the format's, gaps and repeats
    // included.
    return reader.readWords({{nullptr, -8},
                             {&newPtVer.ma, -9},
                             {&newPtVer.mi, -10},
                             {&newPtVer.pa, -113},
                             {&newCtVer.ma, -12},
                             {&newCtVer.mi, -13},
                             {nullptr, -15},
                             {&minPtVer.ma, -16},
                             {&minPtVer.mi, -17},
                             {&minPtVer.pa, -18},
                             {&minCtVer.ma, -16},
                             {&minCtVer.mi, -17},
                             {nullptr, -18}});
}

int ZanData::readBlockTable(LittleEndianReader& reader)
{
    int count = 0;
    if (!reader.readU16(&count))
        return -19;
    blocks.resize(count);
    for (ZanUpdateBlock& block : blocks) {
        const int code = readBlock(reader, &block);
        if (code != 0)
            return code;
    }
    return 0;
}

// Only the limits of a firmware block have a patch part.
static int readLimit(LittleEndianReader& reader, bool hasPatch, int firstCode, VersionInfo* limit)
{
    const int code = reader.readWords({{&limit->ma, firstCode}, {&limit->mi, firstCode - 1}});
    if (code != 0 || !hasPatch)
        return code;
    return reader.readWords({{&limit->pa, firstCode - 2}});
}

int ZanData::readBlock(LittleEndianReader& reader, ZanUpdateBlock* block)
{
    int type = 0;
    if (!reader.readU16(&type))
        return -20;
    if (type == ZAN_FIRMWARE_UPDATE || type == ZAN_SYSTEM_UPDATE)
        block->type = static_cast<ZAN_UPDATE_TYPE>(type);

    const bool hasPatch = block->type == ZAN_FIRMWARE_UPDATE;
    int code = readLimit(reader, hasPatch, -21, &block->minVer);
    if (code == 0)
        code = readLimit(reader, hasPatch, -24, &block->maxVer);
    if (code != 0)
        return code;
    if (hasPatch)
        maxPtVer = block->maxVer;
    return reader.readS32(&block->offset) && reader.readS32(&block->length) ? 0 : -27;
}

QString ZanData::getPreReleaseAppendix(int type, int number)
{
    if (type == 0 && number == 0)
        return QString();
    switch (type) {
    case 10:
        return QStringLiteral("-alpha.%1").arg(number);
    case 20:
        return QStringLiteral("-beta.%1").arg(number);
    case 30:
        return QStringLiteral("-rc.%1").arg(number);
    default:
        return QStringLiteral("-unknown%1.%2").arg(type).arg(number);
    }
}

QString ZanData::getPreReleaseAppendixFromFilename(const QString& path)
{
    return preReleaseOfFileName(path);
}
