#include "persistence/SettingsStore.h"
#include "persistence/InMemorySettingsRepository.h"

#include <QMetaProperty>
#include <QSignalSpy>

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// Another value than the one given. Of a choice it is another of its raw texts.
QVariant another(const QVariant &value)
{
    static const QHash<QString, QString> choices{{u"system"_s, u"dark"_s},
                                                 {u"optionSpace"_s, u"optionC"_s},
                                                 {u"optionV"_s, u"disabled"_s},
                                                 {u"medium"_s, u"large"_s},
                                                 {u"forever"_s, u"sevenDays"_s}};
    switch (value.typeId()) {
    case QMetaType::Bool:
        return !value.toBool();
    case QMetaType::Double:
        return value.toDouble() - 2;
    case QMetaType::Int:
        return value.toInt() - 2000;
    default:
        return choices.value(value.toString(), value.toString() + u"x"_s);
    }
}

TEST(SettingsStoreTest, EveryPropertyHasItsKeyItsDefaultAndItsSignal)
{
    QStringList found;
    const QMetaObject &meta = SettingsStore::staticMetaObject;
    for (int i = meta.propertyOffset(); i < meta.propertyCount(); ++i) {
        InMemorySettingsRepository repository;
        SettingsStore store(repository);
        const QMetaProperty property = meta.property(i);
        const QVariant initial = property.read(&store);
        const QVariant other = another(initial);
        SCOPED_TRACE(property.name());
        EXPECT_TRUE(repository.keys().isEmpty()); // reading writes nothing
        QSignalSpy changed(&store, property.notifySignal());
        EXPECT_TRUE(property.write(&store, other) && property.write(&store, other));
        EXPECT_EQ(changed.count(), 1);
        EXPECT_EQ(property.read(std::make_unique<SettingsStore>(repository).get()), other);
        found += repository.keys().join(u',') + u'=' + initial.toString();
        if (repository.keys() != QStringList{QString::fromLatin1(property.name())})
            found.last().prepend(QString::fromLatin1(property.name()) + u':');
        repository.removeAll();
        store.reload();
        EXPECT_EQ(changed.count(), 2);
        EXPECT_EQ(property.read(&store), initial);
    }
    const QString expected = QStringLiteral( // [property:]key=default
        "onboardingComplete=false showMenuBarIcon=true reduceAnimation=false appearance=system "
        "galleryBackdrop= "
        "chatShortcut=optionSpace pushToTalkShortcut=optionV "
        "hostedChatEnabled=true privateCloudThinksLonger=false hostedRelayEncrypted=false hostedRelayModel= "
        "hostedRelayStateKnown=false chatTextSize=medium chatHistoryOpen=true providerName=OpenAI-compatible "
        "baseURLString:aiBaseURL=http://localhost:11434/v1 model:aiModel= temperature:aiTemperature=0.7 "
        "maxOutputTokens:aiMaxOutputTokens=1024 voiceOutputEnabled=false speakingRate=0.5 "
        "autoSendTranscription=false speakCodeBlocks=false abilitiesEnabled=true memoryEnabled=true "
        "webAccessEnabled=true screenAwarenessEnabled=false desktopActionsEnabled=false appLockEnabled=false "
        "appLockIdleMinutes=5 maxContextMessages=30 maxExtractedCharacters=100000 "
        "conversationRetention=forever "
        "autoSummarizeDroppedFiles=false");
    EXPECT_EQ(found.join(u' '), expected);
}

TEST(SettingsStoreTest, ReadsByTypeAndWritesEnumerationsAndAbsence)
{
    InMemorySettingsRepository repository;
    repository.setString(u"appearance"_s, u"sepia"_s);
    repository.setString(u"chatTextSize"_s, u"large"_s);
    repository.setString(u"aiMaxOutputTokens"_s, u"5"_s);
    repository.setInteger(u"aiTemperature"_s, 1);
    repository.setInteger(u"memoryEnabled"_s, 0);
    repository.setString(u"voiceIdentifier"_s, QString());
    SettingsStore store(repository);
    EXPECT_EQ(store.appearance(), AppAppearance::system);
    EXPECT_EQ(store.chatTextSize(), ChatTextSize::large);
    EXPECT_EQ(store.maxOutputTokens(), 1024);
    EXPECT_EQ(store.temperature(), 0.7);
    EXPECT_TRUE(store.memoryEnabled());
    EXPECT_EQ(store.voiceIdentifier(), QString());

    repository.removeAll();
    store.reload();
    EXPECT_EQ(store.chatTextSize(), ChatTextSize::medium);
    EXPECT_EQ(store.chatShortcut(), ShortcutPreset::optionSpace);
    EXPECT_EQ(store.pushToTalkShortcut(), ShortcutPreset::optionV);
    EXPECT_EQ(store.conversationRetention(), ConversationRetention::forever);
    for (const auto &absent : {store.selectedCharacterID(), store.microphoneUID(), store.voiceIdentifier()})
        EXPECT_EQ(absent, std::nullopt);
    store.setAppearance(AppAppearance::gallery);
    store.setMicrophoneUID(u"mic"_s);
    EXPECT_EQ(repository.string(u"appearance"_s), u"gallery"_s);
    EXPECT_EQ(repository.string(u"microphoneUID"_s), u"mic"_s);
    store.setMicrophoneUID(std::nullopt);
    EXPECT_EQ(repository.keys(), QStringList{u"appearance"_s});
}

TEST(SettingsStoreTest, LegacyPersonaOfAnOlderBuild)
{
    const QByteArray three = R"({"fox":{"name":"Fox","personality":"sly"},
        "companion":{"name":"Pal","personality":"kind"}, "ant":{"name":"Ant","personality":"busy"}})";
    const QByteArray two = R"({"b":{"name":"B","personality":"2"},"a":{"name":"A","personality":"1"}})";
    const struct {
        QString prompt;
        QByteArray personas;
        QString character;
        QString expected; // instructions|name|personality
    } cases[] = {{u""_s, "{}", u""_s, {}},
                 {u"Be brief"_s, "", u""_s, u"Be brief||"_s},
                 {u"Be brief"_s, "{\"fox\":1}", u""_s, u"Be brief||"_s},
                 {u"I"_s, three, u"fox"_s, u"I|Fox|sly"_s},
                 {u""_s, three, u"owl"_s, u"|Pal|kind"_s},
                 {u""_s, two, u""_s, u"|A|1"_s}};
    for (const auto &[prompt, personas, character, expected] : cases) {
        InMemorySettingsRepository repository;
        repository.setString(u"customSystemPrompt"_s, prompt);
        repository.setData(u"characterPersonas"_s, personas);
        repository.setString(u"selectedCharacterID"_s, character);
        SettingsStore store(repository);
        const auto found = store.legacyPersona().value_or(SettingsStore::LegacyPersona());
        const QString texts = QStringList({found.instructions, found.name, found.personality}).join(u'|');
        EXPECT_EQ(texts, expected.isEmpty() ? u"||"_s : expected);
        EXPECT_EQ(store.legacyPersona().has_value(), !expected.isEmpty());
        store.forgetLegacyPersona();
        EXPECT_EQ(store.legacyPersona(), std::nullopt);
    }
}

} // namespace

} // namespace morvane
