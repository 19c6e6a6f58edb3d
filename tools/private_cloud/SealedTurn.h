#pragma once

#include "CloudState.h"

#include "loopback/Exchange.h"

#include <stdexcept>

namespace morvane {

// A chat request whose two sealed messages were opened, and the stream of sealed pieces that answers it.
class SealedTurn {
public:
    // What a strict server doesn't take; its words are for the client.
    class Refused final : public std::runtime_error {
    public:
        using std::runtime_error::runtime_error;
    };

    // Throws Refused for a request that lacks a header, names another key, holds unsealed text or says more
    // than it should.
    SealedTurn(Exchange &exchange, CloudState &state);

    [[nodiscard]] Exchange &exchange() const { return m_exchange; }
    [[nodiscard]] CloudState &state() const { return m_state; }
    [[nodiscard]] QString model() const { return m_exchange.request().model(); }
    [[nodiscard]] const QString &system() const { return m_system; }
    [[nodiscard]] const QString &prompt() const { return m_prompt; }

    // What the person said last, what abilities gave back since then, and the first ability on offer.
    [[nodiscard]] QString lastPersonText() const;
    [[nodiscard]] QStringList abilityResults() const;
    [[nodiscard]] QString firstAbility() const;

    Work begin();
    Work text(QString text);        // one sealed piece
    Work words(QString text);       // a sealed piece for each word
    Work content(QString unsealed); // a piece as it is
    Work delta(QJsonObject delta);  // any fields of a piece
    Work line(QByteArray line);     // a line of the stream as it is
    Work end(QString reason = QStringLiteral("stop"));

    [[nodiscard]] QString seal(const QString &text) const;

private:
    Exchange &m_exchange;
    CloudState &m_state;
    QByteArray m_clientKey;
    QString m_system;
    QString m_prompt;
};

} // namespace morvane
