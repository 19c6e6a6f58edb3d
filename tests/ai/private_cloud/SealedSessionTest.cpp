#include "ai/private_cloud/VeniceE2EESession.h"
#include "support/TestData.h"
#include "support/WipeSpy.h"
#include "utils/bytes/Hex.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <gmock/gmock.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using testing::Property;

VeniceAttestationVerifier::Verified enclaveWith(const QByteArray &key)
{
    VeniceAttestationVerifier::Verified enclave;
    enclave.modelPublicKey = key;
    return enclave;
}

// Sealed by another implementation (Python's cryptography, over OpenSSL's curve).
TEST(SealedSession, OpensWhatOthersSealedAndIsOpenedByItself)
{
    const QJsonArray cases = QJsonDocument::fromJson(TestData::read("ai/private_cloud/sealed.json")).array();
    ASSERT_EQ(cases.size(), 4);
    for (const QJsonValue &one : cases) {
        const SecretBytes key(*Hex::decode(one["privateKey"_L1].toString()));
        EXPECT_EQ(VeniceE2EESession::openWith(key, one["sealed"_L1].toString()), one["text"_L1].toString());
        const Secp256k1::KeyPair pair = Secp256k1::pairOf(SecretBytes(key.view()));
        const QString own = VeniceE2EESession::sealTo(pair.publicKey, one["text"_L1].toString());
        EXPECT_EQ(own.size(), one["sealed"_L1].toString().size());
        EXPECT_EQ(own, own.toLower());
        EXPECT_EQ(VeniceE2EESession::openWith(key, own), one["text"_L1].toString());
    }
}

TEST(SealedSession, SealsEachMessageAnewForTheServerAlone)
{
    const Secp256k1::KeyPair server = Secp256k1::generateKeyPair();
    const VeniceE2EESession session(enclaveWith(server.publicKey));
    const QString first = session.seal(u"words"_s);
    const QString second = session.seal(u"words"_s);
    EXPECT_NE(first.left(130), second.left(130)); // another one-time key
    EXPECT_NE(first.mid(130, 24), second.mid(130, 24));
    EXPECT_EQ(VeniceE2EESession::openWith(server.privateKey, second), u"words"_s);
    EXPECT_EQ(session.open(VeniceE2EESession::sealTo(session.publicKey(), u"reply"_s)), u"reply"_s);
    EXPECT_THROW((void)session.open(first), VeniceE2EESession::Failure);
    EXPECT_NE(VeniceE2EESession(enclaveWith(server.publicKey)).publicKey(), session.publicKey());
}

TEST(SealedSession, OpensNothingThatIsCutOrChanged)
{
    const Secp256k1::KeyPair pair = Secp256k1::generateKeyPair();
    const QString sealed = VeniceE2EESession::sealTo(pair.publicKey, u"a"_s);
    QStringList broken{QString(), u"zz"_s, sealed.chopped(1), sealed.chopped(2), sealed + u"00"_s};
    for (qsizetype at = 0; at < sealed.size(); at += 2) {
        QString changed = sealed;
        changed[at] = changed[at] == u'7' ? u'8' : u'7';
        broken += changed;
    }
    for (const QString &one : broken)
        EXPECT_THROW((void)VeniceE2EESession::openWith(pair.privateKey, one), VeniceE2EESession::Failure)
            << one.toStdString();
}

TEST(SealedSession, TakesOnlyAKeyOnTheCurve)
{
    QByteArray off = Secp256k1::generateKeyPair().publicKey;
    off[64] = static_cast<char>(off[64] ^ 1);
    for (const QByteArray &key : {QByteArray(), QByteArray(65, '\x04'), off, off.first(33)}) {
        EXPECT_FALSE(Secp256k1::isValidPublicKey(key));
        EXPECT_THROW(VeniceE2EESession{enclaveWith(key)}, VeniceE2EESession::Failure);
        EXPECT_THROW((void)VeniceE2EESession::sealTo(key, u"x"_s), VeniceE2EESession::Failure);
    }
}

// The group's order and zero are no private keys.
TEST(SealedSession, DrawsAKeyEightTimesAtMost)
{
    const QByteArray order =
        QByteArray::fromHex("fffffffffffffffffffffffffffffffebaaedce6af48a03bbfd25e8cd0364141");
    int draws = 0;
    const auto refusing = [&](int refusals) {
        draws = 0;
        return [&draws, refusals, order](std::size_t count) {
            return ++draws > refusals ? SecretBytes::random(count)
                                      : SecretBytes(draws % 2 == 0 ? order : QByteArray(32, '\0'));
        };
    };
    EXPECT_EQ(Secp256k1::generateKeyPair(refusing(7)).publicKey.size(), 65);
    EXPECT_EQ(draws, 8);
    EXPECT_THAT([&] { (void)Secp256k1::generateKeyPair(refusing(8)); },
                testing::Throws<Secp256k1::Failure>(
                    Property(&Secp256k1::Failure::reason, Secp256k1::Failure::Reason::invalidPrivateKey)));
    EXPECT_EQ(draws, 8);
    const auto dry = [](std::size_t) -> SecretBytes { throw std::runtime_error("dry"); };
    EXPECT_THAT([&] { (void)Secp256k1::generateKeyPair(dry); },
                testing::Throws<Secp256k1::Failure>(
                    Property(&Secp256k1::Failure::reason, Secp256k1::Failure::Reason::noRandomness)));
}

TEST(SealedSession, WipesThePrivateKeyWithItsPair)
{
    const QString key = u"thirty-two characters are a key!"_s;
    WipeSpy spy(key);
    {
        const auto pair = Secp256k1::generateKeyPair(
            [&](std::size_t) { return SecretBytes(QByteArrayView(key.toUtf8())); });
        EXPECT_EQ(spy.takeCount(), 0);
    }
    EXPECT_EQ(spy.takeCount(), 1);
}

} // namespace

} // namespace morvane
