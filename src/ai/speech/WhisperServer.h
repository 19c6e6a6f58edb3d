#pragma once

#include "ai/local/LocalMachine.h"
#include "async/Lifeline.h"
#include "async/SharedResult.h"
#include "async/TaskHandle.h"
#include "network/HttpSession.h"

#include <QCoroTask>
#include <QObject>
#include <QUrl>

#include <memory>
#include <vector>

namespace morvane {

class RuntimeProcess;
class Work;

// A whisper-server of this program's own: started when it is first asked, on 127.0.0.1 with a port of its
// own, looked at before it is given a sound, ended a while after the last word and with the program. GUI
// thread.
class WhisperServer : public QObject {
    Q_OBJECT
public:
    // All of it outlives this object.
    struct Parts {
        HttpSessionProviding &network;
        const LocalMachine &machine;
        Clock &clock;
        Work &work;
        QString guard; // the program that it runs under
    };
    struct Program {
        QString path;
        QString model;
        bool operator==(const Program &) const = default;
    };

    explicit WhisperServer(Parts parts, QObject *parent = nullptr);
    ~WhisperServer() override;

    // The words of a form of WhisperUpload, which is wiped. A server that died, or hangs, is replaced, and
    // asked once more. Throws AudioError, CancelledError.
    [[nodiscard]] QCoro::Task<QString> words(Program program, QByteArray form, std::stop_token stop);

    // Makes it ready for what will be asked.
    void warmUp(const Program &program);

private:
    using Ready = SharedResult<bool>;

    QCoro::Task<> awaitReady(Ready ready, std::stop_token stop);
    QCoro::Task<bool> isFit(std::stop_token stop);
    QCoro::Task<bool> hasPlace(std::stop_token stop);
    QCoro::Task<bool> hasLoaded(std::stop_token stop);
    QCoro::Task<int> statusOf(std::stop_token stop);
    QCoro::Task<std::optional<QString>> asked(Program program, QByteArray form, std::stop_token stop);

    [[nodiscard]] bool isRunning() const;
    [[nodiscard]] QUrl address(const QString &path) const;
    [[nodiscard]] std::shared_ptr<HttpSession> session(SensitiveDataSet carrying) const;
    void begin();
    void end();

    const Parts m_parts;
    Program m_program;
    int m_port = 0;
    std::unique_ptr<RuntimeProcess> m_process;
    std::vector<std::unique_ptr<RuntimeProcess>> m_leaving; // told to end, which may take seconds
    Ready m_ready;                                          // of the process that runs
    TaskHandle m_starting;
    std::unique_ptr<Alarm> m_rest;
    Lifeline m_lifeline;
};

} // namespace morvane
