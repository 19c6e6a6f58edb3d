#pragma once

#include "attestation/evidence/TDXQuote.h"
#include "attestation/evidence/VeniceBootEvent.h"
#include "attestation/evidence/VeniceReviewedConfiguration.h"

#include <QDateTime>
#include <QString>

#include <exception>
#include <map>
#include <optional>
#include <set>
#include <variant>
#include <vector>

namespace morvane {

// The server images and configurations that are accepted, by model. An immutable value; any thread.
struct VeniceMeasurementAllowlist {
    // One accepted image: its boot chain, and what may be configured and measured on top of it. Measurements
    // are 48 bytes as hexadecimal.
    struct Stack {
        QString label;
        QString mrtd;
        QString rtmr0;
        QString rtmr1;
        QString rtmr2;
        std::vector<VeniceReviewedConfiguration> configurations;
        std::vector<VeniceBootEvent> bootEvents;
        bool requiresGPUEvidence = true;

        // Whether the report shows this image; what is configured on top of it is not looked at.
        [[nodiscard]] bool isImageOf(const TDXQuote::TDReport &report) const;

        bool operator==(const Stack &) const = default;
    };

    struct Match {
        Stack stack;
        VeniceReviewedConfiguration configuration;
        QString hostLabel;

        bool operator==(const Match &) const = default;
    };

    // Why no stack accepts a report. A later case got further through the checks than an earlier one.
    class Refusal final : public std::exception {
    public:
        enum class Case {
            imageNotListed,
            configurationMissing,
            configurationHashMismatch,
            configurationNotReviewed,
            hostLabelNotAllowed,
            bootMeasurementMismatch,
        };

        Refusal(Case reason)
            : m_case(reason)
        {}

        [[nodiscard]] Case reason() const { return m_case; }
        [[nodiscard]] QString caseText() const;
        bool operator==(const Refusal &other) const { return m_case == other.m_case; }

    private:
        Case m_case;
    };

    // Where a list came from.
    class Source {
    public:
        struct SignedList {
            std::int64_t version;
            QDateTime notAfter;
            bool operator==(const SignedList &) const = default;
        };
        // A signed list has run out, and the built-in stacks stand in for it.
        struct ExpiredList {
            std::int64_t version;
            QDateTime notAfter;
            bool operator==(const ExpiredList &) const = default;
        };
        struct Bundled {
            bool operator==(const Bundled &) const = default;
        };
        using Case = std::variant<SignedList, ExpiredList, Bundled>;

        Source() = default; // built in
        Source(Case value)
            : m_case(std::move(value))
        {}

        [[nodiscard]] const Case &value() const { return m_case; }
        // One sentence for the proof panel.
        [[nodiscard]] QString text() const;
        bool operator==(const Source &) const = default;

    private:
        Case m_case = Bundled{};
    };

    std::map<QString, std::vector<Stack>> stacksByModel;
    Source source;

    // Empty for a model that isn't listed.
    [[nodiscard]] const std::vector<Stack> &stacks(const QString &model) const;

    // Whether a stack of the model has the image that a signed report shows. match() throws imageNotListed
    // when none has.
    [[nodiscard]] bool hasImage(const TDXQuote::TDReport &report, const QString &model) const;

    // The stack, configuration and host that a signed report shows. Throws Refusal.
    [[nodiscard]] Match match(const TDXQuote::TDReport &report,
                              const std::optional<QString> &configurationText,
                              const std::optional<QByteArray> &instanceID, const QString &model) const;

    // Without the configurations of these identifiers, and without the stacks that then have none.
    [[nodiscard]] VeniceMeasurementAllowlist withdrawing(const std::set<QString> &ids) const;
};

} // namespace morvane
