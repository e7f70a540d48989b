#include <quitsignals.h>

#include <testmain.h>

#include <QSignalSpy>

#include <csignal>

#include <sys/wait.h>
#include <unistd.h>

namespace {

const int numbers[] = {SIGTERM, SIGINT, SIGHUP};

} // namespace

class TestQuitSignals : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void eachIsTold_data();
    void eachIsTold();
    void secondOneEndsTheProcess();
    void ignoredOneStaysIgnored();
    void allIsAsBeforeAfterwards();
};

// Whoever started the test may ignore some.
void TestQuitSignals::initTestCase()
{
    for (const int number : numbers)
        std::signal(number, SIG_DFL);
}

void TestQuitSignals::eachIsTold_data()
{
    QTest::addColumn<int>("number");
    for (const int number : numbers)
        QTest::addRow("%s", strsignal(number)) << number;
}

void TestQuitSignals::eachIsTold()
{
    QFETCH(const int, number);
    const QuitSignals quitSignals;
    const QSignalSpy wanted(&quitSignals, &QuitSignals::wanted);
    raise(number);
    QCOMPARE(wanted.size(), 0); // not in the handler
    QTRY_COMPARE(wanted.size(), 1);
}

// In a process of its own, which it ends.
void TestQuitSignals::secondOneEndsTheProcess()
{
    const pid_t child = fork();
    if (child == 0) {
        const QuitSignals quitSignals;
        raise(SIGTERM);
        raise(SIGTERM);
        _exit(0);
    }
    int status = 0;
    QCOMPARE(waitpid(child, &status, 0), child);
    QVERIFY(WIFSIGNALED(status));
    QCOMPARE(WTERMSIG(status), SIGTERM);
}

void TestQuitSignals::ignoredOneStaysIgnored()
{
    const auto before = std::signal(SIGHUP, SIG_IGN);
    {
        const QuitSignals quitSignals;
        const QSignalSpy wanted(&quitSignals, &QuitSignals::wanted);
        raise(SIGHUP);
        raise(SIGTERM);
        QTRY_COMPARE(wanted.size(), 1);
    }
    QVERIFY(std::signal(SIGHUP, before) == SIG_IGN);
}

void TestQuitSignals::allIsAsBeforeAfterwards()
{
    struct sigaction before = {};
    sigaction(SIGTERM, nullptr, &before);
    {
        const QuitSignals quitSignals;
        struct sigaction now = {};
        sigaction(SIGTERM, nullptr, &now);
        QVERIFY(now.sa_handler != before.sa_handler);
    }
    struct sigaction after = {};
    sigaction(SIGTERM, nullptr, &after);
    QVERIFY(after.sa_handler == before.sa_handler);
}

ZAN_TEST_MAIN(TestQuitSignals)
#include "tst_quitsignals.moc"
