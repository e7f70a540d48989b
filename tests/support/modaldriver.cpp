#include "modaldriver.h"

#include <QApplication>
#include <QPushButton>
#include <QtTest>

#include <algorithm>

static constexpr int TICK_MS = 5;

static void failTest(const QString& reason)
{
    QTest::qFail(qPrintable(reason), __FILE__, __LINE__);
}

template <typename T>
static void check(const char* what, const T& actual, const T& expected)
{
    if (actual == expected)
        return;
    QString text;
    QDebug(&text) << "message box:" << what << "is" << actual << "and should be" << expected;
    failTest(text);
}

static void compare(const QMessageBox& box, const ExpectedBox& expected)
{
    check("title", box.windowTitle(), expected.title);
    check("text", box.text(), expected.text);
    check("informative text", box.informativeText(), expected.informativeText);
    check("icon", int(box.icon()), int(expected.icon));
    check("set of buttons", int(box.standardButtons()), int(expected.buttons));
    check("default button", int(box.standardButton(box.defaultButton())),
          int(expected.defaultButton));
}

static void press(QMessageBox& box, QMessageBox::StandardButton which)
{
    if (which == QMessageBox::NoButton) {
        QTest::keyClick(&box, Qt::Key_Escape);
        return;
    }
    if (QAbstractButton* button = box.button(which)) {
        button->click();
        return;
    }
    failTest(QStringLiteral("message box: the button to press is missing"));
    box.reject();
}

ModalDriver::ModalDriver(int deadlineMs) : m_deadlineMs(deadlineMs)
{
    qApp->installEventFilter(this);
    connect(&m_timer, &QTimer::timeout, this, [this] {
        // Not from the timer itself, which does not fire again before its slot has returned, and
        // that may be after windows nested in this one.
        QMetaObject::invokeMethod(this, &ModalDriver::tick, Qt::QueuedConnection);
    });
    m_timer.start(TICK_MS);
}

void ModalDriver::expect(const ExpectedBox& box)
{
    m_expected += {box.text, true, [box](QDialog& dialog) {
                       auto& actual = static_cast<QMessageBox&>(dialog);
                       compare(actual, box);
                       if (box.inspect)
                           box.inspect(actual);
                       press(actual, box.press);
                   }};
}

void ModalDriver::expectDialog(const QString& objectName, const Act& act)
{
    m_expected += {objectName, false, act};
}

QString ModalDriver::missing() const
{
    QStringList names;
    for (const Expected& expected : m_expected)
        names += expected.name;
    return QStringLiteral("windows that did not come: ") + names.join(QStringLiteral(" | "));
}

ModalDriver::Acted* ModalDriver::acted(const QDialog* dialog)
{
    const auto found = std::find_if(m_acted.begin(), m_acted.end(),
                                    [&](const Acted& entry) { return entry.dialog == dialog; });
    return found != m_acted.end() ? &*found : nullptr;
}

bool ModalDriver::eventFilter(QObject* object, QEvent* event)
{
    if (event->type() == QEvent::Show && qobject_cast<QDialog*>(object))
        QMetaObject::invokeMethod(this, &ModalDriver::tick, Qt::QueuedConnection);
    return false;
}

void ModalDriver::tick()
{
    ++m_ticks;
    auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
    if (!dialog)
        return;
    const Acted* entry = acted(dialog);
    if (!entry)
        meet(dialog);
    else if (m_ticks > entry->deadline)
        giveUp(dialog, QStringLiteral("window stays open: "));
}

void ModalDriver::meet(QDialog* dialog)
{
    const auto* box = qobject_cast<QMessageBox*>(dialog);
    const QString name = box ? box->text() : dialog->objectName();
    m_seen += name;
    m_acted += {dialog, m_ticks + m_deadlineMs / TICK_MS};
    // The same object may be shown again later, as a window of its own right.
    connect(dialog, &QDialog::finished, this, [this, dialog] {
        m_acted.erase(std::remove_if(m_acted.begin(), m_acted.end(),
                                     [&](const Acted& entry) { return entry.dialog == dialog; }),
                      m_acted.end());
        disconnect(dialog, &QDialog::finished, this, nullptr);
    });

    if (m_expected.isEmpty()) {
        giveUp(dialog, QStringLiteral("unexpected window: "));
        return;
    }
    const Expected expected = m_expected.takeFirst();
    if (expected.isBox != (box != nullptr) || (!expected.isBox && expected.name != name)) {
        giveUp(dialog, QStringLiteral("a window other than \"%1\": ").arg(expected.name));
        return;
    }
    expected.act(*dialog);
}

void ModalDriver::giveUp(QDialog* dialog, const QString& reason)
{
    const auto* box = qobject_cast<QMessageBox*>(dialog);
    failTest(reason + (box ? box->text() : dialog->objectName()));
    dialog->reject();
    if (dialog->isVisible())
        dialog->done(QDialog::Rejected);
}
