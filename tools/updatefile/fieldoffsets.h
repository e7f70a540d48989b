#pragma once

#include "imageformat.h"

/// @file
/// Where fields stand, for those who tell people of them.

/// Finds one field by its name while it is shown the fields of a part.
class FieldFinder
{
public:
    /// @param name the field's key in a description; one that no field has is found nowhere
    explicit FieldFinder(QString name) : m_name(std::move(name)) {}

    qint64 size() const { return m_size; } ///< of all fields so far
    /// From the start of the part; 0 if the field was not found.
    qint64 offset() const { return m_found.value_or(0); }

    /// A field of two bytes.
    template <typename Value>
    void word(const char* name, const Value& /*value*/)
    {
        pass(name, 2);
    }
    /// A field of four bytes.
    template <typename Value>
    void longWord(const char* name, const Value& /*value*/)
    {
        pass(name, 4);
    }
    /// A version, two bytes for each of its @p parts.
    template <typename Value>
    void version(const char* name, const Value& /*value*/, int parts)
    {
        pass(name, qint64(2) * parts);
    }
    /// A date of six bytes.
    void date(const char* name, const ImageDate& /*date*/) { pass(name, 6); }
    /// Model codes, two bytes each, as many as are there; the count is a field of its own.
    void models(const char* name, const QVector<quint16>& models, std::optional<quint16> /*count*/)
    {
        pass(name, qint64(2) * models.size());
    }
    /// A text as long as it is; its length is a field of its own.
    void text(const char* name, const QByteArray& text, std::optional<quint16> /*length*/)
    {
        pass(name, text.size());
    }

private:
    void pass(const char* name, qint64 bytes)
    {
        if (m_name == QLatin1String(name))
            m_found = m_size;
        m_size += bytes;
    }

    QString m_name;
    qint64 m_size = 0;
    std::optional<qint64> m_found;
};

/// The offset of the field @p name in the head of a file.
inline qint64 headOffset(ControllerImage image, const QString& name)
{
    FieldFinder finder(name);
    imageformat::visitControllerHead(finder, image);
    return finder.offset();
}

/// The offset of the field @p name in the head of a camera update file.
inline qint64 headOffset(CameraUpdateFile file, const QString& name)
{
    FieldFinder finder(name);
    imageformat::visitCameraHead(finder, file);
    return finder.offset();
}

/// The bytes of the head of a file, tables left out.
inline qint64 headSize(ControllerImage image)
{
    FieldFinder finder((QString()));
    imageformat::visitControllerHead(finder, image);
    return finder.size();
}

/// The bytes of the head of a camera update file, tables left out.
inline qint64 headSize(CameraUpdateFile file)
{
    FieldFinder finder((QString()));
    imageformat::visitCameraHead(finder, file);
    return finder.size();
}

/// The offset of the field @p name from the start of an entry, and the size of the entry.
inline FieldFinder entryFields(ControllerImageBlock block, const QString& name = QString())
{
    FieldFinder finder(name);
    imageformat::visitBlockEntry(finder, block);
    return finder;
}

/// The same of an entry of a camera update file.
inline FieldFinder entryFields(CameraImage image, const QString& name = QString())
{
    FieldFinder finder(name);
    imageformat::visitImageEntry(finder, image);
    return finder;
}

/// The same of what stands before the records of a block.
inline FieldFinder blockFields(RecordBlock block, const QString& name = QString())
{
    FieldFinder finder(name);
    imageformat::visitBlockHead(finder, block);
    return finder;
}
