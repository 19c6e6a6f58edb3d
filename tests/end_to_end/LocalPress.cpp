// Sets up local AI without a window, so that a test can kill all of it in the middle.
//
//   local_press PROFILE DEVELOPMENT_FILE
//
// Takes words on its input, a line each: "press", "cancel", "stop", "fill BYTES" and "free" (a ballast in the
// profile). Says a line for each change of what the window would show, the percentage last, and ends with its
// input.

#include "ai/local/LocalModelService.h"
#include "app/CommandLine.h"
#include "app/SecretKeeping.h"
#include "async/Work.h"
#include "network/AppNetwork.h"
#include "network/NetworkLedger.h"
#include "persistence/InMemorySettingsRepository.h"
#include "persistence/SettingsStore.h"
#include "platform/linux/LinuxMachine.h"
#include "security/LocalDataVault.h"
#include "support/Await.h"
#include "utils/files/PrivateFile.h"

#include <QCoreApplication>
#include <QFile>
#include <QSocketNotifier>

#include <array>
#include <cstdio>
#include <unistd.h>

using namespace morvane;
using namespace Qt::StringLiterals;

namespace {

// A machine for the smallest model, whose disk always looks as though there were room.
class RoomyMachine final : public LocalMachine {
public:
    [[nodiscard]] Memory memory() const override { return {.main = 4ULL << 30}; }
    [[nodiscard]] std::optional<std::uint64_t> freeDisk(const QString &) const override { return 1ULL << 40; }
    [[nodiscard]] std::optional<std::vector<Listener>> listeners(qint64 process) const override
    {
        return m_machine.listeners(process);
    }

private:
    LinuxMachine m_machine;
};

// The machine's clock twenty times as fast: what is waited for between tries isn't what is tested.
class HurriedClock final : public Clock {
public:
    [[nodiscard]] QDateTime now() const override { return m_clock.now(); }
    [[nodiscard]] std::chrono::milliseconds elapsed() const override { return m_clock.elapsed() * 20; }
    [[nodiscard]] std::unique_ptr<Alarm> after(std::chrono::milliseconds delay,
                                               std::function<void()> fire) override
    {
        return m_clock.after(delay / 20, std::move(fire));
    }

private:
    SystemClock m_clock;
};

class Press {
public:
    explicit Press(const QStringList &words)
        : m_profile(words.at(1))
    {
        (void)TestWait::await(m_secrets.preparation().prepare(KeyExpectation::Unknown));
        const auto values =
            LocalRuntimeValues::ofThisBuild(m_commandLine.folders())
                .withDevelopmentFile(PrivateFile::read(words.at(2), 9999).value_or(QByteArray()));
        m_service = std::make_unique<LocalModelService>(
            LocalModelService::Services{m_settings, m_network, m_vault, m_machine, m_clock, m_work},
            values.value());
        QObject::connect(m_service.get(), &LocalModelServing::changed, [this] { tell(); });
        QObject::connect(m_service.get(), &LocalModelService::progressChanged, [this] { tell(); });
        QObject::connect(&m_input, &QSocketNotifier::activated, [this] { listen(); });
    }

private:
    void tell()
    {
        static constexpr std::array kinds{"unknown",         "notSetUp",         "downloadingRuntime",
                                          "startingRuntime", "downloadingModel", "ready",
                                          "failed"};
        const auto &phase = m_service->phase();
        const QByteArray line = QByteArray(kinds.at(static_cast<std::size_t>(phase.kind))) + ' ' +
                                phase.text.toUtf8() + ' ' + QByteArray::number(phase.percent.value_or(-1)) +
                                '\n';
        if (std::exchange(m_said, line) == line)
            return;
        std::fputs(line.constData(), stdout);
        std::fflush(stdout);
    }
    void listen()
    {
        std::array<char, 256> words{};
        const ssize_t size = ::read(STDIN_FILENO, words.data(), words.size());
        if (size <= 0)
            QCoreApplication::quit();
        for (const QByteArray &line : QByteArray(words.data(), std::max<ssize_t>(0, size)).split('\n'))
            obey(line);
    }
    void obey(const QByteArray &line)
    {
        const QString ballast = m_profile + u"/ballast"_s;
        if (line == "press")
            m_service->setUp();
        else if (line == "cancel")
            m_service->cancel();
        else if (line == "stop")
            m_service->stop();
        else if (line == "free")
            QFile::remove(ballast);
        else if (QFile file(ballast); line.startsWith("fill ") && file.open(QIODevice::WriteOnly))
            file.write(QByteArray(line.mid(5).toInt(), 'x'));
    }

    QString m_profile;
    QByteArray m_said; // the line before
    CommandLine m_commandLine{.profile = m_profile};
    HurriedClock m_clock;
    Work m_work{m_clock};
    SecretKeeping m_secrets{m_commandLine.folders(), std::make_unique<AbsentKeyring>(), m_work};
    LocalDataVault m_vault{m_secrets.keychain()};
    InMemorySettingsRepository m_repository;
    SettingsStore m_settings{m_repository};
    NetworkLedger m_ledger;
    AppNetwork m_network{m_ledger, m_clock};
    RoomyMachine m_machine;
    std::unique_ptr<LocalModelService> m_service;
    QSocketNotifier m_input{STDIN_FILENO, QSocketNotifier::Read};
};

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    Press press(QCoreApplication::arguments());
    return QCoreApplication::exec();
}
