#include "utils/bytes/SealedBox.h"

#include "support/WipeSpy.h"
#include "utils/bytes/HKDF.h"
#include "utils/bytes/Hex.h"

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

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
