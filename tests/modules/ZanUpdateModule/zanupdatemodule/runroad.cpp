#include "runroad.h"

#include <ZanUpdateModule2GSettingsdlg.h>
#include <newfeaturedialog.h>

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>
#include <QtTest>

static const QEvent::Type SERVED = static_cast<QEvent::Type>(QEvent::registerEventType());

RunRoad::RunRoad(ModuleFixture* fixture) : m_fixture(fixture), m_sleep([](int) {}) {}

void RunRoad::actAt(int place, const Act& act)
{
    m_actAt = place;
    m_act = act;
}

void RunRoad::go()
{
    m_fixture->channel.takeLog();
    // Behind a quit as well, this comes only when all that it has called has returned.
    QTimer::singleShot(0, this, [this] {
        if (!m_fixture->module->get_gui_elements().isEmpty())
            m_fixture->channel.post_message("UpdateModule", "Main_Window", 1, "v3.0.0");
        m_dialog = m_fixture->dialog();
        postNext();
        fireSingleShots();
        m_isOver = true;
        QCoreApplication::exit();
    });
    QCoreApplication::exec();
    QCoreApplication::removePostedEvents(this);
}

void RunRoad::postNext()
{
    if (!m_isOver)
        QCoreApplication::postEvent(this, new QEvent(SERVED));
}

bool RunRoad::event(QEvent* event)
{
    if (event->type() != SERVED)
        return QObject::event(event);
    // Before anything else, as all that follows may serve events in turn.
    postNext();
    serve();
    return true;
}

static QDialog* windowInFront()
{
    return qobject_cast<QDialog*>(QApplication::activeModalWidget());
}

void RunRoad::serve()
{
    QDialog* inFront = windowInFront();
    const Place place = placeNow(inFront);
    const bool isNew = m_places.isEmpty() || m_lastInFront != inFront ||
                       m_places.last().kind != place.kind || m_places.last().name != place.name ||
                       m_places.last().callCount != place.callCount;
    if (!isNew) {
        goOn(inFront);
        return;
    }
    m_lastInFront = inFront;
    m_timesHere = 0;
    m_places += place;
    if (m_places.size() - 1 == m_actAt) {
        m_hasActed = true;
        m_act(inFront);
    }
}

Place RunRoad::placeNow(const QDialog* inFront) const
{
    const QStringList& calls = m_fixture->channel.log();
    if (const auto* box = qobject_cast<const QMessageBox*>(inFront))
        return {Place::InBox, box->text().section(QLatin1Char('\n'), 0, 0), calls.size()};
    if (qobject_cast<const NewFeatureDialog*>(inFront))
        return {Place::InViewer, inFront->windowTitle(), calls.size()};
    if (inFront && inFront != m_dialog)
        return {Place::InSearch, inFront->windowTitle(), calls.size()};
    if (inFront && m_dialog->findChild<QPushButton*>("pushButton_exit")->isEnabled())
        return {Place::InDialog, inFront->windowTitle(), calls.size()};
    return {Place::InRun, calls.isEmpty() ? QString() : calls.last(), calls.size()};
}

// The button that leads on, where there is a choice.
static void confirm(QMessageBox* box)
{
    QAbstractButton* yes = box->button(QMessageBox::Yes);
    (yes ? yes : box->button(QMessageBox::Ok))->click();
}

void RunRoad::goOn(QDialog* inFront)
{
    // A loop is left at its next turn, so nothing stands at one place for long.
    if (++m_timesHere > 1000)
        qFatal("the road does not end: %s", qPrintable(m_places.last().name));
    if (auto* box = qobject_cast<QMessageBox*>(inFront)) {
        // The warning about the address belongs to no run.
        m_hasStarted = m_hasStarted || box->windowTitle() != QLatin1String("Warning");
        confirm(box);
        return;
    }
    if (m_places.last().kind == Place::InSearch)
        fireSingleShots();
    if (m_places.last().kind == Place::InViewer)
        inFront->findChild<QPushButton*>("pushButton_exit")->click();
    if (m_places.last().kind != Place::InDialog)
        return;
    // The second one of the start comes on top of the dialog.
    if (!armedSingleShots().isEmpty()) {
        fireSingleShots();
        return;
    }
    // The second time, what was to be done here is done.
    const char* const button = m_hasStarted ? "pushButton_exit" : "pushButton_update";
    m_hasStarted = true;
    inFront->findChild<QPushButton*>(QLatin1String(button))->click();
}
