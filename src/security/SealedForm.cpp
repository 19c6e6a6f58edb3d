#include "security/SealedForm.h"

#include "utils/bytes/Base64.h"
#include "utils/bytes/SealedBox.h"
#include "utils/text/Text.h"

namespace morvane {

bool SealedForm::isSealedField(QStringView text)
{
    return text.startsWith(fieldMarker);
}

QString SealedForm::sealField(const QString &text, const SecretBytes &key)
{
    QByteArray plain = text.toUtf8();
    const QByteArray box = SealedBox::seal(plain, key);
    wipe(plain);
    QString field = fieldMarker.toString();
    Base64::append(field, box);
    return field;
}

std::optional<QString> SealedForm::openField(const QString &field, const SecretBytes &key)
{
    if (!isSealedField(field))
        return std::nullopt;
    const auto box = Base64::decode(QStringView(field).sliced(fieldMarker.size()));
    if (!box)
        return std::nullopt;
    auto plain = SealedBox::open(*box, key);
    if (!plain)
        return std::nullopt;
    auto text = Text::fromUtf8(*plain);
    wipe(*plain);
    return text;
}

bool SealedForm::isSealedFile(QByteArrayView contents)
{
    return contents.size() > fileMagic.size() && contents.startsWith(fileMagic);
}

QByteArray SealedForm::sealFile(QByteArrayView plain, const SecretBytes &key)
{
    return fileMagic.toByteArray() + SealedBox::seal(plain, key);
}

std::optional<QByteArray> SealedForm::openFile(QByteArrayView contents, const SecretBytes &key)
{
    if (!isSealedFile(contents))
        return std::nullopt;
    return SealedBox::open(contents.sliced(fileMagic.size()), key);
}

} // namespace morvane
