#pragma once

#include <mpv/client.h>
#include <QByteArray>
#include <QObject>
#include <QString>

class MPVDecoder;

/// A property change copied out of libmpv's event buffer, which is only valid until the next
/// mpv_wait_event call. `hasData` is false when libmpv reported the property as unavailable.
struct MPVPropertyChange
{
    QByteArray name;
    mpv_format format = MPV_FORMAT_NONE;
    bool hasData = false;
    bool flag = false;
    qint64 int64 = 0;
    double number = 0;
    QString text;
};

/// Lives on the decoder's event thread and drains libmpv's event queue there. It only reads the
/// handle and the events; every reaction is queued to the decoder on the GUI thread.
class MPVEventPump : public QObject
{
    Q_OBJECT

public:
    /// `mpv` and `decoder` outlive the pump: the decoder stops the event thread before it
    /// destroys either.
    MPVEventPump(mpv_handle* mpv, MPVDecoder* decoder);

public Q_SLOTS:
    /// Handles every pending event, then returns (scheduled by libmpv's wakeup callback).
    void drain();

private:
    void handleEvent(const mpv_event& event);
    template <typename Reaction> void toDecoder(Reaction&& reaction);

    mpv_handle* const m_mpv;
    MPVDecoder* const m_decoder;
};
