#pragma once

#include <QString>
#include <QStringList>
#include <QVector>

#include <algorithm>
#include <initializer_list>

/// What the values of an enumeration are called in files and lines: the one table of them.
template <typename Enum>
class EnumTexts
{
public:
    /// A value and its text, in ASCII.
    struct Entry
    {
        Enum value;       ///< stands in one entry only
        const char* text; ///< likewise
    };

    /// The table; the texts must outlive it.
    EnumTexts(std::initializer_list<Entry> entries) : m_entries(entries) {}

    /// The text of @p value, which must stand in the table.
    QString of(Enum value) const
    {
        const auto found = std::find_if(m_entries.begin(), m_entries.end(),
                                        [&](const Entry& entry) { return entry.value == value; });
        Q_ASSERT(found != m_entries.end());
        return QLatin1String(found->text);
    }

    /// All texts, in the order of the table.
    QStringList all() const
    {
        QStringList texts;
        for (const Entry& entry : m_entries)
            texts += QLatin1String(entry.text);
        return texts;
    }

    /// The value of the text at @p index of all().
    Enum valueAt(int index) const { return m_entries.at(index).value; }

private:
    QVector<Entry> m_entries;
};
