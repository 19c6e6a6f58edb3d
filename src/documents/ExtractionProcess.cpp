#include "documents/ExtractionProcess.h"

#include "documents/ConfinedProcess.h"
#include "documents/DocumentError.h"
#include "utils/text/Text.h"

#include <algorithm>

namespace morvane {

using namespace ExtractionFrames;
using Plain = DocumentError::Plain;
using Reply = ExtractionProcess::Reply;

namespace {

constexpr qsizetype longestReply = 64 << 20; // bytes
constexpr qsizetype thumbnailBytes =
    qsizetype{3} * PreparedPicture::thumbnailSide * PreparedPicture::thumbnailSide;

void require(bool holds)
{
    if (!holds)
        throw DocumentError(Plain::extractionFailed);
}

[[noreturn]] void fail(const QByteArray &reason)
{
    require(reason.size() == 1);
    switch (static_cast<Failure>(reason.front())) {
    case Failure::Unreadable:
        throw DocumentError(Plain::unreadable);
    case Failure::PasswordProtected:
        throw DocumentError(Plain::passwordProtected);
    case Failure::UnreadableImage:
        throw DocumentError(Plain::unreadableImage);
    }
    throw DocumentError(Plain::extractionFailed);
}

// Puts the answer together, and throws where the process says what it may not.
class Listener {
public:
    explicit Listener(const ExtractionProcess::OnProgress &onProgress)
        : m_onProgress(onProgress)
    {}

    void take(const Frame &frame)
    {
        switch (frame.kind) {
        case Kind::Progress: {
            const auto progress = progressOf(frame.payload);
            require(progress && progress->done <= progress->total);
            tell(*progress);
            return;
        }
        case Kind::Text:
            m_text += frame.payload;
            return;
        case Kind::Image:
            require(m_picture.jpeg.isEmpty() && frame.payload.startsWith("\xFF\xD8\xFF"));
            m_picture.jpeg = frame.payload;
            return;
        case Kind::Thumbnail:
            require(frame.payload.size() == thumbnailBytes);
            m_picture.thumbnail = frame.payload;
            return;
        case Kind::Failure:
            fail(frame.payload);
        case Kind::Line: // of the screen's reader, which this isn't
        case Kind::Done: // never gets here
            require(false);
        }
    }

    Reply reply()
    {
        const auto text = Text::fromUtf8(m_text);
        require(text.has_value());
        return {*text, m_picture};
    }

private:
    // Once for each hundredth, however many pages there are.
    void tell(const Progress &progress)
    {
        const auto hundredths =
            static_cast<int>(quint64{progress.done} * 100 / std::max(progress.total, quint32{1}));
        if (hundredths <= m_told)
            return;
        m_told = hundredths;
        m_onProgress(progress);
    }

    const ExtractionProcess::OnProgress &m_onProgress;
    QByteArray m_text;
    PreparedPicture m_picture;
    int m_told = -1; // hundredths of the pages
};

} // namespace

Reply ExtractionProcess::run(const Request &request, const OnProgress &onProgress,
                             const std::stop_token &stop)
try {
    Listener listener(onProgress);
    ConfinedProcess::run(
        {.program = request.program,
         .arguments = request.arguments,
         .input = request.input,
         .longestReply = longestReply},
        [&listener](const Frame &frame) { listener.take(frame); }, stop);
    return listener.reply();
} catch (const ConfinedProcess::Broken &) {
    throw DocumentError(Plain::extractionFailed);
}

} // namespace morvane
