#include "ai/providers/LineSplitter.h"

#include "ai/contract/ProviderError.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace morvane {

namespace {

std::vector<std::string> linesOf(const QByteArray &body, qsizetype pieceSize, qsizetype longestLine = 100)
{
    LineSplitter splitter(longestLine);
    std::vector<std::string> lines;
    for (qsizetype at = 0; at < body.size(); at += pieceSize) {
        splitter.add(body.mid(at, pieceSize));
        while (const auto line = splitter.next())
            lines.emplace_back(line->data(), static_cast<std::size_t>(line->size()));
    }
    if (const auto line = splitter.last())
        lines.emplace_back(line->data(), static_cast<std::size_t>(line->size()));
    return lines;
}

// Wherever the pieces break, inside a CR LF too, the lines are the same.
TEST(LineSplitterTest, CutsAtEveryLineEndInPiecesOfEverySize)
{
    const QByteArray body = "one\ntwo\r\nthree\r\rfour\n\r\n\n\xe2\x80\xa8 stays\nrest";
    const std::vector<std::string> expected{"one", "two", "three", "", "four", "", "", "\xe2\x80\xa8 stays",
                                            "rest"};
    for (qsizetype size = 1; size <= body.size(); ++size)
        EXPECT_EQ(linesOf(body, size), expected) << "pieces of " << size;
}

TEST(LineSplitterTest, ABodyThatEndsInALineEndHasNoEmptyLastLine)
{
    for (const char *body : {"a\n", "a\r", "a\r\n"})
        EXPECT_EQ(linesOf(body, 1), std::vector<std::string>{"a"});
    EXPECT_TRUE(linesOf("", 1).empty());
}

TEST(LineSplitterTest, ALineMayReachTheLimitAndNotPassIt)
{
    const QByteArray atLimit = QByteArray(10, 'x') + "\n";
    for (const qsizetype size : {1, 7, 100}) {
        EXPECT_EQ(linesOf(atLimit, size, 10).size(), 1U);
        EXPECT_THROW(linesOf("x" + atLimit, size, 10), ProviderError);
    }
}

} // namespace

} // namespace morvane
