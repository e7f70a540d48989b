#include <testmain.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

/// The map of the house in docs/architecture.md, against the targets of the build.
class TestArchitecture : public QObject
{
    Q_OBJECT

private slots:
    void mapShowsEveryTargetWithItsArrows();
    void pathsOnTheMapExist();
};

static QString textOf(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("%s", qPrintable(path));
    return QString::fromUtf8(file.readAll());
}

// The words in code quotes of a cell.
static QStringList quoted(const QString& cell)
{
    QStringList words;
    const QRegularExpression word("`([^`]+)`");
    for (auto found = word.globalMatch(cell); found.hasNext();)
        words += found.next().captured(1);
    words.sort();
    return words;
}

// The rows "| `FOLDER` | `TARGET` | purpose | `TARGET`, `TARGET` |", in the words of the build.
static QStringList roomsOnTheMap()
{
    QStringList rooms;
    for (const QString& line : textOf(MAP).split('\n')) {
        const QStringList cells = line.split('|');
        if (cells.size() != 6 || quoted(cells[1]).isEmpty())
            continue;
        rooms += QString("%1 %2: %3")
                     .arg(quoted(cells[1]).join(' '), quoted(cells[2]).join(' '),
                          quoted(cells[4]).join(' '));
    }
    rooms.sort();
    return rooms;
}

void TestArchitecture::mapShowsEveryTargetWithItsArrows()
{
    QStringList built = textOf(ROOMS).split('\n', Qt::SkipEmptyParts);
    built.sort();
    QCOMPARE(roomsOnTheMap().join('\n'), built.join('\n'));
}

// A file that has moved away takes the reader with it.
void TestArchitecture::pathsOnTheMapExist()
{
    const QDir sources = QFileInfo(QStringLiteral(MAP)).dir();
    const QRegularExpression path("`((?:libs|modules|tools|tests|docs)/[^`]*)`");
    for (auto found = path.globalMatch(textOf(MAP)); found.hasNext();) {
        const QString name = found.next().captured(1);
        QVERIFY2(QFileInfo::exists(sources.filePath("../" + name)), qPrintable(name));
    }
}

ZAN_TEST_MAIN(TestArchitecture)
#include "tst_architecture.moc"
