#include "Options.h"

#include "utils/bytes/Hex.h"
#include "utils/text/UniversalTime.h"

#include <QCommandLineParser>

#include <optional>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

void addOptions(QCommandLineParser &parser)
{
    const auto value = [&parser](const QString &name, const QString &form) {
        parser.addOption(QCommandLineOption(name, QString(), form));
    };
    const auto flag = [&parser](const QStringList &names) { parser.addOption(QCommandLineOption(names)); };
    flag({u"h"_s, u"help"_s});
    for (const auto &name : {u"version"_s, u"json"_s, u"hex"_s, u"base64"_s})
        flag({name});
    value(u"at"_s, u"DATE"_s);
    value(u"nonce"_s, u"HEX"_s);
    value(u"compose-hash"_s, u"HEX"_s);
    value(u"instance-id"_s, u"HEX"_s);
    value(u"rtmr3"_s, u"HEX"_s);
    value(u"model"_s, u"M"_s);
    value(u"accepted"_s, u"LIST"_s);
    value(u"pin"_s, u"NAME=HEX"_s);
}

struct CommandForm {
    Options::Command command;
    QString name;
    QStringList required;
    QStringList allowed; // beside the required ones, --json and --help
};

const std::vector<CommandForm> &commandForms()
{
    using C = Options::Command;
    static const std::vector<CommandForm> forms{
        {C::Quote, u"quote"_s, {}, {u"hex"_s, u"base64"_s, u"at"_s, u"pin"_s}},
        {C::GPU, u"gpu"_s, {u"nonce"_s}, {u"at"_s, u"pin"_s}},
        {C::Replay, u"replay"_s, {}, {u"compose-hash"_s, u"instance-id"_s, u"rtmr3"_s}},
        {C::Document, u"document"_s, {u"model"_s, u"nonce"_s}, {u"at"_s, u"accepted"_s, u"pin"_s}},
        {C::Export, u"export"_s, {}, {u"accepted"_s, u"pin"_s}}};
    return forms;
}

const CommandForm &formOf(const QCommandLineParser &parser)
{
    const QStringList words = parser.positionalArguments();
    for (const CommandForm &form : commandForms()) {
        if (form.name != words.value(0))
            continue;
        if (words.size() != 2)
            throw UsageError(u"%1 takes exactly one file"_s.arg(form.name));
        for (const QString &name : form.required) {
            if (!parser.isSet(name))
                throw UsageError(u"%1 needs --%2"_s.arg(form.name, name));
        }
        for (const QString &name : parser.optionNames()) {
            if (name != "json"_L1 && !form.required.contains(name) && !form.allowed.contains(name))
                throw UsageError(u"%1 has no option --%2"_s.arg(form.name, name));
        }
        return form;
    }
    throw UsageError(words.isEmpty() ? u"say what to check: quote, gpu, replay, document or export"_s
                                     : u"there is no command \"%1\""_s.arg(words[0]));
}

std::optional<QByteArray> hexValue(const QCommandLineParser &parser, const QString &name, qsizetype size)
{
    if (!parser.isSet(name))
        return std::nullopt;
    auto bytes = Hex::decode(parser.value(name));
    if (!bytes || bytes->size() != size)
        throw UsageError(u"--%1 takes %2 hexadecimal characters"_s.arg(name).arg(2 * size));
    return bytes;
}

QDateTime dateValue(const QCommandLineParser &parser)
{
    if (!parser.isSet(u"at"_s))
        return QDateTime::currentDateTimeUtc();
    QDateTime date = QDateTime::fromString(parser.value(u"at"_s), Qt::ISODate);
    if (!date.isValid())
        throw UsageError(u"--at is not a date in ISO 8601, such as 2026-09-01T12:00:00Z"_s);
    if (date.timeSpec() == Qt::LocalTime)
        date = UniversalTime::at(date.date(), date.time()); // the same answer on every machine
    return date.toUTC();
}

Options::Encoding encodingValue(const QCommandLineParser &parser)
{
    const bool hex = parser.isSet(u"hex"_s);
    const bool base64 = parser.isSet(u"base64"_s);
    if (hex && base64)
        throw UsageError(u"--hex and --base64 exclude each other"_s);
    return hex ? Options::Encoding::Hex : base64 ? Options::Encoding::Base64 : Options::Encoding::Raw;
}

void replacePin(Options &options, const QString &assignment)
{
    const QString name = assignment.section(u'=', 0, 0);
    const QString value = assignment.section(u'=', 1).toLower();
    QString *const pin = name == "intel-root"_L1        ? &options.pins.intelRootSHA256
                         : name == "quoting-enclave"_L1 ? &options.pins.quotingEnclaveSigner
                         : name == "nvidia-root"_L1     ? &options.pins.nvidiaRootSHA256
                                                        : nullptr;
    if (!pin)
        throw UsageError(u"--pin takes intel-root, quoting-enclave or nvidia-root, then = and the value"_s);
    const auto bytes = Hex::decode(value);
    if (!bytes || bytes->size() != 32 || value.size() != 64)
        throw UsageError(u"--pin %1 takes 64 hexadecimal characters"_s.arg(name));
    *pin = value;
    options.replacedPins.append(name);
}

} // namespace

Options Options::parse(const QStringList &arguments)
{
    QCommandLineParser parser;
    // Else -hex would be -h, -e and -x, and so a request for help.
    parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    addOptions(parser);
    if (!parser.parse(arguments))
        throw UsageError(parser.errorText());
    Options options;
    for (const auto &[name, command] :
         {std::pair{u"help"_s, Command::Help}, std::pair{u"version"_s, Command::Version}}) {
        if (!parser.isSet(name))
            continue;
        if (arguments.size() != 2)
            throw UsageError(u"--%1 stands alone"_s.arg(name));
        options.command = command;
        return options;
    }

    options.command = formOf(parser).command;
    options.file = parser.positionalArguments().at(1);
    options.encoding = encodingValue(parser);
    options.output = outputOf(arguments);
    options.date = dateValue(parser);
    options.nonce = hexValue(parser, u"nonce"_s, 32).value_or(QByteArray());
    options.composeHash = hexValue(parser, u"compose-hash"_s, 32);
    options.instanceID = hexValue(parser, u"instance-id"_s, 20);
    options.rtmr3 = hexValue(parser, u"rtmr3"_s, 48);
    options.model = parser.value(u"model"_s);
    options.acceptedList = parser.value(u"accepted"_s);
    options.pins = EvidencePins::ofThisBuild();
    for (const QString &assignment : parser.values(u"pin"_s))
        replacePin(options, assignment);
    return options;
}

Options::Output Options::outputOf(const QStringList &arguments)
{
    const bool asksForJson = arguments.contains("--json"_L1) || arguments.contains("-json"_L1);
    return asksForJson ? Output::Json : Output::Text;
}

} // namespace morvane
