#pragma once

#include <transcript.h>

#include <QFile>
#include <QtTest>

/// The whole file, or nothing if it cannot be read.
inline QByteArray contentOf(const QString& fileName)
{
    QFile file(fileName);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// @p transcript without its column of times.
inline QByteArray withoutTimes(const QByteArray& transcript)
{
    QByteArray text;
    for (const QByteArray& line : transcript.split('\n')) {
        int start = 0;
        while (start < line.size() && (line.at(start) == ' ' || isdigit(line.at(start))))
            ++start;
        text += line.mid(start) + '\n';
    }
    text.chop(1);
    return text;
}

/// What the host of the tests gives to a module.
inline TranscriptHead sampleHead()
{
    return {BackendVersions({3, 1, 0}, {1, 23}, {1, 2}, QStringLiteral("ZAN C2")), false};
}

/// The head as it stands in a file.
inline QByteArray sampleHeadText()
{
    return "transcript 1\n"
           "# recorded by \"tests v1\"\n"
           "system_pt 3 1 0\n"
           "protocol 1 23 -1\n"
           "system_ct 1 2 -1\n"
           "model \"ZAN C2\"\n"
           "observer no\n";
}

/// Every byte that a text can have.
inline QByteArray everyByte()
{
    QByteArray bytes;
    for (int byte = 0x01; byte <= 0xff; ++byte)
        bytes += static_cast<char>(byte);
    return bytes;
}
