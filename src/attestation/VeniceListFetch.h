#pragma once

#include "async/Clock.h"
#include "network/HttpSession.h"

#include <QByteArray>

#include <exception>
#include <variant>

namespace morvane {

// Fetches a list of accepted servers and its signature. Nothing of them is judged here; a hostile endpoint
// can make it hold no more than the largest list. GUI thread.
class VeniceListFetch {
public:
    class Failure final : public std::exception {
    public:
        struct Http {
            int status;
            bool operator==(const Http &) const = default;
        };
        enum class Plain { badEndpoint, tooLarge, tooSlow };
        using Case = std::variant<Http, Plain>;

        Failure(Case reason)
            : m_case(reason)
        {}

        [[nodiscard]] const Case &reason() const { return m_case; }
        [[nodiscard]] const char *what() const noexcept override { return "the list could not be fetched"; }

    private:
        Case m_case;
    };

    struct Files {
        QByteArray list;
        QByteArray signature;
    };

    // `sessions` and `clock` outlive every fetch.
    VeniceListFetch(HttpSessionProviding &sessions, Clock &clock, QString baseURLString)
        : m_sessions(sessions)
        , m_clock(clock)
        , m_baseURLString(std::move(baseURLString))
    {}

    // Throws Failure, TransportError or CancelledError.
    [[nodiscard]] QCoro::Task<Files> files(std::stop_token stop) const
    {
        return both(*this, std::move(stop));
    }

private:
    [[nodiscard]] QUrl urlOf(const QString &name) const;
    [[nodiscard]] static QCoro::Task<Files> both(VeniceListFetch self, std::stop_token stop);
    [[nodiscard]] static QCoro::Task<QByteArray> file(VeniceListFetch self, QUrl url, std::stop_token stop);

    HttpSessionProviding &m_sessions;
    Clock &m_clock;
    QString m_baseURLString;
};

} // namespace morvane
