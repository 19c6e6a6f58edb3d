#include "WindowFixture.h"

#include "models/ChatMessage.h"
#include "persistence/SettingsStore.h"
#include "view_models/chat/ChatViewModel.h"

#include <QTest>

namespace morvane {

using namespace Qt::StringLiterals;

class MotionTest : public WindowFixture {
protected:
    // A chat with something of each kind that opens.
    void showAll()
    {
        const QString lines = u"line\n\n"_s.repeated(30).chopped(1);
        const auto chat = addChat(
            u"A chat"_s, {lines, u"<think>Hm, two.</think>\n```\n%1\n```"_s.arg(lines)},
            [](ChatMessage &reply) {
                reply.appendToolLine(u"Reading"_s, ToolLineState::finished, {u"sent"_s, u"back"_s, false});
                reply.setPlaceRaw(u"this-mac"_s);
            });
        m_app->presentation().chat->open(chat);
        settle();
    }
    // The last one of that name that is drawn.
    [[nodiscard]] QQuickItem *drawn(const QString &name) const
    {
        QQuickItem *last = nullptr;
        for (QQuickItem *each : allItems())
            last = each->objectName() == name && each->isVisible() ? each : last;
        return last;
    }
    // How many folds and panels are open, those that are on their way by their part of it.
    [[nodiscard]] double openShare() const
    {
        double sum = 0;
        for (QQuickItem *each : allItems()) {
            const QVariant share = each->property("share");
            sum += share.isValid() && each->parentItem()->isVisible() ? share.toDouble() : 0;
        }
        return sum;
    }
};

TEST_F(MotionTest, WhatAPressOpensAndClosesTakesItsTimeUnlessMotionIsReduced)
{
    for (const bool isReduced : {true, false}) {
        m_app->storage().settings->setReduceAnimation(isReduced);
        for (const auto &name :
             {u"unfoldMessage"_s, u"thoughtFold"_s, u"toolLine"_s, u"unfoldCode"_s, u"proofLine"_s}) {
            SCOPED_TRACE(name.toStdString() + (isReduced ? " reduced" : ""));
            showAll();
            ASSERT_NE(drawn(name), nullptr);
            double before = openShare();
            for (const double step : {1, -1}) {
                if (step < 0 && name == "proofLine"_L1)
                    QMetaObject::invokeMethod(drawn(u"closeProof"_s), "clicked");
                else
                    QMetaObject::invokeMethod(drawn(name), "clicked");
                EXPECT_EQ(openShare(), before + (isReduced ? step : 0)) << "at once";
                EXPECT_TRUE(eventually([&] { return openShare() == before + step; }));
                before += step;
            }
        }
    }
}

TEST_F(MotionTest, AViewAtTheEndStaysThereWhileAFoldOpens)
{
    m_app->storage().settings->setReduceAnimation(false);
    showAll();
    QQuickItem *list = item(u"messages"_s);
    const double before = list->property("contentHeight").toDouble();
    QMetaObject::invokeMethod(drawn(u"toolLine"_s), "clicked");
    const double whole = openShare();
    EXPECT_TRUE(eventually([&] { return openShare() >= whole + 1; }));
    EXPECT_TRUE(eventually([&] { return list->property("gapToEnd").toDouble() < 1; }));
    EXPECT_GT(list->property("contentHeight").toDouble(), before);
}

} // namespace morvane
