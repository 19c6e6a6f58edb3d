#include "WindowFixture.h"

#include <QInputMethodEvent>

using namespace Qt::StringLiterals;

class ComposerTest : public WindowFixture {};

TEST_F(ComposerTest, ReturnSendsWhatWasTypedAndEmptiesTheField)
{
    type(u"Hello"_s);
    EXPECT_EQ(m_chat.draft(), u"Hello"_s);
    press(Qt::Key_Return);
    EXPECT_EQ(m_chat.takeCalls(), QStringList(u"send Hello"_s));
    EXPECT_EQ(item(u"composer"_s)->property("text").toString(), QString());
}
