#include "attestation/evidence/CaseText.h"
#include "attestation/evidence/ECDSASignature.h"
#include "attestation/evidence/Keccak256.h"
#include "attestation/evidence/VeniceBootEvent.h"

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

// The first two are published; the others come from an independent implementation that reproduces SHA3-256.
TEST(Keccak256Test, Vectors)
{
    const struct {
        QByteArray message;
        const char *digest;
    } rows[] = {
        {"", "c5d2460186f7233c927e7db2dcc703c0e500b653ca82273b7bfad8045d85a470"},
        {"abc", "4e03657aea45a94fc7d47ba826c8d667c0d1e6e33a64a036ec44f58fa12d6c45"},
        {QByteArray(135, 'a'), "34367dc248bbd832f4e3e69dfaac2f92638bd0bbd18f2912ba4ef454919cf446"},
        {QByteArray(136, 'a'), "a6c4d403279fe3e0af03729caada8374b5ca54d8065329a3ebcaeb4b60aa386e"},
        {QByteArray(137, 'a'), "d869f639c7046b4929fc92a4d988a8b22c55fbadb802c0c66ebcd484f1915f39"},
        {QByteArray(300, 'a'), "5b7e0e47a96f32a88b4f14ca177982790807c40e1a105742ba0fc1babe1ef826"},
    };
    for (const auto &row : rows)
        EXPECT_EQ(Keccak256::hash(row.message).toHex(), row.digest) << row.message.size();
}

// RFC 6979, A.2.5 and A.2.6, message "sample".
TEST(ECDSASignatureTest, PublishedVectors)
{
    using ECDSASignature::Curve;
    const struct {
        Curve curve;
        QByteArray key;
        QByteArray signature;
    } rows[] = {
        {Curve::P256,
         QByteArray::fromHex("60FED4BA255A9D31C961EB74C6356D68C049B8923B61FA6CE669622E60F29FB6"
                             "7903FE1008B8BC99A41AE9E95628BC64F2F1B20C2D7E9F5177A3C294D4462299"),
         QByteArray::fromHex("EFD48B2AACB6A8FD1140DD9CD45E81D69D2C877B56AAF991C34D0EA84EAF3716"
                             "F7CB1C942D657C41D436C7A1B6E29F65F3E900DBB9AFF4064DC4AB2F843ACDA8")},
        {Curve::P384,
         QByteArray::fromHex("EC3A4E415B4E19A4568618029F427FA5DA9A8BC4AE92E02E06AAE5286B300C64"
                             "DEF8F0EA9055866064A254515480BC138015D9B72D7D57244EA8EF9AC0C62189"
                             "6708A59367F9DFB9F54CA84B3F1C9DB1288B231C3AE0D4FE7344FD2533264720"),
         QByteArray::fromHex("94EDBB92A5ECB8AAD4736E56C691916B3F88140666CE9FA73D64C4EA95AD133C"
                             "81A648152E44ACF96E36DD1E80FABE4699EF4AEB15F178CEA1FE40DB2603138F"
                             "130E740A19624526203B6351D0A3A94FA329C145786E679E7B82C71A38628AC8")},
    };
    for (const auto &row : rows) {
        EXPECT_TRUE(ECDSASignature::isValid(row.curve, row.key, row.signature, "sample"));
        EXPECT_FALSE(ECDSASignature::isValid(row.curve, row.key, row.signature, "sampl"));
        EXPECT_FALSE(ECDSASignature::isValid(row.curve, row.key.chopped(1), row.signature, "sample"));
        EXPECT_FALSE(ECDSASignature::isValid(row.curve, row.key, row.signature + '\0', "sample"));
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

} // namespace morvane
