// The private cloud as a person meets it: by keys and clicks in the real window.

#include "end_to_end/CloudFixture.h"

#include "ai/ReplyReading.h"
#include "ai/agent/AgentLoop.h"
#include "ai/tools/ToolRegistry.h"
#include "app/PrivateCloudParts.h"
#include "attestation/ProofLedger.h"
#include "attestation/ProofWatch.h"
#include "support/Await.h"
#include "utils/files/PrivateFile.h"

#include <QDir>
#include <QFile>
#include <QProcess>

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

using Stage = ProofWatch::Stage;

class CloudWindowTest : public CloudFixture {
protected:
    using CloudFixture::CloudFixture;

    // Under the last answer, as it is read.
    [[nodiscard]] QString proofLine() const
    {
        QString words;
        for (QQuickItem *each : WindowDriver::allItems(window())) {
            if (each->objectName() == "proofLine"_L1 && each->isVisible())
                words = each->property("text").toString();
        }
        return words;
    }
    [[nodiscard]] std::vector<ProofLedger::Entry> proofs() const
    {
        return state->assistant().proofs->snapshot().entries;
    }
    [[nodiscard]] const ProofWatch::Run &steps() const
    {
        return *state->assistant().privateCloud->watch->run();
    }
    // Sorted: the first list and the first proof are asked for side by side.
    [[nodiscard]] QString allRequests()
    {
        QString letters = requestsAfter(0);
        std::ranges::sort(letters);
        return letters;
    }
    void ask(const QString &model, const QString &words)
    {
        useCloudModel(model);
        say(words);
    }
    void clickSettings(const QString &page, const QString &objectName)
    {
        QQuickItem *control = settingsControl(page, objectName);
        ASSERT_NE(control, nullptr) << objectName.toStdString();
        WindowDriver::click(control);
    }
};

TEST_F(CloudWindowTest, AVerifiedAnswerSaysSoAndTheNextOneThatItWasVerifiedEarlier)
{
    ask(u"e2ee-practice"_s, u"Good morning"_s);
    ASSERT_TRUE(turnEnds());
    EXPECT_EQ(lastText(),
              u"The practice cloud opened what you wrote: “Good morning”. No model is thinking behind it."_s);
    EXPECT_EQ(proofLine(), u"Private cloud · Hardware verified"_s);
    EXPECT_EQ(allRequests(), u"CLPS"_s);
    time.advance(10s);
    say(u"And again"_s);
    ASSERT_TRUE(turnEnds());
    EXPECT_EQ(proofLine(), u"Private cloud · Hardware verified earlier"_s);
    EXPECT_EQ(requestsAfter(4), u"C"_s);
    EXPECT_TRUE(server.chats().empty());
}

// The private cloud is off after a refusal, says why, and comes back by the person's hand alone.
TEST_F(CloudWindowTest, ARefusalIsShownLeavesTheCloudOffAndIsTakenBackInTheSettings)
{
    ask(u"e2ee-proof-other-key"_s, u"My secret"_s);
    ASSERT_TRUE(turnEnds());
    EXPECT_TRUE(chat().hasBanner());
    EXPECT_TRUE(chat().banner().message.contains(u"no model is set up on this computer"_s))
        << chat().banner().message.toStdString();
    EXPECT_TRUE(proofLine().startsWith(u"Refused: "_s)) << proofLine().toStdString();
    EXPECT_EQ(allRequests(), u"LPS"_s);
    EXPECT_FALSE(state->assistant().router->usesPrivateCloud());

    say(u"Who is there"_s);
    ASSERT_TRUE(turnEnds());
    EXPECT_EQ(allRequests(), u"LPS"_s);
    EXPECT_EQ(server.chats().size(), 1U) << "the model on this computer, which the window names";
    EXPECT_EQ(proofLine(), u"This computer"_s);

    state->storage().settings->setHostedRelayModel(u"e2ee-practice"_s);
    clickSettings(u"ai"_s, u"tryPrivateCloudAgain"_s);
    EXPECT_TRUE(state->assistant().router->usesPrivateCloud());
    window()->requestActivate();
    ASSERT_TRUE(WindowDriver::eventually([this] { return window()->isActive(); }));
    say(u"Back again"_s);
    ASSERT_TRUE(turnEnds());
    EXPECT_EQ(proofLine(), u"Private cloud · Hardware verified"_s);
    EXPECT_EQ(requestsAfter(3), u"PC"_s);
}

TEST_F(CloudWindowTest, AProofIsStoppedBeforeAnythingIsSent)
{
    ask(u"e2ee-proof-held"_s, u"My secret"_s);
    cloud.awaitRequests(3);
    ASSERT_EQ(steps().at(Stage::asking), ProofWatch::State::running);
    WindowDriver::press(window(), Qt::Key_Escape);
    ASSERT_TRUE(turnEnds());
    cloud.awaitEnded(3);
    EXPECT_TRUE(cloud.proofs().at(0).clientLeft);
    EXPECT_EQ(lastStatus(), u"cancelled"_s);
    EXPECT_FALSE(chat().hasBanner());
    EXPECT_TRUE(steps().isOver);
    EXPECT_EQ(steps().at(Stage::processor), ProofWatch::State::waiting);
    EXPECT_TRUE(proofs().empty()) << "nothing was refused, and nothing sent";
    EXPECT_TRUE(state->assistant().router->usesPrivateCloud());
    ask(u"e2ee-practice"_s, u"Go on"_s);
    ASSERT_TRUE(turnEnds());
    EXPECT_TRUE(lastText().contains(u"“Go on”"_s));
}

TEST_F(CloudWindowTest, AStreamIsStoppedAndKeepsItsWordsAndItsProof)
{
    ask(u"e2ee-held"_s, u"My secret"_s);
    ASSERT_TRUE(WindowDriver::eventually([this] {
        time.advance(100ms); // pieces are shown now and then
        return lastText().startsWith(u"The practice cloud begins"_s);
    }));
    WindowDriver::press(window(), Qt::Key_Escape);
    ASSERT_TRUE(turnEnds());
    cloud.awaitEnded(4);
    EXPECT_TRUE(cloud.turns().at(0).clientLeft);
    EXPECT_EQ(lastStatus(), u"cancelled"_s);
    EXPECT_EQ(proofLine(), u"Private cloud · Hardware verified"_s);
    ask(u"e2ee-held"_s, u"Once more"_s);
    cloud.awaitRequests(5);
    EXPECT_EQ(requestsAfter(4), u"C"_s) << "a stop says nothing of the proof";
    cloud.goOn();
    ASSERT_TRUE(turnEnds());
    EXPECT_TRUE(lastText().contains(u"“Once more”"_s));
}

class NewerListTest : public CloudWindowTest {
protected:
    NewerListTest()
        : CloudWindowTest({u"--list"_s, u"newer"_s})
    {}
};

// The list that knows the server comes while its proof is being judged.
TEST_F(NewerListTest, AServerThatIsNewIsAcceptedInTheMiddleOfATurnByTheSameProof)
{
    ask(u"e2ee-proof-newer-image"_s, u"Hello"_s);
    ASSERT_TRUE(turnEnds());
    EXPECT_EQ(allRequests(), u"LPS"_s);
    EXPECT_TRUE(proofLine().startsWith(u"Refused: "_s)) << proofLine().toStdString();
    time.advance(301s);
    ask(u"e2ee-proof-newer-image"_s, u"Hello again"_s);
    ASSERT_TRUE(turnEnds());
    EXPECT_EQ(requestsAfter(3), u"PLSC"_s) << "one proof, judged twice";
    EXPECT_EQ(proofLine(), u"Private cloud · Hardware verified"_s);
    EXPECT_EQ(proofs().back().acceptedServersList->left(10), u"Version 6,"_s);
}

// A model that calls an ability: the window's turns offer it none.
class CallingCloudTest : public CloudWindowTest {
protected:
    CallingCloudTest()
        : CloudWindowTest({u"--scenario"_s, scenario()})
    {}

    static QString scenario()
    {
        static const QTemporaryDir folder;
        const QString path = folder.filePath(u"calls.json"_s);
        PrivateFile::write(path, R"({"responses": [{"to": "chat", "model": "e2ee-practice", "pieces": [
            "Words. ",
            "<<<MORVANE_TOOL_CALLS>>>\n{\"calls\":[{\"name\":\"search_web\",",
            "\"arguments\":{\"query\":\"x\"}}]}\n<<<END_MORVANE_TOOL_CALLS>>>"]}]})");
        return path;
    }
};

TEST_F(CallingCloudTest, AnAbilityThatWasNotOfferedIsNeitherShownNorRun)
{
    ask(u"e2ee-practice"_s, u"Hello"_s);
    ASSERT_TRUE(turnEnds());
    EXPECT_EQ(lastText(), u"Words. "_s);
    EXPECT_FALSE(chat().hasApproval());
    EXPECT_TRUE(server.requests().empty()) << "no search";
    EXPECT_TRUE(lastRow(MessageListModel::ToolLinesRole).toStringList().isEmpty());
}

// With abilities on offer a round is made: called, approved, run, told, answered; each request sealed anew.
TEST_F(CloudWindowTest, ARoundWithAnAbilityIsSealedBothTimes)
{
    ToolRegistry &registry = *state->assistant().tools;
    const PrivateCloud &place = state->assistant().privateCloud->cloud;
    AgentLoop::Turn turn;
    turn.messages = {{.role = AIMessage::Role::user, .content = u"Search for the herons"_s}};
    turn.configuration.baseURLString = place.baseURL();
    turn.configuration.model = u"e2ee-tools-characters"_s;
    turn.configuration.maxOutputTokens = 512;
    turn.configuration.proofRow = QUuid::createUuid();
    for (const AITool &tool : registry.availableTools()) {
        if (tool.name == "search_web"_L1)
            turn.tools.push_back(tool);
    }
    ASSERT_EQ(turn.tools.size(), 1U);
    const auto run = TestWait::begin(
        readTask<EventsRead<AgentEvent>>(AgentLoop(place.makeProvider(), registry).run(turn)));
    ASSERT_TRUE(WindowDriver::eventually([this] { return chat().hasApproval(); }));
    chat().approve();
    ASSERT_TRUE(WindowDriver::eventually([&] { return run->done; }));
    ASSERT_TRUE(run->value);
    EXPECT_EQ(run->value->error, std::nullopt);
    QString shown;
    QStringList tools;
    for (const AgentEvent &event : run->value->events) {
        if (const auto *text = std::get_if<Agent::Text>(&event))
            shown += text->piece;
        else if (const auto *retracted = std::get_if<Agent::RetractText>(&event))
            shown.chop(retracted->count);
        else if (const auto *finished = std::get_if<Agent::ToolFinished>(&event))
            tools += finished->call.name;
    }
    EXPECT_EQ(tools, QStringList(u"search_web"_s));
    EXPECT_TRUE(shown.startsWith(u"The practice cloud was told: “"_s)) << shown.toStdString();
    EXPECT_EQ(allRequests(), u"CCLPS"_s);
    EXPECT_EQ(proofs().size(), 2U);
    const auto turns = cloud.turns();
    EXPECT_NE(turns.at(0).headers, turns.at(1).headers) << "a key of its own";
    for (const auto &words : {u"herons"_s, u"search_web"_s, u"MORVANE_TOOL"_s, u"was told"_s})
        expectAbsent(words, cloud.wire());
}

// What the settings save is judged by the program that others judge it with.
TEST_F(CloudWindowTest, AnExportedLedgerPassesTheCheckOfOthers)
{
    for (const auto &model : {u"e2ee-practice"_s, u"e2ee-503-once"_s, u"e2ee-proof-no-gpu"_s}) {
        ask(model, u"Hello"_s);
        ASSERT_TRUE(turnEnds());
    }
    QDir::setCurrent(profile.path()); // which is where the dialog begins
    clickSettings(u"proof"_s, u"exportProofs"_s);
    QQuickWindow *settings = WindowDriver::settingsWindow(window());
    QObject *dialog = nullptr;
    ASSERT_TRUE(WindowDriver::eventually([&] {
        for (QObject *each : settings->findChildren<QObject *>()) {
            if (each->inherits("QQuickFileDialog"))
                dialog = each;
        }
        return dialog && dialog->property("visible").toBool();
    }));
    const QString path = dialog->property("selectedFile").toUrl().toLocalFile();
    EXPECT_EQ(path, profile.filePath(u"morvane-2026-03-01-1200.json"_s));
    QMetaObject::invokeMethod(dialog, "accept");
    ASSERT_TRUE(WindowDriver::eventually([&] { return QFile::exists(path); }));

    const QJsonObject values = PrivateCloudServer::developmentValues();
    QStringList words{u"export"_s, path};
    for (const auto &[name, key] : {std::pair{"intel-root"_L1, "intelRootSHA256"_L1},
                                    {"quoting-enclave"_L1, "quotingEnclaveSigner"_L1},
                                    {"nvidia-root"_L1, "nvidiaRootSHA256"_L1}})
        words += {u"--pin"_s, name + u'=' + values[key].toString()};
    QProcess check;
    check.start(QStringLiteral(MORVANE_PROOF), words);
    ASSERT_TRUE(check.waitForFinished());
    const QByteArray report = check.readAllStandardOutput();
    EXPECT_EQ(check.exitCode(), 0) << report.toStdString() << check.readAllStandardError().toStdString();
    EXPECT_EQ(report.trimmed().split('\n').last(), "verdict: ok") << report.toStdString();
    EXPECT_EQ(proofs().size(), 4U);
}

} // namespace

} // namespace morvane
