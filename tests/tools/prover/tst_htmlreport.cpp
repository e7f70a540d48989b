#include "proverfixtures.h"

#include <htmlreport.h>

#include <childprocess.h>
#include <testmain.h>

#include <QImage>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStandardPaths>
#include <QTemporaryDir>

namespace {

using Files = QMap<QString, UpdateFile>;

QByteArray pageOf(const Files& files)
{
    const FixtureFolder folder;
    const DeliveredFiles delivery = readDelivery(folder, files);
    QString error;
    const std::optional<Proof> proof = proveDelivery(delivery, {}, &error);
    if (!proof)
        qFatal("%s", qPrintable(error));
    return proofHtml(*proof);
}

/// A chain of releases, in which the last one cannot be reached from the first ones.
Files chainOf(int releases)
{
    Files files;
    for (int number = 1; number <= releases; ++number) {
        ControllerImage image = usualImage(VersionInfo(3, number, 0), VersionInfo(1, number));
        if (number == releases)
            image.blocks[0].minVer = VersionInfo(3, number - 1, 5);
        files.insert(QStringLiteral("controller_v3.%1.0.vx3img").arg(number), image);
    }
    return files;
}

const char hostileName[] = "<script>document.title='taken'<!--\"'&amp;.img";

/// Looks at the page from inside: what it shows goes into its title, as JSON.
const char probe[] = R"(<script>
const boxes = [...document.querySelectorAll('.node')];
const scale = document.querySelector('svg').getBoundingClientRect().width / 1284;
const cut = boxes.filter(box => {
  const frame = box.querySelector('rect').getBoundingClientRect();
  return [...box.querySelectorAll('text')].some(text => {
    const shown = text.getBoundingClientRect();
    return shown.right > frame.right || shown.bottom > frame.bottom + 1 || shown.top < frame.top - 1;
  });
});
const overlapping = boxes.filter((box, index) => index > 0 && (() => {
  const a = boxes[index - 1].querySelector('rect').getBoundingClientRect();
  const b = box.querySelector('rect').getBoundingClientRect();
  return a.left === b.left && b.top < a.bottom && b.top > a.top;
})());
document.title = JSON.stringify({
  boxes: boxes.length, cut: cut.length, overlapping: overlapping.length,
  releases: document.querySelectorAll('.node.release').length,
  dead: document.querySelectorAll('.edge.dead').length,
  red: getComputedStyle(document.querySelector('.edge.dead')).stroke,
  rows: document.querySelectorAll('.ways tr').length - document.querySelectorAll('.ways').length,
  starts: document.querySelectorAll('svg').length,
  tooWide: document.documentElement.scrollWidth > window.innerWidth,
  letterPx: Math.round(11 * scale),
  scripts: document.querySelectorAll('script').length
});
</script></body>)";

/// A browser without a display. The pages are tested with it, and not the browser itself: it finds
/// no strange place, but a home of its own, the usual clock and a plain language.
class Browser
{
public:
    static QString program() { return QStandardPaths::findExecutable("chromium"); }

    /// @return what it printed; fails the test if it crashes or hangs
    QByteArray run(const QStringList& options, const QString& page) const
    {
        ChildProcess process;
        process.setProcessEnvironment(environment());
        process.start(program(),
                      QStringList{"--headless", "--no-sandbox", "--disable-gpu", "--disable-quic",
                                  "--no-first-run", "--disable-background-networking",
                                  "--disable-component-update", "--disable-sync",
                                  "--hide-scrollbars", "--window-size=1340,1000",
                                  "--user-data-dir=" + m_profile.path()} +
                          options + QStringList{"file://" + page});
        if (!process.waitForEnd() || process.exitCode() != 0)
            QTest::qFail("the browser failed: " + process.readAllStandardError(), __FILE__,
                         __LINE__);
        return process.readAllStandardOutput();
    }

private:
    QProcessEnvironment environment() const
    {
        QProcessEnvironment variables;
        variables.insert("PATH", qEnvironmentVariable("PATH"));
        variables.insert("LANG", "C.UTF-8");
        variables.insert("TMPDIR", m_sockets.path());
        for (const char* folder :
             {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_RUNTIME_DIR"})
            variables.insert(folder, m_profile.path());
        return variables;
    }

    const QTemporaryDir m_profile;
    // The path of a socket may not be longer than 107 bytes, wherever the tests stand.
    const QTemporaryDir m_sockets{"/tmp/zan-browser-XXXXXX"};
};

/// What the probe finds in a page; its other texts have to be let run for that.
QJsonObject seenIn(QByteArray page)
{
    const FixtureFolder folder;
    page.replace("default-src 'none'; style-src", "default-src 'unsafe-inline'; style-src");
    page.replace("</body>", probe);
    const QByteArray dom = Browser().run({"--dump-dom"}, folder.write("page.html", page));
    const int start = dom.indexOf("<title>") + 7;
    const QByteArray title = dom.mid(start, dom.indexOf("</title>") - start);
    return QJsonDocument::fromJson(title).object();
}

} // namespace

class TestHtmlReport : public QObject
{
    Q_OBJECT

private slots:
    void pageNeedsNothingElse();
    void hostileTextsAreShownAsTheyAre();
    void everyWayStandsInTheTable();
    void browserShowsAll_data();
    void browserShowsAll();
    void browserPaintsDeadEndsRed();
};

void TestHtmlReport::pageNeedsNothingElse()
{
    const QByteArray page = pageOf(chainOf(2));
    for (const char* reference : {"http:", "https:", "src=", "href=", "url(", "@import", "<script",
                                  "<link", "<img", "<iframe"})
        QVERIFY2(!page.contains(reference), reference);
    QVERIFY(page.contains("default-src 'none'"));
}

void TestHtmlReport::hostileTextsAreShownAsTheyAre()
{
    const QByteArray page =
        pageOf({{hostileName, usualImage(VersionInfo(3, 0, 0), VersionInfo(1, 0))}});
    QVERIFY(!page.contains("<script"));
    QVERIFY(!page.contains("<!--"));
    QVERIFY(page.contains(QString(hostileName).toHtmlEscaped().toUtf8()));
}

void TestHtmlReport::everyWayStandsInTheTable()
{
    const QByteArray page = pageOf(chainOf(2));
    QVERIFY(page.contains("<p class=\"verdict dead\">Not proven."));
    QVERIFY(page.contains("<td>v3.2.0, Ct v1.2</td><td>newest</td>"));
    QVERIFY(page.contains("<td>asked for ever, nothing to tick</td></tr>"));
    QVERIFY(page.contains("<td class=\"weight\">error</td><td><code>nothing-to-tick</code></td>"));
}

void TestHtmlReport::browserShowsAll_data()
{
    QTest::addColumn<Files>("files");
    QTest::addColumn<int>("releases");
    QTest::newRow("two releases") << chainOf(2) << 2;
    QTest::newRow("sixty releases") << chainOf(60) << 60;
    Files hostile = chainOf(2);
    hostile.insert(hostileName, usualImage(VersionInfo(3, 3, 0), VersionInfo(1, 3)));
    QTest::newRow("a hostile name") << hostile << 3;
}

void TestHtmlReport::browserShowsAll()
{
    if (Browser::program().isEmpty())
        QSKIP("no chromium");
    QFETCH(const Files, files);
    QFETCH(const int, releases);
    const QJsonObject seen = seenIn(pageOf(files));
    const QByteArray all = QJsonDocument(seen).toJson();
    QVERIFY2(seen.value("releases").toInt() == releases, all.constData());
    QVERIFY2(seen.value("rows").toInt() > 0 && seen.value("boxes").toInt() > releases,
             all.constData());
    QVERIFY2(seen.value("cut").toInt() == 0 && seen.value("overlapping").toInt() == 0,
             all.constData());
    QVERIFY2(!seen.value("tooWide").toBool(), all.constData());
    QVERIFY2(seen.value("letterPx").toInt() >= 11, all.constData());
    QVERIFY2(seen.value("dead").toInt() > 0, all.constData());
    QCOMPARE(seen.value("red").toString(), QString("rgb(195, 36, 27)"));
    // The probe is the only one that ran.
    QCOMPARE(seen.value("scripts").toInt(), 1);
}

void TestHtmlReport::browserPaintsDeadEndsRed()
{
    if (Browser::program().isEmpty())
        QSKIP("no chromium");
    const FixtureFolder folder;
    const QString picture = folder.path("page.png");
    Browser().run({"--screenshot=" + picture}, folder.write("page.html", pageOf(chainOf(2))));
    const QImage image(picture);
    QCOMPARE(image.width(), 1340);
    int red = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            red += image.pixelColor(x, y) == QColor(195, 36, 27) ? 1 : 0;
    }
    QVERIFY2(red > 500, qPrintable(QString::number(red)));
}

ZAN_TEST_MAIN(TestHtmlReport)
#include "tst_htmlreport.moc"
