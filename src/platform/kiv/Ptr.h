#pragma once

#include <cstddef>
#include <type_traits>
#include <utility>

#include "platform/kiv/Assert.h"
#include "platform/kiv/Exception.h"

namespace Kiv {

/// Strong pointer to a reference-counted object: copying takes a reference, destroying gives it back, and the
/// object goes with its last one. May be null; following a null pointer ends the process.
template <class T>
class Ptr {
  public:
    Ptr() = default;
    Ptr( std::nullptr_t ) {}
    Ptr( T* object ) : object_( object ) { take(); }
    Ptr( Ptr const& other ) : object_( other.object_ ) { take(); }
    Ptr( Ptr&& other ) noexcept : object_( std::exchange( other.object_, nullptr ) ) {}
    template <class U>
    requires std::is_convertible_v<U*, T*> Ptr( Ptr<U> const& other ) : object_( other.get() ) { take(); }
    ~Ptr() { give(); }

    Ptr& operator=( Ptr other ) noexcept {
        std::swap( object_, other.object_ );
        return *this;
    }

    T* get() const { return object_; }
    T* operator->() const {
        invariant( object_ != nullptr, "null Ptr" );
        return object_;
    }
    T& operator*() const { return *operator->(); }
    explicit operator bool() const { return object_ != nullptr; }

    friend bool operator==( Ptr const& a, Ptr const& b ) { return a.object_ == b.object_; }
    friend bool operator==( Ptr const& a, std::nullptr_t ) { return a.object_ == nullptr; }

  private:
    void take() const {
        if ( object_ ) {
            object_->referencesInc();
        }
    }
    void give() const {
        if ( object_ ) {
            object_->referencesDec();
        }
    }

    T* object_ = nullptr;
};

/// The pointer itself where one is required. Raises RangeException "null ValidPtr" for a null one.
template <class T>
Ptr<T> const&
validPtr( Ptr<T> const& p ) {
    if ( !p ) {
        throwRangeException( "null ValidPtr" );
    }
    return p;
}

} // namespace Kiv
