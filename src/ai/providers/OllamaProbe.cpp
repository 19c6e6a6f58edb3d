#include "ai/providers/OllamaProbe.h"

#include "ai/providers/ProviderFailure.h"
#include "ai/providers/ReplyLines.h"
#include "utils/text/Json.h"

#include <algorithm>
#include <array>

namespace morvane {

namespace {

// These come from whoever stands before a server that is starting or busy, and say nothing about it.
bool isOfTheMoment(int status)
{
    static constexpr std::array statuses{408, 429, 502, 503, 504};
    return std::find(statuses.begin(), statuses.end(), status) != statuses.end();
}

// Whether what arrived is an answer, although it can't be used.
bool isAnswer(const TransportError &error)
{
    return error.code() == TransportError::Code::ResponseTooLarge ||
           error.code() == TransportError::Code::UnreadableResponse;
}

} // namespace

QCoro::Task<OllamaProbe::Answer> OllamaProbe::answer(std::optional<OllamaProbe> probe, std::stop_token stop)
{
    Answer outcome;
    if (!probe)
        co_return outcome;
    try {
        auto response = co_await probe->session->send(probe->request, stop);
        const int status = response.status;
        if (ProviderFailure::isSuccess(status)) {
            const QByteArray body = co_await readBody(std::move(response), ReplyLines::longest, stop);
            outcome.object = Json::parseObject(body);
        } else {
            co_await discardBody(std::move(response), stop);
        }
        outcome.wasHeard = !isOfTheMoment(status);
    } catch (const TransportError &error) {
        outcome.wasHeard = isAnswer(error);
    } catch (const std::exception &) {
        // A session that went away: nobody was heard.
    }
    throwIfStopped(stop);
    co_return outcome;
}

} // namespace morvane
