#pragma once

#include <cstddef>

#include "platform/kiv/Types.h"

namespace Kiv {

class Type;
template <class C>
class GenericIfOf;

/// The reference count that a Kiv::Ptr works on, for objects of any base: one word with a count of 29 bits
/// and three flags. An object starts with a count of zero; the decrement that brings the count back to zero
/// destroys it.
class VFPtrInterface {
  public:
    VFPtrInterface() = default;
    VFPtrInterface( VFPtrInterface const& ) = delete;
    VFPtrInterface& operator=( VFPtrInterface const& ) = delete;

    /// Process-wide: true makes every count change atomic. Set before the first object is shared; default
    /// false.
    static bool enableThreadSafePointers;

    U32 references() const { return word_ & countMask; }
    void referencesInc() const { changeCount( 1 ); }
    void referencesDec() const {
        if ( changeCount( ~0U ) == 0 ) {
            handleZeroRef();
        }
    }
    /// Takes one reference back without destroying; for an object that is handed on.
    void referencesRelease() const { changeCount( ~0U ); }
    /// Adds a reference that nobody gives back: the object is never freed.
    void referencesLeak() const { referencesInc(); }

  protected:
    virtual ~VFPtrInterface() = default;
    /// Runs when the last reference has gone. The base form destroys the object.
    virtual void handleZeroRef() const;

    static constexpr U32 notificationActiveFlag = 1U << 29;
    static constexpr U32 zombieFlag = 1U << 30;
    static constexpr U32 registeredFlag = 1U << 31;
    bool flag( U32 bit ) const { return ( word_ & bit ) != 0; }
    void flagIs( U32 bit, bool value );

  private:
    static constexpr U32 countMask = ( 1U << 29 ) - 1;
    /// Here because nothing else runs as often. Returns the new count.
    U32 changeCount( U32 delta ) const {
        if ( enableThreadSafePointers ) [[unlikely]] {
            return changeCountAtomically( delta );
        }
        word_ += delta;
        return word_ & countMask;
    }
    U32 changeCountAtomically( U32 delta ) const;

    mutable U32 word_ = 0;
};

/// Base of every object that outlives a call: a reference count and the two flags of notification. Never
/// copied.
class PtrInterface : public VFPtrInterface {
  public:
    class NotifieeConst;

    static void* operator new( std::size_t bytes );
    static void operator delete( void* object );

    /// What is known of the object's class at run time. Each class of the model has its own record.
    static Type* _fwkType();
    virtual Type* fwkType() const { return _fwkType(); }

    bool hasNotificationActive() const { return flag( notificationActiveFlag ); }
    /// True for a reactor whose callbacks are to do nothing any more.
    bool kivZombie() const { return flag( zombieFlag ); }
    void kivMarkedForDeletionIs( bool value ) { flagIs( zombieFlag, value ); }

  protected:
    PtrInterface() = default;
};

} // namespace Kiv
