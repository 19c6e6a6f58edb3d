#include "ai/routing/PrivacyJudge.h"

#include "ai/routing/ModelName.h"
#include "utils/text/Text.h"

#include <QUrl>

#include <algorithm>

namespace morvane {

using Kind = PrivacyClass::Kind;

namespace {

PrivacyClass classIn(const ModelInventory::Models &models, const QString &model)
{
    const auto listed = std::find_if(models.begin(), models.end(), [&model](const OllamaModel &each) {
        return ModelName::isSame(each.name, model);
    });
    if (listed == models.end())
        return {Kind::unknownModel, {}};
    return listed->runsElsewhere ? PrivacyClass{Kind::cloudModel, model}
                                 : PrivacyClass{Kind::staysPrivate, {}};
}

} // namespace

std::optional<PrivacyClass> PrivacyJudge::known(const QString &baseURL, const QString &model) const
{
    const auto judged = m_judged.find({baseURL, model});
    return judged == m_judged.end() ? std::nullopt : std::optional(judged->second);
}

QCoro::Task<PrivacyClass> PrivacyJudge::judge(QString baseURL, QString model, std::stop_token stop)
{
    const auto check = m_lifeline.check(stop);
    const std::optional<PrivacyClass> answer = co_await ask(baseURL, model, stop);
    check();
    if (!answer)
        co_return unanswered(baseURL, model);
    m_judged.insert_or_assign({baseURL, model}, *answer);
    co_return PrivacyClass(*answer);
}

// Whoever answers next may pass questions on; one that has done so is still called what it was.
PrivacyClass PrivacyJudge::unanswered(const QString &baseURL, const QString &model) const
{
    const std::optional<PrivacyClass> before = known(baseURL, model);
    return before && before->kind == Kind::cloudModel ? *before : PrivacyClass{Kind::unknownModel, {}};
}

QCoro::Task<std::optional<PrivacyClass>> PrivacyJudge::ask(QString baseURL, QString model,
                                                           std::stop_token stop)
{
    const auto check = m_lifeline.check(stop);
    // What isn't near by its text gets nothing private, wherever its name leads, so nobody is asked.
    if (!HostPrivacy::staysNear(baseURL))
        co_return PrivacyClass{Kind::leavesThisNetwork, {}};
    if (ModelName::isOllamaCloud(model))
        co_return PrivacyClass{Kind::cloudModel, model};
    const QString host = QUrl(Text::trimmed(baseURL)).host();
    const bool isPrivate = co_await m_hosts.isPrivate(host, stop);
    check();
    if (!isPrivate)
        co_return PrivacyClass{Kind::leavesThisNetwork, {}};
    const ModelInventory::Answer list = co_await m_inventory.of(baseURL, stop);
    check();
    if (list.told) {
        m_detection.forgetDenial(baseURL); // another server has taken the place of the one that was probed
        co_return classIn(*list.told, model);
    }
    if (!list.wasHeard)
        co_return std::nullopt;
    // A server that has no list because it knows none has nobody to pass questions on to. One that keeps a
    // list, and doesn't show it, may.
    const OllamaDetection::Answer isOllama = co_await m_detection.isOllama(baseURL, stop);
    check();
    switch (isOllama) {
    case OllamaDetection::Answer::yes:
    case OllamaDetection::Answer::withoutList:
        co_return PrivacyClass{Kind::unknownModel, {}};
    case OllamaDetection::Answer::no:
        co_return PrivacyClass{Kind::staysPrivate, {}};
    case OllamaDetection::Answer::nobodyAnswered:
        break;
    }
    co_return std::nullopt;
}

} // namespace morvane
