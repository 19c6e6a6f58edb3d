#pragma once

#include "models/AppAppearance.h"
#include "models/ChatTextSize.h"
#include "models/ConversationRetention.h"
#include "models/ShortcutPreset.h"
#include "persistence/Setting.h"

#include <QObject>
#include <QThread>

#include <functional>
#include <vector>

namespace morvane {

// A setting with its getter, its setter, its signal and its key in the repository.
#define MORVANE_STORED(Type, name, Name, key, initial)                                                       \
public:                                                                                                      \
    [[nodiscard]] const Type &name() const                                                                   \
    {                                                                                                        \
        return m_##name.value;                                                                               \
    }                                                                                                        \
    void set##Name(const Type &value)                                                                        \
    {                                                                                                        \
        change(m_##name, value, &SettingsStore::name##Changed);                                              \
    }                                                                                                        \
    Q_SIGNAL void name##Changed();                                                                           \
                                                                                                             \
private:                                                                                                     \
    Setting<Type> m_##name =                                                                                 \
        declare<Type>(&SettingsStore::m_##name, key, initial, &SettingsStore::name##Changed);

// One that a page binds to as it is. A whole number is an `int` there.
#define MORVANE_SETTING(Type, name, Name, key, initial)                                                      \
    Q_PROPERTY(Type name READ name WRITE set##Name NOTIFY name##Changed)                                     \
    MORVANE_STORED(Type, name, Name, key, initial)

#define MORVANE_NUMBER(name, Name, key, initial)                                                             \
    Q_PROPERTY(int name READ name WRITE set##Name NOTIFY name##Changed)                                      \
    MORVANE_STORED(std::int64_t, name, Name, key, initial)

// One of a few, which pages know by its raw text. A text that no case carries changes nothing.
#define MORVANE_CHOICE(Type, name, Name, key, initial)                                                       \
    Q_PROPERTY(QString name READ name##Text WRITE set##Name##Text NOTIFY name##Changed)                      \
    MORVANE_STORED(Type, name, Name, key, initial)                                                           \
public:                                                                                                      \
    [[nodiscard]] QString name##Text() const                                                                 \
    {                                                                                                        \
        return rawText(m_##name.value);                                                                      \
    }                                                                                                        \
    void set##Name##Text(const QString &raw)                                                                 \
    {                                                                                                        \
        if (const auto value = fromRawText<Type>(raw))                                                       \
            set##Name(*value);                                                                               \
    }

// Every preference of the person, read once and written through on each change. The pages of the settings
// bind to it. No setter checks or limits a value: whoever reads a number applies its own floor. Equal values
// don't notify. Main thread only.
class SettingsStore final : public QObject {
    Q_OBJECT

public:
    // What an older build held as the persona of its ghost.
    struct LegacyPersona {
        QString instructions;
        QString name;
        QString personality;

        bool operator==(const LegacyPersona &) const = default;
    };

    // The repository outlives the store.
    explicit SettingsStore(SettingsRepository &repository, QObject *parent = nullptr);

    // Reads everything anew, after the repository was emptied.
    void reload();

    // The persona that an older build had selected; nothing when there was none.
    [[nodiscard]] std::optional<LegacyPersona> legacyPersona() const;

    // Takes it out of the repository, for whoever gave its texts another place.
    void forgetLegacyPersona();

    [[nodiscard]] static QString versionText();

private:
    using Signal = void (SettingsStore::*)();

    template <typename T>
    Setting<T> declare(Setting<T> SettingsStore::*member, const char *key,
                       const std::type_identity_t<T> &initial, Signal changed)
    {
        m_reloads.push_back([this, member, changed] {
            const auto &setting = this->*member;
            assign(this->*member, stored(setting.key, setting.initial), changed);
        });
        const QString name = QString::fromLatin1(key);
        return {name, initial, stored(name, initial)};
    }

    template <typename T>
    [[nodiscard]] T stored(const QString &key, const T &initial) const
    {
        return SettingCoding<T>::read(m_repository, key).value_or(initial);
    }

    template <typename T>
    void assign(Setting<T> &setting, const T &value, Signal changed)
    {
        if (setting.value == value)
            return;
        setting.value = value;
        Q_EMIT(this->*changed)();
    }

    template <typename T>
    void change(Setting<T> &setting, const T &value, Signal changed)
    {
        Q_ASSERT(QThread::currentThread() == thread());
        SettingCoding<T>::write(m_repository, setting.key, value);
        assign(setting, value, changed);
    }

    SettingsRepository &m_repository;
    std::vector<std::function<void()>> m_reloads; // one for each setting

    // clang-format off
    MORVANE_SETTING(bool, onboardingComplete, OnboardingComplete, "onboardingComplete", false)
    MORVANE_SETTING(bool, showMenuBarIcon, ShowMenuBarIcon, "showMenuBarIcon", true)
    MORVANE_SETTING(bool, reduceAnimation, ReduceAnimation, "reduceAnimation", false)
    MORVANE_CHOICE(AppAppearance, appearance, Appearance, "appearance", AppAppearance::system)
    MORVANE_SETTING(QString, galleryBackdrop, GalleryBackdrop, "galleryBackdrop", QString())
    MORVANE_CHOICE(ShortcutPreset, chatShortcut, ChatShortcut, "chatShortcut", ShortcutPreset::optionSpace)
    MORVANE_SETTING(QString, chatShortcutKeys, ChatShortcutKeys, "chatShortcutKeys", QString())
    MORVANE_CHOICE(ShortcutPreset, pushToTalkShortcut, PushToTalkShortcut, "pushToTalkShortcut", ShortcutPreset::optionV)
    MORVANE_SETTING(QString, pushToTalkShortcutKeys, PushToTalkShortcutKeys, "pushToTalkShortcutKeys", QString())
    MORVANE_STORED(std::optional<QString>, selectedCharacterID, SelectedCharacterID, "selectedCharacterID", std::nullopt)
    MORVANE_SETTING(bool, hostedChatEnabled, HostedChatEnabled, "hostedChatEnabled", true)
    MORVANE_SETTING(bool, privateCloudThinksLonger, PrivateCloudThinksLonger, "privateCloudThinksLonger", false)
    MORVANE_SETTING(bool, hostedRelayEncrypted, HostedRelayEncrypted, "hostedRelayEncrypted", false)
    MORVANE_SETTING(QString, hostedRelayModel, HostedRelayModel, "hostedRelayModel", QString())
    MORVANE_SETTING(bool, hostedRelayStateKnown, HostedRelayStateKnown, "hostedRelayStateKnown", false)
    MORVANE_CHOICE(ChatTextSize, chatTextSize, ChatTextSize, "chatTextSize", ChatTextSize::medium)
    MORVANE_NUMBER(zoomPercent, ZoomPercent, "zoomPercent", 100)
    MORVANE_SETTING(bool, chatHistoryOpen, ChatHistoryOpen, "chatHistoryOpen", true)
    MORVANE_NUMBER(chatHistoryWidth, ChatHistoryWidth, "chatHistoryWidth", 280)
    MORVANE_SETTING(QString, providerName, ProviderName, "providerName", QStringLiteral("OpenAI-compatible"))
    MORVANE_SETTING(QString, baseURLString, BaseURLString, "aiBaseURL", QStringLiteral("http://localhost:11434/v1"))
    MORVANE_STORED(QString, apiKeyOrigin, ApiKeyOrigin, "aiKeyOrigin", QString())
    MORVANE_SETTING(QString, model, Model, "aiModel", QString())
    MORVANE_SETTING(double, temperature, Temperature, "aiTemperature", 0.7)
    MORVANE_NUMBER(maxOutputTokens, MaxOutputTokens, "aiMaxOutputTokens", 1024)
    MORVANE_SETTING(bool, voiceOutputEnabled, VoiceOutputEnabled, "voiceOutputEnabled", false)
    MORVANE_STORED(std::optional<QString>, voiceIdentifier, VoiceIdentifier, "voiceIdentifier", std::nullopt)
    MORVANE_STORED(std::optional<QString>, microphoneUID, MicrophoneUID, "microphoneUID", std::nullopt)
    MORVANE_SETTING(QString, speechModelPath, SpeechModelPath, "speechModelPath", QString())
    MORVANE_SETTING(double, speakingRate, SpeakingRate, "speakingRate", 0.5)
    MORVANE_SETTING(bool, autoSendTranscription, AutoSendTranscription, "autoSendTranscription", false)
    MORVANE_SETTING(bool, speakCodeBlocks, SpeakCodeBlocks, "speakCodeBlocks", false)
    MORVANE_SETTING(bool, abilitiesEnabled, AbilitiesEnabled, "abilitiesEnabled", true)
    MORVANE_SETTING(bool, memoryEnabled, MemoryEnabled, "memoryEnabled", true)
    MORVANE_SETTING(bool, webAccessEnabled, WebAccessEnabled, "webAccessEnabled", true)
    MORVANE_SETTING(bool, screenAwarenessEnabled, ScreenAwarenessEnabled, "screenAwarenessEnabled", false)
    MORVANE_SETTING(bool, desktopActionsEnabled, DesktopActionsEnabled, "desktopActionsEnabled", false)
    MORVANE_STORED(std::optional<QString>, eventCalendarID, EventCalendarID, "eventCalendarID", std::nullopt)
    MORVANE_SETTING(bool, appLockEnabled, AppLockEnabled, "appLockEnabled", false)
    MORVANE_NUMBER(appLockIdleMinutes, AppLockIdleMinutes, "appLockIdleMinutes", 5)
    MORVANE_NUMBER(maxContextMessages, MaxContextMessages, "maxContextMessages", 30)
    MORVANE_NUMBER(maxExtractedCharacters, MaxExtractedCharacters, "maxExtractedCharacters", 100000)
    MORVANE_CHOICE(ConversationRetention, conversationRetention, ConversationRetention, "conversationRetention", ConversationRetention::forever)
    MORVANE_SETTING(bool, autoSummarizeDroppedFiles, AutoSummarizeDroppedFiles, "autoSummarizeDroppedFiles", false)
    // clang-format on
};

} // namespace morvane
