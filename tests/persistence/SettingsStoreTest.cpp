#include "persistence/SettingsStore.h"
#include "persistence/InMemorySettingsRepository.h"

#include <QMetaProperty>
#include <QSignalSpy>

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

TEST(SettingsStoreTest, EveryPropertyHasItsKeyItsDefaultAndItsSignal)
{
    const struct {
        const char *property;
        const char *key;
        SettingsValue stored; // another value than the default
    } rows[] = {
        {"onboardingComplete", "onboardingComplete", true},
        {"showMenuBarIcon", "showMenuBarIcon", false},
        {"reduceAnimation", "reduceAnimation", true},
        {"galleryBackdrop", "galleryBackdrop", u"dunes"_s},
        {"hostedChatEnabled", "hostedChatEnabled", false},
        {"privateCloudThinksLonger", "privateCloudThinksLonger", true},
        {"hostedRelayEncrypted", "hostedRelayEncrypted", true},
        {"hostedRelayModel", "hostedRelayModel", u"m"_s},
        {"hostedRelayStateKnown", "hostedRelayStateKnown", true},
        {"chatHistoryOpen", "chatHistoryOpen", false},
        {"providerName", "providerName", u"Mine"_s},
        {"baseURLString", "aiBaseURL", u"https://models.invalid/v1"_s},
        {"model", "aiModel", u"m"_s},
        {"temperature", "aiTemperature", 0.25},
        {"maxOutputTokens", "aiMaxOutputTokens", std::int64_t{-5}},
        {"voiceOutputEnabled", "voiceOutputEnabled", true},
        {"speakingRate", "speakingRate", 7.5},
        {"autoSendTranscription", "autoSendTranscription", true},
        {"speakCodeBlocks", "speakCodeBlocks", true},
        {"abilitiesEnabled", "abilitiesEnabled", false},
        {"memoryEnabled", "memoryEnabled", false},
        {"webAccessEnabled", "webAccessEnabled", false},
        {"screenAwarenessEnabled", "screenAwarenessEnabled", true},
        {"desktopActionsEnabled", "desktopActionsEnabled", true},
        {"appLockEnabled", "appLockEnabled", true},
        {"appLockIdleMinutes", "appLockIdleMinutes", std::int64_t{0}},
        {"maxContextMessages", "maxContextMessages", std::int64_t{1}},
        {"maxExtractedCharacters", "maxExtractedCharacters", std::int64_t{2}},
        {"autoSummarizeDroppedFiles", "autoSummarizeDroppedFiles", true},
    };
    const auto asVariant = [](const SettingsValue &value) {
        return std::visit([](const auto &typed) { return QVariant::fromValue(typed); }, value);
    };
    const QMetaObject &meta = SettingsStore::staticMetaObject;
    EXPECT_EQ(meta.propertyCount() - meta.propertyOffset(), 37);
    for (const auto &[name, key, stored] : rows) {
        InMemorySettingsRepository repository;
        const QMetaProperty property = meta.property(meta.indexOfProperty(name));
        SettingsStore store(repository);
        EXPECT_NE(property.read(&store), asVariant(stored)) << name;

        QSignalSpy changed(&store, property.notifySignal());
        EXPECT_TRUE(property.write(&store, asVariant(stored))) << name;
        EXPECT_TRUE(property.write(&store, asVariant(stored))) << name;
        EXPECT_EQ(changed.count(), 1) << name;
        EXPECT_EQ(repository.value(QString::fromLatin1(key)), stored) << name;
        EXPECT_EQ(property.read(std::make_unique<SettingsStore>(repository).get()), asVariant(stored))
            << name;

        repository.removeAll();
        store.reload();
        EXPECT_EQ(changed.count(), 2) << name;
    }
}

TEST(SettingsStoreTest, Defaults)
{
    InMemorySettingsRepository repository;
    const SettingsStore store(repository);
    EXPECT_TRUE(store.webAccessEnabled());
    EXPECT_EQ(store.baseURLString(), u"http://localhost:11434/v1"_s);
    EXPECT_EQ(store.providerName(), u"OpenAI-compatible"_s);
    EXPECT_EQ(store.temperature(), 0.7);
    EXPECT_EQ(store.speakingRate(), 0.5);
    EXPECT_EQ(store.maxOutputTokens(), 1024);
    EXPECT_EQ(store.maxContextMessages(), 30);
    EXPECT_EQ(store.maxExtractedCharacters(), 100'000);
    EXPECT_EQ(store.appLockIdleMinutes(), 5);
    EXPECT_EQ(store.chatShortcut(), ShortcutPreset::optionSpace);
    EXPECT_EQ(store.pushToTalkShortcut(), ShortcutPreset::optionV);
    EXPECT_EQ(store.chatTextSize(), ChatTextSize::medium);
    EXPECT_EQ(store.conversationRetention(), ConversationRetention::forever);
    EXPECT_EQ(store.selectedCharacterID(), std::nullopt);
    EXPECT_TRUE(repository.keys().isEmpty()); // reading writes nothing
}

TEST(SettingsStoreTest, ReadsByType)
{
    InMemorySettingsRepository repository;
    repository.setBoolean(u"webAccessEnabled"_s, false);
    repository.setString(u"appearance"_s, u"sepia"_s);
    repository.setString(u"chatTextSize"_s, u"large"_s);
    repository.setString(u"aiMaxOutputTokens"_s, u"5"_s);
    repository.setInteger(u"aiTemperature"_s, 1);
    repository.setInteger(u"memoryEnabled"_s, 0);
    repository.setString(u"voiceIdentifier"_s, QString());
    const SettingsStore store(repository);
    EXPECT_FALSE(store.webAccessEnabled());
    EXPECT_EQ(store.appearance(), AppAppearance::system);
    EXPECT_EQ(store.chatTextSize(), ChatTextSize::large);
    EXPECT_EQ(store.maxOutputTokens(), 1024);
    EXPECT_EQ(store.temperature(), 0.7);
    EXPECT_TRUE(store.memoryEnabled());
    EXPECT_EQ(store.voiceIdentifier(), QString());
}

TEST(SettingsStoreTest, EnumerationsAndAbsenceAreWrittenThrough)
{
    InMemorySettingsRepository repository;
    SettingsStore store(repository);
    store.setAppearance(AppAppearance::gallery);
    store.setMicrophoneUID(u"mic"_s);
    EXPECT_EQ(repository.string(u"appearance"_s), u"gallery"_s);
    EXPECT_EQ(repository.string(u"microphoneUID"_s), u"mic"_s);
    store.setMicrophoneUID(std::nullopt);
    EXPECT_EQ(repository.value(u"microphoneUID"_s), std::nullopt);
}

TEST(SettingsStoreTest, LegacyPersonaOfAnOlderBuild)
{
    const QByteArray three = R"({"fox":{"name":"Fox","personality":"sly"},
                                 "companion":{"name":"Pal","personality":"kind"},
                                 "ant":{"name":"Ant","personality":"busy"}})";
    const QByteArray noCompanion =
        R"({"b":{"name":"B","personality":"2"},"a":{"name":"A","personality":"1"}})";
    using Persona = SettingsStore::LegacyPersona;
    const struct {
        const char *what;
        std::optional<QString> prompt;
        std::optional<QByteArray> personas;
        std::optional<QString> character;
        std::optional<Persona> expected;
    } cases[] = {
        {"nothing", {}, {}, {}, {}},
        {"empty", u""_s, "{}", {}, {}},
        {"instructions only", u"Be brief"_s, {}, {}, Persona{u"Be brief"_s, {}, {}}},
        {"broken personas", u"Be brief"_s, "{\"fox\":1}", {}, Persona{u"Be brief"_s, {}, {}}},
        {"selected", u"I"_s, three, u"fox"_s, Persona{u"I"_s, u"Fox"_s, u"sly"_s}},
        {"companion", {}, three, u"owl"_s, Persona{{}, u"Pal"_s, u"kind"_s}},
        {"first", {}, noCompanion, {}, Persona{{}, u"A"_s, u"1"_s}},
    };
    for (const auto &[what, prompt, personas, character, expected] : cases) {
        InMemorySettingsRepository repository;
        if (prompt)
            repository.setString(u"customSystemPrompt"_s, *prompt);
        if (personas)
            repository.setData(u"characterPersonas"_s, *personas);
        if (character)
            repository.setString(u"selectedCharacterID"_s, *character);
        EXPECT_EQ(SettingsStore(repository).legacyPersona(), expected) << what;
    }
}

} // namespace

} // namespace morvane
