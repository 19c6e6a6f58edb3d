#include "ChatFixture.h"

#include "attestation/evidence/VeniceAttestationVerifier.h"
#include "view_models/chat/AnswerProofs.h"

namespace morvane {

using namespace Qt::StringLiterals;

using Kind = ProofLedger::Place::Kind;
using Mark = AnswerProofs::Line::Mark;

using AnswerProofsTest = ChatFixture;

TEST_F(AnswerProofsTest, AnAnswerThatMovedSaysWhereItBeganAndWhyItLeft)
{
    const QString ending = VeniceAttestationVerifier::Failure::localReplyEnding();
    const struct {
        Kind first;
        std::optional<QString> note;
        Kind last;
        QString words;
        Mark mark;
    } turns[] = {{Kind::enclaveRefused, u"No key"_s + ending, Kind::thisMac,
                  u"This computer · Private cloud refused: No key."_s, Mark::refused},
                 {Kind::enclaveRefused,
                  {},
                  Kind::network,
                  u"Your network · Private cloud refused: No proof came."_s,
                  Mark::refused},
                 {Kind::verifiedEnclave,
                  {},
                  Kind::thisMac,
                  u"This computer · In place of the private cloud"_s,
                  Mark::refused},
                 {Kind::thisMac, {}, Kind::thisMac, u"This computer"_s, Mark::place}};
    AnswerProofs answers(proofs);
    for (const auto &[first, note, last, words, mark] : turns) {
        deliver(u"Question"_s, u"Answer"_s);
        ChatMessage &answer = *lastMessage();
        const auto row = std::make_shared<QUuid>(QUuid::createUuid());
        answers.follow(answer.id(), row);
        proofs.append({.id = *row, .place = {first, {}, {}}, .note = note});
        *row = proofs.append({.place = {last, {}, {}}});
        EXPECT_TRUE(answers.line(answer, true).words.isEmpty()) << "while it is written";
        answers.note(answer, *row);
        EXPECT_EQ(answers.line(answer, false).words, words);
        EXPECT_EQ(answers.line(answer, false).mark, mark) << words.toStdString();
    }
}

} // namespace morvane
