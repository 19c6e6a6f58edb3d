#pragma once

#include "app/CommandLine.h"

#include <memory>

namespace morvane {

class AIRequestRouter;
class AppNetwork;
class Clock;
class DocumentImportService;
class ExtractionService;
class LocalMachine;
class LocalModelService;
class MemoryStore;
class NetworkLedger;
class ProofLedger;
class ReplyRunner;
class ScreenCapturing;
class ScreenGlanceService;
class ServiceBrowsing;
class ServiceIdentity;
class SystemPromptStore;
class TextExtractionService;
class TextRecognizing;
class ToolRegistry;
class WebAccessService;
class Work;
struct DesktopHands;
struct DesktopPorts;
struct PrivateCloudParts;
struct Secrets;
struct Storage;

// What answers, with all it stands on: the way out and its ledgers, what a model is told and may call, and
// who decides where a turn goes. A new service finds its place above the first one that needs it. What the
// constructor takes outlives this.
struct Assistant {
    Assistant(const CommandLine &commandLine, Storage &storage, const Secrets &secrets,
              const DesktopPorts &desktop, Clock &clock, Work &work);
    ~Assistant();

    const std::unique_ptr<NetworkLedger> networkLedger;
    const std::unique_ptr<AppNetwork> network;
    const std::unique_ptr<ProofLedger> proofs;
    const std::unique_ptr<MemoryStore> memory;
    const std::unique_ptr<SystemPromptStore> systemPrompts;
    const std::unique_ptr<ServiceIdentity> identity;
    const std::unique_ptr<ExtractionService> extraction;
    const std::unique_ptr<TextExtractionService> textExtraction;
    const std::unique_ptr<DocumentImportService> documents;
    const std::unique_ptr<WebAccessService> web;
    const std::unique_ptr<DesktopHands> hands;
    const std::unique_ptr<TextRecognizing> textRecognizer;
    const std::shared_ptr<ScreenGlanceService> screenGlance; // null without a screen
    const std::unique_ptr<ToolRegistry> tools;
    const std::unique_ptr<PrivateCloudParts> privateCloud;
    const std::unique_ptr<LocalMachine> machine;
    const std::unique_ptr<LocalModelService> localModel;
    const std::unique_ptr<ServiceBrowsing> services; // that the local network announces
    const std::unique_ptr<AIRequestRouter> router;
    const std::unique_ptr<ReplyRunner> replies;
};

} // namespace morvane
