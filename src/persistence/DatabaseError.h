#pragma once

#include <exception>
#include <string>

namespace morvane {

// SQLite refused. `code` is its extended result code; the text is SQLite's own and holds no stored value.
class DatabaseError final : public std::exception {
public:
    DatabaseError(int code, std::string description)
        : m_code(code)
        , m_description(std::move(description))
    {}

    [[nodiscard]] int code() const { return m_code; }
    // The file isn't, or is no longer, what SQLite wrote.
    [[nodiscard]] bool isDamage() const;
    // Another connection is in the way; the file may be as good as ever.
    [[nodiscard]] bool isHeldElsewhere() const;
    [[nodiscard]] const char *what() const noexcept override { return m_description.c_str(); }

private:
    int m_code;
    std::string m_description;
};

} // namespace morvane
