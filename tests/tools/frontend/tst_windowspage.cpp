#include <testmain.h>

#include <QDir>
#include <QFile>
#include <QRegularExpression>

/// The page that shows all windows, and the tour that its pictures come from.
class TestWindowsPage : public QObject
{
    Q_OBJECT

private slots:
    void tourAndFolderHoldTheSamePictures();
    void pageShowsEveryPicture();
    void picturesAreSmall();
};

namespace {

const QString sources = QStringLiteral(SOURCES);

QString textOf(const QString& path)
{
    QFile file(sources + path);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("%s", qPrintable(file.fileName()));
    return QString::fromUtf8(file.readAll());
}

QStringList pictures()
{
    return QDir(sources + "/docs/images").entryList({"*.png"}, QDir::Files, QDir::Name);
}

// The words of a stop behind its scenario and user, the options left out.
QStringList toured()
{
    QStringList names;
    for (const QString& line : textOf("/tools/frontend/tour.txt").split('\n')) {
        if (line.startsWith('#'))
            continue;
        for (const QString& word : line.simplified().split(' ').mid(2)) {
            if (!word.startsWith("--"))
                names += word.section('=', -1) + ".png";
        }
    }
    names.sort();
    return names;
}

} // namespace

void TestWindowsPage::tourAndFolderHoldTheSamePictures()
{
    QCOMPARE(toured(), pictures());
}

void TestWindowsPage::pageShowsEveryPicture()
{
    QStringList shown;
    const QRegularExpression reference(R"(!\[[^\]]+\]\(images/([^)]+)\))");
    auto found = reference.globalMatch(textOf("/docs/windows.md"));
    while (found.hasNext())
        shown += found.next().captured(1);
    shown.sort();
    QCOMPARE(shown, pictures());
}

void TestWindowsPage::picturesAreSmall()
{
    qint64 bytes = 0;
    for (const QFileInfo& picture : QDir(sources + "/docs/images").entryInfoList({"*.png"}))
        bytes += picture.size();
    QVERIFY2(bytes < 2000000, qPrintable(QString::number(bytes)));
}

ZAN_TEST_MAIN(TestWindowsPage)
#include "tst_windowspage.moc"
