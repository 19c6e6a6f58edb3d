// Whatever a person pastes: links stand in order inside the text, and each is an address.

#include "fuzz/Fuzz.h"

#include "utils/text/LinkDetector.h"

void morvane::fuzz(QByteArrayView input)
{
    const QString text = QString::fromUtf8(input);
    qsizetype end = 0;
    for (const LinkDetector::Link &link : LinkDetector::find(text)) {
        require(link.start >= end && link.length >= 1 && link.start + link.length <= text.size());
        require(link.url.isValid() && !link.url.isRelative());
        end = link.start + link.length;
    }
}
