#pragma once

#include <QByteArray>
#include <QString>

/// What is delivered beside a frontend, here beside the test program: update files and notes.
///
/// Both folders are away before and after this object's life. As the plug-in looks for them beside
/// the running program, that program has to stand in a folder of its own (OWN_FOLDER of
/// zan_add_test()).
class ProgramFolder
{
public:
    ProgramFolder();
    ~ProgramFolder();
    ProgramFolder(const ProgramFolder&) = delete;
    ProgramFolder& operator=(const ProgramFolder&) = delete;

    /// Writes a file into "controller_update". @return its full path
    QString deliverUpdate(const QString& fileName, const QByteArray& bytes) const;
    /// Writes a file into "whats_new". @return its full path
    QString deliverNote(const QString& fileName, const QByteArray& bytes) const;
};
