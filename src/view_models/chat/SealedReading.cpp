#include "view_models/chat/SealedReading.h"

#include "security/FieldSealing.h"
#include "security/SealedForm.h"
#include "utils/bytes/Base64.h"

#include <QDataStream>
#include <QIODevice>

namespace morvane {

QString SealedReading::seal(const QList<PastedContent> &handed, const FieldSealing &sealing)
{
    if (handed.isEmpty())
        return {};
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    for (const PastedContent &content : handed)
        stream << content.urls << content.image;
    const QString sealed = sealing.seal(QString::fromLatin1(Base64::encode(bytes))).value_or(QString());
    return SealedForm::isSealedField(sealed) ? sealed : QString(); // what can't be sealed comes back readable
}

QList<PastedContent> SealedReading::open(const QString &sealed, const FieldSealing &sealing)
{
    if (sealed.isEmpty())
        return {};
    const QByteArray bytes = Base64::decode(QStringView(sealing.open(sealed))).value_or(QByteArray());
    QDataStream stream(bytes);
    QList<PastedContent> handed;
    while (!stream.atEnd()) {
        PastedContent content;
        stream >> content.urls >> content.image;
        if (stream.status() != QDataStream::Ok)
            return {};
        handed += std::move(content);
    }
    return handed;
}

} // namespace morvane
