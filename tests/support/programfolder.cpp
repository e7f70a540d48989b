#include "programfolder.h"

#include "fixturefiles.h"

#include <QCoreApplication>
#include <QDir>

static QString besideProgram(const char* folder)
{
    return QCoreApplication::applicationDirPath() + QLatin1Char('/') + QLatin1String(folder);
}

static const char* const UPDATES = "controller_update";
static const char* const NOTES = "whats_new";

static void clear()
{
    for (const char* folder : {UPDATES, NOTES})
        QDir(besideProgram(folder)).removeRecursively();
}

ProgramFolder::ProgramFolder()
{
    clear();
}

ProgramFolder::~ProgramFolder()
{
    clear();
}

QString ProgramFolder::deliverUpdate(const QString& fileName, const QByteArray& bytes) const
{
    return writeFixture(besideProgram(UPDATES) + QLatin1Char('/') + fileName, bytes);
}

QString ProgramFolder::deliverNote(const QString& fileName, const QByteArray& bytes) const
{
    return writeFixture(besideProgram(NOTES) + QLatin1Char('/') + fileName, bytes);
}
