#include "network/TransportError.h"

#include <utility>

namespace morvane {

TransportError::TransportError(Code code, QString description)
    : m_code(code)
    , m_description(std::move(description))
    , m_what(m_description.toStdString())
{}

} // namespace morvane
