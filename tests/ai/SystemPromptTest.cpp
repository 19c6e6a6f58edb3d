#include "ai/prompts/SystemPrompt.h"

#include "support/TestData.h"

#include <QCryptographicHash>

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

QByteArray fingerprint(const QString &text)
{
    return QCryptographicHash::hash(text.toUtf8(), QCryptographicHash::Sha256).toHex();
}

// The digests were taken from the agreed wording, not from this program: a changed character is a fault here.
TEST(SystemPromptTest, TheWordsAreTheAgreedOnes)
{
    const auto instructions = [](const QByteArray &names) {
        std::vector<AITool> tools;
        for (const QString &name : QString::fromUtf8(names).split(u' ', Qt::SkipEmptyParts))
            tools.push_back({name});
        return QString::fromLatin1(fingerprint(SystemPrompt::toolInstructions(tools)));
    };
    const char *table = "ai/tool_instructions.txt";
    EXPECT_EQ(TestData::transcript(table, instructions), TestData::text(table));
}

TEST(SystemPromptTest, IdentityThenRulesThenMemory)
{
    const QString identity = SystemPrompt::identity(u"Be brief."_s);
    EXPECT_EQ(identity, u"Be brief.\n\nYour name is MorvaneGPT."_s);
    const QString start = identity + u"\n\n"_s + SystemPrompt::toolInstructions({});
    EXPECT_EQ(SystemPrompt::ofTurn(identity, {}, u"Notes"_s), start + u"\n\nNotes"_s);
    EXPECT_EQ(SystemPrompt::ofTurn(identity, {}, u""_s), start);
    EXPECT_EQ(SystemPrompt::ofTurn(identity, {}, std::nullopt), start);
}

} // namespace

} // namespace morvane
