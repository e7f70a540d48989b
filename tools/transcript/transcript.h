#pragma once

#include "recordingchannel.h"

#include <QString>
#include <QVector>

#include <optional>

/// One call of a transcript with what came of it.
struct TranscriptCall
{
    int line;                        ///< in the file, from 1
    QByteArray call;                 ///< as TranscriptForm::call() writes it
    int result = 0;                  ///< of the call, or of a call without a result
    std::optional<QByteArray> reply; ///< what the host wrote into the caller's buffer
    std::optional<int> value;        ///< what get_int() brought
};

/// A record of what passed a command channel, as RecordingChannel writes it. docs/transcripts.md
/// describes the form.
struct Transcript
{
    QString file;                  ///< as it was given
    TranscriptHead head;           ///< what the host told the module
    QVector<TranscriptCall> calls; ///< in the order in which they were made
    int lastLine;                  ///< number of the last line of the file

    /// Reads the file @p fileName.
    ///
    /// @param error must not be null; on failure it is "FILE: line N: REASON", or "FILE: REASON" if
    ///        the file cannot be read
    static std::optional<Transcript> read(const QString& fileName, QString* error);

    /// Reads a transcript from @p text; @p fileName stands in errors.
    static std::optional<Transcript> parse(const QByteArray& text, const QString& fileName,
                                           QString* error);
};
