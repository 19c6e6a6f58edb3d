#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <optional>
#include <variant>

namespace morvane {

// A value of a defaults domain, with its type.
using SettingsValue = std::variant<bool, std::int64_t, double, QString, QByteArray, QStringList>;

// Where settings and the flags of one-time work are kept, by key. Reads are true to the type: a value of
// another type reads as absent. Nothing here throws. Main thread only.
class SettingsRepository {
public:
    virtual ~SettingsRepository() = default;

    [[nodiscard]] std::optional<QString> string(const QString &key) const { return read<QString>(key); }
    [[nodiscard]] std::optional<bool> boolean(const QString &key) const { return read<bool>(key); }
    [[nodiscard]] std::optional<std::int64_t> integer(const QString &key) const
    {
        return read<std::int64_t>(key);
    }
    [[nodiscard]] std::optional<double> real(const QString &key) const { return read<double>(key); }
    [[nodiscard]] std::optional<QByteArray> data(const QString &key) const { return read<QByteArray>(key); }
    [[nodiscard]] std::optional<QStringList> list(const QString &key) const { return read<QStringList>(key); }

    void setString(const QString &key, const QString &value) { setValue(key, value); }
    void setBoolean(const QString &key, bool value) { setValue(key, value); }
    void setInteger(const QString &key, std::int64_t value) { setValue(key, value); }
    void setData(const QString &key, const QByteArray &value) { setValue(key, value); }
    void setList(const QString &key, const QStringList &value) { setValue(key, value); }

    [[nodiscard]] virtual std::optional<SettingsValue> value(const QString &key) const = 0;
    virtual void setValue(const QString &key, const SettingsValue &value) = 0;
    virtual void remove(const QString &key) = 0;
    virtual void removeAll() = 0;
    [[nodiscard]] virtual QStringList keys() const = 0;

    // Waits until what was written has reached the disk. For flags that must not be lost.
    virtual void flush() {}

private:
    template <typename T>
    [[nodiscard]] std::optional<T> read(const QString &key) const
    {
        const auto stored = value(key);
        if (!stored)
            return std::nullopt;
        const T *typed = std::get_if<T>(&*stored);
        return typed ? std::optional(*typed) : std::nullopt;
    }
};

} // namespace morvane
