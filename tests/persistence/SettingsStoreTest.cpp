#include "persistence/SettingsStore.h"
#include "persistence/InMemorySettingsRepository.h"
#include "support/TestData.h"

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
    QString found = u"# property key=default\n"_s;
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
        found += u"%1 %2=%3\n"_s.arg(QLatin1StringView(property.name()), repository.keys().join(u','),
                                     initial.toString());
        repository.removeAll();
        store.reload();
        EXPECT_EQ(changed.count(), 2);
        EXPECT_EQ(property.read(&store), initial);
    }
    EXPECT_EQ(found.toStdString(), TestData::text("persistence/settings.txt"));
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
    for (const auto &absent : {store.selectedCharacterID(), store.microphoneUID(), store.voiceIdentifier()})
        EXPECT_EQ(absent, std::nullopt);
    store.setMicrophoneUID(u"mic"_s);
    store.setMicrophoneUID(std::nullopt);
    EXPECT_TRUE(repository.keys().isEmpty());
}

TEST(SettingsStoreTest, LegacyPersonaOfAnOlderBuild)
{
    const auto persona = [](const QByteArray &line) {
        const auto parts = line.split('|'); // prompt, personas, character
        InMemorySettingsRepository repository;
        repository.setString(u"customSystemPrompt"_s, QString::fromUtf8(parts[0]));
        repository.setData(u"characterPersonas"_s, parts[1]);
        repository.setString(u"selectedCharacterID"_s, QString::fromUtf8(parts[2]));
        SettingsStore store(repository);
        const auto found = store.legacyPersona();
        store.forgetLegacyPersona();
        EXPECT_EQ(store.legacyPersona(), std::nullopt);
        return found ? QStringList({found->instructions, found->name, found->personality}).join(u'|')
                     : u"none"_s;
    };
    EXPECT_EQ(TestData::transcript("persistence/personas.txt", persona),
              TestData::text("persistence/personas.txt"));
}

} // namespace

} // namespace morvane
