#include "attestation/ProofLedger.h"

#include "utils/text/DesktopWords.h"

#include <algorithm>
#include <array>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using Kind = ProofLedger::Place::Kind;

struct PlaceWords {
    Kind kind;
    QLatin1StringView code;
    QLatin1StringView name; // %1 is the device

    [[nodiscard]] QString plainName() const
    {
        return kind == Kind::thisMac ? QString(name).arg(DesktopWords::here().device) : QString(name);
    }
};

constexpr std::array<PlaceWords, 7> placeWords{{
    {Kind::thisMac, QLatin1StringView("this-mac"), QLatin1StringView("This %1")},
    {Kind::network, QLatin1StringView("your-network"), QLatin1StringView("Your network")},
    {Kind::verifiedEnclave, QLatin1StringView("verified-enclave"), QLatin1StringView("Verified enclave")},
    {Kind::enclaveRefused, QLatin1StringView("enclave-refused"), QLatin1StringView("Refused")},
    {Kind::morvaneCloud, QLatin1StringView("morvane-cloud"), QLatin1StringView("Private cloud")},
    {Kind::yourOwnService, QLatin1StringView("your-own-service"), QLatin1StringView("Your own service")},
    {Kind::ollamaCloud, QLatin1StringView("ollama-cloud"), QLatin1StringView("Ollama's cloud")},
}};

const PlaceWords &wordsOf(Kind kind)
{
    return placeWords[static_cast<std::size_t>(kind)];
}

} // namespace

QString ProofLedger::Place::code() const
{
    return wordsOf(kind).code;
}

QString ProofLedger::Place::plainName() const
{
    return wordsOf(kind).plainName();
}

QUuid ProofLedger::append(Entry entry)
{
    if (entry.id.isNull())
        entry.id = QUuid::createUuid();
    return m_rows.append(std::move(entry));
}

std::optional<QString> placeNameOfCode(const QString &code)
{
    for (const PlaceWords &words : placeWords) {
        if (code == words.code)
            return words.plainName();
    }
    return std::nullopt;
}

} // namespace morvane
