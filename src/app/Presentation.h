#pragma once

#include <memory>

namespace morvane {

class AISettingsViewModel;
class AbilitiesViewModel;
class AppLockViewModel;
class CalendarsViewModel;
class ChatViewModel;
class Clock;
class CompanionViewModel;
class ConversationListModel;
class FindViewModel;
class GhostClipboard;
class GlobalKeys;
class HistorySearchModel;
class InstructionsViewModel;
class LaunchAtLoginViewModel;
class LocalModelViewModel;
class MemoryViewModel;
class MicrophoneViewModel;
class NearbyViewModel;
class NetworkLedgerViewModel;
class PrivacyViewModel;
class ReceiptsModel;
class PrivateCloudViewModel;
class ProofLedgerViewModel;
class RecognitionViewModel;
class ReplyNotifying;
class ScreenTestViewModel;
class SearchKeyViewModel;
class SettingsStore;
class ShellViewModel;
class ShortcutListModel;
class SourceMenuViewModel;
class SpeakingViewModel;
class WindowMemory;
class Work;
struct AppLock;
struct Assistant;
struct AboutParts;
struct Secrets;
struct Storage;
struct Voice;

// What the window binds to. What the constructor takes outlives this.
struct Presentation {
    // `notifications` may be null.
    Presentation(Storage &storage, Assistant &assistant, Voice &voice, AppLock &lock, const AboutParts &about,
                 GlobalKeys &globalKeys, const Secrets &secrets, Clock &clock, Work &work,
                 ReplyNotifying *notifications);
    ~Presentation();

    // No opened text is left in what the window binds to, until the chat reveals its own.
    void conceal();

    SettingsStore &settings;
    GlobalKeys &globalKeys;
    const std::unique_ptr<WindowMemory> memory;
    const std::unique_ptr<CompanionViewModel> companion;
    const std::unique_ptr<ChatViewModel> chat;
    const std::unique_ptr<GhostClipboard> clipboard;
    const std::unique_ptr<ConversationListModel> conversations;
    const std::unique_ptr<HistorySearchModel> search;
    const std::unique_ptr<FindViewModel> find;
    const std::unique_ptr<SourceMenuViewModel> sources;
    const std::unique_ptr<ReceiptsModel> receipts;
    const std::unique_ptr<AISettingsViewModel> aiSettings;
    const std::unique_ptr<LocalModelViewModel> localModel;
    const std::unique_ptr<NearbyViewModel> nearby;
    const std::unique_ptr<InstructionsViewModel> instructions;
    const std::unique_ptr<AbilitiesViewModel> abilities;
    const std::unique_ptr<SearchKeyViewModel> searchKey;
    const std::unique_ptr<CalendarsViewModel> calendars;
    const std::unique_ptr<ShortcutListModel> shortcuts;
    const std::unique_ptr<MemoryViewModel> notes;
    const std::unique_ptr<NetworkLedgerViewModel> networkLedger;
    const std::unique_ptr<ProofLedgerViewModel> proofLedger;
    const std::unique_ptr<PrivateCloudViewModel> privateCloud;
    const std::unique_ptr<PrivacyViewModel> privacy;
    const std::unique_ptr<SpeakingViewModel> speaking;
    const std::unique_ptr<MicrophoneViewModel> microphone;
    const std::unique_ptr<RecognitionViewModel> recognition;
    const std::unique_ptr<ScreenTestViewModel> screenTest;
    const std::unique_ptr<LaunchAtLoginViewModel> launchAtLogin;
    const std::unique_ptr<ShellViewModel> shell;
    const std::unique_ptr<AppLockViewModel> lock;
    const AboutParts &about;
};

} // namespace morvane
