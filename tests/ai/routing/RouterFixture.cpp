#include "RouterFixture.h"

namespace morvane {

using namespace Qt::StringLiterals;

AsyncStream<AIStreamEvent> ScriptedProvider::streamReply(std::vector<AIMessage> messages,
                                                         AIConfiguration configuration,
                                                         std::vector<AITool> tools)
{
    requests.push_back({std::move(messages), std::move(configuration), std::move(tools), false});
    auto [stream, producer] = AsyncStream<AIStreamEvent>::make();
    for (const AIStreamEvent &event : reply)
        producer.yield(event);
    m_latest.emplace(std::move(producer));
    if (!holdsEnd)
        end();
    return std::move(stream);
}

void ScriptedProvider::end()
{
    if (failure)
        m_latest->fail(std::make_exception_ptr(*failure));
    else
        m_latest->finish();
}

QCoro::Task<QString> ScriptedProvider::testConnection(AIConfiguration, std::stop_token)
{
    co_return u"ok"_s;
}

QCoro::Task<std::optional<QString>> ScriptedProbes::version(QString, std::stop_token)
{
    note(u"version"_s);
    co_return isOllama ? std::optional(u"0.1"_s) : std::nullopt;
}

QCoro::Task<std::optional<QStringList>> ScriptedProbes::capabilities(QString, QString model, std::stop_token)
{
    note(u"show "_s + model);
    const auto known = abilities.find(model);
    co_return known == abilities.end() ? std::nullopt : std::optional(known->second);
}

QCoro::Task<std::optional<std::vector<OllamaModel>>> ScriptedProbes::modelList(QString, std::stop_token)
{
    note(u"tags"_s);
    co_return std::optional(models);
}

void ScriptedProbes::note(const QString &question)
{
    asked.append(question);
    if (onQuestion)
        onQuestion();
}

void ScriptedLocalModel::set(State state, const QString &model)
{
    m_state = state;
    m_model = model;
    Q_EMIT changed();
}

RouterFixture::RouterFixture()
    : services{.settings = settings,
               .keychain = keychain,
               .proofs = proofs,
               .clock = clock,
               .work = work,
               .provider = compatible,
               .nativeOllama = native,
               .ollama = &probes,
               .privateCloud = {.endpoint = u"https://cloud.invalid/v1"_s,
                                .apiKey = [] { return u"install"_s; },
                                .makeProvider = [this] { return sealed; }},
               .localModel = &localModel}
{
    start();
    configure(u"http://localhost:11434/v1"_s, u"llama3.2:3b"_s);
}

void RouterFixture::start()
{
    router = std::make_unique<AIRequestRouter>(services);
    router->setSubnets([] { return std::vector<PrivateNetworkAddress::Subnet>(); });
    router->setHostLookup([this](const QString &name, const std::stop_token &) {
        ++lookups;
        const auto known = names.find(name);
        const auto answer = [](QStringList addresses) -> QCoro::Task<QStringList> {
            co_return QStringList(addresses);
        };
        return answer(known == names.end() ? QStringList() : known->second);
    });
}

void RouterFixture::configure(const QString &baseURL, const QString &model)
{
    settings.setBaseURLString(baseURL);
    settings.setModel(model);
}

void RouterFixture::turnOnPrivateCloud()
{
    settings.setHostedChatEnabled(true);
    settings.setHostedRelayEncrypted(true);
}

PreparedRequest RouterFixture::prepare(TurnRequest turn)
{
    return TestWait::await(router->prepareRequest(std::move(turn), {}));
}

OpenedTurn RouterFixture::open(TurnRequest turn)
{
    return TestWait::await(router->openTurn(std::move(turn), {}));
}

ProviderError RouterFixture::refusal(TurnRequest turn)
{
    try {
        static_cast<void>(prepare(std::move(turn)));
    } catch (const ProviderError &error) {
        return error;
    }
    ADD_FAILURE() << "the turn was not refused";
    return ProviderError(ProviderError::Plain::cancelled);
}

TurnRequest RouterFixture::carrying(SensitiveDataSet data)
{
    TurnRequest turn;
    turn.carrying = data;
    if (data.testFlag(SensitiveData::image))
        turn.history = {{MessageRole::user, u"look"_s, {u"data:image/png;base64,AA=="_s}}};
    return turn;
}

} // namespace morvane
