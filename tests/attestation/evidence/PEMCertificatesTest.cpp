#include "attestation/evidence/PEMCertificates.h"
#include "support/evidence/CertificateRecipe.h"

#include <openssl/core_names.h>
#include <openssl/x509.h>

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
        {"none", "", {}},
        {"text around", "a\n" + begin + "QQ==\n" + end + "b\n", {"A"}},
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
        {"padding missing", begin + "QQ\n" + end, {}},
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

    const auto refuses = [](const QByteArray &certificate) {
        try {
            (void)PEMCertificates::leafPublicKey(certificate);
            return false;
        } catch (const PEMCertificates::ChainError &error) {
            return error == PEMCertificates::ChainError(PEMCertificates::ChainError::NoPublicKey{});
        }
    };
    EXPECT_TRUE(refuses(QByteArray()));
    EXPECT_TRUE(refuses(recipe.mint().chopped(1)));
    EVP_PKEY_set_utf8_string_param(key.handle(), "point-format", "compressed");
    EXPECT_TRUE(refuses(recipe.mint()));
    const std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)> ed25519(
        EVP_PKEY_Q_keygen(nullptr, nullptr, "ED25519"), EVP_PKEY_free);
    const std::unique_ptr<X509, decltype(&X509_free)> x(X509_new(), X509_free);
    X509_set_pubkey(x.get(), ed25519.get());
    X509_sign(x.get(), key.handle(), EVP_sha256());
    QByteArray der(i2d_X509(x.get(), nullptr), '\0');
    auto *cursor = reinterpret_cast<unsigned char *>(der.data());
    i2d_X509(x.get(), &cursor);
    EXPECT_TRUE(refuses(der));
}

TEST(PEMCertificatesTest, AnEmptyChainIsMalformed)
{
    EXPECT_THROW(PEMCertificates::verifyChain({}, u""_s, QDateTime::currentDateTimeUtc()),
                 PEMCertificates::ChainError);
}

} // namespace morvane
