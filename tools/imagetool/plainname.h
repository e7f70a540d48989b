#pragma once

#include <QString>
#include <QStringList>

/// @file
/// The update module opens a file by the Latin-1 form of its path, so where file names are UTF-8,
/// as nearly everywhere, it finds none whose path has a letter beyond ASCII.

/// The letters of @p path beyond ASCII as a message lists them: each once, in quotes. Empty if
/// there are none.
inline QString lettersBeyondAscii(const QString& path)
{
    QStringList letters;
    for (const uint letter : path.toUcs4()) {
        if (letter > 0x7F)
            letters += QStringLiteral("\"%1\"").arg(QString::fromUcs4(&letter, 1));
    }
    letters.removeDuplicates();
    return letters.join(QStringLiteral(", "));
}
