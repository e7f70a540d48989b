#include "sealfixtures.h"

#include <sealverbs.h>

#include <reasons.h>
#include <testmain.h>

#include <QBuffer>
#include <QJsonArray>
#include <QJsonDocument>

#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

namespace {

const VerbProgram& program()
{
    static const VerbProgram program = {
        "tool", "1", "Seals.", "  0  done", {sealVerb(), verifyVerb()}};
    return program;
}

ProgramRun runTool(const QStringList& arguments, QIODevice* in = nullptr, bool isTerminal = false)
{
    ProgramRun result;
    QTextStream out(&result.out);
    QTextStream messages(&result.messages);
    result.exitCode = runVerb(program(), arguments, {out, messages, isTerminal, false, in});
    return result;
}

QJsonObject jsonOf(const ProgramRun& run)
{
    return QJsonDocument::fromJson(run.out.toUtf8()).object();
}

/// A delivery of two files, and a key beside it.
struct Site
{
    Site()
    {
        outer.write("delivery/a.vx3img", "first");
        outer.write("delivery/b.VX2znimg", "second");
        outer.write("key", sample::secretKeyFile);
        outer.write("key.pub", sample::publicKeyFile);
    }

    FixtureFolder outer;
    QString folder = outer.path("delivery");
    QString key = outer.path("key");
    QString publicKey = outer.path("key.pub");
};

/// A terminal of which the test is the user, who types as soon as something is asked for.
class Terminal : public QIODevice
{
public:
    explicit Terminal(QByteArray typed)
        : m_typed(std::move(typed)), m_user(::posix_openpt(O_RDWR | O_NOCTTY))
    {
        if (m_user < 0 || ::grantpt(m_user) != 0 || ::unlockpt(m_user) != 0)
            qFatal("there is no terminal to be had");
        m_handle = ::open(::ptsname(m_user), O_RDWR | O_NOCTTY);
        m_in.open(m_handle, QIODevice::ReadOnly | QIODevice::Unbuffered);
        open(QIODevice::WriteOnly | QIODevice::Unbuffered);
    }
    ~Terminal() override
    {
        ::close(m_handle);
        ::close(m_user);
    }
    Q_DISABLE_COPY(Terminal)

    QIODevice* in() { return &m_in; }
    bool showsTyping() const
    {
        termios settings = {};
        ::tcgetattr(m_handle, &settings);
        return (settings.c_lflag & ECHO) != 0;
    }
    QByteArray shown() const
    {
        QByteArray bytes(1000, '\0');
        ::fcntl(m_user, F_SETFL, O_NONBLOCK);
        const ssize_t count = ::read(m_user, bytes.data(), std::size_t(bytes.size()));
        return bytes.left(int(qMax<ssize_t>(count, 0)));
    }

protected:
    qint64 readData(char*, qint64) override { return -1; }
    qint64 writeData(const char* data, qint64 size) override
    {
        if (QByteArray(data, int(size)).contains("Password"))
            return ::write(m_user, m_typed.constData(), std::size_t(m_typed.size())) < 0 ? -1
                                                                                         : size;
        return size;
    }

private:
    QByteArray m_typed;
    int m_user;
    int m_handle;
    QFile m_in;
};

} // namespace

class TestSealVerbs : public QObject
{
    Q_OBJECT

private slots:
    void sealsAndVerifies();
    void sealsAndVerifiesInJson();
    void tellsOfEachFileWhatDeparts();
    void tellsWhatDepartsInJson();
    void goesOnWithTheOtherFolders();
    void signsWithTheTimeThatIsTold();
    void refusesWrongUsage_data();
    void refusesWrongUsage();
    void saysWhatCannotBeDone_data();
    void saysWhatCannotBeDone();
    void refusesToDeliverTheKey();
    void readsThePasswordFromAPipe();
    void asksForThePasswordOnATerminal();
    void showsProgressOnATerminalOnly();
};

void TestSealVerbs::sealsAndVerifies()
{
    const Site site;
    const ProgramRun plain = runTool({"seal", site.folder});
    QCOMPARE(plain.messages, QString());
    QCOMPARE(plain.out, site.folder + ": 2 files sealed\n");
    QCOMPARE(plain.exitCode, 0);
    QCOMPARE(runTool({"verify", site.folder + '/'}).out,
             QString("%1/a.vx3img: as sealed\n"
                     "%1/b.VX2znimg: as sealed\n"
                     "The update files in %1/ are as they were sealed (2 in all); there was no "
                     "public key to tell by whom.\n")
                 .arg(site.folder));

    const ProgramRun sealed =
        runTool({"seal", "--key", site.key, "--comment", "3.3.0", site.folder});
    QCOMPARE(sealed.out, site.folder + ": 2 files sealed, to be verified with the public key " +
                             sample::publicKey + '\n');
    for (const QString& key : {site.publicKey, QString(sample::publicKey)}) {
        const ProgramRun verified = runTool({"verify", "--public-key", key, site.folder});
        QCOMPARE(verified.messages, QString());
        QCOMPARE(verified.out,
                 QString("%1/a.vx3img: as sealed\n"
                         "%1/b.VX2znimg: as sealed\n"
                         "Trusted comment: 3.3.0\n"
                         "The update files in %1 are as they were sealed and signed (2 in all).\n")
                     .arg(site.folder));
        QCOMPARE(verified.exitCode, 0);
    }
}

void TestSealVerbs::sealsAndVerifiesInJson()
{
    const Site site;
    const ProgramRun sealed =
        runTool({"seal", "--json", "--key", site.key, "--comment", "3.3.0", site.folder});
    QCOMPARE(jsonOf(sealed), (QJsonObject{{"folder", site.folder},
                                          {"files", 2},
                                          {"publicKey", QString(sample::publicKey)}}));
    const ProgramRun verified =
        runTool({"verify", "--json", "--public-key", site.publicKey, site.folder});
    const QJsonObject a{{"name", "a.vx3img"}, {"state", "as-sealed"}};
    const QJsonObject b{{"name", "b.VX2znimg"}, {"state", "as-sealed"}};
    QCOMPARE(jsonOf(verified), (QJsonObject{{"folder", site.folder},
                                            {"verdict", "proven"},
                                            {"files", QJsonArray{a, b}},
                                            {"problems", QJsonArray()},
                                            {"exitCode", 0},
                                            {"trustedComment", "3.3.0"}}));
    QCOMPARE(verified.exitCode, 0);
    QCOMPARE(jsonOf(runTool({"verify", "--json", site.folder}))["verdict"].toString(),
             QString("complete"));
}

void TestSealVerbs::tellsOfEachFileWhatDeparts()
{
    const Site site;
    runTool({"seal", site.folder});
    site.outer.write("delivery/a.vx3img", "First");
    site.outer.write("delivery/new\x1b[2J", "");
    const ProgramRun run = runTool({"verify", "--public-key", site.publicKey, site.folder});
    QCOMPARE(run.out, QString("%1/SHA256SUMS.minisig: is missing\n"
                              "%1/a.vx3img: is not what was sealed\n"
                              "%1/b.VX2znimg: as sealed\n"
                              "%1/new\\x1b[2J: is not listed in SHA256SUMS\n")
                          .arg(site.folder));
    QCOMPARE(
        run.messages,
        QString("tool: The update files in %1 are not as they were sealed.\n").arg(site.folder));
    QCOMPARE(run.exitCode, 3);
}

void TestSealVerbs::tellsWhatDepartsInJson()
{
    const Site site;
    const ProgramRun none = runTool({"verify", "--json", site.folder});
    QCOMPARE(jsonOf(none), (QJsonObject{{"folder", site.folder},
                                        {"verdict", "not-sealed"},
                                        {"files", QJsonArray()},
                                        {"problems", QJsonArray{"SHA256SUMS: is missing"}},
                                        {"exitCode", 3}}));
    QCOMPARE(none.exitCode, 3);

    for (const char* name : {"altered", "missing", "linked", "unread"})
        site.outer.write(QString("delivery/") + name, name);
    runTool({"seal", site.folder});
    site.outer.write("delivery/altered", "!");
    QFile::remove(site.outer.path("delivery/missing"));
    QFile::remove(site.outer.path("delivery/linked"));
    site.outer.link("delivery/linked", "key");
    site.outer.write("delivery/new", "!");
    const ProgramRun run = runTool({"verify", "--json", site.folder});
    QStringList told;
    for (const QJsonValue file : jsonOf(run)["files"].toArray())
        told += file["name"].toString() + ' ' + file["state"].toString() + ' ' +
                file["reason"].toString();
    QCOMPARE(told,
             (QStringList{"a.vx3img as-sealed ", "altered altered is not what was sealed",
                          "b.VX2znimg as-sealed ", "linked not-a-file is a symbolic link",
                          "missing missing is missing",
                          "new not-listed is not listed in SHA256SUMS", "unread as-sealed "}));
    QCOMPARE(jsonOf(run)["verdict"].toString(), QString("departs"));
    QCOMPARE(run.messages, QString());
    QCOMPARE(run.exitCode, 3);
}

void TestSealVerbs::goesOnWithTheOtherFolders()
{
    const Site site;
    const QString none = site.outer.path("none");
    const ProgramRun sealed = runTool({"seal", none, site.folder});
    QCOMPARE(sealed.messages, "tool: " + none + ": " + systemReason(ENOENT) + '\n');
    QCOMPARE(sealed.out, site.folder + ": 2 files sealed\n");
    QCOMPARE(sealed.exitCode, 1);
    const ProgramRun verified = runTool({"verify", none, site.folder});
    QCOMPARE(verified.messages, "tool: " + none + ": " + systemReason(ENOENT) + '\n');
    QVERIFY(verified.out.contains("b.VX2znimg: as sealed"));
    QCOMPARE(verified.exitCode, 1);
    // What cannot be read counts more than what departs, wherever it stands.
    site.outer.write("delivery/c.vx3img", "not listed");
    QCOMPARE(runTool({"verify", site.folder}).exitCode, 3);
    QCOMPARE(runTool({"verify", none, site.folder}).exitCode, 1);
    QCOMPARE(runTool({"verify", site.folder, none}).exitCode, 1);
}

void TestSealVerbs::signsWithTheTimeThatIsTold()
{
    const Site site;
    qputenv("SOURCE_DATE_EPOCH", "1795316785");
    runTool({"seal", "--key", site.key, site.folder});
    const QByteArray first = contentOf(site.folder + "/SHA256SUMS.minisig");
    runTool({"seal", "--key", site.key, site.folder});
    qunsetenv("SOURCE_DATE_EPOCH");
    QCOMPARE(contentOf(site.folder + "/SHA256SUMS.minisig"), first);
    QVERIFY(first.contains("trusted comment: timestamp:1795316785\tfile:SHA256SUMS\thashed\n"));
    QVERIFY(runTool({"verify", "--public-key", site.publicKey, site.folder})
                .out.contains("Trusted comment: timestamp:1795316785 file:SHA256SUMS hashed\n"));
}

void TestSealVerbs::refusesWrongUsage_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("message");
    QTest::newRow("nothing to seal")
        << QStringList{"seal"} << "seal takes DIR.... (tool seal --help tells more)";
    QTest::newRow("nothing to verify")
        << QStringList{"verify"} << "verify takes DIR.... (tool verify --help tells more)";
    QTest::newRow("a comment that nobody signs")
        << QStringList{"seal", "--comment", "x", "."} << "--comment needs --key";
    QTest::newRow("a comment of two lines")
        << QStringList{"seal", "--key", "k", "--comment", "x\ny", "."}
        << "--comment must be one line of up to 1000 characters";
    QTest::newRow("a comment without end")
        << QStringList{"seal", "--key", "k", "--comment", QString(1001, 'x'), "."}
        << "--comment must be one line of up to 1000 characters";
}

void TestSealVerbs::refusesWrongUsage()
{
    QFETCH(const QStringList, arguments);
    QFETCH(const QString, message);
    const ProgramRun run = runTool(arguments);
    QCOMPARE(run.messages, "tool: " + message + '\n');
    QCOMPARE(run.out, QString());
    QCOMPARE(run.exitCode, 2);
}

void TestSealVerbs::saysWhatCannotBeDone_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("message");
    QTest::addColumn<int>("exitCode");
    QTest::newRow("sealing without its key")
        << QStringList{"seal", "--key", "none", "delivery"} << "none: " + systemReason(ENOENT) << 1;
    QTest::newRow("sealing with the public key")
        << QStringList{"seal", "--key", "key.pub", "delivery"}
        << "key.pub: is no minisign secret key" << 1;
    QTest::newRow("sealing what is no folder")
        << QStringList{"seal", "key"} << "key: " + systemReason(ENOTDIR) << 1;
    QTest::newRow("sealing folders in the folder")
        << QStringList{"seal", "."} << "./delivery: is a folder; only files can be sealed" << 3;
    QTest::newRow("verifying without its key")
        << QStringList{"verify", "--public-key", "none", "delivery"}
        << "none: " + systemReason(ENOENT) << 1;
    QTest::newRow("verifying with the secret key")
        << QStringList{"verify", "--public-key", "key", "delivery"}
        << "key: is no minisign public key" << 1;
    QTest::newRow("verifying what is no folder")
        << QStringList{"verify", "key"} << "key: " + systemReason(ENOTDIR) << 1;
}

void TestSealVerbs::saysWhatCannotBeDone()
{
    QFETCH(QStringList, arguments);
    QFETCH(const QString, message);
    QFETCH(const int, exitCode);
    const Site site;
    const QString before = QDir::currentPath();
    QDir::setCurrent(site.outer.path());
    const ProgramRun run = runTool(arguments);
    arguments.insert(1, "--json");
    const ProgramRun json = runTool(arguments);
    QDir::setCurrent(before);
    QCOMPARE(run.messages, "tool: " + message + '\n');
    QCOMPARE(run.out, QString());
    QCOMPARE(run.exitCode, exitCode);
    QCOMPARE(json.messages, QString());
    QCOMPARE(jsonOf(json), (QJsonObject{{"error", message}, {"exitCode", exitCode}}));
    QCOMPARE(QDir(site.folder).entryList(QDir::Files), (QStringList{"a.vx3img", "b.VX2znimg"}));
}

void TestSealVerbs::refusesToDeliverTheKey()
{
    const Site site;
    const QString key = site.outer.write("delivery/key", sample::secretKeyFile);
    const ProgramRun run = runTool({"seal", "--key", key, site.folder});
    QCOMPARE(run.messages,
             "tool: " + key + ": stands in the folder to be sealed, and would be delivered\n");
    QCOMPARE(run.exitCode, 3);
    QVERIFY(!QFile::exists(site.folder + "/SHA256SUMS"));
}

void TestSealVerbs::readsThePasswordFromAPipe()
{
    const Site site;
    site.outer.write("key", hiddenKey("open sesame"));
    const auto sealWith = [&](QByteArray typed) {
        QBuffer in(&typed);
        in.open(QIODevice::ReadOnly);
        return runTool({"seal", "--key", site.key, site.folder}, &in);
    };
    QCOMPARE(sealWith("open sesame\nmore\n").exitCode, 0);
    QCOMPARE(sealWith("open sesame").exitCode, 0);
    QCOMPARE(sealWith("").messages, "tool: " + site.key + ": cannot be read with this password\n");
    QCOMPARE(runTool({"seal", "--key", site.key, site.folder}).exitCode, 1);
}

void TestSealVerbs::asksForThePasswordOnATerminal()
{
    const Site site;
    site.outer.write("key", hiddenKey("open sesame"));
    Terminal terminal("open sesame\n");
    QString text;
    QTextStream out(&text);
    QTextStream messages(&terminal);
    const int exitCode = runVerb(program(), {"seal", "--key", site.key, site.folder},
                                 {out, messages, true, false, terminal.in()});
    QCOMPARE(exitCode, 0);
    QCOMPARE(terminal.shown(), QByteArray("\r\n"));
    QVERIFY(terminal.showsTyping());
}

void TestSealVerbs::showsProgressOnATerminalOnly()
{
    const Site site;
    QCOMPARE(runTool({"seal", site.folder}, nullptr, true).messages,
             QString("\r\x1b[K%1: 45 %\r\x1b[K%1: 100 %\r\x1b[K").arg(site.folder));
    QCOMPARE(runTool({"verify", site.folder}, nullptr, true).messages,
             QString("\r\x1b[K%1: 45 %\r\x1b[K%1: 100 %\r\x1b[K").arg(site.folder));
    QCOMPARE(runTool({"verify", site.folder}).messages, QString());
}

ZAN_TEST_MAIN(TestSealVerbs)
#include "tst_sealverbs.moc"
