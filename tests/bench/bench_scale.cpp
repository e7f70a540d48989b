// How the opening of the update dialog, and the first look at the update files, grow with the
// installation: with slaves that take a chain of releases, with cameras, and with files. The time
// that the calls of the channel take is measured apart and left out. The files lie beside the
// program while it runs.

#include "ZanUpdateModule2GSettingsdlg.h"
#include "imagewriter.h"
#include "newfeaturedialog.h"
#include "programfolder.h"
#include "scriptedcascade.h"
#include "scriptedchannel.h"
#include "stopwatch.h"
#include "testenvironment.h"
#include "zanmoduleserver.h"

#include <BackendVersions>

#include <QApplication>
#include <QTableWidget>
#include <QTimer>

#include <cstdio>

static constexpr int RELEASES = 12;
static constexpr int CAMERAS = 40;
static constexpr int FILES = 500;
static constexpr int ROUNDS = 60;

/// The dialog with its inventory on a scripted host.
class Installation
{
public:
    Installation(int slaves, int cameras)
    {
        const bool areControllersBehind = cameras == 0;
        ScriptedController controller;
        controller.pt = areControllersBehind ? "v3.0.0" : "v3.12.0";
        scriptMaster(&m_channel, controller);
        QList<ScriptedSlave> all;
        for (int number = 1; number <= slaves; ++number)
            all += {"10.0.0." + QByteArray::number(number), controller, "yes"};
        scriptSlaves(&m_channel, all);
        scriptCameras(&m_channel, QList<ScriptedCamera>::fromVector(
                                      QVector<ScriptedCamera>(cameras, ScriptedCamera())));
        readFiles();
    }
    ~Installation() { ZanModuleServer::ReleaseExemplar(); }
    Installation(const Installation&) = delete;
    Installation& operator=(const Installation&) = delete;

    /// Makes the inventory, which reads the files.
    void readFiles()
    {
        ZanModuleServer::ReleaseExemplar();
        m_inventory = ZanModuleServer::Exemplar(&m_channel, QCoreApplication::applicationDirPath(),
                                                &m_versions);
    }
    void refreshInventory() { m_inventory->redo_fillListZanDisplay(); }
    void openDialog()
    {
        QTimer::singleShot(0, &m_dialog, &QDialog::reject);
        m_dialog.update_and_exec();
    }
    /// The seconds of @p work beside the calls of the channel.
    double ownSeconds(const std::function<void()>& work)
    {
        m_channel.takeLog();
        work();
        const QStringList calls = m_channel.takeLog();
        const double whole = shortestSeconds<ProcessorClock>(ROUNDS, work);
        m_channel.takeLog();
        return whole - shortestSeconds<ProcessorClock>(ROUNDS, [&] { repeat(calls); });
    }
    int rows() const { return m_dialog.findChild<QTableWidget*>()->rowCount(); }

private:
    void repeat(const QStringList& calls)
    {
        for (const QString& call : calls) {
            const QByteArray text = call.section(QLatin1Char('"'), 1, 1).toLatin1();
            char value[200];
            int number = 0;
            if (call.startsWith(QLatin1String("get_int")))
                m_channel.get_int(&number, "%s", text.constData());
            else
                m_channel.get_string(value, "%s", text.constData());
        }
    }

    ScriptedChannel m_channel;
    BackendVersions m_versions{VersionInfo(3, 0, 0), VersionInfo(1, 23), VersionInfo(1, 0),
                               QStringLiteral("ZAN")};
    NewFeatureDialog m_viewer{nullptr, &m_versions};
    ZanUpdateModule2GSettingsdlg m_dialog{&m_channel, nullptr, &m_versions, QStringLiteral("bench"),
                                          &m_viewer};
    ZanModuleServer* m_inventory = nullptr;
};

static void deliverReleases(const ProgramFolder& folder)
{
    for (int i = 1; i <= RELEASES; ++i) {
        ControllerImageBlock block;
        block.minVer = VersionInfo(3, i - 1, 0);
        block.maxVer = VersionInfo(3, i - 1, 99);
        ControllerImage image;
        image.release = image.newPt = VersionInfo(3, i, 0);
        image.newCt = VersionInfo(1, 0);
        image.minPt = VersionInfo(0, 0, 0);
        image.minCt = VersionInfo(0, 0);
        image.blocks = {block};
        folder.deliverUpdate(QStringLiteral("release%1").arg(i), controllerImageBytes(image));
    }
}

static void deliverCameraFiles(const ProgramFolder& folder, int begin, int end)
{
    for (int i = begin; i < end; ++i) {
        CameraUpdateFile file;
        file.models = {0x0901};
        file.newVer = VersionInfo(1, 1, i);
        file.minVer = VersionInfo(0, 0, 0);
        folder.deliverUpdate(QStringLiteral("camera%1.VX2znimg").arg(i), cameraUpdateBytes(file));
    }
}

static void report(const QString& what, double value)
{
    std::printf("%-58s %8.3f   goal: about 1 at most\n", qPrintable(what), value);
}

/// Own time of one step of growth, set against the growth itself.
class Growth
{
public:
    explicit Growth(QString what) : m_what(std::move(what)) {}
    /// @param count of the devices or files. @param amount of what the work goes with
    void add(int count, int amount, double seconds)
    {
        if (m_amount > 0) {
            report(
                QStringLiteral("%1, %2 / %3, share of linear").arg(m_what).arg(count).arg(m_count),
                seconds / m_seconds * m_amount / amount);
        }
        m_count = count;
        m_amount = amount;
        m_seconds = seconds;
    }

private:
    QString m_what;
    int m_count = 0;
    int m_amount = 0;
    double m_seconds = 0;
};

static void measureSlaves()
{
    const ProgramFolder folder;
    deliverReleases(folder);
    Growth inventory(QStringLiteral("refreshed inventory by slaves"));
    Growth opening(QStringLiteral("opening of the dialog by slaves"));
    for (const int slaves : {1, 8, 64}) {
        Installation installation(slaves, 0);
        installation.openDialog();
        if (installation.rows() != (slaves + 1) * RELEASES)
            qFatal("the rows are not those of the installation");
        inventory.add(slaves, installation.rows(),
                      installation.ownSeconds([&] { installation.refreshInventory(); }));
        opening.add(slaves, installation.rows(),
                    installation.ownSeconds([&] { installation.openDialog(); }));
    }
}

static void measureCameras()
{
    const ProgramFolder folder;
    deliverReleases(folder);
    deliverCameraFiles(folder, 0, 2);
    Growth opening(QStringLiteral("opening of the dialog by cameras"));
    for (const int cameras : {CAMERAS / 4, CAMERAS / 2, CAMERAS}) {
        Installation installation(0, cameras);
        installation.openDialog();
        if (installation.rows() != cameras * 2)
            qFatal("the rows are not those of the cameras");
        opening.add(cameras, cameras, installation.ownSeconds([&] { installation.openDialog(); }));
    }
}

static void measureFiles()
{
    const ProgramFolder folder;
    deliverReleases(folder);
    Growth reading(QStringLiteral("first look at the files"));
    int delivered = RELEASES;
    for (const int files : {FILES / 4, FILES / 2, FILES, FILES * 2}) {
        deliverCameraFiles(folder, delivered, files);
        delivered = files;
        Installation installation(0, 0);
        reading.add(files, files, installation.ownSeconds([&] { installation.readFiles(); }));
    }
}

int main(int argc, char** argv)
{
    const TestEnvironment environment;
    QApplication application(argc, argv);
    measureSlaves();
    measureCameras();
    measureFiles();
    return 0;
}
