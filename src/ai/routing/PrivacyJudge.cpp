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
    const PrivacyClass answer = co_await ask(baseURL, model, stop);
    check();
    m_judged.insert_or_assign({baseURL, model}, answer);
    co_return PrivacyClass(answer);
}

QCoro::Task<PrivacyClass> PrivacyJudge::ask(QString baseURL, QString model, std::stop_token stop)
{
    const auto check = m_lifeline.check(stop);
    const QString host = QUrl(Text::trimmed(baseURL)).host();
    if (host.isEmpty() || PrivateNetworkAddress::isPrivateLiteral(host) == false)
        co_return PrivacyClass{Kind::leavesThisNetwork, {}};
    if (ModelName::isOllamaCloud(model))
        co_return PrivacyClass{Kind::cloudModel, model};
    const bool isPrivate = co_await m_hosts.isPrivate(host, stop);
    check();
    if (!isPrivate)
        co_return PrivacyClass{Kind::leavesThisNetwork, {}};
    const std::optional<ModelInventory::Models> models = co_await m_inventory.of(baseURL, stop);
    check();
    if (models) {
        m_detection.forgetDenial(baseURL); // it was still starting when it was probed
        co_return classIn(*models, model);
    }
    // A server that has no list because it knows none has nobody to pass questions on to. One that is known
    // to keep a list, and doesn't show it, may.
    const bool hidesList = m_detection.known(baseURL).value_or(false);
    co_return PrivacyClass{hidesList ? Kind::unknownModel : Kind::staysPrivate, {}};
}

} // namespace morvane
