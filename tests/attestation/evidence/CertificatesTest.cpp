#include "attestation/evidence/CaseText.h"
#include "attestation/evidence/ECDSASignature.h"
#include "attestation/evidence/Keccak256.h"
#include "attestation/evidence/PEMCertificates.h"
#include "attestation/evidence/VeniceBootEvent.h"
#include "evidence/CertificateRecipe.h"
#include "support/TestData.h"

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

TEST(Keccak256Test, Vectors)
{
    const auto outcome = [](const QByteArray &message) {
        return QString::fromLatin1(Keccak256::hash(message).toHex());
    };
    TestData::expect("attestation/keccak.txt", outcome);
}

TEST(ECDSASignatureTest, PublishedVectors)
{
    using ECDSASignature::Curve;
    for (const QByteArray &line : TestData::lines("attestation/signatures.txt")) {
        const QByteArray key = QByteArray::fromHex(line.split(' ')[0]);
        const QByteArray signature = QByteArray::fromHex(line.split(' ')[1]);
        const Curve curve = key.size() == 64 ? Curve::P256 : Curve::P384;
        EXPECT_TRUE(ECDSASignature::isValid(curve, key, signature, "sample"));
        EXPECT_FALSE(ECDSASignature::isValid(curve, key, signature, "sampl"));
        EXPECT_FALSE(ECDSASignature::isValid(curve, key.chopped(1), signature, "sample"));
        EXPECT_FALSE(ECDSASignature::isValid(curve, key, signature + '\0', "sample"));
    }
}

// The register was computed with another SHA-384.
TEST(VeniceBootEventTest, ReplayGivesTheRegister)
{
    const QByteArray composeHash =
        QByteArray::fromHex("000102030405060708090a0b0c0d0e0f101112131415161718191a1b1c1d1e1f");
    const QByteArray instance = QByteArray::fromHex("6465666768696a6b6c6d6e6f7071727374757677");
    const std::vector<VeniceBootEvent> events{{u"system-preparing"_s, u""_s},
                                              {u"app-id"_s, u"0x00AAbb"_s},
                                              {u"compose-hash"_s, std::nullopt},
                                              {u"instance-id"_s, std::nullopt},
                                              {u"system-ready"_s, u""_s}};
    EXPECT_EQ(VeniceBootEvent::replay(events, composeHash, instance),
              QByteArray::fromHex("f970807606c59f43c95f9635593fbd7a6d8694d16342573ce27592e6f3cbeb6c"
                                  "c46fed964f2ded8beb0e9803ea831aae"));
    EXPECT_EQ(VeniceBootEvent::replay(events, composeHash.chopped(1), instance), std::nullopt);
    EXPECT_EQ(VeniceBootEvent::replay(events, composeHash, instance + '\0'), std::nullopt);
    EXPECT_EQ(VeniceBootEvent::replay({}, composeHash, instance), std::nullopt);
}

TEST(CaseTextTest, WhatComesFromOutsideStaysOnItsLineAndInItsQuotes)
{
    EXPECT_EQ(CaseText::of("a"_L1), u"a"_s);
    EXPECT_EQ(CaseText::of("a"_L1, {u"1"_s, CaseText::quoted(u"b")}), u"a(1, \"b\")"_s);
    EXPECT_EQ(CaseText::quoted(u"é \"\\"), u"\"é \\\"\\\\\""_s);
    EXPECT_EQ(CaseText::quoted(u"\n\u001b[31m\u202e\u2028"), u"\"\\u000a\\u001b[31m\\u202e\\u2028\""_s);
}

TEST(PEMCertificatesTest, BlocksAreReadLineByLine)
{
    const auto outcome = [](QByteArray text) {
        text.replace("[begin]", "-----BEGIN CERTIFICATE-----").replace("[end]", "-----END CERTIFICATE-----");
        QString blocks;
        for (const QByteArray &block : PEMCertificates::blocks(QByteArrayView(text)))
            blocks += u"<%1>"_s.arg(QString::fromLatin1(block));
        return blocks;
    };
    TestData::expect("attestation/pem.txt", outcome);
}

TEST(PEMCertificatesTest, OnlyAnUncompressedPointIsALeafKey)
{
    const SigningKey key(SigningKey::Curve::P256);
    CertificateRecipe recipe{u"Leaf"_s, key, u"Leaf"_s, key};
    EXPECT_EQ(PEMCertificates::leafPublicKey(recipe.mint()), key.publicKey());

    EXPECT_THROW((void)PEMCertificates::leafPublicKey(recipe.mint().chopped(1)), PEMCertificates::ChainError);
    EVP_PKEY_set_utf8_string_param(key.handle(), "point-format", "compressed");
    EXPECT_THROW((void)PEMCertificates::leafPublicKey(recipe.mint()), PEMCertificates::ChainError);
}

} // namespace

} // namespace morvane
