#include "evidence/EvidenceAuthority.h"

#include "attestation/evidence/PEMCertificates.h"
#include "evidence/KeyText.h"
#include "utils/bytes/Hex.h"

#include <QCryptographicHash>
#include <QFile>

#include <algorithm>
#include <deque>
#include <stdexcept>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using Curve = SigningKey::Curve;

namespace File {
const QString intelChain = u"intel-chain.pem"_s;
const QString intelLeafKey = u"intel-leaf-key.pem"_s;
const QString nvidiaChain = u"nvidia-chain.pem"_s;
const QString nvidiaLeafKey = u"nvidia-leaf-key.pem"_s;
const QString listKey = u"list-key.pem"_s;
const QString quotingEnclaveSigner = u"quoting-enclave-signer.txt"_s;
} // namespace File

QByteArray contents(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw std::runtime_error("can't read " + path.toStdString());
    return file.readAll();
}

void store(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.flush())
        throw std::runtime_error("can't write " + path.toStdString());
}

const QByteArray &mintedOnce(const CertificateRecipe &recipe)
{
    static std::deque<std::pair<CertificateRecipe, QByteArray>> minted;
    const auto known = std::find_if(minted.begin(), minted.end(),
                                    [&recipe](const auto &entry) { return entry.first == recipe; });
    return known != minted.end() ? known->second : minted.emplace_back(recipe, recipe.mint()).second;
}

QString digestOfRoot(const ChainRecipe &chain)
{
    return Hex::encode(QCryptographicHash::hash(mintedOnce(chain.back()), QCryptographicHash::Sha256));
}

ChainRecipe mintChain(const QStringList &namesLeafFirst, Curve curve, const QDateTime &from,
                      const QDateTime &to)
{
    ChainRecipe chain = chainRecipe(namesLeafFirst, SigningKey(curve), curve);
    for (CertificateRecipe &recipe : chain) {
        recipe.from = from;
        recipe.to = to;
    }
    return chain;
}

// Of what stands behind the leaf only the public keys are known, which is all that a server needs.
ChainRecipe readChain(const QString &folder, const QString &chainFile, const QString &keyFile)
{
    const SigningKey leafKey = SigningKey::read(contents(folder + u'/' + keyFile));
    ChainRecipe chain;
    for (const QByteArray &der : PEMCertificates::blocks(contents(folder + u'/' + chainFile))) {
        const SigningKey key = SigningKey::ofCertificate(der);
        if (chain.empty() && key.publicKey() != leafKey.publicKey())
            throw std::runtime_error(keyFile.toStdString() + " is not the key of the first certificate");
        chain.push_back({.key = chain.empty() ? leafKey : key, .issuerKey = key, .minted = der});
    }
    if (chain.size() < 2)
        throw std::runtime_error(chainFile.toStdString() + " holds no chain");
    return chain;
}

} // namespace

const EvidenceAuthority &EvidenceAuthority::ofThisProcess()
{
    // Made once: minting keys is slow, and no test changes another's.
    static const EvidenceAuthority authority = [] {
        const CertificateRecipe usual{.key = SigningKey(Curve::P256), .issuerKey = SigningKey(Curve::P256)};
        EvidenceAuthority made = mint(u"Test"_s, usual.from, usual.to);
        made.quotingEnclaveSigner = QByteArray(32, '\x51'); // which expected messages quote
        return made;
    }();
    return authority;
}

EvidenceAuthority EvidenceAuthority::mint(const QString &name, const QDateTime &from, const QDateTime &to)
{
    const auto named = [&name](const QStringList &parts) {
        QStringList names;
        for (const QString &part : parts)
            names.append(name + u' ' + part);
        return names;
    };
    EvidenceAuthority authority{
        .intelChain = mintChain(named({u"PCK"_s, u"PCK CA"_s, u"SGX Root"_s}), Curve::P256, from, to),
        .nvidiaChain =
            mintChain(named({u"GPU"_s, u"Device"_s, u"Provisioner"_s, u"Identity"_s, u"Device Root"_s}),
                      Curve::P384, from, to),
        .quotingEnclaveSigner =
            QCryptographicHash::hash((name + u" quoting enclave"_s).toUtf8(), QCryptographicHash::Sha256),
        .listKey = ListKey()};
    // A sequence of one pair, the FMSPC.
    authority.intelChain.front().sgxExtension =
        QByteArray::fromHex("30163014060a2a864886f84d010d01040406b0c06f000000");
    return authority;
}

EvidenceAuthority EvidenceAuthority::read(const QString &folder)
{
    EvidenceAuthority authority{
        .intelChain = readChain(folder, File::intelChain, File::intelLeafKey),
        .nvidiaChain = readChain(folder, File::nvidiaChain, File::nvidiaLeafKey),
        .quotingEnclaveSigner =
            Hex::decode(QString::fromLatin1(contents(folder + u'/' + File::quotingEnclaveSigner).trimmed()))
                .value_or(QByteArray()),
        .listKey = ListKey::read(contents(folder + u'/' + File::listKey))};
    if (authority.quotingEnclaveSigner.size() != 32)
        throw std::runtime_error(File::quotingEnclaveSigner.toStdString() + " holds no 32 bytes");
    return authority;
}

void EvidenceAuthority::write(const QString &folder) const
{
    const auto at = [&folder](const QString &name) { return folder + u'/' + name; };
    store(at(File::intelChain), pemText(certificatesOf(intelChain)));
    store(at(File::intelLeafKey), KeyText::write(intelChain.front().key.handle()));
    store(at(File::nvidiaChain), pemText(certificatesOf(nvidiaChain)));
    store(at(File::nvidiaLeafKey), KeyText::write(nvidiaChain.front().key.handle()));
    store(at(File::listKey), listKey.pem());
    store(at(File::quotingEnclaveSigner), Hex::encode(quotingEnclaveSigner).toLatin1() + '\n');
}

EvidencePins EvidenceAuthority::pins() const
{
    return {.intelRootSHA256 = digestOfRoot(intelChain),
            .quotingEnclaveSigner = Hex::encode(quotingEnclaveSigner),
            .nvidiaRootSHA256 = digestOfRoot(nvidiaChain)};
}

std::vector<QByteArray> EvidenceAuthority::certificatesOf(const ChainRecipe &chain)
{
    std::vector<QByteArray> certificates;
    for (const CertificateRecipe &recipe : chain)
        certificates.push_back(mintedOnce(recipe));
    return certificates;
}

} // namespace morvane
