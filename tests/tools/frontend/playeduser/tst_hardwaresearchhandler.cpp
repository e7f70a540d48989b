#include <hardwaresearchhandler.h>
#include <narrator.h>
#include <screenshots.h>
#include <userhands.h>
#include <watchdog.h>

#include <widgettestmain.h>

#include <QDialog>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include <chrono>

/// The window of a search, as far as the user sees it.
class SearchWindow : public QDialog
{
public:
    /// @param runsByItself without a button to press
    explicit SearchWindow(bool runsByItself)
    {
        setObjectName("SearchHardwareDlgClass");
        setWindowTitle("Search for new hardware");
        m_ok.setObjectName("pushButton_ok");
        m_ok.setVisible(!runsByItself);
        auto* layout = new QVBoxLayout(this);
        layout->addWidget(&m_state);
        layout->addWidget(&m_ok);
        connect(&m_ok, &QPushButton::clicked, this, &SearchWindow::search);
        show();
    }

    void search()
    {
        m_state.setText("Searching...");
        m_ok.setEnabled(false);
    }

private:
    QLabel m_state;
    QPushButton m_ok{"OK"};
};

class TestHardwareSearchHandler : public QObject
{
    Q_OBJECT

private slots:
    void init() { m_narrator = Narrator(); }

    void searchIsBegunOnce()
    {
        SearchWindow window(false);
        QVERIFY(m_handler.isFor(window));
        m_handler.handle(window, 1);
        m_handler.handle(window, 2);
        QCOMPARE(m_narrator.told(),
                 (QStringList{"window: Search for new hardware", ": [OK]", "press: OK"}));
    }

    void searchThatRunsByItselfIsToldAlikeOnAnyMachine_data()
    {
        QTest::addColumn<bool>("isLate");
        QTest::newRow("which looks at it before it begins") << false;
        QTest::newRow("which is too busy for that") << true;
    }

    void searchThatRunsByItselfIsToldAlikeOnAnyMachine()
    {
        QFETCH(const bool, isLate);
        SearchWindow window(true);
        if (isLate)
            window.search();
        m_handler.handle(window, 1);
        if (!isLate)
            window.search();
        m_handler.handle(window, 2);
        QCOMPARE(m_narrator.told(),
                 (QStringList{"window: Search for new hardware", ": Searching..."}));
    }

private:
    Narrator m_narrator;
    Screenshots m_noPictures{QString(), QString()};
    Watchdog m_watchdog{std::chrono::milliseconds(patienceMs), [](const QString&) {
                        }};
    UserHands m_hands{m_narrator, m_noPictures, m_watchdog};
    HardwareSearchHandler m_handler{m_hands};
};

ZAN_WIDGET_TEST_MAIN(TestHardwareSearchHandler)
#include "tst_hardwaresearchhandler.moc"
