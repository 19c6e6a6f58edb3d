#include "view_models/chat/AttachmentDesk.h"

#include "async/CancelledError.h"
#include "documents/DocumentText.h"
#include "persistence/SettingsStore.h"
#include "utils/text/Text.h"
#include "utils/text/UserPresentableError.h"
#include "view_models/chat/BannerDesk.h"

#include <QMimeData>
#include <QPointer>

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// What the chip shows until the name is known.
QString nameOf(const PastedContent &content)
{
    if (content.urls.size() > 1)
        return u"%1 files"_s.arg(content.urls.size());
    return content.urls.isEmpty() ? u"Pasted image"_s : content.urls.front().fileName();
}

int percentOf(const AttachmentWords::Reading &reading)
{
    return static_cast<int>(100 * reading.share());
}

} // namespace

AttachmentDesk::AttachmentDesk(Services services, QObject *parent)
    : QObject(parent)
    , m_services(std::move(services))
{}

AttachmentDesk::State AttachmentDesk::state() const
{
    if (m_reading)
        return State::Reading;
    if (m_pending)
        return m_pending->wasTruncated ? State::Cut : State::Ready;
    return m_failure ? State::Failed : State::Empty;
}

QString AttachmentDesk::name() const
{
    return AttachmentWords::nameOf(m_reading   ? m_reading->name
                                   : m_pending ? m_pending->filename
                                   : m_failure ? m_failure->name
                                               : QString());
}

QString AttachmentDesk::detail() const
{
    if (m_reading)
        return AttachmentWords::detailOf(*m_reading);
    if (m_pending)
        return AttachmentWords::detailOf(*m_pending);
    return m_failure ? m_failure->message : QString();
}

QString AttachmentDesk::glyph() const
{
    if (state() == State::Failed)
        return u"warning"_s;
    return AttachmentWords::glyphOf(m_pending && !m_reading ? m_pending->fileExtension : QString());
}

double AttachmentDesk::progress() const
{
    return m_reading ? m_reading->share() : -1;
}

QImage AttachmentDesk::thumbnail() const
{
    constexpr int side = PreparedPicture::thumbnailSide;
    constexpr qsizetype row = qsizetype{3} * side; // bytes
    if (m_reading || !m_pending || m_pending->thumbnail.size() != row * side)
        return {};
    const auto *pixels = reinterpret_cast<const uchar *>(m_pending->thumbnail.constData());
    return QImage(pixels, side, side, row, QImage::Format_RGB888).copy();
}

// What is handed over

void AttachmentDesk::attach(const QList<QUrl> &files)
{
    Handed handed;
    for (const QUrl &file : files)
        handed.append({.urls = {file}, .image = {}});
    read(handed);
}

void AttachmentDesk::attachImage(const QByteArray &data)
{
    read({{.urls = {}, .image = data}});
}

bool AttachmentDesk::take(const HandedOver &handed)
{
    if (!handed.files.isEmpty())
        attach(handed.files);
    else if (!handed.image.isEmpty())
        attachImage(handed.image);
    else if (HandedOver::isTooLong(handed.text))
        holdText(u"Pasted text"_s, handed.text);
    else
        return false;
    return true;
}

bool AttachmentDesk::paste()
{
    if (!canPaste())
        return false;
    const auto handed = HandedOver::of(*m_services.clipboard(), HandedOver::Order::textFirst);
    if (handed.files.isEmpty() && handed.image.isEmpty())
        return take(handed);
    read({{.urls = handed.files, .image = handed.image}});
    return true;
}

bool AttachmentDesk::canPaste() const
{
    const QMimeData *data = m_services.clipboard ? m_services.clipboard() : nullptr;
    if (!data)
        return false;
    return HandedOver::holdsAttachment(*data, HandedOver::Order::textFirst)
               ? m_services.documents != nullptr
               : HandedOver::isTooLong(data->text());
}

void AttachmentDesk::askAboutClipboard()
{
    const QMimeData *data = m_services.clipboard ? m_services.clipboard() : nullptr;
    const auto handed = data ? HandedOver::of(*data, HandedOver::Order::textFirst) : HandedOver{};
    const QString text = handed.isConcealed ? QString() : Text::trimmed(handed.text);
    if (text.isEmpty()) {
        m_services.banner.tell(
            {.message = u"The clipboard has no text."_s,
             .suggestion = u"Copy some text first, then choose Ask About Clipboard again."_s});
        return;
    }
    holdText(u"Clipboard text"_s, text);
    m_services.banner.dismiss();
}

void AttachmentDesk::holdText(const QString &name, const QString &text)
{
    const DocumentText::Cut cut = DocumentText::cut(text, m_services.settings.maxExtractedCharacters());
    hold({.id = QUuid::createUuid(),
          .filename = name,
          .fileExtension = u"clipboard"_s,
          .fileSizeBytes = text.toUtf8().size(),
          .text = cut.text,
          .wasTruncated = cut.wasTruncated});
}

void AttachmentDesk::hold(ImportedAttachment attachment)
{
    stopReading();
    keep(std::move(attachment));
    endReading(1, 1);
}

// Reading

void AttachmentDesk::read(Handed handed)
{
    if (!m_services.documents || handed.isEmpty())
        return;
    stopReading();
    m_task = TaskHandle::start([self = QPointer(this), handed](std::stop_token stop) {
        return readAll(self, handed, std::move(stop));
    });
}

QCoro::Task<> AttachmentDesk::readAll(QPointer<AttachmentDesk> self, Handed handed, std::stop_token stop)
{
    const qsizetype limit = self->m_services.settings.maxExtractedCharacters();
    const ImportProgress progress = [self, stop](int done, int total) {
        if (self && !stop.stop_requested())
            self->noteProgress(done, total);
    };
    qsizetype kept = 0;
    for (qsizetype i = 0; i < handed.size(); ++i) {
        const PastedContent &content = handed.at(i);
        self->m_unread = handed.mid(i);
        self->begin(content, i + 1, handed.size());
        std::exception_ptr failure;
        std::optional<ImportedAttachment> attachment;
        try {
            auto read =
                co_await self->m_services.documents->attachmentFromPasteboard(content, limit, progress, stop);
            attachment = std::move(read);
        } catch (...) {
            failure = std::current_exception();
        }
        if (!self || stop.stop_requested())
            co_return;
        if (failure)
            self->fail(failure, handed.size());
        if (attachment) {
            self->keep(*std::move(attachment));
            ++kept;
        }
    }
    // One of several that were pasted together is all that is read of them.
    const qsizetype together = std::max(handed.size(), handed.front().urls.size());
    self->endReading(together, kept);
}

void AttachmentDesk::begin(const PastedContent &content, qsizetype number, qsizetype count)
{
    m_reading = AttachmentWords::Reading{.name = nameOf(content), .number = number, .count = count};
    Q_EMIT changed();
}

void AttachmentDesk::noteProgress(int done, int total)
{
    if (!m_reading)
        return;
    const int shown = percentOf(*m_reading);
    m_reading->pagesDone = done;
    m_reading->pages = total;
    if (percentOf(*m_reading) != shown)
        Q_EMIT changed();
}

void AttachmentDesk::keep(ImportedAttachment attachment)
{
    m_pending = std::move(attachment);
    m_failure.reset();
}

void AttachmentDesk::fail(const std::exception_ptr &error, qsizetype count)
{
    const QString name = m_reading ? m_reading->name : QString();
    ErrorBanner banner = ErrorBanner::of(presentationOf(error), ErrorBanner::Retry::lastChatTurn);
    banner.retryable = false; // there is no turn to run again
    m_failure = {name, banner.message};
    if (count > 1) // which of them
        banner.suggestion = u"“%1”: "_s.arg(AttachmentWords::nameOf(name)) + banner.suggestion;
    m_told = banner;
    m_services.banner.show(std::move(banner));
}

void AttachmentDesk::endReading(qsizetype handed, qsizetype kept)
{
    m_reading.reset();
    m_unread.clear();
    const QString former = std::exchange(m_former, {});
    QStringList sentences;
    if (kept > 0 && handed > 1)
        sentences += AttachmentWords::onlyOneOf(handed, name());
    else if (kept > 0 && !former.isEmpty() && former != name())
        sentences += AttachmentWords::inPlaceOf(former, name());
    if (m_pending && m_pending->wasTruncated)
        sentences += AttachmentWords::truncated(name());
    m_notice = sentences.join(u' ');
    Q_EMIT changed();
    if (kept > 0)
        Q_EMIT attached();
}

void AttachmentDesk::stopReading()
{
    m_task.requestStop();
    m_reading.reset();
    m_unread.clear();
    m_failure.reset();
    if (const auto told = std::exchange(m_told, std::nullopt))
        m_services.banner.dismiss(*told); // whatever comes now takes its place
    m_former = m_pending ? AttachmentWords::nameOf(m_pending->filename) : QString();
}

// The end

void AttachmentDesk::remove()
{
    const bool wasReading = isReading();
    stopReading();
    if (!wasReading) {
        m_pending.reset();
        m_notice.clear();
    }
    Q_EMIT changed();
}

void AttachmentDesk::clear()
{
    static_cast<void>(release());
}

std::optional<ImportedAttachment> AttachmentDesk::release()
{
    stopReading();
    auto released = std::exchange(m_pending, std::nullopt);
    m_notice.clear();
    Q_EMIT changed();
    return released;
}

} // namespace morvane
