#include "support/TestData.h"
#include "utils/bytes/Base64.h"
#include "utils/bytes/ByteReader.h"
#include "utils/bytes/Hex.h"
#include "utils/text/Json.h"

#include <gtest/gtest.h>

#include <array>
#include <span>

namespace morvane {

using namespace Qt::StringLiterals;

TEST(HexTest, DecodesStrictly)
{
    const auto outcome = [](const QString &text) {
        const auto bytes = Hex::decode(text);
        return bytes ? QString::fromLatin1(bytes->toHex(' ')) : u"refused"_s;
    };
    EXPECT_EQ(TestData::transcript("utils/hex.txt", outcome), TestData::text("utils/hex.txt"));
    EXPECT_EQ(Hex::encode(QByteArray("\x00\xAB", 2)), u"00ab"_s);
}

TEST(Base64Test, AgreesWithAnotherEncoderAndRefusesWhatIsNotStandard)
{
    QByteArray bytes;
    for (int size = 0; size <= 512; ++size) {
        const QByteArray encoded = bytes.toBase64();
        QString text = u"behind "_s;
        Base64::append(text, bytes);
        EXPECT_EQ(text, u"behind "_s + QString::fromLatin1(encoded));
        EXPECT_EQ(Base64::encode(bytes), encoded);
        EXPECT_EQ(Base64::decode(encoded), bytes);
        EXPECT_EQ(Base64::decode(QString::fromLatin1(encoded)), bytes);
        bytes.append(static_cast<char>(size));
    }
    for (const char *bad : {"QQ", "QQ=", "QQ==\n", "Q Q=", "QQ__", "====", "===A", "QQ=A", "QQ==QQ=="}) {
        EXPECT_EQ(Base64::decode(bad), std::nullopt) << bad;
        EXPECT_EQ(Base64::decode(QString::fromLatin1(bad)), std::nullopt) << bad;
    }
    EXPECT_EQ(Base64::decode(u"QU\u0151B"_s), std::nullopt); // U+0151 is "Q" in its lower byte
}

TEST(ByteReaderTest, AReadPastTheEndYieldsNothingAndMovesNothing)
{
    constexpr std::array<std::uint8_t, 8> bytes{1, 2, 3, 4, 5, 6, 7, 8};
    ByteReader reader{std::as_bytes(std::span(bytes))};
    EXPECT_EQ(reader.readUInt16(), 0x0201);
    EXPECT_EQ(reader.readUInt64(), std::nullopt);
    EXPECT_EQ(reader.remaining(), 6U);
    EXPECT_EQ(reader.readUInt32(), 0x06050403U);
    EXPECT_FALSE(reader.read(3));
    EXPECT_FALSE(reader.read(static_cast<std::size_t>(-1)));
    EXPECT_EQ(reader.readUInt8(), 7);
    EXPECT_EQ(reader.read(1)->size(), 1U);
    EXPECT_EQ(reader.readUInt8(), std::nullopt);
}

TEST(JsonTest, ReadersNeverCoerce)
{
    const auto object = Json::parseObject(
        R"({"s":"5","n":5,"f":5.5,"big":9007199254740993,"b":true,"nil":null,"a":[{},1],"o":[{},{}]})");
    ASSERT_TRUE(object);
    for (const auto key : {"s"_L1, "n"_L1, "f"_L1, "b"_L1, "nil"_L1, "a"_L1, "missing"_L1}) {
        EXPECT_EQ(Json::string(*object, key), key == "s"_L1 ? std::optional(u"5"_s) : std::nullopt)
            << key.data();
        EXPECT_EQ(Json::integer(*object, key), key == "n"_L1 ? std::optional(5) : std::nullopt) << key.data();
    }
    EXPECT_EQ(Json::integer(*object, "big"_L1), 9007199254740993);
    EXPECT_EQ(Json::number(*object, "f"_L1), 5.5);
    EXPECT_EQ(Json::boolean(*object, "n"_L1), std::nullopt);
    EXPECT_EQ(Json::objects(*object, "a"_L1), std::nullopt);
    EXPECT_EQ(Json::objects(*object, "o"_L1)->size(), 2U);
    for (const char *text : {"", "[]", "{", "{}x", "\"s\"", "{\"a\":\xff}"})
        EXPECT_FALSE(Json::parseObject(text)) << text;
}

} // namespace morvane
