#include "Help.h"

namespace morvane {

QString Help::text()
{
    return QString::fromUtf8(
        R"(morvane-proof checks the hardware proof of a private-cloud server on this machine. It asks nobody:
it has no network code, and what it trusts is three published facts compiled into it (the pins).

  morvane-proof quote FILE [--hex|--base64] [--at DATE]
      An Intel TDX quote: the processor's signed statement of which image a server runs.
      Shows each field and checks: not a debug machine; signed by its key; certificates up to
      Intel's root; made by Intel's own quoting enclave.

  morvane-proof gpu FILE --nonce HEX [--at DATE]
      The evidence of NVIDIA graphics chips (the JSON text "nvidia_payload" of a document).
      Checks that each report is signed over the nonce, with certificates up to NVIDIA's root. Warns
      of reports that share a certificate, and of switches among them; the verdict stays the same.

  morvane-proof replay FILE [--compose-hash HEX] [--instance-id HEX] [--rtmr3 HEX]
      Boot events, a JSON array of {"name": TEXT, "payload": HEX or null}, where null marks the two
      live events, or a server's own log of them ("event", "event_payload"). A live value that the
      file doesn't hold must be named. With --rtmr3 it checks that the events lead to that register;
      without, it computes the register and compares nothing.

  morvane-proof document FILE --model M --nonce HEX [--at DATE] [--accepted LIST]
      A server's whole answer: everything above, bound to the model, the nonce and the encryption
      key, with the server looked up in the list of accepted servers. LIST is a list file in the
      published form; you vouch for it, its signature is not checked here. Without --accepted the
      list built into this program counts.

  morvane-proof export FILE [--accepted LIST]
      The file that Settings > Proof exports. Judges the quote in every row at the time of the row,
      holds the row's fields against it, and says of each whether the quote supports it, the list
      does, or nothing but the file. Each row has a verdict, and the file's is "ok" when no row fails
      and none changed since the export.
      With --accepted, each image must be one that LIST names for the row's model.

  morvane-proof --help, morvane-proof --version
      Each stands alone.

FILE is raw bytes, or "-" for standard input. --hex and --base64 read a quote written as text. A
nonce has 32 bytes, 64 hexadecimal characters.
DATE is ISO 8601 (2026-09-01 or 2026-09-01T12:00:00Z; UTC unless it says otherwise): the moment at
which certificates must be valid. Without --at it is now. A good old proof fails today once a
certificate has run out: ask for the date on which it was made.

  --json          the same for machines: one object on standard output, with the member "verdict"
  --pin NAME=HEX  for tests only: replaces the pin intel-root, quoting-enclave or nvidia-root (64
                  hexadecimal characters). The run then says nothing about real hardware.

The last line is always the verdict (with --json it goes to standard error):

  verdict: ok                                                 everything holds; exit status 0
  verdict: certificateChain("certificate has expired")        what failed first; exit status 1
  verdict: notChecked("…")                                    nothing was checked; exit status 2,
                                                              as when the answer can't be written

A file that can't be read, or isn't in the form that was named, is never a verdict about evidence.
Above the verdict stands what no run checks: revocation, the age of firmware, physical attacks and
more. Checks run in a fixed order and stop at the first that fails, so a verdict names one fault even
where there are several.

A first try, with a quote in hex from an exported proof (intelTdxQuoteHex):

  morvane-proof quote quote.txt --hex --at 2026-09-01

then compare "reportdata" with the proof: its first 20 bytes are the signing address, its last 32
the nonce your machine made up.
)");
}

} // namespace morvane
