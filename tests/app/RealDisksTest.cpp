#include "app/Erasure.h"

#include "persistence/UserDefaultsSettingsRepository.h"
#include "security/FakeSecretStore.h"
#include "security/KeyFile.h"
#include "security/KeychainError.h"
#include "security/KeychainService.h"
#include "security/LocalDataVault.h"
#include "utils/files/SupportFolders.h"
#include "utils/text/Product.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sched.h>
#include <sys/mount.h>
#include <thread>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// A file system of 256 KiB that only this thread sees, with something of everything on it.
struct SmallDisk {
    explicit SmallDisk(const QString &folder)
        : place(folder)
        , path(QFile::encodeName(folder))
    {
        isMounted = unshare(CLONE_NEWNS) == 0 &&
                    mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                    mount("tmpfs", path.constData(), "tmpfs", 0, "size=256k,mode=700") == 0;
        if (!isMounted)
            return;
        for (const QString &name : {u"Morvane.store"_s, u"Morvane.store-wal"_s, u"memory.md"_s})
            write(folders.data + u"/Morvane/"_s + name, QByteArray(9000, 's'));
        settings = UserDefaultsSettingsRepository::path(folders, Product::serviceName);
        UserDefaultsSettingsRepository defaults(settings);
        defaults.setString(u"aiModel"_s, u"marked"_s);
        Erasure::begin(defaults);
        keyFile.emplace(keys());
        keyFile->create();
        keychain.emplace(u"own"_s, *keyFile, nobody);
        vault.emplace(*keychain);
        key = vault->key().view().toByteArray();
    }

    [[nodiscard]] QString keys() const { return place + u"/keys"_s; }
    static void write(const QString &name, const QByteArray &bytes)
    {
        QDir().mkpath(QFileInfo(name).path());
        QFile file(name);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
        (void)file.write(bytes);
    }
    void fill() const
    {
        for (int i = 0; i < 40; ++i)
            write(place + u"/filler %1"_s.arg(i), QByteArray(8192, 'f'));
    }
    [[nodiscard]] bool turn(unsigned long flags) const
    {
        return mount(nullptr, path.constData(), nullptr, MS_REMOUNT | flags, nullptr) == 0;
    }
    [[nodiscard]] Erasure::Result erase()
    {
        Erasure::Result result;
        result.files = Erasure::removeFiles(folders);
        result.secrets = Erasure::removeSecrets(*keychain, keys());
        result.settingsLeft = Erasure::emptySettings(folders);
        return result;
    }
    void expectNothingLeft()
    {
        const Erasure::Result result = erase();
        EXPECT_EQ(result.files.leftover, QStringList());
        EXPECT_TRUE(result.secrets.isKeyGone);
        EXPECT_EQ(result.settingsLeft, QString());
        EXPECT_FALSE(Erasure::isUnderway(folders));
        EXPECT_TRUE(QDir(folders.data + u"/Morvane"_s).isEmpty());
    }

    const QString place;
    const QByteArray path;
    const SupportFolders folders = SupportFolders::inProfile(place);
    bool isMounted = false;
    QString settings;
    FakePresence nobody;
    std::optional<KeyFile> keyFile;
    std::optional<KeychainService> keychain;
    std::optional<LocalDataVault> vault;
    QByteArray key;
};

// False where this machine gives nobody a file system of their own.
bool onSmallDisk(void (*work)(SmallDisk &))
{
    const QTemporaryDir place;
    bool isMounted = false;
    std::thread([&] {
        SmallDisk disk(place.path());
        isMounted = disk.isMounted;
        if (isMounted)
            work(disk);
    }).join();
    return isMounted;
}

constexpr auto skipped = "only an account that may mount has disks of this kind";

TEST(RealDisksTest, AFullOneLetsGoOfEverythingAndKeepsTheKeyThatItHad)
{
    if (!onSmallDisk([](SmallDisk &disk) {
            disk.fill();
            EXPECT_THROW(disk.vault->wrapKey(Passphrase(u"six words or so"_s), {8, 1}), std::exception);
            disk.keychain->clearCache();
            EXPECT_EQ(disk.vault->key().view().toByteArray(), disk.key) << "the form that it had";
            disk.expectNothingLeft();
            disk.expectNothingLeft(); // twice in a row
        }))
        GTEST_SKIP() << skipped;
}

TEST(RealDisksTest, AReadOnlyOneIsToldOfAndASecondTryEndsIt)
{
    if (!onSmallDisk([](SmallDisk &disk) {
            ASSERT_TRUE(disk.turn(MS_RDONLY));
            const Erasure::Result result = disk.erase();
            EXPECT_EQ(result.files.count, 0);
            EXPECT_EQ(result.files.leftover.size(), 3);
            EXPECT_FALSE(result.secrets.isKeyGone);
            EXPECT_EQ(result.secrets.keyFile, disk.keys());
            EXPECT_EQ(result.settingsLeft, disk.settings);
            EXPECT_TRUE(Erasure::report(result, {})
                            .contains(u"The next start tries again to delete what is left."_s));
            ASSERT_TRUE(disk.turn(0));
            disk.expectNothingLeft();
        }))
        GTEST_SKIP() << skipped;
}

} // namespace

} // namespace morvane
