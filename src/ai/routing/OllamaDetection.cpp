#include "ai/routing/OllamaDetection.h"

#include "ai/contract/BaseURL.h"
#include "ai/contract/ProviderError.h"
#include "utils/log/Log.h"

namespace morvane {

using namespace Qt::StringLiterals;

std::optional<QString> OllamaDetection::serverRoot(const QString &baseURL)
{
    try {
        return BaseURL::validated(baseURL).toString(QUrl::RemovePath | QUrl::RemoveQuery |
                                                    QUrl::RemoveFragment | QUrl::RemoveUserInfo);
    } catch (const ProviderError &) {
        return std::nullopt;
    }
}

QCoro::Task<OllamaDetection::Answer> OllamaDetection::isOllama(QString baseURL, std::stop_token stop)
{
    const auto root = serverRoot(baseURL);
    if (!root || !m_probes)
        co_return Answer::no;
    if (const auto answer = m_answers.find(*root); answer != m_answers.end())
        co_return Answer(answer->second);
    const auto check = m_lifeline.check(stop);
    const ProbeAnswer<QString> version = co_await m_probes->version(baseURL, stop);
    check();
    if (!version.wasHeard)
        co_return Answer::nobodyAnswered;
    Answer answer = Answer::no;
    if (version.told) {
        const ModelInventory::Answer list = co_await m_inventory.of(baseURL, stop);
        check();
        if (!list.wasHeard)
            co_return Answer::nobodyAnswered;
        answer = list.told ? Answer::yes : Answer::withoutList;
    }
    const bool isOllama = answer == Answer::yes;
    m_answers.insert_or_assign(*root, answer);
    Log::info(Log::Category::AIProvider, "Server probe: %{public}s is Ollama = %{bool}d"_L1,
              {*root, isOllama});
    co_return Answer(answer);
}

void OllamaDetection::forgetDenial(const QString &baseURL)
{
    const auto root = serverRoot(baseURL);
    const auto answer = root ? m_answers.find(*root) : m_answers.end();
    if (answer != m_answers.end() && answer->second != Answer::yes)
        m_answers.erase(answer);
}

} // namespace morvane
