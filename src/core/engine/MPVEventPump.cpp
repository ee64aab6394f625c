#include "MPVEventPump.h"

#include "MPVDecoder.h"

MPVEventPump::MPVEventPump(mpv_handle* mpv, MPVDecoder* decoder)
    : m_mpv(mpv)
    , m_decoder(decoder)
{}

void MPVEventPump::drain()
{
    if (!m_mpv)
        return;
    while (true) {
        const mpv_event* event = mpv_wait_event(m_mpv, 0);
        if (!event || event->event_id == MPV_EVENT_NONE)
            return;
        handleEvent(*event);
    }
}

template <typename Reaction> void MPVEventPump::toDecoder(Reaction&& reaction)
{
    // Queued with the decoder as context: a reaction still pending when the decoder is
    // destroyed is dropped instead of running against freed state.
    QMetaObject::invokeMethod(
        m_decoder, [decoder = m_decoder, reaction]() { reaction(decoder); }, Qt::QueuedConnection);
}

void MPVEventPump::handleEvent(const mpv_event& event)
{
    switch (event.event_id) {
    case MPV_EVENT_END_FILE: {
        const auto* endFile = static_cast<const mpv_event_end_file*>(event.data);
        const int reason = endFile ? endFile->reason : MPV_END_FILE_REASON_STOP;
        const int error = endFile ? endFile->error : 0;
        const qint64 entryId = endFile ? endFile->playlist_entry_id : 0;
        toDecoder(
            [reason, error, entryId](MPVDecoder* d) { d->applyEndFile(reason, error, entryId); });
        break;
    }
    case MPV_EVENT_FILE_LOADED:
        toDecoder([](MPVDecoder* d) { d->applyFileLoaded(); });
        break;
    case MPV_EVENT_PROPERTY_CHANGE: {
        const auto* property = static_cast<const mpv_event_property*>(event.data);
        if (!property || !property->name)
            break;
        MPVPropertyChange change;
        change.name = property->name;
        change.format = property->format;
        change.hasData = property->data != nullptr;
        if (change.hasData) {
            switch (property->format) {
            case MPV_FORMAT_FLAG:
                change.flag = *static_cast<const int*>(property->data) != 0;
                break;
            case MPV_FORMAT_INT64:
                change.int64 = *static_cast<const int64_t*>(property->data);
                break;
            case MPV_FORMAT_DOUBLE:
                change.number = *static_cast<const double*>(property->data);
                break;
            case MPV_FORMAT_STRING:
                change.text = QString::fromUtf8(*static_cast<char* const*>(property->data));
                break;
            default:
                break;
            }
        }
        toDecoder([change](MPVDecoder* d) { d->applyPropertyChange(change); });
        break;
    }
    default:
        break;
    }
}
