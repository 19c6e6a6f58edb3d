#pragma once

#include <QString>
#include <QUrl>

#include <optional>

namespace morvane {

// Decides whether a request may leave. It only ever refuses, by the text of the address alone: no name is
// resolved here. Pure; any thread.
namespace EgressGate {

enum class Reach {
    Anywhere,    // every host of the web
    PrivateOnly, // this machine and the local network
};

// Why the request must not leave, as the end of a sentence; nothing when it may. Plain http passes: rules on
// secure transport belong to the callers.
[[nodiscard]] std::optional<QString> refusalReason(const QUrl &url, Reach reach);

// The host as the gate judges it, the ledger shows it and the connection uses it: ASCII form, without
// brackets.
[[nodiscard]] QString hostOf(const QUrl &url);

// The whole sentence of a refusal, for an error and for the ledger.
[[nodiscard]] QString refusal(const QString &reason);

} // namespace EgressGate

} // namespace morvane
