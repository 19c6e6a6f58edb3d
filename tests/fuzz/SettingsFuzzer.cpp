#include "fuzz/Fuzz.h"

#include "persistence/SettingsValueCoding.h"

// What decodes must say the same after another round through the text.
void morvane::fuzz(QByteArrayView input)
{
    const auto value = SettingsValueCoding::decode(QString::fromUtf8(input));
    require(!value || SettingsValueCoding::decode(SettingsValueCoding::encode(*value)) == value);
}
