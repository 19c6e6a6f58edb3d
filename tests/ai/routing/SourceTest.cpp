#include "RouterFixture.h"

#include "ai/routing/ModelName.h"

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using SourceTest = RouterFixture;

// Label, destination and warning of the place in use.
QStringList wordsOf(const AIRequestRouter &router)
{
    const auto notice = router.privacyNotice();
    const QString kind =
        notice && notice->kind == PrivacyNotice::Kind::unencryptedOnNetwork ? u"open "_s : u"read by "_s;
    return {router.sourceLabel(), router.chatSource().destination(), notice ? kind + notice->host : u"-"_s};
}

TEST_F(SourceTest, AnAddressAndAModelMakeASource)
{
    const QStringList none{u"Not set up yet"_s, u"Not set up yet"_s, u"-"_s};
    const QStringList here{u"Local Qwen2.5"_s, u"Stays on this computer"_s, u"-"_s};
    const auto network = [](const QString &warning) {
        return QStringList{u"Network Qwen2.5"_s, u"Goes to 192.168.1.5 on your network"_s, warning};
    };
    const auto service = [](const QString &host) {
        return QStringList{host, u"Goes to %1, a service you added"_s.arg(host), u"read by "_s + host};
    };
    const QStringList ollama{u"GPT-OSS · Ollama's cloud"_s, u"Goes to Ollama's cloud"_s,
                             u"read by ollama.com"_s};
    const QString m = u"qwen2.5:7b"_s;
    const struct {
        QString baseURL;
        QString model;
        QStringList words;
    } table[] = {
        {u" "_s, u"\n"_s, none},
        {u"localhost:11434"_s, m, none}, // no host
        {u"http://LOCALHOST:1/v1"_s, m, here},
        {u"http://[::1]:1"_s, m, here},
        {u"http://0.0.0.0"_s, m, here},
        {u"http://localhost"_s, u"gpt-oss:120b-cloud"_s, ollama},
        {u"http://192.168.1.5:1"_s, m, network(u"open 192.168.1.5"_s)},
        {u"https://192.168.1.5"_s, m, network(u"-"_s)},
        {u"https://api.service.example/v1"_s, u"x:cloud"_s, service(u"service.example"_s)}, // not Ollama's
        {u"https://[::ffff:8.8.8.8]"_s, m, service(u"::ffff:8.8.8.8"_s)},
    };
    for (const auto &row : table) {
        configure(row.baseURL, row.model);
        EXPECT_EQ(wordsOf(*router), row.words) << row.baseURL.toStdString();
    }
}

// The name doesn't tell, the server's own list does.
TEST_F(SourceTest, AModelThatTheServerPassesOnIsCalledACloudModelEverywhere)
{
    configure(u"http://localhost:11434/v1"_s, u"alias"_s);
    probes.models = {{{u"llama3.2:3b"_s}, {u"alias"_s, true}}};
    int changes = 0;
    QObject::connect(router.get(), &AIRequestRouter::sourceChanged, [&changes] { ++changes; });
    const OpenedTurn opened = open();
    EXPECT_EQ(changes, 1) << "what the window says has changed";
    EXPECT_FALSE(opened.request.memoryAllowed);
    EXPECT_EQ(opened.request.place.source.kind, ChatSource::Kind::ollamaCloud);
    EXPECT_EQ(proofs.find(*opened.proofRow)->place,
              (ProofLedger::Place{ProofLedger::Place::Kind::ollamaCloud, u"alias"_s, {}}));
    EXPECT_EQ(wordsOf(*router), (QStringList{u"alias · Ollama's cloud"_s, u"Goes to Ollama's cloud"_s,
                                             u"read by ollama.com"_s}));
    EXPECT_EQ(router->sources().back().name, u"alias · Ollama's cloud"_s);
    localModel.set(LocalModelServing::State::starting); // its lists are forgotten
    EXPECT_EQ(router->sourceLabel(), u"alias · Ollama's cloud"_s);

    probes.models = {{{u"alias"_s}}};
    const OpenedTurn here = open();
    EXPECT_EQ(proofs.find(*here.proofRow)->place.kind, ProofLedger::Place::Kind::thisMac);
    EXPECT_EQ(router->sourceLabel(), u"Local alias"_s);
}

TEST(ModelNameTest, ReadsCloudSizeAndSameness)
{
    for (const char *cloud : {"gpt-oss:120b-cloud", "glm-4.6:cloud", "me/x:Cloud", "host:5000/x:1b-cloud"})
        EXPECT_TRUE(ModelName::isOllamaCloud(QLatin1StringView(cloud))) << cloud;
    for (const char *local : {"", "cloud", "my-cloud", "cloud:7b", "x:cloudy", "x:cloud-7b", "host:cloud/x"})
        EXPECT_FALSE(ModelName::isOllamaCloud(QLatin1StringView(local))) << local;
    const std::vector<std::pair<QString, double>> counts{
        {u"qwen2.5:7b"_s, 7}, {u"qwen2.5:1.5B-q4"_s, 1.5}, {u"mixtral:8x22b"_s, 22},
        {u"phi"_s, 0},        {u"x:7base"_s, 0},           {u"a3b:70b"_s, 3},
    };
    for (const auto &[model, count] : counts)
        EXPECT_EQ(ModelName::parameterCount(model), count) << model.toStdString();
    EXPECT_TRUE(ModelName::isSame(u"llama3.2"_s, u"llama3.2:latest"_s));
    EXPECT_FALSE(ModelName::isSame(u"llama3.2"_s, u"llama3.2:3b"_s));
    EXPECT_TRUE(ModelName::isSame(u"host:5000/x"_s, u"host:5000/x:latest"_s));
}

TEST_F(SourceTest, ThePrivateCloudIsUsedOnlyWhenAllAgree)
{
    EXPECT_FALSE(router->usesPrivateCloud()) << "the service hasn't offered sealed chats";
    int changes = 0;
    QObject::connect(router.get(), &AIRequestRouter::sourceChanged, [&changes] { ++changes; });
    turnOnPrivateCloud();
    EXPECT_TRUE(router->usesPrivateCloud());
    EXPECT_EQ(changes, 1);
    EXPECT_EQ(router->sourceLabel(), u"Private cloud"_s);
    EXPECT_EQ(router->privacyNotice(), std::nullopt);
    settings.setHostedChatEnabled(false);
    EXPECT_FALSE(router->usesPrivateCloud());
    settings.setHostedChatEnabled(true);
    configure(u"https://service.example"_s, u"m"_s);
    EXPECT_FALSE(router->usesPrivateCloud());
    EXPECT_EQ(router->privateCloudNotice(),
              u"Private cloud is off while chat goes to the AI service you added in Settings > AI."_s);
    configure(u"http://192.168.1.5"_s, u"m"_s);
    EXPECT_TRUE(router->usesPrivateCloud()) << "a server nearby is no service";
    EXPECT_EQ(router->privateCloudNotice(), std::nullopt);
}

TEST_F(SourceTest, TheMenuListsEachSourceWithTheReasonItCannotRun)
{
    const auto textOf = [this] {
        QStringList lines;
        for (const SourceOption &option : router->sources())
            lines.append(option.name + (option.isInUse ? u" *"_s : QString()) + u" | "_s +
                         option.destination + u" | "_s + option.problem.value_or(u"-"_s));
        return lines;
    };
    EXPECT_EQ(textOf(), (QStringList{u"Private cloud | Sealed for the private cloud | "
                                     "The private cloud does not offer sealed chats yet."_s,
                                     u"Local Llama3.2 * | Stays on this computer | -"_s}));
    turnOnPrivateCloud();
    localModel.set(LocalModelServing::State::starting);
    EXPECT_EQ(textOf(), (QStringList{u"Private cloud * | Sealed for the private cloud | -"_s,
                                     u"Local Llama3.2 | Stays on this computer | "
                                     "The local model is starting."_s}));
    router->choose(SourceOption::Choice::local);
    configure(u"https://service.example"_s, {});
    EXPECT_EQ(textOf(), (QStringList{u"Private cloud | Sealed for the private cloud | "_s +
                                         SourceOption::customServiceNotice(),
                                     u"Local | Stays on this computer | "
                                     "Settings > AI names another place for replies."_s,
                                     u"service.example * | Goes to service.example, a service you added | "
                                     "No model is chosen in Settings > AI."_s}));
    EXPECT_EQ(settings.baseURLString(), u"https://service.example"_s) << "choosing changes no address";
}

TEST(PrivateCloudTest, AnAddressSpelledOtherwiseStillLeadsToIt)
{
    PrivateCloud cloud;
    EXPECT_FALSE(cloud.isAt({})) << "a build without an address has none to compare";
    cloud.endpoint = u"https://cloud.invalid/v1"_s;
    for (const char *same :
         {"https://cloud.invalid/v1", " https://CLOUD.invalid:443/v1/ ", "https://me@cloud.invalid/v1"})
        EXPECT_TRUE(cloud.isAt(QString::fromLatin1(same))) << same;
    for (const char *other :
         {"", "https://cloud.invalid/v2", "https://cloud.invalid:444/v1", "http://localhost/v1"})
        EXPECT_FALSE(cloud.isAt(QString::fromLatin1(other))) << other;

    cloud.devRelay = DevRelay::origin(u"http://127.0.0.1:8443"_s);
    EXPECT_EQ(cloud.baseURL(), u"http://127.0.0.1:8443/v1"_s);
    EXPECT_EQ(DevRelay::origin(u"http://localhost:9"_s),
              (DevRelay::Origin{DevRelay::Loopback::localhost, 9}));
    for (const char *none : {"https://127.0.0.1:8443", "http://192.168.1.5:8443", "http://localhost", ""})
        EXPECT_EQ(DevRelay::origin(QString::fromLatin1(none)), std::nullopt) << none;
}

} // namespace

} // namespace morvane
