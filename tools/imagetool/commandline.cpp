#include "commandline.h"

#include "imagedescription.h"
#include "imagelisting.h"
#include "imagewriter.h"

#include <wholefile.h>

#include <QFile>
#include <QJsonDocument>
#include <QTextStream>

namespace {

constexpr char helpText[] =
    R"(Usage: imagetool build [--json] DESCRIPTION OUTPUT
       imagetool show [--json] FILE

Writes controller update images and camera update files, and shows what is in one.

Commands:
  build    write the update file that the JSON file DESCRIPTION describes to OUTPUT
  show     list the content of an update file and verify all of it

Options:
  --json   write results and errors as JSON to the standard output
  --help   show this text

Exit codes:
  0  done; for show: the file is sound
  1  the command line is wrong
  2  DESCRIPTION or FILE cannot be read
  3  DESCRIPTION is wrong, or FILE is damaged or no update file
  4  OUTPUT cannot be written
)";

/// What went wrong, and how the program ends because of it.
struct Failure
{
    ImageToolExit exitCode = ImageToolDone;
    QString text;
};

class ImageTool
{
public:
    explicit ImageTool(const ImageToolStreams& streams) : m_streams(streams) {}

    int run(const QStringList& arguments);

private:
    Failure execute(const QStringList& words);
    Failure build(const QString& descriptionName, const QString& outputName);
    Failure show(const QString& fileName);
    static Failure read(const QString& fileName, QByteArray* bytes);
    static Failure write(const QString& fileName, const QByteArray& bytes);
    void report(const Failure& failure);
    void showProgress(const QString& text);
    void printJson(const QJsonObject& object);

    const ImageToolStreams& m_streams;
    bool m_json = false;
};

int ImageTool::run(const QStringList& arguments)
{
    QStringList words;
    QString unknownOption;
    for (const QString& argument : arguments) {
        if (argument == "--help") {
            m_streams.out << helpText;
            return ImageToolDone;
        }
        if (argument == "--json")
            m_json = true;
        else if (argument.startsWith('-'))
            unknownOption = argument;
        else
            words.append(argument);
    }
    const Failure failure =
        unknownOption.isEmpty()
            ? execute(words)
            : Failure{ImageToolWrongUsage, QString("unknown option %1").arg(unknownOption)};
    if (!failure.text.isEmpty())
        report(failure);
    return failure.exitCode;
}

Failure ImageTool::execute(const QStringList& words)
{
    const QString command = words.value(0);
    if (command == "build" && words.size() == 3)
        return build(words[1], words[2]);
    if (command == "show" && words.size() == 2)
        return show(words[1]);
    if (command.isEmpty())
        return {ImageToolWrongUsage, "no command given"};
    if (command == "build")
        return {ImageToolWrongUsage, "build takes DESCRIPTION and OUTPUT"};
    if (command == "show")
        return {ImageToolWrongUsage, "show takes FILE"};
    return {ImageToolWrongUsage, QString("unknown command %1").arg(command)};
}

Failure ImageTool::build(const QString& descriptionName, const QString& outputName)
{
    QByteArray json;
    if (Failure failure = read(descriptionName, &json); failure.exitCode != ImageToolDone)
        return failure;

    showProgress(QString("building %1 ...").arg(outputName));
    QString error;
    const auto file = readImageDescription(json, descriptionName, &error);
    if (!file) {
        showProgress("\n");
        return {ImageToolWrongInput, error};
    }
    const QByteArray bytes = updateFileBytes(*file);
    showProgress(QString(" %1 bytes\n").arg(bytes.size()));

    Failure failure = write(outputName, bytes);
    if (m_json && failure.exitCode == ImageToolDone)
        printJson({{"file", outputName}, {"bytes", bytes.size()}});
    return failure;
}

Failure ImageTool::show(const QString& fileName)
{
    QByteArray bytes;
    if (Failure failure = read(fileName, &bytes); failure.exitCode != ImageToolDone)
        return failure;

    const UpdateFileListing listing = listUpdateFile(bytes);
    const ImageToolExit exitCode = listing.problems.isEmpty() ? ImageToolDone : ImageToolWrongInput;
    if (m_json) {
        QJsonObject object = listingJson(listing);
        object.insert("file", fileName);
        printJson(object);
        return {exitCode, QString()};
    }
    m_streams.out << fileName << '\n' << listingText(listing);
    QStringList errors;
    for (const QString& problem : listing.problems)
        errors.append(QString("%1: %2").arg(fileName, problem));
    return {exitCode, errors.join('\n')};
}

Failure ImageTool::read(const QString& fileName, QByteArray* bytes)
{
    QFile file(fileName);
    if (file.open(QIODevice::ReadOnly))
        *bytes = file.readAll();
    if (file.error() != QFileDevice::NoError)
        return {ImageToolCannotRead, QString("%1: %2").arg(fileName, file.errorString())};
    return {};
}

Failure ImageTool::write(const QString& fileName, const QByteArray& bytes)
{
    QString error;
    if (writeWholeFile(fileName, bytes, &error))
        return {};
    return {ImageToolCannotWrite, error};
}

void ImageTool::report(const Failure& failure)
{
    if (m_json) {
        printJson({{"error", failure.text}, {"exitCode", failure.exitCode}});
        return;
    }
    for (const QString& line : failure.text.split('\n'))
        m_streams.messages << "imagetool: " << line << '\n';
    if (failure.exitCode == ImageToolWrongUsage)
        m_streams.messages << "Try: imagetool --help\n";
}

void ImageTool::showProgress(const QString& text)
{
    if (m_streams.isTerminal)
        m_streams.messages << text << Qt::flush;
}

void ImageTool::printJson(const QJsonObject& object)
{
    m_streams.out << QString::fromUtf8(QJsonDocument(object).toJson());
}

} // namespace

int runImageTool(const QStringList& arguments, const ImageToolStreams& streams)
{
    return ImageTool(streams).run(arguments);
}
