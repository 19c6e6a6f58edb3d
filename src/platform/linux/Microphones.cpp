#include "platform/linux/Microphones.h"

#include "platform/linux/AudioThread.h"
#include "platform/linux/PulseServer.h"

#include <QMediaDevices>

#include <algorithm>

namespace morvane {

using namespace std::chrono_literals;

namespace {

constexpr auto serverLimit = 1s;

std::vector<MicrophoneDevices::Device> list()
{
    std::vector<MicrophoneDevices::Device> devices;
    for (const QAudioDevice &input : QMediaDevices::audioInputs())
        devices.push_back({QString::fromUtf8(input.id()), input.description()});
    return devices;
}

QAudioDevice named(const QList<QAudioDevice> &inputs, const QString &uid)
{
    const auto found = std::ranges::find(inputs, uid.toUtf8(), &QAudioDevice::id);
    return found == inputs.end() ? QAudioDevice() : *found;
}

} // namespace

QCoro::Task<std::vector<MicrophoneDevices::Device>> Microphones::all(std::stop_token stop)
{
    return m_thread.ask<std::vector<Device>>(list, std::move(stop));
}

Microphones::Found Microphones::find(const std::optional<QString> &uid)
{
    const QList<QAudioDevice> inputs = QMediaDevices::audioInputs();
    if (const QAudioDevice chosen = uid ? named(inputs, *uid) : QAudioDevice(); !chosen.isNull())
        return {chosen, true};
    const auto defaults = PulseServer::defaults(serverLimit);
    const QAudioDevice usual = defaults ? named(inputs, defaults->source) : QAudioDevice();
    return {usual.isNull() ? inputs.value(0) : usual, !uid};
}

} // namespace morvane
