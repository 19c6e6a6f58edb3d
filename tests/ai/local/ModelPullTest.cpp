#include "ai/local/ModelPull.h"

#include "ai/local/LocalSetupError.h"
#include "support/Await.h"
#include "support/FakeHttpSession.h"
#include "support/LogCapture.h"
#include "support/ManualClock.h"

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

class ModelPullTest : public testing::Test {
protected:
    void answer(std::vector<QByteArray> pieces, bool breaks = false)
    {
        const TransportError lost(TransportError::Code::ConnectionLost, u"lost"_s);
        provider.fake->answer(
            {.pieces = std::move(pieces), .bodyError = breaks ? std::make_exception_ptr(lost) : nullptr});
    }

    // What the person is told; empty when the model is there.
    QString pull()
    {
        const LocalServer server{&provider, QUrl(u"http://localhost:11434"_s)};
        ModelPull::OnProgress onProgress = [this](const ModelPull::Progress &one) {
            percents.push_back(one.percent.value_or(-1));
        };
        const auto outcome =
            TestWait::begin(ModelPull::run(server, u"m:1b"_s, std::move(onProgress), &clock, {}));
        for (int i = 0; i < 50 && !outcome->done; ++i) {
            TestWait::settle();
            clock.advance(1s);
        }
        TestWait::settle();
        try {
            if (outcome->error)
                std::rethrow_exception(outcome->error);
        } catch (const LocalSetupError &error) {
            return error.userMessage();
        } catch (const std::exception &error) {
            return QString::fromUtf8(error.what());
        }
        return outcome->done ? QString() : u"never"_s;
    }

    FakeHttpSessionProvider provider;
    ManualClock clock;
    LogCapture log;
    std::vector<int> percents;
};

TEST_F(ModelPullTest, ProgressIsToldAsItComesAndTheEndIsTheServersOwn)
{
    answer({R"({"status":"pulling manifest"})"
            "\n"
            R"({"total":1000,"completed":0})"
            "\n{\"total\":1000,\"comp",
            "leted\":999}\nno JSON\n[]\n"
            R"({"total":0,"completed":5})"
            "\n"
            R"({"total":10,"completed":-1})"
            "\n"
            R"({"total":10,"completed":99})"
            "\n"
            R"({"total":9e18,"completed":4e18})"
            "\n",
            R"({"status":"success"})"});
    EXPECT_EQ(pull(), QString());
    EXPECT_EQ(percents, (std::vector{0, 99, 100, 44}));
    const HttpRequest &request = provider.fake->requests().front();
    EXPECT_EQ(request.url, QUrl(u"http://localhost:11434/api/pull"_s));
    EXPECT_EQ(request.body, R"({"model":"m:1b","stream":true})");
    EXPECT_EQ(request.timeout, 3'600s);
    EXPECT_EQ(provider.asked.front().first, EgressFeature::aiSetup);
    EXPECT_EQ(log.lines().last(), u"ai-provider: Model pull complete: m:1b"_s);
}

TEST_F(ModelPullTest, ABrokenConnectionIsMadeAnewWhileSomethingComes)
{
    for (int i = 0; i < 8; ++i)
        answer({R"({"total":10,"completed":1})"
                "\n"},
               true);
    answer({R"({"total":10,"completed":2})"
            "\n"}); // ends before the model is there
    answer({R"({"status":"success"})"});
    EXPECT_EQ(pull(), QString());
    EXPECT_EQ(provider.fake->requests().size(), 10U);
    for (int i = 0; i < 4; ++i)
        answer({}, true);
    EXPECT_EQ(pull(), u"lost"_s);
}

TEST_F(ModelPullTest, TheServersReasonIsToldAndAMissingKeyIsKnown)
{
    answer({R"({"error":"pull model manifest: file does not exist"})"
            "\n"});
    EXPECT_EQ(pull(), u"Couldn't download the model m:1b: pull model manifest: file does not exist"_s);
    provider.fake->answer(500, R"({"error":"no space left on device"})");
    EXPECT_EQ(pull(), u"Couldn't download the model m:1b: no space left on device"_s);
    provider.fake->answer(404, {});
    EXPECT_EQ(pull(), u"Couldn't download the model m:1b: HTTP 404"_s);
    answer({R"({"error":"open /home/a/.ollama/id_ed25519: no such file or directory"})"});
    EXPECT_EQ(pull(), QString::fromUtf8(ModelPull::MissingIdentityKey().what()));
    EXPECT_EQ(provider.fake->requests().size(), 4U) << "what the server says is not asked for again";
}

} // namespace morvane
