#include "endpoint.h"

QString Endpoint::text() const
{
    const bool hasColons = address.protocol() == QAbstractSocket::IPv6Protocol;
    return (hasColons ? QStringLiteral("[%1]:%2") : QStringLiteral("%1:%2"))
        .arg(address.toString(), QString::number(port));
}

std::optional<Endpoint> Endpoint::read(const QString& text)
{
    const int colon = text.lastIndexOf(QLatin1Char(':'));
    QString host = text.left(qMax(0, colon));
    if (host.startsWith(QLatin1Char('[')) && host.endsWith(QLatin1Char(']')))
        host = host.mid(1, host.size() - 2);
    if (host == QLatin1String("localhost"))
        host = QStringLiteral("127.0.0.1");

    Endpoint endpoint;
    bool isPort = false;
    endpoint.port = text.mid(colon + 1).toUShort(&isPort);
    if (!isPort || !endpoint.address.setAddress(host))
        return std::nullopt;
    return endpoint;
}
