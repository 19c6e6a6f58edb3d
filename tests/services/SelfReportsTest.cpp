// What the program tells of itself: crashes, problems, licences, and who updates it.

#include "persistence/InMemorySettingsRepository.h"
#include "services/BugReportService.h"
#include "services/CrashReportService.h"
#include "services/LibraryLicences.h"
#include "services/UpdateService.h"
#include "utils/files/PrivateFile.h"

#include <QCoreApplication>
#include <QDir>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

class SelfReportsTest : public testing::Test {
protected:
    void write(const QString &name, const QByteArray &bytes) const
    {
        PrivateFile::write(folder.filePath(name), bytes);
    }

    const QTemporaryDir folder;
    InMemorySettingsRepository defaults;
};

} // namespace

TEST_F(SelfReportsTest, AReportOfAProblemHoldsNoAddressNameOrText)
{
    const QStringList hidden{u"secret.example"_s, u"MyOwnModel"_s, u"/home/someone"_s, u"two words"_s};
    for (const QString &key :
         {u"aiBaseURL"_s, u"aiModel"_s, u"providerName"_s, u"speechModelPath"_s, u"voiceIdentifier"_s,
          u"aiKeyOrigin"_s, u"customSystemPrompt"_s, u"of.tomorrow"_s})
        defaults.setString(key, key == u"aiBaseURL"_s ? hidden.join(u' ') : u"MyOwnModel"_s);
    defaults.setString(u"galleryBackdrop"_s, u"two words"_s);
    defaults.setString(u"appearance"_s, u"dark"_s);
    defaults.setInteger(u"appLockIdleMinutes"_s, 7);
    defaults.setBoolean(u"webAccessEnabled"_s, false);
    const QString text = BugReportService(defaults).text(
        {{u"Program"_s, u"0.1"_s}}, {{u"Desktop"_s, u"one\nsecret.example"_s}}, {u"app: line"_s});
    for (const QString &words : hidden)
        EXPECT_FALSE(text.contains(words)) << text.toStdString();
    for (const auto &line :
         {u"Program: 0.1\n"_s, u"Desktop: one\n"_s, u"\nappearance: dark\n"_s, u"\nappLockIdleMinutes: 7\n"_s,
          u"\nwebAccessEnabled: off\n"_s, u"\napp: line\n"_s, u"\ngalleryBackdrop: (left out)\n"_s})
        EXPECT_TRUE(text.contains(line)) << line.toStdString() << text.toStdString();
}

TEST_F(SelfReportsTest, AReportOfACrashIsToldOfOnceAndOnlyReportsAreTouched)
{
    CrashReportService crashes(folder.path(), defaults);
    EXPECT_EQ(crashes.takeUntold(), QString());
    write(u"crash-000000000001-9.txt"_s, "first");
    write(u"crash-000000000002-1.txt"_s, "second");
    write(u"other.txt"_s, "mine");
    EXPECT_EQ(crashes.takeUntold(), u"crash-000000000002-1.txt"_s);
    EXPECT_EQ(CrashReportService(folder.path(), defaults).takeUntold(), QString()) << "at the next start";
    EXPECT_EQ(crashes.text(u"crash-000000000001-9.txt"_s), u"first"_s);
    EXPECT_EQ(crashes.text(u"other.txt"_s), QString());
    crashes.remove(u"../"_s + folder.path().section(u'/', -1) + u"/other.txt"_s);
    crashes.remove(u"crash-000000000002-1.txt"_s);
    EXPECT_EQ(crashes.takeUntold(), QString()) << "the older one came before";
    write(u"crash-000000000003-1.txt"_s, "third");
    EXPECT_EQ(crashes.takeUntold(), u"crash-000000000003-1.txt"_s);
    crashes.removeAll();
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files), QStringList{u"other.txt"_s});
}

TEST_F(SelfReportsTest, LicencesAreReadFromThePackagesTextsAndNowhereElse)
{
    write(u"list"_s, "libone1\nlibtwo2\nlibnone\n../secret\n");
    write(u"doc/libone1/copyright"_s,
          "Format: x\nLicense: MIT\n text\n\nFiles: b\nLicense:  Apache-2.0 \n\nLicense: MIT\n");
    write(u"doc/libtwo2/copyright"_s, "Do as you like.\n");
    write(u"secret/copyright"_s, "License: taken from elsewhere\n");
    const LibraryLicences licences(folder.filePath(u"list"_s), folder.filePath(u"doc"_s));
    QStringList told;
    for (const auto &library : licences.libraries())
        told += library.package + u'=' + library.licences + (library.hasText ? u"+"_s : u"-"_s);
    EXPECT_EQ(told,
              (QStringList{u"libone1=MIT, Apache-2.0+"_s, u"libtwo2=+"_s, u"libnone=-"_s, u"../secret=-"_s}));
    EXPECT_EQ(licences.text(u"libtwo2"_s), u"Do as you like.\n"_s);
    EXPECT_TRUE(LibraryLicences(u"/nonexistent"_s, u"/nonexistent"_s).libraries().empty());
}

TEST_F(SelfReportsTest, TheOwnerOfAProgramIsThePackageThatInstalledIt)
{
    using Kind = UpdateService::Origin::Kind;
    EXPECT_EQ(UpdateService::originOf(QCoreApplication::applicationFilePath()).kind, Kind::ownBuild);
    EXPECT_EQ(UpdateService::originOf(u"/nonexistent"_s).kind, Kind::ownBuild);
    if (QStandardPaths::findExecutable(u"dpkg-query"_s).isEmpty())
        GTEST_SKIP() << "no dpkg here";
    EXPECT_EQ(UpdateService::originOf(u"/usr/bin/dpkg-query"_s),
              (UpdateService::Origin{Kind::package, u"dpkg"_s}));
}

} // namespace morvane
