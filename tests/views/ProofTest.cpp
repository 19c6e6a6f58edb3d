#include "WindowFixture.h"

#include "ai/contract/ProviderError.h"
#include "attestation/ProofWatch.h"
#include "attestation/evidence/VeniceAttestationVerifier.h"
#include "view_models/chat/ChatViewModel.h"
#include "view_models/settings/ProofLedgerViewModel.h"

#include <QTest>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

using Kind = ProofLedger::Place::Kind;
using Stage = ProofWatch::Stage;
using State = ProofWatch::State;

// The line under an answer, the panel that it opens, and the list of all rows in the settings.
class ProofTest : public WindowFixture {
protected:
    [[nodiscard]] ProofLedger::Entry verified(int chips, bool requiresChips,
                                              std::chrono::milliseconds age = 1s) const
    {
        const ProofLedger::Attestation proof{.stackLabel = u"A stack"_s,
                                             .teeProvider = u"tdx\n"_s.repeated(100),
                                             .quote = QByteArray(5006, '\xab'),
                                             .nonce = QByteArray(32, '\x01'),
                                             .mrtd = QByteArray(48, '\x02'),
                                             .rtmr3 = QByteArray(48, '\x03'),
                                             .composeHash = QByteArray(32, '\x04'),
                                             .signingAddress = QByteArray(20, '\x05'),
                                             .modelPublicKey = QByteArray(65, '\x06'),
                                             .verifiedGPUCount = chips,
                                             .requiresGPUEvidence = requiresChips,
                                             .verifiedAt = m_clock.now().addMSecs(-age.count())};
        ProofLedger::Entry row = at(Kind::verifiedEnclave);
        row.attestation = proof;
        row.acceptedServersList = u"Version 7"_s;
        return row;
    }
    [[nodiscard]] ProofLedger::Entry at(Kind kind, const QString &host = {}) const
    {
        return {.id = QUuid::createUuid(),
                .startedAt = m_clock.now(),
                .place = {kind, u"small"_s, host},
                .purpose = u"chat"_s};
    }
    [[nodiscard]] ProofLedger::Entry refused(const QString &why) const
    {
        ProofLedger::Entry row = at(Kind::enclaveRefused);
        row.note = why + VeniceAttestationVerifier::Failure::localReplyEnding();
        return row;
    }
    void answerFrom(const ProofLedger::Entry &row)
    {
        send();
        leaveProof(row);
        stream(u"An answer."_s);
        endReply();
    }
    // Under the last answer.
    [[nodiscard]] QQuickItem *line() const
    {
        QQuickItem *last = nullptr;
        for (QQuickItem *each : allItems())
            last = each->objectName() == "proofLine"_L1 && each->isVisible() ? each : last;
        return last;
    }
    [[nodiscard]] QString words() const { return line() ? line()->property("text").toString() : QString(); }
    void openPanel()
    {
        line()->forceActiveFocus(Qt::TabFocusReason);
        press(Qt::Key_Return);
    }
    [[nodiscard]] bool isOpen() const { return item(u"closeProof"_s) && item(u"closeProof"_s)->isVisible(); }
    [[nodiscard]] QStringList all(const QString &objectName) const
    {
        QStringList names;
        for (QQuickItem *each : allItems()) {
            if (each->objectName() == objectName && each->isVisible())
                names += accessibleName(each);
        }
        return names;
    }
};

TEST_F(ProofTest, TheLineAndThePanelSayWhatWasCheckedAndNoMore)
{
    const struct {
        ProofLedger::Entry row;
        QString line;
        QStringList panel;
        QStringList neverSaid;
    } rows[] = {
        {verified(2, true),
         u"Private cloud · Hardware verified"_s,
         {u"2 graphics chip reports verified"_s, u"one chip can answer twice"_s, u"Version 7"_s},
         {u"2 graphics chips"_s}},
        {verified(1, true, 2000ms),
         u"Private cloud · Hardware verified"_s,
         {u"1 graphics chip report verified"_s, u"As this message was about to be sent."_s},
         {}},
        {verified(0, false, 2001ms),
         u"Private cloud · Hardware verified earlier"_s,
         {u"graphics chips not checked"_s, u"For an earlier message."_s,
          u"Graphics chips: nothing was verified of them."_s},
         {u"one chip can answer twice"_s}},
        {verified(0, true), u"Private cloud · Hardware verified"_s, {u"no graphics chip proof"_s}, {}},
        {refused(u"The key is another"_s),
         u"Refused: The key is another."_s,
         {u"Without a proof nothing of your message is sent."_s},
         {u"so this reply is from"_s}},
        {at(Kind::thisMac), u"This computer"_s, {u"none is needed for a model on this computer"_s}, {}},
        {at(Kind::network, u"shelf"_s), u"Your network"_s, {u"shelf"_s, u"Whoever runs that server"_s}, {}},
        {at(Kind::yourOwnService, u"a.example"_s),
         u"Your own service"_s,
         {u"a.example"_s, u"The service can read what is sent to it."_s},
         {u"Nothing was sent"_s}},
        {at(Kind::ollamaCloud), u"Ollama's cloud"_s, {u"The service can read"_s}, {u"Nothing was sent"_s}}};
    for (const auto &[row, line, panel, neverSaid] : rows) {
        answerFrom(row);
        EXPECT_EQ(words(), line);
        openPanel();
        ASSERT_TRUE(isOpen()) << line.toStdString();
        for (const QString &text : panel)
            EXPECT_TRUE(shows(text)) << line.toStdString() << ": " << text.toStdString();
        for (const QString &text : neverSaid)
            EXPECT_FALSE(shows(text)) << line.toStdString() << ": " << text.toStdString();
        EXPECT_EQ(all(u"proofFact"_s).size(), row.attestation ? 17 : row.place.host.isEmpty() ? 5 : 6);
        press(Qt::Key_Escape);
        EXPECT_FALSE(isOpen());
        EXPECT_TRUE(item(u"composer"_s)->hasActiveFocus());
    }
    press(Qt::Key_Tab);
    openPanel();
    ASSERT_TRUE(isOpen());
    EXPECT_FALSE(line()->hasActiveFocus());
    press(Qt::Key_Escape);
    EXPECT_TRUE(line()->hasActiveFocus()) << "who came by the keyboard goes on from there";
}

TEST_F(ProofTest, BytesAreShownShortAndCopiedWhole)
{
    const ProofLedger::Entry row = verified(2, true);
    answerFrom(row);
    openPanel();
    const ProofLedger::Attestation &proof = *row.attestation;
    for (const auto &[name, bytes] : {std::pair{u"Processor's report"_s, proof.quote},
                                      {u"Nonce"_s, proof.nonce},
                                      {u"Base system (mrtd)"_s, proof.mrtd},
                                      {u"Boot (rtmr3)"_s, proof.rtmr3},
                                      {u"Configuration (compose hash)"_s, *proof.composeHash},
                                      {u"Signing address"_s, proof.signingAddress},
                                      {u"Model's public key"_s, proof.modelPublicKey}}) {
        const QString hex = QString::fromLatin1(bytes.toHex());
        QQuickItem *button = named(u"Copy "_s + name);
        ASSERT_NE(button, nullptr) << name.toStdString();
        button->forceActiveFocus(Qt::TabFocusReason);
        press(Qt::Key_Return);
        EXPECT_EQ(clipboard(), hex);
        EXPECT_FALSE(shows(hex)) << name.toStdString();
        EXPECT_TRUE(shows(hex.left(10) + u'…' + hex.right(10)));
    }
    EXPECT_FALSE(shows(u"tdx "_s.repeated(25))) << "a server's words about itself are cut";
}

TEST_F(ProofTest, StepsGoLiveAndThoseOfAFormerTurnChangeNothing)
{
    ProofWatch watch;
    m_app->presentation().chat->watchProofs(watch);
    const auto stepsNow = [this] { return all(u"proofStep"_s); };
    send();
    const quint64 stopped = watch.begin(u"small"_s, m_clock.now());
    m_app->presentation().chat->stopResponding();
    send();
    EXPECT_EQ(words(), QString());
    watch.set(stopped, Stage::asking, State::running);
    settle();
    EXPECT_EQ(words(), QString());

    const quint64 run = watch.begin(u"small"_s, m_clock.now());
    watch.set(run, Stage::asking, State::running);
    settle();
    EXPECT_EQ(words(), u"Asking the server for its proof…"_s);
    openPanel();
    ASSERT_EQ(stepsNow().size(), 7);
    EXPECT_EQ(stepsNow()[0], u"Asking the server for its proof: Under way"_s);
    EXPECT_EQ(stepsNow()[6], u"Sealing the message: Waits"_s);
    for (const Stage stage : {Stage::asking, Stage::processor, Stage::baseSystem})
        watch.set(run, stage, State::passed);
    watch.set(run, Stage::boot, State::running);
    settle();
    EXPECT_EQ(words(), u"Checking the boot…"_s);
    EXPECT_TRUE(shows(u"is sent under this proof before it holds."_s));
    EXPECT_TRUE(all(u"proofFact"_s).isEmpty()) << "nothing is told before it is known";
    watch.end(run);
    leaveProof(refused(u"It is set up otherwise"_s));
    failReply(std::make_exception_ptr(ProviderError(ProviderError::Plain::networkUnavailable)));
    EXPECT_EQ(words(), u"Refused: It is set up otherwise."_s);
    EXPECT_EQ(stepsNow()[2], u"Checking the base system: Passed"_s);
    EXPECT_EQ(stepsNow()[3], u"Checking the boot: Ended here"_s);
    EXPECT_EQ(stepsNow()[5], u"Checking the key: Not reached"_s);

    press(Qt::Key_Escape);
    send();
    const quint64 earlier = watch.begin(u"small"_s, m_clock.now());
    watch.takeEarlier(earlier, false);
    watch.set(earlier, Stage::sealing, State::running);
    settle();
    openPanel();
    EXPECT_FALSE(shows(u"before it holds."_s)) << "it is on its way by now";
    EXPECT_EQ(stepsNow()[4], u"Checking graphics chip reports: Not checked"_s);
    EXPECT_EQ(stepsNow()[5], u"Checking the key: Passed earlier"_s);
    watch.end(earlier);
    leaveProof(verified(0, false, 5s));
    stream(u"Sealed."_s);
    EXPECT_EQ(words(), u"Private cloud · Hardware verified earlier"_s) << "while the reply is still written";
    EXPECT_TRUE(stepsNow().isEmpty());
    EXPECT_FALSE(all(u"proofFact"_s).isEmpty());
    endReply();
    EXPECT_TRUE(isOpen());
}

TEST_F(ProofTest, OfAnAnswerWhoseRowHasGoneOnlyThePlaceIsSaid)
{
    answerFrom(verified(2, true));
    const QString chat = m_app->presentation().chat->conversationId();
    openPanel();
    m_app->presentation().proofLedger->clear();
    settle();
    EXPECT_EQ(words(), u"Verified enclave"_s);
    EXPECT_TRUE(shows(u"Only the place was kept with this answer."_s));
    EXPECT_TRUE(all(u"proofFact"_s).isEmpty());
    start();
    load();
    m_app->presentation().chat->open(chat);
    settle();
    EXPECT_EQ(words(), u"Verified enclave"_s);
    openPanel();
    EXPECT_TRUE(shows(u"Only the place was kept with this answer."_s));
    m_app->presentation().chat->newConversation();
    settle();
    EXPECT_FALSE(isOpen()) << "another chat is open";
}

TEST_F(ProofTest, ThePanelStandsBesideTheChatOrOverItAndMakesWayForACardThatAsks)
{
    answerFrom(verified(2, true));
    for (const int width : {1100, 420}) {
        m_window->resize(width, 760);
        settle();
        openPanel();
        ASSERT_TRUE(isOpen());
        EXPECT_TRUE(item(u"closeProof"_s)->hasActiveFocus());
        const QRectF panel = item(u"proofPanel"_s)->mapRectToScene(item(u"proofPanel"_s)->boundingRect());
        const QRectF composer = item(u"composer"_s)->mapRectToScene(item(u"composer"_s)->boundingRect());
        EXPECT_EQ(panel.intersects(composer), width == 420);
        EXPECT_EQ(item(u"composer"_s)->isEnabled(), width == 1100) << "what is covered takes no keys";
        EXPECT_DOUBLE_EQ(panel.right(), width);
        press(Qt::Key_J, Qt::ControlModifier);
        EXPECT_TRUE(item(u"composer"_s)->hasActiveFocus());
        EXPECT_EQ(isOpen(), width == 1100);
        press(Qt::Key_Escape);
        EXPECT_FALSE(isOpen());
    }
    openPanel();
    askToSearch(u"ferns"_s, false);
    EXPECT_FALSE(isOpen());
}

TEST_F(ProofTest, TheListIsFilteredOpenedExportedAndClearedAfterAQuestion)
{
    QQuickWindow *page = settingsWindow();
    const auto control = [&](const QString &name) { return WindowDriver::item(page, name); };
    ProofLedger &ledger = *m_app->assistant().proofs;
    page->setProperty("page", u"proof"_s);
    settle();
    EXPECT_FALSE(control(u"exportProofs"_s)->isEnabled());
    EXPECT_TRUE(shows(page, u"This build has no private cloud, so no server is accepted."_s));
    for (const ProofLedger::Entry &row :
         {at(Kind::thisMac), at(Kind::network, u"shelf"_s), at(Kind::yourOwnService, u"a.example"_s),
          at(Kind::ollamaCloud), refused(u"No"_s), verified(2, true)})
        ledger.append(row);
    ASSERT_TRUE(eventually([&] { return control(u"exportProofs"_s)->isEnabled(); }));
    for (const auto &[name, count] : {std::pair{u"cloud"_s, 2},
                                      {u"here"_s, 1},
                                      {u"network"_s, 1},
                                      {u"services"_s, 2},
                                      {u"refused"_s, 1},
                                      {u"all"_s, 6}}) {
        click(control(u"proofs."_s + name));
        EXPECT_EQ(control(u"proofRows"_s)->property("count").toInt(), count) << name.toStdString();
    }
    control(u"proofRows"_s)->forceActiveFocus();
    WindowDriver::press(page, Qt::Key_Return);
    EXPECT_TRUE(shows(page, u"2 graphics chip reports verified"_s)) << "the newest stands first";
    const double before = control(u"proofDetails"_s)->mapToScene({}).y();
    ledger.append(at(Kind::thisMac));
    EXPECT_TRUE(eventually([&] { return control(u"proofDetails"_s)->mapToScene({}).y() > before; }));

    ProofLedgerViewModel &list = *m_app->presentation().proofLedger;
    EXPECT_FALSE(list.exportTo(QUrl(u"file:///dev/null/x.json"_s)));
    settle();
    EXPECT_TRUE(
        accessibleName(control(u"proofExportProblem"_s)).startsWith(u"Could not save the proof file"_s));
    EXPECT_TRUE(list.exportTo(QUrl(m_profile.filePath(u"x.json"_s)))) << "a name that was typed";
    settle();
    EXPECT_EQ(control(u"proofExportProblem"_s), nullptr);

    for (const bool agrees : {false, true}) {
        ASSERT_TRUE(eventually([&] { // a panel that fades takes no clicks, and lets none through
            click(control(u"clearProofs"_s));
            return QTest::qWaitFor([&] { return isAt(page, u"Cancel"_s); }, 1000);
        }));
        if (agrees)
            WindowDriver::press(page, Qt::Key_Tab);
        WindowDriver::press(page, Qt::Key_Return);
        EXPECT_TRUE(eventually([&] { return ledger.snapshot().entries.empty() == agrees; }));
    }
    EXPECT_EQ(control(u"proofRows"_s)->property("count").toInt(), 0);
}

} // namespace morvane
