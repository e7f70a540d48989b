#pragma once

#include <QHostAddress>
#include <QString>

#include <optional>

/// An end of a TCP connection.
struct Endpoint
{
    QHostAddress address{QHostAddress::LocalHost}; ///< IPv4 or IPv6
    quint16 port = 0;                              ///< 0: not told, or any that is free

    /// "127.0.0.1:4711", or "[::1]:4711" where the address has colons of its own.
    QString text() const;

    /// Reads what text() writes, and "localhost" for an address. No other name is looked up, as
    /// that could take long.
    /// @return nullopt if it is something else
    static std::optional<Endpoint> read(const QString& text);
};
