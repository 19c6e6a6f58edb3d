#include "support/TestData.h"
#include "support/WipeSpy.h"
#include "utils/bytes/Base64.h"
#include "utils/bytes/ByteReader.h"
#include "utils/bytes/HKDF.h"
#include "utils/bytes/Hex.h"
#include "utils/bytes/SealedBox.h"
#include "utils/text/Json.h"

#include <gtest/gtest.h>

#include <array>
#include <span>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

TEST(HexTest, DecodesStrictly)
{
    const auto outcome = [](const QString &text) {
        const auto bytes = Hex::decode(text);
        return bytes ? QString::fromLatin1(bytes->toHex(' ')) : u"refused"_s;
    };
    TestData::expect("utils/hex.txt", outcome);
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

// Test case 14 of the GCM submission (McGrew, Viega): AES-256, zero key, nonce and plaintext block.
TEST(SealedBoxTest, OpensThePublishedVector)
{
    const auto box = *Hex::decode(
        u"000000000000000000000000cea7403d4d606b6e074ec5d3baf39d18d0d1c8a799996bf0265b98b5d48ab919"_s);
    EXPECT_EQ(SealedBox::open(box, SecretBytes(QByteArray(32, '\0'))), QByteArray(16, '\0'));
}

TEST(SealedBoxTest, EveryTamperedBitAndEveryTruncationIsRefused)
{
    const auto key = SecretBytes::random(32);
    const QByteArray box = SealedBox::seal("words", key);
    ASSERT_EQ(box.size(), 12 + 5 + 16);
    EXPECT_EQ(SealedBox::open(box, key), QByteArray("words"));
    EXPECT_NE(SealedBox::seal("words", key), box);
    for (qsizetype bit = 0; bit < box.size() * 8; ++bit) {
        QByteArray bad = box;
        bad[bit / 8] = static_cast<char>(bad[bit / 8] ^ (1 << (bit % 8)));
        EXPECT_EQ(SealedBox::open(bad, key), std::nullopt) << bit;
    }
    for (qsizetype size = 0; size < box.size(); ++size)
        EXPECT_EQ(SealedBox::open(QByteArrayView(box).first(size), key), std::nullopt) << size;
    for (const std::size_t size : {16U, 32U})
        EXPECT_EQ(SealedBox::open(box, SecretBytes::random(size)), std::nullopt);
    EXPECT_THROW((void)SealedBox::seal("words", SecretBytes::random(16)), std::runtime_error);
    EXPECT_EQ(SealedBox::open(SealedBox::seal("", key), key), QByteArray(""));
}

TEST(SecretBytesTest, WhatHeldASecretIsWiped)
{
    WipeSpy spy(u"open sesame"_s);
    QByteArray bytes("open sesame");
    wipe(bytes);
    QString text = u"open sesame"_s.repeated(2);
    wipe(text);
    EXPECT_EQ(spy.takeCount(), 2);
    EXPECT_TRUE(bytes.isEmpty() && text.isEmpty());
    {
        SecretBytes key(QByteArray("open sesame"));
        const SecretBytes moved = std::move(key);
    }
    EXPECT_EQ(spy.takeCount(), 1);
    const auto key = SecretBytes::random(32);
    QByteArray tampered = SealedBox::seal("open sesame", key);
    tampered.back() ^= 1;
    EXPECT_EQ(SealedBox::open(tampered, key), std::nullopt);
    EXPECT_EQ(spy.takeCount(), 1); // plain text that was never verified
}

// RFC 5869, appendix A.3.
TEST(HKDFTest, AgreesWithThePublishedVector)
{
    const SecretBytes secret(QByteArray(22, '\x0b'));
    EXPECT_EQ(HKDF::sha256(secret, "", 42).view().toByteArray().toHex().toStdString(),
              "8da4e775a563c18f715f802a063c5a31b8a11f5c5ee1879ec3454e5f3c738d2d9d201395faa4b61a96c8");
    EXPECT_THROW((void)HKDF::sha256(secret, "", 8161), std::runtime_error);
}

} // namespace

} // namespace morvane
