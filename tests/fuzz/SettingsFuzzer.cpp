#include "persistence/SettingsValueCoding.h"

#include <cstdlib>

namespace morvane {

// What decodes must say the same after another round through the text.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QString text =
        QString::fromUtf8(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    const auto value = SettingsValueCoding::decode(text);
    if (value && SettingsValueCoding::decode(SettingsValueCoding::encode(*value)) != value)
        std::abort();
    return 0;
}

} // namespace morvane
