#include "attestation/evidence/PEMCertificates.h"
#include "evidence/CertificateRecipe.h"
#include "support/TestData.h"

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

TEST(PEMCertificatesTest, BlocksAreReadLineByLine)
{
    const auto outcome = [](QByteArray text) {
        text.replace("[begin]", "-----BEGIN CERTIFICATE-----").replace("[end]", "-----END CERTIFICATE-----");
        QString blocks;
        for (const QByteArray &block : PEMCertificates::blocks(QByteArrayView(text)))
            blocks += u"<%1>"_s.arg(QString::fromLatin1(block));
        return blocks;
    };
    EXPECT_EQ(TestData::transcript("attestation/pem.txt", outcome), TestData::text("attestation/pem.txt"));
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

} // namespace morvane
