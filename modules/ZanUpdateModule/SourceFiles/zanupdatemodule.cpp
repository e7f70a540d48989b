#include "zanupdatemodule.h"

#include "ZanUpdateModule2GSettingsdlg.h"
#include "globaldefines.h"
#include "newfeaturedialog.h"
#include "opencall.h"
#include "replybuffer.h"
#include "zanmoduleserver.h"

#include <QAction>
#include <QCoreApplication>
#include <QPointer>
#include <QTimer>

#include <utility>

ZanUpdateModule::ZanUpdateModule() : QObject(nullptr)
{
    qRegisterMetaType<IOManager*>("IOManager*");
    qRegisterMetaType<BackendVersions*>("BackendVersions*");
    qRegisterMetaType<QWidget*>("QWidget*");
}

ZanUpdateModule::~ZanUpdateModule() = default;

QString ZanUpdateModule::get_module_name() const
{
    return tr("GUI Controller Update");
}

QString ZanUpdateModule::get_module_version() const
{
    return QStringLiteral("v%1.%2.%3").arg(2).arg(0).arg(0);
}

void ZanUpdateModule::set_param(QString key, QVariant value)
{
    if (key == QLatin1String("CommandManager"))
        iom = value.value<IOManager*>();
    else if (key == QLatin1String("ModuleParent"))
        setModuleParent(value.value<QWidget*>());
    else if (key == QLatin1String("BackendVersions"))
        beVers = value.value<BackendVersions*>();
    else if (key == QLatin1String("ObserverMode"))
        setObserverMode(value);
}

void ZanUpdateModule::setModuleParent(QWidget* parent)
{
    mod_parent = parent;
    if (parent) {
        connect(parent, &QObject::destroyed, this, &ZanUpdateModule::exitBehindParent,
                Qt::UniqueConnection);
    }
}

void ZanUpdateModule::setObserverMode(const QVariant& value)
{
    m_isObserverModeClear = value.userType() == QMetaType::Bool;
    bObserverMode = m_isObserverModeClear && value.toBool();
}

// A host that meant an observer must not get the update dialog by mistake.
QStringList ZanUpdateModule::missingParameters() const
{
    QStringList names;
    if (!iom && !bObserverMode)
        names += QStringLiteral("CommandManager (IOManager*)");
    if (!beVers)
        names += QStringLiteral("BackendVersions (BackendVersions*)");
    if (!m_isObserverModeClear)
        names += QStringLiteral("ObserverMode (bool)");
    return names;
}

bool ZanUpdateModule::canBuild() const
{
    if (m_isLeaving) {
        qWarning("ZanUpdateModule: no menu entries, as exit_module() waits for an open window or a "
                 "run");
        return false;
    }
    const QStringList missing = missingParameters();
    if (missing.isEmpty())
        return true;
    qWarning("ZanUpdateModule: no menu entries, as these parameters are null or of another type: "
             "%s",
             qPrintable(missing.join(QStringLiteral(", "))));
    return false;
}

QList<_GuiElement*> ZanUpdateModule::get_gui_elements()
{
    if (gui_elements.isEmpty() && canBuild())
        build();
    return gui_elements;
}

void ZanUpdateModule::build()
{
    const OpenCall call;
    addWhatIsNewEntry();
    // An observer gets no update dialog, no inventory and no timers.
    if (bObserverMode)
        return;
    addUpdateEntry();
    decideStart();
}

void ZanUpdateModule::addWhatIsNewEntry()
{
    m_new_feature_dialog = new NewFeatureDialog(mod_parent, beVers);
    auto* action = new QAction(tr("Wh&at's New?"), this);
    action->setStatusTip(tr("Get to know new features for the current version"));
    action->setWhatsThis(tr("Get to know new features for the current version"));
    connect(action, &QAction::triggered, m_new_feature_dialog, &NewFeatureDialog::update_and_exec);
    gui_whatisnew = {action, 30, tr("&Help"), 700, m_new_feature_dialog, 1};
    gui_elements.append(&gui_whatisnew);
}

void ZanUpdateModule::addUpdateEntry()
{
    zanUpdateDlg = new ZanUpdateModule2GSettingsdlg(iom, mod_parent, beVers, get_module_version(),
                                                    m_new_feature_dialog);
    auto* action = new QAction(tr("&Controller and Camera Update"), this);
    action->setStatusTip(tr("Open Controller and Camera Update dialog"));
    action->setWhatsThis(tr("Controller and Camera Update"));
    connect(action, &QAction::triggered, zanUpdateDlg,
            &ZanUpdateModule2GSettingsdlg::update_and_exec);
    gui_zanUpdateDlg = {action, 31, tr("&Help"), 700, zanUpdateDlg, 0};
    gui_elements.append(&gui_zanUpdateDlg);
}

// With timers, so that the host finishes its start first; the warning about the address comes up on
// top of the update dialog.
void ZanUpdateModule::decideStart()
{
    if (controllerIsUpToDate() && camerasUpToDate()) {
        QTimer::singleShot(500, zanUpdateDlg, SLOT(onTimerShowNewFeature()));
        return;
    }
    QTimer::singleShot(500, zanUpdateDlg, SLOT(onTimer()));
    if (!hasZanValidIP())
        QTimer::singleShot(600, zanUpdateDlg, SLOT(onDisplayMsgNoValidIp()));
}

static ZanModuleServer* server(IOManager* iom, BackendVersions* beVers)
{
    return ZanModuleServer::Exemplar(iom, QCoreApplication::applicationDirPath(), beVers);
}

bool ZanUpdateModule::controllerIsUpToDate()
{
    const ZanModuleServer* inventory = server(iom, beVers);
    if (inventory->listUpdates.isEmpty())
        return true;
    return isExemptFromStartPrompt(beVers) || inventory->allControllersUpToDate(true);
}

bool ZanUpdateModule::camerasUpToDate()
{
    return server(iom, beVers)->allCamerasUpToDate();
}

// All doubt goes to the side of a valid address: only a proven fallback brings the warning.
bool ZanUpdateModule::hasZanValidIP()
{
    ReplyBuffer<> reply;
    if (iom->get_string(reply.forReply(), "system net") != 0 || !reply.equals("dhcp"))
        return true;
    iom->get_address(reply.forReply());
    const QString address = reply.latin1();
    const int factoryAddress[] = {192, 168, 0, 1};
    for (int i = 0; i < 4; ++i) {
        bool isNumber = false;
        const int number = address.section(QLatin1Char('.'), i, i).toInt(&isNumber);
        if (!isNumber || number != factoryAddress[i])
            return true;
    }
    return false;
}

void ZanUpdateModule::about_to_exit_module()
{
    OpenCall::whenNone(&ZanModuleServer::ReleaseExemplar);
}

void ZanUpdateModule::exit_module()
{
    if (OpenCall::isAny()) {
        m_isLeaving = true;
        gui_elements.clear();
        if (m_new_feature_dialog && m_new_feature_dialog->isVisible())
            m_new_feature_dialog->reject();
        if (zanUpdateDlg)
            zanUpdateDlg->leave();
    }
    OpenCall::whenNone([module = QPointer<ZanUpdateModule>(this)] {
        if (module)
            module->deleteDialogs();
    });
}

void ZanUpdateModule::deleteDialogs()
{
    for (GuiElement* element : {&gui_whatisnew, &gui_zanUpdateDlg})
        delete std::exchange(element->content, nullptr);
    m_new_feature_dialog = nullptr;
    zanUpdateDlg = nullptr;
    gui_elements.clear();
    m_isLeaving = false;
}

// A widget tells of its end before it deletes its children, so that they can still leave it.
void ZanUpdateModule::exitBehindParent(QObject* parent)
{
    if (mod_parent == parent)
        mod_parent = nullptr;
    if (!m_new_feature_dialog || m_new_feature_dialog->parent() != parent)
        return;
    exit_module();
    if (m_new_feature_dialog)
        m_new_feature_dialog->setParent(nullptr, m_new_feature_dialog->windowFlags());
    // In the middle of its construction the update dialog is not known yet.
    if (auto* dialog =
            parent->findChild<ZanUpdateModule2GSettingsdlg*>(QString(), Qt::FindDirectChildrenOnly))
        dialog->outliveParent();
}
