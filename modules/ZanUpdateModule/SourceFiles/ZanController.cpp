#include "ZanController.h"

#include "globaldefines.h"
#include "replybuffer.h"

#include <IOManager>

#include <utility>

ZanController::ZanController(IOManager* iom, BackendVersions* beVers, QString sIp, bool bSlave)
    : iom(iom), beVers(beVers), sIp(std::move(sIp)), bSlave(bSlave)
{
    updateVersions();
}

ZanController::ZanController(const ZanController& other)
{
    *this = other;
}

ZanController& ZanController::operator=(const ZanController& other)
{
    if (this == &other)
        return *this;
    iom = other.iom;
    beVers = other.beVers;
    sHostname = other.sHostname;
    systemmodel = other.systemmodel;
    sSystemModelDesc = other.sSystemModelDesc;
    iControllerSerial = other.iControllerSerial;
    sMainboardDesc = other.sMainboardDesc;
    sIp = other.sIp;
    bSlave = other.bSlave;
    sVerCt = other.sVerCt;
    sVerPt = other.sVerPt;
    verCt = other.verCt;
    verPt = other.verPt;
    sPreReleaseAppendix = other.sPreReleaseAppendix;
    bNeedUpdate = other.bNeedUpdate;
    return *this;
}

void ZanController::updateVersions()
{
    const QByteArray suffix =
        bSlave ? QStringLiteral("_slave %1").arg(sIp).toLatin1() : QByteArray("");
    queryHostname(suffix);
    queryVersions(suffix);
    splitPreReleaseAppendix();
    queryModel(suffix);
    querySerial();
    queryMainboard();
}

void ZanController::queryHostname(const QByteArray& suffix)
{
    ReplyBuffer<> reply;
    if (iom->get_string(reply.forReply(), "system hostname%s", suffix.constData()) != 0)
        reply.set("");
    sHostname = reply.utf8();
}

void ZanController::queryVersions(const QByteArray& suffix)
{
    ReplyBuffer<> reply;
    if (iom->get_string(reply.forReply(), "system controller_version%s", suffix.constData()) != 0)
        reply.set("v0.0.0");
    sVerCt = reply.latin1().section(QLatin1Char(' '), 0, 0);
    verCt = VersionInfo::fromString(sVerCt);

    if (iom->get_string(reply.forReply(), "system version%s", suffix.constData()) != 0)
        reply.set("v0.0.0 1970-01-01");
    sVerPt = reply.latin1().section(QLatin1Char(' '), 0, 0);
    verPt = VersionInfo::fromString(sVerPt);
}

void ZanController::splitPreReleaseAppendix()
{
    sPreReleaseAppendix = sVerPt;
    sVerPt = verPt.toString();
    sPreReleaseAppendix.remove(sVerPt);
    simplyfyPreReleaseAppendix(sPreReleaseAppendix);
}

void ZanController::queryModel(const QByteArray& suffix)
{
    ReplyBuffer<> reply;
    if (protocolAtLeast(beVers, PROTOCOL_SLAVE_MODEL)) {
        if (iom->get_int(&systemmodel, "system model%s", suffix.constData()) != 0)
            systemmodel = 0;
        if (iom->get_string(reply.forReply(), "system model_description%s", suffix.constData()) !=
            0)
            reply.set("ZAN");
    } else {
        // Controllers of older backends know no model of a slave: its record holds the master's.
        if (iom->get_int(&systemmodel, "system model") != 0)
            systemmodel = -1;
        if (iom->get_string(reply.forReply(), "system model_description") != 0)
            reply.set("UNKNOWN");
    }
    sSystemModelDesc = unquotedUtf8(reply);
}

void ZanController::querySerial()
{
    iControllerSerial = 0;
    if (!protocolAtLeast(beVers, PROTOCOL_CASCADE))
        return;
    if (!bSlave) {
        if (iom->get_int(&iControllerSerial, "system controller_serial") != 0)
            iControllerSerial = 0;
        return;
    }
    ReplyBuffer<> reply;
    if (iom->get_string(reply.forReply(), "cascade connected_slave_controller %s",
                        sIp.toLatin1().constData()) != 0)
        reply.set("hostname 0");
    // What is no number gives 0.
    iControllerSerial = reply.latin1().section(QLatin1Char(' '), 1, 1).toInt();
}

void ZanController::queryMainboard()
{
    ReplyBuffer<> reply;
    const bool isAsked = !bSlave && protocolAtLeast(beVers, PROTOCOL_MAINBOARD);
    if (!isAsked || iom->get_string(reply.forReply(), "system extra motherboard") != 0)
        reply.set("none");
    sMainboardDesc = unquotedUtf8(reply);
}

bool ZanController::setupRedirection()
{
    if (!protocolAtLeast(beVers, PROTOCOL_CASCADE))
        return true;
    if (bSlave)
        return iom->set_value("system redirect_update %s", sIp.toLatin1().constData()) == 0;
    return iom->set_value("system redirect_update none") == 0;
}

bool ZanController::isPreRelease() const
{
    return !sPreReleaseAppendix.isEmpty();
}

static QString preReleaseKind(const QString& appendix)
{
    for (const char* kind : {"alpha", "beta", "rc"}) {
        if (appendix.contains(QLatin1String(kind)))
            return QLatin1String(kind);
    }
    return QString();
}

static QString leadingDigits(const QString& text)
{
    int count = 0;
    while (count < text.size() && text.at(count).isDigit())
        ++count;
    return text.left(count);
}

void ZanController::simplyfyPreReleaseAppendix(QString& s)
{
    if (sPreReleaseAppendix.isEmpty())
        return;
    const QString kind = preReleaseKind(s);
    bool hasNumber = false;
    int number = leadingDigits(s.mid(s.indexOf(QLatin1Char('.')) + 1)).toInt(&hasNumber);
    if (!hasNumber)
        number = 99;
    s = QStringLiteral("-%1.%2").arg(kind).arg(number);
}
