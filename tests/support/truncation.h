#pragma once

#include <QVector>

/// One field of a file format as a test knows it: its width, and the failure code that stands for
/// its absence.
struct FormatField
{
    int size;
    int code;
};

/// The code for a file of these fields that ends after @p length bytes; 0 if it is complete.
inline int codeOfTruncation(const QVector<FormatField>& fields, int length)
{
    int end = 0;
    for (const FormatField& field : fields) {
        end += field.size;
        if (length < end)
            return field.code;
    }
    return 0;
}
