#pragma once

#include "loopback/Exchange.h"

#include <span>

namespace morvane {

// The list of accepted servers and its signature, as this run serves them. Each fetch of the list counts:
// some lists differ from one to the next.
class ServedLists {
public:
    struct Kind {
        QLatin1StringView name;
        QLatin1StringView summary;
        Work (*play)(ServedLists &lists, Exchange &exchange); // what a fetch of the list gets
    };
    [[nodiscard]] static std::span<const Kind> kinds();

    // A name of kinds(). Throws a runtime_error for any other.
    explicit ServedLists(const QString &name);

    Work sendList(Exchange &exchange);
    Work sendSignature(Exchange &exchange); // of the list that was sent last

    [[nodiscard]] int fetches() const { return m_fetches; }

    // Sends the list and remembers it for its signature.
    Work send(Exchange &exchange, QByteArray list);
    void signBadly() { m_signsBadly = true; }

private:
    const Kind *m_kind = nullptr;
    int m_fetches = 0;
    QByteArray m_list;
    bool m_signsBadly = false;
};

} // namespace morvane
