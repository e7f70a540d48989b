#pragma once

#include <deliverycheck.h>

#include <QElapsedTimer>
#include <QObject>

class QWidget;

/// Stands before the module: checks the delivered update files against their seal, tells the user
/// what departs from it, and keeps the module out where the delivery must be proven and is not.
class DeliveryGate : public QObject
{
    Q_OBJECT

public:
    /// @param window parent of the message boxes; must outlive the gate
    explicit DeliveryGate(QWidget& window);

    /// From now on only a delivery that is signed with this key lets the module in.
    /// @param keyOrFile,error as DeliveryCheck::setPublicKey() has them
    bool setPublicKey(const QString& keyOrFile, QString* error)
    {
        return m_check.setPublicKey(keyOrFile, error);
    }

    /// Whether a delivery must be proven.
    bool asksForProof() const { return m_check.hasPublicKey(); }

    /// Checks what the module would read, and shows a message box if the user should know. Events
    /// are served meanwhile, those of the user only by the box.
    /// @param applicationDir folder that the program stands in
    /// @return whether the module may be loaded and come in
    bool letsIn(const QString& applicationDir);

signals:
    /// A line for the log.
    void message(const QString& text);
    /// How far a check is that takes a while, in percent.
    void progressed(int percent);

private:
    void tell(const DeliveryReport& report, bool letsIn);

    QWidget& m_window;
    DeliveryCheck m_check;
    QElapsedTimer m_sinceEvents;
};
