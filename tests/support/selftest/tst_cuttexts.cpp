#include <cuttexts.h>

#include <widgettestmain.h>

#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSpinBox>
#include <QTableWidget>

namespace {

using Make = std::function<QWidget*()>;

QWidget* makeCombo()
{
    auto* box = new QComboBox;
    box->addItems({"short", "an item that is much longer than the first"});
    return box;
}

QWidget* makeTable()
{
    auto* table = new QTableWidget(1, 2);
    table->setHorizontalHeaderLabels({"A title of some length", "Another"});
    table->resizeColumnsToContents();
    return table;
}

QWidget* makeWrapped()
{
    auto* label = new QLabel("several words that take more than one line in a narrow window");
    label->setWordWrap(true);
    return label;
}

} // namespace

Q_DECLARE_METATYPE(Make)

class TestCutTexts : public QObject
{
    Q_OBJECT

private slots:
    void whatIsTooSmallIsNamed_data()
    {
        QTest::addColumn<Make>("make");
        QTest::newRow("a label") << Make([] { return new QLabel("some text to read"); });
        QTest::newRow("a label with several lines") << Make(makeWrapped);
        QTest::newRow("a button") << Make([] { return new QPushButton("some text to read"); });
        QTest::newRow("a check box") << Make([] { return new QCheckBox("some text to read"); });
        QTest::newRow("a number field") << Make([] { return new QSpinBox; });
        QTest::newRow("an item of a combo box that is not the current one") << Make(makeCombo);
    }

    void whatIsTooSmallIsNamed()
    {
        QFETCH(const Make, make);
        QWidget window;
        QHBoxLayout layout(&window);
        QWidget* widget = make();
        layout.addWidget(widget);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QCOMPARE(cutTexts(window), QStringList());
        widget->setFixedSize(20, 8);
        layout.activate();
        QCOMPARE(cutTexts(window).size(), 1);
        QVERIFY(cutTexts(window).constFirst().startsWith(widget->metaObject()->className()));
    }

    void sectionsOfAHeaderAreNamed()
    {
        QWidget window;
        QHBoxLayout layout(&window);
        auto* table = static_cast<QTableWidget*>(makeTable());
        layout.addWidget(table);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QCOMPARE(cutTexts(window), QStringList());
        table->setColumnWidth(1, 20);
        QCOMPARE(cutTexts(window).size(), 1);
        QVERIFY(cutTexts(window).constFirst().startsWith("Section \"Another\" of "));
    }

    void whatStandsOutsideIsNamed()
    {
        QWidget window;
        window.resize(200, 100);
        QPushButton button("text", &window);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QCOMPARE(cutTexts(window), QStringList());
        button.move(190, 0);
        QCOMPARE(cutTexts(window).size(), 1);
    }

    void largerFontsCutWhatHasAFixedSize()
    {
        QLabel window;
        QLabel label("some text to read", &window);
        label.resize(label.sizeHint());
        window.resize(label.size() * 2);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QCOMPARE(cutTexts(window), QStringList());
        const LargerFont font(1.5);
        QCOMPARE(cutTexts(window).size(), 1);
    }
};

ZAN_WIDGET_TEST_MAIN(TestCutTexts)
#include "tst_cuttexts.moc"
