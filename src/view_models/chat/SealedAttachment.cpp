#include "view_models/chat/SealedAttachment.h"

#include "security/FieldSealing.h"
#include "security/SealedForm.h"
#include "utils/bytes/Base64.h"

namespace morvane {

namespace {

QString textOf(const QByteArray &bytes)
{
    return QString::fromLatin1(Base64::encode(bytes));
}

} // namespace

std::optional<SealedAttachment> SealedAttachment::seal(const ImportedAttachment &attachment,
                                                       const FieldSealing &sealing)
{
    SealedAttachment kept;
    bool isSealed = true;
    const auto sealed = [&](const QString &text) {
        const QString field = sealing.seal(text).value_or(QString());
        isSealed = isSealed && SealedForm::isSealedField(field); // what can't be sealed comes back readable
        return field;
    };
    kept.m_shell.id = attachment.id;
    kept.m_shell.fileExtension = attachment.fileExtension;
    kept.m_shell.fileSizeBytes = attachment.fileSizeBytes;
    kept.m_shell.wasTruncated = attachment.wasTruncated;
    kept.m_filename = sealed(attachment.filename);
    kept.m_text = sealed(attachment.text);
    if (attachment.imageData)
        kept.m_imageData = sealed(textOf(*attachment.imageData));
    kept.m_thumbnail = sealed(textOf(attachment.thumbnail));
    return isSealed ? std::optional(kept) : std::nullopt;
}

std::optional<ImportedAttachment> SealedAttachment::open(const FieldSealing &sealing) const
{
    ImportedAttachment attachment = m_shell;
    attachment.filename = sealing.open(m_filename);
    if (attachment.filename.isEmpty())
        return std::nullopt;
    attachment.text = sealing.open(m_text);
    if (!m_imageData.isEmpty())
        attachment.imageData = Base64::decode(QStringView(sealing.open(m_imageData)));
    attachment.thumbnail = Base64::decode(QStringView(sealing.open(m_thumbnail))).value_or(QByteArray());
    return attachment;
}

} // namespace morvane
