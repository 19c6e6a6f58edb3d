#pragma once

#include "ai/nearby/ModelServerApp.h"
#include "async/TaskHandle.h"
#include "network/HttpSession.h"

#include <QCoroTask>
#include <QObject>
#include <QPointer>
#include <QStringList>

#include <chrono>
#include <memory>
#include <stop_token>
#include <variant>

namespace morvane {

class Work;

// Asks one computer for the models that it serves. Every failure is a state with a text. GUI thread.
class ModelServerBrowser : public QObject {
    Q_OBJECT
public:
    struct Found {
        QStringList models; // never empty
        QString address;    // the base address that answered
        bool operator==(const Found &) const = default;
    };
    struct Failed {
        QString text;
        bool operator==(const Failed &) const = default;
    };
    struct Idle {
        bool operator==(const Idle &) const = default;
    };
    struct Searching {
        bool operator==(const Searching &) const = default;
    };
    using State = std::variant<Found, Failed, Idle, Searching>;

    // For each address that is tried, from the name's lookup to the end of the answer.
    static constexpr std::chrono::seconds patience{8};

    // Answers are read on `work`. Both outlive this object.
    ModelServerBrowser(HttpSessionProviding &network, Work &work, QObject *parent = nullptr);

    [[nodiscard]] const State &state() const { return m_state; }
    // The setup steps for the other computer should show.
    [[nodiscard]] bool needsNetworkAccessHelp() const { return m_needsNetworkAccessHelp; }
    // What the server's program is called in the texts.
    [[nodiscard]] const QString &appHint() const { return m_appHint; }

    // Asks the computer that `text` names; a question under way is dropped.
    void probe(const QString &text, ModelServerApp app);
    void reset();

Q_SIGNALS:
    void changed();

private:
    enum class Miss;
    using Answer = std::variant<Found, Miss>;

    static QCoro::Task<> run(QPointer<ModelServerBrowser> self, QStringList addresses, std::stop_token stop);
    static QCoro::Task<Answer> ask(std::shared_ptr<HttpSession> session, Work *work, QString address,
                                   std::stop_token stop);
    static Miss missOf(TransportError::Code code);
    void take(Answer answer);
    void fail(const QString &text);
    void setState(State state);

    std::shared_ptr<HttpSession> m_session;
    Work &m_work;
    State m_state = Idle{};
    bool m_needsNetworkAccessHelp = false;
    QString m_appHint;
    TaskHandle m_probe;
};

} // namespace morvane
