#include "markdown/MarkdownRenderer.h"

#include "markdown/BlockReader.h"
#include "markdown/SpeechText.h"

#include <QCache>
#include <QCoreApplication>
#include <QThread>

namespace morvane {

namespace {

constexpr qsizetype keptTexts = 400;

struct BlocksBox {
    MarkdownRenderer::Blocks blocks;
};

QCache<QString, BlocksBox> &cache()
{
    static QCache<QString, BlocksBox> kept(keptTexts);
    return kept;
}

[[maybe_unused]] bool isOnMainThread()
{
    const QCoreApplication *application = QCoreApplication::instance();
    return !application || application->thread() == QThread::currentThread();
}

} // namespace

MarkdownRenderer::Blocks MarkdownRenderer::parse(QStringView text)
{
    Q_ASSERT(isOnMainThread());
    return BlockReader::read(text);
}

MarkdownRenderer::Blocks MarkdownRenderer::blocks(const QString &text)
{
    Q_ASSERT(isOnMainThread());
    if (const BlocksBox *box = cache().object(text))
        return box->blocks;
    Blocks parsed = parse(text);
    cache().insert(text, new BlocksBox{parsed});
    return parsed;
}

void MarkdownRenderer::forgetBlocks()
{
    cache().clear();
}

QString MarkdownRenderer::speakable(const QString &text, CodeInSpeech code)
{
    return SpeechText::clean(text, code);
}

} // namespace morvane
