#include "utils/bytes/SealedBox.h"

#include "utils/bytes/Hex.h"

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

SecretBytes keyOf(const QString &hex)
{
    return SecretBytes(*Hex::decode(hex));
}

// Test case 14 of the GCM submission (McGrew, Viega): AES-256, zero key, nonce and plaintext block.
TEST(SealedBoxTest, OpensThePublishedVector)
{
    const auto key = keyOf(QString(64, u'0'));
    const auto box = *Hex::decode(
        u"000000000000000000000000cea7403d4d606b6e074ec5d3baf39d18d0d1c8a799996bf0265b98b5d48ab919"_s);
    EXPECT_EQ(SealedBox::open(box, key), QByteArray(16, '\0'));
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
    EXPECT_EQ(SealedBox::open(box, SecretBytes::random(32)), std::nullopt);
    EXPECT_EQ(SealedBox::open(box, SecretBytes::random(16)), std::nullopt);
    EXPECT_THROW((void)SealedBox::seal("words", SecretBytes::random(16)), std::runtime_error);
}

TEST(SealedBoxTest, AnEmptyTextIsABoxOf28Bytes)
{
    const auto key = SecretBytes::random(32);
    const QByteArray box = SealedBox::seal("", key);
    EXPECT_EQ(box.size(), 28);
    EXPECT_EQ(SealedBox::open(box, key), QByteArray(""));
}

} // namespace

} // namespace morvane
