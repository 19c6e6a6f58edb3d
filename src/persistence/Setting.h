#pragma once

#include "models/RawText.h"
#include "persistence/SettingsRepository.h"

#include <type_traits>

namespace morvane {

// How the values of one setting stand in a repository: enumerations as their raw text, an absent optional as
// no key at all. A value of another type and an unknown raw text read as absent.
template <typename T>
struct SettingCoding {
    using Stored = std::conditional_t<std::is_enum_v<T>, QString, T>;

    [[nodiscard]] static std::optional<T> read(const SettingsRepository &repository, const QString &key)
    {
        const auto stored = repository.value(key);
        const Stored *typed = stored ? std::get_if<Stored>(&*stored) : nullptr;
        if (!typed)
            return std::nullopt;
        if constexpr (std::is_enum_v<T>)
            return fromRawText<T>(*typed);
        else
            return *typed;
    }

    static void write(SettingsRepository &repository, const QString &key, const T &value)
    {
        if constexpr (std::is_enum_v<T>)
            repository.setValue(key, rawText(value));
        else
            repository.setValue(key, value);
    }
};

template <typename T>
struct SettingCoding<std::optional<T>> {
    [[nodiscard]] static std::optional<std::optional<T>> read(const SettingsRepository &repository,
                                                              const QString &key)
    {
        return SettingCoding<T>::read(repository, key);
    }

    static void write(SettingsRepository &repository, const QString &key, const std::optional<T> &value)
    {
        if (value)
            SettingCoding<T>::write(repository, key, *value);
        else
            repository.remove(key);
    }
};

// One setting: its key, the value when there is no stored one, and the present value.
template <typename T>
struct Setting {
    QString key;
    T initial;
    T value;
};

} // namespace morvane
