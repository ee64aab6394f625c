#include "MPVEventPump.h"

#include "infrastructure/mpv/MPVNodes.h"
#include "infrastructure/mpv/MPVProperties.h"
#include "MPVDecoder.h"

#include <cstring>

namespace {

struct ObservedProperty
{
    const char* name;
    mpv_format format;
};

constexpr ObservedProperty kObserved[] = {
    {MPVName::pause, MPV_FORMAT_FLAG},         {MPVName::timePos, MPV_FORMAT_DOUBLE},
    {MPVName::duration, MPV_FORMAT_DOUBLE},    {MPVName::eofReached, MPV_FORMAT_FLAG},
    {MPVName::primaries, MPV_FORMAT_STRING},   {MPVName::gamma, MPV_FORMAT_STRING},
    {MPVName::trackList, MPV_FORMAT_NODE},     {MPVName::aid, MPV_FORMAT_INT64},
    {MPVName::sid, MPV_FORMAT_INT64},          {MPVName::filename, MPV_FORMAT_STRING},
    {MPVName::fileSize, MPV_FORMAT_INT64},     {MPVName::fileFormat, MPV_FORMAT_STRING},
    {MPVName::videoCodec, MPV_FORMAT_STRING},  {MPVName::width, MPV_FORMAT_INT64},
    {MPVName::height, MPV_FORMAT_INT64},       {MPVName::containerFps, MPV_FORMAT_DOUBLE},
    {MPVName::videoBitrate, MPV_FORMAT_INT64}, {MPVName::pixelFormat, MPV_FORMAT_STRING},
    {MPVName::audioCodec, MPV_FORMAT_STRING},  {MPVName::channelCount, MPV_FORMAT_INT64},
    {MPVName::sampleRate, MPV_FORMAT_INT64},   {MPVName::audioBitrate, MPV_FORMAT_INT64},
    {MPVName::chapterList, MPV_FORMAT_NODE},
};

bool is(const char* name, const char* expected)
{
    return std::strcmp(name, expected) == 0;
}

std::optional<QString> textOf(const mpv_event_property& p)
{
    if (p.format != MPV_FORMAT_STRING || !p.data)
        return std::nullopt;
    return QString::fromUtf8(*static_cast<char* const*>(p.data));
}

std::optional<qint64> integerOf(const mpv_event_property& p)
{
    if (p.format != MPV_FORMAT_INT64 || !p.data)
        return std::nullopt;
    return *static_cast<const int64_t*>(p.data);
}

std::optional<double> numberOf(const mpv_event_property& p)
{
    if (p.format != MPV_FORMAT_DOUBLE || !p.data)
        return std::nullopt;
    return *static_cast<const double*>(p.data);
}

std::optional<bool> flagOf(const mpv_event_property& p)
{
    if (p.format != MPV_FORMAT_FLAG || !p.data)
        return std::nullopt;
    return *static_cast<const int*>(p.data) != 0;
}

template <typename T, typename U> bool store(T& field, const U& value)
{
    if (field == value)
        return false;
    field = value;
    return true;
}

std::optional<int> narrow(const std::optional<qint64>& value)
{
    return value ? std::optional<int>(int(*value)) : std::nullopt;
}

} // namespace

MPVEventPump::MPVEventPump(mpv_handle* mpv, MPVDecoder* decoder)
    : m_mpv(mpv)
    , m_decoder(decoder)
{}

void MPVEventPump::observeProperties(mpv_handle* mpv)
{
    for (const ObservedProperty& property : kObserved)
        mpv_observe_property(mpv, 0, property.name, property.format);
}

void MPVEventPump::drain()
{
    if (!m_mpv)
        return;
    while (true) {
        const mpv_event* event = mpv_wait_event(m_mpv, 0);
        if (!event || event->event_id == MPV_EVENT_NONE)
            break;
        handleEvent(*event);
    }
    if (std::exchange(m_mediaInfoChanged, false)) {
        const qint64 entryId = m_startedEntryId;
        const MediaInfo info = m_mediaInfo;
        toDecoder([entryId, info](MPVDecoder* d) { d->applyMediaInfo(entryId, info); });
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
    case MPV_EVENT_COMMAND_REPLY: {
        const auto* command = static_cast<const mpv_event_command*>(event.data);
        const std::optional<qint64> entryId =
            command ? MPVNodes::mapInteger(command->result, "playlist_entry_id") : std::nullopt;
        const quint64 request = event.reply_userdata;
        const int error = event.error;
        toDecoder([request, error, entryId](MPVDecoder* d) {
            d->applyCommandReply(request, error, entryId.value_or(-1));
        });
        break;
    }
    case MPV_EVENT_START_FILE: {
        const auto* start = static_cast<const mpv_event_start_file*>(event.data);
        m_startedEntryId = start ? start->playlist_entry_id : -1;
        break;
    }
    case MPV_EVENT_FILE_LOADED: {
        // The duration is read here, off the GUI thread, and travels with the event so that
        // the load has it the moment it resumes.
        const qint64 entryId = m_startedEntryId;
        const std::optional<double> duration = MPVProperty::readDouble(m_mpv, MPVName::duration);
        toDecoder([entryId, duration](MPVDecoder* d) { d->applyFileLoaded(entryId, duration); });
        break;
    }
    case MPV_EVENT_END_FILE: {
        const auto* end = static_cast<const mpv_event_end_file*>(event.data);
        const int reason = end ? end->reason : MPV_END_FILE_REASON_STOP;
        const int error = end ? end->error : 0;
        const qint64 entryId = end ? end->playlist_entry_id : -1;
        toDecoder(
            [entryId, reason, error](MPVDecoder* d) { d->applyEndFile(entryId, reason, error); });
        break;
    }
    case MPV_EVENT_PLAYBACK_RESTART:
        toDecoder([](MPVDecoder* d) { d->applyPlaybackRestart(); });
        break;
    case MPV_EVENT_LOG_MESSAGE: {
        const auto* message = static_cast<const mpv_event_log_message*>(event.data);
        if (!message)
            break;
        const QString text = QString::fromUtf8(message->prefix) + QStringLiteral(": ") +
                             QString::fromUtf8(message->text).trimmed();
        toDecoder([text](MPVDecoder* d) { d->applyErrorLog(text); });
        break;
    }
    case MPV_EVENT_PROPERTY_CHANGE:
        if (const auto* property = static_cast<const mpv_event_property*>(event.data);
            property && property->name)
            handlePropertyChange(*property);
        break;
    default:
        break;
    }
}

void MPVEventPump::handlePropertyChange(const mpv_event_property& p)
{
    const qint64 entryId = m_startedEntryId;
    if (is(p.name, MPVName::pause)) {
        if (const auto paused = flagOf(p))
            toDecoder([playing = !*paused](MPVDecoder* d) { d->applyPlaying(playing); });
    } else if (is(p.name, MPVName::timePos)) {
        if (const auto seconds = numberOf(p))
            toDecoder([seconds = *seconds](MPVDecoder* d) { d->applyTimePosition(seconds); });
    } else if (is(p.name, MPVName::duration)) {
        if (const auto seconds = numberOf(p))
            toDecoder([seconds = *seconds](MPVDecoder* d) { d->applyDuration(seconds); });
    } else if (is(p.name, MPVName::eofReached)) {
        // Only the turn to true ends playback; a false report means nothing.
        if (flagOf(p).value_or(false))
            toDecoder([entryId](MPVDecoder* d) { d->applyEndReached(entryId); });
    } else if (is(p.name, MPVName::gamma)) {
        // Absent until libmpv knows the video's parameters; a null text says so.
        const QString name = textOf(p).value_or(QString());
        toDecoder([entryId, name](MPVDecoder* d) { d->applyTransferFunction(entryId, name); });
    } else if (is(p.name, MPVName::primaries)) {
        const QString name = textOf(p).value_or(QString());
        toDecoder([entryId, name](MPVDecoder* d) { d->applyPrimaries(entryId, name); });
    } else if (is(p.name, MPVName::trackList)) {
        if (p.format == MPV_FORMAT_NODE && p.data) {
            const QList<MediaTrack> tracks =
                MPVNodes::tracks(*static_cast<const mpv_node*>(p.data));
            toDecoder([entryId, tracks](MPVDecoder* d) { d->applyTracks(entryId, tracks); });
        }
    } else if (is(p.name, MPVName::chapterList)) {
        // The node is libmpv's until the next event: it is read into our own list here.
        const QList<Chapter> chapters =
            p.format == MPV_FORMAT_NODE && p.data
                ? MPVNodes::chapters(*static_cast<const mpv_node*>(p.data))
                : QList<Chapter>();
        toDecoder([entryId, chapters](MPVDecoder* d) { d->applyChapters(entryId, chapters); });
    } else if (is(p.name, MPVName::aid) || is(p.name, MPVName::sid)) {
        // "no" has no number: no track of that kind is selected.
        const TrackType type = is(p.name, MPVName::aid) ? TrackType::Audio : TrackType::Sub;
        const qint64 id = integerOf(p).value_or(0);
        toDecoder([entryId, type, id](MPVDecoder* d) { d->applySelectedTrack(entryId, type, id); });
    } else if (updateMediaInfo(p)) {
        m_mediaInfoChanged = true;
    }
}

bool MPVEventPump::updateMediaInfo(const mpv_event_property& p)
{
    MediaInfo& info = m_mediaInfo;
    if (is(p.name, MPVName::filename))
        return store(info.filename, textOf(p).value_or(QString()));
    if (is(p.name, MPVName::fileSize))
        return store(info.fileSize, integerOf(p));
    if (is(p.name, MPVName::fileFormat))
        return store(info.container, textOf(p));
    if (is(p.name, MPVName::videoCodec))
        return store(info.videoCodec, textOf(p));
    if (is(p.name, MPVName::width))
        return store(info.width, narrow(integerOf(p)));
    if (is(p.name, MPVName::height))
        return store(info.height, narrow(integerOf(p)));
    if (is(p.name, MPVName::containerFps))
        return store(info.fps, numberOf(p));
    if (is(p.name, MPVName::videoBitrate))
        return store(info.videoBitrate, narrow(integerOf(p)));
    if (is(p.name, MPVName::pixelFormat))
        return store(info.pixelFormat, textOf(p));
    if (is(p.name, MPVName::audioCodec))
        return store(info.audioCodec, textOf(p));
    if (is(p.name, MPVName::channelCount))
        return store(info.audioChannels, narrow(integerOf(p)));
    if (is(p.name, MPVName::sampleRate))
        return store(info.audioSampleRate, narrow(integerOf(p)));
    if (is(p.name, MPVName::audioBitrate))
        return store(info.audioBitrate, narrow(integerOf(p)));
    return false;
}
