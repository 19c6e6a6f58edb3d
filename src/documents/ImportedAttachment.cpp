#include "documents/ImportedAttachment.h"

#include "utils/text/UntrustedContent.h"

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

QString sourceName(const ImportedAttachment &attachment)
{
    if (attachment.fileExtension == "screen"_L1)
        return u"the user's screen"_s;
    if (attachment.fileExtension == "clipboard"_L1)
        return u"the user's clipboard"_s;
    return u"the document “"_s + attachment.filename + u"”"_s;
}

} // namespace

QString ImportedAttachment::context() const
{
    if (imageData)
        return u"The user attached an image (“"_s + UntrustedContent::name(filename) +
               u"”). It is included with this message — look at it directly."_s;
    const QString truncation = wasTruncated ? u"\n[truncated to fit size limits]"_s : QString();
    return UntrustedContent::wrap(text + truncation, sourceName(*this));
}

} // namespace morvane
