#pragma once

#include <any>
#include <span>

#include "platform/kiv/Activity.h"
#include "platform/kiv/Ptr.h"
#include "platform/kiv/PtrInterface.h"
#include "platform/kiv/String8.h"

namespace Kiv {

/// One row of a reactor's list of watched attributes: how deferred delivery reaches its callbacks. The list
/// stands in the order of the callbacks' declaration.
struct Watch {
    AttributeId id;
    /// The scalar callback, or the keyed one in its form without a key.
    void ( *call )( PtrInterface::NotifieeConst& reactor );
    /// The keyed callback with the key that the reactor has stored; null for a scalar.
    void ( *callKey )( PtrInterface::NotifieeConst& reactor ) = nullptr;
};

/// The attributes of a reactor that wait for replication.
using Kiv_BitSet = U64;

template <auto callback>
struct CallbackThunk;
template <class N, void ( N::*callback )()>
struct CallbackThunk<callback> {
    static void call( PtrInterface::NotifieeConst& reactor ) { ( static_cast<N&>( reactor ).*callback )(); }
};

/// The row of a scalar callback.
template <auto callback>
constexpr Watch
watch( AttributeId id ) {
    return { id, &CallbackThunk<callback>::call };
}

/// Base of every reactor: an object bound to one notifier, told of its changes by onX() callbacks. It holds
/// its notifier by strong reference; the notifier knows it only while it is registered and active, and its
/// destruction unlinks it. Changes held back by deferred delivery are kept as one pending id and, for a keyed
/// attribute, one key and a count.
class PtrInterface::NotifieeConst : public PtrInterface {
  public:
    ~NotifieeConst() override;

    /// False unlinks the reactor and remembers whether it was registered; true links it again if it was.
    virtual void hasNotificationActiveIs( bool value );
    /// Links into the notifier or unlinks from it. The value in force changes nothing.
    virtual void isRegisteredNotifieeIs( bool value );
    bool isRegisteredNotifiee() const { return flag( registeredFlag ); }
    /// Binds to another notifier, or to none. A class that has handlers to run on a change overrides it.
    virtual void notifierIs( Ptr<PtrInterface const> const& notifier );
    /// True stops the callbacks for good, those of a walk in progress included.
    virtual void kivDoZombieReactors( bool zombie );
    /// Delivers what deferred delivery has held back.
    virtual void handleNotification( ActivityConfig* activity );
    /// Delivery of an id that the class does not watch (`single`), or the end of a delivery of all.
    virtual void handleDefault( ActivityConfig* activity, AttributeId id, bool single );

    virtual Ptr<NotifieeConst> kivReactor() { return this; }
    virtual NotifieeConst* kivRawReactor() { return this; }
    /// True for a replication stream adapter, which is told before every other reactor.
    virtual bool isStreamAdapter() const { return false; }
    virtual Name name() const { return {}; }
    /// True for a reactor on the attributes of any class: it is told through onChange(), inline, in place of
    /// the callbacks that a class declares.
    virtual bool isGeneric() const { return false; }
    /// `key` is that of a collection's member, and empty for any other attribute.
    virtual void onChange( AttributeId, std::any const& /* key */ ) {}

    /// Hooks that a runtime may call; the base forms do nothing.
    virtual void kivAuditErrors( unsigned int ) {}
    virtual void auditErrors( unsigned int ) {}
    virtual void zeroReferencesIs( bool ) {}
    virtual void kiv_bitSetIs( Kiv_BitSet ) {}

    virtual void onAttribute( AttributeId ) {}
    virtual void onNotification() {}
    virtual void onCollectionNotification( String8 ) {}
    virtual void onZeroReferences() {}
    virtual void onNotificationException() { handleNotificationException(); }
    virtual void onNotificationException( AttributeId id ) { handleNotificationException( id ); }
    virtual void handleNotificationException( AttributeId ) {}
    virtual void handleNotificationException() {}

    virtual Ptr<ActivityConfig> activityPtr() const { return activity_; }
    virtual ActivityConfig* kivFwkActivity() { return activity_.get(); }
    virtual ActivityConfig const* kivFwkActivity() const { return activity_.get(); }
    void kivFwkActivityIs( Ptr<ActivityConfig> const& activity ) { activity_ = activity; }
    virtual ActivitySm* actsm() const { return kivActivitySmFor( activity_.get() ); }

    /// The one place where a notification may be held back: true means that it has been taken over for
    /// deferred delivery. `keyCount` is null for a scalar, else the reactor's count of pending keys, which it
    /// raises.
    bool kivOnAttribute( AttributeId id, U8* keyCount );
    /// Lets the next callback through within a delivery of all attributes.
    void redispatch( ActivitySm* );
    /// A weak reactor does not keep its notifier alive; the notifier must then outlive it.
    void isWeakReferenceIs( bool value );

    /// Runs handleNotification() and turns an exception into the matching onNotificationException().
    void deliverPending();

  protected:
    explicit NotifieeConst( Ptr<PtrInterface const> const& notifier );

    PtrInterface const* notifierObject() const { return notifier_; }
    /// The watched attributes in callback order.
    virtual std::span<Watch const> watches() const { return {}; }
    /// Puts the reactor into its notifier's list, or takes it out.
    virtual void doLink( bool ) {}
    /// Must be called by the destructor of the class that implements doLink().
    void unlink();

    /// The opening of every callback: true if the handler is to run now.
    bool deliverable( AttributeId id ) { return !kivOnAttribute( id, nullptr ) && !kivZombie(); }

    static constexpr AttributeId noAttribute = std::numeric_limits<AttributeId>::min();
    /// Pending in place of an id: deliver every attribute, the keyed one by its pending keys ...
    static constexpr AttributeId everyAttribute = -1;
    /// ... or as a whole, whatever its pending keys.
    static constexpr AttributeId everyAttributeAndKey = -2;
    U8 pendingKeyCount_ = 0;

  private:
    friend class Entity;

    void relink();
    void deliverOne( Watch const& watch, bool keyedAlways );

    bool linked_ = false;
    bool weak_ = false;
    bool dispatching_ = false;
    AttributeId pendingId_ = noAttribute;
    PtrInterface const* notifier_ = nullptr;
    Ptr<ActivityConfig> activity_;
    NotifieeConst* nextInList_ = nullptr;
};

/// The part of a reactor that watches a keyed attribute: the key of a notification that was held back. A
/// class that uses it has at most one keyed attribute.
template <class Key>
class PendingKey {
  public:
    Key const& pendingKey() const { return key_; }
    /// Stores the key and returns what kivOnAttribute() is to raise: nothing where this key waits already.
    U8* store( Key const& key, U8& count ) {
        bool const waitsAlready = count != 0 && key_ == key;
        key_ = key;
        return waitsAlready ? nullptr : &count;
    }

  private:
    Key key_{};
};

} // namespace Kiv
