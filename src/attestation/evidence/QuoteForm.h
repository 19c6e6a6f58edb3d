#pragma once

#include "attestation/evidence/TDXQuote.h"

#include <optional>

namespace morvane {

// The one way in which hardware in the field writes a quote. Signatures don't cover all of a quote's bytes:
// not its lengths, nor how the text of its certificates is laid out, nor what lies behind it.
namespace QuoteForm {

// The offset of the first byte of `bytes` that stands otherwise than in that form: certificates in lines of
// 64 characters, at most one zero behind them, nothing but zeros behind the quote. Nothing when all are in
// their place. `quote` is what `bytes` were parsed to.
[[nodiscard]] std::optional<qsizetype> firstStrayByte(QByteArrayView bytes, const TDXQuote &quote);

} // namespace QuoteForm

} // namespace morvane
