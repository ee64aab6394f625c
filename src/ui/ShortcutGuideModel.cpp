#include "ShortcutGuideModel.h"

#include "infrastructure/keybinding/KeyBindingManager.h"
#include "infrastructure/keybinding/QtKeyTranslation.h"

#include <array>
#include <QKeySequence>
#include <QVariantMap>

namespace {

enum class Section { Playback, Seeking, Sound, Picture, LoopAndBookmarks, Window };
constexpr int kSectionCount = int(Section::Window) + 1;

QString title(Section section)
{
    switch (section) {
    case Section::Playback:
        return QStringLiteral("Playback");
    case Section::Seeking:
        return QStringLiteral("Seeking");
    case Section::Sound:
        return QStringLiteral("Sound");
    case Section::Picture:
        return QStringLiteral("Picture and Subtitles");
    case Section::LoopAndBookmarks:
        return QStringLiteral("Loop and Bookmarks");
    case Section::Window:
        return QStringLiteral("Window");
    }
    return {};
}

// A switch without a default: a new action does not compile until it has its place here.
Section sectionOf(PlayerAction action)
{
    using A = PlayerAction;
    switch (action) {
    case A::togglePlayPause:
    case A::cyclePlaybackRate:
    case A::frameStepForward:
    case A::frameStepBackward:
    case A::playNext:
    case A::playPrevious:
        return Section::Playback;
    case A::seekForwardSmall:
    case A::seekBackwardSmall:
    case A::seekForwardLarge:
    case A::seekBackwardLarge:
        return Section::Seeking;
    case A::volumeUp:
    case A::volumeDown:
    case A::toggleMute:
    case A::audioDelayIncrease:
    case A::audioDelayDecrease:
    case A::audioDelayReset:
    case A::cycleAudioTrack:
        return Section::Sound;
    case A::cycleSubtitleTrack:
    case A::rotateVideo:
    case A::takeScreenshot:
        return Section::Picture;
    case A::setLoopA:
    case A::setLoopB:
    case A::clearLoop:
    case A::addBookmark:
    case A::nextBookmark:
    case A::previousBookmark:
        return Section::LoopAndBookmarks;
    case A::toggleFullScreen:
    case A::togglePiP:
        return Section::Window;
    }
    return Section::Window;
}

QVariantMap entry(const QString& name, const QString& keys)
{
    return {{QStringLiteral("name"), name}, {QStringLiteral("keys"), keys}};
}

QString native(QKeyCombination keys)
{
    return QKeySequence(keys).toString(QKeySequence::NativeText);
}

/// The keys the window handles itself, whatever the bindings say.
QVariantList windowKeys()
{
    return {entry(QStringLiteral("Open..."), native(Qt::CTRL | Qt::Key_O)),
            entry(QStringLiteral("Side Panel Tabs"), native(Qt::CTRL | Qt::Key_1) +
                                                         QStringLiteral(" \u2013 ") +
                                                         native(Qt::CTRL | Qt::Key_5)),
            entry(QStringLiteral("Close Panel or Guide"), native(QKeyCombination(Qt::Key_Escape))),
            entry(QStringLiteral("Settings..."), native(Qt::CTRL | Qt::Key_Comma)),
            entry(QStringLiteral("Quit"), native(Qt::CTRL | Qt::Key_Q))};
}

} // namespace

void ShortcutGuideModel::setManager(KeyBindingManager* manager)
{
    if (m_manager == manager)
        return;
    if (m_manager)
        disconnect(m_manager, nullptr, this, nullptr);
    m_manager = manager;
    if (m_manager)
        connect(m_manager, &KeyBindingManager::bindingsChanged, this,
                &ShortcutGuideModel::sectionsChanged);
    Q_EMIT managerChanged();
    Q_EMIT sectionsChanged();
}

QVariantList ShortcutGuideModel::sections() const
{
    std::array<QVariantList, kSectionCount> entries;
    if (m_manager) {
        for (PlayerAction action : PlayerActions::all()) {
            for (const KeyBinding& binding : m_manager->bindings()) {
                if (binding.action != action)
                    continue;
                QString keys = QtKeyTranslation::shortcutText(binding.keyCode, binding.modifiers);
                // The window's menu key does the same, whatever the binding.
                if (action == PlayerAction::toggleFullScreen)
                    keys += QStringLiteral(", ") + native(Qt::CTRL | Qt::Key_F);
                entries[int(sectionOf(action))] << entry(PlayerActions::displayName(action), keys);
                break;
            }
        }
    }
    entries[int(Section::Window)] << windowKeys();

    QVariantList sections;
    for (int section = 0; section < kSectionCount; ++section) {
        sections << QVariantMap{{QStringLiteral("title"), title(Section(section))},
                                {QStringLiteral("entries"), entries[section]}};
    }
    return sections;
}
