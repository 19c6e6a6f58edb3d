#include "persistence/InMemorySettingsRepository.h"
#include "persistence/SettingsStore.h"
#include "persistence/SettingsValueCoding.h"
#include "persistence/UserDefaultsSettingsRepository.h"
#include "support/TestData.h"
#include "utils/files/PrivateFile.h"

#include <QFileInfo>
#include <QMetaProperty>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <limits>

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
    TestData::expect("persistence/personas.txt", persona);
}

class UserDefaultsTest : public testing::Test {
protected:
    [[nodiscard]] bool isPrivate() const
    {
        constexpr auto ownerOnly = QFile::ReadOwner | QFile::WriteOwner | QFile::ReadUser | QFile::WriteUser;
        return QFile::permissions(path) == ownerOnly;
    }

    QTemporaryDir home;
    QString path =
        UserDefaultsSettingsRepository::path(SupportFolders::inProfile(home.path()), u"domain.name"_s);
};

TEST_F(UserDefaultsTest, EveryValueComesBackWithItsType)
{
    constexpr auto least = std::numeric_limits<std::int64_t>::min();
    std::vector<SettingsValue> values{true, false, std::int64_t{5}, least, 0.1, 1.0, -1e300};
    for (const auto &text : {u"5"_s, u"true"_s, u""_s, u"a=b;c, \"d\" \\ @Invalid() %U ü\n\t\u0001 👻"_s})
        values.emplace_back(text);
    for (const auto &bytes : {QByteArray(), QByteArray("\x00\xff\x01", 3)})
        values.emplace_back(bytes);
    for (const auto &list : {QStringList(), QStringList{u""_s, u"a,b"_s, u"\"q\""_s}})
        values.emplace_back(list);
    {
        UserDefaultsSettingsRepository repository(path);
        for (std::size_t i = 0; i < values.size(); ++i)
            repository.setValue(u"key.v%1"_s.arg(i), values[i]);
    }
    EXPECT_TRUE(isPrivate());
    UserDefaultsSettingsRepository repository(path);
    for (std::size_t i = 0; i < values.size(); ++i)
        EXPECT_EQ(repository.value(u"key.v%1"_s.arg(i)), values[i]) << i;
    EXPECT_EQ(repository.integer(u"key.v7"_s), std::nullopt); // the text "5"
    EXPECT_EQ(repository.string(u"key.v2"_s), std::nullopt);  // the number 5
    EXPECT_EQ(repository.keys().size(), std::ssize(values));

    repository.remove(u"key.v0"_s);
    EXPECT_EQ(repository.boolean(u"key.v0"_s), std::nullopt);
    repository.removeAll();
    EXPECT_TRUE(UserDefaultsSettingsRepository(path).keys().isEmpty());
    EXPECT_TRUE(isPrivate());
}

TEST_F(UserDefaultsTest, AFileWithLooserPermissionsIsTightenedAndAFolderThatCannotBeWrittenLosesNoRead)
{
    PrivateFile::write(path, "[General]\nn=int:1\n");
    QFile::setPermissions(path, QFile::ReadOwner | QFile::ReadGroup | QFile::ReadOther);
    EXPECT_EQ(UserDefaultsSettingsRepository(path).integer(u"n"_s), 1);
    EXPECT_TRUE(isPrivate());
    UserDefaultsSettingsRepository blocked(path + u"/settings.ini"_s); // a file where its folder belongs
    blocked.setBoolean(u"b"_s, true);
    blocked.flush();
    EXPECT_EQ(blocked.boolean(u"b"_s), true);
}

TEST_F(UserDefaultsTest, ABrokenFileIsSetAsideAndNothingOfItIsLost)
{
    for (const auto &number : {u"1"_s, u"2"_s}) {
        const QByteArray broken = "[General\nno line of an ini file\x00\xff" + number.toUtf8();
        PrivateFile::write(path, broken);
        UserDefaultsSettingsRepository(path).setBoolean(u"b"_s, true);
        EXPECT_EQ(UserDefaultsSettingsRepository(path).boolean(u"b"_s), true);
        EXPECT_EQ(PrivateFile::read(path + u".unreadable-"_s + number, 1000), broken);
    }
}

TEST(SettingsValueCodingTest, WhatIsNoValueReadsAsAbsent)
{
    const QString texts = u" |5|true|int:|int:5.0|int:9223372036854775808|bool:1|bool:TRUE|real:nan|real:inf|"
                          "real:x|data:a|list:{}|list:[1]|list:[\"a\"|Int:5|date:5"_s;
    for (const QString &text : texts.split(u'|'))
        EXPECT_EQ(SettingsValueCoding::decode(text), std::nullopt) << text.toStdString();
}

} // namespace

} // namespace morvane
