#include "camupdatedata.h"

#include "camfilereader.h"
#include "littleendianreader.h"

CamUpdateData::CamUpdateData(const QString& sFileName) : sFileName(sFileName)
{
    readFileInfo();
}

int CamUpdateData::readFileInfo()
{
    FILE* stream = std::fopen(sFileName.toLatin1().constData(), "rb");
    if (!stream)
        return -1;
    CamFileHead head;
    const int code = [&] {
        LittleEndianReader reader(stream);
        return readCamFileHead(reader, &head);
    }();
    std::fclose(stream);

    newVer = head.newVer;
    minVer = head.minVer;
    listCamModels = head.camModels;
    return code;
}

double CamUpdateData::getDurationLastCmdSec() const
{
    return durationLastCmdSec(listCamModels);
}

double durationLastCmdSec(const QStringList& models)
{
    if (models.contains(QLatin1String("0x0901")))
        return 9.5;
    if (models.contains(QLatin1String("0x0c01")))
        return 27.5;
    if (models.contains(QLatin1String("0x0e01")))
        return 62.0;
    return 30.0;
}

bool CamUpdateData::isNeedsSearchHardware() const
{
    return listCamModels.contains(QLatin1String("0x0c01")) ||
           listCamModels.contains(QLatin1String("0x0e01"));
}
