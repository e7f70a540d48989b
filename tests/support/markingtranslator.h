#pragma once

#include <QCoreApplication>
#include <QTranslator>

/// Marks the texts of one context, and leaves those of the others, for as long as it lives. Shows
/// which texts the program asks Qt's translator for, and with which context.
class MarkingTranslator final : public QTranslator
{
public:
    /// @param context as the program names it, a class as a rule; outlives the translator
    explicit MarkingTranslator(const char* context) : m_context(context)
    {
        QCoreApplication::installTranslator(this);
    }

    /// What the translator makes of @p source.
    static QString marked(const QString& source) { return QLatin1String("* ") + source; }

    bool isEmpty() const override { return false; }
    QString translate(const char* context, const char* source, const char* /*disambiguation*/,
                      int /*n*/) const override
    {
        return qstrcmp(context, m_context) == 0 ? marked(QString::fromUtf8(source)) : QString();
    }

private:
    const char* m_context;
};
