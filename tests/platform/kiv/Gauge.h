#pragma once

#include <functional>
#include <string>
#include <vector>

#include "platform/kiv/Entity.h"

/// An entity with one attribute of each sort, for tests of the runtime, and a reactor on it that writes down
/// what it is told.
class Gauge : public Kiv::Entity {
  public:
    enum : Kiv::AttributeId { attrLevel = 258, attrLabel, attrMark };

    class Notifiee : public Kiv::Entity::NotifieeConst {
      public:
        virtual void onLevel() {}
        virtual void onLabel() {}
        virtual void onMark( Kiv::Name ) {}
        virtual void onMark() {}

        Gauge* notifier() const {
            return const_cast<Gauge*>( static_cast<Gauge const*>( notifierEntity() ) );
        }

      protected:
        explicit Notifiee( Kiv::Ptr<Gauge> const& gauge ) : Kiv::Entity::NotifieeConst( gauge ) {}
    };

    /// A member of the collection `mark`.
    class Mark : public Kiv::Entity, public Kiv::HashMember {
      public:
        explicit Mark( Kiv::Name const& name ) : Entity( name ) {}
        Kiv::Name const& fwkKey() const { return name(); }
    };

    explicit Gauge( Kiv::Name const& name = "gauge" ) : Entity( name ) {}
    ~Gauge() override {
        orphanAll( mark_ );
        if ( onDestroyed ) {
            onDestroyed();
        }
    }

    Kiv::U8 level() const { return level_; }
    void levelIs( Kiv::U8 v ) { scalarIs( attrLevel, level_, v, &Notifiee::onLevel ); }
    void levelInc( Kiv::U8 n ) { levelIs( static_cast<Kiv::U8>( level_ + n ) ); }
    void levelDec( Kiv::U8 n ) { levelIs( static_cast<Kiv::U8>( level_ - n ) ); }

    Kiv::String8 label() const { return label_; }
    void labelIs( Kiv::String8 const& v ) { scalarIs( attrLabel, label_, v, &Notifiee::onLabel ); }

    Kiv::HashMap<Mark, Kiv::Name> const& mark() const { return mark_; }
    Kiv::Ptr<Mark> mark( Kiv::Name const& key ) const { return mark_.find( key ); }
    Kiv::Ptr<Mark> newMark( Kiv::Name const& key ) {
        return memberInsert( mark_, attrMark, Kiv::Ptr<Mark>( new Mark( key ) ) );
    }
    Kiv::Ptr<Mark> markIs( Kiv::Name const& key ) {
        return memberIs( mark_, key, attrMark, onMark, [this]( Kiv::Name const& name ) {
            return newMark( name );
        } );
    }
    void markDel( Kiv::Name const& key ) { memberDel( mark_, key, attrMark, onMark ); }
    void markDelAll() {
        for ( auto at = mark_.begin(); at; ++at ) {
            markDel( at->fwkKey() );
        }
    }
    void markNotify( Kiv::Name const& key ) { keyNotify( attrMark, onMark, key ); }

    std::function<void()> onDestroyed;

  private:
    static constexpr void ( Notifiee::*onMark )( Kiv::Name ) = &Notifiee::onMark;

    Kiv::U8 level_ = 0;
    Kiv::String8 label_;
    Kiv::HashMap<Mark, Kiv::Name> mark_;
};

/// Writes "level", "label", "mark a" or "marks" for each handler that runs, then runs `then` if it is set.
class Probe : public Gauge::Notifiee {
  public:
    using Log = std::vector<std::string>;

    static Kiv::Ptr<Probe> on( Kiv::Ptr<Gauge> const& gauge, Log& log, std::string const& prefix = "" ) {
        Kiv::Ptr<Probe> const probe( new Probe( gauge, log, prefix ) );
        probe->isRegisteredNotifieeIs( true );
        return probe;
    }
    Probe( Kiv::Ptr<Gauge> const& gauge, Log& log, std::string prefix )
        : Gauge::Notifiee( gauge ), log_( log ), prefix_( std::move( prefix ) ) {}

    void onLevel() override {
        if ( deliverable( Gauge::attrLevel ) ) {
            handle( "level" );
        }
    }
    void onLabel() override {
        if ( deliverable( Gauge::attrLabel ) ) {
            handle( "label" );
        }
    }
    void onMark( Kiv::Name key ) override {
        if ( !kivOnAttribute( Gauge::attrMark, pendingMark_.store( key, pendingKeyCount_ ) ) &&
             !kivZombie() ) {
            handle( "mark " + std::string( key.view() ) );
        }
    }
    void onMark() override {
        if ( deliverable( Gauge::attrMark ) ) {
            handle( "marks" );
        }
    }
    void handleDefault( Kiv::ActivityConfig* activity, Kiv::AttributeId id, bool single ) override {
        defaults.emplace_back( id, single );
        Gauge::Notifiee::handleDefault( activity, id, single );
    }
    void onAttribute( Kiv::AttributeId id ) override {
        log_.push_back( prefix_ + "attribute " + std::to_string( id ) );
    }
    void onNotificationException() override { log_.push_back( prefix_ + "exception" ); }
    void onNotificationException( Kiv::AttributeId id ) override {
        log_.push_back( prefix_ + "exception " + std::to_string( id ) );
    }

    std::function<void()> then;
    std::vector<std::pair<Kiv::AttributeId, bool>> defaults;

    static constexpr Kiv::AttributeId every = everyAttribute;
    static constexpr Kiv::AttributeId everyAndKey = everyAttributeAndKey;

  protected:
    std::span<Kiv::Watch const> watches() const override {
        static constexpr Kiv::Watch rows[] = {
            Kiv::watch<&Probe::onLevel>( Gauge::attrLevel ),
            Kiv::watch<&Probe::onLabel>( Gauge::attrLabel ),
            { Gauge::attrMark, []( Reactor& reactor ) { static_cast<Probe&>( reactor ).onMark(); },
              []( Reactor& reactor ) {
                  auto& probe = static_cast<Probe&>( reactor );
                  probe.onMark( probe.pendingMark_.pendingKey() );
              } },
        };
        return rows;
    }

  private:
    using Reactor = Kiv::PtrInterface::NotifieeConst;

    void handle( std::string const& what ) {
        log_.push_back( prefix_ + what );
        if ( then ) {
            then();
        }
    }

    Log& log_;
    std::string prefix_;
    Kiv::PendingKey<Kiv::Name> pendingMark_;
};
