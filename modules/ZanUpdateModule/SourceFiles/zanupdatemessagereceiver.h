#pragma once

#include <MessageReceiver>

#include <QObject>
#include <QString>

class IOManager;

/// The plug-in's end of the host's messages: turns each text into a signal, keeps no state.
///
/// Registered with the host under the name "UpdateModule"; docs/host-integration.md lists the
/// texts.
class ZanUpdateMessageReceiver : public QObject, public MessageReceiver
{
    Q_OBJECT

public:
    /// @param iom not kept
    ZanUpdateMessageReceiver(QObject* parent, IOManager* iom);
    ~ZanUpdateMessageReceiver() override;

    /// Emits the signal that belongs to the text, in the caller's thread.
    /// @param type ignored
    /// @param src  ignored
    /// @param msg  one of four keywords; any other text, null included, is the host's version
    /// @return 0
    int transmit_message(int type, const char* src, const char* msg) override;

signals:
    /// The host asks for the check for an old frontend or backend to be on or off.
    void sendCheckForOldFrontendOrBackend(bool);
    /// The version text of the host, as it came.
    void sendModuleParentVersion(QString);
    /// The host's theme changed to dark (true) or bright (false).
    void sendDarkThemeEnabled(bool);
};
