#pragma once

#include <QLatin1StringView>
#include <QString>

#include <algorithm>
#include <optional>

namespace morvane {

// Enumerations that are stored as text. Each gives its texts beside its declaration, in case order:
//
//     template <> inline constexpr std::array rawTexts<MessageRole>{QLatin1StringView("user"), …};

template <typename Enum>
inline constexpr std::nullptr_t rawTexts = nullptr;

template <typename Enum>
[[nodiscard]] QString rawText(Enum value)
{
    return rawTexts<Enum>[static_cast<std::size_t>(value)];
}

// Nothing for a text that no case carries; texts are compared with their case.
template <typename Enum>
[[nodiscard]] std::optional<Enum> fromRawText(QStringView raw)
{
    const auto &texts = rawTexts<Enum>;
    const auto found = std::find(texts.begin(), texts.end(), raw);
    if (found == texts.end())
        return std::nullopt;
    return static_cast<Enum>(found - texts.begin());
}

} // namespace morvane
