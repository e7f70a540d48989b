#include <checksumlist.h>

#include <testmain.h>

namespace {

const QByteArray digits(64, 'a');
const QByteArray digest(32, '\xaa');

// What a list says, or what is wrong with it, in one text for each line.
QStringList contentOf(const ChecksumList& list)
{
    QStringList content;
    for (const SealedFile& file : list.files)
        content += QStringLiteral("%1 %2").arg(QString::fromLatin1(file.sha256.toHex()),
                                               QString::fromUtf8(file.name));
    return content + list.problems;
}

const QString noLine = QStringLiteral("is not a checksum and a name as sha256sum writes them");

} // namespace

class TestChecksumList : public QObject
{
    Q_OBJECT

private slots:
    void linesStandInTheOrderOfTheNamesBytes();
    void namesAreReadAsTheyWereWritten_data();
    void namesAreReadAsTheyWereWritten();
    void readsWhatSha256sumWrites_data();
    void readsWhatSha256sumWrites();
    void refusesALine_data();
    void refusesALine();
    void soundLinesAreReadBesideWrongOnes();
    void endlessMistakesAreNotAllKept();
    void namesAreShownWithoutHarm_data();
    void namesAreShownWithoutHarm();
};

void TestChecksumList::linesStandInTheOrderOfTheNamesBytes()
{
    const QByteArray text = checksumListText({{"b", digest}, {"\xc3\xa4", digest}, {"B", digest}});
    QCOMPARE(text, digits + "  B\n" + digits + "  b\n" + digits + "  \xc3\xa4\n");
}

void TestChecksumList::namesAreReadAsTheyWereWritten_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QByteArray>("line");

    QTest::newRow("plain") << QByteArray("v1.img") << digits + "  v1.img\n";
    QTest::newRow("blanks") << QByteArray(" a  b ") << digits + "   a  b \n";
    QTest::newRow("star in front") << QByteArray("*a") << digits + "  *a\n";
    QTest::newRow("backslash") << QByteArray("a\\nb") << "\\" + digits + "  a\\\\nb\n";
    QTest::newRow("line end") << QByteArray("a\nb") << "\\" + digits + "  a\\nb\n";
    QTest::newRow("carriage return") << QByteArray("a\r") << "\\" + digits + "  a\\r\n";
    QTest::newRow("tab") << QByteArray("a\tb") << digits + "  a\tb\n";
    QTest::newRow("no UTF-8") << QByteArray("\xff") << digits + "  \xff\n";
}

void TestChecksumList::namesAreReadAsTheyWereWritten()
{
    QFETCH(const QByteArray, name);
    QFETCH(const QByteArray, line);
    QCOMPARE(checksumListText({{name, digest}}), line);
    const ChecksumList list = readChecksumList(line);
    QCOMPARE(list.problems, QStringList());
    QCOMPARE(list.files.size(), 1);
    QCOMPARE(list.files[0].name, name);
    QCOMPARE(list.files[0].sha256, digest);
}

void TestChecksumList::readsWhatSha256sumWrites_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QStringList>("files");
    const QString hex = QString::fromLatin1(digits);

    QTest::newRow("nothing") << QByteArray() << QStringList();
    QTest::newRow("binary mode") << digits + " *a\n" << QStringList{hex + " a"};
    QTest::newRow("capital digits") << digits.toUpper() + "  a\n" << QStringList{hex + " a"};
    QTest::newRow("no end of the last line") << digits + "  a" << QStringList{hex + " a"};
    QTest::newRow("in the order of some language") << digits + "  b\n" + digits + "  A\n"
                                                   << QStringList{hex + " b", hex + " A"};
    QTest::newRow("an escape that was not needed") << "\\" + digits + "  a\n"
                                                   << QStringList{hex + " a"};
    QTest::newRow("a backslash that was not escaped") << digits + "  a\\n\n"
                                                      << QStringList{hex + " a\\n"};
}

void TestChecksumList::readsWhatSha256sumWrites()
{
    QFETCH(const QByteArray, text);
    QFETCH(const QStringList, files);
    QCOMPARE(contentOf(readChecksumList(text)), files);
}

void TestChecksumList::refusesALine_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QString>("reason");

    QTest::newRow("empty") << QByteArray("\n") << noLine;
    QTest::newRow("a comment") << QByteArray("# made today\n") << noLine;
    QTest::newRow("a digit too few") << digits.mid(1) + "  a\n" << noLine;
    QTest::newRow("a digit too many") << digits + "a  a\n" << noLine;
    QTest::newRow("a digit that is none") << digits.mid(1) + "g  a\n" << noLine;
    QTest::newRow("a single blank") << digits + " a\n" << noLine;
    QTest::newRow("another mark") << digits + " +a\n" << noLine;
    QTest::newRow("no name") << digits + "  \n" << noLine;
    QTest::newRow("no name behind a backslash") << "\\" + digits + "  \n" << noLine;
    QTest::newRow("digits alone") << digits + "\n" << noLine;
    QTest::newRow("an escape of its own") << "\\" + digits + "  a\\t\n" << noLine;
    QTest::newRow("half an escape") << "\\" + digits + "  a\\\n" << noLine;
    QTest::newRow("another kind of list") << "SHA256 (a) = " + digits + "\n" << noLine;
    QTest::newRow("the folder above") << digits + "  ../a\n"
                                      << "../a is no name of a file in this folder";
    QTest::newRow("another folder") << digits + "  /etc/passwd\n"
                                    << "/etc/passwd is no name of a file in this folder";
    QTest::newRow("a folder below") << digits + "  b/a\n"
                                    << "b/a is no name of a file in this folder";
    QTest::newRow("the folder itself") << digits + "  .\n"
                                       << ". is no name of a file in this folder";
    QTest::newRow("the one above itself") << digits + "  ..\n"
                                          << ".. is no name of a file in this folder";
    QTest::newRow("a name that ends early") << digits + "  a" + QByteArray(1, '\0') + "b\n"
                                            << "a\\x00b is no name of a file in this folder";
    QTest::newRow("the list") << digits + "  SHA256SUMS\n"
                              << "SHA256SUMS cannot be listed, as it is part of the seal";
    QTest::newRow("the signature")
        << digits + "  SHA256SUMS.minisig\n"
        << "SHA256SUMS.minisig cannot be listed, as it is part of the seal";
    QTest::newRow("a name to fool a terminal") << digits + "  /\x1b[2J\n"
                                               << "/\\x1b[2J is no name of a file in this folder";
}

void TestChecksumList::refusesALine()
{
    QFETCH(const QByteArray, line);
    QFETCH(const QString, reason);
    QCOMPARE(contentOf(readChecksumList(line)), QStringList{"line 1: " + reason});
}

void TestChecksumList::soundLinesAreReadBesideWrongOnes()
{
    const ChecksumList list =
        readChecksumList(digits + "  a\nnonsense\n" + digits + "  b\n" + digits + " *a\n");
    const QString hex = QString::fromLatin1(digits);
    QCOMPARE(contentOf(list), (QStringList{hex + " a", hex + " b", "line 2: " + noLine,
                                           "line 4: a is listed twice"}));
}

void TestChecksumList::endlessMistakesAreNotAllKept()
{
    const ChecksumList list = readChecksumList(QByteArray(100000, '\n') + digits + "  a\n");
    QCOMPARE(list.problems.size(), 101);
    QCOMPARE(list.problems[99], "line 100: " + noLine);
    QCOMPARE(list.problems[100], QString("is read no further, as too many lines are wrong"));
    QCOMPARE(list.files.size(), 0);
}

void TestChecksumList::namesAreShownWithoutHarm_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QString>("shown");

    QTest::newRow("plain") << QByteArray("v 1.img") << "v 1.img";
    QTest::newRow("other letters") << QByteArray("\xc3\xa4\xe2\x82\xac") << QString::fromUtf8("ä€");
    QTest::newRow("beyond the basic plane")
        << QByteArray("\xf0\x9f\x93\xb7") << QString::fromUtf8("\xf0\x9f\x93\xb7");
    QTest::newRow("backslash and line ends") << QByteArray("\\\n\r") << "\\\\\\n\\r";
    QTest::newRow("escape sequence") << QByteArray("\x1b[31m") << "\\x1b[31m";
    QTest::newRow("writing direction") << QByteArray("a\xe2\x80\xae") << "a\\xe2\\x80\\xae";
    QTest::newRow("no UTF-8") << QByteArray("a \\\xff") << "a \\x5c\\xff";
    QTest::newRow("byte order mark") << QByteArray("\xef\xbb\xbf"
                                                   "a")
                                     << "\\xef\\xbb\\xbfa";
}

void TestChecksumList::namesAreShownWithoutHarm()
{
    QFETCH(const QByteArray, name);
    QFETCH(const QString, shown);
    QCOMPARE(shownName(name), shown);
}

ZAN_TEST_MAIN(TestChecksumList)
#include "tst_checksumlist.moc"
