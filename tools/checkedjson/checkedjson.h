#pragma once

#include "enumtexts.h"

#include <QByteArray>
#include <QJsonObject>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QVector>

#include <optional>

/// @file
/// Reads JSON that people write by hand. An error is one line "FILE: PATH: REASON", with a path
/// such as "blocks[1].type", or "line 3" where the text is no JSON at all; whatever the document
/// holds, it cannot break that line. Not thread-safe, but every thread may read its own document.

/// The text with each line break, and each other character that moves or hides text, as JSON would
/// write it: "\n", "\u001b".
QString onOneLine(const QString& text);

/// Parses @p json, the content of @p fileName, whose root must be an object.
/// @param error must not be null; left alone on success.
/// @return nullopt and *error if the text is no JSON or no object.
std::optional<QJsonObject> parseJsonObject(const QByteArray& json, const QString& fileName,
                                           QString* error);

/// One JSON object, read key by key against what the caller expects.
///
/// The first departure in a document is kept in the error text that all its objects share. Every
/// read after that still returns something harmless (the fallback, an empty text, the lowest
/// number), so a caller asks for all keys in a row and looks at the error once, at the end.
class CheckedObject
{
public:
    /// The root of a document. @p error must not be null, is emptied, and must outlive this object
    /// and everything read from it.
    CheckedObject(QJsonObject object, QString fileName, QString* error);

    /// Whether the object has the key; asking does not make it a known one.
    bool contains(const QString& key) const { return m_object.contains(key); }

    /// A text; an error if the key is missing.
    QString text(const QString& key);
    /// The same, and @p fallback if the key is missing.
    QString text(const QString& key, const QString& fallback);

    /// A whole number from @p lowest to @p highest; an error if the key is missing.
    qint64 number(const QString& key, qint64 lowest, qint64 highest);
    /// The same, and @p fallback if the key is missing.
    qint64 number(const QString& key, qint64 lowest, qint64 highest, qint64 fallback);

    /// True or false; @p fallback if the key is missing.
    bool flag(const QString& key, bool fallback);

    /// One text out of a list. @return its index; 0 after an error
    int choice(const QString& key, const QStringList& texts);
    /// The same, and @p fallback if the key is missing.
    int choice(const QString& key, const QStringList& texts, int fallback);

    /// One value of an enumeration by its text. @return the first of the table after an error
    template <typename Enum>
    Enum choice(const QString& key, const EnumTexts<Enum>& texts)
    {
        return texts.valueAt(choice(key, texts.all()));
    }
    /// The same, and @p fallback if the key is missing.
    template <typename Enum>
    Enum choice(const QString& key, const EnumTexts<Enum>& texts, Enum fallback)
    {
        m_knownKeys.insert(key);
        return contains(key) ? choice(key, texts) : fallback;
    }

    /// A nested object; an error if the key is missing.
    CheckedObject object(const QString& key);
    /// The same, and an empty object if the key is missing.
    CheckedObject objectOrEmpty(const QString& key);

    /// A list of objects, or of texts; an error if the key is missing.
    QVector<CheckedObject> objects(const QString& key);
    /// The same of texts.
    QStringList texts(const QString& key);

    /// Whether the document is without error so far.
    bool ok() const { return m_error->isEmpty(); }

    /// Notes an error that the caller found in the value of @p key, which may have an index behind
    /// it, as in "records[2]".
    void fail(const QString& key, const QString& reason);

    /// To be called after the last read: a key that nobody asked for is an error.
    void finish();

private:
    CheckedObject(QJsonObject object, QString fileName, QString prefix, QString* error);

    QJsonValue value(const QString& key, QJsonValue::Type type, const QString& typeText);
    QJsonArray array(const QString& key);

    QJsonObject m_object;
    QString m_fileName;
    QString m_prefix; // what stands before a key in its path: empty, or "blocks[1]."
    QString* m_error;
    QSet<QString> m_knownKeys;
};
