#pragma once

#include <fixturefiles.h>

#include <QStringList>

#include <functional>

/// What one run of a program left behind.
struct ProgramRun
{
    int exitCode;
    QString out;
    QString messages;
};

/// Runs a program to its end in @p folder; ends the test program if it cannot be run.
ProgramRun runIn(const QString& folder, const QString& program, const QStringList& arguments,
                 const QByteArray& input = QByteArray());

QByteArray contentOf(const QString& path);

/// Keys that `minisign -G -W` made, and what it signed with the first of them.
namespace sample {

constexpr char publicKey[] = "RWS3TUNxwVsgaqDrSBIymoYCtbvD06LrPaGEzUFgGJgb8h1lHEx33aTW";
constexpr char publicKeyFile[] = "untrusted comment: minisign public key 6A205BC171434DB7\n"
                                 "RWS3TUNxwVsgaqDrSBIymoYCtbvD06LrPaGEzUFgGJgb8h1lHEx33aTW\n";
constexpr char secretKeyFile[] =
    "untrusted comment: minisign encrypted secret key\n"
    "RWQAAEIyAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAt01DccFbIGqym4ZHLVrM9O"
    "ZNZ6KFZ0z24V1F4ZN+"
    "7FBZkNjlnP1ZFqDrSBIymoYCtbvD06LrPaGEzUFgGJgb8h1lHEx33aTWAAAAAAAAAAAAAAAAAAAAAAAA"
    "AAAAAAAAAAAAAAAAAAA=\n";
constexpr char otherPublicKey[] = "RWSCP2gUbEcpP5oJbPgHrEu8utVzO8//pzk5uV7A0jLtmh1k/VNA5uDw";

constexpr char message[] = "x";
constexpr char signatureOfHash[] =
    "untrusted comment: signature from minisign secret key\n"
    "RUS3TUNxwVsgalLUh/VFWu9UxlzBQFdwsotZmZtsIKcgKzHuFyroqitO0QpaXj/"
    "NIAFlhQyp+MevtvoWFgMZHdpOkXk44SoXJA"
    "c=\n"
    "trusted comment: timestamp:1795316785\tfile:f\thashed\n"
    "R79+3GGeP1f8w34oZQ0Gs8c3X9Tt/Z1VP3/iIQYobvdzWYXvlL5ycoDDLOoxORaUQlmRYM14vHHJznXp3Rz4Bw==\n";
constexpr char signatureOfBytes[] =
    "untrusted comment: signature from minisign secret key\n"
    "RWS3TUNxwVsganNlOzf3XLokOM3OkU/em2V7irU6gmcurqe016K6lLwPGecQJ/"
    "dvAGzyA6aUlAKc1kjYcdgjDWAaHZn297L47g"
    "8=\n"
    "trusted comment: timestamp:1795316785\tfile:f\n"
    "j6MeSX//UGwK33qwyXbNNJVKMQ91VhM0Dd7DHELJKxzAcIoMbDsREezHNnJoCk5sU+CILBbNNhPWMGs9JiBfDw==\n";

} // namespace sample

/// The file of the sample's secret key with the bytes below its comment changed.
QByteArray changedSecretKey(const std::function<void(QByteArray*)>& change);

/// The file of the sample's secret key under a password, as `minisign -G` would hide it, only that
/// the password costs less.
QByteArray hiddenKey(const QByteArray& password);
