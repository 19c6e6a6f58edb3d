#include "ai/tools/ToolOutcome.h"

#include <QStringList>

namespace morvane {

using namespace Qt::StringLiterals;

ToolOutcome ToolFailure::because(const QString &text)
{
    return {u"Error: "_s + text, true};
}

QString ToolFailure::wordsOf(const UserPresentableError &error)
{
    QStringList words{error.userMessage(), error.recoverySuggestion().value_or(QString())};
    words.removeAll(QString());
    return words.join(u' ');
}

} // namespace morvane
