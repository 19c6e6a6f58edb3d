#include "documents/RichTextCodePage.h"

#include <QStringDecoder>

#include <algorithm>
#include <map>
#include <memory>

namespace morvane {

namespace {

// Names by which Qt finds the code pages, through ICU where they aren't its own.
const char *nameOf(int codePage)
{
    static const std::map<int, const char *> names{
        {437, "IBM437"},        {850, "IBM850"},        {852, "IBM852"},
        {866, "IBM866"},        {874, "windows-874"},   {932, "windows-31j"},
        {936, "GBK"},           {949, "windows-949"},   {950, "Big5"},
        {1250, "windows-1250"}, {1251, "windows-1251"}, {1252, "windows-1252"},
        {1253, "windows-1253"}, {1254, "windows-1254"}, {1255, "windows-1255"},
        {1256, "windows-1256"}, {1257, "windows-1257"}, {1258, "windows-1258"},
        {1361, "ibm-1363"},     {10000, "macintosh"},   {10007, "x-mac-cyrillic"},
        {65001, "UTF-8"}};
    const auto name = names.find(codePage);
    return name == names.end() ? nullptr : name->second;
}

// One for each code page and thread: making one costs more than reading a word. Null where there is none.
QStringDecoder *decoderFor(int codePage)
{
    thread_local std::map<int, std::unique_ptr<QStringDecoder>> decoders;
    const char *name = nameOf(codePage);
    if (!name)
        return nullptr;
    auto &decoder = decoders[codePage];
    if (!decoder)
        decoder = std::make_unique<QStringDecoder>(name);
    return decoder->isValid() ? decoder.get() : nullptr;
}

} // namespace

int RichTextCodePage::ofCharacterSet(int characterSet)
{
    static const std::map<int, int> codePages{{77, 10000}, {128, 932},  {129, 949},  {130, 1361}, {134, 936},
                                              {136, 950},  {161, 1253}, {162, 1254}, {163, 1258}, {177, 1255},
                                              {178, 1256}, {186, 1257}, {204, 1251}, {222, 874},  {238, 1250},
                                              {254, 437},  {255, 850}};
    const auto found = codePages.find(characterSet);
    return found == codePages.end() ? 0 : found->second;
}

QString RichTextCodePage::decoded(QByteArrayView bytes, int codePage)
{
    if (std::all_of(bytes.begin(), bytes.end(), [](char c) { return static_cast<uchar>(c) < 0x80; }))
        return QString::fromLatin1(bytes);
    QStringDecoder *decoder = decoderFor(codePage);
    if (!decoder)
        decoder = decoderFor(western);
    if (!decoder)
        return QString::fromLatin1(bytes);
    decoder->resetState();
    return decoder->decode(bytes);
}

} // namespace morvane
