#pragma once

#include <QLatin1StringView>
#include <QString>

#include <concepts>
#include <cstdint>
#include <variant>
#include <vector>

namespace morvane {

// The application's log: fixed format strings with typed arguments. Names are public; content of any kind is
// private and is printed as "<private>". Chat text is never passed at all. Any thread.
//
// Format specifiers: %{public}s prints a text, %s hides it, %d and %ld print an integer, %{bool}d prints
// "true" or "false".
namespace Log {

enum class Category { App, AIProvider, Audio, Documents, Persistence, Windowing, Shortcuts };

class Argument {
public:
    Argument(const QString &text)
        : m_value(text)
    {}
    Argument(const char *text)
        : m_value(QString::fromUtf8(text))
    {}
    Argument(bool flag)
        : m_value(flag)
    {}
    template <std::integral Integer>
    requires(!std::same_as<Integer, bool>) Argument(Integer number)
        : m_value(static_cast<std::int64_t>(number))
    {}

    [[nodiscard]] QString printed() const;
    [[nodiscard]] bool isText() const { return std::holds_alternative<QString>(m_value); }

private:
    std::variant<QString, bool, std::int64_t> m_value;
};

// The line as it is printed. A specifier without an argument stays as it stands.
[[nodiscard]] QString format(QLatin1StringView format, const std::vector<Argument> &arguments);

void info(Category category, QLatin1StringView format, const std::vector<Argument> &arguments = {});
void error(Category category, QLatin1StringView format, const std::vector<Argument> &arguments = {});

} // namespace Log

} // namespace morvane
