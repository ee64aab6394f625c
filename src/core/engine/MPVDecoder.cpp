#include "MPVDecoder.h"

#include "features/hdr/HDRManager.h"
#include "features/track/TrackManager.h"
#include "infrastructure/logging/Log.h"
#include "MPVEventPump.h"
#include "MPVProperties.h"
#include <mpv/render_gl.h>

#include <chrono>
#include <clocale>
#include <QCoroSignal>
#include <QCoroTimer>
#include <vector>

namespace {

constexpr std::chrono::milliseconds kSettlePause{100};
constexpr std::chrono::milliseconds kLoadSettleTimeout{5000};

const char* const kApiTypeOpenGL = MPV_RENDER_API_TYPE_OPENGL;

struct Option
{
    const char* name;
    const char* value;
};

// Order matters to libmpv only for options that depend on each other, but it is kept fixed so
// that a configuration is always applied the same way.
constexpr Option kOptions[] = {
    {"vo", "libmpv"},
    {"config", "no"},
    {"input-default-bindings", "no"},
    {"input-vo-keyboard", "no"},
    {"hwdec", "auto"},
    {"osd-level", "0"},
    {"keep-open", "yes"},
    {"ytdl", "no"},
    {"idle", "yes"},
    {"input-media-keys", "no"},
    {"tone-mapping", "auto"},
    {"hdr-compute-peak", "auto"},
    {"target-colorspace-hint", "auto"},
    {"sub-auto", "fuzzy"},
    {"hr-seek", "yes"},
    {"hr-seek-framedrop", "yes"},
};

struct ObservedProperty
{
    const char* name;
    mpv_format format;
};

constexpr ObservedProperty kObservedProperties[] = {
    {MPVName::pause, MPV_FORMAT_FLAG},       {MPVName::timePos, MPV_FORMAT_DOUBLE},
    {MPVName::duration, MPV_FORMAT_DOUBLE},  {MPVName::eofReached, MPV_FORMAT_FLAG},
    {MPVName::primaries, MPV_FORMAT_STRING}, {MPVName::gamma, MPV_FORMAT_STRING},
    {MPVName::trackCount, MPV_FORMAT_INT64}, {MPVName::aid, MPV_FORMAT_INT64},
    {MPVName::sid, MPV_FORMAT_INT64},
};

QString mpvErrorText(int status)
{
    return QString::fromUtf8(mpv_error_string(status));
}

/// Owns NUL-terminated copies of the arguments plus the terminating null entry.
class CommandArguments
{
public:
    explicit CommandArguments(const QStringList& args)
    {
        m_storage.reserve(size_t(args.size()));
        for (const QString& arg : args)
            m_storage.push_back(arg.toUtf8());
        for (const QByteArray& bytes : m_storage)
            m_pointers.push_back(bytes.constData());
        m_pointers.push_back(nullptr);
    }

    const char** data() { return m_pointers.data(); }

private:
    std::vector<QByteArray> m_storage;
    std::vector<const char*> m_pointers;
};

QString formatSeconds(double seconds)
{
    return QString::asprintf("%.3f", seconds);
}

} // namespace

MPVDecoder::MPVDecoder(QObject* parent)
    : QObject(parent)
{
    m_eventThread.setObjectName(QStringLiteral("org.velmar.VelmarPlayer.mpv.events"));
    setupMPV();
}

MPVDecoder::~MPVDecoder()
{
    if (m_isShuttingDown)
        return;
    m_isShuttingDown = true;

    if (m_mpv)
        mpv_set_wakeup_callback(m_mpv, nullptr, nullptr);
    m_eventThread.quit();
    m_eventThread.wait();
    delete m_eventPump;
    m_eventPump = nullptr;

    // Normally the video renderer has freed the render context on its own thread already; this
    // is the fallback for a renderer that never got the chance. libmpv requires it to go first.
    if (mpv_render_context* context = m_renderContext.exchange(nullptr)) {
        mpv_render_context_set_update_callback(context, nullptr, nullptr);
        mpv_render_context_free(context);
    }
    if (m_mpv) {
        mpv_destroy(m_mpv);
        m_mpv = nullptr;
    }
}

void MPVDecoder::setupMPV()
{
    // libmpv refuses to run unless numbers are formatted the C way; Qt may have changed it.
    std::setlocale(LC_NUMERIC, "C");

    m_mpv = mpv_create();
    if (!m_mpv) {
        velmar::logLine(QStringLiteral("[MPVDecoder] mpv_create() failed"));
        return;
    }
    for (const Option& option : kOptions)
        checkError(mpv_set_option_string(m_mpv, option.name, option.value));
    checkError(mpv_initialize(m_mpv));
    for (const ObservedProperty& property : kObservedProperties)
        mpv_observe_property(m_mpv, 0, property.name, property.format);

    m_eventPump = new MPVEventPump(m_mpv, this);
    m_eventPump->moveToThread(&m_eventThread);
    m_eventThread.start();

    mpv_set_wakeup_callback(
        m_mpv,
        [](void* context) {
            // libmpv thread: never call libmpv here, only schedule a drain.
            if (!context)
                return;
            auto* decoder = static_cast<MPVDecoder*>(context);
            QMetaObject::invokeMethod(decoder->m_eventPump, &MPVEventPump::drain,
                                      Qt::QueuedConnection);
        },
        this);
}

void MPVDecoder::checkError(int status)
{
    if (status < 0)
        velmar::logLine(QStringLiteral("[MPVDecoder] mpv error: ") + mpvErrorText(status));
}

QCoro::Task<void> MPVDecoder::load(const QUrl& url)
{
    if (!m_mpv)
        throw MPVError::notInitialized();

    CommandArguments args({QStringLiteral("loadfile"), url.toLocalFile()});
    mpv_node result{};
    const int status = mpv_command_ret(m_mpv, args.data(), &result);
    if (status < 0)
        throw MPVError::commandFailed(mpvErrorText(status));
    if (result.format == MPV_FORMAT_NODE_MAP) {
        for (int i = 0; i < result.u.list->num; ++i) {
            if (qstrcmp(result.u.list->keys[i], "playlist_entry_id") == 0 &&
                result.u.list->values[i].format == MPV_FORMAT_INT64)
                m_currentEntryId = result.u.list->values[i].u.int64;
        }
    }
    mpv_free_node_contents(&result);

    // Seeks, track and duration reads made before libmpv has opened the file are lost, and on
    // a slow disk or a loaded machine opening takes longer than any fixed pause. So wait for the
    // file itself (but not so long that a stalled stream hangs the load), then a short pause for
    // the first reports of its playback to arrive, so they cannot overwrite a resume seek.
    QPointer<MPVDecoder> self(this);
    auto settled = qCoro(this, &MPVDecoder::fileSettled, kLoadSettleTimeout);
    co_await settled;
    if (!self)
        co_return;
    QCoro::Task<void> pause = QCoro::sleepFor(kSettlePause);
    co_await pause;
    if (!self)
        co_return;
    if (const auto duration = MPVProperty::readDouble(m_mpv, MPVName::duration))
        m_duration = *duration;
}

void MPVDecoder::seek(double seconds)
{
    if (!m_mpv)
        return;
    command({QStringLiteral("seek"), formatSeconds(seconds), QStringLiteral("absolute"),
             QStringLiteral("exact")});
    m_currentTime = seconds;
}

void MPVDecoder::scrub(double seconds)
{
    if (!m_mpv)
        return;
    commandAsync({QStringLiteral("seek"), formatSeconds(seconds), QStringLiteral("absolute"),
                  QStringLiteral("exact")});
    m_currentTime = seconds;
}

void MPVDecoder::seekRelativeFast(double offset)
{
    if (!m_mpv)
        return;
    commandAsync({QStringLiteral("seek"), formatSeconds(offset), QStringLiteral("relative"),
                  QStringLiteral("keyframes")});
    // Minimum first, then maximum: with no known duration the estimate stays at 0.
    m_currentTime = std::max(0.0, std::min(m_duration, m_currentTime + offset));
}

void MPVDecoder::setMPVString(const char* name, const QString& value)
{
    MPVProperty::writeString(m_mpv, name, value);
}

void MPVDecoder::setMPVDouble(const char* name, double value)
{
    MPVProperty::writeDouble(m_mpv, name, value);
}

void MPVDecoder::setMPVFlag(const char* name, bool value)
{
    MPVProperty::writeFlag(m_mpv, name, value);
}

void MPVDecoder::setMPVInt64(const char* name, qint64 value)
{
    MPVProperty::writeInt64(m_mpv, name, value);
}

int MPVDecoder::command(const QStringList& args)
{
    if (!m_mpv)
        return MPV_ERROR_UNINITIALIZED;
    CommandArguments arguments(args);
    return mpv_command(m_mpv, arguments.data());
}

void MPVDecoder::commandAsync(const QStringList& args)
{
    if (!m_mpv)
        return;
    CommandArguments arguments(args);
    mpv_command_async(m_mpv, 0, arguments.data());
}

void MPVDecoder::setHDRManager(HDRManager* manager)
{
    m_hdrManager = manager;
}

void MPVDecoder::setTrackManager(TrackManager* manager)
{
    m_trackManager = manager;
}

QList<MediaTrack> MPVDecoder::getTrackList() const
{
    const auto count = MPVProperty::readInt64(m_mpv, MPVName::trackCount);
    if (!count)
        return {};
    Q_ASSERT(*count >= 0);

    QList<MediaTrack> tracks;
    for (qint64 i = 0; i < *count; ++i) {
        const QByteArray prefix = "track-list/" + QByteArray::number(i) + '/';
        auto property = [&](const char* field) { return QByteArray(prefix + field); };

        const auto typeText = MPVProperty::readString(m_mpv, property("type"));
        if (!typeText)
            continue;
        const auto type = trackTypeFromString(*typeText);
        if (!type)
            continue;

        MediaTrack track;
        track.type = *type;
        track.id = MPVProperty::readInt64(m_mpv, property("id")).value_or(0);
        track.isDefault = MPVProperty::readFlag(m_mpv, property("default")).value_or(false);
        track.isExternal = MPVProperty::readFlag(m_mpv, property("external")).value_or(false);
        track.title = MPVProperty::readString(m_mpv, property("title"));
        track.lang = MPVProperty::readString(m_mpv, property("lang"));
        track.codec = MPVProperty::readString(m_mpv, property("codec"));
        tracks << track;
    }
    return tracks;
}

std::optional<MediaInfo> MPVDecoder::getMediaInfo() const
{
    if (!m_mpv)
        return std::nullopt;
    auto readInt = [this](const char* name) -> std::optional<int> {
        if (const auto value = MPVProperty::readInt64(m_mpv, name))
            return int(*value);
        return std::nullopt;
    };

    MediaInfo info;
    info.filename = MPVProperty::readString(m_mpv, "filename").value_or(QString());
    info.fileSize = MPVProperty::readInt64(m_mpv, "file-size");
    info.container = MPVProperty::readString(m_mpv, "file-format");
    info.videoCodec = MPVProperty::readString(m_mpv, "video-codec");
    info.width = readInt("width");
    info.height = readInt("height");
    info.fps = MPVProperty::readDouble(m_mpv, "container-fps");
    info.videoBitrate = readInt("video-bitrate");
    info.pixelFormat = MPVProperty::readString(m_mpv, "video-params/pixelformat");
    info.audioCodec = MPVProperty::readString(m_mpv, "audio-codec");
    info.audioChannels = readInt("audio-params/channel-count");
    info.audioSampleRate = readInt("audio-params/samplerate");
    info.audioBitrate = readInt("audio-bitrate");
    return info;
}

void MPVDecoder::initRenderContext(GetProcAddress getProcAddress)
{
    if (!m_mpv || m_renderContext.load())
        return;

    mpv_opengl_init_params glInit{getProcAddress, nullptr};
    // Advanced control stays off. With it, libmpv allocates every decoded frame and loads its
    // hardware interop on the render thread, and Qt Quick's render thread only runs when the
    // GUI thread schedules a frame: a GUI-thread property read during decoding (or a hidden
    // window) would then deadlock the player. Without it, libmpv never waits on our threads.
    int advancedControl = 0;
    mpv_render_param params[] = {
        {MPV_RENDER_PARAM_API_TYPE, const_cast<char*>(kApiTypeOpenGL)},
        {MPV_RENDER_PARAM_OPENGL_INIT_PARAMS, &glInit},
        {MPV_RENDER_PARAM_ADVANCED_CONTROL, &advancedControl},
        {MPV_RENDER_PARAM_INVALID, nullptr},
    };
    mpv_render_context* context = nullptr;
    const int status = mpv_render_context_create(&context, m_mpv, params);
    if (status < 0) {
        velmar::logLine(QStringLiteral("[MPVDecoder] mpv_render_context_create failed: ") +
                        mpvErrorText(status));
        return;
    }
    m_renderContext.store(context);
    velmar::logLine(QStringLiteral("[MPVDecoder] Render context created successfully"));
    mpv_render_context_set_update_callback(
        context,
        [](void* decoder) {
            // libmpv thread: only signal; receivers hop to their own thread.
            if (decoder)
                Q_EMIT static_cast<MPVDecoder*>(decoder)->renderUpdate();
        },
        this);
}

void MPVDecoder::freeRenderContext()
{
    if (mpv_render_context* context = m_renderContext.exchange(nullptr)) {
        mpv_render_context_set_update_callback(context, nullptr, nullptr);
        mpv_render_context_free(context);
    }
}

void MPVDecoder::applyPropertyChange(const MPVPropertyChange& change)
{
    const QByteArray& name = change.name;
    if (name == MPVName::pause) {
        if (change.format == MPV_FORMAT_FLAG && change.hasData)
            m_isPlaying = !change.flag;
    } else if (name == MPVName::timePos) {
        if (change.format == MPV_FORMAT_DOUBLE && change.hasData)
            m_currentTime = change.number;
    } else if (name == MPVName::duration) {
        if (change.format == MPV_FORMAT_DOUBLE && change.hasData)
            m_duration = change.number;
    } else if (name == MPVName::eofReached) {
        // Only the transition to true ends playback; a false report means nothing.
        if (change.format == MPV_FORMAT_FLAG && change.hasData && change.flag && onPlaybackDidEnd)
            onPlaybackDidEnd();
    } else if (name == MPVName::primaries || name == MPVName::gamma) {
        std::optional<QString> value;
        if (change.format == MPV_FORMAT_STRING && change.hasData)
            value = change.text;
        if (m_hdrManager)
            m_hdrManager->handlePropertyChange(QString::fromLatin1(name), value);
    } else if (name == MPVName::trackCount) {
        if (m_trackManager)
            m_trackManager->updateTracks(getTrackList());
    } else if (name == MPVName::aid) {
        if (change.format == MPV_FORMAT_INT64 && change.hasData && m_trackManager)
            m_trackManager->setCurrentAudioID(change.int64);
    } else if (name == MPVName::sid) {
        if (change.format == MPV_FORMAT_INT64 && change.hasData && m_trackManager)
            m_trackManager->setCurrentSubtitleID(change.int64);
    }
}

void MPVDecoder::applyFileLoaded()
{
    Q_EMIT fileSettled();
    if (!m_trackManager)
        return;
    m_trackManager->updateTracks(getTrackList());
    if (const auto aid = MPVProperty::readInt64(m_mpv, MPVName::aid))
        m_trackManager->setCurrentAudioID(*aid);
    if (const auto sid = MPVProperty::readInt64(m_mpv, MPVName::sid))
        m_trackManager->setCurrentSubtitleID(*sid);
}

void MPVDecoder::applyEndFile(int reason, int error, qint64 entryId)
{
    m_isPlaying = false;
    // An error for an entry other than the latest one belongs to a file already replaced.
    if (reason == MPV_END_FILE_REASON_ERROR && entryId == m_currentEntryId) {
        Q_EMIT fileSettled();
        Q_EMIT fileFailed(mpvErrorText(error));
    }
}
