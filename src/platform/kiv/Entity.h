#pragma once

#include "platform/kiv/FunctionRef.h"
#include "platform/kiv/HashMap.h"
#include "platform/kiv/NotifieeConst.h"

namespace Kiv {

/// The list of an entity's registered reactors: intrusive, singly linked, in the order in which they are
/// told. Stream adapters go to the head, all others to the tail. The list holds no references.
class ListRaw {
  public:
    PtrInterface::NotifieeConst* head = nullptr;
    PtrInterface::NotifieeConst* tail = nullptr;
};

/// A named object in a tree whose attributes change only through mutators, each of which tells the registered
/// reactors. A mutator that is given the value in force does nothing at all.
class Entity : public PtrInterface {
  public:
    class NotifieeConst;
    class KivNboAttrLogSa;
    using Reactor = PtrInterface::NotifieeConst;

    ~Entity() override;

    static Type* _fwkType();
    Type* fwkType() const override { return _fwkType(); }

    Name const& name() const { return name_; }
    /// The entity that holds this one, and the attribute by which; null and 0 for one that stands alone.
    Entity* parent() const { return parent_; }
    AttributeId parentAttrId() const { return parentAttrId_; }
    AttributeId parentAttr() const { return parentAttrId_; }
    void parentIs( Entity* parent ) { parent_ = parent; }
    void parentAttrIdIs( AttributeId id ) { parentAttrId_ = id; }
    /// How often an effective mutator has run.
    U32 modificationCount() const { return modificationCount_; }
    bool hasNotifiees() const { return notifiees_.head != nullptr; }
    /// The registered stream adapters, which stand first among the reactors, until `found` holds of one.
    Reactor* streamAdapter( FunctionRef<bool( Reactor& )> found ) const;

  protected:
    explicit Entity( Name const& name ) : name_( name ) {}

    /// The body of a scalar's mutator; `callback` tells of the change.
    template <class T, class N>
    void scalarIs( AttributeId id, T& stored, T const& value, void ( N::*callback )() ) {
        if ( stored == value ) {
            return;
        }
        stored = value;
        changed( id, callback );
    }
    /// Counts a change that has been made and tells the reactors.
    template <class N, class... Args>
    void changed( AttributeId id, void ( N::*callback )( Args... ), std::type_identity_t<Args>... args ) {
        ++modificationCount_;
        notify( id, callback, args... );
    }
    /// Tells the reactors without a change.
    template <class N, class... Args>
    void notify( AttributeId id, void ( N::*callback )( Args... ), std::type_identity_t<Args>... args ) {
        if ( hasNotifiees() ) {
            notifyAll( id, [&]( Reactor& reactor ) {
                if ( reactor.isGeneric() ) {
                    reactor.onChange( id, changedKey( args... ) );
                } else {
                    ( static_cast<N&>( reactor ).*callback )( args... );
                }
            } );
        }
    }
    void modificationCountInc() { ++modificationCount_; }

    /// The same two for one key of a collection.
    template <class N, class K>
    void keyChanged( AttributeId id, void ( N::*callback )( K ), std::type_identity_t<K> const& key ) {
        changed( id, callback, key );
    }
    template <class N, class K>
    void keyNotify( AttributeId id, void ( N::*callback )( K ), std::type_identity_t<K> const& key ) {
        notify( id, callback, key );
    }

    /// The body of a collection's xIs( key ): the member under `key`, made with `make` and told of where it
    /// is absent.
    template <class M, class K, class N, class Make>
    Ptr<M>
    memberIs( HashMap<M, K>& members, K const& key, AttributeId id, void ( N::*callback )( K ), Make make ) {
        if ( M* present = members.find( key ) ) {
            return present;
        }
        Ptr<M> const member = validPtr( make( key ) );
        changed( id, callback, key );
        return member;
    }
    /// The body of a collection's newX( key ): takes `member` in, as a child where it is an entity.
    template <class M, class K>
    Ptr<M> memberInsert( HashMap<M, K>& members, AttributeId id, Ptr<M> const& member ) {
        adopt( id, *member );
        members.insert( member );
        return member;
    }
    /// The body of a collection's xDel( key ). The member outlives the notification.
    template <class M, class K, class N>
    void memberDel( HashMap<M, K>& members, K key, AttributeId id, void ( N::*callback )( K ) ) {
        if ( Ptr<M> const member = members.remove( key ) ) {
            orphan( *member );
            changed( id, callback, key );
        }
    }

    void adopt( AttributeId id, Entity& child ) {
        child.parentIs( this );
        child.parentAttrIdIs( id );
    }
    void adopt( AttributeId, PtrInterface& ) {}
    /// The child's generic reactors are told, as of a change of its parent.
    static void orphan( Entity& child );
    static void orphan( PtrInterface& ) {}
    /// For the destructor of an entity with a collection: members that others still hold have no parent then.
    template <class M, class K>
    static void orphanAll( HashMap<M, K> const& members ) {
        for ( M& member : members ) {
            orphan( member );
        }
    }

  private:
    static std::any changedKey() { return {}; }
    static std::any changedKey( AttributeId ) { return {}; } // a callback shared by scalars
    template <class K>
    static std::any changedKey( K const& key ) {
        return key;
    }
    void notifyAll( AttributeId id, FunctionRef<void( Reactor& )> call );
    void link( Reactor* reactor );
    void unlink( Reactor* reactor );

    Name name_;
    Entity* parent_ = nullptr;
    AttributeId parentAttrId_ = 0;
    U32 modificationCount_ = 0;
    ListRaw notifiees_;
};

/// Base of the reactors on an entity.
class Entity::NotifieeConst : public PtrInterface::NotifieeConst {
  public:
    ~NotifieeConst() override { unlink(); }

    Name name() const override;

    virtual void onParent() {}
    virtual void onVersion() {}

  protected:
    explicit NotifieeConst( Ptr<Entity const> const& notifier ) : PtrInterface::NotifieeConst( notifier ) {}

    Entity const* notifierEntity() const { return static_cast<Entity const*>( notifierObject() ); }
    void doLink( bool link ) override;
};

} // namespace Kiv
