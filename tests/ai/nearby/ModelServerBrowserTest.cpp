#include "ai/nearby/ModelServerBrowser.h"
#include "ai/nearby/ServerAddress.h"
#include "async/Work.h"
#include "support/Await.h"
#include "support/FakeHttpSession.h"
#include "support/LogCapture.h"
#include "support/ManualClock.h"

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

using App = ModelServerApp;
using Code = TransportError::Code;

namespace {

// "found: a, b", or the words of the failure with the sign that help shows.
QString told(const ModelServerBrowser &browser)
{
    const QString help = browser.needsNetworkAccessHelp() ? u" [help]"_s : QString();
    if (const auto *found = std::get_if<ModelServerBrowser::Found>(&browser.state()))
        return u"found: "_s + found->models.join(u", "_s) + help;
    if (const auto *failed = std::get_if<ModelServerBrowser::Failed>(&browser.state()))
        return failed->text + help;
    return std::holds_alternative<ModelServerBrowser::Idle>(browser.state()) ? u"idle"_s : u"searching"_s;
}

const QString otherReply = u"Reached that computer, but no model server answered. Is Ollama running there?"_s;
const QString unreachable = u"Couldn't reach that computer."_s;
const QString silent = u"That computer didn't respond. Is it awake and on the same network?"_s;

// Whoever refuses and whoever has models is met on real sockets in FirstStepsTest.
class ModelServerBrowserTest : public testing::Test {
protected:
    // Ends what a test left running, so that nothing outlives its services.
    void TearDown() override
    {
        browser.reset();
        TestWait::settle();
        work.end();
        TestWait::settle();
    }

    ManualClock clock;
    Work work{clock};
    FakeHttpSessionProvider network;
    FakeHttpSession &session = *network.fake;
    ModelServerBrowser browser{network, work};
};

TEST_F(ModelServerBrowserTest, TriesTheUsualPortsAndSaysTheMostThatItLearned)
{
    using Answer = FakeHttpSession::Answer;
    const auto failing = [](Code code) {
        return Answer{.sendError = std::make_exception_ptr(TransportError(code, u"So."_s))};
    };
    const auto saying = [](const QByteArray &body) { return Answer{.pieces = {body}}; };
    const Answer page = saying("It works!");
    const Answer list = saying(R"([{"id":"m"}])");
    const struct {
        App app;
        std::vector<Answer> answers;
        QString outcome; // the ports that were asked, and what is told
    } rows[] = {
        {App::ollama, {saying(R"({"data":[{"id":"b"},{"id":"a"}]})")}, u"11434 found: a, b"_s},
        {App::ollama,
         {saying(R"({"data":[]})")},
         u"11434 Connected, but that server has no models installed yet."_s},
        {App::ollama, {saying(R"({"error":"no"})")}, u"11434 "_s + otherReply},
        {App::ollama, {{.status = 404, .pieces = list.pieces}}, u"11434 "_s + otherReply},
        {App::ollama, {saying(QByteArray(17 * 1024 * 1024, ' '))}, u"11434 "_s + otherReply},
        {App::ollama, {failing(Code::UnreadableResponse)}, u"11434 "_s + unreachable},
        {App::ollama,
         {failing(Code::HostNotFound)},
         u"11434 Couldn't find a computer with that name on your network."_s},
        {App::lmStudio, {failing(Code::TimedOut)}, u"1234 "_s + silent},
        {App::lmStudio, {failing(Code::Blocked)}, u"1234 "_s + unreachable},
        {App::other, {failing(Code::CannotConnect), list}, u"8080 8000 found: m"_s},
        {App::other, {page, list}, u"8080 8000 found: m"_s},
        {App::other, {list}, u"8080 found: m"_s},
        {App::other, {failing(Code::TimedOut)}, u"8080 "_s + silent},
        {App::other,
         {page, failing(Code::CannotConnect)},
         u"8080 8000 "_s + QString(otherReply).replace("Ollama"_L1, "the model server"_L1)},
        {App::other,
         {failing(Code::CannotConnect), failing(Code::CannotConnect)},
         u"8080 8000 Found that computer, but it's refusing connections. The model server usually needs to "
         "be told to accept them from other computers. See the setup steps below. [help]"_s},
    };
    for (const auto &row : rows) {
        const std::size_t before = session.requests().size();
        for (const Answer &answer : row.answers)
            session.answer(answer);
        const LogCapture log;
        browser.probe(u"box"_s, row.app);
        TestWait::until([&] { return told(browser) != u"searching"_s; });
        QString outcome;
        for (std::size_t i = before; i < session.requests().size(); ++i)
            outcome += QString::number(session.requests()[i].url.port()) + u' ';
        EXPECT_EQ(outcome + told(browser), row.outcome);
        EXPECT_EQ(log.lines().size(), row.outcome.contains("found:"_L1) ? 1 : 0);
        browser.probe(u" "_s, row.app);
        EXPECT_EQ(told(browser), u"That doesn't look like a computer name or address."_s);
    }
    EXPECT_EQ(session.requests().front().url, QUrl(u"http://box.local:11434/v1/models"_s));
    EXPECT_EQ(network.asked.at(0), std::pair(EgressFeature::aiSetup, SensitiveDataSet()));
}

TEST_F(ModelServerBrowserTest, NeverWaitsForLongAndCanBeDropped)
{
    session.answer({.neverAnswers = true});
    browser.probe(u"box"_s, App::ollama);
    EXPECT_EQ(told(browser), u"searching"_s);
    EXPECT_EQ(session.requests().front().limit, ModelServerBrowser::patience);
    EXPECT_EQ(session.openRequests(), 1);
    browser.reset();
    TestWait::settle();
    EXPECT_EQ(session.openRequests(), 0);
    EXPECT_EQ(told(browser), u"idle"_s);
}

} // namespace

TEST(ServerAddressTest, MakesBaseAddressesOfWhatPeopleType)
{
    const std::vector<std::pair<QString, QString>> rows{
        {u" box: "_s, u"http://box.local:8080/v1 http://box.local:8000/v1"_s},
        {u"Box.local."_s, u"http://Box.local.:8080/v1 http://Box.local.:8000/v1"_s},
        {u"box:1234"_s, u"http://box.local:1234/v1"_s},
        {u"192.168.1.5/api/"_s, u"http://192.168.1.5:8080/api http://192.168.1.5:8000/api"_s},
        {u"HTTP://192.168.1.5:80"_s, u"http://192.168.1.5:80/v1"_s},
        {u"fd00::1"_s, u"http://[fd00::1]:8080/v1 http://[fd00::1]:8000/v1"_s},
        {u"[fd00::1]:99"_s, u"http://[fd00::1]:99/v1"_s},
        {u"localhost"_s, u"http://localhost:8080/v1 http://localhost:8000/v1"_s},
        {u"https://models.example.com"_s, u"https://models.example.com/v1"_s},
    };
    const auto candidates = [](const QString &text) {
        return ServerAddress::candidates(text, {8080, 8000}).join(u' ');
    };
    for (const auto &[text, addresses] : rows)
        EXPECT_EQ(candidates(text), addresses) << text.toStdString();
    // Outside only with https, and nothing that isn't a place alone.
    for (const QString &refused :
         {u"models.example.com"_s, u"8.8.8.8"_s, u"0x7f.0.0.1"_s, u"2001:db8::1"_s, u"ftp://box"_s,
          u"user:word@box"_s, u"https://user@models.example.com"_s, u"box?x=1"_s, u"box:0"_s, u"box:99999"_s,
          u"Anna’s box"_s, u"küche"_s, u" \n"_s, u"http://"_s, u"://"_s, QString(600, u'b')})
        EXPECT_EQ(candidates(refused), QString()) << refused.left(40).toStdString();
}

} // namespace morvane
