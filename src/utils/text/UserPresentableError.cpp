#include "utils/text/UserPresentableError.h"

namespace morvane {

namespace {

QString quotationOf(const QString &words)
{
    return words.isEmpty() ? QString() : QStringLiteral("The server says: “%1”").arg(words);
}

} // namespace

ErrorPresentation presentationOf(const std::exception_ptr &error)
{
    try {
        std::rethrow_exception(error);
    } catch (const UserPresentableError &presentable) {
        return {presentable.userMessage(), presentable.recoverySuggestion(), presentable.isRetryable(),
                quotationOf(presentable.quotedWords())};
    } catch (...) {
        return {QStringLiteral("Something went wrong."), QStringLiteral("Please try again."), true, {}};
    }
}

} // namespace morvane
