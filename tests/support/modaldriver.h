#pragma once

#include <QList>
#include <QMessageBox>
#include <QObject>
#include <QPointer>
#include <QStringList>
#include <QTimer>

#include <functional>

/// A message box that a test expects, to the letter, and what it does with it.
struct ExpectedBox
{
    QString title;
    QString text;
    QString informativeText;
    QMessageBox::Icon icon = QMessageBox::Information;
    QMessageBox::StandardButtons buttons = QMessageBox::Ok;
    /// What Qt makes of it if the program names none: for QMessageBox::warning() and its like the
    /// first button that accepts, for a QMessageBox object NoButton.
    QMessageBox::StandardButton defaultButton = QMessageBox::Ok;

    /// The button to press; NoButton presses Escape.
    QMessageBox::StandardButton press = QMessageBox::Ok;
    /// Looks at the box before the button is pressed; may act, and fail the test.
    std::function<void(QMessageBox&)> inspect;
};

/// Plays the user on modal windows, which run event loops of their own and would hang a test.
///
///     ModalDriver driver;
///     ExpectedBox box;
///     box.title = "VORNIX3";
///     box.text = "Do you really want to update?";
///     box.buttons = QMessageBox::Yes | QMessageBox::No;
///     box.defaultButton = box.press = QMessageBox::No;
///     driver.expect(box);
///     driver.expectDialog("searchHardwareDlg", [](QDialog& dialog) { dialog.reject(); });
///     dialog.on_pushButton_update_clicked();
///     QVERIFY2(driver.isDone(), qPrintable(driver.missing()));
///
/// Windows are taken in the order in which they are expected; a nested one that the callback of an
/// outer one brings up comes after it. A departure fails the test at once (a window that nobody
/// expects is closed, so that the code under test goes on), and a window that stays open for longer
/// than the deadline after it was acted on is closed and fails the test as well.
class ModalDriver : public QObject
{
    Q_OBJECT

public:
    explicit ModalDriver(int deadlineMs = 10000);

    void expect(const ExpectedBox& box);
    /// Expects a dialog that is no message box. @p act brings about its end, at once or later; it
    /// runs inside the dialog's event loop and may bring up further windows.
    /// @param objectName of the dialog, checked to the letter
    void expectDialog(const QString& objectName, const std::function<void(QDialog&)>& act);

    /// Whether everything expected has come; to be asked at the end of every test.
    bool isDone() const { return m_expected.isEmpty(); }
    /// What has not come yet, for the message of the check.
    QString missing() const;
    /// What came, in order: the texts of the boxes, the object names of the dialogs.
    const QStringList& seen() const { return m_seen; }

    /// Of all windows: one that opens is met before its timers run out, however long it took to
    /// open.
    bool eventFilter(QObject* object, QEvent* event) override;

private:
    using Act = std::function<void(QDialog&)>;
    struct Expected
    {
        QString name;
        bool isBox;
        Act act;
    };
    struct Acted
    {
        QPointer<QDialog> dialog;
        int deadline; ///< in ticks
    };

    void tick();
    void meet(QDialog* dialog);
    void giveUp(QDialog* dialog, const QString& reason);
    Acted* acted(const QDialog* dialog);

    QTimer m_timer;
    int m_deadlineMs;
    int m_ticks = 0;
    QList<Expected> m_expected;
    QList<Acted> m_acted;
    QStringList m_seen;
};
