#include "camfilereader.h"

#include "littleendianreader.h"

static constexpr int FILE_MAGIC = 0xD209;
static constexpr int IMAGE_MAGIC = 0xA259;
static constexpr int MAX_VERSION_TEXT_BYTES = 200;

static int readCamModels(LittleEndianReader& reader, QStringList* camModels)
{
    int count = 0;
    if (!reader.readU16(&count))
        return -13;
    QStringList models;
    for (int i = 0; i < count; ++i) {
        int code = 0;
        if (!reader.readU16(&code))
            return -14;
        models += QStringLiteral("0x%1").arg(code, 4, 16, QLatin1Char('0'));
    }
    *camModels = models;
    return 0;
}

int readCamFileHead(LittleEndianReader& reader, CamFileHead* head)
{
    int magic = 0;
    if (!reader.readU16(&magic))
        return -2;
    if (magic != FILE_MAGIC)
        return CAM_FILE_WRONG_MAGIC;

    VersionInfo version;
    int code =
        reader.readWords({{nullptr, -4}, {&version.ma, -5}, {&version.mi, -6}, {&version.pa, -7}});
    if (code != 0)
        return code;
    head->newVer = version;

    code = reader.readWords(
        {{nullptr, -8}, {&version.ma, -9}, {&version.mi, -10}, {&version.pa, -11}});
    if (code != 0)
        return code;
    head->minVer = version;

    code = reader.readWords({{nullptr, -12}});
    return code != 0 ? code : readCamModels(reader, &head->camModels);
}

// The images are not reached through their table entries but by reading on.
static int skipTableEntry(LittleEndianReader& reader)
{
    const int code = reader.readWords({{nullptr, -17},
                                       {nullptr, -18},
                                       {nullptr, -19},
                                       {nullptr, -17},
                                       {nullptr, -18},
                                       {nullptr, -19}});
    if (code != 0)
        return code;
    quint32 ignored = 0;
    if (!reader.readU32(&ignored))
        return -20;
    return reader.readU32(&ignored) ? 0 : -21;
}

// NOLINTNEXTLINE(readability-non-const-parameter): it is written through the list of words
int readCamImageTable(LittleEndianReader& reader, int* imageCount)
{
    int code = reader.readWords({{nullptr, -15}, {imageCount, -16}});
    for (int i = 0; code == 0 && i < *imageCount; ++i)
        code = skipTableEntry(reader);
    return code;
}

int readCamFileUpToImages(FILE* stream, int* imageCount)
{
    LittleEndianReader reader(stream);
    CamFileHead head;
    const int code = readCamFileHead(reader, &head);
    return code != 0 ? code : readCamImageTable(reader, imageCount);
}

int readCamImageHead(LittleEndianReader& reader, quint32* recordCount)
{
    int magic = 0;
    if (!reader.readU16(&magic))
        return -101;
    if (magic != IMAGE_MAGIC)
        return -102;
    int versionLength = 0;
    if (!reader.readU16(&versionLength))
        return -103;
    if (versionLength > MAX_VERSION_TEXT_BYTES || !reader.takeBytes(versionLength))
        return -104;
    if (!reader.readU32(recordCount))
        return -105;
    return reader.readWords({{nullptr, -106}});
}

int readCamRecord(LittleEndianReader& reader, UpdateRecord* record)
{
    if (!reader.readU16(&record->length))
        return -107;
    if (record->length > MAX_RECORD_BYTES)
        return -108;
    record->data = reader.takeBytes(record->length);
    return record->data ? 0 : -108;
}
