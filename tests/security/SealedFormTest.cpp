#include "security/SealedForm.h"

#include "security/ProcessKeySealing.h"
#include "utils/bytes/Base64.h"
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

QString field(QStringView body)
{
    return u"\u0001KVT1:%1"_s.arg(body);
}

TEST(SealedFormTest, OpensFieldsOfAKnownKeyAndNothingElse)
{
    const QString ghost =
        u"oKGio6SlpqeoqaqrsnAZDSKjbcwWRe+magn6/pIsx3JRC6DsAC7WGe4QfyjjPpFC1njtJfiW0dlr3Ik="_s;
    const std::vector<std::pair<QString, std::optional<QString>>> cases{
        {field(u"oKGio6SlpqeoqaqrXGmWJa9Lk6D4IgoqYRnF0A=="), u""_s},
        {field(ghost), u"The ghost hums: „bü“ 👻\n"_s},
        {field(u"oKGio6SlpqeoqaqrCaPDQCS5aZ8EDPWgc/aBBDOY5ztDSEFkeSnw06c="), u"\uFEFFmark first"_s},
        {field(u"oKGio6SlpqeoqaqrJTAYzth1U4k7SOq0A2BM63nv"), std::nullopt}, // verifies, but is not UTF-8
        {field(u""), std::nullopt},
        {field(u"oKGi"), std::nullopt},
        {field(ghost.chopped(1)), std::nullopt},                             // padding cut
        {field(QString(ghost).replace(u"oKGi"_s, u"oKGj"_s)), std::nullopt}, // tampered
        {u"KVT1:"_s + ghost, std::nullopt},
    };
    for (const auto &[sealedText, plain] : cases)
        EXPECT_EQ(SealedForm::openField(sealedText, knownKey()), plain) << qPrintable(sealedText);
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

TEST(SealedFormTest, WritesTheSameFormsWithAFreshNonceEachTime)
{
    const QString text = u"two\nlines \u0001KVT1: 👻"_s;
    const QString once = SealedForm::sealField(text, knownKey());
    EXPECT_NE(once, SealedForm::sealField(text, knownKey()));
    EXPECT_TRUE(once.startsWith(u"\u0001KVT1:"_s));
    EXPECT_EQ(Base64::decode(once.sliced(6).toLatin1())->size(), 28 + text.toUtf8().size());
    EXPECT_EQ(SealedForm::openField(once, knownKey()), text);
    const QByteArray file = SealedForm::sealFile(QByteArrayView(), knownKey());
    EXPECT_EQ(file.size(), 4 + 28);
    EXPECT_EQ(SealedForm::openFile(file, knownKey()), QByteArray());
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
