#pragma once

#include "platform/kiv/Ptr.h"
#include "platform/kiv/Types.h"

namespace Igmp {

/// The short names of the runtime that the whole namespace uses.
using Kiv::AttributeId;
using Kiv::Ptr;
using Kiv::Seconds;
using Kiv::U16;
using Kiv::U32;
using Kiv::U8;

} // namespace Igmp
