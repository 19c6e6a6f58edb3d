#include "ai/local/RuntimeInstallation.h"

#include "TestFiles.h"
#include "ai/local/LocalSetupError.h"
#include "ai/local/RuntimeRecord.h"
#include "ai/local/SetupLog.h"
#include "runtime_host/ArchiveWriter.h"
#include "security/InMemoryKeychainService.h"
#include "security/LocalDataVault.h"
#include "support/ManualClock.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

class RuntimeInstallationTest : public testing::Test {
protected:
    RuntimeInstallationTest()
    {
        values.version = u"1"_s;
        values.folder = home.filePath(u"data"_s);
        static_cast<void>(vault.key());
        pack("program");
    }

    void pack(const QByteArray &program)
    {
        ArchiveWriter writer;
        writer.addFile("bin/ollama", program, 0755);
        writer.addFile("lib/ollama/a.so.1", "library");
        writer.addSymbolicLink("lib/ollama/a.so", "a.so.1");
        TestFiles::write(archive, writer.finish());
    }

    RuntimeInstallation installation()
    {
        return {values, vault, std::make_shared<SetupLog>(values.setupLog(), clock)};
    }

    QTemporaryDir home;
    const QString archive = home.filePath(u"archive"_s);
    LocalRuntimeValues values;
    ManualClock clock;
    InMemoryKeychainService keychain;
    LocalDataVault vault{keychain};
};

TEST_F(RuntimeInstallationTest, OnlyWhatWasInstalledPassesItsCheck)
{
    const QString data = values.folder;
    const auto replace = [](const QString &path, const QByteArray &bytes) { TestFiles::write(path, bytes); };
    const std::vector<std::function<void()>> changes{
        [&] { replace(data + u"/bin/ollama"_s, "prograM"); },
        [&] { replace(data + u"/lib/ollama/a.so.1"_s, "librarY"); },
        [&] { replace(data + u"/lib/ollama/b.so"_s, "planted"); },
        [&] { replace(data + u"/bin/.hidden"_s, "planted"); },
        [&] { QFile::remove(data + u"/lib/ollama/a.so.1"_s); },
        [&] {
            QFile::remove(data + u"/lib/ollama/a.so"_s);
            QFile::link(u"/bin/sh"_s, data + u"/lib/ollama/a.so"_s);
        },
        [&] {
            QDir().rename(data + u"/lib"_s, data + u"/other"_s);
            QFile::link(u"other"_s, data + u"/lib"_s);
        },
        [&] { QFile::remove(values.seal()); },
        [&] {
            replace(data + u"/bin/ollama"_s, "prograM");
            replace(values.seal(), RuntimeRecord::of(data, u"1"_s, {}).json());
        },
        [&] { replace(values.seal(), R"({"version":"1","files":{},"links":{}})"); },
        [&] {
            QByteArray record = TestFiles::read(values.seal());
            record.back() = static_cast<char>(record.back() ^ 1);
            replace(values.seal(), record);
        },
    };
    for (std::size_t i = 0; i < changes.size(); ++i) {
        installation().install(archive, {});
        ASSERT_TRUE(installation().exists());
        ASSERT_TRUE(installation().verify({})) << i;
        changes[i]();
        EXPECT_FALSE(installation().verify({})) << i;
        EXPECT_FALSE(installation().exists()) << i;
        EXPECT_FALSE(QFileInfo::exists(values.seal())) << i;
    }
    EXPECT_TRUE(TestFiles::read(values.setupLog())
                    .contains("managed runtime failed verification at launch; deleted"));
}

TEST_F(RuntimeInstallationTest, WithoutTheKeyNothingIsSaidAndNothingDeleted)
{
    installation().install(archive, {});
    vault.lock();
    EXPECT_THROW(static_cast<void>(installation().verify({})), LocalSetupError);
    EXPECT_TRUE(installation().exists());
    vault.unlock();
    EXPECT_TRUE(installation().verify({}));
}

} // namespace morvane
