#include "security/SealedForm.h"

#include "security/ProcessKeySealing.h"
#include "support/TestData.h"
#include "utils/bytes/Hex.h"

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// Key 00 01 … 1f, nonce a0 a1 … ab; boxes computed with another program over the same cipher.
SecretBytes knownKey()
{
    return SecretBytes(*Hex::decode(u"000102030405060708090a0b0c0d0e0f101112131415161718191a1b1c1d1e1f"_s));
}

TEST(SealedFormTest, OpensFieldsOfAKnownKeyAndNothingElse)
{
    const auto outcome = [](const QByteArray &line) {
        return SealedForm::openField(QString::fromUtf8(line), knownKey()).value_or(u"does not open"_s);
    };
    EXPECT_EQ(TestData::transcript("security/sealed_fields.txt", outcome),
              TestData::text("security/sealed_fields.txt"));
}

TEST(SealedFormTest, OpensFilesOfAKnownKeyAndNothingElse)
{
    const auto known =
        *Hex::decode(u"4b565431a0a1a2a3a4a5a6a7a8a9aaabe6e75c432abf67ccf16dbc166029cc8846e0f4d4db076f96"_s);
    EXPECT_EQ(SealedForm::openFile(known, knownKey()), QByteArray("\x00\xff notes", 8));
    for (qsizetype size = 0; size < known.size(); ++size) {
        const auto cut = QByteArrayView(known).first(size);
        EXPECT_EQ(SealedForm::isSealedFile(cut), size > 4) << size;
        EXPECT_EQ(SealedForm::openFile(cut, knownKey()), std::nullopt) << size;
    }
}

TEST(ProcessKeySealingTest, OpensItsOwnFieldsOnly)
{
    const ProcessKeySealing sealing;
    const auto sealedText = sealing.seal(u"words"_s);
    EXPECT_TRUE(SealedForm::isSealedField(*sealedText));
    EXPECT_EQ(sealing.open(*sealedText), u"words"_s);
    EXPECT_EQ(sealing.open(u"never sealed"_s), u"never sealed"_s);
    EXPECT_EQ(ProcessKeySealing().open(*sealedText), u""_s);
}

} // namespace

} // namespace morvane
