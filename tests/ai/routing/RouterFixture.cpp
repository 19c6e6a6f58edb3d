#include "RouterFixture.h"

namespace morvane {

using namespace Qt::StringLiterals;

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

void RouterFixture::configureLine(const QByteArray &line)
{
    const QString text = QString::fromUtf8(line);
    configure(text.section(u'|', 0, 0), text.section(u'|', 1));
}

QString RouterFixture::fate(TurnRequest turn)
{
    try {
        const AIConfiguration configuration = prepare(std::move(turn)).configuration;
        return configuration.model + u" at "_s + configuration.baseURLString;
    } catch (const ProviderError &error) {
        return error.userMessage();
    }
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
