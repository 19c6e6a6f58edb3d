#pragma once

#include <QFlags>
#include <QString>

#include <optional>
#include <variant>

namespace morvane {

// The feature of the application that asked for a request. A ledger row shows its label.
enum class EgressFeature {
    aiModel,
    aiSetup,
    webSearch,
    webPage,
    feedback,
    crashReports,
    serverList,
    speech,
};

[[nodiscard]] QString labelOf(EgressFeature feature);

// Private data of the user that a request holds. A request that carries any may go only to this machine or
// the local network.
enum class SensitiveData : unsigned { screenText = 1, memory = 2, image = 4, voice = 8 };
Q_DECLARE_FLAGS(SensitiveDataSet, SensitiveData)
Q_DECLARE_OPERATORS_FOR_FLAGS(SensitiveDataSet)

[[nodiscard]] QString labelOf(SensitiveData data);

// How a request ended.
struct EgressOutcome {
    struct Completed {
        std::optional<int> status; // HTTP status
        bool operator==(const Completed &) const = default;
    };
    struct Failed {
        QString reason;
        bool operator==(const Failed &) const = default;
    };
    struct Blocked {
        QString reason;
        bool operator==(const Blocked &) const = default;
    };
    struct InFlight {
        bool operator==(const InFlight &) const = default;
    };

    std::variant<Completed, Failed, Blocked, InFlight> value;

    // "HTTP 200", "Done", "Failed: …", "Blocked: …", "In flight".
    [[nodiscard]] QString text() const;

    bool operator==(const EgressOutcome &) const = default;
};

} // namespace morvane
