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

QCoro::Task<bool> OllamaDetection::isOllama(QString baseURL, std::stop_token stop)
{
    const auto root = serverRoot(baseURL);
    if (!root || !m_probes)
        co_return false;
    if (const auto answer = m_answers.find(*root); answer != m_answers.end())
        co_return answer->second;
    const auto check = m_lifeline.check(stop);
    const std::optional<QString> version = co_await m_probes->version(baseURL, stop);
    check();
    const bool isOllama = version.has_value();
    m_answers.insert_or_assign(*root, isOllama);
    Log::info(Log::Category::AIProvider, "Server probe: %{public}s is Ollama = %{bool}d"_L1,
              {*root, isOllama});
    co_return bool(isOllama);
}

std::optional<bool> OllamaDetection::known(const QString &baseURL) const
{
    const auto root = serverRoot(baseURL);
    const auto answer = root ? m_answers.find(*root) : m_answers.end();
    return answer == m_answers.end() ? std::nullopt : std::optional(answer->second);
}

void OllamaDetection::forgetDenial(const QString &baseURL)
{
    if (const auto root = serverRoot(baseURL); root && known(baseURL) == false)
        m_answers.erase(*root);
}

} // namespace morvane
