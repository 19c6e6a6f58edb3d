#pragma once

#include <QByteArray>

#include <openssl/evp.h>

#include <memory>

namespace morvane {

// A private key as text that a file can hold: PKCS #8 in PEM, without a password.
namespace KeyText {

[[nodiscard]] QByteArray write(EVP_PKEY *key);

// Throws a runtime_error when the text holds no key.
[[nodiscard]] std::shared_ptr<EVP_PKEY> read(const QByteArray &pem);

} // namespace KeyText

} // namespace morvane
