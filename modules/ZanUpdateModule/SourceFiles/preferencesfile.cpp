#include "preferencesfile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QTextStream>
#include <QXmlDefaultHandler>
#include <QXmlInputSource>
#include <QXmlSimpleReader>

#include <algorithm>

static const char* const ROOT_TAG = "VORNIX";
static const char* const WHATS_NEW_TAG = "WHATISNEW";
static const char* const SHOW_AT_START = "SHOW_AT_START";

QString preferencesFile(const QString& directory)
{
    return directory + QLatin1String("/zanupdate-preferences.xml");
}

// Opening a pipe could wait for ever.
static bool isOtherThanFile(const QFile& file)
{
    return file.exists() && !QFileInfo(file).isFile();
}

// ---- Reading

// QDomDocument reads with these classes too, and the log tells their errors. By itself it keeps
// everything that a file holds, and takes it apart with one call for each level of elements.
QT_WARNING_PUSH
QT_WARNING_DISABLE_DEPRECATED

namespace {

// Far beyond what any writer needs; within them a file costs little, whatever it does.
constexpr qint64 MAX_BYTES = 16 << 20;
constexpr int MAX_DEPTH = 10000;
constexpr int MAX_PARENTHESES = 1000; ///< one within the other: each takes some of the stack
constexpr int MAX_ENTITIES = 100;
constexpr int MAX_ENTITY_LENGTH = 4096;
constexpr int MAX_REFERENCES = 1000; ///< in a file that declares entities, and behind each of them

/// The text of a file. It ends early where the reader would be led too far: by references to
/// entities that the file declares, or by parentheses in what it declares of its elements.
class BoundedSource : public QXmlInputSource
{
public:
    using QXmlInputSource::QXmlInputSource;

    QChar next() override
    {
        const QChar character = QXmlInputSource::next();
        if (m_hasEntities && (character == QLatin1Char('&') || character == QLatin1Char('%')))
            ++m_references;
        if (m_isProlog && character == QLatin1Char('('))
            ++m_parentheses;
        if (character == QLatin1Char(')') && m_parentheses > 0)
            --m_parentheses;
        m_isExhausted =
            m_isExhausted || m_references > MAX_REFERENCES || m_parentheses > MAX_PARENTHESES;
        return m_isExhausted ? QChar(EndOfDocument) : character;
    }

    void entityDeclared() { m_hasEntities = true; }
    void prologEnds() { m_isProlog = false; }
    bool isExhausted() const { return m_isExhausted; }

private:
    bool m_isProlog = true;
    bool m_hasEntities = false;
    bool m_isExhausted = false;
    int m_references = 0;
    int m_parentheses = 0;
};

/// Keeps what has a meaning, and ends the reading of a file that is built to do harm.
class PreferencesHandler : public QXmlDefaultHandler
{
public:
    PreferencesHandler(BoundedSource* source, QDomDocument* xml) : m_source(source), m_xml(xml) {}

    bool startElement(const QString& /*uri*/, const QString& /*localName*/, const QString& tag,
                      const QXmlAttributes& attributes) override
    {
        m_source->prologEnds();
        ++m_depth;
        if (m_depth == 1)
            m_xml->appendChild(m_xml->createElement(tag));
        else if (m_depth == 2 && tag == QLatin1String(WHATS_NEW_TAG))
            keepSetting(attributes);
        m_isHarmful = m_isHarmful || m_depth > MAX_DEPTH;
        return !m_isHarmful;
    }

    bool endElement(const QString& /*uri*/, const QString& /*localName*/,
                    const QString& /*tag*/) override
    {
        --m_depth;
        return true;
    }

    // An entity that others make long is refused before it makes another one longer.
    bool internalEntityDecl(const QString& name, const QString& value) override
    {
        m_source->entityDeclared();
        m_entities.insert(name, value);
        m_isHarmful = m_isHarmful || m_entities.size() > MAX_ENTITIES ||
                      value.size() > MAX_ENTITY_LENGTH || !areReplacedSoon();
        return !m_isHarmful;
    }

    bool fatalError(const QXmlParseException& exception) override
    {
        m_error = QStringLiteral(" (Line %1, Column %2) :\n%3")
                      .arg(QString::number(exception.lineNumber()),
                           QString::number(exception.columnNumber()), exception.message());
        return false;
    }

    bool isHarmful() const { return m_isHarmful || m_source->isExhausted(); }
    QString error() const { return m_error; }

private:
    // The reader bounds what entities come to, but not how often they are replaced by nothing.
    bool areReplacedSoon() const
    {
        return std::all_of(m_entities.begin(), m_entities.end(), [&](const QString& value) {
            int allowed = MAX_REFERENCES;
            return isReplacedSoon(value, &allowed);
        });
    }

    // An entity may refer to one that is declared behind it.
    bool isReplacedSoon(const QString& value, int* allowed) const
    {
        for (int begin = value.indexOf(QLatin1Char('&')); begin >= 0;
             begin = value.indexOf(QLatin1Char('&'), begin + 1)) {
            const int end = value.indexOf(QLatin1Char(';'), begin);
            const QString name = value.mid(begin + 1, end - begin - 1);
            if (--*allowed < 0 || !isReplacedSoon(m_entities.value(name), allowed))
                return false;
        }
        return true;
    }

    // The last setting decides.
    void keepSetting(const QXmlAttributes& attributes)
    {
        QDomElement root = m_xml->documentElement();
        root.removeChild(root.firstChild());
        QDomElement setting = m_xml->createElement(WHATS_NEW_TAG);
        for (int i = 0; i < attributes.count(); ++i) {
            if (attributes.qName(i) == QLatin1String(SHOW_AT_START))
                setting.setAttribute(SHOW_AT_START, attributes.value(i));
        }
        root.appendChild(setting);
    }

    BoundedSource* m_source;
    QDomDocument* m_xml;
    QString m_error;
    int m_depth = 0;
    QHash<QString, QString> m_entities;
    bool m_isHarmful = false;
};

} // namespace

static QString foreignFile()
{
    return QStringLiteral(" : The file doesn't look like a valid preferences file");
}

// @return what is wrong with the content, as it stands behind the file's name; empty if nothing is
static QString parse(QFile* file, QDomDocument* xml)
{
    if (file->size() > MAX_BYTES)
        return foreignFile();
    BoundedSource source(file);
    PreferencesHandler handler(&source, xml);
    QXmlSimpleReader reader;
    reader.setFeature(QStringLiteral("http://xml.org/sax/features/namespaces"), false);
    reader.setFeature(QStringLiteral("http://xml.org/sax/features/namespace-prefixes"), true);
    reader.setContentHandler(&handler);
    reader.setDeclHandler(&handler);
    reader.setErrorHandler(&handler);
    const bool isParsed = reader.parse(source);
    if (handler.isHarmful())
        return foreignFile();
    if (!isParsed)
        return handler.error();
    return xml->documentElement().tagName() == QLatin1String(ROOT_TAG) ? QString() : foreignFile();
}

QT_WARNING_POP

QDomDocument readPreferences(const QString& fileName, QString* complaint)
{
    complaint->clear();
    QDomDocument xml;
    QFile file(fileName);
    if (isOtherThanFile(file) || !file.open(QIODevice::ReadOnly)) {
        *complaint = QStringLiteral("Error: Loading ZANupdate preferences. File %1 cannot be "
                                    "opened for reading. Using built-in values")
                         .arg(fileName);
        return xml;
    }
    const QString problem = parse(&file, &xml);
    if (!problem.isEmpty())
        *complaint = QStringLiteral("Error: Loading ZANupdate preferences while parsing %1%2. "
                                    "Using built-in values")
                         .arg(fileName, problem);
    return xml;
}

bool isWhatsNewSetting(const QDomElement& element)
{
    return element.tagName() == QLatin1String(WHATS_NEW_TAG);
}

bool isShownAtStart(const QDomElement& element)
{
    return element.attribute(SHOW_AT_START, QStringLiteral("false")) == QLatin1String("true");
}

// ---- Writing

static QDomDocument preferencesDocument(bool showAtStart)
{
    QDomDocument xml;
    xml.appendChild(xml.createProcessingInstruction(
        QStringLiteral("xml"), QStringLiteral("version=\"1.0\" encoding=\"UTF-8\"")));
    QDomElement root = xml.createElement(ROOT_TAG);
    xml.appendChild(root);
    QDomElement elemFile = xml.createElement(WHATS_NEW_TAG);
    if (showAtStart)
        elemFile.setAttribute(SHOW_AT_START, QStringLiteral("true"));
    root.appendChild(elemFile);
    return xml;
}

QString writePreferences(const QString& directory, bool showAtStart)
{
    const QDir dir(directory);
    if (!dir.exists() && !dir.mkpath(dir.path())) {
        return QStringLiteral("Error: Writing ZANupdate preferences. Directory %1 doesn't exist "
                              "and cannot be created")
            .arg(dir.path());
    }
    QFile file(preferencesFile(directory));
    if (isOtherThanFile(file) || !file.open(QIODevice::WriteOnly | QIODevice::Text)) {
        return QStringLiteral("Error: Writing ZANupdate preferences. File %1 cannot be opened for "
                              "writing")
            .arg(file.fileName());
    }
    QTextStream ts(&file);
    preferencesDocument(showAtStart).save(ts, 4, QDomNode::EncodingFromDocument);
    return QString();
}
