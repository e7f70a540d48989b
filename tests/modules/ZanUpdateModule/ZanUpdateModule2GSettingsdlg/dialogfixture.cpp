#include "dialogfixture.h"

#include <ZanController.h>
#include <ZanData.h>
#include <ZanDisplay.h>
#include <camupdatedata.h>
#include <imagewriter.h>
#include <privateaccess.h>

#include <QApplication>
#include <QDir>
#include <QTimer>

#include <algorithm>

ZAN_EXPOSE(hasCameraRow, &ZanModuleServer::bWithCameraUpdate);

// The dialog looks its home up once, at construction.
static QString moveHome(const FixtureFolder& files)
{
    QString home = files.makeFolder(QStringLiteral("home"));
    qputenv("HOME", QFile::encodeName(home));
    return home;
}

DialogFixture::DialogFixture(const Backend& backend)
    : m_home(moveHome(m_files)),
      backend(backend.pt, backend.protocol, VersionInfo(1, 0), backend.model),
      viewer(nullptr, &this->backend),
      dialog(&channel, nullptr, &this->backend, QStringLiteral("v1.2.3"), &viewer)
{
}

DialogFixture::~DialogFixture()
{
    ZanModuleServer::ReleaseExemplar();
}

QString DialogFixture::deliver(const QString& fileName, const UpdateFile& file)
{
    return m_programFolder.deliverUpdate(fileName, updateFileBytes(file));
}

ZanModuleServer* DialogFixture::inventory()
{
    return ZanModuleServer::Exemplar(&channel, QCoreApplication::applicationDirPath(), &backend);
}

ZanModuleServer* DialogFixture::refreshedInventory()
{
    inventory()->redo_fillListZanDisplay();
    return inventory();
}

static ZanController* added(ZanModuleServer* inventory, ZanController* controller)
{
    controller->currentPt = controller->getVersionLumasolver();
    controller->currentCt = controller->getVersionController();
    inventory->listZanController.append(controller);
    return controller;
}

ZanController* DialogFixture::addMaster(const ScriptedController& controller)
{
    scriptMaster(&channel, controller);
    return added(inventory(), new ZanController(&channel, &backend, QString(), false));
}

ZanController* DialogFixture::addSlave(const ScriptedSlave& slave)
{
    scriptSlaves(&channel, {slave});
    const QString address = QString::fromLatin1(slave.address);
    return added(inventory(), new ZanController(&channel, &backend, address, true));
}

ZanDisplay* DialogFixture::addRow(ZanController* controller, const ControllerImage& image)
{
    const QString name = QStringLiteral("image%1").arg(++m_fileCount);
    auto* data = new ZanData(m_files.write(name, controllerImageBytes(image)));
    inventory()->listUpdates.append(data);
    auto* row = new ZanDisplay(controller, data);
    row->setToBeUpdated(Qt::Checked);
    inventory()->listZanDisplay.append(row);
    return row;
}

ZanDisplay* DialogFixture::addCameraRow(const CameraUpdateFile& file)
{
    const QString name = QStringLiteral("camera%1.VX2znimg").arg(++m_fileCount);
    auto* data = new CamUpdateData(m_files.write(name, cameraUpdateBytes(file)));
    inventory()->listCamUpdates.append(data);
    auto* row = new ZanDisplay(data, 0, QStringLiteral("0x0a01"), QStringLiteral("C100"),
                               QStringLiteral("Camera"), VersionInfo(1, 0, 0), false);
    inventory()->listZanDisplay.append(row);
    hasCameraRow(*inventory()) = true;
    return row;
}

QLabel* DialogFixture::label(const char* name) const
{
    return dialog.findChild<QLabel*>(QLatin1String(name));
}

QProgressBar* DialogFixture::bar() const
{
    return dialog.findChild<QProgressBar*>(QStringLiteral("progressBar"));
}

QTableWidget* DialogFixture::table() const
{
    return dialog.findChild<QTableWidget*>(QStringLiteral("tableWidget"));
}

QPushButton* DialogFixture::updateButton() const
{
    return dialog.findChild<QPushButton*>(QStringLiteral("pushButton_update"));
}

QPushButton* DialogFixture::exitButton() const
{
    return dialog.findChild<QPushButton*>(QStringLiteral("pushButton_exit"));
}

static QFileInfoList openFiles()
{
    return QDir(QStringLiteral("/proc/self/fd"))
        .entryInfoList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot);
}

int openFileCount()
{
    return openFiles().size();
}

bool isFileOpen(const QString& path)
{
    const QString target = QFileInfo(path).canonicalFilePath();
    if (target.isEmpty())
        return false;
    const QFileInfoList files = openFiles();
    return std::any_of(files.begin(), files.end(),
                       [&](const QFileInfo& file) { return file.symLinkTarget() == target; });
}

bool makesApplicationQuit(const std::function<void()>& act)
{
    static constexpr int NOT_QUIT = 1;
    // As with the host's main window, which stays when the dialog closes.
    QGuiApplication::setQuitOnLastWindowClosed(false);
    QTimer giveUp;
    giveUp.setSingleShot(true);
    QObject::connect(&giveUp, &QTimer::timeout, [] { QCoreApplication::exit(NOT_QUIT); });
    QTimer::singleShot(0, qApp, [&] {
        act();
        // Late enough that the event loop notices a quit first.
        giveUp.start(50);
    });
    return QCoreApplication::exec() != NOT_QUIT;
}
