#include "attestation/evidence/PEMCertificates.h"
#include "evidence/CertificateRecipe.h"

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

const QByteArray begin = "-----BEGIN CERTIFICATE-----\n";
const QByteArray end = "-----END CERTIFICATE-----\n";

} // namespace

TEST(PEMCertificatesTest, BlocksAreReadLineByLine)
{
    const struct {
        const char *name;
        QByteArray text;
        PEMCertificates::Chain blocks;
    } rows[] = {
        {"lines joined", begin + "QU\nJD\n" + end, {"ABC"}},
        {"no last newline", begin + "QQ==\n-----END CERTIFICATE-----", {"A"}},
        {"zero byte at the end", begin + "QQ==\n" + end + '\0', {"A"}},
        {"white space around lines", "\t" + begin + " QQ==\r\n\xc2\xa0" + end, {"A"}},
        {"blank lines inside", begin + "\n \nQQ==\n\n" + end, {"A"}},
        {"label goes on", "-----BEGIN CERTIFICATE REQUEST-----\nQQ==\n-----END CERTIFICATE X\n", {"A"}},
        {"another label", "-----BEGIN KEY-----\nQQ==\n-----END KEY-----\n", {}},
        {"begin twice", begin + "QQ==\n" + begin + "Qg==\n" + end, {"B"}},
        {"end twice", begin + "QQ==\n" + end + "Qg==\n" + end, {"A"}},
        {"never ends", begin + "QQ==\n" + end + begin + "Qg==\n", {"A"}},
        {"bad base64 is skipped", begin + "Q?==\n" + end + begin + "Qg==\n" + end, {"B"}},
        {"empty block", begin + end, {""}},
        {"marker not at the start", "x" + begin + "QQ==\n" + end, {}},
        {"byte order mark", "\xef\xbb\xbf" + begin + "QQ==\n" + end, {}},
        {"bad UTF-8 outside", "\xff\xfe\n" + begin + "QQ==\n" + end, {"A"}},
        {"bad UTF-8 inside", begin + "QQ\xff==\n" + end, {}},
    };
    for (const auto &row : rows)
        EXPECT_EQ(PEMCertificates::blocks(QByteArrayView(row.text)), row.blocks) << row.name;
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
