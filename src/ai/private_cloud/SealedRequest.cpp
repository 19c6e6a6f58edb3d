#include "ai/private_cloud/SealedRequest.h"

#include "ai/contract/BaseURL.h"
#include "ai/providers/ModelRequest.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

QJsonObject message(const QString &role, const QString &sealed)
{
    return {{u"role"_s, role}, {u"content"_s, sealed}};
}

QByteArray body(const SealedPrompt &prompt, const AIConfiguration &configuration,
                const VeniceE2EESession &session)
{
    const QJsonArray messages{message(u"system"_s, session.seal(prompt.system)),
                              message(u"user"_s, session.seal(prompt.prompt))};
    const QJsonObject object{
        {u"model"_s, configuration.model},
        {u"messages"_s, messages},
        {u"stream"_s, true},
        {u"temperature"_s, configuration.temperature},
        {u"max_tokens"_s, static_cast<qint64>(configuration.maxOutputTokens)},
        {u"venice_parameters"_s, QJsonObject{{u"include_venice_system_prompt"_s, false}}}};
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

} // namespace

SealedPrompt SealedRequest::prompt(const std::vector<AIMessage> &messages,
                                   const AIConfiguration &configuration, const std::vector<AITool> &tools)
{
    const bool isAmongMessages = std::ranges::any_of(messages, [&](const AIMessage &one) {
        return one.role == AIMessage::Role::system && one.content == configuration.systemPrompt;
    });
    return SealedPrompt::fold(messages, isAmongMessages ? QString() : configuration.systemPrompt, tools,
                              configuration.thinksLonger);
}

HttpRequest SealedRequest::make(const SealedPrompt &prompt, const AIConfiguration &configuration,
                                const VeniceE2EESession &session)
{
    HttpRequest request =
        ModelRequest::to(BaseURL::chatCompletions(configuration.baseURLString), configuration.apiKey);
    request.method = "POST";
    request.timeout = std::chrono::milliseconds(qRound64(configuration.requestTimeout * 1000));
    request.headers.push_back({"Content-Type", "application/json"});
    request.headers.push_back({"X-Venice-TEE-Client-Pub-Key", session.publicKey().toHex()});
    request.headers.push_back({"X-Venice-TEE-Model-Pub-Key", session.modelKey().toHex()});
    request.headers.push_back({"X-Venice-TEE-Signing-Algo", "ecdsa"});
    request.body = body(prompt, configuration, session);
    return request;
}

} // namespace morvane
