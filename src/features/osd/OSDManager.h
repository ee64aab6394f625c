#pragma once

#include "model/OSDMessage.h"

#include <optional>
#include <QObject>
#include <QTimer>
#include <QtQml/qqmlregistration.h>
#include <QVariant>

/// Holds the one message on screen. A new message replaces the shown one at once and restarts
/// the display time, so a burst (a held volume key) shows only the newest. GUI thread only.
class OSDManager : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Owned by the playback engine")
    /// The message as an osdMessage, or undefined when nothing is shown.
    Q_PROPERTY(QVariant currentMessage READ currentMessageVariant NOTIFY currentMessageChanged)

public:
    explicit OSDManager(QObject* parent = nullptr);

    std::optional<OSDMessage> currentMessage() const { return m_currentMessage; }
    QVariant currentMessageVariant() const;

    /// Shows the message for the given number of seconds.
    void show(const OSDMessage& message, double seconds = 1.5);

Q_SIGNALS:
    void currentMessageChanged();

private:
    void setCurrentMessage(const std::optional<OSDMessage>& message);

    std::optional<OSDMessage> m_currentMessage;
    QTimer m_dismissTimer;
};
