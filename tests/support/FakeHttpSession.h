#pragma once

#include "network/HttpSession.h"

#include <deque>

namespace morvane {

// A session that answers from a script and keeps what it was asked.
class FakeHttpSession final : public HttpSession {
public:
    enum class Ending { finishes, staysOpen };

    struct Answer {
        int status = 200;
        std::vector<QByteArray> pieces;
        std::exception_ptr bodyError;     // ends the body behind the pieces
        Ending ending = Ending::finishes; // of a body without an error
        std::exception_ptr sendError;     // instead of a response
        bool neverAnswers = false;
    };

    void answer(Answer next) { m_answers.push_back(std::move(next)); }
    void answer(int status, QByteArray body);

    [[nodiscard]] QCoro::Task<HttpResponse> send(HttpRequest request, std::stop_token stop) override;

    [[nodiscard]] const std::vector<HttpRequest> &requests() const { return m_requests; }
    // Requests that are waiting for an answer, and bodies that are still read.
    [[nodiscard]] int openRequests() const;

    // Add to the body that stays open, and end it.
    void feed(QByteArray piece) { m_bodies.back().yield(std::move(piece)); }
    void closeBody() { m_bodies.back().finish(); }

private:
    std::deque<Answer> m_answers;
    std::vector<HttpRequest> m_requests;
    std::vector<AsyncStream<QByteArray>::Producer> m_bodies; // that stay open or never begin
};

// Hands out one session and notes what for.
class FakeHttpSessionProvider final : public HttpSessionProviding {
public:
    [[nodiscard]] std::shared_ptr<HttpSession> session(EgressFeature feature,
                                                       SensitiveDataSet carrying) override
    {
        asked.emplace_back(feature, carrying);
        return fake;
    }

    std::shared_ptr<FakeHttpSession> fake = std::make_shared<FakeHttpSession>();
    std::vector<std::pair<EgressFeature, SensitiveDataSet>> asked;
};

} // namespace morvane
