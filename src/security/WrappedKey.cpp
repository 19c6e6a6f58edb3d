#include "security/WrappedKey.h"

#include "security/SealedForm.h"
#include "utils/bytes/Base64.h"
#include "utils/bytes/SealedBox.h"

#include <QList>

#include <stdexcept>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

constexpr QLatin1StringView marker{"morvane-wrapped-key "};
const QString version = u"1"_s;
const QString algorithm = u"argon2id"_s;
constexpr qsizetype boxSize = SealedBox::nonceSize + SealedForm::keySize + SealedBox::tagSize;
constexpr qsizetype mostCharacters = 256; // what is longer is none

struct Form {
    Argon2id::Cost cost;
    QByteArray salt;
    QByteArray box;
};

std::optional<Form> parse(QStringView text)
{
    if (text.size() > mostCharacters)
        return std::nullopt;
    const auto words = text.split(u' ');
    if (words.size() != 7 || !WrappedKey::isWrapped(text) || words[1] != version || words[2] != algorithm)
        return std::nullopt;
    bool hasMemory = false;
    bool hasPasses = false;
    const Argon2id::Cost cost{words[3].toUInt(&hasMemory), words[4].toUInt(&hasPasses)};
    const auto salt = Base64::decode(words[5]);
    const auto box = Base64::decode(words[6]);
    if (!hasMemory || !hasPasses || !Argon2id::isBearable(cost) || !salt ||
        salt->size() != Argon2id::saltSize || !box || box->size() != boxSize)
        return std::nullopt;
    return Form{cost, *salt, *box};
}

std::optional<SecretBytes> opened(const Form &form, const SecretBytes &passphrase)
{
    const SecretBytes guard =
        Argon2id::derive(passphrase, form.salt, form.cost, static_cast<std::size_t>(SealedForm::keySize));
    auto plain = SealedBox::open(form.box, guard);
    if (!plain)
        return std::nullopt;
    SecretBytes key(*plain);
    wipe(*plain);
    return key;
}

} // namespace

bool WrappedKey::isWrapped(QStringView text)
{
    return text.startsWith(marker);
}

bool WrappedKey::isWrapped(QByteArrayView text)
{
    return text.startsWith(QByteArrayView(marker.data(), marker.size()));
}

bool WrappedKey::isReadable(QStringView text)
{
    return parse(text).has_value();
}

QByteArray WrappedKey::wrap(const SecretBytes &key, const SecretBytes &passphrase, const Argon2id::Cost &cost)
{
    Form form{cost, {}, {}};
    form.salt = SecretBytes::random(static_cast<std::size_t>(Argon2id::saltSize)).view().toByteArray();
    {
        const SecretBytes guard =
            Argon2id::derive(passphrase, form.salt, cost, static_cast<std::size_t>(SealedForm::keySize));
        form.box = SealedBox::seal(key.view(), guard);
    }
    const auto again = opened(form, passphrase); // the only other form goes when this one is stored
    if (!again || again->view() != key.view())
        throw std::runtime_error("the wrapped key doesn't open again");
    return marker.data() + (version + u' ' + algorithm + u' ').toLatin1() + QByteArray::number(cost.memory) +
           ' ' + QByteArray::number(cost.passes) + ' ' + Base64::encode(form.salt) + ' ' +
           Base64::encode(form.box);
}

std::optional<SecretBytes> WrappedKey::unwrap(QStringView text, const SecretBytes &passphrase)
{
    const auto form = parse(text);
    if (!form)
        throw Unreadable();
    return opened(*form, passphrase);
}

} // namespace morvane
