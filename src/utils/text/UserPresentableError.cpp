#include "utils/text/UserPresentableError.h"

namespace morvane {

ErrorPresentation presentationOf(const std::exception_ptr &error)
{
    try {
        std::rethrow_exception(error);
    } catch (const UserPresentableError &presentable) {
        return {presentable.userMessage(), presentable.recoverySuggestion(), presentable.isRetryable()};
    } catch (...) {
        return {QStringLiteral("Something went wrong."), QStringLiteral("Please try again."), true};
    }
}

} // namespace morvane
