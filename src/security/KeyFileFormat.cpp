#include "security/KeyFileFormat.h"

#include "utils/bytes/Base64.h"
#include "utils/bytes/SecretBytes.h"
#include "utils/text/Text.h"

#include <algorithm>

namespace morvane {

namespace {

constexpr QByteArrayView firstLine{"morvane-keys 1\n", 15};
constexpr QByteArrayView lastLine{"end\n", 4};

// The text before `separator`, which is taken from `rest` with it.
std::optional<QByteArrayView> takeUntil(char separator, QByteArrayView &rest)
{
    const auto end = rest.indexOf(separator);
    if (end < 0)
        return std::nullopt;
    const auto field = rest.first(end);
    rest = rest.sliced(end + 1);
    return field;
}

std::optional<QString> nameFrom(QByteArrayView field)
{
    const auto bytes = Base64::decode(field);
    return bytes ? Text::fromUtf8(*bytes) : std::nullopt;
}

std::optional<KeyFileFormat::Entry> takeEntry(QByteArrayView &rest)
{
    const auto service = takeUntil(' ', rest);
    const auto account = takeUntil(' ', rest);
    const auto value = takeUntil('\n', rest);
    if (!service || !account || !value)
        return std::nullopt;
    auto serviceName = nameFrom(*service);
    auto accountName = nameFrom(*account);
    auto bytes = Base64::decode(*value);
    if (!serviceName || !accountName || !bytes)
        return std::nullopt;
    return KeyFileFormat::Entry{std::move(*serviceName), std::move(*accountName), std::move(*bytes)};
}

} // namespace

std::optional<std::vector<KeyFileFormat::Entry>> KeyFileFormat::parse(QByteArrayView contents)
{
    if (!contents.startsWith(firstLine))
        return std::nullopt;
    QByteArrayView rest = contents.sliced(firstLine.size());
    std::vector<Entry> entries;
    while (rest != lastLine) {
        auto entry = takeEntry(rest);
        if (!entry)
            return std::nullopt;
        const bool known = std::any_of(entries.begin(), entries.end(), [&](const Entry &other) {
            return other.service == entry->service && other.account == entry->account;
        });
        if (known)
            return std::nullopt;
        entries.push_back(std::move(*entry));
    }
    return entries;
}

QByteArray KeyFileFormat::print(const std::vector<Entry> &entries)
{
    QByteArray contents = firstLine.toByteArray();
    for (const Entry &entry : entries) {
        QByteArray value = Base64::encode(entry.value);
        contents += Base64::encode(entry.service.toUtf8()) + ' ' + Base64::encode(entry.account.toUtf8()) +
                    ' ' + value + '\n';
        wipe(value);
    }
    return contents + lastLine.toByteArray();
}

} // namespace morvane
