#pragma once

#include <QByteArray>
#include <QString>

#include <cstddef>
#include <vector>

namespace morvane {

// Overwrites the memory of a value that held a secret, then empties it. A QByteArray or QString that is
// shared is detached first, so wipe the last holder.
void wipe(QByteArray &secret);
void wipe(QString &secret);

// Overwrites what calls that have returned may have left of a secret on this thread's stack: ciphers put
// pieces of what they work on there.
void wipeStack();

// Bytes of a key. Movable, not copyable; wiped when they leave.
class SecretBytes {
public:
    SecretBytes() = default;
    explicit SecretBytes(QByteArrayView bytes);
    explicit SecretBytes(std::size_t count); // zeros, to be filled
    ~SecretBytes();
    SecretBytes(SecretBytes &&other) noexcept;
    SecretBytes &operator=(SecretBytes &&other) noexcept;
    SecretBytes(const SecretBytes &) = delete;
    SecretBytes &operator=(const SecretBytes &) = delete;

    // From the system's secure random source. Throws std::runtime_error when that source fails.
    static SecretBytes random(std::size_t count);

    [[nodiscard]] const unsigned char *data() const { return m_bytes.data(); }
    [[nodiscard]] unsigned char *data() { return m_bytes.data(); }
    [[nodiscard]] std::size_t size() const { return m_bytes.size(); }
    [[nodiscard]] QByteArrayView view() const;

private:
    std::vector<unsigned char> m_bytes;
};

} // namespace morvane
