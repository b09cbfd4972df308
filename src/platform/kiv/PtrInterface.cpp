#include "platform/kiv/PtrInterface.h"

#include <atomic>
#include <new>

namespace Kiv {

bool VFPtrInterface::enableThreadSafePointers = false;

U32
VFPtrInterface::changeCountAtomically( U32 delta ) const {
    return ( std::atomic_ref<U32>( word_ ).fetch_add( delta ) + delta ) & countMask;
}

void
VFPtrInterface::handleZeroRef() const {
    referencesInc(); // a pointer that the teardown makes for a moment must not bring the count to zero again
    delete this;
}

void
VFPtrInterface::flagIs( U32 bit, bool value ) {
    if ( enableThreadSafePointers ) {
        std::atomic_ref<U32> word( word_ );
        value ? word.fetch_or( bit ) : word.fetch_and( ~bit );
    } else {
        word_ = value ? word_ | bit : word_ & ~bit;
    }
}

void*
PtrInterface::operator new( std::size_t bytes ) {
    return ::operator new( bytes );
}

void
PtrInterface::operator delete( void* object ) {
    ::operator delete( object );
}

} // namespace Kiv
