#include "RouterFixture.h"

#include "ai/routing/ContextBuilder.h"
#include "ai/routing/ModelName.h"
#include "support/TestData.h"

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
    const auto outcome = [this](const QByteArray &line) {
        configureLine(line);
        return wordsOf(*router).join(u" | ");
    };
    TestData::expect("ai/sources.txt", outcome);
}

// The name doesn't tell, the server's own list does.
TEST_F(SourceTest, AModelThatTheServerPassesOnIsCalledACloudModelEverywhere)
{
    configure(u"http://localhost:11434/v1"_s, u"alias"_s);
    probes.models = {{{u"llama3.2:3b"_s}, {u"alias"_s, true}}};
    EXPECT_EQ(open().request.place.source.kind, ChatSource::Kind::ollamaCloud);
    localModel.set(LocalModelServing::State::starting); // its lists are forgotten
    EXPECT_EQ(router->sourceLabel(), u"alias · Ollama's cloud"_s);

    probes.models = {{{u"alias"_s}}};
    const OpenedTurn here = open();
    EXPECT_EQ(proofs.find(*here.proofRow)->place.kind, ProofLedger::Place::Kind::thisMac);
    EXPECT_EQ(router->sourceLabel(), u"Local alias"_s);
}

TEST(ModelNameTest, ReadsCloudSizeAndSameness)
{
    const auto outcome = [](const QByteArray &line) {
        const QString name = QString::fromUtf8(line);
        return (ModelName::isOllamaCloud(name) ? u"cloud "_s : u"here "_s) +
               QString::number(ModelName::parameterCount(name));
    };
    TestData::expect("ai/model_names.txt", outcome);
    EXPECT_TRUE(ModelName::isSame(u"llama3.2"_s, u"llama3.2:latest"_s));
    EXPECT_FALSE(ModelName::isSame(u"llama3.2"_s, u"llama3.2:3b"_s));
    EXPECT_TRUE(ModelName::isSame(u"host:5000/x"_s, u"host:5000/x:latest"_s));
}

TEST_F(SourceTest, ThePrivateCloudIsUsedOnlyWhenAllAgree)
{
    EXPECT_FALSE(router->usesPrivateCloud()) << "the service hasn't offered sealed chats";
    turnOnPrivateCloud();
    EXPECT_TRUE(router->usesPrivateCloud());
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
    QString menus;
    const auto note = [&](const char *when) {
        menus += QString::fromLatin1(when) + u'\n';
        for (const SourceOption &option : router->sources())
            menus += u"  %1%2 | %3 | %4\n"_s.arg(option.name, option.isInUse ? u" *"_s : QString(),
                                                 option.destination, option.problem.value_or(u"-"_s));
    };
    note("at first");
    turnOnPrivateCloud();
    localModel.set(LocalModelServing::State::starting);
    note("in the private cloud, while the local model starts");
    router->choose(SourceOption::Choice::local);
    configure(u"https://service.example"_s, {});
    note("local, with a service without a model in the settings");
    EXPECT_EQ(menus.toStdString(), TestData::text("ai/source_menu.txt"));
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

using Item = ContextBuilder::HistoryItem;

// A history of so many messages, the person's first, named by their numbers.
std::vector<Item> history(int count)
{
    std::vector<Item> items;
    for (int i = 0; i < count; ++i)
        items.push_back({i % 2 == 0 ? MessageRole::user : MessageRole::assistant, QString::number(i), {}});
    return items;
}

// One line for each message: its role, its words, and how many pictures it has.
QStringList lines(const std::vector<AIMessage> &messages)
{
    QStringList all;
    for (const AIMessage &message : messages)
        all.append(rawText(message.role) + u": "_s + message.content +
                   QString(message.imageDataURLs.size(), u'*'));
    return all;
}

TEST(ContextBuilderTest, KeepsTheNewestAndSaysWhatWasCut)
{
    const auto outcome = [](const QByteArray &line) {
        const QByteArrayList numbers = line.split(' ');
        return lines(ContextBuilder::build(history(numbers[0].toInt()), numbers[1].toLongLong(),
                                           u"Be kind."_s, std::nullopt))
            .join(u" | ");
    };
    TestData::expect("ai/kept_messages.txt", outcome);
}

TEST(ContextBuilderTest, PicturesStayWithTheirMessageAndASummaryStandsInForTheNote)
{
    std::vector<Item> items = history(5);
    items[0].images = {u"data:cut"_s};
    items[4].images = {u"data:a"_s, u"data:b"_s};
    const auto messages = ContextBuilder::build(items, 4, {}, u"They spoke of tea."_s);
    EXPECT_EQ(
        messages.at(1).content,
        u"Context from earlier in this conversation (1 older messages not shown): They spoke of tea."_s);
    EXPECT_EQ(messages.back().imageDataURLs, items[4].images);
    EXPECT_EQ(lines(messages).join(u' ').count(u'*'), 2);
}

// A quote is one line of 140 characters, which are what a person counts: a family or an accented letter is
// one.
TEST(ContextBuilderTest, AQuoteIsCutByCharacters)
{
    const auto quoted = [](const QString &words) {
        const QString start = u"The conversation began with the user asking: “"_s;
        const QString sentence = ContextBuilder::digest({{MessageRole::user, words, {}}});
        EXPECT_TRUE(sentence.startsWith(start) && sentence.endsWith(u'”'));
        return sentence.mid(start.size()).chopped(1);
    };
    for (const QString &character : {u"x"_s, u"e\u0301"_s, u"👨‍👩‍👧"_s, u"👻"_s}) {
        EXPECT_EQ(quoted(character.repeated(140)), character.repeated(140));
        EXPECT_EQ(quoted(character.repeated(141)), character.repeated(140) + u'…');
    }
    EXPECT_EQ(quoted(u" \none\ntwo\r\n"_s), u"one two"_s);
    EXPECT_EQ(quoted(u"x"_s.repeated(140) + u"\n \n"_s), u"x"_s.repeated(140));
}

} // namespace

} // namespace morvane
