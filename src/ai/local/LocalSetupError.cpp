#include "ai/local/LocalSetupError.h"

#include "ai/local/ModelLadder.h"
#include "utils/text/DesktopWords.h"
#include "utils/text/Product.h"

namespace morvane {

using namespace Qt::StringLiterals;

LocalSetupError LocalSetupError::unavailable()
{
    return LocalSetupError(
        u"There is no AI runtime that %1 can fetch and check for this kind of %2. Install "
        u"Ollama yourself, then try again."_s.arg(Product::name, DesktopWords::here().device));
}

LocalSetupError LocalSetupError::noRoom()
{
    const double need = static_cast<double>(ModelLadder::need(ModelLadder::smallest())) /
                        static_cast<double>(ModelLadder::gibibyte);
    return LocalSetupError(
        u"Not enough free disk space for a local AI model. Free up at least %1 GB and try again."_s.arg(
            need, 0, 'f', 1));
}

LocalSetupError LocalSetupError::swapped()
{
    return LocalSetupError(
        u"The local AI runtime on this %1 was not the one %2 installed, so it was removed. Set up local AI "
        u"again to reinstall it."_s.arg(DesktopWords::here().device, Product::name));
}

LocalSetupError LocalSetupError::keyMissing()
{
    return LocalSetupError(u"An Ollama already running on this %1 has lost its identity key, so it can't "
                           u"download models. Quit it (%2) "
                           u"and press Retry. %3 will run its own."_s.arg(DesktopWords::here().device,
                                                                          DesktopWords::here().runtimeStopper,
                                                                          Product::name));
}

} // namespace morvane
