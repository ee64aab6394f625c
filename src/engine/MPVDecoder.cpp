#include "MPVDecoder.h"

#include "base/Completion.h"
#include "base/Log.h"
#include "infrastructure/mpv/MPVCommand.h"
#include "infrastructure/mpv/MPVProperties.h"
#include "model/MediaFiles.h"
#include "MPVEventPump.h"

#include <chrono>
#include <clocale>
#include <QFile>

namespace {

// Long enough for a slow network share or a spun-down disk; a stream that has sent nothing by
// then is not going to play.
constexpr std::chrono::seconds kLoadTimeout{20};

struct Option
{
    const char* name;
    const char* value;
};

// Kept in a fixed order so that a configuration is always applied the same way.
constexpr Option kOptions[] = {
    {MPVName::vo, "libmpv"},
    {MPVName::config, "no"},
    {MPVName::inputDefaultBindings, "no"},
    {MPVName::inputVoKeyboard, "no"},
    {MPVName::hwdec, "auto"},
    {MPVName::osdLevel, "0"},
    {MPVName::keepOpen, "yes"},
    {MPVName::ytdl, "no"},
    {MPVName::idle, "yes"},
    {MPVName::inputMediaKeys, "no"},
    {MPVName::toneMapping, "auto"},
    {MPVName::hdrComputePeak, "auto"},
    {MPVName::targetColorspaceHint, "auto"},
    {MPVName::subAuto, "fuzzy"},
    {MPVName::hrSeek, "yes"},
    {MPVName::hrSeekFramedrop, "yes"},
    // libmpv's built-in Lua scripts (statistics page, console, on-screen controller, profile
    // conditions) each run a Lua state on a thread of their own; nothing here uses them, and
    // they cost start-up time and memory.
    {MPVName::loadScripts, "no"},
    {MPVName::loadStatsOverlay, "no"},
    {MPVName::loadOsdConsole, "no"},
    {MPVName::loadAutoProfiles, "no"},
    {MPVName::osc, "no"},
    // The name the desktop's sound settings show for the player's stream.
    {MPVName::audioClientName, "VelmarPlayer"},
};

QString mpvErrorText(int status)
{
    return QString::fromUtf8(mpv_error_string(status));
}

QByteArray seconds(double value)
{
    return QByteArray::number(value, 'f', 3);
}

} // namespace

MPVDecoder::MPVDecoder(QObject* parent)
    : QObject(parent)
{
    m_eventThread.setObjectName(QStringLiteral("org.velmar.VelmarPlayer.mpv.events"));
    m_loadTimeout.setSingleShot(true);
    m_loadTimeout.setInterval(kLoadTimeout);
    connect(&m_loadTimeout, &QTimer::timeout, this, [this] {
        // Stop libmpv's attempt too, so a late open cannot start playing behind an error.
        stop();
        finishLoad(LoadOutcome::Kind::TimedOut);
    });
    setupMPV();
}

MPVDecoder::~MPVDecoder()
{
    if (m_mpv)
        mpv_set_wakeup_callback(m_mpv, nullptr, nullptr);
    m_eventThread.quit();
    m_eventThread.wait();
    delete m_eventPump;
    m_eventPump = nullptr;

    // Whoever still waits learns that the decoder is gone.
    finishLoad(LoadOutcome::Kind::Superseded);
    finishSeek();
    m_pendingResults.clear(); // each delivers its fallback, a failure

    // The renderer holds a client handle of its own, so the core lives on (and its render
    // context stays valid) until the renderer lets go as well.
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
    MPVEventPump::observeProperties(m_mpv);
    mpv_request_log_messages(m_mpv, "error");

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

// MARK: commands

void MPVDecoder::setProperty(const char* name, mpv_format format, void* data)
{
    // libmpv copies the value; its reply is not needed.
    if (m_mpv)
        mpv_set_property_async(m_mpv, 0, name, format, data);
}

void MPVDecoder::setMPVString(const char* name, const QString& value)
{
    const QByteArray utf8 = value.toUtf8();
    const char* text = utf8.constData();
    setProperty(name, MPV_FORMAT_STRING, &text);
}

QCoro::Task<int> MPVDecoder::commandResult(QList<QByteArray> args)
{
    if (!m_mpv)
        co_return MPV_ERROR_UNINITIALIZED;
    const quint64 request = ++m_lastRequest;
    auto pending = std::make_shared<PendingResult>(MPV_ERROR_GENERIC);
    auto result = pending->result();
    MPVCommand command(args);
    const int sent = mpv_command_async(m_mpv, request, command.data());
    if (sent < 0)
        co_return sent;
    // Moved, not copied: a copy kept here would keep the completion alive after the decoder
    // is gone, and this coroutine would wait forever instead of learning of the failure.
    m_pendingResults.emplace(request, std::move(pending));
    // The decoder may be gone when this resumes; the result is then a failure.
    const int status = co_await result;
    co_return status;
}

QCoro::Task<MPVDecoder::LoadOutcome> MPVDecoder::load(const QUrl& url)
{
    if (!m_mpv)
        throw MPVError::notInitialized();

    // Whoever waited for the previous file learns that it was replaced.
    finishLoad(LoadOutcome::Kind::Superseded);
    finishSeek();
    m_loadRequest = ++m_lastRequest;
    m_entryId = -1;
    m_tracks.clear();
    clearChapters();
    m_pendingLoad = std::make_unique<velmar::Completion<LoadOutcome>>(LoadOutcome{});
    auto opened = m_pendingLoad->result();

    MPVCommand command(QList<QByteArray>{
        MPVName::loadfile, url.isLocalFile() ? MediaFiles::localPath(url) : url.toEncoded()});
    const int status = mpv_command_async(m_mpv, m_loadRequest, command.data());
    if (status < 0)
        finishLoad(LoadOutcome::Kind::Failed, mpvErrorText(status));
    else
        m_loadTimeout.start();
    // The decoder may be gone when this resumes; the outcome then says "superseded".
    const LoadOutcome outcome = co_await opened;
    co_return outcome;
}

void MPVDecoder::finishLoad(LoadOutcome::Kind kind, const QString& reason)
{
    if (!m_pendingLoad)
        return;
    m_loadTimeout.stop();
    // Moved out first, so that a load started by whoever resumes finds none pending.
    const std::unique_ptr<velmar::Completion<LoadOutcome>> pending = std::move(m_pendingLoad);
    pending->complete(LoadOutcome{kind, reason});
}

void MPVDecoder::stop()
{
    MPVCommand command(QList<QByteArray>{MPVName::stop});
    if (m_mpv)
        mpv_command_async(m_mpv, 0, command.data());
    clearChapters(); // nothing is open any more
}

velmar::Completion<bool>& MPVDecoder::startSeek(double target)
{
    finishSeek();
    m_pendingSeek = std::make_unique<velmar::Completion<bool>>(false);
    MPVCommand command(QList<QByteArray>{MPVName::seek, seconds(target), MPVName::seekAbsolute,
                                         MPVName::seekExact});
    mpv_command_async(m_mpv, 0, command.data());
    m_currentTime = target;
    return *m_pendingSeek;
}

void MPVDecoder::finishSeek()
{
    if (const std::unique_ptr<velmar::Completion<bool>> pending = std::move(m_pendingSeek))
        pending->complete(true);
}

QCoro::Task<void> MPVDecoder::seek(double target)
{
    if (!m_mpv)
        co_return;
    auto landed = startSeek(target).result();
    co_await landed;
}

void MPVDecoder::scrub(double target)
{
    if (m_mpv)
        startSeek(target);
}

void MPVDecoder::seekRelativeFast(double offset)
{
    if (!m_mpv)
        return;
    MPVCommand command(QList<QByteArray>{MPVName::seek, seconds(offset), MPVName::seekRelative,
                                         MPVName::seekKeyframes});
    mpv_command_async(m_mpv, 0, command.data());
    // Minimum first, then maximum: with no known duration the estimate stays at 0.
    m_currentTime = std::max(0.0, std::min(m_duration, m_currentTime + offset));
}

void MPVDecoder::frameStep(bool forward)
{
    MPVCommand command(QList<QByteArray>{forward ? MPVName::frameStep : MPVName::frameBackStep});
    if (m_mpv)
        mpv_command_async(m_mpv, 0, command.data());
}

void MPVDecoder::setPaused(bool paused)
{
    int flag = paused ? 1 : 0;
    setProperty(MPVName::pause, MPV_FORMAT_FLAG, &flag);
}

void MPVDecoder::setVolume(float volume)
{
    m_volume = volume;
    double percent = double(volume) * 100.0;
    setProperty(MPVName::volume, MPV_FORMAT_DOUBLE, &percent);
}

void MPVDecoder::setMuted(bool muted)
{
    m_isMuted = muted;
    int flag = muted ? 1 : 0;
    setProperty(MPVName::mute, MPV_FORMAT_FLAG, &flag);
}

void MPVDecoder::setSpeed(float rate)
{
    m_rate = rate;
    double speed = double(rate);
    setProperty(MPVName::speed, MPV_FORMAT_DOUBLE, &speed);
}

void MPVDecoder::setAudioDelay(double delay)
{
    m_audioDelay = delay;
    setProperty(MPVName::audioDelay, MPV_FORMAT_DOUBLE, &delay);
}

void MPVDecoder::setRotation(int degrees)
{
    // libmpv takes 0…359 only; -90 is the same turn as 270.
    int64_t value = ((degrees % 360) + 360) % 360;
    setProperty(MPVName::videoRotate, MPV_FORMAT_INT64, &value);
}

void MPVDecoder::setPicture(const PictureSettings& picture)
{
    // The core keeps these from file to file; only a change is worth sending (each filter
    // edit, and each file's restored settings, arrive here as a whole).
    if (picture == m_picture)
        return;
    m_picture = picture;
    // libmpv 0.35 keeps its picture controls as whole numbers and refuses other formats.
    int64_t brightness = picture.brightness;
    int64_t contrast = picture.contrast;
    int64_t saturation = picture.saturation;
    setProperty(MPVName::brightness, MPV_FORMAT_INT64, &brightness);
    setProperty(MPVName::contrast, MPV_FORMAT_INT64, &contrast);
    setProperty(MPVName::saturation, MPV_FORMAT_INT64, &saturation);
    setMPVString(MPVName::videoFilters, picture.videoFilters);
    int deband = picture.deband ? 1 : 0;
    setProperty(MPVName::deband, MPV_FORMAT_FLAG, &deband);
    if (picture.deband && picture.debandThreshold) {
        int64_t threshold = *picture.debandThreshold;
        setProperty(MPVName::debandThreshold, MPV_FORMAT_INT64, &threshold);
    }
}

void MPVDecoder::selectAudioTrack(qint64 id)
{
    int64_t value = id;
    setProperty(MPVName::aid, MPV_FORMAT_INT64, &value);
}

void MPVDecoder::selectSubtitleTrack(qint64 id)
{
    if (id == 0) {
        setMPVString(MPVName::sid, QStringLiteral("no"));
        return;
    }
    int64_t value = id;
    setProperty(MPVName::sid, MPV_FORMAT_INT64, &value);
}

QCoro::Task<bool> MPVDecoder::addSubtitle(const QByteArray& path)
{
    QCoro::Task<int> adding = commandResult({MPVName::subAdd, path, MPVName::subAddSelect});
    const int status = co_await adding;
    co_return status >= 0;
}

void MPVDecoder::removeSubtitle(qint64 id)
{
    MPVCommand command(QList<QByteArray>{MPVName::subRemove, QByteArray::number(id)});
    if (m_mpv)
        mpv_command_async(m_mpv, 0, command.data());
}

QCoro::Task<bool> MPVDecoder::screenshot(const QString& path)
{
    QCoro::Task<int> writing = commandResult(
        {MPVName::screenshotToFile, QFile::encodeName(path), MPVName::screenshotVideoOnly});
    const int status = co_await writing;
    co_return status >= 0;
}

std::optional<MediaInfo> MPVDecoder::getMediaInfo() const
{
    if (!m_mpv)
        return std::nullopt;
    return m_mediaInfo;
}
