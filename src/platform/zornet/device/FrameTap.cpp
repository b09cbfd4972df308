#include "platform/zornet/device/FrameTap.h"

namespace Zornet {

namespace {

FrameTap* tapInForce = nullptr;

} // namespace

FrameTap*
frameTap() {
    return tapInForce;
}

void
frameTapIs( FrameTap* tap ) {
    tapInForce = tap;
}

} // namespace Zornet
