#include "ai/local/FileDigest.h"

#include "async/CancelledError.h"
#include "utils/bytes/Hex.h"
#include "utils/files/PrivateFile.h"

#include <QFile>

#include <array>
#include <cerrno>
#include <memory>
#include <new>
#include <stdexcept>
#include <vector>

#include <fcntl.h>
#include <openssl/evp.h>
#include <unistd.h>

namespace morvane {

namespace {

constexpr std::size_t chunkSize = 0x100000;

using Context = std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)>;

void require(int good)
{
    if (good != 1)
        throw std::runtime_error("hashing failed");
}

class Input {
public:
    explicit Input(const QString &path)
        : m_descriptor(::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW))
    {
        if (m_descriptor < 0)
            throw FileError(FileError::Operation::Open, errno);
        ::posix_fadvise(m_descriptor, 0, 0, POSIX_FADV_SEQUENTIAL);
    }
    ~Input() { ::close(m_descriptor); }
    Input(const Input &) = delete;
    Input &operator=(const Input &) = delete;

    // 0 at the end.
    std::size_t read(std::vector<char> &chunk) const
    {
        while (true) {
            const ssize_t count = ::read(m_descriptor, chunk.data(), chunk.size());
            if (count >= 0)
                return static_cast<std::size_t>(count);
            if (errno != EINTR)
                throw FileError(FileError::Operation::Read, errno);
        }
    }

private:
    int m_descriptor;
};

} // namespace

QString FileDigest::sha256(const QString &path, const std::stop_token &stop)
{
    const Input input(path);
    const Context context(EVP_MD_CTX_new(), &EVP_MD_CTX_free);
    if (!context)
        throw std::bad_alloc();
    require(EVP_DigestInit_ex2(context.get(), EVP_sha256(), nullptr));
    std::vector<char> chunk(chunkSize);
    while (const std::size_t count = input.read(chunk)) {
        throwIfStopped(stop);
        require(EVP_DigestUpdate(context.get(), chunk.data(), count));
    }
    std::array<unsigned char, 32> digest{};
    require(EVP_DigestFinal_ex(context.get(), digest.data(), nullptr));
    return Hex::encode(QByteArrayView(digest.data(), static_cast<qsizetype>(digest.size())));
}

} // namespace morvane
