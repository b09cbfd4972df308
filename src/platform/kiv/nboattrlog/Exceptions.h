#pragma once

#include "platform/kiv/Exception.h"

namespace Kiv {

/// A record of a replicated stream that cannot be read, or makes no sense where it stands.
class AttrLogRecordException : public Exception {
    using Exception::Exception;
};

/// A record about an entity that was never announced.
class EntityIdUnavailableException : public Exception {
    using Exception::Exception;
};

[[noreturn]] void throwAttrLogRecordException( String8 const& text );
[[noreturn]] void throwEntityIdUnavailableException( String8 const& text );

} // namespace Kiv
