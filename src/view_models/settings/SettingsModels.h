#pragma once

#include <QObject>
#include <QtQml/qqmlregistration.h>

namespace morvane {

class AISettingsViewModel;
class AbilitiesViewModel;
class AboutViewModel;
class AppLockViewModel;
class CalendarsViewModel;
class GlobalShortcutViewModel;
class InstructionsViewModel;
class LocalModelViewModel;
class MemoryViewModel;
class MicrophoneViewModel;
class NearbyViewModel;
class NetworkLedgerViewModel;
class PrivacyViewModel;
class PrivateCloudViewModel;
class ProofLedgerViewModel;
class RecognitionViewModel;
class ScreenTestViewModel;
class SearchKeyViewModel;
class SettingsStore;
class ShellViewModel;
class ShortcutListModel;
class SpeakingViewModel;

// What the pages of Settings and the first steps bind to, in one piece: the main window hands it on without
// knowing what is in it. Set by whoever makes it, before QML sees it; owns none of them.
class SettingsModels : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")
    Q_MOC_INCLUDE("view_models/ShellViewModel.h")
    Q_MOC_INCLUDE("view_models/settings/AISettingsViewModel.h")
    Q_MOC_INCLUDE("view_models/settings/AbilitiesViewModel.h")
    Q_MOC_INCLUDE("view_models/settings/AboutViewModel.h")
    Q_MOC_INCLUDE("view_models/settings/AppLockViewModel.h")
    Q_MOC_INCLUDE("view_models/settings/CalendarsViewModel.h")
    Q_MOC_INCLUDE("view_models/settings/GlobalShortcutViewModel.h")
    Q_MOC_INCLUDE("view_models/settings/InstructionsViewModel.h")
    Q_MOC_INCLUDE("view_models/settings/LocalModelViewModel.h")
    Q_MOC_INCLUDE("view_models/settings/MemoryViewModel.h")
    Q_MOC_INCLUDE("view_models/settings/MicrophoneViewModel.h")
    Q_MOC_INCLUDE("view_models/settings/NearbyViewModel.h")
    Q_MOC_INCLUDE("view_models/settings/NetworkLedgerViewModel.h")
    Q_MOC_INCLUDE("view_models/settings/PrivacyViewModel.h")
    Q_MOC_INCLUDE("view_models/settings/PrivateCloudViewModel.h")
    Q_MOC_INCLUDE("view_models/settings/ProofLedgerViewModel.h")
    Q_MOC_INCLUDE("view_models/settings/RecognitionViewModel.h")
    Q_MOC_INCLUDE("view_models/settings/ScreenTestViewModel.h")
    Q_MOC_INCLUDE("view_models/settings/SearchKeyViewModel.h")
    Q_MOC_INCLUDE("view_models/settings/SettingsElement.h")
    Q_MOC_INCLUDE("view_models/settings/ShortcutListModel.h")
    Q_MOC_INCLUDE("view_models/settings/SpeakingViewModel.h")
    Q_PROPERTY(morvane::AISettingsViewModel *ai MEMBER ai CONSTANT)
    Q_PROPERTY(morvane::LocalModelViewModel *localModel MEMBER localModel CONSTANT)
    Q_PROPERTY(morvane::NearbyViewModel *nearby MEMBER nearby CONSTANT)
    Q_PROPERTY(morvane::SettingsStore *store MEMBER store CONSTANT)
    Q_PROPERTY(morvane::InstructionsViewModel *instructions MEMBER instructions CONSTANT)
    Q_PROPERTY(morvane::AbilitiesViewModel *abilities MEMBER abilities CONSTANT)
    Q_PROPERTY(morvane::SearchKeyViewModel *searchKey MEMBER searchKey CONSTANT)
    Q_PROPERTY(morvane::CalendarsViewModel *calendars MEMBER calendars CONSTANT)
    Q_PROPERTY(morvane::ShortcutListModel *shortcuts MEMBER shortcuts CONSTANT)
    Q_PROPERTY(morvane::GlobalShortcutViewModel *chatKey MEMBER chatKey CONSTANT)
    Q_PROPERTY(morvane::GlobalShortcutViewModel *talkKey MEMBER talkKey CONSTANT)
    Q_PROPERTY(morvane::MemoryViewModel *memory MEMBER memory CONSTANT)
    Q_PROPERTY(morvane::NetworkLedgerViewModel *networkLedger MEMBER networkLedger CONSTANT)
    Q_PROPERTY(morvane::ProofLedgerViewModel *proofLedger MEMBER proofLedger CONSTANT)
    Q_PROPERTY(morvane::PrivateCloudViewModel *privateCloud MEMBER privateCloud CONSTANT)
    Q_PROPERTY(morvane::PrivacyViewModel *privacy MEMBER privacy CONSTANT)
    Q_PROPERTY(morvane::SpeakingViewModel *speaking MEMBER speaking CONSTANT)
    Q_PROPERTY(morvane::MicrophoneViewModel *microphone MEMBER microphone CONSTANT)
    Q_PROPERTY(morvane::RecognitionViewModel *recognition MEMBER recognition CONSTANT)
    Q_PROPERTY(morvane::ScreenTestViewModel *screenTest MEMBER screenTest CONSTANT)
    Q_PROPERTY(morvane::AppLockViewModel *lock MEMBER lock CONSTANT)
    Q_PROPERTY(morvane::AboutViewModel *about MEMBER about CONSTANT)
    Q_PROPERTY(morvane::ShellViewModel *shell MEMBER shell CONSTANT)

public:
    using QObject::QObject;

    AISettingsViewModel *ai = nullptr;
    LocalModelViewModel *localModel = nullptr;
    NearbyViewModel *nearby = nullptr;
    SettingsStore *store = nullptr;
    InstructionsViewModel *instructions = nullptr;
    AbilitiesViewModel *abilities = nullptr;
    SearchKeyViewModel *searchKey = nullptr;
    CalendarsViewModel *calendars = nullptr;
    ShortcutListModel *shortcuts = nullptr;
    GlobalShortcutViewModel *chatKey = nullptr; // brings the window up
    GlobalShortcutViewModel *talkKey = nullptr;
    MemoryViewModel *memory = nullptr;
    NetworkLedgerViewModel *networkLedger = nullptr;
    ProofLedgerViewModel *proofLedger = nullptr;
    PrivateCloudViewModel *privateCloud = nullptr;
    PrivacyViewModel *privacy = nullptr;
    SpeakingViewModel *speaking = nullptr;
    MicrophoneViewModel *microphone = nullptr;
    RecognitionViewModel *recognition = nullptr;
    ScreenTestViewModel *screenTest = nullptr;
    AppLockViewModel *lock = nullptr;
    AboutViewModel *about = nullptr;
    ShellViewModel *shell = nullptr;
};

} // namespace morvane
