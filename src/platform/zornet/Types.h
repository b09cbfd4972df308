#pragma once

#include "platform/kiv/Types.h"

namespace Zornet {

/// The integers of stated width, by their short names.
using Kiv::S16;
using Kiv::U16;
using Kiv::U32;
using Kiv::U64;
using Kiv::U8;

} // namespace Zornet
