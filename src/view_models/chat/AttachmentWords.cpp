#include "view_models/chat/AttachmentWords.h"

#include "documents/ImportedAttachment.h"
#include "utils/text/Text.h"

#include <QHash>
#include <QLocale>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

QString kindOf(const QString &extension)
{
    static const QHash<QString, QString> kinds{
        {u"image"_s, u"Picture"_s},         {u"pdf"_s, u"PDF"_s},  {u"rtf"_s, u"Rich text"_s},
        {u"md"_s, u"Markdown"_s},           {u"txt"_s, u"Text"_s}, {u"clipboard"_s, u"From the clipboard"_s},
        {u"screen"_s, u"From the screen"_s}};
    return kinds.value(extension, u"File"_s);
}

} // namespace

double AttachmentWords::Reading::share() const
{
    if (pages <= 0)
        return -1;
    return double(pagesDone) / pages;
}

QString AttachmentWords::nameOf(const QString &filename)
{
    return filename.simplified();
}

QString AttachmentWords::glyphOf(const QString &fileExtension)
{
    return fileExtension == "image"_L1    ? u"picture"_s
           : fileExtension == "screen"_L1 ? u"computer"_s
                                          : u"document"_s;
}

QString AttachmentWords::detailOf(const ImportedAttachment &attachment)
{
    const QLocale locale;
    QStringList parts{kindOf(attachment.fileExtension),
                      locale.formattedDataSize(attachment.fileSizeBytes, 1, QLocale::DataSizeSIFormat)};
    if (attachment.wasTruncated)
        parts += u"cut to fit"_s;
    return parts.join(u" · "_s);
}

QString AttachmentWords::detailOf(const Reading &reading)
{
    if (reading.pages > 1)
        return u"Reading page %1 of %2"_s.arg(reading.pagesDone).arg(reading.pages);
    if (reading.count > 1)
        return u"Reading %1 of %2"_s.arg(reading.number).arg(reading.count);
    return u"Reading…"_s;
}

QString AttachmentWords::truncated(const QString &name)
{
    return u"“%1” was truncated to fit the size limit."_s.arg(name);
}

QString AttachmentWords::onlyOneOf(qsizetype count, const QString &name)
{
    const QString others = count == 2 ? u"the other one is not"_s : u"the other %1 are not"_s.arg(count - 1);
    return u"A message takes one file: “%1” is attached, %2."_s.arg(name, others);
}

QString AttachmentWords::inPlaceOf(const QString &former, const QString &name)
{
    return u"A message takes one file: “%1” is attached in place of “%2”."_s.arg(name, former);
}

} // namespace morvane
