#include "services/ScreenReadingProcess.h"

#include "documents/ConfinedProcess.h"

#include <openssl/crypto.h>

#include <algorithm>
#include <stdexcept>
#include <sys/mman.h>
#include <unistd.h>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace ExtractionFrames;

namespace {

constexpr qsizetype longestReply = 8 << 20; // bytes

void require(bool holds, const char *words)
{
    if (!holds)
        throw std::runtime_error(words);
}

// A copy that another process can be given: memory with a descriptor, and no file behind it.
class SharedMemory {
public:
    explicit SharedMemory(const SecretBytes &bytes)
        : m_size(bytes.size())
        , m_descriptor(::memfd_create("picture", MFD_CLOEXEC))
    {
        if (m_descriptor >= 0 && ::ftruncate(m_descriptor, static_cast<off_t>(m_size)) == 0)
            m_place = ::mmap(nullptr, m_size, PROT_READ | PROT_WRITE, MAP_SHARED, m_descriptor, 0);
        if (m_place != MAP_FAILED)
            std::copy_n(bytes.data(), m_size, static_cast<unsigned char *>(m_place));
    }
    ~SharedMemory()
    {
        if (m_place != MAP_FAILED) {
            OPENSSL_cleanse(m_place, m_size);
            ::munmap(m_place, m_size);
        }
        if (m_descriptor >= 0)
            ::close(m_descriptor);
    }
    SharedMemory(const SharedMemory &) = delete;
    SharedMemory &operator=(const SharedMemory &) = delete;

    [[nodiscard]] bool isThere() const { return m_place != MAP_FAILED; }
    [[nodiscard]] int descriptor() const { return m_descriptor; }

private:
    std::size_t m_size;
    int m_descriptor;
    void *m_place = MAP_FAILED;
};

QStringList argumentsOf(const ScreenReadingProcess::Request &request, const ScreenPicture &picture)
{
    QStringList arguments{request.languages.join(u'+'), QString::number(picture.pixelsPerPoint)};
    if (picture.form == ScreenPicture::Form::pixels) {
        arguments +=
            {u"pixels"_s, QString::number(picture.size.width()), QString::number(picture.size.height())};
    } else {
        arguments += u"file"_s;
        for (const double edge :
             {picture.part.x(), picture.part.y(), picture.part.width(), picture.part.height()})
            arguments += QString::number(edge);
    }
    return arguments;
}

} // namespace

std::vector<TextObservation> ScreenReadingProcess::run(const Request &request, const ScreenPicture &picture,
                                                       const std::stop_token &stop)
{
    const SharedMemory memory(picture.bytes);
    require(memory.isThere(), "no memory to hand the picture over in");
    std::vector<TextObservation> observations;
    const auto take = [&observations](const Frame &frame) {
        require(frame.kind != Kind::Failure, "it could not read the picture");
        auto observation = TextObservation::decoded(frame.payload);
        require(frame.kind == Kind::Line && observation, "it said what it may not");
        observations.push_back(*std::move(observation));
    };
    ConfinedProcess::run({.program = request.program,
                          .arguments = argumentsOf(request, picture),
                          .standardInput = memory.descriptor(),
                          .longestReply = longestReply,
                          // More threads only wait for each other.
                          .environment = {{u"OMP_THREAD_LIMIT"_s, u"1"_s}}},
                         take, stop);
    return observations;
}

} // namespace morvane
