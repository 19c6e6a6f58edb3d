#include "ai/prompts/SystemPrompt.h"

#include <QCryptographicHash>
#include <QStringList>

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

std::vector<AITool> tools(const QStringList &names)
{
    std::vector<AITool> list;
    for (const QString &name : names)
        list.push_back({name});
    return list;
}

QByteArray fingerprint(const QString &text)
{
    return QCryptographicHash::hash(text.toUtf8(), QCryptographicHash::Sha256).toHex();
}

// The digests were taken from the agreed wording, not from this program: a changed character is a fault here.
TEST(SystemPromptTest, TheWordsAreTheAgreedOnes)
{
    EXPECT_EQ(fingerprint(SystemPrompt::defaultPrompt()),
              "3fd61dfb2f81d8f849568082cf1e532247fdaccfe6e900899d70ec71922f00ea");
    const struct {
        QStringList tools;
        QByteArray expected;
    } cases[] = {
        {{}, "c375559a930cdfa6b2841c72542929e35a6ce15746cd327eb1eac4a042d0c755"},
        {{u"read_web_page"_s, u"look_at_screen"_s},
         "c915748a569b7bd035848ae405e7acf6282b00d843738f168c1b3ecce3057195"},
        {{u"look_at_screen"_s}, "1db8d391abfe2542a4577efd9f1f053859c98ebceb7aa73275a62f7b9f7b5d40"},
        {{u"create_calendar_event"_s}, "ca4e42f228bb5e8e3442ae7de6e6f60c82c004ab2be8c862e88c6fa861a78279"},
        {{u"search_web"_s}, "47eaa01e28b7cc82e697f06ffce051f210e3a8e871214d21f10bc84684522128"},
        {{u"remember"_s, u"look_at_screen"_s, u"create_calendar_event"_s, u"search_web"_s,
          u"read_web_page"_s},
         "2c137777e698311d0f91e8ed1ab2a66499ef92bab185c9eba1fe3af71a6a8886"},
    };
    for (const auto &[names, expected] : cases)
        EXPECT_EQ(fingerprint(SystemPrompt::toolInstructions(tools(names))), expected)
            << names.join(u' ').toStdString();
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
