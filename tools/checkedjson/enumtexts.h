#pragma once

#include <QString>
#include <QStringList>
#include <QVector>

#include <algorithm>
#include <initializer_list>
#include <optional>

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

    /// Whether @p value stands in the table.
    bool contains(Enum value) const { return find(value) != m_entries.end(); }

    /// The text of @p value, which must stand in the table.
    QString of(Enum value) const
    {
        const auto found = find(value);
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

    /// The value of @p text; nullopt if there is none.
    std::optional<Enum> valueOf(const QString& text) const
    {
        const int index = all().indexOf(text);
        return index < 0 ? std::nullopt : std::make_optional(valueAt(index));
    }

private:
    typename QVector<Entry>::const_iterator find(Enum value) const
    {
        return std::find_if(m_entries.begin(), m_entries.end(),
                            [&](const Entry& entry) { return entry.value == value; });
    }

    QVector<Entry> m_entries;
};
