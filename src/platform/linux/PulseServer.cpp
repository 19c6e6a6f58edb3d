#include "platform/linux/PulseServer.h"

#include "utils/text/Product.h"

#include <QDeadlineTimer>

#include <pulse/pulseaudio.h>

#include <memory>

namespace morvane {

namespace {

struct Question {
    PulseServer::Defaults answer;
    bool isAnswered = false;
};

void take(pa_context *, const pa_server_info *info, void *question)
{
    auto &asked = *static_cast<Question *>(question);
    if (info) {
        asked.answer.source = QString::fromUtf8(info->default_source_name);
        asked.answer.sink = QString::fromUtf8(info->default_sink_name);
    }
    asked.isAnswered = true;
}

// One round of the server's events. False when there is no use in another.
bool turn(pa_mainloop *loop, pa_context *context, Question &question, bool &isAsked,
          const QDeadlineTimer &deadline)
{
    const auto rest = std::chrono::microseconds(std::chrono::milliseconds(deadline.remainingTime()));
    if (pa_mainloop_prepare(loop, static_cast<int>(rest.count())) < 0 || pa_mainloop_poll(loop) < 0 ||
        pa_mainloop_dispatch(loop) < 0)
        return false;
    const pa_context_state_t state = pa_context_get_state(context);
    if (state == PA_CONTEXT_READY && !std::exchange(isAsked, true))
        pa_operation_unref(pa_context_get_server_info(context, take, &question));
    return PA_CONTEXT_IS_GOOD(state) && !question.isAnswered && !deadline.hasExpired();
}

} // namespace

std::optional<PulseServer::Defaults> PulseServer::defaults(std::chrono::milliseconds limit)
{
    const std::unique_ptr<pa_mainloop, decltype(&pa_mainloop_free)> loop(pa_mainloop_new(), pa_mainloop_free);
    const std::unique_ptr<pa_context, decltype(&pa_context_unref)> context(
        pa_context_new(pa_mainloop_get_api(loop.get()), Product::name.data()), pa_context_unref);
    if (pa_context_connect(context.get(), nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0)
        return std::nullopt;
    const QDeadlineTimer deadline(limit);
    Question question;
    bool isAsked = false;
    while (turn(loop.get(), context.get(), question, isAsked, deadline)) {
    }
    pa_context_disconnect(context.get());
    return question.isAnswered ? std::optional(question.answer) : std::nullopt;
}

} // namespace morvane
