#pragma once

#include <QString>

#include <exception>
#include <string>

namespace morvane {

// A request that ended without a usable response. An HTTP status of any kind is a response, not an error.
class TransportError final : public std::exception {
public:
    enum class Code {
        Blocked, // the egress gate refused; the reason is description()
        BadURL,
        UnsupportedURL,
        TimedOut,       // nothing was sent or received for the request's timeout, or its limit has passed
        Cancelled,      // the session ended the request; a caller's stop token ends in CancelledError instead
        HostNotFound,   // its name leads to no address
        CannotConnect,  // refused or unreachable
        ConnectionLost, // the peer closed or broke the protocol midway
        UnreadableResponse, // no HTTP, or a body that can't be unpacked
        InsecureConnection, // the certificate or the handshake failed
        TooManyRedirects,
        ResponseTooLarge, // the caller's limit on a body or a header was passed
        Other,
    };

    TransportError(Code code, QString description);

    [[nodiscard]] Code code() const { return m_code; }

    // One sentence for the ledger and the log; holds a host at most, never content.
    [[nodiscard]] const QString &description() const { return m_description; }
    [[nodiscard]] const char *what() const noexcept override { return m_what.c_str(); }

private:
    Code m_code;
    QString m_description;
    std::string m_what;
};

} // namespace morvane
