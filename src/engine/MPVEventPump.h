#pragma once

#include "model/MediaInfo.h"

#include <mpv/client.h>
#include <QObject>

class MPVDecoder;

/// Lives on the decoder's event thread and drains libmpv's event queue there. Event data is
/// only valid until the next mpv_wait_event, so everything is copied into the player's own
/// types here, on this thread, and each reaction is queued to the decoder on the GUI thread.
///
/// Reports that describe a file carry the playlist entry libmpv started last, so that the
/// decoder can drop the ones of a file that has since been replaced. The technical summary of
/// the file is gathered from many property reports and handed over once per drain.
class MPVEventPump : public QObject
{
    Q_OBJECT

public:
    /// `mpv` and `decoder` outlive the pump: the decoder stops the event thread before it
    /// destroys either.
    MPVEventPump(mpv_handle* mpv, MPVDecoder* decoder);

    /// The properties the pump follows, with the formats it asks for. Observed once by the
    /// decoder at start.
    static void observeProperties(mpv_handle* mpv);

public Q_SLOTS:
    /// Handles every pending event, then returns (scheduled by libmpv's wakeup callback).
    void drain();

private:
    void handleEvent(const mpv_event& event);
    void handlePropertyChange(const mpv_event_property& property);
    bool updateMediaInfo(const mpv_event_property& property);
    template <typename Reaction> void toDecoder(Reaction&& reaction);

    mpv_handle* const m_mpv;
    MPVDecoder* const m_decoder;
    qint64 m_startedEntryId = -1; // the playlist entry libmpv started last
    MediaInfo m_mediaInfo;        // as the property reports have built it so far
    bool m_mediaInfoChanged = false;
};
