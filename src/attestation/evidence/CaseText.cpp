#include "attestation/evidence/CaseText.h"

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

bool isUnprintable(QChar c)
{
    switch (c.category()) {
    case QChar::Other_Control:
    case QChar::Other_Format:
    case QChar::Other_Surrogate:
    case QChar::Other_PrivateUse:
    case QChar::Other_NotAssigned:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
        return true;
    default:
        return false;
    }
}

} // namespace

QString CaseText::of(QLatin1StringView name, const QStringList &payload)
{
    if (payload.isEmpty())
        return QString(name);
    return name + u"("_s + payload.join(u", "_s) + u")"_s;
}

QString CaseText::quoted(QStringView text)
{
    QString result = u"\""_s;
    for (const QChar c : text) {
        if (c == u'"' || c == u'\\')
            result += u'\\';
        if (isUnprintable(c))
            result += u"\\u%1"_s.arg(c.unicode(), 4, 16, QChar(u'0'));
        else
            result += c;
    }
    return result + u'"';
}

} // namespace morvane
