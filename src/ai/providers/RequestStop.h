#pragma once

#include <stop_token>
#include <utility>

namespace morvane {

// Ends a request when the consumer of its answer goes, for as long as this lives. A consumer that goes after
// a complete answer must not cut off the end of the body, so the request has a token of its own.
class RequestStop {
public:
    explicit RequestStop(std::stop_token consumer)
        : m_link(std::move(consumer), Forward{m_source})
    {}

    [[nodiscard]] std::stop_token token() const { return m_source.get_token(); }
    [[nodiscard]] std::stop_source source() const { return m_source; }

private:
    struct Forward {
        std::stop_source source;
        void operator()() { source.request_stop(); }
    };

    std::stop_source m_source;
    std::stop_callback<Forward> m_link;
};

} // namespace morvane
