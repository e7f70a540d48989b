#include "searchhardwaredlg.h"

#include "darktheme.h"
#include "hostlog.h"
#include "replybuffer.h"

#include <IOManager>

#include <QTimer>

#include <cstring>
#include <utility>

SearchHardwareDlg::SearchHardwareDlg(QWidget* parent, IOManager* iom, QString type)
    : QDialog(parent, Qt::WindowTitleHint | Qt::WindowSystemMenuHint), iom(iom),
      m_type(std::move(type))
{
    ui.setupUi(this);
    // The pictures are the host's; without them the label stays empty.
    ui.label_2->setPixmap(
        QPixmap(isDarkTheme(this) ? QStringLiteral(":/images/qmessagebox-info.png")
                                  : QStringLiteral(":/images/qmessagebox-info-brightmode.png")));
    calcTimeoutSeconds();
}

SearchHardwareDlg::~SearchHardwareDlg() = default;

void SearchHardwareDlg::calcTimeoutSeconds()
{
    timeoutSeconds = 15;
    int slaves = 0;
    if (iom->get_int(&slaves, "cascade number_of_connected_slaves") == 0 && slaves > 0)
        timeoutSeconds += 30;
    ReplyBuffer<> wolSlaves;
    if (iom->get_string(wolSlaves.forReply(), "cascade wol_slaves") == 0 && wolSlaves.equals("yes"))
        timeoutSeconds += 45;
    ui.label_4->setText(tr("This may take up to %1 seconds!").arg(timeoutSeconds));
}

int SearchHardwareDlg::update_and_exec()
{
    ui.label_searching->setText(QString());
    ui.progressBar->setMaximum(1);
    ui.progressBar->setEnabled(false);
    ui.pushButton_ok->setEnabled(true);
    ui.pushButton_cancel->setEnabled(true);
    if (m_type == QLatin1String("cameraupdate")) {
        ui.pushButton_ok->hide();
        ui.pushButton_cancel->hide();
        QTimer::singleShot(100, this, SLOT(on_pushButton_ok_clicked()));
    }
    // Larger fonts than usual may need more room than the form demands.
    resize(size().expandedTo(minimumSizeHint()));
    const int result = exec();
    // A quit of the application ends the loop before the timer; the reply still goes into m_res.
    if (m_isReplyDue)
        onTimer();
    return result;
}

void SearchHardwareDlg::on_pushButton_ok_clicked()
{
    setCursor(Qt::WaitCursor);
    ui.label_searching->setText(QStringLiteral("Searching..."));
    ui.progressBar->setMaximum(0);
    ui.progressBar->setEnabled(true);
    ui.pushButton_ok->setEnabled(false);
    ui.pushButton_cancel->setEnabled(false);
    // Cleared, so that what an earlier use left here cannot pass for a reply.
    std::memset(m_res, 0, sizeof m_res);
    iom->prepare_reply(1, timeoutSeconds * 1000, 0);
    m_isReplyDue = true;
    (void)iom->send_command(m_res, "vornix2 reinit");
    QTimer::singleShot(1000, this, SLOT(onTimer()));
}

void SearchHardwareDlg::onTimer()
{
    m_isReplyDue = false;
    // Waits for the outcome; the decision rests on the text alone.
    (void)iom->poll_reply(3);
    if (qstrncmp(m_res, "vornix2 ok", sizeof m_res) == 0)
        logToHost(iom, QStringLiteral("Search for new hardware...done"));
    else
        logToHost(iom, QStringLiteral("Error: Unable search for new hardware"));
    setCursor(Qt::ArrowCursor);
    accept();
}

void SearchHardwareDlg::on_pushButton_cancel_clicked()
{
    reject();
}

void SearchHardwareDlg::reject()
{
    if (ui.pushButton_cancel->isEnabled())
        QDialog::reject();
}
