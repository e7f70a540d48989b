#include "checkedjson.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonParseError>

#include <cmath>
#include <utility>

namespace {

// Control characters, separators of lines, and marks that turn the direction of what follows.
bool movesText(QChar character)
{
    switch (character.category()) {
    case QChar::Other_Control:
    case QChar::Other_Format:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
        return true;
    default:
        return false;
    }
}

QString escaped(QChar character)
{
    switch (character.unicode()) {
    case '\n':
        return QStringLiteral("\\n");
    case '\r':
        return QStringLiteral("\\r");
    case '\t':
        return QStringLiteral("\\t");
    default:
        return QStringLiteral("\\u%1").arg(character.unicode(), 4, 16, QLatin1Char('0'));
    }
}

} // namespace

QString onOneLine(const QString& text)
{
    QString line;
    for (const QChar character : text)
        line += movesText(character) ? escaped(character) : QString(character);
    return line;
}

std::optional<QJsonObject> parseJsonObject(const QByteArray& json, const QString& fileName,
                                           QString* error)
{
    QJsonParseError problem;
    const QJsonDocument document = QJsonDocument::fromJson(json, &problem);
    if (problem.error != QJsonParseError::NoError) {
        const int line = json.left(problem.offset).count('\n') + 1;
        *error = onOneLine(QStringLiteral("%1: line %2: %3")
                               .arg(fileName, QString::number(line), problem.errorString()));
        return std::nullopt;
    }
    if (!document.isObject()) {
        *error = onOneLine(QStringLiteral("%1: line 1: must be an object").arg(fileName));
        return std::nullopt;
    }
    return document.object();
}

CheckedObject::CheckedObject(QJsonObject object, QString fileName, QString* error)
    : CheckedObject(std::move(object), std::move(fileName), QString(), error)
{
    m_error->clear();
}

CheckedObject::CheckedObject(QJsonObject object, QString fileName, QString prefix, QString* error)
    : m_object(std::move(object)), m_fileName(std::move(fileName)), m_prefix(std::move(prefix)),
      m_error(error)
{
}

QString CheckedObject::text(const QString& key)
{
    return value(key, QJsonValue::String, QStringLiteral("a text")).toString();
}

QString CheckedObject::text(const QString& key, const QString& fallback)
{
    m_knownKeys.insert(key);
    return contains(key) ? text(key) : fallback;
}

qint64 CheckedObject::number(const QString& key, qint64 lowest, qint64 highest)
{
    const QString typeText =
        QStringLiteral("a whole number from %1 to %2").arg(lowest).arg(highest);
    const double number = value(key, QJsonValue::Double, typeText).toDouble(double(lowest));
    if (number >= double(lowest) && number <= double(highest) && number == std::floor(number))
        return static_cast<qint64>(number);
    fail(key, QStringLiteral("must be %1").arg(typeText));
    return lowest;
}

qint64 CheckedObject::number(const QString& key, qint64 lowest, qint64 highest, qint64 fallback)
{
    m_knownKeys.insert(key);
    return contains(key) ? number(key, lowest, highest) : fallback;
}

bool CheckedObject::flag(const QString& key, bool fallback)
{
    m_knownKeys.insert(key);
    if (!contains(key))
        return fallback;
    return value(key, QJsonValue::Bool, QStringLiteral("true or false")).toBool(fallback);
}

int CheckedObject::choice(const QString& key, const QStringList& texts)
{
    const QString typeText =
        QStringLiteral("one of \"%1\"").arg(texts.join(QStringLiteral("\", \"")));
    const int index = texts.indexOf(value(key, QJsonValue::String, typeText).toString());
    if (index >= 0)
        return index;
    fail(key, QStringLiteral("must be %1").arg(typeText));
    return 0;
}

int CheckedObject::choice(const QString& key, const QStringList& texts, int fallback)
{
    m_knownKeys.insert(key);
    return contains(key) ? choice(key, texts) : fallback;
}

CheckedObject CheckedObject::object(const QString& key)
{
    const QJsonObject nested =
        value(key, QJsonValue::Object, QStringLiteral("an object")).toObject();
    return {nested, m_fileName, m_prefix + key + QLatin1Char('.'), m_error};
}

CheckedObject CheckedObject::objectOrEmpty(const QString& key)
{
    m_knownKeys.insert(key);
    if (contains(key))
        return object(key);
    return {QJsonObject(), m_fileName, QString(), m_error};
}

QVector<CheckedObject> CheckedObject::objects(const QString& key)
{
    QVector<CheckedObject> objects;
    for (const QJsonValue element : array(key)) {
        const QString name = QStringLiteral("%1[%2]").arg(key).arg(objects.size());
        if (!element.isObject())
            fail(name, QStringLiteral("must be an object"));
        objects.append(CheckedObject(element.toObject(), m_fileName,
                                     m_prefix + name + QLatin1Char('.'), m_error));
    }
    return objects;
}

QStringList CheckedObject::texts(const QString& key)
{
    QStringList texts;
    for (const QJsonValue element : array(key)) {
        if (!element.isString())
            fail(QStringLiteral("%1[%2]").arg(key).arg(texts.size()),
                 QStringLiteral("must be a text"));
        texts.append(element.toString());
    }
    return texts;
}

void CheckedObject::fail(const QString& key, const QString& reason)
{
    if (ok()) {
        *m_error = onOneLine(QStringLiteral("%1: %2%3: %4").arg(m_fileName, m_prefix, key, reason));
    }
}

void CheckedObject::finish()
{
    for (const QString& key : m_object.keys()) {
        if (!m_knownKeys.contains(key))
            fail(key, QStringLiteral("unknown key"));
    }
}

QJsonValue CheckedObject::value(const QString& key, QJsonValue::Type type, const QString& typeText)
{
    m_knownKeys.insert(key);
    QJsonValue value = m_object.value(key);
    if (value.isUndefined())
        fail(key, QStringLiteral("missing"));
    else if (value.type() != type)
        fail(key, QStringLiteral("must be %1").arg(typeText));
    return value;
}

QJsonArray CheckedObject::array(const QString& key)
{
    return value(key, QJsonValue::Array, QStringLiteral("a list")).toArray();
}
