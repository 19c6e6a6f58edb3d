// The arguments of a call as a model wrote them, read as every kind of argument that there is.

#include "fuzz/Fuzz.h"

#include "ai/tools/ToolArguments.h"
#include "ai/tools/WebAddress.h"

#include <cmath>

using namespace Qt::StringLiterals;

void morvane::fuzz(QByteArrayView input)
{
    const QString json = QString::fromUtf8(input);
    const ToolArguments arguments(json);
    QStringList addresses{json};
    for (const auto name : {"url"_L1, "query"_L1, "minutes_from_now"_L1}) {
        const auto number = arguments.number(name);
        require(!number || std::isfinite(*number));
        addresses += arguments.text(name).value_or(QString());
    }
    for (const QString &address : addresses) {
        const auto url = WebAddress::parse(address);
        if (!url)
            continue;
        require(WebAddress::normalised(*url) == WebAddress::normalised(*url).toLower());
        require(WebAddress::host(*url) == WebAddress::host(*url).toLower());
        const QString query = WebAddress::searchQuery(*url).value_or(QString());
        require(!query.contains(u'\n') && !query.contains(u'\r'));
    }
}
